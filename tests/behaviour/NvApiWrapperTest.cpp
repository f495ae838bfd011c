// The binding of NVIDIA's driver interface, and the calls that check their arguments.
#include <gtest/gtest.h>

#include "tests/support/NvidiaHost.h"

namespace {

constexpr char kMachine[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080";
constexpr char kNoNvidia[] = "win7 intel: internal 1366x768 active";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";
constexpr char kVersionLine[] = "INFO NVAPI interface version: NVAPI Open Interface 1.0\n";
constexpr char kNoVersionLine[] = "INFO NVAPI interface version: \n";

struct WrapperHost : NvidiaHost {
  explicit WrapperHost(const std::string& text = kMachine, const std::wstring& switches = L"")
      : NvidiaHost(text, switches) {}

  std::unique_ptr<NVApiWrapper> NewWrapper() {
    return std::unique_ptr<NVApiWrapper>(box().NewWrapper());
  }
  /// One that is initialised; the log starts behind it.
  std::unique_ptr<NVApiWrapper> NewReady() {
    std::unique_ptr<NVApiWrapper> wrapper = NewWrapper();
    EXPECT_TRUE(box().Initialize(wrapper.get()));
    ForgetLog();
    return wrapper;
  }
  NvPhysicalGpuHandle gpu() { return static_cast<NvPhysicalGpuHandle>(sim::NvGpuOf(0)); }
};

// --- Binding.

TEST(NvApi, LibraryIsLoadedByInitializeOnly) {
  WrapperHost host;
  host.ostrel();
  const size_t modules = host.Modules();
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewWrapper();
  EXPECT_FALSE(host.box().IsNvApiLoaded());
  EXPECT_EQ(host.Modules(), modules);
  EXPECT_TRUE(host.box().Initialize(wrapper.get()));
  EXPECT_TRUE(host.box().IsNvApiLoaded());
  EXPECT_EQ(host.Modules(), modules + 1);
}

TEST(NvApi, EveryFunctionIsAskedForByItsNumberOnce) {
  WrapperHost host;
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewWrapper();
  host.machine.JournalReads(true);
  host.box().Initialize(wrapper.get());
  const std::string journal = host.machine.TakeJournal();
  for (const char* name : {"NvAPI_Initialize",
                           "NvAPI_GetInterfaceVersionString",
                           "NvAPI_EnumPhysicalGPUs",
                           "NvAPI_EnumNvidiaDisplayHandle",
                           "NvAPI_GetPhysicalGPUsFromDisplay",
                           "NvAPI_GetAssociatedDisplayOutputId",
                           "NvAPI_GPU_GetAllOutputs",
                           "NvAPI_GPU_GetConnectedOutputs",
                           "NvAPI_GPU_GetActiveOutputs",
                           "NvAPI_GPU_GetConnectorInfo",
                           "NvAPI_GPU_GetEDID",
                           "NvAPI_GetHDMISupportInfo",
                           "NvAPI_GetDisplaySettings",
                           "NvAPI_SetViewEx",
                           "NvAPI_Coproc_GetCoprocStatus",
                           "NvAPI_SYS_GetDisplayIdFromGpuAndOutputId",
                           "NvAPI_SYS_GetGpuAndOutputIdFromDisplayId",
                           "NvAPI_DISP_SetDisplayConfig",
                           "NvAPI_GetHybridMode",
                           "NvAPI_DISP_GetHCloneTopology",
                           "NvAPI_DISP_SetHCloneTopology"}) {
    EXPECT_EQ(CountOf(journal, "nvapi_QueryInterface(" + std::string(name) + ")=1\n"), 1u)
        << name << "\n"
        << journal;
  }
  EXPECT_EQ(CountOf(journal, "nvapi_QueryInterface("), 21u) << journal;
}

TEST(NvApi, OneBindingServesAllAndTheLastUserGivesItBack) {
  WrapperHost host;
  host.ostrel();
  const size_t modules = host.Modules();
  std::unique_ptr<NVApiWrapper> first = host.NewReady();
  std::unique_ptr<NVApiWrapper> second = host.NewReady();
  EXPECT_EQ(host.Modules(), modules + 1);
  EXPECT_EQ(host.machine.Calls("nvapi_QueryInterface"), 21u);
  EXPECT_EQ(sim::NvInitializations(host.machine), 2u);
  first.reset();
  EXPECT_TRUE(host.box().IsNvApiLoaded());
  uint32_t display_id = 0;
  EXPECT_TRUE(
      host.box().GetDisplayIdFromGpuAndOutputId(second.get(), host.gpu(), 0x10000, &display_id));
  second.reset();
  EXPECT_FALSE(host.box().IsNvApiLoaded());
  EXPECT_EQ(host.Modules(), modules);
  EXPECT_EQ(host.machine.Outstanding(), "");
}

TEST(NvApi, CanBeBoundAgain) {
  WrapperHost host;
  host.NewReady().reset();
  EXPECT_FALSE(host.box().IsNvApiLoaded());
  const std::unique_ptr<NVApiWrapper> again = host.NewReady();
  EXPECT_TRUE(host.box().IsNvApiLoaded());
  NvTopology topology = {};
  topology.version = kNvTopologyVersion;
  EXPECT_TRUE(host.box().GetDisplayTopology(again.get(), &topology));
}

TEST(NvApi, LibraryWithoutTheExportIsGivenBack) {
  WrapperHost host;
  host.ostrel();
  const size_t modules = host.Modules();
  EXPECT_FALSE(host.box().LoadNvApi("user32.dll"));
  EXPECT_FALSE(host.box().IsNvApiLoaded());
  EXPECT_EQ(host.Modules(), modules);
}

TEST(NvApi, LoadingAgainFreesTheOneBefore) {
  WrapperHost host;
  host.ostrel();
  const size_t modules = host.Modules();
  EXPECT_TRUE(host.box().LoadNvApi("nvapi64.dll"));
  EXPECT_TRUE(host.box().LoadNvApi("nvapi64.dll"));
  EXPECT_EQ(host.Modules(), modules + 1);
  EXPECT_FALSE(host.box().LoadNvApi(nullptr));
  EXPECT_EQ(host.Modules(), modules);
}

TEST(NvApi, FunctionsOfALostLibraryAreGoneWithIt) {
  WrapperHost host;
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewReady();
  EXPECT_FALSE(host.box().LoadNvApi(nullptr));
  NvTopology topology = {};
  topology.version = kNvTopologyVersion;
  EXPECT_FALSE(host.box().GetDisplayTopology(wrapper.get(), &topology));
  EXPECT_EQ(host.machine.Calls("NvAPI_DISP_GetHCloneTopology"), 0u);
}

// --- Initialize.

TEST(NvApiWrapper, InitializeLogsTheVersion) {
  WrapperHost host;
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewWrapper();
  host.ForgetLog();
  EXPECT_TRUE(host.box().Initialize(wrapper.get()));
  EXPECT_EQ(host.TakeLogWithSeverity(), kVersionLine);
}

TEST(NvApiWrapper, ResultIsThatOfTheDriversInitializeAlone) {
  WrapperHost host;
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewWrapper();
  host.ForgetLog();
  host.machine.Fail("NvAPI_GetInterfaceVersionString", 1);
  EXPECT_TRUE(host.box().Initialize(wrapper.get()));
  EXPECT_EQ(host.TakeLogWithSeverity(), kNoVersionLine);
}

TEST(NvApiWrapper, DriverThatDoesNotStartIsAFailureWithAVersionLine) {
  WrapperHost host;
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewWrapper();
  host.ForgetLog();
  host.machine.Fail("NvAPI_Initialize", 1);
  EXPECT_FALSE(host.box().Initialize(wrapper.get()));
  EXPECT_EQ(host.machine.Calls("NvAPI_GetInterfaceVersionString"), 1u);
  EXPECT_EQ(host.TakeLogWithSeverity(), kNoVersionLine);
}

TEST(NvApiWrapper, EveryOtherResultThanZeroIsAFailure) {
  for (const int32_t status : {-6, -2, 1, 100}) {
    WrapperHost host;
    const std::unique_ptr<NVApiWrapper> wrapper = host.NewWrapper();
    host.machine.Fail("NvAPI_Initialize", 1, sim::NvCode(status));
    EXPECT_FALSE(host.box().Initialize(wrapper.get())) << status;
  }
}

TEST(NvApiWrapper, MachineWithoutTheLibraryIsAFailure) {
  WrapperHost host(kNoNvidia);
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewWrapper();
  host.ForgetLog();
  EXPECT_FALSE(host.box().Initialize(wrapper.get()));
  EXPECT_FALSE(host.box().IsNvApiLoaded());
  EXPECT_EQ(host.TakeLogWithSeverity(), kNoVersionLine);
}

// --- The other operations.

TEST(NvApiWrapper, DisplayIdsAndOutputsAreReadInBothDirections) {
  WrapperHost host(kMachine, kChecked);
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewReady();
  uint32_t display_id = 0;
  EXPECT_TRUE(host.box().GetDisplayIdFromGpuAndOutputId(wrapper.get(), host.gpu(),
                                                        host.output("hdmi"), &display_id));
  EXPECT_EQ(display_id, sim::NvDisplayIdOf(host.model(), "hdmi"));
  NvPhysicalGpuHandle gpu = nullptr;
  uint32_t output = 0;
  EXPECT_TRUE(host.box().GetGpuAndOutputIdFromDisplayId(wrapper.get(), display_id, &gpu, &output));
  EXPECT_EQ(gpu, host.gpu());
  EXPECT_EQ(output, host.output("hdmi"));
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvApiWrapper, DisplayIdIsWrittenOnSuccessOnly) {
  WrapperHost host(kMachine, kChecked);
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewReady();
  uint32_t display_id = 77;
  EXPECT_FALSE(
      host.box().GetDisplayIdFromGpuAndOutputId(wrapper.get(), host.gpu(), 0x8, &display_id));
  host.machine.Fail("NvAPI_SYS_GetDisplayIdFromGpuAndOutputId", 1);
  EXPECT_FALSE(
      host.box().GetDisplayIdFromGpuAndOutputId(wrapper.get(), host.gpu(), 0x10000, &display_id));
  EXPECT_EQ(display_id, 77u);
  EXPECT_EQ(host.TakeLog(), "");  // what the driver refuses is not told
}

TEST(NvApiWrapper, UnknownDisplayIdIsAFailureWithoutALogLine) {
  WrapperHost host(kMachine, kChecked);
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewReady();
  NvPhysicalGpuHandle gpu = nullptr;
  uint32_t output = 0;
  EXPECT_FALSE(host.box().GetGpuAndOutputIdFromDisplayId(wrapper.get(), 0x1234, &gpu, &output));
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvApiWrapper, TopologyIsWrittenAndReadByTheDriver) {
  WrapperHost host(kMachine, kChecked);
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewReady();
  NvTopology topology = {};
  topology.version = kNvTopologyVersion;
  EXPECT_TRUE(host.box().GetDisplayTopology(wrapper.get(), &topology));
  EXPECT_TRUE(host.box().SetDisplayTopology(wrapper.get(), &topology));
  EXPECT_EQ(host.machine.Calls("NvAPI_DISP_GetHCloneTopology"), 1u);
  EXPECT_EQ(host.machine.Calls("NvAPI_DISP_SetHCloneTopology"), 1u);
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvApiWrapper, WrongVersionWordIsRefusedByTheDriver) {
  WrapperHost host(kMachine, kChecked);
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewReady();
  NvTopology topology = {};
  topology.version = kNvTopologyVersion + 0x10000;
  EXPECT_FALSE(host.box().GetDisplayTopology(wrapper.get(), &topology));
  EXPECT_FALSE(host.box().SetDisplayTopology(wrapper.get(), &topology));
  NV_DISPLAYCONFIG_PATH_INFO path = {};
  path.version = NV_DISPLAYCONFIG_PATH_INFO_VER2 - 0x10000;
  EXPECT_FALSE(host.box().SetDisplayConfig(wrapper.get(), 1, &path, 2));
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvApiWrapper, SetDisplayConfigHandsOnItsArguments) {
  WrapperHost host(kMachine, kChecked);
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewReady();
  NV_DISPLAYCONFIG_PATH_TARGET_INFO target = {};
  target.displayId = sim::NvDisplayIdOf(host.model(), "hdmi");
  NV_DISPLAYCONFIG_PATH_INFO path = {};
  path.version = NV_DISPLAYCONFIG_PATH_INFO_VER2;
  path.targetInfoCount = 1;
  path.targetInfo = &target;
  EXPECT_TRUE(host.box().SetDisplayConfig(wrapper.get(), 1, &path, 2));
  EXPECT_EQ(host.machine.Topology(), "single hdmi");
  EXPECT_EQ(CountOf(host.machine.Journal(), "NvAPI_DISP_SetDisplayConfig(flags=2 "), 1u)
      << host.machine.Journal();
}

// --- Checks. A failed one is told, and the call is made all the same.

struct CheckRow {
  const char* function;
  bool (*run)(const NvidiaBox& box, NVApiWrapper* wrapper);
  const char* checks;
};
constexpr CheckRow kCheckRows[] = {
    {"NvAPI_DISP_GetHCloneTopology",
     [](const NvidiaBox& box, NVApiWrapper* w) { return box.GetDisplayTopology(w, nullptr); },
     "ERROR_REPORT Check failed: topology != NULL. \n"},
    {"NvAPI_DISP_SetHCloneTopology",
     [](const NvidiaBox& box, NVApiWrapper* w) { return box.SetDisplayTopology(w, nullptr); },
     "ERROR_REPORT Check failed: topology != NULL. \n"},
    {"NvAPI_SYS_GetDisplayIdFromGpuAndOutputId",
     [](const NvidiaBox& box, NVApiWrapper* w) {
       return box.GetDisplayIdFromGpuAndOutputId(w, nullptr, 0, nullptr);
     },
     "ERROR_REPORT Check failed: gpu != NULL. \n"
     "ERROR_REPORT Check failed: output_id != 0. \n"
     "ERROR_REPORT Check failed: display_id != NULL. \n"},
    {"NvAPI_SYS_GetGpuAndOutputIdFromDisplayId",
     [](const NvidiaBox& box, NVApiWrapper* w) {
       return box.GetGpuAndOutputIdFromDisplayId(w, 0, nullptr, nullptr);
     },
     "ERROR_REPORT Check failed: display_id != 0. \n"
     "ERROR_REPORT Check failed: gpu != NULL. \n"
     "ERROR_REPORT Check failed: output_id != NULL. \n"},
    {"NvAPI_DISP_SetDisplayConfig",
     [](const NvidiaBox& box, NVApiWrapper* w) { return box.SetDisplayConfig(w, 1, nullptr, 2); },
     "ERROR_REPORT Check failed: path != NULL. \n"},
};

TEST(NvApiWrapper, ChecksAreToldInOrderAndTheCallIsMade) {
  WrapperHost host(kMachine, kChecked);
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewReady();
  for (const CheckRow& row : kCheckRows) {
    const uint32_t calls = host.machine.Calls(row.function);
    EXPECT_FALSE(row.run(host.box(), wrapper.get())) << row.function;
    EXPECT_EQ(host.TakeLogWithSeverity(), row.checks) << row.function;
    EXPECT_EQ(host.machine.Calls(row.function), calls + 1) << row.function;
  }
}

TEST(NvApiWrapper, ChecksAreSilentUnlessAskedFor) {
  WrapperHost host;
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewReady();
  for (const CheckRow& row : kCheckRows) EXPECT_FALSE(row.run(host.box(), wrapper.get()));
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvApiWrapper, PlaceForTheDisplayIdMayBeMissingWhereTheDriverAnswers) {
  WrapperHost host;
  const std::unique_ptr<NVApiWrapper> wrapper = host.NewReady();
  EXPECT_FALSE(
      host.box().GetDisplayIdFromGpuAndOutputId(wrapper.get(), host.gpu(), 0x10000, nullptr));
}

TEST(NvApiWrapper, FunctionThatTheDriverDoesNotOfferIsAFailure) {
  for (const CheckRow& row : kCheckRows) {
    WrapperHost host;
    sim::RemoveNvApi(host.machine, row.function);
    const std::unique_ptr<NVApiWrapper> wrapper = host.NewReady();
    NvTopology topology = {};
    topology.version = kNvTopologyVersion;
    NvPhysicalGpuHandle gpu = nullptr;
    uint32_t number = 0;
    const std::string name = row.function;
    if (name == "NvAPI_DISP_GetHCloneTopology") {
      EXPECT_FALSE(host.box().GetDisplayTopology(wrapper.get(), &topology));
    } else if (name == "NvAPI_DISP_SetHCloneTopology") {
      EXPECT_FALSE(host.box().SetDisplayTopology(wrapper.get(), &topology));
    } else if (name == "NvAPI_SYS_GetDisplayIdFromGpuAndOutputId") {
      EXPECT_FALSE(
          host.box().GetDisplayIdFromGpuAndOutputId(wrapper.get(), host.gpu(), 0x10000, &number));
    } else if (name == "NvAPI_SYS_GetGpuAndOutputIdFromDisplayId") {
      const uint32_t panel = sim::NvDisplayIdOf(host.model(), "internal");
      EXPECT_FALSE(host.box().GetGpuAndOutputIdFromDisplayId(wrapper.get(), panel, &gpu, &number));
    } else {
      NV_DISPLAYCONFIG_PATH_INFO path = {};
      path.version = NV_DISPLAYCONFIG_PATH_INFO_VER2;
      EXPECT_FALSE(host.box().SetDisplayConfig(wrapper.get(), 1, &path, 2));
    }
    EXPECT_EQ(host.machine.Calls(row.function), 0u) << row.function;
  }
}

}  // namespace
