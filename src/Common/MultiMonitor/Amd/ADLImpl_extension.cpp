// What needs the library but changes no mode: its readiness, and EDIDs.
#include "Common/Logging.h"
#include "Common/MultiMonitor/Amd/ADLImpl.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

bool ADLImpl::InitialExtension() {
  if (m_extensionReady) return true;
  if (Initial() == 0) {
    DCHECK(0 && "Initial AMD Display Library failed");
    return false;
  }
  m_extensionReady = true;
  return true;
}

// Without an answer the list is empty.
void ADLImpl::ReadDisplaysForEdid(DisplayInfos* infos) {
  int rv = AskDisplays(m_activeAdapter, infos);
  if (rv == ADL_OK) return;
  ReloadAdl();
  rv = AskDisplays(m_activeAdapter, infos);
  if (rv == ADL_OK) return;
  LOG(ERROR) << "Call to ADL_Display_DisplayInfo_Get() failed, rv = " << rv;
  infos->Reset();
}

bool ADLImpl::ReadEdid(int32_t display, ADLDisplayEDIDData* data) {
  const auto ask = [this, display, data] {
    *data = {};
    data->iSize = sizeof(*data);
    return CallActive(m_adl->ADL_Display_EdidData_Get, display, data);
  };
  int rv = ask();
  if (rv != ADL_OK) {
    ReloadAdl();
    rv = ask();
  }
  if (rv != ADL_OK) LOG(ERROR) << "Call to ADL_Display_EdidData_Get() failed, rv = " << rv;
  return rv == ADL_OK;
}

bool ADLImpl::GetEDID(uint32_t display, EdidBlob* edid) {
  if (edid == nullptr) return false;
  DisplayInfos infos;
  ReadDisplaysForEdid(&infos);
  ADLDisplayEDIDData data;
  if (!ReadEdid(AdlIndexForEdid(display, {infos.data(), infos.size()}), &data)) return false;
  if (data.iEDIDSize < 0) return false;
  // The library may tell of more than its record holds: the rest stays zero.
  const auto size = static_cast<uint32_t>(data.iEDIDSize);
  void* const block = std::calloc(std::max<size_t>(size, 1), 1);
  if (block == nullptr) return false;
  std::memcpy(block, data.cEDIDData, std::min<size_t>(size, sizeof(data.cEDIDData)));
  edid->cb = size;
  edid->pv = block;
  return true;
}

void ADLImpl::FreeEDID(EdidBlob* edid) {
  if (edid != nullptr) std::free(edid->pv);
}
