// Start, capabilities, and what is connected and active.
#include "Common/MultiMonitor/Amd/AtiMMImpl.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/Amd/AtiMMImplDisplays.h"

#include <new>

namespace {

constexpr uint32_t kFirstCapabilityEnd = 3;
constexpr uint32_t kTelevisions = 4;  // a kind of ATIDL_GetDisplayVector

// Calls `visit` with the index and the flag of each display of a vector, in order, up to the first
// one that has no type.
template <typename Visit>
void WalkVector(VAtiLib* lib, uint32_t display_vector, Visit visit) {
  if (!CanClassifyAtiDisplays(lib)) return;
  for (uint32_t i = 0; i < kAtiDisplays && display_vector >> i != 0; ++i) {
    if ((display_vector >> i & 1) == 0) continue;
    uint32_t type = 0;
    if (!ReadAtiType(lib, i, &type)) return;
    visit(i, DisplayOfAtiDevice(ReadAtiDeviceKind(lib, i), type));
  }
}

}  // namespace

AtiMMImpl::AtiMMImpl() : m_pLib(std::make_unique<VAtiLib>()) {}

AtiMMImpl::~AtiMMImpl() = default;

const char* AtiMMImpl::GetLibraryName() { return "AtiPdl64.dll"; }

BOOL AtiMMImpl::Initial() {
  if (m_initialized || m_extensionReady) return TRUE;
  if (m_pLib->IsLoaded()) return FALSE;
  if (m_pLib->Load(GetLibraryName()) == 0) return FALSE;
  // Deliberate: without its capabilities the object is ready all the same; the next
  // connected-display report pays for it.
  if (ReadCapabilities() == 0) m_capabilitiesPending = true;
  m_initialized = true;
  m_extensionReady = true;
  return TRUE;
}

BOOL AtiMMImpl::ReadCapabilities() {
  if (m_pLib->GetCapabilities == nullptr) return FALSE;
  const int32_t result = m_pLib->GetCapabilities(GetAtiAdapterIndex(m_pLib.get()),
                                                 &m_capabilityFirst, &m_capabilitySecond);
  if (result != 0 || m_capabilityFirst >= kFirstCapabilityEnd) return FALSE;
  if (m_pLib->GetDisplayVector != nullptr) {
    m_tvVector = m_pLib->GetDisplayVector(GetAtiAdapterIndex(m_pLib.get()), kTelevisions);
  }
  return TRUE;
}

// Deliberate: the opposite sense of the display library's answer to the same question.
BOOL AtiMMImpl::HasDisplaySwitchingCapability() {
  constexpr uint32_t kMayNotSwitch = 1;
  if (m_pLib->GetDisplaySwitchingCapability == nullptr) return TRUE;
  uint32_t value = 0;
  m_pLib->GetDisplaySwitchingCapability(GetAtiAdapterIndex(m_pLib.get()), &value);
  return value != kMayNotSwitch ? TRUE : FALSE;
}

// --- Reports.

void AtiMMImpl::AddDisplaysOfVector(uint32_t display_vector, uint32_t* displays) {
  WalkVector(m_pLib.get(), display_vector,
             [displays](uint32_t /*index*/, uint32_t display) { *displays |= display; });
}

void AtiMMImpl::MapDisplaysOfVector(uint32_t display_vector, uint32_t* displays) {
  WalkVector(m_pLib.get(), display_vector, [this, displays](uint32_t index, uint32_t display) {
    *displays |= display;
    m_haveDisplayMap = true;
    m_displayMap[display] = 1U << index;
  });
}

uint32_t AtiMMImpl::VectorOfDisplay(uint32_t display) const {
  const auto entry = m_displayMap.find(display);
  return m_haveDisplayMap && entry != m_displayMap.end() ? entry->second : 0;
}

BOOL AtiMMImpl::GetConnectedDisplays(uint32_t* pdwDispFlag, uint32_t* pnumDisplays) {
  DCHECK(pdwDispFlag);
  DCHECK(pnumDisplays);
  if (pdwDispFlag == nullptr || pnumDisplays == nullptr) return FALSE;
  if (m_capabilitiesPending) {
    // Deliberate: forgotten before it is known to work, so that one report fails and the next does
    // not.
    m_capabilitiesPending = false;
    if (ReadCapabilities() == 0) return FALSE;
  }
  if (m_pLib->GetConnectedDisplays == nullptr) return FALSE;
  uint32_t display_vector = 0;
  if (m_pLib->GetConnectedDisplays(GetAtiAdapterIndex(m_pLib.get()), &display_vector) != 0) {
    LOG(INFO) << "Call to GetConnectedDisplays failed";
    return FALSE;
  }
  *pdwDispFlag = 0;
  try {
    MapDisplaysOfVector(display_vector, pdwDispFlag);
  } catch (const std::bad_alloc&) {
    return FALSE;
  }
  *pnumDisplays = CountBits(display_vector);
  return TRUE;
}

// Deliberate: the mask is the caller's to zero.
BOOL AtiMMImpl::GetActiveDisplays(uint32_t* pdwDispFlag, uint32_t* pnumDisplays) {
  DCHECK(pdwDispFlag);
  DCHECK(pnumDisplays);
  if (pdwDispFlag == nullptr || pnumDisplays == nullptr) return FALSE;
  if (m_pLib->GetActiveDisplays == nullptr) return FALSE;
  AtiConfigRecord active;
  if (ReadAtiActive(m_pLib.get(), &active) != 0) {
    LOG(ERROR) << "Call to GetActiveDisplays() failed";
    return FALSE;
  }
  *pnumDisplays = static_cast<uint32_t>(active.vector_count);
  for (uint32_t i = 0; i < CountAtiVectors(active); ++i) {
    AddDisplaysOfVector(active.vectors[i], pdwDispFlag);
  }
  return TRUE;
}

BOOL AtiMMImpl::GetCurrentDisplayMode(uint32_t* pdwModeFlag, uint32_t* pdwDispFlag) {
  DCHECK(pdwModeFlag);
  DCHECK(pdwDispFlag);
  if (pdwModeFlag == nullptr || pdwDispFlag == nullptr) return FALSE;
  uint32_t displays = 0;
  uint32_t count = 0;
  if (GetActiveDisplays(&displays, &count) == 0) return FALSE;
  *pdwDispFlag = displays;
  if (IsExtendModeEnabled() != 0) {
    *pdwModeFlag = DM_EXTEND;
    return TRUE;
  }
  if (count != 1 && count != 2) return FALSE;
  *pdwModeFlag = count == 1 ? DM_SINGLE : DM_CLONE;
  return TRUE;
}
