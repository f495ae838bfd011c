// The display-control contract that every back-end implements: the seventeen operations in their
// fixed order, with the display flags, mode values and vendor ids of DisplayNumbers.h.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/DisplayNumbers.h"
#include "Common/Win.h"

/// Controls the displays of the machine. Truth values are 32-bit, non-zero is success; no operation
/// is reentrant and all run on the host's thread. Masks are sets of MD_* bits; "one bit" means
/// exactly one of them.
// Deliberate: the order of the operations and the spelling of ShouldResetDisplaySettingAfterSwtich
// are fixed.
class IMMonitor : public DisplayNumbers {
 public:
  /// Binds the vendor's library and reads what the other operations need. May be called again on a
  /// ready object.
  /// @return 0 on failure; the caller then destroys the object
  virtual BOOL Initial() = 0;

  /// Releases the library. Deleting through IMMonitor is the normal way to end an object.
  virtual ~IMMonitor() = default;

  /// Reports every display physically attached, active or not.
  /// @param displays       out; mask of MD_* bits; never null; the caller clears it before the call
  /// @param display_count  out; number of displays, which may exceed the bits in `displays`;
  /// cleared by the caller
  /// @return 0 when the driver cannot be asked; the outputs are then unspecified
  /// @note host thread, after Initial; call DetectDisplays first when the host asks
  virtual BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) = 0;

  /// Reports the displays that now show a desktop. Arguments and result as GetConnectedDisplays.
  virtual BOOL GetActiveDisplays(uint32_t* displays, uint32_t* display_count) = 0;

  /// Reports the current mode and the mask of active displays.
  /// @param mode      out; one DM_* value, 0 when the driver's answer has no name here
  /// @param displays  out; mask of the active displays
  /// @return 0 when the driver cannot be asked
  virtual BOOL GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) = 0;

  /// Switches to `mode` (a DM_* value) on the displays of the mask.
  /// @return 0 when the driver refused; what is then active is whatever the driver left
  virtual BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) = 0;

  /// Asks the driver to detect attached displays again; called right before the connected or active
  /// displays are read on behalf of the host.
  virtual void DetectDisplays() = 0;

  /// Walks the mode lists of the first two display devices, for the effect on the driver's mode
  /// cache.
  virtual void PreloadDisplayModes() = 0;

  /// @return 1 while more than one desktop-attached, non-mirroring device exists
  virtual BOOL IsExtendModeEnabled() = 0;

  /// Turns extended desktop on for the named secondary displays (a mask without MD_NB), or off.
  virtual BOOL EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) = 0;

  /// Turns extended desktop on or off and chooses the secondary display itself.
  virtual BOOL EnableExtendMode(BOOL enable) = 0;

  /// Switches to the notebook's panel alone.
  virtual BOOL ChangeToNBOnlySingleDisplayMode() = 0;

  /// @return non-zero when the machine can drive two displays at once
  virtual BOOL HasDualOutputCapability() = 0;

  /// @return non-zero when the driver permits switching at all
  // Deliberate: every back-end answers, and nothing in the library asks.
  virtual BOOL HasDisplaySwitchingCapability() = 0;

  /// @return non-zero when the session must re-apply remembered resolutions after a switch
  virtual BOOL ShouldResetDisplaySettingAfterSwtich() = 0;

  /// @return a PCI vendor id or one of the pseudo-ids above; 0 when unknown
  virtual uint32_t GetVgaVendor() = 0;

  /// Fills `dm` with the current settings of one display.
  /// @param imm_display  exactly one MD_* bit
  /// @param dm           caller's record, dmSize 156 and dmFields 0x5C0080 on entry; pixels, bits
  /// per pixel, Hz
  /// @return false when the settings cannot be had; `dm` is then unspecified
  virtual bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) = 0;
};
