#include "doctor/checkup.h"

#include <algorithm>
#include <chrono>

#include "computer/library_files.h"
#include "names/setting_names.h"
#include "output/command_error.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/result_words.h"
#include "output/status_words.h"
#include "output/text_encoding.h"
#include "printer/manager_session.h"
#include "printer/printer_lock.h"
#include "tavira/TaviraManager.h"

namespace tvmgr {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint64_t kQuestionMs = 12'000;
constexpr std::size_t kRounds = 5;

std::uint64_t MsSince(Clock::time_point start) {
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

/** A call that takes so long counts as one that never comes back. */
constexpr char kNoReturn[] = "Ferrolink.dll did not come back from a call within ";

tagAnswer Answered(std::int32_t result, std::uint32_t status, std::uint64_t took_ms) {
  tagAnswer answer{result, {}, {}, status, took_ms};
  if (result != TVMGR_OK) {
    answer.meaning = MeaningOf(result);
    answer.advice = WordsOf(result).advice;
  }
  return answer;
}

std::optional<std::string> StoredValue(std::int32_t id) {
  std::int32_t length = 0;
  if (!TVMGR_GetSettingValue(id, nullptr, &length)) {
    return std::nullopt;
  }
  std::string value(static_cast<std::size_t>(std::max(length, 0)), '\0');
  if (!value.empty()) {
    TVMGR_GetSettingValue(id, reinterpret_cast<std::uint8_t*>(value.data()), &length);
  }
  return value;
}

tagLoad LoadEverything() {
  const Clock::time_point start = Clock::now();
  tagLoad load;
  load.result = TVMGR_LoadSetting(true, 0);
  load.took_ms = MsSince(start);
  load.meaning = load.result == TVMGR_OK ? "" : MeaningOf(load.result);
  for (const tagSettingName& setting : AllSettings()) {
    if (setting.id == TVMGR_SETTING_ST || setting.id == TVMGR_SETTING_BACKGROUND) {
      continue;
    }
    const std::optional<std::string> value = StoredValue(setting.id);
    ++load.readable;
    load.answered += value ? 1U : 0U;
    const bool is_resolution = setting.id == TVMGR_SETTING_CLR_Z || setting.id == TVMGR_SETTING_CLR_P ||
                               setting.id == TVMGR_SETTING_CLR_R;
    load.is_neutral = load.is_neutral && (!is_resolution || !value || value == "600");
  }
  return load;
}

}  // namespace

bool CCheckup::Step(const std::string& name, const std::string& cure,
                    const std::function<tagFinding()>& step) {
  const Clock::time_point start = Clock::now();
  tagFinding finding;
  try {
    finding = step();
  } catch (const CCommandError& error) {
    finding = {name, EHealth::kFailed, error.what(), cure};
  }
  finding.took_ms = MsSince(start);
  findings_.push_back(finding);
  report_(finding);
  return finding.health != EHealth::kFailed;
}

void CCheckup::NotTried(const std::string& name) {
  Step(name, {}, [&] {
    return tagFinding{name, EHealth::kNotTried, "the step \"" + in_the_way_ + "\" stands in the way", ""};
  });
}

void CCheckup::TalkToPrinter() {
  // A printer that is silent may have other prefix characters: that question it understands all the same.
  bool is_asked = false;
  Step(kStepAnswer, {}, [&] {
    answer_ = AskForState();
    is_asked = true;
    return JudgeAnswer(answer_);
  });
  in_the_way_ = answer_.status != TVMGR_STATUS_UNKNOWN ? "" : kStepAnswer;
  if (is_asked && answer_.result == TVMGR_OK) {
    Step(kStepPrefix, {}, [&] { return AskForPrefix(); });
  } else {
    NotTried(kStepPrefix);
  }
  if (!in_the_way_.empty()) {
    NotTried(kStepState);
    NotTried(kStepRoundTrip);
    return;
  }
  Step(kStepState, {}, [&] {
    const tagStatusWords words = StatusWords(status_);
    return JudgeState(status_, std::string(words.name) + " (" + std::string(words.meaning) + ")");
  });
  Step(kStepRoundTrip, {}, [&] { return reads_settings_ ? ReadSettings() : GoRound(); });
}

void CCheckup::LookAround() {
  const std::string cure = "\"tvmgr use --clear\" forgets the printer";
  if (Step("choice", cure, [&] { return LookAtChoice(); })) {
    Step("port", "look at the print spooler's service", [&] { return LookAtPort(); });
  } else {
    in_the_way_ = in_the_way_.empty() ? "choice" : in_the_way_;
    NotTried("port");
  }
  Step("network", {}, [&] { return LookAtNetwork(); });
}

void CCheckup::Run() {
  Step("tool", {}, [&] { return LookAtTool(); });
  if (!Step("module", kOneDelivery, [&] { return LookAtModule(); })) {
    in_the_way_ = "module";
  }
  if (!is_stuck_ &&
      !Step("port library", "put another one beside tvmgr.exe", [&] { return LookAtPortLibrary(); }) &&
      in_the_way_.empty()) {
    in_the_way_ = "port library";
  }
  if (is_stuck_) {
    // While a DLL is being loaded nothing else can be, and hardly a question is answered without one.
    for (const char* const name : {"port library", "choice", "port", "network"}) {
      if (findings_.back().step != name) {
        NotTried(name);
      }
    }
  } else {
    LookAround();
  }
  if (in_the_way_.empty() && is_started_) {
    TalkToPrinter();
  } else {
    for (const char* const name : {kStepAnswer, kStepPrefix, kStepState, kStepRoundTrip}) {
      NotTried(name);
    }
  }
  if (is_loaded_ && !is_stuck_) {
    Within<std::int32_t>("ending the module", kQuestionMs, [] { return TVMGR_Terminate(); });
  }
}

tagAnswer CCheckup::AskForState() {
  const auto answer = Within<tagAnswer>("asking for the printer's state", kQuestionMs, [] {
    const Clock::time_point start = Clock::now();
    std::uint32_t status = TVMGR_STATUS_UNKNOWN;
    const std::int32_t result = TVMGR_GetPrinterStatus(&status);
    return Answered(result, status, MsSince(start));
  });
  if (!answer) {
    throw CUnreachable(kNoReturn + FormatDuration(kQuestionMs));
  }
  status_ = answer->status;
  if (answer->status != TVMGR_STATUS_UNKNOWN && !answer_ms_) {
    answer_ms_ = answer->took_ms;
  }
  return *answer;
}

tagFinding CCheckup::AskForPrefix() {
  struct tagReply {
    tagAnswer answer;
    bool is_default = true;
  };
  const auto reply = Within<tagReply>("asking for the prefix characters", kQuestionMs, [] {
    const Clock::time_point start = Clock::now();
    std::uint8_t is_default = 1;
    const std::int32_t result = TVMGR_IsDefaultPrefix(&is_default);
    return tagReply{Answered(result, 0, MsSince(start)), is_default != 0};
  });
  if (!reply) {
    in_the_way_ = kStepPrefix;
    throw CUnreachable(kNoReturn + FormatDuration(kQuestionMs));
  }
  return JudgePrefix(reply->answer, reply->is_default, answer_);
}

tagFinding CCheckup::GoRound() {
  std::vector<tagAnswer> answers;
  // Two silences say as much as five, and each takes 3 s.
  for (int silent = 0; answers.size() < kRounds && silent < 2;) {
    answers.push_back(AskForState());
    if (answers.back().result != TVMGR_OK) {
      break;
    }
    silent += answers.back().status == TVMGR_STATUS_UNKNOWN ? 1 : 0;
  }
  return JudgeRoundTrips(answers);
}

tagFinding CCheckup::ReadSettings() {
  // Not ended earlier, nor beside another tvmgr: some printers would be left with other resolutions.
  const std::uint64_t longest_ms = limit::kFullLoad + kQuestionMs;
  const std::string what = "reading all settings";
  const CInterruptWait interrupt;
  const CPrinterLock lock(options_, known_, Describe(choice_), interrupt);
  CInterruptWait::SetRunning(what);
  const auto load = Within<tagLoad>(what, longest_ms, LoadEverything);
  CInterruptWait::SetRunning({});
  if (!load) {
    throw CUnreachable(kNoReturn + FormatDuration(longest_ms));
  }
  return JudgeLoad(*load);
}

tagFinding CCheckup::LookAtChoice() {
  choice_ = ChoiceInForce(options_);
  NoteJsonPrinter(PrinterJson(choice_));
  ReportPrinter(Describe(choice_));
  const bool is_chosen = !choice_.port.empty() || !choice_.device.empty() || !choice_.address.empty();
  return is_chosen
             ? tagFinding{"choice", EHealth::kWell, Describe(choice_), ""}
             : tagFinding{"choice", EHealth::kLook, "none is chosen: the port library takes one by itself",
                          "name one with --port, --device or --address, or remember it with \"tvmgr use\"; "
                          "\"tvmgr search all\" and \"tvmgr ports\" list what there is"};
}

}  // namespace tvmgr
