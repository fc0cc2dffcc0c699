#include "command/command_builder.h"

#include <gtest/gtest.h>

#include <set>

#include "command/prefix.h"
#include "command/text.h"
#include "emulator/printer/setting_table.h"

namespace tavira {
namespace {

std::string Query(std::uint32_t id) {
  std::string commands;
  AppendQuery(commands, id);
  return commands;
}

std::string Set(std::uint32_t id, std::string_view value) {
  std::string commands;
  AppendSetCommand(commands, id, value);
  return commands;
}

TEST(CommandBuilderTest, QueriesAreBareHeads) {
  EXPECT_EQ("~H(CLR,Z", Query(3));
  EXPECT_EQ("~H(CCC,T", Query(65));
  for (const std::uint32_t without : {0U, 30U, 34U, 37U, 46U, 75U, 85U, 0xFFFFFFFFU}) {
    EXPECT_EQ("", Query(without)) << without;
  }
}

TEST(CommandBuilderTest, AllQueriesStandInTableOrderWithoutTheOneThatCannotBeAsked) {
  std::string commands;
  AppendAllQueries(commands);
  EXPECT_EQ(76U * 8, commands.size());
  EXPECT_EQ("~H(IMP,S~H(IMF,V~H(CMP,U~H(CLM,P", commands.substr(0, 32));
  EXPECT_NE(std::string::npos, commands.find("~H(CLA,C~H(CLR,Z~H(CLR,P~H(CLR,R~H(CBB,M~H(CFA,W~H(SCM,1"));
  EXPECT_NE(std::string::npos, commands.find("~H(CWR,P~H(CUI,B"));
  EXPECT_EQ("~H(INU,S~H(INU,N~H(INU,U~H(INU,V~H(INU,P", commands.substr(commands.size() - 40));
  std::set<std::string> keys, asked;
  for (const auto& setting : lxemu::kFactorySettings) keys.emplace(setting.key);
  for (std::size_t at = 0; at < commands.size(); at += 8) asked.insert(commands.substr(at + 3, 5));
  EXPECT_EQ(keys, asked);
}

TEST(CommandBuilderTest, SetCommandsCarryTheValueUnchanged) {
  EXPECT_EQ("^XA^S(CLR,Z,300^XZ", Set(3, "300"));
  EXPECT_EQ("^XA^S(IMP,S,^XZ", Set(1, ""));
  EXPECT_EQ("^XA^S(IMP,S,a,b ^\x01^XZ", Set(1, "a,b ^\x01"));
  EXPECT_EQ("^XA^ST01,02^XZ", Set(46, "01,02"));
  EXPECT_EQ("^XA\036CT!^XZ", Set(65, "!"));
  EXPECT_EQ("^XA\036CC^^XZ", Set(66, "^"));
  EXPECT_EQ("^XA\036CD;^XZ", Set(67, ";"));
  EXPECT_EQ("", Set(37, "x"));
}

TEST(CommandBuilderTest, PrefixChangeTakesAnyByte) {
  std::string commands = "x";
  AppendPrefixChange(commands, {'!', 0x00, 0x03});
  EXPECT_EQ(std::string("x\x02\036CT!\036CC\0\036CD\x03\x03", 15), commands);
}

TEST(PrefixAnswerTest, LooksAtFourBytesOfALongEnoughPayload) {
  const std::pair<std::string_view, bool> cases[] = {
      {"\x02^S(CCC,T,7E\x03", true},
      {"\x02^S(CCC,T,5F\x03", false},
      {"\x02^S(CCC,T?7E trailing\x03", true},
      {"\x02!S(CCC,T,7E\x03", false},
      {"\x02^S(CCC;T;7E\x03", false},
      {"\x02^xxxxx,xx7E\x03", true},
      {"\x02^S(CCC,T,7F\x03", false},
      {"\x02^S(CCC,T5F\x03", true},  // ten bytes: too short to judge
      {"", true},
      {"^S(CCC,T,5F", true},
      {"\x02^S(CCC,T,5F", true},
      {"\x03\x02^S(CCC,T,21\x03", false}};
  for (const auto& [answer, is_default] : cases) {
    EXPECT_EQ(is_default, IsDefaultPrefixAnswer(answer)) << answer;
  }
}

TEST(TextTest, StrictDecimalAcceptsDigitsWithOneLeadingMinus) {
  const std::pair<std::string_view, std::int32_t> cases[] = {
      {"", 0},
      {"600", 600},
      {"-20", -20},
      {"0600", 600},
      {"+600", 0},
      {"600 ", 0},
      {"600dpi", 0},
      {"6-00", 0},
      {"-", 0},
      {"--5", 0},
      {" 600", 0},
      {"0x10", 0},
      {"4294967896", 600},
      {"-2147483648", INT32_MIN},
  };
  for (const auto& [text, number] : cases) {
    EXPECT_EQ(number, ParseStrictDecimal(text)) << text;
  }
}

TEST(TextTest, CaseFoldsForAsciiLettersOnly) {
  EXPECT_TRUE(EqualsIgnoringCase("", ""));
  EXPECT_TRUE(EqualsIgnoringCase("aZ09", "Az09"));
  EXPECT_FALSE(EqualsIgnoringCase("il", "ilx"));
  EXPECT_FALSE(EqualsIgnoringCase("@[`{", "`{@["));
  EXPECT_FALSE(EqualsIgnoringCase("\xE4", "\xC4"));
}

}  // namespace
}  // namespace tavira
