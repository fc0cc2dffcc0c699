// The check of backup files against what the module really writes, and against what it never writes.
#include <algorithm>
#include <functional>
#include <random>

#include "backup_file/backup_parser.h"
#include "backup_file/stored_download.h"
#include "support/module_test.h"
#include "support/temporary_file.h"

namespace tavira::test {
namespace {

using tvmgr::ParseBackup;

std::string Problems(const tvmgr::tagBackupContents& contents) {
  std::string text;
  for (const tvmgr::tagBackupProblem& problem : contents.problems) {
    text += problem.subject + ": " + problem.text + "\n";
  }
  return text;
}

class BackupForm : public CModuleTest {
 protected:
  std::string Backup(const std::string& sections) {
    TvmgrBackupInfo info{};
    info.path = file_.Path().c_str();
    const auto flag = [&](char letter) {
      return static_cast<std::uint8_t>(sections.find(letter) != sections.npos);
    };
    info.settings = flag('S');
    info.section_p = flag('P');
    info.section_i = flag('I');
    info.section_t = flag('T');
    info.section_f = flag('F');
    info.section_c = flag('C');
    info.section_b = flag('B');
    EXPECT_EQ(TVMGR_OK, TVMGR_UpdateBackupInfo(&info));
    EXPECT_EQ(TVMGR_OK, TVMGR_Backup(1));
    return file_.Read();
  }

  /** A backup with something of everything. */
  std::string RichBackup() {
    world_.printer.SetSetting("INU,S", "A, B=\xE9\x01");
    world_.printer.SetSetting("CLM,T", "120,5");
    world_.printer.PutFile("E:ONE.PNG", "some bytes");
    world_.printer.PutFile("E:TWO.PNG", "", true);
    world_.printer.PutFile("E:A.FMT", "^FO1,1^FDx^FS");
    world_.printer.PutFile("E:B.ZPL", "^FDy^FS");
    world_.printer.PutFile("E:F.TTF", std::string(100, 'f'));
    world_.printer.PutFile("E:KORVDEF.BGD", "background", true);
    std::string bytes = Backup("SITFB");
    // One printer answers in one form; the file may hold both.
    world_.printer.Quirks().compressed_downloads = true;
    world_.printer.PutFile("E:G.GRF", std::string(200, '\0'));
    const std::string packed = Backup("I");
    const std::size_t begin = packed.find("^FX^FS\r\n^XA^F(AE:G.GRF");
    const std::string block = packed.substr(begin, packed.rfind("^XA^H(E") - begin);
    return bytes.insert(bytes.find("^FX^FS\r\n^XA^F(AE:A.FMT"), block);
  }

  CTemporaryFile file_;
};

std::string Without(std::string text, const std::string& part) {
  return text.erase(text.find(part), part.size());
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

/** What a check cannot see: one flag for each byte. */
std::vector<bool> UnseenBytes(const std::string& bytes) {
  std::vector<bool> unseen(bytes.size());
  const auto mark = [&](const std::string& behind, const std::string& end) {
    for (std::size_t at = bytes.find(behind); at != bytes.npos; at = bytes.find(behind, at + 1)) {
      const std::size_t begin = at + behind.size() + (behind == "^XA^S(" ? 6 : 0);
      std::fill(unseen.begin() + static_cast<std::ptrdiff_t>(begin),
                unseen.begin() + static_cast<std::ptrdiff_t>(bytes.find(end, begin)), true);
    }
  };
  mark("^XA^S(", "^XZ\r\n");        // values
  mark("Tavira^FS\r\n^FX", "^FS");  // the time
  mark("A.FMT^FS", "^XZ");          // texts of formats
  mark("B.ZPL^FS", "^XZ");
  mark("G.GRF,B,G,200,", ",:Z64:");  // the row width
  mark("\036CT", "\036CC");          // the prefix characters
  mark("\036CC", "\036CD");
  mark("\036CD", "\x03");
  return unseen;
}

TEST_F(BackupForm, WhateverThePrinterStoresIsComplete) {
  std::mt19937 random(20310504);
  const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  const auto bytes = [&](std::size_t size, std::string_view never) {
    std::string text;
    while (text.size() < size) {
      const char c = static_cast<char>(below(256));
      text += never.find(c) == never.npos ? std::string(1, c) : "";
    }
    return text;
  };
  for (int round = 0; round < 60; ++round) {
    lxemu::CPrinter& printer = world_.printer;
    printer.FactoryReset();
    printer.Quirks().compressed_downloads = below(2) != 0;
    printer.Quirks().short_format_names = below(4) == 0;
    for (const lxemu::tagFactorySetting& setting : lxemu::kFactorySettings) {
      if (below(3) == 0 && !setting.key.starts_with("CCC")) {
        printer.SetSetting(setting.key, bytes(1 + below(12), "^~\x1E\x10\x03"));
      }
    }
    if (below(2) != 0) {
      const std::string prefix = bytes(3, std::string_view("\0", 1));
      if (prefix[0] != prefix[1] && prefix[1] != prefix[2] && prefix[0] != prefix[2]) {
        printer.Execute("\036CT" + prefix.substr(0, 1) + "\036CC" + prefix.substr(1, 1) + "\036CD" +
                        prefix.substr(2));
      }
    }
    std::size_t files = 0;
    for (const std::string extension : {".PNG", ".GRF", ".FMT", ".ZPL", ".TTF", ".TTE", ".png"}) {
      for (unsigned i = below(3); i > 0; --i) {
        const bool is_format = extension == ".FMT" || extension == ".ZPL";
        const std::string body = bytes(below(200), is_format ? "^\x1E" : "");
        // A name without its extension has to stay that of one file.
        const std::string name = "N" + std::to_string(files++) + extension;
        printer.PutFile("E:" + name, is_format ? "^XA^FD\r\n" + body : body, below(2) != 0);
      }
    }
    if (below(2) != 0) {
      printer.PutFile("E:KORVDEF.BGD", bytes(below(50), ""));
    }
    const std::string_view all[] = {"SITFB", "S", "ITF", "CP", "SITFBCP", "B"};
    const std::string backup = Backup(std::string(all[below(6)]));
    const tvmgr::tagBackupContents contents = ParseBackup(backup);
    ASSERT_TRUE(contents.IsComplete()) << round << "\n" << Problems(contents);
    for (const tvmgr::tagBackupSetting& setting : contents.settings) {
      ASSERT_EQ(setting.value, printer.Setting(setting.key)) << setting.key;
    }
    for (const tvmgr::tagBackupFile& file : contents.files) {
      ASSERT_EQ(tvmgr::BytesOfDownload(file.name, file.command), printer.File("E:" + std::string(file.name)));
    }
  }
}

TEST_F(BackupForm, LinesThatAreLostDoubledSwappedOrMergedAreFound) {
  const std::string bytes = RichBackup();
  ASSERT_TRUE(ParseBackup(bytes).IsComplete()) << Problems(ParseBackup(bytes));
  const auto expect_found = [&](const std::string& damaged, const std::string& how) {
    EXPECT_TRUE(damaged == bytes || !ParseBackup(damaged).IsComplete()) << how;
  };
  std::size_t next = 0;
  for (std::size_t begin = 0; begin < bytes.size(); begin = next) {
    next = bytes.find("\r\n", begin) + 2;
    const std::string line = bytes.substr(begin, next - begin);
    const std::size_t behind = std::min(bytes.find("\r\n", next), bytes.size() - 2) + 2;
    const std::string head = bytes.substr(0, begin);
    const std::string tail = bytes.substr(next);
    expect_found(head + tail, "lost: " + line);
    expect_found(head + line + line + tail, "doubled: " + line);
    expect_found(head + line.substr(0, line.size() - 2) + tail, "merged: " + line);
    expect_found(head + line + "\r\n" + tail, "empty line behind: " + line);
    if (next < bytes.size()) {
      expect_found(head + bytes.substr(next, behind - next) + line + bytes.substr(behind),
                   "swapped: " + line);
    }
  }
}

TEST_F(BackupForm, EveryDamagedByteIsFoundUnlessNoCheckCanSeeIt) {
  const std::string bytes = RichBackup();
  const std::vector<bool> unseen = UnseenBytes(bytes);
  ASSERT_LT(std::count(unseen.begin(), unseen.end(), true), 260);
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    ASSERT_FALSE(ParseBackup(std::string_view(bytes).substr(0, at)).IsComplete()) << at;
    if (unseen[at]) {
      continue;
    }
    std::vector<std::string> damaged(7, bytes);
    damaged[0][at] = static_cast<char>(bytes[at] ^ 0x01);
    damaged[1][at] = static_cast<char>(bytes[at] ^ 0x20);
    damaged[2][at] = static_cast<char>(bytes[at] ^ 0x80);
    damaged[3][at] = '\0';
    damaged[4][at] = '^';
    damaged[5].erase(at, 1);
    damaged[6].insert(at, 1, bytes[at]);
    for (std::size_t i = 0; i < damaged.size(); ++i) {
      // A byte more or less at the edge of a value is one of the value.
      const bool is_edge =
          i >= 5 && ((at > 0 && unseen[at - 1]) || (at + 1 < bytes.size() && unseen[at + 1]));
      ASSERT_TRUE(damaged[i] == bytes || is_edge || !ParseBackup(damaged[i]).IsComplete())
          << "change " << i << " at " << at << ": " << bytes.substr(at, 30);
    }
  }
}

TEST_F(BackupForm, DamageThatKeepsTheLinesIsNamed) {
  const std::string bytes = RichBackup();
  const std::string settings = bytes.substr(bytes.find("^XA^S("), bytes.find('\x02') - bytes.find("^XA^S("));
  const std::string prefix = bytes.substr(bytes.find('\x02'), bytes.find('\x03') + 1 - bytes.find('\x02'));
  const std::string one = "~DYE:ONE.PNG,B,P,10,0,:B64:c29tZSBieXRlcw==";
  const std::string z64 =
      bytes.substr(bytes.find(":Z64:"), bytes.find("\r\n", bytes.find(":Z64:")) - bytes.find(":Z64:"));
  const struct {
    std::string bytes;
    std::string problem;
  } cases[] = {
      {Without(bytes, settings), "settings are missing: CLM,P CLM,S"},
      {Without(bytes, "^XA^S(CLM,T,120,5^XZ\r\n"), "settings are missing: CLM,T\n"},
      {Replaced(bytes, "120,5^XZ", "120,5^XZ^XA^JUF^XZ"), "CLM,T: its value holds a command"},
      {Replaced(bytes, "120,5^XZ", "120,5~JR^XZ"), "CLM,T: its value holds a command"},
      {Replaced(bytes, "120,5^XZ\r\n", "120,5"), "CLM,T: its value holds a command"},
      {Replaced(bytes, "(CLM,T,120,5^XZ", "(CLM,T,^XZ"), "without a value in this backup: CLM,T\n"},
      {Replaced(bytes, "(CLM,T,", "(CLM,X,"), "CLM,X: no backup holds such a setting"},
      {Replaced(bytes, "(CLM,T,", "(CLM,D,"), "CLM,D: it stands there more than once"},
      {Without(bytes, prefix), "prefix characters are missing"},
      {Replaced(bytes, prefix, "\x02\036CT!\036CC!\036CD!\x03"), "not three different ones"},
      {Replaced(bytes, "~DYE:ONE.PNG", "~DYE:SIX.PNG"),
       "ONE.PNG: its data is the download of a file with another"},
      {Replaced(bytes, "~DYE:ONE.PNG", "~DYR:ONE.PNG"),
       "ONE.PNG: its data is the download of a file with another"},
      {Replaced(bytes, "ONE.PNG,B,P,10,", "ONE.PNG,B,P,9,"), "ONE.PNG: its data is not as long"},
      {Replaced(bytes, "G.GRF,B,G,200,", "G.GRF,B,G,201,"), "G.GRF: its data is not as long"},
      {Replaced(bytes, one, Replaced(one, ":B64:", ":B65:")),
       "ONE.PNG: the marker in front of its data is damaged"},
      {Replaced(bytes, one, Replaced(one, ":B64:", ":Z64:")), "ONE.PNG: its data is not as long"},
      {Replaced(bytes, z64, z64.substr(0, z64.size() - 5)), "G.GRF: its data is cut off"},
      {Replaced(bytes, z64, z64.substr(0, z64.size() - 12)), "G.GRF: its data is cut off"},
      {Replaced(bytes, "^XA^DFE:A.FMT", "^DFE:A.FMT"), "A.FMT: its data is no download command"},
      {Replaced(bytes, "^DFE:A.FMT^FS", "^DF^FS"), "A.FMT: its data is the download of a file with another"},
      {Replaced(bytes, "^FDx^FS", "^FDx^XZ^FS"), "A.FMT: its data is not followed by"},
      {Replaced(bytes, "^FX^FS\r\n^XA^F(AE:B.ZPL", std::string(4, '\0') + "^FX^FS\r\n^XA^F(AE:B.ZPL"),
       "something other than a block"},
  };
  for (const auto& damaged : cases) {
    ASSERT_NE(damaged.bytes, bytes) << damaged.problem;
    const std::string problems = Problems(ParseBackup(damaged.bytes));
    EXPECT_NE(problems.find(damaged.problem), problems.npos) << damaged.problem << "\nin: " << problems;
  }
}

TEST_F(BackupForm, WhatThePrinterDidNotDeliverIsAGapAndNoDamage) {
  world_.printer.PutFile("E:A.PNG", "a");
  world_.printer.Quirks().unanswered_keys = {"CLM,T", "CCC,C"};
  const tvmgr::tagBackupContents contents = ParseBackup(Backup("SI"));
  EXPECT_FALSE(contents.IsComplete());
  EXPECT_TRUE(contents.IsUndamaged());
  EXPECT_EQ(contents.gap_count, 2U) << Problems(contents);
}

}  // namespace
}  // namespace tavira::test
