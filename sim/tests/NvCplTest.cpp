// The simulated control-panel library, called as a client without any declaration of it would.
#include <gtest/gtest.h>

#include <cstring>

#include "sim/faces/NvCplDriver.h"
#include "sim/tests/FaceCalls.h"
#include "sim/tests/Fakes.h"

namespace sim {
namespace {

constexpr char kPair[] = "xp nvidia: internal 1280x800 active, crt 1280x1024";

class Client {
 public:
  Client() : module_(FAKE(LoadLibraryA)("NvCpl.dll")) {}
  ~Client() {
    if (module_ != nullptr) FAKE(FreeLibrary)(module_);
  }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  bool loaded() const { return module_ != nullptr; }
  bool Has(const char* name) const { return FAKE(GetProcAddress)(module_, name) != nullptr; }
  template <typename Result, typename... Arguments>
  Result Ask(const char* name, Arguments... arguments) const {
    using Function = Result(WINAPI*)(Arguments...);
    return reinterpret_cast<Function>(reinterpret_cast<void*>(FAKE(GetProcAddress)(module_, name)))(
        arguments...);
  }

  int32_t State(UINT monitor = 0) const {
    return Ask<int32_t>("NvGetWindowsDisplayState", monitor);
  }
  /// The text of connected displays in a buffer of `size`, marked behind it.
  std::string Text(DWORD size = 64, BOOL only_active = FALSE) const {
    char text[65];
    std::memset(text, '?', sizeof text);
    if (!Ask<BOOL>("NvCplGetRealConnectedDevicesString", &text[0], size, only_active)) return "no";
    EXPECT_EQ(text[size], '?') << "written beyond the buffer";
    return text;
  }

 private:
  HMODULE module_;
};

struct Info {
  uint8_t bytes[2048] = {};
  uint32_t At(size_t offset) const {
    uint32_t value = 0;
    std::memcpy(&value, bytes + offset, 4);
    return value;
  }
  Info& Set(size_t offset, uint32_t value) {
    std::memcpy(bytes + offset, &value, 4);
    return *this;
  }
  std::string Text(size_t offset) const { return reinterpret_cast<const char*>(bytes + offset); }
};

BOOL AskInfo(const Client& client, const char* moniker, Info* info) {
  return client.Ask<BOOL>("NvGetDisplayInfo", moniker, static_cast<void*>(info->bytes));
}

// --- The library.

TEST(NvCpl, ComesWithTheDriver) {
  const Machine nvidia(kPair);
  EXPECT_TRUE(Client().loaded());
  const Machine other("xp intel: internal 1280x800 active");
  EXPECT_FALSE(Client().loaded());
  Machine bare(kPair);
  bare.model().adapters[0].vendor_library = false;
  EXPECT_FALSE(Client().loaded());
  Machine disabled("xp intel, nvidia: internal 1280x800 active");
  disabled.model().adapters[1].disabled = true;
  EXPECT_FALSE(Client().loaded());
}

TEST(NvCpl, ModuleStandsInTheLedger) {
  const Machine machine(kPair);
  {
    const Client client;
    EXPECT_NE(machine.Outstanding(), "");
  }
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(NvCpl, EntriesCanBeTakenAway) {
  Machine machine(kPair);
  const Client client;
  EXPECT_TRUE(client.Has("dtcfgex"));
  RemoveNvCplEntry(machine, "dtcfgex");
  EXPECT_FALSE(client.Has("dtcfgex"));
  EXPECT_TRUE(client.Has("dtcfg"));
  EXPECT_THROW(RemoveNvCplEntry(machine, "dtcfgex"), std::runtime_error);
}

TEST(NvCpl, NeverCalledEntriesFailTheTest) {
  const Machine machine(kPair);
  const Client client;
  const CaughtFailures caught;
  char text[16];
  client.Ask<BOOL>("NvCplGetConnectedDevicesString", &text[0], DWORD{16}, BOOL{0});
  client.Ask<BOOL>("NvCplGetFlatPanelNativeRes", "#DA", nullptr, nullptr);
  client.Ask<BOOL>("NvCplGetActiveDevicesString", &text[0], DWORD{16});
  client.Ask<DWORD>("dtcfgex", &text[0]);
  client.Ask<int32_t>("NvGetPhysicalConnectorInfo", 0u, nullptr);
  client.Ask<int32_t>("NvEnumPhysicalConnectorDetails", 0u, DWORD{0}, nullptr);
  EXPECT_EQ(CaughtFailures::list().size(), 6u);
}

// --- The state.

TEST(NvCplState, FollowsTheTopology) {
  const Machine single(kPair);
  EXPECT_EQ(Client().State(), 4);
  const Machine extended("xp nvidia: internal 1280x800 active, crt 1280x1024 active");
  EXPECT_EQ(Client().State(), 5);
  Machine clone("xp nvidia: clone internal 1280x800 active, crt 1280x1024 active");
  EXPECT_EQ(Client().State(), 6);
  clone.model().sources[0].mode = {2560, 800, 32, 60};
  EXPECT_EQ(Client().State(), 7);
  clone.model().sources[0].mode = {1280, 2048, 32, 60};
  EXPECT_EQ(Client().State(), 8);
}

TEST(NvCplState, OfOneWindowsMonitor) {
  const Machine machine("xp nvidia, intel: internal 1280x800 active, crt@2 800x600 active");
  const Client client;
  EXPECT_EQ(client.State(1), 4);
  EXPECT_EQ(client.State(2), 2);  // unattached
  EXPECT_EQ(client.State(3), 3);  // another vendor's
  EXPECT_EQ(client.State(4), 2);  // another vendor's, unattached
  EXPECT_EQ(client.State(9), 1);  // not found
  EXPECT_EQ(client.State(0), 4);
}

TEST(NvCplState, OfOneWindowsMonitorIsThatOfItsAdapter) {
  const Machine machine(
      "xp nvidia, nvidia: internal 1280x800 active, crt@2 800x600 active, dvi@2 800x600 active");
  const Client client;
  EXPECT_EQ(client.State(1), 4);
  EXPECT_EQ(client.State(3), 5);
  EXPECT_EQ(client.State(4), 5);
  EXPECT_EQ(client.State(0), 5);
}

TEST(NvCplState, NothingOfNvidiasIsUnattached) {
  const Machine machine("xp intel, nvidia: internal 1280x800 active, crt@2 800x600");
  EXPECT_EQ(Client().State(), 2);
}

TEST(NvCplState, FaultsCodeIsTheState) {
  Machine machine(kPair);
  const Client client;
  machine.Fail("NvGetWindowsDisplayState", 1);
  EXPECT_EQ(client.State(), 0);
  machine.Fail("NvGetWindowsDisplayState", 1, 0xFFFFFFFF);
  EXPECT_EQ(client.State(), -1);
}

// --- Displays.

TEST(NvCplDisplays, AreNamedByKindAndPlace) {
  const Machine machine(
      "xp nvidia: internal 1280x800 active, crt 800x600, dvi 800x600, tv 800x600, hdmi 800x600, "
      "crt2 800x600, dp 800x600, other 800x600");
  EXPECT_EQ(Client().Text(), "#DA,#AA,#DB,#TA,#DC,#AB,#DD,#DE");
}

TEST(NvCplDisplays, NamesStayWhenOneGoes) {
  const Machine machine("xp nvidia: internal 1280x800 active, dvi, hdmi 800x600");
  EXPECT_EQ(Client().Text(), "#DA,#DC");
}

TEST(NvCplDisplays, NameCanBeGiven) {
  Machine machine(kPair);
  machine.model().connectors[1].nvidia_moniker = "#XY";
  EXPECT_EQ(Client().Text(), "#DA,#XY");
}

TEST(NvCplDisplays, OtherAdaptersHaveNone) {
  const Machine machine("xp intel, nvidia: internal 1280x800 active, crt@2 800x600");
  EXPECT_EQ(Client().Text(), "#AA");
}

TEST(NvCplDisplays, OnlyActiveOnesOnRequest) {
  const Machine machine(kPair);
  EXPECT_EQ(Client().Text(64, TRUE), "#DA");
}

TEST(NvCplDisplays, TextIsCutToTheBuffer) {
  const Machine machine(
      "xp nvidia: internal 1280x800 active, crt 800x600, dvi 800x600, tv 800x600, hdmi 800x600");
  const Client client;
  EXPECT_EQ(client.Text(16), "#DA,#AA,#DB,#TA");
  EXPECT_EQ(client.Text(6), "#DA,#");
  EXPECT_EQ(client.Text(1), "");
  EXPECT_EQ(client.Text(0), "no");
  EXPECT_FALSE(client.Ask<BOOL>("NvCplGetRealConnectedDevicesString", nullptr, DWORD{16}, BOOL{0}));
}

TEST(NvCplDisplays, AreThoseDetectedLast) {
  Machine machine(kPair);
  const Client client;
  EXPECT_EQ(client.Ask<BOOL>("NvCplRefreshConnectedDevices", DWORD{2}), TRUE);
  machine.Unplug("crt");
  EXPECT_EQ(client.Text(), "#DA,#AA");
  machine.Fail("NvCplRefreshConnectedDevices", 1);
  EXPECT_EQ(client.Ask<BOOL>("NvCplRefreshConnectedDevices", DWORD{2}), FALSE);
  EXPECT_EQ(client.Text(), "#DA,#AA");
  EXPECT_EQ(client.Ask<BOOL>("NvCplRefreshConnectedDevices", DWORD{1}), TRUE);
  EXPECT_EQ(client.Text(), "#DA");
}

TEST(NvCplDisplays, DetectionRefusesUnknownFlags) {
  const Machine machine(kPair);
  const Client client;
  EXPECT_FALSE(client.Ask<BOOL>("NvCplRefreshConnectedDevices", DWORD{0}));
  EXPECT_FALSE(client.Ask<BOOL>("NvCplRefreshConnectedDevices", DWORD{4}));
}

TEST(NvCplDisplays, DetectionsAreOfTheirMachine) {
  {
    const Machine first(kPair);
    EXPECT_TRUE(Client().Ask<BOOL>("NvCplRefreshConnectedDevices", DWORD{2}));
  }
  const Machine second("xp nvidia: internal 1280x800 active, crt");
  EXPECT_EQ(Client().Text(), "#DA");
}

// --- What a display is.

TEST(NvCplInfo, TypeOfEveryKind) {
  const Machine machine(
      "xp nvidia: internal 1280x800 active, crt 800x600, dvi 800x600, tv 800x600, hdmi 800x600, "
      "dp 800x600, edp 800x600");
  const Client client;
  const struct {
    const char* moniker;
    uint32_t type;
  } rows[] = {{"#DA", 0x2001}, {"#AA", 0x1000}, {"#DB", 0x2000}, {"#TA", 0x3000},
              {"#DC", 0x2002}, {"#DD", 0x2000}, {"#DE", 0x2001}};
  for (const auto& row : rows) {
    Info info;
    info.Set(0, 2048).Set(4, 0x1000);
    EXPECT_TRUE(AskInfo(client, row.moniker, &info)) << row.moniker;
    EXPECT_EQ(info.At(1644), row.type) << row.moniker;
    EXPECT_EQ(info.At(8), 0x1000u);
    EXPECT_EQ(info.At(16), 0u);
  }
}

TEST(NvCplInfo, TypeCanBeGiven) {
  Machine machine(kPair);
  machine.model().connectors[1].nvidia_display_type = 0x3001;
  Info info;
  EXPECT_TRUE(AskInfo(Client(), "#AA", &info.Set(0, 2048).Set(4, 0x1000)));
  EXPECT_EQ(info.At(1644), 0x3001u);
}

TEST(NvCplInfo, TellsWhatIsAsked) {
  const Machine machine(kPair);
  const Client client;
  Info active;
  EXPECT_TRUE(AskInfo(client, "#DA", &active.Set(0, 2048).Set(12, 12)));
  EXPECT_EQ(active.At(1644), 0u);
  EXPECT_EQ(active.Text(2016), "#DA");
  EXPECT_EQ(active.Text(2032), "#DA");
  EXPECT_EQ(active.At(16), 12u);
  Info dark;
  EXPECT_TRUE(AskInfo(client, "#AA", &dark.Set(0, 2048).Set(12, 12)));
  EXPECT_EQ(dark.Text(2016), "#AA");
  EXPECT_EQ(dark.Text(2032), "");
  EXPECT_EQ(dark.At(16), 4u);
}

TEST(NvCplInfo, RefusesWhatItDoesNotKnow) {
  Machine machine("xp nvidia: internal 1280x800 active, crt");
  const Client client;
  Info info;
  info.Set(0, 2048).Set(4, 0x1000);
  EXPECT_FALSE(AskInfo(client, "#DB", &info));
  EXPECT_FALSE(AskInfo(client, "DA", &info));
  EXPECT_FALSE(AskInfo(client, "#AA", &info));  // nothing hangs there
  EXPECT_FALSE(AskInfo(client, nullptr, &info));
  EXPECT_FALSE(client.Ask<BOOL>("NvGetDisplayInfo", "#DA", nullptr));
  machine.Fail("NvGetDisplayInfo", 1);
  EXPECT_FALSE(AskInfo(client, "#DA", &info));
  EXPECT_EQ(info.At(1644), 0u);
  EXPECT_FALSE(AskInfo(client, "#DA", &info.Set(0, 2316)));
}

}  // namespace
}  // namespace sim
