#include "Common/MultiMonitor/MultiMonitor.h"

#include "Common/CountedReference.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/CreateWin7CCDObject.h"
#include "Common/MultiMonitor/DisplayDevices.h"
#include "Common/MultiMonitor/Edid.h"
#include "Common/MultiMonitor/Win7CCD.h"
#include "Common/win_util.h"

namespace {

// Reads one mode after the other and forgets it: some drivers build their mode list only when they
// are asked for it, and refuse a mode that they have not built.
void WalkModes(const char* device) {
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  for (DWORD i = 0; EnumDisplaySettingsA(device, i, &dm) != 0; ++i) {
  }
}

/// An object's answer to GetMonitorEDID: gives it back at its end.
class MonitorEdid {
 public:
  explicit MonitorEdid(MultiMonitor* owner) : owner_(owner) {}
  ~MonitorEdid() {
    if (read_) owner_->FreeMonitorEDID(&blob_);
  }
  MonitorEdid(const MonitorEdid&) = delete;
  MonitorEdid& operator=(const MonitorEdid&) = delete;

  bool Read(uint32_t display) { return read_ = owner_->GetMonitorEDID(display, &blob_); }
  const EdidBlob& blob() const { return blob_; }

 private:
  MultiMonitor* const owner_;
  EdidBlob blob_;
  bool read_ = false;
};

}  // namespace

// Deliberate: the devices are counted here and never again, so that one which comes or goes later
// changes neither HasDualOutputCapability nor IsExtendModeEnabled.
MultiMonitor::MultiMonitor() { MultiMonitor::CountDisplayDevices(); }

void MultiMonitor::PreloadDisplayModes() {
  WalkModes("\\\\.\\DISPLAY1");
  WalkModes("\\\\.\\DISPLAY2");
}

BOOL MultiMonitor::IsExtendModeEnabled() {
  // Deliberate: with one device counted at construction Windows is not asked.
  if (m_displayDeviceCount < 2) return FALSE;
  uint32_t attached = 0;
  DISPLAY_DEVICEA device = {};
  for (DWORD i = 0; ReadDisplayDevice(i, &device); ++i) {
    if (IsMirroring(device.StateFlags) || !IsAttached(device.StateFlags)) continue;
    if (++attached == 2) return TRUE;
  }
  return FALSE;
}

BOOL MultiMonitor::EnableExtendModeOnDisplays(BOOL enable, uint32_t /*displays*/) {
  return EnableExtendMode(enable);
}

BOOL MultiMonitor::ChangeToNBOnlySingleDisplayMode() { return SetNewDisplayMode(DM_SINGLE, MD_NB); }

BOOL MultiMonitor::HasDualOutputCapability() { return m_displayDeviceCount > 1 ? TRUE : FALSE; }

// Deliberate: back-ends without an answer of their own have one from Windows 7 on only, and get it
// from an object that is made and ended at each call.
bool MultiMonitor::GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) {
  DCHECK(CountBits(imm_display) == 1);
  DCHECK(dm != NULL);
  if (dm == nullptr) return false;
  if (win_util::GetWinVersion() <= win_util::WINVERSION_VISTA) return false;

  Win7CCD* const ccd = CreateWin7CCDObject();
  if (ccd == nullptr) return false;
  const CountedReference<IPhysicalMonitor> reference(ccd);  // giving it back ends the object
  try {
    return ccd->Initial() != 0 && ccd->GetDisplaySettings(imm_display, dm);
  } catch (...) {
    // A server counts as later than Vista without having the functions: Initial throws.
    return false;
  }
}

bool MultiMonitor::GetMonitorEDID(uint32_t /*display*/, EdidBlob* /*edid*/) { return false; }

void MultiMonitor::FreeMonitorEDID(EdidBlob* /*edid*/) {}

BOOL MultiMonitor::GetMonitorName(uint32_t display, std::string* name) {
  MonitorEdid read(this);
  if (!read.Read(display)) return FALSE;
  const EdidBlob& blob = read.blob();
  if (blob.cb == 0 || blob.pv == nullptr) return FALSE;
  EDID edid;
  try {
    if (edid.Load(blob.pv, blob.cb) == 0) return FALSE;
  } catch (const std::runtime_error&) {
    *name = kUnknownMonitorName;
    return TRUE;
  }
  return edid.FindName(name) && !name->empty() ? TRUE : FALSE;
}

void MultiMonitor::CountDisplayDevices() {
  m_displayDeviceCount += static_cast<int32_t>(GetDisplayDeviceCount());
}
