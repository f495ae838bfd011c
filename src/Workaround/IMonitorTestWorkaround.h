// A remedy for machines on which the tool MonitorTest is installed: a change of resolution before a
// switch.
#pragma once

#include <boost/shared_ptr.hpp>

#include "Common/Win.h"

class IMMonitor;

class IMonitorTestWorkaround {
 public:
  virtual bool IsToolInstalled() = 0;

  /// Flips the primary display between two fixed resolutions. @return 0 when nothing was changed
  virtual BOOL ChangeResolutionBeforeSwitch(IMMonitor* monitor) = 0;

  virtual ~IMonitorTestWorkaround() = default;
};

/// The workaround for this machine; never null.
boost::shared_ptr<IMonitorTestWorkaround> CreateMonitorTestWorkaround();
