#include "session/DMSwitch.h"

#include <commctrl.h>

#include <stdexcept>

#include "Common/Config.h"
#include "Common/HostFolder.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/ProcessState.h"
#include "Common/win_util.h"
#include "Workaround/IMonitorTestWorkaround.h"
#include "Workaround/RefreshRateWorkaround.h"
#include "session/catalogue/ItemRules.h"
#include "session/popup/GdiObjects.h"

namespace {

constexpr UINT kOpenPeriod = 3000;
constexpr WORD kPopupDialog = 101;
constexpr uint32_t kFirstPostedMessage = 1024;
constexpr uint32_t kPopupOpened = 1;

}  // namespace

DMSwitch* DMSwitch::s_self = nullptr;

DMSwitch* DMSwitch::Create() {
  try {
    return new DMSwitch;
  } catch (...) {
    DCHECK(0 && "Create DMSwitch failed");
    return nullptr;
  }
}

DMSwitch::DMSwitch() : monitor_test_workaround_(CreateMonitorTestWorkaround()) { s_self = this; }

DMSwitch::~DMSwitch() {
  EndSession();
  s_self = nullptr;
  item_rects_.clear();
  intel_rr_workaround_.reset();
  monitor_test_workaround_.reset();
  settings_keys_.clear();
}

BOOL DMSwitch::Initial() {
  InitCommonControls();
  instance_ = g_moduleInstance;
  if (!GetHostFolder(&picture_folder_)) return 0;
  picture_folder_ += L'\\';
  if (AdjustCorrectResolutionAtStartOnXP() != 0 && win_util::IsXPOrServer2003()) {
    AdjustResolutionForCurrentMode();
  }
  // Deliberate: an object that is held already is replaced only by a different one, and is started
  // either way.
  RefreshRateWorkaround* const created = CreateRefreshRateWorkaround(GetMultiMonitorObject());
  if (created != intel_rr_workaround_.get()) intel_rr_workaround_.reset(created);
  DCHECK(intel_rr_workaround_.get() != NULL);
  if (intel_rr_workaround_ != nullptr) intel_rr_workaround_->BeginMonitoring();
  return 1;
}

void DMSwitch::AdjustResolutionForCurrentMode() {
  IMMonitor* const object = GetMultiMonitorObject();
  // Deliberate: the object is initialised a second time here.
  if (object == nullptr || object->Initial() == 0) return;
  object->DetectDisplays();
  uint32_t mode = 0;
  uint32_t displays = 0;
  if (object->GetCurrentDisplayMode(&mode, &displays) == 0) return;
  RestoreDisplaySettings(mode, displays);
}

bool DMSwitch::MayOpen(IMMonitor* object) const {
  if (object == nullptr || dialog_ != nullptr) return false;
  // Deliberate: where the key forbids it, a press in extended desktop does nothing at all, without
  // a notification.
  return DisableInExtendMode() == 0 || object->IsExtendModeEnabled() == 0;
}

BOOL DMSwitch::ShowPopup() {
  try {
    OnActiveDisplayAdapterVendorChanged();
    IMMonitor* const object = GetMultiMonitorObject();
    if (!MayOpen(object)) return 0;
    if (CreateUIObjects(ui_objects_) == 0) {
      // Deliberate: the only failure here that is logged, and nothing of the session is ended.
      LOG(ERROR) << "Initial UI objects failed";
      return 0;
    }
    OpenPopup(object);
    return 1;
  } catch (...) {
    // Deliberate: what was raised is not logged.
    if (dialog_ != nullptr) DestroyWindow(dialog_);
    dialog_ = nullptr;
    EndSession();
    return 0;
  }
}

void DMSwitch::OpenPopup(IMMonitor* object) {
  object->DetectDisplays();
  connected_displays_ = 0;
  connected_count_ = 0;
  if (object->GetConnectedDisplays(&connected_displays_, &connected_count_) == 0) {
    throw std::runtime_error("Retrieving connected displays failed");
  }
  if (PrepareDMItems(connected_displays_, connected_count_) == 0) {
    throw std::runtime_error("Preparing DMItems failed");
  }
  const auto item_count = static_cast<uint32_t>(m_items.size());
  if (!LoadBackgroundImages()) throw std::runtime_error("Prepare whole bitmap failed");
  if (!ComposeWholeBitmap(item_count)) {
    ReleaseBackgroundImages();
    throw std::runtime_error("Prepare whole bitmap failed");
  }
  BuildItemRects();
  selected_.max = HighestPosition(item_count, selected_.max);
  ReadCurrentMode(object);
  opened_ = selected_;
  dialog_ = CreateDialogParamA(instance_, MAKEINTRESOURCEA(kPopupDialog), nullptr, DialogProc, 0);
  // Deliberate: the same text as for a mode that cannot be read.
  if (dialog_ == nullptr) throw std::runtime_error("Retrieving display mode failed");
  Notify(kPopupOpened);
  RestartTimer(kOpenPeriod);
  GetCursorPos(&cursor_at_open_);
  MapWindowPoints(nullptr, dialog_, &cursor_at_open_, 1);
}

void DMSwitch::ReadCurrentMode(IMMonitor* object) {
  uint32_t mode = 0;
  uint32_t displays = 0;
  if (object->GetCurrentDisplayMode(&mode, &displays) == 0) {
    throw std::runtime_error("Retrieving display mode failed");
  }
  if ((mode != last_mode_ || displays != last_displays_) && IsModeUsable(mode, displays)) {
    last_mode_ = mode;
    last_displays_ = displays;
  }
  SelectCurrentItem(mode, displays);
}

bool DMSwitch::IsModeUsable(uint32_t mode, uint32_t displays) const {
  return catalogue::IsModeUsable(mode, displays, connected_displays_, connected_count_);
}

void DMSwitch::EndSession() {
  ReleaseBackgroundImages();
  whole_bitmap_.reset();
  ReleaseUIObjects(ui_objects_);
  selected_ = SIndex();
  opened_ = SIndex();
  m_items.clear();
}

const DMItem* DMSwitch::SelectedItem() const {
  return selected_.value < m_items.size() ? &m_items[selected_.value] : nullptr;
}

BOOL DMSwitch::SaveCurrentMode() {
  const DMItem* const item = SelectedItem();
  if (item == nullptr) return 0;
  EnsureSettingsPath();
  WriteActiveDisplayMode(last_mode_, last_displays_, item->presentation_type);
  return 1;
}

void DMSwitch::RegisterNotification(HWND receiver, uint32_t message_id) {
  // Deliberate: a second receiver takes the first one's place.
  DCHECK(notify_receiver_ == NULL);
  DCHECK(notify_message_id_ == 0);
  notify_receiver_ = receiver;
  notify_message_id_ = message_id;
}

void DMSwitch::Notify(uint32_t code) {
  if (notify_receiver_ == nullptr) {
    LOG(WARNING) << "Notify receiver did not assigned!";
    return;
  }
  // Deliberate: Windows' own messages are never posted.
  if (notify_message_id_ < kFirstPostedMessage) {
    LOG(ERROR) << "Invalid notify message id!";
    return;
  }
  PostMessageA(notify_receiver_, notify_message_id_, code, 0);
}
