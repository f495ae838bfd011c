// What NVIDIA's oldest back-end reads: the displays and the mode.
#include "sim/faces/NvidiaDriver.h"
#include "tests/behaviour/NvidiaPanelHost.h"

namespace {

constexpr char kPair[] = "xp nvidia: internal 1280x800 active, crt 1280x1024";
constexpr char kClone[] = "xp nvidia: clone internal 1280x800 active, crt 1280x1024 active";
constexpr char kExtended[] = "xp nvidia: internal 1280x800 active, crt 1280x1024 active";

// --- Displays.

TEST(NvidiaMMImplDisplays, ConnectedAndActiveAreReadFromTheGpus) {
  NvidiaPanelHost host("xp nvidia: internal 1280x800 active, crt 1280x1024, tv, dvi, hdmi, dp");
  EXPECT_EQ(host.Connected(), "3 (2)");
  EXPECT_EQ(host.Active(), "1 (1)");
}

TEST(NvidiaMMImplDisplays, EveryKindHasItsBit) {
  NvidiaPanelHost host(
      "xp nvidia: internal 1280x800 active, crt 800x600, tv 800x600, dvi 800x600, hdmi 800x600, "
      "dp 800x600");
  EXPECT_EQ(host.Connected(), "63 (6)");
}

TEST(NvidiaMMImplDisplays, TwoOfAKindCountOnce) {
  NvidiaPanelHost host("xp nvidia: internal 1280x800 active, dvi 800x600, dvi2 800x600");
  EXPECT_EQ(host.Connected(), "9 (2)");
}

TEST(NvidiaMMImplDisplays, UnknownConnectorHasNone) {
  NvidiaPanelHost host(kPair);
  host.connector("crt").nvidia_connector_type = 1;
  EXPECT_EQ(host.Connected(), "1 (1)");
}

TEST(NvidiaMMImplDisplays, SecondGpuAddsItsOwn) {
  NvidiaPanelHost host("xp nvidia, nvidia: internal 1280x800 active, crt@2 800x600 active");
  EXPECT_EQ(host.Connected(), "3 (2)");
  EXPECT_EQ(host.Active(), "3 (2)");
}

TEST(NvidiaMMImplDisplays, LastOutputIsAskedToo) {
  NvidiaPanelHost host(kPair);
  host.connector("crt").nvidia_output = 0x80000;
  EXPECT_EQ(host.Connected(), "3 (2)");
}

TEST(NvidiaMMImplDisplays, OutputsBeyondTheLastAreNot) {
  NvidiaPanelHost host(kPair);
  host.connector("crt").nvidia_output = 0x100000;
  EXPECT_EQ(host.Connected(), "1 (1)");
}

TEST(NvidiaMMImplDisplays, HdmiPlugWithAnotherMonitorIsDvi) {
  NvidiaPanelHost host("xp nvidia: internal 1280x800 active, hdmi 1920x1080");
  EXPECT_EQ(host.Connected(), "17 (2)");
  host.connector("hdmi").nvidia_connector_type = 23;  // and its monitor does not say HDMI
  EXPECT_EQ(host.Connected(), "9 (2)");
}

TEST(NvidiaMMImplDisplays, ActiveHdmiPlugWithAnotherMonitorIsDvi) {
  NvidiaPanelHost host("xp nvidia: internal 1280x800 active, hdmi 1920x1080 active");
  EXPECT_EQ(host.Active(), "17 (2)");
  host.connector("hdmi").nvidia_connector_type = 23;
  EXPECT_EQ(host.Active(), "9 (2)");
}

TEST(NvidiaMMImplDisplays, HdmiThatCannotBeAskedIsDvi) {
  NvidiaPanelHost host("xp nvidia: internal 1280x800 active, hdmi 1920x1080");
  host.nvidia();
  host.machine.Fail("NvAPI_GetHDMISupportInfo", 1);
  EXPECT_EQ(host.Connected(), "9 (2)");
}

TEST(NvidiaMMImplDisplays, HdmiIsAskedAlsoWithoutADisplayHandle) {
  NvidiaPanelHost host("xp nvidia: internal 1280x800 active, hdmi 1920x1080");
  host.nvidia();
  host.machine.Fail("NvAPI_EnumNvidiaDisplayHandle", 1, sim::NvCode(-7));
  EXPECT_EQ(host.Connected(), "17 (2)");
}

TEST(NvidiaMMImplDisplays, HdmiIsAskedThroughTheFirstDisplayHandle) {
  NvidiaPanelHost host("xp nvidia: internal 1280x800 active, hdmi 1920x1080 active");
  host.nvidia();
  host.machine.JournalReads(true);
  host.Forget();
  host.Connected();
  const std::string journal = host.machine.TakeJournal();
  EXPECT_EQ(CountOf(journal, "NvAPI_GetHDMISupportInfo(handle=1 "), 1u) << journal;
}

TEST(NvidiaMMImplDisplays, GpusThatCannotBeListedAreAFailure) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  host.machine.Fail("NvAPI_EnumPhysicalGPUs", 1);
  EXPECT_EQ(host.Connected(), "failed");
  host.machine.Fail("NvAPI_EnumPhysicalGPUs", 1);
  EXPECT_EQ(host.Active(), "failed");
}

TEST(NvidiaMMImplDisplays, NoGpuIsAFailure) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  host.model().adapters[0].disabled = true;
  EXPECT_EQ(host.Connected(), "failed");
}

// A driver that tells another number of GPUs than there is room for, or none at all.
using QueryInterface = void* (*)(uint32_t id);
QueryInterface g_query = nullptr;
uint32_t g_gpus_told = 0;

int32_t TellGpus(void** gpus, uint32_t* count) {
  for (size_t i = 0; i < 64; ++i) gpus[i] = sim::NvGpuOf(0);
  *count = g_gpus_told;
  return 0;
}

void* QueryOfManyGpus(uint32_t id) {
  constexpr uint32_t kEnumPhysicalGpus = 0xE5AC921F;
  return id == kEnumPhysicalGpus ? sim::Erase(TellGpus) : g_query(id);
}

std::string ConnectedWithGpus(uint32_t told, uint32_t* asked) {
  NvidiaPanelHost host(kPair);
  sim::Entry& query = host.machine.state().invented.at(sim::kNvidiaLibrary).entries.at(0);
  g_query = reinterpret_cast<QueryInterface>(query.function);
  query.function = sim::Erase(QueryOfManyGpus);
  host.nvidia();
  g_gpus_told = told;
  const std::string connected = host.Connected();
  *asked = host.machine.Calls("NvAPI_GPU_GetConnectedOutputs");
  return connected;
}

TEST(NvidiaMMImplDisplays, GpusBeyondTheTableAreLeftOut) {
  uint32_t asked = 0;
  EXPECT_EQ(ConnectedWithGpus(64, &asked), "3 (2)");
  EXPECT_EQ(asked, 64u);
  EXPECT_EQ(ConnectedWithGpus(65, &asked), "3 (2)");
  EXPECT_EQ(asked, 64u);
}

TEST(NvidiaMMImplDisplays, SuccessWithoutAGpuIsAFailure) {
  uint32_t asked = 0;
  EXPECT_EQ(ConnectedWithGpus(0, &asked), "failed");
  EXPECT_EQ(asked, 0u);
}

TEST(NvidiaMMImplDisplays, GpuThatDoesNotAnswerHasNone) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  host.machine.Fail("NvAPI_GPU_GetConnectedOutputs", 1);
  EXPECT_EQ(host.Connected(), "0 (0)");
  host.machine.Fail("NvAPI_GPU_GetActiveOutputs", 1);
  EXPECT_EQ(host.Active(), "0 (0)");
}

TEST(NvidiaMMImplDisplays, FirstGpusFailureLeavesTheSecond) {
  NvidiaPanelHost host("xp nvidia, nvidia: internal 1280x800 active, crt@2 800x600 active");
  host.nvidia();
  host.machine.Fail("NvAPI_GPU_GetConnectedOutputs", 1);
  EXPECT_EQ(host.Connected(), "2 (1)");
}

TEST(NvidiaMMImplDisplays, ConnectorThatDoesNotAnswerIsLeftOut) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  host.machine.Fail("NvAPI_GPU_GetConnectorInfo", 1);  // the CRT's has the lower bit
  EXPECT_EQ(host.Connected(), "1 (1)");
}

TEST(NvidiaMMImplDisplays, AbsentOutputsAreAFailureAndNothingIsAsked) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  const uint32_t asked = host.machine.Calls("NvAPI_EnumPhysicalGPUs");
  uint32_t one = 0xAAAA;
  EXPECT_FALSE(host.nvidia().GetConnectedDisplays(nullptr, &one));
  EXPECT_FALSE(host.nvidia().GetConnectedDisplays(&one, nullptr));
  EXPECT_FALSE(host.nvidia().GetActiveDisplays(nullptr, &one));
  EXPECT_FALSE(host.nvidia().GetActiveDisplays(&one, nullptr));
  EXPECT_EQ(one, 0xAAAAu);
  EXPECT_EQ(host.machine.Calls("NvAPI_EnumPhysicalGPUs"), asked);
}

TEST(NvidiaMMImplDisplays, FailureLeavesZeroes) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  host.machine.Fail("NvAPI_EnumPhysicalGPUs", 1);
  uint32_t displays = 0xAAAA;
  uint32_t count = 0xBBBB;
  EXPECT_FALSE(host.nvidia().GetConnectedDisplays(&displays, &count));
  EXPECT_EQ(displays, 0u);
  EXPECT_EQ(count, 0u);
}

TEST(NvidiaMMImplDisplays, TellsTheOutputsOfEachGpu) {
  NvidiaPanelHost host("xp nvidia, nvidia: internal 1280x800 active, crt@2 800x600, dvi 800x600",
                       L"--v=2");
  host.nvidia();
  host.ForgetLog();
  host.Connected();
  EXPECT_EQ(host.TakeLog(), "GetMonitors() outputs = 0x30000\nGetMonitors() outputs = 0x1\n");
  host.Active();
  EXPECT_EQ(host.TakeLog(), "GetMonitors() outputs = 0x10000\nGetMonitors() outputs = 0\n");
}

// --- The mode.

TEST(NvidiaMMImplMode, IsWhatTheMachineShows) {
  EXPECT_EQ(NvidiaPanelHost(kPair).Mode(), "1 of 1");
  EXPECT_EQ(NvidiaPanelHost(kClone).Mode(), "2 of 3");
  EXPECT_EQ(NvidiaPanelHost(kExtended).Mode(), "4 of 3");
  NvidiaPanelHost span(kClone);
  span.model().sources[0].mode = {2560, 800, 32, 60};
  EXPECT_EQ(span.Mode(), "8 of 3");
  span.model().sources[0].mode = {1280, 1600, 32, 60};
  EXPECT_EQ(span.Mode(), "16 of 3");
}

struct StateRow {
  uint32_t state;
  const char* single;    // on a desktop that is not extended
  const char* extended;  // on one that is
};

class NvidiaMMImplState : public testing::TestWithParam<StateRow> {};

std::string ModeInState(const char* text, uint32_t state) {
  NvidiaPanelHost host(text);
  host.nvidia();
  host.machine.Fail("NvGetWindowsDisplayState", 1, state);
  return host.Mode();
}

TEST_P(NvidiaMMImplState, GivesTheMode) {
  EXPECT_EQ(ModeInState(kPair, GetParam().state), GetParam().single);
  EXPECT_EQ(ModeInState(kExtended, GetParam().state), GetParam().extended);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, NvidiaMMImplState,
    testing::Values(StateRow{0xFFFFFFFF, "failed", "failed"}, StateRow{0, "failed", "failed"},
                    StateRow{1, "failed", "failed"}, StateRow{2, "failed", "failed"},
                    StateRow{3, "failed", "failed"}, StateRow{4, "1 of 1", "4 of 3"},
                    StateRow{5, "4 of 1", "4 of 3"}, StateRow{6, "2 of 1", "4 of 3"},
                    StateRow{7, "8 of 1", "4 of 3"}, StateRow{8, "16 of 1", "4 of 3"},
                    StateRow{9, "failed", "4 of 3"}, StateRow{0x7FFFFFFF, "failed", "4 of 3"}));

TEST(NvidiaMMImplMode, FailureWritesNothing) {
  for (const uint32_t state : {3u, 9u}) {
    NvidiaPanelHost host(kPair);
    host.nvidia();
    host.machine.Fail("NvGetWindowsDisplayState", 1, state);
    uint32_t mode = 0xEE;
    uint32_t displays = 0xEE;
    EXPECT_FALSE(host.nvidia().GetCurrentDisplayMode(&mode, &displays));
    EXPECT_EQ(mode, 0xEEu);
    EXPECT_EQ(displays, 0xEEu);
  }
}

TEST(NvidiaMMImplMode, ActiveDisplaysMustBeKnown) {
  NvidiaPanelHost host(kExtended);
  host.nvidia();
  host.machine.Fail("NvAPI_EnumPhysicalGPUs", 1);
  EXPECT_EQ(host.Mode(), "failed");
}

TEST(NvidiaMMImplMode, AbsentOutputsAreAFailureAndNothingIsAsked) {
  NvidiaPanelHost host(kPair);
  uint32_t one = 0;
  EXPECT_FALSE(host.nvidia().GetCurrentDisplayMode(nullptr, &one));
  EXPECT_FALSE(host.nvidia().GetCurrentDisplayMode(&one, nullptr));
  EXPECT_EQ(host.machine.Calls("NvGetWindowsDisplayState"), 0u);
}

// A library that takes the two other arguments as well.
UINT g_device = 0xEE;
int32_t WINAPI StateThatWrites(UINT device, uint32_t* mode, uint32_t* displays) {
  g_device = device;
  *mode = 0x1234;
  *displays = 0x5678;
  return 6;
}

TEST(NvidiaMMImplMode, IsTheLibrarysResultAndNotWhatItWrites) {
  NvidiaPanelHost host(kClone);
  host.Replace("NvGetWindowsDisplayState", StateThatWrites);
  EXPECT_EQ(host.Mode(), "2 of 3");
  EXPECT_EQ(g_device, 0u);
}

}  // namespace
