#include "Common/MultiMonitor/HelperFunctions.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayConfigBuffers.h"
#include "Common/MultiMonitor/OutputTechnology.h"
#include "Common/win_util.h"

#include <stdexcept>

namespace {

constexpr DWORD kResetFlags = CDS_RESET | CDS_GLOBAL | CDS_UPDATEREGISTRY;
constexpr DWORD kRetryDelay = 3000;  // milliseconds
static_assert(sizeof(DEVMODEA) == 156, "dmSize as callers write it");

bool ChangePrimaryDisplay(DEVMODEA* dm) {
  const LONG result = ChangeDisplaySettingsExA(nullptr, dm, nullptr, kResetFlags, nullptr);
  if (result == DISP_CHANGE_SUCCESSFUL) return true;
  LOG(ERROR) << "Calling ChangeDisplaySettingsEx() failed: " << result;
  return false;
}

// Writes the wanted settings into one source.
void ChangeSource(const DEVMODEA& dm, DISPLAYCONFIG_SOURCE_MODE* source) {
  source->width = dm.dmPelsWidth;
  source->height = dm.dmPelsHeight;
  if ((dm.dmFields & DM_BITSPERPEL) != 0) {
    source->pixelFormat =
        static_cast<DISPLAYCONFIG_PIXELFORMAT>(PixelFormatFromBits(dm.dmBitsPerPel));
  }
  if ((dm.dmFields & DM_POSITION) != 0) source->position = dm.dmPosition;
}

// Whether the primary display has another width than the wanted one. Windows sometimes reports
// success for a change that it did not make.
// Deliberate: the height is not compared.
bool WidthIsStillDifferent(const DEVMODEA& dm) {
  DEVMODEA current = {};
  current.dmSize = sizeof(current);
  current.dmFields = DM_PELSWIDTH | DM_PELSHEIGHT;
  if (EnumDisplaySettingsA(nullptr, ENUM_CURRENT_SETTINGS, &current) == 0) return false;
  return current.dmPelsWidth != dm.dmPelsWidth;
}

}  // namespace

bool Win32ChangeDisplaySettings::ApplyDisplaySettings(const DEVMODEA& dm) {
  if (m_monitor == nullptr) return false;
  m_monitor->PreloadDisplayModes();
  VLOG(2) << "New resolution: width = " << dm.dmPelsWidth << ", height = " << dm.dmPelsHeight
          << ", color = " << dm.dmBitsPerPel << ", freq = " << dm.dmDisplayFrequency;
  DEVMODEA copy = dm;
  if (ChangeDisplaySettingsA(&copy, CDS_TEST) != DISP_CHANGE_SUCCESSFUL) {
    m_monitor->PreloadDisplayModes();
  }
  if (ChangePrimaryDisplay(&copy)) return true;
  // Deliberate: a driver that is still busy with the last change gets three seconds and one more
  // chance.
  Sleep(kRetryDelay);
  return ChangePrimaryDisplay(&copy);
}

Win7CCDDisplaySettings::Win7CCDDisplaySettings() {
  if (m_ccd.Load("User32.dll") == 0) {
    throw std::runtime_error("Fail to load User32.dll on Windows 7");
  }
}

bool Win7CCDDisplaySettings::ApplyDisplaySettings(const DEVMODEA& dm) {
  DisplayConfigBuffers buffers;
  if (m_ccd.SetDisplayConfig == nullptr) return false;
  if (buffers.Allocate(m_ccd, QDC_ONLY_ACTIVE_PATHS) != ERROR_SUCCESS) return false;
  buffers.Query(m_ccd, QDC_ONLY_ACTIVE_PATHS, nullptr);  // a failure leaves nothing to change below

  // Deliberate: every source gets the same values, so that all displays of an extended desktop take
  // the new size.
  for (DISPLAYCONFIG_MODE_INFO& mode : buffers.Modes()) {
    if (mode.infoType == DISPLAYCONFIG_MODE_INFO_TYPE_SOURCE) ChangeSource(dm, &mode.sourceMode);
  }

  return buffers.ValidateAndSet(m_ccd);
}

BOOL ReadDisplaySettings(DWORD mode_number, const char* device, DEVMODEA* dm) {
  if (dm == nullptr) return FALSE;
  *dm = {};
  dm->dmSize = sizeof(*dm);
  dm->dmFields = DM_BITSPERPEL | DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFREQUENCY;
  if (EnumDisplaySettingsExA(device, mode_number, dm, 0) != 0) return TRUE;
  LOG_SYSTEM_ERROR(ERROR, GetLastError()) << "Calling EnumDisplaySettingsEx() failed";
  return FALSE;
}

IDisplaySettingsHelper* CreateDisplaySettingsHelper(IMMonitor* p) {
  DCHECK(p != NULL);
  // Deliberate: Server 2008 goes the later way, too, and has not got it.
  if (win_util::GetWinVersion() >= win_util::WINVERSION_2008) return new Win7CCDDisplaySettings;
  return p != nullptr ? new Win32ChangeDisplaySettings(p) : nullptr;
}

bool ChangeDisplayResolution(IMMonitor* p, const DEVMODEA& dm) {
  try {
    // Deliberate: not an owner. When something is thrown the helper stays behind.
    IDisplaySettingsHelper* const helper = CreateDisplaySettingsHelper(p);
    bool result = helper != nullptr && helper->ApplyDisplaySettings(dm);
    if (win_util::GetWinVersion() > win_util::WINVERSION_VISTA && WidthIsStillDifferent(dm)) {
      result = Win32ChangeDisplaySettings(p).ApplyDisplaySettings(dm);
    }
    if (!result) {
      LOG(WARNING) << "Changing display resolution to " << dm.dmPelsWidth << " x "
                   << dm.dmPelsHeight << " failed";
    }
    delete helper;
    return result;
  } catch (...) {
    return false;
  }
}
