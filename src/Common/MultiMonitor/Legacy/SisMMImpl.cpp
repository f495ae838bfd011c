#include "Common/MultiMonitor/Legacy/SisMMImpl.h"

#include "Common/MultiMonitor/Legacy/SisMemoFile.h"

namespace {

constexpr uint32_t kTwoDisplays = 1;  // a kind of SwitchMode
constexpr uint32_t kOneDisplay = 2;

// In the order in which a device's bits are looked at.
struct DeviceFlag {
  uint32_t bits;
  uint32_t flag;
};
constexpr DeviceFlag kDeviceFlags[] = {
    {kSisTv, IMMonitor::MD_TV},
    {kSisLcd, IMMonitor::MD_NB},
    {kSisCrt | kSisOtherCrt, IMMonitor::MD_CRT},
};

// Of the bits of one device the first row with one of them; 0 for no device.
uint32_t FlagOfDevice(uint32_t device) {
  for (const DeviceFlag& row : kDeviceFlags) {
    if ((device & row.bits) != 0) return row.flag;
  }
  return 0;
}

}  // namespace

const SisMMImpl::MemoPlace SisMMImpl::kMemoPlaces[4] = {
    {"Single Mode", &kSisLcdKeys, &SisMMImpl::m_singleLcd},
    {"Single Mode", &kSisCrtKeys, &SisMMImpl::m_singleCrt},
    {"Clone Mode", &kSisLcdKeys, &SisMMImpl::m_cloneLcd},
    {"Clone Mode", &kSisCrtKeys, &SisMMImpl::m_cloneCrt},
};

SisMMImpl::SisMMImpl() : m_pLib(std::make_unique<VSisLib>()) {
  m_singleLcd.record.device = kSisLcd;
  m_singleCrt.record.device = kSisCrt;
  m_cloneLcd.record.device = kSisLcd;
  m_cloneCrt.record.device = kSisCrt;
  m_iniPath = FindSisMemoFile();
  for (const MemoPlace& place : kMemoPlaces) {
    ReadSisMemo(m_iniPath, place.section, *place.keys, &(this->*place.memo));
  }
}

// Deliberate: what was merely assumed is written like what was known, and the next object reads it
// as known. The displays' real sizes never come into it.
SisMMImpl::~SisMMImpl() {
  if (!m_initialized) return;
  for (const MemoPlace& place : kMemoPlaces) {
    WriteSisMemo(m_iniPath, place.section, *place.keys, this->*place.memo);
  }
}

BOOL SisMMImpl::Initial() {
  if (m_initialized) return TRUE;
  // Deliberate: a library that lacks an entry stays loaded, and is not tried again.
  if (m_pLib->IsLoaded() || m_pLib->Load("SisVga.dll") == 0) return FALSE;
  m_initialized = true;
  return TRUE;
}

// --- Reports.

bool SisMMImpl::ReadDeviceState(uint32_t* first, uint32_t* second, uint32_t* attached) {
  return m_pLib->GetCurDeviceState != nullptr &&
         m_pLib->GetCurDeviceState(first, second, attached) != 0;
}

BOOL SisMMImpl::GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) {
  if (displays == nullptr || display_count == nullptr) return FALSE;
  uint32_t first = 0;
  uint32_t second = 0;
  uint32_t attached = 0;
  if (!ReadDeviceState(&first, &second, &attached)) return FALSE;
  *displays = 0;
  *display_count = 0;
  if (attached == 0) return FALSE;
  for (const DeviceFlag& row : kDeviceFlags) {
    if ((attached & row.bits) == 0) continue;
    *displays |= row.flag;
    ++*display_count;
  }
  return TRUE;
}

BOOL SisMMImpl::GetActiveDisplays(uint32_t* displays, uint32_t* display_count) {
  if (displays == nullptr || display_count == nullptr) return FALSE;
  uint32_t first = 0;
  uint32_t second = 0;
  uint32_t attached = 0;
  if (!ReadDeviceState(&first, &second, &attached)) return FALSE;
  *displays = 0;
  *display_count = 0;
  for (const uint32_t device : {first, second}) {
    const uint32_t flag = FlagOfDevice(device);
    if (flag == 0) continue;
    *displays |= flag;
    ++*display_count;
  }
  return *displays != 0 && *display_count != 0 ? TRUE : FALSE;
}

BOOL SisMMImpl::GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) {
  if (mode == nullptr || displays == nullptr) return FALSE;
  uint32_t active = 0;
  uint32_t count = 0;
  if (GetActiveDisplays(&active, &count) == 0) return FALSE;
  if (count == 0) {
    *mode = 0;
    *displays = 0;
    return TRUE;
  }
  // Deliberate: two displays are a clone, whatever Windows says of an extended desktop.
  *mode = count == 1 ? DM_SINGLE : DM_CLONE;
  *displays = active;
  return TRUE;
}

// --- Switching.

BOOL SisMMImpl::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  if (mode == 0 || displays == 0) return FALSE;
  if (mode == DM_SINGLE) return SetSingle(displays);
  if (mode == DM_CLONE) return SetClone(displays);
  return FALSE;
}

BOOL SisMMImpl::SetSingle(uint32_t displays) {
  // Deliberate: the panel goes before any other display of the mask.
  if ((displays & MD_NB) != 0) {
    FillSisMemo(&m_singleLcd, {&m_singleCrt, &m_cloneLcd, &m_cloneCrt});
    return SwitchTo(kOneDisplay, m_singleLcd.record, {});
  }
  if ((displays & (MD_CRT | MD_TV)) == 0) return FALSE;
  // Deliberate: a television is sent as a CRT.
  FillSisMemo(&m_singleCrt, {&m_singleLcd, &m_cloneCrt, &m_cloneLcd});
  return SwitchTo(kOneDisplay, m_singleCrt.record, {});
}

BOOL SisMMImpl::SetClone(uint32_t displays) {
  // Deliberate: before it is clear that there is a second display; the memo is known also when the
  // switch comes to nothing.
  FillSisMemo(&m_cloneLcd, {&m_cloneCrt, &m_singleLcd, &m_singleCrt});
  SisSwitchRecord external = m_cloneLcd.record;
  if ((displays & MD_CRT) != 0) {
    external.device = kSisCrt;
  } else if ((displays & MD_TV) != 0) {
    external.device = kSisTv;
  } else {
    return FALSE;
  }
  return SwitchTo(kTwoDisplays, m_cloneLcd.record, external);
}

BOOL SisMMImpl::SwitchTo(uint32_t kind, SisSwitchRecord first, SisSwitchRecord second) {
  if (m_pLib->SwitchMode == nullptr) return FALSE;
  return m_pLib->SwitchMode(kind, &first, &second) != 0 ? TRUE : FALSE;
}
