#include "Common/Config.h"

#include <cstddef>
#include <iterator>

#include "Common/HostFolder.h"
#include "Common/Win.h"

namespace {

struct CachedKey {
  const wchar_t* section;
  const wchar_t* key;
  uint32_t default_value;
};

// Rows of kCachedKeys.
enum CachedKeyRow : size_t {
  kAdjustCorrectResolutionAtStartOnXP,
  kDisableWhenVideoPlayback,
  kDisableInExtendMode,
  kAssurePrimaryDisplayIsNotebook,
  kSupportVeldTV4810Workaround,
  kSupportMonitorTestWorkaround,
  kRetryWhenOperationFailed,
  kRestoreDisplaySettingsAfterSwitch,
  kDelayTimeToRestoreDisplaySettings,
  kFrequency60HzIsBetter,
  kEliminateFrequencyLessThen60Hz,
  kPreferWindows7CCDAPI,
  kAlwaysUseWindowsAPIToControlExtendMode,
  kHDMIIconUseTVIcon,
  kDowngradeResolutionBeforeSwitch,
  kSupportAspectRatioWorkaround,
  kSupportPM800x600,
  kSupportPM1024x768,
  kCheckProblemProjector,
  kIntelHDMIWorkaround,
  kAlwaysAssumeDeviceHasProblem,
  kAlwaysAssumeMonitorHasProblem,
  kCachedKeyCount,
};

constexpr CachedKey kCachedKeys[] = {
    {L"Settings", L"Adjust Correct Resolution At Start On XP", 0},
    {L"Settings", L"Disable When Video Playback", 0},
    {L"Settings", L"Disable In Extend Mode", 0},
    {L"Settings", L"Assure Primary Display is Notebook", 1},
    {L"Settings", L"Support Veld TV4810 Workaround", 0},
    {L"Settings", L"Support Monitor Test Workaround", 0},
    {L"Settings", L"Retry When Operation Failed", 0},
    {L"Settings", L"Restore Display Settings After Switch", 1},
    {L"Settings", L"Delay Time To Restore Display Settings", 0},
    {L"Settings", L"Frequency 60Hz Is Better", 0},
    {L"Settings", L"Eliminate Frequency Less Then 60Hz", 0},
    {L"Settings", L"Prefer Windows 7 CCD API", 0},
    {L"Settings", L"Always Use Windows API To Control Extend Mode", 0},
    {L"Settings:Intel", L"HDMI Icon Use TV Icon", 0},
    {L"Settings:Intel", L"Downgrade Resolution Before Switch", 1},
    {L"Settings:Intel", L"Support Aspect Ratio Workaround", 0},
    {L"PM:800x600", L"Support This Mode", 0},
    {L"PM:1024x768", L"Support This Mode", 1},
    {L"PM:1024x768", L"Check Problem Projector", 0},
    {L"Single External", L"Intel HDMI Workaround", 0},
    {L"Single External", L"Always Assume Device Has Problem", 0},
    {L"Single External", L"Always Assume Monitor Has Problem", 0},
};
static_assert(std::size(kCachedKeys) == kCachedKeyCount, "one row per accessor");

// Deliberate: all ones is the sign of not yet read, so that a file value of -1 is read again at
// each use.
constexpr uint32_t kNotRead = 0xFFFFFFFF;

struct CachedValue {
  uint32_t value = kNotRead;
};
CachedValue g_cachedValues[kCachedKeyCount];

// Deliberate: never flushed; a change of the file needs a new process.
uint32_t ReadCached(CachedKeyRow row) {
  uint32_t& value = g_cachedValues[row].value;
  if (value == kNotRead) {
    const CachedKey& key = kCachedKeys[row];
    value = ReadConfigInt(key.section, key.key, key.default_value);
  }
  return value;
}

constexpr wchar_t kConfigFile[] = L"\\Ostrel.cfg";

std::wstring BuildConfigPath() {
  std::wstring folder;
  GetHostFolder(&folder);
  return folder + kConfigFile;
}

std::string NarrowPath(const std::wstring& wide) {
  const int wide_length = static_cast<int>(wide.size());
  const int length = WideCharToMultiByte(CP_THREAD_ACP, 0, wide.c_str(), wide_length, nullptr, 0,
                                         nullptr, nullptr);
  std::string narrow(static_cast<size_t>(length), '\0');
  WideCharToMultiByte(CP_THREAD_ACP, 0, wide.c_str(), wide_length, narrow.data(), length, nullptr,
                      nullptr);
  return narrow;
}

std::string ReadText(const std::string& path, const char* section, const char* key,
                     const char* default_value, uint32_t room) {
  std::string text(room, '\0');
  text.resize(
      GetPrivateProfileStringA(section, key, default_value, text.data(), room, path.c_str()));
  return text;
}

}  // namespace

// Deliberate: the file lies beside the host's executable, not beside the library.
const std::wstring& GetConfigPath() {
  static const std::wstring path = BuildConfigPath();
  return path;
}

const std::string& GetConfigPathNarrow() {
  static const std::string path = NarrowPath(GetConfigPath());
  return path;
}

uint32_t ReadConfigInt(const wchar_t* section, const wchar_t* key, uint32_t default_value) {
  return GetPrivateProfileIntW(section, key, static_cast<INT>(default_value),
                               GetConfigPath().c_str());
}

std::string ReadConfigText(const char* section, const char* key, uint32_t room) {
  return ReadText(GetConfigPathNarrow(), section, key, "", room);
}

uint32_t AdjustCorrectResolutionAtStartOnXP() {
  return ReadCached(kAdjustCorrectResolutionAtStartOnXP);
}
uint32_t DisableWhenVideoPlayback() { return ReadCached(kDisableWhenVideoPlayback); }
uint32_t DisableInExtendMode() { return ReadCached(kDisableInExtendMode); }
uint32_t AssurePrimaryDisplayIsNotebook() { return ReadCached(kAssurePrimaryDisplayIsNotebook); }
uint32_t SupportVeldTV4810Workaround() { return ReadCached(kSupportVeldTV4810Workaround); }
uint32_t SupportMonitorTestWorkaround() { return ReadCached(kSupportMonitorTestWorkaround); }
uint32_t RetryWhenOperationFailed() { return ReadCached(kRetryWhenOperationFailed); }
uint32_t RestoreDisplaySettingsAfterSwitch() {
  return ReadCached(kRestoreDisplaySettingsAfterSwitch);
}
uint32_t DelayTimeToRestoreDisplaySettings() {
  return ReadCached(kDelayTimeToRestoreDisplaySettings);
}
uint32_t Frequency60HzIsBetter() { return ReadCached(kFrequency60HzIsBetter); }
uint32_t EliminateFrequencyLessThen60Hz() { return ReadCached(kEliminateFrequencyLessThen60Hz); }
uint32_t PreferWindows7CCDAPI() { return ReadCached(kPreferWindows7CCDAPI); }
uint32_t AlwaysUseWindowsAPIToControlExtendMode() {
  return ReadCached(kAlwaysUseWindowsAPIToControlExtendMode);
}
uint32_t HDMIIconUseTVIcon() { return ReadCached(kHDMIIconUseTVIcon); }
uint32_t DowngradeResolutionBeforeSwitch() { return ReadCached(kDowngradeResolutionBeforeSwitch); }
uint32_t SupportAspectRatioWorkaround() { return ReadCached(kSupportAspectRatioWorkaround); }
uint32_t SupportPM800x600() { return ReadCached(kSupportPM800x600); }
uint32_t SupportPM800x600Mode() { return ReadCached(kSupportPM800x600); }
uint32_t SupportPM1024x768() { return ReadCached(kSupportPM1024x768); }
uint32_t CheckProblemProjector() { return ReadCached(kCheckProblemProjector); }
uint32_t IntelHDMIWorkaround() { return ReadCached(kIntelHDMIWorkaround); }
uint32_t AlwaysAssumeDeviceHasProblem() { return ReadCached(kAlwaysAssumeDeviceHasProblem); }
uint32_t AlwaysAssumeMonitorHasProblem() { return ReadCached(kAlwaysAssumeMonitorHasProblem); }

// Deliberate: read at each use, unlike its neighbours.
uint32_t RetryDelayTime() { return ReadConfigInt(L"Settings", L"Retry Delay Time", 3000); }

// Deliberate: its file is looked for at each read, in the folder where the host's executable is
// now known to be; it is the same file.
std::string StupidProjectors() {
  std::wstring folder;
  if (!GetHostFolder(&folder)) return std::string();
  return ReadText(NarrowPath(folder + kConfigFile), "Settings", "Stupid Projectors", nullptr, 1024);
}
