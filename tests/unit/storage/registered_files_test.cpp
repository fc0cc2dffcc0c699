#include <stdexcept>

#include "support/exchange_texts.h"
#include "tavira/manager.hpp"

namespace tavira::test {
namespace {

using RegisteredFilesTest = CTransactionTest;
using WideNames = std::vector<WideString>;

TEST_F(RegisteredFilesTest, EachListHoldsTheFilesOfItsKind) {
  const std::pair<std::int32_t, const char*> lists[] = {
      {30, "E:LOGO.PNG"},  {31, "E:ROMAN.TTF"},   {32, "E:ASIA.TTE"},  {33, "E:LABEL.FMT"},
      {34, "Z:TABLE.CNV"}, {36, "E:KORVDEF.BGD"}, {75, "E:LABEL.ZPL"}, {85, "E:OLD.GRF"}};
  for (const auto& [list, file] : lists) {
    EXPECT_EQ(WideNames{}, Names(list)) << list;
    world_.printer.PutFile(file, "x");
  }
  world_.printer.PutFile("R:RAM.PNG", "x");
  world_.printer.PutFile("E:OTHER.BGD", "x");
  LoadAll();
  for (const auto& [list, file] : lists) {
    EXPECT_EQ(WideNames{Wide(file + 2)}, Names(list)) << list;
  }
}

TEST_F(RegisteredFilesTest, NamesKeepTheOrderOfTheListingAndAreWidened) {
  world_.printer.PutFile("E:B.PNG", "x");
  world_.printer.PutFile("E:A.PNG", "x", true);
  world_.printer.PutFile("E:\xC4.PNG", "x");
  LoadAll();
  EXPECT_EQ((WideNames{Wide("A.PNG"), Wide("B.PNG"), WideString{0xC4, '.', 'P', 'N', 'G'}}), Names(30));
}

/** A listing of one file: 12 bytes of name from column 4. */
std::string ListingOf(std::string field) {
  field.resize(12, ' ');
  return "* E:" + field + std::string(16, ' ') + "\r\n";
}

TEST_F(RegisteredFilesTest, ANameEndsAtItsFirstBlankOrZeroByteOnceItIsWideText) {
  using namespace std::string_literals;
  const struct {
    bool double_byte;
    std::string field;
    WideString name;
  } cases[] = {
      {false, "ABCDEFGH.PNG", Wide("ABCDEFGH.PNG")},
      {false, "AB  .PNG", Wide("AB")},
      {false, "A\tB.PNG", Wide("A\tB.PNG")},
      {false, "A.PNG\0\0\0\0\0\0\0"s, Wide("A.PNG")},
      {false, "A\0B.PNG"s, Wide("A")},
      {false, " A.PNG", {}},
      {false, "\0A.PNG"s, {}},
      {false, "", {}},
      {true, "\x83\x5E.PNG", WideString{0x835E, '.', 'P', 'N', 'G'}},
      {true, "\x83 .PNG", WideString{0x30FB, '.', 'P', 'N', 'G'}},  // the blank is half of a character
      {true, "ABCDEFG.PNG\x83", WideString{'A', 'B', 'C', 'D', 'E', 'F', 'G', '.', 'P', 'N', 'G', 0x30FB}},
  };
  for (const auto& [double_byte, field, name] : cases) {
    world_.double_byte_code_page = double_byte;
    world_.scripted_answer = ListingOf(field);
    LoadAll();
    EXPECT_EQ(WideNames{name}, Names(30)) << field;
  }
}

TEST_F(RegisteredFilesTest, UnknownListsAndMissingPointersAreRefused) {
  world_.printer.PutFile("E:A.PNG", "x");
  LoadAll();
  std::uint32_t number = 99;
  for (const std::int32_t list : {-30, -1, 0, 29, 35, 37, 74, 76, 84, 86, 0x1001004}) {
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetRegistFileArraySize(list, &number)) << list;
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetRegistFileArrayData(list, 0, nullptr, &number)) << list;
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetRegistFileArrayData(list, -1, nullptr, &number)) << list;
  }
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetRegistFileArraySize(30, nullptr));
  TvmgrChar name[16] = {'?'};
  for (const std::int32_t index : {-1, 0, 1}) {
    EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetRegistFileArrayData(30, index, name, nullptr)) << index;
  }
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetRegistFileArrayData(30, 1, name, &number));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetRegistFileArrayData(31, 0, name, &number));
  EXPECT_EQ(99U, number);
  EXPECT_EQ('?', name[0]);
}

TEST_F(RegisteredFilesTest, ANegativeIndexRaisesAnInvalidArgument) {
  std::uint32_t length = 16;
  for (const std::int32_t index : {-1, INT32_MIN}) {
    EXPECT_THROW(TVMGR_GetRegistFileArrayData(30, index, nullptr, &length), std::invalid_argument);
  }
}

TEST_F(RegisteredFilesTest, ANameIsCopiedWithItsTerminatorIntoARoomOfExactlyThatSize) {
  world_.printer.PutFile("E:A.PNG", "x");
  LoadAll();
  TvmgrChar name[] = {'#', '#', '#', '#', '#', '#', '#'};
  std::uint32_t length = 0;
  EXPECT_EQ(TVMGR_OK, TVMGR_GetRegistFileArrayData(30, 0, nullptr, &length));
  EXPECT_EQ(5U, length);
  ++length;
  EXPECT_EQ(TVMGR_OK, TVMGR_GetRegistFileArrayData(30, 0, name, &length));
  EXPECT_EQ(6U, length);
  EXPECT_EQ(Wide("A.PNG"), WideString(name));
  EXPECT_EQ('#', name[6]);
}

TEST_F(RegisteredFilesTest, ARoomThatIsTooSmallEndsTheProcess) {
  world_.printer.PutFile("E:A.PNG", "x");
  LoadAll();
  TvmgrChar name[16];
  for (std::uint32_t capacity : {0U, 1U, 5U}) {
    EXPECT_DEATH(TVMGR_GetRegistFileArrayData(30, 0, name, &capacity), "") << capacity;
  }
}

TEST_F(RegisteredFilesTest, AFailedRefreshKeepsTheListAndASilentOneEmptiesIt) {
  world_.printer.PutFile("E:A.PNG", "x");
  world_.printer.PutFile("E:A.TTF", "x");
  LoadAll();
  world_.printer.PutFile("E:B.PNG", "x");
  world_.printer.PutFile("E:B.TTF", "x");
  FailTransaction(3);  // settings, list 30, list 31
  EXPECT_EQ(kPortCode, TVMGR_LoadSetting(true, 0));
  EXPECT_EQ((WideNames{Wide("A.PNG"), Wide("B.PNG")}), Names(30));
  EXPECT_EQ(WideNames{Wide("A.TTF")}, Names(31));
  world_.port.Faults().silent = true;
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadSetting(true, 0));
  EXPECT_EQ(WideNames{}, Names(30));
}

TEST_F(RegisteredFilesTest, ClearingTheRequestListTouchesNeitherTheListsNorTheRequest) {
  world_.printer.PutFile("E:A.PNG", "x");
  LoadAll();
  SetRequest(TVMGR_REQUEST_DELETE_GRAPHIC, "A.PNG");
  EXPECT_EQ(TVMGR_OK, TVMGR_ClearRegistList());
  EXPECT_EQ(WideNames{Wide("A.PNG")}, Names(30));
  EXPECT_EQ(TVMGR_OK, TVMGR_DeleteData());
  EXPECT_FALSE(world_.printer.File("E:A.PNG"));
  EXPECT_EQ(WideNames{}, Names(30));
}

TEST(FilesOfTheCppLayerTest, EntriesWithoutANameAreLeftOut) {
  CTestWorld world;
  tavira::Manager manager;
  manager.ChooseDefault();
  world.scripted_answer = ListingOf("") + ListingOf("A.PNG") + ListingOf(" B.PNG");
  manager.Load();
  EXPECT_EQ(3U, manager.FileCount(TVMGR_LIST_PNG));
  EXPECT_EQ(std::vector<std::wstring>{L"A.PNG"}, manager.Files(TVMGR_LIST_PNG));
}

}  // namespace
}  // namespace tavira::test
