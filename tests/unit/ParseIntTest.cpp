#include "Common/ParseInt.h"

#include <gtest/gtest.h>

namespace {

TEST(ParseLenientInt, TakesTheNumberThatTheTextBeginsWith) {
  EXPECT_EQ(ParseLenientInt("2"), 2);
  EXPECT_EQ(ParseLenientInt("2abc"), 2);
  EXPECT_EQ(ParseLenientInt("abc"), 0);
  EXPECT_EQ(ParseLenientInt(""), 0);
  EXPECT_EQ(ParseLenientInt("-3"), -3);
  EXPECT_EQ(ParseLenientInt(" 4"), 4);
}

TEST(ParseLenientInt, EndsAtTheNearest32BitNumber) {
  EXPECT_EQ(ParseLenientInt("99999999999"), 2147483647);
  EXPECT_EQ(ParseLenientInt("-99999999999"), -2147483647 - 1);
  EXPECT_EQ(ParseLenientInt("99999999999999999999999999"), 2147483647);
}

TEST(ParseWholeInt, TakesWholeNumbersOnly) {
  int32_t value = 77;
  for (const char* text : {"", "abc", "1abc", " 1", "1 ", "-", "+", "0x1", "1.5", "--1"}) {
    EXPECT_FALSE(ParseWholeInt(text, &value)) << text;
    EXPECT_EQ(value, 77) << text;
  }
  EXPECT_TRUE(ParseWholeInt("12", &value));
  EXPECT_EQ(value, 12);
  EXPECT_TRUE(ParseWholeInt("-1", &value));
  EXPECT_EQ(value, -1);
}

TEST(ParseWholeInt, RefusesWhatDoesNotFit) {
  int32_t value = 77;
  EXPECT_TRUE(ParseWholeInt("2147483647", &value));
  EXPECT_EQ(value, 2147483647);
  EXPECT_FALSE(ParseWholeInt("2147483648", &value));
  EXPECT_FALSE(ParseWholeInt("99999999999999999999999999", &value));
  EXPECT_EQ(value, 2147483647);
}

}  // namespace
