#include <cstring>
#include <stdexcept>

#include "bench/parsers/parsers_bench.h"
#include "bench/parsers/peers.h"
#include "bench/support/allocations.h"
#include "bench/support/linearity.h"
#include "bench/support/measure.h"
#include "command/answer_parser.h"
#include "command/setting_table.h"
#include "emulator/printer/setting_table.h"

namespace tavira::bench {
namespace {

/** The answer to the query of all settings, as a printer with factory settings gives it. */
std::string MakeFullAnswer() {
  std::string answer;
  for (const lxemu::tagFactorySetting& setting : lxemu::kFactorySettings) {
    answer.append("\x02^S(").append(setting.key).append(",").append(setting.value).append("\x03\r\n");
  }
  return answer;
}

/** From STX to ETX, frame by frame, and nothing else. */
std::size_t WalkFrames(std::string_view answer) {
  std::size_t bytes = 0;
  const char* at = answer.data();
  const char* const end = at + answer.size();
  const auto find = [&](char byte) {
    at = static_cast<const char*>(std::memchr(at, byte, static_cast<std::size_t>(end - at)));
    return at != nullptr;
  };
  while (find('\x02')) {
    const char* const frame = ++at;
    if (!find('\x03')) {
      break;
    }
    bytes += static_cast<std::size_t>(at - frame);
  }
  return bytes;
}

std::size_t MatchAll(std::string_view answer) {
  CSettingAnswers answers(answer);
  std::size_t sum = 0;
  while (const auto found = answers.Next()) {
    sum += found->id + found->value.size();
  }
  return sum;
}

std::vector<std::string> AnswerHeads() {
  std::vector<std::string> heads;
  for (const tagSettingRow& row : kSettingTable) {
    if (!row.answer_head.IsEmpty()) {
      heads.emplace_back(row.answer_head.View());
    }
  }
  return heads;
}

template <typename Result>
Work Do(Result (*function)(std::string_view), const std::string& text) {
  return [function, &text] {
    const auto result = function(text);
    Keep(&result);
  };
}

tagInputKind Repeated(std::string_view name, std::string_view piece) {
  return {name, [piece](std::size_t size, unsigned) {
            std::string answer = "\x02";
            while (answer.size() < size) {
              answer.append(piece);
            }
            return answer.append("\x03");
          }};
}

}  // namespace

void MeasureScan() {
  const std::string answer = MakeFullAnswer();
  const CHyperscan hyperscan(AnswerHeads());
  if (ScanAnswers(answer).size() != 76 || hyperscan.CountMatches(answer) != 76) {
    throw std::runtime_error("the answer of all settings has 76 values");
  }
  const Work walk = Do(&WalkFrames, answer);
  const Work match = Do(&MatchAll, answer);
  ReportWithin("P5", "answers of all settings, values owned", "bare walk",
               Compare(Do(&ScanAnswers, answer), walk), 2.0);
  ReportWithin("P5", "answers of all settings, matching alone", "bare walk", Compare(match, walk), 1.4);
  ReportFaster("P5", "answers of all settings, matching alone", "Hyperscan",
               Compare(match, [&] { Keep(reinterpret_cast<void*>(hyperscan.CountMatches(answer))); }), 1.5);
  constexpr std::size_t kKibibyte = 1024;
  ReportLinearity(
      "P5", "answers, 64 KiB to 16 MiB",
      {Repeated("heads that are none", "^S(CL^S(XXX,Y"), Repeated("one long value", "^S(CLR,Z600"),
       Repeated("carets", "^"), Repeated("openings", "^S("), Repeated("openings of frames", "\x02^S("),
       Repeated("empty frames", "\x02\x03"), Repeated("heads alone", "\x02^S(CLR,Z\x03")},
      {64 * kKibibyte, 1024 * kKibibyte, 16 * 1024 * kKibibyte},
      [](std::string_view text) { Keep(reinterpret_cast<void*>(MatchAll(text))); }, 1.3);
  // Every factory value fits into its string: what is counted is the list.
  ReportFigure("P12", "allocations of one scan beyond its values",
               static_cast<double>(CountAllocations([&] { Keep(ScanAnswers(answer).data()); }).count), "", 2);
}

}  // namespace tavira::bench
