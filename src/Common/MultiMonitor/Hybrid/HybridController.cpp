#include "Common/MultiMonitor/Hybrid/HybridController.h"

#include "Common/MultiMonitor/CreateWin7CCDObject.h"
#include "Common/MultiMonitor/Win7CCD.h"

HybridController::HybridController(IMMonitor* intel, IMMonitor* nvidia)
    : m_intel(intel), m_nvidia(nvidia), m_ccd(CreateWin7CCDObject()) {}
HybridController::~HybridController() = default;
BOOL HybridController::Initial() { return FALSE; }
BOOL HybridController::GetConnectedDisplays(uint32_t*, uint32_t*) { return FALSE; }
BOOL HybridController::GetActiveDisplays(uint32_t*, uint32_t*) { return FALSE; }
BOOL HybridController::GetCurrentDisplayMode(uint32_t*, uint32_t*) { return FALSE; }
BOOL HybridController::SetNewDisplayMode(uint32_t, uint32_t) { return FALSE; }
void HybridController::DetectDisplays() {}
BOOL HybridController::EnableExtendModeOnDisplays(BOOL, uint32_t) { return FALSE; }
BOOL HybridController::EnableExtendMode(BOOL) { return FALSE; }
BOOL HybridController::ChangeToNBOnlySingleDisplayMode() { return FALSE; }
BOOL HybridController::ShouldResetDisplaySettingAfterSwtich() { return FALSE; }
bool HybridController::GetDisplaySettings(uint32_t, DEVMODEA*) { return false; }
HRESULT HybridController::QueryInterface(REFIID, void**) { return E_FAIL; }
ULONG HybridController::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }
ULONG HybridController::Release() {
  const LONG left = InterlockedDecrement(&m_references);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}
bool HybridController::InitialExtension() { return false; }
bool HybridController::GetEDID(uint32_t, EdidBlob*) { return false; }
void HybridController::FreeEDID(EdidBlob*) {}
