// The simulated display library of AMD's driver: the display map, read and set.
#include <gtest/gtest.h>

#include <algorithm>

#include "sim/Topology.h"
#include "sim/faces/AmdDriver.h"
#include "sim/tests/AmdCalls.h"

namespace sim {
namespace {

constexpr char kTwo[] = "win7 amd: internal 1366x768 active, crt 1280x1024";
constexpr char kThree[] = "win7 amd*3: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080";
constexpr int kPanel = 1;
constexpr int kCrt = 0;
constexpr int kHdmi = 2;

// "[index WxH at x,y first+count value]" for each map, "display/adapter/map/value" for each target.
std::string Told(const std::pair<AdlList, AdlList>& lists) {
  std::string text;
  char part[96];
  for (int i = 0; i < lists.first.count; ++i) {
    const AmdBytes map = lists.first.Record(static_cast<size_t>(i), 80);
    std::snprintf(part, sizeof part, "[%u %ux%u at %d,%d %u+%u 0x%x]", map.At(0), map.At(32),
                  map.At(36), static_cast<int>(map.At(24)), static_cast<int>(map.At(28)),
                  map.At(68), map.At(64), map.At(76));
    text += part;
  }
  for (int i = 0; i < lists.second.count; ++i) {
    const AmdBytes target = lists.second.Record(static_cast<size_t>(i), 28);
    std::snprintf(part, sizeof part, " %u/%u/%u/%u", target.At(0), target.At(8), target.At(16),
                  target.At(24));
    text += part;
  }
  return text;
}

// --- Reading.

TEST(AmdAdlMaps, OneDesktopIsOneMapAndTwoOfThemTwo) {
  Machine single(kTwo);
  {
    const AdlClient adl;
    EXPECT_EQ(Told(adl.Maps(0)), "[0 1366x768 at 0,0 0+1 0x4] 1/0/0/1");
    EXPECT_EQ(Told(adl.Maps(1, 0)), "[0 1366x768 at 0,0 0+1 0x4] 1/0/0/1");  // the same GPU
  }
  Machine cloned("win7 amd: clone internal 1366x768 active, crt 1280x1024 active");
  {
    const AdlClient adl;
    EXPECT_EQ(Told(adl.Maps(0)), "[0 1280x720 at 0,0 0+2 0x8] 1/0/0/1 0/0/0/0");
  }
  Machine extended("win7 amd: internal 1366x768 active, crt 1280x1024 active");
  const AdlClient adl;
  EXPECT_EQ(Told(adl.Maps(0)),
            "[0 1366x768 at 0,0 0+1 0x4][1 1280x1024 at 1366,0 1+1 0x4] 1/0/0/1 0/1/1/1");
}

TEST(AmdAdlMaps, PrimaryDesktopComesFirst) {
  Machine machine("win7 amd: internal 1366x768 active, crt 1280x1024 active");
  machine.model().primary_source = 1;
  const AdlClient adl;
  EXPECT_EQ(Told(adl.Maps(0)),
            "[1 1280x1024 at 1366,0 0+1 0x4][0 1366x768 at 0,0 1+1 0x4] 0/1/1/1 1/0/0/1");
}

TEST(AmdAdlMaps, ModeOfAMapIsThatOfItsDesktop) {
  Machine machine("win7 amd: internal 1366x768, crt 1280x1024 active");
  machine.model().sources[0].orientation = 3;
  const AdlClient adl;
  const AmdBytes map = adl.Maps(0).first.bytes;
  EXPECT_EQ(map.At(4), 0u);                // adapter
  EXPECT_EQ(map.At(8), 0u);                // display
  EXPECT_EQ(map.At(12), 33u);              // its persistent number
  EXPECT_EQ(map.At(40), 32u);              // colour depth
  EXPECT_EQ(map.FloatAt(44), 60.0F);       // refresh rate
  EXPECT_EQ(map.At(48), 270u);             // degrees
  EXPECT_EQ(map.At(72) & map.At(76), 4u);  // the manner is among those that there are
}

TEST(AmdAdlMaps, MapIndexIsThatOfTheDesktopWithWindows) {
  Machine machine("win7 intel, amd: internal 1366x768 active, crt@2 1280x1024 active");
  const AdlClient adl;
  EXPECT_EQ(Told(adl.Maps(0)), "[2 1280x1024 at 1366,0 0+1 0x4] 0/0/2/1");
}

TEST(AmdAdlMaps, AdapterThatShowsNothingHasNoMap) {
  Machine machine("win7 intel, amd: internal 1366x768 active, crt@2 1280x1024");
  const AdlClient adl;
  const auto lists = adl.Maps(0);
  EXPECT_EQ(lists.first.result, 0);
  EXPECT_EQ(lists.first.count, 0);
  EXPECT_EQ(lists.second.count, 0);
  EXPECT_EQ(adl.Maps(9).first.result, -5);
}

TEST(AmdAdlMaps, AllAdaptersAreOneList) {
  Machine machine("win7 amd, amd: internal 1366x768 active, crt@2 1280x1024 active");
  const AdlClient adl;
  EXPECT_EQ(adl.Maps(0).first.count, 1);
  EXPECT_EQ(adl.Maps(2).first.count, 1);
  EXPECT_EQ(Told(adl.Maps(-1)),
            "[0 1366x768 at 0,0 0+1 0x4][2 1280x1024 at 1366,0 1+1 0x4] 1/0/0/1 0/2/2/1");
}

// --- Setting.

TEST(AmdAdlMaps, OneTargetMakesASingleDisplay) {
  Machine machine(kTwo);
  const AdlClient adl;
  EXPECT_EQ(adl.Set(0, {AdlMap(0, 1024, 768, 0, 1)}, {AdlTarget(kCrt)}), 0);
  EXPECT_EQ(machine.Topology(), "single crt");
  EXPECT_EQ(Now(kFirst), "1024x768x32@60 at 0,0");
  EXPECT_EQ(Query(QDC_DATABASE_CURRENT).topology, DISPLAYCONFIG_TOPOLOGY_EXTERNAL);
}

TEST(AmdAdlMaps, TwoTargetsOfOneMapMakeAClone) {
  Machine machine(kTwo);
  const AdlClient adl;
  EXPECT_EQ(adl.Set(1, {AdlMap(0, 1024, 768, 0, 2)}, {AdlTarget(kPanel), AdlTarget(kCrt)}), 0);
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
  EXPECT_EQ(Now(kFirst), "1024x768x32@60 at 0,0");
}

TEST(AmdAdlMaps, TwoMapsMakeAnExtendedDesktopWithThePlacesThatTheyTell) {
  Machine machine(kTwo);
  const AdlClient adl;
  EXPECT_EQ(adl.Set(0, {AdlMap(0, 1366, 768, 0, 1), AdlMap(1, 1280, 1024, 1, 1, -1280)},
                    {AdlTarget(kPanel, 0, 0), AdlTarget(kCrt, 1, 1)}),
            0);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
  EXPECT_EQ(Now(kFirst), "1366x768x32@60 at 0,0");
  EXPECT_EQ(Now(kSecond), "1280x1024x32@60 at -1280,0");
}

TEST(AmdAdlMaps, ThreeMapsAndThreeTargets) {
  Machine machine(kThree);
  const AdlClient adl;
  const std::vector<AmdBytes> targets = {AdlTarget(kPanel), AdlTarget(kCrt, 1),
                                         AdlTarget(kHdmi, 2)};
  EXPECT_EQ(adl.Set(0,
                    {AdlMap(0, 1366, 768, 0, 1), AdlMap(1, 1280, 1024, 1, 1, 1366),
                     AdlMap(2, 1920, 1080, 2, 1, 1280)},
                    targets),
            0);
  EXPECT_EQ(machine.Topology(), "extend internal+crt+hdmi");
  EXPECT_EQ(Now("\\\\.\\DISPLAY3"), "1920x1080x32@60 at 2646,0");  // 1280 would overlap
  EXPECT_EQ(adl.Set(0, {AdlMap(0, 1024, 768, 0, 3)}, targets), 0);
  EXPECT_EQ(machine.Topology(), "clone internal+crt+hdmi");
  EXPECT_EQ(adl.Set(0, {AdlMap(0, 1366, 768, 1, 2), AdlMap(1, 1366, 768, 0, 1, 1366)}, targets), 0);
  EXPECT_EQ(machine.Topology(), "extend internal+(crt+hdmi)");
}

TEST(AmdAdlMaps, SizeThatTheDisplaysDoNotListBecomesTheNearest) {
  Machine machine(kTwo);
  const AdlClient adl;
  EXPECT_EQ(adl.Set(0, {AdlMap(0, 1900, 800, 0, 1)}, {AdlTarget(kPanel)}), 0);
  EXPECT_EQ(Now(kFirst), "1366x768x32@60 at 0,0");
  EXPECT_EQ(adl.Set(0, {AdlMap(0, 320, 200, 0, 1)}, {AdlTarget(kPanel)}), 0);
  EXPECT_EQ(Now(kFirst), "1366x768x32@60 at 0,0");  // none is as small: the best
  EXPECT_EQ(adl.Set(0, {AdlMap(0, 800, 600, 0, 1).Set(40, 16)}, {AdlTarget(kPanel)}), 0);
  EXPECT_EQ(Now(kFirst), "800x600x16@60 at 0,0");
}

TEST(AmdAdlMaps, NearestSizeIsTheLargestThatFitsWhereverItIsListed) {
  Machine machine(kTwo);
  std::vector<DisplayMode>& modes = machine.model().connectors[0].monitor->modes;
  std::reverse(modes.begin(), modes.end());
  const AdlClient adl;
  EXPECT_EQ(adl.Set(0, {AdlMap(0, 1100, 768, 0, 1)}, {AdlTarget(kPanel)}), 0);
  EXPECT_EQ(Now(kFirst), "1024x768x32@60 at 0,0");
}

TEST(AmdAdlMaps, TurnedDesktop) {
  Machine machine(kTwo);
  const AdlClient adl;
  EXPECT_EQ(adl.Set(0, {AdlMap(0, 768, 1366, 0, 1).Set(48, 90)}, {AdlTarget(kPanel)}), 0);
  EXPECT_EQ(Now(kFirst), "768x1366x32@60 at 0,0");
  EXPECT_EQ(machine.model().sources[0].orientation, 1u);
}

TEST(AmdAdlMaps, OtherAdaptersKeepWhatTheyShow) {
  Machine machine(
      "win7 intel, amd: internal 1366x768 active, crt@2 1280x1024, hdmi@2 1920x1080 active");
  const AdlClient adl;
  EXPECT_EQ(adl.Set(1, {AdlMap(2, 1280, 1024, 0, 1, 1366)}, {AdlTarget(kCrt)}), 0);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
  EXPECT_EQ(machine.model().primary_source, 0u);
}

TEST(AmdAdlMaps, CallForAllAdaptersTakesThemFromTheTargets) {
  Machine machine("win7 amd, amd: internal 1366x768 active, crt@2 1280x1024");
  const AdlClient adl;
  EXPECT_EQ(adl.Set(-1, {AdlMap(0, 1366, 768, 0, 1), AdlMap(2, 1280, 1024, 1, 1, 1366)},
                    {AdlTarget(0, 0, 0), AdlTarget(0, 2, 3)}),
            -7);  // the panel is display 1
  EXPECT_EQ(adl.Set(-1, {AdlMap(0, 1366, 768, 0, 1), AdlMap(2, 1280, 1024, 1, 1, 1366)},
                    {AdlTarget(kPanel, 0, 0), AdlTarget(0, 2, 3)}),
            0);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
  EXPECT_EQ(adl.Set(-1, {AdlMap(0, 1024, 768, 0, 2)}, {AdlTarget(kPanel), AdlTarget(0, 0, 3)}),
            -3);  // no desktop is shown by two adapters
  EXPECT_EQ(adl.Set(-1, {AdlMap(0, 1024, 768, 0, 1)}, {AdlTarget(kPanel, 0, 9)}), -5);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
}

struct Refusal {
  const char* what;
  int adapter;
  std::vector<AmdBytes> maps;
  std::vector<AmdBytes> targets;
  int result;
};

TEST(AmdAdlMaps, ListsThatItRefusesChangeNothing) {
  const AmdBytes map = AdlMap(0, 1024, 768, 0, 1);
  const AmdBytes crt = AdlTarget(kCrt);
  const Refusal refusals[] = {
      {"adapter", 5, {map}, {crt}, -5},
      {"no target named", 0, {AdlMap(0, 1024, 768, 0, 0)}, {crt}, -3},
      {"target beyond the list", 0, {AdlMap(0, 1024, 768, 0, 2)}, {crt}, -3},
      {"first target below 0", 0, {AdlMap(0, 1024, 768, -1, 2)}, {crt}, -3},
      {"target of two maps", 0, {map, AdlMap(1, 1024, 768, 0, 1)}, {crt}, -3},
      {"one map index twice", 0, {map, AdlMap(0, 800, 600, 1, 1)}, {crt, AdlTarget(kPanel)}, -3},
      {"one display twice", 0, {AdlMap(0, 1024, 768, 0, 2)}, {crt, crt}, -3},
      {"no width", 0, {AdlMap(0, 0, 768, 0, 1)}, {crt}, -3},
      {"no height", 0, {AdlMap(0, 1024, 0, 0, 1)}, {crt}, -3},
      {"45 degrees", 0, {AdlMap(0, 1024, 768, 0, 1).Set(48, 45)}, {crt}, -3},
      {"360 degrees", 0, {AdlMap(0, 1024, 768, 0, 1).Set(48, 360)}, {crt}, -3},
      {"rate below 0", 0, {AdlMap(0, 1024, 768, 0, 1).SetFloat(44, -1.0F)}, {crt}, -3},
      {"display", 0, {map}, {AdlTarget(7)}, -7},
      {"nothing plugged in", 0, {map}, {AdlTarget(kHdmi)}, -1},
      {"three desktops of two",
       0,
       {map, AdlMap(1, 800, 600, 1, 1), AdlMap(2, 800, 600, 2, 1)},
       {crt, AdlTarget(kPanel), AdlTarget(3)},
       -1},
      {"three displays of two",
       0,
       {AdlMap(0, 1024, 768, 0, 3)},
       {crt, AdlTarget(kPanel), AdlTarget(3)},
       -1},
  };
  Machine machine("win7 amd: internal 1366x768 active, crt 1280x1024, hdmi, dp 1920x1080");
  const AdlClient adl;
  for (const Refusal& refusal : refusals) {
    EXPECT_EQ(adl.Set(refusal.adapter, refusal.maps, refusal.targets), refusal.result)
        << refusal.what;
    EXPECT_EQ(machine.Topology(), "single internal") << refusal.what;
  }
  EXPECT_EQ(Now(kFirst), "1366x768x32@60 at 0,0");
  AmdBytes some(80);
  EXPECT_EQ(adl.Call("ADL_Display_DisplayMapConfig_Set", 0, 0, some.data(), 1, some.data()), -3);
  EXPECT_EQ(adl.Call("ADL_Display_DisplayMapConfig_Set", 0, 1, some.data(), -1, some.data()), -3);
}

TEST(AmdAdlMaps, JournalHasEveryField) {
  Machine machine(kTwo);
  const AdlClient adl;
  AmdBytes map(80);
  for (size_t at = 0; at < 80; at += 4) map.Set(at, static_cast<uint32_t>(at + 1));
  map.SetFloat(44, 59.5F);
  AmdBytes target(28);
  for (size_t at = 0; at < 28; at += 4) target.Set(at, static_cast<uint32_t>(at + 101));
  EXPECT_EQ(adl.Set(0, {map}, {target, AdlTarget(kCrt)}), -3);
  EXPECT_EQ(machine.TakeJournal(),
            "ADL_Display_DisplayMapConfig_Set(adapter=0 maps=[1: 33x37x41@59.5 at 25,29 turn=49 "
            "adapter=5 id=9/13/17/21 flag=53 mode=0x39/0x3d targets=69+65 map=0x49/0x4d] "
            "targets=[101/105/109/113 map=117 mask=0x79 value=0x7d]"
            "[0/0/0/0 map=0 mask=0x1 value=0x1])=-3\n");
}

TEST(AmdAdlMaps, FaultChangesNothing) {
  Machine machine(kTwo);
  const AdlClient adl;
  machine.Fail("ADL_Display_DisplayMapConfig_Set", 1, 3);
  EXPECT_EQ(adl.Set(0, {AdlMap(0, 1024, 768, 0, 1)}, {AdlTarget(kCrt)}), 3);
  EXPECT_EQ(machine.Topology(), "single internal");
  machine.Fail("ADL_Display_DisplayMapConfig_Get", 1);
  EXPECT_EQ(adl.Maps(0).first.result, -1);
  EXPECT_EQ(machine.TakeJournal().substr(0, 49),
            "ADL_Display_DisplayMapConfig_Set(adapter=0 maps=[");
}

// --- One picture across several displays.

AmdSlsMap SideBySide() { return {1, 2, {"internal", "crt"}, {{2732, 768, 32, 60}}, {}, {}}; }

TEST(AmdAdlSls, GridsOfTheAdapter) {
  Machine machine("win7 amd, amd: internal 1366x768 active");
  machine.model().adapters[1].amd.sls_grids = {{1, 2}, {3, 1}};
  const AdlClient adl;
  int count = -77;
  void* array = nullptr;
  EXPECT_EQ(adl.Call("ADL_Display_SLSGrid_Caps", 0, &count, &array, 0), 0);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(array, nullptr);
  EXPECT_EQ(adl.Call("ADL_Display_SLSGrid_Caps", 2, &count, &array, 1), 0);
  const AdlList list = AdlClient::Take(0, count, array, 24);
  ASSERT_EQ(list.count, 2);
  EXPECT_EQ(list.bytes.At(24), 2u);      // adapter
  EXPECT_EQ(list.bytes.At(24 + 4), 1u);  // grid
  EXPECT_EQ(list.bytes.At(24 + 8), 3u);  // rows
  EXPECT_EQ(list.bytes.At(24 + 12), 1u);
  SetAmdAnswer(machine, "ADL_Display_SLSGrid_Caps", 0);
  array = nullptr;
  EXPECT_EQ(adl.Call("ADL_Display_SLSGrid_Caps", 2, &count, &array, 2), 0);
  EXPECT_EQ(count, 0);
  AmdFree(array);
  EXPECT_EQ(adl.Call("ADL_Display_SLSGrid_Caps", 2, &count, &array, 3), -3);
}

TEST(AmdAdlSls, MapIsFoundByItsDisplaysInAnyOrder) {
  Machine machine(kThree);
  machine.model().adapters[0].amd.sls_maps = {{1, 2, {"internal", "hdmi"}, {}, {}, {}},
                                              SideBySide()};
  const AdlClient adl;
  const auto find = [&adl](const std::vector<AmdBytes>& targets) {
    AmdBytes all = Joined(targets);
    int index = -77;
    const int result = adl.Call("ADL_Display_SLSMapIndex_Get", 0, static_cast<int>(targets.size()),
                                all.data(), &index);
    return std::make_pair(result, index);
  };
  EXPECT_EQ(find({AdlTarget(kPanel), AdlTarget(kCrt)}), std::make_pair(0, 4));
  EXPECT_EQ(find({AdlTarget(kCrt), AdlTarget(kPanel)}), std::make_pair(0, 4));
  EXPECT_EQ(find({AdlTarget(kHdmi), AdlTarget(kPanel)}), std::make_pair(0, 3));
  EXPECT_EQ(find({AdlTarget(kHdmi), AdlTarget(kCrt)}), std::make_pair(-1, -77));
  EXPECT_EQ(find({AdlTarget(8), AdlTarget(kCrt)}), std::make_pair(-7, -77));
}

TEST(AmdAdlSls, MapComesWithItsTargetsAndModes) {
  Machine machine(kTwo);
  AmdSlsMap map = SideBySide();
  map.bezel = {{2800, 768, 32, 60}, {2700, 700, 32, 60}};
  map.transient = {{2600, 600, 32, 60}};
  machine.model().adapters[0].amd.sls_maps = {map};
  const AdlClient adl;
  const std::string before = machine.Outstanding();
  AmdBytes record(80);
  int counts[5] = {-77, -77, -77, -77, -77};
  void* arrays[5] = {};
  const auto get = [&](int index, int option) {
    return adl.Call("ADL_Display_SLSMapConfig_Get", 0, index, record.data(), &counts[0], &arrays[0],
                    &counts[1], &arrays[1], &counts[2], &arrays[2], &counts[3], &arrays[3],
                    &counts[4], &arrays[4], option);
  };
  EXPECT_EQ(get(2, 2), -3);
  EXPECT_EQ(get(4, 2), -3);
  EXPECT_EQ(get(3, 3), -3);
  EXPECT_EQ(get(3, 0), -3);
  EXPECT_EQ(counts[0], -77);
  ASSERT_EQ(get(3, 2), 0);
  EXPECT_EQ(record.At(4), 3u);
  EXPECT_EQ(record.At(16), 1u);  // rows
  EXPECT_EQ(record.At(20), 2u);  // columns
  EXPECT_EQ(record.At(40), 2u);  // targets
  EXPECT_EQ(record.At(48), 1u);  // native modes
  EXPECT_EQ(record.At(56), 2u);  // bezel modes
  const size_t sizes[5] = {112, 80, 88, 88, 52};
  std::vector<AdlList> lists;
  for (size_t i = 0; i < 5; ++i) {
    lists.push_back(AdlClient::Take(0, counts[i], arrays[i], sizes[i]));
  }
  EXPECT_EQ(machine.Outstanding(), before);
  ASSERT_EQ(lists[0].count, 2);
  EXPECT_EQ(lists[0].bytes.At(8), 1u);         // the panel
  EXPECT_EQ(lists[0].bytes.At(112 + 8), 0u);   // the CRT
  EXPECT_EQ(lists[0].bytes.At(112 + 36), 1u);  // in the second column
  ASSERT_EQ(lists[1].count, 1);
  EXPECT_EQ(lists[1].bytes.At(40), 2732u);
  EXPECT_EQ(lists[1].bytes.At(44), 768u);
  ASSERT_EQ(lists[2].count, 2);
  EXPECT_EQ(lists[2].bytes.At(88 + 40), 2700u);
  ASSERT_EQ(lists[3].count, 1);
  EXPECT_EQ(lists[3].bytes.At(44), 600u);
  EXPECT_EQ(lists[4].count, 0);
}

TEST(AmdAdlSls, ShownMapIsOneDesktopOfTheWholeSize) {
  Machine machine(kTwo);
  machine.model().adapters[0].amd.sls_maps = {SideBySide()};
  ShowAmdSls(machine, 0, 0);
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
  EXPECT_EQ(Now(kFirst), "2732x768x32@60 at 0,0");
  const AdlClient adl;
  EXPECT_EQ(adl.Modes(0, kCrt).bytes.At(28), 2732u);
  EXPECT_EQ(Told(adl.Maps(0)), "[0 2732x768 at 0,0 0+2 0x8] 1/0/0/1 0/0/0/0");
}

}  // namespace
}  // namespace sim
