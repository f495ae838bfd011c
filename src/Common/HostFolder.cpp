#include "Common/HostFolder.h"

#include "Common/Win.h"

#include <shlwapi.h>

bool GetHostFolder(std::wstring* folder) {
  wchar_t path[256] = {};
  // The last character stays zero: a path cut short is not terminated on every Windows.
  if (GetModuleFileNameW(nullptr, path, 256) == 0) return false;
  path[255] = L'\0';
  if (!PathRemoveFileSpecW(path)) return false;
  *folder = path;
  return true;
}
