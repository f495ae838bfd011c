// The EDID of a display, for the library itself and for its extension.
#include <gtest/gtest.h>

#include <cstring>

#include "sim/MachineState.h"
#include "tests/support/NvidiaHost.h"

namespace {

constexpr char kMachine[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;

int32_t TellsNoGpu(NvDisplayHandle, NvPhysicalGpuHandle*, uint32_t* count) {
  *count = 0;
  return 0;
}

// "256 bytes, as the monitor's", or "failed".
std::string ReadEdid(NvidiaHost* host, bool through_extension, uint32_t display,
                     const std::string& id) {
  EdidBlob blob;
  const bool known = through_extension ? host->nv().GetEDID(display, &blob)
                                       : host->nv().GetMonitorEDID(display, &blob);
  if (!known) return blob.cb == 0 && blob.pv == nullptr ? "failed" : "failed and wrote";
  std::vector<uint8_t> expected = host->connector(id).monitor->edid;
  expected.resize(256, 0);
  const bool same = std::equal(expected.begin(), expected.end(), static_cast<uint8_t*>(blob.pv));
  if (through_extension) {
    host->nv().FreeEDID(&blob);
  } else {
    host->nv().FreeMonitorEDID(&blob);
  }
  return std::to_string(blob.cb) + (same ? " bytes, as the monitor's" : " bytes, others");
}
constexpr char kMonitors[] = "256 bytes, as the monitor's";

TEST(NvidiaV2Edid, Of256BytesOfTheDisplayThatWasMet) {
  NvidiaHost host(kMachine);
  host.Connected();
  EXPECT_EQ(ReadEdid(&host, false, kHdmi, "hdmi"), kMonitors);
  EXPECT_EQ(ReadEdid(&host, false, kNb, "internal"), kMonitors);
}

TEST(NvidiaV2Edid, ExtensionMeetsTheDisplaysFirst) {
  NvidiaHost host(kMachine);
  host.nv();
  EXPECT_EQ(ReadEdid(&host, false, kHdmi, "hdmi"), "failed");
  EXPECT_EQ(ReadEdid(&host, true, kHdmi, "hdmi"), kMonitors);
  EXPECT_EQ(ReadEdid(&host, false, kNb, "internal"), kMonitors);
}

TEST(NvidiaV2Edid, CoursesOfBothReads) {
  NvidiaHost host(kMachine);
  host.Connected();
  host.machine.JournalReads(true);
  ReadEdid(&host, false, kHdmi, "hdmi");
  EXPECT_EQ(host.machine.TakeJournal(),
            "NvAPI_EnumNvidiaDisplayHandle(0)=0\n"
            "NvAPI_EnumNvidiaDisplayHandle(1)=-7\n"
            "NvAPI_GetPhysicalGPUsFromDisplay(handle=1)=0\n"
            "NvAPI_GPU_GetEDID(gpu=0 output=0x20000)=0\n");
  ReadEdid(&host, true, kHdmi, "hdmi");
  EXPECT_EQ(host.machine.TakeJournal(),
            "NvAPI_EnumPhysicalGPUs()=0\n"
            "NvAPI_EnumNvidiaDisplayHandle(0)=0\n"
            "NvAPI_EnumNvidiaDisplayHandle(1)=-7\n"
            "NvAPI_GetPhysicalGPUsFromDisplay(handle=1)=0\n"
            "NvAPI_GPU_GetConnectedOutputs(gpu=0)=0\n"
            "NvAPI_GPU_GetEDID(gpu=0 output=0x20000)=0\n");
}

// A driver whose EDID function keeps the record that it is asked with.
void* (*g_driver)(uint32_t id) = nullptr;
NV_EDID g_asked;

int32_t KeepsTheRecord(NvPhysicalGpuHandle, uint32_t, NV_EDID* record) {
  g_asked = *record;
  return -1;
}
void* QueryWithKeeper(uint32_t id) {
  return id == 0x37D32E69 ? reinterpret_cast<void*>(KeepsTheRecord) : g_driver(id);
}

TEST(NvidiaV2Edid, RecordHasItsVersionWordItsSizeAndNothingElse) {
  NvidiaHost host(kMachine);
  sim::Entry& entry = host.machine.state().invented.at(sim::kNvidiaLibrary).entries.at(0);
  g_driver = reinterpret_cast<void* (*)(uint32_t)>(entry.function);
  entry.function = reinterpret_cast<void*>(QueryWithKeeper);
  host.Connected();
  EXPECT_EQ(ReadEdid(&host, false, kHdmi, "hdmi"), "failed");
  NV_EDID expected = {};
  expected.version = 0x30110;
  expected.sizeofEDID = 272;
  EXPECT_EQ(std::memcmp(&g_asked, &expected, sizeof(expected)), 0);
}

TEST(NvidiaV2Edid, EachRefusalIsAFailureWithoutALogLine) {
  for (const char* function :
       {"NvAPI_EnumNvidiaDisplayHandle", "NvAPI_GetPhysicalGPUsFromDisplay", "NvAPI_GPU_GetEDID"}) {
    NvidiaHost host(kMachine);
    host.Connected();
    host.ForgetLog();
    host.machine.Fail(function, 1);
    EXPECT_EQ(ReadEdid(&host, false, kHdmi, "hdmi"), "failed") << function;
    host.machine.Fail(function, 1);
    EXPECT_EQ(ReadEdid(&host, true, kHdmi, "hdmi"), "failed") << function;
    EXPECT_EQ(host.TakeLog(), "") << function;
  }
}

TEST(NvidiaV2Edid, RefusedListOfDisplaysLeavesTheOutputMetBefore) {
  NvidiaHost host(kMachine);
  host.Connected();
  host.machine.Fail("NvAPI_GPU_GetConnectedOutputs", 1);
  EXPECT_EQ(ReadEdid(&host, true, kHdmi, "hdmi"), kMonitors);
}

TEST(NvidiaV2Edid, HandleOfNoGpuIsAFailure) {
  NvidiaHost host(kMachine);
  host.Connected();
  host.box().ReplaceGetPhysicalGPUsFromDisplay(TellsNoGpu);
  EXPECT_EQ(ReadEdid(&host, false, kHdmi, "hdmi"), "failed");
  EXPECT_EQ(host.machine.Calls("NvAPI_GPU_GetEDID"), 0u);
}

TEST(NvidiaV2Edid, WithoutGpusIsAFailureBeforeTheDriverIsAsked) {
  NvidiaHost host(kMachine);
  host.ostrel();
  host.machine.Fail("NvAPI_EnumPhysicalGPUs", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(ReadEdid(&host, false, kNb, "internal"), "failed");
  EXPECT_EQ(ReadEdid(&host, true, kNb, "internal"), "failed");
  EXPECT_EQ(host.machine.Calls("NvAPI_EnumNvidiaDisplayHandle"), 0u);
}

TEST(NvidiaV2Edid, LookUpAmongNoDisplaysFailsItsCheckForEachDisplay) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  ReadEdid(&host, false, kNb | kHdmi, "hdmi");
  EXPECT_EQ(host.TakeLog(),
            "Check failed: !m_idCached.empty(). \nCheck failed: !m_idCached.empty(). \n");
  ReadEdid(&host, false, 0, "hdmi");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2Edid, DisplayThatWasNotMetIsAskedForAsNoOutput) {
  NvidiaHost host(kMachine, kChecked);
  host.Connected();
  host.Forget();
  host.machine.JournalReads(true);
  EXPECT_EQ(ReadEdid(&host, false, kCrt, "hdmi"), "failed");
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "NvAPI_GPU_GetEDID(gpu=0 output=0x0)=-5\n"), 1u);
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2Edid, MissingPlaceIsAFailure) {
  NvidiaHost host(kMachine);
  host.Connected();
  EXPECT_FALSE(host.nv().GetMonitorEDID(kNb, nullptr));
  EXPECT_FALSE(host.nv().GetEDID(kNb, nullptr));
  host.nv().FreeMonitorEDID(nullptr);
  host.nv().FreeEDID(nullptr);
}

}  // namespace
