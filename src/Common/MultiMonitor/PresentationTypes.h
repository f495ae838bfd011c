// The presentation item types, which some calls take in a mode's place.
#pragma once

#include <cstdint>

/// Whether a type is a presentation: 32 at 800 by 600, 64 at 1024 by 768.
constexpr bool IsPresentationType(uint32_t type) { return type == 32 || type == 64; }
