// What the pop-up must look like on the glass, put together from the picture files themselves.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

constexpr uint32_t kPopupHeight = 100;
constexpr uint32_t kItemPitch = 90;
constexpr uint32_t kMargin = 10;

struct ExpectedPopup {
  std::vector<std::string> pictures;  // files of OstrelRes, one an item
  int highlighted = -1;               // item behind which the frame stands; -1 for none
};

uint32_t PopupWidth(const ExpectedPopup& popup);

/// The pop-up over a desktop of one colour, 0xRRGGBB row by row from the top.
/// @throws std::runtime_error when a picture cannot be read
std::vector<uint32_t> DrawOverDesktop(const ExpectedPopup& popup, uint32_t desktop_colour);
