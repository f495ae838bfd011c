// Switching through the Intel driver to one display or two, call by call.
#include <gtest/gtest.h>

#include "tests/behaviour/IntelHost.h"
#include "tests/support/ScriptedCui.h"

namespace {

constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kDvi = IMMonitor::MD_DVI;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;
constexpr uint32_t kSingle = IMMonitor::DM_SINGLE;
constexpr uint32_t kClone = IMMonitor::DM_CLONE;
constexpr int32_t kFailed = static_cast<int32_t>(0x80004005);

constexpr char kPanelDvi[] = "win7 intel: internal 1366x768 active, dvi 1920x1080";
constexpr char kPanelHdmi[] = "win7 intel: internal 1366x768 active, hdmi 1920x1080";
constexpr char kChange[] = "ICUIExternal8::ChangeActiveDevices";

std::string Start() { return kEnumDevices + Downgrade() + kSleepSecond + kPreload; }

// --- One switch, end to end.

TEST(IntelSwitch, SingleExternalDvi) {
  IntelHost host(kPanelDvi);
  EXPECT_EQ(host.SwitchProtocol(kSingle, kDvi),
            Start() + ChangeActiveDevices(SingleRecord(kDviUid)) + "1");
  EXPECT_EQ(host.machine.Topology(), "single dvi");
}

TEST(IntelSwitch, PanelAlone) {
  IntelHost host("win7 intel: internal 1366x768 active, dvi 1920x1080 active");
  EXPECT_EQ(host.SwitchProtocol(kSingle, kNb),
            Start() + ChangeActiveDevices(SingleRecord(kPanelUid)) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(IntelSwitch, CloneOfPanelAndDvi) {
  IntelHost host(kPanelDvi);
  EXPECT_EQ(host.SwitchProtocol(kClone, kNb | kDvi),
            Start() + ChangeActiveDevices(CloneRecord(kPanelUid, kDviUid)) + "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+dvi");
}

TEST(IntelSwitch, CloneWithAspectKeepsTheSettingOfTheActiveMask) {
  IntelHost host(kPanelDvi);
  host.machine.Config("Settings:Intel", "Support Aspect Ratio Workaround", 1);
  EXPECT_EQ(host.SwitchProtocol(kClone, kNb | kDvi),
            Start() + kEnumDevices + kGetAspectScaling +
                ChangeActiveDevices(CloneRecord(kPanelUid, kDviUid)) + SetAspectScaling(2) + "1");
}

TEST(IntelSwitch, CloneTheDriverRefusesOnceIsTriedAgain) {
  IntelHost host(kPanelDvi);
  host.machine.Fail(kChange, 1);
  EXPECT_EQ(host.SwitchProtocol(kClone, kNb | kDvi),
            Start() + ChangeActiveDevices(CloneRecord(kPanelUid, kDviUid), kFailed, 7) + kPreload +
                ChangeActiveDevices(CloneRecord(kPanelUid, kDviUid)) + "1");
}

TEST(IntelSwitch, CloneTheDriverRefusesTwiceIsDoneOnceMoreFromASmallDesktop) {
  IntelHost host(kPanelDvi);
  host.machine.Config("Settings:Intel", "Support Aspect Ratio Workaround", 1);
  host.machine.Fail(kChange, 1);
  host.machine.Fail(kChange, 2);
  const std::string refused = ChangeActiveDevices(CloneRecord(kPanelUid, kDviUid), kFailed, 7);
  EXPECT_EQ(host.SwitchProtocol(kClone, kNb | kDvi),
            Start() + kEnumDevices + kGetAspectScaling + refused + kPreload + refused +
                Downgrade() + kSleepSecond + ChangeActiveDevices(CloneRecord(kPanelUid, kDviUid)) +
                SetAspectScaling(2) + "1");
}

TEST(IntelSwitch, CloneTheDriverAlwaysRefusesFails) {
  IntelHost host(kPanelDvi);
  host.machine.Fail(kChange, 1, 0, sim::Machine::Repeat::kFromThenOn);
  const std::string refused = ChangeActiveDevices(CloneRecord(kPanelUid, kDviUid), kFailed, 7);
  EXPECT_EQ(host.SwitchProtocol(kClone, kNb | kDvi), Start() + refused + kPreload + refused +
                                                         Downgrade() + kSleepSecond + refused +
                                                         kPreload + refused + "0");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(IntelSwitch, SuccessIsTakenWithoutALookAtErr) {
  IntelHost host(kPanelDvi);
  host.machine.Fail(kChange, 1, 5);
  EXPECT_EQ(host.SwitchProtocol(kClone, kNb | kDvi),
            Start() + ChangeActiveDevices(CloneRecord(kPanelUid, kDviUid), 0, 5) + "1");
}

TEST(IntelSwitch, EveryOtherModeMakesAClone) {
  for (const uint32_t mode : {0u, 2u, 3u, 4u, 8u, 16u, 32u, 64u, 128u, 256u, 2048u}) {
    IntelHost host(kPanelDvi);
    EXPECT_EQ(host.SwitchProtocol(mode, kNb | kDvi),
              Start() + ChangeActiveDevices(CloneRecord(kPanelUid, kDviUid)) + "1")
        << mode;
  }
}

TEST(IntelSwitch, WithoutAnAttachedDeviceNothingIsSent) {
  for (const uint32_t mode : {kSingle, kClone}) {
    IntelHost host(kPanelDvi);
    host.Forget();
    host.machine.Fail("EnumDisplayDevicesA", 1, 0, sim::Machine::Repeat::kFromThenOn);
    EXPECT_EQ(host.SwitchProtocol(mode, kDvi), std::string(kEnumDevices) + kPreload + "0");
  }
}

TEST(IntelSwitch, DeviceThatIsNotListedHasNoUid) {
  IntelHost host("win7 intel: internal 1366x768 active");
  host.machine.Config("Settings:Intel", "Downgrade Resolution Before Switch", 0);
  host.Switch(kSingle, IMMonitor::MD_CRT);
  EXPECT_NE(host.machine.TakeJournal().find(SingleRecord(0)), std::string::npos);
}

// --- The records of every mask, by bytes.

struct TypeRow {
  uint32_t display;
  uint32_t type;
};
constexpr TypeRow kTypes[] = {{0x01, 2}, {0x02, 1}, {0x04, 4}, {0x08, 3},
                              {0x10, 5}, {0x20, 7}, {0x40, 6}};
constexpr uint32_t kFirstUid = 0x500;

std::vector<uint32_t> UidsOf(uint32_t mask) {
  std::vector<uint32_t> uids;
  for (const TypeRow& row : kTypes) {
    if ((mask & row.display) != 0) uids.push_back(kFirstUid + row.type);
  }
  return uids;
}

ScriptedCui::Bytes RecordBytes(uint32_t mode, uint32_t primary, uint32_t count, uint32_t first,
                               uint32_t second) {
  ScriptedCui::Bytes bytes(120, 0);
  ScriptedCui::Put(&bytes, 0, 120);
  std::memcpy(&bytes[4], kFirstDevice, sizeof(kFirstDevice));
  ScriptedCui::Put(&bytes, 84, mode);
  ScriptedCui::Put(&bytes, 88, primary);
  ScriptedCui::Put(&bytes, 92, count);
  ScriptedCui::Put(&bytes, 96, first);
  ScriptedCui::Put(&bytes, 100, second);
  return bytes;
}

class IntelRecords : public testing::Test {
 protected:
  IntelRecords() : host_("win7 intel: internal 1366x768 active") {
    host_.machine.Config("Settings:Intel", "Downgrade Resolution Before Switch", 0);
    for (const TypeRow& row : kTypes) cui_.devices.push_back({kFirstUid + row.type, row.type, 2});
    cui_.Install(&host_.machine);
  }

  /// The records sent, and whether the switch counts as done.
  std::vector<ScriptedCui::Bytes> Sent(uint32_t mode, uint32_t displays, std::string* result) {
    cui_.given.clear();
    *result = host_.Switch(mode, displays);
    return cui_.given;
  }

  IntelHost host_;
  ScriptedCui cui_;
};

TEST_F(IntelRecords, SingleOfEveryMask) {
  for (uint32_t mask = 0; mask < 0x80; ++mask) {
    const std::vector<uint32_t> uids = UidsOf(mask);
    std::vector<ScriptedCui::Bytes> expected;
    if (uids.size() == 1) expected.push_back(RecordBytes(1, 0, 1, uids[0], 0));
    std::string result;
    EXPECT_EQ(Sent(kSingle, mask, &result), expected) << mask;
    EXPECT_EQ(result, uids.size() == 1 ? "1" : "0") << mask;
  }
}

TEST_F(IntelRecords, CloneOfEveryMask) {
  for (uint32_t mask = 0; mask < 0x80; ++mask) {
    const std::vector<uint32_t> uids = UidsOf(mask);
    std::vector<ScriptedCui::Bytes> expected;
    if (!uids.empty()) {
      expected.push_back(RecordBytes(3, uids[0], 2, uids[0], uids.size() > 1 ? uids[1] : 0));
    }
    std::string result;
    EXPECT_EQ(Sent(kClone, mask, &result), expected) << mask;
    EXPECT_EQ(result, uids.empty() ? "0" : "1") << mask;
  }
}

TEST_F(IntelRecords, MasksWithoutAKnownBitSendNothing) {
  std::string result;
  for (const uint32_t mode : {kSingle, kClone}) {
    EXPECT_TRUE(Sent(mode, 0x80000080, &result).empty());
    EXPECT_EQ(result, "0");
  }
}

TEST_F(IntelRecords, EveryKindOfDeviceIsAskedForEachTime) {
  std::string result;
  cui_.types_asked.clear();
  Sent(kSingle, kNb, &result);
  uint32_t displays = 0;
  uint32_t count = 0;
  host_.intel().GetConnectedDisplays(&displays, &count);
  EXPECT_GE(cui_.types_asked.size(), 16u);
  for (const uint32_t asked : cui_.types_asked) EXPECT_EQ(asked, 0xFFFFFFFFu);
}

TEST_F(IntelRecords, FirstDeviceOfATypeIsTaken) {
  cui_.devices.push_back({0x700, 5, 2});
  std::string result;
  EXPECT_EQ(Sent(kSingle, kHdmi, &result)[0], RecordBytes(1, 0, 1, kFirstUid + 5, 0));
  cui_.devices.insert(cui_.devices.begin(), {0x700, 5, 2});
  EXPECT_EQ(Sent(kSingle, kHdmi, &result)[0], RecordBytes(1, 0, 1, 0x700, 0));
  cui_.devices.insert(cui_.devices.begin(), {0, 5, 2});  // without a uid it is not listed
  EXPECT_EQ(Sent(kSingle, kHdmi, &result)[0], RecordBytes(1, 0, 1, 0x700, 0));
}

// --- The downgrade.

TEST(IntelDowngrade, IsLeftOutByItsKey) {
  IntelHost host(kPanelDvi);
  host.machine.Config("Settings:Intel", "Downgrade Resolution Before Switch", 0);
  EXPECT_EQ(
      host.SwitchProtocol(kSingle, kDvi),
      std::string(kEnumDevices) + kPreload + ChangeActiveDevices(SingleRecord(kDviUid)) + "1");
}

TEST(IntelDowngrade, RunsAfterAFailureWhateverTheKeySays) {
  IntelHost host(kPanelDvi);
  host.machine.Config("Settings:Intel", "Downgrade Resolution Before Switch", 0);
  host.machine.Fail(kChange, 1);
  host.machine.Fail(kChange, 2);
  const std::string refused = ChangeActiveDevices(SingleRecord(kDviUid), kFailed, 7);
  EXPECT_EQ(host.SwitchProtocol(kSingle, kDvi),
            std::string(kEnumDevices) + kPreload + refused + kPreload + refused + Downgrade() +
                kSleepSecond + ChangeActiveDevices(SingleRecord(kDviUid)) + "1");
}

TEST(IntelDowngrade, WaitsAlsoWhenTheTestRefused) {
  IntelHost host(kPanelDvi);
  host.machine.Fail("ChangeDisplaySettingsExA", 1);
  const std::string protocol = host.SwitchProtocol(kSingle, kDvi);
  EXPECT_EQ(CountOf(protocol, "ChangeDisplaySettingsExA"), 1u) << protocol;
  EXPECT_EQ(CountOf(protocol, "flags=0x2)="), 1u) << protocol;
  EXPECT_EQ(CountOf(protocol, kSleepSecond), 1u) << protocol;
}

TEST(IntelDowngrade, NeedsTheCurrentSettings) {
  IntelHost host(kPanelDvi);
  host.machine.Fail("EnumDisplaySettingsExA", 1);
  EXPECT_EQ(
      host.SwitchProtocol(kSingle, kDvi),
      std::string(kEnumDevices) + kPreload + ChangeActiveDevices(SingleRecord(kDviUid)) + "1");
}

void Remember(IntelHost* host, const std::string& lines) {
  WriteFileText(host->machine.TempFolder() + L"\\Ostrel.ini", "[1,8 | ]\n" + lines);
}

TEST(IntelDowngrade, DropsTheRememberedSizeAndTakesDepthAndFrequency) {
  IntelHost host("win7 intel: internal 1366x768 active, dvi 1920x1080");
  for (sim::DisplayMode& mode : host.model().connectors[0].monitor->modes) mode.frequency = 75;
  Remember(&host, "Width=800\nHeight=600\nColor Depth=16\nFrequency=75\n");
  EXPECT_NE(host.SwitchProtocol(kSingle, kDvi).find(DowngradeTo("x16@75")), std::string::npos);
}

TEST(IntelDowngrade, RememberedZeroesMeanTheUsual) {
  IntelHost host(kPanelDvi);
  Remember(&host, "Color Depth=0\nFrequency=0\n");
  EXPECT_NE(host.SwitchProtocol(kSingle, kDvi).find(Downgrade()), std::string::npos);
}

TEST(IntelDowngrade, IsOfTheFirstAttachedDevice) {
  IntelHost host("win7 nvidia*1, intel*1: internal@2 1366x768 active, hdmi@1 1920x1080");
  EXPECT_NE(host.SwitchProtocol(kSingle, kNb).find(DowngradeTo("x32@60", kSecondDevice)),
            std::string::npos);
}

// --- Aspect scaling.

class IntelAspect : public testing::Test {
 protected:
  IntelAspect() : host_(kPanelDvi) {
    host_.machine.Config("Settings:Intel", "Support Aspect Ratio Workaround", 1);
    host_.machine.Config("Settings:Intel", "Downgrade Resolution Before Switch", 0);
  }
  uint32_t Aspect() { return sim::IntelAspectScaling(host_.machine, kPanelUid); }
  std::string Journal(uint32_t mode, uint32_t displays) {
    EXPECT_EQ(host_.Switch(mode, displays), "1");
    return host_.machine.TakeJournal();
  }

  IntelHost host_;
};

TEST_F(IntelAspect, MaskThatWasNeverActiveGetsTwo) {
  sim::SetIntelAspectScaling(host_.machine, kPanelUid, 1);
  Journal(kClone, kNb | kDvi);
  EXPECT_EQ(Aspect(), 2u);
}

TEST_F(IntelAspect, MaskThatWasActiveGetsItsSettingBack) {
  sim::SetIntelAspectScaling(host_.machine, kPanelUid, 1);  // of the panel alone
  Journal(kClone, kNb | kDvi);
  sim::SetIntelAspectScaling(host_.machine, kPanelUid, 4);  // of the clone
  Journal(kSingle, kNb);
  EXPECT_EQ(Aspect(), 1u);
  Journal(kClone, kNb | kDvi);
  EXPECT_EQ(Aspect(), 4u);
}

TEST_F(IntelAspect, SettingThatCannotBeReadCountsAsTwo) {
  sim::SetIntelAspectScaling(host_.machine, kPanelUid, 1);
  host_.intel();
  host_.machine.Fail("ICUIExternal8::GetAspectScaling", 1);
  EXPECT_EQ(Journal(kSingle, kNb),
            ChangeActiveDevices(SingleRecord(kPanelUid)) + SetAspectScaling(2));
}

TEST_F(IntelAspect, SwitchAwayFromThePanelSetsNothing) {
  EXPECT_EQ(Journal(kSingle, kDvi), ChangeActiveDevices(SingleRecord(kDviUid)));
  EXPECT_EQ(host_.machine.Calls("ICUIExternal8::GetAspectScaling"), 1u);
  // And from there nothing is saved.
  EXPECT_EQ(Journal(kClone, kNb | kDvi),
            ChangeActiveDevices(CloneRecord(kPanelUid, kDviUid)) + SetAspectScaling(2));
  EXPECT_EQ(host_.machine.Calls("ICUIExternal8::GetAspectScaling"), 1u);
}

TEST_F(IntelAspect, FailedSwitchRestoresToo) {
  host_.intel();
  host_.machine.Fail(kChange, 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host_.Switch(kSingle, kNb), "0");
  EXPECT_NE(host_.machine.TakeJournal().find(SetAspectScaling(4)), std::string::npos);
}

TEST_F(IntelAspect, FailureToSetChangesNothing) {
  host_.intel();
  host_.machine.Fail("ICUIExternal8::SetAspectScaling", 1);
  EXPECT_EQ(host_.Switch(kSingle, kNb), "1");
}

TEST(IntelAspectOff, NothingIsAskedOrSet) {
  IntelHost host(kPanelHdmi);
  EXPECT_EQ(host.Switch(kClone, kNb | kHdmi), "1");
  EXPECT_EQ(host.machine.Calls("ICUIExternal8::GetAspectScaling"), 0u);
  EXPECT_EQ(host.machine.Calls("ICUIExternal8::SetAspectScaling"), 0u);
}

}  // namespace
