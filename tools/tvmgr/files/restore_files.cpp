#include "files/restore_files.h"

#include <algorithm>

#include "files/listed_files.h"
#include "files/store_file.h"
#include "names/name_pattern.h"
#include "output/command_error.h"
#include "output/json_output.h"
#include "output/record_output.h"
#include "output/text_encoding.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

constexpr char kSent[] = "sent, not proved";

struct tagOutcome {
  std::string verdict = "not sent";
  std::string reason = {};
  int exit_code = kExitFailed;
};

// The commands with which a backup itself brackets each file.
void SetProtection(const CManagerSession& session, const tagBackupFile& file, char letter) {
  const std::string command = "^XA^F(AE:" + std::string(file.name) + "," + letter + "^XZ";
  session.Require("TVMGR_DirectSendCommand", "setting the protection of " + NameOf(file), limit::kDirectSend,
                  [&] {
                    return TVMGR_DirectSendCommand(reinterpret_cast<const std::uint8_t*>(command.data()),
                                                   static_cast<std::int32_t>(command.size()), false);
                  });
}

std::string Behind(const std::string& reason) {
  return reason.empty() ? "" : "; ";
}

tagOutcome Restore(const CManagerSession& session, const tagBackupFile& file) {
  tagOutcome outcome;
  bool is_lifted = false;
  bool is_stored = false;
  if (session.WaitOrInterrupted(0)) {
    outcome.reason = "stopped by Ctrl-C";
    return outcome;
  }
  try {
    const std::string name = NameOf(file);
    const tagFileKind* const kind = KindOfFile(name);
    if (kind == nullptr || kind->register_request == 0) {
      outcome.reason = "files of this kind cannot be stored one by one: restore the whole backup";
      return outcome;
    }
    const tagDownload download{name, kind, std::string(file.command)};
    if (!ListedName(session, download).empty()) {
      SetProtection(session, file, 'N');
      is_lifted = true;
    }
    outcome = {kSent, "", kExitUnproved};
    try {
      StoreFile(session, download);
      outcome = {"stored and read back", "", kExitDone};
    } catch (const CUnproved& error) {
      outcome.reason = error.what();
    }
    is_stored = true;
    if (file.is_protected) {
      SetProtection(session, file, 'Y');
      outcome.reason += Behind(outcome.reason) + "its protection was sent, which no printer shows";
    }
  } catch (const CCommandError& error) {
    outcome.reason =
        is_stored   ? outcome.reason + Behind(outcome.reason) + "its protection was not set: " + error.what()
        : is_lifted ? std::string(error.what()) + "; the protection of the one before was lifted"
                    : error.what();
    outcome.exit_code = error.ExitCode();
    if (error.ExitCode() == kExitFailed && !is_stored && outcome.verdict == kSent &&
        !session.WaitOrInterrupted(0)) {
      outcome.verdict = "failed";
    }
  }
  return outcome;
}

// For whoever watches this process, should the next file be its last.
void ReportOutcomes(const std::vector<tagBackupFile>& files, const std::vector<tagOutcome>& outcomes) {
  Json rows = Json::array();
  for (std::size_t i = 0; i < files.size(); ++i) {
    const tagOutcome outcome =
        i < outcomes.size() ? outcomes[i] : tagOutcome{i == outcomes.size() ? kSent : "not sent"};
    rows.push_back(
        {{"name", NameOf(files[i])}, {"verdict", outcome.verdict}, {"reason", TextOrNull(outcome.reason)}});
  }
  ReportFound(
      Json({{"files", rows}, {"dry_run", false}}).dump(-1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace

std::string NameOf(const tagBackupFile& file) {
  return FromAnsi(file.name).value_or(EscapeBytes(file.name));
}

std::vector<tagBackupFile> ChooseFiles(const tagBackupContents& contents,
                                       const std::vector<std::string>& words) {
  std::vector<std::string> patterns;
  for (const std::string& word : words) {
    patterns.push_back(WithoutDevice(word));
    const std::string& pattern = patterns.back();
    if (std::none_of(contents.files.begin(), contents.files.end(),
                     [&](const tagBackupFile& file) { return MatchesPattern(pattern, NameOf(file)); })) {
      throw CUsageError("the backup holds no file \"" + word + "\" (\"tvmgr backup check\" lists them)");
    }
  }
  if (contents.files.empty()) {
    throw CUsageError("the backup holds no files");
  }
  std::vector<tagBackupFile> files;
  std::copy_if(contents.files.begin(), contents.files.end(), std::back_inserter(files),
               [&](const tagBackupFile& file) {
                 return patterns.empty() ||
                        std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
                          return MatchesPattern(pattern, NameOf(file));
                        });
               });
  return files;
}

int RestoreFiles(const tagGlobalOptions& global, const CManagerSession& session,
                 const std::vector<tagBackupFile>& files) {
  CRecordOutput output({{"name", "NAME"}, {"verdict", "VERDICT"}, {"reason", "REASON"}});
  bool is_silent = false;
  int worst = kExitDone;
  std::vector<tagOutcome> outcomes;
  for (const tagBackupFile& file : files) {
    ReportOutcomes(files, outcomes);
    // Each of the others would cost minutes.
    const tagOutcome outcome = is_silent
                                   ? tagOutcome{"not sent", "the printer no longer answers", kExitUnreachable}
                                   : Restore(session, file);
    outcomes.push_back(outcome);
    is_silent = is_silent || outcome.exit_code == kExitUnreachable;
    worst = worst == kExitFailed || outcome.exit_code == kExitFailed ? kExitFailed
                                                                     : std::max(worst, outcome.exit_code);
    const ETone tone = outcome.exit_code == kExitDone       ? ETone::kGood
                       : outcome.exit_code == kExitUnproved ? ETone::kOpen
                                                            : ETone::kBad;
    output.Add({tagCell::Text(NameOf(file)), tagCell::Verdict(outcome.verdict, tone),
                tagCell::TextOrNull(outcome.reason)});
  }
  ReportFound({});
  global.json ? output.SetAsJson("files") : output.PrintTable();
  AddJsonMember("dry_run", false);
  if (is_silent) {
    throw CUnreachable("not every file was restored: the printer no longer answers");
  }
  if (worst == kExitUnproved) {
    throw CUnproved("not every file could be compared: see the reasons");
  }
  if (worst != kExitDone) {
    throw CFailure("not every file was restored: see the reasons");
  }
  return kExitDone;
}

}  // namespace tvmgr
