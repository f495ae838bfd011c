// DMSwitch: where the highlight is and how it moves.
#include "session/DMSwitch.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "session/catalogue/ItemRules.h"

namespace {

constexpr UINT kTouchPeriod = 1500;

// Deliberate: the last point that HitTest saw outlives the session, so that a mouse which has not
// moved since the last pop-up does not touch the next one.
popup::Point g_lastHitPoint;

}  // namespace

BOOL DMSwitch::SelectCurrentItem(uint32_t mode, uint32_t displays) {
  selected_.value = SIndex::BadValue;
  DCHECK(!m_items.empty());
  if (m_items.empty()) return 0;
  if (catalogue::IsAdvancedMode(mode)) {
    selected_.value = catalogue::SelectAdvancedItem(mode, displays, selected_.value, &m_items);
    return 1;
  }
  EnsureSettingsPath();
  const uint32_t remembered = ReadActivePresentationType();
  if (catalogue::IsPresentationType(remembered)) {
    selected_.value =
        catalogue::SelectMatchingItem(mode, displays, remembered, selected_.value, &m_items);
    // Deliberate: a remembered presentation that fits no item is forgotten here, at opening.
    if (selected_.value == SIndex::BadValue) WriteActiveDisplayMode(mode, displays, 0);
  }
  if (selected_.value == SIndex::BadValue) {
    selected_.value = catalogue::SelectMatchingItem(mode, displays, 0, selected_.value, &m_items);
  }
  // The question about DisplayLink comes last: it enumerates the adapters.
  if (selected_.value == SIndex::BadValue && mode == IMMonitor::DM_EXTEND &&
      IsDisplayLinkWorkaroundActive()) {
    selected_.value = catalogue::SelectAnyExtendItem(selected_.value, &m_items);
  }
  return 1;
}

void DMSwitch::MoveSelection(bool forward) {
  RestartTimer(kTouchPeriod);
  // Deliberate: a highlight that only the mouse can reach keeps its flag when the keys leave it.
  if (IsReachable(selected_.value)) FlagItem(selected_.value, 0);
  selected_.value = NextPosition(selected_, forward);
  FlagItem(selected_.value, 1);
  RedrawPopup();
}

void DMSwitch::SelectItem(uint32_t icon_index) {
  DCHECK(icon_index != SIndex::BadValue);
  DCHECK(icon_index <= SIndex::MAX);
  // Deliberate: the timer restarts also when nothing changes.
  RestartTimer(kTouchPeriod);
  if (selected_.value == icon_index) return;
  if (IsReachable(selected_.value)) FlagItem(selected_.value, 0);
  selected_.value = icon_index;
  FlagItem(selected_.value, 1);
  RedrawPopup();
}

void DMSwitch::HitTest(LPARAM packed) {
  const popup::Point point = popup::PointOfMessage(static_cast<uint32_t>(packed));
  const ItemRect* hit = nullptr;
  for (const ItemRect& rect : item_rects_) {
    if (!popup::Contains({rect.left, rect.top, rect.right, rect.bottom}, point)) continue;
    hit = &rect;
    break;
  }
  // Deliberate: a mouse that rests does not restart the timer either.
  if (point.x == g_lastHitPoint.x && point.y == g_lastHitPoint.y) return;
  g_lastHitPoint = point;
  if (hit != nullptr) SelectItem(hit->index);
}

void DMSwitch::FlagItem(uint32_t position, uint32_t flag) {
  if (position < m_items.size()) m_items[position].selected = flag;
}

void DMSwitch::RestartTimer(UINT period) {
  KillTimer(dialog_, kPopupTimer);
  SetTimer(dialog_, kPopupTimer, period, nullptr);
}

void DMSwitch::RedrawPopup() {
  UpdatePopupPicture(dialog_);
  // Deliberate: a layered window shows nothing of this, and it stays all the same.
  RECT client = {};
  GetClientRect(dialog_, &client);
  InvalidateRect(dialog_, &client, TRUE);
  UpdateWindow(dialog_);
}
