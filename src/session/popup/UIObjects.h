// The brush and the two pens that a session owns. Nothing draws with them: they are part of a
// session's life, and a pop-up is refused when they cannot be made.
#pragma once

#include <memory>

#include "Common/Win.h"

class GdiPen;

struct UIObjects {
  UIObjects();
  ~UIObjects();
  UIObjects(const UIObjects&) = delete;
  UIObjects& operator=(const UIObjects&) = delete;

  HBRUSH brush = nullptr;             // colour 0xE0E0E0
  std::unique_ptr<GdiPen> dark_pen;   // colour 0xFF808080, two units wide
  std::unique_ptr<GdiPen> light_pen;  // colour 0xFFE0E0E0, two units wide
};

/// Makes both pens anew, and the brush if there is none. @return 0 when the brush was refused;
/// nothing is then held
BOOL CreateUIObjects(UIObjects& ui_objects);

void ReleaseUIObjects(UIObjects& ui_objects);
