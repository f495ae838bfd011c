#pragma once

#include <cstdint>
#include <vector>

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"

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
};

const FactoryBox* GetFactoryBox();
