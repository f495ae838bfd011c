#include <gtest/gtest.h>

#include "Common/win_util.h"

namespace win_util {
namespace {

struct Row {
  uint32_t major;
  uint32_t minor;
  uint8_t product_type;
  int value;
};

constexpr Row kRows[] = {
    {4, 10, 1, 0}, {4, 0, 1, 0}, {0, 0, 0, 0},                                // older
    {5, 0, 1, 1},  {5, 0, 3, 1},                                              // 2000
    {5, 1, 1, 2},                                                             // XP
    {5, 2, 3, 3},  {5, 2, 1, 3}, {5, 3, 1, 3},                                // Server 2003
    {6, 0, 1, 4},                                                             // Vista
    {6, 0, 3, 5},  {6, 0, 2, 5}, {6, 1, 3, 5}, {6, 2, 3, 5},  {6, 3, 2, 5},   // servers
    {6, 1, 1, 6},                                                             // 7
    {6, 2, 1, 7},                                                             // 8
    {6, 3, 1, 8},  {6, 4, 1, 8}, {7, 0, 1, 8}, {10, 0, 1, 8}, {10, 0, 3, 8},  // later
};

TEST(ClassifyWinVersion, FollowsTheTable) {
  for (const Row& row : kRows) {
    EXPECT_EQ(ClassifyWinVersion(row.major, row.minor, row.product_type), row.value)
        << row.major << "." << row.minor << " type " << int{row.product_type};
  }
}

TEST(ClassifyWinVersion, ServerOf61IsBelowWindows7) {
  EXPECT_LT(ClassifyWinVersion(6, 1, 3), WINVERSION_WIN7);
  EXPECT_EQ(ClassifyWinVersion(6, 1, 3), WINVERSION_2008);
}

}  // namespace
}  // namespace win_util
