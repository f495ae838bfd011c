// Display modes as views: one record names the outputs and what they show.
#include "Common/Config.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/HelperFunctions.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV2.h"

namespace {

constexpr uint32_t kMaxDisplayHandles = 128;

constexpr NvidiaModeSettings kModeOfEveryDisplay = {1024, 768, 32, 60};

// Deliberate: clone, and an extended desktop on a display of the driver's choice, name this output
// as the panel's, also where the panel hangs on another one.
constexpr uint32_t kUsualPanelOutput = 0x10000;

// Where an extended desktop goes, first choice first; the last one also when none is connected.
constexpr uint32_t kExtendOutputs[] = {0x1, 0x20000, 0x40000, 0x80000};
constexpr uint32_t kLastExtendOutput = 0x40000;

void SetSize(uint32_t width, uint32_t height, uint32_t depth, uint32_t refresh_rate,
             NV_DISPLAY_PATH* path) {
  path->width = width;
  path->height = height;
  path->depth = depth;
  path->refreshRate = refresh_rate;
}

// The desktop on the first output as it is now, and to its right the configured size on the second.
// Deliberate: both have source id 0, although each is a desktop of its own.
void FillExtendView(const DEVMODEA& current, uint32_t first_output, uint32_t second_output,
                    NV_DISPLAY_PATH_INFO* view) {
  view->version = NV_DISPLAY_PATH_INFO_VER4;
  view->count = 2;
  NV_DISPLAY_PATH& first = view->path[0];
  first.deviceMask = first_output;
  SetSize(current.dmPelsWidth, current.dmPelsHeight, current.dmBitsPerPel,
          current.dmDisplayFrequency, &first);
  first.bGDIPrimary = 1;
  NV_DISPLAY_PATH& second = view->path[1];
  second.deviceMask = second_output;
  SetSize(ReadConfigInt(L"ExtendMode:2nd", L"Width", 1024),
          ReadConfigInt(L"ExtendMode:2nd", L"Height", 768), current.dmBitsPerPel,
          current.dmDisplayFrequency, &second);
  second.posx = current.dmPelsWidth;
}

BOOL SetView(NvDisplayHandle handle, NV_TARGET_VIEW_MODE mode, NV_DISPLAY_PATH_INFO* view) {
  return NvApi::Get().SetViewEx(handle, view, mode) == NVAPI_OK ? TRUE : FALSE;
}

}  // namespace

bool FirstDisplayHandle(NvDisplayHandle* pnvHandle) {
  DCHECK(pnvHandle != NULL);
  if (pnvHandle == nullptr) return false;
  NvDisplayHandle handles[kMaxDisplayHandles] = {};
  uint32_t count = 0;
  while (count < kMaxDisplayHandles &&
         NvApi::Get().EnumNvidiaDisplayHandle(count, &handles[count]) == NVAPI_OK) {
    ++count;
  }
  *pnvHandle = count > 0 ? handles[0] : nullptr;
  return count > 0;
}

BOOL NvidiaMMImplV2::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  return ApplyDisplayMode(mode, displays, nullptr);
}

BOOL NvidiaMMImplV2::ApplyDisplayMode(uint32_t mode, uint32_t displays,
                                      const NvidiaModeSettings* settings) {
  if (m_nvProxy == nullptr) return FALSE;
  const NvidiaModeSettings& size = settings != nullptr ? *settings : kModeOfEveryDisplay;
  NV_DISPLAY_PATH_INFO view = {};
  view.version = NV_DISPLAY_PATH_INFO_VER4;
  NV_DISPLAY_PATH& first = view.path[0];
  SetSize(size.width, size.height, size.depth, size.refresh_rate, &first);
  first.bPrimary = 1;
  first.bGDIPrimary = 1;
  NV_TARGET_VIEW_MODE view_mode = NV_VIEW_MODE_STANDARD;
  if (mode == DM_SINGLE) {
    view.count = 1;
    first.deviceMask = CachedMaskOfDisplays(displays);
  } else if (mode == DM_CLONE) {
    view.count = 2;
    view_mode = NV_VIEW_MODE_CLONE;
    first.deviceMask = kUsualPanelOutput;
    NV_DISPLAY_PATH& second = view.path[1];
    second.deviceMask = CachedMaskOfDisplays(displays & ~static_cast<uint32_t>(MD_NB));
    SetSize(size.width, size.height, size.depth, size.refresh_rate, &second);
  }
  NvDisplayHandle handle = nullptr;
  FirstDisplayHandle(&handle);  // without one the driver decides
  return SetView(handle, view_mode, &view);
}

BOOL NvidiaMMImplV2::ApplyExtendModeOnDisplay(uint32_t external_display) {
  DCHECK((external_display & IMMonitor::MD_NB) == 0);
  if (m_nvProxy == nullptr) return FALSE;
  DEVMODEA current = {};
  ReadDisplaySettings(ENUM_CURRENT_SETTINGS, nullptr, &current);
  NV_DISPLAY_PATH_INFO view = {};
  FillExtendView(current, NvOutputOfDisplay(MD_NB), NvOutputOfDisplay(external_display), &view);
  NvDisplayHandle handle = nullptr;
  if (!FirstDisplayHandle(&handle)) {
    LOG(INFO) << "Can't find any NVIDIA display handle";
    return FALSE;
  }
  return SetView(handle, NV_VIEW_MODE_DUALVIEW, &view);
}

BOOL NvidiaMMImplV2::ApplyExtendMode() {
  if (m_nvProxy == nullptr) return FALSE;
  DEVMODEA current = {};
  ReadDisplaySettings(ENUM_CURRENT_SETTINGS, nullptr, &current);
  NV_DISPLAY_PATH_INFO view = {};
  FillExtendView(current, kUsualPanelOutput, DefaultExtendOutput(), &view);
  NvDisplayHandle handle = nullptr;
  FirstDisplayHandle(&handle);
  return SetView(handle, NV_VIEW_MODE_DUALVIEW, &view);
}

uint32_t NvidiaMMImplV2::DefaultExtendOutput() const {
  uint32_t outputs = 0;
  for (uint32_t i = 0; GpuAt(i) != nullptr && outputs == 0; ++i) {
    uint32_t connected = 0;
    if (NvApi::Get().GPU_GetConnectedOutputs(GpuAt(i), &connected) == NVAPI_OK) outputs = connected;
  }
  for (const uint32_t output : kExtendOutputs) {
    if ((outputs & output) != 0) return output;
  }
  return kLastExtendOutput;
}
