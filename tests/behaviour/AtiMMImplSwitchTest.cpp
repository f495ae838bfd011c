// The legacy AMD back-end: switching to one display and to a clone.
#include <gtest/gtest.h>

#include "tests/behaviour/AtiHost.h"
#include "tests/behaviour/ScriptedAti.h"

namespace {

constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;
constexpr uint32_t kSingle = IMMonitor::DM_SINGLE;
constexpr uint32_t kClone = IMMonitor::DM_CLONE;
constexpr char kThree[] = "win7 amd: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080";

TEST(AtiSwitch, SingleSendsTheDisplaysVector) {
  AtiHost host(kThree);
  EXPECT_EQ(host.Switch(kSingle, kCrt), AtiConfig(3, 2) + "1");
  EXPECT_EQ(host.machine.Topology(), "single crt");
  EXPECT_EQ(host.Switch(kSingle, kHdmi), AtiConfig(3, 4) + "1");
  EXPECT_EQ(host.machine.Topology(), "single hdmi");
  EXPECT_EQ(host.Switch(kSingle, kNb), AtiConfig(3, 1) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(AtiSwitch, CloneSendsThePanelAndTheRest) {
  AtiHost host(kThree);
  EXPECT_EQ(host.Switch(kClone, kNb | kHdmi), AtiConfig(2, 1, 4) + "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+hdmi");
  EXPECT_EQ(host.Switch(kClone, kCrt), AtiConfig(2, 1, 2) + "1");  // the panel is always one
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
}

TEST(AtiSwitch, SetsTheModeThatIsThereAlready) {
  AtiHost host(kThree);
  EXPECT_EQ(host.Switch(kSingle, kNb), AtiConfig(3, 1) + "1");
}

TEST(AtiSwitch, DisplaysThatAreNotInTheMapAreSentAsNone) {
  AtiHost host(kThree);
  EXPECT_EQ(host.Switch(kSingle, IMMonitor::MD_DP), AtiConfig(3, 0, 0, 1) + "0");
  EXPECT_EQ(host.Switch(kSingle, kNb | kCrt), AtiConfig(3, 0, 0, 1) + "0");
  EXPECT_EQ(host.Switch(kClone, kNb | kCrt | kHdmi), AtiConfig(2, 1, 0, 1) + "0");
  EXPECT_EQ(host.Switch(kClone, kNb), AtiConfig(2, 1, 0, 1) + "0");
}

TEST(AtiSwitch, BeforeAnyConnectedReportTheVectorsAreZero) {
  AtiHost host(kThree);
  host.ati();
  host.Forget();
  EXPECT_EQ(host.ati().SetNewDisplayMode(kSingle, kNb), 0);
  EXPECT_EQ(host.ati().SetNewDisplayMode(kClone, kNb | kCrt), 0);
  EXPECT_EQ(host.machine.TakeJournal(), AtiConfig(3, 0, 0, 1) + AtiConfig(2, 0, 0, 1));
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(AtiSwitch, MapKeepsWhatIsUnpluggedAndTakesWhatIsNew) {
  AtiHost host(kThree);
  host.mapped();
  const sim::Monitor crt = *host.model().connectors[1].monitor;
  host.machine.Unplug("crt");
  EXPECT_EQ(host.Connected(), "0x11 (2)");
  EXPECT_EQ(host.Switch(kSingle, kCrt), AtiConfig(3, 2, 0, sim::kLegacyNotConnected) + "0");
  host.machine.Plug("crt", crt);
  EXPECT_EQ(host.Switch(kSingle, kCrt), AtiConfig(3, 2) + "1");  // without a new report
}

TEST(AtiSwitch, LaterDisplayOfAFlagReplacesTheEarlierOneInTheMap) {
  AtiHost host("win7 amd: internal 1366x768 active, hdmi 1920x1080, hdmi2 1920x1080");
  EXPECT_EQ(host.Switch(kSingle, kHdmi), AtiConfig(3, 4) + "1");
}

// A display without a flag is one of flag 0.
TEST(AtiSwitch, DisplayWithoutAFlagStandsInTheMapAsNone) {
  AtiHost host(kPanelCrt);
  host.model().connectors[1].amd.legacy_kind = 11;
  host.model().connectors[1].amd.legacy_type = 9;
  EXPECT_EQ(host.Connected(), "0x1 (2)");
  EXPECT_EQ(host.Switch(kClone, kNb), AtiConfig(2, 1, 2) + "1");
}

TEST(AtiSwitch, OtherModesAreNotSupported) {
  for (const uint32_t mode :
       {0u, 3u, static_cast<uint32_t>(IMMonitor::DM_EXTEND), 8u, 128u, 512u, 1024u}) {
    AtiHost host(kThree, L"--enable-dcheck");
    EXPECT_EQ(host.Switch(mode, kNb | kCrt), "0") << mode;
    EXPECT_EQ(host.TakeLog(),
              "Check failed: 0 && \"Selected display mode is not supported!!!\". \n");
  }
}

TEST(AtiSwitch, RefusedConfigurationFailsTheSwitch) {
  AtiHost host(kThree);
  host.mapped();
  const uint32_t reads = host.machine.Calls("ATIDL_GetActiveDisplays");
  host.machine.Fail("ATIDL_SetConfigurationEx", 1);
  EXPECT_EQ(host.Switch(kSingle, kCrt), AtiConfig(3, 2, 0, 7) + "0");
  EXPECT_EQ(host.machine.Calls("ATIDL_GetActiveDisplays"), reads);
}

TEST(AtiSwitch, ModeThatCannotBeReadBackFailsTheSwitch) {
  AtiHost host(kThree);
  host.mapped();
  host.machine.Fail("ATIDL_GetActiveDisplays", 1);
  EXPECT_EQ(host.Switch(kSingle, kCrt), AtiConfig(3, 2) + "0");
  EXPECT_EQ(host.machine.Topology(), "single crt");
  EXPECT_EQ(host.TakeLog(), "Call to GetActiveDisplays() failed\n");
}

// What a driver does that takes its time.
class AtiSlowSwitch : public testing::Test {
 protected:
  AtiSlowSwitch() : host(kPanelCrt) {
    ati.types = {{0, 1}, {1, 2}};
    ati.get_active = ScriptedAti::Answer({64, 3, 1, 0, 0, 0, 0, 0, 0, 1});
    ati.set_configuration = [this](ScriptedAti::Words* record) {
      record->assign(record->size(), 0xEEEEEEEE);  // the record is the caller's to send
      return results.at(ati.given["ATIDL_SetConfigurationEx"].size() - 1);
    };
    ati.Install(&host.machine);
    host.mapped();
  }
  BOOL Clone() { return host.ati().SetNewDisplayMode(kClone, kNb | kCrt); }
  std::vector<ScriptedAti::Words> Sent() { return ati.given["ATIDL_SetConfigurationEx"]; }

  AtiHost host;
  ScriptedAti ati;
  std::vector<int32_t> results;
  const ScriptedAti::Words clone = ScriptedAti::Record(16, {64, 2, 1, 2, 0, 0, 0, 0, 0, 2});
};

TEST_F(AtiSlowSwitch, AnotherModeHasTheSameRecordSentAgain) {
  results = {0, 0};
  EXPECT_EQ(Clone(), 1);  // though the mode is not that yet
  EXPECT_EQ(Sent(), (std::vector<ScriptedAti::Words>{clone, clone}));
}

TEST_F(AtiSlowSwitch, SecondResultCounts) {
  results = {0, -1};
  EXPECT_EQ(Clone(), 0);
  EXPECT_EQ(Sent().size(), 2u);
}

TEST_F(AtiSlowSwitch, AnyResultButZeroIsAFailure) {
  for (const int32_t result : {-1, 1}) {
    results.push_back(result);
    EXPECT_EQ(Clone(), 0);
  }
  EXPECT_EQ(Sent().size(), 2u);
}

TEST_F(AtiSlowSwitch, SecondCallIsTheLast) {
  results = {0, 0};
  ati.TakeCalls();
  Clone();
  EXPECT_EQ(ati.TakeCalls(),
            "ATIDL_SetConfigurationEx(0)\nATIDL_GetActiveDisplays(0)\nEnumDisplays(0,0)\n"
            "ATIDL_DisplayGetDeviceConfig(0,0)\nATIDL_SetConfigurationEx(0)\n");
}

// Of an adapter that is no more Windows' first, everything goes to its own number.
TEST(AtiSwitch, SwitchesTheAdapterThatIsFound) {
  AtiHost host("win7 intel, amd: internal@2 1366x768 active, crt@2 1280x1024");
  EXPECT_EQ(host.Switch(kSingle, kCrt), AtiConfig(3, 2, 0, 0, 2) + "1");
  EXPECT_EQ(host.machine.Topology(), "single crt");
}

TEST(AtiSwitch, PanelAloneThroughTheBaseClass) {
  AtiHost host(kPanelCrtExtended);
  host.mapped();
  host.Forget();
  EXPECT_EQ(host.ati().ChangeToNBOnlySingleDisplayMode(), 1);
  EXPECT_EQ(host.machine.TakeJournal(), AtiConfig(3, 1));
}

// --- Without an entry.

TEST(AtiEntries, WithoutSetConfigurationExNothingIsSwitched) {
  AtiHost host(kThree, L"--enable-dcheck");
  host.Remove("ATIDL_SetConfigurationEx");
  EXPECT_EQ(host.Switch(kSingle, kCrt), "0");
  EXPECT_EQ(host.Switch(77, kCrt), "0");
  EXPECT_EQ(host.TakeLog(), "");  // the mode is not looked at
  EXPECT_EQ(host.Connected(), "0x13 (3)");
  EXPECT_EQ(host.Active(), "0x1 (1)");
}

TEST(AtiEntries, WithoutGetActiveDisplaysNoneIsReported) {
  AtiHost host(kThree);
  host.Remove("ATIDL_GetActiveDisplays");
  host.ati();
  host.Forget();
  EXPECT_EQ(host.Active(), "failed");
  EXPECT_EQ(host.Mode(), "failed 238 0xee");
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.Connected(), "0x13 (3)");
  // Sent, and not known to have worked.
  EXPECT_EQ(host.Switch(kSingle, kCrt), AtiConfig(3, 2) + "0");
}

TEST(AtiEntries, WithoutDeviceConfigNoDisplayIsTold) {
  AtiHost host(kThree);
  host.Remove("ATIDL_DisplayGetDeviceConfig");
  EXPECT_EQ(host.Connected(), "0x0 (3)");
  EXPECT_EQ(host.Active(), "0x0 (1)");
  EXPECT_EQ(host.Mode(), "1 0x0");
  EXPECT_EQ(host.machine.Calls("EnumDisplays"), 0u);
  EXPECT_EQ(host.Switch(kSingle, kNb), AtiConfig(3, 0, 0, 1) + "0");
}

TEST(AtiEntries, WithoutTheOthersReportsAndSwitchesAreAsEver) {
  for (const char* const entry :
       {"ATIDL_GetDisplaySwitchingCapability", "ATIDL_SetActiveDisplays", "ATIDL_GetAdapterID",
        "ATIDL_GetDisplayVector", "ATIDL_GetAdapterConfig", "ATIDL_SetAdapterConfig",
        "ATIDL_DisplayGetEdidData", "ATIDL_GetDisplaySettings"}) {
    AtiHost host(kThree);
    host.Remove(entry);
    EXPECT_EQ(host.Connected(), "0x13 (3)") << entry;
    EXPECT_EQ(host.Switch(kClone, kNb | kCrt), AtiConfig(2, 1, 2) + "1") << entry;
    EXPECT_EQ(host.Mode(), "2 0x3") << entry;
    EXPECT_EQ(host.Switch(kSingle, kHdmi), AtiConfig(3, 4) + "1") << entry;
  }
}

}  // namespace
