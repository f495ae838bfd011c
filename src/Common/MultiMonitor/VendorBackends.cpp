#include "Common/MultiMonitor/VendorBackends.h"

#include "Common/MultiMonitor/Intel/IntelMMImpl.h"
#include "Common/MultiMonitor/PhysicalMonitorByDisplayLibrary.h"

#include <memory>

IMMonitor* NewIntelMMImpl() { return new IntelMMImpl(); }
bool CanControlHDMIMonitor(IMMonitor* intel) {
  auto* const object = dynamic_cast<IntelMMImpl*>(intel);
  return object != nullptr && object->CanControlHDMIMonitor();
}

// No AMD back-ends yet: a machine that needs one has none, and no ADL library is used.
IMMonitor* NewADLImpl() { return nullptr; }
IMMonitor* NewAtiMMImpl() { return nullptr; }
bool AdlLibraryQualifies() { return false; }

// No SiS and no VIA back-end yet: a machine that needs one has none.
IMMonitor* NewSisMMImpl() { return nullptr; }
IMMonitor* NewViaMMImpl() { return nullptr; }

// No NVIDIA back-ends yet: a machine that needs one has none, and NVAPI is not asked.
IMMonitor* NewNvidiaMMImpl() { return nullptr; }
IMMonitor* NewNvidiaMMImplV2() { return nullptr; }
IMMonitor* NewNvidiaMMImplV3() { return nullptr; }
IMMonitor* NewNvidiaMMImplV3CrossAdapter() { return nullptr; }
IMMonitor* AsNvidiaMMImplV3(IMMonitor* /*monitor*/) { return nullptr; }
bool CouldManageMultipleDisplay(IMMonitor* /*nv*/) { return false; }
bool QueryNvidiaAdapterMode(IMMonitor* /*nv*/, uint32_t* /*value*/) { return false; }

// No controller for two adapters yet: a machine that needs it has none.
IMMonitor* NewHybridController(IMMonitor* first, IMMonitor* cross_adapter) {
  const std::unique_ptr<IMMonitor> owned_first(first);
  const std::unique_ptr<IMMonitor> owned_cross_adapter(cross_adapter);
  return nullptr;
}

// No DisplayLink support yet: its service counts as absent, so that nothing below is asked for.
bool IsDisplayLinkServicePresent() { return false; }
Win7CCD* NewDisplayLinkWorkaroundImpl() { return nullptr; }
void ConnectDisplayLinkHost() {}
void DisconnectDisplayLinkHost() {}

IPhysicalMonitor* NewPhysicalMonitorByDisplayLibrary() {
  return new PhysicalMonitorByDisplayLibrary();
}
