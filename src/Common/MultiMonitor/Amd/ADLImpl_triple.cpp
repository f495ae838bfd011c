// Three displays: all with the same picture, or side by side.
#include "Common/Logging.h"
#include "Common/MultiMonitor/Amd/ADLImpl.h"
#include "Common/MultiMonitor/Amd/AdlModes.h"

namespace {

// The displays that may stand beside the panel, in the order in which they are tried.
constexpr uint32_t kCandidates[] = {IMMonitor::MD_CRT, IMMonitor::MD_DVI, IMMonitor::MD_HDMI,
                                    IMMonitor::MD_DP};

constexpr size_t kDisplays = 3;

// The candidates among `displays`, as many as find room beside the panel.
std::vector<uint32_t> ChooseBesidePanel(uint32_t displays) {
  std::vector<uint32_t> chosen;
  for (const uint32_t target_display : kCandidates) {
    if (chosen.size() == kDisplays - 1) break;
    DCHECK(CountBits(target_display) == 1);
    if ((displays & target_display) != 0) chosen.push_back(target_display);
  }
  return chosen;
}

// The panel's desktop.
void StartAt(int32_t adapter, ADLDisplayMap* desktop) {
  desktop->iDisplayMapIndex = 0;
  desktop->iNumDisplayTarget = 1;
  desktop->iFirstDisplayTargetArrayIndex = 0;
  desktop->displayMode.displayID.iDisplayLogicalAdapterIndex = adapter;
  SetAdlUsualDepthAndRate(&desktop->displayMode);
}

void ContinueFrom(const ADLDisplayMap& before, ADLDisplayMap* desktop) {
  desktop->iDisplayMapIndex = before.iDisplayMapIndex + 1;
  desktop->iNumDisplayTarget = 1;
  desktop->iFirstDisplayTargetArrayIndex = before.iFirstDisplayTargetArrayIndex + 1;
  desktop->displayMode.displayID.iDisplayLogicalAdapterIndex =
      before.displayMode.displayID.iDisplayLogicalAdapterIndex + 1;
  // Deliberate: the width of the desktop before it, not the sum of all, so that a third display
  // lies at the second's width.
  desktop->displayMode.iXPos = before.displayMode.iXRes;
  SetAdlUsualDepthAndRate(&desktop->displayMode);
}

void ContinueFrom(const ADLDisplayTarget& before, ADLDisplayTarget* target) {
  target->iDisplayMapIndex = before.iDisplayMapIndex + 1;
  target->displayID.iDisplayLogicalAdapterIndex = before.displayID.iDisplayLogicalAdapterIndex + 1;
  target->displayID.iDisplayPhysicalAdapterIndex =
      before.displayID.iDisplayPhysicalAdapterIndex + 1;
}

}  // namespace

BOOL ADLImpl::ApplyTripleClone(uint32_t displays) {
  DisplayMap map;
  if (!ReadMapToChange(&map)) return FALSE;
  SpreadAdlMap(kDisplays, &map.maps[0]);
  std::vector<ADLDisplayTarget> targets(kDisplays, TemplateTarget(map));
  targets[0].displayID.iDisplayLogicalIndex = DisplayIndexOf(MD_NB);
  size_t slot = 0;
  for (const uint32_t display : ChooseBesidePanel(displays)) {
    targets[++slot].displayID.iDisplayLogicalIndex = DisplayIndexOf(display);
  }
  return SetOneMap(&map.maps[0], &targets);
}

// The library's own words about its first map and target stay in all copies but for what is written
// here; the template of the other switches has no part in it.
BOOL ADLImpl::ApplyTripleExtend(uint32_t displays) {
  DisplayMap map;
  if (!ReadMapToChange(&map)) return FALSE;
  std::vector<ADLDisplayMap> maps(kDisplays, map.maps[0]);
  std::vector<ADLDisplayTarget> targets(kDisplays, map.targets[0]);

  targets[0].displayID.iDisplayLogicalIndex = DisplayIndexOf(MD_NB);
  // Deliberate: the adapter's position in the list, not the index that the record there tells.
  targets[0].displayID.iDisplayLogicalAdapterIndex = m_activeAdapter;
  // Reading the panel's EDID may bring the library up again, with another adapter in charge.
  SetNativeResolution(MD_NB, &maps[0].displayMode);
  StartAt(m_activeAdapter, &maps[0]);

  size_t slot = 0;
  for (const uint32_t display : ChooseBesidePanel(displays)) {
    ++slot;
    ContinueFrom(maps[slot - 1], &maps[slot]);
    SetNativeResolution(display, &maps[slot].displayMode);
    ContinueFrom(targets[slot - 1], &targets[slot]);
    targets[slot].displayID.iDisplayLogicalIndex = DisplayIndexOf(display);
  }
  if (SetSeveralMaps(&maps, &targets) == 0) return FALSE;
  m_resetAfterSwitch = 0;
  return TRUE;
}
