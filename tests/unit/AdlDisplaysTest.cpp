// The AMD Display Library's displays, connectors and maps in the display model.
#include "Common/MultiMonitor/Amd/AdlDisplays.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr uint32_t kNb = 0x01;
constexpr uint32_t kCrt = 0x02;
constexpr uint32_t kTv = 0x04;
constexpr uint32_t kDvi = 0x08;
constexpr uint32_t kHdmi = 0x10;
constexpr uint32_t kDp = 0x20;

ADLDisplayInfo Info(int32_t type, int32_t connector, int32_t index = 0, int32_t value = 1) {
  ADLDisplayInfo info = {};
  info.iDisplayType = type;
  info.iDisplayConnector = connector;
  info.displayID.iDisplayLogicalIndex = index;
  info.iDisplayInfoValue = value;
  return info;
}

AdlDisplayList ListOf(const std::vector<ADLDisplayInfo>& infos) {
  return {infos.data(), static_cast<int32_t>(infos.size())};
}

TEST(AdlDisplay, TypeGivesTheFlagWhateverTheConnector) {
  for (int32_t connector = 0; connector < 20; ++connector) {
    EXPECT_EQ(DisplayOfAdlInfo(Info(0, connector)), kCrt) << connector;
    EXPECT_EQ(DisplayOfAdlInfo(Info(1, connector)), kTv) << connector;
    EXPECT_EQ(DisplayOfAdlInfo(Info(2, connector)), kNb) << connector;
  }
}

TEST(AdlDisplay, DigitalFlatPanelGoesByItsConnector) {
  for (int32_t connector = -1; connector < 20; ++connector) {
    const bool hdmi = connector == 10 || connector == 11;
    const uint32_t expected = hdmi ? kHdmi : connector == 15 ? kDp : kDvi;
    EXPECT_EQ(DisplayOfAdlInfo(Info(3, connector)), expected) << connector;
  }
}

TEST(AdlDisplay, OtherTypesHaveNoFlag) {
  for (const int32_t type : {-1, 4, 5, 6, 100}) {
    EXPECT_EQ(DisplayOfAdlInfo(Info(type, 10)), 0u) << type;
  }
}

TEST(AdlConnector, WithoutAListEveryDisplayHasItsUsualOne) {
  const struct {
    uint32_t display;
    int32_t connector;
  } rows[] = {{kNb, 8}, {kCrt, 1}, {kTv, 12}, {kDvi, 2}, {kHdmi, 10}, {kDp, 15}};
  const std::vector<ADLDisplayInfo> some = {Info(0, 1)};
  for (const auto& row : rows) {
    EXPECT_EQ(AdlConnectorOfDisplays(row.display, {}), row.connector) << row.display;
    EXPECT_EQ(AdlConnectorOfDisplays(row.display, {some.data(), 0}), row.connector);
    EXPECT_EQ(AdlConnectorOfDisplays(row.display, {nullptr, 1}), row.connector);
  }
}

TEST(AdlConnector, BitsAreTriedInOrder) {
  EXPECT_EQ(AdlConnectorOfDisplays(0x3F, {}), 8);
  EXPECT_EQ(AdlConnectorOfDisplays(0x3E, {}), 1);
  EXPECT_EQ(AdlConnectorOfDisplays(0x3C, {}), 12);
  EXPECT_EQ(AdlConnectorOfDisplays(0x38, {}), 2);
  EXPECT_EQ(AdlConnectorOfDisplays(0x30, {}), 10);
}

TEST(AdlConnector, OnlyEightBitsAreSeen) {
  for (const uint32_t displays : {0u, 0x40u, 0x80u, 0xC0u, 0x100u, 0xFFFFFF00u}) {
    EXPECT_FALSE(AdlConnectorOfDisplays(displays, {})) << displays;
  }
  EXPECT_EQ(AdlConnectorOfDisplays(0xFFFFFF02, {}), 1);
}

TEST(AdlConnector, DviAndHdmiAreThoseInUse) {
  const auto found = [](uint32_t display, const std::vector<ADLDisplayInfo>& infos) {
    return AdlConnectorOfDisplays(display, ListOf(infos));
  };
  EXPECT_EQ(found(kDvi, {Info(3, 2, 0, 0), Info(3, 3)}), 3);
  EXPECT_EQ(found(kDvi, {Info(3, 3), Info(3, 2)}), 3);
  EXPECT_EQ(found(kDvi, {Info(3, 10), Info(3, 2)}), 2);
  EXPECT_EQ(found(kHdmi, {Info(3, 2), Info(3, 11), Info(3, 10)}), 11);
  EXPECT_EQ(found(kHdmi, {Info(3, 11, 0, 2), Info(3, 10, 0, 3)}), 10);  // mapped is not connected
  // None of them connected: no connector, and the bits behind are not tried.
  EXPECT_FALSE(found(kDvi, {Info(3, 2, 0, 0)}));
  EXPECT_FALSE(found(kHdmi, {Info(0, 1)}));
  EXPECT_FALSE(found(kDvi | kDp, {Info(3, 15)}));
  // The others do not look.
  EXPECT_EQ(found(kCrt, {Info(2, 8)}), 1);
  EXPECT_EQ(found(kDp, {Info(2, 8)}), 15);
}

TEST(AdlIndex, IsThatOfTheFirstEntryOnTheConnectorConnectedOrNot) {
  const std::vector<ADLDisplayInfo> infos = {Info(2, 8, 1), Info(0, 1, 4, 0), Info(0, 1, 5)};
  EXPECT_EQ(AdlIndexOfConnector(1, ListOf(infos)), 4);
  EXPECT_EQ(AdlIndexOfConnector(8, ListOf(infos)), 1);
}

TEST(AdlIndex, ConnectorWithoutAnEntryIsDisplayZero) {
  const std::vector<ADLDisplayInfo> infos = {Info(2, 8, 1)};
  EXPECT_EQ(AdlIndexOfConnector(10, ListOf(infos)), 0);
  EXPECT_EQ(AdlIndexOfConnector(8, {}), 0);
  EXPECT_EQ(AdlIndexOfConnector(8, {nullptr, 3}), 0);
}

TEST(AdlEdid, LastEntryOfTheTypeWins) {
  const std::vector<ADLDisplayInfo> infos = {Info(2, 8, 1),  Info(0, 1, 3),    Info(3, 2, 5),
                                             Info(3, 10, 6), Info(0, 1, 4, 0), Info(3, 15, 7, 0)};
  EXPECT_EQ(AdlIndexForEdid(kNb, ListOf(infos)), 1);
  EXPECT_EQ(AdlIndexForEdid(kCrt, ListOf(infos)), 4);
  for (const uint32_t display : {kDvi, kHdmi, kDp}) {
    EXPECT_EQ(AdlIndexForEdid(display, ListOf(infos)), 7) << display;
  }
}

TEST(AdlEdid, BitsAreTestedInOrder) {
  const std::vector<ADLDisplayInfo> infos = {Info(2, 8, 1), Info(0, 1, 3), Info(3, 2, 5)};
  EXPECT_EQ(AdlIndexForEdid(0x3F, ListOf(infos)), 1);
  EXPECT_EQ(AdlIndexForEdid(kDp | kCrt, ListOf(infos)), 3);
  EXPECT_EQ(AdlIndexForEdid(kTv | kDvi, ListOf(infos)), 5);
  EXPECT_EQ(AdlIndexForEdid(0xFFFFFF01, ListOf(infos)), 1);
}

TEST(AdlEdid, OtherDisplaysAndTypesThatAreNotThereAreDisplayZero) {
  const std::vector<ADLDisplayInfo> infos = {Info(1, 12, 1), Info(2, 8, 2)};
  for (const uint32_t display : {kTv, 0u, 0x40u, kCrt, kDp}) {
    EXPECT_EQ(AdlIndexForEdid(display, ListOf(infos)), 0) << display;
  }
  EXPECT_EQ(AdlIndexForEdid(kNb, {}), 0);
}

TEST(AdlMode, GoesByTheCounts) {
  const struct {
    int32_t maps;
    int32_t targets;
    uint32_t mode;
  } rows[] = {{1, 0, 1}, {1, 1, 1}, {1, 2, 2}, {1, 3, 1024}, {1, 9, 1024}, {2, 0, 4},  {2, 1, 4},
              {2, 2, 4}, {3, 2, 4}, {9, 2, 4}, {2, 3, 512},  {3, 3, 512},  {3, 9, 512}};
  for (const auto& row : rows) {
    EXPECT_EQ(ModeOfAdlMap(row.maps, row.targets), row.mode) << row.maps << " " << row.targets;
  }
}

TEST(AdlMode, WithoutADesktopThereIsNone) {
  for (const int32_t maps : {0, -1}) {
    for (const int32_t targets : {0, 1, 3}) EXPECT_FALSE(ModeOfAdlMap(maps, targets));
  }
}

}  // namespace
