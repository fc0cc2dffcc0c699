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

TEST_F(PrefixTest, ChangeIsSentSavedAndReadBack) {
  LoadAll();
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrefix('!', '^', ';'));
  EXPECT_EQ(std::string("\x02\x1E"
                        "CT!\x1E"
                        "CC^\x1E"
                        "CD;\x03\x1EXA\x1EJUS\x1EXZ\x1EXA\x1EH(E\x1EXZ"),
            world_.Sent().at(0));
  EXPECT_EQ("~H(CCC,T~H(CCC,C~H(CCC,D", world_.Sent().at(1));
  EXPECT_EQ("21", StoredValue(TVMGR_SETTING_CCC_T));
  EXPECT_EQ("3B", StoredValue(TVMGR_SETTING_CCC_D));
  std::uint8_t is_default = 9;
  EXPECT_EQ(TVMGR_OK, TVMGR_IsDefaultPrefix(&is_default));
  EXPECT_EQ(0, is_default);
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrefix('~', '^', ','));
  EXPECT_EQ(TVMGR_OK, TVMGR_IsDefaultPrefix(&is_default));
  EXPECT_EQ(1, is_default);
}

TEST_F(PrefixTest, TheResultOfTheReadBackDoesNotCount) {
  world_.port.Faults().call_faults.push_back({lxemu::PortCall::kInitialize, 2, 77, 0});
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrefix('~', '^', ','));
  world_.port.Faults().call_faults = {{lxemu::PortCall::kInitialize, 1, 77, 0}};
  EXPECT_EQ(77, TVMGR_UpdatePrefix('~', '^', ','));
}

TEST_F(PrefixTest, ASilentPrinterCountsAsDefaultAfterThreeSeconds) {
  world_.port.Faults().silent = true;
  const std::uint64_t start = world_.clock.Now();
  std::uint8_t is_default = 9;
  EXPECT_EQ(TVMGR_OK, TVMGR_IsDefaultPrefix(&is_default));
  EXPECT_EQ(1, is_default);
  EXPECT_EQ(3000U, world_.clock.Now() - start);
  EXPECT_EQ(TVMGR_OK, TVMGR_IsDefaultPrefix(nullptr));
}

}  // namespace
}  // namespace tavira::test
