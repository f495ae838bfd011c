#include "session/catalogue/SIndex.h"

#include <gtest/gtest.h>

namespace {

SIndex At(uint32_t value, uint32_t max = SIndex::MAX) {
  SIndex index;
  index.value = value;
  index.max = max;
  return index;
}

TEST(SIndex, IsAtTheFirstOfFifteenWhenFresh) {
  const SIndex fresh;
  EXPECT_EQ(fresh.value, 0u);
  EXPECT_EQ(fresh.min, 0u);
  EXPECT_EQ(fresh.max, 14u);
  EXPECT_EQ(SIndex::BadValue, 0xFFFFFFFFu);
}

TEST(SIndex, MovesOneForwardAndOneBack) {
  EXPECT_EQ(NextPosition(At(1, 4), true), 2u);
  EXPECT_EQ(NextPosition(At(1, 4), false), 0u);
}

TEST(SIndex, WrapsRoundAtBothEnds) {
  EXPECT_EQ(NextPosition(At(4, 4), true), 0u);
  EXPECT_EQ(NextPosition(At(0, 4), false), 4u);
}

TEST(SIndex, StaysOnTheOnlyItem) {
  EXPECT_EQ(NextPosition(At(0, 0), true), 0u);
  EXPECT_EQ(NextPosition(At(0, 0), false), 0u);
}

TEST(SIndex, GoesToTheFirstItemFromNoPositionEitherWay) {
  EXPECT_EQ(NextPosition(At(SIndex::BadValue, 4), true), 0u);
  EXPECT_EQ(NextPosition(At(SIndex::BadValue, 4), false), 0u);
}

TEST(SIndex, GoesToTheFirstItemFromAPositionThatOnlyTheMouseReaches) {
  EXPECT_EQ(NextPosition(At(15), true), 0u);
  EXPECT_EQ(NextPosition(At(15), false), 0u);
  EXPECT_EQ(NextPosition(At(14), true), 0u);
  EXPECT_EQ(NextPosition(At(14), false), 13u);
}

TEST(SIndex, IsReachableUpToFourteen) {
  EXPECT_TRUE(IsReachable(0));
  EXPECT_TRUE(IsReachable(14));
  EXPECT_FALSE(IsReachable(15));
  EXPECT_FALSE(IsReachable(SIndex::BadValue));
}

TEST(HighestPosition, IsTheLastItemOfAListOfOneToFourteen) {
  EXPECT_EQ(HighestPosition(1, 14), 0u);
  EXPECT_EQ(HighestPosition(14, 5), 13u);
}

TEST(HighestPosition, StaysAsItWasForAnEmptyOrALongerList) {
  EXPECT_EQ(HighestPosition(0, 14), 14u);
  EXPECT_EQ(HighestPosition(0, 4), 4u);
  EXPECT_EQ(HighestPosition(15, 14), 14u);
  EXPECT_EQ(HighestPosition(16, 4), 4u);
}

}  // namespace
