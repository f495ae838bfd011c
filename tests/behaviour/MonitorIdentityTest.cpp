// Who the monitors are: the EDIDs in the registry, and the names in them.
#include "Common/MultiMonitor/MonitorIdentity.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "sim/faces/RegistryStore.h"
#include "tests/behaviour/CoreHost.h"
#include "tests/support/EdidBlock.h"
#include "tests/support/RaiseWatch.h"

namespace {

constexpr char kThree[] = "win7 intel: internal 1366x768 active, crt 1024x768, hdmi 1920x1080";

std::vector<uint8_t> Named(const std::string& text) {
  return EdidBlock().PanelTiming().Text(72, 0xFC, text).Sum().bytes();
}

struct IdentityHost : CoreHost {
  explicit IdentityHost(const std::string& text = kThree) : CoreHost(text) {}

  const IdentityBox& identity() { return *ostrel().white_box().identity; }

  void SetEdid(size_t connector, const std::vector<uint8_t>& edid) {
    machine.model().connectors.at(connector).monitor->edid = edid;
  }
  void SetEdids(const std::vector<std::vector<uint8_t>>& edids) {
    for (size_t i = 0; i < edids.size(); ++i) SetEdid(i, edids[i]);
  }

  /// What the registry says in place of the monitor's own EDID: "hex:00ff", or a text.
  void SetRegistryEdid(size_t connector, const std::string& value) {
    const std::string key = sim::MonitorKeyPath(machine.model().connectors.at(connector));
    machine.model().registry[key]["EDID"] = value;
  }

  std::vector<std::vector<uint8_t>> Listed() {
    std::vector<RegistryEDID> edids;
    identity().ListRegistryEDIDs(&edids);
    std::vector<std::vector<uint8_t>> listed;
    for (const RegistryEDID& edid : edids) {
      const auto* const bytes = static_cast<const uint8_t*>(edid.pv);
      listed.emplace_back(bytes, bytes + edid.cb);
      std::free(edid.pv);
    }
    return listed;
  }

  /// The names, each in brackets, in the set's order.
  std::string Names() {
    std::set<std::string> names;
    identity().ListMonitorNamesFromRegistry(&names);
    std::string text;
    for (const std::string& name : names) text += "[" + name + "]";
    return text;
  }

  size_t Keys() const { return CountOf(machine.Outstanding(), "registry key "); }
  size_t DeviceLists() const { return CountOf(machine.Outstanding(), "device list "); }

  void ForgiveKeys() { ostrel().ForgiveLeaks(); }
};

// --- The listing.

TEST(ListRegistryEDIDs, GivesEveryPresentMonitorInWindowsOrder) {
  IdentityHost host;
  const std::vector<uint8_t> first = Named("first\n");
  std::vector<uint8_t> second = Named("second\n");
  second.resize(256, 0x5A);  // with an extension block
  const std::vector<uint8_t> third = {1, 2, 3};
  host.SetEdids({first, second, third});
  EXPECT_EQ(host.Listed(), (std::vector<std::vector<uint8_t>>{first, second, third}));
  EXPECT_EQ(host.Keys(), 0u);
  EXPECT_EQ(host.DeviceLists(), 0u);
}

TEST(ListRegistryEDIDs, AsksForWhatIsPresentAndReadsEachValueTwice) {
  IdentityHost host("win7 intel: internal 1366x768 active, crt 1024x768");
  host.SetEdids({Named("first\n"), Named("second\n")});
  host.identity();
  host.machine.TakeJournal();
  host.machine.JournalReads(true);
  EXPECT_EQ(host.Listed().size(), 2u);
  const std::string journal = host.machine.TakeJournal();
  EXPECT_EQ(CountOf(journal, "SetupDiGetClassDevsA(flags=0x2)=0\n"), 1u) << journal;
  EXPECT_EQ(CountOf(journal, "RegQueryValueExA(EDID)=0\n"), 4u) << journal;
  EXPECT_EQ(host.machine.Calls("SetupDiOpenDevRegKey"), 2u);
}

TEST(ListRegistryEDIDs, AppendsToWhatIsThere) {
  IdentityHost host;
  std::vector<RegistryEDID> edids(1);
  host.identity().ListRegistryEDIDs(&edids);
  ASSERT_EQ(edids.size(), 4u);
  EXPECT_EQ(edids[0].pv, nullptr);
  for (const RegistryEDID& edid : edids) std::free(edid.pv);
}

TEST(ListRegistryEDIDs, AnUnpluggedMonitorIsNotAsked) {
  IdentityHost host;
  host.SetEdids({Named("first\n"), Named("second\n"), Named("third\n")});
  host.machine.model().connectors.at(1).monitor.reset();
  EXPECT_EQ(host.Names(), "[first][third]");
}

TEST(ListRegistryEDIDs, WithoutADeviceListThereIsNone) {
  IdentityHost host;
  host.identity();
  host.machine.Fail("SetupDiGetClassDevsA", 1);
  const uint32_t asked = host.machine.Calls("SetupDiEnumDeviceInfo");
  EXPECT_TRUE(host.Listed().empty());
  EXPECT_EQ(host.machine.Calls("SetupDiEnumDeviceInfo"), asked);
  EXPECT_EQ(host.machine.Calls("SetupDiOpenDevRegKey"), 0u);
}

TEST(ListRegistryEDIDs, AKeyThatDoesNotOpenCostsItsMonitorOnly) {
  IdentityHost host;
  host.SetEdids({Named("first\n"), Named("second\n"), Named("third\n")});
  host.identity();
  host.machine.Fail("SetupDiOpenDevRegKey", 2);
  const uint32_t read = host.machine.Calls("RegQueryValueExA");
  EXPECT_EQ(host.Names(), "[first][third]");
  EXPECT_EQ(host.machine.Calls("RegQueryValueExA"), read + 4);  // two for each of the others
  EXPECT_EQ(host.Keys(), 0u);
}

// The value's size is asked in the first call for a monitor, its bytes in the second.
TEST(ListRegistryEDIDs, AValueThatCannotBeReadCostsItsMonitorAndAKey) {
  for (const uint32_t call : {1u, 2u}) {
    IdentityHost host;
    host.SetEdids({Named("first\n"), Named("second\n"), Named("third\n")});
    host.identity();
    host.machine.Fail("RegQueryValueExA", call);
    EXPECT_EQ(host.Names(), "[second][third]") << call;
    EXPECT_EQ(host.Keys(), 1u) << call;
    EXPECT_EQ(host.DeviceLists(), 0u) << call;
    host.ForgiveKeys();
  }
}

TEST(ListRegistryEDIDs, AValueThatHasGrownMeanwhileIsNotRead) {
  IdentityHost host;
  host.SetEdids({Named("first\n"), Named("second\n"), Named("third\n")});
  host.identity();
  host.machine.Fail("RegQueryValueExA", 4, ERROR_MORE_DATA);
  EXPECT_EQ(host.Names(), "[first][third]");
  EXPECT_EQ(host.Keys(), 1u);
  host.ForgiveKeys();
}

TEST(ListRegistryEDIDs, AMonitorWithoutAnEdidCostsAKeyEachTime) {
  IdentityHost host;
  host.SetEdids({Named("first\n"), {}, {}});
  EXPECT_EQ(host.Names(), "[first]");
  EXPECT_EQ(host.Keys(), 2u);
  EXPECT_EQ(host.Names(), "[first]");
  EXPECT_EQ(host.Keys(), 4u);
  host.ForgiveKeys();
}

TEST(ListRegistryEDIDs, AnEmptyValueIsNone) {
  IdentityHost host;
  host.SetEdids({Named("first\n"), Named("second\n"), Named("third\n")});
  host.SetRegistryEdid(0, "hex:");
  EXPECT_EQ(host.Names(), "[second][third]");
  EXPECT_EQ(host.Keys(), 1u);
  host.ForgiveKeys();
}

TEST(ListRegistryEDIDs, TheTypeOfTheValueIsNotAsked) {
  IdentityHost host;
  host.SetEdids({Named("first\n"), Named("second\n"), Named("third\n")});
  host.SetRegistryEdid(0, "ab");
  const std::vector<std::vector<uint8_t>> listed = host.Listed();
  ASSERT_EQ(listed.size(), 3u);
  EXPECT_EQ(listed[0], (std::vector<uint8_t>{'a', 'b', 0}));
  EXPECT_EQ(host.Keys(), 0u);
}

TEST(ListRegistryEDIDs, GivesAHugeValueWhole) {
  IdentityHost host;
  std::vector<uint8_t> huge = Named("huge\n");
  huge.resize(1 << 20, 0x11);
  host.SetEdids({huge, Named("second\n"), Named("third\n")});
  EXPECT_EQ(host.Listed().at(0), huge);
  EXPECT_EQ(host.Names(), "[huge][second][third]");
}

// --- Names.

TEST(ListMonitorNamesFromRegistry, AreOrderedAndUnique) {
  IdentityHost host;
  host.SetEdids({Named("Veld B\n"), Named("Veld A\n"), Named("Veld B\n")});
  EXPECT_EQ(host.Names(), "[Veld A][Veld B]");
}

TEST(ListMonitorNamesFromRegistry, AddToWhatIsThere) {
  IdentityHost host;
  host.SetEdids({Named("b\n"), Named("c\n"), Named("d\n")});
  std::set<std::string> names = {"a"};
  host.identity().ListMonitorNamesFromRegistry(&names);
  EXPECT_EQ(names, (std::set<std::string>{"a", "b", "c", "d"}));
}

TEST(ListMonitorNamesFromRegistry, ADamagedEdidIsAnUnknownMonitorAndTheWalkGoesOn) {
  const std::vector<uint8_t> damaged[] = {
      EdidBlock().Text(72, 0xFC, "lost\n").Spoil().bytes(),
      EdidBlock().Text(72, 0xFC, "lost\n").Put(0, {1}).Sum().bytes(),
      EdidBlock().Text(72, 0xFC, "lost\n").Put(18, {2}).Sum().bytes(),
      std::vector<uint8_t>(128, 0x00),
      std::vector<uint8_t>(128, 0xFF),
      std::vector<uint8_t>(129, 0x41),
  };
  for (const std::vector<uint8_t>& edid : damaged) {
    IdentityHost host;
    host.SetEdids({edid, Named("second\n"), edid});
    EXPECT_EQ(host.Names(), "[Unknown Mnt][second]");
    EXPECT_EQ(host.Keys(), 0u);
  }
}

TEST(ListMonitorNamesFromRegistry, AShortEdidAddsNothing) {
  for (const size_t size : {size_t{1}, size_t{127}}) {
    IdentityHost host;
    std::vector<uint8_t> edid = Named("first\n");
    edid.resize(size);
    host.SetEdids({edid, Named("second\n"), Named("third\n")});
    EXPECT_EQ(host.Names(), "[second][third]") << size;
  }
}

TEST(ListMonitorNamesFromRegistry, AMonitorWithoutANameAddsNothing) {
  IdentityHost host;
  host.SetEdids({EdidBlock().bytes(), Named("1234567890123"), Named("third\n")});
  EXPECT_EQ(host.Names(), "[third]");
}

TEST(ListMonitorNamesFromRegistry, TakeTheNameAsItStands) {
  IdentityHost host;
  host.SetEdids({Named("a,b  \n"), Named("c\td\x01\n"), Named("\n")});
  EXPECT_EQ(host.Names(), "[][a,b  ][c\td\x01]");
}

TEST(CountMonitorsNamed, CountsTheOneTelevision) {
  IdentityHost host;
  EXPECT_EQ(host.identity().CountMonitorsNamed({}), 0u);
  EXPECT_EQ(host.identity().CountMonitorsNamed({"Veld TV4810"}), 1u);
  EXPECT_EQ(host.identity().CountMonitorsNamed({"A", "Veld TV4810", "Z"}), 1u);
  EXPECT_EQ(host.identity().CountMonitorsNamed(
                {"Veld TV4811", "veld tv4810", "Veld TV4810 ", "Veld TV481"}),
            0u);
}

// --- The debugger's line.

TEST(EdidLoad, TellsTheDebuggerFirstAndThrowsThen) {
  IdentityHost host;
  const IdentityBox& identity = host.identity();
  RaiseWatch watch;
  const EdidBlock header = EdidBlock().Put(0, {1});
  EXPECT_EQ(identity.LoadEdid(header.bytes().data(), 128),
            "EDID::ValidateEDIDHeader() function failed");
  EXPECT_EQ(watch.Take(), std::string("debugger: ") + kHeaderLine + "throw\n");
  const EdidBlock checksum = EdidBlock().Spoil();
  EXPECT_EQ(identity.LoadEdid(checksum.bytes().data(), 128),
            "EDID::ValidateEDIDChecksum() function failed");
  EXPECT_EQ(watch.Take(), std::string("debugger: ") + kChecksumLine + "throw\n");
}

TEST(EdidLoad, TellsTheDebuggerNothingOtherwise) {
  IdentityHost host;
  const IdentityBox& identity = host.identity();
  RaiseWatch watch;
  const EdidBlock good;
  EXPECT_EQ(identity.LoadEdid(good.bytes().data(), 128), "1");
  EXPECT_EQ(identity.LoadEdid(good.bytes().data(), 127), "0");
  EXPECT_EQ(identity.LoadEdid(nullptr, 128), "0");
  EXPECT_EQ(watch.Take(), "");
}

// --- MultiMonitor::GetMonitorName.

struct NameRow {
  const char* what;
  std::vector<uint8_t> edid;
  BOOL result;
  const char* name;
};

TEST(GetMonitorName, ReadsTheNameAndGivesTheEdidBack) {
  const NameRow rows[] = {
      {"a name", Named("Veld A1\n"), 1, "Veld A1"},
      {"a damaged header", EdidBlock().Put(0, {1}).bytes(), 1, "Unknown Mnt"},
      {"a damaged checksum", EdidBlock().Spoil().bytes(), 1, "Unknown Mnt"},
      {"no name", EdidBlock().bytes(), 0, "unchanged"},
      {"thirteen characters", Named("1234567890123"), 0, "unchanged"},
      {"an empty name", Named("\n"), 0, ""},
      {"one byte", {0}, 0, "unchanged"},
      {"a short block", std::vector<uint8_t>(127, 0xFF), 0, "unchanged"},
  };
  IdentityHost host;
  for (const NameRow& row : rows) {
    BlobScript script;
    script.cb = static_cast<uint32_t>(row.edid.size());
    script.pv = row.edid.data();
    const std::unique_ptr<MultiMonitor> monitor(host.identity().NewScriptedMultiMonitor(&script));
    std::string name = "unchanged";
    EXPECT_EQ(monitor->GetMonitorName(IMMonitor::MD_CRT, &name), row.result) << row.what;
    EXPECT_EQ(name, row.name) << row.what;
    EXPECT_EQ(script.calls, "GetMonitorEDID(2)\nFreeMonitorEDID\n") << row.what;
  }
}

TEST(GetMonitorName, AnEdidOfNothingIsGivenBack) {
  const std::vector<uint8_t> edid = Named("lost\n");
  const std::pair<uint32_t, const void*> rows[] = {{0, edid.data()}, {128, nullptr}, {0, nullptr}};
  IdentityHost host;
  for (const auto& row : rows) {
    BlobScript script;
    script.cb = row.first;
    script.pv = row.second;
    const std::unique_ptr<MultiMonitor> monitor(host.identity().NewScriptedMultiMonitor(&script));
    std::string name = "unchanged";
    EXPECT_EQ(monitor->GetMonitorName(IMMonitor::MD_NB, &name), 0);
    EXPECT_EQ(name, "unchanged");
    EXPECT_EQ(script.calls, "GetMonitorEDID(1)\nFreeMonitorEDID\n");
  }
}

TEST(GetMonitorName, AnEdidThatCannotBeReadIsNotGivenBack) {
  IdentityHost host;
  BlobScript script;
  script.readable = false;
  const std::unique_ptr<MultiMonitor> monitor(host.identity().NewScriptedMultiMonitor(&script));
  std::string name = "unchanged";
  EXPECT_EQ(monitor->GetMonitorName(IMMonitor::MD_NB, &name), 0);
  EXPECT_EQ(name, "unchanged");
  EXPECT_EQ(script.calls, "GetMonitorEDID(1)\n");
}

}  // namespace
