// The switch session from inside: its state as plain copies, and the inner operations that no
// export reaches alone.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Common/Win.h"
#include "session/catalogue/RememberedSettings.h"
#include "session/catalogue/SIndex.h"

class IMMonitor;
class IMonitorTestWorkaround;
class RefreshRateWorkaround;

/// A DMItem without its picture.
struct ItemState {
  uint32_t icon;
  uint32_t index;
  uint32_t selected;
  uint32_t mode;
  uint32_t is_presentation;
  uint32_t presentation_type;
  uint32_t displays;
  bool has_image;
};

/// The session's fields at one moment.
struct SessionState {
  uint32_t last_mode = 0;
  uint32_t last_displays = 0;
  uint32_t connected_displays = 0;
  uint32_t connected_count = 0;
  bool force_apply = false;
  HWND dialog = nullptr;
  SIndex selected;
  SIndex opened;
  std::vector<ItemState> items;
  std::vector<SettingsKey> settings_keys;
  bool has_backgrounds = false;  // any of the four
  bool has_whole_bitmap = false;
  bool has_ui_objects = false;  // brush and both pens
  size_t item_rects = 0;
  POINT cursor_at_open = {0, 0};
};

/// The display-change monitor's process-wide variables.
struct MonitorState {
  HANDLE event = nullptr;
  HANDLE thread = nullptr;
  DWORD thread_id = 0;
  UINT_PTR timer = 0;
  uint32_t period = 0;
  bool class_registered = false;
};

struct SessionBox {
  bool (*Exists)();  // DMSwitch::s_self is set
  SessionState (*State)();

  // --- Writing into the session.
  void (*SetSelected)(const SIndex& index);
  void (*SetOpened)(const SIndex& index);
  void (*SetForceApply)(bool force);
  void (*FlagItem)(uint32_t position, uint32_t flag);
  void (*SetItemType)(uint32_t position, uint32_t presentation_type);
  void (*SetLastMode)(uint32_t mode, uint32_t displays);
  void (*SetRefreshRateWorkaround)(RefreshRateWorkaround* workaround);  // owned by the session then
  void (*SetMonitorTestWorkaround)(IMonitorTestWorkaround* workaround);  // likewise

  // --- Operations.
  BOOL (*Initial)();
  BOOL (*ShowPopup)();
  void (*MoveSelection)(bool forward);
  void (*SelectItem)(uint32_t icon_index);
  void (*ClosePopup)();
  BOOL (*ApplySelection)();
  void (*EndSession)();
  BOOL (*SaveCurrentMode)();
  BOOL (*PrepareDMItems)(uint32_t connected, uint32_t count);
  BOOL (*SelectCurrentItem)(uint32_t mode, uint32_t displays);
  bool (*AddPlainItem)(uint32_t icon, uint32_t mode, uint32_t displays);
  bool (*AddPresentationItem)(uint32_t icon, uint32_t mask, uint32_t type);
  bool (*IsModeUsable)(uint32_t mode, uint32_t displays);
  INT_PTR (*SendToDialogProc)(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

  // --- Around the session.
  bool (*TripleDisplaySupported)();
  bool (*IsNvidiaDiscreteOnly)();
  bool (*CanCloneOnDiscreteOutputs)();
  bool (*CanCloneOnDiscreteOutputsOf)(IMMonitor* (*create)());
  void (*StartNvidiaAudioRefresh)(IMMonitor* object, uint32_t mode, uint32_t displays);
  void (*RepeatDetection)(bool (*detect)());
  void (*RunDisplayChangeMonitor)(uint32_t previous_mode);
  MonitorState (*MonitorVariables)();
  void (*SetMonitorVariables)(const MonitorState& state);  // the host thread's three
  void (*CenterWindowOnMonitor)(HWND window);
  SettingsKey (*MakeSettingsKeyForDisplays)(uint32_t mode, uint32_t displays);
  std::string (*SettingsPath)();  // after EnsureSettingsPath
};

const SessionBox* GetSessionBox();
