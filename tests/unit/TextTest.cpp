#include "Common/Text.h"

#include <gtest/gtest.h>

namespace {

TEST(NarrowFromWide, AsciiStaysAsItIs) { EXPECT_EQ(NarrowFromWide(L"Ostrel.cfg"), "Ostrel.cfg"); }

TEST(NarrowFromWide, EveryLengthOfUtf8IsMade) {
  EXPECT_EQ(NarrowFromWide(L"\u00e9"), "\xC3\xA9");
  EXPECT_EQ(NarrowFromWide(L"\u20ac"), "\xE2\x82\xAC");
  EXPECT_EQ(NarrowFromWide(L"\U0001F4BB"), "\xF0\x9F\x92\xBB");
}

TEST(NarrowFromWide, LoneSurrogatesAreReplaced) {
  const wchar_t high[] = {static_cast<wchar_t>(0xD83D), L'x', 0};
  EXPECT_EQ(NarrowFromWide(high), "\xEF\xBF\xBDx");
  const wchar_t low[] = {L'x', static_cast<wchar_t>(0xDC00), 0};
  EXPECT_EQ(NarrowFromWide(low), "x\xEF\xBF\xBD");
}

TEST(NarrowFromWide, ZerosInsideAreKept) {
  EXPECT_EQ(NarrowFromWide(std::wstring_view(L"a\0b", 3)), std::string("a\0b", 3));
}

TEST(WideFromNarrow, IsTheWayBack) {
  const std::wstring text = L"NB \u00e9 \u20ac \U0001F4BB";
  EXPECT_EQ(WideFromNarrow(NarrowFromWide(text)), text);
}

TEST(WideFromNarrow, BrokenBytesAreReplacedAndTheRestIsRead) {
  EXPECT_EQ(WideFromNarrow("a\xFFz"), L"a\uFFFDz");
  EXPECT_EQ(WideFromNarrow("\xC3"), L"\uFFFD");                                // cut short
  EXPECT_EQ(WideFromNarrow("\xC3z"), L"\uFFFDz");                              // follower missing
  EXPECT_EQ(WideFromNarrow("\xC0\x80"), L"\uFFFD\uFFFD");                      // longer than needed
  EXPECT_EQ(WideFromNarrow("\xED\xA0\x80"), L"\uFFFD\uFFFD\uFFFD");            // a surrogate
  EXPECT_EQ(WideFromNarrow("\xF4\x90\x80\x80"), L"\uFFFD\uFFFD\uFFFD\uFFFD");  // beyond the last
}

TEST(ToLowerAscii, ChangesNothingButLatinCapitals) {
  EXPECT_EQ(ToLowerAscii(std::string_view("PCI\\VEN_10DE [@Z`{")), "pci\\ven_10de [@z`{");
  EXPECT_EQ(ToLowerAscii(std::string_view("\xC3\x89")), "\xC3\x89");
  EXPECT_EQ(ToLowerAscii(std::wstring_view(L"LOG-\u00C9")), L"log-\u00C9");
}

TEST(IsAscii, EndsBefore128) {
  EXPECT_TRUE(IsAscii(L""));
  EXPECT_TRUE(IsAscii(L"\x7F"));
  EXPECT_FALSE(IsAscii(L"a\u0080"));
}

}  // namespace
