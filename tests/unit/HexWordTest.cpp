#include "Common/HexWord.h"

#include <gtest/gtest.h>

namespace {

TEST(ParseHexWord, ReadsBothCases) {
  EXPECT_EQ(ParseHexWord("8086"), 0x8086);
  EXPECT_EQ(ParseHexWord("10DE"), 0x10DE);
  EXPECT_EQ(ParseHexWord("10de"), 0x10DE);
}

TEST(ParseHexWord, NothingIsZero) {
  EXPECT_EQ(ParseHexWord(nullptr), 0);
  EXPECT_EQ(ParseHexWord(""), 0);
}

TEST(ParseHexWord, OtherCharactersAreSkippedWithTheValueKept) {
  EXPECT_EQ(ParseHexWord("1G0"), 0x10);
  EXPECT_EQ(ParseHexWord("&-x"), 0);
  EXPECT_EQ(ParseHexWord("8&"), 8);
  EXPECT_EQ(ParseHexWord("\xFF\x80 1"), 1);
}

TEST(ParseHexWord, OverflowWrapsIn16Bits) { EXPECT_EQ(ParseHexWord("18086"), 0x8086); }

}  // namespace
