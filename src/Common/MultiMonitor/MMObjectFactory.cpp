#include "Common/MultiMonitor/MMObjectFactory.h"

#include <ios>
#include <memory>
#include <new>

#include "Common/Config.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/CallScope.h"
#include "Common/MultiMonitor/CreateWin7CCDObject.h"
#include "Common/MultiMonitor/MMObjectFactoryState.h"
#include "Common/MultiMonitor/NullMonitorController.h"
#include "Common/MultiMonitor/VendorBackends.h"
#include "Common/MultiMonitor/Win7CCD.h"

IMMonitor* MMObjectFactory::m_instance = nullptr;
uint16_t MMObjectFactory::m_activeVendor = 0;
uint16_t MMObjectFactory::m_factoryVendor = 0;
uint8_t MMObjectFactory::m_ccdPreferred = 0;
uint8_t MMObjectFactory::m_useNvidiaOnHybrid = 0;
uint8_t MMObjectFactory::m_probeNvidia = 1;
MonitorList MMObjectFactory::m_unsaved = {nullptr};

void MMObjectFactory::ReplaceInstance(IMMonitor* object) {
  if (object == m_instance) return;
  RetireMonitor(m_instance);
  m_instance = object;
}

IMMonitor* MMObjectFactory::RememberUnsaved(IMMonitor* object) {
  if (m_unsaved.Add(object)) return object;
  delete object;  // new: nobody has seen it yet
  throw std::bad_alloc();
}

void MMObjectFactory::DeleteObjects() {
  ReplaceInstance(nullptr);
  while (IMMonitor* object = m_unsaved.TakeLast()) RetireMonitor(object);
  DeleteRetiredMonitors();
}

IMMonitor* MMObjectFactory::Choose() {
  // The configuration may settle it.
  if (PrefersWin7CCD()) return UsePreferredWin7CCD();

  // Deliberate: the adapters present are enumerated anew at every call, so that one that has been
  // disabled counts from then on.
  const std::vector<uint16_t> vendors = ListAdapterVendors(true);
  if (vendors.empty()) return UseObjectWithoutVendor();

  // Two adapters of which NVIDIA's can place displays across the other.
  const bool several = vendors.size() >= 2;
  const bool has_nvidia = ListsVendor(vendors, kVendorNvidia);
  ProbeObjects probe;
  if (several && has_nvidia && SupportNvidiaCrossAdapter(&probe.intel, &probe.nv)) {
    return UseHybridController(&probe);
  }

  // One adapter, or the one of two that leads.
  if (!several) return UseOnlyVendor(vendors.front());
  if (has_nvidia) return UseProbedVendor(&probe);
  if (ListsVendor(vendors, kVendorAmd)) return UseAmdOrIntel(&probe);

  // Two Intel adapters with something unknown listed between them.
  return RememberUnsaved(new NullMonitorController());
}

bool MMObjectFactory::PrefersWin7CCD() {
  return IsWindows7OrLater() && PreferWindows7CCDAPI() != 0;
}

// The operating system's own interface, whatever the adapters are.
IMMonitor* MMObjectFactory::UsePreferredWin7CCD() {
  if (m_instance != nullptr && m_activeVendor == kVendorWin7CCD) return m_instance;
  // Deliberate: an object that is there already is overwritten, not deleted; and no vendor change
  // is looked for any more.
  std::unique_ptr<IMMonitor> preferred(CreateWin7CCDObject());
  if (preferred == nullptr) throw std::bad_alloc();
  if (!m_unsaved.Add(m_instance)) throw std::bad_alloc();
  m_instance = preferred.release();
  m_activeVendor = static_cast<uint16_t>(kVendorWin7CCD);
  m_ccdPreferred = 1;
  return m_instance;
}

// No adapter of a supported vendor.
IMMonitor* MMObjectFactory::UseObjectWithoutVendor() {
  LOG(ERROR) << "No VGA vendor found, use CCD to manage display";
  DCHECK(false) << "No VGA vendor found, this should never happened";
  // Deliberate: not the active object. Each call makes another, which nobody has initialised.
  if (IsWindows7OrLater()) return RememberUnsaved(CreateWin7CCDObject());
  return RememberUnsaved(new NullMonitorController());
}

// Two adapters under one controller.
IMMonitor* MMObjectFactory::UseHybridController(ProbeObjects* probe) {
  // Deliberate: an active object stays, whatever it is, and the probe's objects were made for
  // nothing.
  if (m_instance != nullptr) return m_instance;

  IMMonitor* const intel = probe->intel;
  IMMonitor* const nv = probe->nv;
  DCHECK(intel != NULL)
      << "SupportNvidiaCrossAdapter() must guarantee |intel| is valid when returns true";
  DCHECK(nv != NULL)
      << "SupportNvidiaCrossAdapter() must guarantee |nv| is valid when returns true";
  probe->DropNv();
  std::unique_ptr<IMMonitor> cross_adapter(CreateNvidiaCrossAdapterObject());
  IMMonitor* const first = FirstOfTwoAdapters(probe);
  m_instance = NewHybridController(first, cross_adapter.release());
  DCHECK(m_instance);
  // Deliberate: m_factoryVendor stays as it is, so that the controller of two adapters counts as
  // the object of whatever vendor was chosen last.
  m_activeVendor = static_cast<uint16_t>(kVendorHybrid);
  return m_instance;
}

// The controller's Intel side, which belongs to the caller.
IMMonitor* MMObjectFactory::FirstOfTwoAdapters(ProbeObjects* probe) {
  if (!ShouldUseDisplayLinkWorkaround(kVendorIntel)) return probe->TakeIntel();
  probe->DropIntel();
  CreateIMMonitorByVendor(kVendorIntel);
  if (m_instance != nullptr) m_instance->Initial();
  // It has been the active object for as long as the controller was not there, no longer.
  IMMonitor* const first = m_instance;
  m_instance = nullptr;
  return first;
}

// One adapter. The cross-adapter question is not asked with one adapter, so that nothing has been
// made yet.
IMMonitor* MMObjectFactory::UseOnlyVendor(uint16_t first) {
  if (m_instance == nullptr || m_factoryVendor != first) {
    m_factoryVendor = first;
    ReplaceInstance(nullptr);
    CreateIMMonitorByVendor(first);
  }
  // Deliberate: the adapter's vendor, also where a DisplayLink object answers with another one.
  m_activeVendor = m_factoryVendor;
  return m_instance;
}

// Two adapters, one of them NVIDIA's: the one that leads.
IMMonitor* MMObjectFactory::UseProbedVendor(ProbeObjects* probe) {
  if (m_probeNvidia != 0) ProbeNvidia(probe);
  return m_useNvidiaOnHybrid == 0 ? UseIntel(probe) : UseNvidia(probe);
}

// Sets m_useNvidiaOnHybrid when the NVIDIA adapter leads. Leaves probe->nv null when its library
// does not start.
void MMObjectFactory::ProbeNvidia(ProbeObjects* probe) {
  if (probe->nv == nullptr) probe->nv = NvidiaObjectToProbe();
  IMMonitor* const nv = probe->nv;
  if (nv == nullptr || nv->Initial() == 0) {
    probe->DropNv();
    return;
  }
  if (!IsDiscreteOnly(nv)) {
    // Deliberate: the probe stays to be run, so that this branch asks again at each call; only the
    // answer, once given, stays for the life of the library.
    if (NvidiaLeadsByAdapterMode(nv)) m_useNvidiaOnHybrid = 1;
    return;
  }
  nv->DetectDisplays();
  if (CouldManageMultipleDisplay(nv) && !CanControlHDMIMonitor(probe->intel)) {
    m_useNvidiaOnHybrid = 1;
  }
  m_probeNvidia = 0;
}

IMMonitor* MMObjectFactory::NvidiaObjectToProbe() {
  if (m_instance != nullptr && m_factoryVendor == kVendorNvidia) {
    if (IMMonitor* nv = AsNvidiaMMImplV3(m_instance)) return nv;
  }
  return CreateNvidiaV3Object();
}

// The Intel object is chosen.
// Deliberate: after a vendor change the object that is there may be another vendor's; it counts as
// Intel's and stays.
IMMonitor* MMObjectFactory::UseIntel(ProbeObjects* probe) {
  probe->DropNv();
  if (m_instance == nullptr || m_factoryVendor != kVendorIntel) {
    ReplaceInstance(nullptr);
    if (probe->intel == nullptr) {
      CreateIMMonitorByVendor(kVendorIntel);
    } else if (ShouldUseDisplayLinkWorkaround(kVendorIntel)) {
      probe->DropIntel();
      CreateIMMonitorByVendor(kVendorIntel);
      DCHECK(m_instance != NULL);
      if (m_instance != nullptr) m_instance->Initial();
    } else {
      m_instance = probe->TakeIntel();
    }
  }
  m_factoryVendor = static_cast<uint16_t>(kVendorIntel);
  m_activeVendor = static_cast<uint16_t>(kVendorIntel);
  return m_instance;
}

// The NVIDIA object is chosen.
IMMonitor* MMObjectFactory::UseNvidia(ProbeObjects* probe) {
  IMMonitor* const nv = probe->nv;
  // Deliberate: checked also where the active object stays and none is needed.
  DCHECK(nv != NULL);
  if (m_instance == nullptr || m_factoryVendor != kVendorNvidia) {
    ReplaceInstance(nv != nullptr ? probe->TakeNv() : CreateNvidiaV3Object());
  }
  m_factoryVendor = static_cast<uint16_t>(kVendorNvidia);
  m_activeVendor = static_cast<uint16_t>(kVendorNvidia);
  return m_instance;
}

// Two adapters, one of them AMD's.
// Deliberate: whether the library qualifies is not asked here, and one is started at every call.
IMMonitor* MMObjectFactory::UseAmdOrIntel(ProbeObjects* probe) {
  std::unique_ptr<IMMonitor> adl(NewADLImpl());
  if (adl == nullptr || adl->Initial() == 0) {
    adl.reset();
    return UseIntel(probe);
  }
  if (m_instance == nullptr || m_factoryVendor != kVendorAmd) ReplaceInstance(adl.release());
  m_factoryVendor = static_cast<uint16_t>(kVendorAmd);
  m_activeVendor = static_cast<uint16_t>(kVendorAmd);
  return m_instance;
}

IMMonitor* GetMultiMonitorObject() { return MMObjectFactory::Choose(); }

void DeleteMultiMonitorObject() { MMObjectFactory::DeleteObjects(); }

namespace {

void SwitchToVendor(uint16_t vendor) {
  MMObjectFactory::ReplaceInstance(nullptr);
  MMObjectFactory::m_activeVendor = vendor;
  // Deliberate: the new object is not initialised, and m_factoryVendor stays as it is, so that a
  // machine with one listed adapter may have it rebuilt by the next GetMultiMonitorObject.
  IMMonitor* const m_instance = CreateIMMonitorByVendor(vendor);
  MMObjectFactory::ReplaceInstance(m_instance);
  DCHECK(m_instance != NULL);
  VLOG(1) << "Adapter vendor id changed to : " << vendor;
}

}  // namespace

void OnActiveDisplayAdapterVendorChanged() {
  const uint16_t active = MMObjectFactory::m_activeVendor;
  if (MMObjectFactory::m_ccdPreferred != 0 || active >= kVendorHybrid) return;
  const uint16_t vendor = static_cast<uint16_t>(GetActiveVendorId());
  VLOG(1) << "OnActiveDisplayAdapterVendorChanged()\n"
          << "\t Original vendor id: " << std::hex << active << "\t New vendor id     : " << vendor;
  if (vendor != active) SwitchToVendor(vendor);
}
