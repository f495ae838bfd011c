#include "Workaround/HdmiRefreshRate.h"

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "Common/CountedReference.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayConfigBuffers.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/Win7CCD.h"
#include "Common/MultiMonitor/Win7CCDApi.h"

namespace {

constexpr DWORD kLowestGoodRate = 59;  // Hz; 59.94 is reported as 59
constexpr uint32_t kTechnologyHdmi = 5;

/// Where the timing of the first HDMI path stands.
// Deliberate: without such a path it is entry 0, whatever that holds.
UINT32 HdmiTargetMode(const DisplayConfigBuffers& buffers) {
  for (const DISPLAYCONFIG_PATH_INFO& path : buffers.Paths()) {
    if (static_cast<uint32_t>(path.targetInfo.outputTechnology) == kTechnologyHdmi) {
      return path.targetInfo.modeInfoIdx;
    }
  }
  return 0;
}

bool HdmiIsActive(IMMonitor* m) {
  uint32_t mode = 0;
  uint32_t displays = 0;
  return m->GetCurrentDisplayMode(&mode, &displays) != 0 && (displays & IMMonitor::MD_HDMI) != 0;
}

}  // namespace

bool HdmiRefreshRateIsLow(IMMonitor* m) {
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  if (!m->GetDisplaySettings(IMMonitor::MD_HDMI, &dm)) return false;
  LOG(INFO) << "HDMI monitor refresh rate = " << dm.dmDisplayFrequency;
  return dm.dmDisplayFrequency < kLowestGoodRate;
}

void AdjustHdmiRefreshRate(IMMonitor* m) {
  DCHECK(m);
  if (m == nullptr) return;
  if (!HdmiIsActive(m) || !HdmiRefreshRateIsLow(m)) return;
  LOG(INFO) << "Adjusting HDMI refresh rate...";
  const auto api = boost::make_shared<Win7CCDApi>();
  api->Load("User32.dll");  // not bound, it refuses everything below
  // Nobody else holds the object, so that it goes with the reference.
  const CountedReference<Win7CCD> ccd(new Win7CCD(api));
  DISPLAYCONFIG_TARGET_PREFERRED_MODE record = {};
  // Deliberate: where the preferred mode is not known, the zeroed record is applied.
  ccd->GetTargetPreferredMode(IMMonitor::MD_HDMI, &record);
  ApplyPreferredTiming(api.get(), record);
  LOG(INFO) << "Adjusting HDMI refresh rate completed.";
}

bool ApplyPreferredTiming(Win7CCDApi* api, const DISPLAYCONFIG_TARGET_PREFERRED_MODE& record) {
  DCHECK(api);
  if (api == nullptr) return false;
  DisplayConfigBuffers buffers;
  if (buffers.Allocate(*api, QDC_ONLY_ACTIVE_PATHS) != ERROR_SUCCESS) return false;
  // Deliberate: a failed query is not looked at, and the cleared records are sent.
  buffers.Query(*api, QDC_ONLY_ACTIVE_PATHS, nullptr);
  const UINT32 index = HdmiTargetMode(buffers);
  const auto modes = buffers.Modes();
  if (index < modes.count) {
    modes.first[index].targetMode.targetVideoSignalInfo = record.targetMode.targetVideoSignalInfo;
  }
  return buffers.ValidateAndSet(*api);
}
