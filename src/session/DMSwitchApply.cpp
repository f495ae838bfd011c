// DMSwitch: the switch to the selected item, and what is put right around it.
#include "session/DMSwitch.h"

#include "Common/Config.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/win_util.h"
#include "Workaround/IMonitorTestWorkaround.h"
#include "Workaround/RefreshRateWorkaround.h"
#include "session/DisplayChangeMonitor.h"
#include "session/NvidiaAudioRefresh.h"
#include "session/catalogue/ItemRules.h"
#include "session/catalogue/Projectors.h"
#include "session/catalogue/SwitchPreconditions.h"

namespace {

bool IsVideoPlaying() {
  return DisableWhenVideoPlayback() != 0 && (IsWindowsMediaPlayerPlaying() || IsPowerDVDPlaying());
}

void WaitBeforeRestore() {
  const uint32_t delay = DelayTimeToRestoreDisplaySettings();
  if (delay != 0) Sleep(delay);
}

/// The old NVIDIA driver announces display changes for a while after a switch; they must have come
/// to rest first.
bool MustWaitForQuiet(IMMonitor* object) {
  return object->GetVgaVendor() == kVendorNvidia &&
         win_util::GetWinVersion() < win_util::WINVERSION_VISTA;
}

}  // namespace

/// What one switch works with. The item is a copy: the display object may pump messages, and a
/// press that comes in through them may rebuild the list.
struct DMSwitch::SwitchPlan {
  IMMonitor* object = nullptr;
  DMItem item;
  uint32_t previous_mode = 0;     // 0 when the current mode matched no item at opening
  bool had_current_item = false;  // the current mode matched an item at opening
  bool switch_needed = true;
  bool restore_needed = true;
};

BOOL DMSwitch::ApplySelection() {
  // The normal end of a pop-up in which nothing was moved.
  // Deliberate: list and pictures stay until the next opening.
  if (!force_apply_ && !SelectionChanged()) return 0;
  // Deliberate: asked when the pop-up closes, not when it opens: the user sees it, picks an item
  // and nothing happens. A refusal keeps the selection, so that a later stop tries the same switch
  // again.
  if (IsVideoPlaying()) return 0;
  // Forcing holds for one switch.
  const bool save_old = !force_apply_;
  force_apply_ = false;
  IMMonitor* const pobj = GetMultiMonitorObject();
  DCHECK(pobj != NULL);
  const DMItem* const selected = SelectedItem();
  if (pobj == nullptr || selected == nullptr) {
    EndSession();
    return 0;
  }
  SwitchPlan plan;
  plan.object = pobj;
  plan.item = *selected;
  PlanSwitch(save_old, &plan);
  BOOL result = 1;
  bool reached = false;
  if (!plan.had_current_item) reached = SwitchToPanelFirst(plan);
  if (plan.switch_needed && !reached) {
    if (plan.item.mode == IMMonitor::DM_EXTEND) return SwitchToExtend(plan);
    result = SwitchMode(plan);
  }
  if (result != 0) {
    RecordSwitch(plan);
    RestoreAfterSwitch(plan);
    AdjustRefreshRate();
  }
  // Deliberate: a failed switch comes here, too.
  StartNvidiaAudioRefresh(plan.object, plan.item.mode, plan.item.displays);
  EndSession();
  return result;
}

/// What is left, what has to be done, and the remedies that come before everything else.
void DMSwitch::PlanSwitch(bool save_old, SwitchPlan* plan) {
  plan->had_current_item = opened_.value < m_items.size();
  if (plan->had_current_item) {
    const DMItem current = m_items[opened_.value];
    plan->previous_mode = current.mode;
    const bool from_presentation = catalogue::IsPresentationType(current.presentation_type);
    const bool to_presentation = catalogue::IsPresentationType(plan->item.presentation_type);
    if (from_presentation && to_presentation) {
      // Deliberate: from one presentation to the other the mode stays and only the resolution
      // changes.
      plan->switch_needed = false;
      plan->restore_needed = false;
    }
    if (save_old && !from_presentation) SaveDisplaySettings(current.mode, current.displays);
  }
  if (SupportVeldTV4810Workaround() != 0) ApplyTV4810Workaround();
  opened_.value = selected_.value;
}

/// From a mode that no item stands for the way leads over the panel alone.
/// @return true when that is the item
bool DMSwitch::SwitchToPanelFirst(const SwitchPlan& plan) {
  // Deliberate: whatever the target is, and the result is not looked at even where this is the
  // whole switch.
  plan.object->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB);
  return plan.item.mode == IMMonitor::DM_SINGLE && plan.item.displays == IMMonitor::MD_NB;
}

/// The switch to extended desktop.
// Deliberate: its result is ignored, neither Ostrel.ini nor the last mode learns of it, and the
// NVIDIA refresh is not run.
BOOL DMSwitch::SwitchToExtend(const SwitchPlan& plan) {
  plan.object->EnableExtendModeOnDisplays(1, plan.item.displays & ~IMMonitor::MD_NB);
  AdjustRefreshRate();
  if (plan.object->ShouldResetDisplaySettingAfterSwtich() != 0 &&
      RestoreDisplaySettingsAfterSwitch() != 0) {
    // Deliberate: the wait comes before it is known whether anything is to be restored.
    WaitBeforeRestore();
    if (plan.restore_needed && MustWaitForQuiet(plan.object)) {
      RunDisplayChangeMonitor(plan.previous_mode);
    } else {
      RestoreSettingsForItem(plan.item);
    }
  }
  AdjustRefreshRate();
  EndSession();
  return 1;
}

/// The switch to every mode but extended desktop.
BOOL DMSwitch::SwitchMode(const SwitchPlan& plan) {
  if (SupportMonitorTestWorkaround() != 0 && monitor_test_workaround_ != nullptr) {
    monitor_test_workaround_->ChangeResolutionBeforeSwitch(plan.object);
  }
  BOOL result = ApplyProblemProjectorMode(plan.object, plan.item);
  if (result == 0) result = plan.object->SetNewDisplayMode(plan.item.mode, plan.item.displays);
  if (RetryWhenOperationFailed() != 0 && plan.object->GetVgaVendor() == kVendorIntel) {
    result = RetryOnIntel(plan, result);
  }
  return result;
}

/// The Intel driver may drop a switch it has taken.
// Deliberate: a switch that was reported as done is set a second time, too, when another mode is
// found.
BOOL DMSwitch::RetryOnIntel(const SwitchPlan& plan, BOOL result) {
  Sleep(RetryDelayTime());
  uint32_t mode = 0;
  uint32_t displays = 0;
  plan.object->GetCurrentDisplayMode(&mode, &displays);
  if (mode == plan.item.mode) return result;
  return plan.object->SetNewDisplayMode(plan.item.mode, plan.item.displays);
}

/// What stays of a switch that was made.
void DMSwitch::RecordSwitch(const SwitchPlan& plan) {
  AdjustRefreshRate();
  last_mode_ = plan.item.mode;
  last_displays_ = plan.item.displays;
  EnsureSettingsPath();
  WriteActiveDisplayMode(last_mode_, last_displays_, plan.item.presentation_type);
}

/// The resolution that goes with the mode now set.
// Deliberate: the first advanced mode restores no resolution, the second does.
void DMSwitch::RestoreAfterSwitch(const SwitchPlan& plan) {
  const BOOL should_reset = plan.object->ShouldResetDisplaySettingAfterSwtich();
  if (plan.item.mode == IMMonitor::DM_ADVANCED_P1 || should_reset == 0) return;
  if (RestoreDisplaySettingsAfterSwitch() == 0) return;
  if (plan.restore_needed) {
    WaitBeforeRestore();
    if (MustWaitForQuiet(plan.object)) {
      RunDisplayChangeMonitor(plan.previous_mode);
      return;
    }
  }
  RestoreSettingsForItem(plan.item);
}

void DMSwitch::RestoreSettingsForItem(const DMItem& item) {
  if (ApplyPresentationResolution(item.presentation_type) == 0) {
    RestoreDisplaySettings(item.mode, item.displays);
  }
}

void DMSwitch::AdjustRefreshRate() {
  if (intel_rr_workaround_ != nullptr) intel_rr_workaround_->AdjustRefreshRate();
}
