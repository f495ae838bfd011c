// Every word that a switch writes, over a map in which every word is another before; and what
// stays.
#include "sim/faces/AmdAdl.h"
#include "tests/behaviour/ADLImplHost.h"

namespace {

constexpr char kMapGet[] = "ADL_Display_DisplayMapConfig_Get";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kThreeDisplays = kNb | kCrt | IMMonitor::MD_HDMI;

// --- The map.

constexpr int kOddIndex = 6;

ADLDisplayMap OddMap() {
  ADLDisplayMap map = {};
  map.iDisplayMapIndex = kOddIndex;
  map.displayMode.displayID = {1, 32, 0, 16};
  map.displayMode.iXPos = 5;
  map.displayMode.iYPos = 200;
  map.displayMode.iXRes = 800;
  map.displayMode.iYRes = 600;
  map.displayMode.iColourDepth = 16;
  map.displayMode.fRefreshRate = 75.0F;
  map.displayMode.iModeMask = 2;
  map.iNumDisplayTarget = 2;
  map.iFirstDisplayTargetArrayIndex = 3;
  map.iDisplayMapMask = 0x6E;
  map.iDisplayMapValue = 4;
  return map;
}

int OddMapGet(int, int* map_count, ADLDisplayMap** maps, int* target_count,
              ADLDisplayTarget** targets, int) {
  *map_count = 1;
  *maps = static_cast<ADLDisplayMap*>(sim::NewAdlArray(1, sizeof(ADLDisplayMap)));
  **maps = OddMap();
  *target_count = 1;
  *targets = static_cast<ADLDisplayTarget*>(sim::NewAdlArray(1, sizeof(ADLDisplayTarget)));
  **targets = {{1, 32, 0, 16}, kOddIndex, 5, 4};
  return 0;
}

struct OddHost : AdlHost {
  explicit OddHost(const std::string& text) : AdlHost(text) {
    ReplaceAdlEntry(&machine, kMapGet, sim::Erase(OddMapGet));
  }
};

/// A map of the odd one's place; the size of all displays and the top left corner otherwise.
AdlMapText OddText(int count = 1) {
  AdlMapText map;
  map.index = kOddIndex;
  map.count = count;
  return map;
}

// --- One map.

TEST(ADLImplFields, SingleWritesThemAll) {
  OddHost host(kAdlTwo);
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kCrt),
            AdlSetText(OddText().Text(), AdlTargetText("0/32/0/16")) + "1");
}

TEST(ADLImplFields, CloneWritesThemAll) {
  OddHost host(kAdlTwo);
  EXPECT_EQ(
      host.Switch(IMMonitor::DM_CLONE, kNb | kCrt),
      AdlSetText(OddText(2).Text(), AdlTargetText("1/32/0/16") + AdlTargetText("0/32/0/16")) + "1");
}

TEST(ADLImplFields, TripleCloneWritesThemAll) {
  OddHost host(kAdlThree);
  EXPECT_EQ(host.Switch(IMMonitor::DM_TRIPLE_CLONE, kThreeDisplays),
            AdlSetText(OddText(3).Text(), AdlTargetText("1/32/0/16") + AdlTargetText("0/32/0/16") +
                                              AdlTargetText("2/32/0/16")) +
                "1");
}

TEST(ADLImplFields, BetweenTwoGpusTheTargetKeepsItsMapAndIsCleared) {
  OddHost host("win7 amd, intel: internal 1366x768 active, crt 1280x1024");
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kCrt),
            AdlSetText(OddText().Text(), AdlTargetText("0/32/0/16", kOddIndex, 0, 0)) + "1");
}

// --- Several maps.

TEST(ADLImplFields, TripleExtendWritesNeitherTheFirstPlaceNorTheRows) {
  OddHost host(kAdlThree);
  std::string maps;
  const char* const sizes[] = {"1366x768", "1280x1024", "1920x1080"};
  const int places[] = {5, 1366, 1280};
  for (int i = 0; i < 3; ++i) {
    AdlMapText map;
    map.index = i;
    map.first = i;
    map.mode = std::string(sizes[i]) + "x32@60";
    map.x = places[i];
    map.y = 200;
    map.adapter = i;
    maps += map.Text();
  }
  EXPECT_EQ(
      host.Switch(IMMonitor::DM_TRIPLE_EXTEND, kThreeDisplays),
      AdlSetText(maps, AdlTargetText("1/32/0/16", 6, 5, 4) + AdlTargetText("0/32/1/17", 7, 5, 4) +
                           AdlTargetText("2/32/2/18", 8, 5, 4)) +
          "1");
}

// Where the first map's targets begin stays as the library said, too, which then refuses its own
// word: the list that is sent has no fourth target.
TEST(ADLImplFields, ExtendKeepsThePlaceAndTheFirstTargetOfTheFirstMap) {
  OddHost host(kAdlTwo);
  AdlMapText first = OddText();
  first.mode = "1366x768x32@60";
  first.x = 5;
  first.y = 200;
  first.first = 3;
  AdlMapText second = OddText();
  second.index = kOddIndex + 1;
  second.mode = "1280x1024x32@60";
  second.x = 1366;
  second.y = 200;
  second.first = 1;
  const std::string set =
      AdlSetText(first.Text() + second.Text(),
                 AdlTargetText("1/32/0/16") + AdlTargetText("0/32/1/17", kOddIndex + 1), -3);
  EXPECT_EQ(host.ExtendOn(TRUE, kCrt), set + set + "0");
}

}  // namespace
