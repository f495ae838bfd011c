#include "session/Lifecycle.h"

#include <memory>
#include <vector>

#include "Common/Logging.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/MultiMonitor/VendorBackends.h"
#include "session/DMSwitch.h"
#include "session/popup/GdiPlusFlat.h"

// COM needs what Common/Win.h brings.
#include <objbase.h>

bool g_switchReady = false;
bool g_extendModeReady = false;
ULONG_PTR g_gdiplusToken = 0;
DMSwitch* g_pDMSwitchDialog = nullptr;

namespace {

void ConnectAddOnHost() {
  std::vector<uint16_t> vendors;
  EnumerateDisplayAdapterVendors(true, &vendors);
  FilterAdapterVendors(&vendors);
  for (const uint16_t vendor : vendors) {
    if (ShouldUseDisplayLinkWorkaround(vendor)) ConnectDisplayLinkHost();
  }
}

bool StartGdiplus() {
  const Gdiplus::GdiplusStartupInput input;  // version 1, nothing suppressed
  if (Gdiplus::GdiplusStartup(&g_gdiplusToken, &input, nullptr) == Gdiplus::Ok) return true;
  g_gdiplusToken = 0;
  return false;
}

void StopGdiplus() {
  if (g_gdiplusToken == 0) return;
  Gdiplus::GdiplusShutdown(g_gdiplusToken);
  g_gdiplusToken = 0;
}

// However the start of the switch side ends short, an exception included, GDI+ does not stay
// behind.
struct GdiplusStopper {
  GdiplusStopper() = default;
  ~GdiplusStopper() {
    if (!g_switchReady) StopGdiplus();
  }
  GdiplusStopper(const GdiplusStopper&) = delete;
  GdiplusStopper& operator=(const GdiplusStopper&) = delete;
};

void DeleteSession() {
  delete g_pDMSwitchDialog;
  g_pDMSwitchDialog = nullptr;
}

bool InitialSession() {
  try {
    if (g_pDMSwitchDialog->Initial() != 0) return true;
  } catch (...) {
    // As good as a session that could not be initialised.
  }
  DeleteSession();
  return false;
}

bool InitialObject(IMMonitor* object) {
  try {
    return object->Initial() != 0;
  } catch (...) {
    return false;  // as good as an object that could not be initialised
  }
}

bool StartSession() {
  if (g_pDMSwitchDialog != nullptr) return false;
  g_pDMSwitchDialog = DMSwitch::Create();
  if (g_pDMSwitchDialog == nullptr || !InitialSession()) return false;
  g_switchReady = true;
  return true;
}

// Deliberate: the library never calls CoInitialize, and ends COM on the extend-mode side only, when
// that is the last one.
void EndComWithLastSide() {
  if (!g_switchReady && !g_extendModeReady) CoUninitialize();
}

}  // namespace

bool InitialMultiMonitorObject() {
  if (g_switchReady || g_extendModeReady) return true;
  ConnectAddOnHost();
  IMMonitor* const object = GetMultiMonitorObject();
  // Deliberate: on these two ways out the add-on host stays connected.
  if (object == nullptr) return false;
  if (InitialObject(object)) return true;
  LOG(ERROR) << "InitialMultiMonitorObject()- initial display library failed";
  DeleteMultiMonitorObject();
  return false;
}

void ReleaseMultiMonitorObject() {
  // Deliberate: the other side loses the add-on host too, and keeps the object.
  DisconnectDisplayLinkHost();
  if (!g_switchReady && !g_extendModeReady) DeleteMultiMonitorObject();
}

BOOL StartSwitchSide() {
  if (g_switchReady) return 1;
  if (!StartGdiplus()) return 0;
  const GdiplusStopper stopper;
  // Deliberate: a display object that cannot be had is not followed by ReleaseMultiMonitorObject.
  if (!InitialMultiMonitorObject()) return 0;
  if (StartSession()) return 1;
  ReleaseMultiMonitorObject();
  return 0;
}

void EndSwitchSide() {
  if (!g_switchReady) return;
  g_switchReady = false;
  if (g_pDMSwitchDialog != nullptr) {
    // Deliberate: the host is told that the pop-up has gone, and nothing is applied.
    g_pDMSwitchDialog->ClosePopup();
    DeleteSession();
  }
  ReleaseMultiMonitorObject();
  StopGdiplus();
}

BOOL StartExtendModeSide() {
  if (g_extendModeReady) return 1;
  if (InitialMultiMonitorObject()) {
    g_extendModeReady = true;
    return 1;
  }
  DCHECK(FALSE && "InitialMultiMonitorObject() FAILED!");
  EndComWithLastSide();
  return 0;
}

void EndExtendModeSide() {
  if (!g_extendModeReady) return;
  g_extendModeReady = false;
  ReleaseMultiMonitorObject();
  EndComWithLastSide();
}
