#include "emulator/network/search_answer.h"

#include <gtest/gtest.h>

#include "emulator/memory/printer_ini.h"

namespace lxemu {
namespace {

const std::string kBroadcast = std::string("KORVAP") + std::string(8, '\0');

std::string Request(const std::string& command, const std::string& rest = std::string(4, '\0')) {
  return "KORVAQ" + command + rest;
}

const std::string kState = Request(std::string(4, '\0'));
const std::string kNames = Request(std::string("\x02\0\0\0", 4));

tagSearchIdentity Identity() {
  tagSearchIdentity identity;
  identity.name = "Dock 7";
  identity.mac = {2, 'L', 'X', 0, 0, 9};
  return identity;
}

std::vector<tagSearchAnswer> Ask(const std::string& datagram, std::string_view ini = {}) {
  return AnswerSearch(datagram, Identity(), ReadPrinterIni("[search]\n" + std::string(ini)).search);
}

std::string OneAnswer(const std::string& datagram, std::string_view ini = {}) {
  const std::vector<tagSearchAnswer> answers = Ask(datagram, ini);
  return answers.size() == 1 ? answers[0].bytes : std::to_string(answers.size()) + " answers";
}

unsigned Byte(const std::string& text, std::size_t offset) {
  return static_cast<unsigned char>(text.at(offset));
}

TEST(SearchAnswer, AnnouncesItselfWithStatusAndCapability) {
  const std::string answer = OneAnswer(kBroadcast);
  ASSERT_EQ(answer.size(), 76u);
  EXPECT_EQ(answer.substr(0, 6), "KORVAp");
  EXPECT_EQ(answer.substr(6, 6), std::string("\0\0\0\0\xE0\0", 6));
  EXPECT_EQ(answer.substr(72), std::string("\0\0\0\2", 4));
}

TEST(SearchAnswer, AnswersTheTwoCommands) {
  EXPECT_EQ(OneAnswer(kState), std::string("KORVAq\0\0\0\0\0\0\0\6\2LX\0\0\x09", 20));
  // Two names, each with its end, behind the length of them plus 2.
  EXPECT_EQ(OneAnswer(kNames), std::string("KORVAq\2\0\0\0\0\0\0\x12\0\0LX-R4100\0Dock 7\0", 32));
  EXPECT_EQ(OneAnswer(kNames, "first_name=A\nsecond_name=Hall 3 left\n"),
            std::string("KORVAq\2\0\0\0\0\0\0\x10\0\0A\0Hall 3 left\0", 30));
  // A name of any length fits into one answer of a host's 493 bytes.
  const std::string long_names = OneAnswer(
      kNames, "first_name=" + std::string(400, 'a') + "\nsecond_name=" + std::string(400, 'b') + "\n");
  EXPECT_LE(long_names.size(), 16u + 493u);
  EXPECT_EQ(Byte(long_names, 12) * 256 + Byte(long_names, 13), long_names.size() - 14);
  // Any other command is answered, and refused.
  EXPECT_EQ(OneAnswer(Request(std::string("\0\0\0\x10", 4))), std::string("KORVAq\0\0\0\x10\1\0\0\0", 14));
}

TEST(SearchAnswer, KnowsRequestsForAnotherPrinter) {
  const std::string command("\x80\0\0\0", 4);
  EXPECT_EQ(OneAnswer(Request(command, std::string("\0\0\0\6\2LX\0\0\x09", 10))).substr(6, 6),
            command + std::string(2, '\0'));
  EXPECT_TRUE(Ask(Request(command, std::string("\0\0\0\6\2LX\0\0\x08", 10))).empty());
  EXPECT_TRUE(Ask(Request(command)).empty());
}

TEST(SearchAnswer, IsSilentAboutEverythingElse) {
  for (const std::string& datagram :
       {std::string(), std::string("KORVAP"), kBroadcast.substr(0, 13), "KORVAp" + kBroadcast.substr(6),
        "korvaP" + kBroadcast.substr(6), "KORVAP" + std::string(7, '\0') + "x", kNames.substr(0, 13)}) {
    EXPECT_TRUE(Ask(datagram).empty()) << datagram.size();
  }
}

TEST(SearchAnswer, FaultsHitTheMessagesThatTheyName) {
  struct tagMessage {
    const char* name;
    const std::string& question;
    std::size_t too_short;  // for a host to use
  };
  const tagMessage messages[] = {
      {"announcement", kBroadcast, 76}, {"state", kState, 12}, {"names", kNames, 25}};
  for (const tagMessage& hit : messages) {
    for (const tagMessage& asked : messages) {
      SCOPED_TRACE(std::string(hit.name) + " " + asked.name);
      const bool is_hit = &hit == &asked;
      const auto ini = [&](const char* key) { return std::string(key) + "=" + hit.name + "\n"; };
      const std::string good = OneAnswer(asked.question);
      EXPECT_EQ(Ask(asked.question, ini("silent")).size(), is_hit ? 0u : 1u);
      EXPECT_EQ(Ask(asked.question, ini("twice")).size(), is_hit ? 2u : 1u);
      EXPECT_EQ(Ask(asked.question, ini("other_port")).at(0).from_other_port, is_hit);
      EXPECT_EQ(OneAnswer(asked.question, ini("wrong_letter"))[5] != good[5], is_hit);
      EXPECT_EQ(OneAnswer(asked.question, ini("rejected")).substr(10, 2) == std::string("\1\0", 2), is_hit);
      EXPECT_EQ(OneAnswer(asked.question, ini("short")).size() < asked.too_short, is_hit);
      const std::string times = std::string("=") + hit.name + ":30\n";
      const std::vector<tagSearchAnswer> late =
          Ask(asked.question, "delay_ms=5\nlate" + times + "again" + times);
      ASSERT_EQ(late.size(), is_hit ? 2u : 1u);
      EXPECT_EQ(late.front().after_ms, is_hit ? 35u : 5u);
      EXPECT_EQ(late.back().after_ms, is_hit ? 65u : 5u);
      EXPECT_EQ(late.back().bytes, good);
    }
  }
  EXPECT_EQ(OneAnswer(kBroadcast, "no_capability=1\n").substr(72), std::string(4, '\0'));
  EXPECT_EQ(ReadPrinterIni("[search]\ndelay_ms=40\nsilent=state names\n").search.delay_ms, 40u);
  EXPECT_EQ(
      ReadPrinterIni("[search]\nsilent=everything\nlouder=1\nlate=names\nagain=all:3\n").problems.size(), 4u);
}

}  // namespace
}  // namespace lxemu
