#include "session/catalogue/ItemRules.h"

#include "Common/MultiMonitor/DisplayNumbers.h"
#include "session/catalogue/ItemTables.h"
#include "session/catalogue/SIndex.h"

namespace catalogue {

bool IsAdvancedMode(uint32_t mode) {
  return mode == DisplayNumbers::DM_ADVANCED_P1 || mode == DisplayNumbers::DM_ADVANCED_P2;
}

bool IsConnected(uint32_t mask, uint32_t connected) { return (mask & ~connected) == 0; }

bool IsDigitalClone(uint32_t mode, uint32_t mask) {
  return mode == DisplayNumbers::DM_CLONE &&
         (mask & (DisplayNumbers::MD_HDMI | DisplayNumbers::MD_DVI)) != 0;
}

const wchar_t* AdvancedPictureFile(uint32_t mode, uint32_t connected) {
  for (const AdvancedPicture& row : kAdvancedPictures) {
    if ((connected & kAdvancedPictureMask) != row.connected) continue;
    return mode == DisplayNumbers::DM_ADVANCED_P1 ? row.first : row.second;
  }
  return nullptr;
}

uint32_t TelevisionPictureRow(uint32_t icon) {
  for (const PictureSwap& swap : kTelevisionPictures) {
    if (swap.given == icon) return swap.picture;
  }
  return icon;
}

bool IsModeUsable(uint32_t mode, uint32_t displays, uint32_t connected, uint32_t connected_count) {
  if (mode == 0 || displays == 0) return false;
  // Deliberate: an advanced mode is believed without looking at its displays.
  if (IsAdvancedMode(mode)) return true;
  const uint32_t count = CountBits(displays & 0xFFFF);
  if (mode == DisplayNumbers::DM_SINGLE && count < 1) return false;
  if ((mode == DisplayNumbers::DM_CLONE || mode == DisplayNumbers::DM_EXTEND) && count < 2) {
    return false;
  }
  if (connected_count == 0 || connected == 0) return false;
  if (!IsConnected(displays, connected)) return false;
  // Deliberate: the count is held against the mode's own number, and for clone only.
  return mode != DisplayNumbers::DM_CLONE || connected_count >= mode;
}

uint32_t SelectAdvancedItem(uint32_t mode, uint32_t displays, uint32_t position,
                            std::vector<DMItem>* items) {
  const bool enough_displays = CountBits(displays) >= 3;
  uint32_t counter = 0;
  for (DMItem& item : *items) {
    item.selected = IsAdvancedMode(item.mode) && item.mode == mode && enough_displays ? 1 : 0;
    if (item.selected != 0) position = counter;
    // Deliberate: the counter starts over behind the last position that keys can reach.
    counter = counter == SIndex::MAX ? 0 : counter + 1;
  }
  return position;
}

uint32_t SelectMatchingItem(uint32_t mode, uint32_t displays, uint32_t presentation_type,
                            uint32_t position, std::vector<DMItem>* items) {
  // Deliberate: the last match gives the position, and every match keeps its flag.
  uint32_t counter = 0;
  for (DMItem& item : *items) {
    const bool equal = item.mode == mode && item.displays == displays &&
                       item.presentation_type == presentation_type;
    const bool both_extend =
        item.mode == DisplayNumbers::DM_EXTEND && mode == DisplayNumbers::DM_EXTEND;
    const bool advanced = IsAdvancedMode(mode) && item.mode == mode;
    if (equal || advanced || (both_extend && item.displays == displays)) {
      item.selected = 1;
      position = counter;
    } else if (!both_extend) {
      // Deliberate: extended desktop on other displays keeps its flag as it was.
      item.selected = 0;
    }
    ++counter;
  }
  return position;
}

uint32_t SelectAnyExtendItem(uint32_t position, std::vector<DMItem>* items) {
  for (DMItem& item : *items) {
    if (item.mode != DisplayNumbers::DM_EXTEND) continue;
    item.selected = 1;
    position = item.index;
  }
  return position;
}

}  // namespace catalogue
