#include "damage.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <set>

namespace tavira::test {
namespace {

constexpr std::size_t kSmall = 24;
constexpr double kLongestSeconds = 1;

std::set<char> OtherValues(char byte, bool all) {
  std::set<char> values;
  for (int value = 0; all && value < 256; ++value) {
    values.insert(static_cast<char>(value));
  }
  for (const char meaningful : std::string("\0\1\2\3\n\r \",059:;=A[^~\x80\xFF", 21)) {
    values.insert(meaningful);
  }
  for (const int flipped : {1, 0x20, 0x80}) {
    values.insert(static_cast<char>(byte ^ flipped));
  }
  values.erase(byte);
  return values;
}

}  // namespace

void ForEachDamage(const char* what, const std::string& whole,
                   const std::function<void(const std::string& bytes, const tagDamage& damage)>& judge) {
  std::size_t cases = 0;
  double slowest = 0;
  const auto run = [&](const std::string& bytes, const tagDamage& damage) {
    const std::clock_t start = std::clock();
    judge(bytes, damage);
    slowest = std::max(slowest, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    ++cases;
    EXPECT_FALSE(::testing::Test::HasFailure()) << what << (damage.is_cut ? ", cut at " : ", changed at ")
                                                << damage.at << ": " << ::testing::PrintToString(bytes);
    return !::testing::Test::HasFailure();
  };
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    if (!run(whole.substr(0, size), {size, true})) {
      return;
    }
  }
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const char value : OtherValues(whole[at], whole.size() <= kSmall)) {
      std::string bytes = whole;
      bytes[at] = value;
      if (!run(bytes, {at, false})) {
        return;
      }
    }
  }
  EXPECT_GT(kLongestSeconds, slowest) << what;
  std::printf("%-40s %4zu bytes %6zu cases, the slowest %.3f s\n", what, whole.size(), cases, slowest);
}

}  // namespace tavira::test
