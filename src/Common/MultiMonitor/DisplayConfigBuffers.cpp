#include "Common/MultiMonitor/DisplayConfigBuffers.h"

#include "Common/Logging.h"

#include <algorithm>
#include <new>

static_assert(sizeof(DISPLAYCONFIG_PATH_INFO) == 72, "record of the display configuration API");
static_assert(sizeof(DISPLAYCONFIG_MODE_INFO) == 64, "record of the display configuration API");

LONG DisplayConfigBuffers::ReadSizes(const Win7CCDApi& ccd, UINT32 flags) {
  if (ccd.GetDisplayConfigBufferSizes == nullptr) return ERROR_NOT_SUPPORTED;
  return ccd.GetDisplayConfigBufferSizes(flags, &path_count_, &mode_count_);
}

bool DisplayConfigBuffers::MakeRoom() {
  paths_.reset(new (std::nothrow) DISPLAYCONFIG_PATH_INFO[path_count_]());
  modes_.reset(new (std::nothrow) DISPLAYCONFIG_MODE_INFO[mode_count_]());
  return paths_ != nullptr && modes_ != nullptr;
}

LONG DisplayConfigBuffers::Allocate(const Win7CCDApi& ccd, UINT32 flags) {
  const LONG r = ReadSizes(ccd, flags);
  if (r != ERROR_SUCCESS) return r;
  return MakeRoom() ? ERROR_SUCCESS : ERROR_NOT_ENOUGH_MEMORY;
}

LONG DisplayConfigBuffers::Query(const Win7CCDApi& ccd, UINT32 flags,
                                 DISPLAYCONFIG_TOPOLOGY_ID* topology) {
  if (ccd.QueryDisplayConfig == nullptr) return ERROR_NOT_SUPPORTED;
  const UINT32 path_room = path_count_;
  const UINT32 mode_room = mode_count_;
  const LONG r = ccd.QueryDisplayConfig(flags, &path_count_, paths_.get(), &mode_count_,
                                        modes_.get(), topology);
  // A display that was plugged in since makes the counts larger than the room, with a failure.
  path_count_ = std::min(path_count_, path_room);
  mode_count_ = std::min(mode_count_, mode_room);
  return r;
}

bool DisplayConfigBuffers::Read(const Win7CCDApi& ccd, UINT32 flags,
                                DISPLAYCONFIG_TOPOLOGY_ID* topology) {
  return Allocate(ccd, flags) == ERROR_SUCCESS && Query(ccd, flags, topology) == ERROR_SUCCESS;
}

LONG DisplayConfigBuffers::Set(const Win7CCDApi& ccd, UINT32 flags) {
  if (ccd.SetDisplayConfig == nullptr) return ERROR_NOT_SUPPORTED;
  return ccd.SetDisplayConfig(path_count_, paths_.get(), mode_count_, modes_.get(), flags);
}

bool DisplayConfigBuffers::ValidateAndSet(const Win7CCDApi& ccd) {
  const LONG validated = Set(ccd, SDC_VALIDATE | SDC_USE_SUPPLIED_DISPLAY_CONFIG);
  if (validated != ERROR_SUCCESS) {
    LOG(ERROR) << "Calling SetDisplayConfig 1st attempt failed: r = " << validated;
  }
  // Deliberate: a failed validation does not stop the change, it only lets Windows adapt it.
  UINT32 flags = SDC_APPLY | SDC_USE_SUPPLIED_DISPLAY_CONFIG | SDC_SAVE_TO_DATABASE;
  if (validated != ERROR_SUCCESS) flags |= SDC_ALLOW_CHANGES;
  const LONG applied = Set(ccd, flags);
  if (applied != ERROR_SUCCESS) {
    LOG(ERROR) << "Calling SetDisplayConfig 2nd attempt failed: r = " << applied;
  }
  return applied == ERROR_SUCCESS;
}
