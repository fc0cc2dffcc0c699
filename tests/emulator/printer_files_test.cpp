#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "emulator/files/base64.h"
#include "emulator/files/object_payload.h"
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
      {"\x1EXA\x1EHWE:logo.png\x1F"
       "c\x1EXZ",
       {"E:LOGO.PNG"}},
  };
  for (const auto& [stream, names] : listings) {
    const std::string listing = printer(stream);
    EXPECT_EQ(listing.front(), '\x02') << stream;
    EXPECT_EQ(Names(listing), names) << stream;
  }
}

TEST(PrinterFiles, StoresUploadsOfEveryForm) {
  const std::string bytes = AllBytes();
  std::string plain;
  AppendPayload(plain, bytes, false);
  std::string packed;
  AppendPayload(packed, bytes, true);
  ASSERT_TRUE(plain.starts_with(":B64:") && packed.starts_with(":Z64:"));
  const std::string without_crc = plain.substr(0, plain.size() - 5);
  struct tagCase {
    std::string command;
    const char* file;
  };
  const tagCase cases[] = {
      {"~DYE:LOGO,B,P,1000,0," + plain, "E:LOGO.PNG"},
      {"~DYE:LOGO,P,P,1000,0," + packed, "E:LOGO.PNG"},
      {"~DYR:OLD,A,G,1000,125," + without_crc, "R:OLD.GRF"},
      {"~DYE:FONT,B,T,1000,," + without_crc + ":\r\n", "E:FONT.TTF"},
      {"~DYE:EXT,B,E,1000,0," + bytes, "E:EXT.TTE"},
      {"~DYE:KORVDEF.BGD,B,B,1000,0," + plain, "E:KORVDEF.BGD"},
      {"~DYNODEV.PNG,B,G,1000,0," + plain, "E:NODEV.PNG"},
      {"\x10"
       "DYE:ALT\x1F"
       "B\x1FP\x1F"
       "1000\x1F"
       "0\x1F" +
           plain,
       "E:ALT.PNG"},
  };
  for (const tagCase& entry : cases) {
    tagTestPrinter printer;
    EXPECT_EQ(printer(entry.command + "~H(CLR,Z"), Framed("^S(CLR,Z,600")) << entry.file;
    EXPECT_EQ(printer.printer.File(entry.file), bytes) << entry.file;
    EXPECT_EQ(printer.printer.Counts().understood, 2u) << entry.file;
  }
}

TEST(PrinterFiles, RefusesDamagedUploads) {
  std::string payload;
  AppendPayload(payload, "some bytes", false);
  std::string broken_text = payload;
  broken_text[6] = broken_text[6] == 'A' ? 'B' : 'A';
  std::string broken_crc = payload;
  broken_crc.back() = broken_crc.back() == '0' ? '1' : '0';
  const std::string not_zlib = ":Z64:" + payload.substr(5);
  for (const std::string& command :
       {"~DYE:A,B,P,10,0," + broken_text, "~DYE:A,B,P,10,0," + broken_crc, "~DYE:A,B,P,10,0," + not_zlib,
        "~DYE:A,B,P,10,0," + payload.substr(0, payload.size() - 2), "~DYE:A,B,X,10,0," + payload,
        "~DYE:TOOLONGNAME,B,P,10,0," + payload, "~DYQ:A,B,P,10,0," + payload, std::string("~DYE:A,B,P")}) {
    tagTestPrinter printer;
    EXPECT_EQ(printer(command + "^XA^H(E^XZ"), Framed("LX-R4100")) << command;
    EXPECT_EQ(Names(printer("^XA^HWE:*^XZ")), Strings{}) << command;
  }
  tagTestPrinter printer;
  EXPECT_EQ(printer("~DYE:A,B,P,100,0,too few^XA^H(E^XZ"), "");  // still waiting for the rest
  EXPECT_EQ(printer.printer.File("E:A.PNG"), std::nullopt);
}

TEST(PrinterFiles, StoresFormatsUpToTheirEnd) {
  const std::string body = "\r\n^FO10,10^FDtext ~ more^FS\r\n";
  const std::pair<std::string, const char*> cases[] = {
      {"^XA^DFE:LABEL.ZPL^FS" + body + "^XZ", "E:LABEL.ZPL"},
      {"^XA^DF E:LABEL.FMT^FS" + body + "^XZ", "E:LABEL.FMT"},
      {"^XA^DFLABEL^FS" + body + "^XZ", "E:LABEL.ZPL"},
      {"^XA^DFR:LABEL.ZPL\r\n^FS" + body + "^XZ", "R:LABEL.ZPL"},
      {"\x1EXA\x1E"
       "DFE:LABEL.ZPL\x1E"
       "FS" +
           body + "\x1EXZ",
       "E:LABEL.ZPL"},
  };
  for (const auto& [command, file] : cases) {
    tagTestPrinter printer;
    EXPECT_EQ(printer(command + "~H(CLR,Z"), Framed("^S(CLR,Z,600")) << command;
    EXPECT_EQ(printer.printer.File(file), body) << command;
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

TEST(PrinterFiles, DownloadsFollowTheDialectOfTheQuestion) {
  tagTestPrinter printer;
  printer.printer.PutFile("E:A.ZPL", "body");
  printer.printer.PutFile("E:A.PNG", "bytes");
  printer(
      "\x1E"
      "CT%\x1E"
      "CC$\x1E"
      "CD;");
  EXPECT_EQ(printer("^XA^HFE:A.ZPL^XZ"), "^XA^DFE:A.ZPL^FSbody^XZ");
  EXPECT_EQ(printer("\x1EXA\x1EHFE:A\x1EXZ"), "$XA$DFE:A.ZPL$FSbody$XZ");
  const std::string object = printer("$XA$H(YE:A.PNG$XZ");
  EXPECT_TRUE(object.starts_with("%DYE:A.PNG;B;P;5;0;:B64:")) << object;
  printer.printer.PutFile("E:A.PNG", "other");
  printer(object);
  EXPECT_EQ(printer.printer.File("E:A.PNG"), "bytes");
  printer.printer.Quirks().short_format_names = true;
  EXPECT_EQ(printer("^XA^HFE:A.ZPL^XZ"), "^XA^DFA^FSbody^XZ");
}

TEST(PrinterFiles, MissingFilesAreSilentButTheStreamIsNot) {
  tagTestPrinter printer;
  EXPECT_EQ(printer("^XA^HFE:NONE.ZPL^XZ^XA^H(YE:NONE.PNG^XZ"), "");
  EXPECT_EQ(printer("^XA^HFE:NONE.ZPL^XZ^XA^H(E^XZ"), Framed("LX-R4100"));
}

TEST(PrinterFiles, DeletesWhatTheCommandNames) {
  struct tagCase {
    const char* command;
    Strings left;
  };
  const tagCase cases[] = {
      {"^XA^IDE:A.PNG^XZ", {"E:B.PNG", "E:KEEP.PNG+P", "E:A.TTF", "Z:A.PNG"}},
      {"^XA^IDE:a.png^XZ", {"E:B.PNG", "E:KEEP.PNG+P", "E:A.TTF", "Z:A.PNG"}},
      {"^XA^IDE:KEEP.PNG^XZ", {"E:A.PNG", "E:B.PNG", "E:KEEP.PNG+P", "E:A.TTF", "Z:A.PNG"}},
      {"^XA^F(AE:KEEP.PNG,N^XZ^XA^IDE:KEEP.PNG^XZ", {"E:A.PNG", "E:B.PNG", "E:A.TTF", "Z:A.PNG"}},
      {"^XA^F(AE:A.PNG,Y^XZ^XA^WDE:*.PNG^XZ", {"E:A.PNG+P", "E:KEEP.PNG+P", "E:A.TTF", "Z:A.PNG"}},
      {"^XA^WDE:*.PNG^XZ^XA^WDZ:*.TTF^XZ", {"E:KEEP.PNG+P", "E:A.TTF", "Z:A.PNG"}},
      {"^XA^JBE^XZ", {"Z:A.PNG"}},
      {"^XA^IDE:^XZ^XA^IDA.GRF^XZ^XA^F(AE:A.PNG,X^XZ",
       {"E:A.PNG", "E:B.PNG", "E:KEEP.PNG+P", "E:A.TTF", "Z:A.PNG"}},
  };
  for (const tagCase& entry : cases) {
    tagTestPrinter printer;
    for (const char* name : {"E:A.PNG", "E:B.PNG", "E:A.TTF", "Z:A.PNG"}) {
      printer.printer.PutFile(name, "x");
    }
    printer.printer.PutFile("E:KEEP.PNG", "x", true);
    EXPECT_EQ(printer(entry.command), "");
    EXPECT_EQ(Names(printer("^XA^HWE:*.PNG^HWE:*.TTF^HWZ:*^XZ")), entry.left) << entry.command;
  }
}

TEST(PrinterFiles, OverwritingReplacesUnlessProtectedOrFull) {
  tagTestPrinter printer;
  printer("~DYE:A.PNG,B,P,3,0,one");
  printer("~DYE:a.png,B,P,3,0,two");
  EXPECT_EQ(printer.printer.File("E:A.PNG"), "two");
  printer("^XA^F(AE:A.PNG,Y^XZ~DYE:A.PNG,B,P,3,0,new");
  EXPECT_EQ(printer.printer.File("E:A.PNG"), "two");
  EXPECT_TRUE(printer.printer.IsProtected("E:A.PNG"));
  printer.printer.Quirks().device_capacity = 5;
  printer("~DYE:B.PNG,B,P,3,0,big~DYE:C.PNG,B,P,2,0,ok");
  EXPECT_EQ(printer.printer.File("E:B.PNG"), std::nullopt);
  EXPECT_EQ(printer.printer.File("E:C.PNG"), "ok");
}

TEST(PrinterFiles, VolatileDeviceLosesItsFilesWithThePower) {
  tagTestPrinter printer;
  printer.printer.PutFile("R:A.PNG", "x");
  printer.printer.PutFile("E:A.PNG", "x", true);
  printer.printer.PowerCycle();
  EXPECT_EQ(printer.printer.File("R:A.PNG"), std::nullopt);
  EXPECT_TRUE(printer.printer.IsProtected("E:A.PNG"));
}

}  // namespace
}  // namespace lxemu
