// Ostrel.cfg: the switches for one machine model, a read-only profile file beside the host's
// executable. Cached keys are read once per process; a change of the file then needs a new process,
// and a value of -1 is read again at each use. All of this runs on the host's thread.
#pragma once

#include <cstdint>
#include <string>

#include "Common/ConfigSection.h"

/// The full path of Ostrel.cfg, built at the first call.
const std::wstring& GetConfigPath();
/// The same in the thread's code page, for reads through the narrow interface.
const std::string& GetConfigPathNarrow();

/// Reads a number that is not cached. @return `default_value` for a missing file, section or key
uint32_t ReadConfigInt(const wchar_t* section, const wchar_t* key, uint32_t default_value);

/// Reads a text that is not cached.
/// @param room  bytes, the end of the text included; a longer value is cut
/// @return empty for a missing file, section or key
std::string ReadConfigText(const char* section, const char* key, uint32_t room);

// One accessor per cached key, named by it. Truth values count as on when they are not 0.
uint32_t AdjustCorrectResolutionAtStartOnXP();
uint32_t DisableWhenVideoPlayback();
uint32_t DisableInExtendMode();
uint32_t AssurePrimaryDisplayIsNotebook();
uint32_t SupportVeldTV4810Workaround();
uint32_t SupportMonitorTestWorkaround();
uint32_t RetryWhenOperationFailed();
uint32_t RestoreDisplaySettingsAfterSwitch();
uint32_t DelayTimeToRestoreDisplaySettings();  // milliseconds
uint32_t Frequency60HzIsBetter();
uint32_t EliminateFrequencyLessThen60Hz();
uint32_t PreferWindows7CCDAPI();
uint32_t AlwaysUseWindowsAPIToControlExtendMode();
uint32_t HDMIIconUseTVIcon();
uint32_t DowngradeResolutionBeforeSwitch();
uint32_t SupportAspectRatioWorkaround();
uint32_t SupportPM800x600();
uint32_t SupportPM800x600Mode();  // the same variable as SupportPM800x600
uint32_t SupportPM1024x768();
uint32_t CheckProblemProjector();
uint32_t IntelHDMIWorkaround();
uint32_t AlwaysAssumeDeviceHasProblem();
uint32_t AlwaysAssumeMonitorHasProblem();

/// Milliseconds; read from the file at each use.
uint32_t RetryDelayTime();

/// The names under "Stupid Projectors" as they stand in the file, cut behind 1023 bytes; read at
/// each use.
std::string StupidProjectors();
