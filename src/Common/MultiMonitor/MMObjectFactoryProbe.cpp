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

/// Makes an object in `place` and initialises it. One that cannot be initialised is deleted, one
/// that throws on the way stays; what is thrown is logged behind `failure`.
bool MakeInitialised(IMMonitor* (*make)(), const char* failure, IMMonitor** place) {
  try {
    *place = make();
    if (*place == nullptr) return false;
    if ((*place)->Initial() != 0) return true;
    delete *place;
    *place = nullptr;
  } catch (const std::exception& exception) {
    LOG(ERROR) << failure << exception.what();
  } catch (...) {
    LOG(ERROR) << failure;
  }
  return false;
}

bool IsCrossAdapterCapable(IMMonitor* nv) {
  auto* const extension = dynamic_cast<IDisplayExtensionNvidia*>(nv);
  return extension != nullptr && extension->IsCrossAdapterCapable();
}

// NVIDIA's adapter has the panel to itself: what counts then is whether it drives more than that.
uint32_t ActiveVendorOfDiscreteNvidia(IMMonitor* nv) {
  if (win_util::GetWinVersion() > win_util::WINVERSION_VISTA) {
    // Deliberate: a server counts as later than Vista without having the functions, and what
    // Initial throws there is caught by nobody on the way to the export.
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

  if (!MakeInitialised(NewIntelMMImpl,
                       "Exception occurred while creating IntelMMImpl object: ", intel)) {
    return false;
  }
  // Intel owns the HDMI connector: nothing is to be placed across adapters.
  if (CanControlHDMIMonitor(*intel)) return false;

  if (!MakeInitialised(CreateNvidiaObject,
                       "Exception occurred while creating NvidiaMMImplV3 object: ", nv)) {
    return false;
  }

  const std::unique_ptr<Win7CCD> ccd(CreateWin7CCDObject());
  if (ccd != nullptr && ccd->Initial() != 0 && ccd->HasMultipleDisplayAdapter() != 0) return true;
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
