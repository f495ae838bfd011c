// The Windows version as one ordered number.
#pragma once

#include <cstdint>

namespace win_util {

/// Ordered: "later than Vista" compares the numbers. A server of version 6.x is WINVERSION_2008
/// whatever its x.
enum WinVersion {
  WINVERSION_PRE_2000 = 0,
  WINVERSION_2000 = 1,
  WINVERSION_XP = 2,
  WINVERSION_SERVER_2003 = 3,
  WINVERSION_VISTA = 4,
  WINVERSION_2008 = 5,
  WINVERSION_WIN7 = 6,
  WINVERSION_WIN8 = 7,
  WINVERSION_LATER = 8,
};

/// What GetVersionEx says, which is what the host's manifest lets it say. Worked out at the first
/// call and then kept.
WinVersion GetWinVersion();

/// Windows XP or Server 2003: major version 5 with a minor version above 0.
bool IsXPOrServer2003();

/// The value for a version number and product type (1 is a workstation).
WinVersion ClassifyWinVersion(uint32_t major, uint32_t minor, uint8_t product_type);

}  // namespace win_util
