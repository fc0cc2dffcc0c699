#pragma once

#include <functional>
#include <string_view>

namespace tavira::bench {

/** Something to time: one call is one round of it. */
using Work = std::function<void()>;

/** kCpu: the time that this thread was given; others on the machine do not count. kWall: for work that waits
 * for the system. */
enum class ETime { kCpu, kWall };

/** Nanoseconds since some moment. */
double Now(ETime time);

/** What two pieces of work took. They ran in turns, so that whatever slows the machine slows both. */
struct tagComparison {
  double ours = 0;  /**< ns for a round, the median */
  double peer = 0;  /**< likewise */
  double ratio = 0; /**< ours / peer: the median of all turns */
};

/** Runs both in `turns` turns, in each for about `turn_ms` milliseconds or for one round. */
tagComparison Compare(const Work& ours, const Work& peer, ETime time = ETime::kCpu, int turns = 21,
                      double turn_ms = 4);

/** Keeps a result, and what it points to, from being optimised away. */
inline void Keep(const void* result) {
  asm volatile("" : : "g"(result) : "memory");
}

// --- Rows of the table: each prints one line of JSON that run.py puts into the table. ---------------------

/** Goal: at least `goal` times as fast as the peer. */
void ReportFaster(std::string_view id, std::string_view work, std::string_view peer,
                  const tagComparison& took, double goal);

/** Goal: at most `goal` times as long as the peer takes. */
void ReportWithin(std::string_view id, std::string_view work, std::string_view peer,
                  const tagComparison& took, double goal);

/** Goal: `ours` is at most `goal` times `base`; `unit` of both, "bytes" for example. */
void ReportQuotient(std::string_view id, std::string_view work, double ours, std::string_view base_name,
                    double base, std::string_view unit, double goal);

/** No goal: a comparison that shows where the time goes. */
void ReportAside(std::string_view id, std::string_view work, std::string_view peer,
                 const tagComparison& took);

/** Goal: at most `goal` of the unit. */
void ReportFigure(std::string_view id, std::string_view work, double ours, std::string_view unit,
                  double goal);

}  // namespace tavira::bench
