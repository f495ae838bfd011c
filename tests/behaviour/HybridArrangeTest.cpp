// The arrangements over both adapters whole: the passes, what is missing on the way, and what comes
// of them.
#include <gtest/gtest.h>

#include "tests/behaviour/HybridCourse.h"

namespace {

constexpr uint32_t kP1 = IMMonitor::DM_ADVANCED_P1;
constexpr uint32_t kP2 = IMMonitor::DM_ADVANCED_P2;

// --- The modes whole.

constexpr char kAskConnected[] =
    "intel GetConnectedDisplays\nccd GetConnectedDisplays\nccd GetCurrentDisplayMode\n"
    "nvidia GetConnectedDisplays\nnvidia GetVgaVendor\n";

constexpr char kP1Commits[] =
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1366x768x32@60 at 0,0 fields=0x20 "
    "flags=0x10000013)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1366x768x32@60 at 0,0 fields=0x20 "
    "flags=0x10000011)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY2 1280x1024x32@60 at 1366,0 fields=0x20 "
    "flags=0x10000003)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY2 1280x1024x32@60 at 1366,0 fields=0x20 "
    "flags=0x10000001)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY3 1600x900x32@60 at 2646,0 fields=0x20 "
    "flags=0x10000003)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY3 1600x900x32@60 at 2646,0 fields=0x20 "
    "flags=0x10000001)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY4 1920x1080x32@60 at 4246,0 fields=0x20 "
    "flags=0x10000003)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY4 1920x1080x32@60 at 4246,0 fields=0x20 "
    "flags=0x10000001)=0\n"
    "ChangeDisplaySettingsExA(null null flags=0x0)=0\n";
// The devices have stored settings now, of which the fields are those that Windows names.
constexpr char kP1SizeCommits[] =
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1366x768x32@60 at 0,0 fields=0x180020 "
    "flags=0x10000013)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1366x768x32@60 at 0,0 fields=0x180020 "
    "flags=0x10000011)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY2 1280x1024x32@60 at 1366,0 fields=0x20 "
    "flags=0x10000003)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY2 1280x1024x32@60 at 1366,0 fields=0x20 "
    "flags=0x10000001)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY3 1600x900x32@60 at 2646,0 fields=0x180020 "
    "flags=0x10000003)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY3 1600x900x32@60 at 2646,0 fields=0x180020 "
    "flags=0x10000001)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY4 1920x1080x32@60 at 4246,0 fields=0x20 "
    "flags=0x10000003)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY4 1920x1080x32@60 at 4246,0 fields=0x20 "
    "flags=0x10000001)=0\n"
    "ChangeDisplaySettingsExA(null null flags=0x0)=0\n";

/// The changes alone: what was asked is left out.
std::string ChangesIn(const std::string& told) {
  std::istringstream lines(told);
  std::string changes;
  for (std::string line; std::getline(lines, line);) {
    const bool asked = line.find(" Get") != std::string::npos || line.rfind("Enum", 0) == 0;
    if (!asked) changes += line + "\n";
  }
  return changes;
}

TEST(HybridArrange, FirstArrangementIsTwoPasses) {
  HybridHost host;
  UseNativeSizes(&host);
  host.Connected(kNb | kCrt, kHdmi | kDp);
  const std::string told = host.Switch(kP1, kNb | kCrt | kHdmi | kDp);
  EXPECT_EQ(told.rfind(kAskConnected, 0), 0u) << told;
  EXPECT_EQ(ChangesIn(told), std::string(kClear) + "nvidia SetNewDisplayMode(1, 0x20)\n" +
                                 kPanelAlone + kP1Commits + kP1SizeCommits + "1\n");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt+dp+hdmi");
  const std::vector<sim::Source>& sources = host.machine.model().sources;
  EXPECT_EQ(sources[1].x, 1366);
  EXPECT_EQ(sources[2].x, 2646);
  EXPECT_EQ(sources[3].x, 4246);
}

TEST(HybridArrange, FirstArrangementSucceedsWhateverHappens) {
  HybridHost host;
  host.Connected(kNb | kCrt, kHdmi | kDp);
  host.clone_result = 0;
  host.ccd->set_result = 0;
  host.nvidia->set_result = 0;
  host.machine.Fail("ChangeDisplaySettingsExA", 1, 0, sim::Machine::Repeat::kFromThenOn);
  const std::string told = host.Switch(kP1, kNb | kCrt | kHdmi | kDp);
  EXPECT_EQ(told.back(), '1');
  EXPECT_EQ(CountOf(told, "ChangeDisplaySettingsExA(null null flags=0x0)=-1\n"), 2u);
}

TEST(HybridArrange, FirstArrangementSucceedsWithoutADevice) {
  HybridHost host;
  host.Connected(kNb, kHdmi);
  host.hybrid();
  host.machine.Fail("EnumDisplayDevicesW", 1, 0, sim::Machine::Repeat::kFromThenOn);
  const std::string told = host.Switch(kP1, kNb | kHdmi);
  EXPECT_EQ(ChangesIn(told),
            std::string(kClear) + "nvidia SetNewDisplayMode(1, 0x10)\n" + kPanelAlone + "1\n");
}

TEST(HybridArrange, SecondArrangementIsMadeTwice) {
  HybridHost host;
  UseNativeSizes(&host);
  host.Connected(kNb | kCrt, kHdmi | kDp);
  const std::string told = host.Switch(kP2, kNb | kCrt | kHdmi | kDp);
  EXPECT_EQ(told.rfind(kAskConnected, 0), 0u) << told;
  const std::string once = std::string(kClear) + kPanelAlone + "intel SetNewDisplayMode(2, 0x3)\n" +
                           "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1366x768x32@60 at 0,0 "
                           "fields=0x20 flags=0x10000013)=0\n"
                           "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1366x768x32@60 at 0,0 "
                           "fields=0x20 flags=0x10000011)=0\n"
                           "ChangeDisplaySettingsExA(\\\\.\\DISPLAY3 1600x900x32@60 at 1366,0 "
                           "fields=0x20 flags=0x10000003)=0\n"
                           "ChangeDisplaySettingsExA(\\\\.\\DISPLAY3 1600x900x32@60 at 1366,0 "
                           "fields=0x20 flags=0x10000001)=0\n"
                           "ChangeDisplaySettingsExA(\\\\.\\DISPLAY4 1920x1080x32@60 at 2966,0 "
                           "fields=0x20 flags=0x10000003)=0\n"
                           "ChangeDisplaySettingsExA(\\\\.\\DISPLAY4 1920x1080x32@60 at 2966,0 "
                           "fields=0x20 flags=0x10000001)=0\n" +
                           kCommit;
  EXPECT_EQ(ChangesIn(told), once + once + "1\n");
}

TEST(HybridArrange, SecondResultOfTheSecondArrangementCounts) {
  for (const bool first_fails : {true, false}) {
    HybridHost host;
    host.Connected(kNb, kHdmi);
    // A commit is the third call of a pass that places the panel alone.
    host.machine.Fail("ChangeDisplaySettingsExA", first_fails ? 3 : 6, 0);
    EXPECT_EQ(host.Switch(kP2, kNb).back(), first_fails ? '1' : '0') << first_fails;
  }
}

TEST(HybridArrange, CommitTellsTheResultOfEachArrangement) {
  using Arrange = BOOL (*)(IMMonitor * hybrid, uint32_t connected, uint32_t wanted);
  for (int which = 0; which < 3; ++which) {
    HybridHost host;
    const Arrange arrange[] = {host.box().ApplyExtendAcrossAdapters,
                               host.box().ApplyExtendAcrossAdaptersWithSize,
                               host.box().ApplyCloneAcrossAdapters};
    host.machine.Fail("ChangeDisplaySettingsExA", 3, 1);
    EXPECT_EQ(arrange[which](&host.hybrid(), kNb, kNb), 0) << which;
    EXPECT_EQ(arrange[which](&host.hybrid(), kNb, kNb), 1) << which;
  }
}

// --- What is missing on the way.

TEST(HybridArrange, EmptyListOfDevicesEndsEachArrangementWithoutACommit) {
  HybridHost host;
  host.hybrid();
  host.machine.Fail("EnumDisplayDevicesW", 1, 0, sim::Machine::Repeat::kFromThenOn);
  host.Forget();
  EXPECT_EQ(host.box().ApplyExtendAcrossAdapters(&host.hybrid(), kNb | kDp, kNb | kDp), 0);
  EXPECT_EQ(host.Told(),
            std::string(kClear) + "nvidia SetNewDisplayMode(1, 0x20)\n" + kPanelAlone + kDevices);
  EXPECT_EQ(host.box().ApplyExtendAcrossAdaptersWithSize(&host.hybrid(), kNb | kDp, kNb | kDp), 0);
  EXPECT_EQ(host.Told(), kDevices);
  EXPECT_EQ(host.box().ApplyCloneAcrossAdapters(&host.hybrid(), kNb | kDp, kNb | kDp), 0);
  EXPECT_EQ(host.Told(),
            std::string(kClear) + kPanelAlone + kPanelClone + kCurrentWide + kCurrent + kDevices);
}

// --- The devices.

/// The devices that something is stored for, in order, the primary one marked: "1* 3".
std::string StoredDevices(const std::string& told) {
  constexpr char kCall[] = "ChangeDisplaySettingsExA(\\\\.\\DISPLAY";
  std::istringstream lines(told);
  std::string devices;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(kCall, 0) != 0) continue;
    const bool primary = line.find(" flags=0x10000011)") != std::string::npos;
    if (!primary && line.find(" flags=0x10000001)") == std::string::npos) continue;
    devices += devices.empty() ? "" : " ";
    devices += line[sizeof(kCall) - 1];
    devices += primary ? "*" : "";
  }
  return devices;
}

// NVIDIA's devices are Windows' first ones here, 1 and 2, and Intel's are 3 and 4.
constexpr char kNvidiaFirst[] =
    "win7 nvidia, intel: internal@2 1366x768 active, crt@2 1280x1024, dp 1600x900, hdmi 1920x1080";

TEST(HybridArrange, FirstArrangementGoesByTheListOfAllDevices) {
  HybridHost host(kNvidiaFirst);
  UseNativeSizes(&host);
  IMMonitor* const hybrid = &host.hybrid();
  for (const auto arrange :
       {host.box().ApplyExtendAcrossAdapters, host.box().ApplyExtendAcrossAdaptersWithSize}) {
    host.Forget();
    arrange(hybrid, kNb | kCrt, kNb | kCrt);
    EXPECT_EQ(StoredDevices(host.Told()), "1* 2");
    arrange(hybrid, kNb | kCrt | kHdmi | kDp, kNb | kHdmi | kDp);
    EXPECT_EQ(StoredDevices(host.Told()), "1* 1 2");
  }
}

TEST(HybridArrange, CrtOfTheFirstArrangementMayGoOnADeviceOfNvidias) {
  HybridHost host("win7 intel*1, nvidia: internal 1366x768 active, dp@2 1600x900");
  UseNativeSizes(&host);
  IMMonitor* const hybrid = &host.hybrid();
  for (const auto arrange :
       {host.box().ApplyExtendAcrossAdapters, host.box().ApplyExtendAcrossAdaptersWithSize}) {
    host.Forget();
    EXPECT_EQ(arrange(hybrid, kNb | kCrt, kNb | kCrt), 1);
    EXPECT_EQ(StoredDevices(host.Told()), "1* 2");
  }
}

TEST(HybridArrange, SecondArrangementBeginsWithIntelsFirstDevice) {
  HybridHost host(kNvidiaFirst);
  UseNativeSizes(&host);
  IMMonitor* const hybrid = &host.hybrid();
  host.Forget();
  const uint32_t all = kNb | kCrt | kHdmi | kDp;
  host.box().ApplyCloneAcrossAdapters(hybrid, all, kNb);
  EXPECT_EQ(StoredDevices(host.Told()), "3*");
  host.box().ApplyCloneAcrossAdapters(hybrid, all, all);
  EXPECT_EQ(StoredDevices(host.Told()), "3* 1 2");
}

TEST(HybridArrange, SecondArrangementNeedsADeviceOfIntels) {
  HybridHost host("win7 nvidia: internal 1366x768 active, hdmi 1920x1080");
  UseNativeSizes(&host);
  IMMonitor* const hybrid = &host.hybrid();
  for (const uint32_t connected : {kNb | kHdmi, kNb | kCrt | kHdmi}) {
    host.Forget();
    EXPECT_EQ(host.box().ApplyCloneAcrossAdapters(hybrid, connected, kNb | kHdmi), 0);
    EXPECT_EQ(CountOf(host.Told(), "ChangeDisplaySettingsExA"), 0u);
  }
  // The first arrangement needs any.
  EXPECT_EQ(host.box().ApplyExtendAcrossAdapters(hybrid, kNb, kNb), 1);
  EXPECT_EQ(StoredDevices(host.Told()), "1*");
}

TEST(HybridArrange, CrtNeedsASecondDevice) {
  HybridHost host("win7 intel*1: internal 1366x768 active");
  host.hybrid();
  host.Forget();
  EXPECT_EQ(host.box().ApplyExtendAcrossAdaptersWithSize(&host.hybrid(), kCrt, kCrt), 1);
  Course course;
  course.text = std::string(kDevices) + kCurrent;
  course.Primary(1, true);
  EXPECT_EQ(host.Told(), course.text + kDevices + kCommit);
}

TEST(HybridArrange, DisplayOfASecondEntryNeedsTwo) {
  HybridHost host("win7 intel, nvidia*1: internal 1366x768 active, crt 1280x1024, dp@2 1600x900");
  UseNativeSizes(&host);
  host.hybrid();
  host.Forget();
  const uint32_t all = kNb | kHdmi | kDp;
  EXPECT_EQ(host.box().ApplyExtendAcrossAdaptersWithSize(&host.hybrid(), all, all), 1);
  Course course;
  course.text = std::string(kDevices) + kCurrent;
  course.Primary(1, true);
  course.text += kDevices;
  course.Next(3, kDp, 1600, 900, true);
  EXPECT_EQ(host.Told(), course.text + kCommit);
}

TEST(HybridArrange, UnknownCurrentSettingsAreAUsualPanels) {
  HybridHost host("win7 intel, nvidia: internal 1280x800 active, hdmi@2 1920x1080");
  UseNativeSizes(&host);
  host.hybrid();
  host.machine.Fail("EnumDisplaySettingsA", 1);
  host.Forget();
  EXPECT_EQ(host.box().ApplyExtendAcrossAdaptersWithSize(&host.hybrid(), kHdmi, kHdmi), 1);
  const std::string told = host.Told();
  EXPECT_NE(told.find("EnumDisplaySettingsA(null -1)=0\n"
                      "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1366x768x32@60 at 0,0 "
                      "fields=0x180020 flags=0x10000013)=-2\n"
                      "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1366x768x32@60 at 0,0 "
                      "fields=0x5c0020 flags=0x10000013)=-2\n"),
            std::string::npos)
      << told;
  // The panel's own settings stand in the registry, and the next display goes to their edge.
  EXPECT_NE(told.find("ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1280x800x32@60 at 0,0 "
                      "fields=0x7c00a0 flags=0x10000011)=0\n"),
            std::string::npos)
      << told;
  EXPECT_NE(told.find(" 1920x1080x32@60 at 1280,0 "), std::string::npos) << told;
}

TEST(HybridArrange, UnknownCurrentSettingsInTheSecondArrangement) {
  HybridHost host;
  host.hybrid();
  host.machine.Fail("EnumDisplaySettingsA", 1);
  host.machine.Fail("EnumDisplaySettingsW", 1);
  host.Forget();
  EXPECT_EQ(host.box().ApplyCloneAcrossAdapters(&host.hybrid(), kNb, kNb), 1);
  Course course;
  course.text = std::string(kClear) + kPanelAlone + kPanelClone +
                "EnumDisplaySettingsW(null -1)=0\nEnumDisplaySettingsA(null -1)=0\n" + kDevices;
  course.Primary(1);
  EXPECT_EQ(host.Told(), course.text + kDevices + kCommit);
}

TEST(HybridArrange, UnknownNativeSizeIs1024By768AndTheNextDisplayFollows) {
  HybridHost host;
  *host.sizes = {{kHdmi, {1920, 1080}}};
  host.hybrid();
  host.Forget();
  const uint32_t all = kNb | kCrt | kHdmi | kDp;
  EXPECT_EQ(host.box().ApplyExtendAcrossAdaptersWithSize(&host.hybrid(), all, all), 1);
  Course course;
  course.text = std::string(kDevices) + kCurrent;
  course.Primary(1, true);
  course.Next(2, kCrt, 1024, 768);
  course.text += kDevices;
  course.Next(3, kDp, 1024, 768, true);
  course.Next(4, kHdmi, 1920, 1080);  // at 1366 + 1024 + 1024
  EXPECT_EQ(host.Told(), course.text + kCommit);
  EXPECT_NE(course.text.find("at 3414,0"), std::string::npos);
}

TEST(HybridArrange, MissingWindowsObjectKnowsNoSize) {
  HybridHost host;
  IMMonitor& hybrid =
      host.HybridOver(new FakeExtensionMonitor(host.intel), host.NewNvidia(), nullptr);
  EXPECT_EQ(host.box().ApplyExtendAcrossAdaptersWithSize(&hybrid, kDp, kDp), 1);
  EXPECT_NE(host.Told().find("\\\\.\\DISPLAY3 1024x768x32@60 at 1366,0"), std::string::npos);
}

TEST(HybridArrange, DeviceWithoutStoredSettingsTakesOverTheRecordBeforeIt) {
  HybridHost host;
  UseNativeSizes(&host);
  host.hybrid();
  host.machine.model().sources[0].mode.bits = 16;
  host.Forget();
  EXPECT_EQ(host.box().ApplyExtendAcrossAdaptersWithSize(&host.hybrid(), kCrt, kCrt), 1);
  EXPECT_NE(host.Told().find("\\\\.\\DISPLAY2 1280x1024x16@60 at 1366,0"), std::string::npos);
}

// The stored place of a device counts for y and for what the fields name, and never for x.
TEST(HybridArrange, StoredSettingsOfADeviceCountButForX) {
  HybridHost host;
  UseNativeSizes(&host);
  host.hybrid();
  sim::Source& source = host.machine.model().sources[2];
  source.registry = sim::DisplayMode{800, 600, 16, 75};
  source.x = 5000;
  source.y = 33;
  host.Forget();
  EXPECT_EQ(host.box().ApplyExtendAcrossAdaptersWithSize(&host.hybrid(), kDp, kDp), 1);
  const std::string told = host.Told();
  EXPECT_NE(told.find("EnumDisplaySettingsA(\\\\.\\DISPLAY3 -2)=1\nccd GetNativeResolution(0x20)\n"
                      "ChangeDisplaySettingsExA(\\\\.\\DISPLAY3 1600x900x16@75 at 1366,33 "
                      "fields=0x180020 flags=0x10000003)="),
            std::string::npos)
      << told;
}

// Each call of Windows in turn, and all from it on, until a switch sees no fault any more.
TEST(HybridArrange, ResultFollowsTheLastCommitUnderEveryFault) {
  uint32_t refused = 0;
  for (const char* function : {"ChangeDisplaySettingsExA", "EnumDisplaySettingsA",
                               "EnumDisplaySettingsW", "EnumDisplayDevicesW"}) {
    for (const auto repeat : {sim::Machine::Repeat::kOnce, sim::Machine::Repeat::kFromThenOn}) {
      bool reached = true;
      for (uint32_t nth = 1; reached; ++nth) {
        HybridHost host;
        UseNativeSizes(&host);
        host.Connected(kNb | kCrt, kHdmi | kDp);
        host.hybrid();
        host.machine.ForgiveUnusedFaults();
        host.machine.Fail(function, nth, 0, repeat);
        const std::string changes = ChangesIn(host.Switch(kP2, kNb | kCrt | kHdmi | kDp));
        reached = host.machine.FaultsGiven() > 0;
        const size_t commit = changes.rfind(kCommit);
        const bool commits_last = commit != std::string::npos &&
                                  commit + std::string(kCommit).size() + 2 == changes.size();
        EXPECT_EQ(changes.substr(changes.size() - 2), commits_last ? "1\n" : "0\n")
            << function << " " << nth << "\n"
            << changes;
        refused += commits_last ? 0 : 1;
      }
    }
  }
  EXPECT_GE(refused, 3u);
}

// --- The clone of the second arrangement.

TEST(HybridArrange, IntelThatCannotSayWhatIsConnectedEndsIt) {
  HybridHost host;
  host.intel->connected_result = 0;
  host.hybrid();
  host.Forget();
  EXPECT_EQ(host.box().ApplyCloneAcrossAdapters(&host.hybrid(), kNb | kCrt, kNb), 0);
  EXPECT_EQ(host.Told(), std::string(kClear) + kPanelAlone + "intel GetConnectedDisplays\n");
}

TEST(HybridArrange, RefusedCloneIsLoggedAndTheArrangementGoesOn) {
  for (const BOOL result : {0, 2, 1}) {
    HybridHost host;
    host.intel->set_result = result;
    host.hybrid();
    host.Forget();
    EXPECT_EQ(host.box().ApplyCloneAcrossAdapters(&host.hybrid(), kNb | kCrt, kNb), 1);
    EXPECT_EQ(host.TakeLogWithSeverity(),
              result == 1 ? "" : "ERROR Turn on clone mode by Intel display library failed\n");
    EXPECT_NE(host.Told().find(kCommit), std::string::npos);
  }
}

TEST(HybridArrange, SecondArrangementIgnoresWhatTheCloneGave) {
  HybridHost host;
  host.clone_result = 0;
  host.ccd->set_result = 0;
  EXPECT_EQ(host.box().ApplyCloneAcrossAdapters(&host.hybrid(), kNb, kNb), 1);
}

TEST(HybridArrange, DviIsPlacedNowhere) {
  HybridHost host;
  host.hybrid();
  const uint32_t displays = kNb | kDvi | kTv;
  for (const uint32_t mode : {kP1, kP2}) {
    host.Connected(displays, kDvi);
    const std::string told = host.Switch(mode, displays);
    EXPECT_EQ(CountOf(told, "GetNativeResolution"), 0u) << told;
    EXPECT_EQ(CountOf(told, "DISPLAY2") + CountOf(told, "DISPLAY3"), 0u) << told;
  }
}

// --- Over Windows itself.

TEST(HybridOverWindows, FirstArrangementStandsSideBySide) {
  HybridHost host;
  IMMonitor& hybrid = host.HybridOverWindows();
  host.Connected(kNb | kCrt, kHdmi | kDp);
  host.tells_reads = false;
  EXPECT_EQ(hybrid.SetNewDisplayMode(kP1, kNb | kCrt | kHdmi | kDp), 1);
  const std::string panel_alone =
      "SetDisplayConfig(paths=1 flags=0x660)=0\nSetDisplayConfig(paths=1 flags=0x6a0)=0\n";
  EXPECT_EQ(ChangesIn(host.Told()), std::string(kClear) + "nvidia SetNewDisplayMode(1, 0x20)\n" +
                                        panel_alone + kP1Commits + kP1SizeCommits);
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt+dp+hdmi");
}

TEST(HybridOverWindows, WantedPartStandsSideBySide) {
  HybridHost host;
  IMMonitor& hybrid = host.HybridOverWindows();
  host.Connected(kNb | kCrt, kHdmi | kDp);
  EXPECT_EQ(hybrid.SetNewDisplayMode(kP1, kNb | kDp), 1);
  EXPECT_EQ(host.machine.Topology(), "extend internal+dp");
}

TEST(HybridOverWindows, SizeThatWindowsDoesNotKnowIsAssumed) {
  HybridHost host;
  IMMonitor& hybrid = host.HybridOverWindows();
  host.Connected(kNb, kDp);
  host.machine.Fail("DisplayConfigGetDeviceInfo", 1, ERROR_GEN_FAILURE,
                    sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(hybrid.SetNewDisplayMode(kP1, kNb | kDp), 1);
  EXPECT_EQ(host.machine.Topology(), "extend internal+dp");
  EXPECT_EQ(host.machine.model().sources[2].mode.width, 1024u);
}

}  // namespace
