// What the library writes to the standard output of its process.
#include <gtest/gtest.h>

#include <cstdio>

#include "sim/faces/StandardOutput.h"
#include "sim/tests/FaceCalls.h"

namespace sim {
namespace {

class StandardOutputKept : public testing::Test {
 protected:
  Machine machine{"win7 intel: internal 1366x768 active"};
};

TEST_F(StandardOutputKept, IsTakenAsItWasWritten) {
  EXPECT_EQ(FAKE(fwrite)("\nab\n", 1, 4, stdout), 4u);
  EXPECT_EQ(FAKE(fwrite)("cdef", 2, 2, stdout), 2u);
  EXPECT_EQ(FAKE(fputc)('g', stdout), 'g');
  EXPECT_GE(FAKE(fputs)("hi", stdout), 0);
  EXPECT_EQ(TakeStandardOutput(machine), "\nab\ncdefghi");
  EXPECT_EQ(TakeStandardOutput(machine), "");
  EXPECT_EQ(FAKE(printf)("%d-%s", 7, "x"), 3);
  EXPECT_EQ(FAKE(fprintf)(stdout, "%c", 'y'), 1);
  EXPECT_EQ(FAKE(putchar)('z'), 'z');
  EXPECT_GE(FAKE(puts)("line"), 0);
  EXPECT_EQ(TakeStandardOutput(machine), "7-xyzline\n");
}

TEST_F(StandardOutputKept, UnflushedIsWhatCameBehindTheLastFlush) {
  FAKE(fputs)("one", stdout);
  EXPECT_EQ(UnflushedStandardOutput(machine), "one");
  EXPECT_EQ(FAKE(fflush)(stdout), 0);
  FAKE(fputs)("two", stdout);
  EXPECT_EQ(UnflushedStandardOutput(machine), "two");
  EXPECT_EQ(FAKE(fflush)(stderr), 0);
  EXPECT_EQ(UnflushedStandardOutput(machine), "two");
  EXPECT_EQ(FAKE(fflush)(nullptr), 0);
  EXPECT_EQ(UnflushedStandardOutput(machine), "");
  EXPECT_EQ(TakeStandardOutput(machine), "onetwo");
}

TEST_F(StandardOutputKept, OtherStreamsAreReal) {
  FILE* const file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(FAKE(fwrite)("abc", 1, 3, file), 3u);
  EXPECT_EQ(FAKE(fputc)('d', file), 'd');
  EXPECT_EQ(FAKE(fprintf)(file, "%d", 5), 1);
  std::rewind(file);
  char text[8] = {};
  EXPECT_EQ(std::fread(text, 1, sizeof text - 1, file), 5u);
  EXPECT_STREQ(text, "abcd5");
  std::fclose(file);
  EXPECT_EQ(TakeStandardOutput(machine), "");
}

}  // namespace
}  // namespace sim
