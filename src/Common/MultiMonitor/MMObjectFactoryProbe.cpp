// The questions that the factory asks of a machine with two adapters.
#include <exception>
#include <memory>

#include "Common/Logging.h"
#include "Common/MultiMonitor/CallScope.h"
#include "Common/MultiMonitor/CreateWin7CCDObject.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/MultiMonitor/MMObjectFactoryState.h"
#include "Common/MultiMonitor/VendorBackends.h"
#include "Common/MultiMonitor/Win7CCD.h"
#include "Common/win_util.h"

namespace {

/// A new object that is initialised; null when it cannot be. What is thrown is logged behind
/// `failure`.
IMMonitor* NewInitialised(IMMonitor* (*make)(), const char* failure) {
  try {
    std::unique_ptr<IMMonitor> object(make());
    if (object == nullptr || object->Initial() == 0) return nullptr;
    return object.release();
  } catch (const std::exception& exception) {
    LOG(ERROR) << failure << exception.what();
  } catch (...) {
    LOG(ERROR) << failure;
  }
  return nullptr;
}

bool HasTwoActiveAdapters() {
  const std::unique_ptr<Win7CCD> ccd(CreateWin7CCDObject());
  return ccd != nullptr && ccd->Initial() != 0 && ccd->HasMultipleDisplayAdapter() != 0;
}

bool IsCrossAdapterCapable(IMMonitor* nv) {
  auto* const extension = dynamic_cast<IDisplayExtensionNvidia*>(nv);
  return extension != nullptr && extension->IsCrossAdapterCapable();
}

// NVIDIA's adapter has the panel to itself: what counts then is whether it drives more than that.
uint32_t ActiveVendorOfDiscreteNvidia(IMMonitor* nv) {
  if (win_util::GetWinVersion() > win_util::WINVERSION_VISTA) {
    const std::unique_ptr<Win7CCD> ccd(CreateWin7CCDObject());
    if (ccd != nullptr && ccd->Initial() != 0) {
      return ccd->HasMultipleDisplayAdapter() ? kVendorNvidia : kVendorIntel;
    }
  }
  nv->DetectDisplays();
  return CouldManageMultipleDisplay(nv) ? kVendorNvidia : kVendorIntel;
}

uint32_t ProbeNvidiaActiveVendor() {
  const std::unique_ptr<IMMonitor> nv(NewNvidiaMMImplV2());
  if (nv == nullptr || nv->Initial() == 0) return kVendorIntel;
  if (IsDiscreteOnly(nv.get())) return ActiveVendorOfDiscreteNvidia(nv.get());
  return NvidiaLeadsByAdapterMode(nv.get()) ? kVendorNvidia : kVendorIntel;
}

uint32_t ProbeAmdActiveVendor() {
  const std::unique_ptr<IMMonitor> adl(NewADLImpl());
  return adl != nullptr && adl->Initial() != 0 ? kVendorAmd : kVendorIntel;
}

}  // namespace

ProbeObjects::~ProbeObjects() {
  RetireMonitor(intel);
  if (nv != MMObjectFactory::m_instance) RetireMonitor(nv);
}

IMMonitor* ProbeObjects::TakeIntel() {
  IMMonitor* const taken = intel;
  intel = nullptr;
  return taken;
}

IMMonitor* ProbeObjects::TakeNv() {
  IMMonitor* const taken = nv;
  nv = nullptr;
  return taken;
}

void ProbeObjects::DropIntel() { RetireMonitor(TakeIntel()); }

void ProbeObjects::DropNv() {
  if (nv == MMObjectFactory::m_instance) MMObjectFactory::m_instance = nullptr;
  RetireMonitor(TakeNv());
}

bool IsDiscreteOnly(IMMonitor* nv) {
  auto* const extension = dynamic_cast<IDisplayExtensionNvidia*>(nv);
  return extension != nullptr && extension->IsDiscreteOnly();
}

bool NvidiaLeadsByAdapterMode(IMMonitor* nv) {
  uint32_t value = 3;
  if (!QueryNvidiaAdapterMode(nv, &value)) return false;
  return value == 1 || value == 3;
}

bool SupportNvidiaCrossAdapter(IMMonitor** intel, IMMonitor** nv) {
  if (!IsWindows7OrLater()) return false;

  *intel = NewInitialised(NewIntelMMImpl, "Exception occurred while creating IntelMMImpl object: ");
  if (*intel == nullptr) return false;
  // Intel owns the HDMI connector: nothing is to be placed across adapters.
  if (CanControlHDMIMonitor(*intel)) return false;

  *nv = NewInitialised(CreateNvidiaObject,
                       "Exception occurred while creating NvidiaMMImplV3 object: ");
  if (*nv == nullptr) return false;

  if (HasTwoActiveAdapters()) return true;
  if (!IsDiscreteOnly(*nv)) return false;
  (*nv)->DetectDisplays();
  return IsCrossAdapterCapable(*nv);
}

uint32_t GetActiveVendorId() {
  // Deliberate: other than the decision tree this does not see root-enumerated devices.
  const std::vector<uint16_t> vendors = ListAdapterVendors(false);
  if (vendors.empty()) {
    LOG(ERROR) << "No valid VGA vendor id found";
    return kVendorUnknown;
  }
  if (vendors.size() == 1) return vendors.front();
  if (ListsVendor(vendors, kVendorNvidia)) return ProbeNvidiaActiveVendor();
  if (ListsVendor(vendors, kVendorAmd)) return ProbeAmdActiveVendor();
  for (const uint16_t vendor : vendors) {
    if (vendor != kVendorIntel) return vendor;
  }
  return kVendorUnknown;
}
