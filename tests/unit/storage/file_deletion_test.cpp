#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

class FileDeletionTest : public CTransactionTest {
 protected:
  /** Puts a file back before every send, so that deleting it never shows. */
  void KeepOnPrinter(const char* file) {
    world_.before_send = [this, file] { world_.printer.PutFile(file, "x"); };
  }
};

struct tagKind {
  std::uint32_t kind;
  Transactions listings;
  const char* files[2];
};

const std::vector<tagKind>& Kinds() {
  static const std::vector<tagKind> kinds{
      {0x1001004, {Listing("E:*.PNG,c"), Listing("E:*.GRF,c")}, {"A.PNG", "A.GRF"}},
      {0x1001005, {Listing("E:*.FMT,c"), Listing("E:*.ZPL,c")}, {"A.FMT", "A.ZPL"}},
      {0x1001007, {Listing("E:*.TTF,c"), Listing("E:*.TTE,c")}, {"A.TTF", "A.TTE"}},
  };
  return kinds;
}

TEST_F(FileDeletionTest, UnprotectsDeletesAndAsksTwoLists) {
  for (const auto& [kind, listings, files] : Kinds()) {
    for (const std::string file : files) {
      world_.ClearLog();
      world_.printer.PutFile("E:" + file, "x", true);
      world_.printer.PutFile("E:OTHER" + file.substr(1), "x");
      SetRequest(kind, file);
      const std::uint64_t start = world_.clock.Now();
      EXPECT_EQ(TVMGR_OK, TVMGR_DeleteData()) << file;
      EXPECT_EQ((Transactions{"^XA^F(AE:" + file + ",N^XZ^XA^IDE:" + file + "^XZ" + kClosing, listings[0],
                              listings[1]}),
                world_.Sent());
      EXPECT_EQ(100U + 500 + 2 * 100, world_.clock.Now() - start);
      EXPECT_FALSE(world_.printer.File("E:" + file)) << file;
      EXPECT_TRUE(world_.printer.File("E:OTHER" + file.substr(1))) << file;
    }
  }
  EXPECT_EQ(std::vector<WideString>{Wide("OTHER.PNG")}, Names(TVMGR_LIST_PNG));
}

TEST_F(FileDeletionTest, ANameCountedWithItsTerminatorNamesTheSameFile) {
  world_.printer.PutFile("E:A.PNG", "x");
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, std::string_view("A.PNG\0", 6));
  EXPECT_EQ(TVMGR_OK, TVMGR_DeleteData());
  EXPECT_EQ("^XA^F(AE:A.PNG,N^XZ^XA^IDE:A.PNG^XZ" + kClosing, world_.Sent().at(0));
  EXPECT_FALSE(world_.printer.File("E:A.PNG"));
}

TEST_F(FileDeletionTest, AFileThatStaysListedTakesTenPasses) {
  for (const auto& [kind, listings, files] : Kinds()) {
    for (const std::string file : files) {
      const std::string qualified = "E:" + file;
      KeepOnPrinter(qualified.c_str());
      world_.ClearLog();
      SetRequest(kind, file);
      const std::uint64_t start = world_.clock.Now();
      EXPECT_EQ(TVMGR_NOT_CONFIRMED, TVMGR_DeleteData()) << file;
      EXPECT_EQ(1U + 10 * 2, world_.Sent().size());
      EXPECT_EQ(100U + 10 * (500 + 2 * 100), world_.clock.Now() - start);
    }
  }
}

TEST_F(FileDeletionTest, ThePassesEndAsSoonAsTheFileIsGone) {
  world_.before_send = [&] {
    if (world_.Sent().size() < 1 + 2 * 2) {
      world_.printer.PutFile("E:A.PNG", "x");
    } else {
      world_.printer.Execute("^XA^IDE:A.PNG^XZ");
    }
  };
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, "A.PNG");
  EXPECT_EQ(TVMGR_OK, TVMGR_DeleteData());
  EXPECT_EQ(1U + 3 * 2, world_.Sent().size());
}

TEST_F(FileDeletionTest, NamesAreComparedWholeAndWithoutRegardToLetterCase) {
  const struct {
    const char* listed;
    std::string deleted;
    std::int32_t result;
  } cases[] = {
      {"E:TEST.ZPL", "test.zpl", TVMGR_NOT_CONFIRMED},
      {"E:test.zpl", "TEST.ZPL", TVMGR_NOT_CONFIRMED},
      {"E:\xC4.ZPL", "\xC4.ZPL", TVMGR_NOT_CONFIRMED},
      {"E:\xE4.ZPL", "\xC4.ZPL", TVMGR_NOT_CONFIRMED},
      {"E:\xC4.ZPL", "\xC5.ZPL", TVMGR_OK},
      {"E:TEST.ZPL", std::string("TEST.ZPL\0", 9), TVMGR_NOT_CONFIRMED},
      {"E:TEST1.ZPL", "TEST.ZPL", TVMGR_OK},
      {"E:TEST.ZPL", "TEST.ZP", TVMGR_OK},
      {"E:TEST.PNG", "TEST.PNG", TVMGR_OK},  // listed, but not among the formats
  };
  for (const auto& [listed, deleted, result] : cases) {
    world_.printer.FactoryReset();
    KeepOnPrinter(listed);
    SetRequest(TVMGR_REQUEST_DELETE_FORMAT, deleted);
    EXPECT_EQ(result, TVMGR_DeleteData()) << listed << " / " << deleted;
  }
}

TEST_F(FileDeletionTest, TheBackgroundTakesTenPassesWhetherItIsListedOrNot) {
  for (const bool stays : {false, true}) {
    if (stays) {
      KeepOnPrinter("E:KORVDEF.BGD");
    }
    world_.printer.PutFile("E:KORVDEF.BGD", "x");
    world_.ClearLog();
    SetRequest(TVMGR_REQUEST_BACKGROUND, "KORVDEF.BGD");
    const std::uint64_t start = world_.clock.Now();
    EXPECT_EQ(TVMGR_OK, TVMGR_DeleteData());
    Transactions expected(11, Listing("E:KORVDEF.BGD"));
    expected[0] = "^XA^F(AE:KORVDEF.BGD,N^XZ^XA^IDE:KORVDEF.BGD^XZ" + kClosing;
    EXPECT_EQ(expected, world_.Sent());
    EXPECT_EQ(100U + 10 * (500 + 100), world_.clock.Now() - start);
    EXPECT_EQ(stays ? 1U : 0U, Names(TVMGR_LIST_BACKGROUND).size());
  }
}

TEST_F(FileDeletionTest, OtherKindsAreRefusedAfterTheCommandsWereSent) {
  for (const std::uint32_t kind :
       {0x1001000U, 0x1001001U, 0x1001002U, 0x1001003U, 0x1001006U, 0x1001009U, 0U}) {
    world_.printer.PutFile("E:A.PNG", "x");
    world_.ClearLog();
    SetRequest(kind, "A.PNG");
    const std::uint64_t start = world_.clock.Now();
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DeleteData()) << std::hex << kind;
    EXPECT_EQ(1U, world_.Sent().size());
    EXPECT_EQ(100U + 500, world_.clock.Now() - start);
    EXPECT_FALSE(world_.printer.File("E:A.PNG"));
  }
}

TEST_F(FileDeletionTest, WithoutANameNothingIsSent) {
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DeleteData());  // no request yet
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, "A.PNG", "second");
  EXPECT_EQ(TVMGR_OK, TVMGR_UpdateRegistList(TVMGR_REQUEST_DELETE_GRAPHIC, nullptr, 5, nullptr, 5));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DeleteData());
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, std::string_view("\0A.PNG", 6));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DeleteData());
  SetRequest(0, "");
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_DeleteData());
  EXPECT_TRUE(world_.calls.empty());
}

TEST_F(FileDeletionTest, ACodeOfThePortThatReadsLikeStillListedEndsItToo) {
  KeepOnPrinter("E:A.PNG");
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, "A.PNG");
  world_.port.Faults().call_faults = {{lxemu::PortCall::kInitialize, 2, TVMGR_NOT_CONFIRMED, 0}};
  EXPECT_EQ(TVMGR_NOT_CONFIRMED, TVMGR_DeleteData());
  EXPECT_EQ(1U, world_.Sent().size());
}

}  // namespace
}  // namespace tavira::test
