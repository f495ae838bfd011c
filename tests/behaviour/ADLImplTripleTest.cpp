// Three displays through ADLImpl: the exact lists, clone and extended.
#include "tests/behaviour/ADLImplHost.h"
#include "tests/support/EdidBlock.h"

namespace {

constexpr char kMapSet[] = "ADL_Display_DisplayMapConfig_Set";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kDvi = IMMonitor::MD_DVI;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;
constexpr uint32_t kDp = IMMonitor::MD_DP;
constexpr uint32_t kThreeDisplays = kNb | kCrt | kHdmi;
constexpr uint32_t kTripleClone = IMMonitor::DM_TRIPLE_CLONE;
constexpr uint32_t kTripleExtend = IMMonitor::DM_TRIPLE_EXTEND;

/// The CRT's desktop is the primary one: the library's first map has index 1.
constexpr char kThreeOne[] =
    "win7 amd*3: internal 1366x768 active, crt 1280x1024 active, hdmi "
    "1920x1080";
/// Logical indices 1, 0, 2, 3, 4.
constexpr char kFive[] =
    "win7 amd*3: internal 1366x768 active, dp 1024x768, hdmi 1024x768, dvi "
    "1024x768, crt 1024x768";

/// The logical indices of the targets of the last set, in order.
std::string Targets(const std::string& journal) {
  const std::string list = journal.substr(journal.find("] targets=") + 10);
  std::string indices;
  for (size_t at = list.find('['); at != std::string::npos; at = list.find('[', at + 1)) {
    indices += list[at + 1];
    if (list.compare(at + 2, 1, "/") != 0) break;
  }
  return indices.substr(0, 3);
}

// --- Clone.

TEST(ADLImplTripleClone, IsThreeTargetsOfOneMap) {
  AdlHost host(kAdlThree);
  AdlMapText map;
  map.count = 3;
  EXPECT_EQ(host.Switch(kTripleClone, kThreeDisplays),
            AdlSetText(map.Text(), AdlTargetText("1/32/0/16") + AdlTargetText("0/32/0/16") +
                                       AdlTargetText("2/32/0/16")) +
                "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt+hdmi");
  EXPECT_EQ(host.adl().ShouldResetDisplaySettingAfterSwtich(), 1);
}

TEST(ADLImplTripleClone, TemplateGoesByTheAdapters) {
  for (const bool powerxpress : {false, true}) {
    AdlHost host(kThreeOne);
    host.model().primary_source = 1;
    if (powerxpress) host.driver().powerxpress = 4;
    const int index = powerxpress ? 1 : 0;
    const int word = powerxpress ? 0 : 1;
    AdlMapText map;
    map.index = 1;
    map.count = 3;
    map.adapter = 1;
    map.mode_adapter = 1;
    map.display = "0/33";
    EXPECT_EQ(host.Switch(kTripleClone, kThreeDisplays),
              AdlSetText(map.Text(), AdlTargetText("1/33/1/16", index, word, word) +
                                         AdlTargetText("0/33/1/16", index, word, word) +
                                         AdlTargetText("2/33/1/16", index, word, word)) +
                  "1");
  }
}

TEST(ADLImplTripleClone, CandidatesAreTriedInOrder) {
  const struct {
    uint32_t displays;
    const char* targets;
  } rows[] = {
      {0x3F, "143"},
      {kCrt | kHdmi | kDp, "142"},
      {kDvi | kHdmi | kDp, "132"},
      {kHdmi | kDp, "120"},
      {kNb | kCrt | kDp, "140"},
      // Targets that nobody fills stay plain copies.
      {kNb | kHdmi, "121"},
      {kNb, "111"},
      {kNb | IMMonitor::MD_TV | kDp, "101"},
      {0, "111"},
  };
  for (const auto& row : rows) {
    AdlHost host(kFive);
    EXPECT_EQ(Targets(host.Switch(kTripleClone, row.displays)), row.targets) << row.displays;
  }
}

TEST(ADLImplTripleClone, NegativeResultIsTriedAgainAndLogged) {
  AdlHost host(kAdlThree);
  host.Ready();
  host.machine.Fail(kMapSet, 1, AdlResultCode(-1));
  EXPECT_TRUE(host.adl().SetNewDisplayMode(kTripleClone, kThreeDisplays));
  EXPECT_EQ(host.TakeLogWithSeverity(), kAdlActiveLine);
  host.machine.Fail(kMapSet, 1, AdlResultCode(-1));
  host.machine.Fail(kMapSet, 2, AdlResultCode(-2));
  EXPECT_FALSE(host.adl().SetNewDisplayMode(kTripleClone, kThreeDisplays));
  EXPECT_EQ(
      host.TakeLogWithSeverity(),
      std::string(kAdlActiveLine) + "ERROR Call to ADL_Display_DisplayMapConfig_Set() rv = -2\n");
}

// --- Extended.

AdlMapText DesktopText(int place, const std::string& size, int x) {
  AdlMapText map;
  map.index = place;
  map.first = place;
  map.mode = size + "x32@60";
  map.x = x;
  map.adapter = place;
  return map;
}

std::string ThreeDesktops(const std::string& panel = "1366x768",
                          const std::string& crt = "1280x1024",
                          const std::string& hdmi = "1920x1080", int second_x = 1366,
                          int third_x = 1280) {
  return DesktopText(0, panel, 0).Text() + DesktopText(1, crt, second_x).Text() +
         DesktopText(2, hdmi, third_x).Text();
}

std::string ThreeTargets() {
  return AdlTargetText("1/32/0/16") + AdlTargetText("0/32/1/17", 1) + AdlTargetText("2/32/2/18", 2);
}

TEST(ADLImplTripleExtend, IsThreeMapsAndThreeTargets) {
  AdlHost host(kAdlThree);
  EXPECT_EQ(host.Switch(kTripleExtend, kThreeDisplays),
            AdlSetText(ThreeDesktops(), ThreeTargets()) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt+hdmi");
  EXPECT_EQ(host.Held(), "ADL buffer\nADL session\n");
}

TEST(ADLImplTripleExtend, FirstMapAndTargetKeepWhatTheLibrarySaid) {
  for (const char* adapters : {"amd*3", "amd*3, intel"}) {
    AdlHost host("win7 " + std::string(adapters) +
                 ": internal 1366x768 active, crt 1280x1024 active, hdmi 1920x1080");
    host.model().primary_source = 1;
    std::string maps;
    const char* const sizes[] = {"1366x768", "1280x1024", "1920x1080"};
    const int places[] = {1366, 1366, 1280};  // the first one's is the library's own
    for (int i = 0; i < 3; ++i) {
      AdlMapText map = DesktopText(i, sizes[i], places[i]);
      map.display = "0/33";
      map.mode_adapter = 1;
      maps += map.Text();
    }
    EXPECT_EQ(host.Switch(kTripleExtend, kThreeDisplays),
              AdlSetText(maps, AdlTargetText("1/33/0/16", 1) + AdlTargetText("0/33/1/17", 2) +
                                   AdlTargetText("2/33/2/18", 3)) +
                  "1");
  }
}

TEST(ADLImplTripleExtend, GoesOnFromAClone) {
  AdlHost host("win7 amd*3: clone internal 1366x768 active, crt 1280x1024 active, hdmi 1920x1080");
  std::string maps;
  const char* const sizes[] = {"1366x768", "1280x1024", "1920x1080"};
  const int places[] = {0, 1366, 1280};
  for (int i = 0; i < 3; ++i) {
    AdlMapText map = DesktopText(i, sizes[i], places[i]);
    map.kind = "0x8";  // as the library gave it, with two targets
    maps += map.Text();
  }
  EXPECT_EQ(host.Switch(kTripleExtend, kThreeDisplays), AdlSetText(maps, ThreeTargets()) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt+hdmi");
}

// The panel's EDID is read behind its target and before its map: a recovery in there that finds
// another adapter in charge shows in the map, and in the call.
TEST(ADLImplTripleExtend, FirstMapHasTheAdapterThatIsInChargeBehindTheEdid) {
  AdlHost host(kThreeOne);
  host.Ready();
  host.machine.Fail("ADL_Display_DisplayInfo_Get", 1);
  host.machine.Fail("ADL_Adapter_Active_Get", 1);
  EXPECT_TRUE(host.adl().SetNewDisplayMode(kTripleExtend, kThreeDisplays));
  std::string maps;
  const char* const sizes[] = {"1366x768", "1280x1024", "1920x1080"};
  const int places[] = {0, 1366, 1280};
  for (int i = 0; i < 3; ++i) {
    AdlMapText map = DesktopText(i, sizes[i], places[i]);
    map.adapter = 1 + i;
    maps += map.Text();
  }
  EXPECT_EQ(host.machine.TakeJournal(), AdlSetText(maps, ThreeTargets(), 0, 1));
}

TEST(ADLImplTripleExtend, AdapterOfTheFirstIsItsPosition) {
  AdlHost host(kAdlThree);
  host.driver().adl_indices = {2, 0, 1};  // position 2 is in charge, its index is 1
  std::string maps;
  const char* const sizes[] = {"1366x768", "1280x1024", "1920x1080"};
  const int places[] = {0, 1366, 1280};
  for (int i = 0; i < 3; ++i) {
    AdlMapText map = DesktopText(i, sizes[i], places[i]);
    map.adapter = 2 + i;
    map.mode_adapter = 2;
    maps += map.Text();
  }
  EXPECT_EQ(host.Switch(kTripleExtend, kThreeDisplays),
            AdlSetText(maps,
                       AdlTargetText("1/32/2/16") + AdlTargetText("0/32/3/17", 1) +
                           AdlTargetText("2/32/4/18", 2),
                       0, 1) +
                "1");
}

TEST(ADLImplTripleExtend, CandidatesAreTriedInOrder) {
  const struct {
    uint32_t displays;
    const char* targets;
  } rows[] = {{0x3F, "143"},         {kDvi | kHdmi | kDp, "132"}, {kHdmi | kDp, "120"},
              {kCrt | kHdmi, "142"}, {kNb | kDp, "101"},          {kNb, "111"}};
  for (const auto& row : rows) {
    AdlHost host(kFive);
    EXPECT_EQ(Targets(host.Switch(kTripleExtend, row.displays)), row.targets) << row.displays;
  }
}

TEST(ADLImplTripleExtend, SlotThatNobodyFillsStaysACopy) {
  AdlHost host(kAdlThree);
  AdlMapText copy;
  copy.mode = "1366x768x32@60";
  const std::string set = AdlSetText(
      DesktopText(0, "1366x768", 0).Text() + DesktopText(1, "1280x1024", 1366).Text() + copy.Text(),
      AdlTargetText("1/32/0/16") + AdlTargetText("0/32/1/17", 1) + AdlTargetText("1/32/0/16"), -3);
  EXPECT_EQ(host.Switch(kTripleExtend, kNb | kCrt), set + set + "0");
}

TEST(ADLImplTripleExtend, UnreadableEdidGivesTheUsualSize) {
  AdlHost host(kAdlThree);
  host.Ready();
  host.model().connectors[1].monitor->edid.clear();
  host.model().connectors[2].monitor->edid = EdidBlock().Spoil().bytes();
  EXPECT_TRUE(host.adl().SetNewDisplayMode(kTripleExtend, kThreeDisplays));
  EXPECT_EQ(
      host.machine.TakeJournal(),
      AdlSetText(ThreeDesktops("1366x768", "1024x768", "1024x768", 1366, 1024), ThreeTargets()));
  EXPECT_EQ(CountOf(host.TakeLog(), "Call to ADL_Display_EdidData_Get() failed, rv = -1"), 1u);
  EXPECT_EQ(host.Held(), "ADL buffer\nADL session\n");
}

TEST(ADLImplTripleExtend, MonitorWithoutAPreferredTimingHasNoSize) {
  AdlHost host(kAdlThree);
  host.Ready();
  EdidBlock block;
  block.PanelTiming(false);
  host.model().connectors[2].monitor->edid = block.Sum().bytes();
  EXPECT_FALSE(host.adl().SetNewDisplayMode(kTripleExtend, kThreeDisplays));
  const std::string set =
      AdlSetText(ThreeDesktops("1366x768", "1280x1024", "0x0"), ThreeTargets(), -3);
  EXPECT_EQ(host.machine.TakeJournal(), set + set);
}

TEST(ADLImplTripleExtend, AnyFailureIsTriedAgain) {
  for (const int32_t first : {-1, 1, 3}) {
    AdlHost host(kAdlThree);
    host.Ready();
    host.machine.Fail(kMapSet, 1, AdlResultCode(first));
    const std::string calls = host.Calls(
        [&] { EXPECT_TRUE(host.adl().SetNewDisplayMode(kTripleExtend, kThreeDisplays)); });
    const std::string end = AdlSetText(ThreeDesktops(), ThreeTargets(), first) +
                            AdlReloadText(3 * 1572) + AdlSetText(ThreeDesktops(), ThreeTargets());
    ASSERT_GT(calls.size(), end.size());
    EXPECT_EQ(calls.substr(calls.size() - end.size()), end);
    EXPECT_EQ(host.TakeLogWithSeverity(), kAdlActiveLine);
    EXPECT_EQ(host.adl().ShouldResetDisplaySettingAfterSwtich(), 0);
  }
}

TEST(ADLImplTripleExtend, SecondFailureIsLogged) {
  for (const int32_t second : {-2, 1}) {
    AdlHost host(kAdlThree);
    host.Ready();
    host.machine.Fail(kMapSet, 1, AdlResultCode(-1));
    host.machine.Fail(kMapSet, 2, AdlResultCode(second));
    EXPECT_FALSE(host.adl().SetNewDisplayMode(kTripleExtend, kThreeDisplays));
    EXPECT_EQ(host.TakeLogWithSeverity(),
              kAdlActiveLine +
                  ("ERROR Call to ADL_Display_DisplayMapConfig_Set() failed, rv = " +
                   std::to_string(second)) +
                  "\n");
    EXPECT_EQ(host.adl().ShouldResetDisplaySettingAfterSwtich(), 1);
  }
}

TEST(ADLImplTripleExtend, LeavesTheResetOutOnce) {
  AdlHost host(kAdlThree);
  EXPECT_EQ(host.adl().ShouldResetDisplaySettingAfterSwtich(), 1);
  host.Switch(kTripleExtend, kThreeDisplays);
  EXPECT_EQ(host.adl().ShouldResetDisplaySettingAfterSwtich(), 0);
  EXPECT_EQ(host.adl().ShouldResetDisplaySettingAfterSwtich(), 1);
}

}  // namespace
