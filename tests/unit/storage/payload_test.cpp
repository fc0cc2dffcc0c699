#include "storage/payload.h"

#include <gtest/gtest.h>

#include "storage/base64.h"
#include "tavira/TaviraManager.h"

namespace tavira::test {
namespace {

TEST(PayloadTest, IsTakenOutOfTheAnswer) {
  const struct {
    const char* name;
    std::string_view answer;
    std::string_view data;
  } cases[] = {
      {"silence", "", ""},
      {"no download command", "\x02hello\x03\r\n", "\x02hello\x03\r\n"},
      {"no download command, marker", ":B64:TWFu:", ":B64:TWFu:"},
      {"plain marker", "~DYE:A.PNG,B,P,3,0,:B64:TWFu:1234", "Man"},
      {"compressed marker stays compressed", "~DYE:A.PNG,B,P,3,0,:Z64:TWFu:1234", "Man"},
      {"blanks and a line end in the header", "~DY E:A.PNG , B,P ,3 ,0 ,:B64:TWFu:", "Man"},
      {"bytes in front", "\r\n\x02~DYE:A.PNG,B,P,3,0,:B64:TWFu:", "Man"},
      {"checksum of base64 characters", "~DYE:A.PNG,B,P,3,0,:B64:TWFu:ABCDabcd", "Man"},
      {"no closing mark", "~DYE:A.PNG,B,P,3,0,:B64:TWFu", "Man"},
      {"line breaks and filler", "~DYE:A.PNG,B,P,2,0,:B64:T\r\nWE=\r\n:1234", "Ma"},
      {"empty payload", "~DYE:A.PNG,B,P,0,0,:B64:", ""},
      {"empty payload, closed", "~DYE:A.PNG,B,P,0,0,:B64::0000", ""},
      {"text before the marker", "~DYE:A.PNG,B,P,3,0,0000:B64:TWFu:", "Man"},
      {"compressed before plain", "~DYE:A.PNG,B,P,3,0,:Z64:TWFu:00:B64:QQ==:", "Man"},
      {"plain before compressed", "~DYE:A.PNG,B,P,3,0,:B64:QUJDREVG:00:Z64:TWFu:", "Man"},
      {"compressed where plain ends", "~DYE:A.PNG,B,P,3,0,:B64:QQ==:Z64:TWFu:", "Man"},
      {"the two share a mark", "~DYE:A.PNG,B,P,3,0,:B64:Z64:TWFu:", "Man"},
      {"first of two plain", "~DYE:A.PNG,B,P,3,0,:B64:TWFu:00:B64:QQ==:", "Man"},
      {"no marker", "~DYE:A.PNG,A,P,4,0,FF00", "FF00"},
      {"lower-case marker is none", "~DYE:A.PNG,B,P,3,0,:b64:TWFu:", ":b64:TWFu:"},
      {"marker without its first mark", "~DYE:A.PNG,B,P,3,0,B64:TWFu:", "B64:TWFu:"},
      {"commas in the data", "~DYE:A.PNG,A,P,5,0,1,2,3", "1,2,3"},
      {"empty data field", "~DYE:A.PNG,B,P,0,0,", ""},
      {"four commas only", "~DYE:A.PNG,B,P,0", "~DYE:A.PNG,B,P,0"},
      {"marker in front of the data field", "~DYE:B64:,B,P,3,0,FF", "FF"},
      {"empty header fields", "~DY,,,,,:B64:TWFu:", "Man"},
      {"an object in a format is text", "^XA^DFE:A.ZPL^FS^FD~DYE:A.PNG,B,P,3,0,:B64:TWFu:^FS^XZ",
       "^XA^DFE:A.ZPL^FS^FD~DYE:A.PNG,B,P,3,0,:B64:TWFu:^FS^XZ"},
      {"a format in an object is data", "~DYE:A.PNG,A,P,4,0,^DFx", "^DFx"},
      {"zero bytes", std::string_view("~DYE:A.PNG,B,P,3,0,a\0b", 22), std::string_view("a\0b", 3)},
  };
  for (const auto& [name, answer, data] : cases) {
    std::string extracted = "from an earlier answer";
    EXPECT_EQ(TVMGR_OK, ExtractPayload(answer, extracted)) << name;
    EXPECT_EQ(data, extracted) << name;
  }
}

TEST(PayloadTest, OfAnyLengthEndsAtItsMark) {
  for (const std::size_t length : {16380U, 16383U, 16384U, 16385U, 32768U, 100000U}) {
    const std::string text(length, 'x');
    for (const char* behind : {"", ":", ":xxxx", "::B64:xxxx"}) {
      std::string extracted;
      EXPECT_EQ(TVMGR_OK, ExtractPayload("~DYE:A.PNG,B,P,3,0,:B64:" + text + behind, extracted));
      EXPECT_EQ(DecodeBase64(text), extracted) << length << behind;
    }
  }
}

/** Those of the Japanese code page: 0x83 0x5E is one character, and so are 0x83 0x7E and 0x83 0x2C here. */
const CLeadBytes kJapanese([](unsigned char byte) { return (byte >= 0x81 && byte <= 0x9F) || byte >= 0xE0; });

TEST(PayloadTest, TheSecondByteOfACharacterIsNoCommandAndNoComma) {
  std::string data;
  ExtractPayload("\x83~DYE:\x83,.PNG,B,P,3,0,FF", data, kJapanese);
  EXPECT_EQ("\x83~DYE:\x83,.PNG,B,P,3,0,FF", data);
  ExtractPayload("\x83^DF~DYE:\x83,.PNG,B,P,3,0,FF", data, kJapanese);
  EXPECT_EQ("FF", data);
  const std::pair<std::string, std::string> formats[] = {
      {"^XA^DF\x83^\x83,^FS^XZ", "^XA^DFE:\x83^\x83,.FMT^FS^XZ"},
      {"\x83^DFA,^DFB^FS", "\x83^DFA,^DFE:B.FMT^FS"},
      {"^XA^DF\x83", "^XA^DFE:\x83.FMT"},
  };
  for (const auto& [format, completed] : formats) {
    std::string text = format;
    CompleteFormatName(text, "x", kJapanese);
    EXPECT_EQ(completed, text);
  }
}

TEST(PayloadTest, AFormatGetsTheDeviceAndTheExtensionItLacks) {
  const struct {
    std::string_view format;
    std::string_view requested;
    std::string_view completed;
  } cases[] = {
      {"^XA^DFLABEL^FS^FDx^FS^XZ", "LABEL.FMT", "^XA^DFE:LABEL.FMT^FS^FDx^FS^XZ"},
      {"^XA^DFLABEL^FS^XZ", "LABEL.ZPL", "^XA^DFE:LABEL.ZPL^FS^XZ"},
      {"^XA^DFLABEL^FS^XZ", "label.zpl", "^XA^DFE:LABEL.ZPL^FS^XZ"},
      {"^XA^DFLABEL^FS^XZ", "LABEL", "^XA^DFE:LABEL.FMT^FS^XZ"},
      {"^XA^DFLABEL^FS^XZ", ".Zpl", "^XA^DFE:LABEL.ZPL^FS^XZ"},
      {"^XA^DFLABEL^FS^XZ", "ZPL", "^XA^DFE:LABEL.FMT^FS^XZ"},
      {"^XA^DF.FMT^FS^XZ", ".ZPL", "^XA^DFE:.FMT^FS^XZ"},
      {"^XA^DFE:^FS^XZ", "LABEL.FMT", "^XA^DFE:.FMT^FS^XZ"},
      {"^XA^DFE:LABEL^FS^XZ", "LABEL.FMT", "^XA^DFE:LABEL.FMT^FS^XZ"},
      {"^XA^DFR:LABEL^FS^XZ", "LABEL.FMT", "^XA^DFR:LABEL.FMT^FS^XZ"},
      {"^XA^DFLABEL.ZPL^FS^XZ", "LABEL.FMT", "^XA^DFE:LABEL.ZPL^FS^XZ"},
      {"^XA^DFLABEL.zpl^FS^XZ", "x", "^XA^DFE:LABEL.zpl^FS^XZ"},
      {"^XA^DFLABEL.Fmt^FS^XZ", "LABEL.ZPL", "^XA^DFE:LABEL.Fmt^FS^XZ"},
      {"^XA^DFE:LABEL.GRF^FS^XZ", "LABEL.ZPL", "^XA^DFE:LABEL.GRF.ZPL^FS^XZ"},
      {"^XA^DFE:A^FS^XZ", "A.FMT", "^XA^DFE:A.FMT^FS^XZ"},
      {"^XA^DFA^FS^XZ", "A.FMT", "^XA^DFE:A.FMT^FS^XZ"},
      {"^XA^DFLABEL,1,2^FS^XZ", "LABEL.FMT", "^XA^DFE:LABEL.FMT,1,2^FS^XZ"},
      {"^XA^DFLABEL", "LABEL.FMT", "^XA^DFE:LABEL.FMT"},
      {"^XA^DFE:FULL.FMT^FS^DFOTHER^XZ", "x", "^XA^DFE:FULL.FMT^FS^DFOTHER^XZ"},
      {"^XA^dfLABEL^XZ", "LABEL.FMT", "^XA^dfLABEL^XZ"},
      {"no format", "LABEL.FMT", "no format"},
      {"", "LABEL.FMT", ""},
      {"\x02\r\n^XA ^DFE:A.ZPL^FS^FD,\r\n ^FS^XZ\x03", "A.ZPL",
       "\x02\r\n^XA ^DFE:A.ZPL^FS^FD,\r\n ^FS^XZ\x03"},
  };
  for (const auto& [format, requested, completed] : cases) {
    std::string text(format);
    CompleteFormatName(text, requested);
    EXPECT_EQ(completed, text);
    CompleteFormatName(text, requested);
    EXPECT_EQ(completed, text) << "a complete name is changed";
  }
}

}  // namespace
}  // namespace tavira::test
