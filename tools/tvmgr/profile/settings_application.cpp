#include "profile/settings_application.h"

#include <algorithm>

#include "output/command_error.h"
#include "output/console.h"
#include "output/result_words.h"
#include "output/setting_cell.h"
#include "output/text_encoding.h"
#include "output/text_layout.h"
#include "printer/answers.h"
#include "profile/profile_settings.h"
#include "profile/settings_writer.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

constexpr char kUnknown[] =
    "the work ended while it was under way: whether the printer has taken it is not known";

ETone ToneOf(EProof proof) {
  return proof == EProof::kProved ? ETone::kGood : proof == EProof::kOpen ? ETone::kOpen : ETone::kBad;
}

Json ValueJson(const std::optional<std::string>& bytes) {
  return bytes ? Json(FromAnsi(*bytes).value_or(EscapeBytes(*bytes))) : Json();
}

Json Members(const tagApplication& application, const CLabels& labels) {
  Json members = application.members;
  members["dry_run"] = application.dry_run;
  members["settings"] = Json::array();
  for (const tagWantedSetting& setting : application.settings) {
    members["settings"].push_back({{"id", setting.id},
                                   {"key", setting.key},
                                   {"name", TextOrNull(labels.NameCell(setting.id).shown)},
                                   {"now", ValueJson(setting.now)},
                                   {"wanted", ValueJson(setting.wanted)},
                                   {"got", ValueJson(setting.got)},
                                   {"verdict", setting.verdict.word},
                                   {"reason", TextOrNull(setting.verdict.reason)}});
  }
  return members;
}

void Report(const Json& members) {
  ReportFound(members.dump(-1, ' ', false, Json::error_handler_t::replace));
}

class CApplication {
 public:
  CApplication(const tagGlobalOptions& global, const CManagerSession& session, const CLabels& labels,
               tagApplication application)
      : global_(global), session_(session), labels_(labels), application_(std::move(application)) {}

  int Run() {
    Plan();
    RefuseOtherPrefix();  // a dry run tells of nothing that would then be refused
    if (application_.dry_run || !Any(&CApplication::IsToWrite)) {
      Print();
      return kExitDone;
    }
    Ask();
    try {
      Write(false);
      Write(true);
      JudgeAll();
    } catch (...) {
      Print();
      throw;
    }
    Print();
    return Conclude();
  }

 private:
  static bool IsToWrite(const tagWantedSetting& setting) {
    return !setting.is_left_out && setting.now != setting.wanted;
  }

  bool Any(bool (*is)(const tagWantedSetting&)) const {
    return std::any_of(application_.settings.begin(), application_.settings.end(), is);
  }

  void Plan() {
    for (tagWantedSetting& setting : application_.settings) {
      setting.now = session_.Value(setting.id);
      if (setting.is_left_out) {
        setting.verdict = {"left out", "it belongs to one device; --all takes it", EProof::kProved};
      } else if (setting.now == setting.wanted) {
        setting.verdict = {"unchanged", "", EProof::kProved};
      } else if (application_.dry_run) {
        setting.verdict = {"would be written", "", EProof::kProved};
      }
    }
  }

  void RefuseOtherPrefix() const {
    std::vector<tagSettingValue> values;
    for (const tagWantedSetting& setting : application_.settings) {
      if (IsToWrite(setting)) {
        values.push_back({setting.id, setting.wanted});
      }
    }
    RefusePrefixCharacters(session_, values);
  }

  void Ask() const {
    if (application_.yes) {
      return;
    }
    std::size_t count = 0;
    std::string lines;
    for (const tagWantedSetting& setting : application_.settings) {
      if (IsToWrite(setting)) {
        ++count;
        const std::string name = labels_.NameCell(setting.id).shown;
        const auto shown = [&](const std::optional<std::string>& value) {
          return value ? labels_.WithUnit(setting.id, ValueCell(value)).shown : std::string("(not answered)");
        };
        lines += MakeVisible("  " + setting.key + (name.empty() ? "" : "  " + name) + ": now " +
                             shown(setting.now) + ", wanted " + shown(setting.wanted)) +
                 "\n";
      }
    }
    WriteError(lines);
    Confirm("write " + std::to_string(count) + (count == 1 ? " setting" : " settings") + " to " +
                application_.printer,
            false);
  }

  void Write(bool resolutions) {
    std::vector<tagSettingValue> values;
    std::vector<tagWantedSetting*> written;
    for (tagWantedSetting& setting : application_.settings) {
      if (IsToWrite(setting) && IsResolution(setting.id) == resolutions) {
        values.push_back({setting.id, setting.wanted});
        written.push_back(&setting);
      }
    }
    if (written.empty()) {
      return;
    }
    const std::int32_t result = WriteSettings(session_, values, resolutions, [&] {
      for (tagWantedSetting* const setting : written) {
        setting->is_written = true;
        setting->verdict = {"sent, not proved", kUnknown, EProof::kOpen};
      }
      Report(Members(application_, labels_));
    });
    if (result != TVMGR_OK && result != TVMGR_NOT_CONFIRMED) {
      throw CallFailure("writing the settings failed, what was written is not known", "writing the settings",
                        result);
    }
    for (tagWantedSetting* const setting : written) {
      setting->got = session_.Value(setting->id);
      if (setting->got) {
        setting->verdict =
            JudgeWritten(setting->id, setting->wanted, EscapeBytes(setting->wanted), setting->got, true);
      }
    }
    const bool is_silent = std::any_of(written.begin(), written.end(),
                                       [](const tagWantedSetting* setting) { return !setting->got; });
    if (is_silent) {
      RequireStillAnswering(session_, "the settings were sent");
    }
  }

  // By the last reading, which came after everything was written: one setting may have changed another.
  void JudgeAll() {
    for (tagWantedSetting& setting : application_.settings) {
      setting.got = session_.Value(setting.id);
      if (setting.is_written) {
        setting.verdict =
            JudgeWritten(setting.id, setting.wanted, EscapeBytes(setting.wanted), setting.got, true);
      } else if (!setting.is_left_out && setting.got != setting.wanted) {
        const std::string before = "it was as wanted before the others were written";
        setting.verdict = setting.got ? tagSettingVerdict{"differs", before}
                                      : tagSettingVerdict{"not readable", before + "; no answer since"};
      }
    }
  }

  void Print() const {
    ReportFound({});  // from here on this process tells it itself
    if (global_.json) {
      SetJsonResult(Members(application_, labels_));
      return;
    }
    CRecordOutput output({{"", "KEY"},
                          {"", labels_.NameHeading()},
                          {"", "NOW"},
                          {"", "WANTED"},
                          {"", "GOT"},
                          {"", "VERDICT"},
                          {"", "REASON"}});
    for (const tagWantedSetting& setting : application_.settings) {
      const auto cell = [&](const std::optional<std::string>& value) {
        return value ? labels_.WithUnit(setting.id, ValueCell(value)) : tagCell::Null("-");
      };
      output.Add({tagCell::Text(setting.key), labels_.NameCell(setting.id), cell(setting.now),
                  cell(setting.wanted), cell(setting.got),
                  tagCell::Verdict(setting.verdict.word, ToneOf(setting.verdict.proof)),
                  tagCell::TextOrNull(setting.verdict.reason)});
    }
    output.PrintTable();
  }

  int Conclude() const {
    EProof worst = EProof::kProved;
    for (const tagWantedSetting& setting : application_.settings) {
      worst = std::max(worst, setting.verdict.proof);
    }
    if (worst == EProof::kFailed) {
      throw CallFailure("not every setting is confirmed", "writing and verifying the settings",
                        TVMGR_NOT_CONFIRMED);
    }
    if (worst == EProof::kOpen) {
      throw CUnproved("not every setting can be proved: see the reasons");
    }
    return kExitDone;
  }

  const tagGlobalOptions& global_;
  const CManagerSession& session_;
  const CLabels& labels_;
  tagApplication application_;
};

}  // namespace

void NoteNothingSent(const CLabels& labels, const tagApplication& application) {
  const Json members = Members(application, labels);
  SetJsonResult(members);
  Report(members);
}

int ApplySettings(const tagGlobalOptions& global, const CManagerSession& session, const CLabels& labels,
                  tagApplication application) {
  return CApplication(global, session, labels, std::move(application)).Run();
}

}  // namespace tvmgr
