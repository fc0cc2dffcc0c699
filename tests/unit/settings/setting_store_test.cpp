#include "support/module_test.h"

namespace tavira::test {
namespace {

using SettingStoreTest = CModuleTest;

TEST_F(SettingStoreTest, ValuesAreHandedOutByLengthAndThenByBytes) {
  world_.printer.SetSetting("IMP,S", "abcde");
  world_.printer.SetSetting("IMF,V", "");
  LoadAll();
  std::int32_t length = -1;
  EXPECT_FALSE(TVMGR_GetSettingValue(1, nullptr, nullptr));
  EXPECT_FALSE(TVMGR_GetSettingValue(46, nullptr, &length));
  EXPECT_EQ(-1, length);
  EXPECT_TRUE(TVMGR_GetSettingValue(1, nullptr, &length));
  EXPECT_EQ(5, length);
  for (const std::int32_t room : {0, 1, 3, 5}) {
    std::string buffer(8, '#');
    length = room;
    EXPECT_TRUE(TVMGR_GetSettingValue(1, reinterpret_cast<std::uint8_t*>(buffer.data()), &length));
    const auto copied = static_cast<std::size_t>(room);
    EXPECT_EQ(std::string("abcde").substr(0, copied) + std::string(8 - copied, '#'), buffer);
  }
  EXPECT_TRUE(TVMGR_GetSettingValue(2, nullptr, &length));
  EXPECT_EQ(0, length);
  std::uint8_t byte = 0;
  length = 1;
  EXPECT_DEATH(TVMGR_GetSettingValue(2, &byte, &length), "");  // there are none
}

TEST_F(SettingStoreTest, UpdateValuesAreCopiedAndBadLengthsAreEmpty) {
  std::string value = "300";
  AppendUpdate(3, value);
  value = "xxx";
  TVMGR_SetUpdateList(4, nullptr, 10);
  TVMGR_SetUpdateList(5, reinterpret_cast<const std::uint8_t*>(value.data()), -1);
  TVMGR_SetUpdateList(12, reinterpret_cast<const std::uint8_t*>(value.data()), 0);
  AppendUpdate(12, std::string_view("\0,^", 3));
  TVMGR_UpdatePrinterSettingNoChangeDPI();
  using std::string_view_literals::operator""sv;
  EXPECT_EQ(
      "^XA^S(CLR,Z,300^XZ^XA^S(CLR,P,^XZ^XA^S(CLR,R,^XZ^XA^S(CMP,F,^XZ^XA^S(CMP,F,\0,^^XZ^XA^JUS^XZ^XA^H(E^XZ"sv,
      world_.Sent().at(1));
}

}  // namespace
}  // namespace tavira::test
