// ADL: displays, their EDID and modes, and what an adapter can do.
#include <algorithm>
#include <iterator>

#include "sim/Topology.h"
#include "sim/faces/AmdAdl.h"
#include "sim/faces/AmdDriver.h"

namespace sim {
namespace {

// iDisplayInfoMask and iDisplayInfoValue.
constexpr uint32_t kConnected = 0x1;
constexpr uint32_t kMapped = 0x2;
constexpr uint32_t kForcible = 0x8;
constexpr uint32_t kSingle = 0x100;
constexpr uint32_t kClone = 0x200;
constexpr uint32_t kExtended = 0x1000;

uint32_t InfoValue(const Model& model, size_t connector) {
  uint32_t value = IsConnected(model, connector) ? kConnected : 0;
  if (IsForcible(model.connectors[connector].technology)) value |= kForcible;
  const std::optional<size_t> source = SourceOfConnector(model, connector);
  if (!source) return value;
  value |= kMapped;
  if (ConnectorsOfSource(model, *source).size() > 1) return value | kClone;
  const size_t desktops = AmdDesktops(model, model.connectors[connector].adapter).size();
  return value | (desktops > 1 ? kExtended : kSingle);
}

// The three letters that an EDID has in its bytes 8 and 9.
std::string MakerOf(const Monitor& monitor) {
  if (monitor.edid.size() < 10) return "";
  const uint32_t word = static_cast<uint32_t>(monitor.edid[8]) << 8 | monitor.edid[9];
  std::string maker;
  for (const int shift : {10, 5, 0}) {
    maker += static_cast<char>('A' - 1 + ((word >> shift) & 0x1F));
  }
  return maker;
}

void PutDisplayInfo(const Model& model, size_t connector, AmdRecord record) {
  const Connector& c = model.connectors[connector];
  const std::optional<size_t> source = SourceOfConnector(model, connector);
  PutAdlDisplayId(model, connector, source ? AdlIndexOfSource(model, *source) : -1,
                  record.Slice(0, 16));
  record.PutInt(16, source ? static_cast<int32_t>(model.sources[*source].source_id) : -1);
  record.PutText(20, 256, c.monitor ? c.monitor->name : c.id);
  record.PutText(276, 256, c.monitor ? MakerOf(*c.monitor) : "");
  record.PutInt(532, AdlDisplayType(c));
  record.PutInt(536, 0);
  record.PutInt(540, AdlConnectorType(c));
  record.Put(544, kConnected | kMapped | kForcible | kSingle | kClone | kExtended);
  record.Put(548, InfoValue(model, connector));
}

int WINAPI DisplayInfoGet(int index, int* count, void** infos, int force) {
  Call call("ADL_Display_DisplayInfo_Get");
  const Model& model = CurrentModel();
  AdlAdapter adapter;
  int32_t result = AdlRefusal(call, index, &adapter);
  if (result == kAdlOk && (count == nullptr || infos == nullptr)) result = kAdlNullPointer;
  if (result == kAdlOk && force != 0 && force != 1) result = kAdlInvalidParameter;
  if (result == kAdlOk) {
    const std::vector<size_t> connectors = ConnectorsOfAdapter(model, adapter.gpu);
    AmdRecord records(nullptr, 0);
    result = GiveAdlArray(connectors.size(), kAdlDisplayInfoSize, count, infos, &records);
    for (size_t i = 0; result == kAdlOk && i < connectors.size(); ++i) {
      PutDisplayInfo(model, connectors[i],
                     records.Slice(i * kAdlDisplayInfoSize, kAdlDisplayInfoSize));
    }
  }
  return static_cast<int>(call.Read(result, "adapter=%d force=%d", index, force));
}

// --- One number about an adapter.

// `find` gives the value, or nothing where the adapter has no such thing.
template <typename Find>
int GiveNumber(const char* function, int index, int* value, Find find) {
  Call call(function);
  AdlAdapter adapter;
  int32_t result = AdlRefusal(call, index, &adapter);
  if (result == kAdlOk && value == nullptr) result = kAdlNullPointer;
  if (result == kAdlOk) {
    const std::optional<uint32_t> found = find(CurrentModel(), adapter.gpu);
    if (!found) result = kAdlNotSupported;
    if (found) *value = static_cast<int>(*found);
  }
  return static_cast<int>(call.Read(result, "adapter=%d", index));
}

uint32_t DisplayCount(const Model& model, size_t gpu) {
  return static_cast<uint32_t>(ConnectorsOfAdapter(model, gpu).size());
}

constexpr char kNumberOfDisplays[] = "ADL_Display_NumberOfDisplays_Get";

int WINAPI NumberOfDisplaysGet(int index, int* count) {
  return GiveNumber(kNumberOfDisplays, index, count, [](const Model& model, size_t gpu) {
    return std::optional<uint32_t>(AmdAnswerOr(kNumberOfDisplays, DisplayCount(model, gpu)));
  });
}

int WINAPI SwitchingCapabilityGet(int index, int* value) {
  return GiveNumber("ADL_Display_SwitchingCapability_Get", index, value,
                    [](const Model& model, size_t gpu) {
                      return std::optional<uint32_t>(model.adapters[gpu].amd.switching_capability);
                    });
}

std::optional<uint32_t> WithPowerXpress(const AmdDriver& driver, uint32_t value) {
  return driver.powerxpress != 0 ? std::optional<uint32_t>(value) : std::nullopt;
}

int WINAPI PowerXpressVersionGet(int index, int* version) {
  return GiveNumber("ADL_Display_PowerXpressVersion_Get", index, version,
                    [](const Model& model, size_t gpu) {
                      const AmdDriver& driver = model.adapters[gpu].amd;
                      return WithPowerXpress(driver, driver.powerxpress);
                    });
}

int WINAPI PowerXpressActiveGpuGet(int index, int* gpu_out) {
  return GiveNumber("ADL_Display_PowerXpressActiveGPU_Get", index, gpu_out,
                    [](const Model& model, size_t gpu) {
                      const AmdDriver& driver = model.adapters[gpu].amd;
                      return WithPowerXpress(driver, driver.active_gpu);
                    });
}

int WINAPI CapabilitiesGet(int index, int* controllers, int* displays) {
  Call call("ADL_Display_Capabilities_Get");
  const Model& model = CurrentModel();
  AdlAdapter adapter;
  int32_t result = AdlRefusal(call, index, &adapter);
  if (result == kAdlOk && (controllers == nullptr || displays == nullptr)) {
    result = kAdlNullPointer;
  }
  if (result == kAdlOk) {
    const uint32_t heads = HeadCount(model.adapters[adapter.gpu]);
    const uint32_t count = DisplayCount(model, adapter.gpu);
    *controllers = static_cast<int>(AmdAnswerOr("ADL_Display_Capabilities_Get controllers", heads));
    *displays = static_cast<int>(AmdAnswerOr("ADL_Display_Capabilities_Get displays", count));
  }
  return static_cast<int>(call.Read(result, "adapter=%d", index));
}

// --- EDID. A block of the call is what fits into its record.

constexpr size_t kEdidBlock = 256;
constexpr int32_t kLastEdidBlock = 2;
constexpr char kEdidDataGet[] = "ADL_Display_EdidData_Get";

int32_t PutEdid(const Model& model, size_t gpu, int32_t display, AmdRecord record) {
  const int32_t block = record.Int(12);
  if (block < 0 || block > kLastEdidBlock) return kAdlInvalidParameter;
  const std::optional<size_t> connector = AdlConnector(model, gpu, display);
  if (!connector) return kAdlInvalidDisplay;
  if (!IsConnected(model, *connector)) return kAdlError;
  const std::vector<uint8_t>& edid = model.connectors[*connector].monitor->edid;
  const size_t start = static_cast<size_t>(block) * kEdidBlock;
  if (start >= edid.size()) return kAdlError;
  const size_t size = std::min(kEdidBlock, edid.size() - start);
  const auto first = edid.begin() + static_cast<std::ptrdiff_t>(start);
  record.PutBytes(16, {first, first + static_cast<std::ptrdiff_t>(size)});
  record.Put(8, AmdAnswerOr(kEdidDataGet, static_cast<uint32_t>(size)));
  return kAdlOk;
}

int WINAPI EdidDataGet(int index, int display, void* data) {
  Call call(kEdidDataGet);
  AdlAdapter adapter;
  int32_t result = AdlRefusal(call, index, &adapter);
  if (result == kAdlOk && data == nullptr) result = kAdlNullPointer;
  if (result == kAdlOk) {
    const AmdRecord record(data, kAdlEdidSize);
    result = record.Get(0) != kAdlEdidSize ? kAdlInvalidParameterSize
                                           : PutEdid(CurrentModel(), adapter.gpu, display, record);
  }
  return static_cast<int>(call.Read(result, "adapter=%d display=%d", index, display));
}

// --- Modes: what the display shows now; nothing while it is dark.

int WINAPI ModesGet(int index, int display, int* count, void** modes) {
  Call call("ADL_Display_Modes_Get");
  const Model& model = CurrentModel();
  AdlAdapter adapter;
  int32_t result = AdlRefusal(call, index, &adapter);
  if (result == kAdlOk && (count == nullptr || modes == nullptr)) result = kAdlNullPointer;
  std::vector<size_t> connectors = ConnectorsOfAdapter(model, adapter.gpu);
  if (result == kAdlOk && display != -1) {
    const std::optional<size_t> connector = AdlConnector(model, adapter.gpu, display);
    if (connector) connectors = {*connector};
    if (!connector) result = kAdlInvalidDisplay;
  }
  const auto is_dark = [&model](size_t i) { return !SourceOfConnector(model, i); };
  connectors.erase(std::remove_if(connectors.begin(), connectors.end(), is_dark), connectors.end());
  if (result == kAdlOk) {
    AmdRecord records(nullptr, 0);
    result = GiveAdlArray(connectors.size(), kAdlModeSize, count, modes, &records);
    for (size_t i = 0; result == kAdlOk && i < connectors.size(); ++i) {
      PutAdlMode(model, *SourceOfConnector(model, connectors[i]), connectors[i],
                 records.Slice(i * kAdlModeSize, kAdlModeSize));
    }
  }
  return static_cast<int>(call.Read(result, "adapter=%d display=%d", index, display));
}

}  // namespace

void AddAdlDisplayEntries(std::vector<Entry>* entries) {
  const Entry own[] = {
      {kAdlLibrary, "ADL_Display_DisplayInfo_Get", Guard<DisplayInfoGet>()},
      {kAdlLibrary, kNumberOfDisplays, Guard<NumberOfDisplaysGet>()},
      {kAdlLibrary, "ADL_Display_SwitchingCapability_Get", Guard<SwitchingCapabilityGet>()},
      {kAdlLibrary, kEdidDataGet, Guard<EdidDataGet>()},
      {kAdlLibrary, "ADL_Display_PowerXpressVersion_Get", Guard<PowerXpressVersionGet>()},
      {kAdlLibrary, "ADL_Display_PowerXpressActiveGPU_Get", Guard<PowerXpressActiveGpuGet>()},
      {kAdlLibrary, "ADL_Display_Capabilities_Get", Guard<CapabilitiesGet>()},
      {kAdlLibrary, "ADL_Display_Modes_Get", Guard<ModesGet>()},
  };
  entries->insert(entries->end(), std::begin(own), std::end(own));
}

}  // namespace sim
