// One pass of each arrangement over both adapters, for every set of connected and of wanted
// displays.
#include <gtest/gtest.h>

#include "tests/behaviour/HybridCourse.h"

namespace {

struct Sets {
  uint32_t connected;
  uint32_t wanted;
};

std::vector<Sets> AllSets() {
  std::vector<Sets> all;
  for (uint32_t bits = 0; bits < 64; ++bits) {
    Sets sets = {kNb, kNb};
    const uint32_t displays[] = {kCrt, kHdmi, kDp};
    for (uint32_t i = 0; i < 3; ++i) {
      if ((bits & 1u << i) != 0) sets.connected |= displays[i];
      if ((bits & 8u << i) != 0) sets.wanted |= displays[i];
    }
    all.push_back(sets);
  }
  return all;
}

/// Unplugs what is not connected.
void Unplug(uint32_t connected, sim::Machine* machine) {
  if ((connected & kCrt) == 0) machine->Unplug("crt");
  if ((connected & kHdmi) == 0) machine->Unplug("hdmi");
  if ((connected & kDp) == 0) machine->Unplug("dp");
}

std::string NameOf(const testing::TestParamInfo<Sets>& info) {
  const auto named = [](uint32_t displays) {
    std::string name = "Panel";
    if ((displays & kCrt) != 0) name += "Crt";
    if ((displays & kHdmi) != 0) name += "Hdmi";
    if ((displays & kDp) != 0) name += "Dp";
    return name;
  };
  return named(info.param.connected) + "_" + named(info.param.wanted);
}

// --- Side by side.

class HybridSideBySide : public testing::TestWithParam<Sets> {
 protected:
  // One pass over the devices. `connected` and `wanted` as the parameter has them.
  static std::string Pass(bool with_size) {
    const auto [connected, wanted] = GetParam();
    const auto both = [connected = connected, wanted = wanted](uint32_t display) {
      return (connected & wanted & display) != 0;
    };
    Course course;
    course.text = std::string(kDevices) + kCurrent;
    course.Primary(1, with_size);
    if (both(kCrt)) course.Next(2, kCrt, 1280, 1024);
    course.text += kDevices;
    const bool hdmi = (connected & kHdmi) != 0;
    const bool dp = (connected & kDp) != 0;
    if (both(kDp)) course.Next(3, kDp, 1600, 900, with_size);
    if (both(kHdmi) && dp) course.Next(4, kHdmi, 1920, 1080);
    if (both(kHdmi) && hdmi && !dp) course.Next(3, kHdmi, 1920, 1080, with_size);
    return course.text + kCommit;
  }
  static std::string Before() {
    const uint32_t connected = GetParam().connected;
    std::string text = kClear;
    if ((connected & kDp) != 0) {
      text += "nvidia SetNewDisplayMode(1, 0x20)\n";
    } else if ((connected & kHdmi) != 0) {
      text += "nvidia SetNewDisplayMode(1, 0x10)\n";
    }
    return text + kPanelAlone;
  }
};

TEST_P(HybridSideBySide, FirstPass) {
  HybridHost host;
  Unplug(GetParam().connected, &host.machine);
  UseNativeSizes(&host);
  host.hybrid();
  host.Forget();
  const BOOL result =
      host.box().ApplyExtendAcrossAdapters(&host.hybrid(), GetParam().connected, GetParam().wanted);
  EXPECT_EQ(result, 1);
  EXPECT_EQ(host.Told(), Before() + Pass(false));
}

TEST_P(HybridSideBySide, PassWithSizes) {
  HybridHost host;
  Unplug(GetParam().connected, &host.machine);
  UseNativeSizes(&host);
  host.hybrid();
  host.Forget();
  const BOOL result = host.box().ApplyExtendAcrossAdaptersWithSize(
      &host.hybrid(), GetParam().connected, GetParam().wanted);
  EXPECT_EQ(result, 1);
  EXPECT_EQ(host.Told(), Pass(true));
}

INSTANTIATE_TEST_SUITE_P(Sets, HybridSideBySide, testing::ValuesIn(AllSets()), NameOf);

// --- Beside a clone.

class HybridBesideClone : public testing::TestWithParam<Sets> {};

TEST_P(HybridBesideClone, OnePass) {
  const auto [connected, wanted] = GetParam();
  HybridHost host;
  Unplug(GetParam().connected, &host.machine);
  UseNativeSizes(&host);
  host.intel->connected = kNb | kCrt | kHdmi | kDp;
  host.hybrid();
  host.Forget();
  EXPECT_EQ(host.box().ApplyCloneAcrossAdapters(&host.hybrid(), connected, wanted), 1);

  const bool crt = (connected & kCrt) != 0;
  const bool hdmi = (connected & kHdmi) != 0;
  const bool dp = (connected & kDp) != 0;
  const bool wants_hdmi = (wanted & kHdmi) != 0;
  const bool wants_dp = (wanted & kDp) != 0;
  Course course;
  course.text = std::string(kClear) + kPanelAlone;
  course.text +=
      crt ? "intel GetConnectedDisplays\nintel SetNewDisplayMode(2, 0x3)\n" : kPanelClone;
  course.text += std::string(kCurrentWide) + kCurrent + kDevices;
  course.Primary(1);
  course.text += kDevices;
  if (!crt && hdmi && wants_hdmi) course.Next(4, kHdmi, 1920, 1080);
  if (crt && !hdmi && dp && wants_dp) course.Next(4, kDp, 1600, 900);
  if (crt && hdmi && !dp && wants_hdmi) course.Next(3, kHdmi, 1920, 1080);
  if (crt && hdmi && dp && wants_dp) course.Next(3, kDp, 1600, 900);
  if (crt && hdmi && dp && wants_hdmi) course.Next(4, kHdmi, 1920, 1080);
  EXPECT_EQ(host.Told(), course.text + kCommit);
}

INSTANTIATE_TEST_SUITE_P(Sets, HybridBesideClone, testing::ValuesIn(AllSets()), NameOf);

}  // namespace
