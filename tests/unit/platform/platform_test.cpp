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

TEST(PlatformTest, ACharacterIsNeverReplacedByOneThatLooksLikeIt) {
  const auto platform = MakePlatform();
  ITextCodec& codec = platform->Text();
  // Full-width "^", "~", "," and ":", a letter with a macron, a mathematical minus.
  for (const TvmgrChar character : WideString{0xFF3E, 0xFF5E, 0xFF0C, 0xFF1A, 0x0100, 0x2212}) {
    const WideString text(1, character);
    const std::string bytes = codec.ToAnsi(text);
    EXPECT_TRUE(bytes == "?" || codec.IsWhole(text, bytes)) << int{character} << " as " << bytes;
    EXPECT_EQ(bytes != "?", codec.IsWhole(text, bytes)) << int{character};
  }
}

// Run by a test of its own where the system has a Japanese code page.
TEST(JapaneseCodePageTest, ACharacterOfTwoBytesIsOne) {
  const auto platform = MakePlatform();
  ITextCodec& codec = platform->Text();
  const WideString katakana(1, 0x30BF);
  if (codec.FromAnsi("\x83^") != katakana) {
    GTEST_SKIP() << "no Japanese code page";
  }
  EXPECT_EQ("\x83^", codec.ToAnsi(katakana));
  const CLeadBytes leads = codec.LeadBytes();
  EXPECT_EQ(2U, leads.Find("\x83^^", "^"));
  EXPECT_EQ(1U, leads.Find("\xB1^", "^"));  // a half-width character has one byte
  EXPECT_EQ(std::string::npos, leads.FindFirstOf("\xFC~\x81^", "~^"));
  EXPECT_EQ(codec.FromAnsi("\x83 A").find(' '), WideString::npos);  // the blank is half of a character
  EXPECT_FALSE(codec.IsWhole(WideString(1, 0xE4), codec.ToAnsi(WideString(1, 0xE4))));
}

TEST(PlatformTest, NamesAreEqualWhateverTheCaseOfTheirLetters) {
  const struct {
    WideString left, right;
    bool equal;
  } cases[] = {
      {{}, {}, true},
      {WidenAscii("il"), WidenAscii("IL"), true},
      {WidenAscii("il"), WidenAscii("ilx"), false},
      {WidenAscii("@[`{"), WidenAscii("`{@["), false},
      {{0xE4, 0x3B1, 0x44F}, {0xC4, 0x391, 0x42F}, true},  // Latin, Greek, Cyrillic
      {{0xFF41}, {0xFF21}, true},                          // full-width
      {{0xE4}, {'a'}, false},
      {{0x30A2}, {0x3042}, false},  // two scripts of one sound
      {{'a', 0, 'b'}, {'A', 0, 'B'}, true},
      {{'a', 0, 'b'}, {'A', 0, 'C'}, false},
  };
  int number = 0;
  for (const auto& [left, right, equal] : cases) {
    EXPECT_EQ(equal, EqualsIgnoringCase(left, right)) << "case " << ++number;
    EXPECT_EQ(equal, EqualsIgnoringCase(right, left)) << "case " << number;
  }
  EXPECT_TRUE(StartsWithIgnoringCase(WidenAscii("USBHub3"), WidenAscii("usbhub")));
  EXPECT_TRUE(StartsWithIgnoringCase(WidenAscii("x"), {}));
  EXPECT_FALSE(StartsWithIgnoringCase(WidenAscii("usb"), WidenAscii("usbhub")));
}

}  // namespace
}  // namespace tavira
