// The exports of the simulated AtiPdl64.dll.
#include "sim/faces/AmdLegacy.h"

#include "sim/Failure.h"
#include "sim/Topology.h"
#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

uint32_t FaultOf(const Call& call) { return FaultOr(call, kLegacyFault); }

// The GPU behind an adapter number; a fault or an unknown number as the result.
uint32_t FindGpu(const Call& call, uint32_t adapter, size_t* gpu) {
  if (call.Fails()) return FaultOf(call);
  const Model& model = CurrentModel();
  const std::optional<size_t> source = LegacySource(model, adapter);
  if (!source) return kLegacyUnknownAdapter;
  *gpu = model.sources[*source].adapter;
  return kLegacySuccess;
}

// --- What the adapter is.

// Two words whose meaning is the driver's: how many outputs it drives at a time, and which kinds of
// outputs there are.
uint32_t WINAPI GetCapabilities(uint32_t adapter, uint32_t* first, uint32_t* second) {
  Call call("GetCapabilities");
  const Model& model = CurrentModel();
  size_t gpu = 0;
  uint32_t result = FindGpu(call, adapter, &gpu);
  if (result == kLegacySuccess && (first == nullptr || second == nullptr)) {
    result = kLegacyBadArgument;
  }
  if (result == kLegacySuccess) {
    *first = AmdAnswerOr("GetCapabilities first", HeadCount(model.adapters[gpu]));
    uint32_t vector = 0;
    for (const size_t display : LegacyDisplays(model, gpu)) vector |= LegacyVector(model, display);
    *second = AmdAnswerOr("GetCapabilities second", vector);
  }
  return static_cast<uint32_t>(call.Read(result, "adapter=%u", adapter));
}

uint32_t WINAPI GetDisplaySwitchingCapability(uint32_t adapter, uint32_t* value) {
  Call call("ATIDL_GetDisplaySwitchingCapability");
  size_t gpu = 0;
  uint32_t result = FindGpu(call, adapter, &gpu);
  if (result == kLegacySuccess && value == nullptr) result = kLegacyBadArgument;
  if (result == kLegacySuccess) *value = CurrentModel().adapters[gpu].amd.switching_capability;
  return static_cast<uint32_t>(call.Read(result, "adapter=%u", adapter));
}

// Any device may be asked for; those of other vendors have no id.
uint32_t WINAPI GetAdapterId(uint32_t device, uint32_t* id) {
  constexpr uint32_t kId = 0x1002A000;
  Call call("ATIDL_GetAdapterID");
  uint32_t result = call.Fails() ? FaultOf(call) : kLegacySuccess;
  if (result == kLegacySuccess && id == nullptr) result = kLegacyBadArgument;
  if (result == kLegacySuccess) {
    const std::optional<size_t> source = LegacySource(CurrentModel(), device);
    *id = AmdAnswerOr("ATIDL_GetAdapterID", source ? kId + static_cast<uint32_t>(*source) : 0);
  }
  return static_cast<uint32_t>(call.Read(result, "device=%u", device));
}

// --- Displays.

// Unlike the others it answers a truth value.
uint32_t WINAPI EnumDisplays(uint32_t adapter, uint32_t index, uint32_t* type) {
  Call call("EnumDisplays");
  const Model& model = CurrentModel();
  size_t gpu = 0;
  uint32_t found = 0;
  if (!call.Fails() && FindGpu(call, adapter, &gpu) == kLegacySuccess && type != nullptr) {
    if (const std::optional<size_t> connector = LegacyConnector(model, gpu, index)) {
      *type = LegacyType(model.connectors[*connector]);
      found = 1;
    }
  }
  return static_cast<uint32_t>(call.Read(found, "adapter=%u display=%u", adapter, index));
}

constexpr char kConnectedDisplays[] = "GetConnectedDisplays";

uint32_t WINAPI GetConnectedDisplays(uint32_t adapter, uint32_t* vector) {
  Call call(kConnectedDisplays);
  const Model& model = CurrentModel();
  size_t gpu = 0;
  uint32_t result = FindGpu(call, adapter, &gpu);
  if (result == kLegacySuccess && vector == nullptr) result = kLegacyBadArgument;
  if (result == kLegacySuccess) {
    uint32_t connected = 0;
    for (const size_t display : LegacyDisplays(model, gpu)) {
      if (IsConnected(model, display)) connected |= LegacyVector(model, display);
    }
    *vector = AmdAnswerOr(kConnectedDisplays, connected);
  }
  return static_cast<uint32_t>(call.Read(result, "adapter=%u", adapter));
}

// The vector itself is the result.
uint32_t WINAPI GetDisplayVector(uint32_t adapter, uint32_t kind) {
  Call call("ATIDL_GetDisplayVector");
  size_t gpu = 0;
  const bool known = FindGpu(call, adapter, &gpu) == kLegacySuccess;
  const uint32_t vector = call.Fails() ? call.FaultCode()
                          : known      ? LegacyVectorOfKind(CurrentModel(), gpu, kind)
                                       : 0;
  return static_cast<uint32_t>(call.Read(vector, "adapter=%u kind=%u", adapter, kind));
}

constexpr size_t kDeviceConfigSize = 20;

uint32_t WINAPI DisplayGetDeviceConfig(uint32_t adapter, uint32_t index, void* config) {
  Call call("ATIDL_DisplayGetDeviceConfig");
  const Model& model = CurrentModel();
  size_t gpu = 0;
  uint32_t result = FindGpu(call, adapter, &gpu);
  if (result == kLegacySuccess && config == nullptr) result = kLegacyBadArgument;
  if (result == kLegacySuccess) {
    AmdRecord record(config, kDeviceConfigSize);
    const std::optional<size_t> connector = LegacyConnector(model, gpu, index);
    if (record.Get(0) != kDeviceConfigSize) {
      result = kLegacyBadArgument;
    } else if (!connector) {
      result = kLegacyUnknownDisplay;
    } else {
      record.Put(4, LegacyKind(model.connectors[*connector]));
    }
  }
  return static_cast<uint32_t>(call.Read(result, "adapter=%u display=%u", adapter, index));
}

constexpr size_t kEdidRecordSize = 288;

uint32_t PutEdid(const Model& model, size_t gpu, uint32_t index, AmdRecord record) {
  constexpr size_t kSizeAt = 8;
  constexpr size_t kDataAt = 16;
  constexpr uint32_t kRoom = 256;
  const uint32_t room = record.Get(kSizeAt);
  if (record.Get(0) != kEdidRecordSize || room > kRoom) return kLegacyBadArgument;
  const std::optional<size_t> connector = LegacyConnector(model, gpu, index);
  if (!connector) return kLegacyUnknownDisplay;
  if (!IsConnected(model, *connector)) return kLegacyNotConnected;
  std::vector<uint8_t> edid = model.connectors[*connector].monitor->edid;
  if (edid.empty()) return kLegacyNotConnected;
  if (edid.size() > room) edid.resize(room);
  record.PutBytes(kDataAt, edid);
  record.Put(kSizeAt, static_cast<uint32_t>(edid.size()));
  return kLegacySuccess;
}

// As many bytes as there is room for.
uint32_t WINAPI DisplayGetEdidData(uint32_t adapter, uint32_t index, void* data) {
  Call call("ATIDL_DisplayGetEdidData");
  size_t gpu = 0;
  uint32_t result = FindGpu(call, adapter, &gpu);
  if (result == kLegacySuccess && data == nullptr) result = kLegacyBadArgument;
  const uint32_t room = data != nullptr ? AmdRecord(data, kEdidRecordSize).Get(8) : 0;
  if (result == kLegacySuccess) {
    result = PutEdid(CurrentModel(), gpu, index, AmdRecord(data, kEdidRecordSize));
  }
  return static_cast<uint32_t>(
      call.Read(result, "adapter=%u display=%u room=%u", adapter, index, room));
}

// --- Arrangements.

// Its size may be left out.
uint32_t WINAPI GetActiveDisplays(uint32_t adapter, void* config) {
  Call call("ATIDL_GetActiveDisplays");
  size_t gpu = 0;
  uint32_t result = FindGpu(call, adapter, &gpu);
  if (result == kLegacySuccess && config == nullptr) result = kLegacyBadArgument;
  if (result == kLegacySuccess) {
    const AmdRecord record(config, kLegacyConfigSize);
    const uint32_t size = record.Get(0);
    result = size == 0 || size == kLegacyConfigSize ? GetLegacyActive(CurrentModel(), gpu, record)
                                                    : kLegacyBadArgument;
  }
  return static_cast<uint32_t>(call.Read(result, "adapter=%u", adapter));
}

uint32_t WINAPI SetConfigurationEx(uint32_t adapter, void* config) {
  Call call("ATIDL_SetConfigurationEx");
  uint32_t result = call.Fails() ? FaultOf(call) : kLegacySuccess;
  if (config == nullptr) {
    if (result == kLegacySuccess) result = kLegacyBadArgument;
    return static_cast<uint32_t>(call.Changed(result, "adapter=%u null", adapter));
  }
  const AmdRecord record(config, kLegacyConfigSize);
  if (result == kLegacySuccess) result = SetLegacyConfig(CurrentModel(), adapter, record);
  return static_cast<uint32_t>(
      call.Changed(result, "adapter=%u %s", adapter, DescribeLegacyConfig(record).c_str()));
}

// The two calls of the adapter's configuration: `apply` reads the record or fills it.
template <typename Apply>
uint32_t WithAdapterConfig(Call* call, void* config, Apply apply, std::string* text) {
  uint32_t result = call->Fails() ? FaultOf(*call) : kLegacySuccess;
  if (result == kLegacySuccess && config == nullptr) result = kLegacyBadArgument;
  *text = "null";
  if (config == nullptr) return result;
  const AmdRecord record(config, kLegacyAdapterConfigSize);
  *text = DescribeLegacyAdapterConfig(record);
  return result == kLegacySuccess ? apply(CurrentModel(), record) : result;
}

uint32_t WINAPI GetAdapterConfig(void* config) {
  Call call("ATIDL_GetAdapterConfig");
  std::string text;
  const uint32_t result = WithAdapterConfig(&call, config, GetLegacyAdapterConfig, &text);
  return static_cast<uint32_t>(call.Read(result, "%s", text.c_str()));
}

uint32_t WINAPI SetAdapterConfig(void* config) {
  Call call("ATIDL_SetAdapterConfig");
  std::string text;
  const uint32_t result = WithAdapterConfig(&call, config, SetLegacyAdapterConfig, &text);
  return static_cast<uint32_t>(call.Changed(result, "%s", text.c_str()));
}

// The number is that of the device that is turned on or off: the second one of an adapter is one
// above its first.
uint32_t WINAPI EnableExtendedDesktop(uint32_t adapter, uint32_t enable) {
  Call call("EnableExtendedDesktop");
  const uint32_t result =
      call.Fails() ? FaultOf(call) : ExtendLegacy(CurrentModel(), adapter, enable != 0);
  return static_cast<uint32_t>(call.Changed(result, "adapter=%u enable=%u", adapter, enable));
}

// --- Exports that are there and that nobody needs. The caller clears the stack, so that their
// arguments need not be known.

uint32_t NotSimulated(const char* name) {
  ReportFailure(std::string(name) + " was called, which is not simulated");
  return kLegacyFault;
}

uint32_t WINAPI GetConfiguration() { return NotSimulated("GetConfiguration"); }
uint32_t WINAPI SetConfiguration() { return NotSimulated("SetConfiguration"); }
uint32_t WINAPI SetActiveDisplays() { return NotSimulated("ATIDL_SetActiveDisplays"); }
uint32_t WINAPI GetDisplaySettings() { return NotSimulated("ATIDL_GetDisplaySettings"); }

}  // namespace

const std::vector<Entry>& AmdLegacyEntries() {
  static const std::vector<Entry> entries = {
      {kAmdLegacyLibrary, "GetCapabilities", Guard<GetCapabilities>()},
      {kAmdLegacyLibrary, "GetConfiguration", Guard<GetConfiguration>()},
      {kAmdLegacyLibrary, "SetConfiguration", Guard<SetConfiguration>()},
      {kAmdLegacyLibrary, "EnumDisplays", Guard<EnumDisplays>()},
      {kAmdLegacyLibrary, kConnectedDisplays, Guard<GetConnectedDisplays>()},
      {kAmdLegacyLibrary, "EnableExtendedDesktop", Guard<EnableExtendedDesktop>()},
      {kAmdLegacyLibrary, "ATIDL_GetDisplaySwitchingCapability",
       Guard<GetDisplaySwitchingCapability>()},
      {kAmdLegacyLibrary, "ATIDL_GetActiveDisplays", Guard<GetActiveDisplays>()},
      {kAmdLegacyLibrary, "ATIDL_SetActiveDisplays", Guard<SetActiveDisplays>()},
      {kAmdLegacyLibrary, "ATIDL_SetConfigurationEx", Guard<SetConfigurationEx>()},
      {kAmdLegacyLibrary, "ATIDL_GetAdapterID", Guard<GetAdapterId>()},
      {kAmdLegacyLibrary, "ATIDL_GetDisplayVector", Guard<GetDisplayVector>()},
      {kAmdLegacyLibrary, "ATIDL_GetAdapterConfig", Guard<GetAdapterConfig>()},
      {kAmdLegacyLibrary, "ATIDL_SetAdapterConfig", Guard<SetAdapterConfig>()},
      {kAmdLegacyLibrary, "ATIDL_DisplayGetEdidData", Guard<DisplayGetEdidData>()},
      {kAmdLegacyLibrary, "ATIDL_DisplayGetDeviceConfig", Guard<DisplayGetDeviceConfig>()},
      {kAmdLegacyLibrary, "ATIDL_GetDisplaySettings", Guard<GetDisplaySettings>()},
  };
  return entries;
}

}  // namespace sim
