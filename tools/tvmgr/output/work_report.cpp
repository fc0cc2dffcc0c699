#include "output/work_report.h"

#include <windows.h>

#include <algorithm>

namespace tvmgr {
namespace {

tagWorkReport* work_report = nullptr;

void Copy(const std::string& text, char (&target)[256]) {
  const std::size_t size = std::min(text.size(), sizeof target - 1);
  text.copy(target, size);
  target[size] = '\0';
}

}  // namespace

void SetWorkReport(tagWorkReport* report) {
  work_report = report;
}

CWorkScope::CWorkScope(EWork work) : earlier_(work_report == nullptr ? EWork::kNone : work_report->work) {
  if (work_report != nullptr) {
    work_report->work = work;
  }
}

CWorkScope::~CWorkScope() {
  if (work_report != nullptr) {
    work_report->work = earlier_;
  }
}

void ReportPrinter(const std::string& printer) {
  if (work_report != nullptr) {
    Copy(printer, work_report->printer);
  }
}

void ReportChoice(const std::string& choice) {
  if (work_report != nullptr) {
    Copy(choice.size() < sizeof work_report->choice ? choice : std::string(), work_report->choice);
  }
}

void ReportFound(const std::string& json) {
  if (work_report == nullptr) {
    return;
  }
  // In this order: the process may be ended at any moment.
  work_report->found_size = 0;
  if (json.size() <= sizeof work_report->found) {
    json.copy(work_report->found, json.size());
    work_report->found_size = static_cast<std::uint32_t>(json.size());
  }
}

void ReportStep(const std::string& what, std::uint64_t longest_ms) {
  if (work_report == nullptr) {
    return;
  }
  if (!what.empty()) {
    Copy(what, work_report->step);
  }
  // The bound is that of the module's waits; the port library takes its time as well.
  const std::uint64_t grace_ms = std::max<std::uint64_t>(longest_ms / 4, 15'000);
  work_report->step_ends_ms = longest_ms == 0 ? 0 : GetTickCount64() + longest_ms + grace_ms;
}

void ReportTransfer(std::uint64_t bytes) {
  constexpr std::uint64_t kSlowestBytesPerMs = 64;
  if (work_report != nullptr) {
    work_report->more_ms = work_report->more_ms + bytes / kSlowestBytesPerMs;
  }
}

}  // namespace tvmgr
