#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "backup_file/backup_difference.h"
#include "backup_file/backup_parser.h"
#include "backup_file/backup_settings.h"
#include "backup_file/encoded_data.h"
#include "backup_file/stored_download.h"

namespace {

using testing::HasSubstr;
using tvmgr::ParseBackup;

constexpr char kTrailer[] = "^XA^H(E^XZ\r\n";
constexpr char kFormat[] = "^XA^DFE:A.ZPL^FS^FDx^FS^XZ";

std::string Header(const std::string& sections) {
  return "^FXLX-R4100SeriesTavira^FS\r\n^FX20310504131415^FS\r\n^FX" + sections + "^FS\r\n";
}

std::string Attribute(const std::string& name, char letter) {
  return "^XA^F(AE:" + name + "," + letter + "^XZ\r\n";
}

std::string Block(const std::string& name, const std::string& command, char letter = 'N') {
  return "^FX^FS\r\n" + Attribute(name, 'N') + command + "\r\n" + Attribute(name, letter);
}

/** The settings block: every setting is 0 unless another value is given. */
std::string Settings(const std::map<std::string, std::string>& values = {},
                     const std::string& prefix = "~^,") {
  std::string lines = "^FX^FS\r\n";
  for (const std::string_view key : tvmgr::kBackupSettings) {
    const auto found = values.find(std::string(key));
    lines += "^XA^S(" + std::string(key) + "," + (found == values.end() ? "0" : found->second) + "^XZ\r\n";
  }
  for (std::size_t i = 0; i < prefix.size(); ++i) {
    lines += std::string(i == 0 ? "\x02" : "") + "\036C" + "TCD"[i] + prefix[i];
  }
  return lines + "\x03^XA^JUS^XZ\r\n";
}

TEST(BackupParser, TakesAWholeBackupApart) {
  const std::string raw = "bytes\r\n" + Attribute("R.GRF", 'Y') + "^FX^FS\r\n" + kTrailer;
  const std::string raw_command = "~DYE:R.GRF,B,G," + std::to_string(raw.size()) + ",2," + raw;
  const std::string bytes = Header("SIT") + Settings({{"CLM,P", "12"}, {"INU,S", "A B\xE9"}}, "!\xFE;") +
                            Block("R.GRF", raw_command, 'Y') + Block("A.ZPL", kFormat) + kTrailer;
  const tvmgr::tagBackupContents contents = ParseBackup(bytes);
  ASSERT_TRUE(contents.IsComplete()) << contents.problems.front().text;
  EXPECT_EQ(contents.time_stamp, "20310504131415");
  EXPECT_EQ(contents.sections, "SIT");
  const std::map<std::string, std::string> values = SettingsByKey(contents);
  EXPECT_EQ(values.size(), 58U);
  for (const auto& [key, value] : {std::pair("CLM,P", "12"),
                                   {"CLM,S", "0"},
                                   {"INU,S", "A B\xE9"},
                                   {"CCC,T", "21"},
                                   {"CCC,C", "FE"},
                                   {"CCC,D", "3B"}}) {
    EXPECT_EQ(values.at(key), value) << key;
  }
  ASSERT_EQ(contents.files.size(), 2U);
  EXPECT_EQ(contents.files[0].name, "R.GRF");
  EXPECT_EQ(contents.files[0].command, raw_command) << "the end of a block inside the data is data";
  EXPECT_TRUE(contents.files[0].is_protected);
  EXPECT_EQ(contents.files[1].command, kFormat);
  EXPECT_FALSE(contents.files[1].is_protected);
}

TEST(BackupParser, EveryCutThatTheTrailerClosesIsNoticed) {
  const std::string bytes =
      Header("SI") + Settings() + Block("A.PNG", "~DYE:A.PNG,B,P,3,0,:B64:QUJD:5CF6") + kTrailer;
  ASSERT_TRUE(ParseBackup(bytes).IsComplete());
  for (std::size_t size = Header("SI").size(); size < bytes.size(); ++size) {
    // A backup that could not be written whole is closed by the trailer all the same.
    const bool is_whole_piece =
        bytes.substr(size).starts_with("^FX^FS\r\n^XA^F(A") || size + 12 == bytes.size();
    if (!is_whole_piece) {
      EXPECT_FALSE(ParseBackup(bytes.substr(0, size) + kTrailer).IsComplete()) << size;
    }
  }
}

TEST(BackupParser, NamesWhatIsWrongAndGoesOnAtTheNextBlock) {
  const std::string good = Block("GOOD.PNG", "~DYE:GOOD.PNG,B,P,3,0,:B64:QUJD:5CF6");
  const std::string more = Block("MORE.PNG", "~DYE:MORE.PNG,B,P,3,0,:B64:QUJD:5CF6");
  const std::string open = "^FX^FS\r\n" + Attribute("A.PNG", 'N') + "~DYE:A.PNG,B,P,9,0,:B64:QUJD";
  const struct {
    std::string bytes;
    std::string problem;
    std::size_t files;
  } cases[] = {
      {"", "no backup file", 0},
      {"^XA^FDlabel^FS^XZ", "no backup file", 0},
      {"^FXLX-R4100SeriesTavira^FS\r\n", "header is damaged", 0},
      {"^FXLX-R4100SeriesTavira^FS\r\n^FX20311304131415^FS\r\n^FXI^FS\r\n" + good + kTrailer, "time stamp",
       1},
      {"^FXLX-R4100SeriesTavira^FS\r\n^FX20260231131415^FS\r\n^FXI^FS\r\n" + good + kTrailer, "time stamp",
       1},
      {Header("IS") + good + kTrailer, "section letters", 1},
      {Header("II") + good + kTrailer, "section letters", 1},
      {Header("") + kTrailer, "section letters", 0},
      {Header("SI") + good + kTrailer, "settings that the header names are missing", 1},
      {Header("I") + Settings() + good + kTrailer, "header does not name them", 1},
      {Header("SI") + "^FX^FS\r\n^XA^S(CLM.P,1^XZ\r\n" + good + kTrailer, "setting is damaged", 1},
      {Header("SI") + Settings({}, "!@") + good + kTrailer, "prefix characters is damaged", 1},
      {Header("SI") + "^FX^FS\r\n^XA^S(CLM,P,1^XZ\r\n" + good + kTrailer, "settings are missing", 1},
      {Header("SI") + good + Settings() + kTrailer, "settings stand behind a file", 1},
      {Header("I") + good + good + kTrailer, "more than once", 2},
      {Header("IT") + Block("A.ZPL", kFormat) + good + kTrailer, "behind files that follow it", 2},
      {Header("I") + "^FX^FS\r\n" + good + kTrailer, "sent nothing for it", 1},
      {Header("I") + open + "\r\n" + good + kTrailer, "behind it is missing", 2},
      {Header("I") + open + "\r\n" + Attribute("B.PNG", 'N') + good + kTrailer, "behind it is missing", 2},
      {Header("I") + open + "\r\n" + Attribute("A.PNG", 'Y') + good + kTrailer, "data is cut off", 2},
      {Header("I") + "^FX^FS\r\n^XA^F(AE:A.PNG,Y^XZ\r\nx\r\n" + good + kTrailer, "in front of a file", 1},
      {Header("I") + good + "junk\r\n" + more + kTrailer, "something other than a block", 2},
      {Header("I") + "^FX^FS\r\njunk\r\n" + good + kTrailer, "neither settings nor a file", 1},
      {Header("T") + good + kTrailer, "no section that the header names", 1},
      {Header("I") + Block("A.EXE", "~DYE:A.EXE,B,B,1,0,x") + kTrailer, "no section that", 1},
      {Header("I") + good + kTrailer + "\r\n", "follows the trailer", 1},
      {Header("I") + good, "trailer is missing", 1},
  };
  for (const auto& damaged : cases) {
    const tvmgr::tagBackupContents contents = ParseBackup(damaged.bytes);
    ASSERT_FALSE(contents.IsComplete()) << damaged.problem;
    EXPECT_THAT(contents.problems.front().text, HasSubstr(damaged.problem));
    EXPECT_EQ(contents.files.size(), damaged.files) << damaged.problem;
  }
}

TEST(BackupParser, TimeAndMemoryGrowWithTheLengthOnly) {
  const std::string open = "^FX^FS\r\n" + Attribute("A.PNG", 'N');
  const std::string pieces[] = {open,
                                open + "x\r\n" + Attribute("A.PNG", 'Y') + "x",
                                open + "\r\n" + Attribute("A.PNG", 'Y') + "\r\n^FX^FS\r\nx",
                                Attribute("A.PNG", 'Y'),
                                "\r\n^XA^F(AE:",
                                "^FX^FS\r\n",
                                "^FX^FS\r\nx",
                                Settings(),
                                "^XA^S(CLM,P,",
                                "\r\n",
                                kTrailer};
  const auto seconds_for = [](const std::string& piece, std::size_t size) {
    std::string bytes = Header("SI");
    while (bytes.size() < size) {
      bytes += piece;
    }
    const auto begin = std::chrono::steady_clock::now();
    const tvmgr::tagBackupContents contents = ParseBackup(bytes);
    EXPECT_LE(contents.problems.size(), 50U);
    EXPECT_LE(contents.settings.size(), 255U);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  };
  for (const std::string& piece : pieces) {
    // 64 times the length must not take 64 x 64 times as long; generous, since the machine may be busy.
    const double small = seconds_for(piece, std::size_t{1} << 14);
    EXPECT_LT(seconds_for(piece, std::size_t{1} << 20), 64 * 8 * small + 0.5) << piece;
  }
}

TEST(StoredDownload, TellsTheSizeAndWhyAPrinterWouldNotTakeIt) {
  // The common check value of this checksum.
  EXPECT_EQ(tvmgr::DownloadChecksum("123456789"), 0x31C3);
  const struct {
    std::string command;
    std::optional<std::uint64_t> stored;
    std::string problem;
  } cases[] = {
      {"~DYE:A.PNG,B,P,3,0,:B64:QUJD:5CF6", 3, ""},
      {"~DYA,B,P,3,0,:B64:QUJD:5CF6", 3, ""},
      {"~DYE:A.PNG,B,P,3,0,:B64:QUJD:5CF7", 3, "checksum"},
      {"~DYE:A.PNG,B,P,3,0,:B64:QUJD:5cf6", 3, "checksum"},
      {"~DYE:A.PNG,B,P,3,0,:B64:QUJD", 3, "cut off"},
      {"~DYE:A.PNG,B,P,2,0,:B64:QUJD:5CF6", 2, "not as long"},
      {"~DYE:A.PNG,B,P,900,0,:Z64:QUJD:5CF6", 900, "not as long"},
      {"~DYE:A.PNG,B,P,3,0,abc", 3, ""},
      {"~DYE:A.PNG,B,P,4,0,abc", 4, "cut off"},
      {"~DYE:A.PNG,B,G,3,0,abc", 3, "does not fit"},
      {"~DYE:A.PNG,B,P,3,1,abc", 3, "does not fit"},
      {"~DYE:A.PNG,B,P,4,0", std::nullopt, "no download command"},
      {"~DYE:A.PNG,B,P,03,0,abc", std::nullopt, "no download command"},
      {"~DYE:A.PNG,B,P,99999999999999999999,0,x", std::nullopt, "no download command"},
      {kFormat, std::nullopt, "no download command"},
      {"", std::nullopt, "no download command"},
  };
  for (const auto& download : cases) {
    const tvmgr::tagStoredDownload read = tvmgr::ReadStoredDownload("A.PNG", download.command);
    EXPECT_EQ(read.stored_bytes, download.stored) << download.command;
    EXPECT_EQ(read.problem.empty(), download.problem.empty()) << download.command;
    EXPECT_THAT(std::string(read.problem), HasSubstr(download.problem)) << download.command;
  }
  EXPECT_EQ(tvmgr::BytesOfDownload("A.PNG", cases[0].command), "ABC");
  EXPECT_EQ(tvmgr::BytesOfDownload("A.ZPL", kFormat), "^FDx^FS");
  EXPECT_EQ(tvmgr::BytesOfDownload("A.ZPL", std::string(kFormat) + "^XZ"), std::nullopt);
}

TEST(BackupDifference, ComparesByKeyAndNameWithoutTimeAndOrder) {
  const std::string a = Header("SI") + Settings({{"CLM,P", "1"}}) + Block("A.PNG", "~DYE:A.PNG,B,P,1,0,a") +
                        Block("B.PNG", "~DYE:B.PNG,B,P,1,0,b") + Block("C.PNG", "~DYE:C.PNG,B,P,1,0,c") +
                        kTrailer;
  std::string b = Header("SI") + Settings({{"CLM,P", "1"}}, "!^,") +
                  Block("C.PNG", "~DYE:C.PNG,B,P,1,0,c", 'Y') + Block("B.PNG", "~DYE:B.PNG,B,P,1,0,x") +
                  Block("D.PNG", "~DYE:D.PNG,B,P,1,0,d") + kTrailer;
  b.replace(b.find("2031"), 4, "2032");
  const tvmgr::tagBackupContents first = ParseBackup(a);
  const tvmgr::tagBackupContents second = ParseBackup(b);
  const tvmgr::tagBackupDifference difference = CompareBackups(first, second);
  EXPECT_FALSE(difference.other_sections);
  ASSERT_EQ(difference.settings.size(), 1U);
  EXPECT_EQ(difference.settings[0].key, "CCC,T");
  EXPECT_EQ(difference.settings[0].second, "21");
  std::vector<std::string> names;
  for (const tvmgr::tagFileDifference& pair : difference.files) {
    names.emplace_back((pair.first != nullptr ? pair.first : pair.second)->name);
  }
  EXPECT_EQ(names, (std::vector<std::string>{"A.PNG", "B.PNG", "C.PNG", "D.PNG"}));

  std::string later = a;
  later.replace(later.find("2031"), 4, "2032");
  EXPECT_TRUE(CompareBackups(first, ParseBackup(later)).IsEmpty());
  EXPECT_TRUE(CompareBackups(first, ParseBackup(Header("I") + kTrailer)).other_sections);
}

}  // namespace
