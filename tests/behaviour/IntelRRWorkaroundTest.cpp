// Who gets the remedy for HDMI monitors that come up below 59 Hz, and when it acts.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/behaviour/CcdReports.h"
#include "tests/behaviour/HdmiMonitors.h"

using ccd_test::Set;

namespace {

// --- Whether there is an Intel adapter.

bool IntelIsFound(CoreHost& host) { return BoxOf(host).IsIntelDisplayPresent(); }

TEST(IsIntelDisplayPresent, LooksForTheVendorInTheHardwareIds) {
  const struct {
    const char* machine;
    bool found;
  } rows[] = {{"win7 intel: internal 1366x768 active", true},
              {"win7 nvidia, intel: internal 1366x768 active", true},
              {"win7 nvidia: internal 1366x768 active", false},
              {"win7 amd: internal 1366x768 active", false}};
  for (const auto& row : rows) {
    CoreHost host(row.machine);
    EXPECT_EQ(IntelIsFound(host), row.found) << row.machine;
  }
}

TEST(IsIntelDisplayPresent, LettersCaseIsNoMatter) {
  for (const char* id : {"PCI\\VEN_8086&DEV_0166", "pci\\ven_8086&dev_0166", "Pci\\Ven_8086"}) {
    CoreHost host(kPanel);
    host.machine.model().adapters[0].hardware_id = id;
    EXPECT_TRUE(IntelIsFound(host)) << id;
  }
}

TEST(IsIntelDisplayPresent, DeviceWithAnUnreadableIdIsPassedOver) {
  CoreHost host("win7 intel, intel: internal 1366x768 active");
  host.machine.model().adapters[0].hardware_id_readable = false;
  EXPECT_TRUE(IntelIsFound(host));
  host.machine.model().adapters[1].hardware_id_readable = false;
  EXPECT_FALSE(IntelIsFound(host));
}

TEST(IsIntelDisplayPresent, IdsOfMoreThan512BytesAreUnreadable) {
  CoreHost host(kPanel);
  std::string& id = host.machine.model().adapters[0].hardware_id;
  id = "PCI\\VEN_8086" + std::string(300, 'x');
  EXPECT_FALSE(IntelIsFound(host));
}

TEST(IsIntelDisplayPresent, LeavesTheListUndestroyedOnAMatch) {
  CoreHost host(kPanel);
  BoxOf(host);
  EXPECT_EQ(CountOf(host.machine.Outstanding(), "device list"), 0u);
  EXPECT_TRUE(IntelIsFound(host));
  EXPECT_EQ(CountOf(host.machine.Outstanding(), "device list"), 1u);
  EXPECT_TRUE(IntelIsFound(host));
  EXPECT_EQ(CountOf(host.machine.Outstanding(), "device list"), 2u);
}

TEST(IsIntelDisplayPresent, EverySetUpLeavesOneListBehind) {
  CoreHost host(kPanel);
  host.machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
  for (size_t round = 1; round != 3; ++round) {
    ASSERT_TRUE(host.ostrel().Init());
    host.ostrel().DeInit();
    EXPECT_EQ(CountOf(host.machine.Outstanding(), "wide device list"), round);
  }
}

TEST(IsIntelDisplayPresent, DestroysTheListWithoutAMatch) {
  CoreHost host("win7 nvidia: internal 1366x768 active");
  EXPECT_FALSE(IntelIsFound(host));
  EXPECT_EQ(CountOf(host.machine.Outstanding(), "device list"), 0u);
}

TEST(IsIntelDisplayPresent, AsksForThePresentDisplayDevices) {
  CoreHost host(kPanel);
  BoxOf(host);
  host.machine.JournalReads(true);
  host.machine.TakeJournal();
  IntelIsFound(host);
  const std::string journal = host.machine.TakeJournal();
  EXPECT_NE(journal.find("SetupDiGetClassDevsW(flags=0x2)=0\n"), std::string::npos) << journal;
  EXPECT_NE(journal.find("SetupDiGetDeviceRegistryPropertyW(0x1000 property=1)=1\n"),
            std::string::npos)
      << journal;
}

/// The system's own words for an error, as a record ends with them.
std::string SystemText(DWORD code) {
  char text[256] = {};
  const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                      nullptr, code, 0x400, text, sizeof(text), nullptr);
  EXPECT_NE(length, 0u);
  const std::string whole(text, length);
  return whole.substr(0, whole.find_last_not_of(" \r\n") + 1);
}

TEST(IsIntelDisplayPresent, UnlistableDevicesAreLoggedWithTheErrorBehindTheCheck) {
  CoreHost host(kPanel, L"--enable-dcheck");
  BoxOf(host);
  host.ForgetLog();
  host.machine.Fail("SetupDiGetClassDevsW", 1, ERROR_ACCESS_DENIED);
  testing::internal::CaptureStderr();
  EXPECT_FALSE(IntelIsFound(host));
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: di != INVALID_HANDLE_VALUE. \n"
            "ERROR SetupDiGetClassDevsW() failed: " +
                SystemText(ERROR_ACCESS_DENIED) + "\n");
}

TEST(IsIntelDisplayPresent, NeedsThePropertyCallInTheLoadedModule) {
  for (const char* lookup : {"GetModuleHandleW", "GetProcAddress"}) {
    CoreHost host(kPanel, L"--enable-dcheck");
    BoxOf(host);
    host.ForgetLog();
    host.machine.Fail(lookup, 1);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(IntelIsFound(host)) << lookup;
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(host.TakeLog(), "Check failed: pfnpSetupDiGetDevicePropertyW != NULL. \n");
    EXPECT_EQ(host.machine.Calls("SetupDiGetClassDevsW"), 0u);
  }
}

// --- Who gets the working class.

std::string Created(CoreHost& host, IMMonitor* m) {
  const std::unique_ptr<RefreshRateWorkaround> made(BoxOf(host).CreateRefreshRateWorkaround(m));
  return BoxOf(host).NameOfRefreshRateWorkaround(made.get());
}

TEST(CreateRefreshRateWorkaround, OnlyExactlyWindows7OnAWorkstationWithIntelGetsTheWorkingClass) {
  const struct {
    const char* machine;
    const char* name;
  } rows[] = {{"win7 intel: internal 1366x768 active", "IntelRRWorkaround"},
              {"win7starter intel: internal 1366x768 active", "IntelRRWorkaround"},
              {"win7 nvidia, intel: internal 1366x768 active", "IntelRRWorkaround"},
              {"win7 nvidia: internal 1366x768 active", "NullIntelRRWorkaround"},
              {"win8 intel: internal 1366x768 active", "NullIntelRRWorkaround"},
              {"win10 intel: internal 1366x768 active", "NullIntelRRWorkaround"},
              {"2008r2 intel: internal 1366x768 active", "NullIntelRRWorkaround"},
              {"2008 intel: internal 1366x768 active", "NullIntelRRWorkaround"},
              {"vista intel: internal 1366x768 active", "NullIntelRRWorkaround"},
              {"xp intel: internal 1366x768 active", "NullIntelRRWorkaround"}};
  for (const auto& row : rows) {
    CoreHost host(row.machine);
    FakeMonitor monitor(std::make_shared<FakeScript>());
    EXPECT_EQ(Created(host, &monitor), row.name) << row.machine;
  }
}

TEST(CreateRefreshRateWorkaround, ChecksTheObjectAndGivesOneAllTheSame) {
  CoreHost host(kPanel, L"--enable-dcheck");
  BoxOf(host);
  host.ForgetLog();
  testing::internal::CaptureStderr();
  EXPECT_EQ(Created(host, nullptr), "IntelRRWorkaround");
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(host.TakeLog(), "Check failed: m != NULL. \n");
}

// --- The object that the session holds.

class IntelRRObject : public testing::Test {
 protected:
  void Install(const std::shared_ptr<FakeScript>& script) {
    IMMonitor* const monitor = script == nullptr ? nullptr : new FakeMonitor(script);
    host.ostrel().white_box().factory->InstallMonitor(monitor, kVendorIntel);
    installed = monitor;
  }
  /// Made for the object installed by then.
  RefreshRateWorkaround* Workaround() {
    if (workaround == nullptr) {
      workaround.reset(BoxOf(host).CreateRefreshRateWorkaround(installed));
      EXPECT_EQ(BoxOf(host).NameOfRefreshRateWorkaround(workaround.get()), "IntelRRWorkaround");
      host.machine.TakeJournal();
    }
    return workaround.get();
  }
  IMMonitor* MonitorOfWindow() { return BoxOf(host).StateOf(BoxOf(host).WindowOf(Workaround())).m; }
  void TearDown() override { host.ostrel().white_box().factory->DeleteMultiMonitorObject(); }

  CoreHost host{kPanelAndHdmi};
  IMMonitor* installed = nullptr;
  std::unique_ptr<RefreshRateWorkaround> workaround;
};

TEST_F(IntelRRObject, AdjustsThroughTheActiveObject) {
  SlowDown(host.machine);
  Install(HdmiAt(58));
  Workaround()->AdjustRefreshRate();
  EXPECT_EQ(host.machine.TakeJournal(), Set(2, "0x60") + Set(2, "0x2a0"));
  EXPECT_EQ(host.machine.model().sources[1].mode.frequency, 60u);
}

TEST_F(IntelRRObject, TakesTheObjectAnewAtEachAdjustment) {
  const auto first = HdmiAt(60);
  const auto second = HdmiAt(60);
  Install(first);
  Workaround();
  EXPECT_EQ(MonitorOfWindow(), installed);
  Install(second);
  Workaround()->AdjustRefreshRate();
  EXPECT_EQ(first->TakeCalls(), "");
  EXPECT_EQ(second->TakeCalls(), "GetCurrentDisplayMode\nGetDisplaySettings(0, 0x10)\n");
  EXPECT_EQ(MonitorOfWindow(), installed);
}

TEST_F(IntelRRObject, WithoutAnObjectDoesNothing) {
  host.machine.SetCommandLine(L"host.exe --enable-dcheck");
  Install(HdmiAt(58));
  Workaround();
  host.ostrel().white_box().factory->RefuseIntelObjects();
  host.ostrel().white_box().factory->InstallMonitor(nullptr, kVendorIntel);
  host.ForgetLog();
  Workaround()->AdjustRefreshRate();
  EXPECT_EQ(host.machine.TakeJournal(), "");
  // What the factory tells, which is asked for an object.
  EXPECT_EQ(host.TakeLog(), kNoDisplayLink);
  EXPECT_EQ(MonitorOfWindow(), nullptr);
}

TEST_F(IntelRRObject, MonitoringIsEmptyAndMakesNoWindow) {
  const auto script = HdmiAt(58);
  Install(script);
  Workaround()->BeginMonitoring();
  Workaround()->AdjustRefreshRate();
  Workaround()->EndMonitoring();
  EXPECT_EQ(BoxOf(host).WindowOf(Workaround())->wnd(), nullptr);
  EXPECT_EQ(host.machine.Calls("CreateWindowExW"), 0u);
  EXPECT_EQ(host.machine.Calls("RegisterClassExW"), 0u);
  EXPECT_TRUE(host.machine.ArmedTimers().empty());
  EXPECT_EQ(host.machine.Calls("CreateThread"), 0u);
}

TEST_F(IntelRRObject, OwnsItsWindow) {
  host.machine.SetCommandLine(L"host.exe --v=3");
  Install(HdmiAt(60));
  Workaround();
  host.ForgetLog();
  workaround.reset();
  EXPECT_EQ(host.TakeLog(), "~IntelRRWorkaroundWindow()\n");
}

TEST(NullIntelRR, DoesNothingAtAll) {
  CoreHost host("win8 intel: internal 1366x768 active, hdmi 1920x1080 active");
  const auto script = HdmiAt(58);
  FakeMonitor monitor(script);
  const std::unique_ptr<RefreshRateWorkaround> none(
      BoxOf(host).CreateRefreshRateWorkaround(&monitor));
  none->BeginMonitoring();
  none->AdjustRefreshRate();
  none->EndMonitoring();
  EXPECT_EQ(script->TakeCalls(), "");
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

// --- The order of the virtual operations is part of the contract; the destructor, first of them,
// takes two places.

class OrderedRefreshRate : public RefreshRateWorkaround {
 public:
  void BeginMonitoring() override { last = "BeginMonitoring"; }
  void EndMonitoring() override { last = "EndMonitoring"; }
  void AdjustRefreshRate() override { last = "AdjustRefreshRate"; }
  std::string last;
};

TEST(RefreshRateWorkaround, OperationsStandInTheirOrder) {
  OrderedRefreshRate object;
  using Operation = void (*)(RefreshRateWorkaround*);
  RefreshRateWorkaround* const base = &object;
  const char* const names[] = {"BeginMonitoring", "EndMonitoring", "AdjustRefreshRate"};
  for (size_t i = 0; i != 3; ++i) {
    (*reinterpret_cast<Operation* const*>(base))[i + 2](base);
    EXPECT_EQ(object.last, names[i]);
  }
}

}  // namespace
