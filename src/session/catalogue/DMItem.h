// One choice of the pop-up.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>

class GdiImage;

struct DMItem {
  uint32_t icon = 0;      // row of kIconFiles; kept as chosen, also when the picture was swapped
  uint32_t index = 0;     // position in the list, which also fixes where the picture is drawn
  uint32_t selected = 0;  // 1: highlighted
  uint32_t mode = 0;      // a DM_* value
  uint32_t is_presentation = 0;    // 1: a clone with a fixed resolution
  uint32_t presentation_type = 0;  // 0 ordinary, 32 for 800 by 600, 64 for 1024 by 768
  uint32_t displays = 0;           // mask of MD_* bits, or 0x40 for the wireless display
  boost::shared_ptr<GdiImage> image;
};
