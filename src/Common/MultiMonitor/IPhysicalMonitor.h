// The native size of a panel or monitor.
#pragma once

#include <cstdint>

#include "Common/Win.h"

class IPhysicalMonitor : public IUnknown {
 public:
  /// Reads the native resolution of one display.
  /// @param monitor_id  exactly one MD_* bit
  /// @param width       out, pixels; never null
  /// @param height      out, pixels; never null
  /// @return false when it is not known
  virtual bool GetNativeResolution(uint32_t monitor_id, uint32_t* width, uint32_t* height) = 0;

 protected:
  ~IPhysicalMonitor() = default;  // Release ends the object, never a delete through this interface
};
