// The legacy AMD back-end: its start, its binding, and its capabilities.
#include <gtest/gtest.h>

#include "tests/behaviour/AtiHost.h"
#include "tests/behaviour/ScriptedAti.h"

namespace {

constexpr wchar_t kChecked[] = L"--enable-dcheck";

constexpr const char* kRequired[] = {"GetCapabilities",      "GetConfiguration",
                                     "SetConfiguration",     "EnumDisplays",
                                     "GetConnectedDisplays", "EnableExtendedDesktop"};
constexpr const char* kOptional[] = {"ATIDL_GetDisplaySwitchingCapability",
                                     "ATIDL_GetActiveDisplays",
                                     "ATIDL_SetActiveDisplays",
                                     "ATIDL_SetConfigurationEx",
                                     "ATIDL_GetAdapterID",
                                     "ATIDL_GetDisplayVector",
                                     "ATIDL_GetAdapterConfig",
                                     "ATIDL_SetAdapterConfig",
                                     "ATIDL_DisplayGetEdidData",
                                     "ATIDL_DisplayGetDeviceConfig",
                                     "ATIDL_GetDisplaySettings"};

// --- The binding.

TEST(VAtiLib, BindsSeventeenEntriesInTheirOrder) {
  AtiHost host(kPanelCrt);
  host.bare();
  host.machine.JournalReads(true);
  host.Forget();
  BOOL loaded = FALSE;
  EXPECT_EQ(host.box().BindEntries("AtiPdl64.dll", &loaded), "xxxxxxxxxxxxxxxxx");
  EXPECT_TRUE(loaded);
  std::string expected;
  for (const char* const name : kRequired) expected += std::string(name) + "\n";
  for (const char* const name : kOptional) expected += std::string(name) + "\n";
  std::string asked;
  std::istringstream lines(host.machine.TakeJournal());
  const std::string kAsk = "GetProcAddress(";
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(kAsk, 0) == 0) {
      asked += line.substr(kAsk.size(), line.find(')') - kAsk.size()) + "\n";
    }
  }
  EXPECT_EQ(asked, expected);
}

TEST(VAtiLib, SixEntriesAreRequired) {
  for (size_t i = 0; i < std::size(kRequired); ++i) {
    AtiHost host(kPanelCrt);
    host.Remove(kRequired[i]);
    BOOL loaded = TRUE;
    EXPECT_EQ(host.box().BindEntries("AtiPdl64.dll", &loaded),
              std::string(i, 'x') + '-' + std::string(16 - i, 'x'));
    EXPECT_FALSE(loaded) << kRequired[i];
  }
}

TEST(VAtiLib, ElevenEntriesAreNot) {
  for (size_t i = 0; i < std::size(kOptional); ++i) {
    AtiHost host(kPanelCrt);
    host.Remove(kOptional[i]);
    BOOL loaded = FALSE;
    EXPECT_EQ(host.box().BindEntries("AtiPdl64.dll", &loaded),
              std::string(6 + i, 'x') + '-' + std::string(10 - i, 'x'));
    EXPECT_TRUE(loaded) << kOptional[i];
  }
}

// --- Initial.

TEST(AtiMMImpl, InitialLoadsTheLibraryByItsNameOnce) {
  AtiHost host(kPanelCrt);
  EXPECT_STREQ(host.box().GetLibraryName(host.bare()), "AtiPdl64.dll");
  const size_t modules = host.Modules();
  host.machine.JournalReads(true);
  host.Forget();
  EXPECT_TRUE(host.bare()->Initial());
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "LoadLibraryA(AtiPdl64.dll)"), 1u);
  EXPECT_EQ(host.Modules(), modules + 1);
  EXPECT_TRUE(host.bare()->Initial());
  EXPECT_EQ(host.machine.TakeJournal(), "");  // ready: nothing is read again
}

TEST(AtiMMImpl, InitialFailsWithoutTheLibraryAndMayBeTriedAgain) {
  AtiHost host(kPanelCrt);
  host.model().adapters[0].amd.legacy_library = false;
  EXPECT_FALSE(host.bare()->Initial());
  host.model().adapters[0].amd.legacy_library = true;
  EXPECT_TRUE(host.bare()->Initial());
}

TEST(AtiMMImpl, InitialFailsForEachRequiredEntryAndForGood) {
  for (const char* const entry : kRequired) {
    AtiHost host(kPanelCrt);
    host.Remove(entry);
    EXPECT_FALSE(host.bare()->Initial()) << entry;
    const uint32_t loads = host.machine.Calls("LoadLibraryA");
    EXPECT_FALSE(host.bare()->Initial()) << entry;  // the module is held
    EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads);
    EXPECT_EQ(host.machine.Calls("GetCapabilities"), 0u);
  }
}

TEST(AtiMMImpl, InitialDoesWithoutEachOptionalEntry) {
  for (const char* const entry : kOptional) {
    AtiHost host(kPanelCrt);
    host.Remove(entry);
    EXPECT_TRUE(host.bare()->Initial()) << entry;
  }
}

TEST(AtiMMImpl, EndGivesTheModuleBack) {
  AtiHost host(kPanelCrt);
  host.ostrel();
  const std::string outstanding = host.machine.Outstanding();
  EXPECT_EQ(host.Connected(), "0x3 (2)");
  EXPECT_NE(host.machine.Outstanding(), outstanding);
  host.End();
  EXPECT_EQ(host.machine.Outstanding(), outstanding);
}

TEST(AtiMMImpl, IsAmds) {
  AtiHost host(kPanelCrt);
  EXPECT_EQ(host.ati().GetVgaVendor(), 0x1002u);
  EXPECT_EQ(host.extension().GetExtensionVendor(), 0x1002u);
  EXPECT_FALSE(host.extension().SupportsTripleDisplay());
  EXPECT_EQ(host.ati().ShouldResetDisplaySettingAfterSwtich(), 1);
}

// --- Before and without the library.

TEST(AtiMMImpl, NothingAnswersBeforeInitial) {
  AtiHost host(kPanelCrt);
  IMMonitor& ati = *host.bare();
  host.Forget();
  uint32_t first = 0xEE;
  uint32_t second = 0xEE;
  EXPECT_EQ(ati.GetConnectedDisplays(&first, &second), 0);
  EXPECT_EQ(ati.GetActiveDisplays(&first, &second), 0);
  EXPECT_EQ(ati.GetCurrentDisplayMode(&first, &second), 0);
  EXPECT_EQ(ati.SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB), 0);
  EXPECT_EQ(ati.EnableExtendModeOnDisplays(0, IMMonitor::MD_CRT), 0);
  EXPECT_EQ(ati.HasDisplaySwitchingCapability(), 1);
  DEVMODEA dm = {};
  EXPECT_FALSE(ati.GetDisplaySettings(IMMonitor::MD_NB, &dm));
  EdidBlob edid;
  EXPECT_FALSE(host.box().GetMonitorEDID(&ati, IMMonitor::MD_NB, &edid));
  EXPECT_FALSE(host.box().ExtensionOf(&ati)->GetEDID(IMMonitor::MD_NB, &edid));
  EXPECT_EQ(host.box().ReadCapabilities(&ati), 0);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(first, 0xEEu);
  EXPECT_EQ(second, 0xEEu);
}

// The entry is one that nobody calls.
TEST(AtiMMImpl, FailedInitialLeavesWhatTheLibraryHas) {
  AtiHost host(kPanelCrt);
  host.Remove("GetConfiguration");
  IMMonitor& ati = *host.bare();
  EXPECT_FALSE(ati.Initial());
  uint32_t displays = 0;
  uint32_t count = 0;
  EXPECT_TRUE(ati.GetConnectedDisplays(&displays, &count));
  EXPECT_EQ(displays, 3u);
  EXPECT_EQ(count, 2u);
  EXPECT_TRUE(ati.SetNewDisplayMode(IMMonitor::DM_CLONE, 3));
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
}

// Behind the operations of the base class, whose last stands in the place numbered 21.
TEST(AtiMMImpl, TwoMoreOperationsStandBehindThoseOfItsBase) {
  AtiHost host(kPanelCrt);
  void* const object = &host.ati();
  void* const* const table = *static_cast<void* const**>(object);
  const auto name = reinterpret_cast<const char* (*)(void*)>(table[22]);
  EXPECT_STREQ(name(object), "AtiPdl64.dll");
  const uint32_t asked = host.machine.Calls("GetCapabilities");
  const auto capabilities = reinterpret_cast<BOOL (*)(void*)>(table[23]);
  EXPECT_EQ(capabilities(object), 1);
  EXPECT_EQ(host.machine.Calls("GetCapabilities"), asked + 1);
}

TEST(AtiMMImpl, WindowsExtendsTheDesktopWithoutTheLibrary) {
  AtiHost host(kManyDevices);
  host.machine.Fail("ChangeDisplaySettingsExA", 1);
  EXPECT_EQ(host.bare()->EnableExtendMode(1), 0);  // with nothing below that rung
  EXPECT_EQ(host.bare()->EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
}

// --- Capabilities.

TEST(AtiMMImpl, FirstCapabilityOfThreeLeavesOneReportToFail) {
  AtiHost host(kPanelCrt);
  sim::SetAmdAnswer(host.machine, "GetCapabilities first", 3);
  EXPECT_TRUE(host.bare()->Initial());
  EXPECT_EQ(host.machine.Calls("GetCapabilities"), 1u);
  EXPECT_EQ(host.Connected(), "failed");
  EXPECT_EQ(host.machine.Calls("GetCapabilities"), 2u);
  EXPECT_EQ(host.machine.Calls("GetConnectedDisplays"), 0u);
  EXPECT_EQ(host.Connected(), "0x3 (2)");
  EXPECT_EQ(host.machine.Calls("GetCapabilities"), 2u);  // not asked any more
}

TEST(AtiMMImpl, AdapterThatDrivesThreeDisplaysFailsItsFirstReport) {
  AtiHost host("win7 amd*3: internal 1366x768 active, crt 1280x1024");
  EXPECT_EQ(host.Connected(), "failed");
  EXPECT_EQ(host.Connected(), "0x3 (2)");
}

TEST(AtiMMImpl, CapabilitiesThatCanBeReadLaterFailNoReport) {
  AtiHost host(kPanelCrt);
  host.bare();
  host.machine.Fail("GetCapabilities", 1);
  EXPECT_TRUE(host.bare()->Initial());
  EXPECT_EQ(host.machine.Calls("ATIDL_GetDisplayVector"), 0u);
  EXPECT_EQ(host.Connected(), "0x3 (2)");
  EXPECT_EQ(host.machine.Calls("GetCapabilities"), 2u);
  EXPECT_EQ(host.machine.Calls("ATIDL_GetDisplayVector"), 1u);
}

TEST(AtiMMImpl, OtherOperationsDoNotWaitForTheCapabilities) {
  AtiHost host(kPanelCrt);
  sim::SetAmdAnswer(host.machine, "GetCapabilities first", 3);
  EXPECT_EQ(host.Active(), "0x1 (1)");
  EXPECT_EQ(host.Mode(), "1 0x1");
  EXPECT_EQ(host.machine.Calls("GetCapabilities"), 1u);
}

TEST(AtiMMImpl, FirstCapabilityBelowThreeIsSound) {
  for (const uint32_t first : {0u, 1u, 2u, 3u, 4u, 0xFFFFFFFFu}) {
    AtiHost host(kPanelCrt);
    sim::SetAmdAnswer(host.machine, "GetCapabilities first", first);
    EXPECT_EQ(host.box().ReadCapabilities(&host.ati()), first < 3 ? 1 : 0) << first;
  }
}

TEST(AtiMMImpl, FailedCapabilityCallFailsWhateverItWrote) {
  AtiHost host(kPanelCrt);
  ScriptedAti ati;
  ati.capability_result = -1;
  ati.Install(&host.machine);
  EXPECT_EQ(host.box().ReadCapabilities(&host.ati()), 0);
  EXPECT_EQ(ati.TakeCalls(), "GetCapabilities(0)\nGetCapabilities(0)\n");
  ati.capability_result = 1;
  EXPECT_EQ(host.box().ReadCapabilities(&host.ati()), 0);
}

TEST(AtiMMImpl, TelevisionsAreAskedForBehindTheCapabilities) {
  AtiHost host(kPanelCrt);
  ScriptedAti ati;
  ati.Install(&host.machine);
  host.ati();
  EXPECT_EQ(ati.TakeCalls(), "GetCapabilities(0)\nATIDL_GetDisplayVector(0,4)\n");
}

// Only 1 forbids; the result of the call is not looked at.
TEST(AtiMMImpl, SwitchingIsForbiddenByOneOnly) {
  AtiHost host(kPanelCrt);
  ScriptedAti ati;
  ati.Install(&host.machine);
  host.ati();
  ati.TakeCalls();
  for (const int32_t result : {0, -1}) {
    ati.switching_result = result;
    for (const uint32_t value : {0u, 1u, 2u, 0xFFFFFFFFu}) {
      ati.switching_value = value;
      EXPECT_EQ(host.ati().HasDisplaySwitchingCapability(), value != 1 ? 1 : 0) << value;
      EXPECT_EQ(ati.TakeCalls(), "ATIDL_GetDisplaySwitchingCapability(0,0)\n");
    }
  }
}

TEST(AtiMMImpl, SwitchingIsAllowedWithoutThatEntry) {
  AtiHost host(kPanelCrt);
  host.model().adapters[0].amd.switching_capability = 1;
  host.Remove("ATIDL_GetDisplaySwitchingCapability");
  EXPECT_EQ(host.ati().HasDisplaySwitchingCapability(), 1);
}

// --- IUnknown and IDisplayExtension.

TEST(AtiMMImpl, CountStartsAtTheOwnersReference) {
  AtiHost host(kPanelCrt);
  EXPECT_EQ(host.extension().AddRef(), 2u);
  EXPECT_EQ(host.extension().Release(), 1u);
  EXPECT_EQ(host.Connected(), "0x3 (2)");  // still there
}

TEST(AtiMMImpl, LastReleaseDeletesTheWholeObject) {
  AtiHost host(kPanelCrt);
  IMMonitor* const object = host.box().NewAtiMMImpl();
  const size_t modules = host.Modules();
  EXPECT_TRUE(object->Initial());
  EXPECT_EQ(host.box().ExtensionOf(object)->Release(), 0u);
  EXPECT_EQ(host.Modules(), modules);
}

TEST(AtiMMImpl, QueryInterfaceIsNotToBeCalled) {
  AtiHost host(kPanelCrt, kChecked);
  host.ati();
  host.Forget();
  void* object = nullptr;
  EXPECT_EQ(host.extension().QueryInterface(IID_IUnknown, &object), E_FAIL);
  EXPECT_EQ(host.TakeLog(), "Check failed: 0 && \"Should never call this function\". \n");
}

TEST(AtiMMImpl, InitialExtensionInitialisesOnce) {
  AtiHost host(kPanelCrt);
  IDisplayExtension* const extension = host.box().ExtensionOf(host.bare());
  EXPECT_TRUE(extension->InitialExtension());
  EXPECT_TRUE(extension->InitialExtension());
  EXPECT_TRUE(host.bare()->Initial());
  EXPECT_EQ(host.machine.Calls("GetCapabilities"), 1u);
}

TEST(AtiMMImpl, InitialExtensionSaysThatItFailed) {
  AtiHost host(kPanelCrt, kChecked);
  host.model().adapters[0].amd.legacy_library = false;
  IDisplayExtension* const extension = host.box().ExtensionOf(host.bare());
  host.Forget();
  EXPECT_FALSE(extension->InitialExtension());
  EXPECT_EQ(host.TakeLog(), "Check failed: 0 && \"Initial AMD Display Library failed\". \n");
  host.model().adapters[0].amd.legacy_library = true;
  EXPECT_TRUE(extension->InitialExtension());
}

}  // namespace
