#include "bench/support/linearity.h"

#include <algorithm>
#include <limits>

#include "bench/support/measure.h"

namespace tavira::bench {
namespace {

constexpr int kTurns = 7;
/** Of small inputs so many are made that together they have this size: one alone, over and over, is learnt by
 * heart by the processor, with every turn it takes. */
constexpr std::size_t kLeastInTurn = std::size_t{8} << 20;

struct tagCost {
  double least;
  double most;
};

std::vector<std::string> MakeInputs(const tagInputKind& kind, std::size_t size) {
  std::vector<std::string> inputs;
  for (std::size_t made = 0; made < kLeastInTurn; made += size) {
    inputs.push_back(kind.make(size, static_cast<unsigned>(inputs.size())));
  }
  return inputs;
}

/** ns for a byte. */
double TimeOf(const std::vector<std::string>& inputs, const std::function<void(std::string_view)>& run) {
  const double start = Now(ETime::kCpu);
  std::size_t bytes = 0;
  for (const std::string& input : inputs) {
    run(input);
    bytes += input.size();
  }
  return (Now(ETime::kCpu) - start) / static_cast<double>(bytes);
}

/** ns for a byte over all sizes, each the best of several turns: noise only ever adds. */
tagCost CostOfByte(const tagInputKind& kind, const std::vector<std::size_t>& sizes,
                   const std::function<void(std::string_view)>& run) {
  std::vector<std::vector<std::string>> inputs;
  for (const std::size_t size : sizes) {
    inputs.push_back(MakeInputs(kind, size));
  }
  std::vector<double> costs(sizes.size(), std::numeric_limits<double>::max());
  for (int turn = 0; turn < kTurns; ++turn) {
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      costs[i] = std::min(costs[i], TimeOf(inputs[i], run));
    }
  }
  // A small input that is dear does not speak against linearity: only growth does.
  return {costs.front(), *std::max_element(costs.begin(), costs.end())};
}

}  // namespace

void ReportLinearity(std::string_view id, std::string_view work, const std::vector<tagInputKind>& kinds,
                     const std::vector<std::size_t>& sizes, const std::function<void(std::string_view)>& run,
                     double goal) {
  tagCost worst{1, 0};
  std::string_view worst_kind;
  for (const tagInputKind& kind : kinds) {
    const tagCost cost = CostOfByte(kind, sizes, run);
    if (cost.most / cost.least > worst.most / worst.least) {
      worst = cost;
      worst_kind = kind.name;
    }
  }
  ReportQuotient(id, std::string(work) + ", worst: " + std::string(worst_kind), worst.most, "smallest",
                 worst.least, "ns/byte", goal);
}

}  // namespace tavira::bench
