#include <algorithm>

#include "commands/commands.h"
#include "output/command_error.h"
#include "output/record_output.h"
#include "output/result_words.h"
#include "output/setting_cell.h"
#include "output/text_encoding.h"
#include "printer/answers.h"
#include "printer/manager_session.h"
#include "profile/required_settings.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

struct tagAssignment {
  tagSettingName setting;
  std::string value; /**< bytes as the printer takes them */
};

enum class EVerdict { kProved, kOpen, kFailed };

ETone ToneOf(EVerdict verdict) {
  return verdict == EVerdict::kProved ? ETone::kGood
         : verdict == EVerdict::kOpen ? ETone::kOpen
                                      : ETone::kBad;
}

struct tagVerdict {
  std::string word;
  std::string reason;
  EVerdict kind = EVerdict::kFailed;
};

// A prefix character inside a value would begin a command of its own; a control byte would end the frame.
bool IsSafeValue(std::string_view value) {
  return std::none_of(value.begin(), value.end(),
                      [](char c) { return c == '^' || c == '~' || static_cast<unsigned char>(c) < 0x20; });
}

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

// While the module reads from a printer that is not neutral, its guard holds the mode at D, and puts the mode
// of before back afterwards. So a D that is read says nothing, neither of the mode nor of the write.
tagVerdict JudgeMode(const tagAssignment& asked, const std::string& got) {
  if (!EqualsIgnoreCase(got, "D")) {
    return EqualsIgnoreCase(asked.value, got)
               ? tagVerdict{"written", "", EVerdict::kProved}
               : tagVerdict{"differs", "the printer refused the value or stores it in another form"};
  }
  return {
      "cannot be proved here",
      "on a printer whose resolutions were not all 600 or whose mode was not D, the resolution guard puts "
      "the earlier mode back and shows D meanwhile; this writes it past the guard: tvmgr op send-data "
      "--text \"^XA^S(CMP,U," +
          EscapeBytes(asked.value) + "^XZ^XA^JUS^XZ\"",
      EVerdict::kOpen};
}

tagVerdict Judge(const tagAssignment& asked, const std::optional<std::string>& got, bool keep_resolution) {
  if (asked.setting.id == TVMGR_SETTING_ST) {
    return {"not readable", "sent; the printer has no query for this setting", EVerdict::kOpen};
  }
  if (!got) {
    return {"not readable", "sent; the printer does not answer for this setting"};
  }
  if (asked.setting.id == TVMGR_SETTING_CMP_U) {
    return JudgeMode(asked, *got);
  }
  if (EqualsIgnoreCase(asked.value, *got)) {
    return {"written", "", EVerdict::kProved};
  }
  if (asked.setting.id == TVMGR_SETTING_CPC_Y) {
    return {"not readable", "sent; what the printer reports for this setting need not be what was written",
            EVerdict::kOpen};
  }
  const std::int32_t id = asked.setting.id;
  if (!keep_resolution &&
      (id == TVMGR_SETTING_CLR_Z || id == TVMGR_SETTING_CLR_P || id == TVMGR_SETTING_CLR_R)) {
    return {
        "differs",
        "the resolution guard may have put the earlier value back: it does so on a printer whose "
        "resolutions were not all 600 or whose mode was not D; --keep-resolution leaves 3, 4 and 5 alone"};
  }
  return {"differs", "the printer refused the value or stores it in another form"};
}

}  // namespace

int RunSet(const tagGlobalOptions& global, const tagSetOptions& options) {
  const std::vector<tagAssignment> assignments = ParseAssignments(options.assignments);
  const CManagerSession session(global, RequireChoice(global));
  session.RequireAnsweringPrinter();
  session.Require("TVMGR_ClearUpdateList", "preparing the update", 0, [] { return TVMGR_ClearUpdateList(); });
  for (const tagAssignment& assignment : assignments) {
    session.Require("TVMGR_SetUpdateList", "preparing the update", 0, [&] {
      return TVMGR_SetUpdateList(static_cast<std::uint32_t>(assignment.setting.id),
                                 reinterpret_cast<const std::uint8_t*>(assignment.value.data()),
                                 static_cast<std::int32_t>(assignment.value.size()));
    });
  }
  const std::int32_t result =
      options.keep_resolution
          ? session.Call("TVMGR_UpdatePrinterSettingNoChangeDPI", "writing and verifying the settings",
                         limit::kUpdate, [] { return TVMGR_UpdatePrinterSettingNoChangeDPI(); })
          : session.Call("TVMGR_UpdatePrinterSetting", "writing and verifying the settings", limit::kUpdate,
                         [] { return TVMGR_UpdatePrinterSetting(); });
  // With the two results below the module has just read everything back, so each setting has a verdict of its
  // own. After any other the stored values tell nothing.
  if (result != TVMGR_OK && result != TVMGR_NOT_CONFIRMED) {
    throw CallFailure("writing the settings failed, what was written is not known", "writing the settings",
                      result);
  }

  CRecordOutput output({{"id", "ID"},
                        {"key", "KEY"},
                        {"asked", "ASKED"},
                        {"got", "GOT"},
                        {"verdict", "VERDICT"},
                        {"reason", "REASON"}});
  EVerdict worst = EVerdict::kProved;
  for (const tagAssignment& assignment : assignments) {
    const std::optional<std::string> got = session.Value(assignment.setting.id);
    const tagVerdict verdict = Judge(assignment, got, options.keep_resolution);
    worst = std::max(worst, verdict.kind);
    output.Add({tagCell::Number(assignment.setting.id), tagCell::Text(std::string(assignment.setting.key)),
                ValueCell(assignment.value), got ? ValueCell(got) : tagCell::Null("-"),
                tagCell::Verdict(verdict.word, ToneOf(verdict.kind)), tagCell::TextOrNull(verdict.reason)});
  }
  global.json ? output.SetAsJson("settings") : output.PrintTable();
  if (worst == EVerdict::kFailed) {
    RequireStillAnswering(session, "the settings were written");
    throw CallFailure("not every setting is confirmed", "writing and verifying the settings",
                      TVMGR_NOT_CONFIRMED);
  }
  if (worst == EVerdict::kOpen) {
    throw CUnproved("not every setting can be proved: see the reasons");
  }
  return kExitDone;
}

}  // namespace tvmgr
