// The SiS back-end: its binding, its start, and what it reports.
#include <gtest/gtest.h>

#include "tests/behaviour/LegacyHost.h"

#include <sstream>

namespace {

constexpr const char* kEntries[] = {"SwitchMode", "GetCurDeviceState", "ChangeTVMode",
                                    "GetDriverModeData", "NoDeviceTest"};

// --- The binding.

TEST(VSisLib, BindsFiveEntriesInTheirOrder) {
  SisHost host;
  host.box();
  host.machine.JournalReads(true);
  BOOL loaded = FALSE;
  EXPECT_EQ(host.box().BindEntries("SisVga.dll", &loaded), "xxxxx");
  EXPECT_TRUE(loaded);
  std::string expected = "LoadLibraryA(SisVga.dll)=0\n";
  for (const char* const name : kEntries)
    expected += "GetProcAddress(" + std::string(name) + ")=0\n";
  EXPECT_EQ(host.machine.TakeJournal(), expected);
}

TEST(VSisLib, EachEntryIsRequired) {
  for (size_t i = 0; i < std::size(kEntries); ++i) {
    SisHost host;
    sim::RemoveSisEntry(host.machine, kEntries[i]);
    BOOL loaded = TRUE;
    EXPECT_EQ(host.box().BindEntries("SisVga.dll", &loaded),
              std::string(i, 'x') + '-' + std::string(4 - i, 'x'));
    EXPECT_FALSE(loaded) << kEntries[i];
  }
}

TEST(VSisLib, WithoutANameThereIsNoModule) {
  SisHost host;
  BOOL loaded = TRUE;
  EXPECT_EQ(host.box().BindEntries(nullptr, &loaded), "-----");
  EXPECT_FALSE(loaded);
}

// --- Initial.

TEST(SisMMImpl, InitialLoadsTheLibraryByItsNameOnce) {
  SisHost host;
  host.bare();
  const size_t modules = host.Modules();
  host.machine.JournalReads(true);
  EXPECT_EQ(host.bare().Initial(), 1);
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "LoadLibraryA(SisVga.dll)"), 1u);
  EXPECT_EQ(host.Modules(), modules + 1);
  EXPECT_EQ(host.bare().Initial(), 1);
  EXPECT_EQ(host.machine.TakeJournal(), "");  // ready: nothing is loaded again
}

TEST(SisMMImpl, ConstructionLoadsNothing) {
  SisHost host;
  host.box();
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  host.bare();
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads);
}

TEST(SisMMImpl, InitialFailsWithoutTheLibraryAndMayBeTriedAgain) {
  SisHost host;
  host.model().adapters[0].vendor_library = false;
  EXPECT_EQ(host.bare().Initial(), 0);
  EXPECT_EQ(host.bare().Initial(), 0);
  host.model().adapters[0].vendor_library = true;
  EXPECT_EQ(host.bare().Initial(), 1);
}

TEST(SisMMImpl, InitialFailsForEachEntryAndForGood) {
  for (const char* const entry : kEntries) {
    SisHost host;
    sim::RemoveSisEntry(host.machine, entry);
    EXPECT_EQ(host.bare().Initial(), 0) << entry;
    const uint32_t loads = host.machine.Calls("LoadLibraryA");
    EXPECT_EQ(host.bare().Initial(), 0) << entry;  // the module is held
    EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads) << entry;
  }
}

TEST(SisMMImpl, EndGivesTheModuleBack) {
  SisHost host;
  host.ostrel();
  const std::string outstanding = host.machine.Outstanding();
  host.sis();
  EXPECT_NE(host.machine.Outstanding(), outstanding);
  host.End();
  EXPECT_EQ(host.machine.Outstanding(), outstanding);
}

TEST(SisMMImpl, NothingAnswersBeforeInitial) {
  SisHost host;
  IMMonitor& sis = host.bare();
  host.Forget();
  uint32_t first = kUntouched;
  uint32_t second = kUntouched;
  EXPECT_EQ(sis.GetConnectedDisplays(&first, &second), 0);
  EXPECT_EQ(sis.GetActiveDisplays(&first, &second), 0);
  EXPECT_EQ(sis.GetCurrentDisplayMode(&first, &second), 0);
  EXPECT_EQ(sis.SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB), 0);
  EXPECT_EQ(sis.SetNewDisplayMode(IMMonitor::DM_CLONE, IMMonitor::MD_CRT), 0);
  EXPECT_EQ(first, kUntouched);
  EXPECT_EQ(second, kUntouched);
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

// The entry is one that nobody calls.
TEST(SisMMImpl, FailedInitialLeavesWhatTheLibraryHas) {
  SisHost host;
  sim::RemoveSisEntry(host.machine, "NoDeviceTest");
  IMMonitor& sis = host.bare();
  EXPECT_EQ(sis.Initial(), 0);
  uint32_t displays = 0;
  uint32_t count = 0;
  EXPECT_EQ(sis.GetConnectedDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, 3u);
  EXPECT_EQ(sis.SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_CRT), 1);
  EXPECT_EQ(host.machine.Topology(), "single crt");
}

// --- Connected displays.

// By the four device bits as a number.
constexpr uint32_t kConnectedDisplays[] = {0, 4, 1, 5, 2, 6, 3, 7, 2, 6, 3, 7, 2, 6, 3, 7};
constexpr uint32_t kConnectedCounts[] = {0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 1, 2, 2, 3};

TEST(SisReports, ConnectedDisplaysOfEveryMask) {
  SisHost host;
  for (uint32_t attached = 1; attached < 16; ++attached) {
    for (const uint32_t more : {0u, 0x10u, 0xFFFFFFF0u}) {
      sim::SetSisState(host.machine, 2, 2, attached | more);
      EXPECT_EQ(host.Connected(), LegacyHost::Hex(kConnectedDisplays[attached]) + " (" +
                                      std::to_string(kConnectedCounts[attached]) + ")")
          << attached;
    }
  }
}

TEST(SisReports, NothingAttachedFailsWithTheOutputsCleared) {
  SisHost host;
  sim::SetSisState(host.machine, 2, 8, 0);
  EXPECT_EQ(host.Connected(), "failed 0x0 (0)");
}

TEST(SisReports, OnlyUnknownDevicesAreASuccess) {
  SisHost host;
  sim::SetSisState(host.machine, 2, 0, 0xFFFFFFF0);
  EXPECT_EQ(host.Connected(), "0x0 (0)");
}

// --- Active displays.

TEST(SisReports, ActiveDisplaysOfEveryPairOfDevices) {
  // The one flag of a device, by its bits: television before panel before CRT.
  constexpr uint32_t kFlags[] = {0, 4, 1, 4, 2, 4, 1, 4, 2, 4, 1, 4, 2, 4, 1, 4};
  SisHost host;
  for (uint32_t first = 0; first < 16; ++first) {
    for (uint32_t second = 0; second < 16; ++second) {
      sim::SetSisState(host.machine, first, second | 0xABC0, 0);
      const uint32_t count = (first != 0 ? 1 : 0) + (second != 0 ? 1 : 0);
      EXPECT_EQ(host.Active(), (count == 0 ? "failed " : "") +
                                   LegacyHost::Hex(kFlags[first] | kFlags[second]) + " (" +
                                   std::to_string(count) + ")")
          << first << " " << second;
    }
  }
}

TEST(SisReports, ReportsAreThoseOfTheNotebook) {
  SisHost host("xp sis: internal 1280x800 active, crt 1280x1024, tv 800x600");
  EXPECT_EQ(host.Connected(), "0x7 (3)");
  EXPECT_EQ(host.Active(), "0x1 (1)");
  EXPECT_EQ(host.Mode(), "1 0x1");
}

TEST(SisReports, RefusedStateLeavesTheOutputs) {
  SisHost host;
  host.sis();
  host.machine.Fail("GetCurDeviceState", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.Connected(), "failed - (-)");
  EXPECT_EQ(host.Active(), "failed - (-)");
  EXPECT_EQ(host.Mode(), "failed - -");
  host.machine.ClearFaults();
  EXPECT_EQ(host.Connected(), "0x3 (2)");
}

TEST(SisReports, AnyAnswerButZeroIsASuccess) {
  SisHost host;
  using State = int32_t(WINAPI*)(uint32_t*, uint32_t*, uint32_t*);
  const State negative = [](uint32_t* first, uint32_t* second, uint32_t* attached) -> int32_t {
    *first = 2;
    *second = 0;
    *attached = 10;
    return -1;
  };
  for (sim::Entry& entry : host.machine.state().invented.at(sim::kSisLibrary).entries) {
    if (std::string(entry.name) == "GetCurDeviceState") entry.function = sim::Erase(negative);
  }
  uint32_t displays = 0, count = 0;
  EXPECT_EQ(host.sis().GetConnectedDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, IMMonitor::MD_NB | IMMonitor::MD_CRT);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(host.sis().GetActiveDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, uint32_t{IMMonitor::MD_NB});
  EXPECT_EQ(count, 1u);
}

TEST(SisReports, NullPointersFail) {
  SisHost host;
  host.ExpectNullPointersToFail("GetCurDeviceState");
}

// --- The mode.

TEST(SisReports, OneActiveDisplayIsSingleAndTwoAreAClone) {
  const struct {
    uint32_t first, second;
    const char* mode;
  } rows[] = {{2, 0, "1 0x1"}, {0, 8, "1 0x2"}, {1, 0, "1 0x4"}, {2, 8, "2 0x3"},
              {8, 2, "2 0x3"}, {1, 2, "2 0x5"}, {4, 8, "2 0x2"},  // two displays of one kind
              {15, 0, "1 0x4"}};
  SisHost host;
  for (const auto& row : rows) {
    sim::SetSisState(host.machine, row.first, row.second, 15);
    EXPECT_EQ(host.Mode(), row.mode) << row.first << " " << row.second;
  }
}

// The report of the active displays is a failure then.
TEST(SisReports, NoActiveDisplayIsNoMode) {
  SisHost host;
  sim::SetSisState(host.machine, 0, 16, 15);
  EXPECT_EQ(host.Mode(), "failed - -");
}

TEST(SisReports, NoActiveDisplayThatIsReportedWithSuccessIsModeZero) {
  SisHost host;
  const std::unique_ptr<IMMonitor> sis(host.box().NewSisMMImplInTheDark());
  uint32_t mode = kUntouched;
  uint32_t displays = kUntouched;
  EXPECT_EQ(sis->GetCurrentDisplayMode(&mode, &displays), 1);
  EXPECT_EQ(mode, 0u);
  EXPECT_EQ(displays, 0u);
}

TEST(SisReports, ExtendedDesktopIsReportedAsAClone) {
  SisHost host("xp sis: internal 1280x800 active, crt 1280x1024 active");
  EXPECT_EQ(host.sis().IsExtendModeEnabled(), 1);
  const uint32_t asked = host.machine.Calls("EnumDisplayDevicesA");
  EXPECT_EQ(host.Mode(), "2 0x3");
  EXPECT_EQ(host.machine.Calls("EnumDisplayDevicesA"), asked);
}

// --- What is left to the base class.

TEST(SisMMImpl, IsSis) {
  SisHost host;
  EXPECT_EQ(host.sis().GetVgaVendor(), 0x1039u);
  EXPECT_FALSE(host.box().HasExtension(&host.sis()));
}

TEST(SisMMImpl, WindowsDoesTheRest) {
  SisHost host("win7 sis: internal 1280x800 active, crt 1280x1024");
  IMMonitor& sis = host.sis();
  EXPECT_EQ(sis.HasDualOutputCapability(), 1);
  EXPECT_EQ(sis.HasDisplaySwitchingCapability(), 1);
  EXPECT_EQ(sis.ShouldResetDisplaySettingAfterSwtich(), 1);
  EXPECT_EQ(sis.EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
  EXPECT_EQ(sis.IsExtendModeEnabled(), 1);
  EXPECT_EQ(sis.EnableExtendModeOnDisplays(0, IMMonitor::MD_CRT), 1);
  EXPECT_EQ(host.machine.Topology(), "single internal");
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  EXPECT_TRUE(sis.GetDisplaySettings(IMMonitor::MD_NB, &dm));
  EXPECT_EQ(dm.dmPelsWidth, 1280u);
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "SwitchMode("), 0u);
  EXPECT_EQ(sis.ChangeToNBOnlySingleDisplayMode(), 1);
  EXPECT_EQ(host.machine.TakeJournal(), "SwitchMode(kind=2 [2 1280x800x16@60] [0 0x0x0@0])=2\n");
}

TEST(SisMMImpl, OldWindowsTellsNoSettings) {
  SisHost host;
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  EXPECT_FALSE(host.sis().GetDisplaySettings(IMMonitor::MD_NB, &dm));
}

TEST(SisMMImpl, FailedInitialLogsNothing) {
  SisHost host;
  host.box();
  host.ForgetLog();
  sim::RemoveSisEntry(host.machine, "NoDeviceTest");
  EXPECT_EQ(host.bare().Initial(), 0);
  host.End();
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(SisMMImpl, LogsNothing) {
  SisHost host;
  host.box();
  host.ForgetLog();
  host.machine.Fail("GetCurDeviceState", 2);
  host.machine.Fail("SwitchMode", 1);
  EXPECT_EQ(host.Connected(), "0x3 (2)");
  EXPECT_EQ(host.Connected(), "failed - (-)");
  EXPECT_EQ(host.Mode(), "1 0x1");
  EXPECT_EQ(host.sis().SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_CRT), 0);
  EXPECT_EQ(host.sis().SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_CRT), 1);
  host.ExpectNullPointersToFail("GetCurDeviceState");
  host.End();
  EXPECT_EQ(host.TakeLog(), "");
}

// --- By way of the factory.

TEST(SisMMImpl, FactoryMakesAndStoresItWithoutStartingIt) {
  SisHost host;
  const FactoryBox& factory = *host.ostrel().white_box().factory;
  const size_t modules = host.Modules();
  IMMonitor* const sis = factory.CreateIMMonitorByVendor(0x1039);
  ASSERT_NE(sis, nullptr);
  EXPECT_EQ(factory.ActiveMonitor(), sis);
  EXPECT_EQ(sis->GetVgaVendor(), 0x1039u);
  EXPECT_EQ(host.Modules(), modules);
  EXPECT_EQ(sis->Initial(), 1);
  EXPECT_EQ(sis->SetNewDisplayMode(IMMonitor::DM_CLONE, IMMonitor::MD_NB | IMMonitor::MD_CRT), 1);
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
  factory.DeleteMultiMonitorObject();
  EXPECT_EQ(host.Modules(), modules);
  EXPECT_EQ(host.Bytes(), "[Clone Mode]\r\n" + SisKeys("LCD", 1280, 800, 16, 60));
}

TEST(SisMMImpl, WithoutMemoryThereIsNone) {
  SisHost host;
  const auto refuse = host.ostrel().white_box().projectors->RefuseMemory;
  refuse(1);
  EXPECT_EQ(host.box().NewSisMMImpl(), nullptr);
  EXPECT_FALSE(refuse(0));
}

}  // namespace
