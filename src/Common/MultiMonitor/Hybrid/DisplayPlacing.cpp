#include "Common/MultiMonitor/Hybrid/DisplayPlacing.h"

namespace {

constexpr DWORD kPositionField = DM_POSITION;
constexpr DWORD kSizeFields = DM_POSITION | DM_PELSWIDTH | DM_PELSHEIGHT;
constexpr DWORD kModeFields = kSizeFields | DM_BITSPERPEL | DM_DISPLAYFREQUENCY;
constexpr DWORD kStoreFlags = CDS_NORESET | CDS_UPDATEREGISTRY;
// Deliberate: with a test in the flags nothing is stored by the attempts, only behind them.
constexpr DWORD kAttemptFlags = kStoreFlags | CDS_TEST;
static_assert(kPositionField == 0x20, "position");
static_assert(kSizeFields == 0x180020, "position, width, height");
static_assert(kModeFields == 0x5C0020, "position, width, height, depth, frequency");
static_assert(kStoreFlags == 0x10000001, "into the registry, no reset");
static_assert(kAttemptFlags == 0x10000003, "the same, and a test");
static_assert(sizeof(DEVMODEA) == 156, "narrow settings record");
static_assert(sizeof(DEVMODEW) == 220, "wide settings record");

template <typename Record>
Record EmptySettings() {
  Record dm = {};
  dm.dmSize = sizeof(dm);
  dm.dmFields = kModeFields;
  return dm;
}

LONG Change(const char* device, DEVMODEA* dm, DWORD flags) {
  return ChangeDisplaySettingsExA(device, dm, nullptr, flags, nullptr);
}

// Deliberate: copied as they come, also when the device has none stored.
void TakeStoredSettings(const char* device, DEVMODEA* dm) {
  DEVMODEA stored = EmptySettings<DEVMODEA>();
  EnumDisplaySettingsA(device, ENUM_REGISTRY_SETTINGS, &stored);
  stored.dmPosition.x = dm->dmPosition.x;
  *dm = stored;
}

void Place(uint32_t width, uint32_t height, DEVMODEA* dm, const char* device, bool primary,
           DWORD first_fields) {
  const DWORD kept_fields = dm->dmFields;
  const DWORD set_primary = primary ? CDS_SET_PRIMARY : 0;
  dm->dmPelsWidth = width;
  dm->dmPelsHeight = height;
  dm->dmFields = first_fields;
  LONG status = Change(device, dm, kAttemptFlags | set_primary);
  if (status != DISP_CHANGE_SUCCESSFUL) {
    dm->dmFields = kept_fields;
    status = Change(device, dm, kAttemptFlags | set_primary);
  }
  if (status != DISP_CHANGE_SUCCESSFUL) {
    TakeStoredSettings(device, dm);
    Change(device, dm, kAttemptFlags | set_primary);
  }
  // Deliberate: stored whatever the attempts said.
  Change(device, dm, kStoreFlags | set_primary);
}

}  // namespace

// Deliberate: the position alone first, so that a device keeps its size until the pass with sizes.
void PlaceDisplay(uint32_t width, uint32_t height, DEVMODEA* dm, const char* device, bool primary) {
  Place(width, height, dm, device, primary, kPositionField);
}

void PlaceDisplayWithSize(uint32_t width, uint32_t height, DEVMODEA* dm, const char* device,
                          bool primary) {
  Place(width, height, dm, device, primary, kSizeFields);
}

bool CommitPlaces() { return Change(nullptr, nullptr, 0) == DISP_CHANGE_SUCCESSFUL; }

void ReadPrimarySettings(DEVMODEA* dm) {
  *dm = EmptySettings<DEVMODEA>();
  if (EnumDisplaySettingsA(nullptr, ENUM_CURRENT_SETTINGS, dm) != 0) return;
  *dm = EmptySettings<DEVMODEA>();
  dm->dmPelsWidth = 1366;
  dm->dmPelsHeight = 768;
  dm->dmDisplayFrequency = 60;
  dm->dmBitsPerPel = 32;
}

void ReadPrimarySettingsWide() {
  DEVMODEW dm = EmptySettings<DEVMODEW>();
  EnumDisplaySettingsW(nullptr, ENUM_CURRENT_SETTINGS, &dm);
}
