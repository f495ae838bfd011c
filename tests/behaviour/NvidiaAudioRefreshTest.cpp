// The repeated detection that makes NVIDIA's driver on Windows XP let go of a sound device.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/behaviour/LogText.h"
#include "tests/support/FakeHost.h"
#include "tests/support/SessionBench.h"

namespace {

int g_detections = 0;
bool CountDetection() {
  ++g_detections;
  return true;
}
bool LastDetection() {
  ++g_detections;
  return false;
}

class Refresh : public testing::Test {
 protected:
  void SetUp() override {
    g_detections = 0;
    bench.machine.model().wave_out_devices = 2;
    ASSERT_TRUE(bench.Start());
  }
  void Repeat() { bench.box().RepeatDetection(CountDetection); }
  bool IsPending() const { return !bench.machine.ArmedTimers().empty(); }

  SessionBench bench;
};

// --- The limits.

TEST_F(Refresh, DetectsFourTimesMoreTwoSecondsApart) {
  Repeat();
  ASSERT_EQ(bench.machine.ArmedTimers().size(), 1u);
  EXPECT_EQ(bench.machine.ArmedTimers()[0].period, 2000u);
  EXPECT_EQ(bench.machine.ArmedTimers()[0].window, nullptr);
  bench.machine.Advance(1999);
  EXPECT_EQ(g_detections, 0);
  for (int times = 1; times <= 4; ++times) {
    bench.machine.Advance(times == 1 ? 1 : 2000);
    EXPECT_EQ(g_detections, times);
    EXPECT_TRUE(IsPending());
  }
  // The fifth firing asks for nothing any more.
  const uint32_t asked = bench.machine.Calls("waveOutGetNumDevs");
  bench.machine.Advance(2000);
  EXPECT_EQ(g_detections, 4);
  EXPECT_EQ(bench.machine.Calls("waveOutGetNumDevs"), asked);
  EXPECT_FALSE(IsPending());
}

TEST_F(Refresh, StopsOnceFewerThanTwoSoundDevicesAreLeft) {
  for (const uint32_t left : {1, 0}) {
    bench.machine.model().wave_out_devices = 2;
    g_detections = 0;
    Repeat();
    bench.machine.Advance(4000);
    EXPECT_EQ(g_detections, 2);
    bench.machine.model().wave_out_devices = left;
    bench.machine.Advance(2000);
    EXPECT_EQ(g_detections, 2);
    EXPECT_FALSE(IsPending());
  }
}

TEST_F(Refresh, StopsWhereThereIsNothingToDetectOn) {
  bench.box().RepeatDetection(LastDetection);
  bench.machine.Advance(2000);
  EXPECT_EQ(g_detections, 1);
  EXPECT_FALSE(IsPending());
}

TEST_F(Refresh, StartsAnewWithASecondStart) {
  Repeat();
  bench.machine.Advance(6000);
  Repeat();
  EXPECT_EQ(bench.machine.ArmedTimers().size(), 1u);
  bench.machine.Advance(20000);
  EXPECT_EQ(g_detections, 3 + 4);
}

TEST_F(Refresh, StopsWhereTheTimerCannotBeMade) {
  bench.machine.Fail("SetTimer", 2, ERROR_NO_SYSTEM_RESOURCES);
  Repeat();
  bench.machine.Advance(20000);
  EXPECT_EQ(g_detections, 1);
}

TEST_F(Refresh, DetectionThatThrowsEndsIt) {
  bench.box().RepeatDetection([]() -> bool { throw 1; });
  bench.machine.Advance(2000);
  EXPECT_FALSE(IsPending());
}

// --- How long it lives.

TEST_F(Refresh, OutlivesTheSession) {
  bench.ostrel().Run();
  Repeat();
  bench.box().EndSession();
  bench.machine.Advance(2000);
  EXPECT_EQ(g_detections, 1);
}

TEST_F(Refresh, OutlivesTheSwitchSide) {
  Repeat();
  bench.ostrel().DeInit();
  bench.machine.Advance(20000);
  EXPECT_EQ(g_detections, 4);
}

// The simulator tells of a timer that an unload leaves armed.
TEST(RefreshAtUnload, EndsWithTheLibrary) {
  g_detections = 0;
  FakeHost host;
  host.machine.model().wave_out_devices = 2;
  ASSERT_TRUE(host.ostrel->Init());
  host.ostrel->white_box().session->RepeatDetection(CountDetection);
  host.machine.Advance(2000);
  EXPECT_EQ(g_detections, 1);
  host.End();
  EXPECT_EQ(host.machine.ArmedTimers().size(), 1u);
  host.ostrel.reset();
  EXPECT_TRUE(host.machine.ArmedTimers().empty());
  host.machine.Advance(20000);
  EXPECT_EQ(g_detections, 1);
}

// The library cannot note then that the timer is to end with it, and makes none; the next start
// notes it.
TEST(RefreshAtUnload, EndsWithTheLibraryAlsoAfterAStartWithoutMemory) {
  FakeHost host;
  ASSERT_TRUE(host.ostrel->Init());
  const auto& box = host.ostrel->white_box();
  box.projectors->RefuseMemory(1);
  EXPECT_ANY_THROW(box.session->RepeatDetection(CountDetection));
  ASSERT_FALSE(box.projectors->RefuseMemory(0));  // it was refused
  EXPECT_TRUE(host.machine.ArmedTimers().empty());
  box.session->RepeatDetection(CountDetection);
  host.End();
  EXPECT_EQ(host.machine.ArmedTimers().size(), 1u);
  host.ostrel.reset();
  EXPECT_TRUE(host.machine.ArmedTimers().empty());
}

// --- Where it starts.

class RefreshStart : public testing::Test {
 protected:
  void Start(const char* windows, std::optional<sim::WindowsVersion> version = std::nullopt) {
    bench.emplace(std::string(windows) + " nvidia: internal 1366x768 active, crt 1024x768");
    if (version) bench->machine.model().windows = *version;
    bench->machine.SetCommandLine(L"host.exe --enable-dcheck");
    bench->machine.model().wave_out_devices = 2;
    ASSERT_TRUE(bench->Start(static_cast<uint16_t>(kVendorNvidia)));
    bench->script->vendor = kVendorNvidia;
  }
  /// Whether the object is looked at, which is no NVIDIA control panel's.
  bool Looks(uint32_t mode) {
    const size_t before = Complaints();
    FakeMonitor object(bench->script);
    bench->box().StartNvidiaAudioRefresh(&object, mode, IMMonitor::MD_CRT);
    EXPECT_TRUE(bench->machine.ArmedTimers().empty());
    return Complaints() != before;
  }
  size_t Complaints() const {
    return CountOf(bench->machine.Log(), "Check failed: nv != NULL. \n");
  }

  std::optional<SessionBench> bench;
};

TEST_F(RefreshStart, OnlyUpToWindowsXp) {
  for (const char* windows : {"xp", "2003", "vista", "2008", "win7"}) {
    Start(windows);
    EXPECT_EQ(Looks(IMMonitor::DM_SINGLE), std::string(windows) == "xp") << windows;
    bench.reset();
  }
}

TEST_F(RefreshStart, AlsoOnWindows2000) {
  Start("xp", sim::WindowsVersion{5, 0, 2195, 1, std::nullopt, "Service Pack 4"});
  EXPECT_TRUE(Looks(IMMonitor::DM_SINGLE));
}

TEST_F(RefreshStart, OnlyOnNvidia) {
  Start("xp");
  for (const uint32_t vendor : {kVendorIntel, kVendorAmd, uint32_t{0}}) {
    bench->script->vendor = vendor;
    EXPECT_FALSE(Looks(IMMonitor::DM_SINGLE)) << vendor;
  }
  bench->script->vendor = kVendorNvidia;
  EXPECT_TRUE(Looks(IMMonitor::DM_SINGLE));
}

TEST_F(RefreshStart, OnlyBehindASwitchToOneDisplay) {
  Start("xp");
  for (const uint32_t mode : {0, 2, 4, 8, 16, 128, 256, 512, 1024}) {
    EXPECT_FALSE(Looks(mode)) << mode;
  }
}

// --- With the control panel's own object.

class RefreshOnXp : public testing::Test {
 protected:
  void SetUp() override {
    machine.SetCommandLine(L"host.exe --enable-dcheck");
    machine.UsePictures(BuiltPictures());
    machine.Config("PM:1024x768", "Support This Mode", 0);  // four items
    machine.model().wave_out_devices = 2;
    ostrel.emplace(machine);
    ASSERT_TRUE(ostrel->Init());
  }
  void TearDown() override {
    ostrel->DeInitExtendMode();
    ostrel->DeInit();
  }

  /// The item that many places behind the panel alone: clone, the CRT alone, extended desktop.
  void SwitchTo(int item) {
    for (int press = 0; press <= item; ++press) ASSERT_TRUE(ostrel->Run());
    before_switch = Detections();
    ostrel->Stop();
    at_start = Detections();
  }
  uint32_t Detections() const { return machine.Calls("NvCplRefreshConnectedDevices"); }
  bool IsPending() const { return !machine.ArmedTimers().empty(); }
  bool Complained() const {
    return machine.Log().find("Check failed: nv != NULL. ") != std::string::npos;
  }

  sim::Machine machine{"xp nvidia: internal 1366x768 active, crt 1024x768"};
  std::optional<sim::Library> ostrel;
  uint32_t before_switch = 0;
  uint32_t at_start = 0;
};

TEST_F(RefreshOnXp, SwitchToOneDisplayIsFollowedByFourDetections) {
  SwitchTo(2);
  EXPECT_EQ(machine.Topology(), "single crt");
  // That of the switch, and that which begins it.
  EXPECT_EQ(at_start, before_switch + 2);
  for (uint32_t times = 1; times <= 4; ++times) {
    machine.Advance(1999);
    EXPECT_EQ(Detections(), at_start + times - 1);
    machine.Advance(1);
    EXPECT_EQ(Detections(), at_start + times);
  }
  machine.Advance(20000);
  EXPECT_EQ(Detections(), at_start + 4);
  EXPECT_FALSE(IsPending());
  EXPECT_FALSE(Complained());
}

TEST_F(RefreshOnXp, SwitchToTwoDisplaysIsNot) {
  for (const int item : {1, 2}) {  // from the clone the extended desktop is two behind
    SwitchTo(item);
    EXPECT_FALSE(IsPending());
  }
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
}

TEST_F(RefreshOnXp, OneSoundDeviceIsLookedForOnce) {
  machine.model().wave_out_devices = 1;
  SwitchTo(2);
  EXPECT_TRUE(IsPending());
  machine.Advance(20000);
  EXPECT_EQ(Detections(), at_start);
  EXPECT_FALSE(IsPending());
}

TEST_F(RefreshOnXp, GoesOnBehindTheSwitchSideWhileTheOtherSideHasTheObject) {
  ASSERT_TRUE(ostrel->InitExtendMode());
  SwitchTo(2);
  ostrel->DeInit();
  machine.Advance(20000);
  EXPECT_EQ(Detections(), at_start + 4);
}

TEST_F(RefreshOnXp, EndsWithTheObjectAndMakesNone) {
  SwitchTo(2);
  ostrel->DeInit();
  const std::string held = machine.Outstanding();
  EXPECT_TRUE(IsPending());
  machine.Advance(20000);
  EXPECT_FALSE(IsPending());
  EXPECT_EQ(Detections(), at_start);
  EXPECT_TRUE(Complained());
  EXPECT_EQ(machine.Outstanding(), held);
}

// The library has been set up anew meanwhile, on an adapter of another vendor.
TEST_F(RefreshOnXp, EndsWhereAnotherVendorsObjectHasTakenThePlace) {
  SwitchTo(2);
  ostrel->DeInit();
  machine.model().adapters[0].hardware_id = "PCI\\VEN_8086&DEV_27A2";
  ASSERT_TRUE(ostrel->Init());
  EXPECT_NE(ostrel->GetVgaVendor(), 3u);
  EXPECT_TRUE(IsPending());
  machine.Advance(20000);
  EXPECT_FALSE(IsPending());
  EXPECT_EQ(Detections(), at_start);
  EXPECT_TRUE(Complained());
}

TEST_F(RefreshOnXp, NextSwitchStartsItAnew) {
  SwitchTo(2);
  machine.Advance(5000);
  EXPECT_EQ(Detections(), at_start + 2);
  SwitchTo(2);  // from the CRT to the panel, past the extended desktop
  EXPECT_EQ(machine.Topology(), "single internal");
  ASSERT_EQ(machine.ArmedTimers().size(), 1u);
  machine.Advance(20000);
  EXPECT_EQ(Detections(), at_start + 4);
}

}  // namespace
