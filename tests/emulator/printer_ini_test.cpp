#include "emulator/memory/printer_ini.h"

#include <gtest/gtest.h>

#include "emulator/port/exchange_log.h"
#include "emulator/printer/text_escape.h"
#include "test_printer.h"

namespace lxemu {
namespace {

TEST(PrinterIni, ReadsEveryKey) {
  const tagPrinterIni ini = ReadPrinterIni(
      "; a comment\r\n[printer]\r\nstrict_prefix = 1\nshort_format_names=1\ncompressed_downloads=1\n"
      "ignore_sets=1\noff_line=1\nupper_case_values=1\nstate=CL\nbusy_ms=300\nmaintenance_ms=40\n"
      "device_capacity=5000000000\nunanswered=CLR,Z;SMA,S\nrefused=CLR,P CLR,R\npadded=CLR,Z:4\n"
      "garbage=\\x02\\x00ab\\r\\n\\x5C\n"
      "[factory]\nCLR,Z=300\n[answers]\nCLR,P=400\n"
      "[faults]\nlatency_ms=7\nsilent=1\nsilent_from=3\ncut_at=12\ncut_from=4\nfail=SendData:2:-5; "
      "Poll:1:-9\n");
  EXPECT_TRUE(ini.problems.empty());
  const tagQuirks& quirks = ini.quirks;
  EXPECT_TRUE(quirks.strict_prefix && quirks.short_format_names && quirks.compressed_downloads &&
              quirks.ignore_sets && quirks.off_line && quirks.upper_case_values);
  EXPECT_EQ(ini.state, "CL");
  EXPECT_EQ(ini.busy_ms, 300u);
  EXPECT_EQ(quirks.maintenance_ms, 40u);
  EXPECT_EQ(quirks.device_capacity, 5'000'000'000u);
  EXPECT_TRUE(quirks.unanswered_keys.contains("CLR,Z") && quirks.unanswered_keys.contains("SMA,S"));
  EXPECT_EQ(quirks.refused_keys.size(), 2u);
  EXPECT_EQ(quirks.padded_keys.at("CLR,Z"), 4u);
  EXPECT_EQ(quirks.garbage_between_frames, std::string("\x02\0ab\r\n\\", 7));
  EXPECT_EQ(ini.factory.at("CLR,Z"), "300");
  EXPECT_EQ(quirks.fixed_answers.at("CLR,P"), "400");
  EXPECT_EQ(ini.faults.latency_ms, 7u);
  EXPECT_TRUE(ini.faults.silent);
  EXPECT_EQ(ini.faults.silent_from, 3u);
  EXPECT_EQ(ini.faults.cut_answer_at, 12u);
  EXPECT_EQ(ini.faults.cut_from, 4u);
  ASSERT_EQ(ini.faults.call_faults.size(), 2u);
  EXPECT_EQ(ini.faults.call_faults[1].call, PortCall::kPoll);
  EXPECT_EQ(ini.faults.call_faults[0].nth, 2u);
  EXPECT_EQ(ini.faults.call_faults[0].code, -5);
}

TEST(PrinterIni, NamesEachLineThatItDoesNotUnderstand) {
  for (const char* line :
       {"[printer]\nstrict_prefix=yes", "[printer]\nbusy_ms=-1", "[printer]\nbusy_ms=5s", "strict_prefix=1",
        "[printer]\nunknown=1", "[printer]\nnonsense", "[printer]\nrefused=XYZ,9", "[printer]\ngarbage=\\q",
        "[printer]\npadded=CLR,Z", "[factory]\nSMA,S=OF", "[answers]\nABC,D=1", "[faults]\nfail=Send:1:-1",
        "[faults]\nfail=Read:1", "[faults]\nsilent_from=99999999999"}) {
    EXPECT_EQ(ReadPrinterIni(line).problems.size(), 1u) << line;
  }
  EXPECT_EQ(ReadPrinterIni("").faults.latency_ms, 20u);
}

TEST(TextEscape, RoundTripsAnyByte) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) {
    bytes += static_cast<char>(i);
  }
  EXPECT_EQ(Unescaped(Escaped(bytes)), bytes);
  EXPECT_EQ(PrinterFileName(HostFileName(bytes)), bytes);
  EXPECT_EQ(Escaped("\x02^XA\r\n\\"), "\\x02^XA\\r\\n\\x5C");
  for (const char* name : {"CON.PNG", "nul.zpl", "COM1.FMT", "A/B.PNG", "A\\B.PNG"}) {
    EXPECT_NE(HostFileName(name), name);
    EXPECT_EQ(PrinterFileName(HostFileName(name)), name);
  }
  EXPECT_EQ(HostFileName("LOGO-1.PNG"), "LOGO-1.PNG");
  EXPECT_EQ(PrinterFileName("A%4"), std::nullopt);
  EXPECT_EQ(Unescaped("a\\"), std::nullopt);
}

TEST(ExchangeLog, ShowsOneLineWithFullLengths) {
  const tagExchange exchange{"~H(CLR,Z",
                             "\x02"
                             "abc\x03\r\n",
                             8, 500};
  EXPECT_EQ(DescribeExchange(exchange), "~H(CLR,Z (8) -> \\x02abc\\x03\\r\\n… (500)");
}

TEST(ExchangeLog, SaysThatItCannotBeWritten) {
  testing::internal::CaptureStderr();
  CExchangeLog(std::filesystem::path("no such folder") / "exchanges.log").WriteExchange({});
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_NE(said.find("exchanges.log\" cannot be written\n"), said.npos) << said;
}

}  // namespace
}  // namespace lxemu
