#include "session/catalogue/RememberedSettings.h"

#include <set>

#include "Common/Logging.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/MultiMonitor/MonitorIdentity.h"
#include "Common/Win.h"
#include "session/DMSwitch.h"

namespace {

constexpr char kActiveDisplayMode[] = "Active Display Mode";
constexpr char kPresentationMode[] = "Presentation Mode";
constexpr char kWidth[] = "Width";
constexpr char kHeight[] = "Height";
constexpr char kColorDepth[] = "Color Depth";
constexpr char kFrequency[] = "Frequency";
constexpr char kOrientation[] = "Orientation";

constexpr DWORD kSettingsFields =
    DM_BITSPERPEL | DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFREQUENCY | DM_DISPLAYORIENTATION;
static_assert(sizeof(DEVMODEA) == 156, "dmSize of every record here");

/// Behind the keys of an external display stands its bit in decimal.
// Deliberate: directly, without a blank: "Color Depth16".
std::string KeyOf(const char* key, uint32_t display) {
  for (const uint32_t external : kRememberedExternals) {
    if (display == external) return key + std::to_string(external);
  }
  return key;
}

/// Numbers stand in the file in decimal, as the signed number that the run-time library makes of
/// them.
void WriteNumber(const std::string& section, const std::string& key, uint32_t value) {
  // Without a path Windows would take a file of its own folder.
  if (SettingsPath().empty()) return;
  const std::string text = std::to_string(static_cast<int32_t>(value));
  WritePrivateProfileStringA(section.c_str(), key.c_str(), text.c_str(), SettingsPath().c_str());
}

uint32_t ReadNumber(const std::string& section, const std::string& key, uint32_t default_value) {
  if (SettingsPath().empty()) return default_value;
  return GetPrivateProfileIntA(section.c_str(), key.c_str(), static_cast<INT>(default_value),
                               SettingsPath().c_str());
}

DEVMODEA EmptySettings() {
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  dm.dmFields = kSettingsFields;
  return dm;
}

void WriteSettings(const std::string& section, uint32_t display, const DEVMODEA& dm) {
  WriteNumber(section, KeyOf(kWidth, display), dm.dmPelsWidth);
  WriteNumber(section, KeyOf(kHeight, display), dm.dmPelsHeight);
  WriteNumber(section, KeyOf(kColorDepth, display), dm.dmBitsPerPel);
  WriteNumber(section, KeyOf(kFrequency, display), dm.dmDisplayFrequency);
  // Deliberate: written for every display of every mode, though only the external display of an
  // extended desktop is ever turned back.
  WriteNumber(section, KeyOf(kOrientation, display), dm.dmDisplayOrientation);
}

/// Asks the active object for the settings of one display and writes them.
/// @return false when they are not known; nothing is written then
bool SaveDisplay(const std::string& section, uint32_t display) {
  IMMonitor* const object = GetMultiMonitorObject();
  DEVMODEA dm = EmptySettings();
  if (object == nullptr || !object->GetDisplaySettings(display, &dm)) return false;
  WriteSettings(section, display, dm);
  return true;
}

/// Every display of an extended desktop has settings of its own.
void SaveExtendedDesktop(const std::string& section, uint32_t displays) {
  if ((displays & IMMonitor::MD_NB) != 0) SaveDisplay(section, IMMonitor::MD_NB);
  // Deliberate: all of them are written, though only the first is ever put back.
  for (const uint32_t display : kRememberedExternals) {
    if ((displays & display) == 0 || SaveDisplay(section, display)) continue;
    LOG(WARNING) << "Can't retrieve display settings by display library";
  }
}

/// A desktop that is too small or too coarse is what a driver falls back to, not what a user wants.
// Deliberate: one side that is large enough will do.
bool IsWorthRemembering(const DEVMODEA& dm) {
  return (dm.dmPelsWidth >= 800 || dm.dmPelsHeight >= 600) && dm.dmBitsPerPel >= 16;
}

/// In every other mode the displays show one desktop.
void SavePrimaryDesktop(const std::string& section) {
  DEVMODEA dm = EmptySettings();
  if (EnumDisplaySettingsA(nullptr, ENUM_CURRENT_SETTINGS, &dm) == 0) return;
  if (IsWorthRemembering(dm)) WriteSettings(section, IMMonitor::MD_NB, dm);
}

}  // namespace

// Deliberate: of several monitors with one name one counts, and the connectors do not show.
void GetMonitorSignature(std::string* signature) {
  std::set<std::string> names;
  ListMonitorNamesFromRegistry(&names);
  signature->clear();
  // A name may be empty, and has its comma all the same.
  const char* separator = "";
  for (const std::string& name : names) {
    *signature += separator + name;
    separator = ",";
  }
}

const SettingsKey* FindSettingsKey(const std::vector<SettingsKey>& keys, uint32_t mode,
                                   uint32_t displays, const std::string& signature) {
  for (const SettingsKey& key : keys) {
    if (key.mode == mode && key.displays == displays && key.signature == signature) return &key;
  }
  return nullptr;
}

bool ReadRememberedDisplay(const std::string& section, uint32_t display, RememberedDisplay* out) {
  out->width = ReadNumber(section, KeyOf(kWidth, display), 0);
  out->height = ReadNumber(section, KeyOf(kHeight, display), 0);
  out->bits = ReadNumber(section, KeyOf(kColorDepth, display), 32);
  out->frequency = ReadNumber(section, KeyOf(kFrequency, display), 60);
  out->orientation = ReadNumber(section, KeyOf(kOrientation, display), 0);
  return out->width != 0 && out->height != 0;
}

void ReadDisplayResolution(const SettingsKey& key, uint32_t* width, uint32_t* height,
                           uint32_t display) {
  // Deliberate: the height's place decides for both.
  if (height == nullptr) return;
  *width = ReadNumber(key.section, KeyOf(kWidth, display), 0);
  *height = ReadNumber(key.section, KeyOf(kHeight, display), 0);
}

// Deliberate: mode and displays are read by nobody here; they are for the host.
void WriteActiveDisplayMode(uint32_t mode, uint32_t displays, uint32_t presentation_type) {
  WriteNumber(kActiveDisplayMode, "Display Mode", mode);
  WriteNumber(kActiveDisplayMode, "Active Displays", displays);
  WriteNumber(kActiveDisplayMode, kPresentationMode, presentation_type);
}

uint32_t ReadActivePresentationType() {
  return ReadNumber(kActiveDisplayMode, kPresentationMode, 0);
}

void DMSwitch::RegisterSettingsKey(uint32_t mode, uint32_t displays, const std::string& signature) {
  if (FindSettingsKey(settings_keys_, mode, displays, signature) != nullptr) return;
  settings_keys_.push_back(
      {mode, displays, MakeSettingsSection(mode, displays, signature), signature});
}

void DMSwitch::SaveDisplaySettings(uint32_t mode, uint32_t displays) {
  std::string signature;
  GetMonitorSignature(&signature);
  EnsureSettingsPath();
  RegisterSettingsKey(mode, displays, signature);
  const std::string section = MakeSettingsSection(mode, displays, signature);
  if (mode == IMMonitor::DM_EXTEND) {
    SaveExtendedDesktop(section, displays);
  } else {
    SavePrimaryDesktop(section);
  }
}
