#include "batch/verdict.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tvmgr {
namespace {

using Json = nlohmann::ordered_json;

// By the tool's exit codes 0 to 5: an input file that cannot be read is no printer's fault, but nothing was done.
constexpr std::array<const char*, 6> kWords{"done",       "failed",      "refused",
                                            "not proved", "unreachable", "failed"};
constexpr std::uint32_t kCtrlC = 0xC000013A;

std::string TextAt(const Json& json, const char* member) {
  const auto found = json.find(member);
  return found != json.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::string LastLine(std::string_view text) {
  text = text.substr(0, text.find_last_not_of("\r\n") + 1);
  const std::size_t start = text.find_last_of('\n');
  return std::string(start == std::string_view::npos ? text : text.substr(start + 1));
}

/** All lines in front of the error, but for progress and calls (--verbose). */
std::vector<std::string> RemarksOf(std::string_view err) {
  constexpr std::string_view kMark = "remark: ";
  std::vector<std::string> remarks;
  while (!err.empty() && !err.starts_with("tvmgr: ")) {
    const std::size_t end = std::min(err.find('\n'), err.size());
    std::string_view line = err.substr(0, end);
    err.remove_prefix(std::min(end + 1, err.size()));
    line = line.substr(0, line.find_last_not_of('\r') + 1);
    line.remove_prefix(line.starts_with(kMark) ? kMark.size() : 0);
    if (!line.empty() && line.find(" ... ") == std::string_view::npos && !line.starts_with("TVMGR_") &&
        !line.starts_with("printer: ")) {
      remarks.emplace_back(line);
    }
  }
  return remarks;
}

/** Why the report cannot be one; empty: it is one, and it is in `document`. */
std::string ProblemOf(const tagChildRun& run, std::string_view command, Json& document) {
  if (run.exit_code == kCtrlC) {
    return "its tvmgr was ended by Ctrl-C";
  }
  if (run.exit_code >= 0xC0000000U) {
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "0x%08X", static_cast<unsigned>(run.exit_code));
    return std::string("its tvmgr ended with the exception ") + code.data();
  }
  const std::string ended = "its tvmgr ended with " + std::to_string(run.exit_code);
  const std::string last = LastLine(run.err);
  const std::string words = last.empty() ? std::string() : " (" + last + ")";
  document = Json::parse(run.out, nullptr, false);
  if (run.out.empty()) {
    return ended + " and without a report" + words;
  }
  if (!document.is_object()) {
    return ended + ", but its report is cut short or damaged" + words;
  }
  const bool is_ours = document.value("version", Json()) == Json(1) &&
                       TextAt(document, "command") == command && document.contains("error") &&
                       run.exit_code < kWords.size();
  if (!is_ours || document.value("exit_code", Json()) != Json(run.exit_code)) {
    return ended + ", but its report says something else" + words;
  }
  return {};
}

std::string ReasonOf(const tagPrinterVerdict& verdict) {
  const Json& error = verdict.document.at("error");
  if (!error.is_object()) {
    return verdict.result;
  }
  std::string reason = TextAt(error, "text");
  const std::string advice = TextAt(error, "advice");
  // Usage: the way to --help helps with the one command line, not with each printer.
  if (!advice.empty() && reason.find(advice) == std::string::npos && verdict.exit_code != 2) {
    reason += (reason.ends_with('\n') ? "-> " : ": ") + advice;
  }
  return reason.substr(0, reason.find_last_not_of('\n') + 1) + DocumentReasons(verdict.document);
}

}  // namespace

tagPrinterVerdict NotStarted(const std::string& word, const std::string& reason) {
  tagPrinterVerdict verdict;
  verdict.word = word;
  verdict.reason = reason;
  return verdict;
}

tagPrinterVerdict Judge(const tagChildRun& run, std::string_view command) {
  tagPrinterVerdict verdict = NotStarted("no verdict", run.why);
  verdict.took_ms = run.took_ms;
  verdict.remarks = RemarksOf(run.err);
  const std::string unknown = ": what was done on the printer is not known";
  switch (run.end) {
    case EChildEnd::kNotStarted:
      verdict.word = "not started";
      return verdict;
    case EChildEnd::kTooLong:
      verdict.reason += unknown;
      return verdict;
    case EChildEnd::kTooMuch:
      verdict.reason = "its tvmgr wrote without end, and was ended" + unknown;
      return verdict;
    case EChildEnd::kInterrupted:
      verdict.reason = "its tvmgr was ended in the middle by Ctrl-C" + unknown;
      return verdict;
    case EChildEnd::kItself:
      break;
  }
  Json document;
  if (const std::string problem = ProblemOf(run, command, document); !problem.empty()) {
    verdict.reason = problem + unknown;
    return verdict;
  }
  verdict.exit_code = static_cast<int>(run.exit_code);
  verdict.document = std::move(document);
  verdict.result = DocumentWords(verdict.document);
  verdict.word = kWords.at(run.exit_code);
  verdict.reason = verdict.IsDone() ? std::string() : ReasonOf(verdict);
  return verdict;
}

}  // namespace tvmgr
