#include "sim/Model.h"

#include <gtest/gtest.h>

#include "sim/EdidMaker.h"
#include "sim/ShortForm.h"
#include "sim/Topology.h"

namespace sim {
namespace {

Model PanelAndCrt() { return ParseShortForm("win7 intel: internal 1366x768 active, crt 1024x768"); }

TEST(Model, TopologyIsToldInModelOrder) {
  EXPECT_EQ(DescribeTopology(PanelAndCrt()), "single internal");
  EXPECT_EQ(DescribeTopology(
                ParseShortForm("win7 intel: clone internal 1366x768 active, crt 1024x768 active")),
            "clone internal+crt");
  EXPECT_EQ(
      DescribeTopology(ParseShortForm("win7 intel: internal 1366x768 active, crt 1024x768 active")),
      "extend internal+crt");
  EXPECT_EQ(DescribeTopology(ParseShortForm("win7 intel: internal 1366x768")), "none");
}

TEST(Model, MixtureOfCloneAndExtensionNamesBothParts) {
  Model model = ParseShortForm(
      "win7 intel*3: internal 1024x768 active, crt 1024x768 active, hdmi 1024x768 active");
  model.active = {{0, 0}, {0, 1}, {1, 2}};
  EXPECT_EQ(DescribeTopology(model), "extend (internal+crt)+hdmi");
  EXPECT_EQ(TopologyOf(model, model.active), 0u);
}

TEST(Model, ConnectedNeedsAMonitorAndAWorkingAdapter) {
  Model model =
      ParseShortForm("win7 intel, nvidia: internal 1366x768 active, hdmi@2 800x600, dp@2");
  EXPECT_EQ(ConnectedIds(model), (std::vector<std::string>{"internal", "hdmi"}));
  model.adapters[1].disabled = true;
  EXPECT_EQ(ConnectedIds(model), (std::vector<std::string>{"internal"}));
}

TEST(Model, EveryAdapterGetsSourcesOfItsOwn) {
  const Model model = ParseShortForm("win7 intel, nvidia: internal 1366x768 active");
  ASSERT_EQ(model.sources.size(), 4u);
  EXPECT_EQ(model.sources[3].device_name, "\\\\.\\DISPLAY4");
  EXPECT_EQ(model.sources[3].adapter, 1u);
  EXPECT_EQ(model.sources[3].source_id, 1u);
  EXPECT_NE(model.adapters[0].luid_low, model.adapters[1].luid_low);
}

TEST(Topology, CommonModesOfPanelAndCrtEndAtTheSmallerOne) {
  const Model model = PanelAndCrt();
  const std::optional<DisplayMode> best = BestMode(model, {0, 1});
  ASSERT_TRUE(best.has_value());
  EXPECT_EQ(*best, (DisplayMode{1024, 768, 32, 60}));
}

TEST(Topology, BestModeOfOneDisplayIsItsNativeOne) {
  Model model = PanelAndCrt();
  model.connectors[1].monitor->modes.push_back({2048, 1536, 32, 60});
  EXPECT_EQ(BestMode(model, {1})->width, 1024u);
}

TEST(Topology, OpenFrequencyPrefers60ThenTheHigher) {
  const std::vector<DisplayMode> modes = {
      {800, 600, 32, 56}, {800, 600, 32, 60}, {800, 600, 32, 75}};
  EXPECT_EQ(FindMode(modes, {800, 600, 32, 0})->frequency, 60u);
  EXPECT_EQ(FindMode({modes[0], modes[2]}, {800, 600, 32, 0})->frequency, 75u);
  EXPECT_FALSE(FindMode(modes, {800, 600, 16, 0}).has_value());
}

TEST(Topology, PathsAreRefusedOverTwoAdaptersTwiceOrBeyondTheHeads) {
  Model model = ParseShortForm(
      "win7 intel, nvidia: internal 1366x768 active, crt 1024x768, hdmi 800x600, dp@2 800x600, tv");
  EXPECT_TRUE(PathsAreDrivable(model, {{0, 0}, {1, 1}}));
  EXPECT_FALSE(PathsAreDrivable(model, {{0, 3}}));          // source and target of two adapters
  EXPECT_FALSE(PathsAreDrivable(model, {{0, 0}, {1, 0}}));  // one target twice
  EXPECT_FALSE(PathsAreDrivable(model, {{0, 0}, {0, 1}, {1, 2}}));  // three on two heads
  EXPECT_FALSE(PathsAreDrivable(model, {{0, 4}}));                  // nothing plugged in
}

TEST(Topology, DefaultCloneStaysOnOneAdapter) {
  const Model split =
      ParseShortForm("win7 intel, nvidia: internal 1366x768 active, hdmi@2 800x600");
  EXPECT_FALSE(NamedTopology(split, kTopologyClone, false, nullptr).has_value());
  EXPECT_TRUE(NamedTopology(split, kTopologyExtend, false, nullptr).has_value());
}

TEST(Topology, DefaultExtensionPutsThePanelFirstWhereverItStands) {
  const Model model = ParseShortForm("win7 intel: crt 1024x768 active, internal 1366x768");
  const std::optional<Arrangement> extend = NamedTopology(model, kTopologyExtend, false, nullptr);
  ASSERT_TRUE(extend.has_value());
  ASSERT_EQ(extend->paths.size(), 2u);
  EXPECT_EQ(extend->paths[0].connector, 1u);
  EXPECT_EQ(extend->sources[extend->paths[1].source].x, 1366);
}

TEST(Topology, ForcingTakesAnAnalogOutputOnly) {
  const Model digital = ParseShortForm("win7 intel: internal 1366x768 active, hdmi");
  std::vector<size_t> forced;
  EXPECT_FALSE(NamedTopology(digital, kTopologyClone, true, &forced).has_value());
  const Model analog = ParseShortForm("win7 intel: internal 1366x768 active, hdmi, crt");
  EXPECT_TRUE(NamedTopology(analog, kTopologyClone, true, &forced).has_value());
  EXPECT_EQ(forced, std::vector<size_t>{2});
}

TEST(Topology, OverlappingAndDistantDesktopsMoveToTheRight) {
  const Model model = ParseShortForm(
      "win7 intel*3: internal 1024x768 active, crt 1024x768 active, hdmi 800x600 active");
  Arrangement arrangement = CurrentArrangement(model);
  arrangement.sources[1].x = 10;    // overlaps the primary
  arrangement.sources[2].x = 9000;  // touches none
  PlaceDesktops(&arrangement, 0);
  EXPECT_EQ(arrangement.sources[1].x, 1024);
  EXPECT_EQ(arrangement.sources[2].x, 2048);
}

TEST(Topology, PlacingKeepsWhatTouches) {
  const Model model = ParseShortForm("win7 intel: internal 1024x768 active, crt 1024x768 active");
  Arrangement arrangement = CurrentArrangement(model);
  arrangement.sources[1].x = 0;
  arrangement.sources[1].y = -768;
  PlaceDesktops(&arrangement, 0);
  EXPECT_EQ(arrangement.sources[1].x, 0);
  EXPECT_EQ(arrangement.sources[1].y, -768);
}

TEST(Topology, KnownSetOfMonitorsComesBackWithItsArrangement) {
  Model model = ParseShortForm("win7 intel: internal 1366x768 active, crt 1024x768 active");
  const Monitor crt = *model.connectors[1].monitor;
  UnplugMonitor(model, 1);
  EXPECT_EQ(DescribeTopology(model), "single internal");
  PlugMonitor(model, 1, crt);
  EXPECT_EQ(DescribeTopology(model), "extend internal+crt");
}

TEST(Topology, UnknownSetStaysDarkUntilSomebodySwitches) {
  Model model = ParseShortForm("win7 intel: internal 1366x768 active, crt");
  PlugMonitor(model, 1, MakeMonitor("CRT", 1024, 768));
  EXPECT_EQ(DescribeTopology(model), "single internal");
  EXPECT_EQ(ConnectedIds(model).size(), 2u);
}

TEST(Topology, LosingTheLastDisplayTurnsToThePanel) {
  Model model = ParseShortForm("win7 intel: internal 1366x768, crt 1024x768 active");
  UnplugMonitor(model, 1);
  EXPECT_EQ(DescribeTopology(model), "single internal");
  EXPECT_EQ(model.sources[model.primary_source].mode.width, 1366u);
}

TEST(Topology, LosingThePrimaryMovesTheOriginToWhatIsLeft) {
  Model model = ParseShortForm("win7 intel: crt 1024x768 active, internal 1366x768 active");
  EXPECT_EQ(model.primary_source, 0u);
  UnplugMonitor(model, 0);
  EXPECT_EQ(DescribeTopology(model), "single internal");
  EXPECT_EQ(model.primary_source, 1u);
  EXPECT_EQ(model.sources[1].x, 0);
}

TEST(EdidMaker, BlockHasHeaderVersionChecksumNameAndTiming) {
  const std::vector<uint8_t> edid = MakeEdid("LP140WH2", {1366, 768, 32, 60});
  ASSERT_EQ(edid.size(), 128u);
  const std::vector<uint8_t> header(edid.begin(), edid.begin() + 8);
  EXPECT_EQ(header, (std::vector<uint8_t>{0, 255, 255, 255, 255, 255, 255, 0}));
  EXPECT_EQ(edid[18], 1);
  EXPECT_EQ(edid[24] & 2, 2);
  uint32_t sum = 0;
  for (uint8_t byte : edid) sum += byte;
  EXPECT_EQ(sum % 256, 0u);
  EXPECT_EQ((edid[58] >> 4) * 256 + edid[56], 1366);
  EXPECT_EQ((edid[61] >> 4) * 256 + edid[59], 768);
  EXPECT_EQ(std::string(edid.begin() + 72, edid.begin() + 77), std::string("\0\0\0\xFC\0", 5));
  EXPECT_EQ(std::string(edid.begin() + 77, edid.begin() + 86), "LP140WH2\n");
}

TEST(EdidMaker, RefreshRateSurvivesTruncation) {
  for (uint32_t frequency : {24U, 50U, 60U, 75U, 85U}) {
    for (uint32_t width : {640U, 1366U, 1920U}) {
      const uint32_t height = width / 2;
      const std::vector<uint8_t> e = MakeEdid("x", {width, height, 32, frequency});
      const double horizontal = width + (e[58] & 15) * 256 + e[57];
      const double vertical = height + (e[61] & 15) * 256 + e[60];
      const double clock = e[54] + e[55] * 256.0;
      EXPECT_NE(e[54], 0);
      EXPECT_EQ(static_cast<uint32_t>(clock * 10000 / (horizontal * vertical)), frequency) << width;
    }
  }
}

TEST(EdidMaker, NameOfThirteenCharactersHasNoLineFeed) {
  const std::vector<uint8_t> edid = MakeEdid("ABCDEFGHIJKLM", {800, 600, 32, 60});
  EXPECT_EQ(std::string(edid.begin() + 77, edid.begin() + 90), "ABCDEFGHIJKLM");
}

}  // namespace
}  // namespace sim
