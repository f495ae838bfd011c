// Extended desktop through the Intel driver, behind or beside Windows' own way.
#include <gtest/gtest.h>

#include "tests/behaviour/IntelHost.h"

namespace {

constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kDvi = IMMonitor::MD_DVI;
constexpr int32_t kFailed = static_cast<int32_t>(0x80004005);
constexpr char kChange[] = "ICUIExternal8::ChangeActiveDevices";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";

constexpr char kPanelDvi[] = "win7 intel: internal 1366x768 active, dvi 1920x1080";
constexpr char kExtended[] = "win7 intel: internal 1366x768 active, dvi 1920x1080 active";

std::string TwoRecords(uint32_t first, uint32_t second) {
  return SingleRecord(first) + ", " + SingleRecord(second, kSecondDevice);
}

struct ExtendHost : IntelHost {
  using IntelHost::IntelHost;

  /// What happened, and the result.
  std::string OnDisplays(BOOL enable, uint32_t displays) {
    Forget();
    machine.JournalReads(true);
    const BOOL result = intel().EnableExtendModeOnDisplays(enable, displays);
    return Told(result);
  }
  std::string Extend(BOOL enable) {
    Forget();
    machine.JournalReads(true);
    const BOOL result = intel().EnableExtendMode(enable);
    return Told(result);
  }

 private:
  std::string Told(BOOL result) {
    machine.JournalReads(false);
    return ProtocolOf(machine.TakeJournal()) + std::to_string(result);
  }
};

// --- EnableExtendModeOnDisplays.

TEST(IntelExtendOnDisplays, IsOneCallWithTwoRecords) {
  ExtendHost host(kPanelDvi);
  host.machine.Config("Settings:Intel", "Support Aspect Ratio Workaround", 1);
  EXPECT_EQ(host.OnDisplays(TRUE, kDvi),
            kEnumDevices + ChangeActiveDevices(TwoRecords(kPanelUid, kDviUid)) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+dvi");
}

TEST(IntelExtendOnDisplays, TakesTheFirstTwoDisplays) {
  ExtendHost host("win7 intel: internal 1366x768 active, dvi 1920x1080, crt 1024x768");
  EXPECT_EQ(host.OnDisplays(TRUE, kDvi | kCrt),
            kEnumDevices + ChangeActiveDevices(TwoRecords(kPanelUid, kCrtUid)) + "1");
}

TEST(IntelExtendOnDisplays, NeedsTwoDisplays) {
  ExtendHost host(kPanelDvi);
  EXPECT_EQ(host.OnDisplays(TRUE, 0), std::string(kEnumDevices) + "0");
  EXPECT_EQ(host.OnDisplays(TRUE, kNb), std::string(kEnumDevices) + "0");
  EXPECT_EQ(host.OnDisplays(TRUE, 0x80), std::string(kEnumDevices) + "0");
}

TEST(IntelExtendOnDisplays, NeedsTwoDisplayDevices) {
  ExtendHost host("win7 intel*1: internal 1366x768 active, dvi 1920x1080");
  EXPECT_EQ(host.OnDisplays(TRUE, kDvi), std::string(kEnumDevices) + "0");
}

TEST(IntelExtendOnDisplays, DeviceInFrontOfTheAttachedOneIsNotTaken) {
  ExtendHost host("win7 intel*1, intel*1: internal@2 1366x768 active, dvi@1 1920x1080");
  EXPECT_EQ(host.OnDisplays(TRUE, kDvi), std::string(kEnumDevices) + "0");
}

TEST(IntelExtendOnDisplays, RefusalIsLoggedAndNotTriedAgain) {
  ExtendHost host(kPanelDvi);
  host.machine.Fail(kChange, 1);
  EXPECT_EQ(host.OnDisplays(TRUE, kDvi),
            kEnumDevices + ChangeActiveDevices(TwoRecords(kPanelUid, kDviUid), kFailed, 7) + "0");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Call to Intel ChangeActiveDevices() failed, error code = 7\n");
}

TEST(IntelExtendOnDisplays, SuccessWithAnErrorIsAFailureWithoutALogLine) {
  ExtendHost host(kPanelDvi);
  host.machine.Fail(kChange, 1, 5);
  EXPECT_EQ(host.OnDisplays(TRUE, kDvi),
            kEnumDevices + ChangeActiveDevices(TwoRecords(kPanelUid, kDviUid), 0, 5) + "0");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(IntelExtendOnDisplays, OffIsThePanelAlone) {
  ExtendHost host(kExtended);
  EXPECT_EQ(host.OnDisplays(FALSE, kDvi),
            kEnumDevices + ChangeActiveDevices(SingleRecord(kPanelUid)) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(IntelExtendOnDisplays, OffIsLoggedAndNotTriedAgain) {
  ExtendHost host(kExtended);
  host.machine.Fail(kChange, 1);
  EXPECT_EQ(host.OnDisplays(FALSE, kDvi),
            kEnumDevices + ChangeActiveDevices(SingleRecord(kPanelUid), kFailed, 7) + "0");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Call to Intel ChangeActiveDevices() failed, error code = 7\n");
  host.machine.Fail(kChange, 1, 5);
  EXPECT_EQ(host.OnDisplays(FALSE, kDvi),
            kEnumDevices + ChangeActiveDevices(SingleRecord(kPanelUid), 0, 5) + "0");
}

TEST(IntelExtendOnDisplays, OffNeedsADisplayDevice) {
  ExtendHost host(kExtended, kChecked);
  host.Forget();
  host.machine.Fail("EnumDisplayDevicesA", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.OnDisplays(FALSE, kDvi), std::string(kEnumDevices) + "0");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: (attached_devices.size() > 0) && "
            "\"More than two display devices is required!!!\". \n");
}

TEST(IntelExtendOnDisplays, OffLeavesOneNameWithoutACheck) {
  ExtendHost host("win7 intel*1: internal 1366x768 active", kChecked);
  EXPECT_EQ(host.OnDisplays(FALSE, 0),
            kEnumDevices + ChangeActiveDevices(SingleRecord(kPanelUid)) + "1");
  EXPECT_EQ(host.TakeLog(), "");
}

// --- EnableExtendMode.

TEST(IntelExtend, IsDoneWhenItIsAlready) {
  ExtendHost on(kExtended);
  EXPECT_EQ(on.Extend(TRUE), "1");
}

TEST(IntelExtend, OffIsDoneWhenItIsAlready) {
  ExtendHost off(kPanelDvi);
  EXPECT_EQ(off.Extend(FALSE), "1");
}

TEST(IntelExtend, GoesWindowsWayFirst) {
  ExtendHost host(kPanelDvi);
  const std::string protocol = host.Extend(TRUE);
  EXPECT_EQ(protocol.back(), '1');
  EXPECT_EQ(CountOf(protocol, kChange), 0u) << protocol;
  EXPECT_GT(CountOf(protocol, "ChangeDisplaySettingsExA"), 0u) << protocol;
  EXPECT_EQ(host.machine.Topology(), "extend internal+dvi");
}

// The lines behind the one call by which Windows refused.
std::string BehindRefusal(const std::string& protocol) {
  EXPECT_EQ(CountOf(protocol, "ChangeDisplaySettingsExA"), 1u) << protocol;
  const size_t at = protocol.find("ChangeDisplaySettingsExA");
  return protocol.substr(protocol.find('\n', at) + 1);
}

TEST(IntelExtend, FallsBackToTheDriver) {
  ExtendHost host(kPanelDvi);
  host.machine.Fail("ChangeDisplaySettingsExA", 1);
  EXPECT_EQ(BehindRefusal(host.Extend(TRUE)),
            kEnumDevices + ChangeActiveDevices(TwoRecords(kPanelUid, kDviUid)) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+dvi");
}

TEST(IntelExtend, WithOneDisplayTheDriverIsNotAsked) {
  ExtendHost host("win7 intel: internal 1366x768 active, dvi");
  host.machine.Fail("ChangeDisplaySettingsExA", 1);
  EXPECT_EQ(BehindRefusal(host.Extend(TRUE)), std::string(kEnumDevices) + "0");
}

TEST(IntelExtend, TellsWhatIsAndNotWhatTheDriverSaid) {
  ExtendHost host(kPanelDvi);
  host.machine.Fail("ChangeDisplaySettingsExA", 1);
  host.machine.Fail(kChange, 1);
  EXPECT_EQ(BehindRefusal(host.Extend(TRUE)),
            kEnumDevices + ChangeActiveDevices(TwoRecords(kPanelUid, kDviUid), kFailed, 7) + "0");
}

// A true value that is no TRUE equals no state.
TEST(IntelExtend, EnableIsComparedAsANumber) {
  ExtendHost host(kExtended);
  const std::string protocol = host.Extend(2);
  EXPECT_EQ(protocol.back(), '0');
  EXPECT_EQ(CountOf(protocol, ChangeActiveDevices(TwoRecords(kPanelUid, kDviUid))), 1u) << protocol;
  EXPECT_EQ(host.machine.Topology(), "extend internal+dvi");
}

TEST(IntelExtend, OffFallsBackToThePanelAlone) {
  ExtendHost host(kExtended);
  host.machine.Fail("ChangeDisplaySettingsExA", 1);
  EXPECT_EQ(BehindRefusal(host.Extend(FALSE)),
            kEnumDevices + ChangeActiveDevices(SingleRecord(kPanelUid)) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

}  // namespace
