// The arrangements that span both adapters, made device by device: each display is stored at the
// right edge of the one before it, and one commit puts all into effect.
#include <string>
#include <vector>

#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayDevices.h"
#include "Common/MultiMonitor/Hybrid/HybridController.h"
#include "Common/MultiMonitor/Hybrid/HybridRules.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"
#include "Common/Text.h"

namespace {

constexpr uint32_t kAssumedWidth = 1024;
constexpr uint32_t kAssumedHeight = 768;

std::vector<std::string> Narrowed(const std::vector<std::wstring>& names) {
  std::vector<std::string> narrow;
  narrow.reserve(names.size());
  for (const std::wstring& name : names) narrow.push_back(NarrowFromWide(name));
  return narrow;
}

std::vector<std::string> AllDevices() {
  std::vector<std::wstring> names;
  GetDisplayDeviceNames(&names);
  return Narrowed(names);
}

std::vector<std::string> DevicesByVendor(const char* vendor_id_string) {
  std::vector<std::wstring> names;
  GetDeviceNamesByVendor(vendor_id_string, &names);
  return Narrowed(names);
}

}  // namespace

BOOL HybridController::ApplyExtendAcrossAdapters(uint32_t connected, uint32_t wanted) {
  ApplyCrossAdapterClone(0);
  // One of its displays alone takes NVIDIA's adapter out of whatever it showed.
  if ((connected & MD_DP) != 0) {
    Nvidia().SetNewDisplayMode(DM_SINGLE, MD_DP);
  } else if ((connected & MD_HDMI) != 0) {
    Nvidia().SetNewDisplayMode(DM_SINGLE, MD_HDMI);
  }
  Ccd().SetNewDisplayMode(DM_SINGLE, MD_NB);
  return PlaceSideBySide(connected, wanted, PlaceDisplay);
}

BOOL HybridController::ApplyExtendAcrossAdaptersWithSize(uint32_t connected, uint32_t wanted) {
  return PlaceSideBySide(connected, wanted, PlaceDisplayWithSize);
}

BOOL HybridController::PlaceSideBySide(uint32_t connected, uint32_t wanted, PlaceFunction place) {
  const std::vector<std::string> devices = AllDevices();
  if (devices.empty()) return FALSE;
  DEVMODEA dm = {};
  ReadPrimarySettings(&dm);
  place(dm.dmPelsWidth, dm.dmPelsHeight, &dm, devices[0].c_str(), true);
  // Deliberate: CRT, and HDMI on the second entry, are placed without their size in both passes.
  if ((connected & wanted & MD_CRT) != 0 && devices.size() >= 2) {
    PlaceNext(MD_CRT, devices[1].c_str(), PlaceDisplay, &dm);
  }
  const std::vector<std::string> nvidia_devices = DevicesByVendor("*10de*");
  for (const NvidiaPlacing& placing :
       PlacingsSideBySide(connected, wanted, nvidia_devices.size())) {
    PlaceNext(placing.display, nvidia_devices[placing.entry].c_str(),
              placing.entry == 1 ? PlaceDisplay : place, &dm);
  }
  return CommitPlaces() ? TRUE : FALSE;
}

// Deliberate: what comes of the clone itself is not looked at.
BOOL HybridController::ApplyCloneAcrossAdapters(uint32_t connected, uint32_t wanted) {
  ApplyCrossAdapterClone(0);
  Ccd().SetNewDisplayMode(DM_SINGLE, MD_NB);
  if ((connected & MD_CRT) == 0) {
    ApplyCrossAdapterClone(MD_NB | MD_DP);
  } else if (!CloneOnIntel()) {
    return FALSE;
  }
  return PlaceBesideClone(connected, wanted);
}

// False only when the Intel object cannot say what is connected.
bool HybridController::CloneOnIntel() {
  uint32_t displays = 0;
  uint32_t display_count = 0;
  if (Intel().GetConnectedDisplays(&displays, &display_count) == 0) return false;
  if (Intel().SetNewDisplayMode(DM_CLONE, displays & ~(MD_HDMI | MD_DP)) != TRUE) {
    LOG(ERROR) << "Turn on clone mode by Intel display library failed";
  }
  return true;
}

BOOL HybridController::PlaceBesideClone(uint32_t connected, uint32_t wanted) {
  // Deliberate: read twice; only the narrow record is used.
  ReadPrimarySettingsWide();
  DEVMODEA dm = {};
  ReadPrimarySettings(&dm);
  const std::vector<std::string> intel_devices = DevicesByVendor("*8086*");
  if (intel_devices.empty()) return FALSE;
  PlaceDisplay(dm.dmPelsWidth, dm.dmPelsHeight, &dm, intel_devices[0].c_str(), true);
  const std::vector<std::string> nvidia_devices = DevicesByVendor("*10de*");
  for (const NvidiaPlacing& placing :
       PlacingsBesideClone(connected, wanted, nvidia_devices.size())) {
    PlaceNext(placing.display, nvidia_devices[placing.entry].c_str(), PlaceDisplay, &dm);
  }
  return CommitPlaces() ? TRUE : FALSE;
}

void HybridController::PlaceNext(uint32_t display, const char* device, PlaceFunction place,
                                 DEVMODEA* dm) {
  const LONG x = dm->dmPosition.x + static_cast<LONG>(dm->dmPelsWidth);
  // Deliberate: a device without stored settings takes over the record of the one before it.
  EnumDisplaySettingsA(device, ENUM_REGISTRY_SETTINGS, dm);
  dm->dmPosition.x = x;
  uint32_t width = 0;
  uint32_t height = 0;
  auto* const physical = dynamic_cast<IPhysicalMonitor*>(m_ccd.get());
  if (physical == nullptr || !physical->GetNativeResolution(display, &width, &height)) {
    width = kAssumedWidth;
    height = kAssumedHeight;
  }
  place(width, height, dm, device, false);
}
