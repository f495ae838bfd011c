// The simulated display library of AMD's driver: its file, its session, its adapters and displays.
#include <gtest/gtest.h>

#include "sim/faces/AmdDriver.h"
#include "sim/tests/AmdCalls.h"
#include "sim/tests/Fakes.h"

namespace sim {
namespace {

constexpr char kTwo[] = "win7 amd: internal 1366x768 active, crt 1280x1024";
constexpr char kAll[] =
    "win7 amd*3: crt 1280x1024, tv, internal 1366x768 active, dvi, hdmi 1920x1080, dp, edp, other, "
    "wireless";
using Number = std::pair<int, int>;

constexpr const char* kExports[] = {
    "ADL_Main_Control_Create",
    "ADL_Main_Control_Destroy",
    "ADL_Main_Control_Refresh",
    "ADL_Adapter_NumberOfAdapters_Get",
    "ADL_Adapter_AdapterInfo_Get",
    "ADL_Adapter_Active_Get",
    "ADL_Display_DisplayInfo_Get",
    "ADL_Display_NumberOfDisplays_Get",
    "ADL_Display_SwitchingCapability_Get",
    "ADL_Display_DisplayMapConfig_Get",
    "ADL_Display_DisplayMapConfig_Set",
    "ADL_Display_EdidData_Get",
    "ADL_Display_PowerXpressVersion_Get",
    "ADL_Display_PowerXpressActiveGPU_Get",
    "ADL_Display_Capabilities_Get",
    "ADL_Display_SLSMapIndex_Get",
    "ADL_Display_SLSMapConfig_Get",
    "ADL_Display_SLSGrid_Caps",
    "ADL_Display_Modes_Get",
};

bool Loads(const char* file) {
  const HMODULE module = FAKE(LoadLibraryA)(file);
  if (module != nullptr) FAKE(FreeLibrary)(module);
  return module != nullptr;
}

// --- The library.

TEST(AmdAdl, LibraryIsThereWithAWorkingAdapterWhoseDriverBroughtIt) {
  Machine machine("win7 intel, amd: internal 1366x768 active");
  Adapter& amd = machine.model().adapters[1];
  EXPECT_TRUE(Loads("atiadlxx.dll"));
  EXPECT_TRUE(Loads("C:\\Windows\\system32\\ATIADLXX"));
  amd.amd.adl_library = false;
  EXPECT_FALSE(Loads("atiadlxx.dll"));
  amd.amd.adl_library = true;
  amd.vendor_library = false;
  EXPECT_FALSE(Loads("atiadlxx.dll"));
  amd.vendor_library = true;
  amd.disabled = true;
  EXPECT_FALSE(Loads("atiadlxx.dll"));
  amd.disabled = false;
  EXPECT_TRUE(Loads("atiadlxx.dll"));
  amd.hardware_id = machine.model().adapters[0].hardware_id;
  EXPECT_FALSE(Loads("atiadlxx.dll"));
}

TEST(AmdAdl, LibraryThatIsLoadedStaysUntilItIsFreed) {
  Machine machine(kTwo);
  {
    const AmdLibrary library("atiadlxx.dll");
    machine.model().adapters[0].vendor_library = false;
    EXPECT_NE(FAKE(GetModuleHandleA)("atiadlxx.dll"), nullptr);
    EXPECT_TRUE(library.Has("ADL_Main_Control_Create"));
  }
  EXPECT_FALSE(Loads("atiadlxx.dll"));
}

TEST(AmdAdl, LibraryOfATestsOwnTakesItsPlace) {
  Machine machine(kTwo);
  machine.state().invented["atiadlxx.dll"] = {"atiadlxx.dll", {}, 0, nullptr, nullptr};
  const AmdLibrary library("atiadlxx.dll");
  EXPECT_FALSE(library.Has("ADL_Main_Control_Create"));
}

TEST(AmdAdl, EveryExportIsThereUntilATestTakesItAway) {
  for (const char* taken : kExports) {
    Machine machine(kTwo);
    const AmdLibrary before("atiadlxx.dll");
    RemoveAmdEntry(machine, taken);
    for (const char* name : kExports) EXPECT_EQ(before.Has(name), name != taken) << name;
  }
  Machine machine(kTwo);
  RemoveAmdEntry(machine, "ADL_Display_Modes_Get");
  const AmdLibrary behind("atiadlxx.dll");
  EXPECT_FALSE(behind.Has("ADL_Display_Modes_Get"));
  EXPECT_TRUE(behind.Has("ADL_Display_EdidData_Get"));
  const CaughtFailures failures;
  RemoveAmdEntry(machine, "ADL_Nothing");
  SetAmdAnswer(machine, "ADL_Nothing", 1);
  EXPECT_EQ(failures.list().size(), 2u);
}

// --- The session.

TEST(AmdAdl, NothingWorksOutsideASession) {
  Machine machine(kTwo);
  const AmdLibrary library("atiadlxx.dll");
  AmdBytes out(4096, 0xEE);
  void* const o = out.data();
  const auto all_refuse = [&] {
    EXPECT_EQ(library.Call("ADL_Main_Control_Destroy"), -2);
    EXPECT_EQ(library.Call("ADL_Main_Control_Refresh"), -2);
    EXPECT_EQ(library.Call("ADL_Adapter_NumberOfAdapters_Get", o), -2);
    EXPECT_EQ(library.Call("ADL_Adapter_AdapterInfo_Get", o, 4096), -2);
    for (const char* name :
         {"ADL_Adapter_Active_Get", "ADL_Display_NumberOfDisplays_Get",
          "ADL_Display_SwitchingCapability_Get", "ADL_Display_PowerXpressVersion_Get",
          "ADL_Display_PowerXpressActiveGPU_Get"}) {
      EXPECT_EQ(library.Call(name, 0, o), -2) << name;
    }
    EXPECT_EQ(library.Call("ADL_Display_DisplayInfo_Get", 0, o, o, 1), -2);
    EXPECT_EQ(library.Call("ADL_Display_Capabilities_Get", 0, o, o), -2);
    EXPECT_EQ(library.Call("ADL_Display_DisplayMapConfig_Get", 0, o, o, o, o, 1), -2);
    EXPECT_EQ(library.Call("ADL_Display_DisplayMapConfig_Set", -1, 1, o, 1, o), -2);
    EXPECT_EQ(library.Call("ADL_Display_EdidData_Get", 0, 1, o), -2);
    EXPECT_EQ(library.Call("ADL_Display_Modes_Get", 0, 1, o, o), -2);
    EXPECT_EQ(library.Call("ADL_Display_SLSGrid_Caps", 0, o, o, 1), -2);
    EXPECT_EQ(library.Call("ADL_Display_SLSMapIndex_Get", 0, 1, o, o), -2);
    EXPECT_EQ(
        library.Call("ADL_Display_SLSMapConfig_Get", 0, 3, o, o, o, o, o, o, o, o, o, o, o, 1), -2);
  };
  all_refuse();
  EXPECT_EQ(library.Call("ADL_Main_Control_Create", AmdAllocate, 0), 0);
  EXPECT_EQ(library.Call("ADL_Main_Control_Refresh"), 0);
  EXPECT_EQ(library.Call("ADL_Main_Control_Destroy"), 0);
  all_refuse();
  EXPECT_EQ(out.bytes, AmdBytes(4096, 0xEE).bytes);
}

TEST(AmdAdl, StartNeedsACallbackAndAKnownWayToList) {
  Machine machine(kTwo);
  const AmdLibrary library("atiadlxx.dll");
  EXPECT_EQ(library.Call("ADL_Main_Control_Create", nullptr, 0), -11);
  EXPECT_EQ(library.Call("ADL_Main_Control_Create", AmdAllocate, 2), -3);
  EXPECT_FALSE(AdlIsRunning(machine));
}

TEST(AmdAdl, SessionStandsInTheLedgerUntilItsEnd) {
  Machine machine(kTwo);
  const AmdLibrary library("atiadlxx.dll");
  const std::string module = machine.Outstanding();
  library.Call("ADL_Main_Control_Create", AmdAllocate, 0);
  library.Call("ADL_Main_Control_Create", AmdAllocate, 0);  // none of its own
  EXPECT_NE(machine.Outstanding().find("ADL session"), std::string::npos);
  EXPECT_TRUE(AdlIsRunning(machine));
  EXPECT_EQ(library.Call("ADL_Main_Control_Destroy"), 0);
  EXPECT_EQ(machine.Outstanding(), module);
  EXPECT_FALSE(AdlIsRunning(machine));
}

TEST(AmdAdl, RefusedEndIsNotHeldAgainstTheClient) {
  Machine machine(kTwo);
  const AmdLibrary library("atiadlxx.dll");
  const std::string module = machine.Outstanding();
  library.Call("ADL_Main_Control_Create", AmdAllocate, 0);
  machine.Fail("ADL_Main_Control_Destroy", 1);
  EXPECT_EQ(library.Call("ADL_Main_Control_Destroy"), -1);
  EXPECT_EQ(machine.Outstanding(), module);
  EXPECT_TRUE(AdlIsRunning(machine));
  EXPECT_EQ(library.Call("ADL_Main_Control_Destroy"), 0);
}

TEST(AmdAdl, StartBehindARefusedEndIsToBeEnded) {
  Machine machine(kTwo);
  const AmdLibrary library("atiadlxx.dll");
  const std::string module = machine.Outstanding();
  library.Call("ADL_Main_Control_Create", AmdAllocate, 0);
  machine.Fail("ADL_Main_Control_Destroy", 1);
  library.Call("ADL_Main_Control_Destroy");
  EXPECT_EQ(library.Call("ADL_Main_Control_Create", AmdAllocate, 0), 0);
  EXPECT_NE(machine.Outstanding().find("ADL session"), std::string::npos);
  EXPECT_EQ(library.Call("ADL_Main_Control_Destroy"), 0);
  EXPECT_EQ(machine.Outstanding(), module);
}

TEST(AmdAdl, UnloadedLibraryHasNoSession) {
  Machine machine(kTwo);
  {
    const AmdLibrary library("atiadlxx.dll");
    library.Call("ADL_Main_Control_Create", AmdAllocate, 0);
  }
  EXPECT_FALSE(AdlIsRunning(machine));
  EXPECT_NE(machine.Outstanding().find("ADL session"), std::string::npos);
}

// --- The client's memory.

TEST(AmdAdl, ArraysComeFromTheCallbackAndGoBackByFree) {
  Machine machine(kTwo);
  const AdlClient adl;
  const std::string before = machine.Outstanding();
  int count = 0;
  void* array = nullptr;
  EXPECT_EQ(adl.Call("ADL_Display_DisplayInfo_Get", 0, &count, &array, 1), 0);
  EXPECT_NE(machine.Outstanding().find("ADL buffer"), std::string::npos);
  AmdFree(array);
  EXPECT_EQ(machine.Outstanding(), before);
  AmdFree(std::malloc(16));  // the library's own
  EXPECT_EQ(machine.Outstanding(), before);
}

TEST(AmdAdl, ArrayPointerIsNullBeforeTheCall) {
  Machine machine(kTwo);
  const AdlClient adl;
  int count = 0;
  void* first = nullptr;
  const CaughtFailures failures;
  EXPECT_EQ(adl.Call("ADL_Display_DisplayInfo_Get", 0, &count, &first, 1), 0);
  EXPECT_EQ(failures.list().size(), 0u);
  void* again = first;
  EXPECT_EQ(adl.Call("ADL_Display_DisplayInfo_Get", 0, &count, &again, 1), 0);
  EXPECT_EQ(failures.list().size(), 1u);
  AmdFree(first);
  AmdFree(again);
}

TEST(AmdAdl, CallbackWithoutMemoryMakesTheCallFail) {
  Machine machine(kTwo);
  const AdlClient adl;
  const std::string before = machine.Outstanding();
  adl.Call("ADL_Main_Control_Create", AmdAllocateNothing, 0);
  EXPECT_EQ(adl.Displays(0).result, -1);
  EXPECT_EQ(adl.Maps(0).first.result, -1);
  EXPECT_EQ(adl.Modes(0, 1).result, -1);
  EXPECT_EQ(machine.Outstanding(), before);
}

// --- Adapters.

TEST(AmdAdl, EachDisplayDeviceIsAnAdapter) {
  Machine machine("win7 intel, amd*3: internal@2 1366x768 active, crt@2 1280x1024 active");
  const AdlClient adl;
  int count = 0;
  EXPECT_EQ(adl.Call("ADL_Adapter_NumberOfAdapters_Get", &count), 0);
  ASSERT_EQ(count, 3);
  AmdBytes infos(3 * 1572);
  EXPECT_EQ(adl.Call("ADL_Adapter_AdapterInfo_Get", infos.data(), 3 * 1572), 0);
  EXPECT_EQ(infos.At(0), 1572u);
  EXPECT_EQ(infos.At(4), 0u);
  EXPECT_EQ(infos.TextAt(8).substr(0, 12), "PCI_VEN_1002");
  EXPECT_EQ(infos.At(276), 1002u);
  EXPECT_EQ(infos.TextAt(280), "AMD Radeon HD 7500M");
  EXPECT_EQ(infos.TextAt(536), "\\\\.\\DISPLAY3");
  EXPECT_EQ(infos.At(792), 1u);
  EXPECT_EQ(infos.At(796), 1u);
  EXPECT_EQ(infos.TextAt(1312), machine.model().adapters[1].hardware_id);
  EXPECT_EQ(infos.At(1568), 2u);
  EXPECT_EQ(infos.At(1572 + 4), 1u);
  EXPECT_EQ(infos.TextAt(2 * 1572 + 536), "\\\\.\\DISPLAY5");
  EXPECT_EQ(adl.Number("ADL_Adapter_Active_Get", 0), (Number{0, 1}));
  EXPECT_EQ(adl.Number("ADL_Adapter_Active_Get", 1), (Number{0, 1}));
  EXPECT_EQ(adl.Number("ADL_Adapter_Active_Get", 2), (Number{0, 0}));
}

TEST(AmdAdl, IndicesMayDifferFromPlaces) {
  Machine machine("win7 amd*3, amd: internal 1366x768, crt 1280x1024 active");
  machine.model().adapters[0].amd.adl_indices = {7, 0, 4};
  const AdlClient adl;
  AmdBytes infos(5 * 1572);
  EXPECT_EQ(adl.Call("ADL_Adapter_AdapterInfo_Get", infos.data(), 5 * 1572), 0);
  const uint32_t expected[] = {7, 0, 4, 8, 9};
  for (size_t i = 0; i < 5; ++i) EXPECT_EQ(infos.At(i * 1572 + 4), expected[i]);
  EXPECT_EQ(adl.Number("ADL_Adapter_Active_Get", 7), (Number{0, 1}));
  EXPECT_EQ(adl.Number("ADL_Adapter_Active_Get", 0), (Number{0, 0}));
  EXPECT_EQ(adl.Number("ADL_Adapter_Active_Get", 1), (Number{-5, -99}));
  EXPECT_EQ(adl.Number("ADL_Adapter_Active_Get", -1), (Number{-5, -99}));
}

TEST(AmdAdl, ArrayThatIsTooSmallIsLeftAlone) {
  Machine machine(kTwo);
  const AdlClient adl;
  AmdBytes infos(2 * 1572, 0xEE);
  for (const int size : {2 * 1572 - 1, 0, -1}) {
    EXPECT_EQ(adl.Call("ADL_Adapter_AdapterInfo_Get", infos.data(), size), -4);
  }
  EXPECT_EQ(infos.bytes, AmdBytes(2 * 1572, 0xEE).bytes);
}

TEST(AmdAdl, DisabledAdapterIsListedOnlyAmongAllThereEverWere) {
  Machine machine("win7 amd, amd: internal 1366x768 active, crt@2 1280x1024");
  machine.model().adapters[1].disabled = true;
  int count = 0;
  {
    const AdlClient all(0);
    all.Call("ADL_Adapter_NumberOfAdapters_Get", &count);
    EXPECT_EQ(count, 4);
    AmdBytes infos(4 * 1572);
    all.Call("ADL_Adapter_AdapterInfo_Get", infos.data(), 4 * 1572);
    EXPECT_EQ(infos.At(2 * 1572 + 792), 0u);
    EXPECT_EQ(all.Number("ADL_Adapter_Active_Get", 2), (Number{0, 0}));
    EXPECT_EQ(all.Number("ADL_Display_NumberOfDisplays_Get", 2), (Number{-10, -99}));
  }
  const AdlClient present(1);
  present.Call("ADL_Adapter_NumberOfAdapters_Get", &count);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(present.Number("ADL_Adapter_Active_Get", 2), (Number{-5, -99}));
}

TEST(AmdAdl, NumbersOfTheAdapter) {
  Machine machine(kAll);
  AmdDriver& driver = machine.model().adapters[0].amd;
  const AdlClient adl;
  EXPECT_EQ(adl.Number("ADL_Display_NumberOfDisplays_Get", 1), (Number{0, 9}));
  EXPECT_EQ(adl.Number("ADL_Display_SwitchingCapability_Get", 1), (Number{0, 0}));
  EXPECT_EQ(adl.Number("ADL_Display_PowerXpressVersion_Get", 1), (Number{-8, -99}));
  EXPECT_EQ(adl.Number("ADL_Display_PowerXpressActiveGPU_Get", 1), (Number{-8, -99}));
  driver.switching_capability = 1;
  driver.powerxpress = 4;
  driver.active_gpu = 1;
  EXPECT_EQ(adl.Number("ADL_Display_SwitchingCapability_Get", 1), (Number{0, 1}));
  EXPECT_EQ(adl.Number("ADL_Display_PowerXpressVersion_Get", 1), (Number{0, 4}));
  EXPECT_EQ(adl.Number("ADL_Display_PowerXpressActiveGPU_Get", 1), (Number{0, 1}));
  int controllers = 0;
  int displays = 0;
  EXPECT_EQ(adl.Call("ADL_Display_Capabilities_Get", 0, &controllers, &displays), 0);
  EXPECT_EQ(controllers, 3);
  EXPECT_EQ(displays, 9);
}

TEST(AmdAdl, TestMaySetWhatIsAnswered) {
  Machine machine(kTwo);
  SetAmdAnswer(machine, "ADL_Display_NumberOfDisplays_Get", 1);
  SetAmdAnswer(machine, "ADL_Display_Capabilities_Get controllers", 0);
  SetAmdAnswer(machine, "ADL_Display_Capabilities_Get displays", 5);
  const AdlClient adl;
  EXPECT_EQ(adl.Number("ADL_Display_NumberOfDisplays_Get", 0), (Number{0, 1}));
  int controllers = -1;
  int displays = -1;
  EXPECT_EQ(adl.Call("ADL_Display_Capabilities_Get", 0, &controllers, &displays), 0);
  EXPECT_EQ(controllers, 0);
  EXPECT_EQ(displays, 5);
}

// --- Wrong arguments, faults, the journal.

TEST(AmdAdl, NullOutputsAreRefused) {
  Machine machine(kTwo);
  const AdlClient adl;
  AmdBytes out(4096);
  void* const o = out.data();
  void* const n = nullptr;
  EXPECT_EQ(adl.Call("ADL_Adapter_NumberOfAdapters_Get", n), -9);
  EXPECT_EQ(adl.Call("ADL_Adapter_AdapterInfo_Get", n, 4096), -9);
  for (const char* name : {"ADL_Adapter_Active_Get", "ADL_Display_NumberOfDisplays_Get",
                           "ADL_Display_SwitchingCapability_Get"}) {
    EXPECT_EQ(adl.Call(name, 0, n), -9) << name;
  }
  EXPECT_EQ(adl.Call("ADL_Display_DisplayInfo_Get", 0, n, o, 1), -9);
  EXPECT_EQ(adl.Call("ADL_Display_DisplayInfo_Get", 0, o, n, 1), -9);
  EXPECT_EQ(adl.Call("ADL_Display_DisplayInfo_Get", 0, o, o, 2), -3);
  EXPECT_EQ(adl.Call("ADL_Display_Capabilities_Get", 0, n, o), -9);
  EXPECT_EQ(adl.Call("ADL_Display_Capabilities_Get", 0, o, n), -9);
  EXPECT_EQ(adl.Call("ADL_Display_EdidData_Get", 0, 1, n), -9);
  EXPECT_EQ(adl.Call("ADL_Display_Modes_Get", 0, 1, n, o), -9);
  EXPECT_EQ(adl.Call("ADL_Display_Modes_Get", 0, 1, o, n), -9);
  EXPECT_EQ(adl.Call("ADL_Display_DisplayMapConfig_Get", 0, o, o, o, n, 1), -9);
  EXPECT_EQ(adl.Call("ADL_Display_DisplayMapConfig_Get", 0, o, o, o, o, 2), -3);
  EXPECT_EQ(adl.Call("ADL_Display_DisplayMapConfig_Set", 0, 1, n, 1, o), -9);
  EXPECT_EQ(adl.Call("ADL_Display_DisplayMapConfig_Set", 0, 1, o, 1, n), -9);
  EXPECT_EQ(adl.Call("ADL_Display_SLSGrid_Caps", 0, n, o, 1), -9);
  EXPECT_EQ(adl.Call("ADL_Display_SLSGrid_Caps", 0, o, o, 3), -3);
  EXPECT_EQ(adl.Call("ADL_Display_SLSMapIndex_Get", 0, 1, n, o), -9);
  EXPECT_EQ(adl.Call("ADL_Display_SLSMapIndex_Get", 0, 0, o, o), -3);
}

TEST(AmdAdl, FaultIsTheResultAndLeavesTheOutputs) {
  Machine machine(kTwo);
  const AdlClient adl;
  machine.Fail("ADL_Display_DisplayInfo_Get", 1);
  machine.Fail("ADL_Display_DisplayInfo_Get", 2, static_cast<uint32_t>(-8));
  machine.Fail("ADL_Display_DisplayInfo_Get", 3, 4);
  for (const int expected : {-1, -8, 4}) {
    const AdlList list = adl.Displays(0);
    EXPECT_EQ(list.result, expected);
    EXPECT_EQ(list.count, -77);
  }
  EXPECT_EQ(adl.Displays(0).count, 2);
  EXPECT_EQ(machine.Calls("ADL_Display_DisplayInfo_Get"), 4u);
}

TEST(AmdAdl, EveryExportFailsByName) {
  Machine machine(kTwo);
  const AdlClient adl;
  for (const char* name : kExports) {
    machine.Fail(name, 1, static_cast<uint32_t>(-42));
    EXPECT_EQ(adl.Call(name, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), -42) << name;
  }
}

TEST(AmdAdl, ReadsStandInTheJournalOnRequest) {
  Machine machine(kTwo);
  const AdlClient adl;
  adl.Displays(0);
  EXPECT_EQ(machine.TakeJournal(), "");
  machine.JournalReads(true);
  adl.Displays(1);
  adl.Modes(0, 1);
  EXPECT_EQ(machine.TakeJournal(),
            "GetProcAddress(ADL_Display_DisplayInfo_Get)=0\n"
            "ADL_Display_DisplayInfo_Get(adapter=1 force=1)=0\n"
            "GetProcAddress(ADL_Display_Modes_Get)=0\n"
            "ADL_Display_Modes_Get(adapter=0 display=1)=0\n");
}

}  // namespace
}  // namespace sim
