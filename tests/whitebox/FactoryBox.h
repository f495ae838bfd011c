#pragma once

#include <cstdint>
#include <vector>

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"
#include "tests/whitebox/BackendStandIns.h"

/// The factory's state as it stands.
struct FactoryState {
  IMMonitor* instance;
  uint16_t active_vendor;
  uint16_t factory_vendor;
  uint8_t ccd_preferred;
  uint8_t use_nvidia_on_hybrid;
  uint8_t probe_nvidia;
};

struct FactoryBox {
  IMMonitor* (*GetMultiMonitorObject)();
  void (*OnActiveDisplayAdapterVendorChanged)();
  IDisplayExtension* (*GetDisplayExtension)();
  IPhysicalMonitor* (*CreatePhysicalMonitor)();
  IMMonitor* (*CreateIMMonitorByVendor)(uint32_t vendor);
  IMMonitor* (*CreateIMMonitorForActiveVendor)();
  uint32_t (*GetActiveVendorId)();
  bool (*EnumerateDisplayAdapterVendors)(bool include_root_enumerated,
                                         std::vector<uint16_t>* vendors);
  void (*DeleteMultiMonitorObject)();

  /// Puts an object of the test's own in the active place, as the object of `vendor`; the factory
  /// then owns it. It stays there while the machine's adapters stay as they are now:
  ///  - one adapter listed: install it as the object of that adapter's vendor, or of 0xFFFF;
  ///  - the key "Prefer Windows 7 CCD API": install it as the object of 0x045E;
  ///  - no adapter listed: it is never asked.
  void (*InstallMonitor)(IMMonitor* monitor, uint16_t vendor);

  IDisplayExtension* (*CreateDisplayExtensionByVendor)(uint32_t vendor);
  bool (*SupportNvidiaCrossAdapter)(IMMonitor** intel, IMMonitor** nv);
  bool (*ShouldUseDisplayLinkWorkaround)(uint32_t vendor);
  bool (*IsDisplayLinkWorkaroundActive)();
  bool (*HasSeveralGraphicsVendors)();

  /// The active object as the factory holds it, without any decision; null when there is none.
  IMMonitor* (*ActiveMonitor)();
  uint16_t (*ActiveVendor)();

  /// Runs `body(context)` as an export runs its own: inside a CallScope.
  void (*RunInCallScope)(void (*body)(void* context), void* context);
  void (*RetireMonitor)(IMMonitor* monitor);

  FactoryState (*State)();
  /// Ends the factory's objects and puts its state back to that of a library just loaded.
  void (*Reset)();
  void (*UseBackendStandIns)(const BackendStandIns* stand_ins);
  /// A stand-in of its own: from now on no Intel object can be had, the factory gets null.
  void (*RefuseIntelObjects)();
  Win7CCD* (*NewWatchedWin7CCD)(const CcdWatch* watch);
  IMMonitor* (*CreateAMDObject)();
  /// How many pieces of memory the library holds now.
  int64_t (*PiecesOut)();
};

const FactoryBox* GetFactoryBox();
