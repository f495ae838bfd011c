#include "Common/MultiMonitor/Amd/AdlSelection.h"

#include <cstdint>
#include <string>

#include "Common/FileVersion.h"
#include "Common/Text.h"
#include "Common/Win.h"

// After windows.h.
#include <shlobj.h>
#include <shlwapi.h>

namespace {

constexpr char kAdlLibrary[] = "atiadlxx.dll";
constexpr char kUsualSystemFolder[] = "C:\\Windows\\System32";
static_assert(CSIDL_SYSTEM == 37, "the folder of the system's libraries");

// The first build that is used.
constexpr uint16_t kOldestBuild = 1050;

// Deliberate: of the versions 5.x all but 5.0 are out, that is Windows XP and Server 2003; Windows
// 2000 is not.
bool IsWindowsTooOld() {
  OSVERSIONINFOA version = {};
  version.dwOSVersionInfoSize = sizeof(version);
#ifdef _MSC_VER
#pragma warning(suppress : 4996)  // what the host's manifest lets it say is what is wanted
#endif
  GetVersionExA(&version);
  return version.dwMajorVersion == 5 && version.dwMinorVersion != 0;
}

/// @return false when there is no such file
bool FindAdlLibrary(std::string* path) {
  char folder[MAX_PATH] = {};
  const bool known = SHGetSpecialFolderPathA(nullptr, folder, CSIDL_SYSTEM, FALSE) != FALSE;
  char combined[MAX_PATH] = {};
  if (PathCombineA(combined, known ? folder : kUsualSystemFolder, kAdlLibrary) == nullptr) {
    return false;
  }
  if (!PathFileExistsA(combined)) return false;
  *path = combined;
  return true;
}

}  // namespace

bool IsAdlAcceptable() {
  if (IsWindowsTooOld()) return false;
  std::string path;
  if (!FindAdlLibrary(&path)) return false;
  std::string text;
  if (!GetFileVersion(WideFromNarrow(path).c_str(), &text)) return false;
  uint16_t numbers[4] = {};
  if (!ParseVersion(text, &numbers[0], &numbers[1], &numbers[2], &numbers[3])) return false;
  // Deliberate: the three numbers in front of the build are not looked at.
  return numbers[3] >= kOldestBuild;
}
