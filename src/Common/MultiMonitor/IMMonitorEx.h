// Mode and resolution in one driver call; only some back-ends have it. Reached by a run-time cast
// from IMMonitor.
#pragma once

#include <cstdint>

#include "Common/Win.h"

class IMMonitorEx {
 public:
  /// Sets clone, or a presentation mode, together with a resolution.
  /// @param mode      DM_CLONE, or a presentation type (32, 64); anything else returns 0 at once
  /// @param displays  mask of the displays
  /// @param dm        caller's settings: pixels, bits per pixel, Hz; all four are taken whatever
  ///                  dmFields says
  virtual BOOL SetDisplayModeWithSettings(uint32_t mode, uint32_t displays, DEVMODEW* dm) = 0;

 protected:
  ~IMMonitorEx() = default;  // the object ends through IMMonitor
};
