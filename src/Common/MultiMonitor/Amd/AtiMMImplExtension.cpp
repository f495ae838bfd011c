// The IDisplayExtension side, settings of one display, and EDID.
#include "Common/Logging.h"
#include "Common/MultiMonitor/Amd/AtiMMImpl.h"
#include "Common/MultiMonitor/Amd/AtiMMImplDisplays.h"

#include <algorithm>
#include <memory>
#include <new>

HRESULT AtiMMImpl::QueryInterface(REFIID /*iid*/, void** /*object*/) {
  DCHECK(0 && "Should never call this function");
  return E_FAIL;
}

ULONG AtiMMImpl::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }

ULONG AtiMMImpl::Release() {
  const LONG left = InterlockedDecrement(&m_references);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

bool AtiMMImpl::InitialExtension() {
  if (m_extensionReady) return true;
  if (Initial() == 0) {
    DCHECK(0 && "Initial AMD Display Library failed");
    return false;
  }
  m_extensionReady = true;
  return true;
}

bool AtiMMImpl::GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) {
  DCHECK(CountBits(imm_display) == 1);
  DCHECK(dm != NULL);
  if (dm == nullptr) return false;
  uint32_t display_index = 0;
  uint32_t display_vector = 0;
  if (!FindAtiDisplay(m_pLib.get(), imm_display, &display_index, &display_vector)) return false;

  if (m_pLib->GetAdapterConfig == nullptr) return false;
  // Deliberate: other than for a change, the entries name no adapter.
  AtiAdapterConfig config = MakeAtiAdapterConfig();
  if (m_pLib->GetAdapterConfig(&config) != 0) return false;
  const AtiAdapterEntry* const entry = FindAtiEntry(config, display_vector);
  if (entry == nullptr) return false;
  dm->dmPelsWidth = entry->width;
  dm->dmPelsHeight = entry->height;
  dm->dmBitsPerPel = entry->bits_per_pixel;
  dm->dmDisplayFrequency = entry->frequency;
  return true;
}

// --- EDID.

// Deliberate: whatever display is asked for, the second one is read, with no room for its bytes,
// and none come back: a monitor has no name here.
bool AtiMMImpl::GetMonitorEDID(uint32_t /*display*/, EdidBlob* /*edid*/) {
  constexpr uint32_t kSecondDisplay = 1;
  if (m_pLib->DisplayGetEdidData == nullptr) return false;
  AtiEdidRecord record = MakeAtiEdidRecord(0);
  return m_pLib->DisplayGetEdidData(GetAtiAdapterIndex(m_pLib.get()), kSecondDisplay, &record) == 0;
}

bool AtiMMImpl::GetEDID(uint32_t display, EdidBlob* edid) {
  DCHECK(CountBits(display) == 1);
  if (display == 0 || edid == nullptr || m_pLib->DisplayGetEdidData == nullptr) return false;
  AtiEdidRecord record = MakeAtiEdidRecord(kAtiEdidRoom);
  const uint32_t index = AtiIndexOfVector(VectorOfDisplay(display));
  if (m_pLib->DisplayGetEdidData(GetAtiAdapterIndex(m_pLib.get()), index, &record) != 0) {
    return false;
  }
  const uint32_t size = std::min(record.data_size, kAtiEdidMost);
  std::unique_ptr<uint8_t[]> bytes(new (std::nothrow) uint8_t[size]);
  if (bytes == nullptr) return false;
  std::copy_n(record.data, size, bytes.get());
  edid->cb = size;
  edid->pv = bytes.release();
  return true;
}

void AtiMMImpl::FreeEDID(EdidBlob* edid) {
  if (edid == nullptr) return;
  delete[] static_cast<uint8_t*>(edid->pv);
}
