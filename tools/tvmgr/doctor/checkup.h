#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "doctor/judgement.h"
#include "options/options.h"
#include "output/progress.h"
#include "output/work_report.h"
#include "printer/printer_choice.h"

namespace tvmgr {

/**
 * The steps of the doctor, one after the other. Each runs in a thread of its own and has a bound: one that is over it counts as
 * failed, and its thread is left where it is. A step that needs an earlier one is not tried when that has failed.
 */
class CCheckup {
 public:
  /** @param report  gets each finding as soon as there is one */
  CCheckup(const tagGlobalOptions& options, bool reads_settings,
           std::function<void(const tagFinding&)> report)
      : options_(options), reads_settings_(reads_settings), report_(std::move(report)) {}

  void Run();

  const std::vector<tagFinding>& Findings() const { return findings_; }
  /** Of the first question that the printer answered. */
  std::optional<std::uint64_t> AnswerMs() const { return answer_ms_; }
  const tagPrinterChoice& Choice() const { return choice_; }
  /** True when a thread still hangs in a DLL: the process has to be ended without asking that one. */
  bool IsStuck() const { return is_stuck_; }

 private:
  /**
   * What the work gives; none when it took longer.
   *
   * @param is_loading  of DLLs: while one hangs in that, no thread can end
   */
  template <typename Result>
  std::optional<Result> Within(const std::string& what, std::uint64_t longest_ms,
                               std::function<Result()> work, bool is_loading = false) {
    auto progress = std::make_unique<CProgress>(what, longest_ms, !options_.quiet);
    ReportStep(what, longest_ms);
    std::packaged_task<Result()> task(std::move(work));
    std::future<Result> result = task.get_future();
    std::thread(std::move(task)).detach();
    const bool is_done = result.wait_for(std::chrono::milliseconds(longest_ms)) == std::future_status::ready;
    ReportStep({}, 0);
    is_stuck_ = is_stuck_ || !is_done;
    if (!is_done && is_loading) {
      static_cast<void>(progress.release());  // its thread could not be waited for
    }
    return is_done ? std::optional<Result>(result.get()) : std::nullopt;
  }

  /** Adds what a step finds; an error that ends it is its finding. True unless it failed. */
  bool Step(const std::string& name, const std::string& cure, const std::function<tagFinding()>& step);
  void NotTried(const std::string& name);

  tagFinding LookAtTool();
  tagFinding LookAtModule();
  tagFinding LookAtPortLibrary();
  tagFinding LookAtChoice();
  tagFinding LookAtPort();
  tagFinding LookAtNetwork();
  tagAnswer AskForState();
  tagFinding AskForPrefix();
  tagFinding GoRound();
  tagFinding ReadSettings();
  void LookAround();
  void TalkToPrinter();

  const tagGlobalOptions& options_;
  const bool reads_settings_;
  const std::function<void(const tagFinding&)> report_;
  std::vector<tagFinding> findings_;
  tagPrinterChoice choice_;
  tagPrinterChoice known_; /**< to the module */
  std::string in_the_way_; /**< the step without which the printer cannot be asked; empty: none */
  bool is_loaded_ = false;
  bool is_started_ = false;
  bool is_stuck_ = false;
  std::uint32_t status_ = 0;
  tagAnswer answer_; /**< to the first question for the state */
  std::optional<std::uint64_t> answer_ms_;
};

}  // namespace tvmgr
