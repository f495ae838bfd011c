// Extended desktop on two displays, and back to the panel alone.
#include "Common/CountedReference.h"
#include "Common/MultiMonitor/Amd/ADLImpl.h"
#include "Common/MultiMonitor/Amd/AdlModes.h"
#include "Common/MultiMonitor/PhysicalMonitorByDisplayLibrary.h"

namespace {

// The primary display stays in the mode that it is in.
void SetCurrentMode(ADLMode* mode) {
  DEVMODEW dm = {};
  dm.dmSize = sizeof(dm);
  if (!EnumDisplaySettingsW(nullptr, ENUM_CURRENT_SETTINGS, &dm)) return;
  mode->iXRes = static_cast<int32_t>(dm.dmPelsWidth);
  mode->iYRes = static_cast<int32_t>(dm.dmPelsHeight);
  mode->iColourDepth = static_cast<int32_t>(dm.dmBitsPerPel);
  mode->fRefreshRate = static_cast<float>(dm.dmDisplayFrequency);
}

}  // namespace

// One desktop and its display, or two of each.
struct ADLImpl::ExtendLists {
  std::vector<ADLDisplayMap> maps;
  std::vector<ADLDisplayTarget> targets;
};

BOOL ADLImpl::EnableExtendMode(BOOL enable) {
  ExtendLists lists;
  if (!StartExtendLists(enable, &lists)) return FALSE;
  if (enable != 0) {
    uint32_t displays = 0;
    uint32_t display_count = 0;
    // Deliberate: the panel has been looked up already, among the displays listed before.
    GetConnectedDisplays(&displays, &display_count);
    if (display_count == 0) return FALSE;
    AddSecondary(displays & ~uint32_t{MD_NB}, &lists);
  }
  return SetSeveralMaps(&lists.maps, &lists.targets);
}

BOOL ADLImpl::EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) {
  ExtendLists lists;
  if (!StartExtendLists(enable, &lists)) return FALSE;
  if (enable != 0) AddSecondary(displays, &lists);
  return SetSeveralMaps(&lists.maps, &lists.targets);
}

bool ADLImpl::StartExtendLists(BOOL enable, ExtendLists* lists) {
  DisplayMap map;
  if (!ReadMapToChange(&map)) return false;
  const size_t count = enable != 0 ? 2 : 1;
  lists->maps.assign(count, map.maps[0]);
  ADLDisplayMap& first = lists->maps[0];
  first.iNumDisplayTarget = 1;
  SetCurrentMode(&first.displayMode);
  if (enable != 0) {
    ADLDisplayMap& second = lists->maps[1];
    second.iDisplayMapIndex = first.iDisplayMapIndex + 1;
    second.iNumDisplayTarget = 1;
    second.iFirstDisplayTargetArrayIndex = 1;
    second.displayMode.iXPos = first.displayMode.iXRes;
    SetAdlUsualSize(&second.displayMode);
    SetAdlUsualDepthAndRate(&second.displayMode);
  }
  lists->targets.assign(count, TemplateTarget(map));
  lists->targets[0].displayID.iDisplayLogicalIndex = DisplayIndexOf(MD_NB);
  return true;
}

void ADLImpl::AddSecondary(uint32_t displays, ExtendLists* lists) {
  SetNativeResolution(displays, &lists->maps[1].displayMode);
  const ADLDisplayID& first = lists->targets[0].displayID;
  ADLDisplayTarget& second = lists->targets[1];
  second.displayID.iDisplayLogicalIndex = DisplayIndexOf(displays);
  second.iDisplayMapIndex = lists->maps[0].iDisplayMapIndex + 1;
  second.displayID.iDisplayLogicalAdapterIndex = first.iDisplayLogicalAdapterIndex + 1;
  second.displayID.iDisplayPhysicalAdapterIndex = first.iDisplayPhysicalAdapterIndex + 1;
}

void ADLImpl::SetNativeResolution(uint32_t display, ADLMode* mode) {
  const CountedReference<IPhysicalMonitor> monitor(new PhysicalMonitorByDisplayLibrary(this));
  uint32_t width = 0;
  uint32_t height = 0;
  if (!monitor->GetNativeResolution(display, &width, &height)) {
    SetAdlUsualSize(mode);
    return;
  }
  mode->iXRes = static_cast<int32_t>(width);
  mode->iYRes = static_cast<int32_t>(height);
}
