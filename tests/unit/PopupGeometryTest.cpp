#include "session/popup/PopupGeometry.h"

#include <gtest/gtest.h>

namespace {

TEST(PopupGeometry, WidthIsNinetyAnItemAndTen) {
  EXPECT_EQ(popup::Width(0), 10);
  EXPECT_EQ(popup::Width(1), 100);
  EXPECT_EQ(popup::Width(5), 460);
  EXPECT_EQ(popup::Width(16), 1450);
  EXPECT_EQ(popup::kHeight, 100);
}

TEST(PopupGeometry, PicturesStandNinetyApartBehindAMarginOfTen) {
  EXPECT_EQ(popup::PictureLeft(0), 10);
  EXPECT_EQ(popup::PictureLeft(1), 100);
  EXPECT_EQ(popup::PictureLeft(4), 370);
}

TEST(PopupGeometry, AnItemIsHitOnItsPicture) {
  const ItemRect rect = MakeItemRect(2);
  EXPECT_EQ(rect.index, 2u);
  EXPECT_EQ(rect.left, 190);
  EXPECT_EQ(rect.top, 10);
  EXPECT_EQ(rect.right, 270);
  EXPECT_EQ(rect.bottom, 90);
}

TEST(PopupGeometry, TheRightAndBottomEdgeAreOutside) {
  const popup::Rect rect = {10, 10, 90, 90};
  EXPECT_TRUE(popup::Contains(rect, {10, 10}));
  EXPECT_TRUE(popup::Contains(rect, {89, 89}));
  EXPECT_FALSE(popup::Contains(rect, {90, 50}));
  EXPECT_FALSE(popup::Contains(rect, {50, 90}));
  EXPECT_FALSE(popup::Contains(rect, {9, 50}));
  EXPECT_FALSE(popup::Contains(rect, {50, 9}));
}

TEST(PopupGeometry, TheMiddleIsWhatTheEndsLeaveAndMayBeNegative) {
  EXPECT_EQ(popup::MiddleWidth(1, 10, 20), 70);
  EXPECT_EQ(popup::MiddleWidth(1, 50, 50), 0);
  EXPECT_EQ(popup::MiddleWidth(1, 80, 60), -40);
  EXPECT_EQ(popup::MiddleWidth(0, 10, 10), -10);
}

TEST(PopupGeometry, AMessagesPointHasSignedHalves) {
  const popup::Point inside = popup::PointOfMessage(0x00320064);
  EXPECT_EQ(inside.x, 100);
  EXPECT_EQ(inside.y, 50);
  const popup::Point outside = popup::PointOfMessage(0xFFFEFFFF);
  EXPECT_EQ(outside.x, -1);
  EXPECT_EQ(outside.y, -2);
}

TEST(CentredIn, PutsTheMiddlesOverEachOther) {
  const popup::Rect screen = {0, 0, 1366, 768};
  const popup::Point corner = popup::CentredIn(screen, screen, 460, 100);
  EXPECT_EQ(corner.x, 683 - 230);
  EXPECT_EQ(corner.y, 384 - 50);
}

TEST(CentredIn, HalvesEachNumberOnItsOwn) {
  const popup::Rect screen = {0, 0, 1367, 769};
  const popup::Point corner = popup::CentredIn(screen, screen, 101, 101);
  EXPECT_EQ(corner.x, 683 - 50);
  EXPECT_EQ(corner.y, 384 - 50);
}

TEST(CentredIn, FollowsAScreenLeftOfThePrimaryOne) {
  const popup::Rect screen = {-1280, 0, 0, 1024};
  const popup::Point corner = popup::CentredIn(screen, screen, 100, 100);
  EXPECT_EQ(corner.x, -690);
  EXPECT_EQ(corner.y, 462);
}

TEST(CentredIn, KeepsTheTopLeftCornerInViewOfAStripWiderThanTheScreen) {
  const popup::Rect screen = {0, 0, 1024, 80};
  const popup::Point corner = popup::CentredIn(screen, screen, 1450, 100);
  EXPECT_EQ(corner.x, 0);
  EXPECT_EQ(corner.y, 0);
}

TEST(CentredIn, DoesNotLeaveTheAreaWhenCentredAtItsEdge) {
  const popup::Rect area = {0, 0, 1000, 700};
  const popup::Point low = popup::CentredIn({950, 680, 990, 700}, area, 200, 100);
  EXPECT_EQ(low.x, 800);
  EXPECT_EQ(low.y, 600);
  const popup::Point high = popup::CentredIn({0, 0, 20, 20}, area, 200, 100);
  EXPECT_EQ(high.x, 0);
  EXPECT_EQ(high.y, 0);
}

}  // namespace
