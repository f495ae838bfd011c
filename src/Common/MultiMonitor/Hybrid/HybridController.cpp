#include "Common/MultiMonitor/Hybrid/HybridController.h"

#include <algorithm>
#include <cstddef>

#include "Common/Logging.h"
#include "Common/MultiMonitor/CreateWin7CCDObject.h"
#include "Common/MultiMonitor/DriverEdid.h"
#include "Common/MultiMonitor/Hybrid/HybridRules.h"
#include "Common/MultiMonitor/Win7CCD.h"

HybridController::HybridController(IMMonitor* intel, IMMonitor* nvidia)
    : m_intel(intel), m_nvidia(nvidia), m_ccd(CreateWin7CCDObject()) {}

HybridController::~HybridController() = default;

BOOL HybridController::Initial() {
  if (Intel().Initial() == 0) return FALSE;
  if (Nvidia().Initial() == 0) return FALSE;
  // Deliberate: the machine is controlled without it, too.
  Ccd().Initial();
  m_ready = true;
  return TRUE;
}

// Deliberate: the other way round than Initial, without the third object, and without a word about
// a failure.
bool HybridController::InitialExtension() {
  if (m_ready) return true;
  if (Nvidia().Initial() == 0) return false;
  if (Intel().Initial() == 0) return false;
  m_ready = true;
  return true;
}

IMMonitor* HybridController::OwnerOf(uint32_t display) {
  switch (AdapterOfDisplay(display)) {
    case HybridAdapter::kIntel:
      return &Intel();
    case HybridAdapter::kNvidia:
      return &Nvidia();
    case HybridAdapter::kNone:
      break;
  }
  return nullptr;
}

void HybridController::DetectDisplays() {
  Intel().DetectDisplays();
  Nvidia().DetectDisplays();
}

BOOL HybridController::ShouldResetDisplaySettingAfterSwtich() {
  if (Intel().ShouldResetDisplaySettingAfterSwtich() == 0) return FALSE;
  return Nvidia().ShouldResetDisplaySettingAfterSwtich() != 0 ? TRUE : FALSE;
}

bool HybridController::GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) {
  DCHECK(CountBits(imm_display) == 1);
  DCHECK(dm != NULL);
  IMMonitor* const owner = OwnerOf(imm_display);
  if (owner == nullptr || dm == nullptr) return false;
  return owner->GetDisplaySettings(imm_display, dm);
}

// Deliberate: interfaces are had by a run-time cast and never from here.
HRESULT HybridController::QueryInterface(REFIID /*iid*/, void** /*object*/) {
  DCHECK(0 && "Should never call this function");
  return E_FAIL;
}

ULONG HybridController::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }

ULONG HybridController::Release() {
  const LONG left = InterlockedDecrement(&m_references);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

bool HybridController::GetEDID(uint32_t display, EdidBlob* edid) {
  auto* const extension = dynamic_cast<IDisplayExtension*>(OwnerOf(display));
  if (extension == nullptr || edid == nullptr) return false;
  // The buffer that the caller gives back is this object's own, whoever read the bytes.
  const DriverEdid block(extension, display);
  if (!block.IsReadable() || block.blob().pv == nullptr) return false;
  const auto* const bytes = static_cast<const uint8_t*>(block.blob().pv);
  auto copy = std::make_unique<uint8_t[]>(block.blob().cb);
  std::copy_n(bytes, block.blob().cb, copy.get());
  edid->cb = block.blob().cb;
  edid->pv = copy.release();
  return true;
}

void HybridController::FreeEDID(EdidBlob* blob) {
  if (blob == nullptr) return;
  const EdidBlob& edid = *blob;
  DCHECK(edid.pv != NULL);
  delete[] static_cast<uint8_t*>(edid.pv);
}
