#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

using ResolutionGuardTest = CTransactionTest;

const std::string kDirect = "~X" + kClosing;

TEST_F(ResolutionGuardTest, ANeutralPrinterIsCapturedOnceAndThenLeftAlone) {
  world_.printer.SetSetting("CMP,U", "d");  // letter case does not matter
  EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
  EXPECT_EQ(TVMGR_OK, SendDirect("~X", false));
  EXPECT_EQ((Transactions{kCapture, kDirect, kDirect}), world_.Sent());
}

TEST_F(ResolutionGuardTest, EachSettingAloneMakesAPrinterNotNeutral) {
  const struct {
    const char* key;
    const char* value;
    std::string restored;
  } cases[] = {
      {"CLR,Z", "300", GuardWrite("300", "600", "600", "D")},
      {"CLR,P", "200", GuardWrite("600", "200", "600", "D")},
      {"CLR,R", "150", GuardWrite("600", "600", "150", "D")},
      {"CMP,U", "mode,^2", GuardWrite("600", "600", "600", "mode,^2")},
  };
  for (const auto& [key, value, restored] : cases) {
    Restart();
    world_.printer.FactoryReset();
    world_.printer.Quirks().fixed_answers = {{key, value}};
    EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
    EXPECT_EQ((Transactions{kCapture, kNeutralise, kDirect, restored}), world_.Sent()) << key;
  }
}

TEST_F(ResolutionGuardTest, ThePrinterIsNeutralInsideAndAsItWasAfterwards) {
  world_.printer.SetSetting("CLR,Z", "300");
  world_.printer.SetSetting("CMP,U", "E");
  Transactions inside;
  world_.before_send = [&] {
    inside.push_back(world_.printer.Setting("CLR,Z") + world_.printer.Setting("CMP,U"));
  };
  EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
  EXPECT_EQ((Transactions{"300E", "300E", "600D", "600D"}), inside);
  world_.printer.PowerCycle();  // both sides save
  EXPECT_EQ("300", world_.printer.Setting("CLR,Z"));
  EXPECT_EQ("E", world_.printer.Setting("CMP,U"));
}

TEST_F(ResolutionGuardTest, WithoutAChangeOfResolutionOnlyTheModeIsWritten) {
  world_.printer.SetSetting("CLR,Z", "300");
  EXPECT_EQ(TVMGR_OK, SendDirect("~X", false));
  EXPECT_EQ((Transactions{kCapture, GuardModeWrite("D"), kDirect, GuardModeWrite("D")}), world_.Sent());
  Restart();
  world_.printer.SetSetting("CMP,U", "E");
  EXPECT_EQ(TVMGR_OK, SendDirect("~X", false));
  EXPECT_EQ((Transactions{kCapture, GuardModeWrite("D"), kDirect, GuardModeWrite("E")}), world_.Sent());
}

TEST_F(ResolutionGuardTest, OnlyKnownResolutionsAreCapturedAndWrittenAsPlainNumbers) {
  const std::pair<const char*, const char*> cases[] = {
      {"150", "150"}, {"200", "200"}, {"300", "300"},        {"0300", "300"}, {"600", "600"},
      {"400", "600"}, {"0", "600"},   {"-300", "600"},       {"300 ", "600"}, {"+300", "600"},
      {"301", "600"}, {"x", "600"},   {"4294967596", "300"},  // 32 bits, wrapping
  };
  for (const auto& [answer, captured] : cases) {
    Restart();
    // The mode keeps the printer from being neutral, so that the restoring write shows what was captured.
    world_.printer.Quirks().fixed_answers = {{"CLR,Z", answer}, {"CMP,U", "E"}};
    EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
    EXPECT_EQ(GuardWrite(captured, "600", "600", "E"), world_.Sent().back()) << answer;
  }
}

TEST_F(ResolutionGuardTest, ALaterCaptureReplacesKnownResolutionsOnly) {
  const std::pair<const char*, const char*> cases[] = {{"400", "150"}, {"600", "600"}, {"300", "300"}};
  for (const auto& [answer, captured] : cases) {
    Restart();
    world_.printer.FactoryReset();
    world_.printer.Quirks() = {};
    world_.printer.SetSetting("CLR,Z", "150");
    EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
    AppendUpdate(TVMGR_SETTING_CBB_M, "N");  // makes the captured state stale
    world_.ClearLog();
    world_.before_send = [&, answer = answer] {
      if (world_.Sent().size() == 3) {  // behind neutralise, write and restore comes the next capture
        world_.printer.Quirks().fixed_answers = {{"CLR,Z", answer}, {"CLR,P", "200"}};
      }
    };
    EXPECT_EQ(TVMGR_OK, TVMGR_UpdatePrinterSetting());
    EXPECT_EQ(kCapture, world_.Sent().at(3));
    world_.ClearLog();
    world_.before_send = nullptr;
    EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
    EXPECT_EQ((Transactions{kNeutralise, kDirect, GuardWrite(captured, "200", "600", "D")}), world_.Sent());
  }
}

TEST_F(ResolutionGuardTest, TheLastOfSeveralAnswersCounts) {
  world_.printer.Quirks().garbage_between_frames = "\x02^S(CLR,P,200\x03";
  EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
  EXPECT_EQ(GuardWrite("600", "200", "600", "D"), world_.Sent().back());
}

TEST_F(ResolutionGuardTest, AnIncompleteAnswerCapturesNothingAndIsNotAskedForAgain) {
  // Nothing captured means resolutions of 600 and no mode, which is not neutral.
  const std::string without_mode = GuardWrite("600", "600", "600", "");
  for (const char* key : {"CLR,Z", "CLR,P", "CLR,R", "CMP,U"}) {
    for (const bool is_empty : {false, true}) {
      Restart();
      world_.printer.SetSetting("CLR,Z", "300");
      world_.printer.Quirks() = {};
      if (is_empty) {
        world_.printer.Quirks().fixed_answers = {{key, ""}};
      } else {
        world_.printer.Quirks().unanswered_keys = {key};
      }
      EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
      EXPECT_EQ((Transactions{kCapture, kNeutralise, kDirect, without_mode}), world_.Sent()) << key;
      world_.printer.Quirks() = {};
      world_.ClearLog();
      EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
      EXPECT_EQ((Transactions{kNeutralise, kDirect, without_mode}), world_.Sent()) << key;
    }
  }
}

TEST_F(ResolutionGuardTest, ASilentPrinterCostsFourTimeOuts) {
  world_.port.Faults().silent = true;
  const std::uint64_t start = world_.clock.Now();
  EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
  EXPECT_EQ(4U * 60000, world_.clock.Now() - start);
  EXPECT_EQ(4U, world_.Sent().size());
}

TEST_F(ResolutionGuardTest, AFailedCaptureIsIgnoredAndRepeatedByTheNextOperation) {
  world_.printer.SetSetting("CLR,Z", "300");
  FailTransaction(1);
  EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
  EXPECT_EQ((Transactions{kCapture, kDirect}), world_.Sent());
  world_.ClearLog();
  EXPECT_EQ(TVMGR_OK, SendDirect("~X", true));
  EXPECT_EQ((Transactions{kCapture, kNeutralise, kDirect, GuardWrite("300", "600", "600", "D")}),
            world_.Sent());
}

}  // namespace
}  // namespace tavira::test
