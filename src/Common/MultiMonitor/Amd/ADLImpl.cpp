#include "Common/MultiMonitor/Amd/ADLImpl.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/HasSeveralGraphicsVendors.h"

#include <utility>

namespace {

constexpr char kAdlLibrary[] = "atiadlxx.dll";

// Two displays at least, or there is nothing to switch between.
constexpr int kFewestDisplays = 2;

}  // namespace

ADLImpl::ADLImpl() : m_adl(new VADLLib()) {}

ADLImpl::~ADLImpl() {
  m_displayInfos.Reset();
  m_infoAdapters.reset();
  VADLLib::Call(m_adl->ADL_Main_Control_Destroy);
}

BOOL ADLImpl::Initial() {
  if (m_initialized || m_extensionReady) return TRUE;
  if (!StartLibrary()) return FALSE;
  ReadPowerXpress();
  m_isHybrid = HasSeveralGraphicsVendors();
  if (!DrivesSeveralDisplays()) return FALSE;
  m_initialized = true;
  m_extensionReady = true;
  return TRUE;
}

// Deliberate: whatever fails behind the load leaves the module held, so that a second attempt fails
// at once.
bool ADLImpl::StartLibrary() {
  if (m_adl->IsLoaded() || m_adl->Load(kAdlLibrary) == 0) return false;
  const int rv =
      VADLLib::Call(m_adl->ADL_Main_Control_Create, ADL_MAIN_MALLOC_CALLBACK{AllocateAdlBuffer}, 0);
  return rv == ADL_OK && RefreshAdapters();
}

void ADLImpl::ReadPowerXpress() {
  int version = 0;
  int rv = CallActive(m_adl->ADL_Display_PowerXpressVersion_Get, &version);
  m_hasPowerXpress = rv == ADL_OK;
  if (!m_hasPowerXpress) {
    LOG(ERROR) << "Call to ADL_Display_PowerXpressVersion_Get() failed, returns: " << rv;
    return;
  }
  int gpu = 0;
  rv = CallActive(m_adl->ADL_Display_PowerXpressActiveGPU_Get, &gpu);
  if (rv == ADL_OK) {
    m_activeGpu = gpu == 1 ? 1 : 2;
  } else {
    LOG(ERROR) << "Call to ADL_Display_PowerXpressActiveGPU_Get() failed, returns: " << rv;
  }
}

bool ADLImpl::DrivesSeveralDisplays() {
  int controllers = 0;
  int displays = 0;
  int rv = CallActive(m_adl->ADL_Display_Capabilities_Get, &controllers, &displays);
  if (rv != ADL_OK) {
    LOG(WARNING) << "Call to ADL_Display_Capabilities_Get failed, returns: " << rv;
  }
  if (rv != ADL_OK || controllers == 0 || displays == 0) return false;

  int count = 0;
  rv = CallActive(m_adl->ADL_Display_NumberOfDisplays_Get, &count);
  // Deliberate: a single display fails without a line.
  if (rv != ADL_OK || count == 0) {
    LOG(WARNING) << "AMD adapter don't handle multiple displays management"
                 << ", call to ADL_Display_NumberOfDisplays_Get() returns: " << rv;
  }
  return rv == ADL_OK && count >= kFewestDisplays;
}

// Deliberate: nothing that is called here is asked whether it worked.
void ADLImpl::ReloadAdl() {
  VADLLib::Call(m_adl->ADL_Main_Control_Destroy);
  VADLLib::Call(m_adl->ADL_Main_Control_Create, ADL_MAIN_MALLOC_CALLBACK{AllocateAdlBuffer}, 0);
  RefreshAdapters();
}

bool ADLImpl::AdapterAt(int position, int32_t* adapter) const {
  if (m_infoAdapters == nullptr || position < 0 || position >= m_infoAdaptersLength) return false;
  *adapter = m_infoAdapters[static_cast<size_t>(position)].iAdapterIndex;
  return true;
}

// Deliberate: interfaces are had by a run-time cast and never from here.
HRESULT ADLImpl::QueryInterface(REFIID /*iid*/, void** /*object*/) {
  DCHECK(0 && "Should never call this function");
  return E_FAIL;
}

ULONG ADLImpl::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }

ULONG ADLImpl::Release() {
  const LONG left = InterlockedDecrement(&m_references);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

// Deliberate: a cleared flag holds for one question.
BOOL ADLImpl::ShouldResetDisplaySettingAfterSwtich() {
  return static_cast<BOOL>(std::exchange(m_resetAfterSwitch, 1));
}

BOOL ADLImpl::HasDisplaySwitchingCapability() {
  int32_t adapter = 0;
  if (m_adl->ADL_Display_SwitchingCapability_Get == nullptr) return FALSE;
  if (!AdapterAt(m_activeAdapter, &adapter)) return FALSE;
  int value = 0;
  // Deliberate: the result is not looked at, so that a library that does not answer permits
  // switching.
  m_adl->ADL_Display_SwitchingCapability_Get(adapter, &value);
  return value == 0 ? TRUE : FALSE;
}
