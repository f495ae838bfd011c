#include "Common/MultiMonitor/Nvidia/NvidiaMMImpl.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/Nvidia/NvApi.h"

#include <algorithm>
#include <cstring>
#include <ios>

namespace {

constexpr uint32_t kLastOutput = 0x80000;
constexpr uint32_t kMonitorIsHdmi = 0x80;
constexpr DWORD kAllAdapters = 2;

// The first display's handle stands for all: the output alone says which monitor is meant.
bool IsHdmiMonitor(uint32_t output) {
  NvDisplayHandle display = nullptr;
  FirstDisplayHandle(&display);
  NvHdmiSupport support = {};
  support.version = kNvHdmiSupportVersion;
  return NvApi::Get().GetHDMISupportInfo(display, output, &support) == NVAPI_OK &&
         (support.flags & kMonitorIsHdmi) != 0;
}

uint32_t DisplayOfConnector(uint32_t connector_type, uint32_t output) {
  const uint32_t display = ConnectorToDisplay(connector_type);
  if (display == IMMonitor::MD_HDMI && !IsHdmiMonitor(output)) return IMMonitor::MD_DVI;
  return display;
}

uint32_t DisplaysOfOutputs(NvPhysicalGpuHandle gpu, uint32_t outputs) {
  uint32_t displays = 0;
  NvConnectorInfo connector = {};
  connector.version = kNvConnectorInfoVersion;
  for (uint32_t output = 1; output <= kLastOutput; output <<= 1) {
    if ((outputs & output) == 0) continue;
    if (NvApi::Get().GPU_GetConnectorInfo(gpu, output, &connector) != NVAPI_OK) continue;
    displays |= DisplayOfConnector(connector.type, output);
  }
  return displays;
}

}  // namespace

NvidiaMMImpl::NvidiaMMImpl() : m_library(std::make_unique<VNvidiaLib>()) {}

NvidiaMMImpl::~NvidiaMMImpl() {
  m_inner.reset();
  m_nvapi.reset();
  m_library.reset();
}

BOOL NvidiaMMImpl::Initial() {
  if (m_initialized) return TRUE;
  // Deliberate: a try that failed once the library was there leaves it held, and every further one
  // fails for that.
  if (m_library->IsLoaded()) return FALSE;
  if (m_library->Load("NvCpl.dll") == 0) return FALSE;
  m_nvapi = std::make_unique<NVApiWrapper>();
  m_nvapi->Initialize();
  m_inner = std::make_unique<NvidiaMMImplV2>();
  if (m_inner->Initial() == 0) return FALSE;
  m_initialized = true;
  m_extensionReady = true;
  return TRUE;
}

BOOL NvidiaMMImpl::GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) {
  return ReadOutputs(NvApi::Get().GPU_GetConnectedOutputs, displays, display_count);
}

BOOL NvidiaMMImpl::GetActiveDisplays(uint32_t* displays, uint32_t* display_count) {
  return ReadOutputs(NvApi::Get().GPU_GetActiveOutputs, displays, display_count);
}

BOOL NvidiaMMImpl::ReadOutputs(const OutputQuery& query, uint32_t* displays,
                               uint32_t* display_count) {
  if (displays == nullptr || display_count == nullptr) return FALSE;
  *displays = 0;
  *display_count = 0;

  NvPhysicalGpuHandle gpus[NVAPI_MAX_PHYSICAL_GPUS] = {};
  uint32_t gpu_count = 0;
  if (NvApi::Get().EnumPhysicalGPUs(gpus, &gpu_count) != NVAPI_OK || gpu_count == 0) return FALSE;
  gpu_count = std::min(gpu_count, NVAPI_MAX_PHYSICAL_GPUS);
  for (uint32_t i = 0; i < gpu_count; ++i) {
    uint32_t outputs = 0;
    if (query(gpus[i], &outputs) != NVAPI_OK) continue;
    VLOG(2) << "GetMonitors() outputs = " << std::showbase << std::hex << outputs;
    *displays |= DisplaysOfOutputs(gpus[i], outputs);
  }
  *display_count = CountBits(*displays);
  return TRUE;
}

BOOL NvidiaMMImpl::GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) {
  if (mode == nullptr || displays == nullptr) return FALSE;
  if (m_library->NvGetWindowsDisplayState == nullptr) return FALSE;
  uint32_t unused_mode = 0;
  uint32_t unused_displays = 0;
  const int32_t state = m_library->NvGetWindowsDisplayState(0, &unused_mode, &unused_displays);
  // Deliberate: a state below the first fails extended desktop too, one above the last does not.
  if (state < kNvCplSingle) return FALSE;
  uint32_t active = 0;
  uint32_t active_count = 0;
  if (GetActiveDisplays(&active, &active_count) == 0) return FALSE;
  const uint32_t current = IsExtendModeEnabled() != 0 ? DM_EXTEND : ModeOfNvCplState(state);
  if (current == 0) return FALSE;
  *mode = current;
  *displays = active;
  return TRUE;
}

void NvidiaMMImpl::DetectDisplays() {
  if (m_library->NvCplRefreshConnectedDevices == nullptr ||
      m_library->NvCplGetRealConnectedDevicesString == nullptr) {
    return;
  }
  m_library->NvCplRefreshConnectedDevices(kAllAdapters);
  char text[16] = {};
  m_library->NvCplGetRealConnectedDevicesString(text, sizeof(text), FALSE);
  raw_moniker.assign(text, strnlen(text, sizeof(text) - 1));
}

bool NvidiaMMImpl::GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) {
  DCHECK(CountBits(imm_display) == 1);
  DCHECK(dm != NULL);
  if (dm == nullptr || m_inner == nullptr) return false;
  return m_inner->GetDisplaySettings(imm_display, dm);
}

// Deliberate: interfaces are had by a run-time cast and never from here.
HRESULT NvidiaMMImpl::QueryInterface(REFIID /*iid*/, void** /*object*/) {
  DCHECK(0 && "Should never call this function");
  return E_FAIL;
}

ULONG NvidiaMMImpl::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }

ULONG NvidiaMMImpl::Release() {
  const LONG left = InterlockedDecrement(&m_references);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

bool NvidiaMMImpl::InitialExtension() {
  if (m_extensionReady) return true;
  if (Initial() == 0) {
    DCHECK(0 && "Initial NVIDIA library failed");
    return false;
  }
  m_extensionReady = true;
  return true;
}

bool NvidiaMMImpl::GetEDID(uint32_t display, EdidBlob* edid) {
  return m_inner != nullptr && m_inner->GetEDID(display, edid);
}

void NvidiaMMImpl::FreeEDID(EdidBlob* edid) {
  if (m_inner != nullptr) m_inner->FreeEDID(edid);
}
