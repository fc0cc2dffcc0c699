#include "support/exchange_texts.h"

namespace tavira::test {
namespace {

using StoredDataTest = CTransactionTest;

std::int32_t Fetch(std::string_view name, std::uint8_t mode, std::uint32_t timeout_ms = 1000) {
  return TVMGR_LoadStoredData(Wide(name).c_str(), mode, timeout_ms);
}

TEST_F(StoredDataTest, InADoubleByteCodePageANameKeepsItsCharactersWhole) {
  world_.double_byte_code_page = true;
  world_.scripted_answer = "^XA^DF\x83^^FS^XZ";
  const TvmgrChar name[] = {0x835E, '.', 'Z', 'P', 'L', 0};
  EXPECT_EQ(TVMGR_OK, TVMGR_LoadStoredData(name, 1, 100));
  EXPECT_EQ((Transactions{"^XA^HFE:\x83^.ZPL^XZ"}), world_.Sent());
  EXPECT_EQ("^XA^DFE:\x83^.ZPL^FS^XZ", StoredData());
}

TEST_F(StoredDataTest, HandsOutWhatFitsAndTellsTheWholeSize) {
  world_.printer.PutFile("E:LOGO.PNG", "abcdefghijklmnopqrstuvwxy");
  EXPECT_EQ(TVMGR_OK, Fetch("LOGO.PNG", 0));
  std::uint8_t byte = 0;
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetStoredData(nullptr, nullptr));
  EXPECT_EQ(TVMGR_BAD_ARGUMENT, TVMGR_GetStoredData(&byte, nullptr));
  for (const std::uint32_t offered : {0U, 1U, 10U, 25U, 40U}) {
    std::string buffer(50, '#');
    std::uint32_t length = offered;
    EXPECT_EQ(TVMGR_OK, TVMGR_GetStoredData(reinterpret_cast<std::uint8_t*>(buffer.data()), &length));
    EXPECT_EQ(25U, length);
    const std::string copied = std::string("abcdefghijklmnopqrstuvwxy").substr(0, offered);
    EXPECT_EQ(copied + std::string(50 - copied.size(), '#'), buffer);
  }
}

}  // namespace
}  // namespace tavira::test
