#include "Common/HexWord.h"

namespace {

// -1 for a character that is no digit.
int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

}  // namespace

uint16_t ParseHexWord(const char* text) {
  if (text == nullptr) return 0;
  uint16_t value = 0;
  for (; *text != '\0'; ++text) {
    const int digit = HexDigit(*text);
    // Deliberate: what is no digit is passed over with the value kept, and overflow wraps.
    if (digit >= 0) value = static_cast<uint16_t>(value * 16 + digit);
  }
  return value;
}
