#include "tests/whitebox/FactoryBox.h"

#include "Common/MultiMonitor/CallScope.h"
#include "Common/MultiMonitor/HasSeveralGraphicsVendors.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/MultiMonitor/MMObjectFactoryState.h"
#include "tests/whitebox/ScarceMemory.h"

namespace {

void InstallMonitor(IMMonitor* monitor, uint16_t vendor) {
  MMObjectFactory::ReplaceInstance(monitor);
  MMObjectFactory::m_activeVendor = vendor;
  MMObjectFactory::m_ccdPreferred = vendor == kVendorWin7CCD ? 1 : 0;
  const std::vector<uint16_t> vendors = ListAdapterVendors(true);
  MMObjectFactory::m_factoryVendor = vendors.empty() ? vendor : vendors.front();
}

IMMonitor* ActiveMonitor() { return MMObjectFactory::m_instance; }

uint16_t ActiveVendor() { return MMObjectFactory::m_activeVendor; }

void RunInCallScope(void (*body)(void* context), void* context) {
  const CallScope scope;
  body(context);
}

FactoryState State() {
  return {MMObjectFactory::m_instance,          MMObjectFactory::m_activeVendor,
          MMObjectFactory::m_factoryVendor,     MMObjectFactory::m_ccdPreferred,
          MMObjectFactory::m_useNvidiaOnHybrid, MMObjectFactory::m_probeNvidia};
}

void Reset() {
  MMObjectFactory::DeleteObjects();
  MMObjectFactory::m_activeVendor = 0;
  MMObjectFactory::m_factoryVendor = 0;
  MMObjectFactory::m_ccdPreferred = 0;
  MMObjectFactory::m_useNvidiaOnHybrid = 0;
  MMObjectFactory::m_probeNvidia = 1;
}

void RefuseIntelObjects() {
  static BackendStandIns stand_ins;
  stand_ins.NewIntelMMImpl = []() -> IMMonitor* { return nullptr; };
  UseBackendStandIns(&stand_ins);
}

const FactoryBox kBox = {
    GetMultiMonitorObject,
    OnActiveDisplayAdapterVendorChanged,
    GetDisplayExtension,
    CreatePhysicalMonitor,
    CreateIMMonitorByVendor,
    CreateIMMonitorForActiveVendor,
    GetActiveVendorId,
    EnumerateDisplayAdapterVendors,
    DeleteMultiMonitorObject,
    InstallMonitor,
    CreateDisplayExtensionByVendor,
    SupportNvidiaCrossAdapter,
    ShouldUseDisplayLinkWorkaround,
    IsDisplayLinkWorkaroundActive,
    HasSeveralGraphicsVendors,
    ActiveMonitor,
    ActiveVendor,
    RunInCallScope,
    RetireMonitor,
    State,
    Reset,
    UseBackendStandIns,
    RefuseIntelObjects,
    NewWatchedWin7CCD,
    CreateAMDObject,
    PiecesOut,
};

}  // namespace

const FactoryBox* GetFactoryBox() { return &kBox; }
