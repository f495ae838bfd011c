#include "Common/MultiMonitor/Nvidia/NvidiaPathRecords.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayNumbers.h"

namespace {

struct DepthFormat {
  uint32_t depth;
  uint32_t format;
};
constexpr DepthFormat kDepthFormats[] = {
    {8, 41},   // P8
    {16, 23},  // R5G6B5
    {24, 21},  // A8R8G8B8
    {32, 21},
};

constexpr uint32_t kNativeDepth = 32;

struct Size {
  uint32_t width;
  uint32_t height;
};
constexpr Size kUnknownPrimary = {1366, 768};
constexpr Size kUnknownSecondary = {1024, 768};

void FillSourceMode(uint32_t imm_display, Size fallback, const NativeSizeReader& read_size,
                    NV_DISPLAYCONFIG_SOURCE_MODE_INFO* source_mode) {
  Size size = {};
  if (!read_size(imm_display, &size.width, &size.height)) size = fallback;
  source_mode->resolution = {size.width, size.height, kNativeDepth};
  source_mode->colorFormat = ColorFormat(kNativeDepth);
}

}  // namespace

uint32_t ColorFormat(uint32_t depth) {
  for (const DepthFormat& row : kDepthFormats) {
    if (row.depth == depth) return row.format;
  }
  DCHECK(false);
  return 0;
}

NvidiaPathRecords::NvidiaPathRecords(uint32_t path_count) : paths_(path_count) {
  for (NV_DISPLAYCONFIG_PATH_INFO& path : paths_) path.version = NV_DISPLAYCONFIG_PATH_INFO_VER2;
}

NvidiaPathRecords::~NvidiaPathRecords() {
  for (NV_DISPLAYCONFIG_PATH_INFO& path : paths_) FreeAdapterId(&path);
}

void NvidiaPathRecords::MakeArrays() {
  targets_.assign(paths_.size(), {});
  source_modes_.assign(paths_.size(), {});
  for (size_t i = 0; i < paths_.size(); ++i) {
    targets_[i].resize(paths_[i].targetInfoCount);
    paths_[i].targetInfo = targets_[i].data();
    paths_[i].sourceModeInfo = &source_modes_[i];
  }
}

LUID* MakeAdapterId(NV_DISPLAYCONFIG_PATH_INFO* path) {
  FreeAdapterId(path);
  static_assert(sizeof(LUID) == 8, "the driver reads 8 bytes");
  auto* const adapter_id = new LUID();
  path->pOSAdapterID = adapter_id;
  return adapter_id;
}

void FreeAdapterId(NV_DISPLAYCONFIG_PATH_INFO* path) {
  delete static_cast<LUID*>(path->pOSAdapterID);
  path->pOSAdapterID = nullptr;
}

void FillNativeSourceModes(uint32_t mode, uint32_t primary, uint32_t secondary,
                           NV_DISPLAYCONFIG_PATH_INFO* path_info,
                           const NativeSizeReader& read_size) {
  DCHECK(path_info != NULL);
  DCHECK(CountBits(primary) == 1);
  if (path_info == nullptr || path_info[0].sourceModeInfo == nullptr) return;
  NV_DISPLAYCONFIG_SOURCE_MODE_INFO* const first = path_info[0].sourceModeInfo;
  FillSourceMode(primary, kUnknownPrimary, read_size, first);
  first->bGDIPrimary = 1;

  if (mode != DisplayNumbers::DM_EXTEND) return;
  DCHECK(CountBits(secondary) == 1);
  NV_DISPLAYCONFIG_SOURCE_MODE_INFO* const second = path_info[1].sourceModeInfo;
  if (second == nullptr) return;
  FillSourceMode(secondary, kUnknownSecondary, read_size, second);
  second->position.x = static_cast<int32_t>(first->resolution.width);
}
