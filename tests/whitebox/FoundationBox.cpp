#include "tests/whitebox/FoundationBox.h"

#include <iterator>

#include "Common/AtExitManager.h"
#include "Common/Config.h"
#include "Common/FileVersion.h"
#include "Common/HostFolder.h"
#include "Common/LogFile.h"
#include "Common/LogSetup.h"
#include "Common/Logging.h"
#include "Common/cpu_id.h"

LRESULT ProbeWindow::HandleMessage(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  messages_.push_back({hwnd, message, wnd_ == hwnd});
  return BaseWindow::HandleMessage(hwnd, message, wparam, lparam);
}

void ProbeWindow::FillWindowClass(WNDCLASSEXW* wcex) {
  BaseWindow::FillWindowClass(wcex);
  if (window_class_refused_ && wcex != nullptr) wcex->cbSize = 0;
}

namespace {

const char* Counted(const char* text, uint32_t* count) {
  ++*count;
  return text;
}

void LogInfo(const char* text, uint32_t* count) { LOG(INFO) << Counted(text, count); }
void LogWarning(const char* text, uint32_t* count) { LOG(WARNING) << Counted(text, count); }
void LogError(const char* text, uint32_t* count) { LOG(ERROR) << Counted(text, count); }

void LogVerbose(int32_t level, const char* text, uint32_t* count) {
  VLOG(level) << Counted(text, count);
}

void LogWide(const wchar_t* pointer, const std::wstring& text) {
  LOG(INFO) << "wide " << pointer << " and " << text;
}

void LogNullText() {
  const char* narrow = nullptr;
  const wchar_t* wide = nullptr;
  LOG(INFO) << "nothing:" << wide << narrow;
}

void LogSystemErrorCode(uint32_t code, const char* text) { LOG_SYSTEM_ERROR(ERROR, code) << text; }

uint32_t LogLastErrorSeenInside(uint32_t last_error) {
  uint32_t seen = 0;
  SetLastError(last_error);
  LOG(INFO) << (seen = GetLastError());
  return seen;
}

HWND CountedWindow(bool is_null, uint32_t* count) {
  ++*count;
  return is_null ? nullptr : reinterpret_cast<HWND>(1);
}

void CheckWindowIsNull(bool is_null, const char* text, uint32_t* count) {
#define wnd_ CountedWindow(is_null, count)
  DCHECK(wnd_ == NULL) << text;
#undef wnd_
}

bool InitLogFileAt(const std::wstring& path, uint32_t destination, bool delete_old) {
  return InitLogFile(path, static_cast<LogDestination>(destination), delete_old);
}

constexpr ConfigAccessor kConfigAccessors[] = {
    {"AdjustCorrectResolutionAtStartOnXP", &AdjustCorrectResolutionAtStartOnXP},
    {"DisableWhenVideoPlayback", &DisableWhenVideoPlayback},
    {"DisableInExtendMode", &DisableInExtendMode},
    {"AssurePrimaryDisplayIsNotebook", &AssurePrimaryDisplayIsNotebook},
    {"SupportVeldTV4810Workaround", &SupportVeldTV4810Workaround},
    {"SupportMonitorTestWorkaround", &SupportMonitorTestWorkaround},
    {"RetryWhenOperationFailed", &RetryWhenOperationFailed},
    {"RestoreDisplaySettingsAfterSwitch", &RestoreDisplaySettingsAfterSwitch},
    {"DelayTimeToRestoreDisplaySettings", &DelayTimeToRestoreDisplaySettings},
    {"Frequency60HzIsBetter", &Frequency60HzIsBetter},
    {"EliminateFrequencyLessThen60Hz", &EliminateFrequencyLessThen60Hz},
    {"PreferWindows7CCDAPI", &PreferWindows7CCDAPI},
    {"AlwaysUseWindowsAPIToControlExtendMode", &AlwaysUseWindowsAPIToControlExtendMode},
    {"HDMIIconUseTVIcon", &HDMIIconUseTVIcon},
    {"DowngradeResolutionBeforeSwitch", &DowngradeResolutionBeforeSwitch},
    {"SupportAspectRatioWorkaround", &SupportAspectRatioWorkaround},
    {"SupportPM800x600", &SupportPM800x600},
    {"SupportPM800x600Mode", &SupportPM800x600Mode},
    {"SupportPM1024x768", &SupportPM1024x768},
    {"CheckProblemProjector", &CheckProblemProjector},
    {"IntelHDMIWorkaround", &IntelHDMIWorkaround},
    {"AlwaysAssumeDeviceHasProblem", &AlwaysAssumeDeviceHasProblem},
    {"AlwaysAssumeMonitorHasProblem", &AlwaysAssumeMonitorHasProblem},
};

int CPUBrandNumber() { return GetCPUBrand(); }

class ProbeLibrary : public LoadDLL {
 public:
  explicit ProbeLibrary(bool strict) : strict_(strict) {}
  BOOL Load(const char* file_name) override {
    const Entry entries[] = {
        {"lstrlenA", Slot(slots.lstrlen_a)},
        {"NoSuchEntry", Slot(slots.no_such_entry), false},
        {"AlsoNoSuch", Slot(slots.also_no_such), strict_},
    };
    return Bind(file_name, entries);
  }
  ProbeSlots slots;

 private:
  const bool strict_;
};

LoadDLL* MakeProbeLibrary(bool strict, ProbeSlots** slots) {
  auto* library = new ProbeLibrary(strict);
  *slots = &library->slots;
  return library;
}

ProbeWindow* MakeProbeWindow() { return new ProbeWindow(); }

const FoundationBox kBox = {
    &LogInfo,
    &LogWarning,
    &LogError,
    &LogVerbose,
    &LogWide,
    &LogNullText,
    &LogSystemErrorCode,
    &LogLastErrorSeenInside,
    &CheckWindowIsNull,
    &GetMinLogLevel,
    &SetMinLogLevel,
    &SetLogItems,
    &SetUpLogging,
    &InitLogFileAt,
    &GetConfigPath,
    &GetConfigPathNarrow,
    &GetModeSection,
    &ReadConfigInt,
    &RetryDelayTime,
    kConfigAccessors,
    std::size(kConfigAccessors),
    &GetHostFolder,
    &win_util::GetWinVersion,
    &GetFileVersion,
    &CPUBrandNumber,
    &GetIntelCPUGeneration,
    &MakeProbeLibrary,
    &MakeProbeWindow,
    &AtExitManager::RegisterCallback,
};

}  // namespace

const FoundationBox* GetFoundationBox() { return &kBox; }
