// Placing one display device: the attempts, their flags and fields, and what is stored in the end.
#include <gtest/gtest.h>

#include "tests/behaviour/HybridHost.h"

namespace {

constexpr char kChange[] = "ChangeDisplaySettingsExA";
constexpr char kStored[] = "EnumDisplaySettingsA(\\\\.\\DISPLAY1 -2)=1\n";

using PlaceFunction = void (*)(uint32_t width, uint32_t height, DEVMODEA* dm, const char* device,
                               bool primary);

struct Case {
  const char* name;
  bool with_size;
  bool primary;
  const char* first_fields;
};

/// One call on DISPLAY1, "1366x768x32@60 at 100,7 fields=0x20", as the journal has it.
std::string Change(const std::string& record, bool test, bool primary, int result = 0) {
  const uint32_t flags = 0x10000001u + (test ? 2 : 0) + (primary ? 0x10 : 0);
  return std::string(kChange) + "(\\\\.\\DISPLAY1 " + record + " flags=" + Hex(flags) +
         ")=" + std::to_string(result) + "\n";
}

class HybridPlacing : public testing::TestWithParam<Case> {
 protected:
  HybridPlacing() : host("win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080") {
    host.hybrid();
    host.Forget();
    dm.dmSize = sizeof(dm);
    dm.dmFields = 0x5C0020;
    dm.dmPosition.x = 100;
    dm.dmPosition.y = 7;
    dm.dmPelsWidth = 640;
    dm.dmPelsHeight = 480;
    dm.dmBitsPerPel = 16;
    dm.dmDisplayFrequency = 60;
  }

  /// 1024 by 768 on DISPLAY1.
  std::string Place() {
    const PlaceFunction place =
        GetParam().with_size ? host.box().PlaceDisplayWithSize : host.box().PlaceDisplay;
    place(1024, 768, &dm, "\\\\.\\DISPLAY1", GetParam().primary);
    return host.Told();
  }
  std::string First(int result = 0) const {
    return Change("1024x768x16@60 at 100,7 fields=" + std::string(GetParam().first_fields), true,
                  GetParam().primary, result);
  }
  std::string Second(int result = 0) const {
    return Change("1024x768x16@60 at 100,7 fields=0x5c0020", true, GetParam().primary, result);
  }

  HybridHost host;
  DEVMODEA dm = {};
};

TEST_P(HybridPlacing, FirstAttemptIsStored) {
  EXPECT_EQ(Place(), First() + Change("1024x768x16@60 at 100,7 fields=" +
                                          std::string(GetParam().first_fields),
                                      false, GetParam().primary));
  EXPECT_EQ(Hex(dm.dmFields), GetParam().first_fields);  // left as they were last
  EXPECT_EQ(dm.dmPelsWidth, 1024u);
  EXPECT_EQ(dm.dmPelsHeight, 768u);
}

TEST_P(HybridPlacing, SecondAttemptHasTheFieldsOfTheRecord) {
  host.machine.Fail(kChange, 1, static_cast<uint32_t>(DISP_CHANGE_BADMODE));
  EXPECT_EQ(Place(),
            First(-2) + Second() +
                Change("1024x768x16@60 at 100,7 fields=0x5c0020", false, GetParam().primary));
  EXPECT_EQ(dm.dmFields, 0x5C0020u);
}

TEST_P(HybridPlacing, PositiveResultIsARefusal) {
  host.machine.Fail(kChange, 1, static_cast<uint32_t>(DISP_CHANGE_RESTART));
  EXPECT_EQ(Place(),
            First(1) + Second() +
                Change("1024x768x16@60 at 100,7 fields=0x5c0020", false, GetParam().primary));
}

// 0x7c00a0 is what Windows tells of a device, orientation and flags included.
TEST_P(HybridPlacing, ThirdAttemptHasTheStoredSettingsAtTheSameX) {
  host.machine.Fail(kChange, 1);
  host.machine.Fail(kChange, 2);
  const std::string stored = "1366x768x32@60 at 100,0 fields=0x7c00a0";
  EXPECT_EQ(Place(), First(-1) + Second(-1) + kStored + Change(stored, true, GetParam().primary) +
                         Change(stored, false, GetParam().primary));
  EXPECT_EQ(dm.dmPosition.x, 100);
  EXPECT_EQ(dm.dmPelsWidth, 1366u);
}

TEST_P(HybridPlacing, IsStoredAfterThreeRefusals) {
  host.machine.Fail(kChange, 1, 0, sim::Machine::Repeat::kFromThenOn);
  const std::string stored = "1366x768x32@60 at 100,0 fields=0x7c00a0";
  EXPECT_EQ(Place(), First(-1) + Second(-1) + kStored +
                         Change(stored, true, GetParam().primary, -1) +
                         Change(stored, false, GetParam().primary, -1));
}

TEST_P(HybridPlacing, DeviceWithoutStoredSettingsIsTriedWithNone) {
  host.machine.Fail(kChange, 1);
  host.machine.Fail(kChange, 2);
  host.machine.Fail("EnumDisplaySettingsA", 1);
  const std::string told = Place();
  EXPECT_NE(told.find("EnumDisplaySettingsA(\\\\.\\DISPLAY1 -2)=0\n"), std::string::npos) << told;
  const std::string none = "0x0x0@0 at 100,0 fields=0x5c0020";
  EXPECT_NE(told.find(Change(none, true, GetParam().primary)), std::string::npos) << told;
  EXPECT_NE(told.find(Change(none, false, GetParam().primary)), std::string::npos) << told;
  EXPECT_EQ(dm.dmSize, sizeof(dm));
}

// Nothing takes effect before the commit.
TEST_P(HybridPlacing, ChangesNothingYet) {
  const std::string before = host.machine.Topology();
  Place();
  EXPECT_EQ(host.machine.Topology(), before);
  EXPECT_EQ(host.machine.model().sources[0].mode.width, 1366u);
  EXPECT_TRUE(host.machine.model().sources[0].staged.has_value());
}

INSTANTIATE_TEST_SUITE_P(Functions, HybridPlacing,
                         testing::Values(Case{"Place", false, false, "0x20"},
                                         Case{"PlacePrimary", false, true, "0x20"},
                                         Case{"PlaceWithSize", true, false, "0x180020"},
                                         Case{"PlaceWithSizePrimary", true, true, "0x180020"}),
                         [](const testing::TestParamInfo<Case>& info) { return info.param.name; });

}  // namespace
