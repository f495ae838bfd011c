// Puts the refresh rate of an HDMI monitor right after a switch, where the driver is known to get
// it wrong.
#pragma once

class IMMonitor;

class RefreshRateWorkaround {
 public:
  virtual ~RefreshRateWorkaround() = default;
  virtual void BeginMonitoring() = 0;
  virtual void EndMonitoring() = 0;

  /// Looks at the active display object, as it is at the time of the call, and raises the refresh
  /// rate if need be.
  virtual void AdjustRefreshRate() = 0;

 protected:
  RefreshRateWorkaround() = default;
  RefreshRateWorkaround(const RefreshRateWorkaround&) = default;
  RefreshRateWorkaround& operator=(const RefreshRateWorkaround&) = default;
};

/// The workaround that the machine needs, owned by the caller; never null.
/// @param m the active display object
RefreshRateWorkaround* CreateRefreshRateWorkaround(IMMonitor* m);
