// NvidiaMMImplV3CrossAdapter and the clone groups of NVIDIA's driver: written, removed, read.
#include <gtest/gtest.h>

#include "tests/support/NvidiaPathsHost.h"

namespace {

constexpr char kPanelAndHdmi[] = "win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080";
constexpr char kBelowSeven[] = "This class only support Windows 7 or later";
constexpr char kNoPath[] = "Can't find any active display path\n";
constexpr char kDisplayIdCall[] = "NvAPI_SYS_GetDisplayIdFromGpuAndOutputId";
constexpr char kOutputCall[] = "NvAPI_SYS_GetGpuAndOutputIdFromDisplayId";
constexpr char kPanelAlone[] =
    "SetDisplayConfig(paths=0 flags=0x41)=0\nSetDisplayConfig(paths=0 flags=0x81)=0\n";

sim::NvidiaCloneItem Panel(CrossHost* host) { return {3, host->connector("internal").target_id}; }
sim::NvidiaCloneItem Own(CrossHost* host, const std::string& id) {
  return {0, sim::NvDisplayIdOf(host->model(), id)};
}
void Group(CrossHost* host, const std::vector<sim::NvidiaCloneItem>& items) {
  host->model().nvidia_clone_groups.push_back(items);
}
void PanelAndHdmiGroup(CrossHost* host) { Group(host, {Panel(host), Own(host, "hdmi")}); }

// --- Written.

std::string Write(CrossHost* host, const std::string& external, int32_t result = 0) {
  return host->WriteGroups("[[[flags=3 target=" + Hex(host->connector("internal").target_id) +
                               " internal] [flags=0 display=" + external + "]]]",
                           result);
}
std::string Display(CrossHost* host, const std::string& id) {
  return Hex(sim::NvDisplayIdOf(host->model(), id)) + " " + id;
}
// ApplyCrossAdapterClone: what changed the machine, and the result.
std::string Clone(CrossHost* host, uint32_t displays) {
  host->Forget();
  const std::string result = host->paths().ApplyCrossAdapterClone(&host->own(), displays);
  return host->machine.TakeJournal() + result;
}
// The write alone, without Windows' part.
std::string WriteOf(const std::string& protocol) {
  const size_t at = protocol.find(kWriteGroups);
  return at != std::string::npos ? protocol.substr(at) : "no write: " + protocol;
}

TEST(NvidiaCloneGroup, HoldsThePanelAndTheHdmiDisplay) {
  for (const uint32_t displays : {kNb | kHdmi, uint32_t{kHdmi}, kHdmi | kCrt | kDvi}) {
    CrossHost host(kPanelAndHdmi);
    EXPECT_EQ(Clone(&host, displays), kPanelAlone + Write(&host, Display(&host, "hdmi")) + "1");
  }
}

TEST(NvidiaCloneGroup, HoldsTheDisplayPortDisplayWhereThereIsNoHdmiInTheMask) {
  CrossHost host;
  EXPECT_EQ(WriteOf(Clone(&host, kNb | kDp)), Write(&host, Display(&host, "dp")) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal; group internal+dp");
  EXPECT_EQ(host.Mode(), "0x2 0x21");
  EXPECT_EQ(WriteOf(Clone(&host, kDp)), Write(&host, Display(&host, "dp")) + "1");
  EXPECT_EQ(WriteOf(Clone(&host, kNb | kDp | kHdmi)), Write(&host, Display(&host, "hdmi")) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal; group internal+hdmi");
}

TEST(NvidiaCloneGroup, IsWrittenByEverySwitchToClone) {
  CrossHost host;
  EXPECT_EQ(WriteOf(host.Switch(kClone, kNb | kDp)), Write(&host, Display(&host, "dp")) + "1");
  EXPECT_EQ(WriteOf(host.Switch(kClone, kHdmi)), Write(&host, Display(&host, "hdmi")) + "1");
}

TEST(NvidiaCloneGroup, PanelStandsAloneWhenItIsWritten) {
  CrossHost host("win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080 active");
  EXPECT_EQ(Clone(&host, kNb | kHdmi), kPanelAlone + Write(&host, Display(&host, "hdmi")) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal; group internal+hdmi");
}

// Nobody to clone with: the driver is asked all the same.
TEST(NvidiaCloneGroup, PanelAloneNamesNobodyElse) {
  CrossHost host(kPanelAndHdmi);
  EXPECT_EQ(Clone(&host, kNb), kPanelAlone + Write(&host, "0x0 unknown", -5) + "0");
}

TEST(NvidiaCloneGroup, UnknownDisplayIdNamesNobodyElse) {
  CrossHost host(kPanelAndHdmi);
  host.Forget();
  host.machine.Fail(kDisplayIdCall, 1);
  EXPECT_EQ(WriteOf(Clone(&host, kNb | kHdmi)), Write(&host, "0x0 unknown", -5) + "0");
  EXPECT_EQ(WriteOf(Clone(&host, kNb | kDp)), Write(&host, "0x0 unknown", -5) + "0");
}

TEST(NvidiaCloneGroup, RefusedSwitchToThePanelIsNotLookedAt) {
  CrossHost host(kPanelAndHdmi);
  host.Forget();
  host.machine.Fail("SetDisplayConfig", 2, ERROR_GEN_FAILURE);
  EXPECT_EQ(Clone(&host, kNb | kHdmi),
            "SetDisplayConfig(paths=0 flags=0x41)=0\n"
            "SetDisplayConfig(paths=0 flags=0x81)=31\n" +
                Write(&host, Display(&host, "hdmi")) + "1");
}

// User32.dll cannot be bound: no switch, and no target.
TEST(NvidiaCloneGroup, WithoutWindowsApiThePanelIsNobody) {
  CrossHost host(kPanelAndHdmi);
  host.Forget();
  host.machine.Fail("LoadLibraryA", 1);
  EXPECT_EQ(
      Clone(&host, kNb | kHdmi),
      host.WriteGroups(
          "[[[flags=3 target=0x0 unknown] [flags=0 display=" + Display(&host, "hdmi") + "]]]", -5) +
          "0");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "INFO " + std::string(kNoDisplayLink) + "ERROR " + std::string(kNoPath));
}

TEST(NvidiaCloneGroup, RefusedWriteIsTheResultAndIsNotLogged) {
  CrossHost host(kPanelAndHdmi, kChecked);
  host.Forget();
  host.machine.Fail(kWriteGroups, 1);
  EXPECT_EQ(WriteOf(Clone(&host, kNb | kHdmi)), Write(&host, Display(&host, "hdmi"), -1) + "0");
  EXPECT_EQ(host.TakeLog(), kNoDisplayLink);
}

TEST(NvidiaCloneGroup, NeedsTheDriver) {
  NvidiaPathsHost<NvidiaMMImplV3CrossAdapter> host(kPanelAndHdmi);
  NvidiaMMImplV3CrossAdapter& bare = host.bare(host.paths().NewCrossAdapter);
  for (const uint32_t displays : {kNb | kHdmi, 0u}) {
    EXPECT_EQ(host.paths().ApplyCrossAdapterClone(&bare, displays), "0");
    EXPECT_EQ(host.machine.TakeJournal(), "") << displays;
  }
  EXPECT_EQ(host.machine.Calls(kWriteGroups), 0u);
  EXPECT_EQ(bare.ApplyDisplayMode(kSingle, kHdmi, nullptr), 0);
  uint32_t mode = 0;
  uint32_t displays = 0;
  EXPECT_EQ(bare.GetCurrentDisplayMode(&mode, &displays), 0);
}

TEST(NvidiaCloneGroup, BelowWindows7Throws) {
  CrossHost host("vista intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080");
  host.own();
  const int64_t pieces = host.paths().PiecesOut();
  EXPECT_EQ(host.paths().ApplyCrossAdapterClone(&host.own(), kNb | kHdmi), kBelowSeven);
  EXPECT_EQ(host.paths().PiecesOut(), pieces + 1);  // the text, which the test gave back
}

// --- Removed.

TEST(NvidiaCloneGroup, AllGroupsGoWhereTheMaskHasNoneOfItsDisplays) {
  for (const uint32_t displays : {0u, uint32_t{kCrt}, uint32_t{kDvi}, kTv | kDvi | kCrt}) {
    CrossHost host;
    PanelAndHdmiGroup(&host);
    Group(&host, {Panel(&host), Own(&host, "dp")});
    EXPECT_EQ(Clone(&host, displays), host.WriteGroups("none") + "1") << displays;
    EXPECT_EQ(host.machine.Topology(), "single internal");
  }
}

TEST(NvidiaCloneGroup, NothingToRemoveIsASuccess) {
  CrossHost host;
  EXPECT_EQ(Clone(&host, 0), "1");
  EXPECT_EQ(Clone(&host, kDvi), "1");
}

TEST(NvidiaCloneGroup, FailedRemovalIsTheResult) {
  CrossHost host;
  PanelAndHdmiGroup(&host);
  host.Forget();
  host.machine.Fail(kReadGroups, 1);
  EXPECT_EQ(Clone(&host, 0), "0");
  host.machine.Fail(kWriteGroups, 1);
  EXPECT_EQ(Clone(&host, 0), host.WriteGroups("none", -1) + "0");
}

// No switch gets as far as the removal.
TEST(NvidiaCloneGroup, OutlivesEverySwitchToOneDisplay) {
  CrossHost host;
  host.Switch(kClone, kNb | kHdmi);
  EXPECT_EQ(host.Switch(kSingle, kDp), host.SetOne(host.Own("dp")) + "1");
  EXPECT_EQ(host.machine.Topology(), "single dp; group internal+hdmi");
  EXPECT_EQ(host.Mode(), "0x2 0x11");
  host.Switch(kSingle, kNb);
  EXPECT_EQ(host.Mode(), "0x2 0x11");
  host.Switch(kClone, kNb | kCrt);
  EXPECT_EQ(host.Mode(), "0x2 0x11");
  EXPECT_EQ(host.machine.Calls(kWriteGroups), 1u);
}

// An extended desktop is asked for, which does nothing.
TEST(NvidiaCloneGroup, SwitchBehindItAsksForAnExtendedDesktop) {
  NvidiaPathsHost<NvidiaMMImplV3CrossAdapter> host(kPanelAndHdmi);
  std::vector<BOOL> enables;
  host.Adopt(host.paths().NewTellingCrossAdapter(&enables));
  host.Switch(kSingle, kHdmi);
  EXPECT_EQ(enables, std::vector<BOOL>());
  host.Switch(kClone, kNb | kHdmi);
  host.Switch(kClone, kNb | kHdmi);
  EXPECT_EQ(enables, std::vector<BOOL>());
  EXPECT_EQ(host.Switch(kSingle, kHdmi), host.SetOne(host.Own("hdmi")) + "1");
  EXPECT_EQ(enables, std::vector<BOOL>{TRUE});
  host.End();
}

// --- Read.

TEST(NvidiaCloneMode, GroupOutranksWindows) {
  CrossHost host(kPanelAndHdmi);
  host.own();
  EXPECT_EQ(host.Mode(), "failed 0xee 0xee");  // the panel is not of this driver
  PanelAndHdmiGroup(&host);
  EXPECT_EQ(host.Mode(), "0x2 0x11");
  EXPECT_EQ(host.machine.Calls(kReadGroups), 1u + 3u);
}

TEST(NvidiaCloneMode, WithoutAGroupTheDriversOutputsTell) {
  CrossHost host("win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080 active");
  EXPECT_EQ(host.Mode(), "0x4 0x10");
  EXPECT_EQ(host.machine.Calls(kReadGroups), 1u);
}

TEST(NvidiaCloneMode, FailedFirstReadLeavesTheDriversOutputs) {
  CrossHost host("win7 intel, nvidia: internal 1366x768, hdmi@2 1920x1080 active");
  PanelAndHdmiGroup(&host);
  host.own();
  host.machine.Fail(kReadGroups, 1);
  EXPECT_EQ(host.Mode(), "0x1 0x10");
  EXPECT_EQ(host.machine.Calls(kReadGroups), 1u);
}

TEST(NvidiaCloneMode, FailedLaterReadIsACloneOfNobody) {
  for (const uint32_t nth : {2u, 3u}) {
    CrossHost host(kPanelAndHdmi);
    PanelAndHdmiGroup(&host);
    host.Forget();
    host.machine.Fail(kReadGroups, nth);
    EXPECT_EQ(host.Mode(), "0x2 0x0") << nth;
    EXPECT_EQ(host.machine.Calls(kReadGroups), nth);
    EXPECT_EQ(host.TakeLog(), "");
  }
}

TEST(NvidiaCloneMode, EveryGroupIsWalked) {
  CrossHost host;
  PanelAndHdmiGroup(&host);
  Group(&host, {Own(&host, "dvi"), Own(&host, "dp")});
  EXPECT_EQ(host.Mode(), "0x2 0x39");
  EXPECT_EQ(host.machine.Calls(kReadGroups), 3u);
}

TEST(NvidiaCloneMode, ForeignItemIsThePanelByItsTargetAlone) {
  CrossHost host;
  host.own();
  const uint32_t panel = host.connector("internal").target_id;
  const uint32_t crt = host.connector("crt").target_id;
  const uint32_t hdmi = sim::NvDisplayIdOf(host.model(), "hdmi");
  const struct {
    sim::NvidiaCloneItem item;
    const char* mode;
  } rows[] = {{{1, panel}, "0x2 0x1"},          {{3, panel}, "0x2 0x1"}, {{3, crt}, "0x2 0x0"},
              {{0x80000001, panel}, "0x2 0x1"}, {{1, hdmi}, "0x2 0x0"},  {{2, panel}, "0x2 0x0"},
              {{0, hdmi}, "0x2 0x10"},          {{2, hdmi}, "0x2 0x10"}, {{0, 0x1234}, "0x2 0x0"}};
  for (const auto& row : rows) {
    host.model().nvidia_clone_groups = {{row.item, row.item}};
    EXPECT_EQ(host.Mode(), row.mode) << row.item.flags << " " << row.item.id;
  }
}

// The analogue output is asked for, and the answer is the panel's.
TEST(NvidiaCloneMode, AnalogueOutputIsNeverFound) {
  CrossHost host;
  host.own();
  Group(&host, {{1, host.connector("crt").target_id}, Own(&host, "hdmi")});
  const uint32_t before = host.machine.Calls("QueryDisplayConfig");
  EXPECT_EQ(host.Mode(), "0x2 0x10");
  EXPECT_EQ(host.machine.Calls("QueryDisplayConfig"), before + 2);
}

TEST(NvidiaCloneMode, ItemsThatCannotBeResolvedLeaveOneBitOrNone) {
  CrossHost host(kPanelAndHdmi);
  PanelAndHdmiGroup(&host);
  host.Forget();
  host.machine.Fail(kOutputCall, 1);
  EXPECT_EQ(host.Mode(), "0x2 0x1");
  host.connector("internal").target_id = 0x99;
  host.machine.Fail(kOutputCall, 1);
  EXPECT_EQ(host.Mode(), "0x2 0x0");
  host.connector("hdmi").nvidia_output = 0x10;  // none of the twelve
  EXPECT_EQ(host.Mode(), "0x2 0x0");
  // Nothing but of the Windows' object that each look at the panel's target makes.
  const std::string none = kNoDisplayLink;
  EXPECT_EQ(host.TakeLog(), none + none + none);
}

TEST(NvidiaCloneMode, WithoutWindowsApiThePanelIsNotFound) {
  CrossHost host(kPanelAndHdmi, kChecked);
  PanelAndHdmiGroup(&host);
  host.Forget();
  host.machine.Fail("LoadLibraryA", 1);
  EXPECT_EQ(host.Mode(), "0x2 0x10");
  EXPECT_EQ(host.TakeLog(), kNoDisplayLink + Failed("ccd_ok") + kNoPath + kNoPath);
}

TEST(NvidiaCloneMode, BelowWindows7Throws) {
  CrossHost host("vista intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080");
  PanelAndHdmiGroup(&host);
  host.own();
  const int64_t pieces = host.paths().PiecesOut();
  uint32_t mode = 0xEE;
  uint32_t displays = 0xEE;
  EXPECT_EQ(host.paths().GetCurrentDisplayMode(&host.own(), &mode, &displays), kBelowSeven);
  EXPECT_EQ(host.paths().PiecesOut(), pieces + 1);  // the text, which the test gave back
}

TEST(NvidiaCloneMode, ObjectThatIsNotCapableLooksAtNoGroup) {
  NvidiaPathsHost<NvidiaMMImplV3CrossAdapter> host(
      "win7 intel, nvidia: internal 1366x768, hdmi@2 1920x1080 active");
  host.bare(host.paths().NewIncapableCrossAdapter);
  host.model().nvidia_clone_groups = {{{0, sim::NvDisplayIdOf(host.model(), "hdmi")}}};
  EXPECT_EQ(host.Mode(), "0x1 0x10");
  EXPECT_EQ(host.machine.Calls(kReadGroups), 0u);
}

TEST(NvidiaCloneMode, NeedsPlacesToWriteTo) {
  CrossHost host(kPanelAndHdmi, kChecked);
  PanelAndHdmiGroup(&host);
  host.Forget();
  uint32_t number = 0xEE;
  EXPECT_EQ(host.own().GetCurrentDisplayMode(nullptr, &number), 0);
  EXPECT_EQ(host.TakeLog(), Failed("imm_mode"));
  EXPECT_EQ(host.own().GetCurrentDisplayMode(&number, nullptr), 0);
  EXPECT_EQ(host.TakeLog(), Failed("imm_displays"));
  EXPECT_EQ(number, 0xEEu);
}

// --- Read from a ruder driver.

struct Script {
  int reads;
  uint32_t groups_at_first;
  uint32_t groups_then;
  uint32_t items;
  uint32_t items_at_last;
  std::string seen;  // version words, and reserved words that are not zero
  uint32_t id;
};
Script g_script;

void SeeWords(const uint32_t* words, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    if (i == 0 || words[i] != 0) g_script.seen += Hex(words[i]) + (i == 0 ? " " : "! ");
  }
}

int32_t ReadAsTheScriptSays(NvTopology* top) {
  ++g_script.reads;
  g_script.seen += "\n" + Hex(top->version) + " " + std::to_string(top->count) + ": ";
  auto* const groups = static_cast<NvTopology*>(top->elements);
  if (groups == nullptr) {
    top->count = g_script.groups_at_first;
    return 0;
  }
  for (uint32_t i = 0; i < top->count; ++i) {
    auto* const items = static_cast<NvTopologyItem*>(groups[i].elements);
    if (items == nullptr) {
      SeeWords(reinterpret_cast<const uint32_t*>(&groups[i]), 6);
      groups[i].count = g_script.items;
      continue;
    }
    g_script.seen += Hex(groups[i].version) + " {";
    for (uint32_t k = 0; k < groups[i].count; ++k) {
      SeeWords(reinterpret_cast<const uint32_t*>(&items[k]), 11);
      items[k].id = g_script.id;
    }
    g_script.seen += "} ";
    groups[i].count = g_script.items_at_last;
  }
  top->count = g_script.groups_then;
  return 0;
}

std::string ScriptedMode(CrossHost* host, uint32_t groups_at_first, uint32_t groups_then,
                         uint32_t items, uint32_t items_at_last) {
  host->Forget();
  g_script = {};
  g_script.groups_at_first = groups_at_first;
  g_script.groups_then = groups_then;
  g_script.items = items;
  g_script.items_at_last = items_at_last;
  g_script.id = sim::NvDisplayIdOf(host->model(), "hdmi");
  host->paths().ReplaceGetTopology(ReadAsTheScriptSays);
  return host->Mode();
}

TEST(NvidiaCloneMode, OnlyTheFirstGroupGetsAVersionWord) {
  CrossHost host(kPanelAndHdmi);
  EXPECT_EQ(ScriptedMode(&host, 3, 3, 2, 2), "0x2 0x10");
  EXPECT_EQ(g_script.seen,
            "\n0x10018 0: "
            "\n0x10018 3: 0x10018 0x0 0x0 "
            "\n0x10018 3: 0x10018 {0x1002c 0x1002c } 0x0 {0x1002c 0x1002c } "
            "0x0 {0x1002c 0x1002c } ");
}

TEST(NvidiaCloneMode, UnbelievableNumberOfGroupsIsACloneOfNobody) {
  CrossHost host(kPanelAndHdmi);
  for (const uint32_t groups : {65u, 0x10000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ScriptedMode(&host, groups, groups, 1, 1), "0x2 0x0") << groups;
    EXPECT_EQ(g_script.reads, 1);
  }
  EXPECT_EQ(ScriptedMode(&host, 64, 64, 1, 1), "0x2 0x10");
  EXPECT_EQ(g_script.reads, 3);
}

TEST(NvidiaCloneMode, UnbelievableNumberOfItemsIsACloneOfNobody) {
  CrossHost host(kPanelAndHdmi);
  for (const uint32_t items : {65u, 0x10000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ScriptedMode(&host, 2, 2, items, items), "0x2 0x0") << items;
    EXPECT_EQ(g_script.reads, 2);
  }
  EXPECT_EQ(ScriptedMode(&host, 2, 2, 64, 64), "0x2 0x10");
  EXPECT_EQ(ScriptedMode(&host, 2, 2, 0, 0), "0x2 0x0");
}

// Nothing is read beyond the room there was, whatever the driver says in the end.
TEST(NvidiaCloneMode, CountsThatGrowBetweenTheReadsAreNotFollowed) {
  CrossHost host(kPanelAndHdmi);
  const uint32_t before = host.machine.Calls(kOutputCall);
  EXPECT_EQ(ScriptedMode(&host, 1, 0xFFFFFFFF, 2, 0xFFFFFFFF), "0x2 0x10");
  EXPECT_EQ(g_script.reads, 3);
  EXPECT_EQ(g_script.seen,
            "\n0x10018 0: \n0x10018 1: 0x10018 \n0x10018 1: 0x10018 {0x1002c 0x1002c } ");
  EXPECT_EQ(host.machine.Calls(kOutputCall), before + 2);
}

TEST(NvidiaCloneMode, GroupsAndItemsThatWentAwayAreLeftOut) {
  CrossHost host(kPanelAndHdmi);
  EXPECT_EQ(ScriptedMode(&host, 3, 0, 2, 2), "0x2 0x0");
  EXPECT_EQ(g_script.reads, 2);
  const uint32_t before = host.machine.Calls(kOutputCall);
  EXPECT_EQ(ScriptedMode(&host, 2, 2, 3, 1), "0x2 0x10");
  EXPECT_EQ(host.machine.Calls(kOutputCall), before + 2);
}

}  // namespace
