#include "Common/MultiMonitor/VendorBackends.h"

#include "Common/MultiMonitor/Amd/ADLImpl.h"
#include "Common/MultiMonitor/Amd/AdlSelection.h"
#include "Common/MultiMonitor/Amd/AtiMMImpl.h"
#include "Common/MultiMonitor/Hybrid/HybridController.h"
#include "Common/MultiMonitor/Intel/IntelMMImpl.h"
#include "Common/MultiMonitor/Nvidia/NvApi.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV3CrossAdapter.h"
#include "Common/MultiMonitor/PhysicalMonitorByDisplayLibrary.h"

IMMonitor* NewIntelMMImpl() { return new IntelMMImpl(); }
bool CanControlHDMIMonitor(IMMonitor* intel) {
  auto* const object = dynamic_cast<IntelMMImpl*>(intel);
  return object != nullptr && object->CanControlHDMIMonitor();
}

IMMonitor* NewADLImpl() { return new ADLImpl(); }
IMMonitor* NewAtiMMImpl() { return new AtiMMImpl(); }
bool AdlLibraryQualifies() { return IsAdlAcceptable(); }

// No SiS and no VIA back-end yet: a machine that needs one has none.
IMMonitor* NewSisMMImpl() { return nullptr; }
IMMonitor* NewViaMMImpl() { return nullptr; }

// The control-panel library's back-end does not exist yet: a machine that needs it has none.
IMMonitor* NewNvidiaMMImpl() { return nullptr; }

IMMonitor* NewNvidiaMMImplV2() { return new NvidiaMMImplV2(); }
IMMonitor* NewNvidiaMMImplV3() { return new NvidiaMMImplV3(new Win7CCDApi()); }
IMMonitor* NewNvidiaMMImplV3CrossAdapter() {
  return new NvidiaMMImplV3CrossAdapter(new Win7CCDApi());
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
