#include "platform/platform.h"

#include <gtest/gtest.h>

namespace tavira {
namespace {

TEST(PlatformTest, TheClockMovesWithSleep) {
  const auto platform = MakePlatform();
  const std::uint32_t start = platform->Clock().TickCount();
  platform->Clock().Sleep(60);
  const std::uint32_t elapsed = platform->Clock().TickCount() - start;
  EXPECT_LE(40U, elapsed);  // the system's tick is 16 ms wide
  EXPECT_GT(5000U, elapsed);
}

TEST(PlatformTest, LibrariesAndTheirFunctionsAreFoundByName) {
#if defined(_WIN32)
  constexpr const char* kLibrary = "kernel32.dll";
  constexpr const char* kFunction = "GetTickCount";
#else
  constexpr const char* kLibrary = "libc.so.6";
  constexpr const char* kFunction = "malloc";
#endif
  const auto platform = MakePlatform();
  void* module = platform->Modules().Load(kLibrary);
  ASSERT_NE(nullptr, module);
  EXPECT_NE(nullptr, platform->Modules().FindSymbol(module, kFunction));
  EXPECT_EQ(nullptr, platform->Modules().FindSymbol(module, "NoSuchFunction"));
  EXPECT_EQ(nullptr, platform->Modules().Load("no_such_library.dll"));
}

TEST(PlatformTest, TextIsConvertedBothWaysInACodePageOfWesternEurope) {
  const auto platform = MakePlatform();
  std::string bytes = "LABEL \xE4\xF6\xFC.PNG";
  const WideString text = platform->Text().FromAnsi(bytes);
  EXPECT_EQ(bytes.size(), text.size());
  EXPECT_EQ(0xE4, text[6]);
  EXPECT_EQ(bytes, platform->Text().ToAnsi(text));
  EXPECT_EQ("?", platform->Text().ToAnsi(WideString(1, 0x3042)));
  EXPECT_EQ("", platform->Text().ToAnsi({}));
  EXPECT_EQ(WideString(), platform->Text().FromAnsi({}));
}

}  // namespace
}  // namespace tavira
