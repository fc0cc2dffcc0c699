#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "emulator/files/base64.h"
#include "emulator/files/object_payload.h"
#include "emulator/printer/setting_table.h"
#include "test_printer.h"

namespace lxemu {
namespace {

std::string AllBytes() {
  std::string bytes;
  for (int i = 0; i < 1000; ++i) {
    bytes += static_cast<char>(i * 7 + i / 256);
  }
  return bytes;
}

/// The names in a directory answer, read by its fixed columns, each with "+P" when marked.
std::vector<std::string> Names(const std::string& answer) {
  std::vector<std::string> names;
  for (std::size_t begin = 0, end; (end = answer.find("\r\n", begin)) != answer.npos; begin = end + 2) {
    const std::string line = answer.substr(begin, end - begin);
    if (line.empty()) {
      ADD_FAILURE() << "empty line in the listing";
    }
    if (line.size() >= 30 && line[3] == ':' && (line[2] == 'E' || line[2] == 'Z' || line[2] == 'R')) {
      const std::string field = line.substr(4, 12);
      names.push_back(line[2] + (":" + field.substr(0, field.find(' '))) + (line[25] == 'P' ? "+P" : ""));
    }
  }
  return names;
}

using Strings = std::vector<std::string>;

TEST(Base64, MatchesPublishedValuesAndRefusesDamage) {
  EXPECT_EQ(Crc16("123456789"), 0x31C3u);
  const std::pair<const char*, const char*> vectors[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}};
  for (const auto& [bytes, text] : vectors) {
    std::string encoded;
    AppendBase64(encoded, bytes);
    EXPECT_EQ(encoded, text);
    EXPECT_EQ(DecodeBase64(text), bytes);
  }
  EXPECT_EQ(DecodeBase64("Zm9\r\nvYg"), "foob");
  for (const char* damaged : {"Z", "Zg==Zg==", "Zg=", "Zm9v=", "Zm9vY", "Zm!v"}) {
    EXPECT_EQ(DecodeBase64(damaged), std::nullopt) << damaged;
  }
}

TEST(PrinterFiles, ListsInFixedColumns) {
  tagTestPrinter printer;
  printer.printer.PutFile("E:LOGO.PNG", std::string(1234, 'x'));
  printer.printer.PutFile("E:TWELVE12.PNG", "x", true);
  printer.printer.PutFile("E:KORVDEF.BGD", "background");
  printer.printer.PutFile("Z:TABLE.CNV", "");
  printer.printer.PutFile("R:TEMP.PNG", "x");
  const std::string answer = printer("^XA^HWE:*.PNG,c^XZ");
  EXPECT_EQ(answer.front(), '\x02');
  EXPECT_TRUE(answer.ends_with("\r\n\x03\r\n"));
  const std::size_t line = answer.find("* E:");
  ASSERT_NE(line, answer.npos);
  EXPECT_EQ(answer.substr(line, 34), "* E:LOGO.PNG         1234       \r\n");
  EXPECT_EQ(Names(answer), (Strings{"E:LOGO.PNG", "E:TWELVE12.PNG+P"}));

  const std::pair<const char*, Strings> listings[] = {
      {"^XA^HWZ:*.CNV,c^XZ", {"Z:TABLE.CNV"}},
      {"^XA^HWE:KORVDEF.BGD^XZ", {"E:KORVDEF.BGD"}},
      {"^XA^HWE:*.TTF,c^XZ", {}},
      {"^XA^HWE:????.*^XZ", {"E:LOGO.PNG"}},
      {"^XA^HWR:^XZ", {"R:TEMP.PNG"}},
      {"\x1EXA\x1EHWE:logo.png\037c\x1EXZ", {"E:LOGO.PNG"}},
  };
  for (const auto& [stream, names] : listings) {
    const std::string listing = printer(stream);
    EXPECT_EQ(listing.front(), '\x02') << stream;
    EXPECT_EQ(Names(listing), names) << stream;
  }
}

TEST(PrinterFiles, DownloadsRestoreTheSameFileUnderTheSameName) {
  for (const bool is_compressed : {false, true}) {
    tagTestPrinter source;
    source.printer.Quirks().compressed_downloads = is_compressed;
    tagTestPrinter target;
    for (const char* name :
         {"E:LOGO.PNG", "E:OLD.GRF", "E:FONT.TTF", "E:FONT.TTE", "E:KORVDEF.BGD", "Z:TABLE.CNV"}) {
      source.printer.PutFile(name, AllBytes());
      const std::string answer = source("^XA^H(Y" + std::string(name) + "^XZ");
      EXPECT_TRUE(answer.starts_with("~DY" + std::string(name) + ",")) << answer;
      target(answer);
      EXPECT_EQ(target.printer.File(name), AllBytes()) << name;
    }
    for (const char* name : {"E:LABEL.ZPL", "E:LABEL.FMT"}) {
      source.printer.PutFile(name, "^FS^FDx^FS\r\n");
      const std::string answer = source("^XA^HF" + std::string(name) + "^XZ");
      EXPECT_EQ(answer, "^XA^DF" + std::string(name) + "^FS^FS^FDx^FS\r\n^XZ");
      target(answer);
      EXPECT_EQ(target.printer.File(name), "^FS^FDx^FS\r\n") << name;
    }
  }
}

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
