#include "Common/LoadDLL.h"

#include <cstring>

LoadDLL::~LoadDLL() {
  if (module_ != nullptr) FreeLibrary(module_);
}

BOOL LoadDLL::Bind(const char* file_name, const Entry* entries, size_t count) {
  if (module_ != nullptr) FreeLibrary(module_);
  module_ = file_name != nullptr ? LoadLibraryA(file_name) : nullptr;
  if (module_ == nullptr) return FALSE;

  BOOL all_found = TRUE;
  for (size_t i = 0; i < count; ++i) {
    const FARPROC address = GetProcAddress(module_, entries[i].name);
    // Copied as bytes: the slot has a function type of its own.
    std::memcpy(entries[i].slot, &address, sizeof(address));
    if (address == nullptr && entries[i].required) all_found = FALSE;
  }
  return all_found;
}
