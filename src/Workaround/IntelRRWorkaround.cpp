#include "Workaround/IntelRRWorkaround.h"

#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Workaround/HdmiRefreshRate.h"
#include "Workaround/IntelRRWorkaroundWindow.h"

IntelRRWorkaround::IntelRRWorkaround(IMMonitor* m)
    : window_(std::make_unique<IntelRRWorkaroundWindow>(m)) {}

IntelRRWorkaround::~IntelRRWorkaround() = default;

void IntelRRWorkaround::AdjustRefreshRate() {
  // The factory may have replaced the object since.
  IMMonitor* const m = GetMultiMonitorObject();
  window_->set_monitor(m);
  if (m != nullptr) AdjustHdmiRefreshRate(m);
}
