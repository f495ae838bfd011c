#include "sim/TempFolder.h"

#include <stdexcept>

#include "sim/MachineState.h"

namespace sim {

void KeepTempFolder(Machine& machine, const std::wstring& folder) {
  wchar_t path[MAX_PATH] = {};
  const DWORD length = GetFullPathNameW(folder.c_str(), MAX_PATH, path, nullptr);
  if (length == 0 || length >= MAX_PATH) {
    throw std::runtime_error("no folder can be called " + Narrow(folder));
  }
  CreateDirectoryW(path, nullptr);
  const DWORD attributes = GetFileAttributesW(path);
  const bool is_folder =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (!is_folder) throw std::runtime_error("there is no folder " + Narrow(folder));
  std::wstring kept = path;
  while (!kept.empty() && kept.back() == L'\\') kept.pop_back();
  machine.state().host.temp_folder = kept;
}

}  // namespace sim
