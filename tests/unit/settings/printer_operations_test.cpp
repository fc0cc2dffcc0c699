#include <algorithm>

#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

struct tagCase {
  std::uint32_t code;
  std::string commands;
  bool is_bracketed;
};

const std::vector<tagCase>& PlainOperations() {
  static const std::vector<tagCase> operations{
      {0x1001001, "~J(C", false},
      {0x1001002, "~W(PNC", false},
      {0x1001003, "~JC", false},
      {0x1001006, std::string("\0^any,bytes\xFF", 12), true},
      {0x1001007, "~WC", true},
      {0x1001008,
       "^XA^WDR:*.FNT^XZ^XA^WDR:*.TTF^XZ^XA^WDR:*.TTE^XZ^XA^WDE:*.FNT^XZ^XA^WDE:*.TTE^XZ^XA^WDE:*.TTF^XZ"
       "^XA^WDZ:*.FNT^XZ^XA^WDZ:*.TTF^XZ^XA^WDZ:*.TTE^XZ",
       true},
      {0x1001009, "^XA^WDZ:*.BAR^XZ", true},
      {0x100100A, "^XA^WDR:*.PNG^XZ^XA^WDR:*.GRF^XZ^XA^WDE:*.PNG^XZ^XA^WDE:*.GRF^XZ", true},
      {0x100100B, "^XA^WDR:*.FMT^XZ^XA^WDE:*.FMT^XZ", true},
      {0x100100C,
       "\x1E"
       "XA\x1E"
       "CT~\x1E"
       "CC^\x1E"
       "CD,\x1E"
       "XZ",
       false},
  };
  return operations;
}

const std::string kReset = "^XA^JUF^XZ^XA^JUS^XZ" + kClosing;
const std::string kInitialize = "^XA^JBE^XZ" + kClosing;
const std::string kTemporary42 = "^XA^S(CMP,M,T^XZ" + kClosing;
const Transactions kRefreshed{Listing("E:*.PNG,c"),    Listing("E:*.TTF,c"), Listing("E:*.TTE,c"),
                              Listing("E:*.FMT,c"),    Listing("E:*.ZPL,c"), Listing("E:*.GRF,c"),
                              Listing("E:KORVDEF.BGD")};

std::string Final42(const std::string& value) {
  return "^XA^S(CMP,M," + value + "^XZ" + kSaving;
}

std::int32_t SetOperation(std::uint32_t code, std::string_view data = {}) {
  return TVMGR_SetExecuteList(code,
                              data.empty() ? nullptr : reinterpret_cast<const std::uint8_t*>(data.data()),
                              static_cast<std::int32_t>(data.size()));
}

class PrinterOperationsTest : public CTransactionTest {
 protected:
  void SetUp() override {
    CTransactionTest::SetUp();
    world_.printer.Quirks().maintenance_ms = 0;
  }

  static std::int32_t Execute(std::uint32_t code, std::string_view data = {}) {
    EXPECT_EQ(TVMGR_OK, SetOperation(code, data));
    return TVMGR_ExecutePrinterOperation();
  }

  /** How long the busy wait of an operation took: all but its transactions and the second before it. */
  std::uint64_t TimeBusyWait(std::uint32_t code) {
    const std::uint64_t start = world_.clock.Now();
    EXPECT_EQ(TVMGR_OK, Execute(code));
    const Transactions sent = world_.Sent();
    const auto transactions = std::count_if(sent.begin(), sent.end(),
                                            [](const std::string& commands) { return commands != kStatus; });
    return world_.clock.Now() - start - static_cast<std::uint64_t>(transactions) * 100 - 1000;
  }
};

TEST_F(PrinterOperationsTest, EachSendsItsCommandsAndAsksForTheState) {
  for (const auto& [code, commands, is_bracketed] : PlainOperations()) {
    world_.ClearLog();
    EXPECT_EQ(TVMGR_OK, Execute(code, code == 0x1001006 ? commands : "")) << std::hex << code;
    const Transactions bracketed{kTemporary42, commands + kClosing, kStatus, Final42("T")};
    EXPECT_EQ(is_bracketed ? bracketed : (Transactions{commands + kClosing, kStatus}), world_.Sent())
        << std::hex << code;
  }
}

TEST_F(PrinterOperationsTest, TheEmptyOperationSendsNothing) {
  EXPECT_EQ(TVMGR_OK, Execute(0x1001000, "data"));
  EXPECT_TRUE(world_.calls.empty());
}

TEST_F(PrinterOperationsTest, UnknownCodesAreRefusedBeforeAnythingIsSent) {
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_ExecutePrinterOperation());  // none was ever set
  for (const std::uint32_t code : {0U, 1U, 0x1000FFFU, 0x100100DU, 0xFFFFFFFFU}) {
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, Execute(code, "data")) << std::hex << code;
  }
  EXPECT_TRUE(world_.calls.empty());
}

TEST_F(PrinterOperationsTest, SendingNoDataFailsBehindTheFirstHalfOfTheBracket) {
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, Execute(TVMGR_OP_SEND_DATA));
  EXPECT_EQ(Transactions{kTemporary42}, world_.Sent());
}

TEST_F(PrinterOperationsTest, TheBracketPutsTheStoredValueBack) {
  world_.printer.SetSetting("CMP,M", "C");
  LoadAll();
  world_.before_send = [&] {
    if (world_.Sent().size() == 2) {
      EXPECT_EQ("T", world_.printer.Setting("CMP,M"));
    }
  };
  EXPECT_EQ(TVMGR_OK, Execute(TVMGR_OP_WIPE_GRAPHICS));
  EXPECT_EQ(Final42("C"), world_.Sent().back());
  world_.printer.PowerCycle();
  EXPECT_EQ("C", world_.printer.Setting("CMP,M"));
}

TEST_F(PrinterOperationsTest, AnEmptyStoredValueCountsAsNone) {
  world_.printer.Quirks().fixed_answers = {{"CMP,M", ""}};
  LoadAll();
  ASSERT_EQ("", StoredValue(TVMGR_SETTING_CMP_M));
  EXPECT_EQ(TVMGR_OK, Execute(TVMGR_OP_WIPE_GRAPHICS));
  EXPECT_EQ(Final42("T"), world_.Sent().back());
}

TEST_F(PrinterOperationsTest, TheDataOfAnEarlierRequestStaysUnlessNewDataComes) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>("new");
  SetOperation(TVMGR_OP_SEND_DATA, "old");
  const std::vector<std::pair<std::function<void()>, std::string>> steps{
      {[&] { TVMGR_SetExecuteList(TVMGR_OP_SEND_DATA, nullptr, 3); }, "old"},
      {[&] { TVMGR_SetExecuteList(TVMGR_OP_SEND_DATA, bytes, 0); }, "old"},
      {[&] { TVMGR_SetExecuteList(TVMGR_OP_SEND_DATA, bytes, -3); }, "old"},
      {[&] {
         Execute(TVMGR_OP_HEAD_CHECK);
         SetOperation(TVMGR_OP_SEND_DATA);
       },
       "old"},
      {[&] { TVMGR_SetExecuteList(TVMGR_OP_SEND_DATA, bytes, 3); }, "new"},
      {[] {}, "new"},  // the request itself stays after it was run
  };
  for (const auto& [step, sent] : steps) {
    step();
    world_.ClearLog();
    EXPECT_EQ(TVMGR_OK, TVMGR_ExecutePrinterOperation());
    EXPECT_EQ(sent + kClosing, world_.Sent().at(1));
  }
}

TEST_F(PrinterOperationsTest, ABusyPrinterIsAskedOnceASecondThroughOneOpenPort) {
  world_.printer.Quirks().maintenance_ms = 10000;
  std::vector<std::uint64_t> asked;
  world_.before_send = [&] { asked.push_back(world_.clock.Now()); };
  EXPECT_EQ(TVMGR_OK, Execute(TVMGR_OP_MEDIA_CALIBRATION));
  ASSERT_EQ(1U + 10, asked.size());  // the first a second after the answer, the others 1.1 s apart
  EXPECT_EQ(1100U, asked[1] - asked[0]);
  for (std::size_t i = 2; i < asked.size(); ++i) {
    EXPECT_EQ(1100U, asked[i] - asked[i - 1]);
  }
  EXPECT_EQ(2, world_.Count(EPortCall::kInitialize));
  EXPECT_EQ(2, world_.Count(EPortCall::kTerminate));
}

TEST_F(PrinterOperationsTest, TheBusyWaitIsBoundedAndItsEndNoError) {
  const std::pair<std::uint32_t, std::uint64_t> bounds[] = {
      {TVMGR_OP_HEAD_MAINTENANCE, 300000}, {TVMGR_OP_HEAD_CHECK, 60000}, {TVMGR_OP_WIPE_GRAPHICS, 60000}};
  constexpr std::uint64_t kOnePoll = 1100;
  for (const auto& [code, bound] : bounds) {
    for (const char* state : {"PR", "SP", "cl", "OF"}) {
      world_.ClearLog();
      world_.printer.Quirks().fixed_answers = {{"SMA,S", state}};
      const std::uint64_t waited = TimeBusyWait(code);
      EXPECT_LE(bound, waited) << state;
      EXPECT_GT(bound + kOnePoll, waited) << state;
    }
  }
}

TEST_F(PrinterOperationsTest, EveryOtherStateEndsTheWaitAtOnce) {
  for (const char* state : {"IL", "ER", "PRX", "P", ""}) {
    world_.ClearLog();
    world_.printer.Quirks().fixed_answers = {{"SMA,S", state}};
    EXPECT_EQ(100U, TimeBusyWait(TVMGR_OP_HEAD_CHECK)) << state;
  }
  world_.ClearLog();
  world_.printer.Quirks().unanswered_keys = {"SMA,S"};
  EXPECT_EQ(3000U, TimeBusyWait(TVMGR_OP_HEAD_CHECK));
}

TEST_F(PrinterOperationsTest, TheWaitOpensTheStoredPortAsItIs) {
  std::vector<std::int32_t> types;
  world_.before_send = [&] { types.push_back(world_.port.LastPortType()); };
  EXPECT_EQ(TVMGR_OK, Execute(TVMGR_OP_HEAD_CHECK));
  EXPECT_EQ((std::vector<std::int32_t>{1, 3}), types);
}

TEST_F(PrinterOperationsTest, WithoutAChosenPrinterTheWaitIsLeftOut) {
  TVMGR_Terminate();
  ASSERT_EQ(TVMGR_OK, TVMGR_Initialize());
  world_.ClearLog();
  EXPECT_EQ(TVMGR_OK, Execute(TVMGR_OP_WIPE_FORMATS));
  EXPECT_EQ((Transactions{kTemporary42, "^XA^WDR:*.FMT^XZ^XA^WDE:*.FMT^XZ" + kClosing, Final42("T")}),
            world_.Sent());
}

TEST_F(PrinterOperationsTest, AFactoryResetIsFollowedByAReloadWithAFreshCapture) {
  world_.printer.PutFile("E:KORVDEF.BGD", "background");
  LoadAll();
  world_.printer.SetSetting("CMP,F", "7");
  const std::uint64_t start = world_.clock.Now();
  EXPECT_EQ(TVMGR_OK, Execute(TVMGR_OP_FACTORY_RESET));
  EXPECT_EQ((Transactions{kReset, kStatus, kCapture, AllQueries(), kBackgroundUpload, kResolutionQueries}),
            world_.Sent());
  EXPECT_EQ(6U * 100 + 2 * 1000, world_.clock.Now() - start);
  EXPECT_EQ("100", StoredValue(TVMGR_SETTING_CMP_F));
}

TEST_F(PrinterOperationsTest, InitialisedMemoryIsFollowedByARefreshOfTheLists) {
  world_.printer.PutFile("E:A.PNG", "x");
  world_.printer.PutFile("Z:A.CNV", "x");
  LoadAll();
  const std::uint64_t start = world_.clock.Now();
  EXPECT_EQ(TVMGR_OK, Execute(TVMGR_OP_INITIALIZE_MEMORY));
  Transactions expected{kInitialize, kStatus};
  expected.insert(expected.end(), kRefreshed.begin(), kRefreshed.end());
  EXPECT_EQ(expected, world_.Sent());
  EXPECT_EQ(9U * 100 + 2 * 1000, world_.clock.Now() - start);
  EXPECT_TRUE(Names(TVMGR_LIST_PNG).empty());
  EXPECT_EQ(1U, Names(TVMGR_LIST_CNV).size());
}

TEST_F(PrinterOperationsTest, ABackgroundThatIsStillListedIsReadAgain) {
  world_.before_send = [&] { world_.printer.PutFile("E:KORVDEF.BGD", "new"); };
  EXPECT_EQ(TVMGR_OK, Execute(TVMGR_OP_INITIALIZE_MEMORY));
  EXPECT_EQ(kBackgroundUpload, world_.Sent().back());
  EXPECT_EQ("new", StoredValue(TVMGR_SETTING_BACKGROUND));
}

TEST_F(PrinterOperationsTest, AFailureEndsItWhereItsResultCounts) {
  struct tagFailure {
    std::uint32_t code;
    std::uint32_t failing;
    std::int32_t result;
    std::size_t transactions;
  };
  std::vector<tagFailure> cases{
      {TVMGR_OP_HEAD_CHECK, 1, kPortCode, 1},    {TVMGR_OP_HEAD_CHECK, 2, TVMGR_OK, 2},
      {TVMGR_OP_WIPE_GRAPHICS, 1, kPortCode, 1}, {TVMGR_OP_WIPE_GRAPHICS, 2, kPortCode, 2},
      {TVMGR_OP_WIPE_GRAPHICS, 3, TVMGR_OK, 4},  {TVMGR_OP_WIPE_GRAPHICS, 4, kPortCode, 4},
      {TVMGR_OP_FACTORY_RESET, 1, kPortCode, 1}, {TVMGR_OP_FACTORY_RESET, 2, TVMGR_OK, 5},
      {TVMGR_OP_FACTORY_RESET, 3, TVMGR_OK, 6},  // a failed capture is repeated by the second load
      {TVMGR_OP_FACTORY_RESET, 4, kPortCode, 4}, {TVMGR_OP_FACTORY_RESET, 5, kPortCode, 5},
  };
  for (std::uint32_t list = 3; list <= 9; ++list) {
    cases.push_back({TVMGR_OP_INITIALIZE_MEMORY, list, kPortCode, list});
  }
  for (const auto& [code, failing, result, transactions] : cases) {
    world_.ClearLog();
    FailTransaction(failing);
    EXPECT_EQ(result, Execute(code)) << std::hex << code << " " << failing;
    EXPECT_EQ(transactions, world_.Sent().size()) << std::hex << code << " " << failing;
    EXPECT_EQ(world_.Count(EPortCall::kInitialize), world_.Count(EPortCall::kTerminate));
  }
}

}  // namespace
}  // namespace tavira::test
