#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV2.h"

NvidiaMMImplV2::~NvidiaMMImplV2() {
  if (m_nvProxy != nullptr) NvidiaMMImplV2::DestroyNvProxy(m_nvProxy);
}
BOOL NvidiaMMImplV2::Initial() { return FALSE; }
BOOL NvidiaMMImplV2::GetConnectedDisplays(uint32_t*, uint32_t*) { return FALSE; }
BOOL NvidiaMMImplV2::GetActiveDisplays(uint32_t*, uint32_t*) { return FALSE; }
BOOL NvidiaMMImplV2::GetCurrentDisplayMode(uint32_t*, uint32_t*) { return FALSE; }
BOOL NvidiaMMImplV2::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  return ApplyDisplayMode(mode, displays, nullptr);
}
void NvidiaMMImplV2::DetectDisplays() {}
BOOL NvidiaMMImplV2::EnableExtendModeOnDisplays(BOOL, uint32_t) { return FALSE; }
BOOL NvidiaMMImplV2::EnableExtendMode(BOOL) { return FALSE; }
bool NvidiaMMImplV2::GetDisplaySettings(uint32_t, DEVMODEA*) { return false; }
bool NvidiaMMImplV2::GetMonitorEDID(uint32_t, EdidBlob*) { return false; }
void NvidiaMMImplV2::FreeMonitorEDID(EdidBlob*) {}
BOOL NvidiaMMImplV2::ApplyDisplayMode(uint32_t, uint32_t, const NvidiaModeSettings*) {
  return FALSE;
}
BOOL NvidiaMMImplV2::ApplyExtendModeOnDisplay(uint32_t) { return FALSE; }
BOOL NvidiaMMImplV2::ApplyExtendMode() { return FALSE; }
NVApiWrapper* NvidiaMMImplV2::CreateNvProxy() { return new NVApiWrapper(); }
void NvidiaMMImplV2::DestroyNvProxy(NVApiWrapper* proxy) { delete proxy; }
HRESULT NvidiaMMImplV2::QueryInterface(REFIID, void**) { return E_FAIL; }
ULONG NvidiaMMImplV2::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }
ULONG NvidiaMMImplV2::Release() {
  const LONG left = InterlockedDecrement(&m_references);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}
bool NvidiaMMImplV2::InitialExtension() { return false; }
bool NvidiaMMImplV2::GetEDID(uint32_t, EdidBlob*) { return false; }
void NvidiaMMImplV2::FreeEDID(EdidBlob*) {}
bool NvidiaMMImplV2::IsDiscreteOnly() { return false; }
bool NvidiaMMImplV2::IsCrossAdapterCapable() { return false; }
bool NvidiaMMImplV2::CouldManageMultipleDisplay() { return false; }
uint32_t NvidiaMMImplV2::NvOutputOfDisplay(uint32_t) const { return 0; }
uint32_t NvidiaMMImplV2::NvOutputOfConnectorType(uint32_t) const { return 0; }
uint32_t NvidiaMMImplV2::DisplayToConnector(uint32_t) const { return kUnknownConnector; }
void NvidiaMMImplV2::NvMaskToDisplays(uint32_t, uint32_t*, uint32_t*) {}
bool FirstDisplayHandle(NvDisplayHandle* pnvHandle) {
  if (pnvHandle != nullptr) *pnvHandle = nullptr;
  return false;
}
