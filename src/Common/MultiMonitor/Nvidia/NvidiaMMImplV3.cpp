#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV3.h"

#include "Common/CountedReference.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/Nvidia/NvidiaDisplayPaths.h"
#include "Common/MultiMonitor/Nvidia/NvidiaPathRecords.h"
#include "Common/MultiMonitor/PhysicalMonitorByDisplayLibrary.h"
#include "Common/win_util.h"

#include <utility>

namespace {

// The flags of NvAPI_DISP_SetDisplayConfig.
constexpr uint32_t kSave = 2;
constexpr uint32_t kRefreshModeList = 8;

// What every display takes.
constexpr NvidiaModeSettings kUsualSettings = {1024, 768, 32, 60};

void FillSourceMode(const NvidiaModeSettings& settings, NV_DISPLAYCONFIG_SOURCE_MODE_INFO* mode) {
  mode->bGDIPrimary = 1;
  mode->resolution = {settings.width, settings.height, settings.depth};
  mode->colorFormat = ColorFormat(settings.depth);
}

}  // namespace

NvidiaMMImplV3::NvidiaMMImplV3(std::unique_ptr<Win7CCDApi> api) : ccd(std::move(api)) {
  DCHECK(win_util::GetWinVersion() > win_util::WINVERSION_VISTA);
  DCHECK(ccd != NULL);
  if (ccd != nullptr) ccd->Load("User32.dll");
}

NvidiaMMImplV3::~NvidiaMMImplV3() = default;

BOOL NvidiaMMImplV3::ApplyDisplayMode(uint32_t mode, uint32_t displays,
                                      const NvidiaModeSettings* settings) {
  DCHECK(mode == IMMonitor::DM_SINGLE || mode == IMMonitor::DM_CLONE);
  NvidiaPathRecords records(1);
  NV_DISPLAYCONFIG_PATH_INFO* const path = records.paths();
  path->targetInfoCount = mode == DM_CLONE ? 2 : 1;
  records.MakeArrays();
  if (mode == DM_SINGLE) {
    DCHECK(CountBits(displays) == 1);
    NameTargets(&displays, path);
  }
  if (mode == DM_CLONE) {
    const uint32_t both[] = {MD_NB, displays & ~static_cast<uint32_t>(MD_NB)};
    NameTargets(both, path);
  }
  // Deliberate: any other mode asks the driver for a path whose target is nobody.
  FillSourceMode(settings != nullptr ? *settings : kUsualSettings, path->sourceModeInfo);
  return SetDisplayConfig(records.path_count(), path, kSave);
}

// Whose the first display is decides for all: a path has one adapter.
void NvidiaMMImplV3::NameTargets(const uint32_t* displays, NV_DISPLAYCONFIG_PATH_INFO* path) {
  const bool foreign = !IsDisplayOnNvidia(ccd.get(), displays[0]);
  if (foreign) path->IsNonNVIDIAAdapter = 1;
  for (uint32_t i = 0; i < path->targetInfoCount; ++i) {
    if (foreign) {
      path->targetInfo[i].targetId = GetDisplayTargetId(ccd.get(), displays[i]);
    } else {
      path->targetInfo[i].displayId = DisplayIdOfDisplay(displays[i]);
    }
  }
}

BOOL NvidiaMMImplV3::ApplyExtendModeOnDisplay(uint32_t external_display) {
  DCHECK(CountBits(external_display) == 1);
  NvidiaPathRecords records(2);
  SetPathTargetCounts(DM_EXTEND, records.paths());
  records.MakeArrays();
  FillPaths(DM_EXTEND, MD_NB, external_display, records.paths());
  FillSourceModes(DM_EXTEND, MD_NB, external_display, records.paths());
  return SetDisplayConfig(records.path_count(), records.paths(), kSave | kRefreshModeList);
}

// Deliberate: without a named display nothing is extended, and EnableExtendMode(TRUE) fails.
BOOL NvidiaMMImplV3::ApplyExtendMode() { return FALSE; }

void NvidiaMMImplV3::SetPathTargetCounts(uint32_t mode, NV_DISPLAYCONFIG_PATH_INFO* path_info) {
  if (path_info == nullptr) return;
  if (mode == DM_SINGLE || mode == DM_EXTEND) path_info[0].targetInfoCount = 1;
  if (mode == DM_CLONE) path_info[0].targetInfoCount = 2;
  if (mode == DM_EXTEND) path_info[1].targetInfoCount = 1;
}

void NvidiaMMImplV3::FillPaths(uint32_t mode, uint32_t primary, uint32_t secondary,
                               NV_DISPLAYCONFIG_PATH_INFO* path_info) {
  if (path_info == nullptr) return;
  NV_DISPLAYCONFIG_PATH_TARGET_INFO* const targets = path_info[0].targetInfo;
  if (mode == DM_SINGLE || mode == DM_CLONE) {
    SetTargetOfDisplay(primary, targets);
    SetPathAdapter(primary, &path_info[0]);
  }
  if (mode == DM_CLONE && targets != nullptr) SetTargetOfDisplay(secondary, targets + 1);
  if (mode == DM_EXTEND) {
    SetTargetOfDisplay(primary, targets);
    SetTargetOfDisplay(secondary, path_info[1].targetInfo);
    SetPathAdapter(primary, &path_info[0]);
    SetPathAdapter(secondary, &path_info[1]);
  }
}

void NvidiaMMImplV3::SetTargetOfDisplay(uint32_t imm_display,
                                        NV_DISPLAYCONFIG_PATH_TARGET_INFO* target) {
  if (target != nullptr) target->displayId = DisplayIdOfDisplay(imm_display);
}

void NvidiaMMImplV3::SetPathAdapter(uint32_t /*imm_display*/,
                                    NV_DISPLAYCONFIG_PATH_INFO* path_info) {
  if (path_info != nullptr) path_info->IsNonNVIDIAAdapter = 0;
}

void NvidiaMMImplV3::FillSourceModes(uint32_t mode, uint32_t primary, uint32_t secondary,
                                     NV_DISPLAYCONFIG_PATH_INFO* path_info) {
  FillNativeSourceModes(mode, primary, secondary, path_info,
                        [this](uint32_t imm_display, uint32_t* width, uint32_t* height) {
                          return NativeSizeByThisDriver(imm_display, width, height);
                        });
}

bool NvidiaMMImplV3::NativeSizeByThisDriver(uint32_t imm_display, uint32_t* width,
                                            uint32_t* height) {
  const CountedReference<PhysicalMonitorByDisplayLibrary> pm(
      new PhysicalMonitorByDisplayLibrary(this));
  return pm->GetNativeResolution(imm_display, width, height);
}

uint32_t NvidiaMMImplV3::DisplayIdOfDisplay(uint32_t imm_display) const {
  return DisplayIdOfOutput(NvOutputOfDisplay(imm_display));
}

uint32_t NvidiaMMImplV3::DisplayIdOfConnectorType(uint32_t connector_type) const {
  return DisplayIdOfOutput(NvOutputOfConnectorType(connector_type));
}

uint32_t NvidiaMMImplV3::DisplayIdOfOutput(uint32_t nv_output) const {
  uint32_t display_id = 0;
  if (nv_output == 0 || m_nvProxy == nullptr) return 0;
  m_nvProxy->GetDisplayIdFromGpuAndOutputId(CurrentGpu(), nv_output, &display_id);
  return display_id;
}

BOOL NvidiaMMImplV3::SetDisplayConfig(uint32_t path_count, NV_DISPLAYCONFIG_PATH_INFO* paths,
                                      uint32_t flags) {
  if (m_nvProxy == nullptr) return FALSE;
  return m_nvProxy->SetDisplayConfig(path_count, paths, flags) ? TRUE : FALSE;
}
