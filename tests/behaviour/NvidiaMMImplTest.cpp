// NVIDIA's oldest back-end: its set-up, its end, and what it hands to the object within.
#include "sim/faces/NvidiaDriver.h"
#include "tests/behaviour/NvidiaPanelHost.h"

namespace {

constexpr char kPair[] = "xp nvidia: internal 1280x800 active, crt 1280x1024";
constexpr char kExtended[] = "xp nvidia: internal 1280x800 active, crt 1280x1024 active";
constexpr wchar_t kChecks[] = L"--enable-dcheck";

constexpr const char* kRequired[] = {
    "NvGetWindowsDisplayState",
    "NvCplGetConnectedDevicesString",
    "NvCplRefreshConnectedDevices",
    "NvCplGetFlatPanelNativeRes",
    "NvCplGetRealConnectedDevicesString",
    "NvCplGetActiveDevicesString",
    "NvGetDisplayInfo",
    "dtcfgex",
    "NvGetPhysicalConnectorInfo",
    "NvEnumPhysicalConnectorDetails",
};

// --- Set-up.

TEST(NvidiaMMImplInitial, BindsTheTenEntriesAndThenNvapi) {
  NvidiaPanelHost host(kPair);
  host.bare();
  host.Forget();
  host.machine.JournalReads(true);
  EXPECT_TRUE(host.bare()->Initial());
  std::string expected = "LoadLibraryA(NvCpl.dll)=0\n";
  for (const char* name : kRequired) expected += "GetProcAddress(" + std::string(name) + ")=0\n";
  expected += "LoadLibraryA(nvapi64.dll)=0\n";
  EXPECT_EQ(host.machine.TakeJournal().substr(0, expected.size()), expected);
  // Twice: for the object's own marker, and for the object within.
  EXPECT_EQ(sim::NvInitializations(host.machine), 2u);
  EXPECT_EQ(CountOf(host.TakeLogWithSeverity(), "INFO NVAPI interface version: "), 2u);
}

TEST(NvidiaMMImplInitial, ReadyObjectSaysYesAtOnce) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  EXPECT_TRUE(host.nvidia().Initial());
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads);
  EXPECT_EQ(sim::NvInitializations(host.machine), 2u);
}

TEST(NvidiaMMImplInitial, WithoutTheLibraryFailsAndLooksForItAgain) {
  NvidiaPanelHost host(kPair);
  host.machine.Fail("LoadLibraryA", 1);
  host.machine.Fail("LoadLibraryA", 2);
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  EXPECT_FALSE(host.bare()->Initial());
  EXPECT_FALSE(host.bare()->Initial());
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads + 2);
  EXPECT_TRUE(host.bare()->Initial());
}

TEST(NvidiaMMImplInitial, DriverWithoutItsLibrariesFails) {
  NvidiaPanelHost host(kPair);
  host.model().adapters[0].vendor_library = false;
  EXPECT_FALSE(host.bare()->Initial());
  EXPECT_EQ(host.Modules(), 0u);
}

class NvidiaMMImplEntry : public testing::TestWithParam<const char*> {};

TEST_P(NvidiaMMImplEntry, IsRequired) {
  NvidiaPanelHost host(kPair);
  sim::RemoveNvCplEntry(host.machine, GetParam());
  host.bare();
  const size_t modules = host.Modules();
  EXPECT_FALSE(host.bare()->Initial());
  EXPECT_EQ(host.Modules(), modules + 1);  // held all the same
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  EXPECT_FALSE(host.bare()->Initial());  // for that
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads);
  EXPECT_EQ(sim::NvInitializations(host.machine), 0u);
  host.End();
  EXPECT_EQ(host.Modules(), modules);
}

INSTANTIATE_TEST_SUITE_P(Table, NvidiaMMImplEntry, testing::ValuesIn(kRequired));

TEST(NvidiaMMImplInitial, ItsOwnStartOfNvapiMayFail) {
  NvidiaPanelHost host(kPair);
  host.machine.Fail("NvAPI_Initialize", 1);
  EXPECT_TRUE(host.bare()->Initial());
  EXPECT_EQ(host.Connected(), "3 (2)");
}

TEST(NvidiaMMImplInitial, InnerObjectsMayNot) {
  NvidiaPanelHost host(kPair);
  host.bare();
  const size_t modules = host.Modules();
  host.machine.Fail("NvAPI_Initialize", 2);
  EXPECT_FALSE(host.bare()->Initial());
  EXPECT_GT(host.Modules(), modules);
  EXPECT_FALSE(host.bare()->Initial());  // the library is held, and NVAPI not asked again
  EXPECT_EQ(host.machine.Calls("NvAPI_Initialize"), 2u);
  host.End();
  EXPECT_EQ(host.Modules(), modules);
}

// --- The end.

std::string g_unloaded;
void (*g_nvapi_unloaded)() = nullptr;

TEST(NvidiaMMImpl, EndsNvapiBeforeTheControlPanelsLibrary) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  auto& invented = host.machine.state().invented;
  g_unloaded.clear();
  g_nvapi_unloaded = invented.at("nvapi64.dll").on_unload;
  invented.at("nvapi64.dll").on_unload = [] {
    g_unloaded += "nvapi ";
    if (g_nvapi_unloaded != nullptr) g_nvapi_unloaded();
  };
  invented.at("nvcpl.dll").on_unload = [] { g_unloaded += "nvcpl "; };
  host.End();
  EXPECT_EQ(g_unloaded, "nvapi nvcpl ");
}

TEST(NvidiaMMImpl, TwoObjectsShareWhatTheDriverBrings) {
  NvidiaPanelHost host(kPair);
  const std::unique_ptr<IMMonitor> other(host.box().NewNvidiaMMImpl());
  EXPECT_TRUE(other->Initial());
  host.nvidia();
  host.End();
  uint32_t displays = 0;
  uint32_t count = 0;
  EXPECT_TRUE(other->GetConnectedDisplays(&displays, &count));
  EXPECT_EQ(displays, 3u);
}

// --- The side interface.

TEST(NvidiaMMImplExtension, InitialMakesItReady) {
  NvidiaPanelHost host(kPair, kChecks);
  host.nvidia();
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  EXPECT_TRUE(host.extension().InitialExtension());
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads);
}

TEST(NvidiaMMImplExtension, MakesTheObjectReady) {
  NvidiaPanelHost host(kPair, kChecks);
  EXPECT_TRUE(host.extension().InitialExtension());
  EXPECT_EQ(host.Connected(), "3 (2)");
  EXPECT_EQ(CountOf(host.TakeLog(), "Check failed"), 0u);
}

TEST(NvidiaMMImplExtension, FailureIsACheck) {
  NvidiaPanelHost host(kPair, kChecks);
  host.model().adapters[0].vendor_library = false;
  host.bare();
  host.ForgetLog();
  EXPECT_FALSE(host.extension().InitialExtension());
  EXPECT_EQ(host.TakeLog(), "Check failed: 0 && \"Initial NVIDIA library failed\". \n");
}

TEST(NvidiaMMImplExtension, SaysWhatItIs) {
  NvidiaPanelHost host(kPair, kChecks);
  EXPECT_EQ(host.bare()->GetVgaVendor(), 0x10DEu);
  EXPECT_EQ(host.extension().GetExtensionVendor(), 0x10DEu);
  EXPECT_FALSE(host.extension().SupportsTripleDisplay());
}

TEST(NvidiaMMImplExtension, CountsReferencesFromTheOwnersOn) {
  NvidiaPanelHost host(kPair);
  EXPECT_EQ(host.extension().AddRef(), 2u);
  EXPECT_EQ(host.extension().AddRef(), 3u);
  EXPECT_EQ(host.extension().Release(), 2u);
  EXPECT_EQ(host.extension().Release(), 1u);
}

TEST(NvidiaMMImplExtension, LastReleaseEndsTheObject) {
  NvidiaPanelHost host(kPair);
  const size_t before = [&host] {
    host.ostrel();
    return host.Modules();
  }();
  IMMonitor* const object = host.box().NewNvidiaMMImpl();
  EXPECT_TRUE(object->Initial());
  EXPECT_GT(host.Modules(), before);
  EXPECT_EQ(host.box().ExtensionOf(object)->Release(), 0u);
  EXPECT_EQ(host.Modules(), before);
}

TEST(NvidiaMMImplExtension, QueryInterfaceIsNeverToBeCalled) {
  NvidiaPanelHost host(kPair, kChecks);
  host.bare();
  host.ForgetLog();
  void* object = nullptr;
  EXPECT_EQ(host.extension().QueryInterface(IID_IUnknown, &object), E_FAIL);
  EXPECT_EQ(host.TakeLog(), "Check failed: 0 && \"Should never call this function\". \n");
}

TEST(NvidiaMMImplExtension, EdidComesFromTheObjectWithin) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  EdidBlob blob;
  ASSERT_TRUE(host.extension().GetEDID(IMMonitor::MD_CRT, &blob));
  const std::vector<uint8_t>& edid = host.connector("crt").monitor->edid;
  ASSERT_GE(blob.cb, edid.size());
  const auto* const bytes = static_cast<const uint8_t*>(blob.pv);
  EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + edid.size()), edid);
  host.extension().FreeEDID(&blob);
  EXPECT_FALSE(host.extension().GetEDID(IMMonitor::MD_HDMI, &blob));
}

// --- Display settings.

TEST(NvidiaMMImplSettings, ComeFromTheObjectWithin) {
  NvidiaPanelHost host(kExtended, kChecks);
  host.nvidia();
  host.ForgetLog();
  DEVMODEA dm = {};
  EXPECT_TRUE(host.nvidia().GetDisplaySettings(IMMonitor::MD_CRT, &dm));
  EXPECT_EQ(dm.dmPelsWidth, 1280u);
  EXPECT_EQ(dm.dmPelsHeight, 1024u);
  EXPECT_FALSE(host.nvidia().GetDisplaySettings(IMMonitor::MD_HDMI, &dm));
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaMMImplSettings, SeveralDisplaysAreCheckedHereAndThere) {
  NvidiaPanelHost host(kPair, kChecks);
  host.nvidia();
  DEVMODEA dm = {};
  host.nvidia().GetDisplaySettings(3, &dm);
  const std::string log = WithoutSourceLines(host.machine.Log());
  const std::string check = ".cpp] Check failed: CountBits(imm_display) == 1. \n";
  EXPECT_EQ(CountOf(log, ":NvidiaMMImpl" + check), 1u) << log;
  EXPECT_GE(CountOf(log, check), 2u) << log;
}

TEST(NvidiaMMImplSettings, NoRecordIsACheckAndAFailure) {
  NvidiaPanelHost host(kPair, kChecks);
  host.nvidia();
  host.ForgetLog();
  EXPECT_FALSE(host.nvidia().GetDisplaySettings(IMMonitor::MD_NB, nullptr));
  EXPECT_EQ(host.TakeLog(), "Check failed: dm != NULL. \n");
}

// --- Before Initial, and after a failed one.

void ExpectFailures(NvidiaPanelHost* host) {
  IMMonitor& object = *host->bare();
  uint32_t first = 0xAAAA;
  uint32_t second = 0xBBBB;
  EXPECT_FALSE(object.GetConnectedDisplays(&first, &second));
  EXPECT_FALSE(object.GetActiveDisplays(&first, &second));
  EXPECT_FALSE(object.GetCurrentDisplayMode(&first, &second));
  EXPECT_FALSE(object.SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB));
  EXPECT_FALSE(object.EnableExtendMode(TRUE));
  EXPECT_FALSE(object.EnableExtendModeOnDisplays(FALSE, 3));
  object.DetectDisplays();
  DEVMODEA dm = {};
  EXPECT_FALSE(object.GetDisplaySettings(IMMonitor::MD_NB, &dm));
  EdidBlob blob;
  EXPECT_FALSE(host->extension().GetEDID(IMMonitor::MD_NB, &blob));
  host->extension().FreeEDID(&blob);
  EXPECT_EQ(host->machine.Calls("CreateProcessA"), 0u);
}

TEST(NvidiaMMImpl, EveryOperationFailsBeforeInitial) {
  NvidiaPanelHost host(kPair, kChecks);
  ExpectFailures(&host);
}

TEST(NvidiaMMImpl, EveryOperationFailsWithoutAnyEntry) {
  NvidiaPanelHost host(kPair, kChecks);
  for (const char* name : kRequired) sim::RemoveNvCplEntry(host.machine, name);
  EXPECT_FALSE(host.bare()->Initial());
  ExpectFailures(&host);
}

// The library is held then, and what it has is bound.
TEST(NvidiaMMImpl, SwitchesAfterAFailedInitialAsFarAsItHasTheEntries) {
  NvidiaPanelHost host(kPair, kChecks);
  sim::RemoveNvCplEntry(host.machine, "dtcfgex");
  EXPECT_FALSE(host.bare()->Initial());
  host.machine.TakeJournal();
  EXPECT_TRUE(host.bare()->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB));
  EXPECT_EQ(host.machine.TakeJournal(), Shown("standard DA"));
}

}  // namespace
