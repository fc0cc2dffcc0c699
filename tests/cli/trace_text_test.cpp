// What a trace says of bytes; built everywhere.
#include "trace/trace_text.h"

#include <gtest/gtest.h>

#include "trace/sha256.h"

namespace {

using namespace tvmgr;

TEST(TraceTextTest, HashesAreThoseThatEverybodyComputes) {
  const struct {
    std::string bytes;
    const char* digits;
  } cases[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {std::string(55, 'a'), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
      {std::string(56, 'a'), "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a"},
      {std::string(64, 'a'), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
      {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  for (const auto& hashed : cases) {
    EXPECT_EQ(Sha256(hashed.bytes), hashed.digits) << hashed.bytes.size();
  }
}

TEST(TraceTextTest, QuotedBytesAreReadBack) {
  std::string all;
  for (int i = 0; i < 256; ++i) {
    all += static_cast<char>(i);
  }
  EXPECT_EQ(BytesOfQuoted(QuotedBytes(all)), all);
  EXPECT_EQ(QuotedBytes("a\"\\\r\n\x02\xFF"), R"("a\"\\\r\n\x02\xff")");
  for (const char* const damaged : {"", "\"", "x", "\"a", "\"\\\"", "\"\\q\"", "\"\\x1\"", "\"a\"b\""}) {
    EXPECT_EQ(BytesOfQuoted(damaged), std::nullopt) << damaged;
  }
}

TEST(TraceTextTest, AnswersThatComeLateOrInPiecesAreShownForWhatTheyAre) {
  const struct {
    std::vector<std::string> received; /**< after a question for the state */
    std::vector<bool> is_shown;
  } cases[] = {
      {{R"(\x02^S(SMA,)", R"(S,IL\x03)", R"(\r\n\x02$S(SMA;S;PR\x03)"}, {true, true, true}},
      {{R"(\x02- DIR E:*.PNG\r\n\x03\r\n\x02LX-R4100\x03)"}, {true}},
      {{R"(^XA^DFE:A.ZPL^FSsecret^XZ)", R"(\x02^S(SMA,S,IL\x03)"}, {false, false}},
      {{R"(\x02^S(SMA,S,IL\x03secret)", R"(\x02^S(SMA,S,IL\x03)"}, {false, false}},
      {{R"(\x02secret\x03)"}, {false}},
      {{R"(^S(CLM,P,3 SendData secret)"}, {false}},
  };
  for (const auto& late : cases) {
    CTranscriptFilter filter(false);
    filter.Filter(R"(0.1 7 SendData 8 "~H(SMA,S" = 0 took 0.1)");
    for (std::size_t i = 0; i < late.received.size(); ++i) {
      const std::string line = "0.2 7 ReceiveData buffer 9 = 0 9 \"" + late.received[i] + "\" took 0.1";
      EXPECT_EQ(filter.Filter(line) == line, late.is_shown[i]) << line;
    }
  }
}

TEST(TraceTextTest, OnlySettingsTalkIsShownOfATranscript) {
  const std::string frame_start = R"(\x10\x1b\x1d\x1b\x1b)";
  const std::string frame_end = R"(\x10\x1b\x1d\x1b\x1c)";
  const struct {
    std::string sent;
    bool is_shown;
  } cases[] = {
      {"~H(SMA,S", true},
      {"^XA^S(CLM,P,3^XZ^XA^JUS^XZ", true},
      {"^XA^HWE:*.PNG,c^XZ^XA^H(E^XZ", true},
      {R"(\x10H(CCC\x1fT)", true},
      {"~DYE:A.PNG,B,P,3,0,:B64:c2VjcmV0:1234", false},
      {"^XA^DFE:A.ZPL^FDsecret^XZ", false},
      {"~H(SMA,S^FDsecret", false},
      {"~H(SMA,S secret", false},
      {R"(^XA^S(CLM,P,3\r\nsecret^XZ)", false},
      {"secret", false},
      {"^XA^HFE:A.ZPL^XZ", false},
      {"secret\" broken", false},
  };
  for (const auto& sending : cases) {
    CTranscriptFilter filter(false);
    const std::string line =
        "0.1 7 SendData 18 \"" + frame_start + sending.sent + frame_end + "\" = 0 took 0.1";
    EXPECT_EQ(filter.Filter(line) == line, sending.is_shown) << sending.sent;
    EXPECT_EQ(filter.Filter(line).find("secret"), std::string::npos);
    const std::string answer = R"(0.2 7 ReceiveData buffer 3 = 0 3 "\x02^S(SMA,S,IL\x03\r\n" took 0.1)";
    EXPECT_EQ(filter.Filter(answer) == answer, sending.is_shown) << sending.sent;
    EXPECT_EQ(CTranscriptFilter(true).Filter(line), line);
  }
  // The same bytes, sent by somebody who gave them as data.
  CTranscriptFilter own(false, {"", "^XA^S(CLM,P,3"});
  const std::string typed = R"(0.1 7 SendData 18 "^XA^S(CLM,P,3^XZ^XA^H(E^XZ" = 0 took 0.1)";
  EXPECT_EQ(own.Filter(typed).find("CLM"), std::string::npos);
  const std::string asked = R"(0.1 7 SendData 8 "~H(SMA,S" = 0 took 0.1)";
  EXPECT_EQ(own.Filter(asked), asked);
  CTranscriptFilter filter(false);
  EXPECT_EQ(filter.Filter(R"(0.1 7 ReceiveData buffer 3 = 0 3 "abc" took 0.5)"),
            "0.1 7 ReceiveData buffer 3 = 0 3 (3 bytes, SHA-256 "
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad) took 0.5");
  EXPECT_EQ(filter.Filter(R"(0.1 7 ReceiveData buffer 3 = 0 3 "ab)"),
            "0.1 7 ReceiveData buffer 3 = 0 3 (cut off)");
  EXPECT_EQ(filter.Filter(R"(0.1 7 Initialize 1 "USB001" "" "" 0 "" = 0 took 0.1)"),
            R"(0.1 7 Initialize 1 "USB001" "" "" 0 "" = 0 took 0.1)");
}

}  // namespace
