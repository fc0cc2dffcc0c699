// Pure text functions of the tool; built everywhere.
#include "output/text_layout.h"

#include <gtest/gtest.h>

namespace {

using namespace tvmgr;

TEST(TextLayoutTest, WhatCouldForgeATerminalsLinesIsMadeVisible) {
  EXPECT_EQ(MakeVisible("Dock 1 \xC3\xA9\xE6\x97\xA5"), "Dock 1 \xC3\xA9\xE6\x97\xA5");
  EXPECT_EQ(MakeVisible("a\r\n\x1B[2Jb\x7F"), "a\\x0D\\x0A\\x1B[2Jb\\x7F");
  EXPECT_EQ(MakeVisible("\xC2\x9B"
                        "1m"),
            "\\x9B1m");
  EXPECT_EQ(MakeVisible("GNP.\xE2\x80\xAE"
                        "EXE\xE2\x80\xA8"),
            "GNP.\\u{202E}EXE\\u{2028}");
  EXPECT_EQ(MakeVisible("\xFF\xC3"), "\\xFF\\xC3");
  EXPECT_EQ(MakeVisible(std::string_view("\0", 1)), "\\x00");
}

TEST(TextLayoutTest, WidthsAndCutsCountColumns) {
  EXPECT_EQ(DisplayWidth("abc"), 3U);
  EXPECT_EQ(DisplayWidth("\xE6\x97\xA5\xE6\x9C\xAC"), 4U);
  EXPECT_EQ(DisplayWidth("e\xCC\x81"), 1U);
  EXPECT_EQ(CutToWidth("abcdef", 6), "abcdef");
  EXPECT_EQ(CutToWidth("abcdef", 5), "abcd…");
  EXPECT_EQ(CutToWidth("\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E", 4), "\xE6\x97\xA5…");
}

TEST(TextLayoutTest, LongLinesAreBrokenBelowTheirText) {
  EXPECT_EQ(WrapLines("one two three four\nfive", 9), "one two\nthree\nfour\nfive");
  EXPECT_EQ(WrapLines("  --all   every setting there is", 20),
            "  --all   every\n          setting\n          there is");
  EXPECT_EQ(WrapLines("  indented words here", 12), "  indented\n  words here");
  EXPECT_EQ(WrapLines("averyverylongword x", 5), "averyverylongword x");
  EXPECT_EQ(WrapLines("short\n\n", 20), "short\n\n");
}

TEST(TextLayoutTest, EscapesOfShownValuesAreUndone) {
  const auto undo = [](std::string_view text) {
    return UndoEscapes(
        text, [](std::string_view part) { return part.empty() ? "" : "<" + std::string(part) + ">"; });
  };
  EXPECT_EQ(undo(""), "");
  EXPECT_EQ(undo("plain"), "<plain>");
  EXPECT_EQ(undo("a\\\\b\\x41\\x0a"), "<a>\\<b>A\n");
  for (const char* const wrong : {"\\", "\\n", "\\x4", "\\xG1", "a\\x"}) {
    EXPECT_EQ(undo(wrong), std::nullopt) << wrong;
  }
}

}  // namespace
