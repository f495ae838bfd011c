#include "Common/MultiMonitor/Nvidia/NvidiaDisplayPaths.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayNumbers.h"
#include "Common/MultiMonitor/win7_ccd_helper.h"
#include "Common/Text.h"
#include "Common/Wildcard.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

static_assert(sizeof(DISPLAYCONFIG_ADAPTER_NAME) == 276, "record of the display configuration API");

namespace {

// The vendor's digits, as they stand in the names of its adapters.
constexpr char kNvidiaAdapterPattern[] = "*10de*";

using Targets = std::vector<DISPLAYCONFIG_PATH_TARGET_INFO>;

// The targets of a technology, path by path: one that several sources can reach comes several
// times.
Targets TargetsOfDisplay(Win7CCDApi* ccd, uint32_t imm_display) {
  Targets targets;
  UINT32 path_count = 0;
  UINT32 mode_count = 0;
  std::unique_ptr<DISPLAYCONFIG_PATH_INFO[]> paths;
  std::unique_ptr<DISPLAYCONFIG_MODE_INFO[]> modes;
  if (!GetDisplayConfigBuffers(ccd, QDC_ALL_PATHS, &path_count, &paths, &mode_count, &modes)) {
    return targets;
  }
  DCHECK(path_count > 0);
  DCHECK(mode_count > 0);
  const uint32_t technology = OutputTechnologyFromDisplay(imm_display);
  for (UINT32 i = 0; i < path_count; ++i) {
    const DISPLAYCONFIG_PATH_TARGET_INFO& target = paths[i].targetInfo;
    if (static_cast<uint32_t>(target.outputTechnology) == technology) targets.push_back(target);
  }
  return targets;
}

bool IsTargetOnNvidia(const Win7CCDApi& ccd, const DISPLAYCONFIG_PATH_TARGET_INFO& target) {
  if (ccd.DisplayConfigGetDeviceInfo == nullptr) return false;
  DISPLAYCONFIG_ADAPTER_NAME name = {};
  name.header.type = DISPLAYCONFIG_DEVICE_INFO_GET_ADAPTER_NAME;
  name.header.size = sizeof(name);
  name.header.adapterId = target.adapterId;
  name.header.id = target.id;
  if (ccd.DisplayConfigGetDeviceInfo(&name.header) != ERROR_SUCCESS) return false;
  const auto* const end =
      std::find(std::cbegin(name.adapterDevicePath), std::cend(name.adapterDevicePath), L'\0');
  const std::string path =
      NarrowFromWide({name.adapterDevicePath, static_cast<size_t>(end - name.adapterDevicePath)});
  return MatchPattern(ToLowerAscii(path), kNvidiaAdapterPattern);
}

}  // namespace

bool IsDisplayOnNvidia(Win7CCDApi* ccd, uint32_t imm_display) {
  DCHECK(ccd != NULL);
  DCHECK(CountBits(imm_display) == 1);
  for (const DISPLAYCONFIG_PATH_TARGET_INFO& target : TargetsOfDisplay(ccd, imm_display)) {
    if (IsTargetOnNvidia(*ccd, target)) return true;
  }
  return false;
}

uint32_t GetDisplayTargetId(Win7CCDApi* ccd, uint32_t imm_display) {
  DCHECK(ccd != NULL);
  DCHECK(CountBits(imm_display) == 1);
  for (const DISPLAYCONFIG_PATH_TARGET_INFO& target : TargetsOfDisplay(ccd, imm_display)) {
    if (target.targetAvailable != 0) return target.id;
  }
  return 0;
}

bool GetNotebookAdapterId(Win7CCDApi* ccd, uint32_t imm_display, LUID* adapter_id) {
  DCHECK(ccd != NULL);
  DCHECK(adapter_id != NULL);
  DCHECK(imm_display == 1);
  if (adapter_id == nullptr || imm_display != DisplayNumbers::MD_NB) return false;
  bool found = false;
  // Deliberate: of several panels the last one's adapter is taken.
  for (const DISPLAYCONFIG_PATH_TARGET_INFO& target : TargetsOfDisplay(ccd, imm_display)) {
    if (target.targetAvailable == 0) continue;
    *adapter_id = target.adapterId;
    found = true;
  }
  return found;
}
