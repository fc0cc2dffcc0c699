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

TEST(PrinterSettings, AnswersNothingWhenNothingIsAsked) {
  tagTestPrinter printer;
  for (const char* stream :
       {"", "^XA^S(CLR,Z,300^XZ", "^XA^JUS^XZ", "~H(XYZ,1", "~H(CLR", "^XA^FDhello^FS^XZ", "text"}) {
    EXPECT_EQ(printer(stream), "") << stream;
  }
}

TEST(PrinterSettings, TakesOnlyWellFormedSets) {
  struct tagCase {
    const char* stream;
    const char* value;  // of CLR,Z, which starts at 600
  };
  const tagCase cases[] = {
      {"^XA^S(CLR,Z,300^XZ", "300"},
      {"^XA^S(CLR,Z,1,2 3^XZ", "1,2 3"},
      {"^XA^S(CLR,Z,300\r\n^XZ", "300"},
      {"\x1EXA\x1ES(CLR\x1FZ\x1F"
       "150\x1EXZ",
       "150"},
      {"^XA^S(CLR,Z,300", "300"},
      {"^XA^S(CLR,Z300^XZ", "600"},  // no comma in front of the value
      {"^XA^S(CLR,Z,^XZ", "600"},    // no value
      {"^XA^S(CLR,Z^XZ", "600"},
      {"^XA^S(clr,z,300^XZ", "600"},  // keys are upper case
      {"~S(CLR,Z,300", "600"},        // not a control command
      {"^XA^FXa comment S(CLR,Z,300^FS^XZ", "600"},
  };
  for (const tagCase& entry : cases) {
    tagTestPrinter printer;
    EXPECT_EQ(printer(entry.stream), "") << entry.stream;
    EXPECT_EQ(printer.printer.Setting("CLR,Z"), entry.value) << entry.stream;
  }
}

TEST(PrinterSettings, KeepsCurrentSavedAndFactoryValuesApart) {
  tagTestPrinter printer;
  printer("^XA^S(CLR,Z,300^XZ^XA^JUS^XZ^XA^S(CLR,Z,150^XZ");
  EXPECT_EQ(printer("~H(CLR,Z"), Framed("^S(CLR,Z,150"));
  printer.printer.PowerCycle();
  EXPECT_EQ(printer("~H(CLR,Z"), Framed("^S(CLR,Z,300"));
  printer("^XA^JUF^XZ");
  EXPECT_EQ(printer("~H(CLR,Z"), Framed("^S(CLR,Z,600"));
  printer.printer.PowerCycle();
  EXPECT_EQ(printer("~H(CLR,Z"), Framed("^S(CLR,Z,300"));
  printer.printer.FactoryReset();
  printer.printer.PowerCycle();
  EXPECT_EQ(printer("~H(CLR,Z"), Framed("^S(CLR,Z,600"));
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

TEST(PrinterSettings, ClosingQueryIsAnsweredOnceInItsPlaceWithoutASettingHead) {
  tagTestPrinter printer;
  const std::string closing = printer("^XA^H(E^XZ");
  ASSERT_GT(closing.size(), 4u);
  EXPECT_EQ(closing.front(), '\x02');
  EXPECT_EQ(closing.find('\x03'), closing.size() - 3);
  EXPECT_EQ(closing.find("S("), std::string::npos);
  EXPECT_EQ(printer("~H(CLR,Z^XA^H(E^XZ~H(CLR,P"), Framed("^S(CLR,Z,600") + closing + Framed("^S(CLR,P,600"));
  EXPECT_EQ(printer("\x1EXA\x1EH(E\x1EXZ").find("S("), std::string::npos);
}

TEST(Dialects, PrefixBytesAreReportedInHexadecimalInTheDialectOfTheQuery) {
  tagTestPrinter printer;
  EXPECT_EQ(printer("\x10H(CCC\x1FT"), Framed("^S(CCC,T,7E"));
  // Prefix characters are taken as they come, the framing bytes around them are no part of it.
  EXPECT_EQ(printer("\x02\x1E"
                    "CT%\x1E"
                    "CC$\x1E"
                    "CD;\x03\x1EXA\x1EJUS\x1EXZ\x1EXA\x1EH(E\x1EXZ"),
            Framed("LX-R4100"));
  struct tagCase {
    const char* query;
    const char* answer;
  };
  const tagCase cases[] = {
      {"~H(CCC,T", "^S(CCC,T,25"},
      {"\x10H(CCC\x1FT", "$S(CCC;T;25"},
      {"%H(CCC;T", "$S(CCC;T;25"},
      {"~H(CCC,C~H(CLR,Z", "^S(CCC,C,24"},
      {"\x10H(CCC\x1F"
       "D",
       "$S(CCC;D;3B"},
      {"%H(CLR;Z", "$S(CLR;Z;600"},
  };
  for (const tagCase& entry : cases) {
    EXPECT_TRUE(printer(entry.query).starts_with(Framed(entry.answer))) << entry.query;
  }
  printer.printer.PowerCycle();  // they were saved
  EXPECT_EQ(printer("$XA$S(CLR;Z;300$XZ%H(CLR;Z"), Framed("$S(CLR;Z;300"));
  printer(
      "\x1EXA\x1E"
      "CT~\x1E"
      "CC^\x1E"
      "CD,\x1EXZ");
  EXPECT_EQ(printer("\x10H(CCC\x1FT"), Framed("^S(CCC,T,7E"));
}

TEST(Dialects, LettersAndSwappedCharactersInForceDoNotBreakOtherDialects) {
  tagTestPrinter printer;
  printer(
      "\x1E"
      "CTH\x1E"
      "CCS\x1E"
      "CDZ");
  EXPECT_EQ(printer("~H(CLR,Z^XA^H(E^XZ\x10H(CCC\x1FT"),
            Framed("^S(CLR,Z,600") + Framed("LX-R4100") + Framed("SS(CCCZTZ48"));
  EXPECT_EQ(printer("SXASS(CLRZPZ300SXZHH(CLRZP"), Framed("SS(CLRZPZ300"));
  printer(
      "\x1E"
      "CT^\x1E"
      "CC~\x1E"
      "CD,");
  EXPECT_EQ(printer("^H(CLR,Z~H(CLR,R"), Framed("~S(CLR,Z,600") + Framed("^S(CLR,R,600"));
}

TEST(Dialects, StrictPrinterForgetsTheDefaults) {
  tagTestPrinter printer;
  printer.printer.Quirks().strict_prefix = true;
  EXPECT_EQ(printer("~H(CLR,Z"), Framed("^S(CLR,Z,600"));
  printer(
      "\x1E"
      "CT%\x1E"
      "CC$\x1E"
      "CD;");
  EXPECT_EQ(printer("~H(CLR,Z^XA^H(E^XZ"), "");
  EXPECT_EQ(printer("%H(CLR;Z"), Framed("$S(CLR;Z;600"));
  EXPECT_EQ(printer("\x10H(CLR\x1FZ"), Framed("$S(CLR;Z;600"));
}

TEST(PrinterStatusText, BusyEndsByItselfAndHeldStatesStay) {
  struct tagCase {
    const char* command;
    const char* state;
  };
  for (const tagCase& entry : {tagCase{"~WC", "PR"}, {"~J(C", "CL"}, {"~W(PNC", "PR"}, {"~JC", "SP"}}) {
    tagTestPrinter printer;
    printer.printer.Quirks().maintenance_ms = 500;
    printer(entry.command);
    EXPECT_EQ(printer("~H(SMA,S"), Framed(std::string("^S(SMA,S,") + entry.state));
    printer.now += 499;
    EXPECT_EQ(printer.printer.Setting("SMA,S"), entry.state);
    printer.now += 1;
    EXPECT_EQ(printer("~H(SMA,S"), Framed("^S(SMA,S,IL"));
  }
  tagTestPrinter printer;
  printer.printer.SetState("SP");
  printer.now += 1'000'000;
  EXPECT_EQ(printer("~H(SMA,S"), Framed("^S(SMA,S,SP"));
  printer.printer.SetState("IL");
  printer.printer.SetBusyFor(10);
  EXPECT_EQ(printer("~H(SMA,S"), Framed("^S(SMA,S,PR"));
  printer.printer.Quirks().off_line = true;
  EXPECT_EQ(printer("~H(SMA,S"), Framed("^S(SMA,S,OF"));
}

TEST(PrinterQuirks, EachDeviationShowsInTheAnswers) {
  struct tagCase {
    const char* name;
    void (*arrange)(tagQuirks&);
    const char* stream;
    std::string answer;
  };
  const tagCase cases[] = {
      {"unanswered", [](tagQuirks& q) { q.unanswered_keys = {"CLR,P"}; }, "~H(CLR,Z~H(CLR,P~H(CLR,R",
       Framed("^S(CLR,Z,600") + Framed("^S(CLR,R,600")},
      {"refused", [](tagQuirks& q) { q.refused_keys = {"CLR,Z"}; },
       "^XA^S(CLR,Z,150^S(CLR,P,150^XZ~H(CLR,Z~H(CLR,P", Framed("^S(CLR,Z,600") + Framed("^S(CLR,P,150")},
      {"ignored", [](tagQuirks& q) { q.ignore_sets = true; }, "^XA^S(CLR,Z,150^XZ~H(CLR,Z",
       Framed("^S(CLR,Z,600")},
      {"padded", [](tagQuirks& q) { q.padded_keys["CLR,Z"] = 4; }, "^XA^S(CLR,Z,300^XZ~H(CLR,Z",
       Framed("^S(CLR,Z,0300")},
      {"upper case", [](tagQuirks& q) { q.upper_case_values = true; }, "^XA^S(CMP,U,d^XZ~H(CMP,U",
       Framed("^S(CMP,U,D")},
      {"fixed", [](tagQuirks& q) { q.fixed_answers["CLR,Z"] = "400"; }, "~H(CLR,Z", Framed("^S(CLR,Z,400")},
      {"garbage", [](tagQuirks& q) { q.garbage_between_frames = "?!"; }, "~H(CLR,Z~H(CLR,P",
       "?!" + Framed("^S(CLR,Z,600") + "?!?!" + Framed("^S(CLR,P,600") + "?!"},
  };
  for (const tagCase& entry : cases) {
    tagTestPrinter printer;
    entry.arrange(printer.printer.Quirks());
    EXPECT_EQ(printer(entry.stream), entry.answer) << entry.name;
  }
}

}  // namespace
}  // namespace lxemu
