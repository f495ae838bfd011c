#include "Common/Verbosity.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

VerbosityTable Make(const char* v, const std::string& vmodule, Texts* complaints) {
  const std::string v_text = v != nullptr ? v : "";
  return VerbosityTable(v != nullptr ? &v_text : nullptr, vmodule, complaints);
}

TEST(VerbosityModuleName, DropsFoldersExtensionsAndInl) {
  EXPECT_EQ(VerbosityModuleName("src\\session/DMSwitch.cpp"), "DMSwitch");
  EXPECT_EQ(VerbosityModuleName("src/session\\DMSwitch.test.cpp"), "DMSwitch");
  EXPECT_EQ(VerbosityModuleName("a/table-inl.h"), "table");
  EXPECT_EQ(VerbosityModuleName("table-inl"), "table");
  EXPECT_EQ(VerbosityModuleName("-inl.h"), "");
  EXPECT_EQ(VerbosityModuleName("a.b/DMSwitch"), "DMSwitch");
  EXPECT_EQ(VerbosityModuleName(""), "");
}

TEST(VerbosityTable, DefaultLevelAloneHoldsForAllFiles) {
  Texts complaints;
  const VerbosityTable table = Make("2", "", &complaints);
  EXPECT_EQ(table.LevelFor("DMSwitch.cpp"), 2);
  EXPECT_EQ(table.Ceiling(), 2);
  EXPECT_EQ(complaints, Texts());
}

TEST(VerbosityTable, FirstMatchingPatternWins) {
  Texts complaints;
  const VerbosityTable table = Make("1", "DM*=3,DMSwitch=0,*CCD=2", &complaints);
  EXPECT_EQ(table.LevelFor("DMSwitch.cpp"), 3);
  EXPECT_EQ(table.LevelFor("src/Common/MultiMonitor/Win7CCD.cpp"), 2);
  EXPECT_EQ(table.LevelFor("HybridController.cpp"), 1);
  EXPECT_EQ(table.Ceiling(), 3);
  EXPECT_EQ(complaints, Texts());
}

TEST(VerbosityTable, WithoutVTheDefaultIsZeroAndNothingIsSaid) {
  Texts complaints;
  const VerbosityTable table = Make(nullptr, "DMSwitch=2", &complaints);
  EXPECT_EQ(table.LevelFor("Other.cpp"), 0);
  EXPECT_EQ(complaints, Texts());
}

TEST(VerbosityTable, NegativePatternsSilenceAFile) {
  Texts complaints;
  const VerbosityTable table = Make("1", "DMSwitch=-1", &complaints);
  EXPECT_EQ(table.LevelFor("DMSwitch.cpp"), -1);
  EXPECT_EQ(table.Ceiling(), 1);
}

TEST(VerbosityTable, LenientDefaultLevelIsKeptWithAWarning) {
  Texts complaints;
  EXPECT_EQ(Make("2abc", "", &complaints).LevelFor("a.cpp"), 2);
  EXPECT_EQ(complaints, Texts{"Parsed v switch \"2abc\" as 2"});
  complaints.clear();
  EXPECT_EQ(Make("abc", "", &complaints).LevelFor("a.cpp"), 0);
  EXPECT_EQ(complaints, Texts{"Parsed v switch \"abc\" as 0"});
  complaints.clear();
  EXPECT_EQ(Make("", "", &complaints).LevelFor("a.cpp"), 0);
  EXPECT_EQ(complaints, Texts{"Parsed v switch \"\" as 0"});
}

TEST(VerbosityTable, PairsThatSplitStayInUse) {
  Texts complaints;
  const VerbosityTable table = Make(nullptr, "rubbish,DMSwitch=2,more=", &complaints);
  EXPECT_EQ(table.LevelFor("DMSwitch.cpp"), 2);
  EXPECT_EQ(table.LevelFor("rubbish.cpp"), 0);
  EXPECT_EQ(complaints, Texts{"Could not fully parse vmodule switch \"rubbish,DMSwitch=2,more=\""});
}

TEST(VerbosityTable, PatternStaysWithItsPartlyParsedLevel) {
  Texts complaints;
  const VerbosityTable table = Make(nullptr, "DMSwitch=3x,Win7CCD=x", &complaints);
  EXPECT_EQ(table.LevelFor("DMSwitch.cpp"), 3);
  EXPECT_EQ(table.LevelFor("Win7CCD.cpp"), 0);
  const Texts expected = {"Parsed vlog level for \"DMSwitch=3x\" as 3",
                          "Parsed vlog level for \"Win7CCD=x\" as 0"};
  EXPECT_EQ(complaints, expected);
}

TEST(VerbosityTable, WarningsComeInTheOrderOfTheSwitches) {
  Texts complaints;
  Make("z", "y,a=b", &complaints);
  const Texts expected = {"Parsed v switch \"z\" as 0",
                          "Could not fully parse vmodule switch \"y,a=b\"",
                          "Parsed vlog level for \"a=b\" as 0"};
  EXPECT_EQ(complaints, expected);
}

}  // namespace
