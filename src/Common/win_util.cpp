#include "Common/win_util.h"

#include "Common/Win.h"

namespace win_util {

namespace {

constexpr int kNotAsked = -1;
// Two threads may both work it out, with the same result.
int g_version = kNotAsked;

WinVersion AskWinVersion() {
  OSVERSIONINFOEXW info = {};
  info.dwOSVersionInfoSize = sizeof(info);
#if defined(_MSC_VER)
#pragma warning( \
    suppress : 4996)  // the version as the host's manifest lets it be seen is what is wanted
#endif
  GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info));
  return ClassifyWinVersion(info.dwMajorVersion, info.dwMinorVersion, info.wProductType);
}

}  // namespace

WinVersion GetWinVersion() {
  if (g_version == kNotAsked) g_version = AskWinVersion();
  return static_cast<WinVersion>(g_version);
}

bool IsXPOrServer2003() {
  const WinVersion version = GetWinVersion();
  return version == WINVERSION_XP || version == WINVERSION_SERVER_2003;
}

}  // namespace win_util
