#include "support/module_test.h"

namespace tavira::test {
namespace {

/** An export with its flag as the byte that it is on the wire between modules. */
template <typename Result, typename... Parameters>
auto WithByte(Result (*function)(Parameters...)) {
  return reinterpret_cast<Result (*)(
      std::conditional_t<std::is_same_v<Parameters, bool>, std::uint8_t, Parameters>...)>(
      reinterpret_cast<void*>(function));
}

constexpr const char* kCapture = "~H(CLR,Z~H(CLR,P~H(CLR,R~H(CMP,U";
constexpr const char* kNeutralise =
    "^XA^S(CLR,Z,600^XZ^XA^S(CLR,P,600^XZ^XA^S(CLR,R,600^XZ^XA^S(CMP,U,D^XZ^XA^JUS^XZ^XA^H(E^XZ";
constexpr const char* kNeutraliseMode = "^XA^S(CMP,U,D^XZ^XA^JUS^XZ^XA^H(E^XZ";
constexpr const char* kPutBack300 =
    "^XA^S(CLR,Z,300^XZ^XA^S(CLR,P,600^XZ^XA^S(CLR,R,600^XZ^XA^S(CMP,U,D^XZ^XA^JUS^XZ^XA^H(E^XZ";

using LoadingTest = CModuleTest;
using Transactions = std::vector<std::string>;

TEST_F(LoadingTest, EveryByteButZeroIsTrue) {
  const std::uint8_t command = 'x';
  const std::pair<const char*, std::function<void(std::uint8_t)>> calls[] = {
      {"all or one", [](std::uint8_t flag) { WithByte (&TVMGR_LoadSetting)(flag, 12); }},
      {"by list", [](std::uint8_t flag) { WithByte (&TVMGR_LoadSettingByList)(flag); }},
      {"direct", [&](std::uint8_t flag) { WithByte (&TVMGR_DirectSendCommand)(&command, 1, flag); }},
  };
  const auto sent_with = [this](const auto& call, std::uint8_t flag) {
    TVMGR_Terminate();
    TVMGR_Initialize();
    world_.printer.SetSetting("CLR,Z", "300");
    TVMGR_SetLoadList(12);
    world_.ClearLog();
    call(flag);
    return world_.Sent();
  };
  for (const auto& [name, call] : calls) {
    const Transactions with_true = sent_with(call, 1);
    EXPECT_NE(sent_with(call, 0), with_true) << name;
    for (const int flag : {2, 3, 0x80, 0xFE, 0xFF}) {
      EXPECT_EQ(with_true, sent_with(call, static_cast<std::uint8_t>(flag))) << name << ", " << flag;
    }
  }
}

TEST_F(LoadingTest, ASingleLoadNeverAddsToTheStore) {
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(false, 12));
  EXPECT_EQ("(none)", StoredValue(12));
  EXPECT_EQ((Transactions{kCapture, "~H(CMP,F"}), world_.Sent());
}

TEST_F(LoadingTest, ASingleLoadRefreshesWhatAFullLoadStored) {
  LoadAll();
  world_.printer.SetSetting("CMP,F", "changed");
  world_.printer.SetSetting("CMP,S", "unseen");
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(false, 12));
  EXPECT_EQ("changed", StoredValue(12));
  EXPECT_NE("unseen", StoredValue(11));
  EXPECT_EQ((Transactions{"~H(CMP,F"}), world_.Sent());  // the neutral state is known: the guard is free
}

TEST_F(LoadingTest, AFullLoadStoresWhatThePrinterAnswersAndNothingOlder) {
  LoadAll();
  EXPECT_EQ("600", StoredValue(TVMGR_SETTING_CLR_Z));
  EXPECT_EQ("7E", StoredValue(TVMGR_SETTING_CCC_T));
  EXPECT_EQ("(none)", StoredValue(TVMGR_SETTING_ST));
  EXPECT_EQ("", StoredValue(TVMGR_SETTING_BACKGROUND));
  world_.printer.Quirks().unanswered_keys = {"CMP,F"};
  LoadAll();
  EXPECT_EQ("(none)", StoredValue(TVMGR_SETTING_CMP_F));
  EXPECT_NE("(none)", StoredValue(TVMGR_SETTING_CMP_S));
}

TEST_F(LoadingTest, SettingsWithoutAQueryRunTheGuardAndThenFail) {
  world_.printer.SetSetting("CLR,Z", "300");
  for (const std::int32_t id : {46, 37, 30, 0, 85, -1}) {
    world_.ClearLog();
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_LoadSetting(false, id)) << id;
    const Transactions guard{kNeutralise, kPutBack300};
    EXPECT_EQ(id == 46 ? (Transactions{kCapture, kNeutralise, kPutBack300}) : guard, world_.Sent()) << id;
    EXPECT_EQ("300", world_.printer.Setting("CLR,Z")) << id;
  }
}

TEST_F(LoadingTest, ResolutionSettingsAreLoadedWithoutTouchingTheResolutions) {
  world_.printer.SetSetting("CLR,Z", "300");
  LoadAll();
  const std::pair<std::int32_t, const char*> cases[] = {
      {3, "~H(CLR,Z"}, {4, "~H(CLR,P"}, {5, "~H(CLR,R"}, {76, "~H(CBB,M"}};
  for (const auto& [id, query] : cases) {
    world_.ClearLog();
    EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(false, id));
    EXPECT_EQ((Transactions{kNeutraliseMode, query, kNeutraliseMode}), world_.Sent()) << id;
  }
  EXPECT_EQ("300", StoredValue(3));
}

TEST_F(LoadingTest, TheListKeepsItsOrderItsDuplicatesAndItself) {
  LoadAll();
  for (const std::uint32_t id : {12U, 46U, 6U, 12U, 999U}) {
    TVMGR_SetLoadList(id);
  }
  TVMGR_ClearLoadList();
  for (const std::uint32_t id : {12U, 46U, 6U, 12U, 999U}) {
    TVMGR_SetLoadList(id);
  }
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSettingByList(true));
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSettingByList(true));
  EXPECT_EQ((Transactions{"~H(CMP,F~H(CLM,P~H(CMP,F", "~H(CMP,F~H(CLM,P~H(CMP,F"}), world_.Sent());
}

TEST_F(LoadingTest, TheListLoadNegatesItsFlagForTheGuard) {
  world_.printer.SetSetting("CLR,Z", "300");
  TVMGR_SetLoadList(6);
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSettingByList(true));
  EXPECT_EQ((Transactions{kCapture, kNeutralise, "~H(CLM,P", kPutBack300}), world_.Sent());
  world_.ClearLog();
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSettingByList(false));
  EXPECT_EQ((Transactions{kNeutraliseMode, "~H(CLM,P", kNeutraliseMode}), world_.Sent());
}

TEST_F(LoadingTest, AnEmptyListHasNothingToSend) {
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_LoadSettingByList(true));
  TVMGR_SetLoadList(46);
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_LoadSettingByList(true));
}

TEST_F(LoadingTest, ASilentPrinterKeepsOldValuesOfAListAndLosesThoseOfAFullLoad) {
  LoadAll();
  const std::string before = StoredValue(12);
  world_.port.Faults().silent = true;
  TVMGR_SetLoadList(12);
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSettingByList(false));
  EXPECT_EQ(before, StoredValue(12));
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0));
  EXPECT_EQ("(none)", StoredValue(12));
}

TEST_F(LoadingTest, GarbageAndACutAnswerCostOnlyWhatTheyHit) {
  world_.printer.Quirks().garbage_between_frames = "\r\n\x03^S(IMP,S,wrong ";
  LoadAll();
  EXPECT_EQ(world_.printer.Setting("IMP,S"), StoredValue(1));
  EXPECT_EQ(world_.printer.Setting("INU,P"), StoredValue(82));
  world_.printer.Quirks().garbage_between_frames.clear();
  world_.port.Faults().cut_answer_at = 40;
  TVMGR_LoadSetting(true, 0);
  EXPECT_EQ(world_.printer.Setting("IMP,S"), StoredValue(1));
  EXPECT_EQ("(none)", StoredValue(82));
}

}  // namespace
}  // namespace tavira::test
