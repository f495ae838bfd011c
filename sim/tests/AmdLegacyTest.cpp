// The simulated legacy library of AMD's driver: adapters, displays and vectors.
#include <gtest/gtest.h>

#include <algorithm>

#include "sim/faces/AmdDriver.h"
#include "sim/tests/AmdCalls.h"
#include "sim/tests/Fakes.h"

namespace sim {
namespace {

constexpr char kTwo[] = "win7 amd: internal 1366x768 active, crt 1280x1024";
constexpr char kLibrary[] = "AtiPdl64.dll";
using Number = std::pair<int, uint32_t>;

constexpr const char* kExports[] = {
    "GetCapabilities",
    "GetConfiguration",
    "SetConfiguration",
    "EnumDisplays",
    "GetConnectedDisplays",
    "EnableExtendedDesktop",
    "ATIDL_GetDisplaySwitchingCapability",
    "ATIDL_GetActiveDisplays",
    "ATIDL_SetActiveDisplays",
    "ATIDL_SetConfigurationEx",
    "ATIDL_GetAdapterID",
    "ATIDL_GetDisplayVector",
    "ATIDL_GetAdapterConfig",
    "ATIDL_SetAdapterConfig",
    "ATIDL_DisplayGetEdidData",
    "ATIDL_DisplayGetDeviceConfig",
    "ATIDL_GetDisplaySettings",
};

// What a call of (number, ..., word out) gave; 0xEEEE where it wrote nothing.
template <typename... Arguments>
Number Ask(const AmdLibrary& library, const char* name, Arguments... arguments) {
  uint32_t value = 0xEEEE;
  const int result = library.Call(name, arguments..., &value);
  return {result, value};
}

TEST(AmdLegacy, LibraryIsThereWithAWorkingAdapterWhoseDriverBroughtIt) {
  Machine machine("win7 intel, amd: internal 1366x768 active");
  const auto loads = [] {
    const HMODULE module = FAKE(LoadLibraryA)(kLibrary);
    if (module != nullptr) FAKE(FreeLibrary)(module);
    return module != nullptr;
  };
  Adapter& amd = machine.model().adapters[1];
  EXPECT_TRUE(loads());
  amd.amd.adl_library = false;
  EXPECT_TRUE(loads());
  amd.amd.legacy_library = false;
  EXPECT_FALSE(loads());
  amd.amd.legacy_library = true;
  amd.vendor_library = false;
  EXPECT_FALSE(loads());
  amd.vendor_library = true;
  amd.problem = 10;
  EXPECT_FALSE(loads());
}

TEST(AmdLegacy, EveryExportIsThereUntilATestTakesItAway) {
  for (const char* taken : kExports) {
    Machine machine(kTwo);
    RemoveAmdEntry(machine, taken);
    const AmdLibrary library(kLibrary);
    for (const char* name : kExports) EXPECT_EQ(library.Has(name), name != taken) << name;
  }
}

TEST(AmdLegacy, ExportThatNobodyNeedsFailsTheTestByName) {
  const Machine machine(kTwo);
  const AmdLibrary library(kLibrary);
  const CaughtFailures failures;
  for (const char* name : {"GetConfiguration", "SetConfiguration", "ATIDL_SetActiveDisplays",
                           "ATIDL_GetDisplaySettings"}) {
    EXPECT_NE(library.Call(name, 0, 0, 0), 0) << name;
    ASSERT_FALSE(failures.list().empty());
    EXPECT_EQ(failures.list().back(), std::string(name) + " was called, which is not simulated");
  }
  EXPECT_EQ(failures.list().size(), 4u);
}

// --- Adapters: Windows' display devices.

TEST(AmdLegacy, AdapterIsAWindowsDeviceOfAWorkingAmdAdapter) {
  Machine machine("win7 sis*1, amd: internal@2 1366x768 active");
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(Ask(library, "ATIDL_GetAdapterID", 0), (Number{0, 0}));
  EXPECT_EQ(Ask(library, "ATIDL_GetAdapterID", 1), (Number{0, 0x1002A001}));
  EXPECT_EQ(Ask(library, "ATIDL_GetAdapterID", 2), (Number{0, 0x1002A002}));
  EXPECT_EQ(Ask(library, "ATIDL_GetAdapterID", 3), (Number{0, 0}));
  EXPECT_EQ(Ask(library, "GetConnectedDisplays", 0), (Number{kLegacyUnknownAdapter, 0xEEEE}));
  EXPECT_EQ(Ask(library, "GetConnectedDisplays", 1), (Number{0, 1}));
  EXPECT_EQ(Ask(library, "GetConnectedDisplays", 2), (Number{0, 1}));
  EXPECT_EQ(Ask(library, "GetConnectedDisplays", 3), (Number{kLegacyUnknownAdapter, 0xEEEE}));
  machine.model().adapters[0].disabled = true;  // Windows does not count its device any more
  EXPECT_EQ(Ask(library, "ATIDL_GetAdapterID", 0), (Number{0, 0x1002A001}));
  SetAmdAnswer(machine, "ATIDL_GetAdapterID", 0xFFFFFFFF);
  EXPECT_EQ(Ask(library, "ATIDL_GetAdapterID", 0), (Number{0, 0xFFFFFFFF}));
}

TEST(AmdLegacy, NumbersOfTheAdapter) {
  Machine machine("win7 amd*1: internal 1366x768 active, crt, hdmi");
  const AmdLibrary library(kLibrary);
  uint32_t values[2] = {};
  for (const uint32_t heads : {1u, 2u, 3u, 6u}) {
    machine.model().adapters[0].heads = heads;
    EXPECT_EQ(library.Call("GetCapabilities", 0, &values[0], &values[1]), 0);
    EXPECT_EQ(values[0], heads);
    EXPECT_EQ(values[1], 7u);
  }
  SetAmdAnswer(machine, "GetCapabilities first", 3);
  SetAmdAnswer(machine, "GetCapabilities second", 9);
  EXPECT_EQ(library.Call("GetCapabilities", 0, &values[0], &values[1]), 0);
  EXPECT_EQ(values[0], 3u);
  EXPECT_EQ(values[1], 9u);
  EXPECT_EQ(Ask(library, "ATIDL_GetDisplaySwitchingCapability", 0), (Number{0, 0}));
  machine.model().adapters[0].amd.switching_capability = 1;
  EXPECT_EQ(Ask(library, "ATIDL_GetDisplaySwitchingCapability", 0), (Number{0, 1}));
}

// --- Displays.

// "index: type kind", one display a line.
std::string Displays(const AmdLibrary& library) {
  std::string text;
  for (int index = 0;; ++index) {
    uint32_t type = 0;
    if (library.Call("EnumDisplays", 0, index, &type) == 0) return text;
    AmdBytes config = AmdBytes(20).Set(0, 20);
    EXPECT_EQ(library.Call("ATIDL_DisplayGetDeviceConfig", 0, index, config.data()), 0);
    text += std::to_string(index) + ": " + std::to_string(type) + " " +
            std::to_string(config.At(4)) + "\n";
  }
}

TEST(AmdLegacy, DisplaysByKindThePanelFirst) {
  Machine machine("win7 amd: crt 1280x1024, tv, internal 1366x768 active, dvi, hdmi, dp");
  {
    const AmdLibrary library(kLibrary);
    EXPECT_EQ(Displays(library), "0: 1 2\n1: 2 5\n2: 3 3\n3: 4 6\n4: 6 8\n5: 7 10\n");
    machine.model().connectors[0].amd.legacy_type = 5;
    machine.model().connectors[3].amd.legacy_kind = 7;
    EXPECT_EQ(Displays(library), "0: 1 2\n1: 5 5\n2: 3 3\n3: 4 7\n4: 6 8\n5: 7 10\n");
  }
}

TEST(AmdLegacy, VectorHasSevenDisplays) {
  Machine machine(
      "win7 amd: internal 1366x768 active, crt, tv, dvi, dvi2, hdmi, hdmi2, dp 1920x1080");
  const AmdLibrary library(kLibrary);
  uint32_t type = 0;
  EXPECT_EQ(library.Call("EnumDisplays", 0, 6, &type), 1);
  EXPECT_EQ(type, 6u);
  EXPECT_EQ(library.Call("EnumDisplays", 0, 7, &type), 0);
  EXPECT_EQ(Ask(library, "GetConnectedDisplays", 0), (Number{0, 1}));  // not the eighth
}

TEST(AmdLegacy, ConnectedDisplaysAreAVector) {
  Machine machine("win7 amd: crt 1280x1024, internal 1366x768 active, dvi, hdmi 1920x1080");
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(Ask(library, "GetConnectedDisplays", 0), (Number{0, 0xB}));
  machine.Unplug("crt");
  EXPECT_EQ(Ask(library, "GetConnectedDisplays", 0), (Number{0, 0x9}));
  SetAmdAnswer(machine, "GetConnectedDisplays", 0x7F);
  EXPECT_EQ(Ask(library, "GetConnectedDisplays", 0), (Number{0, 0x7F}));
}

TEST(AmdLegacy, VectorOfAKind) {
  Machine machine("win7 amd: crt, internal 1366x768 active, tv, dvi, hdmi, dp");
  const AmdLibrary library(kLibrary);
  const auto vector = [&library](int kind) {
    return library.Call("ATIDL_GetDisplayVector", 0, kind);
  };
  EXPECT_EQ(vector(1), 0x1);
  EXPECT_EQ(vector(2), 0x2);
  EXPECT_EQ(vector(4), 0x4);
  EXPECT_EQ(vector(8), 0x38);
  EXPECT_EQ(vector(0), 0);
  EXPECT_EQ(library.Call("ATIDL_GetDisplayVector", 5, 1), 0);
  machine.Fail("ATIDL_GetDisplayVector", 1);
  machine.Fail("ATIDL_GetDisplayVector", 2, 0x40);
  EXPECT_EQ(vector(1), 0);
  EXPECT_EQ(vector(1), 0x40);
}

TEST(AmdLegacy, DeviceConfigThatItRefuses) {
  Machine machine(kTwo);
  const AmdLibrary library(kLibrary);
  AmdBytes config(20, 0xEE);
  const auto get = [&](int adapter, int index, uint32_t size) {
    config.Set(0, size);
    return library.Call("ATIDL_DisplayGetDeviceConfig", adapter, index, config.data());
  };
  EXPECT_EQ(get(0, 1, 19), kLegacyBadArgument);
  EXPECT_EQ(get(0, 2, 20), kLegacyUnknownDisplay);
  EXPECT_EQ(get(2, 0, 20), kLegacyUnknownAdapter);
  EXPECT_EQ(config.At(4), 0xEEEEEEEEu);
  EXPECT_EQ(get(0, 1, 20), 0);
  EXPECT_EQ(config.At(4), 5u);
  EXPECT_EQ(config.At(8), 0xEEEEEEEEu);
}

TEST(AmdLegacy, EdidFillsTheRoomThatThereIs) {
  Machine machine("win7 amd: internal 1366x768 active, crt, hdmi 1920x1080");
  const std::vector<uint8_t> edid = machine.model().connectors[2].monitor->edid;
  const AmdLibrary library(kLibrary);
  AmdBytes record(288, 0xEE);
  const auto get = [&](int index, uint32_t room, uint32_t size = 288) {
    record = AmdBytes(288, 0xEE);
    record.Set(0, size).Set(8, room);
    return library.Call("ATIDL_DisplayGetEdidData", 0, index, record.data());
  };
  EXPECT_EQ(get(2, 256), 0);
  EXPECT_EQ(record.At(8), 128u);
  EXPECT_TRUE(std::equal(edid.begin(), edid.end(), record.bytes.begin() + 16));
  EXPECT_EQ(record.bytes[16 + 128], 0xEE);
  EXPECT_EQ(get(2, 100), 0);
  EXPECT_EQ(record.At(8), 100u);
  EXPECT_EQ(record.bytes[16 + 100], 0xEE);
  EXPECT_EQ(get(2, 0), 0);
  EXPECT_EQ(record.At(8), 0u);
  EXPECT_EQ(get(2, 257), kLegacyBadArgument);
  EXPECT_EQ(get(2, 256, 256), kLegacyBadArgument);
  EXPECT_EQ(get(1, 256), kLegacyNotConnected);
  EXPECT_EQ(get(3, 256), kLegacyUnknownDisplay);
  machine.model().connectors[2].monitor->edid.clear();
  EXPECT_EQ(get(2, 256), kLegacyNotConnected);
}

// --- Null outputs and faults.

TEST(AmdLegacy, NullOutputsAreRefused) {
  Machine machine(kTwo);
  const AmdLibrary library(kLibrary);
  void* const n = nullptr;
  uint32_t word = 0;
  EXPECT_EQ(library.Call("GetCapabilities", 0, n, &word), kLegacyBadArgument);
  EXPECT_EQ(library.Call("GetCapabilities", 0, &word, n), kLegacyBadArgument);
  EXPECT_EQ(library.Call("EnumDisplays", 0, 0, n), 0);
  for (const char* name :
       {"GetConnectedDisplays", "ATIDL_GetDisplaySwitchingCapability", "ATIDL_GetActiveDisplays",
        "ATIDL_SetConfigurationEx", "ATIDL_GetAdapterID"}) {
    EXPECT_EQ(library.Call(name, 0, n), kLegacyBadArgument) << name;
  }
  for (const char* name : {"ATIDL_GetAdapterConfig", "ATIDL_SetAdapterConfig"}) {
    EXPECT_EQ(library.Call(name, n), kLegacyBadArgument) << name;
  }
  EXPECT_EQ(library.Call("ATIDL_DisplayGetEdidData", 0, 0, n), kLegacyBadArgument);
  EXPECT_EQ(library.Call("ATIDL_DisplayGetDeviceConfig", 0, 0, n), kLegacyBadArgument);
}

TEST(AmdLegacy, EveryExportFailsByName) {
  Machine machine(kTwo);
  const AmdLibrary library(kLibrary);
  AmdBytes out(256);
  for (const char* name :
       {"GetCapabilities", "GetConnectedDisplays", "EnableExtendedDesktop",
        "ATIDL_GetDisplaySwitchingCapability", "ATIDL_GetActiveDisplays",
        "ATIDL_SetConfigurationEx", "ATIDL_GetAdapterID", "ATIDL_GetDisplayVector",
        "ATIDL_DisplayGetEdidData", "ATIDL_DisplayGetDeviceConfig"}) {
    machine.Fail(name, 1, 42);
    EXPECT_EQ(library.Call(name, 0, out.data(), out.data()), 42) << name;
    EXPECT_EQ(out.bytes, AmdBytes(256).bytes) << name;
  }
  for (const char* name : {"ATIDL_GetAdapterConfig", "ATIDL_SetAdapterConfig"}) {
    machine.Fail(name, 1);
    EXPECT_EQ(library.Call(name, out.data()), kLegacyFault) << name;
  }
  machine.Fail("EnumDisplays", 1);
  EXPECT_EQ(library.Call("EnumDisplays", 0, 0, out.data()), 0);
  EXPECT_EQ(out.bytes, AmdBytes(256).bytes);
}

TEST(AmdLegacy, ReadsStandInTheJournalOnRequest) {
  Machine machine(kTwo);
  const AmdLibrary library(kLibrary);
  Ask(library, "GetConnectedDisplays", 0);
  EXPECT_EQ(machine.TakeJournal(), "");
  machine.JournalReads(true);
  Ask(library, "EnumDisplays", 0, 1);
  EXPECT_EQ(machine.TakeJournal(),
            "GetProcAddress(EnumDisplays)=0\nEnumDisplays(adapter=0 display=1)=1\n");
}

}  // namespace
}  // namespace sim
