#include "Common/MultiMonitor/Intel/IntelMMImpl.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayDevices.h"
#include "Common/MultiMonitor/Intel/CuiDevices.h"
#include "Common/MultiMonitor/Intel/ICUIExternal8.h"
#include "Common/MultiMonitor/Intel/IntelDeviceTypes.h"

#include <objbase.h>

#include <ios>

// Deliberate: the driver's object is not released; the reference is held to the end of the process.
IntelMMImpl::~IntelMMImpl() { m_pCUIExt = nullptr; }

BOOL IntelMMImpl::Initial() {
  if (m_initialized || m_extensionReady != FALSE) return TRUE;
  if (!CreateCuiObject()) {
    LOG(ERROR) << "Can't initial Intel display library";
    return FALSE;
  }
  m_initialized = true;
  m_extensionReady = TRUE;
  return TRUE;
}

bool IntelMMImpl::CreateCuiObject() {
  // Deliberate: only a test that the object is registered. The class that the name stands for is
  // not used, and the object is always sought in a process of its own.
  CLSID registered = {};
  if (FAILED(CLSIDFromProgID(kCuiProgId, &registered))) return false;
  void* object = nullptr;
  const HRESULT hr =
      CoCreateInstance(kCuiClsid, nullptr, CLSCTX_LOCAL_SERVER, kCuiInterfaceId, &object);
  if (FAILED(hr) || object == nullptr) {
    LOG(ERROR) << "Call to CoCreateInstance to create Intel COM object failed, hr = 0x" << std::hex
               << static_cast<uint32_t>(hr);
    return false;
  }
  m_pCUIExt = static_cast<ICUIExternal8*>(object);
  return true;
}

// Deliberate: interfaces are had by a run-time cast and never from here.
HRESULT IntelMMImpl::QueryInterface(REFIID /*iid*/, void** /*object*/) {
  DCHECK(0 && "Should never call this function");
  return E_FAIL;
}

ULONG IntelMMImpl::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }

ULONG IntelMMImpl::Release() {
  const LONG left = InterlockedDecrement(&m_references);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

bool IntelMMImpl::InitialExtension() {
  if (m_extensionReady != FALSE) return true;
  if (Initial() == 0) {
    DCHECK(0 && "Initial Intel library failed");
    return false;
  }
  m_extensionReady = TRUE;
  return true;
}

// Deliberate: a cleared flag holds for one question.
BOOL IntelMMImpl::ShouldResetDisplaySettingAfterSwtich() {
  return std::exchange(should_reset_display_settings_after_switch_, TRUE);
}

bool IntelMMImpl::SupportsTripleDisplay() {
  CuiConnectors connectors = {};
  if (!ReadConnectors(&connectors)) return false;
  VLOG(2) << std::showbase << std::hex
          << "dwConnectorSupported = " << connectors.dwConnectorSupported
          << ", dwConnectorDispAttached = " << connectors.dwConnectorDispAttached
          << ", dwConnectorDispActive = " << connectors.dwConnectorDispActive;
  return (connectors.dwConnectorSupported & kCuiThirdConnector) != 0;
}

bool IntelMMImpl::CanControlHDMIMonitor() {
  CuiConnectors connectors = {};
  if (!ReadConnectors(&connectors)) return false;
  VLOG(2) << std::showbase << std::hex
          << "CanControlHDMIMonitor() dwConnectorSupported = " << connectors.dwConnectorSupported
          << ", dwConnectorDispAttached = " << connectors.dwConnectorDispAttached
          << ", dwConnectorDispActive = " << connectors.dwConnectorDispActive;
  return (connectors.dwConnectorSupported & kCuiHdmiConnectors) != 0;
}

// A read that failed leaves a block of zeroes, which has no connectors.
bool IntelMMImpl::ReadConnectors(CuiConnectors* connectors) {
  DCHECK(m_pCUIExt != NULL);
  if (m_pCUIExt == nullptr) return false;
  DWORD err = IGFX_SUCCESS;
  const HRESULT hr = m_pCUIExt->GetDeviceData(kCuiConnectorsGuid, sizeof(*connectors),
                                              reinterpret_cast<BYTE*>(connectors), &err);
  DCHECK(SUCCEEDED(hr));
  return true;
}

void IntelMMImpl::RefreshDeviceList() {
  if (m_pCUIExt == nullptr) return;
  m_devices.clear();
  std::vector<std::wstring> names;
  // Deliberate: all adapters here, while WalkDevices looks at the first two only.
  GetIntelAttachedDevices(&names);
  for (const std::wstring& name : names) {
    CuiDevices devices(m_pCUIExt, name);
    while (devices.Next()) {
      if (devices.uid() != 0) m_devices.push_back({devices.type(), devices.uid()});
    }
  }
}

uint32_t IntelMMImpl::UidOfType(uint32_t type) const {
  for (const Device& device : m_devices) {
    if (device.type == type) return device.uid;
  }
  return 0;
}

uint32_t IntelMMImpl::DisplayOfUid(uint32_t uid) const {
  for (const Device& device : m_devices) {
    if (device.uid == uid) return DisplayOfIntelType(device.type);
  }
  return 0;
}

uint32_t IntelMMImpl::TypeFromBit(uint32_t imm_display) {
  if (imm_display == 0) return 0;
  DCHECK((CountBits(imm_display) == 1) &&
         "IntelMMImpl::TypeFromBit() more than 2 bit enabled is not good");
  return IntelTypeOfDisplay(imm_display);
}
