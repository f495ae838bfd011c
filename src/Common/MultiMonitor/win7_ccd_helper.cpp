#include "Common/MultiMonitor/win7_ccd_helper.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayConfigBuffers.h"
#include "Common/MultiMonitor/OutputTechnology.h"

static_assert(sizeof(DISPLAYCONFIG_SOURCE_DEVICE_NAME) == 84,
              "record of the display configuration API");

namespace {
// The text of the check below is observable, so the test has this name.
constexpr bool CCD_SUCCEEDED(LONG r) { return r == ERROR_SUCCESS; }
}  // namespace

uint32_t OutputTechnologyFromDisplay(uint32_t imm_display) {
  DCHECK(CountBits(imm_display) == 1);
  return TechnologyOfDisplay(imm_display);
}

bool GetDisplayConfigBuffers(Win7CCDApi* ccd, UINT32 flags, UINT32* path_count,
                             std::unique_ptr<DISPLAYCONFIG_PATH_INFO[]>* paths, UINT32* mode_count,
                             std::unique_ptr<DISPLAYCONFIG_MODE_INFO[]>* modes) {
  DCHECK(ccd != NULL);
  DCHECK(path_count != NULL);
  DCHECK(paths != NULL);
  DCHECK(mode_count != NULL);
  DCHECK(modes != NULL);
  if (ccd == nullptr || path_count == nullptr || paths == nullptr) return false;
  if (mode_count == nullptr || modes == nullptr) return false;
  // Only what Windows itself refuses is worth a message.
  if (ccd->GetDisplayConfigBufferSizes == nullptr) return false;

  DisplayConfigBuffers buffers;
  const LONG r = buffers.ReadSizes(*ccd, flags);
  DCHECK(CCD_SUCCEEDED(r));
  if (!CCD_SUCCEEDED(r)) {
    LOG(ERROR) << "Call to GetDisplayConfigBufferSizes() failed: r = " << r;
    return false;
  }
  if (!buffers.MakeRoom()) return false;
  if (buffers.Query(*ccd, flags, nullptr) != ERROR_SUCCESS) return false;
  *path_count = buffers.Paths().count;
  *mode_count = buffers.Modes().count;
  *paths = buffers.TakePaths();
  *modes = buffers.TakeModes();
  return true;
}

bool GetSourceDeviceName(Win7CCDApi* ccd, LUID adapter_id, UINT32 source_id,
                         DISPLAYCONFIG_SOURCE_DEVICE_NAME* source_name) {
  DCHECK(ccd != NULL);
  DCHECK(source_name != NULL);
  if (ccd == nullptr || source_name == nullptr) return false;
  if (ccd->DisplayConfigGetDeviceInfo == nullptr) return false;
  *source_name = {};
  source_name->header.type = DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME;
  source_name->header.size = sizeof(*source_name);
  source_name->header.adapterId = adapter_id;
  source_name->header.id = source_id;
  if (ccd->DisplayConfigGetDeviceInfo(&source_name->header) == ERROR_SUCCESS) return true;
  LOG(ERROR) << "Call to DisplayConfigGetDeviceInfo(Source Name) failed";
  return false;
}
