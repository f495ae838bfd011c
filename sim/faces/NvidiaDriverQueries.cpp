// What the driver tells of connectors, monitors and the modes they stand in.
#include <algorithm>

#include "sim/Topology.h"
#include "sim/faces/NvidiaDriver.h"
#include "sim/faces/NvidiaDriverRules.h"

namespace sim {
namespace {

// Connector information.
constexpr uint32_t kTypeAt = 12;
constexpr uint32_t kIndexAt = 16;

// NV_EDID.
constexpr uint32_t kEdidDataAt = 4;
constexpr uint32_t kEdidPage = 256;
constexpr uint32_t kEdidSizeAt = 260;
constexpr uint32_t kEdidIdAt = 264;
constexpr uint32_t kEdidOffsetAt = 268;

// HDMI support.
constexpr uint32_t kHdmiFlagsAt = 4;
constexpr uint32_t kGpuIsCapable = 1;
constexpr uint32_t kMonitorIsHdmi = 0x80;
constexpr uint32_t kHdmiA = 97;
constexpr uint32_t kHdmiC = 99;

// Display settings.
constexpr uint32_t kSettingsSize = 208;
constexpr uint32_t kSettingsTypeAt = 8;
constexpr uint32_t kSettingsWidthAt = 20;
constexpr uint32_t kSettingsHeightAt = 24;
constexpr uint32_t kSettingsBitsAt = 28;
constexpr uint32_t kSettingsRotationAt = 32;
constexpr uint32_t kSettingsRefreshAt = 96;

bool IsHdmiType(uint32_t type) { return type == kHdmiA || type == kHdmiC; }

// The data blocks of a CTA extension: the vendor's one with HDMI's identifier 00-0C-03.
bool BlockHasHdmi(const uint8_t* block) {
  constexpr uint8_t kCta = 2;
  constexpr uint8_t kVendorBlock = 3;
  if (block[0] != kCta) return false;
  const size_t end = std::min<size_t>(block[2], 127);
  for (size_t at = 4; at + 3 < end; at += (block[at] & 0x1FU) + 1U) {
    if (block[at] >> 5 != kVendorBlock || (block[at] & 0x1F) < 3) continue;
    if (block[at + 1] == 0x03 && block[at + 2] == 0x0C && block[at + 3] == 0x00) return true;
  }
  return false;
}

bool EdidHasHdmi(const std::vector<uint8_t>& edid) {
  constexpr size_t kBlock = 128;
  for (size_t at = kBlock; at + kBlock <= edid.size(); at += kBlock) {
    if (BlockHasHdmi(&edid[at])) return true;
  }
  return false;
}

// By its EDID, or by the plug that it hangs on.
bool IsHdmiMonitor(const Connector& connector) {
  if (!connector.monitor) return false;
  return EdidHasHdmi(connector.monitor->edid) || IsHdmiType(NvConnectorType(connector));
}

bool HasHdmiPlug(const Model& model, size_t gpu) {
  return std::any_of(model.connectors.begin(), model.connectors.end(),
                     [gpu](const Connector& connector) {
                       return connector.adapter == gpu && IsHdmiType(NvConnectorType(connector));
                     });
}

// The connector that a display handle and an id name together: an output of the handle's GPU, with
// id 0 the handle's own output. Without a handle: a display id, or an output of the first GPU.
NvStatus FindOutput(Machine& machine, const void* handle, uint32_t id, size_t* connector) {
  const Model& model = machine.state().model;
  const std::optional<size_t> display = NvDisplayFromHandle(machine, handle);
  if (handle != nullptr && !display) return kNvInvalidHandle;
  const std::vector<size_t> gpus = NvGpus(model);
  if (gpus.empty()) return kNvDeviceNotFound;
  if (display && id == 0) {
    *connector = ConnectorsOfSource(model, *display).front();
    return kNvOk;
  }
  std::optional<size_t> found;
  if (!display) found = NvConnectorByDisplayId(model, id);
  const size_t gpu = display ? model.sources[*display].adapter : gpus.front();
  if (!found) found = NvConnectorByOutput(model, gpu, id);
  if (!found) return kNvInvalidArgument;
  *connector = *found;
  return kNvOk;
}

}  // namespace

NvStatus GetNvConnectorInfo(const Model& model, size_t gpu, uint32_t output, NvRecord record) {
  if (record.version() != kNvConnectorVersion) return kNvIncompatibleVersion;
  const std::optional<size_t> connector = NvConnectorByOutput(model, gpu, output);
  if (!connector) return kNvInvalidArgument;
  const uint32_t type = NvConnectorType(model.connectors[*connector]);
  uint32_t index = 0;
  for (size_t i = 0; i < *connector; ++i) {
    if (model.connectors[i].adapter == gpu && NvConnectorType(model.connectors[i]) == type) ++index;
  }
  record.Put(kTypeAt, type);
  record.Put(kIndexAt, index);
  return kNvOk;
}

// One page of 256 bytes from the offset that the caller names; what lies beyond the EDID is zero.
NvStatus GetNvEdid(const Model& model, size_t gpu, uint32_t output, NvRecord record) {
  if (record.version() != kNvEdidVersion) return kNvIncompatibleVersion;
  const std::optional<size_t> connector = NvConnectorByOutput(model, gpu, output);
  if (!connector) return kNvInvalidArgument;
  if (!IsConnected(model, *connector)) return kNvError;
  const std::vector<uint8_t>& edid = model.connectors[*connector].monitor->edid;
  if (edid.empty()) return kNvError;
  const size_t offset = record.Get(kEdidOffsetAt);
  if (offset % kEdidPage != 0 || offset >= edid.size()) return kNvInvalidArgument;
  std::vector<uint8_t> page(edid.begin() + static_cast<std::ptrdiff_t>(offset), edid.end());
  page.resize(kEdidPage, 0);
  record.PutBytes(kEdidDataAt, page.data(), page.size());
  record.Put(kEdidSizeAt, static_cast<uint32_t>(edid.size()));
  record.Put(kEdidIdAt, 1);
  return kNvOk;
}

NvStatus GetNvHdmiSupport(Machine& machine, const void* handle, uint32_t id, NvRecord record) {
  if (record.version() != kNvHdmiVersion && record.version() != kNvHdmiVersion2) {
    return kNvIncompatibleVersion;
  }
  size_t connector = 0;
  const NvStatus status = FindOutput(machine, handle, id, &connector);
  if (status != kNvOk) return status;
  const Model& model = machine.state().model;
  const Connector& c = model.connectors[connector];
  uint32_t flags = 0;
  if (HasHdmiPlug(model, c.adapter)) flags |= kGpuIsCapable;
  if (IsHdmiMonitor(c)) flags |= kMonitorIsHdmi;
  record.Put(kHdmiFlagsAt, flags);
  return kNvOk;
}

// One record for each output of the display, after a first call without an array that tells how
// many these are.
NvStatus GetNvDisplaySettings(Machine& machine, const void* handle, NvRecord records,
                              uint32_t* count) {
  const std::optional<size_t> display = NvDisplayFromHandle(machine, handle);
  if (!display) return kNvInvalidHandle;
  const Model& model = machine.state().model;
  const std::vector<size_t> connectors = ConnectorsOfSource(model, *display);
  const auto needed = static_cast<uint32_t>(connectors.size());
  if (!records) {
    *count = needed;
    return kNvOk;
  }
  if (*count < needed) return kNvInvalidArgument;
  for (uint32_t i = 0; i < needed; ++i) {
    if (records.At(i * kSettingsSize).version() != kNvSettingsVersion) {
      return kNvIncompatibleVersion;
    }
  }
  const Source& source = model.sources[*display];
  for (uint32_t i = 0; i < needed; ++i) {
    NvRecord record = records.At(i * kSettingsSize);
    record.Put(kSettingsTypeAt, NvTellsConnectorTypes(machine)
                                    ? NvConnectorType(model.connectors[connectors[i]])
                                    : kNvUnknownConnector);
    record.Put(kSettingsWidthAt, source.mode.width);
    record.Put(kSettingsHeightAt, source.mode.height);
    record.Put(kSettingsBitsAt, source.mode.bits);
    record.Put(kSettingsRotationAt, source.orientation);
    record.Put(kSettingsRefreshAt, source.mode.frequency);
  }
  *count = needed;
  return kNvOk;
}

}  // namespace sim
