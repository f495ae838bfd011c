// Where everything stands in the pop-up, in pixels of its client area, and where the pop-up stands
// on a screen.
#pragma once

#include <cstdint>

namespace popup {

constexpr int32_t kItemPitch = 90;
constexpr int32_t kMargin = 10;
constexpr int32_t kPictureSize = 80;
constexpr int32_t kHeight = 100;

/// Width of window and bitmap for `item_count` items.
constexpr int32_t Width(uint32_t item_count) {
  return static_cast<int32_t>(item_count) * kItemPitch + kMargin;
}

/// Left edge of the picture of the item at `index`.
constexpr int32_t PictureLeft(uint32_t index) {
  return static_cast<int32_t>(index) * kItemPitch + kMargin;
}

/// Pixel columns between the two ends of the background; may be negative when the ends are wider
/// than the window.
constexpr int32_t MiddleWidth(uint32_t item_count, uint32_t left_width, uint32_t right_width) {
  return Width(item_count) - static_cast<int32_t>(left_width) - static_cast<int32_t>(right_width);
}

struct Point {
  int32_t x = 0;
  int32_t y = 0;
};

struct Rect {
  int32_t left = 0;
  int32_t top = 0;
  int32_t right = 0;
  int32_t bottom = 0;
};

/// True when the point lies inside; the right and bottom edges do not belong to a rectangle.
constexpr bool Contains(const Rect& rect, Point point) {
  return point.x >= rect.left && point.x < rect.right && point.y >= rect.top &&
         point.y < rect.bottom;
}

/// The point in the two signed halves of a mouse message's lParam.
constexpr Point PointOfMessage(uint32_t packed) {
  return {static_cast<int16_t>(packed & 0xFFFF), static_cast<int16_t>(packed >> 16)};
}

/// Top left corner that centres a window of `width` by `height` on `centre` and keeps it inside
/// `area`; where it does not fit, its top left corner stays visible.
constexpr Point CentredIn(const Rect& centre, const Rect& area, int32_t width, int32_t height) {
  Point corner = {(centre.left + centre.right) / 2 - width / 2,
                  (centre.top + centre.bottom) / 2 - height / 2};
  if (corner.x + width > area.right) corner.x = area.right - width;
  if (corner.x < area.left) corner.x = area.left;
  if (corner.y + height > area.bottom) corner.y = area.bottom - height;
  if (corner.y < area.top) corner.y = area.top;
  return corner;
}

}  // namespace popup

/// Where a mouse hits an item: the area of its picture.
struct ItemRect {
  uint32_t index = 0;
  int32_t left = 0;
  int32_t top = 0;
  int32_t right = 0;
  int32_t bottom = 0;
};

constexpr ItemRect MakeItemRect(uint32_t index) {
  const int32_t left = popup::PictureLeft(index);
  return {index, left, popup::kMargin, left + popup::kPictureSize,
          popup::kMargin + popup::kPictureSize};
}
