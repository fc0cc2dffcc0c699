#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

// What goes over the port for plain operations: tests/unit/manager/exchange_scripts.txt.
using ResolutionGuardTest = CTransactionTest;

const std::string kDirect = "~X" + kClosing;

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

}  // namespace
}  // namespace tavira::test
