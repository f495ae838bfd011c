// What is connected, what is active, and how; what the driver says of its adapters.
#include "Common/Logging.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV2.h"
#include "Common/win_util.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

namespace {

constexpr uint32_t kEdidSize = 256;
constexpr DWORD kSettingsFields =
    DM_BITSPERPEL | DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFREQUENCY;
static_assert(kSettingsFields == 0x5C0000, "depth, width, height, frequency");

// The GPU that a display handle belongs to.
bool FirstGpuOfDisplay(NvDisplayHandle handle, NvPhysicalGpuHandle* gpu) {
  NvPhysicalGpuHandle gpus[NVAPI_MAX_PHYSICAL_GPUS] = {};
  uint32_t count = 0;
  if (NvApi::Get().GetPhysicalGPUsFromDisplay(handle, gpus, &count) != NVAPI_OK) return false;
  *gpu = gpus[0];
  return count > 0;
}

// Follows a display handle to the plug behind it.
bool ConnectorTypeOfHandle(NvDisplayHandle handle, uint32_t* connector_type) {
  const NvApi& api = NvApi::Get();
  NvPhysicalGpuHandle gpu = nullptr;
  if (!FirstGpuOfDisplay(handle, &gpu)) return false;
  uint32_t output = 0;
  if (api.GetAssociatedDisplayOutputId(handle, &output) != NVAPI_OK) return false;
  NvConnectorInfo connector = {};
  connector.version = kNvConnectorInfoVersion;
  if (api.GPU_GetConnectorInfo(gpu, output, &connector) != NVAPI_OK) return false;
  *connector_type = connector.type;
  return true;
}

// The settings of every display that a handle stands for.
class SettingsOfHandle {
 public:
  bool Read(NvDisplayHandle handle) {
    const NvApi& api = NvApi::Get();
    uint32_t room = 0;
    if (api.GetDisplaySettings(handle, nullptr, &room) != NVAPI_OK) return false;
    records_.reset(new (std::nothrow) NvDisplaySettings[room]());
    if (records_ == nullptr) return false;
    for (uint32_t i = 0; i < room; ++i) records_[i].version = kNvDisplaySettingsVersion;
    count_ = room;
    if (api.GetDisplaySettings(handle, records_.get(), &count_) != NVAPI_OK) return false;
    count_ = std::min(count_, room);  // a display may have come since the first call
    return true;
  }
  const NvDisplaySettings* begin() const { return records_.get(); }
  const NvDisplaySettings* end() const { return records_.get() + count_; }

 private:
  std::unique_ptr<NvDisplaySettings[]> records_;
  uint32_t count_ = 0;
};

void CopySettings(const NvDisplaySettings& settings, DEVMODEA* dm) {
  dm->dmFields = kSettingsFields;
  dm->dmPelsWidth = settings.width;
  dm->dmPelsHeight = settings.height;
  dm->dmBitsPerPel = settings.bits_per_pixel;
  dm->dmDisplayFrequency = settings.refresh_rate;
  dm->dmDisplayOrientation = settings.rotation <= DMDO_270 ? settings.rotation : DMDO_DEFAULT;
}

// What a GPU's connectors are made for. A connector type without a row says nothing.
struct Capabilities {
  bool internal_display_found = false;
  bool hdmi_found = false;
  bool displayport_found = false;
};
struct CapabilityRow {
  uint32_t connector_type;
  bool Capabilities::*found;
};
constexpr CapabilityRow kCapabilities[] = {
    {64, &Capabilities::internal_display_found},
    {71, &Capabilities::internal_display_found},
    {97, &Capabilities::hdmi_found},
    {99, &Capabilities::hdmi_found},
    {70, &Capabilities::displayport_found},
    {72, &Capabilities::displayport_found},
    {100, &Capabilities::displayport_found},
    {101, &Capabilities::displayport_found},
};

Capabilities ReadCapabilities(NvPhysicalGpuHandle gpu, uint32_t outputs) {
  Capabilities capabilities;
  NvConnectorInfo connector = {};
  connector.version = kNvConnectorInfoVersion;
  for (const uint32_t nv_mask : kNvidiaOutputs) {
    if ((outputs & nv_mask) == 0) continue;
    if (NvApi::Get().GPU_GetConnectorInfo(gpu, nv_mask, &connector) == NVAPI_OK) {
      for (const CapabilityRow& row : kCapabilities) {
        if (row.connector_type == connector.type) capabilities.*row.found = true;
      }
    }
    outputs &= ~nv_mask;
    if (outputs == 0) break;
  }
  return capabilities;
}

const char* Word(bool value) { return value ? "true" : "false"; }

}  // namespace

void NvidiaMMImplV2::DetectDisplays() { RefreshGpus(); }

bool NvidiaMMImplV2::RefreshGpus() {
  NvPhysicalGpuHandle gpus[NVAPI_MAX_PHYSICAL_GPUS] = {};
  uint32_t count = 0;
  if (NvApi::Get().EnumPhysicalGPUs(gpus, &count) != NVAPI_OK) {
    LOG(ERROR) << "Calling EnumPhysicalGPUs failed";
    return false;
  }
  std::copy(std::begin(gpus), std::end(gpus), m_gpus);
  m_gpuCount = std::min(count, NVAPI_MAX_PHYSICAL_GPUS);
  return m_gpuCount > 0;
}

BOOL NvidiaMMImplV2::GetConnectedDisplays(uint32_t* imm_displays, uint32_t* display_count) {
  DCHECK(imm_displays != NULL);
  DCHECK(display_count != NULL);
  if (imm_displays == nullptr || display_count == nullptr) return FALSE;
  *imm_displays = 0;
  *display_count = 0;
  if (m_nvProxy == nullptr || m_gpuCount == 0) return FALSE;
  m_currentGpu = 0;
  for (uint32_t i = 0; GpuAt(i) != nullptr; ++i) {
    uint32_t outputs = 0;
    if (NvApi::Get().GPU_GetConnectedOutputs(GpuAt(i), &outputs) != NVAPI_OK) continue;
    if (outputs == 0) continue;
    m_currentGpu = i;
    NvMaskToDisplays(outputs, imm_displays, display_count);
    return TRUE;
  }
  // Deliberate: no GPU with a display is an answer, and no failure.
  return TRUE;
}

BOOL NvidiaMMImplV2::GetActiveDisplays(uint32_t* imm_displays, uint32_t* display_count) {
  DCHECK(imm_displays);
  DCHECK(display_count);
  if (m_nvProxy == nullptr || imm_displays == nullptr || display_count == nullptr) return FALSE;
  if (m_gpuCount == 0) return FALSE;
  uint32_t outputs = 0;
  if (NvApi::Get().GPU_GetActiveOutputs(CurrentGpu(), &outputs) != NVAPI_OK) return FALSE;
  // Deliberate: without an active output the caller's values stay.
  if (outputs != 0) NvMaskToDisplays(outputs, imm_displays, display_count);
  return TRUE;
}

BOOL NvidiaMMImplV2::GetCurrentDisplayMode(uint32_t* imm_mode, uint32_t* imm_displays) {
  DCHECK(imm_mode);
  DCHECK(imm_displays);
  if (m_nvProxy == nullptr || imm_mode == nullptr || imm_displays == nullptr) return FALSE;
  uint32_t displays = 0;
  uint32_t display_count = 0;
  // What cannot be read shows no display.
  GetActiveDisplays(&displays, &display_count);
  if (IsExtendModeEnabled() != 0) {
    *imm_mode = DM_EXTEND;
    *imm_displays = displays;
    return TRUE;
  }
  // Deliberate: no display at all is a failure, and more than two are a success that tells nothing.
  if (display_count == 0) return FALSE;
  if (display_count > 2) return TRUE;
  *imm_mode = display_count == 1 ? DM_SINGLE : DM_CLONE;
  *imm_displays = displays;
  return TRUE;
}

bool NvidiaMMImplV2::GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) {
  DCHECK(CountBits(imm_display) == 1);
  DCHECK(dm != NULL);
  if (m_nvProxy == nullptr || dm == nullptr) return false;
  NvDisplayHandle handle = nullptr;
  for (uint32_t i = 0; NvApi::Get().EnumNvidiaDisplayHandle(i, &handle) == NVAPI_OK; ++i) {
    SettingsOfHandle all;
    if (!all.Read(handle)) return false;
    for (const NvDisplaySettings& settings : all) {
      uint32_t connector_type = settings.connector_type;
      if (connector_type == kUnknownConnector && !ConnectorTypeOfHandle(handle, &connector_type)) {
        continue;
      }
      // Deliberate: a display that is looked up by no type is found behind a plug of no known type.
      if (connector_type != DisplayToConnector(imm_display)) continue;
      CopySettings(settings, dm);
      return true;
    }
  }
  return false;
}

bool NvidiaMMImplV2::ReadEdid(uint32_t display, bool refresh_outputs, EdidBlob* edid) {
  if (m_nvProxy == nullptr || edid == nullptr || m_gpuCount == 0) return false;
  NvDisplayHandle handle = nullptr;
  if (!FirstDisplayHandle(&handle)) return false;
  NvPhysicalGpuHandle gpu = nullptr;
  if (!FirstGpuOfDisplay(handle, &gpu)) return false;
  if (refresh_outputs) {
    uint32_t displays = 0;
    uint32_t display_count = 0;
    GetConnectedDisplays(&displays, &display_count);
  }
  NV_EDID block = {};
  block.version = NV_EDID_VER3;
  block.sizeofEDID = sizeof(block);
  if (NvApi::Get().GPU_GetEDID(gpu, CachedMaskOfDisplays(display), &block) != NVAPI_OK) {
    return false;
  }
  auto bytes = std::make_unique<uint8_t[]>(kEdidSize);
  std::copy_n(block.EDID_Data, kEdidSize, bytes.get());
  edid->cb = kEdidSize;
  edid->pv = bytes.release();
  return true;
}

bool NvidiaMMImplV2::GetMonitorEDID(uint32_t display, EdidBlob* edid) {
  return ReadEdid(display, false, edid);
}

void NvidiaMMImplV2::FreeMonitorEDID(EdidBlob* edid) {
  if (edid != nullptr) delete[] static_cast<uint8_t*>(edid->pv);
}

bool NvidiaMMImplV2::GetEDID(uint32_t display, EdidBlob* edid) {
  DetectDisplays();
  return ReadEdid(display, true, edid);
}

void NvidiaMMImplV2::FreeEDID(EdidBlob* edid) { FreeMonitorEDID(edid); }

bool NvidiaMMImplV2::IsDiscreteOnly() {
  if (m_nvProxy == nullptr) return false;
  uint32_t status = 0;
  uint32_t state = 0;
  return NvApi::Get().GetCoprocStatus(&status, &state) == NVAPI_OK && status == 0;
}

bool NvidiaMMImplV2::IsCrossAdapterCapable() {
  if (win_util::GetWinVersion() < win_util::WINVERSION_WIN7) return false;
  return CouldManageMultipleDisplay();
}

bool NvidiaMMImplV2::CouldManageMultipleDisplay() {
  if (m_nvProxy == nullptr) return false;
  uint32_t all_outputs = 0;
  NvPhysicalGpuHandle last_gpu = nullptr;
  for (uint32_t i = 0; GpuAt(i) != nullptr; ++i) {
    uint32_t outputs = 0;
    if (NvApi::Get().GPU_GetAllOutputs(GpuAt(i), &outputs) != NVAPI_OK) continue;
    all_outputs |= outputs;
    // Deliberate: the last GPU that answers is asked about the outputs of all of them.
    last_gpu = GpuAt(i);
  }
  const Capabilities found = ReadCapabilities(last_gpu, all_outputs);
  VLOG(2) << "CouldManageMultipleDisplay()\n"
          << "\t internal_display_found = " << Word(found.internal_display_found) << "\n"
          << "\t hdmi_found = " << Word(found.hdmi_found) << "\n"
          << "\t displayport_found = " << Word(found.displayport_found);
  return found.internal_display_found && (found.hdmi_found || found.displayport_found);
}
