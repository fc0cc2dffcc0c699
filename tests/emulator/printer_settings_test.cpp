#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "emulator/printer/setting_table.h"
#include "test_printer.h"

namespace lxemu {
namespace {

TEST(PrinterSettings, AnswersEveryReadableSettingInTheOrderAsked) {
  tagTestPrinter printer;
  std::string queries;
  std::string expected;
  for (const tagFactorySetting& setting : kFactorySettings) {
    queries += "~H(" + std::string(setting.key);
    expected += Framed("^S(" + std::string(setting.key) + "," + std::string(setting.value));
  }
  EXPECT_EQ(printer(queries), expected);
  EXPECT_EQ(printer.printer.Setting("CLR,Z"), "600");
  EXPECT_EQ(printer.printer.Setting("CMP,U"), "D");
}

TEST(PrinterSettings, RemembersTheClockAndCountsWhatItDisregards) {
  tagTestPrinter printer;
  printer("^XA^ST03,01,2024,12,30,00,M^XZ^XA^PW100^XZ^S(CLR,Z,300^XA^S(CLR,Z^XZ^XA^S(SMA,S,IL^XZ");
  EXPECT_EQ(printer.printer.ClockText(), "03,01,2024,12,30,00,M");
  const tagCommandCounts& counts = printer.printer.Counts();
  EXPECT_EQ(counts.unknown, 1u);
  EXPECT_EQ(counts.outside_format, 1u);
  EXPECT_EQ(counts.malformed, 1u);
  EXPECT_EQ(counts.refused, 1u);
}

}  // namespace
}  // namespace lxemu
