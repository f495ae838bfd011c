// What the driver says of a notebook with two adapters, and what an adapter is made for.
#include <gtest/gtest.h>

#include "tests/support/NvidiaHost.h"

namespace {

constexpr char kMachine[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";

TEST(NvidiaV2Adapter, IsDiscreteOnlyWhereTheFirstResultIsZero) {
  NvidiaHost host(kMachine);
  EXPECT_TRUE(host.nv().IsDiscreteOnly());
  host.model().adapters[0].nvidia_coproc_status = 1;
  EXPECT_FALSE(host.nv().IsDiscreteOnly());
}

TEST(NvidiaV2Adapter, RefusalIsNotDiscreteOnly) {
  NvidiaHost host(kMachine);
  host.nv();
  host.machine.Fail("NvAPI_Coproc_GetCoprocStatus", 1);
  EXPECT_FALSE(host.nv().IsDiscreteOnly());
}

TEST(NvidiaV2Adapter, LeadsInModes1And3) {
  NvidiaHost host("win7 intel, nvidia: internal@2 1366x768 active, hdmi@2 1920x1080");
  host.nv();
  std::optional<uint32_t>& mode = host.model().adapters[1].nvidia_hybrid_mode;
  for (const uint32_t leading : {1u, 3u}) {
    mode = leading;
    EXPECT_TRUE(host.box().LeadsByAdapterMode(&host.nv())) << leading;
  }
  for (const uint32_t other : {0u, 2u, 4u, 0xFFFFFFFFu}) {
    mode = other;
    EXPECT_FALSE(host.box().LeadsByAdapterMode(&host.nv())) << other;
  }
  mode.reset();
  EXPECT_FALSE(host.box().LeadsByAdapterMode(&host.nv()));
}

TEST(NvidiaV2Adapter, LeadsWhereTheDriverLeavesTheModeAsItWasAsked) {
  NvidiaHost host("win7 intel, nvidia: internal@2 1366x768 active, hdmi@2 1920x1080");
  host.nv();
  sim::LeaveNvHybridMode(host.machine);
  EXPECT_TRUE(host.box().LeadsByAdapterMode(&host.nv()));
}

std::string CapabilityLines(const char* panel, const char* hdmi, const char* display_port) {
  return std::string("INFO CouldManageMultipleDisplay()\n\t internal_display_found = ") + panel +
         "\n\t hdmi_found = " + hdmi + "\n\t displayport_found = " + display_port + "\n";
}

struct Capability {
  const char* connectors;
  const char* log[3];
  bool capable;
};

TEST(NvidiaV2Adapter, CouldManageMultipleDisplayNeedsThePanelAndADigitalPlug) {
  const Capability rows[] = {
      {"internal 1366x768 active", {"true", "false", "false"}, false},
      {"internal 1366x768 active, crt, dvi", {"true", "false", "false"}, false},
      {"internal 1366x768 active, hdmi", {"true", "true", "false"}, true},
      {"internal 1366x768 active, dp", {"true", "false", "true"}, true},
      {"edp 1366x768 active, hdmi, dp", {"true", "true", "true"}, true},
      {"crt 1024x768 active, hdmi, dp", {"false", "true", "true"}, false},
  };
  for (const Capability& row : rows) {
    NvidiaHost host(std::string("win7 nvidia: ") + row.connectors, kChecked);
    host.Forget();
    EXPECT_EQ(host.box().CouldManageMultipleDisplay(&host.nv()), row.capable) << row.connectors;
    EXPECT_EQ(host.TakeLogWithSeverity(), CapabilityLines(row.log[0], row.log[1], row.log[2]))
        << row.connectors;
  }
}

TEST(NvidiaV2Adapter, TypesThatCount) {
  const struct {
    uint32_t type;
    bool hdmi;
    bool display_port;
  } rows[] = {{97, true, false},  {99, true, false},  {70, false, true},  {72, false, true},
              {100, false, true}, {101, false, true}, {23, false, false}, {49, false, false},
              {0, false, false},  {113, false, false}};
  for (const auto& row : rows) {
    NvidiaHost host("win7 nvidia: internal 1366x768 active, hdmi", kChecked);
    host.connector("hdmi").nvidia_connector_type = row.type;
    host.Forget();
    EXPECT_EQ(host.box().CouldManageMultipleDisplay(&host.nv()), row.hdmi || row.display_port)
        << row.type;
    EXPECT_EQ(host.TakeLogWithSeverity(), CapabilityLines("true", row.hdmi ? "true" : "false",
                                                          row.display_port ? "true" : "false"))
        << row.type;
  }
}

// The last GPU that answers is asked for the connectors of all.
TEST(NvidiaV2Adapter, OutputsOfAllGpusAreLookedUpOnTheLast) {
  NvidiaHost host("win7 nvidia, nvidia: internal 1366x768 active, hdmi@2 1920x1080");
  host.nv();
  host.machine.JournalReads(true);
  EXPECT_FALSE(host.box().CouldManageMultipleDisplay(&host.nv()));
  EXPECT_EQ(host.machine.TakeJournal(),
            "NvAPI_GPU_GetAllOutputs(gpu=0)=0\n"
            "NvAPI_GPU_GetAllOutputs(gpu=1)=0\n"
            "NvAPI_GPU_GetConnectorInfo(gpu=1 output=0x10000)=-5\n"
            "NvAPI_GPU_GetConnectorInfo(gpu=1 output=0x20000)=0\n");
}

TEST(NvidiaV2Adapter, GpuThatFailsIsNotTheLast) {
  NvidiaHost host("win7 nvidia, nvidia: internal 1366x768 active, hdmi 1920x1080, dp@2");
  host.nv();
  host.machine.Fail("NvAPI_GPU_GetAllOutputs", 2);
  EXPECT_TRUE(host.box().CouldManageMultipleDisplay(&host.nv()));
}

TEST(NvidiaV2Adapter, RefusedConnectorIsNotFound) {
  NvidiaHost host(kMachine);
  host.nv();
  host.machine.Fail("NvAPI_GPU_GetConnectorInfo", 1);
  EXPECT_FALSE(host.box().CouldManageMultipleDisplay(&host.nv()));
  host.machine.Fail("NvAPI_GPU_GetConnectorInfo", 2);
  EXPECT_FALSE(host.box().CouldManageMultipleDisplay(&host.nv()));
  EXPECT_TRUE(host.box().CouldManageMultipleDisplay(&host.nv()));
}

TEST(NvidiaV2Adapter, NothingIsFoundWhereNoGpuAnswers) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  host.machine.Fail("NvAPI_GPU_GetAllOutputs", 1);
  EXPECT_FALSE(host.box().CouldManageMultipleDisplay(&host.nv()));
  EXPECT_EQ(host.TakeLogWithSeverity(), CapabilityLines("false", "false", "false"));
}

TEST(NvidiaV2Adapter, IsCrossAdapterCapableFromWindows7On) {
  for (const char* windows : {"xp", "2003", "vista", "2008"}) {
    NvidiaHost host(std::string(windows) + " nvidia: internal 1366x768 active, hdmi 1920x1080");
    EXPECT_FALSE(host.nv().IsCrossAdapterCapable()) << windows;
  }
  for (const char* windows : {"win7", "win8", "win10"}) {
    NvidiaHost host(std::string(windows) + " nvidia: internal 1366x768 active, hdmi 1920x1080");
    EXPECT_TRUE(host.nv().IsCrossAdapterCapable()) << windows;
  }
  NvidiaHost host("win7 nvidia: internal 1366x768 active, crt 1024x768");
  EXPECT_FALSE(host.nv().IsCrossAdapterCapable());
}

}  // namespace
