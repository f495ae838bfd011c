// VIA graphics of old notebooks, driven through a private escape of the display driver.
#pragma once

#include "Common/MultiMonitor/MultiMonitor.h"

#include <cstdint>

/// Host thread only. Has nothing to start and no library. Nothing is logged.
class ViaMMImpl : public MultiMonitor {
 public:
  /// Asks whether the driver has the escape. Without a device context the object stands as it is.
  /// @throw const char* the driver has no such escape
  ViaMMImpl();

  BOOL Initial() override { return TRUE; }
  /// MD_CRT, MD_NB, MD_TV and MD_DVI. @return 0, with the outputs as they were, for a null pointer
  /// or a driver that does not answer
  BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) override;
  /// As GetConnectedDisplays.
  BOOL GetActiveDisplays(uint32_t* displays, uint32_t* display_count) override;
  /// DM_SINGLE or DM_CLONE.
  /// @return 0 for neither one nor two active displays, the mask being written and the mode not;
  /// 1, with the outputs as they were, when the driver does not answer
  BOOL GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) override;
  /// DM_SINGLE on one display; DM_CLONE of the panel with another one.
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override;
  uint32_t GetVgaVendor() override { return kVendorVia; }
};
