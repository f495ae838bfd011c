#include "sim/faces/NvidiaDriver.h"

#include <algorithm>
#include <stdexcept>

#include "sim/Topology.h"
#include "sim/faces/FaceHelp.h"
#include "sim/faces/NvidiaDriverRules.h"

namespace sim {
namespace {

constexpr char kInitializations[] = "nvidia: initializations";
constexpr char kRemoved[] = "nvidia: removed ";
constexpr char kModeUnwritten[] = "nvidia: adapter mode not written";
constexpr char kSilent[] = "nvidia: silent about connector types";
constexpr char kVersionText[] = "NVAPI Open Interface 1.0";
constexpr size_t kShortString = 64;
constexpr size_t kMostGpus = 64;

Machine::State& State() { return Machine::Current().state(); }

// --- What all functions have in common: a declared fault comes first, then whether the driver is
// up, then the function's own rules.

NvStatus FirstAnswer(const Call& call) {
  if (call.Fails()) return static_cast<NvStatus>(FaultOr(call, NvCode(kNvError)));
  return State().counters[kInitializations] > 0 ? kNvOk : kNvNotInitialized;
}

template <typename Body>
int32_t Query(const char* name, const std::string& asked, Body body) {
  Call call(name);
  NvStatus status = FirstAnswer(call);
  if (status == kNvOk) status = body();
  call.Read(status, "%s", asked.c_str());
  return status;
}

template <typename Body>
int32_t Change(const char* name, const std::string& asked, Body body) {
  Call call(name);
  NvStatus status = FirstAnswer(call);
  if (status == kNvOk) status = body();
  call.Changed(status, "%s", asked.c_str());
  return status;
}

std::string GpuName(const void* gpu) {
  const std::optional<size_t> found = NvGpuFromHandle(CurrentModel(), gpu);
  if (!found) return gpu == nullptr ? "gpu=0" : "gpu=unknown";
  return "gpu=" + std::to_string(*found);
}

std::string HandleName(const void* handle) {
  return "handle=" + NvHandleName(Machine::Current(), handle);
}

// --- The driver itself.

int32_t Initialize() {
  Call call("NvAPI_Initialize");
  NvStatus status = kNvOk;
  if (call.Fails()) status = static_cast<NvStatus>(FaultOr(call, NvCode(kNvError)));
  if (status == kNvOk) ++State().counters[kInitializations];
  call.Read(status, "%s", "");
  return status;
}

int32_t GetInterfaceVersionString(char* text) {
  return Query("NvAPI_GetInterfaceVersionString", "", [text] {
    if (text == nullptr) return kNvInvalidArgument;
    CopyText(text, kShortString, std::string(kVersionText));
    return kNvOk;
  });
}

// --- GPUs.

int32_t EnumPhysicalGPUs(void** gpus, uint32_t* count) {
  return Query("NvAPI_EnumPhysicalGPUs", "", [=] {
    if (gpus == nullptr || count == nullptr) return kNvInvalidArgument;
    const std::vector<size_t> found = NvGpus(CurrentModel());
    if (found.empty()) return kNvDeviceNotFound;
    const size_t told = std::min(found.size(), kMostGpus);
    for (size_t i = 0; i < told; ++i) gpus[i] = NvGpuOf(found[i]);
    *count = static_cast<uint32_t>(told);
    return kNvOk;
  });
}

template <typename Choice>
int32_t TellOutputs(const char* name, const void* gpu, uint32_t* mask, Choice choice) {
  return Query(name, GpuName(gpu), [=] {
    if (mask == nullptr) return kNvInvalidArgument;
    const Model& model = CurrentModel();
    const std::optional<size_t> adapter = NvGpuFromHandle(model, gpu);
    if (!adapter) return kNvInvalidHandle;
    uint32_t outputs = 0;
    for (size_t i = 0; i < model.connectors.size(); ++i) {
      if (model.connectors[i].adapter == *adapter && choice(model, i)) {
        outputs |= NvOutput(model, i);
      }
    }
    *mask = outputs;
    return kNvOk;
  });
}

int32_t GetAllOutputs(void* gpu, uint32_t* mask) {
  return TellOutputs("NvAPI_GPU_GetAllOutputs", gpu, mask,
                     [](const Model&, size_t) { return true; });
}
int32_t GetConnectedOutputs(void* gpu, uint32_t* mask) {
  return TellOutputs("NvAPI_GPU_GetConnectedOutputs", gpu, mask, IsConnected);
}
int32_t GetActiveOutputs(void* gpu, uint32_t* mask) {
  return TellOutputs("NvAPI_GPU_GetActiveOutputs", gpu, mask, NvIsActive);
}

using OutputQuery = NvStatus (*)(const Model&, size_t gpu, uint32_t output, NvRecord record);

int32_t AskOutput(const char* name, const void* gpu, uint32_t output, void* record,
                  OutputQuery query) {
  return Query(name, GpuName(gpu) + " output=" + NvHex(output), [=] {
    if (record == nullptr) return kNvInvalidArgument;
    const std::optional<size_t> adapter = NvGpuFromHandle(CurrentModel(), gpu);
    if (!adapter) return kNvInvalidHandle;
    return query(CurrentModel(), *adapter, output, NvRecord(record));
  });
}

int32_t GetConnectorInfo(void* gpu, uint32_t output, void* record) {
  return AskOutput("NvAPI_GPU_GetConnectorInfo", gpu, output, record, GetNvConnectorInfo);
}
int32_t GetEdid(void* gpu, uint32_t output, void* record) {
  return AskOutput("NvAPI_GPU_GetEDID", gpu, output, record, GetNvEdid);
}

// --- Displays.

int32_t EnumNvidiaDisplayHandle(uint32_t index, void** handle) {
  return Query("NvAPI_EnumNvidiaDisplayHandle", std::to_string(index), [=] {
    if (handle == nullptr) return kNvInvalidArgument;
    const std::vector<size_t> displays = NvDisplays(CurrentModel());
    if (index >= displays.size()) return kNvEndEnumeration;
    *handle = NvDisplayHandle(Machine::Current(), displays[index]);
    return kNvOk;
  });
}

int32_t GetPhysicalGPUsFromDisplay(void* handle, void** gpus, uint32_t* count) {
  return Query("NvAPI_GetPhysicalGPUsFromDisplay", HandleName(handle), [=] {
    if (gpus == nullptr || count == nullptr) return kNvInvalidArgument;
    const std::optional<size_t> display = NvDisplayFromHandle(Machine::Current(), handle);
    if (!display) return kNvInvalidHandle;
    gpus[0] = NvGpuOf(CurrentModel().sources[*display].adapter);
    *count = 1;
    return kNvOk;
  });
}

int32_t GetAssociatedDisplayOutputId(void* handle, uint32_t* output) {
  return Query("NvAPI_GetAssociatedDisplayOutputId", HandleName(handle), [=] {
    if (output == nullptr) return kNvInvalidArgument;
    const std::optional<size_t> display = NvDisplayFromHandle(Machine::Current(), handle);
    if (!display) return kNvInvalidHandle;
    *output = NvOutput(CurrentModel(), ConnectorsOfSource(CurrentModel(), *display).front());
    return kNvOk;
  });
}

int32_t GetHdmiSupportInfo(void* handle, uint32_t id, void* record) {
  return Query("NvAPI_GetHDMISupportInfo", HandleName(handle) + " id=" + NvHex(id), [=] {
    if (record == nullptr) return kNvInvalidArgument;
    return GetNvHdmiSupport(Machine::Current(), handle, id, NvRecord(record));
  });
}

int32_t GetDisplaySettings(void* handle, void* records, uint32_t* count) {
  return Query("NvAPI_GetDisplaySettings", HandleName(handle), [=] {
    if (count == nullptr) return kNvInvalidArgument;
    return GetNvDisplaySettings(Machine::Current(), handle, NvRecord(records), count);
  });
}

int32_t SetViewEx(void* handle, void* record, uint32_t view) {
  const std::string asked =
      HandleName(handle) + " view=" + std::to_string(view) + " " + DescribeNvView(NvRecord(record));
  return Change("NvAPI_SetViewEx", asked,
                [=] { return SetNvView(Machine::Current(), handle, NvRecord(record), view); });
}

// --- Display ids and paths.

int32_t GetDisplayIdFromGpuAndOutputId(void* gpu, uint32_t output, uint32_t* display_id) {
  const std::string asked = GpuName(gpu) + " output=" + NvHex(output);
  return Query("NvAPI_SYS_GetDisplayIdFromGpuAndOutputId", asked, [=] {
    if (display_id == nullptr) return kNvInvalidArgument;
    const Model& model = CurrentModel();
    const std::optional<size_t> adapter = NvGpuFromHandle(model, gpu);
    if (!adapter) return kNvInvalidHandle;
    const std::optional<size_t> connector = NvConnectorByOutput(model, *adapter, output);
    if (!connector) return kNvInvalidArgument;
    *display_id = NvDisplayId(model, *connector);
    return kNvOk;
  });
}

int32_t GetGpuAndOutputIdFromDisplayId(uint32_t display_id, void** gpu, uint32_t* output) {
  return Query("NvAPI_SYS_GetGpuAndOutputIdFromDisplayId", "display=" + NvHex(display_id), [=] {
    if (gpu == nullptr || output == nullptr) return kNvInvalidArgument;
    const Model& model = CurrentModel();
    const std::optional<size_t> connector = NvConnectorByDisplayId(model, display_id);
    if (!connector) return kNvInvalidArgument;
    *gpu = NvGpuOf(model.connectors[*connector].adapter);
    *output = NvOutput(model, *connector);
    return kNvOk;
  });
}

int32_t SetDisplayConfig(uint32_t count, void* paths, uint32_t flags) {
  const std::string asked = "flags=" + std::to_string(flags) + " " +
                            DescribeNvPaths(CurrentModel(), count, NvRecord(paths));
  return Change("NvAPI_DISP_SetDisplayConfig", asked,
                [=] { return SetNvPaths(Machine::Current(), count, NvRecord(paths), flags); });
}

// --- Notebooks with two adapters.

int32_t GetCoprocStatus(uint32_t* status, uint32_t* state) {
  return Query("NvAPI_Coproc_GetCoprocStatus", "", [=] {
    if (status == nullptr || state == nullptr) return kNvInvalidArgument;
    const std::vector<size_t> gpus = NvGpus(CurrentModel());
    if (gpus.empty()) return kNvDeviceNotFound;
    *status = CurrentModel().adapters[gpus.front()].nvidia_coproc_status;
    *state = 0;
    return kNvOk;
  });
}

int32_t GetHybridMode(uint32_t* mode) {
  return Query("NvAPI_GetHybridMode", "", [=] {
    if (mode == nullptr) return kNvInvalidArgument;
    if (State().counters.count(kModeUnwritten) != 0) return kNvOk;
    for (const size_t gpu : NvGpus(CurrentModel())) {
      const std::optional<uint32_t>& told = CurrentModel().adapters[gpu].nvidia_hybrid_mode;
      if (!told) continue;
      *mode = *told;
      return kNvOk;
    }
    return kNvNoImplementation;
  });
}

int32_t GetHCloneTopology(void* top) {
  return Query("NvAPI_DISP_GetHCloneTopology", "",
               [=] { return ReadNvCloneGroups(CurrentModel(), NvRecord(top)); });
}

int32_t SetHCloneTopology(void* top) {
  const std::string asked = DescribeNvCloneGroups(CurrentModel(), NvRecord(top));
  return Change("NvAPI_DISP_SetHCloneTopology", asked,
                [=] { return WriteNvCloneGroups(CurrentModel(), NvRecord(top)); });
}

// --- The one export.

struct NvFunction {
  uint32_t id;
  const char* name;
  void* function;
};

const std::vector<NvFunction>& Functions() {
  static const std::vector<NvFunction> functions = {
      {0x0150E828, "NvAPI_Initialize", Guard<Initialize>()},
      {0x01053FA5, "NvAPI_GetInterfaceVersionString", Guard<GetInterfaceVersionString>()},
      {0xE5AC921F, "NvAPI_EnumPhysicalGPUs", Guard<EnumPhysicalGPUs>()},
      {0x9ABDD40D, "NvAPI_EnumNvidiaDisplayHandle", Guard<EnumNvidiaDisplayHandle>()},
      {0x34EF9506, "NvAPI_GetPhysicalGPUsFromDisplay", Guard<GetPhysicalGPUsFromDisplay>()},
      {0xD995937E, "NvAPI_GetAssociatedDisplayOutputId", Guard<GetAssociatedDisplayOutputId>()},
      {0x7D554F8E, "NvAPI_GPU_GetAllOutputs", Guard<GetAllOutputs>()},
      {0x1730BFC9, "NvAPI_GPU_GetConnectedOutputs", Guard<GetConnectedOutputs>()},
      {0xE3E89B6F, "NvAPI_GPU_GetActiveOutputs", Guard<GetActiveOutputs>()},
      {0x4ECA2C10, "NvAPI_GPU_GetConnectorInfo", Guard<GetConnectorInfo>()},
      {0x37D32E69, "NvAPI_GPU_GetEDID", Guard<GetEdid>()},
      {0x6AE16EC3, "NvAPI_GetHDMISupportInfo", Guard<GetHdmiSupportInfo>()},
      {0xDC27D5D4, "NvAPI_GetDisplaySettings", Guard<GetDisplaySettings>()},
      {0x06B89E68, "NvAPI_SetViewEx", Guard<SetViewEx>()},
      {0x1EFC3957, "NvAPI_Coproc_GetCoprocStatus", Guard<GetCoprocStatus>()},
      {0x08F2BAB4, "NvAPI_SYS_GetDisplayIdFromGpuAndOutputId",
       Guard<GetDisplayIdFromGpuAndOutputId>()},
      {0x112BA1A5, "NvAPI_SYS_GetGpuAndOutputIdFromDisplayId",
       Guard<GetGpuAndOutputIdFromDisplayId>()},
      {0x5D8CF8DE, "NvAPI_DISP_SetDisplayConfig", Guard<SetDisplayConfig>()},
      {0xE23B68C1, "NvAPI_GetHybridMode", Guard<GetHybridMode>()},
      {0x47BAD137, "NvAPI_DISP_GetHCloneTopology", Guard<GetHCloneTopology>()},
      {0x61041C24, "NvAPI_DISP_SetHCloneTopology", Guard<SetHCloneTopology>()},
  };
  return functions;
}

void* QueryInterface(uint32_t id) {
  Call call("nvapi_QueryInterface");
  if (call.Fails()) return nullptr;
  for (const NvFunction& row : Functions()) {
    if (row.id != id) continue;
    const bool removed = State().counters.count(std::string(kRemoved) + row.name) != 0;
    call.Read(removed ? 0 : 1, "%s", row.name);
    return removed ? nullptr : row.function;
  }
  call.Read(0, "unknown id 0x%x", id);
  return nullptr;
}

// The library's state goes with it.
void ForgetInitializations() { State().counters.erase(kInitializations); }

}  // namespace

InventedModule NvidiaLibrary() {
  InventedModule module;
  module.name = kNvidiaLibrary;
  module.entries = {{kNvidiaLibrary, "nvapi_QueryInterface", Guard<QueryInterface>()}};
  module.on_unload = ForgetInitializations;
  module.available = NvidiaDriverInstalled;
  return module;
}

bool IsNvidiaFunction(const std::string& name) {
  return std::any_of(Functions().begin(), Functions().end(),
                     [&name](const NvFunction& row) { return name == row.name; });
}

void RemoveNvApi(Machine& machine, const std::string& name) {
  if (!IsNvidiaFunction(name)) throw std::runtime_error("NVIDIA's driver has no " + name);
  machine.state().counters[kRemoved + name] = 1;
}

void HideNvConnectorTypes(Machine& machine) { machine.state().counters[kSilent] = 1; }

void LeaveNvHybridMode(Machine& machine) { machine.state().counters[kModeUnwritten] = 1; }

bool NvTellsConnectorTypes(const Machine& machine) {
  return machine.state().counters.count(kSilent) == 0;
}

uint64_t NvInitializations(const Machine& machine) {
  const auto& counters = machine.state().counters;
  const auto found = counters.find(kInitializations);
  return found == counters.end() ? 0 : found->second;
}

}  // namespace sim
