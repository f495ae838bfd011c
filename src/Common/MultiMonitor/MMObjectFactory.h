// Decides which IMMonitor object controls the machine, keeps it as the library's one active object
// and replaces it when the active graphics adapter changes. Host thread only; no lock.
#pragma once

#include <cstdint>
#include <vector>

#include "Common/MultiMonitor/CreateIMMonitorForActiveVendor.h"
#include "Common/MultiMonitor/GetDisplayExtension.h"
#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"
#include "Common/MultiMonitor/MMObjectFactoryVendors.h"
#include "Common/Win.h"

/// The active object, decided anew from the adapters present. Owned by the factory.
/// @return null when no back-end could be made; the object is not initialised here, see
/// InitialMultiMonitorObject
IMMonitor* GetMultiMonitorObject();

/// Replaces the active object when the active adapter's vendor has changed. The new object is not
/// initialised.
void OnActiveDisplayAdapterVendorChanged();

/// A new object of the vendor seen as IDisplayExtension, AddRef'ed once; null for other vendors and
/// on any exception.
IDisplayExtension* CreateDisplayExtensionByVendor(uint32_t vendor);

/// A new reader of native resolutions, with the count its class starts with (0). Null when there is
/// none.
/// @throws what the chosen class's constructor throws
IPhysicalMonitor* CreatePhysicalMonitor();

/// A new object for a PCI vendor id, stored as the active object, not initialised. Null when the
/// vendor is unknown or construction failed; the active object is then left alone.
IMMonitor* CreateIMMonitorByVendor(uint32_t vendor);

/// The vendor whose adapter drives the internal panel now; 0 when it cannot be told.
uint32_t GetActiveVendorId();

/// True when an NVIDIA object can place displays across the Intel adapter. On true both outputs are
/// valid; on false either may be, and the caller owns what is there.
bool SupportNvidiaCrossAdapter(IMMonitor** intel, IMMonitor** nv);

/// True on Windows 7 or later for Intel (or an id of at least 0xFFFF) while the DisplayLink service
/// is present.
bool ShouldUseDisplayLinkWorkaround(uint32_t vendor);

/// True when some listed adapter's vendor passes ShouldUseDisplayLinkWorkaround.
bool IsDisplayLinkWorkaroundActive();

/// Lists the vendor ids of the display adapters present and enabled, in enumeration order,
/// unfiltered.
/// @return false when nothing was listed
bool EnumerateDisplayAdapterVendors(bool include_root_enumerated, std::vector<uint16_t>* vendors);

/// Deletes the active object, and the unsaved ones that GetMultiMonitorObject handed out. For the
/// library boundary.
void DeleteMultiMonitorObject();
