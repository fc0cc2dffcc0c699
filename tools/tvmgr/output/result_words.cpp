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
     "put the port library for 64 bits beside TaviraManager.dll; \"tvmgr status\" says what is wrong with "
     "the one "
     "that is there"},
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

// What the emulated printer's Ferrolink.dll means by its codes; another port library may use them otherwise.
struct tagEmulatorCode {
  std::int32_t code;
  std::string_view meaning;
};

constexpr tagEmulatorCode kEmulatorCodes[] = {
    {-1001, "the port is open already"},
    {-1002, "the port is not open"},
    {-1003, "a null pointer"},
    {-1009, "the emulator itself failed (memory)"},
    {-1010, "the address is not HOST or HOST:PORT, or the host name is unknown"},
    {-1011, "connection refused: no printer on that port"},
    {-1012, "nobody answered within 3 s, or there is no way to that address"},
    {-1013, "the connection broke"},
    {-1014, "connected, but nothing moved for 30 s"},
    {-1015, "what answers there is no emulated printer"},
};

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

const tagResultWords& WordsOf(std::int32_t code) {
  for (const tagResultWords& result : kResults) {
    if (result.code == code) {
      return result;
    }
  }
  return kPortLibrary;
}

std::string MeaningOf(std::int32_t code) {
  std::string meaning(WordsOf(code).meaning);
  for (const tagEmulatorCode& emulated : kEmulatorCodes) {
    if (emulated.code == code) {
      meaning += "; the emulated one means: " + std::string(emulated.meaning);
    }
  }
  return meaning;
}

std::string ExplainResult(std::int32_t code) {
  const std::string_view advice = WordsOf(code).advice;
  return std::to_string(code) + ": " + MeaningOf(code) + (advice.empty() ? "" : ": " + std::string(advice));
}

std::string AdviceFor(const CCommandError& error) {
  const tagErrorDetails& details = error.Details();
  if (!details.advice.empty() || details.code) {
    return details.advice.empty() ? std::string(WordsOf(*details.code).advice) : details.advice;
  }
  switch (error.ExitCode()) {
    case kExitUsage:
      return "\"tvmgr COMMAND --help\" explains a command and has examples";
    case kExitUnproved:
      return "look at the printer (tvmgr status), and repeat the command when it answers in full";
    case kExitUnreachable:
      return kSilentAdvice;
    case kExitInputFile:
      return "check the path, and that the file is whole and of the kind that the command takes";
    default:
      return {};
  }
}

CFailure CallFailure(const std::string& text, const std::string& step, std::int32_t code) {
  return CFailure(text + ": " + ExplainResult(code), ExitCodeOf(code),
                  {code, step, std::string(WordsOf(code).advice)});
}

}  // namespace tvmgr
