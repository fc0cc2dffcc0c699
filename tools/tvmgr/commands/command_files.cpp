#include <algorithm>

#include "commands/commands.h"
#include "files/file_kinds.h"
#include "files/listed_files.h"
#include "files/stored_files.h"
#include "names/name_pattern.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/record_output.h"
#include "output/result_words.h"
#include "output/text_encoding.h"
#include "output/text_layout.h"
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

/** What the words of the command line name: each file once. */
std::vector<std::string> FilesToRemove(const CManagerSession& session,
                                       const std::vector<std::string>& words) {
  std::vector<std::string> names;
  const auto add = [&](const std::string& name) {
    const bool is_there = std::any_of(names.begin(), names.end(), [&](const std::string& earlier) {
      return EqualsIgnoreCase(earlier, name);
    });
    if (!is_there) {
      names.push_back(name);
    }
  };
  for (const std::string& word : words) {
    if (!IsPattern(word)) {
      add(word);
      continue;
    }
    std::size_t matches = 0;
    for (const tagListedFile& file : MatchingFiles(session, word)) {
      if (file.kind->delete_request == 0) {
        session.Remark("remark: " + file.name + " stays: such files cannot be removed");
        continue;
      }
      ++matches;
      add(file.name);
    }
    if (matches == 0) {
      RefuseUnmatched(session, word);
    }
  }
  return names;
}

std::string Joined(const std::vector<std::string>& names) {
  std::string all;
  for (const std::string& name : names) {
    all += (all.empty() ? "" : ", ") + MakeVisible(name);
  }
  return all;
}

std::string WouldBeRemoved(const CManagerSession& session, const std::string& name) {
  return IsStored(session, RequireDeletableKind(name), name) ? "would be removed"
                                                             : "the printer has no such file";
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
  std::vector<std::string> words;
  for (const std::string& name : options.names) {
    words.push_back(WithoutDevice(name));
    if (!IsPattern(words.back())) {
      RequireDeletableKind(words.back());
    }
  }
  const bool has_pattern = std::any_of(words.begin(), words.end(), IsPattern);
  const tagPrinterChoice choice = RequireChoice(global);
  const auto confirm = [&](const std::vector<std::string>& names) {
    Confirm("delete " + Joined(names) + " on " + Describe(choice), options.yes || options.dry_run);
  };
  if (!has_pattern) {
    confirm(words);
  }

  const CManagerSession session(global, choice);
  session.RequireAnsweringPrinter();
  // A file that was never there must not be reported as removed, so the lists are read first.
  session.LoadAll();
  RequireStillAnswering(session, "the lists were read");
  const bool is_list_cut = IsAnswerCut(session);
  const std::vector<std::string> names = FilesToRemove(session, words);
  if (has_pattern) {
    confirm(names);
  }
  CRecordOutput output({{"name", "NAME"}, {"removed", "REMOVED"}, {"reason", "REASON"}});
  bool failed = false;
  bool unproved = is_list_cut && (has_pattern || options.dry_run);
  for (const std::string& name : names) {
    const std::string reason =
        options.dry_run ? WouldBeRemoved(session, name) : Remove(session, name, RequireDeletableKind(name));
    const bool cut = reason.empty() && IsAnswerCut(session);
    failed =
        failed || (options.dry_run ? !IsStored(session, RequireDeletableKind(name), name) : !reason.empty());
    unproved = unproved || cut;
    output.Add({tagCell::Text(name),
                cut ? tagCell{"sent", nullptr, ETone::kOpen}
                    : tagCell{reason.empty() ? "yes" : "no", reason.empty(),
                              reason.empty() ? ETone::kGood : ETone::kBad},
                tagCell::TextOrNull(reason)});
  }
  global.json ? output.SetAsJson("files") : output.PrintTable();
  AddJsonMember("dry_run", options.dry_run);
  if (!failed && unproved) {
    throw CUnproved(
        is_list_cut
            ? "the printer's lists were cut off: there may be more files, and they prove nothing"
            : "the removal was sent, but the printer's answers were cut off: its lists prove nothing");
  }
  return failed ? kExitFailed : kExitDone;
}

}  // namespace tvmgr
