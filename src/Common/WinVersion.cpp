#include "Common/win_util.h"

namespace win_util {

namespace {

constexpr uint8_t kWorkstation = 1;

WinVersion ClassifyVersion5(uint32_t minor) {
  if (minor == 0) return WINVERSION_2000;
  return minor == 1 ? WINVERSION_XP : WINVERSION_SERVER_2003;
}

WinVersion ClassifyVersion6(uint32_t minor, uint8_t product_type) {
  // Deliberate: a server of version 6.1 counts as 2008, below Windows 7.
  if (product_type != kWorkstation) return WINVERSION_2008;
  if (minor == 0) return WINVERSION_VISTA;
  if (minor == 1) return WINVERSION_WIN7;
  return minor == 2 ? WINVERSION_WIN8 : WINVERSION_LATER;
}

}  // namespace

WinVersion ClassifyWinVersion(uint32_t major, uint32_t minor, uint8_t product_type) {
  if (major < 5) return WINVERSION_PRE_2000;
  if (major == 5) return ClassifyVersion5(minor);
  if (major == 6) return ClassifyVersion6(minor, product_type);
  return WINVERSION_LATER;
}

}  // namespace win_util
