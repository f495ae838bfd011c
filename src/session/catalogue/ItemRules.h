// The decisions about items that need nothing but numbers: which candidates fit, which picture they
// take, and which item stands for the current mode.
#pragma once

#include <cstdint>
#include <vector>

#include "Common/MultiMonitor/PresentationTypes.h"
#include "session/catalogue/DMItem.h"

namespace catalogue {

/// True for the two modes that spread the displays of two adapters.
bool IsAdvancedMode(uint32_t mode);

using ::IsPresentationType;

/// True when every display of `mask` is connected.
bool IsConnected(uint32_t mask, uint32_t connected);

/// True for a clone that a discrete adapter may be unable to make: the panel hangs on the other
/// one.
bool IsDigitalClone(uint32_t mode, uint32_t mask);

/// The picture of an advanced mode for what is connected; null when its row's picture is to be
/// taken.
const wchar_t* AdvancedPictureFile(uint32_t mode, uint32_t connected);

/// The row of kIconFiles whose picture is shown for `icon` where HDMI and DVI are drawn as
/// television.
uint32_t TelevisionPictureRow(uint32_t icon);

/// True when (mode, displays), as found at opening, may count as the last successful switch.
bool IsModeUsable(uint32_t mode, uint32_t displays, uint32_t connected, uint32_t connected_count);

/// Flags the items of an advanced mode and clears all others.
/// @return the position of the last match, or `position` when none matches
uint32_t SelectAdvancedItem(uint32_t mode, uint32_t displays, uint32_t position,
                            std::vector<DMItem>* items);

/// Flags the items that stand for (mode, displays, presentation_type) and clears the others.
/// @return the position of the last match, or `position` when none matches
uint32_t SelectMatchingItem(uint32_t mode, uint32_t displays, uint32_t presentation_type,
                            uint32_t position, std::vector<DMItem>* items);

/// Flags every item of extended desktop, whatever its displays.
/// @return the `index` of the last one, or `position` when there is none
uint32_t SelectAnyExtendItem(uint32_t position, std::vector<DMItem>* items);

}  // namespace catalogue
