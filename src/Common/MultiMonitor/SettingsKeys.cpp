#include "Common/MultiMonitor/SettingsKeys.h"

#include "Common/Win.h"

namespace {

std::string& PathStorage() {
  static std::string path;
  return path;
}

}  // namespace

void EnsureSettingsPath() {
  std::string& path = PathStorage();
  if (!path.empty()) return;
  char folder[MAX_PATH] = {};
  const DWORD length = GetTempPathA(MAX_PATH, folder);
  if (length == 0 || length >= MAX_PATH) return;
  path = std::string(folder) + "Ostrel.ini";
}

const std::string& SettingsPath() { return PathStorage(); }

std::string MakeSettingsSection(uint32_t mode, uint32_t displays, const std::string& signature) {
  // Deliberate: without a signature the section ends with the blank behind the bar, and serves
  // every set of nameless monitors.
  return std::to_string(static_cast<int32_t>(mode)) + "," +
         std::to_string(static_cast<int32_t>(displays)) + " | " + signature;
}

SettingsKey MakeSettingsKeyForDisplays(uint32_t mode, uint32_t displays) {
  return {mode, displays, MakeSettingsSection(mode, displays, std::string()), std::string()};
}
