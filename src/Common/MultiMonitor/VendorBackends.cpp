#include "Common/MultiMonitor/VendorBackends.h"

#include <memory>
#include <new>

#include "Common/MultiMonitor/Amd/ADLImpl.h"
#include "Common/MultiMonitor/Amd/AdlSelection.h"
#include "Common/MultiMonitor/Amd/AtiMMImpl.h"
#include "Common/MultiMonitor/DisplayLink/DisplayLinkWorkaroundImpl.h"
#include "Common/MultiMonitor/DisplayLink/displaylink_addon_host.h"
#include "Common/MultiMonitor/DisplayLink/displaylink_util.h"
#include "Common/MultiMonitor/Hybrid/HybridController.h"
#include "Common/MultiMonitor/Intel/IntelMMImpl.h"
#include "Common/MultiMonitor/Legacy/SisMMImpl.h"
#include "Common/MultiMonitor/Legacy/ViaMMImpl.h"
#include "Common/MultiMonitor/Nvidia/NvApi.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImpl.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV3CrossAdapter.h"
#include "Common/MultiMonitor/PhysicalMonitorByDisplayLibrary.h"
#include "Common/MultiMonitor/Win7CCD.h"

// The library's own connection to the add-on host, beside those of the DisplayLink objects; empty
// while there is none.
boost::shared_ptr<displaylink::DisplayLinkAddOnHost> g_displayLinkHost;

IMMonitor* NewIntelMMImpl() { return new (std::nothrow) IntelMMImpl(); }
bool CanControlHDMIMonitor(IMMonitor* intel) {
  auto* const object = dynamic_cast<IntelMMImpl*>(intel);
  return object != nullptr && object->CanControlHDMIMonitor();
}

IMMonitor* NewADLImpl() { return new (std::nothrow) ADLImpl(); }
IMMonitor* NewAtiMMImpl() { return new (std::nothrow) AtiMMImpl(); }
bool AdlLibraryQualifies() { return IsAdlAcceptable(); }

IMMonitor* NewSisMMImpl() { return new (std::nothrow) SisMMImpl(); }
IMMonitor* NewViaMMImpl() { return new (std::nothrow) ViaMMImpl(); }

IMMonitor* NewNvidiaMMImpl() { return new (std::nothrow) NvidiaMMImpl(); }
IMMonitor* NewNvidiaMMImplV2() { return new (std::nothrow) NvidiaMMImplV2(); }
IMMonitor* NewNvidiaMMImplV3() {
  return new (std::nothrow) NvidiaMMImplV3(std::make_unique<Win7CCDApi>());
}
IMMonitor* NewNvidiaMMImplV3CrossAdapter() {
  return new (std::nothrow) NvidiaMMImplV3CrossAdapter(std::make_unique<Win7CCDApi>());
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
  std::unique_ptr<IMMonitor> owned_first(first);
  std::unique_ptr<IMMonitor> owned_cross_adapter(cross_adapter);
  // The two are let go of only when there is memory for the controller, which then has them.
  return new (std::nothrow) HybridController(owned_first.release(), owned_cross_adapter.release());
}

Win7CCD* NewWin7CCD() { return new Win7CCD(boost::shared_ptr<Win7CCDApi>(new Win7CCDApi())); }

Win7CCD* NewDisplayLinkWorkaroundImpl() { return displaylink::CreateDisplayLinkWorkaround(); }

bool IsDisplayLinkServicePresent() { return displaylink::IsDisplayLinkServicePresent(); }
void ConnectDisplayLinkHost() {
  g_displayLinkHost = displaylink::DisplayLinkAddOnHost::GetInstance();
  g_displayLinkHost->Connect();
}
void DisconnectDisplayLinkHost() {
  if (g_displayLinkHost == nullptr) return;
  g_displayLinkHost->Disconnect();
  g_displayLinkHost.reset();
}

IPhysicalMonitor* NewPhysicalMonitorByDisplayLibrary() {
  return new PhysicalMonitorByDisplayLibrary();
}
