#include "tests/whitebox/FactoryBox.h"

#include "Common/MultiMonitor/CallScope.h"
#include "Common/MultiMonitor/HasSeveralGraphicsVendors.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/MultiMonitor/MMObjectFactoryState.h"

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
};

}  // namespace

const FactoryBox* GetFactoryBox() { return &kBox; }
