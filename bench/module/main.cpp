#include <cstdio>
#include <exception>
#include <stdexcept>

#include "bench/module/module_bench.h"

void tavira::bench::Require(std::int32_t result) {
  if (result != 0) {
    throw std::runtime_error("an operation failed with " + std::to_string(result));
  }
}

int main() {
  try {
#ifndef _WIN32
    tavira::bench::MeasureTransfers();
#endif
    tavira::bench::MeasureBackupPiece();
    tavira::bench::MeasurePort();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
