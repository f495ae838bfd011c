// Every function of the driver fails for good, or is not offered at all: each operation gives its
// own failure, what does not need the function works, and nothing leaks.
#include <gtest/gtest.h>

#include "tests/support/NvidiaHost.h"

namespace {

constexpr char kMachine[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;

std::string EdidSize(NvidiaHost* host, bool through_extension) {
  EdidBlob blob;
  const bool known = through_extension ? host->nv().GetEDID(kHdmi, &blob)
                                       : host->nv().GetMonitorEDID(kHdmi, &blob);
  if (known) host->nv().FreeEDID(&blob);
  return std::to_string(blob.cb);
}

std::string Word(BOOL result) { return std::to_string(result); }

// What all operations say, one after the other on one machine.
std::string Course(NvidiaHost* host) {
  if (host->bare()->Initial() == 0) return "no driver";
  std::string told = host->Connected();
  told += "; " + host->Active();
  told += "; " + host->Mode();
  told += "; " + host->Settings(kNb);
  told += "; " + EdidSize(host, false) + " " + EdidSize(host, true);
  told += "; " + Word(host->nv().IsDiscreteOnly()) + " " +
          Word(host->box().CouldManageMultipleDisplay(&host->nv()));
  told += "; extend " + Word(host->nv().EnableExtendMode(TRUE));
  told += " off " + Word(host->nv().EnableExtendMode(FALSE));
  told += " on hdmi " + Word(host->nv().EnableExtendModeOnDisplays(TRUE, kHdmi));
  told += " off " + Word(host->nv().EnableExtendModeOnDisplays(FALSE, kHdmi));
  told += "; single " + Word(host->nv().SetNewDisplayMode(IMMonitor::DM_SINGLE, kHdmi));
  return told + "; " + host->machine.Topology();
}

constexpr char kSound[] =
    "0x11 (2); 0x1 (1); 0x1 0x1; 1366x768x32@60 turned 0; 256 256; 1 1; "
    "extend 1 off 1 on hdmi 1 off 1; single 1; single hdmi";
constexpr char kNoConnectors[] =
    "0x0 (0); 0x0 (0); failed 0xee 0xee; 1366x768x32@60 turned 0; 0 0; 1 0; "
    "extend 1 off 1 on hdmi 0 off 1; single 0; single internal";

struct FaultRow {
  const char* function;
  const char* told;
};
constexpr FaultRow kFaults[] = {
    {"NvAPI_Initialize", "no driver"},
    {"NvAPI_GetInterfaceVersionString", kSound},
    {"NvAPI_EnumPhysicalGPUs",
     "failed; failed; failed 0xee 0xee; 1366x768x32@60 turned 0; 0 0; 1 0; "
     "extend 0 off 1 on hdmi 0 off 1; single 0; single internal"},
    {"NvAPI_EnumNvidiaDisplayHandle",
     "0x11 (2); 0x1 (1); 0x1 0x1; failed; 0 0; 1 1; "
     "extend 0 off 1 on hdmi 0 off 1; single 0; single internal"},
    {"NvAPI_GetPhysicalGPUsFromDisplay",
     "0x11 (2); 0x1 (1); 0x1 0x1; 1366x768x32@60 turned 0; 0 0; 1 1; "
     "extend 1 off 1 on hdmi 1 off 1; single 1; single hdmi"},
    {"NvAPI_GetAssociatedDisplayOutputId", kSound},
    {"NvAPI_GPU_GetAllOutputs", kNoConnectors},
    {"NvAPI_GPU_GetConnectedOutputs",
     "0x0 (0); 0x1 (1); 0x1 0x1; 1366x768x32@60 turned 0; 0 0; 1 1; "
     "extend 0 off 1 on hdmi 1 off 1; single 0; single internal"},
    {"NvAPI_GPU_GetActiveOutputs",
     "0x11 (2); failed; failed 0xee 0xee; 1366x768x32@60 turned 0; 256 256; 1 1; "
     "extend 1 off 1 on hdmi 1 off 1; single 1; single hdmi"},
    {"NvAPI_GPU_GetConnectorInfo", kNoConnectors},
    {"NvAPI_GPU_GetEDID",
     "0x11 (2); 0x1 (1); 0x1 0x1; 1366x768x32@60 turned 0; 0 0; 1 1; "
     "extend 1 off 1 on hdmi 1 off 1; single 1; single hdmi"},
    {"NvAPI_GetDisplaySettings",
     "0x11 (2); 0x1 (1); 0x1 0x1; failed; 256 256; 1 1; "
     "extend 1 off 1 on hdmi 1 off 1; single 1; single hdmi"},
    {"NvAPI_SetViewEx",
     "0x11 (2); 0x1 (1); 0x1 0x1; 1366x768x32@60 turned 0; 256 256; 1 1; "
     "extend 0 off 1 on hdmi 0 off 1; single 0; single internal"},
    {"NvAPI_Coproc_GetCoprocStatus",
     "0x11 (2); 0x1 (1); 0x1 0x1; 1366x768x32@60 turned 0; 256 256; 0 1; "
     "extend 1 off 1 on hdmi 1 off 1; single 1; single hdmi"},
};

// With everything given back but the library itself.
void ExpectBalance(NvidiaHost* host, const char* function) {
  host->End();
  EXPECT_FALSE(host->box().IsNvApiLoaded()) << function;
  EXPECT_EQ(host->machine.Outstanding(), "") << function;
}

TEST(NvidiaV2Faults, NoneIsTheWholeCourse) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(Course(&host), kSound);
  ExpectBalance(&host, "none");
}

TEST(NvidiaV2Faults, FunctionThatFailsForGood) {
  for (const FaultRow& row : kFaults) {
    NvidiaHost host(kMachine);
    host.ostrel();
    host.machine.Fail(row.function, 1, 0, sim::Machine::Repeat::kFromThenOn);
    host.machine.ForgiveUnusedFaults();
    EXPECT_EQ(Course(&host), row.told) << row.function;
    ExpectBalance(&host, row.function);
  }
}

TEST(NvidiaV2Faults, FunctionThatIsNotOffered) {
  for (const FaultRow& row : kFaults) {
    NvidiaHost host(kMachine);
    sim::RemoveNvApi(host.machine, row.function);
    EXPECT_EQ(Course(&host), row.told) << row.function;
    EXPECT_EQ(host.machine.Calls(row.function), 0u) << row.function;
    ExpectBalance(&host, row.function);
  }
}

// The n-th call of each function fails once: whatever came of it, the next object works.
TEST(NvidiaV2Faults, OneFailureAnywhereLeavesNothingBehind) {
  for (const FaultRow& row : kFaults) {
    for (uint32_t nth = 1; nth < 200; ++nth) {
      NvidiaHost host(kMachine);
      host.ostrel();
      host.machine.Fail(row.function, nth);
      host.machine.ForgiveUnusedFaults();
      Course(&host);
      if (host.machine.FaultsGiven() == 0) break;
      host.machine.ClearFaults();
      host.Adopt(host.box().NewV2());
      EXPECT_EQ(host.nv().EnableExtendModeOnDisplays(FALSE, 0), 1);
      EXPECT_EQ(host.Connected(), "0x11 (2)") << row.function << " " << nth;
      EXPECT_EQ(host.nv().SetNewDisplayMode(IMMonitor::DM_CLONE, kNb | kHdmi), 1)
          << row.function << " " << nth;
      ExpectBalance(&host, row.function);
    }
  }
}

}  // namespace
