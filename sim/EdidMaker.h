// Builds EDID base blocks as a monitor would send them: 128 bytes, valid header and checksum, the
// preferred timing as first descriptor, the name in a descriptor behind it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/Model.h"

namespace sim {

/// What a monitor says of itself.
struct EdidText {
  std::string
      name;  // up to 13 characters; 13 fill the field without a line feed, "" has no descriptor
  DisplayMode preferred;      // width, height and frequency of the first detailed timing
  std::string maker = "OST";  // three capital letters
  uint16_t product = 0x0101;
  bool preferred_bit = true;  // feature bit 0x02: the first detailed timing is the preferred one
};

std::vector<uint8_t> MakeEdid(const EdidText& text);
/// The common case: name and native mode.
std::vector<uint8_t> MakeEdid(const std::string& name, const DisplayMode& preferred);
/// Puts the checksum right after a byte was changed.
void FixEdidChecksum(std::vector<uint8_t>* edid);

}  // namespace sim
