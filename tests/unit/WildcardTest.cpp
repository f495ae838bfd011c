#include "Common/Wildcard.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Repeat(const std::string& text, int times) {
  std::string repeated;
  for (int i = 0; i < times; ++i) repeated += text;
  return repeated;
}

TEST(MatchPattern, LiteralMustFitWhole) {
  EXPECT_TRUE(MatchPattern("DMSwitch", "DMSwitch"));
  EXPECT_FALSE(MatchPattern("DMSwitchItems", "DMSwitch"));
  EXPECT_FALSE(MatchPattern("DMSwitc", "DMSwitch"));
  EXPECT_FALSE(MatchPattern("dmswitch", "DMSwitch"));  // case counts
}

TEST(MatchPattern, EmptyFitsEmptyAndWildcardsOnly) {
  EXPECT_TRUE(MatchPattern("", ""));
  EXPECT_TRUE(MatchPattern("", "*"));
  EXPECT_TRUE(MatchPattern("", "?"));
  EXPECT_TRUE(MatchPattern("", "?*?"));
  EXPECT_FALSE(MatchPattern("", "a"));
  EXPECT_FALSE(MatchPattern("a", ""));
}

TEST(MatchPattern, AsteriskIsAnyRun) {
  EXPECT_TRUE(MatchPattern("pci\\ven_8086&dev_0166", "*8086*"));
  EXPECT_TRUE(MatchPattern("8086", "*8086*"));
  EXPECT_FALSE(MatchPattern("pci\\ven_10de", "*8086*"));
  EXPECT_TRUE(MatchPattern("Win7CCD", "Win*CCD"));
  EXPECT_TRUE(MatchPattern("WinCCD", "Win*CCD"));
  EXPECT_FALSE(MatchPattern("Win7CCDx", "Win*CCD"));
  EXPECT_TRUE(MatchPattern("abcabd", "*abd"));  // the first possible place is not the right one
}

TEST(MatchPattern, QuestionMarkIsAtMostOneCharacter) {
  EXPECT_TRUE(MatchPattern("Win7CCD", "Win?CCD"));
  EXPECT_TRUE(MatchPattern("WinCCD", "Win?CCD"));
  EXPECT_FALSE(MatchPattern("Win10CCD", "Win?CCD"));
  EXPECT_TRUE(MatchPattern("Win10CCD", "Win??CCD"));
}

TEST(MatchPattern, BackslashTakesTheNextCharacterAsItIs) {
  EXPECT_TRUE(MatchPattern("a*b", "a\\*b"));
  EXPECT_FALSE(MatchPattern("axb", "a\\*b"));
  EXPECT_TRUE(MatchPattern("a?b", "a\\?b"));
  EXPECT_FALSE(MatchPattern("ab", "a\\?b"));
  EXPECT_TRUE(MatchPattern("a\\b", "a\\\\b"));
}

TEST(MatchPattern, SixteenWildcardsInsideEachOtherAreTheLimit) {
  EXPECT_TRUE(MatchPattern(Repeat("a", 16), Repeat("*a", 16)));
  EXPECT_FALSE(MatchPattern(Repeat("a", 17), Repeat("*a", 17)));
  EXPECT_TRUE(MatchPattern(Repeat("a", 16), Repeat("?", 16)));
  EXPECT_FALSE(MatchPattern(Repeat("a", 17), Repeat("?", 17)));
}

TEST(MatchPattern, RepeatedAsterisksCountOnce) {
  EXPECT_TRUE(MatchPattern("abc", Repeat("*", 40) + "c"));
}

TEST(MatchPattern, WildcardsBehindTheTextAreNotCounted) {
  EXPECT_TRUE(MatchPattern("a", "a" + Repeat("?", 40)));
}

TEST(MatchPattern, HostilePatternEndsSoon) {
  EXPECT_FALSE(MatchPattern(Repeat("a", 2000), Repeat("*a", 15) + "*b"));
}

}  // namespace
