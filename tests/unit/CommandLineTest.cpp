#include "Common/CommandLine.h"

#include <gtest/gtest.h>

namespace {

using Arguments = std::vector<std::wstring>;

TEST(CommandLine, ProgramNameIsNoSwitch) {
  const CommandLine line(Arguments{L"--v=3"});
  EXPECT_FALSE(line.HasSwitch("v"));
  EXPECT_EQ(line.GetArgs(), Arguments());
}

TEST(CommandLine, NothingAtAllIsFine) {
  EXPECT_EQ(CommandLine(Arguments()).GetArgs(), Arguments());
}

TEST(CommandLine, ThreePrefixesMakeASwitch) {
  const CommandLine line(Arguments{L"host.exe", L"--v=1", L"-vmodule=a=2", L"/enable-dcheck"});
  ASSERT_TRUE(line.HasSwitch("v"));
  EXPECT_EQ(*line.GetSwitchValue("v"), L"1");
  ASSERT_TRUE(line.HasSwitch("vmodule"));
  EXPECT_EQ(*line.GetSwitchValue("vmodule"), L"a=2");  // the name runs to the first "="
  ASSERT_TRUE(line.HasSwitch("enable-dcheck"));
  EXPECT_EQ(*line.GetSwitchValue("enable-dcheck"), L"");
}

TEST(CommandLine, LongestPrefixIsTriedFirst) {
  const CommandLine line(Arguments{L"host.exe", L"---v"});
  EXPECT_TRUE(line.HasSwitch("-v"));
  EXPECT_FALSE(line.HasSwitch("v"));
}

TEST(CommandLine, NamesCompareInLowerCaseAndValuesKeepTheirs) {
  const CommandLine line(Arguments{L"host.exe", L"--Enable-DCheck=Yes"});
  ASSERT_TRUE(line.HasSwitch("enable-dcheck"));
  EXPECT_EQ(*line.GetSwitchValue("enable-dcheck"), L"Yes");
}

TEST(CommandLine, LoneDoubleDashEndsTheSwitches) {
  const CommandLine line(Arguments{L"host.exe", L"a", L"--", L"--v=1", L"--"});
  EXPECT_FALSE(line.HasSwitch("v"));
  const Arguments expected = {L"a", L"--v=1", L"--"};
  EXPECT_EQ(line.GetArgs(), expected);
}

TEST(CommandLine, PrefixAloneIsAPlainArgument) {
  const CommandLine line(Arguments{L"host.exe", L"-", L"/"});
  const Arguments expected = {L"-", L"/"};
  EXPECT_EQ(line.GetArgs(), expected);
}

TEST(CommandLine, LastOfSeveralCounts) {
  const CommandLine line(Arguments{L"host.exe", L"--v=1", L"/V=2"});
  EXPECT_EQ(*line.GetSwitchValue("v"), L"2");
}

TEST(CommandLine, AbsentSwitchHasNoValue) {
  EXPECT_EQ(CommandLine(Arguments{L"host.exe"}).GetSwitchValue("v"), nullptr);
}

}  // namespace
