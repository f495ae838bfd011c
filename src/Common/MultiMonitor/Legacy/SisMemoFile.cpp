#include "Common/MultiMonitor/Legacy/SisMemoFile.h"

#include "Common/Win.h"

const SisMemoKeys kSisLcdKeys = {"LCD Dirty",
                                 {{"LCD Width", &SisSwitchRecord::width},
                                  {"LCD Height", &SisSwitchRecord::height},
                                  {"LCD Color Depth", &SisSwitchRecord::color_depth},
                                  {"LCD Frequency", &SisSwitchRecord::frequency}}};

const SisMemoKeys kSisCrtKeys = {"CRT Dirty",
                                 {{"CRT Width", &SisSwitchRecord::width},
                                  {"CRT Height", &SisSwitchRecord::height},
                                  {"CRT Color Depth", &SisSwitchRecord::color_depth},
                                  {"CRT Frequency", &SisSwitchRecord::frequency}}};

std::string FindSisMemoFile() {
  char executable[MAX_PATH] = {};
  const DWORD length = GetModuleFileNameA(nullptr, executable, MAX_PATH);
  if (length >= MAX_PATH) return {};
  std::string path(executable, length);
  const size_t backslash = path.rfind('\\');
  if (backslash == std::string::npos) return {};  // nothing was told
  path.resize(backslash + 1);
  return path + "SisDispInfo.ini";
}

void ReadSisMemo(const std::string& path, const std::string& section, const SisMemoKeys& keys,
                 SisDisplayMemo* memo) {
  if (path.empty() || section.empty()) return;
  if (GetPrivateProfileIntA(section.c_str(), keys.dirty, 0, path.c_str()) == 0) return;
  for (const SisMemoKeys::Value& value : keys.values) {
    memo->record.*value.field = GetPrivateProfileIntA(section.c_str(), value.key, 0, path.c_str());
  }
  memo->dirty = true;
}

void WriteSisMemo(const std::string& path, const std::string& section, const SisMemoKeys& keys,
                  const SisDisplayMemo& memo) {
  if (!memo.dirty || path.empty() || section.empty()) return;
  for (const SisMemoKeys::Value& value : keys.values) {
    const std::string number = std::to_string(memo.record.*value.field);
    WritePrivateProfileStringA(section.c_str(), value.key, number.c_str(), path.c_str());
  }
  WritePrivateProfileStringA(section.c_str(), keys.dirty, "1", path.c_str());
}
