#pragma once

#include <memory>

#include "Workaround/RefreshRateWorkaround.h"

class IMMonitor;
class IntelRRWorkaroundWindow;

/// For Windows 7 with Intel graphics, where an HDMI monitor can come up below 59 Hz.
class IntelRRWorkaround : public RefreshRateWorkaround {
 public:
  /// @param m  the active display object; not owned
  explicit IntelRRWorkaround(IMMonitor* m);
  ~IntelRRWorkaround() override;

  // Deliberate: nothing is monitored. The window stands ready and is never created.
  void BeginMonitoring() override {}
  void EndMonitoring() override {}
  void AdjustRefreshRate() override;

 private:
  // The tests' white box.
  friend struct WorkaroundAccess;

  const std::unique_ptr<IntelRRWorkaroundWindow> window_;
};
