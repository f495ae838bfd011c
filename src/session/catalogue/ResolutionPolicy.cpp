#include "session/catalogue/ResolutionPolicy.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "Common/Config.h"
#include "Common/CountedReference.h"
#include "Common/MultiMonitor/HelperFunctions.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "session/DMSwitch.h"
#include "session/catalogue/BestModes.h"
#include "session/catalogue/ExtendedDesktop.h"
#include "session/catalogue/ModeSettings.h"

namespace {

constexpr DWORD kModeFields = DM_BITSPERPEL | DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFREQUENCY;

struct Size {
  uint32_t width;
  uint32_t height;
};

// Deliberate: where a remembered size is refused, these are tried in its place.
constexpr Size kFallbackSizes[] = {{1024, 768}, {800, 600}};

bool ChangeDesktop(const DEVMODEA& dm) {
  return ChangeDisplayResolution(GetMultiMonitorObject(), dm);
}

/// Sets one field of a record to the remembered value, if they differ.
void TakeOver(uint32_t remembered, DWORD field, DWORD* value, DEVMODEA* dm) {
  if (remembered == *value) return;
  *value = remembered;
  dm->dmFields |= field;
}

/// @return null also where the reader of native sizes cannot be made
IPhysicalMonitor* CreatePhysicalMonitorIfPossible() {
  try {
    return CreatePhysicalMonitor();
  } catch (...) {
    return nullptr;
  }
}

/// A monitor that cannot be asked counts as one that does not know.
bool ReadNativeSize(IPhysicalMonitor* monitor, uint32_t display, uint32_t* width,
                    uint32_t* height) {
  try {
    return monitor != nullptr && monitor->GetNativeResolution(display, width, height);
  } catch (...) {
    return false;
  }
}

/// One display alone gets its native size.
bool ApplyNativeResolution(uint32_t /*mode*/, uint32_t displays) {
  DEVMODEA dm = {};
  ReadCurrentSettings(nullptr, kModeFields, &dm);
  dm.dmBitsPerPel = 32;
  dm.dmDisplayFrequency = 60;
  const CountedReference<IPhysicalMonitor> monitor(CreatePhysicalMonitorIfPossible());
  uint32_t width = 0;
  uint32_t height = 0;
  const bool known = ReadNativeSize(monitor.get(), displays, &width, &height);
  dm.dmPelsWidth = known ? width : 1024;
  dm.dmPelsHeight = known ? height : 768;
  return ChangeDesktop(dm);
}

bool ArrangeExtendedDesktop(uint32_t /*mode*/, uint32_t displays) {
  ApplyExtendedDefault(displays);
  return true;
}

bool TakeFixedResolution(uint32_t mode, uint32_t displays) {
  ApplyFixedResolution(mode, displays);
  return true;
}

/// One way to a resolution. @return false when the next one is to be tried
using Attempt = bool (*)(uint32_t mode, uint32_t displays);

constexpr uint32_t kAny = 0xFFFFFFFF;

/// What a setting type means for a mode: the attempts in their order. The first row that fits
/// counts.
struct PolicyRow {
  uint32_t type;
  uint32_t mode;
  Attempt attempts[3];
};

constexpr PolicyRow kPolicies[] = {
    {kSettingLeaveAlone, kAny, {}},
    {kSettingBest,
     IMMonitor::DM_SINGLE,
     {ApplyNativeResolution, ApplyBestResolution, TakeFixedResolution}},
    {kSettingBest, IMMonitor::DM_EXTEND, {ArrangeExtendedDesktop}},
    {kSettingBest, kAny, {ApplyBestResolution, TakeFixedResolution}},
    {kAny, kAny, {TakeFixedResolution}},
};

const PolicyRow& FindPolicy(uint32_t type, uint32_t mode) {
  return *std::find_if(std::begin(kPolicies), std::end(kPolicies) - 1, [&](const PolicyRow& row) {
    return (row.type == kAny || row.type == type) && (row.mode == kAny || row.mode == mode);
  });
}

}  // namespace

bool ReadCurrentSettings(const char* device, DWORD fields, DEVMODEA* dm) {
  *dm = {};
  dm->dmSize = sizeof(*dm);
  dm->dmFields = fields;
  const bool known = EnumDisplaySettingsA(device, ENUM_CURRENT_SETTINGS, dm) != 0;
  // Windows writes its own size and fields into the record; the next call must see ours.
  dm->dmSize = sizeof(*dm);
  dm->dmFields = fields;
  return known;
}

void DMSwitch::RestoreDisplaySettings(uint32_t mode, uint32_t displays) {
  // Deliberate: with a policy of its own a mode forgets what it goes on writing down.
  if (GetAdjustPolicy(mode, displays) == 0) {
    std::string signature;
    GetMonitorSignature(&signature);
    EnsureSettingsPath();
    if (const SettingsKey* const known =
            FindSettingsKey(settings_keys_, mode, displays, signature)) {
      // Deliberate: a key outlives a flush of the file; nothing is found under it then. It is
      // copied, since a display change sends messages, and what they start may add keys.
      const SettingsKey key = *known;
      if (ApplyRememberedSettings(mode, displays, key)) return;
    } else {
      // An earlier process may have written it.
      const SettingsKey key = {mode, displays, MakeSettingsSection(mode, displays, signature),
                               signature};
      uint32_t width = 0;
      uint32_t height = 0;
      ReadDisplayResolution(key, &width, &height, IMMonitor::MD_NB);
      if (width != 0 && height != 0 && ApplyRememberedSettings(mode, displays, key)) return;
    }
  }
  ApplyDefaultPolicy(mode, displays);
}

bool ApplyRememberedSettings(uint32_t mode, uint32_t displays, const SettingsKey& key) {
  if (mode == IMMonitor::DM_EXTEND) return ApplyRememberedExtendSettings(displays, key);
  return ApplyRememberedSingleSettings(key);
}

bool ApplyRememberedSingleSettings(const SettingsKey& key) {
  RememberedDisplay remembered;
  if (!ReadRememberedDisplay(key.section, IMMonitor::MD_NB, &remembered)) return false;
  DEVMODEA dm = {};
  if (!ReadCurrentSettings(nullptr, kModeFields | DM_DISPLAYORIENTATION, &dm)) return false;
  // Deliberate: the remembered orientation is not looked at.
  dm.dmFields = 0;
  TakeOver(remembered.width, DM_PELSWIDTH, &dm.dmPelsWidth, &dm);
  TakeOver(remembered.height, DM_PELSHEIGHT, &dm.dmPelsHeight, &dm);
  if (remembered.bits != 0) TakeOver(remembered.bits, DM_BITSPERPEL, &dm.dmBitsPerPel, &dm);
  if (remembered.frequency != 0) {
    TakeOver(remembered.frequency, DM_DISPLAYFREQUENCY, &dm.dmDisplayFrequency, &dm);
  }
  if (dm.dmFields == 0) return true;
  if (ChangeDesktop(dm)) return true;
  for (const Size& size : kFallbackSizes) {
    dm.dmPelsWidth = size.width;
    dm.dmPelsHeight = size.height;
    if (ChangeDesktop(dm)) return true;
  }
  return false;
}

void ApplyDefaultPolicy(uint32_t mode, uint32_t displays) {
  for (const Attempt attempt : FindPolicy(GetSettingType(mode, displays), mode).attempts) {
    if (attempt == nullptr || attempt(mode, displays)) return;
  }
}

bool ApplyBestResolution(uint32_t mode, uint32_t displays) {
  catalogue::BestModes<DEVMODEA> best(
      {Frequency60HzIsBetter() != 0, EliminateFrequencyLessThen60Hz() != 0});
  for (DWORD index = 0;; ++index) {
    DEVMODEA dm = {};
    dm.dmSize = sizeof(dm);
    dm.dmFields = kModeFields;
    if (EnumDisplaySettingsExA(nullptr, index, &dm, 0) == 0) break;
    dm.dmSize = sizeof(dm);
    dm.dmFields = kModeFields;
    best.Add(dm);
  }
  if (best.list().empty()) return false;
  Size limit = {};
  const bool limited = GetMaxResolution(mode, displays, &limit.width, &limit.height);
  for (const DEVMODEA& dm : catalogue::ModesToTry(best.list(), limited ? &limit : nullptr)) {
    if (ChangeDesktop(dm)) return true;
  }
  return false;
}

void ApplyFixedResolution(uint32_t mode, uint32_t displays) {
  Size size = {};
  GetFixedResolution(mode, displays, &size.width, &size.height);
  DEVMODEA dm = {};
  ReadCurrentSettings(nullptr, kModeFields, &dm);
  dm.dmPelsWidth = size.width;
  dm.dmPelsHeight = size.height;
  ChangeDesktop(dm);
}
