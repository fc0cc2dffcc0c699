#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>

#include "emulator/files/object_payload.h"
#include "test_printer.h"

namespace lxemu {
namespace {

// (Any bytes at all: fuzz/backup_stream.cpp.)

/// Time for a stream made of repeated pieces, in seconds.
double SecondsFor(const std::string& head, const std::string& piece, std::size_t bytes) {
  std::string stream = head;
  while (stream.size() < bytes) {
    stream += piece;
  }
  tagTestPrinter printer;
  const auto begin = std::chrono::steady_clock::now();
  printer(stream);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

TEST(StreamRobustness, TimeGrowsWithTheLengthOnly) {
  const std::pair<std::string, std::string> streams[] = {
      {"", "^"},
      {"", "^DF"},
      {"", "~DYE:A,"},
      {"", "~DYE:A,B,P,,,"},
      {"^XA^DFE:A^FS", "^X"},
      {"", "^FX"},
      {"", "~H(CL"},
      {"", "^S(CLR,Z,"},
      {"", "^IDE:*?*?*?"},
      {"~DYE:A,B,P,9,0,", ":B64:"},
      {"", "^CC^"},
      {"", "\036CC*"},
      {"", "~DYE:A,B,P,1,0,x"},
      {"^XA^S(CUL,L,", "text"},
  };
  for (const auto& [head, piece] : streams) {
    // 64 times the length must not take 64 x 64 times as long; generous, since the machine may be busy.
    const double small = SecondsFor(head, piece, std::size_t{1} << 12);
    const double large = SecondsFor(head, piece, std::size_t{1} << 18);
    EXPECT_LT(large, 64 * 12 * small + 0.5) << head << piece;
  }
}

TEST(StreamRobustness, SmallCompressedUploadsCannotFillTheHost) {
  std::string bomb;
  AppendPayload(bomb, std::string(std::size_t{4} << 20, 'x'), true);
  tagTestPrinter printer;
  printer.printer.Quirks().device_capacity = (std::uint64_t{4} << 20) - 1;
  printer("~DYE:A,B,P,1,0," + bomb);
  EXPECT_EQ(printer.printer.File("E:A.PNG"), std::nullopt);
  EXPECT_EQ(printer.printer.Counts().refused, 1u);
  printer.printer.Quirks().device_capacity += 1;
  printer("~DYE:A,B,P,1,0," + bomb);
  EXPECT_NE(printer.printer.File("E:A.PNG"), std::nullopt);
}

}  // namespace
}  // namespace lxemu
