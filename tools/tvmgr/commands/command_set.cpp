#include <algorithm>

#include "commands/commands.h"
#include "output/command_error.h"
#include "output/json_output.h"
#include "output/record_output.h"
#include "output/result_words.h"
#include "output/setting_cell.h"
#include "output/text_encoding.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "profile/host_profile.h"
#include "profile/profile_settings.h"
#include "profile/required_settings.h"
#include "profile/setting_verdict.h"
#include "profile/settings_writer.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

struct tagAssignment {
  tagSettingName setting;
  std::string value; /**< bytes as the printer takes them */
};

tagAssignment ParseAssignment(const std::string& text) {
  const std::size_t sign = text.find('=');
  if (sign == std::string::npos) {
    throw CUsageError("\"" + text + "\" is not KEY=VALUE");
  }
  const tagSettingName setting = RequireSetting(std::string_view(text).substr(0, sign));
  const std::string key(setting.key);
  if (setting.id == TVMGR_SETTING_BACKGROUND) {
    throw CUsageError("the background is a file: store it with \"tvmgr put\"");
  }
  if (setting.id >= TVMGR_SETTING_CCC_T && setting.id <= TVMGR_SETTING_CCC_D) {
    // Written as characters, read as hexadecimal digits: the comparison afterwards could never succeed.
    throw CUsageError("set the prefix character " + key + " with \"tvmgr prefix --set\"");
  }
  std::string value = BytesOfShown(std::string_view(text).substr(sign + 1));
  if (!IsSafeValue(value)) {
    throw CUsageError(
        "the value of " + key +
        " holds ^, ~ or a control character, which begin commands; \"tvmgr send\" sends commands");
  }
  return {setting, std::move(value)};
}

std::vector<tagAssignment> ParseAssignments(const std::vector<std::string>& texts) {
  std::vector<tagAssignment> assignments;
  for (const std::string& text : texts) {
    tagAssignment assignment = ParseAssignment(text);
    for (const tagAssignment& earlier : assignments) {
      if (earlier.setting.id == assignment.setting.id) {
        throw CUsageError("two values for " + std::string(assignment.setting.key));
      }
    }
    assignments.push_back(std::move(assignment));
  }
  return assignments;
}

ETone ToneOf(EProof proof) {
  return proof == EProof::kProved ? ETone::kGood : proof == EProof::kOpen ? ETone::kOpen : ETone::kBad;
}

void RequireAllowed(const std::vector<tagAssignment>& assignments, const CLabels& labels) {
  for (const tagAssignment& assignment : assignments) {
    const std::string why = labels.WhyNot(assignment.setting.id, assignment.value);
    if (!why.empty()) {
      throw CUsageError("\"" + EscapeBytes(assignment.value) + "\" is no value of " +
                        std::string(assignment.setting.key) + ": " + why +
                        " (--force writes it all the same)");
    }
  }
}

std::vector<tagSettingValue> ValuesOf(const std::vector<tagAssignment>& assignments) {
  std::vector<tagSettingValue> values;
  for (const tagAssignment& assignment : assignments) {
    values.push_back({assignment.setting.id, assignment.value});
  }
  return values;
}

void Write(const CManagerSession& session, const std::vector<tagSettingValue>& values, bool keep_resolution) {
  const std::int32_t result = WriteSettings(session, values, keep_resolution);
  // With these two the module has just read everything back, so each setting has a verdict of its own. After any
  // other the stored values tell nothing.
  if (result != TVMGR_OK && result != TVMGR_NOT_CONFIRMED) {
    throw CallFailure("writing the settings failed, what was written is not known", "writing the settings",
                      result);
  }
}

tagSettingVerdict JudgePlan(const tagAssignment& assignment, const std::optional<std::string>& now) {
  return now == assignment.value && assignment.setting.id != TVMGR_SETTING_CMP_U
             ? tagSettingVerdict{"unchanged",
                                 "the printer has this value already; set writes it all the same",
                                 EProof::kProved}
             : tagSettingVerdict{"would be written", "", EProof::kProved};
}

}  // namespace

int RunSet(const tagGlobalOptions& global, const tagSetOptions& options) {
  const std::vector<tagAssignment> assignments = ParseAssignments(options.assignments);
  const CLabels labels(options.labels);
  if (!options.force) {
    RequireAllowed(assignments, labels);
  }
  const CManagerSession session(global, RequireChoice(global));
  session.RequireAnsweringPrinter();
  // What the characters are takes a whole load: only where they are others than those that no value may hold anyway.
  if (options.dry_run || !HasDefaultPrefix(session)) {
    session.LoadAll();
    RequireStillAnswering(session, "the settings were read");
  }
  const std::vector<tagSettingValue> values = ValuesOf(assignments);
  RefusePrefixCharacters(session, values);
  if (!options.dry_run) {
    Write(session, values, options.keep_resolution);
  }

  CRecordOutput output({{"id", "ID"},
                        {"key", "KEY"},
                        {"name", labels.NameHeading()},
                        {"asked", "ASKED"},
                        {"got", "GOT"},
                        {"verdict", "VERDICT"},
                        {"reason", "REASON"}});
  EProof worst = EProof::kProved;
  for (const tagAssignment& assignment : assignments) {
    const std::int32_t id = assignment.setting.id;
    const std::optional<std::string> got = session.Value(id);
    const tagSettingVerdict verdict =
        options.dry_run
            ? JudgePlan(assignment, got)
            : JudgeWritten(id, assignment.value, EscapeBytes(assignment.value), got, options.keep_resolution);
    worst = std::max(worst, verdict.proof);
    output.Add({tagCell::Number(id), tagCell::Text(std::string(assignment.setting.key)), labels.NameCell(id),
                labels.WithUnit(id, ValueCell(assignment.value)),
                got ? labels.WithUnit(id, ValueCell(got)) : tagCell::Null("-"),
                tagCell::Verdict(verdict.word, ToneOf(verdict.proof)), tagCell::TextOrNull(verdict.reason)});
  }
  global.json ? output.SetAsJson("settings") : output.PrintTable();
  AddJsonMember("dry_run", options.dry_run);
  if (worst == EProof::kFailed) {
    RequireStillAnswering(session, "the settings were written");
    throw CallFailure("not every setting is confirmed", "writing and verifying the settings",
                      TVMGR_NOT_CONFIRMED);
  }
  if (worst == EProof::kOpen) {
    throw CUnproved("not every setting can be proved: see the reasons");
  }
  return kExitDone;
}

}  // namespace tvmgr
