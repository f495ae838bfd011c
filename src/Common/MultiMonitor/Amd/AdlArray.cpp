#include "Common/MultiMonitor/Amd/AdlArray.h"

#include <cstdlib>

#include "Common/Logging.h"

void* WINAPI AllocateAdlBuffer(int size) {
  return size >= 0 ? std::malloc(static_cast<size_t>(size)) : nullptr;
}

void FreeAdlBuffer(void** lpBuffer) {
  DCHECK(lpBuffer != NULL);
  if (lpBuffer == nullptr) return;
  std::free(*lpBuffer);
  *lpBuffer = nullptr;
}
