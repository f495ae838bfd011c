#include "session/catalogue/MachineFacts.h"

#include <cstdint>
#include <memory>

#include "Common/CountedReference.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/cpu_id.h"
#include "Common/win_util.h"

namespace {

constexpr int32_t kTripleUnknown = -1;
constexpr uint8_t kNotAsked = 255;
// Below it stand the processors that are known to drive two displays at most; unknown ones count
// higher.
constexpr uint32_t kFirstTripleGeneration = 1;

int32_t g_tripleDisplay = kTripleUnknown;
uint8_t g_nvidiaDiscreteOnly = kNotAsked;
uint8_t g_cloneOnDiscreteOutputs = kNotAsked;

bool IntelSupportsTripleDisplay(IMMonitor* object) {
  bool supported = false;
  if (GetCPUBrand() == kIntelCPU && GetIntelCPUGeneration() >= kFirstTripleGeneration) {
    auto* const extension = dynamic_cast<IDisplayExtension*>(object);
    supported = extension != nullptr && extension->SupportsTripleDisplay();
  }
  VLOG(1) << "Support Intel triple display output? " << (supported ? "YES" : "NO");
  return supported;
}

bool AmdSupportsTripleDisplay(IMMonitor* object) {
  auto* const extension = dynamic_cast<IDisplayExtensionAMD*>(object);
  return extension != nullptr && extension->HasSLSGrid();
}

bool ProbeNvidiaDiscreteOnly() {
  const CountedReference<IDisplayExtension> extension(GetDisplayExtension());
  if (!extension || !extension->InitialExtension()) return false;
  if (extension->GetExtensionVendor() != kVendorNvidia) return false;
  auto* const nvidia = dynamic_cast<IDisplayExtensionNvidia*>(extension.get());
  return nvidia != nullptr && nvidia->IsDiscreteOnly();
}

/// True when the object that `create` makes answers, sees displays and is bound to one adapter.
bool SeesDisplaysOnOneAdapter(IMMonitor* (*create)()) {
  const std::unique_ptr<IMMonitor> object(create());
  if (object == nullptr || object->Initial() == 0) return false;
  if (object->GetVgaVendor() == kVendorNvidia) {
    auto* const nvidia = dynamic_cast<IDisplayExtensionNvidia*>(object.get());
    if (nvidia != nullptr && nvidia->IsCrossAdapterCapable()) return false;
  }
  object->DetectDisplays();
  uint32_t displays = 0;
  uint32_t count = 0;
  object->GetConnectedDisplays(&displays, &count);
  return count > 0;
}

}  // namespace

bool TripleDisplaySupported() {
  if (win_util::GetWinVersion() < win_util::WINVERSION_VISTA) return false;
  if (g_tripleDisplay != kTripleUnknown) return g_tripleDisplay > 0;
  IMMonitor* const object = GetMultiMonitorObject();
  if (object == nullptr) return false;
  const uint32_t vendor = object->GetVgaVendor();
  VLOG(1) << "VGA vendor = " << vendor;
  VLOG(1) << "CPU Brand = " << static_cast<uint32_t>(GetCPUBrand());
  VLOG(1) << "Intel CPU = " << static_cast<uint32_t>(GetIntelCPUGeneration());
  // Deliberate: AMD is asked each time, the answer of every other vendor is kept for the process.
  if (vendor == kVendorAmd) return AmdSupportsTripleDisplay(object);
  g_tripleDisplay = vendor == kVendorIntel && IntelSupportsTripleDisplay(object) ? 1 : 0;
  return g_tripleDisplay > 0;
}

bool IsNvidiaDiscreteOnly() {
  // Deliberate: the first answer is kept for the process, also when the question could not be
  // asked.
  if (g_nvidiaDiscreteOnly == kNotAsked) {
    g_nvidiaDiscreteOnly = 0;
    if (!win_util::IsXPOrServer2003() && ProbeNvidiaDiscreteOnly()) g_nvidiaDiscreteOnly = 1;
  }
  return g_nvidiaDiscreteOnly != 0;
}

bool CanCloneOnDiscreteOutputs(IMMonitor* (*create)()) {
  // Deliberate: kept for the process; everything but displays seen on one adapter, exceptions too,
  // leaves it true.
  if (g_cloneOnDiscreteOutputs == kNotAsked) {
    g_cloneOnDiscreteOutputs = 1;
    try {
      if (SeesDisplaysOnOneAdapter(create)) g_cloneOnDiscreteOutputs = 0;
    } catch (...) {
      // The object could not be asked.
    }
  }
  return g_cloneOnDiscreteOutputs != 0;
}

bool CanCloneOnDiscreteOutputs() {
  return CanCloneOnDiscreteOutputs(&CreateIMMonitorForActiveVendor);
}
