// Which presentations there are, where they are offered, and how projectors are listed.
#include "session/catalogue/PresentationRules.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace catalogue {
namespace {

using Names = std::vector<std::string>;

TEST(PresentationType, IsFoundByItsNumber) {
  const PresentationType* const small = FindPresentationType(32);
  ASSERT_NE(small, nullptr);
  EXPECT_EQ(std::wstring(small->section), L"PM:800x600");
  EXPECT_EQ(small->width, 800u);
  EXPECT_EQ(small->height, 600u);
  EXPECT_EQ(small->icon, 10u);
  const PresentationType* const large = FindPresentationType(64);
  ASSERT_NE(large, nullptr);
  EXPECT_EQ(std::wstring(large->section), L"PM:1024x768");
  EXPECT_EQ(large->width, 1024u);
  EXPECT_EQ(large->height, 768u);
  EXPECT_EQ(large->icon, 11u);
}

TEST(PresentationType, HasTwoNumbersOnly) {
  for (const uint32_t type : {0u, 1u, 16u, 31u, 33u, 63u, 65u, 96u, 128u, 0xFFFFFFFFu}) {
    EXPECT_EQ(FindPresentationType(type), nullptr) << type;
  }
}

TEST(PresentationConnector, IsTheFirstOfCrtDviHdmiTvDisplayPortWireless) {
  struct {
    uint32_t connected;
    uint32_t mask;
  } const rows[] = {
      {0x7F, 0x03}, {0x7D, 0x09}, {0x75, 0x11}, {0x65, 0x05}, {0x61, 0x21}, {0x41, 0x41},
      {0x13, 0x03}, {0x19, 0x09}, {0x15, 0x11}, {0x25, 0x05}, {0x02, 0x03}, {0x40, 0x41},
  };
  for (const auto& row : rows) {
    const PresentationConnector* const connector = FindPresentationConnector(row.connected);
    ASSERT_NE(connector, nullptr) << row.connected;
    EXPECT_EQ(connector->mask, row.mask) << row.connected;
  }
}

TEST(PresentationConnector, IsNoneForThePanelOrAnUnknownBit) {
  EXPECT_EQ(FindPresentationConnector(0), nullptr);
  EXPECT_EQ(FindPresentationConnector(0x01), nullptr);
  EXPECT_EQ(FindPresentationConnector(0x81), nullptr);
}

TEST(PresentationConnector, LeavesTheGateOutForTheSmallItemOfCrtAndDviOnly) {
  struct {
    uint32_t display;
    SmallItemRule rule;
  } const rows[] = {
      {0x02, SmallItemRule::kPanel}, {0x08, SmallItemRule::kPanelAndClone},
      {0x10, SmallItemRule::kGate},  {0x04, SmallItemRule::kGate},
      {0x20, SmallItemRule::kGate},  {0x40, SmallItemRule::kGate},
  };
  for (const auto& row : rows) {
    const PresentationConnector* const connector = FindPresentationConnector(row.display);
    ASSERT_NE(connector, nullptr) << row.display;
    EXPECT_EQ(connector->small_item, row.rule) << row.display;
  }
}

TEST(ProblemProjectors, AreFourWhereNobodyNamesOthers) {
  EXPECT_EQ(Names(std::begin(kProblemProjectors), std::end(kProblemProjectors)),
            (Names{"Veld k2210", "Veld k2310", "Veld R2215", "Veld R2215E"}));
}

TEST(ProjectorNames, AreSplitAtCommasAndStrippedOfBlanksAtBothEnds) {
  EXPECT_EQ(SplitProjectorNames("Veld S1"), (Names{"Veld S1"}));
  EXPECT_EQ(SplitProjectorNames("  Veld S1 ,Veld  S2,   Veld S3"),
            (Names{"Veld S1", "Veld  S2", "Veld S3"}));
}

TEST(ProjectorNames, OfAnEmptyTextAreNone) { EXPECT_EQ(SplitProjectorNames(""), Names()); }

TEST(ProjectorNames, AreEmptyWhereAPartIs) {
  EXPECT_EQ(SplitProjectorNames(","), (Names{"", ""}));
  EXPECT_EQ(SplitProjectorNames("Veld S1,"), (Names{"Veld S1", ""}));
  EXPECT_EQ(SplitProjectorNames("Veld S1, ,Veld S2"), (Names{"Veld S1", "", "Veld S2"}));
  EXPECT_EQ(SplitProjectorNames("   "), (Names{""}));
}

TEST(ProjectorNames, KeepEveryOtherByte) {
  EXPECT_EQ(SplitProjectorNames("\tVeld\t, \xC3\xA9"), (Names{"\tVeld\t", "\xC3\xA9"}));
}

TEST(ProjectorNames, AreFoundOnlyWhenEveryByteIsTheSame) {
  const Names names = {"Veld S1", "Veld S2"};
  EXPECT_TRUE(IsNameListed(names, "Veld S1"));
  EXPECT_TRUE(IsNameListed(names, "Veld S2"));
  EXPECT_FALSE(IsNameListed(names, "veld s1"));
  EXPECT_FALSE(IsNameListed(names, "Veld S1 "));
  EXPECT_FALSE(IsNameListed(names, "Veld S"));
  EXPECT_FALSE(IsNameListed(names, "Veld S11"));
  EXPECT_FALSE(IsNameListed(names, ""));
  EXPECT_FALSE(IsNameListed({}, ""));
  EXPECT_TRUE(IsNameListed({""}, ""));
}

}  // namespace
}  // namespace catalogue
