#include "Common/MultiMonitor/PhysicalMonitorByDisplayLibrary.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/DriverEdid.h"
#include "Common/MultiMonitor/Edid.h"
#include "Common/MultiMonitor/GetDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"

#include <stdexcept>

namespace {

/// @return false when the block is damaged; `edid` is then unchanged
bool LoadInto(const DriverEdid& block, EDID* edid) {
  try {
    // Deliberate: a block too short to be an EDID counts as one without a preferred timing.
    *edid = block.Load();
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace

// A reference that is held goes back also when this throws.
PhysicalMonitorByDisplayLibrary::PhysicalMonitorByDisplayLibrary()
    : m_extension(GetDisplayExtension()) {
  if (!m_extension || !m_extension->InitialExtension()) {
    throw std::runtime_error("call IDisplayExtension::InitialExtension failed");
  }
}

PhysicalMonitorByDisplayLibrary::PhysicalMonitorByDisplayLibrary(IMMonitor* monitor)
    : m_extension(dynamic_cast<IDisplayExtension*>(monitor)) {}

HRESULT PhysicalMonitorByDisplayLibrary::QueryInterface(REFIID /*iid*/, void** /*object*/) {
  DCHECK(0 && "Should never call this function");
  return E_FAIL;
}

ULONG PhysicalMonitorByDisplayLibrary::AddRef() {
  return static_cast<ULONG>(InterlockedIncrement(&m_references));
}

ULONG PhysicalMonitorByDisplayLibrary::Release() {
  const LONG left = InterlockedDecrement(&m_references);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

bool PhysicalMonitorByDisplayLibrary::GetNativeResolution(uint32_t monitor_id, uint32_t* width,
                                                          uint32_t* height) {
  DCHECK(width != NULL && height != NULL);
  if (width == nullptr || height == nullptr || !m_extension) return false;
  const DriverEdid block(m_extension.get(), monitor_id);
  EDID edid;
  if (!block.IsReadable() || !LoadInto(block, &edid)) return false;
  EdidTiming timing;
  if (edid.HasPreferredTiming()) edid.GetDetailedTiming(&timing);
  // Deliberate: without a preferred timing the size is 0 by 0, and the answer is yes.
  *width = timing.width;
  *height = timing.height;
  return true;
}
