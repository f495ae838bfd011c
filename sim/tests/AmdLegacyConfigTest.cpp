// The simulated legacy library of AMD's driver: arrangements, read and set.
#include <gtest/gtest.h>

#include "sim/faces/AmdDriver.h"
#include "sim/tests/AmdCalls.h"

namespace sim {
namespace {

constexpr char kTwo[] = "win7 amd: internal 1366x768 active, crt 1280x1024";
constexpr char kThree[] = "win7 amd: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080";
constexpr char kLibrary[] = "AtiPdl64.dll";
constexpr uint32_t kClone = 2;
constexpr uint32_t kSingle = 3;
constexpr uint32_t kExtended = 5;

// AtiConfigRecord.
AmdBytes Arrangement(uint32_t arrangement, const std::vector<uint32_t>& vectors) {
  AmdBytes record(64);
  record.Set(0, 64).Set(4, arrangement).Set(36, static_cast<uint32_t>(vectors.size()));
  for (size_t i = 0; i < vectors.size(); ++i) record.Set(8 + 4 * i, vectors[i]);
  return record;
}

int Set(const AmdLibrary& library, AmdBytes record, int adapter = 0) {
  return library.Call("ATIDL_SetConfigurationEx", adapter, record.data());
}

// "arrangement: vector,vector".
std::string Active(const AmdLibrary& library, uint32_t size = 64) {
  AmdBytes record = AmdBytes(64).Set(0, size);
  const int result = library.Call("ATIDL_GetActiveDisplays", 0, record.data());
  if (result != 0) return "refused " + std::to_string(result);
  EXPECT_EQ(record.At(0), 64u);
  std::string text = std::to_string(record.At(4)) + ":";
  for (uint32_t i = 0; i < record.At(36); ++i) text += " " + std::to_string(record.At(8 + 4 * i));
  return text;
}

TEST(AmdLegacyConfig, ActiveDisplaysByArrangement) {
  const struct {
    const char* machine;
    const char* told;
  } cases[] = {
      {kTwo, "3: 1"},
      {"win7 amd: crt 1280x1024 active, internal 1366x768", "3: 2"},
      {"win7 amd: clone internal 1366x768 active, crt 1280x1024 active", "2: 1 2"},
      {"win7 amd: crt 1280x1024 active, internal 1366x768 active", "5: 2 1"},
      {"win7 amd: clone internal 1366x768 active, crt 1280x1024 active, hdmi 1920x1080 active",
       "2: 1 2 4"},
      {"win7 intel, amd: internal 1366x768 active, crt@2", "refused 2"},
  };
  for (const auto& row : cases) {
    const Machine machine(row.machine);
    const AmdLibrary library(kLibrary);
    EXPECT_EQ(Active(library), row.told) << row.machine;
  }
}

TEST(AmdLegacyConfig, SizeOfTheReadMayBeLeftOutAndNothingElse) {
  const Machine machine(kTwo);
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(Active(library, 0), "3: 1");
  EXPECT_EQ(Active(library, 60), "refused 1");
}

TEST(AmdLegacyConfig, SingleCloneAndExtended) {
  Machine machine(kThree);
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(Set(library, Arrangement(kSingle, {2})), 0);
  EXPECT_EQ(machine.Topology(), "single crt");
  EXPECT_EQ(Now(kFirst), "1280x1024x32@60 at 0,0");
  EXPECT_EQ(Set(library, Arrangement(kClone, {1, 4})), 0);
  EXPECT_EQ(machine.Topology(), "clone internal+hdmi");
  EXPECT_EQ(Set(library, Arrangement(kExtended, {4, 1})), 0);
  EXPECT_EQ(machine.Topology(), "extend internal+hdmi");
  EXPECT_EQ(Now(kFirst), "1920x1080x32@60 at 0,0");
  EXPECT_EQ(Now(kSecond), "1366x768x32@60 at 1920,0");
  EXPECT_EQ(Query(QDC_DATABASE_CURRENT).topology, DISPLAYCONFIG_TOPOLOGY_EXTEND);
  machine.TakeJournal();
  EXPECT_EQ(Set(library, Arrangement(kSingle, {1}), 1), 0);  // the second device of the adapter
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(machine.TakeJournal(),
            "ATIDL_SetConfigurationEx(adapter=1 size=64 arrangement=3 count=1 "
            "vectors=1,0,0,0,0,0,0 rest=0,0,0,0,0,0)=0\n");
}

TEST(AmdLegacyConfig, ArrangementComesBackAsItWasUsedLast) {
  Machine machine(kTwo);
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(Set(library, Arrangement(kExtended, {1, 2})), 0);
  EXPECT_EQ(Change(kSecond, Sized(1024, 768), CDS_UPDATEREGISTRY), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Set(library, Arrangement(kSingle, {1})), 0);
  EXPECT_EQ(Set(library, Arrangement(kExtended, {1, 2})), 0);
  EXPECT_EQ(Now(kSecond), "1024x768x32@60 at 1366,0");
}

TEST(AmdLegacyConfig, RecordsThatItRefusesChangeNothing) {
  const struct {
    const char* what;
    AmdBytes record;
    int result;
  } refusals[] = {
      {"size", Arrangement(kSingle, {2}).Set(0, 60), kLegacyBadArgument},
      {"arrangement", Arrangement(4, {2}), kLegacyBadArgument},
      {"two of a single", Arrangement(kSingle, {1, 2}), kLegacyBadArgument},
      {"one of a clone", Arrangement(kClone, {1}), kLegacyBadArgument},
      {"one of an extended desktop", Arrangement(kExtended, {1}), kLegacyBadArgument},
      {"no vector", Arrangement(kSingle, {0}), kLegacyBadArgument},
      {"a vector of two", Arrangement(kSingle, {3}), kLegacyBadArgument},
      {"one display twice", Arrangement(kClone, {2, 2}), kLegacyBadArgument},
      {"eight vectors", Arrangement(kClone, {1, 2}).Set(36, 8), kLegacyBadArgument},
      {"the rest", Arrangement(kSingle, {2}).Set(60, 1), kLegacyBadArgument},
      {"display", Arrangement(kSingle, {0x40}), kLegacyUnknownDisplay},
      {"nothing plugged in", Arrangement(kSingle, {8}), kLegacyNotConnected},
      {"three displays of two", Arrangement(kClone, {1, 2, 4}), kLegacyTooManyDisplays},
      {"three desktops of two", Arrangement(kExtended, {1, 2, 4}), kLegacyTooManyDisplays},
  };
  Machine machine(std::string(kThree) + ", dp");
  const AmdLibrary library(kLibrary);
  for (const auto& row : refusals) {
    EXPECT_EQ(Set(library, row.record), row.result) << row.what;
    EXPECT_EQ(machine.Topology(), "single internal") << row.what;
  }
  EXPECT_EQ(Set(library, Arrangement(kSingle, {2}), 2), kLegacyUnknownAdapter);
}

// --- AtiAdapterConfig.

AmdBytes EmptyConfig(uint32_t first = 0, uint32_t second = 1) {
  AmdBytes record(156);
  record.Set(0, 156).Set(8, 72).Set(12, first);
  return record.Set(80, 72).Set(84, second);
}

AmdBytes Config(const AmdLibrary& library) {
  AmdBytes record = EmptyConfig();
  EXPECT_EQ(library.Call("ATIDL_GetAdapterConfig", record.data()), 0);
  return record;
}

// The second device shows a display of this type to the right of the first.
AmdBytes Extended(AmdBytes record, uint32_t type, uint32_t width, uint32_t height) {
  record.Set(4, 1).Set(16, 1);
  record.Set(88, 1).Set(92, type).Set(124, height).Set(128, width).Set(132, 32).Set(136, 60);
  return record.Set(144, record.At(56));
}

int SetConfig(const AmdLibrary& library, AmdBytes record) {
  return library.Call("ATIDL_SetAdapterConfig", record.data());
}

TEST(AmdLegacyConfig, AdapterConfigTellsBothDevices) {
  const Machine machine("win7 amd: crt 1280x1024 active, internal 1366x768 active");
  const AmdLibrary library(kLibrary);
  const AmdBytes record = Config(library);
  EXPECT_EQ(record.At(16), 1u);  // slots of the first
  EXPECT_EQ(record.At(20), 2u);  // the CRT's vector
  EXPECT_EQ(record.At(52), 1024u);
  EXPECT_EQ(record.At(56), 1280u);
  EXPECT_EQ(record.At(60), 32u);
  EXPECT_EQ(record.At(64), 60u);
  EXPECT_EQ(record.At(72), 0u);
  EXPECT_EQ(record.At(88), 1u);
  EXPECT_EQ(record.At(92), 1u);  // the panel's
  EXPECT_EQ(record.At(128), 1366u);
  EXPECT_EQ(record.At(144), 1280u);
  EXPECT_EQ(record.At(152), 1u);
}

// The library fills what an entry names, and does not guess that another device was meant.
TEST(AmdLegacyConfig, EntriesThatNameOneDeviceAreFilledAlike) {
  const Machine machine("win7 amd: crt 1280x1024 active, internal 1366x768 active");
  const AmdLibrary library(kLibrary);
  for (const uint32_t device : {0u, 1u}) {
    AmdBytes record = EmptyConfig(device, device);
    EXPECT_EQ(library.Call("ATIDL_GetAdapterConfig", record.data()), 0);
    for (const size_t entry : {8u, 80u}) {
      EXPECT_EQ(record.At(entry + 4), device);
      EXPECT_EQ(record.At(entry + 12), device == 0 ? 2u : 1u);  // the vector
      EXPECT_EQ(record.At(entry + 48), device == 0 ? 1280u : 1366u);
    }
  }
}

TEST(AmdLegacyConfig, CloneHasTwoSlotsAndADarkDeviceNone) {
  const Machine machine("win7 amd: clone internal 1366x768 active, crt 1280x1024 active");
  const AmdLibrary library(kLibrary);
  const AmdBytes record = Config(library);
  EXPECT_EQ(record.At(16), 2u);
  EXPECT_EQ(record.At(20), 1u);
  EXPECT_EQ(record.At(36), 2u);
  EXPECT_EQ(record.At(88), 0u);
  EXPECT_EQ(record.At(128), 0u);
}

TEST(AmdLegacyConfig, SetTakesADisplayOfTheTypeThatTheSecondEntryNames) {
  Machine machine(kThree);
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(SetConfig(library, Extended(Config(library), 6, 1024, 768)), 0);
  EXPECT_EQ(machine.Topology(), "extend internal+hdmi");
  EXPECT_EQ(Now(kSecond), "1024x768x32@60 at 1366,0");
  EXPECT_EQ(machine.TakeJournal(),
            "ATIDL_SetAdapterConfig(size=156 set=1 "
            "[size=72 adapter=0 slots=1 1,0,0,51070000,0,0,0,51070001 1366x768x32@60 at 0,0 "
            "own=e2700000] "
            "[size=72 adapter=1 slots=1 6,0,0,51070000,0,0,0,51070001 1024x768x32@60 at 1366,0 "
            "own=e2700001] last=1)=0\n");
}

TEST(AmdLegacyConfig, TypesTwoAndFiveAreOne) {
  Machine machine(kThree);
  machine.model().connectors[1].amd.legacy_type = 5;
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(SetConfig(library, Extended(Config(library), 2, 800, 600)), 0);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
}

TEST(AmdLegacyConfig, OfACloneTheFirstEntryMayKeepOneDisplay) {
  Machine machine("win7 amd: clone internal 1366x768 active, crt 1280x1024 active");
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(SetConfig(library, Extended(Config(library), 2, 1024, 768)), 0);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
}

TEST(AmdLegacyConfig, AdapterConfigThatItRefusesChangesNothing) {
  Machine machine(std::string(kThree) + ", dvi");
  const AmdLibrary library(kLibrary);
  const AmdBytes sound = Extended(Config(library), 2, 1024, 768);
  const struct {
    const char* what;
    AmdBytes record;
    int result;
  } refusals[] = {
      {"size", AmdBytes(sound).Set(0, 155), kLegacyBadArgument},
      {"set word", AmdBytes(sound).Set(4, 0), kLegacyBadArgument},
      {"size of an entry", AmdBytes(sound).Set(80, 0), kLegacyBadArgument},
      {"first adapter", AmdBytes(sound).Set(12, 7), kLegacyUnknownAdapter},
      {"second adapter", AmdBytes(sound).Set(84, 2), kLegacyUnknownAdapter},
      {"one adapter twice", AmdBytes(sound).Set(84, 0).Set(140, 0xE2700000),
       kLegacyTooManyDisplays},
      {"word of the library's own", AmdBytes(sound).Set(140, 0), kLegacyBadArgument},
      {"word of a slot's own", AmdBytes(sound).Set(32, 0), kLegacyBadArgument},
      {"no slot", AmdBytes(sound).Set(88, 0), kLegacyBadArgument},
      {"three slots", AmdBytes(sound).Set(16, 3), kLegacyBadArgument},
      {"type", AmdBytes(sound).Set(92, 8), kLegacyUnknownDisplay},
      {"type of nothing plugged in", AmdBytes(sound).Set(92, 4), kLegacyUnknownDisplay},
      {"size that it does not list", AmdBytes(sound).Set(128, 1000), kLegacyNoSuchMode},
      {"size of the first", AmdBytes(sound).Set(56, 1000), kLegacyNoSuchMode},
  };
  for (const auto& row : refusals) {
    EXPECT_EQ(SetConfig(library, row.record), row.result) << row.what;
    EXPECT_EQ(machine.Topology(), "single internal") << row.what;
  }
  EXPECT_EQ(SetConfig(library, sound), 0);
  AmdBytes read = EmptyConfig(0, 5);
  EXPECT_EQ(library.Call("ATIDL_GetAdapterConfig", read.data()), kLegacyUnknownAdapter);
  read = EmptyConfig().Set(0, 0);
  EXPECT_EQ(library.Call("ATIDL_GetAdapterConfig", read.data()), kLegacyBadArgument);
}

// --- EnableExtendedDesktop.

TEST(AmdLegacyConfig, ExtendedDesktopIsADeviceThatIsTurnedOnAndOff) {
  Machine machine(kThree);
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(library.Call("EnableExtendedDesktop", 1, 1), 0);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
  EXPECT_EQ(Now(kSecond), "1280x1024x32@60 at 1366,0");
  EXPECT_EQ(library.Call("EnableExtendedDesktop", 1, 1), 0);  // it is on already
  EXPECT_EQ(library.Call("EnableExtendedDesktop", 1, 0), 0);
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(machine.TakeJournal(),
            "EnableExtendedDesktop(adapter=1 enable=1)=0\n"
            "EnableExtendedDesktop(adapter=1 enable=1)=0\n"
            "EnableExtendedDesktop(adapter=1 enable=0)=0\n");
}

TEST(AmdLegacyConfig, ExtendedDesktopTakesADisplayOutOfAClone) {
  Machine machine("win7 amd: clone internal 1366x768 active, crt 1280x1024 active");
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(library.Call("EnableExtendedDesktop", 1, 1), 0);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
  EXPECT_EQ(Now(kFirst), "1280x720x32@60 at 0,0");  // as it was
}

TEST(AmdLegacyConfig, ExtendedDesktopThatItRefuses) {
  Machine machine("win7 amd: internal 1366x768 active, crt");
  const AmdLibrary library(kLibrary);
  EXPECT_EQ(library.Call("EnableExtendedDesktop", 1, 1), kLegacyNotConnected);
  EXPECT_EQ(library.Call("EnableExtendedDesktop", 2, 1), kLegacyUnknownAdapter);
  EXPECT_EQ(library.Call("EnableExtendedDesktop", 0, 0), kLegacyBadArgument);  // the last one
  machine.Fail("EnableExtendedDesktop", 1);
  EXPECT_EQ(library.Call("EnableExtendedDesktop", 1, 0), kLegacyFault);
  EXPECT_EQ(machine.Topology(), "single internal");
}

}  // namespace
}  // namespace sim
