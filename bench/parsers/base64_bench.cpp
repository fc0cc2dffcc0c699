#include <malloc.h>

#include <array>
#include <limits>
#include <random>

#include "bench/parsers/parsers_bench.h"
#include "bench/parsers/peers.h"
#include "bench/support/allocations.h"
#include "bench/support/linearity.h"
#include "bench/support/measure.h"
#include "storage/base64.h"
#include "storage/payload.h"

namespace tavira::bench {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kForeign{"\r\n\t :-_.!\0\x7F\x80\xFF", 13};
constexpr std::size_t kMebibyte = std::size_t{1} << 20;

/** Text with a line break every `line` characters (0: none) and foreign bytes in `foreign_percent` of all
 * places. */
std::string MakeText(std::size_t size, std::size_t line, unsigned foreign_percent, unsigned seed = 7) {
  std::mt19937 random(seed);
  std::string text;
  text.reserve(size + 2);
  while (text.size() < size) {
    const std::string_view from = random() % 100 < foreign_percent ? kForeign : kAlphabet;
    text.push_back(from[random() % from.size()]);
    if (line != 0 && text.size() % (line + 2) == line) {
      text.append("\r\n");
    }
  }
  text.resize(size);
  return text;
}

/** Lets freed memory be used again. Else each result of many megabytes would be made of fresh pages, and the
 * time that the system takes to clear these would hide that of the decoder. */
void KeepMemory() {
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
}

/** The peers write into a buffer that is there already; ours makes the string that it returns. */
tagComparison CompareWithGlib(const std::string& text) {
  std::string out(text.size(), '\0');
  return Compare([&] { Keep(DecodeBase64(text).data()); },
                 [&] {
                   DecodeWithGlib(text, out);
                   Keep(out.data());
                 });
}

tagComparison CompareWithOpenSsl(const std::string& text) {
  std::string out(text.size(), '\0');
  return Compare([&] { Keep(DecodeBase64(text).data()); },
                 [&] {
                   DecodeWithOpenSsl(text, out);
                   Keep(out.data());
                 });
}

void MeasurePayload(std::string_view marker, std::string_view name) {
  const std::string text = MakeText(64 * kMebibyte, 0, 0);
  const std::string answer = "~DYE:A.PNG,B,P,50331648,0," + std::string(marker) + text + ":A1B2";
  const auto extract = [&] {
    std::string data;
    ExtractPayload(answer, data);
    Keep(data.data());
  };
  const auto took = Compare(
      extract, [&] { Keep(DecodeBase64(text).data()); }, ETime::kCpu, 9);
  ReportWithin("P4", "64 MiB payload, " + std::string(name), "decode alone", took, 1.1);
}

}  // namespace

void MeasureBase64() {
  KeepMemory();
  const std::string clean = MakeText(kMebibyte, 0, 0);
  ReportFaster("P1", "base64, clean, 1 MiB", "glib step", CompareWithGlib(clean), 2.7);
  ReportFaster("P1", "base64, clean, 1 MiB", "OpenSSL", CompareWithOpenSsl(clean), 1.5);
  ReportFaster("P2", "base64, lines of 76", "glib step", CompareWithGlib(MakeText(kMebibyte, 76, 0)), 2.3);
  constexpr std::array<std::pair<unsigned, double>, 4> kGoals{{{1, 1.3}, {10, 1.4}, {50, 4}, {100, 1}}};
  for (const auto& [percent, goal] : kGoals) {
    ReportFaster("P2", "base64, " + std::to_string(percent) + " % foreign", "glib step",
                 CompareWithGlib(MakeText(kMebibyte, 0, percent)), goal);
  }
  const auto mixed = [](std::size_t line, unsigned percent) {
    return [=](std::size_t size, unsigned seed) { return MakeText(size, line, percent, seed); };
  };
  ReportLinearity(
      "P3", "base64, 64 KiB to 64 MiB",
      {{"clean", mixed(0, 0)},
       {"lines of 76", mixed(76, 0)},
       {"lines of 1", mixed(1, 0)},
       {"10 % foreign", mixed(0, 10)},
       {"50 % foreign", mixed(0, 50)},
       {"all foreign", mixed(0, 100)}},
      {kMebibyte / 16, kMebibyte, 8 * kMebibyte, 64 * kMebibyte},
      [](std::string_view text) { Keep(DecodeBase64(text).data()); }, 1.3);
  MeasurePayload(":B64:", "plain");
  MeasurePayload(":Z64:", "compressed");
  ReportFigure("P12", "allocations of one base64 call",
               static_cast<double>(CountAllocations([&] { Keep(DecodeBase64(clean).data()); }).count), "", 1);
}

}  // namespace tavira::bench
