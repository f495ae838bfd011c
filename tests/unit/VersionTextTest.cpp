#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "Common/FileVersion.h"

namespace {

struct Numbers {
  uint16_t part[4] = {7, 7, 7, 7};
  bool Parse(const std::string& text) {
    return ParseVersion(text, &part[0], &part[1], &part[2], &part[3]);
  }
  std::string Text() const {
    return std::to_string(part[0]) + " " + std::to_string(part[1]) + " " + std::to_string(part[2]) +
           " " + std::to_string(part[3]);
  }
};

TEST(ParseVersion, FourNumbersAreStored) {
  Numbers numbers;
  EXPECT_TRUE(numbers.Parse("8.1.2.1050"));
  EXPECT_EQ(numbers.Text(), "8 1 2 1050");
}

TEST(ParseVersion, WhatFollowsTheFourthIsIgnored) {
  Numbers numbers;
  EXPECT_TRUE(numbers.Parse("8.1.2.1050.7"));
  EXPECT_EQ(numbers.Text(), "8 1 2 1050");
}

TEST(ParseVersion, FewerLeaveTheOutputs) {
  for (const char* text : {"", "8", "8.1.2", "..."}) {
    Numbers numbers;
    EXPECT_FALSE(numbers.Parse(text)) << text;
    EXPECT_EQ(numbers.Text(), "7 7 7 7") << text;
  }
}

TEST(ParseVersion, NumbersAreCutTo16Bits) {
  Numbers numbers;
  EXPECT_TRUE(numbers.Parse("65536.65537.131071.4294967295"));
  EXPECT_EQ(numbers.Text(), "0 1 65535 65535");
}

TEST(ParseVersion, TokenThatIsNoNumberRaisesWhereverItStands) {
  for (const char* text : {"8.x.2.1", "8.1.2.1050.x", "x", "8.1. 2.3", "8,1,2,3"}) {
    Numbers numbers;
    std::string caught;
    try {
      numbers.Parse(text);
    } catch (const std::bad_cast& raised) {
      caught = raised.what();
    }
    EXPECT_EQ(caught, "bad lexical cast: source type value could not be interpreted as target")
        << text;
    EXPECT_EQ(numbers.Text(), "7 7 7 7") << text;
  }
}

}  // namespace
