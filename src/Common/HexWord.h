#pragma once

#include <cstdint>

/// A hexadecimal word in upper or lower case. Characters that are no digits are skipped, and a
/// value that does not fit wraps in 16 bits. 0 for a null or empty text.
uint16_t ParseHexWord(const char* text);
