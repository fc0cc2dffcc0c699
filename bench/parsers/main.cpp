#include <cstdio>
#include <exception>

#include "bench/parsers/parsers_bench.h"

int main() {
  try {
    tavira::bench::MeasureBase64();
    tavira::bench::MeasureScan();
    tavira::bench::MeasureDirectory();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
