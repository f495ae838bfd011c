// DMSwitch: presentation items, and projectors that need mode and resolution in one driver call.
#include "session/DMSwitch.h"

#include "Common/Config.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/DriverEdid.h"
#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IMMonitorEx.h"
#include "session/catalogue/ItemRules.h"
#include "session/catalogue/MachineFacts.h"
#include "session/catalogue/PresentationRules.h"
#include "session/catalogue/ProjectorLists.h"
#include "session/catalogue/Projectors.h"

namespace {

constexpr DWORD kCurrentFields = DM_BITSPERPEL | DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFREQUENCY;
constexpr DWORD kEdidBits = 32;

/// The discrete adapter has the outputs but not the panel.
bool IsCloneWithPanelImpossible() { return IsNvidiaDiscreteOnly() && !CanCloneOnDiscreteOutputs(); }

bool IsLargePresentationAllowed() {
  const bool problem = CheckProblemProjector() != 0 && IsProblemProjectorConnected();
  return PanelReaches1024x768() && !problem;
}

/// Clones onto an analogue projector, which is where the driver call is known to help.
bool MayNeedOneCall(IMMonitor* imm, const DMItem& item) {
  const bool clone =
      catalogue::IsPresentationType(item.presentation_type) || item.mode == IMMonitor::DM_CLONE;
  return imm->GetVgaVendor() == kVendorIntel && clone && (item.displays & IMMonitor::MD_CRT) != 0;
}

/// The panel's preferred timing. Throws for a damaged EDID.
// Deliberate: without a preferred timing the size stays 0 by 0, and the record is sent all the
// same.
void ReadPanelTiming(IDisplayExtension* extension, DEVMODEW* dm) {
  const EDID edid = DriverEdid(extension, IMMonitor::MD_NB).Load();
  EdidTiming timing;
  if (edid.HasPreferredTiming()) edid.GetDetailedTiming(&timing);
  dm->dmPelsWidth = timing.width;
  dm->dmPelsHeight = timing.height;
  dm->dmDisplayFrequency = timing.refresh;
  dm->dmBitsPerPel = kEdidBits;
}

void ReadPresentationSettings(uint32_t type, DEVMODEW* dm) {
  dm->dmFields = kCurrentFields;
  EnumDisplaySettingsW(nullptr, ENUM_CURRENT_SETTINGS, dm);
  dm->dmSize = sizeof(*dm);  // Windows leaves behind how far it wrote
  ReadPresentationSize(type, &dm->dmPelsWidth, &dm->dmPelsHeight);
}

/// What is remembered for the clone, or else the panel's own timing. Throws for a damaged EDID.
// Deliberate: no field is marked as set, and nothing is read from Windows.
void ReadCloneSettings(IDisplayExtension* extension, uint32_t displays, DEVMODEW* dm) {
  std::string signature;
  GetMonitorSignature(&signature);
  EnsureSettingsPath();
  const std::string section = MakeSettingsSection(IMMonitor::DM_CLONE, displays, signature);
  RememberedDisplay remembered;
  if (!ReadRememberedDisplay(section, IMMonitor::MD_NB, &remembered)) {
    ReadPanelTiming(extension, dm);
    return;
  }
  dm->dmPelsWidth = remembered.width;
  dm->dmPelsHeight = remembered.height;
  dm->dmBitsPerPel = remembered.bits;
  dm->dmDisplayFrequency = remembered.frequency;
}

bool ReadProblemProjectorSettings(IDisplayExtension* extension, const DMItem& item, DEVMODEW* dm) {
  if (catalogue::IsPresentationType(item.presentation_type)) {
    ReadPresentationSettings(item.presentation_type, dm);
    return true;
  }
  if (item.mode == IMMonitor::DM_CLONE) {
    ReadCloneSettings(extension, item.displays, dm);
    return true;
  }
  DCHECK(false) << "Invalid display mode for this function";
  return false;
}

}  // namespace

BOOL DMSwitch::AddPresentationItems(uint32_t connected) {
  const bool allow_large = IsLargePresentationAllowed();
  const catalogue::PresentationConnector* const row =
      catalogue::FindPresentationConnector(connected);
  if (row == nullptr) return 1;
  // The smaller resolution comes first in the picture.
  if (SupportPM800x600() != 0 && AddSmallPresentationItem(connected, *row) == 0) return 0;
  if (SupportPM1024x768() == 0 || !allow_large) return 1;
  return AddPresentationItemIfAllowed(connected, row->mask, catalogue::kLargePresentation.icon,
                                      catalogue::kLargePresentation.type);
}

BOOL DMSwitch::AddSmallPresentationItem(uint32_t connected,
                                        const catalogue::PresentationConnector& row) {
  constexpr catalogue::PresentationType kType = catalogue::kSmallPresentation;
  if (row.small_item == catalogue::SmallItemRule::kGate) {
    return AddPresentationItemIfAllowed(connected, row.mask, kType.icon, kType.type);
  }
  if (!catalogue::IsConnected(IMMonitor::MD_NB, connected)) return 1;
  if (row.small_item == catalogue::SmallItemRule::kPanelAndClone && IsCloneWithPanelImpossible()) {
    return 1;
  }
  return AddPresentationItemOrClear(row.mask, kType.icon, kType.type);
}

BOOL DMSwitch::AddPresentationItemIfAllowed(uint32_t connected, uint32_t mask, uint32_t icon,
                                            uint32_t type) {
  if (!catalogue::IsConnected(mask, connected)) return 1;
  if (IsNvidiaDiscreteOnly() && catalogue::IsDigitalClone(IMMonitor::DM_CLONE, mask) &&
      (mask & IMMonitor::MD_CRT) == 0 && !CanCloneOnDiscreteOutputs()) {
    return 1;
  }
  return AddPresentationItemOrClear(mask, icon, type);
}

BOOL DMSwitch::AddPresentationItemOrClear(uint32_t mask, uint32_t icon, uint32_t type) {
  if (AddPresentationItem(icon, static_cast<uint32_t>(m_items.size()), mask, type)) return 1;
  m_items.clear();
  return 0;
}

// Deliberate: every failure, thrown ones included, leaves the switch to the plain way.
BOOL DMSwitch::ApplyProblemProjectorMode(IMMonitor* imm, const DMItem& item) {
  DCHECK(imm);
  if (imm == nullptr) return 0;
  try {
    if (!MayNeedOneCall(imm, item)) return 0;
    const std::vector<std::string> projectors = GetStupidProjectors();
    if (projectors.empty()) return 0;
    auto* const extension = dynamic_cast<IDisplayExtension*>(imm);
    if (!IsStupidProjectorOnCrt(projectors, extension)) return 0;
    DEVMODEW dm = {};
    static_assert(sizeof(dm) == 220, "dmSize as the driver expects it");
    dm.dmSize = sizeof(dm);
    if (!ReadProblemProjectorSettings(extension, item, &dm)) return 0;
    auto* const settings = dynamic_cast<IMMonitorEx*>(imm);
    return settings == nullptr
               ? 0
               : settings->SetDisplayModeWithSettings(item.mode, item.displays, &dm);
  } catch (...) {
    return 0;
  }
}
