// Every call of the Intel driver fails, once and from then on, at every place of a long course over
// the back-end's operations: nothing breaks, what came before is as ever, and the next switch
// works.
#include <gtest/gtest.h>

#include "tests/behaviour/IntelHost.h"

namespace {

constexpr char kMachine[] = "win7 intel*3: internal 1366x768 active, hdmi 1920x1080, crt 1024x768";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;

std::string Settings(IntelHost* host, uint32_t display) {
  DEVMODEA dm = {};
  const bool known = host->intel().GetDisplaySettings(display, &dm);
  return known ? std::to_string(dm.dmPelsWidth) : "failed";
}

std::string Edid(IntelHost* host, uint32_t display) {
  EdidBlob blob;
  if (!host->extension().GetEDID(display, &blob)) return "failed";
  host->extension().FreeEDID(&blob);
  return std::to_string(blob.cb);
}

std::string CloneInResolution(IntelHost* host) {
  DEVMODEW dm = {};
  dm.dmPelsWidth = 1024;
  dm.dmPelsHeight = 768;
  dm.dmBitsPerPel = 32;
  dm.dmDisplayFrequency = 60;
  IMMonitorEx& ex = *host->box().ExOf(&host->intel());
  return std::to_string(ex.SetDisplayModeWithSettings(IMMonitor::DM_CLONE, kNb | kCrt, &dm));
}

std::string Extend(IntelHost* host, BOOL enable, uint32_t displays) {
  return std::to_string(host->intel().EnableExtendModeOnDisplays(enable, displays));
}

std::string ExtendWherever(IntelHost* host, BOOL enable) {
  return std::to_string(host->intel().EnableExtendMode(enable));
}

/// One operation of the course, and what it says when nothing fails.
struct Step {
  std::string (*run)(IntelHost* host);
  const char* sound;
  bool windows_refuses = false;  // its own way, so that the driver is asked
};

// Every operation that reaches the driver.
constexpr Step kCourse[] = {
    {[](IntelHost* h) { return std::to_string(h->bare()->Initial()); }, "1"},
    {[](IntelHost* h) { return h->Connected(); }, "0x13 (3)"},
    {[](IntelHost* h) { return h->Active(); }, "0x1 (1)"},
    {[](IntelHost* h) { return h->Mode(); }, "1 0x1"},
    {[](IntelHost* h) { return Settings(h, kNb); }, "1366"},
    {[](IntelHost* h) { return Settings(h, kHdmi); }, "failed"},
    {[](IntelHost* h) { return Edid(h, kNb); }, "128"},
    {[](IntelHost* h) { return Edid(h, kCrt); }, "128"},
    {[](IntelHost* h) {
       EdidBlob ignored;
       return std::to_string(h->box().GetMonitorEDID(&h->intel(), kNb, &ignored));
     },
     "1"},
    {[](IntelHost* h) { return std::to_string(h->extension().SupportsTripleDisplay()); }, "1"},
    {[](IntelHost* h) { return std::to_string(h->box().CanControlHDMIMonitor(&h->intel())); }, "1"},
    {[](IntelHost* h) { return h->Switch(IMMonitor::DM_TRIPLE_EXTEND, kNb | kHdmi | kCrt); }, "1"},
    {[](IntelHost* h) { return h->Mode(); }, "512 0x13"},
    {[](IntelHost* h) { return h->Switch(IMMonitor::DM_SINGLE, kHdmi); }, "1"},
    {[](IntelHost* h) { return Settings(h, kHdmi); }, "1920"},
    {[](IntelHost* h) { return h->Switch(IMMonitor::DM_CLONE, kNb | kHdmi); }, "1"},
    {CloneInResolution, "1"},
    {[](IntelHost* h) { return Extend(h, TRUE, kCrt); }, "1"},
    {[](IntelHost* h) { return Settings(h, kCrt); }, "1024"},
    {[](IntelHost* h) { return Extend(h, FALSE, 0); }, "1"},
    {[](IntelHost* h) { return ExtendWherever(h, TRUE); }, "1", true},
    {[](IntelHost* h) { return ExtendWherever(h, FALSE); }, "1", true},
};

/// Runs the course with the n-th call failing as `code` says, once or from then on. Up to the step
/// that meets the fault all is as in the sound course. @return false when none meets it
bool RunWithFault(const std::string& operation, uint32_t nth, uint32_t code,
                  sim::Machine::Repeat repeat) {
  const std::string what = operation + " " + std::to_string(nth);
  IntelHost host(kMachine, L"--enable-dcheck --v=2");
  host.machine.Config("Settings:Intel", "Support Aspect Ratio Workaround", 1);
  host.bare();
  host.machine.ForgiveUnusedFaults();
  host.machine.Fail(operation, nth, code, repeat);
  uint32_t refusals = 0;
  bool met = false;
  for (const Step& step : kCourse) {
    if (step.windows_refuses) {
      host.machine.Fail("ChangeDisplaySettingsExA", 1);
      ++refusals;
    }
    const std::string said = step.run(&host);
    met = met || host.machine.FaultsGiven() > refusals;
    if (!met) {
      EXPECT_EQ(said, step.sound) << what << " step " << &step - kCourse;
    }
    if (&step == kCourse && said == "0") break;  // there is no object to go on with
  }
  if (!met) return false;
  host.machine.ClearFaults();
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kNb), "1") << what;
  EXPECT_EQ(host.Mode(), "1 0x1") << what;
  EXPECT_EQ(host.Connected(), "0x13 (3)") << what;
  EXPECT_EQ(host.machine.Topology(), "single internal") << what;
  return true;
}

/// Makes `operation` fail at every `stride`-th place from `first` on, each time once. @return how
/// many calls there were, as far as these places tell
uint32_t Sweep(const std::string& operation, uint32_t code, uint32_t first = 1,
               uint32_t stride = 1) {
  uint32_t nth = first;
  while (RunWithFault(operation, nth, code, sim::Machine::Repeat::kOnce)) nth += stride;
  return nth - 1;
}

/// As Sweep, failing from each of the places on.
uint32_t SweepFromThenOn(const std::string& operation, uint32_t code, uint32_t stride = 1) {
  uint32_t nth = 1;
  while (RunWithFault(operation, nth, code, sim::Machine::Repeat::kFromThenOn)) nth += stride;
  return nth - 1;
}

TEST(IntelFaults, WithoutOneAllSucceeds) {
  EXPECT_FALSE(
      RunWithFault("ICUIExternal8::ChangeActiveDevices", 1000, 0, sim::Machine::Repeat::kOnce));
}

TEST(IntelFaults, MakingTheObject) {
  for (const char* const operation : {"CLSIDFromProgID", "CoCreateInstance"}) {
    EXPECT_EQ(Sweep(operation, 0), 1u);
    EXPECT_EQ(SweepFromThenOn(operation, 0), 1u);
  }
}

TEST(IntelFaults, ChangingTheActiveDevices) {
  EXPECT_GE(Sweep("ICUIExternal8::ChangeActiveDevices", 0), 6u);
  EXPECT_GE(SweepFromThenOn("ICUIExternal8::ChangeActiveDevices", 0), 6u);
}

TEST(IntelFaults, ChangingTheActiveDevicesInNameOnly) {
  EXPECT_GE(Sweep("ICUIExternal8::ChangeActiveDevices", 5), 6u);
  EXPECT_GE(SweepFromThenOn("ICUIExternal8::ChangeActiveDevices", 5), 6u);
}

// There are many of these calls: three tests share the places, so that none takes long.
TEST(IntelFaults, ListingTheDevices) {
  EXPECT_GE(Sweep("ICUIExternal8::EnumDevices", 0, 1, 3), 40u);
}
TEST(IntelFaults, ListingTheDevicesAtTheNextPlaces) {
  EXPECT_GE(Sweep("ICUIExternal8::EnumDevices", 0, 2, 3), 40u);
}
TEST(IntelFaults, ListingTheDevicesAtTheLastPlaces) {
  EXPECT_GE(Sweep("ICUIExternal8::EnumDevices", 0, 3, 3), 40u);
}

// Four calls make a walk: with five between two places every call of a walk has its turn.
TEST(IntelFaults, ListingTheDevicesFromThenOn) {
  EXPECT_GE(SweepFromThenOn("ICUIExternal8::EnumDevices", 0, 5), 40u);
}

TEST(IntelFaults, ReadingABlock) {
  EXPECT_GE(Sweep("ICUIExternal8::GetDeviceData", 0), 15u);
  EXPECT_GE(SweepFromThenOn("ICUIExternal8::GetDeviceData", 0), 15u);
}

TEST(IntelFaults, ReadingABlockInNameOnly) {
  EXPECT_GE(Sweep("ICUIExternal8::GetDeviceData", 5), 15u);
  EXPECT_GE(SweepFromThenOn("ICUIExternal8::GetDeviceData", 5), 15u);
}

TEST(IntelFaults, WritingABlock) {
  for (const uint32_t code : {0u, 5u}) {
    EXPECT_EQ(Sweep("ICUIExternal8::SetDeviceData", code), 4u);
    EXPECT_EQ(SweepFromThenOn("ICUIExternal8::SetDeviceData", code), 4u);
  }
}

TEST(IntelFaults, AspectScaling) {
  for (const char* const operation :
       {"ICUIExternal8::GetAspectScaling", "ICUIExternal8::SetAspectScaling"}) {
    EXPECT_GE(Sweep(operation, 0), 2u);
    EXPECT_GE(SweepFromThenOn(operation, 0), 2u);
  }
}

}  // namespace
