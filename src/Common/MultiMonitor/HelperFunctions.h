// Reading and changing the resolution of the desktop, through ChangeDisplaySettingsEx on older
// Windows and SetDisplayConfig on later ones. Callers never see the difference.
#pragma once

#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/Win7CCDApi.h"
#include "Common/Win.h"

#include <boost/noncopyable.hpp>

/// One way of changing the resolution of the whole desktop.
class IDisplaySettingsHelper : private boost::noncopyable {
 public:
  /// @param dm  pixels, bits per pixel, Hz, position; dmFields says which count
  /// @return false when Windows refused; what was changed by then stays
  virtual bool ApplyDisplaySettings(const DEVMODEA& dm) = 0;
  virtual ~IDisplaySettingsHelper() = default;
};

/// Through ChangeDisplaySettingsEx: the primary display. Blocks for three seconds before its one
/// retry.
class Win32ChangeDisplaySettings final : public IDisplaySettingsHelper {
 public:
  /// @param monitor  not owned; with null every change fails
  explicit Win32ChangeDisplaySettings(IMMonitor* monitor) : m_monitor(monitor) {}
  bool ApplyDisplaySettings(const DEVMODEA& dm) override;

 private:
  IMMonitor* const m_monitor;
};

/// Through SetDisplayConfig: every display that shows a desktop.
class Win7CCDDisplaySettings final : public IDisplaySettingsHelper {
 public:
  /// @throws std::runtime_error when Windows lacks the display configuration functions
  Win7CCDDisplaySettings();
  bool ApplyDisplaySettings(const DEVMODEA& dm) override;

 private:
  Win7CCDApi m_ccd;
};

/// Reads one display mode of a device.
/// @param mode_number  ENUM_CURRENT_SETTINGS, ENUM_REGISTRY_SETTINGS or an index
/// @param device       \\.\DISPLAYn; null for the primary display
/// @param dm           out; cleared first
/// @return 0 when there is none, which is logged
BOOL ReadDisplaySettings(DWORD mode_number, const char* device, DEVMODEA* dm);

/// The way that suits this Windows. Owned by the caller.
/// @param p  the active object; not owned
/// @return null when there is no object and this Windows needs one
/// @throws std::runtime_error as Win7CCDDisplaySettings
IDisplaySettingsHelper* CreateDisplaySettingsHelper(IMMonitor* p);

/// Changes the resolution of the desktop, and of every display of an extended one.
/// @param p   the active object
/// @param dm  pixels, bits per pixel, Hz, position; dmFields says which count
/// @return false when the change failed, which is logged; throws nothing
bool ChangeDisplayResolution(IMMonitor* p, const DEVMODEA& dm);
