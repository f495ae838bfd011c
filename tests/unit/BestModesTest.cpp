// The walk that keeps the two best modes of a list, against a plain reference.
#include "session/catalogue/BestModes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

using catalogue::BestModes;
using catalogue::FrequencyRules;
using catalogue::IsBetter;
using catalogue::KeepBest;
using catalogue::ModesToTry;

namespace {

struct TestMode {
  uint32_t dmPelsWidth;
  uint32_t dmPelsHeight;
  uint32_t dmBitsPerPel;
  uint32_t dmDisplayFrequency;
  uint32_t number = 0;  // its place in the list, so that equal modes can be told apart
};

struct Limit {
  uint32_t width;
  uint32_t height;
};

std::string Text(const TestMode& mode) {
  return std::to_string(mode.dmPelsWidth) + "x" + std::to_string(mode.dmPelsHeight) + "x" +
         std::to_string(mode.dmBitsPerPel) + "@" + std::to_string(mode.dmDisplayFrequency);
}

std::string Text(const std::vector<TestMode>& modes) {
  std::string text;
  for (const TestMode& mode : modes) text += Text(mode) + " ";
  return text;
}

std::string Best(const std::vector<TestMode>& modes, FrequencyRules rules = {}) {
  BestModes<TestMode> best(rules);
  for (const TestMode& mode : modes) best.Add(mode);
  return Text(best.list());
}

constexpr FrequencyRules kPrefer60 = {true, false};
constexpr FrequencyRules kEliminate = {false, true};

// --- What is looked at.

TEST(BestModes, OfAnEmptyListAreNone) { EXPECT_EQ(Best({}), ""); }

TEST(BestModes, TheSmallestDesktopIs800By600InSixteenBitsAtThirtyHertz) {
  EXPECT_EQ(Best({{800, 600, 16, 30}}), "800x600x16@30 ");
  EXPECT_EQ(Best({{799, 600, 16, 30}}), "");
  EXPECT_EQ(Best({{800, 599, 16, 30}}), "");
  EXPECT_EQ(Best({{800, 600, 15, 30}}), "");
  EXPECT_EQ(Best({{800, 600, 16, 29}}), "");
}

TEST(BestModes, APortraitModeIsNeverChosen) {
  EXPECT_EQ(Best({{768, 1366, 32, 60}, {1080, 1920, 32, 60}, {1000, 1000, 32, 60}}),
            "1000x1000x32@60 ");
}

TEST(BestModes, FewerBitsNoLongerCountOnceMoreHaveBeenMet) {
  EXPECT_EQ(Best({{1024, 768, 16, 60}, {800, 600, 32, 60}, {1920, 1080, 16, 60}}),
            "1024x768x16@60 800x600x32@60 ");
  EXPECT_EQ(Best({{1024, 768, 16, 60}, {1024, 768, 32, 60}, {1920, 1080, 24, 60}}),
            "1024x768x32@60 1024x768x16@60 ");
}

TEST(BestModes, MoreBitsDoNotMakeUpForALowerWidth) {
  EXPECT_EQ(Best({{1024, 768, 16, 60}, {800, 600, 24, 60}, {801, 600, 32, 60}}),
            "1024x768x16@60 800x600x24@60 ");
}

TEST(BestModes, TheDepthOfAModeTooSmallCountsToo) {
  EXPECT_EQ(Best({{640, 480, 32, 60}, {1024, 768, 16, 60}}), "");
}

// --- Which is better.

TEST(BestModes, AWiderModeWinsAlsoWhenItIsLower) {
  EXPECT_EQ(Best({{1024, 768, 32, 60}, {1280, 720, 32, 60}}), "1280x720x32@60 1024x768x32@60 ");
}

TEST(BestModes, AWidthTieWithALowerHeightNeverWins) {
  EXPECT_EQ(Best({{1024, 768, 32, 60}, {1280, 800, 32, 60}, {1280, 720, 32, 60}}),
            "1280x800x32@60 1024x768x32@60 ");
}

TEST(BestModes, AModeThatIsOnlySecondBestDoesNotTakeTheSecondPlace) {
  EXPECT_EQ(Best({{800, 600, 32, 60}, {1920, 1080, 32, 60}, {1600, 900, 32, 60}}),
            "1920x1080x32@60 800x600x32@60 ");
}

TEST(BestModes, TheSecondOfTwoGoesBehindWhenItIsNotBetter) {
  EXPECT_EQ(Best({{1920, 1080, 32, 60}, {1600, 900, 32, 60}, {1680, 1050, 32, 60}}),
            "1920x1080x32@60 1600x900x32@60 ");
}

TEST(BestModes, OfEqualModesTheLastListedWinsWhateverItsFrequency) {
  EXPECT_EQ(Best({{1366, 768, 32, 60}, {1366, 768, 32, 40}}), "1366x768x32@40 1366x768x32@60 ");
  EXPECT_EQ(Best({{1366, 768, 32, 60}, {1366, 768, 32, 75}, {1366, 768, 32, 40}}),
            "1366x768x32@40 1366x768x32@75 ");
}

TEST(BestModes, WithTheKeySixtyHertzStays) {
  EXPECT_EQ(Best({{1366, 768, 32, 60}, {1366, 768, 32, 40}}, kPrefer60),
            "1366x768x32@60 1366x768x32@40 ");
  EXPECT_EQ(Best({{1366, 768, 32, 60}, {1366, 768, 32, 75}}, kPrefer60),
            "1366x768x32@60 1366x768x32@75 ");
}

TEST(BestModes, WithTheKeyEveryFrequencyReplacesOneBelowSixty) {
  EXPECT_EQ(Best({{1366, 768, 32, 50}, {1366, 768, 32, 40}}, kPrefer60),
            "1366x768x32@40 1366x768x32@50 ");
  EXPECT_EQ(Best({{1366, 768, 32, 50}, {1366, 768, 32, 85}}, kPrefer60),
            "1366x768x32@85 1366x768x32@50 ");
}

TEST(BestModes, WithTheKeyTheLowerWinsAboveSixty) {
  EXPECT_EQ(Best({{1366, 768, 32, 75}, {1366, 768, 32, 85}}, kPrefer60),
            "1366x768x32@75 1366x768x32@85 ");
  EXPECT_EQ(Best({{1366, 768, 32, 85}, {1366, 768, 32, 75}}, kPrefer60),
            "1366x768x32@75 1366x768x32@85 ");
  EXPECT_EQ(Best({{1366, 768, 32, 85}, {1366, 768, 32, 50}}, kPrefer60),
            "1366x768x32@50 1366x768x32@85 ");
}

TEST(IsBetter, WithTheKeyAnEqualModeAboveSixtyReplaces) {
  const TestMode at75 = {1366, 768, 32, 75};
  const TestMode at60 = {1366, 768, 32, 60};
  EXPECT_TRUE(IsBetter(at75, at75, true));
  EXPECT_FALSE(IsBetter(at60, at60, true));
  EXPECT_TRUE(IsBetter(at60, at60, false));
}

TEST(IsBetter, TheKeySpeaksOfEqualResolutionsOnly) {
  const TestMode now = {1366, 768, 16, 60};
  EXPECT_TRUE(IsBetter(now, {1366, 768, 32, 40}, true));
  EXPECT_TRUE(IsBetter(now, {1400, 600, 16, 40}, true));
  EXPECT_TRUE(IsBetter(now, {1366, 800, 16, 40}, true));
}

TEST(BestModes, LowFrequenciesAreRefusedOnlyAfterOneOfAtLeastSixty) {
  const std::vector<TestMode> list = {
      {1280, 800, 32, 50}, {1024, 768, 32, 60}, {1920, 1080, 32, 59}, {1440, 900, 32, 60}};
  EXPECT_EQ(Best(list, kEliminate), "1440x900x32@60 1280x800x32@50 ");
  EXPECT_EQ(Best(list), "1920x1080x32@59 1280x800x32@50 ");
}

TEST(BestModes, AModeThatIsRefusedForItsSizeDoesNotRaiseTheLowestFrequency) {
  EXPECT_EQ(Best({{640, 480, 32, 60}, {1024, 768, 32, 50}}, kEliminate), "1024x768x32@50 ");
  EXPECT_EQ(Best({{768, 1024, 32, 60}, {1024, 768, 32, 50}}, kEliminate), "1024x768x32@50 ");
}

// --- What is tried.

TEST(ModesToTry, EndWithTheBestModeAt1024By768) {
  const std::vector<TestMode> best = {{1920, 1080, 32, 59}, {1600, 900, 16, 75}};
  EXPECT_EQ(Text(ModesToTry<TestMode, Limit>(best, nullptr)),
            "1920x1080x32@59 1600x900x16@75 1024x768x32@59 ");
  EXPECT_EQ(Text(ModesToTry<TestMode, Limit>({best[1]}, nullptr)),
            "1600x900x16@75 1024x768x16@75 ");
}

TEST(ModesToTry, TheLimitReplacesBothSidesOfTheFirst) {
  const std::vector<TestMode> best = {{1920, 1080, 32, 59}, {1600, 900, 16, 75}};
  const struct {
    Limit limit;
    const char* first;
  } rows[] = {
      {{1024, 768}, "1024x768x32@59 "},   {{1919, 5000}, "1919x5000x32@59 "},
      {{5000, 1079}, "5000x1079x32@59 "}, {{1920, 1080}, "1920x1080x32@59 "},
      {{2000, 1080}, "1920x1080x32@59 "}, {{1920, 2000}, "1920x1080x32@59 "},
      {{4000, 4000}, "1920x1080x32@59 "},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Text(ModesToTry(best, &row.limit)),
              row.first + std::string("1600x900x16@75 1024x768x32@59 "));
  }
}

// --- Against a plain reference: two passes over the list, told in other words than the walk.

bool ReferenceWins(const TestMode& old_best, const TestMode& mode, bool prefer_60) {
  const bool smaller =
      mode.dmBitsPerPel < old_best.dmBitsPerPel || mode.dmPelsWidth < old_best.dmPelsWidth ||
      (mode.dmPelsWidth == old_best.dmPelsWidth && mode.dmPelsHeight < old_best.dmPelsHeight);
  if (smaller) return false;
  const bool same = mode.dmBitsPerPel == old_best.dmBitsPerPel &&
                    mode.dmPelsWidth == old_best.dmPelsWidth &&
                    mode.dmPelsHeight == old_best.dmPelsHeight;
  if (!prefer_60 || !same) return true;
  const uint32_t old_rate = old_best.dmDisplayFrequency;
  const uint32_t rate = mode.dmDisplayFrequency;
  return old_rate < 60 || (old_rate > 60 && (rate <= 60 || rate <= old_rate));
}

std::vector<TestMode> Reference(const std::vector<TestMode>& modes, FrequencyRules rules) {
  std::vector<TestMode> accepted;
  uint32_t deepest = 0;
  bool sixty_met = false;
  for (const TestMode& mode : modes) {
    if (mode.dmBitsPerPel < 16 || mode.dmBitsPerPel < deepest) continue;
    deepest = mode.dmBitsPerPel;
    const bool large = mode.dmPelsWidth >= 800 && mode.dmPelsHeight >= 600;
    const bool landscape = mode.dmPelsWidth >= mode.dmPelsHeight;
    const uint32_t lowest = rules.eliminate_below_60 && sixty_met ? 60 : 30;
    if (!large || !landscape || mode.dmDisplayFrequency < lowest) continue;
    sixty_met = sixty_met || mode.dmDisplayFrequency >= 60;
    accepted.push_back(mode);
  }
  // The best is the last one that beat all before it; the second is the one that was best before
  // that, or, as long as the first two have not been beaten, the other of the two.
  if (accepted.size() < 2) return accepted;
  size_t best = 0;
  size_t second = 1;
  for (size_t i = 1; i < accepted.size(); ++i) {
    if (!ReferenceWins(accepted[best], accepted[i], rules.prefer_60)) continue;
    second = best;
    best = i;
  }
  return {accepted[best], accepted[second]};
}

template <size_t kCount>
uint32_t OneOf(const uint32_t (&values)[kCount], std::mt19937* random) {
  return values[(*random)() % kCount];
}

// Few values, and those around the borders, so that ties and refusals are frequent.
TestMode RandomMode(uint32_t number, std::mt19937* random) {
  constexpr uint32_t kWidths[] = {640, 799, 800, 1024, 1280, 1366, 1920};
  constexpr uint32_t kHeights[] = {480, 599, 600, 768, 800, 1024, 1080, 1920};
  constexpr uint32_t kBits[] = {8, 15, 16, 24, 32, 32};
  constexpr uint32_t kRates[] = {0, 29, 30, 40, 50, 59, 60, 61, 75, 85};
  return {OneOf(kWidths, random), OneOf(kHeights, random), OneOf(kBits, random),
          OneOf(kRates, random), number};
}

std::vector<uint32_t> Numbers(const std::vector<TestMode>& modes) {
  std::vector<uint32_t> numbers;
  for (const TestMode& mode : modes) numbers.push_back(mode.number);
  return numbers;
}

TEST(BestModes, AreThoseOfThePlainReferenceForAnyListAndBothKeys) {
  std::mt19937 random(20240229);
  size_t lists_with_two = 0;
  for (int round = 0; round < 20000; ++round) {
    std::vector<TestMode> modes(random() % 40, TestMode{});
    for (size_t i = 0; i < modes.size(); ++i) {
      modes[i] = RandomMode(static_cast<uint32_t>(i), &random);
    }
    for (const FrequencyRules rules :
         {FrequencyRules{false, false}, kPrefer60, kEliminate, FrequencyRules{true, true}}) {
      BestModes<TestMode> best(rules);
      for (const TestMode& mode : modes) best.Add(mode);
      ASSERT_EQ(Numbers(best.list()), Numbers(Reference(modes, rules)))
          << "list " << round << ", keys " << rules.prefer_60 << rules.eliminate_below_60 << ": "
          << Text(modes);
      if (best.list().size() == 2) ++lists_with_two;
    }
  }
  // The lists are such that the comparison means something.
  EXPECT_GT(lists_with_two, 40000u);
}

// --- The cost, in reads of a mode's fields rather than in time.

uint64_t g_reads = 0;

struct CountedNumber {
  uint32_t value = 0;
  operator uint32_t() const {  // NOLINT(google-explicit-constructor): stands in for a plain number
    ++g_reads;
    return value;
  }
};

struct CountedMode {
  CountedNumber dmPelsWidth, dmPelsHeight, dmBitsPerPel, dmDisplayFrequency;
};

uint64_t ReadsFor(uint32_t count, FrequencyRules rules) {
  std::mt19937 random(7);
  BestModes<CountedMode> best(rules);
  uint64_t reads = 0;
  for (uint32_t i = 0; i < count; ++i) {
    // Ever better ones: the worst case, in which every mode goes into the list.
    const CountedMode mode = {{800 + i}, {600}, {32}, {60 + static_cast<uint32_t>(random() % 2)}};
    g_reads = 0;
    best.Add(mode);
    reads += g_reads;
  }
  EXPECT_EQ(best.list().size(), 2u);
  return reads;
}

TEST(BestModes, CostTheSameForEachModeHoweverManyThereAre) {
  for (const bool key : {false, true}) {
    const uint64_t few = ReadsFor(1000, {key, key});
    const uint64_t many = ReadsFor(100000, {key, key});
    EXPECT_GT(few, 0u);
    EXPECT_LE(many, few * 101);
  }
}

}  // namespace
