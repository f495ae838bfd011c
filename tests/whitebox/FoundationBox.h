// The foundation layer seen from inside: statements of the log with texts of the test's choice, the
// configuration's accessors by name, and makers of small objects that exist for the tests only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Common/LoadDLL.h"
#include "Common/win_util.h"
#include "Common/windowing/base_window.h"

/// One cached key's accessor.
struct ConfigAccessor {
  const char* name;
  uint32_t (*read)();
};

/// What ProbeLibrary bound. The names are lstrlenA (required), NoSuchEntry (optional) and, in the
/// strict form, AlsoNoSuch (required).
struct ProbeSlots {
  int(WINAPI* lstrlen_a)(const char*) = nullptr;
  void(WINAPI* no_such_entry)() = nullptr;
  void(WINAPI* also_no_such)() = nullptr;
};

/// A window that notes the messages it is handed.
class ProbeWindow : public windowing::BaseWindow {
 public:
  struct Message {
    HWND hwnd;
    UINT message;
    bool had_window;  // wnd_ was this window at that time
  };
  const std::vector<Message>& messages() const { return messages_; }
  void set_class_name(const std::wstring& name) { class_name_ = name; }
  void set_window_class_refused() { window_class_refused_ = true; }

  LRESULT HandleMessage(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) override;
  void FillWindowClass(WNDCLASSEXW* wcex) override;
  const wchar_t* GetWindowClassName() override { return class_name_.c_str(); }

 private:
  std::wstring class_name_ = L"OstrelProbeWindow";
  bool window_class_refused_ = false;
  std::vector<Message> messages_;
};

struct FoundationBox {
  // --- The log. `count` is raised once for every text that is really built.
  void (*LogInfo)(const char* text, uint32_t* count);
  void (*LogWarning)(const char* text, uint32_t* count);
  void (*LogError)(const char* text, uint32_t* count);
  void (*LogVerbose)(int32_t level, const char* text, uint32_t* count);
  void (*LogWide)(const wchar_t* pointer, const std::wstring& text);
  void (*LogNullText)();
  void (*LogSystemErrorCode)(uint32_t code, const char* text);
  uint32_t (*LogLastErrorSeenInside)(uint32_t last_error);  // streamed into an INFO record
  /// DCHECK(wnd_ == NULL) << text, with wnd_ null or not; `count` counts evaluations of the
  /// condition.
  void (*CheckWindowIsNull)(bool is_null, const char* text, uint32_t* count);
  int32_t (*GetMinLogLevel)();
  void (*SetMinLogLevel)(int32_t level);
  void (*SetLogItems)(bool process_id, bool thread_id, bool time_stamp, bool tick_count);
  void (*SetUpLogging)();
  bool (*InitLogFile)(const std::wstring& path, uint32_t destination, bool delete_old);

  // --- Ostrel.cfg.
  const std::wstring& (*GetConfigPath)();
  const std::string& (*GetConfigPathNarrow)();
  bool (*GetModeSection)(uint32_t mode, uint32_t displays, std::wstring* section);
  uint32_t (*ReadConfigInt)(const wchar_t* section, const wchar_t* key, uint32_t default_value);
  uint32_t (*RetryDelayTime)();
  const ConfigAccessor* config_accessors;
  size_t config_accessor_count;

  // --- Small foundations.
  bool (*GetHostFolder)(std::wstring* folder);
  win_util::WinVersion (*GetWinVersion)();
  bool (*GetFileVersion)(const wchar_t* path, std::string* text);
  int (*GetCPUBrand)();
  uint8_t (*GetIntelCPUGeneration)();
  LoadDLL* (*MakeProbeLibrary)(bool strict, ProbeSlots** slots);
  ProbeWindow* (*MakeProbeWindow)();
  void (*RegisterAtExit)(void (*callback)(void*), void* parameter);
};

const FoundationBox* GetFoundationBox();
