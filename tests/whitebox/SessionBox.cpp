#include "tests/whitebox/SessionBox.h"

#include "Workaround/IMonitorTestWorkaround.h"
#include "Workaround/RefreshRateWorkaround.h"
#include "session/DMSwitch.h"
#include "session/DisplayChangeMonitor.h"
#include "session/DisplayChangeMonitorState.h"
#include "session/NvidiaAudioRefresh.h"
#include "session/catalogue/MachineFacts.h"
#include "session/popup/GdiObjects.h"
#include "session/popup/WindowPlacement.h"

/// Reaches the session's fields for the box.
struct SessionAccess {
  static DMSwitch& Self() { return *DMSwitch::s_self; }

  static SessionState State() {
    const DMSwitch& self = Self();
    SessionState state;
    state.last_mode = self.last_mode_;
    state.last_displays = self.last_displays_;
    state.connected_displays = self.connected_displays_;
    state.connected_count = self.connected_count_;
    state.force_apply = self.force_apply_;
    state.dialog = self.dialog_;
    state.selected = self.selected_;
    state.opened = self.opened_;
    for (const DMItem& item : self.m_items) {
      state.items.push_back({item.icon, item.index, item.selected, item.mode, item.is_presentation,
                             item.presentation_type, item.displays, item.image != nullptr});
    }
    state.settings_keys = self.settings_keys_;
    state.has_backgrounds = self.bg_left_ != nullptr || self.bg_right_ != nullptr ||
                            self.bg_center_ != nullptr || self.selected_image_ != nullptr;
    state.has_whole_bitmap = self.whole_bitmap_ != nullptr;
    state.has_ui_objects = self.ui_objects_.brush != nullptr &&
                           self.ui_objects_.dark_pen != nullptr &&
                           self.ui_objects_.light_pen != nullptr;
    state.item_rects = self.item_rects_.size();
    state.cursor_at_open = self.cursor_at_open_;
    return state;
  }

  static void SetSelected(const SIndex& index) { Self().selected_ = index; }
  static void SetOpened(const SIndex& index) { Self().opened_ = index; }
  static void SetForceApply(bool force) { Self().force_apply_ = force; }
  static void FlagItem(uint32_t position, uint32_t flag) {
    Self().m_items.at(position).selected = flag;
  }
  static void SetItemType(uint32_t position, uint32_t type) {
    Self().m_items.at(position).presentation_type = type;
  }
  static void SetLastMode(uint32_t mode, uint32_t displays) {
    Self().last_mode_ = mode;
    Self().last_displays_ = displays;
  }
  static void SetRefreshRateWorkaround(RefreshRateWorkaround* workaround) {
    Self().intel_rr_workaround_.reset(workaround);
  }
  static void SetMonitorTestWorkaround(IMonitorTestWorkaround* workaround) {
    Self().monitor_test_workaround_.reset(workaround);
  }

  static BOOL PrepareDMItems(uint32_t connected, uint32_t count) {
    return Self().PrepareDMItems(connected, count);
  }
  static BOOL SelectCurrentItem(uint32_t mode, uint32_t displays) {
    return Self().SelectCurrentItem(mode, displays);
  }
  static bool AddPlainItem(uint32_t icon, uint32_t mode, uint32_t displays) {
    return Self().AddPlainItem(icon, static_cast<uint32_t>(Self().m_items.size()), mode, displays);
  }
  static bool AddPresentationItem(uint32_t icon, uint32_t mask, uint32_t type) {
    return Self().AddPresentationItem(icon, static_cast<uint32_t>(Self().m_items.size()), mask,
                                      type);
  }
  static bool IsModeUsable(uint32_t mode, uint32_t displays) {
    return Self().IsModeUsable(mode, displays);
  }
  static INT_PTR SendToDialogProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    return DMSwitch::DialogProc(window, message, wparam, lparam);
  }
};

namespace {

bool Exists() { return DMSwitch::s_self != nullptr; }
BOOL Initial() { return DMSwitch::s_self->Initial(); }
BOOL ShowPopup() { return DMSwitch::s_self->ShowPopup(); }
void MoveSelection(bool forward) { DMSwitch::s_self->MoveSelection(forward); }
void SelectItem(uint32_t icon_index) { DMSwitch::s_self->SelectItem(icon_index); }
void ClosePopup() { DMSwitch::s_self->ClosePopup(); }
BOOL ApplySelection() { return DMSwitch::s_self->ApplySelection(); }
void EndSession() { DMSwitch::s_self->EndSession(); }
BOOL SaveCurrentMode() { return DMSwitch::s_self->SaveCurrentMode(); }
bool CanClone() { return CanCloneOnDiscreteOutputs(); }
bool CanCloneOf(IMMonitor* (*create)()) { return CanCloneOnDiscreteOutputs(create); }
std::string PathOfSettings() {
  EnsureSettingsPath();
  return SettingsPath();
}

MonitorState MonitorVariables() {
  return {g_ResetDisplaySettingsCompletedEvent,
          g_DCMThreadHandle,
          g_DCMThreadID,
          g_resetTimer,
          g_resetTimerPeriod,
          g_monitorClassRegistered};
}

void SetMonitorVariables(const MonitorState& state) {
  g_ResetDisplaySettingsCompletedEvent = state.event;
  g_DCMThreadHandle = state.thread;
  g_DCMThreadID = state.thread_id;
}

const SessionBox kBox = {
    Exists,
    SessionAccess::State,
    SessionAccess::SetSelected,
    SessionAccess::SetOpened,
    SessionAccess::SetForceApply,
    SessionAccess::FlagItem,
    SessionAccess::SetItemType,
    SessionAccess::SetLastMode,
    SessionAccess::SetRefreshRateWorkaround,
    SessionAccess::SetMonitorTestWorkaround,
    Initial,
    ShowPopup,
    MoveSelection,
    SelectItem,
    ClosePopup,
    ApplySelection,
    EndSession,
    SaveCurrentMode,
    SessionAccess::PrepareDMItems,
    SessionAccess::SelectCurrentItem,
    SessionAccess::AddPlainItem,
    SessionAccess::AddPresentationItem,
    SessionAccess::IsModeUsable,
    SessionAccess::SendToDialogProc,
    TripleDisplaySupported,
    IsNvidiaDiscreteOnly,
    CanClone,
    CanCloneOf,
    StartNvidiaAudioRefresh,
    RepeatDetection,
    RunDisplayChangeMonitor,
    MonitorVariables,
    SetMonitorVariables,
    CenterWindowOnMonitor,
    MakeSettingsKeyForDisplays,
    PathOfSettings,
};

}  // namespace

const SessionBox* GetSessionBox() { return &kBox; }
