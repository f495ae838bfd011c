// The factory's state and the steps of its decision, for the files of the factory only.
#pragma once

#include <cstdint>
#include <vector>

#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/MonitorList.h"

/// What SupportNvidiaCrossAdapter and the NVIDIA probe have made so far. Owns both objects; `nv`
/// may also be the active object itself, which then stays where it is.
class ProbeObjects {
 public:
  ProbeObjects() = default;
  ~ProbeObjects();
  ProbeObjects(const ProbeObjects&) = delete;
  ProbeObjects& operator=(const ProbeObjects&) = delete;

  IMMonitor* TakeIntel();
  IMMonitor* TakeNv();
  void DropIntel();
  void DropNv();  // an `nv` that is the active object leaves that place empty

  IMMonitor* intel = nullptr;
  IMMonitor* nv = nullptr;
};

class MMObjectFactory {
 public:
  static IMMonitor* m_instance;     // the active object, owned
  static uint16_t m_activeVendor;   // its vendor, as vendor changes are looked for
  static uint16_t m_factoryVendor;  // the vendor whose object the decision tree believes it holds
  static uint8_t m_ccdPreferred;    // the key "Prefer Windows 7 CCD API" has made the choice
  static uint8_t m_useNvidiaOnHybrid;  // sticky: NVIDIA is wanted on a machine with two adapters
  static uint8_t m_probeNvidia;        // the NVIDIA probe is still to be run
  static MonitorList m_unsaved;        // handed out, or replaced, without being the active object

  /// The decision, from the top.
  static IMMonitor* Choose();

  /// Puts `object` (null is allowed) in the active place; what was there is retired.
  static void ReplaceInstance(IMMonitor* object);

  /// Keeps an object that has no place until both sides of the library have ended.
  /// @throws std::bad_alloc when it cannot be kept; the object then is deleted
  static IMMonitor* RememberUnsaved(IMMonitor* object);

  /// Ends everything that the factory owns.
  static void DeleteObjects();

 private:
  // The decision's branches, one each, in the order in which they are tried.
  static bool PrefersWin7CCD();
  static IMMonitor* UsePreferredWin7CCD();
  static IMMonitor* UseObjectWithoutVendor();
  static IMMonitor* UseHybridController(ProbeObjects* probe);
  static IMMonitor* UseOnlyVendor(uint16_t first);
  static IMMonitor* UseProbedVendor(ProbeObjects* probe);
  static IMMonitor* UseAmdOrIntel(ProbeObjects* probe);

  // What several branches end in, and the NVIDIA probe.
  static IMMonitor* UseIntel(ProbeObjects* probe);
  static IMMonitor* UseNvidia(ProbeObjects* probe);
  static void ProbeNvidia(ProbeObjects* probe);
  static IMMonitor* NvidiaObjectToProbe();
  static IMMonitor* FirstOfTwoAdapters(ProbeObjects* probe);
};

/// The adapters' vendors after both filters.
std::vector<uint16_t> ListAdapterVendors(bool include_root_enumerated);
bool ListsVendor(const std::vector<uint16_t>& vendors, uint32_t vendor);

bool IsWindows7OrLater();

/// Whether the NVIDIA driver names its own adapter as the leading one of two.
bool NvidiaLeadsByAdapterMode(IMMonitor* nv);

/// IDisplayExtensionNvidia::IsDiscreteOnly; false for an object that has no such interface.
bool IsDiscreteOnly(IMMonitor* nv);

// Makers of objects, which belong to the caller and are not initialised.
IMMonitor* CreateIntelObject();
IMMonitor* CreateNvidiaObject();
IMMonitor* CreateNvidiaV3Object();
IMMonitor* CreateNvidiaCrossAdapterObject();
IMMonitor* CreateAMDObject();  // an ADLImpl is initialised already
