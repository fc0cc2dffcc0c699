// The registry as the spooler look-up reads it, on a key of this process in place of the machine's.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>

#include "platform/registry.h"
#include "sandbox_key.h"

namespace tavira::test {
namespace {

class RegistryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(ERROR_SUCCESS, ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, sandbox_.Get()));
  }
  void TearDown() override { ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr); }

  CSandboxKey sandbox_;
  std::unique_ptr<IRegistryKey> machine_ = MakeLocalMachine();
};

TEST_F(RegistryTest, ValuesAreReadByTheirKind) {
  const std::wstring long_text(5000, L'x');
  sandbox_.SetText(L"A\\B", L"text", L"some text");
  sandbox_.SetText(L"A\\B", L"long", long_text);
  sandbox_.SetText(L"A\\B", L"empty", L"");
  sandbox_.Set(L"A\\B", L"unterminated", REG_SZ, L"abc", 6);
  sandbox_.SetNumber(L"A\\B", L"number", 0xFFFFFFFF);
  const auto key = machine_->Open(L"A\\B");
  ASSERT_NE(nullptr, key);
  EXPECT_EQ(L"some text", key->ReadText(L"TEXT"));
  EXPECT_EQ(long_text, key->ReadText(L"long"));
  EXPECT_EQ(L"abc", key->ReadText(L"unterminated"));
  EXPECT_EQ(L"", key->ReadText(L"empty") + key->ReadText(L"number") + key->ReadText(L"none"));
  EXPECT_EQ(0xFFFFFFFF, key->ReadNumber(L"number"));
  EXPECT_EQ(std::nullopt, key->ReadNumber(L"text"));
  EXPECT_EQ(std::nullopt, key->ReadNumber(L"none"));
}

TEST_F(RegistryTest, KeysAreOpenedAndListed) {
  const std::wstring longest(255, L'k');
  sandbox_.SetNumber(L"A\\One", L"n", 1);
  sandbox_.SetNumber(L"A\\" + longest, L"n", 1);
  EXPECT_EQ(nullptr, machine_->Open(L"A\\Two"));
  EXPECT_EQ(nullptr, machine_->Open(L"\\A"));
  const auto names = machine_->Open(L"A")->SubkeyNames();
  EXPECT_EQ(2U, names.size());
  EXPECT_EQ(1, std::count(names.begin(), names.end(), longest));
  EXPECT_TRUE(machine_->Open(L"A\\One")->SubkeyNames().empty());
}

}  // namespace
}  // namespace tavira::test
