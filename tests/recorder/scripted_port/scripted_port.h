#pragma once

#include <cstdint>

/// Too large for registers: it is passed by its address, and returned to a place that the caller names.
struct tagManyResults {
  float a;
  std::int64_t b;
  double c;

  bool operator==(const tagManyResults&) const = default;
};
