#include "tests/whitebox/WorkaroundBox.h"

#include "Common/MultiMonitor/Win7CCDApi.h"
#include "Workaround/HdmiRefreshRate.h"
#include "Workaround/IntelDisplayPresence.h"
#include "Workaround/IntelRRWorkaround.h"
#include "Workaround/NoMonitorTestV3Workaround.h"
#include "Workaround/NullIntelRRWorkaround.h"

/// Reaches the fields for the box.
struct WorkaroundAccess {
  static IntelRRWorkaroundWindow* WindowOf(RefreshRateWorkaround* workaround) {
    return dynamic_cast<IntelRRWorkaround&>(*workaround).window_.get();
  }

  static RRWindowState StateOf(const IntelRRWorkaroundWindow* window) {
    RRWindowState state;
    state.m = window->m;
    state.timer_armed = window->timer_armed_;
    state.known_displays = window->known_displays_;
    state.worker_thread = window->worker_thread_;
    state.worker_thread_id = window->worker_thread_id_;
    return state;
  }

  static void CheckDisplays(IntelRRWorkaroundWindow* window) { window->CheckDisplays(); }
};

namespace {

MonitorTestV3Workaround* NewMonitorTestV3Workaround() { return new MonitorTestV3Workaround; }
IMonitorTestWorkaround* NewNoMonitorTestV3Workaround() { return new NoMonitorTestV3Workaround; }

std::string NameOfMonitorTestWorkaround(IMonitorTestWorkaround* workaround) {
  if (dynamic_cast<MonitorTestV3Workaround*>(workaround)) return "MonitorTestV3Workaround";
  if (dynamic_cast<NoMonitorTestV3Workaround*>(workaround)) return "NoMonitorTestV3Workaround";
  return "";
}

std::string NameOfRefreshRateWorkaround(RefreshRateWorkaround* workaround) {
  if (dynamic_cast<IntelRRWorkaround*>(workaround)) return "IntelRRWorkaround";
  if (dynamic_cast<NullIntelRRWorkaround*>(workaround)) return "NullIntelRRWorkaround";
  return "";
}

bool ApplyTiming(const char* file_name, const DISPLAYCONFIG_TARGET_PREFERRED_MODE& record) {
  Win7CCDApi api;
  if (file_name != nullptr) api.Load(file_name);
  return ApplyPreferredTiming(&api, record);
}

bool ApplyTimingWithoutApi() { return ApplyPreferredTiming(nullptr, {}); }

IntelRRWorkaroundWindow* NewWindow(IMMonitor* m) { return new IntelRRWorkaroundWindow(m); }

void ApplyWorkaround(IntelRRWorkaroundWindow* window, uint32_t displays, uint32_t count) {
  window->ApplyWorkaround(displays, count);
}

constexpr WorkaroundBox kBox = {
    CreateMonitorTestWorkaround,
    NewMonitorTestV3Workaround,
    NewNoMonitorTestV3Workaround,
    NameOfMonitorTestWorkaround,
    CreateRefreshRateWorkaround,
    NameOfRefreshRateWorkaround,
    WorkaroundAccess::WindowOf,
    IsIntelDisplayPresent,
    HdmiRefreshRateIsLow,
    AdjustHdmiRefreshRate,
    ApplyTiming,
    ApplyTimingWithoutApi,
    NewWindow,
    WorkaroundAccess::StateOf,
    WorkaroundAccess::CheckDisplays,
    ApplyWorkaround,
};

}  // namespace

const WorkaroundBox* GetWorkaroundBox() { return &kBox; }
