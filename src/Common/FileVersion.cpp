#include "Common/FileVersion.h"

#include <cstdio>
#include <vector>

#include "Common/Win.h"

static_assert(sizeof(VS_FIXEDFILEINFO) == 52, "the length that the fixed block must have");

bool GetFileVersion(const wchar_t* path, std::string* text) {
  if (path == nullptr || text == nullptr) return false;
  DWORD ignored = 0;
  const DWORD size = GetFileVersionInfoSizeW(path, &ignored);
  if (size == 0) return false;
  std::vector<uint8_t> block(size);
  if (!GetFileVersionInfoW(path, 0, size, block.data())) return false;
  void* fixed_block = nullptr;
  UINT fixed_size = 0;
  if (!VerQueryValueW(block.data(), L"\\", &fixed_block, &fixed_size)) return false;
  if (fixed_block == nullptr || fixed_size != sizeof(VS_FIXEDFILEINFO)) return false;

  const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(fixed_block);
  char formatted[32];  // four numbers of at most five digits
  std::snprintf(formatted, sizeof(formatted), "%d.%d.%d.%d", HIWORD(fixed->dwFileVersionMS),
                LOWORD(fixed->dwFileVersionMS), HIWORD(fixed->dwFileVersionLS),
                LOWORD(fixed->dwFileVersionLS));
  *text = formatted;
  return true;
}
