#include <algorithm>

#include "backup_file/stored_download.h"
#include "commands/commands.h"
#include "files/content_check.h"
#include "files/download_command.h"
#include "files/host_data.h"
#include "files/store_file.h"
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
    SetJsonResult({{"name", name}, {"bytes", size}, {"file", file}, {"dry_run", false}});
  } else {
    session.Remark(text);
  }
}

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

void ShowPlan(const tagGlobalOptions& global, const CManagerSession& session, const tagDownload& download,
              const std::string& file, std::size_t size) {
  session.LoadAll();
  RequireStillAnswering(session, "the lists were read");
  const std::string listed = ListedName(session, download);
  const bool is_open = listed.empty() && IsAnswerCut(session);
  if (global.json) {
    SetJsonResult({{"name", download.name}, {"bytes", size}, {"file", file}});
    AddJsonMember("dry_run", true);
    AddJsonMember("replaces", is_open ? Json() : Json(!listed.empty()));
  } else {
    WriteOutput(download.name + ": would be stored, " + std::to_string(size) + " bytes of " + file +
                (is_open ? "; whether the printer has such a file is not known, its lists were cut off\n"
                 : listed.empty() ? "; the printer has no such file\n"
                                  : ", in the place of the one that is there\n"));
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
  if (options.dry_run) {
    ShowPlan(global, session, download, options.file, size);
    return kExitDone;
  }
  ConfirmReplacing(session, download, Describe(choice), options.yes);
  StoreFile(session, download);
  PrintSummary(
      global, session, download.name, size, options.file,
      download.name + ": stored and read back, " + std::to_string(size) + " bytes of " + options.file);
  return kExitDone;
}

}  // namespace tvmgr
