#include "Common/LogFormat.h"

#include <gtest/gtest.h>

namespace {

LogStamp Stamp() {
  LogStamp stamp;
  stamp.process_id = 1234;
  stamp.thread_id = 56;
  stamp.month = 8;
  stamp.day = 29;
  stamp.hour = 4;
  stamp.minute = 36;
  stamp.second = 26;
  stamp.tick_count = 4294967295u;
  return stamp;
}

TEST(FormatLogPrefix, BeforeSetUpOnlyTheTimeStandsInFront) {
  EXPECT_EQ(FormatLogPrefix(LogItems(), Stamp(), 0, "module.ext", 120),
            "[0829/043626:INFO:module.ext(120)] ");
}

TEST(FormatLogPrefix, WithTheDefaultsProcessAndTime) {
  LogItems items;
  items.process_id = true;
  EXPECT_EQ(FormatLogPrefix(items, Stamp(), 0, "module.ext", 120),
            "[1234:0829/043626:INFO:module.ext(120)] ");
}

TEST(FormatLogPrefix, AllItemsStandInTheirOrder) {
  LogItems items;
  items.process_id = items.thread_id = items.time_stamp = items.tick_count = true;
  EXPECT_EQ(FormatLogPrefix(items, Stamp(), 1, "a.cpp", 1),
            "[1234:56:0829/043626:4294967295:WARNING:a.cpp(1)] ");
}

TEST(FormatLogPrefix, NoItemsLeaveSeverityAndPlace) {
  LogItems items;
  items.time_stamp = false;
  EXPECT_EQ(FormatLogPrefix(items, Stamp(), 2, "a.cpp", 7), "[ERROR:a.cpp(7)] ");
}

TEST(FormatLogPrefix, NamesEverySeverity) {
  LogItems items;
  items.time_stamp = false;
  EXPECT_EQ(FormatLogPrefix(items, Stamp(), 3, "a", 1), "[ERROR_REPORT:a(1)] ");
  EXPECT_EQ(FormatLogPrefix(items, Stamp(), 4, "a", 1), "[FATAL:a(1)] ");
  EXPECT_EQ(FormatLogPrefix(items, Stamp(), 5, "a", 1), "[UNKNOWN:a(1)] ");
  EXPECT_EQ(FormatLogPrefix(items, Stamp(), -1, "a", 1), "[UNKNOWN:a(1)] ");
}

TEST(LogFileBaseName, CutsBehindTheLastBackslashOnly) {
  EXPECT_STREQ(LogFileBaseName("src\\session\\DMSwitch.cpp"), "DMSwitch.cpp");
  EXPECT_STREQ(LogFileBaseName("DMSwitch.cpp"), "DMSwitch.cpp");
  EXPECT_STREQ(LogFileBaseName("src/session/DMSwitch.cpp"), "src/session/DMSwitch.cpp");
}

TEST(MakeBackupPath, PutsTheDateInFrontOfTheExtension) {
  EXPECT_EQ(MakeBackupPath(L"C:\\u\\hd\\Ostrel.log", 2012, 8, 29),
            L"C:\\u\\hd\\Ostrel.2012-08-29.log");
  EXPECT_EQ(MakeBackupPath(L"C:\\a.b\\hd\\log", 2012, 12, 1), L"C:\\a.b\\hd\\log.2012-12-01");
}

TEST(MakeLogMutexName, ReplacesEveryBackslash) {
  EXPECT_EQ(MakeLogMutexName(L"C:\\host\\debug.log"), L"Global\\C:/host/debug.log");
}

}  // namespace
