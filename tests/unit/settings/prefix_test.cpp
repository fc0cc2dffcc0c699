#include "command/prefix.h"

#include "support/module_test.h"

namespace tavira::test {
namespace {

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

using PrefixTest = CModuleTest;

TEST_F(PrefixTest, TheReadBackLeavesTheResolutionsOfAPrinterAlone) {
  world_.printer.SetSetting("CLR,Z", "300");
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrefix('~', '^', ','));
  EXPECT_EQ(5U, world_.Sent().size());  // the change, the capture, the queries between two writes of the mode
  for (const std::string& sent : world_.Sent()) EXPECT_EQ(std::string::npos, sent.find("^S(CLR")) << sent;
}

TEST_F(PrefixTest, TheResultOfTheReadBackDoesNotCount) {
  world_.port.Faults().call_faults.push_back({lxemu::PortCall::kInitialize, 2, 77, 0});
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrefix('~', '^', ','));
  world_.port.Faults().call_faults = {{lxemu::PortCall::kInitialize, 1, 77, 0}};
  EXPECT_EQ(77, TVMGR_UpdatePrefix('~', '^', ','));
}

}  // namespace
}  // namespace tavira::test
