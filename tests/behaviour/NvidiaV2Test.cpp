// NvidiaMMImplV2's life, its side interface and its list of GPUs.
#include <gtest/gtest.h>

#include "tests/support/NvidiaHost.h"

namespace {

constexpr char kMachine[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;

// --- Initial, and the end.

TEST(NvidiaV2, InitialBringsTheDriverUpOnce) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.bare()->Initial(), 1);
  EXPECT_EQ(host.bare()->Initial(), 1);
  EXPECT_EQ(host.machine.Calls("NvAPI_Initialize"), 1u);
  EXPECT_EQ(host.machine.Calls("NvAPI_GPU_GetAllOutputs"), 1u);
  EXPECT_TRUE(host.box().HasProxy(host.bare()));
}

TEST(NvidiaV2, ConstructorAsksTheDriverNothing) {
  NvidiaHost host(kMachine);
  host.ostrel();
  const size_t modules = host.Modules();
  host.bare();
  EXPECT_FALSE(host.box().HasProxy(host.bare()));
  EXPECT_EQ(host.Modules(), modules);
}

TEST(NvidiaV2, DriverThatDoesNotStartLeavesNothingAndMayStartLater) {
  NvidiaHost host(kMachine);
  host.ostrel();
  const size_t modules = host.Modules();
  host.machine.Fail("NvAPI_Initialize", 1);
  EXPECT_EQ(host.bare()->Initial(), 0);
  EXPECT_FALSE(host.box().HasProxy(host.bare()));
  EXPECT_EQ(host.Modules(), modules);
  EXPECT_EQ(host.bare()->Initial(), 1);
  EXPECT_EQ(host.Connected(), "0x11 (2)");
}

TEST(NvidiaV2, MachineWithoutTheLibraryIsAFailure) {
  NvidiaHost host("win7 intel: internal 1366x768 active");
  EXPECT_EQ(host.bare()->Initial(), 0);
  EXPECT_FALSE(host.box().HasProxy(host.bare()));
}

TEST(NvidiaV2, InitialIsASuccessAlsoWhereNoConnectorIsRecognised) {
  for (const char* function :
       {"NvAPI_EnumPhysicalGPUs", "NvAPI_GPU_GetAllOutputs", "NvAPI_GPU_GetConnectorInfo"}) {
    NvidiaHost host(kMachine);
    host.ostrel();
    host.machine.Fail(function, 1, 0, sim::Machine::Repeat::kFromThenOn);
    EXPECT_EQ(host.bare()->Initial(), 1) << function;
    EXPECT_EQ(host.box().NvOutputOfDisplay(host.bare(), kNb), 0u) << function;
  }
}

TEST(NvidiaV2, ProxyComesFromTheObjectsOwnOperation) {
  NvidiaHost host(kMachine);
  NvProxyScript script;
  script.create = false;
  host.Adopt(host.box().NewV2WithOwnProxy(&script));
  EXPECT_EQ(host.bare()->Initial(), 0);
  EXPECT_EQ(host.machine.Calls("NvAPI_Initialize"), 0u);
  EXPECT_EQ(script.destroyed, 0u);

  script.create = true;
  host.machine.Fail("NvAPI_Initialize", 1);
  EXPECT_EQ(host.bare()->Initial(), 0);
  EXPECT_EQ(script.created, 1u);
  EXPECT_EQ(script.destroyed, 1u);
  EXPECT_EQ(host.bare()->Initial(), 1);
  EXPECT_EQ(script.created, 2u);
  EXPECT_EQ(script.destroyed, 1u);
}

TEST(NvidiaV2, ProxyOfAnEarlierAttemptIsDestroyedFirst) {
  NvidiaHost host(kMachine);
  NvProxyScript script;
  script.create = false;
  host.Adopt(host.box().NewV2WithOwnProxy(&script));
  host.box().GiveProxy(host.bare());
  EXPECT_EQ(host.bare()->Initial(), 0);
  EXPECT_EQ(script.destroyed, 1u);
  EXPECT_FALSE(host.box().HasProxy(host.bare()));
}

TEST(NvidiaV2, DestroyingNoProxyDoesNothing) {
  NvidiaHost host(kMachine);
  host.nv().DestroyNvProxy(nullptr);
  EXPECT_TRUE(host.box().HasProxy(&host.nv()));
  NVApiWrapper* const proxy = host.nv().CreateNvProxy();
  ASSERT_NE(proxy, nullptr);
  host.nv().DestroyNvProxy(proxy);
  EXPECT_EQ(host.Connected(), "0x11 (2)");
}

TEST(NvidiaV2, LastObjectGivesTheLibraryBack) {
  NvidiaHost host(kMachine);
  host.ostrel();
  const size_t modules = host.Modules();
  std::unique_ptr<NvidiaMMImplV2> other(host.box().NewV2());
  EXPECT_EQ(other->Initial(), 1);
  EXPECT_EQ(host.Connected(), "0x11 (2)");
  EXPECT_EQ(host.Modules(), modules + 1);
  other.reset();
  EXPECT_EQ(host.Connected(), "0x11 (2)");
  EXPECT_EQ(host.Modules(), modules + 1);
  host.End();
  EXPECT_EQ(host.Modules(), modules);
  EXPECT_EQ(host.machine.Outstanding(), "");
  EXPECT_EQ(host.Connected(), "0x11 (2)");  // of one that loads it anew
}

TEST(NvidiaV2, ObjectThatIsNotInitialisedFailsBesideOneThatIs) {
  NvidiaHost host("win7 nvidia: internal 1366x768 active, hdmi 1920x1080 active");
  host.nv();
  const std::unique_ptr<NvidiaMMImplV2> raw(host.box().NewV2());
  uint32_t first = 0xEE;
  uint32_t second = 0xEE;
  DEVMODEA dm = {};
  EdidBlob edid;
  host.machine.TakeJournal();
  EXPECT_EQ(raw->GetConnectedDisplays(&first, &second), 0);
  EXPECT_EQ(first, 0u);
  EXPECT_EQ(second, 0u);
  first = second = 0xEE;
  EXPECT_EQ(raw->GetActiveDisplays(&first, &second), 0);
  EXPECT_EQ(raw->GetCurrentDisplayMode(&first, &second), 0);
  EXPECT_EQ(first, 0xEEu);
  EXPECT_EQ(second, 0xEEu);
  EXPECT_EQ(raw->SetNewDisplayMode(IMMonitor::DM_SINGLE, kNb), 0);
  EXPECT_EQ(raw->ApplyExtendModeOnDisplay(kHdmi), 0);
  EXPECT_EQ(raw->ApplyExtendMode(), 0);
  EXPECT_FALSE(raw->GetDisplaySettings(kNb, &dm));
  EXPECT_FALSE(raw->GetMonitorEDID(kNb, &edid));
  EXPECT_FALSE(raw->GetEDID(kNb, &edid));
  EXPECT_FALSE(raw->IsDiscreteOnly());
  EXPECT_FALSE(raw->IsCrossAdapterCapable());
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST(NvidiaV2, VendorIsNvidia) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.bare()->GetVgaVendor(), 0x10DEu);
  EXPECT_EQ(host.bare()->GetExtensionVendor(), 0x10DEu);
  EXPECT_FALSE(host.bare()->SupportsTripleDisplay());
}

// --- The count and the cast.

TEST(NvidiaV2, CountStartsAtTheOwnersOne) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.bare()->AddRef(), 2u);
  EXPECT_EQ(host.bare()->Release(), 1u);
}

TEST(NvidiaV2, LastReleaseEndsTheWholeObject) {
  NvidiaHost host(kMachine);
  NvidiaMMImplV2* const object = host.box().NewV2();
  EXPECT_EQ(object->Initial(), 1);
  EXPECT_EQ(object->Release(), 0u);
  EXPECT_FALSE(host.box().IsNvApiLoaded());
}

TEST(NvidiaV2, QueryInterfaceIsNeverToBeCalled) {
  NvidiaHost host(kMachine, kChecked);
  host.bare();
  host.ForgetLog();
  void* object = nullptr;
  EXPECT_EQ(static_cast<uint32_t>(host.bare()->QueryInterface(GUID(), &object)), 0x80004005u);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: 0 && \"Should never call this function\". \n");
}

// The destructor takes two places of the table; the object's own operations stand behind the
// twenty-one of its base.
TEST(NvidiaV2, FiveMoreOperationsStandBehindThoseOfTheBase) {
  using Operation = uint64_t (*)(void* object, uintptr_t a, uintptr_t b, uintptr_t c);
  NvidiaHost host(kMachine);
  void* const object = static_cast<IMMonitor*>(&host.nv());
  const auto call = [object](size_t slot, uintptr_t a = 0, uintptr_t b = 0) {
    return (*static_cast<Operation**>(object))[slot](object, a, b, 0);
  };
  host.Connected();
  call(22, IMMonitor::DM_SINGLE, kNb);
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "view=0 paths=[[mask=0x10000 "), 1u);
  call(23, kHdmi);
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "[mask=0x20000 1024x768"), 1u);
  call(24);
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "view=4 paths=[[mask=0x10000 "), 1u);
  const uint64_t proxy = call(25);
  ASSERT_NE(proxy, 0u);
  call(26, static_cast<uintptr_t>(proxy));
}

// --- InitialExtension.

TEST(NvidiaV2, InitialExtensionMakesTheLibraryUsableOnce) {
  NvidiaHost host(kMachine, kChecked);
  EXPECT_TRUE(host.bare()->InitialExtension());
  EXPECT_TRUE(host.bare()->InitialExtension());
  EXPECT_EQ(host.bare()->Initial(), 1);
  EXPECT_EQ(host.machine.Calls("NvAPI_Initialize"), 1u);
  EXPECT_EQ(CountOf(host.TakeLog(), "Check failed"), 0u);
}

TEST(NvidiaV2, InitialExtensionIsTrueBehindInitial) {
  NvidiaHost host(kMachine);
  host.nv();
  EXPECT_TRUE(host.nv().InitialExtension());
  EXPECT_EQ(host.machine.Calls("NvAPI_Initialize"), 1u);
}

TEST(NvidiaV2, FailedInitialExtensionRaisesItsCheck) {
  NvidiaHost host(kMachine, kChecked);
  host.bare();
  host.ForgetLog();
  host.machine.Fail("NvAPI_Initialize", 1);
  EXPECT_FALSE(host.bare()->InitialExtension());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "INFO NVAPI interface version: \n"
            "ERROR_REPORT Check failed: 0 && \"Initial NVIDIA library failed\". \n");
  EXPECT_TRUE(host.bare()->InitialExtension());
}

// --- GPUs.

TEST(NvidiaV2Gpus, ListThatCannotBeReadIsLoggedAndLeavesTheOneThatStands) {
  NvidiaHost host(kMachine);
  host.Forget();
  host.machine.Fail("NvAPI_EnumPhysicalGPUs", 1);
  EXPECT_FALSE(host.box().RefreshGpus(&host.nv()));
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR Calling EnumPhysicalGPUs failed\n");
  EXPECT_EQ(host.Connected(), "0x11 (2)");
}

TEST(NvidiaV2Gpus, DetectDisplaysListsThemAnew) {
  NvidiaHost host("win7 nvidia, nvidia: internal 1366x768 active, hdmi@2 1920x1080");
  host.Forget();
  host.machine.Unplug("internal");
  EXPECT_EQ(host.Connected(), "0x0 (0)");  // learnt of the first GPU only: no flag for the HDMI
  host.model().adapters[0].disabled = true;
  host.nv().DetectDisplays();
  EXPECT_EQ(host.TakeLog(), "");
  host.Connected();
  EXPECT_EQ(host.box().CurrentGpu(&host.nv()), sim::NvGpuOf(1));
  EXPECT_TRUE(host.box().RefreshGpus(&host.nv()));
}

TEST(NvidiaV2Gpus, HandleThatIsGoneIsNotKeptBehindTheList) {
  NvidiaHost host("win7 nvidia, nvidia: internal 1366x768 active, hdmi@2 1920x1080");
  host.Forget();
  host.model().adapters[1].disabled = true;
  host.nv().DetectDisplays();
  const uint32_t asked = host.machine.Calls("NvAPI_GPU_GetAllOutputs");
  host.box().CouldManageMultipleDisplay(&host.nv());
  EXPECT_EQ(host.machine.Calls("NvAPI_GPU_GetAllOutputs"), asked + 1);
}

int32_t CountsSeventy(NvPhysicalGpuHandle* gpus, uint32_t* count) {
  for (uint32_t i = 0; i < 64; ++i) gpus[i] = static_cast<NvPhysicalGpuHandle>(sim::NvGpuOf(i));
  *count = 70;
  return 0;
}
int32_t CountsNone(NvPhysicalGpuHandle*, uint32_t* count) {
  *count = 0;
  return 0;
}
int32_t CountsThreeAndGivesOne(NvPhysicalGpuHandle* gpus, uint32_t* count) {
  gpus[0] = static_cast<NvPhysicalGpuHandle>(sim::NvGpuOf(0));
  *count = 3;
  return 0;
}

TEST(NvidiaV2Gpus, CountBeyondTheTableIsTheTables) {
  NvidiaHost host(kMachine);
  host.Forget();
  host.box().ReplaceEnumPhysicalGPUs(CountsSeventy);
  EXPECT_TRUE(host.box().RefreshGpus(&host.nv()));
  host.machine.Unplug("internal");
  host.machine.Unplug("hdmi");
  const uint32_t asked = host.machine.Calls("NvAPI_GPU_GetConnectedOutputs");
  EXPECT_EQ(host.Connected(), "0x0 (0)");
  EXPECT_EQ(host.machine.Calls("NvAPI_GPU_GetConnectedOutputs"), asked + 64);
}

TEST(NvidiaV2Gpus, NoneIsNoTruthAndEndsTheReports) {
  NvidiaHost host(kMachine);
  host.Forget();
  host.box().ReplaceEnumPhysicalGPUs(CountsNone);
  EXPECT_FALSE(host.box().RefreshGpus(&host.nv()));
  EXPECT_EQ(host.Connected(), "failed");
  EXPECT_EQ(host.Active(), "failed");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2Gpus, ZeroHandleEndsTheList) {
  NvidiaHost host(kMachine);
  host.Forget();
  host.box().ReplaceEnumPhysicalGPUs(CountsThreeAndGivesOne);
  EXPECT_TRUE(host.box().RefreshGpus(&host.nv()));
  const uint32_t asked = host.machine.Calls("NvAPI_GPU_GetAllOutputs");
  host.box().CouldManageMultipleDisplay(&host.nv());
  EXPECT_EQ(host.machine.Calls("NvAPI_GPU_GetAllOutputs"), asked + 1);
}

}  // namespace
