// The simulated NVIDIA driver: its library, its GPUs, outputs and displays.
#include "sim/faces/NvidiaDriver.h"

#include "sim/Topology.h"
#include "sim/faces/ChangeSettings.h"
#include "sim/tests/NvidiaDriverCalls.h"

namespace sim {
namespace {

constexpr char kAlone[] = "win7 nvidia: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080";
constexpr char kTwo[] =
    "win7 intel, nvidia: internal 1366x768 active, crt 1280x1024, hdmi@2 1920x1080, dp@2";

constexpr uint32_t kAllIds[] = {
    kInitializeId,    kVersionStringId,   kEnumGpusId,   kEnumDisplaysId,
    kGpusOfDisplayId, kOutputOfDisplayId, kAllOutputsId, kConnectedOutputsId,
    kActiveOutputsId, kConnectorInfoId,   kEdidId,       kHdmiId,
    kSettingsId,      kSetViewId,         kCoprocId,     kDisplayIdId,
    kGpuAndOutputId,  kSetPathsId,        kHybridId,     kReadGroupsId,
    kWriteGroupsId};

// --- The library.

TEST(NvidiaDriver, LibraryIsThereWhileAWorkingAdapterBroughtIt) {
  Machine machine(kTwo);
  const HMODULE module = SIM_FAKE(LoadLibraryA)("nvapi64.dll");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(SIM_FAKE(GetProcAddress)(module, "NvAPI_Initialize"), nullptr);  // its one export
  EXPECT_NE(SIM_FAKE(GetProcAddress)(module, "nvapi_QueryInterface"), nullptr);
  EXPECT_NE(machine.Outstanding(), "");
  EXPECT_TRUE(SIM_FAKE(FreeLibrary)(module));
  EXPECT_EQ(machine.Outstanding(), "");

  Adapter& adapter = machine.model().adapters[1];
  adapter.disabled = true;
  EXPECT_EQ(SIM_FAKE(LoadLibraryA)("nvapi64.dll"), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
  adapter.disabled = false;
  adapter.vendor_library = false;
  EXPECT_EQ(SIM_FAKE(LoadLibraryW)(L"nvapi64.dll"), nullptr);
  const Machine other("win7 intel: internal 1366x768 active");
  EXPECT_EQ(SIM_FAKE(LoadLibraryA)("nvapi64.dll"), nullptr);
}

TEST(NvidiaDriver, EveryReferenceToTheLibraryIsInTheLedger) {
  Machine machine(kAlone);
  {
    const NvClient first;
    const NvClient second;
    EXPECT_EQ(first.module(), second.module());
    EXPECT_EQ(SIM_FAKE(GetModuleHandleA)("nvapi64.dll"), first.module());
    EXPECT_EQ(NvInitializations(machine), 2u);
    EXPECT_NE(machine.Outstanding().find("module"), std::string::npos);
  }
  EXPECT_EQ(machine.Outstanding(), "");
  EXPECT_EQ(NvInitializations(machine), 0u);  // gone with the library
}

TEST(NvidiaDriver, FunctionsAreFoundByIdAndUnknownOnesAreNull) {
  Machine machine(kAlone);
  const NvClient driver;
  for (const uint32_t id : kAllIds) EXPECT_NE(driver.Find(id), nullptr) << std::hex << id;
  EXPECT_EQ(driver.Find(0), nullptr);
  EXPECT_EQ(driver.Find(0xD22BDD7E), nullptr);
  RemoveNvApi(machine, "NvAPI_SetViewEx");
  EXPECT_EQ(driver.Find(kSetViewId), nullptr);
  EXPECT_NE(driver.Find(kSetPathsId), nullptr);
  EXPECT_THROW(RemoveNvApi(machine, "NvAPI_SetView"), std::runtime_error);
  machine.Fail("nvapi_QueryInterface", 1);
  EXPECT_EQ(driver.Find(kSetPathsId), nullptr);
  EXPECT_NE(driver.Find(kSetPathsId), nullptr);
}

TEST(NvidiaDriver, NothingAnswersBeforeInitialize) {
  const Machine machine(kAlone);
  const NvClient driver(false);
  for (const uint32_t id : kAllIds) {
    if (id == kInitializeId) continue;
    void* none = nullptr;
    EXPECT_EQ(driver.Ask(id, none, none, none), -4) << std::hex << id;
  }
  EXPECT_EQ(driver.Ask(kInitializeId), 0);
  char text[64] = {};
  EXPECT_EQ(driver.Ask(kVersionStringId, &text[0]), 0);
  EXPECT_STRNE(text, "");
}

TEST(NvidiaDriver, NullArgumentsAreInvalid) {
  const Machine machine(kAlone);
  const NvClient driver;
  void* const gpu = driver.Gpu();
  void* const display = driver.Display();
  void* none = nullptr;
  uint32_t number = 0;
  for (const uint32_t id : {kVersionStringId, kHybridId, kReadGroupsId, kWriteGroupsId}) {
    EXPECT_EQ(driver.Ask(id, none), -5) << std::hex << id;
  }
  for (const uint32_t id : {kAllOutputsId, kConnectedOutputsId, kActiveOutputsId}) {
    EXPECT_EQ(driver.Ask(id, gpu, none), -5) << std::hex << id;
  }
  EXPECT_EQ(driver.Ask(kEnumGpusId, none, &number), -5);
  EXPECT_EQ(driver.Ask(kEnumGpusId, &none, nullptr), -5);
  EXPECT_EQ(driver.Ask(kEnumDisplaysId, 0U, none), -5);
  EXPECT_EQ(driver.Ask(kGpusOfDisplayId, display, none, &number), -5);
  EXPECT_EQ(driver.Ask(kGpusOfDisplayId, display, &none, nullptr), -5);
  EXPECT_EQ(driver.Ask(kOutputOfDisplayId, display, none), -5);
  EXPECT_EQ(driver.Ask(kConnectorInfoId, gpu, 0x10000U, none), -5);
  EXPECT_EQ(driver.Ask(kEdidId, gpu, 0x10000U, none), -5);
  EXPECT_EQ(driver.Ask(kHdmiId, display, 0x10000U, none), -5);
  EXPECT_EQ(driver.Ask(kSettingsId, display, none, nullptr), -5);
  EXPECT_EQ(driver.Ask(kSetViewId, display, none, 0U), -5);
  EXPECT_EQ(driver.Ask(kCoprocId, none, &number), -5);
  EXPECT_EQ(driver.Ask(kCoprocId, &number, none), -5);
  EXPECT_EQ(driver.Ask(kDisplayIdId, gpu, 0x10000U, none), -5);
  EXPECT_EQ(driver.Ask(kGpuAndOutputId, 0x80061001U, none, &number), -5);
  EXPECT_EQ(driver.Ask(kGpuAndOutputId, 0x80061001U, &none, nullptr), -5);
  EXPECT_EQ(driver.Ask(kSetPathsId, 1U, none, 2U), -5);
}

TEST(NvidiaDriver, UnknownHandlesAreTold) {
  const Machine machine(kTwo);
  const NvClient driver;
  void* wrong[] = {nullptr, reinterpret_cast<void*>(uintptr_t{0x1234}), driver.Gpu()};
  uint32_t number = kUnwritten;
  void* gpu = nullptr;
  Record info(44, 0x1002C);
  for (void* handle : {wrong[0], wrong[1]}) {
    EXPECT_EQ(driver.Ask(kAllOutputsId, handle, &number), -8);
    EXPECT_EQ(driver.Ask(kConnectedOutputsId, handle, &number), -8);
    EXPECT_EQ(driver.Ask(kActiveOutputsId, handle, &number), -8);
    EXPECT_EQ(driver.Ask(kConnectorInfoId, handle, 0x20000U, info.data()), -8);
    EXPECT_EQ(driver.Ask(kDisplayIdId, handle, 0x20000U, &number), -8);
  }
  for (void* handle : wrong) {  // a GPU's handle is no display's
    EXPECT_EQ(driver.Ask(kGpusOfDisplayId, handle, &gpu, &number), -8);
    EXPECT_EQ(driver.Ask(kOutputOfDisplayId, handle, &number), -8);
    EXPECT_EQ(driver.Ask(kSettingsId, handle, nullptr, &number), -8);
    EXPECT_EQ(driver.Ask(kSetViewId, handle, View({}).data(), 0U), -8);
  }
  EXPECT_EQ(number, kUnwritten);
  EXPECT_EQ(info.At(12), 0u);
}

TEST(NvidiaDriver, WrongVersionWordsAreTold) {
  const Machine machine(kAlone);
  const NvClient driver;
  void* const gpu = driver.Gpu();
  void* const display = driver.Display();
  for (const uint32_t version : {0U, 1U, 0x30108U, 0x20110U, 0x2002CU, 0x3000CU, 0x10030U}) {
    Record record(272, version);
    uint32_t count = 4;
    EXPECT_EQ(driver.Ask(kConnectorInfoId, gpu, 0x10000U, record.data()), -9);
    EXPECT_EQ(driver.Ask(kEdidId, gpu, 0x10000U, record.data()), -9);
    EXPECT_EQ(driver.Ask(kHdmiId, display, 0x10000U, record.data()), -9);
    EXPECT_EQ(driver.Ask(kSettingsId, display, record.data(), &count), -9);
    EXPECT_EQ(driver.Ask(kSetViewId, display, record.data(), 0U), -9);
    EXPECT_EQ(driver.Ask(kReadGroupsId, record.data()), -9);
    EXPECT_EQ(driver.Ask(kWriteGroupsId, record.data()), -9);
    for (size_t at = 4; at < 272; at += 4) ASSERT_EQ(record.At(at), 0u);
    PathRecords paths;
    paths.Add({{driver.DisplayId(gpu, 0x10000), 0}}, {1024, 768});
    paths.last().Set(0, version);
    EXPECT_EQ(paths.Set(driver, 2), -9);
  }
}

TEST(NvidiaDriver, DeclaredFaultComesFirstWithItsCode) {
  Machine machine(kAlone);
  const NvClient driver;
  void* const gpu = driver.Gpu();
  uint32_t mask = kUnwritten;
  machine.Fail("NvAPI_GPU_GetConnectedOutputs", 1);
  machine.Fail("NvAPI_GPU_GetConnectedOutputs", 2, NvCode(-3));
  EXPECT_EQ(driver.Ask(kConnectedOutputsId, gpu, &mask), -1);
  EXPECT_EQ(driver.Ask(kConnectedOutputsId, gpu, &mask), -3);
  EXPECT_EQ(mask, kUnwritten);
  EXPECT_EQ(driver.Ask(kConnectedOutputsId, gpu, &mask), 0);
  EXPECT_EQ(machine.Calls("NvAPI_GPU_GetConnectedOutputs"), 3u);
  machine.Fail("NvAPI_Initialize", 1, NvCode(-6));
  EXPECT_EQ(driver.Ask(kInitializeId), -6);
  EXPECT_EQ(NvInitializations(machine), 1u);
}

// --- GPUs and outputs.

TEST(NvidiaDriver, GpusAreTheWorkingAdaptersOfTheVendor) {
  Machine machine("win7 nvidia, intel, nvidia: internal 1366x768 active, hdmi@3 800x600");
  const NvClient driver;
  void* gpus[64] = {};
  uint32_t count = 0;
  EXPECT_EQ(driver.Ask(kEnumGpusId, &gpus[0], &count), 0);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(gpus[0], NvGpuOf(0));
  EXPECT_EQ(gpus[1], NvGpuOf(2));
  EXPECT_EQ(gpus[2], nullptr);
  EXPECT_EQ(driver.Outputs(kAllOutputsId, gpus[0]), 0x10000u);
  EXPECT_EQ(driver.Outputs(kAllOutputsId, gpus[1]), 0x20000u);
  machine.model().adapters[0].disabled = true;
  EXPECT_EQ(driver.Gpu(), NvGpuOf(2));
  machine.model().adapters[2].problem = 43;
  count = kUnwritten;
  EXPECT_EQ(driver.Ask(kEnumGpusId, &gpus[0], &count), -6);
  EXPECT_EQ(count, kUnwritten);
}

TEST(NvidiaDriver, OutputsAreKnownConnectedAndActive) {
  Machine machine(kAlone);
  const NvClient driver;
  EXPECT_EQ(driver.Outputs(kAllOutputsId, driver.Gpu()), 0x30001u);
  EXPECT_EQ(driver.Outputs(kConnectedOutputsId, driver.Gpu()), 0x30001u);
  EXPECT_EQ(driver.Outputs(kActiveOutputsId, driver.Gpu()), 0x10000u);
  machine.Unplug("crt");
  EXPECT_EQ(driver.Outputs(kAllOutputsId, driver.Gpu()), 0x30001u);
  EXPECT_EQ(driver.Outputs(kConnectedOutputsId, driver.Gpu()), 0x30000u);
}

// Each kind of output has a range of its own; what the machine says comes before.
TEST(NvidiaDriver, EveryOutputHasABitOfItsOwn) {
  Machine machine(
      "win7 nvidia: internal 1366x768 active, edp, crt, crt2, tv, tv2, dvi, hdmi, dp, other");
  Model& model = machine.model();
  const std::map<std::string, uint32_t> expected = {
      {"internal", 0x10000}, {"edp", 0x20000},   {"crt", 0x1},     {"crt2", 0x2},
      {"tv", 0x100},         {"tv2", 0x200},     {"dvi", 0x40000}, {"hdmi", 0x80000},
      {"dp", 0x100000},      {"other", 0x200000}};
  for (const auto& [id, output] : expected) EXPECT_EQ(NvOutputOf(model, id), output) << id;
  model.connectors[*FindConnector(model, "dp")].nvidia_output = 0x20000;
  EXPECT_EQ(NvOutputOf(model, "dp"), 0x20000u);
  EXPECT_EQ(NvOutputOf(model, "edp"), 0x40000u);
}

TEST(NvidiaDriver, ConnectorTypeGoesWithTheTechnologyUnlessTold) {
  Machine machine(
      "win7 nvidia: internal 1366x768 active, edp, crt, tv, dvi, hdmi, hdmi2, dp, other, wireless");
  machine.model().connectors[*FindConnector(machine.model(), "crt")].nvidia_connector_type = 23;
  const NvClient driver;
  const std::map<std::string, uint32_t> expected = {
      {"internal", 64},      {"edp", 71},      {"crt", 23},   {"tv", 17},
      {"dvi", 49},           {"hdmi", 97},     {"hdmi2", 97}, {"dp", 70},
      {"other", 0xFFFFFFFF}, {"wireless", 112}};
  for (const auto& [id, type] : expected) {
    Record record(44, 0x1002C);
    const uint32_t output = NvOutputOf(machine.model(), id);
    EXPECT_EQ(driver.Ask(kConnectorInfoId, driver.Gpu(), output, record.data()), 0) << id;
    EXPECT_EQ(record.At(12), type) << id;
    EXPECT_EQ(record.At(16), id == "hdmi2" ? 1u : 0u) << id;
  }
  Record record(44, 0x1002C);
  for (const uint32_t output : {0U, 0x10001U, 0x80000000U}) {
    EXPECT_EQ(driver.Ask(kConnectorInfoId, driver.Gpu(), output, record.data()), -5);
  }
  EXPECT_EQ(record.At(12), 0u);
}

TEST(NvidiaDriver, PlugsOfEveryTechnologyHaveATypeAndARange) {
  struct Row {
    uint32_t technology, type, output;
  };
  constexpr Row kRows[] = {{0x80000000, 64, 0x10000},
                           {6, 64, 0x10000},
                           {11, 71, 0x10000},
                           {13, 64, 0x10000},
                           {0, 0, 0x1},
                           {1, 17, 0x100},
                           {2, 16, 0x100},
                           {3, 19, 0x100},
                           {4, 49, 0x20000},
                           {5, 97, 0x20000},
                           {10, 70, 0x20000},
                           {15, 112, 0x20000},
                           {8, 0xFFFFFFFF, 0x20000},
                           {9, 0xFFFFFFFF, 0x20000}};
  Machine machine("win7 nvidia: internal 1366x768 active");
  const NvClient driver;
  for (const Row& row : kRows) {
    machine.model().connectors[0].technology = row.technology;
    Record record(44, 0x1002C);
    EXPECT_EQ(driver.Outputs(kAllOutputsId, driver.Gpu()), row.output) << row.technology;
    EXPECT_EQ(driver.Ask(kConnectorInfoId, driver.Gpu(), row.output, record.data()), 0);
    EXPECT_EQ(record.At(12), row.type) << row.technology;
  }
}

TEST(NvidiaDriver, DisplayIdsLeadThereAndBack) {
  Machine machine("win7 nvidia, nvidia: internal 1366x768 active, hdmi 800x600, dp@2 800x600");
  const NvClient driver;
  std::map<uint32_t, int> seen;
  for (const char* id : {"internal", "hdmi", "dp"}) {
    const uint32_t output = NvOutputOf(machine.model(), id);
    void* const gpu = driver.Gpu(std::string(id) == "dp" ? 1 : 0);
    const uint32_t display_id = driver.DisplayId(gpu, output);
    EXPECT_EQ(display_id, NvDisplayIdOf(machine.model(), id));
    EXPECT_EQ(++seen[display_id], 1);
    void* back = nullptr;
    uint32_t mask = 0;
    EXPECT_EQ(driver.Ask(kGpuAndOutputId, display_id, &back, &mask), 0);
    EXPECT_EQ(back, gpu);
    EXPECT_EQ(mask, output);
  }
  uint32_t number = kUnwritten;
  void* gpu = nullptr;
  EXPECT_EQ(driver.Ask(kGpuAndOutputId, 0x10000U, &gpu, &number), -5);  // an output, not an id
  EXPECT_EQ(driver.Ask(kDisplayIdId, driver.Gpu(), 0x1U, &number), -5);
  EXPECT_EQ(driver.Ask(kDisplayIdId, driver.Gpu(), 0x30000U, &number), -5);
  EXPECT_EQ(number, kUnwritten);
}

// --- Displays.

TEST(NvidiaDriver, DisplayHandlesAreThoseOfItsDesktops) {
  Machine machine("win7 intel, nvidia: internal 1366x768 active, hdmi@2 800x600 active, dp@2");
  const NvClient driver;
  void* const display = driver.Display();
  ASSERT_NE(display, nullptr);
  void* more = nullptr;
  EXPECT_EQ(driver.Ask(kEnumDisplaysId, 1U, &more), -7);
  EXPECT_EQ(more, nullptr);
  void* gpus[64] = {};
  uint32_t count = 0;
  EXPECT_EQ(driver.Ask(kGpusOfDisplayId, display, &gpus[0], &count), 0);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(gpus[0], driver.Gpu());
  uint32_t output = 0;
  EXPECT_EQ(driver.Ask(kOutputOfDisplayId, display, &output), 0);
  EXPECT_EQ(output, 0x20000u);
  const Machine dark(kTwo);  // nothing of it is on
  EXPECT_EQ(NvClient().Display(), nullptr);
}

TEST(NvidiaDriver, DisplayHandlesEndWithAModeSetOfWhoeverItIs) {
  Machine machine(kAlone);
  const NvClient driver;
  void* const before = driver.Display();
  EXPECT_EQ(driver.Display(), before);
  SettingsRequest request;
  request.fields = DM_PELSWIDTH | DM_PELSHEIGHT;
  request.mode = {800, 600, 32, 60};
  ASSERT_EQ(ChangeSettings(machine.model(), 0, &request, 0), DISP_CHANGE_SUCCESSFUL);
  uint32_t output = 0;
  EXPECT_EQ(driver.Ask(kOutputOfDisplayId, before, &output), -8);
  EXPECT_NE(driver.Display(), before);
  EXPECT_EQ(driver.Ask(kOutputOfDisplayId, driver.Display(), &output), 0);
  EXPECT_EQ(driver.Ask(kSetViewId, before, View({}).data(), 0U), -8);
  EXPECT_EQ(machine.TakeJournal(), "NvAPI_SetViewEx(handle=stale view=0 paths=none)=-8\n");
}

}  // namespace
}  // namespace sim
