#include <algorithm>

#include "commands/commands.h"
#include "files/file_kinds.h"
#include "files/stored_files.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/record_output.h"
#include "output/result_words.h"
#include "output/text_encoding.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

const tagFileKind& RequireDeletableKind(const std::string& name) {
  RequireFileName(name);
  const tagFileKind* const kind = KindOfFile(name);
  if (kind == nullptr || kind->delete_request == 0) {
    throw CUsageError("\"" + name + "\": only PNG, GRF, TTF, TTE, FMT, ZPL and BGD files can be removed");
  }
  return *kind;
}

// Empty when the file is gone, else why it is not.
std::string Remove(const CManagerSession& session, const std::string& name, const tagFileKind& kind) {
  if (!IsStored(session, kind, name)) {
    return "the printer has no such file";
  }
  const std::string bytes = RequireAnsi(name);
  session.Require("TVMGR_UpdateRegistList", "preparing the removal", 0, [&] {
    return TVMGR_UpdateRegistList(kind.delete_request, reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                  static_cast<std::uint32_t>(bytes.size()), nullptr, 0);
  });
  const std::int32_t result =
      session.Call("TVMGR_DeleteData", "removing " + name, limit::kTransaction + limit::kConfirmFiles,
                   [] { return TVMGR_DeleteData(); });
  if (result == TVMGR_NOT_CONFIRMED) {
    return "the printer still lists it (a protected file?)";
  }
  if (result != TVMGR_OK) {
    return ExplainResult(result);
  }
  // An empty list is no proof: a silent printer has one, too.
  RequireStillAnswering(session, "the removal of " + name + " was sent");
  // The result says nothing about the background file, but its list has just been refreshed.
  return IsStored(session, kind, name) ? "the printer still lists it" : "";
}

}  // namespace

int RunFiles(const tagGlobalOptions& global, const tagFilesOptions& options) {
  const auto is_wanted = [&](const tagFileKind& kind) {
    return options.list.empty() || EqualsIgnoreCase(options.list, kind.name) ||
           EqualsIgnoreCase(options.list, kind.group);
  };
  const auto kinds = AllFileKinds();
  if (std::none_of(kinds.begin(), kinds.end(), is_wanted)) {
    throw CUsageError(
        "there is no list \"" + options.list +
        "\": png, grf, ttf, tte, fmt, zpl, background, cnv, or graphic, font, format for several");
  }
  const CManagerSession session(global);
  session.RequireAnsweringPrinter();
  // The lists are part of a full load and are read by nothing else that leaves the printer alone.
  session.LoadAll();
  CRecordOutput output({{"list", ""}, {"type", "TYPE"}, {"kind", "KIND"}, {"name", "NAME"}});
  for (const tagFileKind& kind : kinds) {
    if (!is_wanted(kind)) {
      continue;
    }
    for (const std::string& name : session.FileNames(kind.list)) {
      output.Add({tagCell::Number(kind.list), tagCell::Text(std::string(kind.name)),
                  tagCell::Text(std::string(kind.group)), tagCell::Text(name)});
    }
  }
  global.json ? output.SetAsJson("files") : output.PrintTable();
  RequireStillAnswering(session, "the lists were read");
  if (IsAnswerCut(session)) {
    throw CUnproved(
        "the printer's answers were cut off (its last setting is missing): there may be more files");
  }
  if (output.IsEmpty()) {
    session.Remark(options.list.empty() ? "no files stored" : "no such files stored");
  }
  return kExitDone;
}

int RunRemove(const tagGlobalOptions& global, const tagRemoveOptions& options) {
  std::string all;
  for (const std::string& name : options.names) {
    RequireDeletableKind(name);
    all += (all.empty() ? "" : ", ") + name;
  }
  const tagPrinterChoice choice = RequireChoice(global);
  Confirm("delete " + all + " on " + Describe(choice), options.yes);

  const CManagerSession session(global, choice);
  session.RequireAnsweringPrinter();
  // A file that was never there must not be reported as removed, so the lists are read first.
  session.LoadAll();
  RequireStillAnswering(session, "the lists were read");
  CRecordOutput output({{"name", "NAME"}, {"removed", "REMOVED"}, {"reason", "REASON"}});
  bool failed = false;
  bool unproved = false;
  for (const std::string& name : options.names) {
    const std::string reason = Remove(session, name, RequireDeletableKind(name));
    const bool cut = reason.empty() && IsAnswerCut(session);
    failed = failed || !reason.empty();
    unproved = unproved || cut;
    output.Add({tagCell::Text(name),
                cut ? tagCell{"sent", nullptr, ETone::kOpen}
                    : tagCell{reason.empty() ? "yes" : "no", reason.empty(),
                              reason.empty() ? ETone::kGood : ETone::kBad},
                tagCell::TextOrNull(reason)});
  }
  global.json ? output.SetAsJson("files") : output.PrintTable();
  if (!failed && unproved) {
    throw CUnproved("the removal was sent, but the printer's answers were cut off: its lists prove nothing");
  }
  return failed ? kExitFailed : kExitDone;
}

}  // namespace tvmgr
