#include "Common/MultiMonitor/VendorBackends.h"

#include "Common/MultiMonitor/Hybrid/HybridController.h"
#include "Common/MultiMonitor/Intel/IntelMMImpl.h"
#include "Common/MultiMonitor/Nvidia/NvApi.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImpl.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV3CrossAdapter.h"
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

IMMonitor* NewNvidiaMMImpl() { return new NvidiaMMImpl(); }
IMMonitor* NewNvidiaMMImplV2() { return new NvidiaMMImplV2(); }
IMMonitor* NewNvidiaMMImplV3() { return new NvidiaMMImplV3(std::make_unique<Win7CCDApi>()); }
IMMonitor* NewNvidiaMMImplV3CrossAdapter() {
  return new NvidiaMMImplV3CrossAdapter(std::make_unique<Win7CCDApi>());
}
IMMonitor* AsNvidiaMMImplV3(IMMonitor* monitor) { return dynamic_cast<NvidiaMMImplV3*>(monitor); }
bool CouldManageMultipleDisplay(IMMonitor* nv) {
  auto* const object = dynamic_cast<NvidiaMMImplV2*>(nv);
  return object != nullptr && object->CouldManageMultipleDisplay();
}
bool QueryNvidiaAdapterMode(IMMonitor* /*nv*/, uint32_t* value) {
  uint32_t answer = *value;
  if (NvApi::Get().GetHybridMode(&answer) != NVAPI_OK) return false;
  *value = answer;
  return true;
}

IMMonitor* NewHybridController(IMMonitor* first, IMMonitor* cross_adapter) {
  return new HybridController(first, cross_adapter);
}

// No DisplayLink support yet: its service counts as absent, so that nothing below is asked for.
bool IsDisplayLinkServicePresent() { return false; }
Win7CCD* NewDisplayLinkWorkaroundImpl() { return nullptr; }
void ConnectDisplayLinkHost() {}
void DisconnectDisplayLinkHost() {}

IPhysicalMonitor* NewPhysicalMonitorByDisplayLibrary() {
  return new PhysicalMonitorByDisplayLibrary();
}
