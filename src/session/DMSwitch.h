// The switch session: one press of the display hotkey, from the list of modes to the changed
// display configuration.
//
// All operations, the dialog procedure and the timers run on the host thread that opened the
// pop-up; there is no lock. The class is spread over several files by topic: DMSwitch.cpp (life,
// opening, notifications), DMSwitchSelection.cpp (moves of the highlight), DMSwitchDialog.cpp (the
// window), DMSwitchPicture.cpp (what it shows), DMSwitchItems.cpp (the list),
// DMSwitchPresentation.cpp (its presentation items, and projectors) and DMSwitchApply.cpp (the
// switch itself).
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Common/Win.h"
#include "session/catalogue/DMItem.h"
#include "session/catalogue/ItemTables.h"
#include "session/catalogue/RememberedSettings.h"
#include "session/catalogue/SIndex.h"
#include "session/popup/PopupGeometry.h"
#include "session/popup/UIObjects.h"

class GdiBitmap;
class GdiImage;
class IMMonitor;
class IMonitorTestWorkaround;
class RefreshRateWorkaround;
struct PolicyAccess;
struct ProjectorAccess;
struct SessionAccess;

namespace catalogue {
struct PresentationConnector;
}  // namespace catalogue

class DMSwitch {
 public:
  /// The timer that closes the pop-up and applies the selection.
  static constexpr UINT_PTR kPopupTimer = 1234;

  /// The one object that exists, for the dialog and timer procedures; null when none does.
  static DMSwitch* s_self;

  /// Makes the object. @return null when its construction failed
  static DMSwitch* Create();

  DMSwitch();
  virtual ~DMSwitch();
  DMSwitch(const DMSwitch&) = delete;
  DMSwitch& operator=(const DMSwitch&) = delete;

  /// Readies the session once after construction, with the display object in place. @return 0 on
  /// failure
  BOOL Initial();

  /// Opens the pop-up; returns before the user has chosen anything.
  /// @return 0 when it stays closed: no display object, already open, refused in extended mode, or
  /// a failure, after
  ///         which no pop-up and no list is left
  BOOL ShowPopup();

  /// Moves the highlight by one, wrapping round, and restarts the pop-up's timer with 1500 ms.
  void MoveSelection(bool forward);

  /// Moves the highlight to the item at `icon_index`; the timer restarts also when it is there
  /// already.
  void SelectItem(uint32_t icon_index);

  /// Selects what the mouse is on. @param packed x and y as a mouse message's lParam holds them
  void HitTest(LPARAM packed);

  /// Destroys the pop-up and posts notification 2; nothing without a pop-up.
  void ClosePopup();

  /// Switches to the selected item when it is not the one that was current at opening.
  /// @return 0 when nothing was to be done, the switch was refused or it failed
  BOOL ApplySelection();

  /// Frees what one session holds: pictures, list and selection.
  void EndSession();

  /// Writes the last applied mode to Ostrel.ini while a list exists. @return 0 without one
  BOOL SaveCurrentMode();

  /// Posts `code` (1 the pop-up has opened, 2 it has closed) to the host, if it registered for
  /// that.
  void Notify(uint32_t code);

  /// Stores the host's window and message number, over earlier ones.
  void RegisterNotification(HWND receiver, uint32_t message_id);

  /// The pop-up's window; null whenever there is none.
  HWND dialog() const { return dialog_; }

  /// True when the highlight is not where it was when the pop-up opened.
  bool SelectionChanged() const { return selected_.value != opened_.value; }

  /// Puts the highlight's position back to where it was when the pop-up opened.
  void RestoreSelection() { selected_ = opened_; }

  /// Puts the resolution back that goes with an item: its presentation resolution, or what is
  /// remembered for its mode.
  void RestoreSettingsForItem(const DMItem& item);

  /// The item at the highlight; null when the list has none there.
  const DMItem* SelectedItem() const;

 private:
  // The tests' white box.
  friend struct SessionAccess;
  friend struct PolicyAccess;
  friend struct ProjectorAccess;

  // --- Opening and ending (DMSwitch.cpp).
  void AdjustResolutionForCurrentMode();
  bool MayOpen(IMMonitor* object) const;
  void OpenPopup(IMMonitor* object);  // throws std::runtime_error
  void ReadCurrentMode(IMMonitor* object);
  bool IsModeUsable(uint32_t mode, uint32_t displays) const;

  // --- The highlight (DMSwitchSelection.cpp).
  BOOL SelectCurrentItem(uint32_t mode, uint32_t displays);
  void RestartTimer(UINT period);
  void FlagItem(uint32_t position, uint32_t flag);
  void RedrawPopup();

  // --- The window (DMSwitchDialog.cpp).
  static INT_PTR CALLBACK DialogProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  INT_PTR HandleDialogMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  void OnTimer(WPARAM id);
  void OnMouseMove(LPARAM packed);
  void OnKey(WPARAM key);
  void PositionPopup(HWND window);

  // --- What it shows (DMSwitchPicture.cpp).
  bool LoadBackgroundImages();
  void ReleaseBackgroundImages();
  bool ComposeWholeBitmap(uint32_t item_count);
  void DrawBackground(uint32_t item_count);
  void DrawItems();
  void DrawHighlight(GdiBitmap* picture);
  void BuildItemRects();
  void UpdatePopupPicture(HWND window);

  // --- The list (DMSwitchItems.cpp).
  BOOL PrepareDMItems(uint32_t connected, uint32_t count);
  BOOL AddCandidates(uint32_t connected, const std::string& signature,
                     const catalogue::Candidate* candidates, size_t count, uint32_t left_out);
  bool AddModeItem(uint32_t connected, uint32_t mask, uint32_t mode, uint32_t icon);
  bool AddPlainItem(uint32_t icon, uint32_t index, uint32_t mode, uint32_t displays);
  bool AddPresentationItem(uint32_t icon, uint32_t index, uint32_t mask, uint32_t type);
  bool AddExtendItems(uint32_t connected, uint32_t count);
  static DMItem MakeItem(uint32_t icon, uint32_t index, uint32_t mode, uint32_t displays);
  bool AddItem(DMItem item, const wchar_t* picture_file);
  std::wstring PicturePath(const wchar_t* file) const;

  // --- Presentation items and projectors (DMSwitchPresentation.cpp).
  BOOL AddPresentationItems(uint32_t connected);
  BOOL AddSmallPresentationItem(uint32_t connected, const catalogue::PresentationConnector& row);
  BOOL AddPresentationItemIfAllowed(uint32_t connected, uint32_t mask, uint32_t icon,
                                    uint32_t type);
  BOOL AddPresentationItemOrClear(uint32_t mask, uint32_t icon, uint32_t type);
  static BOOL ApplyProblemProjectorMode(IMMonitor* imm, const DMItem& item);

  // --- Remembered settings (catalogue/RememberedSettings.cpp) and resolutions
  // (catalogue/ResolutionPolicy.cpp).
  void RegisterSettingsKey(uint32_t mode, uint32_t displays, const std::string& signature);
  void SaveDisplaySettings(uint32_t mode, uint32_t displays);
  void RestoreDisplaySettings(uint32_t mode, uint32_t displays);

  // --- The switch (DMSwitchApply.cpp).
  struct SwitchPlan;
  void PlanSwitch(bool save_old, SwitchPlan* plan);
  static bool SwitchToPanelFirst(const SwitchPlan& plan);
  BOOL SwitchToExtend(const SwitchPlan& plan);
  BOOL SwitchMode(const SwitchPlan& plan);
  static BOOL RetryOnIntel(const SwitchPlan& plan, BOOL result);
  void RecordSwitch(const SwitchPlan& plan);
  void RestoreAfterSwitch(const SwitchPlan& plan);
  void AdjustRefreshRate();

  uint32_t last_mode_ =
      1;  // DM_SINGLE; the mode of the last successful switch, or the last valid one found
  uint32_t last_displays_ = 1;  // MD_NB; the displays that go with it
  uint32_t connected_displays_ = 0;
  uint32_t connected_count_ = 0;
  bool force_apply_ = false;  // apply an unchanged selection; nothing in the library sets it
  HINSTANCE instance_ = nullptr;
  HWND dialog_ = nullptr;
  UIObjects ui_objects_;
  SIndex selected_;
  SIndex opened_;
  std::vector<DMItem> m_items;
  std::vector<SettingsKey> settings_keys_;
  std::unique_ptr<GdiImage> bg_left_;
  std::unique_ptr<GdiImage> bg_right_;
  std::unique_ptr<GdiImage> bg_center_;
  std::unique_ptr<GdiImage> selected_image_;
  std::unique_ptr<GdiBitmap> whole_bitmap_;
  boost::shared_ptr<IMonitorTestWorkaround> monitor_test_workaround_;
  std::unique_ptr<RefreshRateWorkaround> intel_rr_workaround_;
  HWND notify_receiver_ = nullptr;
  uint32_t notify_message_id_ = 0;
  std::vector<ItemRect> item_rects_;
  POINT cursor_at_open_ = {0, 0};
  std::wstring picture_folder_;  // the host executable's folder, with a trailing backslash
};
