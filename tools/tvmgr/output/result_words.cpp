#include "output/result_words.h"

#include <algorithm>

#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

constexpr tagResultWords kResults[] = {
    {TVMGR_OK, "TVMGR_OK", "done", ""},
    {TVMGR_FILE_TOO_LARGE, "TVMGR_FILE_TOO_LARGE", "the backup file has grown past 1 GiB",
     "back up fewer sections at a time"},
    {TVMGR_PORT_NOT_READY, "TVMGR_PORT_NOT_READY", "Ferrolink.dll is missing or incomplete",
     "install the complete port library beside TaviraManager.dll"},
    {TVMGR_NOT_INITIALIZED, "TVMGR_NOT_INITIALIZED", "there is no manager or no link to the port library",
     "call TVMGR_Initialize first and check its result; in this program: start it again"},
    {TVMGR_OUT_OF_MEMORY, "TVMGR_OUT_OF_MEMORY", "memory ran out",
     "close other programs or use a smaller file"},
    {TVMGR_PORT_LIBRARY_MISSING, "TVMGR_PORT_LIBRARY_MISSING", "Ferrolink.dll is missing or incomplete",
     "put the port library beside TaviraManager.dll"},
    {TVMGR_BAD_ARGUMENT, "TVMGR_BAD_ARGUMENT",
     "bad argument, nothing to send, or an operation that does not exist",
     "check the names and the data that were given"},
    {TVMGR_SEARCH_FAILED, "TVMGR_SEARCH_FAILED", "the network search could not send its broadcast",
     "check that the network is up and that the firewall lets UDP port 3289 pass"},
    {TVMGR_PAYLOAD_UNREADABLE, "TVMGR_PAYLOAD_UNREADABLE",
     "the stored file came back in a form that cannot be decoded",
     "fetch it again; if that fails too, store the file on the printer anew"},
    {TVMGR_FILE_ERROR, "TVMGR_FILE_ERROR", "the file on this computer cannot be created, opened or written",
     "check its path, its permissions and the free space"},
    {TVMGR_FILE_READ_ERROR, "TVMGR_FILE_READ_ERROR", "the file on this computer cannot be read whole",
     "check its path and its permissions"},
    {TVMGR_NOT_CONFIRMED, "TVMGR_NOT_CONFIRMED", "the printer took the command but still shows another state",
     "check that the printer allows the change (value, protected file, free memory) and try again"},
    {TVMGR_CHECK_PORT_UNSUPPORTED, "TVMGR_CHECK_PORT_UNSUPPORTED", "port checks are not supported",
     "ask for the printer's status instead"},
};

constexpr tagResultWords kPortLibrary = {0, "", "a code of the port library Ferrolink.dll, passed through",
                                         "check that the printer is switched on and connected and that "
                                         "--port, --device or --address names it; the port "
                                         "library's documentation explains the code"};

const tagResultWords& WordsOf(std::int32_t code) {
  const auto* const found =
      std::find_if(std::begin(kResults), std::end(kResults),
                   [code](const tagResultWords& result) { return result.code == code; });
  return found == std::end(kResults) ? kPortLibrary : *found;
}

}  // namespace

std::span<const tagResultWords> AllResults() {
  return kResults;
}

const tagResultWords& PortLibraryResult() {
  return kPortLibrary;
}

int ExitCodeOf(std::int32_t code) {
  if (code == TVMGR_OK) {
    return kExitDone;
  }
  const bool is_own = std::any_of(std::begin(kResults), std::end(kResults),
                                  [code](const tagResultWords& result) { return result.code == code; });
  return is_own ? kExitFailed : kExitUnreachable;
}

std::string ExplainResult(std::int32_t code) {
  const tagResultWords& words = WordsOf(code);
  std::string text = std::to_string(code) + ": " + std::string(words.meaning);
  if (!words.advice.empty()) {
    text += ": " + std::string(words.advice);
  }
  return text;
}

CFailure CallFailure(const std::string& text, const std::string& step, std::int32_t code) {
  return CFailure(text + ": " + ExplainResult(code), ExitCodeOf(code),
                  {code, step, std::string(WordsOf(code).advice)});
}

}  // namespace tvmgr
