#include "session/popup/UIObjects.h"

#include "session/popup/GdiObjects.h"

namespace {

constexpr COLORREF kBrushColour = 0xE0E0E0;
constexpr uint32_t kDarkColour = 0xFF808080;
constexpr uint32_t kLightColour = 0xFFE0E0E0;
constexpr float kPenWidth = 2.0F;

}  // namespace

UIObjects::UIObjects() = default;

UIObjects::~UIObjects() { ReleaseUIObjects(*this); }

// Deliberate: nothing draws with these, and still a pop-up is refused without the brush.
BOOL CreateUIObjects(UIObjects& ui_objects) {
  ui_objects.dark_pen.reset();
  ui_objects.dark_pen = std::make_unique<GdiPen>(kDarkColour, kPenWidth);
  ui_objects.light_pen.reset();
  ui_objects.light_pen = std::make_unique<GdiPen>(kLightColour, kPenWidth);
  if (ui_objects.brush != nullptr) return 1;
  ui_objects.brush = CreateSolidBrush(kBrushColour);
  if (ui_objects.brush != nullptr) return 1;
  ui_objects.dark_pen.reset();
  ui_objects.light_pen.reset();
  return 0;
}

void ReleaseUIObjects(UIObjects& ui_objects) {
  if (ui_objects.brush != nullptr) DeleteObject(ui_objects.brush);
  ui_objects.brush = nullptr;
  ui_objects.dark_pen.reset();
  ui_objects.light_pen.reset();
}
