// Every call of the Intel driver fails once, at every place of a long course over the back-end's
// operations: nothing breaks, and the next switch works.
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

/// Every operation that reaches the driver, and what each said.
std::vector<std::string> Course(IntelHost* host) {
  std::vector<std::string> said = {std::to_string(host->bare()->Initial())};
  if (said[0] == "0") return said;
  EdidBlob ignored;
  said.insert(said.end(), {
                              host->Connected(),
                              host->Active(),
                              host->Mode(),
                              Settings(host, kNb),
                              Settings(host, kHdmi),
                              Edid(host, kNb),
                              Edid(host, kCrt),
                          });
  said.push_back(std::to_string(host->box().GetMonitorEDID(&host->intel(), kNb, &ignored)));
  said.push_back(std::to_string(host->extension().SupportsTripleDisplay()));
  said.push_back(std::to_string(host->box().CanControlHDMIMonitor(&host->intel())));
  said.push_back(host->Switch(IMMonitor::DM_TRIPLE_EXTEND, kNb | kHdmi | kCrt));
  said.push_back(host->Mode());
  said.push_back(host->Switch(IMMonitor::DM_SINGLE, kHdmi));
  said.push_back(Settings(host, kHdmi));
  said.push_back(host->Switch(IMMonitor::DM_CLONE, kNb | kHdmi));
  said.push_back(CloneInResolution(host));
  said.push_back(Extend(host, TRUE, kCrt));
  said.push_back(Settings(host, kCrt));
  said.push_back(Extend(host, FALSE, 0));
  return said;
}

const std::vector<std::string> kSound = {
    "1", "0x13 (3)", "0x1 (1)",  "1 0x1", "1366", "failed", "128", "128", "1",    "1",
    "1", "1",        "512 0x13", "1",     "1920", "1",      "1",   "1",   "1024", "1"};

/// Runs the course with the n-th call failing as `code` says. @return false when there is none
bool RunWithFault(const std::string& operation, uint32_t nth, uint32_t code) {
  IntelHost host(kMachine, L"--enable-dcheck --v=2");
  host.machine.Config("Settings:Intel", "Support Aspect Ratio Workaround", 1);
  host.bare();
  host.machine.ForgiveUnusedFaults();
  host.machine.Fail(operation, nth, code);
  const std::vector<std::string> said = Course(&host);
  if (host.machine.FaultsGiven() == 0) {
    EXPECT_EQ(said, kSound);
    return false;
  }
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kNb), "1") << operation << " " << nth;
  EXPECT_EQ(host.Mode(), "1 0x1") << operation << " " << nth;
  EXPECT_EQ(host.Connected(), "0x13 (3)") << operation << " " << nth;
  EXPECT_EQ(host.machine.Topology(), "single internal") << operation << " " << nth;
  return true;
}

/// The number of places at which `operation` was made to fail.
uint32_t Sweep(const std::string& operation, uint32_t code) {
  uint32_t nth = 1;
  while (RunWithFault(operation, nth, code)) ++nth;
  return nth - 1;
}

TEST(IntelFaults, WithoutOneAllSucceeds) {
  EXPECT_FALSE(RunWithFault("ICUIExternal8::ChangeActiveDevices", 1000, 0));
}

TEST(IntelFaults, MakingTheObject) {
  EXPECT_EQ(Sweep("CLSIDFromProgID", 0), 1u);
  EXPECT_EQ(Sweep("CoCreateInstance", 0), 1u);
}

TEST(IntelFaults, ChangingTheActiveDevices) {
  EXPECT_GE(Sweep("ICUIExternal8::ChangeActiveDevices", 0), 4u);
}

TEST(IntelFaults, ChangingTheActiveDevicesInNameOnly) {
  EXPECT_GE(Sweep("ICUIExternal8::ChangeActiveDevices", 5), 4u);
}

TEST(IntelFaults, ListingTheDevices) { EXPECT_GE(Sweep("ICUIExternal8::EnumDevices", 0), 40u); }

TEST(IntelFaults, ReadingABlock) { EXPECT_GE(Sweep("ICUIExternal8::GetDeviceData", 0), 15u); }

TEST(IntelFaults, ReadingABlockInNameOnly) {
  EXPECT_GE(Sweep("ICUIExternal8::GetDeviceData", 5), 15u);
}

TEST(IntelFaults, WritingABlock) {
  EXPECT_EQ(Sweep("ICUIExternal8::SetDeviceData", 0), 4u);
  EXPECT_EQ(Sweep("ICUIExternal8::SetDeviceData", 5), 4u);
}

TEST(IntelFaults, AspectScaling) {
  EXPECT_GE(Sweep("ICUIExternal8::GetAspectScaling", 0), 2u);
  EXPECT_GE(Sweep("ICUIExternal8::SetAspectScaling", 0), 2u);
}

}  // namespace
