// The legacy AMD back-end: the ways to an extended desktop and back, rung by rung.
#include <gtest/gtest.h>

#include "tests/behaviour/AtiHost.h"
#include "tests/behaviour/ScriptedAti.h"

namespace {

constexpr wchar_t kChecked[] = L"--enable-dcheck";
constexpr char kKey[] = "Always Use Windows API To Control Extend Mode";
constexpr char kSetAdapterConfig[] = "ATIDL_SetAdapterConfig";
constexpr char kChange[] = "ChangeDisplaySettingsExA";
constexpr char kEnableExtendedDesktop[] = "EnableExtendedDesktop";
constexpr char kFirstSize[] = "1024x768x32@60";
constexpr char kSecondSize[] = "800x600x32@60";
constexpr auto kFromThenOn = sim::Machine::Repeat::kFromThenOn;

// --- On: two display devices.

TEST(AtiExtend, TwoDevicesAreExtendedByWindows) {
  AtiHost host(kPanelCrt);
  EXPECT_EQ(host.Extend(1), std::string(kByWindows) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
  EXPECT_EQ(host.machine.Calls("ATIDL_GetAdapterConfig"), 0u);
}

TEST(AtiExtend, LibraryIsTheLastRung) {
  AtiHost host(kPanelCrt);
  host.ati();
  host.machine.Fail(kChange, 1);
  EXPECT_EQ(host.Extend(1), kByWindows + AtiExtend(1, 1) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
}

TEST(AtiExtend, ResultIsTheDesktopNotTheLibrarys) {
  AtiHost host(kPanelCrt);
  host.ati();
  host.machine.Fail(kChange, 1);
  host.machine.Fail(kEnableExtendedDesktop, 1);
  EXPECT_EQ(host.Extend(1), kByWindows + AtiExtend(1, 1, 7) + "0");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(AtiExtend, ExtendedDesktopIsLeftAlone) {
  AtiHost host(kManyDevicesExtended);
  EXPECT_EQ(host.Extend(1), "1");
  EXPECT_EQ(host.Extend(2), "1");
}

TEST(AtiExtend, AnyNumberButZeroTurnsOn) {
  AtiHost host(kPanelCrt);
  EXPECT_EQ(host.Extend(7), std::string(kByWindows) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
}

TEST(AtiExtend, OneDeviceIsNoDualOutput) {
  AtiHost host(kPanelCrt);
  host.model().sources.resize(1);
  EXPECT_EQ(host.Extend(1), "0");
  EXPECT_EQ(host.Extend(0), "0");
  EXPECT_EQ(host.ExtendOn(1, IMMonitor::MD_CRT), "0");
  EXPECT_EQ(host.ExtendOn(0, IMMonitor::MD_CRT), "0");
}

// --- On: three display devices and more.

TEST(AtiExtend, ManyDevicesAreExtendedByTheAdaptersConfiguration) {
  AtiHost host(kManyDevices);
  EXPECT_EQ(host.Extend(1), AtiAdapterConfigs(kFirstSize, "1") + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
}

TEST(AtiExtend, SmallerSizeIsTheSecondAttempt) {
  AtiHost host(kManyDevices);
  host.machine.Fail(kSetAdapterConfig, 1);
  EXPECT_EQ(host.Extend(1),
            AtiAdapterConfigs(kFirstSize, "1", 7) + AtiAdapterConfigs(kSecondSize, "0") + "1");
}

TEST(AtiExtend, WindowsFollowsTheAdaptersConfiguration) {
  AtiHost host(kManyDevices);
  host.machine.Fail(kSetAdapterConfig, 1, 0, kFromThenOn);
  EXPECT_EQ(host.Extend(1), AtiAdapterConfigs(kFirstSize, "1", 7) +
                                AtiAdapterConfigs(kSecondSize, "0", 7) + kByWindows + "1");
}

TEST(AtiExtend, LibraryFollowsWindows) {
  AtiHost host(kManyDevices);
  host.ati();
  host.machine.Fail("ATIDL_GetAdapterConfig", 1);
  host.machine.Fail(kChange, 1);
  EXPECT_EQ(host.Extend(1), kByWindows + AtiExtend(1, 1) + "1");
}

// The library says yes and the desktop stays as it is.
TEST(AtiExtend, DesktopIsAskedBehindEachRung) {
  AtiHost host(kManyDevices);
  ScriptedAti ati;
  ati.types = {{0, 1}, {1, 2}};
  ati.Install(&host.machine);
  host.ati();
  ati.TakeCalls();
  host.machine.Fail(kChange, 1, DISP_CHANGE_FAILED, kFromThenOn);
  EXPECT_EQ(host.Extend(1), std::string(kByWindows) + "0");
  EXPECT_EQ(ati.TakeCalls(),
            "ATIDL_GetAdapterConfig\nGetConnectedDisplays(0)\nEnumDisplays(0,0)\n"
            "EnumDisplays(0,1)\nATIDL_SetAdapterConfig\nEnableExtendedDesktop(1,1)\n");
}

TEST(AtiExtend, MirroringDevicesAreNotCounted) {
  AtiHost host("win7 amd, none: internal 1366x768 active, crt 1280x1024");
  host.model().adapters[1].mirroring = true;
  EXPECT_EQ(host.Extend(1), std::string(kByWindows) + "1");
  EXPECT_EQ(host.machine.Calls("ATIDL_GetAdapterConfig"), 0u);
}

// --- The key.

TEST(AtiExtend, KeyLeavesItToWindows) {
  AtiHost host(kManyDevices);
  host.machine.Config("Settings", kKey, 1);
  EXPECT_EQ(host.Extend(1), std::string(kByWindows) + "1");
  EXPECT_EQ(host.machine.Calls("ATIDL_GetAdapterConfig"), 0u);
}

TEST(AtiExtend, KeyLeavesTheLastRung) {
  AtiHost host(kManyDevices);
  host.machine.Config("Settings", kKey, 1);
  host.ati();
  host.machine.Fail(kChange, 1);
  EXPECT_EQ(host.Extend(1), kByWindows + AtiExtend(1, 1) + "1");
}

TEST(AtiExtend, KeyIsReadOncePerProcess) {
  for (const int first : {0, 1}) {
    AtiHost host(kManyDevices);
    host.machine.Config("Settings", kKey, first);
    const std::string as_first = host.Extend(1);
    EXPECT_EQ(CountOf(as_first, kByWindows), static_cast<size_t>(first));
    host.machine.Config("Settings", kKey, 1 - first);
    EXPECT_EQ(host.Extend(0), AtiConfig(3, 1) + "1");
    EXPECT_EQ(host.Extend(1), as_first);
  }
}

TEST(AtiExtend, KeyIsReadWhenItIsNeeded) {
  AtiHost host(kManyDevicesExtended);
  host.machine.Config("Settings", kKey, 0);
  EXPECT_EQ(host.Extend(1), "1");  // nothing to do, nothing read
  EXPECT_EQ(host.Extend(0), AtiConfig(3, 1) + "1");
  host.machine.Config("Settings", kKey, 1);
  EXPECT_EQ(host.Extend(1), std::string(kByWindows) + "1");
}

// --- The adapter's configuration.

class AtiAdapterConfigMethod : public testing::Test {
 protected:
  AtiAdapterConfigMethod() : host(kManyDevices) {
    ati.types = {{0, 1}, {1, 2}};
    ati.Install(&host.machine);
    host.ati();
    host.machine.Fail(kChange, 1, DISP_CHANGE_FAILED, kFromThenOn);
  }
  /// The type that the second display is asked for by.
  uint32_t Target() {
    ati.given.clear();
    host.ati().EnableExtendMode(1);
    return ati.given[kSetAdapterConfig].at(0).at(23);
  }

  AtiHost host;
  ScriptedAti ati;
};

TEST_F(AtiAdapterConfigMethod, IsReadIntoAFreshRecord) {
  ati.ids = {{0, 0}, {0, 0}, {0, 0}};
  host.ati().EnableExtendMode(1);
  const ScriptedAti::Words empty = ScriptedAti::Record(39, {156, 0, 72, 0});
  ScriptedAti::Words expected = empty;
  expected[20] = 72;
  expected[21] = 1;
  EXPECT_EQ(ati.given["ATIDL_GetAdapterConfig"], (std::vector<ScriptedAti::Words>{expected}));
}

// Words that are the library's go back as they came.
TEST_F(AtiAdapterConfigMethod, ChangesItsOwnWordsOnly) {
  ScriptedAti::Words words(39);
  for (uint32_t i = 0; i < words.size(); ++i) words[i] = 0xA00 + i;
  ati.get_adapter = ScriptedAti::Answer(words);
  ati.set_adapter = ScriptedAti::Answer({}, -1);
  host.ati().EnableExtendMode(1);

  ScriptedAti::Words expected = words;
  expected[1] = 1;  // to be set
  expected[3] = 0;  // the first entry's adapter and slots
  expected[4] = 1;
  expected[20] = 72;
  expected[21] = 1;
  expected[22] = 1;
  expected[23] = 2;     // type
  expected[31] = 768;   // height
  expected[32] = 1024;  // width
  expected[33] = 32;
  expected[34] = 60;
  expected[36] = 0xA00 + 14;  // to the right of the first one's width
  ScriptedAti::Words second = expected;
  second[31] = 600;
  second[32] = 800;
  second[38] = 0;
  EXPECT_EQ(ati.given[kSetAdapterConfig], (std::vector<ScriptedAti::Words>{expected, second}));
}

TEST_F(AtiAdapterConfigMethod, PositiveResultsAreFailuresToo) {
  ati.set_adapter = ScriptedAti::Answer({}, 1);
  host.ati().EnableExtendMode(1);
  EXPECT_EQ(ati.given[kSetAdapterConfig].size(), 2u);
  ati.given.clear();
  ati.get_adapter = ScriptedAti::Answer({}, 1);
  host.ati().EnableExtendMode(1);
  EXPECT_EQ(ati.given["ATIDL_GetAdapterConfig"].size(), 1u);
  EXPECT_EQ(ati.given.count(kSetAdapterConfig), 0u);
}

TEST_F(AtiAdapterConfigMethod, NamesTheAdapterAndTheNextDevice) {
  host.model().active[0].source = 2;
  ati.ids = {{0, 0}, {0, 0}, {0, 7}, {0, 7}};
  ati.TakeCalls();
  host.ati().EnableExtendMode(1);
  const ScriptedAti::Words asked = ati.given["ATIDL_GetAdapterConfig"].at(0);
  EXPECT_EQ(asked[3], 2u);
  EXPECT_EQ(asked[21], 3u);
  const ScriptedAti::Words set = ati.given[kSetAdapterConfig].at(0);
  EXPECT_EQ(set[3], 2u);
  EXPECT_EQ(set[21], 3u);
  EXPECT_EQ(CountOf(ati.TakeCalls(), "EnableExtendedDesktop(3,1)\n"), 1u);
}

// The first entry gets its adapter before the second one's target is looked for.
TEST(AtiExtend, AdapterIsWorkedOutBeforeTheTarget) {
  AtiHost host(kManyDevices);
  host.ati();
  host.machine.JournalReads(true);
  host.Forget();
  EXPECT_TRUE(host.ati().EnableExtendMode(1));
  std::istringstream lines(host.machine.TakeJournal());
  std::string asked;
  for (std::string line; std::getline(lines, line);) {
    const std::string name = line.substr(0, line.find('('));
    if (name == "GetConnectedDisplays" || name.rfind("ATIDL_", 0) == 0) asked += name + "\n";
  }
  const std::string id = "ATIDL_GetAdapterID\n";
  EXPECT_EQ(CountOf(asked, "ATIDL_GetAdapterConfig\n" + id + id + "GetConnectedDisplays\n"), 1u)
      << asked;
}

TEST_F(AtiAdapterConfigMethod, TargetIsTheFirstTypeThatIsNoPanel) {
  const struct {
    uint32_t connected;
    std::map<uint32_t, uint32_t> types;
    uint32_t target;
  } rows[] = {
      {0x3, {{0, 1}, {1, 2}}, 2},
      {0x7, {{0, 1}, {1, 4}, {2, 6}}, 4},
      {0x5, {{0, 1}, {1, 4}, {2, 6}}, 6},  // 1 is not connected
      {0x3, {{0, 1}, {1, 5}}, 2},          // 5 is 2
      {0x7, {{0, 5}, {1, 6}, {2, 1}}, 2},
      {0x7, {{0, 0}, {1, 1}, {2, 9}}, 9},  // 0 is none
      {0x3, {{0, 1}, {1, 1}}, 2},          // nothing kept
      {0x7, {{0, 1}, {2, 6}}, 2},          // the walk ended at 1
      {0x7, {{0, 8}, {2, 6}}, 8},
      {0x40, {{6, 7}}, 7},
      {0x80, {{7, 7}}, 2},  // beyond the seventh
      {0, {{0, 1}, {1, 4}}, 0},
  };
  for (const auto& row : rows) {
    ati.connected = row.connected;
    ati.types = row.types;
    EXPECT_EQ(Target(), row.target) << &row - rows;
  }
}

TEST_F(AtiAdapterConfigMethod, TargetIsNoneWhenNothingIsTold) {
  ati.connected_result = 1;
  EXPECT_EQ(Target(), 0u);
  EXPECT_EQ(host.TakeLog().find("Call to GetConnectedDisplays failed"), std::string::npos);
}

TEST(AtiEntries, AdaptersConfigurationNeedsThreeEntries) {
  for (const char* const entry :
       {kSetAdapterConfig, "ATIDL_GetDisplayVector", "ATIDL_GetAdapterConfig"}) {
    AtiHost host(kManyDevices);
    host.Remove(entry);
    EXPECT_EQ(host.Extend(1), std::string(kByWindows) + "1") << entry;
    EXPECT_EQ(host.machine.Calls("ATIDL_GetAdapterConfig"), 0u) << entry;
    EXPECT_EQ(host.machine.Topology(), "extend internal+crt") << entry;
  }
}

TEST(AtiEntries, AdaptersConfigurationNeedsNoOther) {
  for (const char* const entry :
       {"ATIDL_GetDisplaySwitchingCapability", "ATIDL_GetActiveDisplays", "ATIDL_SetActiveDisplays",
        "ATIDL_SetConfigurationEx", "ATIDL_GetAdapterID", "ATIDL_DisplayGetEdidData",
        "ATIDL_DisplayGetDeviceConfig", "ATIDL_GetDisplaySettings"}) {
    AtiHost host(kManyDevices);
    host.Remove(entry);
    EXPECT_EQ(host.Extend(1), AtiAdapterConfigs(kFirstSize, "1") + "1") << entry;
  }
}

// --- Off.

TEST(AtiExtend, OffIsDoneWhenTheDesktopIsNotExtended) {
  AtiHost host(kManyDevices);
  EXPECT_EQ(host.Extend(0), "1");
}

TEST(AtiExtend, TwoDevicesAreTurnedOffByWindows) {
  AtiHost host(kPanelCrtExtended);
  EXPECT_EQ(host.Extend(0), std::string(kByWindows) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
  EXPECT_EQ(host.machine.Calls("ATIDL_SetConfigurationEx"), 0u);
}

TEST(AtiExtend, LibraryTurnsOffWhatWindowsLeaves) {
  AtiHost host(kPanelCrtExtended);
  host.ati();
  host.machine.Fail(kChange, 1);
  EXPECT_EQ(host.Extend(0), kByWindows + AtiExtend(1, 0) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(AtiExtend, OffSaysWhetherTheDesktopIsStillExtended) {
  AtiHost host(kPanelCrtExtended);
  host.ati();
  host.machine.Fail(kChange, 1);
  host.machine.Fail(kEnableExtendedDesktop, 1);
  EXPECT_EQ(host.Extend(0), kByWindows + AtiExtend(1, 0, 7) + "0");
}

TEST(AtiExtend, ManyDevicesAreTurnedOffByThePanelsVector) {
  AtiHost host(kManyDevicesExtended);
  EXPECT_EQ(host.Extend(0), AtiConfig(3, 1) + "1");  // without a map
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(AtiExtend, PanelsVectorIsAskedForByKindOne) {
  AtiHost host(kManyDevicesExtended);
  ScriptedAti ati;
  ati.Install(&host.machine);
  host.ati();
  ati.TakeCalls();
  // Its word is taken: the desktop stays extended.
  EXPECT_EQ(host.Extend(0), "1");
  EXPECT_EQ(ati.TakeCalls(), "ATIDL_GetDisplayVector(0,1)\nATIDL_SetConfigurationEx(0)\n");
  EXPECT_EQ(ati.given["ATIDL_SetConfigurationEx"].at(0),
            ScriptedAti::Record(16, {64, 3, 1, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(AtiExtend, ManyDevicesAreTurnedOffByTheLibraryOrNotAtAll) {
  AtiHost host(kManyDevicesExtended);
  host.ati();
  host.machine.Fail("ATIDL_SetConfigurationEx", 1);
  EXPECT_EQ(host.Extend(0), AtiConfig(3, 1, 0, 7) + "0");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
}

TEST(AtiExtend, KeyChangesNothingAboutOff) {
  AtiHost host(kManyDevicesExtended);
  host.machine.Config("Settings", kKey, 1);
  EXPECT_EQ(host.Extend(0), AtiConfig(3, 1) + "1");
}

TEST(AtiEntries, OffOfManyDevicesNeedsTwoEntries) {
  for (const char* const entry : {"ATIDL_GetDisplayVector", "ATIDL_SetConfigurationEx"}) {
    AtiHost host(kManyDevicesExtended);
    host.Remove(entry);
    EXPECT_EQ(host.Extend(0), "0") << entry;
    EXPECT_EQ(host.machine.Topology(), "extend internal+crt") << entry;
  }
}

TEST(AtiEntries, OffOfTwoDevicesNeedsNone) {
  for (const char* const entry : {"ATIDL_GetDisplayVector", "ATIDL_SetConfigurationEx"}) {
    AtiHost host(kPanelCrtExtended);
    host.Remove(entry);
    EXPECT_EQ(host.Extend(0), std::string(kByWindows) + "1") << entry;
  }
}

// --- On displays that are named.

TEST(AtiExtendOn, SendsThePanelsBitAndTheDisplaysVector) {
  AtiHost host("win7 amd: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080");
  host.mapped();
  EXPECT_EQ(host.ExtendOn(1, IMMonitor::MD_HDMI), AtiConfig(5, 1, 4) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi");
}

TEST(AtiExtendOn, SendsItToAnExtendedDesktopToo) {
  AtiHost host(kPanelCrtExtended);
  host.mapped();
  EXPECT_EQ(host.ExtendOn(5, IMMonitor::MD_CRT), AtiConfig(5, 1, 2) + "1");
}

TEST(AtiExtendOn, WithoutAMapTheVectorIsZeroAndWindowsFollows) {
  AtiHost host(kPanelCrt);
  EXPECT_EQ(host.ExtendOn(1, IMMonitor::MD_CRT), AtiConfig(5, 1, 0, 1) + kByWindows + "1");
}

TEST(AtiExtendOn, LibraryFollowsWindows) {
  AtiHost host(kManyDevices);
  host.mapped();
  host.machine.Fail("ATIDL_SetConfigurationEx", 1);
  host.machine.Fail(kChange, 1);
  // Whatever the number of devices, the adapter's configuration has no part in this.
  EXPECT_EQ(host.ExtendOn(1, IMMonitor::MD_CRT),
            AtiConfig(5, 1, 2, 7) + kByWindows + AtiExtend(1, 1) + "1");
  EXPECT_EQ(host.machine.Calls("ATIDL_GetAdapterConfig"), 0u);
}

TEST(AtiExtendOn, SaysWhetherTheDesktopIsExtended) {
  AtiHost host(kPanelCrt);
  host.mapped();
  host.machine.Fail("ATIDL_SetConfigurationEx", 1);
  host.machine.Fail(kChange, 1);
  host.machine.Fail(kEnableExtendedDesktop, 1);
  EXPECT_EQ(host.ExtendOn(1, IMMonitor::MD_CRT),
            AtiConfig(5, 1, 2, 7) + kByWindows + AtiExtend(1, 1, 7) + "0");
}

TEST(AtiExtendOn, ForThePanelNothingIsSentToTheLibrary) {
  AtiHost host(kPanelCrt, kChecked);
  host.mapped();
  EXPECT_EQ(host.ExtendOn(1, IMMonitor::MD_NB), std::string(kByWindows) + "1");
  EXPECT_EQ(CountOf(host.TakeLog(), "Check failed"), 0u);
}

TEST(AtiExtendOn, DisplaysThatAreNotOneFailTheCheckAndAreSent) {
  for (const uint32_t displays : {0u, 3u, 0x12u}) {
    AtiHost host(kPanelCrt, kChecked);
    host.mapped();
    EXPECT_EQ(host.ExtendOn(1, displays), AtiConfig(5, 1, 0, 1) + kByWindows + "1") << displays;
    EXPECT_EQ(CountOf(host.TakeLog(),
                      "Check failed: CountBits(dwExternalDisplay) == 1. dwExtendDisplay is not One "
                      "monitor\n"),
              1u);
  }
}

TEST(AtiExtendOn, WithoutSetConfigurationExWindowsDoesIt) {
  AtiHost host(kPanelCrt, kChecked);
  host.Remove("ATIDL_SetConfigurationEx");
  host.mapped();
  EXPECT_EQ(host.ExtendOn(1, 3), std::string(kByWindows) + "1");
  const std::string log = host.TakeLog();
  EXPECT_EQ(CountOf(log,
                    "Check failed: m_pLib->SetConfigurationEx != NULL. SetConfigurationEx() is "
                    "not load.\n"),
            1u)
      << log;
  EXPECT_EQ(CountOf(log, "CountBits"), 0u) << log;
}

TEST(AtiExtendOn, OffThatWorkedReportsFalse) {
  AtiHost host(kPanelCrtExtended);
  host.mapped();
  EXPECT_EQ(host.ExtendOn(0, IMMonitor::MD_CRT), AtiConfig(3, 1) + "0");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(AtiExtendOn, OffThatFailedReportsTrue) {
  AtiHost host(kPanelCrtExtended);
  EXPECT_EQ(host.ExtendOn(0, IMMonitor::MD_CRT), AtiConfig(3, 0, 0, 1) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
}

// --- Memory that runs out fails the operation and throws nothing.

/// Runs the operation with each of its pieces of memory refused in turn.
template <typename Operation>
void RefuseEachPiece(Operation operation) {
  uint32_t nth = 1;
  for (bool enough = false; !enough; ++nth) {
    AtiHost host(kPanelCrt);
    host.mapped();
    const auto refuse = host.ostrel().white_box().projectors->RefuseMemory;
    refuse(nth);
    const BOOL result = operation(&host.ati());
    enough = refuse(0);
    EXPECT_EQ(result, enough ? 1 : 0) << nth;
    ASSERT_LT(nth, 200u);
  }
  EXPECT_GT(nth, 2u);  // there was something to refuse
}

TEST(AtiExtend, NothingIsThrownWhereverMemoryRunsOut) {
  RefuseEachPiece([](IMMonitor* ati) { return ati->EnableExtendMode(1); });
}

TEST(AtiExtendOn, NothingIsThrownWhereverMemoryRunsOut) {
  RefuseEachPiece(
      [](IMMonitor* ati) { return ati->EnableExtendModeOnDisplays(1, IMMonitor::MD_NB); });
}

}  // namespace
