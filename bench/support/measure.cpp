#include "bench/support/measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace tavira::bench {
namespace {

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/** ns for one round of `rounds`. */
double TimeOf(const Work& work, int rounds, ETime time) {
  const double start = Now(time);
  for (int i = 0; i < rounds; ++i) {
    work();
  }
  return (Now(time) - start) / rounds;
}

/** How many rounds fill a turn. Runs the work at least once, so that what is lazy is done. */
int RoundsInTurn(const Work& work, double turn_ms, ETime time) {
  int rounds = 1;
  double took = TimeOf(work, rounds, time);
  while (took * rounds < turn_ms * 1e6 / 2 && rounds < 1 << 20) {
    rounds *= 2;
    took = TimeOf(work, rounds, time);
  }
  return std::max(1, static_cast<int>(turn_ms * 1e6 / std::max(took, 1.0)));
}

void PrintRow(std::string_view id, std::string_view work, double ours, std::string_view peer_name,
              double peer, std::string_view unit, double figure, std::optional<double> goal, bool at_least) {
  const std::string goal_text = goal ? std::to_string(*goal) : "null";
  // Ids, names and units are our own: nothing in them needs escaping.
  std::printf(R"({"id": "%s", "work": "%s", "ours": %.6g, "peer_name": "%s", "peer": %.6g, "unit": "%s", )"
              R"("figure": %.6g, "goal": %s, "at_least": %s})"
              "\n",
              std::string(id).c_str(), std::string(work).c_str(), ours, std::string(peer_name).c_str(), peer,
              std::string(unit).c_str(), figure, goal_text.c_str(), at_least ? "true" : "false");
  std::fflush(stdout);
}

}  // namespace

double Now(ETime time) {
#ifdef CLOCK_THREAD_CPUTIME_ID
  if (time == ETime::kCpu) {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
  }
#endif
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double, std::nano>(now).count();
}

tagComparison Compare(const Work& ours, const Work& peer, ETime time, int turns, double turn_ms) {
  const int our_rounds = RoundsInTurn(ours, turn_ms, time);
  const int peer_rounds = RoundsInTurn(peer, turn_ms, time);
  std::vector<double> our_times;
  std::vector<double> peer_times;
  std::vector<double> ratios;
  for (int turn = 0; turn < turns; ++turn) {
    our_times.push_back(TimeOf(ours, our_rounds, time));
    peer_times.push_back(TimeOf(peer, peer_rounds, time));
    ratios.push_back(our_times.back() / peer_times.back());
  }
  return {Median(our_times), Median(peer_times), Median(ratios)};
}

void ReportFaster(std::string_view id, std::string_view work, std::string_view peer,
                  const tagComparison& took, double goal) {
  PrintRow(id, work, took.ours, peer, took.peer, "ns", 1 / took.ratio, goal, true);
}

void ReportWithin(std::string_view id, std::string_view work, std::string_view peer,
                  const tagComparison& took, double goal) {
  PrintRow(id, work, took.ours, peer, took.peer, "ns", took.ratio, goal, false);
}

void ReportQuotient(std::string_view id, std::string_view work, double ours, std::string_view base_name,
                    double base, std::string_view unit, double goal) {
  PrintRow(id, work, ours, base_name, base, unit, ours / base, goal, false);
}

void ReportAside(std::string_view id, std::string_view work, std::string_view peer,
                 const tagComparison& took) {
  PrintRow(id, work, took.ours, peer, took.peer, "ns", took.ratio, std::nullopt, false);
}

void ReportFigure(std::string_view id, std::string_view work, double ours, std::string_view unit,
                  double goal) {
  PrintRow(id, work, ours, "", 0, unit, ours, goal, false);
}

}  // namespace tavira::bench
