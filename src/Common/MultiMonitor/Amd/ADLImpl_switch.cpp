// Switching to one display, or to two that show the same; and how every switch reaches the library.
#include "Common/Logging.h"
#include "Common/MultiMonitor/Amd/ADLImpl.h"
#include "Common/MultiMonitor/Amd/AdlModes.h"

namespace {

constexpr int32_t kSingleTargets = 1;
constexpr int32_t kCloneTargets = 2;

}  // namespace

BOOL ADLImpl::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  if (mode == DM_TRIPLE_CLONE) return ApplyTripleClone(displays);
  if (mode == DM_TRIPLE_EXTEND) return ApplyTripleExtend(displays);
  return ApplySingleOrClone(mode, displays);
}

bool ADLImpl::ReadMapToChange(DisplayMap* map) {
  ADLDisplayMap* maps = nullptr;
  ADLDisplayTarget* targets = nullptr;
  int num_map = 0;
  int num_target = 0;
  if (!GetDisplayMap(&maps, &num_map, &targets, &num_target)) return false;
  map->maps.Adopt(maps, num_map);
  map->targets.Adopt(targets, num_target);
  return !map->maps.empty() && !map->targets.empty();
}

// Between two GPUs the target stays in the map that the library named, with mask and value cleared;
// otherwise it goes to map 0 with both set to 1.
ADLDisplayTarget ADLImpl::TemplateTarget(const DisplayMap& map) const {
  const bool several_gpus = m_isHybrid || m_hasPowerXpress;
  ADLDisplayTarget target = map.targets[0];
  target.iDisplayMapIndex = several_gpus ? map.maps[0].iDisplayMapIndex : 0;
  target.iDisplayTargetMask = several_gpus ? 0 : 1;
  target.iDisplayTargetValue = several_gpus ? 0 : 1;
  return target;
}

BOOL ADLImpl::ApplySingleOrClone(uint32_t mode, uint32_t displays) {
  DisplayMap map;
  if (!ReadMapToChange(&map)) return FALSE;
  // Deliberate: a mode other than single and clone asks for two displays, both the template's.
  const int32_t target_count = mode == DM_SINGLE ? kSingleTargets : kCloneTargets;
  SpreadAdlMap(target_count, &map.maps[0]);
  std::vector<ADLDisplayTarget> targets(static_cast<size_t>(target_count), TemplateTarget(map));
  if (mode == DM_SINGLE) {
    targets[0].displayID.iDisplayLogicalIndex = DisplayIndexOf(displays);
  } else if (mode == DM_CLONE) {
    targets[0].displayID.iDisplayLogicalIndex = DisplayIndexOf(MD_NB);
    targets[1].displayID.iDisplayLogicalIndex = DisplayIndexOf(displays & ~uint32_t{MD_NB});
  }
  return SetOneMap(&map.maps[0], &targets);
}

int ADLImpl::SetMaps(int map_count, ADLDisplayMap* maps,
                     std::vector<ADLDisplayTarget>* targets) const {
  return CallActive(m_adl->ADL_Display_DisplayMapConfig_Set, map_count, maps,
                    static_cast<int>(targets->size()), targets->data());
}

BOOL ADLImpl::SetOneMap(ADLDisplayMap* map, std::vector<ADLDisplayTarget>* targets) {
  int rv = SetMaps(1, map, targets);
  // Deliberate: a result above 0 is a failure that is neither tried again nor logged.
  if (rv < 0) {
    ReloadAdl();
    rv = SetMaps(1, map, targets);
    if (rv != ADL_OK) LOG(ERROR) << "Call to ADL_Display_DisplayMapConfig_Set() rv = " << rv;
  }
  return rv == ADL_OK ? TRUE : FALSE;
}

// Deliberate: any other result than 0 is tried again, unlike that of SetOneMap.
BOOL ADLImpl::SetSeveralMaps(std::vector<ADLDisplayMap>* maps,
                             std::vector<ADLDisplayTarget>* targets) {
  const int map_count = static_cast<int>(maps->size());
  int rv = SetMaps(map_count, maps->data(), targets);
  if (rv != ADL_OK) {
    ReloadAdl();
    rv = SetMaps(map_count, maps->data(), targets);
    if (rv != ADL_OK) {
      LOG(ERROR) << "Call to ADL_Display_DisplayMapConfig_Set() failed, rv = " << rv;
    }
  }
  return rv == ADL_OK ? TRUE : FALSE;
}
