#include "discovery/search/search_protocol.h"

#include <gtest/gtest.h>

#include "discovery/search/answer_collection.h"

namespace tavira {
namespace {

constexpr MacAddress kMac{0x00, 0x1B, 0x82, 0xC0, 0xFF, 0x0E};

std::string Bytes(std::initializer_list<int> bytes) {
  return {bytes.begin(), bytes.end()};
}

std::string Announcement() {
  std::string datagram = "KORVAp" + Bytes({0, 0, 0, 0, 0xE0, 0});
  datagram.resize(76);
  datagram[75] = 2;
  return datagram;
}

std::string Answer(std::uint32_t status, std::string_view data = {}) {
  return "KORVAq" +
         Bytes({0, 0, 0, 0, static_cast<int>(status >> 8), static_cast<int>(status & 0xFF), 0, 0}) +
         std::string(data);
}

TEST(SearchProtocolTest, TheBroadcastIsFourteenBytes) {
  EXPECT_EQ("KORVAP" + std::string(8, '\0'), BuildBroadcast());
}

TEST(SearchProtocolTest, RequestsCarryTheCommandAndTheTargetWhenThereIsOne) {
  const struct {
    std::uint32_t command;
    std::string bytes;
  } cases[] = {
      {0, Bytes({0, 0, 0, 0, 0, 0, 0, 0})},
      {0x02000000, Bytes({2, 0, 0, 0, 0, 0, 0, 0})},
      {0x40000102, Bytes({0x40, 0, 1, 2, 0, 0, 0, 0})},
      {0x80000000, Bytes({0x80, 0, 0, 0, 0, 0, 0, 6, 0x00, 0x1B, 0x82, 0xC0, 0xFF, 0x0E})},
      {0xC0000001, Bytes({0xC0, 0x80, 0, 1, 0, 0, 0, 6, 0x00, 0x1B, 0x82, 0xC0, 0xFF, 0x0E})},
  };
  for (const auto& [command, bytes] : cases) {
    EXPECT_EQ("KORVAQ" + bytes, BuildSearchRequest(command, kMac)) << command;
  }
}

TEST(SearchProtocolTest, AnAddressIsWrittenWithItsFourNumbers) {
  EXPECT_EQ("198.51.100.7", DottedText(0xC6336407));
}

TEST(SearchProtocolTest, AMacIsTwelveHexadecimalDigits) {
  EXPECT_EQ(kMac, ParseMac("001b82C0fF0E"));
  EXPECT_EQ((MacAddress{0xAA, 0xA9, 0x9A, 0xFA, 0x90, 0x0F}), ParseMac("aAa99AFa900f"));
  for (const char* text :
       {"", "001B82C0FF0", "001B82C0FF0E0", "001B82C0FF0G", "00:1B:82:C0:F", "001B82C0FF @"}) {
    EXPECT_EQ(std::nullopt, ParseMac(text)) << text;
  }
}

TEST(SearchProtocolTest, EveryFixedFieldOfAnAnnouncementCounts) {
  const struct {
    std::size_t offset;
    int value;
    bool taken;
  } cases[] = {
      {0, 'k', false}, {5, 'P', false},  {5, 'q', false},   {6, 1, false},  {7, 0xFF, true},
      {8, 1, false},   {9, 1, false},    {10, 0, false},    {11, 1, false}, {12, 0xFF, true},
      {75, 3, true},   {75, 0xFE, true}, {75, 0xFD, false}, {75, 0, false},
  };
  for (const auto& [offset, value, taken] : cases) {
    std::string datagram = Announcement();
    datagram[offset] = static_cast<char>(value);
    EXPECT_EQ(taken, IsAnnouncement(datagram)) << offset << ' ' << value;
  }
}

TEST(SearchProtocolTest, TheStatusDecidesWhetherAnAnswerIsTaken) {
  const struct {
    std::uint32_t status;
    bool taken;
  } cases[] = {
      {0x0000, true},  {0x00FF, true},  {0x0100, false}, {0x0101, true},  {0x0FFF, true},
      {0x1000, false}, {0xDFFF, false}, {0xE000, true},  {0xE100, true},  {0xEFFF, true},
      {0xF000, false}, {0xFEFF, false}, {0xFF00, false}, {0xFFFF, false},
  };
  for (const auto& [status, taken] : cases) {
    EXPECT_EQ(taken, IsGoodAnswer(Answer(status), kSearchState, std::nullopt)) << status;
    EXPECT_EQ(taken, IsGoodAnswer(Answer(status), kSearchNames, std::nullopt)) << status;
  }
}

TEST(SearchProtocolTest, AnAnswerNeedsItsHeadAndItsStatus) {
  const std::string good = Answer(0);
  for (std::size_t size = 0; size < good.size(); ++size) {
    EXPECT_EQ(size >= 12, IsGoodAnswer(good.substr(0, size), kSearchState, std::nullopt)) << size;
  }
  for (std::size_t offset = 0; offset < 6; ++offset) {
    std::string datagram = good;
    datagram[offset] ^= 0x20;
    EXPECT_FALSE(IsGoodAnswer(datagram, kSearchState, std::nullopt)) << offset;
  }
}

TEST(SearchProtocolTest, OneCommandAlsoChecksItsDetailByte) {
  std::string datagram = Answer(0);
  EXPECT_TRUE(IsGoodAnswer(datagram, 0x02000001, std::nullopt));
  datagram[7] = 1;
  EXPECT_FALSE(IsGoodAnswer(datagram, 0x02000001, std::nullopt));
  EXPECT_TRUE(IsGoodAnswer(datagram, kSearchNames, std::nullopt));
}

TEST(SearchProtocolTest, AddressedCommandsAreAnsweredByTheirTarget) {
  const std::string mac(kMac.begin(), kMac.end());
  const std::string named = Answer(0, mac);
  const std::string named_later = Answer(0, "?" + mac);
  const std::string nameless = Answer(0, "strange");
  for (const std::uint32_t command :
       {256U, 257U, 258U, 0x20001U, 0x40000U, 0x8A1000U, 0x8A1001U, 0xCA1001U, 0xCB1000U, 0U}) {
    EXPECT_TRUE(IsGoodAnswer(named, command, kMac)) << command;
    EXPECT_FALSE(IsGoodAnswer(named_later, command, kMac)) << command;
    EXPECT_FALSE(IsGoodAnswer(named.substr(0, 19), command, kMac)) << command;
    EXPECT_EQ(command == 0, IsGoodAnswer(nameless, command, std::nullopt)) << command;
  }
  EXPECT_TRUE(IsGoodAnswer(named_later, 16, kMac));
  EXPECT_FALSE(IsGoodAnswer(named, 16, kMac));
  EXPECT_TRUE(IsGoodAnswer(nameless, kSearchNames, kMac));
}

TEST(SearchProtocolTest, NamesEndAtAZeroByteTheBlockOrTheDatagram) {
  const auto names_of = [](int length, std::string block) {
    std::string datagram = Answer(0) + "??" + std::move(block);
    datagram[12] = static_cast<char>(length >> 8);
    datagram[13] = static_cast<char>(length & 0xFF);
    const tagPrinterNames names = ReadPrinterNames(datagram);
    return std::string(names.first) + '|' + std::string(names.second);
  };
  const std::string two("one\0two\0three", 13);
  const struct {
    int length;
    std::string block;
    std::string names;
  } cases[] = {
      {15, two, "one|two"},
      {2 + 6, two, "one|tw"},
      {2 + 4, two, "one|"},
      {2 + 2, two, "on|"},
      {0xFFFF, two, "one|two"},
      {2, two, "|"},
      {1, two, "|"},
      {0, two, "|"},
      {15, "", "|"},
      {15, "one", "one|"},
      {0xFFFF, "a" + std::string(1, '\0') + "b", "a|b"},
      {15, std::string(1, '\0') + "b", "|b"},
  };
  for (const auto& [length, block, names] : cases) {
    EXPECT_EQ(names, names_of(length, block)) << length;
  }
  EXPECT_EQ(std::string(493, 'x') + '|', names_of(0xFFFF, std::string(600, 'x')));
  EXPECT_EQ("", ReadPrinterNames(Answer(0)).first);  // cut off between the length and the block
}

}  // namespace
}  // namespace tavira
