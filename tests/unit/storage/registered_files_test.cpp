#include <stdexcept>

#include "support/allocation_faults.h"
#include "support/exchange_texts.h"
#include "tavira/manager.hpp"
#include "unit/discovery/usb/recorded_printer.h"

namespace tavira::test {
namespace {

using RegisteredFilesTest = CTransactionTest;
using WideNames = std::vector<WideString>;

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
  for (const std::int32_t index : {-1, INT32_MIN}) {
    EXPECT_THROW(TVMGR_GetRegistFileArrayData(30, index, nullptr, &number), std::invalid_argument);
  }
}

TEST_F(RegisteredFilesTest, ANameIsCopiedWithItsTerminatorIntoARoomOfThatSizeAndALesserOneEndsTheProcess) {
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
  for (std::uint32_t capacity : {0U, 1U, 5U}) {
    EXPECT_DEATH(TVMGR_GetRegistFileArrayData(30, 0, name, &capacity), "") << capacity;
  }
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

TEST(TextsOfTheCppLayerTest, AThousandRecordsLeaveNothingBehind) {
  CTestWorld world;
  AddPrinter(world.usb);
  tavira::Manager manager;
  manager.ChoosePort(L"USB001");
  manager.StartSearch(TVMGR_SEARCH_USB);
  manager.StopSearch(TVMGR_SEARCH_USB);
  const auto read = [&] {
    return manager.Choice().name + manager.FoundPrinters(TVMGR_SEARCH_USB).at(0).name;
  };
  EXPECT_EQ(L"USB001LX-R4100", read());
  const std::int64_t blocks = CAllocationFaults::Blocks();
  for (int i = 0; i < 1000; ++i) {
    read();
  }
  EXPECT_GE(blocks, CAllocationFaults::Blocks());  // less when the search's worker ends meanwhile
}

}  // namespace
}  // namespace tavira::test
