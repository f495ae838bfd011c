// The legacy AMD back-end: what is connected, what is active, and in which mode.
#include <gtest/gtest.h>

#include "tests/behaviour/AtiHost.h"
#include "tests/behaviour/ScriptedAti.h"

namespace {

constexpr wchar_t kChecked[] = L"--enable-dcheck";
constexpr char kThree[] =
    "win7 amd: clone internal 1366x768 active, crt 1280x1024 active, hdmi 1920x1080 active";

class AtiReports : public testing::Test {
 protected:
  AtiReports() : host(kPanelCrt) {
    ati.types = {{0, 1}, {1, 2}, {2, 4}, {3, 6}, {4, 5}, {5, 8}, {6, 3}};
    ati.Install(&host.machine);
    host.ati();
    ati.TakeCalls();
  }
  /// The next reports tell of these active displays.
  void ShowActive(const ScriptedAti::Words& vectors, uint32_t count) {
    ScriptedAti::Words words = ScriptedAti::Record(16, {64, 2});
    std::copy(vectors.begin(), vectors.end(), words.begin() + 2);
    words[9] = count;
    ati.get_active = ScriptedAti::Answer(words);
  }

  AtiHost host;
  ScriptedAti ati;
};

// --- Connected displays.

TEST_F(AtiReports, ConnectedDisplaysAreClassifiedOneByOne) {
  ati.connected = 0x5;
  ati.kinds = {{2, 10}};
  EXPECT_EQ(host.Connected(), "0x21 (2)");
  EXPECT_EQ(ati.TakeCalls(),
            "GetConnectedDisplays(0)\n"
            "EnumDisplays(0,0)\nATIDL_DisplayGetDeviceConfig(0,0)\n"
            "EnumDisplays(0,2)\nATIDL_DisplayGetDeviceConfig(0,2)\n");
}

TEST_F(AtiReports, DeviceIsAskedForWithAFreshRecord) {
  ati.connected = 0x3;
  ati.kinds = {{0, 5}};
  host.Connected();
  const ScriptedAti::Words fresh = {20, 0, 0, 0, 0};
  EXPECT_EQ(ati.given["ATIDL_DisplayGetDeviceConfig"],
            (std::vector<ScriptedAti::Words>{fresh, fresh}));
}

TEST_F(AtiReports, EveryKindAndTypeHasItsFlag) {
  constexpr uint32_t kByKind[] = {0, 0, 0, 0, 0, 0x02, 0x08, 0x08, 0x10, 0x10, 0x20, 0};
  constexpr uint32_t kByType[] = {0, 0x01, 0x02, 0, 0x08, 0x02, 0x10, 0, 0x10, 0, 0};
  ati.connected = 0x8;
  for (uint32_t kind = 0; kind < std::size(kByKind); ++kind) {
    for (uint32_t type = 0; type < std::size(kByType); ++type) {
      ati.kinds = {{3, kind}};
      ati.types = {{3, type}};
      const uint32_t flag = kByKind[kind] != 0 ? kByKind[kind] : kByType[type];
      EXPECT_EQ(host.Connected(), AtiHex(flag) + " (1)") << kind << " " << type;
    }
  }
}

TEST_F(AtiReports, DeviceThatIsNotToldLeavesTheDisplayToItsType) {
  ati.connected = 0x2;
  ati.kind_result = 7;
  EXPECT_EQ(host.Connected(), "0x2 (1)");
}

TEST_F(AtiReports, WalkEndsAtTheFirstDisplayWithoutAType) {
  ati.connected = 0x7F;
  ati.types = {{0, 1}, {1, 2}, {3, 6}};
  EXPECT_EQ(host.Connected(), "0x3 (7)");  // and counts them all
  EXPECT_EQ(CountOf(ati.TakeCalls(), "EnumDisplays"), 3u);
}

TEST_F(AtiReports, VectorHasSevenBits) {
  ati.connected = 0xFFFFFFC0;
  EXPECT_EQ(host.Connected(), "0x0 (26)");
  EXPECT_EQ(ati.TakeCalls(),
            "GetConnectedDisplays(0)\nEnumDisplays(0,6)\nATIDL_DisplayGetDeviceConfig(0,6)\n");
}

TEST_F(AtiReports, NothingConnectedIsAReport) {
  ati.connected = 0;
  EXPECT_EQ(host.Connected(), "0x0 (0)");
  EXPECT_EQ(ati.TakeCalls(), "GetConnectedDisplays(0)\n");
}

TEST_F(AtiReports, FailedConnectedReportIsLoggedAndWritesNothing) {
  for (const int32_t result : {-1, 1}) {
    ati.connected_result = result;
    host.ForgetLog();
    uint32_t displays = 0xEE;
    uint32_t count = 0xEE;
    EXPECT_EQ(host.ati().GetConnectedDisplays(&displays, &count), 0);
    EXPECT_EQ(displays, 0xEEu);
    EXPECT_EQ(count, 0xEEu);
    EXPECT_EQ(host.TakeLogWithSeverity(), "INFO Call to GetConnectedDisplays failed\n");
  }
}

// The map grows in the report; one that has no memory for it fails.
TEST_F(AtiReports, ConnectedReportWithoutMemoryFails) {
  ati.connected = 0x1;
  const auto refuse = host.ostrel().white_box().projectors->RefuseMemory;
  refuse(1);
  EXPECT_EQ(host.Connected(), "failed");
  EXPECT_FALSE(refuse(0));
  EXPECT_EQ(host.Connected(), "0x1 (1)");
}

TEST(AtiReport, NullOutputsAreChecked) {
  AtiHost host(kPanelCrt, kChecked);
  IMMonitor& ati = host.ati();
  host.Forget();
  const uint32_t calls = host.machine.Calls("ATIDL_GetAdapterID");
  uint32_t word = 0xEE;
  EXPECT_EQ(ati.GetConnectedDisplays(nullptr, &word), 0);
  EXPECT_EQ(ati.GetActiveDisplays(nullptr, &word), 0);
  EXPECT_EQ(ati.GetCurrentDisplayMode(&word, nullptr), 0);
  EXPECT_EQ(host.TakeLog(),
            "Check failed: pdwDispFlag. \nCheck failed: pdwDispFlag. \n"
            "Check failed: pdwDispFlag. \n");
  EXPECT_EQ(ati.GetConnectedDisplays(&word, nullptr), 0);
  EXPECT_EQ(ati.GetActiveDisplays(&word, nullptr), 0);
  EXPECT_EQ(ati.GetCurrentDisplayMode(nullptr, &word), 0);
  EXPECT_EQ(host.TakeLog(),
            "Check failed: pnumDisplays. \nCheck failed: pnumDisplays. \n"
            "Check failed: pdwModeFlag. \n");
  EXPECT_EQ(host.machine.Calls("ATIDL_GetAdapterID"), calls);
  EXPECT_EQ(word, 0xEEu);
}

// A report that cannot be made keeps the pending question.
TEST(AtiReport, NullOutputLeavesTheCapabilitiesPending) {
  AtiHost host(kPanelCrt);
  sim::SetAmdAnswer(host.machine, "GetCapabilities first", 3);
  EXPECT_EQ(host.ati().GetConnectedDisplays(nullptr, nullptr), 0);
  EXPECT_EQ(host.Connected(), "failed");
  EXPECT_EQ(host.Connected(), "0x3 (2)");
}

// --- Active displays.

TEST_F(AtiReports, ActiveDisplaysAreAskedForWithAFreshRecord) {
  ShowActive({1, 2}, 2);
  EXPECT_EQ(host.Active(), "0x3 (2)");
  EXPECT_EQ(host.Active(), "0x3 (2)");
  const ScriptedAti::Words fresh = ScriptedAti::Record(16, {64});
  EXPECT_EQ(ati.given["ATIDL_GetActiveDisplays"], (std::vector<ScriptedAti::Words>{fresh, fresh}));
  EXPECT_EQ(ati.TakeCalls().rfind("ATIDL_GetActiveDisplays(0)\nEnumDisplays(0,0)\n", 0), 0u);
}

TEST_F(AtiReports, ActiveDisplaysAreAddedToTheMask) {
  ShowActive({1}, 1);
  EXPECT_EQ(host.Active(0), "0x1 (1)");
  EXPECT_EQ(host.Active(0x40), "0x41 (1)");
}

TEST_F(AtiReports, VectorOfSeveralDisplaysIsOneOfTheCount) {
  ShowActive({3, 0x20}, 2);
  EXPECT_EQ(host.Active(), "0x13 (2)");
}

TEST_F(AtiReports, EmptyVectorIsCountedAllTheSame) {
  ShowActive({0, 2}, 2);
  EXPECT_EQ(host.Active(), "0x2 (2)");
}

TEST_F(AtiReports, SevenVectorsAreReadWhateverTheirCount) {
  ShowActive({1, 2, 4, 8, 0x10, 0x20, 0x20}, 7);
  EXPECT_EQ(host.Active(), "0x1b (7)");
  ShowActive({0, 0, 0, 0, 0, 0, 1}, 0x7FFFFFFF);  // the count's own word is no vector
  EXPECT_EQ(host.Active(), "0x1 (2147483647)");
  ShowActive({1}, 0xFFFFFFFF);
  EXPECT_EQ(host.Active(), "0x0 (4294967295)");
  ShowActive({1}, 0);
  EXPECT_EQ(host.Active(), "0x0 (0)");
}

TEST_F(AtiReports, ActiveDisplaysAreNotNotedForSwitches) {
  ShowActive({1}, 1);
  host.Active();
  host.ati().SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB);
  EXPECT_EQ(ati.given["ATIDL_SetConfigurationEx"].at(0),
            ScriptedAti::Record(16, {64, 3, 0, 0, 0, 0, 0, 0, 0, 1}));
}

TEST_F(AtiReports, FailedActiveReportIsLoggedAndWritesNothing) {
  for (const int32_t result : {-1, 1}) {
    ati.get_active = ScriptedAti::Answer({64, 3, 1, 0, 0, 0, 0, 0, 0, 1}, result);
    host.ForgetLog();
    uint32_t displays = 0xE0;
    uint32_t count = 0xEE;
    EXPECT_EQ(host.ati().GetActiveDisplays(&displays, &count), 0);
    EXPECT_EQ(displays, 0xE0u);
    EXPECT_EQ(count, 0xEEu);
    EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR Call to GetActiveDisplays() failed\n");
    EXPECT_EQ(host.Mode(), "failed 238 0xee");
  }
}

// --- The mode.

TEST(AtiReport, ModeFollowsTheNumberOfActiveDisplays) {
  const struct {
    const char* machine;
    const char* mode;
  } rows[] = {
      {kPanelCrt, "1 0x1"},
      {"win7 amd: internal 1366x768, crt 1280x1024 active", "1 0x2"},
      {"win7 amd: clone internal 1366x768 active, hdmi 1280x1024 active", "2 0x11"},
      {kPanelCrtExtended, "4 0x3"},
      {kThree, "failed 238 0x13"},  // three that are no extended desktop; the mask is written
  };
  for (const auto& row : rows) {
    AtiHost host(row.machine);
    for (sim::Adapter& adapter : host.model().adapters) adapter.heads = 3;
    EXPECT_EQ(host.Mode(), row.mode) << row.machine;
  }
}

TEST_F(AtiReports, NoActiveDisplayIsNoMode) {
  ShowActive({}, 0);
  EXPECT_EQ(host.Mode(), "failed 238 0x0");
  ShowActive({4}, 0xFFFFFFFF);
  EXPECT_EQ(host.Mode(), "failed 238 0x0");
}

// The library's own word for the arrangement is not looked at.
TEST_F(AtiReports, ModeIsNotTheArrangement) {
  ati.get_active = ScriptedAti::Answer({64, 5, 1, 2, 0, 0, 0, 0, 0, 2});
  EXPECT_EQ(host.Mode(), "2 0x3");
}

TEST(AtiReport, ExtendedDesktopHasItsModeWhateverIsCounted) {
  AtiHost host(kPanelCrtExtended);
  ScriptedAti ati;
  ati.types = {{0, 1}, {1, 2}, {2, 6}};
  ati.get_active = ScriptedAti::Answer({64, 5, 1, 2, 4, 0, 0, 0, 0, 3});
  ati.Install(&host.machine);
  EXPECT_EQ(host.Mode(), "4 0x13");
}

}  // namespace
