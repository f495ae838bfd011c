// What the base class of every back-end answers with plain Windows calls.
#include <gtest/gtest.h>

#include "tests/behaviour/CoreHost.h"

namespace {

constexpr char kPanelAndCrt[] = "win7 intel: internal 1366x768 active, crt 1280x1024";
constexpr char kPanelAlone[] = "win7 intel*1: internal 1366x768 active";
constexpr char kExtended[] = "win7 intel: internal 1366x768 active, crt 1280x1024 active";
constexpr char kCloned[] = "win7 intel: clone internal 1366x768 active, crt 1366x768 active";
constexpr uint32_t kBadMode = static_cast<uint32_t>(DISP_CHANGE_BADMODE);
constexpr uint32_t kFailed = static_cast<uint32_t>(DISP_CHANGE_FAILED);

using BarePointer = std::unique_ptr<MultiMonitor>;

BarePointer NewBare(CoreHost* host) { return BarePointer(host->core().NewBareMultiMonitor()); }

// --- Counting devices.

TEST(MultiMonitor, CountsTheDisplayDevicesWhenItIsMade) {
  CoreHost two(kPanelAndCrt);
  EXPECT_EQ(NewBare(&two)->HasDualOutputCapability(), 1);
}

TEST(MultiMonitor, OneDeviceIsNoDualOutput) {
  CoreHost one(kPanelAlone);
  EXPECT_EQ(NewBare(&one)->HasDualOutputCapability(), 0);
}

TEST(MultiMonitor, MirroringDriversDoNotCount) {
  CoreHost host("win7 intel*1, amd*1: internal 1366x768 active");
  host.machine.model().adapters[1].mirroring = true;
  EXPECT_EQ(NewBare(&host)->HasDualOutputCapability(), 0);
}

TEST(MultiMonitor, CountIsNotTakenAgainWhenDevicesVanish) {
  CoreHost host(kPanelAndCrt);
  const BarePointer bare = NewBare(&host);
  host.machine.model().sources.pop_back();
  EXPECT_EQ(bare->HasDualOutputCapability(), 1);
}

TEST(MultiMonitor, CountingAgainAddsToTheCount) {
  CoreHost host(kPanelAlone);
  const BarePointer bare = NewBare(&host);
  bare->CountDisplayDevices();
  EXPECT_EQ(bare->HasDualOutputCapability(), 1);
}

// --- IsExtendModeEnabled

TEST(MultiMonitor, TwoAttachedDevicesAreAnExtendedDesktop) {
  CoreHost host(kExtended);
  EXPECT_EQ(NewBare(&host)->IsExtendModeEnabled(), 1);
}

TEST(MultiMonitor, CloneIsNoExtendedDesktop) {
  CoreHost host(kCloned);
  EXPECT_EQ(NewBare(&host)->IsExtendModeEnabled(), 0);
}

TEST(MultiMonitor, OneAttachedDeviceIsNoExtendedDesktop) {
  CoreHost host(kPanelAndCrt);
  EXPECT_EQ(NewBare(&host)->IsExtendModeEnabled(), 0);
}

TEST(MultiMonitor, StopsListingAtTheSecondAttachedDevice) {
  CoreHost host("win7 intel*3: internal 1366x768 active, crt 1280x1024 active");
  const BarePointer bare = NewBare(&host);
  const uint32_t before = host.machine.Calls("EnumDisplayDevicesA");
  EXPECT_EQ(bare->IsExtendModeEnabled(), 1);
  EXPECT_EQ(host.machine.Calls("EnumDisplayDevicesA"), before + 2);
}

TEST(MultiMonitor, WithOneDeviceWindowsIsNotAsked) {
  CoreHost host(kPanelAlone);
  const BarePointer bare = NewBare(&host);
  // Two attached devices by now, but one was counted.
  sim::Model& model = host.machine.model();
  model.sources.push_back(model.sources[0]);
  model.sources[1].source_id = 1;
  model.sources[1].device_name = "\\\\.\\DISPLAY2";
  model.active.push_back({1, 0});
  const uint32_t before = host.machine.Calls("EnumDisplayDevicesA");
  EXPECT_EQ(bare->IsExtendModeEnabled(), 0);
  EXPECT_EQ(host.machine.Calls("EnumDisplayDevicesA"), before);
}

TEST(MultiMonitor, AttachedMirroringDriverDoesNotExtend) {
  CoreHost host("win7 intel, amd: internal 1366x768 active, hdmi@2 1920x1080 active");
  const BarePointer bare = NewBare(&host);
  ASSERT_EQ(bare->IsExtendModeEnabled(), 1);
  host.machine.model().adapters[1].mirroring = true;
  EXPECT_EQ(bare->IsExtendModeEnabled(), 0);
}

// --- Small defaults.

TEST(MultiMonitor, PreloadsTheModesOfTwoFixedDevices) {
  CoreHost host(kPanelAndCrt);
  sim::Model& model = host.machine.model();
  model.connectors[0].monitor->modes.resize(3);
  model.connectors[1].monitor->modes.resize(2);
  const BarePointer bare = NewBare(&host);
  host.machine.JournalReads(true);
  bare->PreloadDisplayModes();
  EXPECT_EQ(host.machine.TakeJournal(),
            "EnumDisplaySettingsA(\\\\.\\DISPLAY1 0)=1\n"
            "EnumDisplaySettingsA(\\\\.\\DISPLAY1 1)=1\n"
            "EnumDisplaySettingsA(\\\\.\\DISPLAY1 2)=1\n"
            "EnumDisplaySettingsA(\\\\.\\DISPLAY1 3)=0\n"
            "EnumDisplaySettingsA(\\\\.\\DISPLAY2 0)=1\n"
            "EnumDisplaySettingsA(\\\\.\\DISPLAY2 1)=1\n"
            "EnumDisplaySettingsA(\\\\.\\DISPLAY2 2)=0\n");
}

TEST(MultiMonitor, PreloadGoesOnToTheSecondDeviceWhenTheFirstHasNothing) {
  CoreHost host(kPanelAndCrt);
  host.machine.model().connectors[1].monitor->modes.resize(1);
  const BarePointer bare = NewBare(&host);
  host.machine.Fail("EnumDisplaySettingsA", 1);
  host.machine.JournalReads(true);
  bare->PreloadDisplayModes();
  EXPECT_EQ(host.machine.TakeJournal(),
            "EnumDisplaySettingsA(\\\\.\\DISPLAY1 0)=0\n"
            "EnumDisplaySettingsA(\\\\.\\DISPLAY2 0)=1\n"
            "EnumDisplaySettingsA(\\\\.\\DISPLAY2 1)=0\n");
}

TEST(MultiMonitor, PanelOnlyIsSingleModeOnThePanel) {
  CoreHost host(kPanelAndCrt);
  const BarePointer bare = NewBare(&host);
  EXPECT_EQ(bare->ChangeToNBOnlySingleDisplayMode(), 7);  // the back-end's own result
  EXPECT_EQ(host.core().TakeBareCalls(bare.get()), "SetNewDisplayMode(1, 1)\n");
}

TEST(MultiMonitor, DefaultsThatNeedNoWindows) {
  CoreHost host(kPanelAndCrt);
  const BarePointer bare = NewBare(&host);
  bare->DetectDisplays();
  EXPECT_EQ(bare->HasDisplaySwitchingCapability(), 1);
  EXPECT_EQ(bare->ShouldResetDisplaySettingAfterSwtich(), 1);
  EXPECT_EQ(bare->GetVgaVendor(), 0u);
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST(MultiMonitor, HasNoNameWithoutAnEdid) {
  CoreHost host(kPanelAndCrt);
  const BarePointer bare = NewBare(&host);
  std::string name = "unchanged";
  EXPECT_EQ(bare->GetMonitorName(IMMonitor::MD_NB, &name), 0);
  EXPECT_EQ(name, "unchanged");
  EXPECT_EQ(host.core().TakeBareCalls(bare.get()), "GetMonitorEDID(1)\n");
}

TEST(MultiMonitor, GivesAnEmptyEdidBack) {
  CoreHost host(kPanelAndCrt);
  const BarePointer bare = NewBare(&host);
  host.core().SetBareEdid(bare.get(), true);
  std::string name = "unchanged";
  EXPECT_EQ(bare->GetMonitorName(IMMonitor::MD_NB, &name), 0);
  EXPECT_EQ(name, "unchanged");
  EXPECT_EQ(host.core().TakeBareCalls(bare.get()), "GetMonitorEDID(1)\nFreeMonitorEDID\n");
}

// --- EnableExtendMode. dmFields 0x7c00a0 is what Windows fills in for current settings.

std::string Change(const std::string& device, const std::string& what, const std::string& flags,
                   int result = 0) {
  return "ChangeDisplaySettingsExA(" + device + " " + what + " flags=" + flags +
         ")=" + std::to_string(result) + "\n";
}
constexpr char kFirst[] = "\\\\.\\DISPLAY1";
constexpr char kSecond[] = "\\\\.\\DISPLAY2";
constexpr char kCommit[] = "ChangeDisplaySettingsExA(null null flags=0x0)=0\n";

std::string PrimarySteps() {
  const std::string what = "1366x768x32@60 at 0,0 fields=0x7c00a0";
  return Change(kFirst, what, "0x2") + Change(kFirst, what, "0x10000019");
}

// The secondary device's steps where nothing is refused.
std::string SecondarySteps(const std::string& what) {
  return Change(kSecond, what, "0x2") + Change(kSecond, what, "0x2") +
         Change(kSecond, what, "0x10000009");
}

class EnableExtendMode : public testing::Test {
 protected:
  void SetUp() override {
    bare = NewBare(&host);
    host.machine.TakeJournal();
  }
  void TearDown() override { bare.reset(); }

  CoreHost host{kPanelAndCrt, L"--enable-dcheck"};
  BarePointer bare;
};

// Reads are in the journal, and the cursor stood at 100, 200.
void ExpectCursorAfterTheCommit(const std::string& journal) {
  const size_t commit = journal.find("ChangeDisplaySettingsExA(null null");
  const size_t put_back = journal.find("SetCursorPos(100,200)=1\n");
  ASSERT_NE(commit, std::string::npos) << journal;
  ASSERT_NE(put_back, std::string::npos) << journal;
  EXPECT_LT(commit, put_back) << journal;
}

TEST_F(EnableExtendMode, PlacesTheSecondDeviceToTheRightOfTheFirst) {
  host.machine.SetCursor(100, 200);
  EXPECT_EQ(bare->EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.TakeJournal(),
            PrimarySteps() + SecondarySteps("1024x768x32@60 at 1366,0 fields=0x5c0020") + kCommit);
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
  const sim::Source& crt = host.machine.model().sources[1];
  EXPECT_EQ(crt.mode.width, 1024u);
  EXPECT_EQ(crt.mode.height, 768u);
  EXPECT_EQ(crt.x, 1366);
  EXPECT_EQ(crt.y, 0);
}

TEST_F(EnableExtendMode, PreloadsTheModesFirst) {
  host.machine.JournalReads(true);
  bare->EnableExtendMode(1);
  const std::string journal = host.machine.TakeJournal();
  EXPECT_EQ(journal.rfind("EnumDisplaySettingsA(\\\\.\\DISPLAY1 0)=1\n", 0), 0u) << journal;
}

TEST_F(EnableExtendMode, PutsTheCursorBackAfterTheCommit) {
  host.machine.JournalReads(true);
  host.machine.SetCursor(100, 200);
  EXPECT_EQ(bare->EnableExtendMode(1), 1);
  const std::string journal = host.machine.TakeJournal();
  ExpectCursorAfterTheCommit(journal);
}

TEST_F(EnableExtendMode, CursorThatCannotBeReadIsLeftAlone) {
  host.machine.Fail("GetCursorPos", 1);
  EXPECT_EQ(bare->EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.Calls("SetCursorPos"), 0u);
}

TEST_F(EnableExtendMode, FailedCommitGivesZeroAndTheCursorBack) {
  host.machine.JournalReads(true);
  host.machine.SetCursor(100, 200);
  host.machine.Fail("ChangeDisplaySettingsExA", 6, kFailed);
  EXPECT_EQ(bare->EnableExtendMode(1), 0);
  ExpectCursorAfterTheCommit(host.machine.TakeJournal());
  EXPECT_EQ(host.machine.Calls("SetCursorPos"), 1u);
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST_F(EnableExtendMode, OffDetachesTheSecondDevice) {
  ASSERT_EQ(bare->EnableExtendMode(1), 1);
  host.machine.TakeJournal();
  EXPECT_EQ(bare->EnableExtendMode(0), 1);
  const std::string what = "0x0x32@60 at 0,0 fields=0x180020";
  EXPECT_EQ(host.machine.TakeJournal(), PrimarySteps() + Change(kSecond, what, "0x2") +
                                            Change(kSecond, what, "0x10000009") + kCommit);
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST_F(EnableExtendMode, SaysWhetherTheDesktopIsNowAsWanted) {
  // Everything succeeds, but the desktop is not read as extended afterwards.
  host.machine.Fail("EnumDisplayDevicesA", 4);  // after the two devices and the end of their list
  EXPECT_EQ(bare->EnableExtendMode(1), 0);
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
}

TEST_F(EnableExtendMode, OnDisplaysDropsTheMask) {
  EXPECT_EQ(bare->EnableExtendModeOnDisplays(1, 0), 1);
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
  EXPECT_EQ(bare->EnableExtendModeOnDisplays(0, IMMonitor::MD_CRT), 1);
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST_F(EnableExtendMode, RefusedPrimaryTestEndsIt) {
  host.machine.Fail("ChangeDisplaySettingsExA", 1, kFailed);
  EXPECT_EQ(bare->EnableExtendMode(1), 0);
  EXPECT_EQ(host.machine.TakeJournal(),
            Change(kFirst, "1366x768x32@60 at 0,0 fields=0x7c00a0", "0x2", -1));
}

TEST_F(EnableExtendMode, RefusedPrimaryChangeEndsIt) {
  host.machine.Fail("ChangeDisplaySettingsExA", 2, kFailed);
  EXPECT_EQ(bare->EnableExtendMode(1), 0);
  const std::string what = "1366x768x32@60 at 0,0 fields=0x7c00a0";
  EXPECT_EQ(host.machine.TakeJournal(),
            Change(kFirst, what, "0x2") + Change(kFirst, what, "0x10000019", -1));
}

TEST_F(EnableExtendMode, UnreadablePrimaryEndsIt) {
  host.machine.Fail("EnumDisplaySettingsExA", 1);
  EXPECT_EQ(bare->EnableExtendMode(1), 0);
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST_F(EnableExtendMode, UnreadableSecondaryIsReadFromTheRegistry) {
  host.machine.model().sources[1].registry = sim::DisplayMode{640, 480, 16, 60};
  host.machine.Config("ExtendMode:2nd", "Width", 0);
  host.machine.Config("ExtendMode:2nd", "Height", 0);
  host.machine.Fail("EnumDisplaySettingsExA", 2);
  EXPECT_EQ(bare->EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.TakeJournal(),
            PrimarySteps() + SecondarySteps("640x480x32@60 at 1366,0 fields=0x5c0020") + kCommit);
}

TEST_F(EnableExtendMode, SecondaryWithoutSettingsTakesThePrimarysRecord) {
  host.machine.model().connectors[1].monitor->modes.push_back({1366, 768, 32, 60});
  host.machine.Config("ExtendMode:2nd", "Width", 0);
  host.machine.Config("ExtendMode:2nd", "Height", 0);
  host.machine.Fail("EnumDisplaySettingsExA", 2);
  host.machine.Fail("EnumDisplaySettingsExA", 3);
  EXPECT_EQ(bare->EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.TakeJournal(),
            PrimarySteps() + SecondarySteps("1366x768x32@60 at 1366,0 fields=0x5c0020") + kCommit);
}

TEST_F(EnableExtendMode, TakesTheConfiguredSize) {
  host.machine.Config("ExtendMode:2nd", "Width", 1280);
  host.machine.Config("ExtendMode:2nd", "Height", 1024);
  EXPECT_EQ(bare->EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.TakeJournal(),
            PrimarySteps() + SecondarySteps("1280x1024x32@60 at 1366,0 fields=0x5c0020") + kCommit);
}

TEST_F(EnableExtendMode, ReadsTheSizeAtEachUse) {
  host.machine.Config("ExtendMode:2nd", "Width", 1280);
  host.machine.Config("ExtendMode:2nd", "Height", 1024);
  ASSERT_EQ(bare->EnableExtendMode(1), 1);
  ASSERT_EQ(bare->EnableExtendMode(0), 1);
  host.machine.Config("ExtendMode:2nd", "Width", 800);
  host.machine.Config("ExtendMode:2nd", "Height", 600);
  EXPECT_EQ(bare->EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.model().sources[1].mode.width, 800u);
}

TEST_F(EnableExtendMode, WidthOfZeroKeepsThePreviousWidth) {
  host.machine.Fail("EnumDisplaySettingsExA", 2);
  host.machine.model().sources[1].registry = sim::DisplayMode{1280, 1024, 32, 60};
  host.machine.Config("ExtendMode:2nd", "Width", 0);
  host.machine.Config("ExtendMode:2nd", "Height", 720);
  EXPECT_EQ(bare->EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.TakeJournal(),
            PrimarySteps() + SecondarySteps("1280x720x32@60 at 1366,0 fields=0x5c0020") + kCommit);
}

TEST_F(EnableExtendMode, HeightOfZeroKeepsThePreviousHeight) {
  host.machine.Fail("EnumDisplaySettingsExA", 2);
  host.machine.model().sources[1].registry = sim::DisplayMode{1280, 1024, 32, 60};
  host.machine.Config("ExtendMode:2nd", "Width", 1280);
  host.machine.Config("ExtendMode:2nd", "Height", 0);
  EXPECT_EQ(bare->EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.model().sources[1].mode.height, 1024u);
}

TEST_F(EnableExtendMode, PicksTheDeepestColourAtSixtyHertz) {
  // The deepest mode of that size runs at 75 Hz only; 60 is asked for all the same, and refused.
  host.machine.model().connectors[1].monitor->modes = {
      {1024, 768, 16, 60}, {1024, 768, 32, 75}, {1024, 768, 8, 60}, {1280, 1024, 64, 60}};
  bare->EnableExtendMode(1);
  const std::string picked =
      Change(kSecond, "1024x768x32@60 at 1366,0 fields=0x5c0020", "0x2", DISP_CHANGE_BADMODE);
  EXPECT_EQ(host.machine.TakeJournal().rfind(PrimarySteps() + picked, 0), 0u);
}

TEST_F(EnableExtendMode, WithoutAModeOfThatSizeDepthAndFrequencyStay) {
  host.machine.Fail("EnumDisplaySettingsExA", 2);
  host.machine.model().sources[1].registry = sim::DisplayMode{640, 480, 16, 72};
  host.machine.Config("ExtendMode:2nd", "Width", 1000);
  host.machine.Config("ExtendMode:2nd", "Height", 700);
  bare->EnableExtendMode(1);
  // 1000x700 is no mode, so the test refuses it; 800x600 at 72 Hz is none either.
  const std::string refused = "1000x700x16@72 at 1366,0 fields=0x5c0020";
  const std::string smaller = "800x600x16@72 at 1366,0 fields=0x5c0020";
  const std::string last_resort = "1024x768x16@60 at 1366,0 fields=0x5c0020";
  EXPECT_EQ(host.machine.TakeJournal(), PrimarySteps() + Change(kSecond, refused, "0x2", -2) +
                                            Change(kSecond, smaller, "0x2", -2) +
                                            Change(kSecond, last_resort, "0x2") +
                                            Change(kSecond, last_resort, "0x10000009"));
}

TEST_F(EnableExtendMode, RefusedSizeBecomes800By600WithTheDepthPickedBefore) {
  // Only 16 bits at the wanted size; 800x600 has 32, too.
  host.machine.model().connectors[1].monitor->modes = {
      {1024, 768, 16, 60}, {800, 600, 16, 60}, {800, 600, 32, 60}};
  host.machine.Fail("ChangeDisplaySettingsExA", 3, kFailed);
  EXPECT_EQ(bare->EnableExtendMode(1), 1);
  const std::string smaller = "800x600x16@60 at 1366,0 fields=0x5c0020";
  // One test of 800x600, the one in front of the change.
  EXPECT_EQ(host.machine.TakeJournal(),
            PrimarySteps() +
                Change(kSecond, "1024x768x16@60 at 1366,0 fields=0x5c0020", "0x2", -1) +
                Change(kSecond, smaller, "0x2") + Change(kSecond, smaller, "0x10000009") + kCommit);
}

TEST_F(EnableExtendMode, BadModeIsFollowedByALastResortThatCountsAsFailure) {
  host.machine.Fail("ChangeDisplaySettingsExA", 4, kBadMode);
  EXPECT_EQ(bare->EnableExtendMode(1), 0);
  const std::string what = "1024x768x32@60 at 1366,0 fields=0x5c0020";
  const std::string last_resort = "1024x768x16@60 at 1366,0 fields=0x5c0020";
  EXPECT_EQ(host.machine.TakeJournal(),
            PrimarySteps() + Change(kSecond, what, "0x2") + Change(kSecond, what, "0x2", -2) +
                Change(kSecond, last_resort, "0x2") + Change(kSecond, last_resort, "0x10000009"));
  EXPECT_EQ(host.machine.Topology(), "single internal");  // stored, not in effect
  ASSERT_TRUE(host.machine.model().sources[1].staged.has_value());
  EXPECT_EQ(host.machine.model().sources[1].staged->mode.bits, 16u);
}

TEST_F(EnableExtendMode, BadModeOfTheChangeItselfHasTheLastResort) {
  host.machine.Fail("ChangeDisplaySettingsExA", 5, kBadMode);
  EXPECT_EQ(bare->EnableExtendMode(1), 0);
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "1024x768x16@60"), 2u);
}

TEST_F(EnableExtendMode, RefusedLastResortFailsAlike) {
  host.machine.Fail("ChangeDisplaySettingsExA", 4, kBadMode, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(bare->EnableExtendMode(1), 0);
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "1024x768x16@60"), 1u);
}

TEST_F(EnableExtendMode, AnyOtherFailureHasNoLastResort) {
  host.machine.Fail("ChangeDisplaySettingsExA", 4, kFailed);
  EXPECT_EQ(bare->EnableExtendMode(1), 0);
  const std::string what = "1024x768x32@60 at 1366,0 fields=0x5c0020";
  EXPECT_EQ(host.machine.TakeJournal(),
            PrimarySteps() + Change(kSecond, what, "0x2") + Change(kSecond, what, "0x2", -1));
}

TEST_F(EnableExtendMode, OffHasNoLastResort) {
  ASSERT_EQ(bare->EnableExtendMode(1), 1);
  host.machine.TakeJournal();
  host.machine.Fail("ChangeDisplaySettingsExA", 3, kBadMode);
  EXPECT_EQ(bare->EnableExtendMode(0), 0);
  EXPECT_EQ(host.machine.TakeJournal(),
            PrimarySteps() + Change(kSecond, "0x0x32@60 at 0,0 fields=0x180020", "0x2", -2));
}

TEST_F(EnableExtendMode, FailedSecondaryLeavesThePrimaryStored) {
  host.machine.Fail("ChangeDisplaySettingsExA", 4, kFailed);
  EXPECT_EQ(bare->EnableExtendMode(1), 0);
  ASSERT_TRUE(host.machine.model().sources[0].staged.has_value());
  EXPECT_TRUE(host.machine.model().sources[0].staged->primary);
}

TEST_F(EnableExtendMode, NeedsASecondDeviceBehindTheFirstAttachedOne) {
  host.machine.model().active = {{1, 1}};  // DISPLAY1 comes first and is not attached
  host.machine.model().primary_source = 1;
  host.ForgetLog();
  EXPECT_EQ(bare->EnableExtendMode(1), 0);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.TakeLog(),
            "Check failed: attached_devices.size() >= 2 && \"There should at least two display "
            "attached to system\". \n");
}

// --- GetDisplaySettings, through a Win7CCD made for the purpose.

DEVMODEA Asked() {
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  dm.dmFields = 0x5C0080;
  return dm;
}

TEST(MultiMonitorGetDisplaySettings, AnswersFromWindows7On) {
  CoreHost host(kExtended);
  const BarePointer bare = NewBare(&host);
  DEVMODEA dm = Asked();
  EXPECT_TRUE(bare->GetDisplaySettings(IMMonitor::MD_CRT, &dm));
  EXPECT_EQ(dm.dmPelsWidth, 1280u);
  EXPECT_EQ(dm.dmPelsHeight, 1024u);
  EXPECT_EQ(dm.dmBitsPerPel, 32u);
  EXPECT_EQ(dm.dmDisplayFrequency, 60u);
  EXPECT_EQ(host.Modules(), 0u);  // the object and its library are gone
}

TEST(MultiMonitorGetDisplaySettings, DisplayThatShowsNothingHasNone) {
  CoreHost host(kPanelAndCrt);
  const BarePointer bare = NewBare(&host);
  DEVMODEA dm = Asked();
  EXPECT_FALSE(bare->GetDisplaySettings(IMMonitor::MD_CRT, &dm));
  EXPECT_EQ(host.Modules(), 0u);
}

TEST(MultiMonitorGetDisplaySettings, HasNoAnswerUpToVista) {
  for (const char* windows : {"xp", "2003", "vista"}) {
    CoreHost host(std::string(windows) + " intel: internal 1366x768 active");
    const BarePointer bare = NewBare(&host);
    const uint32_t loads = host.machine.Calls("LoadLibraryA");
    DEVMODEA dm = Asked();
    EXPECT_FALSE(bare->GetDisplaySettings(IMMonitor::MD_NB, &dm)) << windows;
    EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads) << windows;
  }
}

TEST(MultiMonitorGetDisplaySettings, ServersThrowWhichCountsAsFailure) {
  for (const char* windows : {"2008", "2008r2"}) {
    CoreHost host(std::string(windows) + " intel: internal 1366x768 active");
    const BarePointer bare = NewBare(&host);
    DEVMODEA dm = Asked();
    EXPECT_FALSE(bare->GetDisplaySettings(IMMonitor::MD_NB, &dm)) << windows;
    EXPECT_EQ(host.Modules(), 0u) << windows;
  }
}

TEST(MultiMonitorGetDisplaySettings, FailedInitialGivesTheObjectBack) {
  CoreHost host(kExtended);
  const BarePointer bare = NewBare(&host);
  host.machine.Fail("LoadLibraryA", 1);
  DEVMODEA dm = Asked();
  EXPECT_FALSE(bare->GetDisplaySettings(IMMonitor::MD_NB, &dm));
  EXPECT_EQ(host.Modules(), 0u);
}

TEST(MultiMonitorGetDisplaySettings, ChecksItsArguments) {
  CoreHost host(kExtended, L"--enable-dcheck");
  const BarePointer bare = NewBare(&host);
  host.ForgetLog();
  EXPECT_FALSE(bare->GetDisplaySettings(3, nullptr));
  EXPECT_EQ(host.TakeLog(),
            "Check failed: CountBits(imm_display) == 1. \nCheck failed: dm != NULL. \n");
}

TEST(MultiMonitorGetDisplaySettings, MaskOfZeroFailsTheCheckAndFindsNoDisplay) {
  CoreHost host(kExtended, L"--enable-dcheck");
  const BarePointer bare = NewBare(&host);
  host.ForgetLog();
  DEVMODEA dm = Asked();
  EXPECT_FALSE(bare->GetDisplaySettings(0, &dm));
  EXPECT_EQ(host.TakeLog(),
            std::string("Check failed: CountBits(imm_display) == 1. \n") + kNoDisplayLink);
}

}  // namespace
