#include <algorithm>
#include <iterator>

#include "commands/commands.h"
#include "files/file_kinds.h"
#include "files/host_data.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/record_output.h"
#include "output/status_words.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

struct tagOperation {
  std::string_view name;
  std::uint32_t code;
  std::string_view effect;
  bool is_destructive; /**< wipes or resets: has to be confirmed */
};

constexpr tagOperation kOperations[] = {
    {"none", TVMGR_OP_NONE, "do nothing; tries the port library out", false},
    {"head-maintenance", TVMGR_OP_HEAD_MAINTENANCE, "run the print head maintenance, for up to minutes",
     false},
    {"head-check", TVMGR_OP_HEAD_CHECK, "print the head check pattern", false},
    {"media-calibration", TVMGR_OP_MEDIA_CALIBRATION, "calibrate the media sensor", false},
    {"factory-reset", TVMGR_OP_FACTORY_RESET, "put all settings back to the factory values and save them",
     true},
    {"initialize-memory", TVMGR_OP_INITIALIZE_MEMORY, "delete every file on device E:", true},
    {"send-data", TVMGR_OP_SEND_DATA, "send the bytes of --file or --text as an operation", false},
    {"print-configuration", TVMGR_OP_PRINT_CONFIGURATION, "print the configuration label", false},
    {"wipe-fonts", TVMGR_OP_WIPE_FONTS, "delete all fonts on R:, E: and Z:", true},
    {"wipe-barcodes", TVMGR_OP_WIPE_BARCODES, "delete all bar code files on Z:", true},
    {"wipe-graphics", TVMGR_OP_WIPE_GRAPHICS, "delete all graphics on R: and E:", true},
    {"wipe-formats", TVMGR_OP_WIPE_FORMATS, "delete the stored formats (FMT) on R: and E:", true},
    {"reset-prefix", TVMGR_OP_RESET_PREFIX, "put the prefix characters back to ~ ^ and ,", true},
};

const tagOperation& FindOperation(const std::string& name) {
  const auto* const found =
      std::find_if(std::begin(kOperations), std::end(kOperations),
                   [&](const tagOperation& operation) { return operation.name == name; });
  if (found == std::end(kOperations)) {
    throw CUsageError("there is no operation \"" + name + "\"; \"tvmgr op --list\" shows them all");
  }
  return *found;
}

int List(const tagGlobalOptions& global) {
  CRecordOutput output(
      {{"name", "OPERATION"}, {"code", ""}, {"confirm", "CONFIRM"}, {"effect", "WHAT IT DOES"}});
  for (const tagOperation& operation : kOperations) {
    output.Add({tagCell::Text(std::string(operation.name)),
                tagCell::Number(operation.code),
                {operation.is_destructive ? "yes" : "", operation.is_destructive},
                tagCell::Text(std::string(operation.effect))});
  }
  global.json ? output.SetAsJson("operations") : output.PrintTable();
  return kExitDone;
}

// These operations write setting 42 before and after.
bool BracketsSetting42(std::uint32_t code) {
  return code >= TVMGR_OP_SEND_DATA && code <= TVMGR_OP_WIPE_FORMATS;
}

std::uint64_t LongestMs(std::uint32_t code) {
  const std::uint64_t busy_wait = code == TVMGR_OP_HEAD_MAINTENANCE ? 300'000 : 60'000;
  std::uint64_t longest = 3 * limit::kTransaction + 1000 + busy_wait;
  if (code == TVMGR_OP_FACTORY_RESET || code == TVMGR_OP_INITIALIZE_MEMORY) {
    longest += 1000 + limit::kFullLoad;
  }
  return longest;
}

// What of a wiped kind the printer still lists, "A.PNG B.PNG". Device R: has no lists.
std::string Remaining(const CManagerSession& session, std::uint32_t code) {
  std::string names;
  for (const tagFileKind& kind : AllFileKinds()) {
    const bool is_wiped = (code == TVMGR_OP_WIPE_FONTS && kind.group == "font") ||
                          (code == TVMGR_OP_WIPE_BARCODES && kind.group == "conversion") ||
                          (code == TVMGR_OP_WIPE_GRAPHICS && kind.group == "graphic") ||
                          (code == TVMGR_OP_WIPE_FORMATS && kind.name == "fmt") ||
                          (code == TVMGR_OP_INITIALIZE_MEMORY && kind.group != "conversion");
    for (const std::string& name : is_wiped ? session.FileNames(kind.list) : std::vector<std::string>()) {
      names += " " + name;
    }
  }
  return names;
}

void RequireWiped(const CManagerSession& session, const tagOperation& operation) {
  const bool wipes = operation.code == TVMGR_OP_INITIALIZE_MEMORY || operation.code == TVMGR_OP_WIPE_FONTS ||
                     operation.code == TVMGR_OP_WIPE_BARCODES || operation.code == TVMGR_OP_WIPE_GRAPHICS ||
                     operation.code == TVMGR_OP_WIPE_FORMATS;
  if (!wipes) {
    return;
  }
  const std::string name(operation.name);
  session.LoadAll();
  const std::string remaining = Remaining(session, operation.code);
  if (!remaining.empty()) {
    throw CFailure(name + " was sent, but the printer still lists" + remaining + " (protected files?)");
  }
  RequireStillAnswering(session, name + " was sent");
  if (IsAnswerCut(session)) {
    throw CUnproved(name + " was sent, but the printer's answers were cut off: its lists prove nothing");
  }
}

}  // namespace

std::vector<std::string> OperationNames() {
  std::vector<std::string> names;
  for (const tagOperation& operation : kOperations) {
    names.emplace_back(operation.name);
  }
  return names;
}

int RunOperation(const tagGlobalOptions& global, const tagOperationOptions& options) {
  if (options.list) {
    return List(global);
  }
  if (options.name.empty()) {
    throw CUsageError("name an operation, or give --list");
  }
  RequireTable({}, "without --list");
  const tagOperation& operation = FindOperation(options.name);
  const bool has_data = !options.data.file.empty() || options.data.text;
  if (has_data && operation.code != TVMGR_OP_SEND_DATA) {
    throw CUsageError("--file and --text belong to send-data");
  }
  const tagPrinterChoice choice = RequireChoice(global);
  const std::string data = operation.code == TVMGR_OP_SEND_DATA ? ReadData(options.data) : std::string();
  if (operation.is_destructive) {
    Confirm(std::string(operation.effect) + " on " + Describe(choice), options.yes);
  }

  const CManagerSession session(global, choice);
  // A printer with other prefix characters may stay silent until they are put back.
  const bool may_be_silent = operation.code == TVMGR_OP_RESET_PREFIX || operation.code == TVMGR_OP_NONE;
  if (!may_be_silent) {
    session.RequireAnsweringPrinter();
  }
  if (BracketsSetting42(operation.code)) {
    // The module puts setting 42 back to the value it has stored, or to "T" when there is none. Without this
    // load the operation would change the setting for good.
    session.LoadAll();
    if (!session.Value(TVMGR_SETTING_CMP_M)) {
      session.Remark("remark: the printer gave no value for CMP,M (42); the operation leaves it at T");
    }
  }
  session.Require("TVMGR_SetExecuteList", "preparing the operation", 0, [&] {
    return TVMGR_SetExecuteList(operation.code, reinterpret_cast<const std::uint8_t*>(data.data()),
                                static_cast<std::int32_t>(data.size()));
  });
  ReportTransfer(data.size());
  session.Require("TVMGR_ExecutePrinterOperation", "running " + options.name, LongestMs(operation.code),
                  [] { return TVMGR_ExecutePrinterOperation(); });
  if (operation.code == TVMGR_OP_NONE) {
    session.Remark("none: done, nothing was sent");
    SetJsonResult({{"operation", options.name}, {"status", nullptr}, {"status_name", nullptr}});
    return kExitDone;
  }
  // Neither silence nor a printer that is still busy shows in the operation's result.
  const std::uint32_t status = session.Status();
  SetJsonResult({{"operation", options.name}, {"status", status}, {"status_name", StatusWords(status).name}});
  switch (status) {
    case TVMGR_STATUS_UNKNOWN:
      throw CUnreachable(options.name + " was sent, but the printer does not answer");
    case TVMGR_STATUS_BUSY:
      throw CUnproved(options.name + ": sent; the printer is still busy (tvmgr status --watch)");
    default:
      RequireWiped(session, operation);
      session.Remark(options.name + ": done");
  }
  return kExitDone;
}

}  // namespace tvmgr
