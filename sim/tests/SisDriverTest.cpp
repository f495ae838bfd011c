// The simulated SisVga.dll.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>

#include "sim/faces/SisDriver.h"
#include "sim/tests/AmdCalls.h"
#include "sim/tests/Fakes.h"

namespace sim {
namespace {

constexpr char kLibrary[] = "SisVga.dll";
constexpr char kTwo[] = "xp sis: internal 1280x800 active, crt 1280x1024";
constexpr const char* kExports[] = {"SwitchMode", "GetCurDeviceState", "ChangeTVMode",
                                    "GetDriverModeData", "NoDeviceTest"};

using Words = std::array<uint32_t, 3>;

// first, second, attached; 0xEE where the call failed.
Words StateOf(const AmdLibrary& library) {
  Words words = {0xEE, 0xEE, 0xEE};
  const int result = library.Call("GetCurDeviceState", &words[0], &words[1], &words[2]);
  EXPECT_EQ(result, words[2] == 0xEE ? 0 : kSisSwitched);
  return words;
}

AmdBytes Record(uint32_t device, uint32_t width, uint32_t height, uint32_t depth = 32,
                uint32_t frequency = 60) {
  return AmdBytes(20).Set(0, device).Set(4, width).Set(8, height).Set(12, depth).Set(16, frequency);
}

int Switch(const AmdLibrary& library, int kind, AmdBytes first, AmdBytes second = AmdBytes(20)) {
  return library.Call("SwitchMode", kind, first.data(), second.data());
}

TEST(SisDriver, LibraryIsThereWithAWorkingAdapterWhoseDriverBroughtIt) {
  Machine machine("xp intel, sis: internal@2 1280x800 active");
  const auto loads = [] {
    const HMODULE module = FAKE(LoadLibraryA)(kLibrary);
    if (module != nullptr) FAKE(FreeLibrary)(module);
    return module != nullptr;
  };
  Adapter& sis = machine.model().adapters[1];
  EXPECT_TRUE(loads());
  sis.vendor_library = false;
  EXPECT_FALSE(loads());
  sis.vendor_library = true;
  sis.problem = 10;
  EXPECT_FALSE(loads());
  sis.problem = 0;
  sis.hardware_id = "PCI\\VEN_1106&DEV_3371";
  EXPECT_FALSE(loads());
}

TEST(SisDriver, EveryExportIsThereUntilATestTakesItAway) {
  for (const char* taken : kExports) {
    Machine machine(kTwo);
    RemoveSisEntry(machine, taken);
    EXPECT_THROW(RemoveSisEntry(machine, taken), std::runtime_error);
    const AmdLibrary library(kLibrary);
    for (const char* name : kExports) EXPECT_EQ(library.Has(name), name != taken) << name;
  }
}

TEST(SisDriver, ExportThatNobodyNeedsFailsTheTestByName) {
  const Machine machine(kTwo);
  const AmdLibrary library(kLibrary);
  const CaughtFailures failures;
  for (const char* name : {"ChangeTVMode", "GetDriverModeData", "NoDeviceTest"}) {
    EXPECT_EQ(library.Call(name, 0, 0, 0), 0) << name;
    ASSERT_FALSE(failures.list().empty());
    EXPECT_EQ(failures.list().back(), std::string(name) + " was called, which is not simulated");
  }
}

// --- GetCurDeviceState.

TEST(SisDriver, StateTellsWhatIsActiveAndWhatIsPluggedIn) {
  const struct {
    const char* machine;
    Words words;
  } rows[] = {
      {"xp sis: internal 1280x800 active", {2, 0, 2}},
      {"xp sis: internal 1280x800 active, crt 1280x1024", {2, 0, 10}},
      {"xp sis: internal 1280x800, crt 1280x1024 active", {8, 0, 10}},
      {"xp sis: internal 1280x800, tv 800x600 active, crt", {1, 0, 3}},
      {"xp sis: clone internal 1280x800 active, crt 1280x1024 active", {2, 8, 10}},
      {"xp sis: internal 1280x800 active, crt 1280x1024 active", {2, 8, 10}},
      {"xp sis: crt 1280x1024 active, internal 1280x800 active", {8, 2, 10}},
      {"xp sis: crt 1280x1024 active, crt2 1280x1024 active", {8, 4, 12}},
      {"xp sis: internal 1280x800 active, hdmi 1920x1080 active", {2, 0, 2}},  // unknown to it
      {"xp sis*3: hdmi 1920x1080 active, internal 1280x800 active, tv 800x600 active", {2, 1, 3}},
      {"xp sis: internal", {0, 0, 0}},
  };
  for (const auto& row : rows) {
    const Machine machine(row.machine);
    EXPECT_EQ(StateOf(AmdLibrary(kLibrary)), row.words) << row.machine;
  }
}

TEST(SisDriver, StateIsThatOfItsOwnAdapter) {
  const Machine machine("xp intel, sis: internal@2 1280x800 active, crt 1280x1024 active");
  EXPECT_EQ(StateOf(AmdLibrary(kLibrary)), (Words{2, 0, 2}));
}

TEST(SisDriver, StateMayBeToldByATest) {
  Machine machine(kTwo);
  SetSisState(machine, 5, 16, 0);
  EXPECT_EQ(StateOf(AmdLibrary(kLibrary)), (Words{5, 16, 0}));
}

TEST(SisDriver, RefusedStateWritesNothing) {
  Machine machine(kTwo);
  const AmdLibrary library(kLibrary);
  machine.Fail("GetCurDeviceState", 1);
  EXPECT_EQ(StateOf(library), (Words{0xEE, 0xEE, 0xEE}));
  uint32_t word = 0xEE;
  uint32_t* const none = nullptr;
  EXPECT_EQ(library.Call("GetCurDeviceState", none, &word, &word), 0);
  EXPECT_EQ(library.Call("GetCurDeviceState", &word, none, &word), 0);
  EXPECT_EQ(library.Call("GetCurDeviceState", &word, &word, none), 0);
  EXPECT_EQ(word, 0xEEu);
  machine.model().adapters[0].disabled = true;  // the library is loaded all the same
  EXPECT_EQ(StateOf(library), (Words{0xEE, 0xEE, 0xEE}));
}

// --- SwitchMode.

TEST(SisDriver, SwitchShowsOneDisplayOrTwoAndIsSeenByWindows) {
  Machine machine("xp sis: internal 1280x800 active, crt 1280x1024, tv 800x600");
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(Switch(library, 2, Record(8, 1024, 768, 16)), kSisSwitched);
  EXPECT_EQ(machine.Topology(), "single crt");
  EXPECT_EQ(Now(kFirst), "1024x768x16@60 at 0,0");
  EXPECT_EQ(StateOf(library), (Words{8, 0, 11}));
  EXPECT_EQ(Switch(library, 1, Record(2, 1280, 800), Record(8, 1280, 800)), kSisSwitched);
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
  EXPECT_EQ(Switch(library, 1, Record(2, 800, 600), Record(1, 800, 600)), kSisSwitched);
  EXPECT_EQ(machine.Topology(), "clone internal+tv");
  EXPECT_EQ(Switch(library, 2, Record(2, 1280, 800)), kSisSwitched);
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(machine.TakeJournal(),
            "SwitchMode(kind=2 [8 1024x768x16@60] [0 0x0x0@0])=2\n"
            "SwitchMode(kind=1 [2 1280x800x32@60] [8 1280x800x32@60])=2\n"
            "SwitchMode(kind=1 [2 800x600x32@60] [1 800x600x32@60])=2\n"
            "SwitchMode(kind=2 [2 1280x800x32@60] [0 0x0x0@0])=2\n");
}

TEST(SisDriver, SwitchChecksEveryWord) {
  Machine machine("xp sis: internal 1280x800 active, crt 1280x1024, tv, crt2");
  const AmdLibrary library(kLibrary);
  const AmdBytes panel = Record(2, 1024, 768);
  const AmdBytes crt = Record(8, 1024, 768);
  for (const int kind : {0, 3, -1}) EXPECT_EQ(Switch(library, kind, panel), 0) << kind;
  EXPECT_EQ(Switch(library, 2, panel, crt), 0);    // one display, and another one
  EXPECT_EQ(Switch(library, 1, panel), 0);         // two displays, and one record
  EXPECT_EQ(Switch(library, 1, panel, panel), 0);  // one display twice
  EXPECT_EQ(Switch(library, 1, panel, Record(8, 800, 600)), 0);
  EXPECT_EQ(Switch(library, 1, panel, Record(8, 1024, 768, 16)), 0);
  EXPECT_EQ(Switch(library, 2, Record(2, 1280, 1024)), 0);  // not among its sizes
  EXPECT_EQ(Switch(library, 2, Record(2, 1024, 768, 24)), 0);
  EXPECT_EQ(Switch(library, 2, Record(2, 1024, 768, 32, 75)), 0);
  for (const uint32_t device : {0u, 1u, 3u, 4u, 10u, 16u}) {  // none, unplugged, several, unknown
    EXPECT_EQ(Switch(library, 2, Record(device, 1024, 768)), 0) << device;
  }
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(Switch(library, 1, panel, crt), kSisSwitched);
}

TEST(SisDriver, SwitchNeedsBothRecordsAndAnAdapter) {
  Machine machine(kTwo);
  const AmdLibrary library(kLibrary);
  AmdBytes record = Record(8, 1024, 768);
  void* const none = nullptr;
  EXPECT_EQ(library.Call("SwitchMode", 2, none, record.data()), 0);
  EXPECT_EQ(library.Call("SwitchMode", 2, record.data(), none), 0);
  machine.model().adapters[0].disabled = true;
  EXPECT_EQ(Switch(library, 2, record), 0);
  EXPECT_EQ(machine.TakeJournal(),
            "SwitchMode(kind=2 [null] [8 1024x768x32@60])=0\n"
            "SwitchMode(kind=2 [8 1024x768x32@60] [null])=0\n"
            "SwitchMode(kind=2 [8 1024x768x32@60] [0 0x0x0@0])=0\n");
}

TEST(SisDriver, FaultIsTheResultAndSwitchesNothing) {
  Machine machine(kTwo);
  const AmdLibrary library(kLibrary);
  machine.Fail("SwitchMode", 1);
  machine.Fail("SwitchMode", 2, 0xFFFFFFFF);
  EXPECT_EQ(Switch(library, 2, Record(8, 1024, 768)), 0);
  EXPECT_EQ(Switch(library, 2, Record(8, 1024, 768)), -1);
  EXPECT_EQ(machine.Topology(), "single internal");
}

// --- The notebook that comes along.

TEST(SisDriver, NotebookHasTheLibrary) {
  std::string file = __FILE__;
  std::replace(file.begin(), file.end(), '\\', '/');
  file = file.substr(0, file.rfind("sim/tests/")) + "machines/xp-sis.toml";
  const std::unique_ptr<Machine> machine = Machine::FromFile(file);
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(StateOf(library), (Words{2, 0, 10}));
  EXPECT_EQ(Switch(library, 1, Record(2, 1280, 800, 16), Record(8, 1280, 800, 16)), kSisSwitched);
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
}

}  // namespace
}  // namespace sim
