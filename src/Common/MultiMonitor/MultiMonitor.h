// The class under every real back-end: what a vendor's library does not answer, done with plain
// Windows calls.
#pragma once

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"

#include <cstdint>
#include <string>

/// Initial and the four operations that only a vendor can answer stay abstract. The order of the
/// virtual operations is fixed.
class MultiMonitor : public IMMonitor {
 public:
  /// Counts the display devices.
  MultiMonitor();
  ~MultiMonitor() override = default;
  MultiMonitor(const MultiMonitor&) = delete;
  MultiMonitor& operator=(const MultiMonitor&) = delete;

  void DetectDisplays() override {}
  void PreloadDisplayModes() override;
  BOOL IsExtendModeEnabled() override;
  /// Forwards to EnableExtendMode; the mask is dropped.
  BOOL EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) override;
  /// Through ChangeDisplaySettingsEx: the first attached device stays or becomes the primary one,
  /// the next is placed to its right, or is detached.
  /// @return 0 on any failure; the primary device's settings may then be stored without being in
  /// effect
  BOOL EnableExtendMode(BOOL enable) override;
  BOOL ChangeToNBOnlySingleDisplayMode() override;
  BOOL HasDualOutputCapability() override;
  BOOL HasDisplaySwitchingCapability() override { return TRUE; }
  BOOL ShouldResetDisplaySettingAfterSwtich() override { return TRUE; }
  uint32_t GetVgaVendor() override { return kVendorUnknown; }
  /// Asks a Win7CCD made for the purpose; false up to Windows Vista.
  bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) override;

  /// Reads the EDID of one display through the vendor's library.
  /// @param display  exactly one MD_* bit
  /// @param edid     out; give it back through FreeMonitorEDID
  virtual bool GetMonitorEDID(uint32_t display, EdidBlob* edid);

  /// Gives back what GetMonitorEDID allocated.
  virtual void FreeMonitorEDID(EdidBlob* edid);

  /// Reads the monitor's name out of its EDID.
  /// @param display  exactly one MD_* bit
  /// @param name     out; "Unknown Mnt" when the EDID is damaged; unchanged when there is no name
  /// @return 0 when there is no name, or it is empty
  virtual BOOL GetMonitorName(uint32_t display, std::string* name);

  /// Adds the display devices that Windows lists now, mirroring drivers left out, to the object's
  /// count.
  virtual void CountDisplayDevices();

 protected:
  int32_t m_displayDeviceCount = 0;
  bool m_initialized = false;  // the back-end's library is ready
};
