#include <algorithm>

#include "backup_file/stored_download.h"
#include "commands/commands.h"
#include "files/content_check.h"
#include "files/download_command.h"
#include "files/host_data.h"
#include "files/stored_files.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/record_output.h"
#include "output/result_words.h"
#include "output/text_encoding.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

// The one name that the background list shows; a file under another could never be confirmed.
constexpr std::string_view kBackgroundName = "KORVDEF.BGD";

void PrintSummary(const tagGlobalOptions& global, const CManagerSession& session, const std::string& name,
                  std::size_t size, const std::string& file, const std::string& text) {
  if (global.json) {
    SetJsonResult({{"name", name}, {"bytes", size}, {"file", file}});
  } else {
    session.Remark(text);
  }
}

struct tagDownload {
  std::string name;
  const tagFileKind* kind;
  std::string command;
};

const tagFileKind* FirstKindOfGroup(std::string_view group) {
  const auto kinds = AllFileKinds();
  const auto found =
      std::find_if(kinds.begin(), kinds.end(), [&](const tagFileKind& kind) { return kind.group == group; });
  return found == kinds.end() ? nullptr : &*found;
}

// The kind by the name's extension; --kind decides for names that have none and has to fit the others.
const tagFileKind& ChooseKind(const std::string& name, const std::string& group) {
  const tagFileKind* kind = KindOfFile(name);
  if (kind == nullptr && !group.empty()) {
    kind = FirstKindOfGroup(group);
  }
  if (kind == nullptr || kind->register_request == 0) {
    throw CUsageError("\"" + name +
                      "\": give a name that ends in PNG, GRF, TTF, TTE, BGD, FMT or ZPL, or --kind");
  }
  if (!group.empty() && kind->group != group) {
    throw CUsageError("\"" + name + "\" is a " + std::string(kind->group) + ", not a " + group);
  }
  return *kind;
}

tagDownload MakeDownload(const tagPutOptions& options, std::string bytes) {
  const EDownload form = RecognizeDownload(bytes);
  if (form != EDownload::kNone) {
    if (!options.name.empty()) {
      throw CUsageError("the file is a download command with a name of its own; --name cannot change it");
    }
    std::string name = NameInDownload(bytes);
    // The name of a format may stand without extension; what it is shows all the same.
    const bool is_format = form == EDownload::kFormat;
    const tagFileKind& kind = ChooseKind(name, options.kind.empty() && is_format ? "format" : options.kind);
    return {std::move(name), &kind, std::move(bytes)};
  }
  std::string name = options.name.empty() ? UpperAscii(FileNameOf(options.file)) : options.name;
  if (name.find('.') == std::string::npos && !options.kind.empty()) {
    const tagFileKind* const kind = FirstKindOfGroup(options.kind);
    name += kind == nullptr ? std::string_view() : kind->extension;
  }
  RequireFileName(name);
  const tagFileKind& kind = ChooseKind(name, options.kind);
  if (kind.group == "background" && !EqualsIgnoreCase(name, kBackgroundName)) {
    throw CUsageError("the printer knows one background file: give --name " + std::string(kBackgroundName));
  }
  RequireFittingContent(options.file, bytes, kind, options.row_bytes);
  const std::string printer_name = RequireAnsi(name);
  std::string command = IsFormat(kind) ? MakeFormatDownload(printer_name, bytes)
                                       : MakeObjectDownload(printer_name, kind, bytes, options.row_bytes);
  return {std::move(name), &kind, std::move(command)};
}

// The name under which the printer lists the file; empty when it does not.
std::string ListedName(const CManagerSession& session, const tagDownload& download) {
  for (const tagFileKind& kind : AllFileKinds()) {
    const bool complete = KindOfFile(download.name) != nullptr;
    const std::string name = complete ? download.name : download.name + std::string(kind.extension);
    if (kind.group == download.kind->group && IsStored(session, kind, name)) {
      return name;
    }
  }
  return {};
}

// Whoever has agreed already need not wait for the lists.
void ConfirmReplacing(const CManagerSession& session, const tagDownload& download, const std::string& printer,
                      bool agreed) {
  if (agreed) {
    return;
  }
  session.LoadAll();
  if (const std::string name = ListedName(session, download); !name.empty()) {
    Confirm("overwrite " + name + " on " + printer, false);
    return;
  }
  RequireStillAnswering(session, "the lists were read");
  if (IsAnswerCut(session)) {
    Confirm("overwrite " + download.name + " on " + printer + ", if it is there: its lists were cut off",
            false);
  }
}

// A file of that name may have been there before, and have stayed: it is protected, or there is no room.
void RequireStored(const CManagerSession& session, const tagDownload& download) {
  const std::string name = ListedName(session, download);
  const std::string ansi = RequireAnsi(name);
  const std::optional<std::string> bytes =
      name.empty() ? std::nullopt : BytesOfDownload(ansi, download.command);
  const EComparison content = bytes ? CompareStored(session, name, *bytes) : EComparison::kNotCompared;
  if (content == EComparison::kNotCompared) {
    RequireStillAnswering(session, download.name + " was sent");
  }
  if (name.empty()) {
    throw CFailure(download.name + " was sent, but the printer does not list it");
  }
  if (content == EComparison::kOther) {
    throw CFailure(name +
                   " was sent, but the printer has other contents under that name: an earlier file stayed "
                   "(it is protected, or there is no room)");
  }
  if (content == EComparison::kNotCompared) {
    throw CUnproved(name +
                    ": listed, content not compared (the printer sends nothing back for it, or what was "
                    "sent cannot be read here)");
  }
}

}  // namespace

int RunPut(const tagGlobalOptions& global, const tagPutOptions& options) {
  const tagPrinterChoice choice = RequireChoice(global);
  std::string bytes = ReadHostFile(options.file);
  if (bytes.empty()) {
    throw CInputFileError("the file \"" + options.file + "\" is empty");
  }
  const std::size_t size = bytes.size();
  const tagDownload download = MakeDownload(options, std::move(bytes));
  if (download.command.size() > static_cast<std::size_t>(INT32_MAX)) {
    throw CFailure("the file \"" + options.file + "\" is too large for one download command");
  }
  const CManagerSession session(global, choice);
  session.RequireAnsweringPrinter();
  ConfirmReplacing(session, download, Describe(choice), options.yes);
  session.Require("TVMGR_UpdateRegistList", "preparing the transfer", 0, [&] {
    return TVMGR_UpdateRegistList(download.kind->register_request,
                                  reinterpret_cast<const std::uint8_t*>(download.command.data()),
                                  static_cast<std::uint32_t>(download.command.size()), nullptr, 0);
  });
  ReportTransfer(download.command.size());
  constexpr std::uint64_t kLongestTransfer = 50ULL * 60 * 1000;
  const std::uint64_t transfer = session.IsNetwork() ? kLongestTransfer : limit::kTransaction;
  const std::int32_t result =
      session.Call("TVMGR_RegistData", "storing " + download.name, transfer + limit::kConfirmFiles,
                   [] { return TVMGR_RegistData(); });
  if (result == TVMGR_NOT_CONFIRMED) {
    RequireStillAnswering(session, download.name + " was sent");
    throw CallFailure(download.name + " was sent, but the printer does not list it",
                      "storing " + download.name, result);
  }
  if (result != TVMGR_OK) {
    throw CallFailure("storing " + download.name + " failed", "storing " + download.name, result);
  }
  // For stored formats the result says only that they were sent, for all others that the name is listed.
  RequireStored(session, download);
  PrintSummary(
      global, session, download.name, size, options.file,
      download.name + ": stored and read back, " + std::to_string(size) + " bytes of " + options.file);
  return kExitDone;
}

}  // namespace tvmgr
