// Who made the graphics adapter.
#include "Common/MultiMonitor/MMObjectFactoryDevices.h"
#include "session/ExportCall.h"
#include "session/ExportNumbers.h"
#include "session/Lifecycle.h"

namespace {

uint32_t VendorOfActiveObject() {
  IMMonitor* const object = RecheckedObject();
  return object != nullptr ? object->GetVgaVendor() & 0xFFFF : kVendorUnknown;
}

// The first adapter that Windows lists, without any vendor's library.
uint32_t VendorOfFirstAdapter() {
  DisplayAdapterDevices devices;
  if (!devices.Select(0)) return kVendorUnknown;
  const char* const hardware_id = devices.HardwareId();
  return hardware_id != nullptr ? VendorFromHardwareId(hardware_id) : kVendorUnknown;
}

}  // namespace

uint32_t VgaVendorCode() {
  // Deliberate: the switch side alone decides. A host of the extend-mode side gets the first
  // adapter, which need not be the active one.
  return ExportedVendor(g_switchReady ? VendorOfActiveObject() : VendorOfFirstAdapter());
}

uint32_t Ostrel_GetVgaVendor() {
  return ExportCall<uint32_t>(0, [] { return VgaVendorCode(); });
}
