#include "tests/whitebox/ScarceMemory.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

uint32_t g_piecesLeft = 0;  // up to the one that is refused, which counts; 0 when none is
std::atomic<int64_t> g_piecesOut{0};

void Free(void* memory) {
  if (memory != nullptr) --g_piecesOut;
  std::free(memory);
}

}  // namespace

bool RefuseMemory(uint32_t nth) {
  const bool still_to_come = g_piecesLeft != 0;
  g_piecesLeft = nth;
  return still_to_come;
}

int64_t PiecesOut() { return g_piecesOut; }

// In place of the language's own, for this library alone; array forms end here as well.
void* operator new(size_t size) {
  if (g_piecesLeft != 0 && --g_piecesLeft == 0) throw std::bad_alloc();
  void* const memory = std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  ++g_piecesOut;
  return memory;
}

void operator delete(void* memory) noexcept { Free(memory); }

void operator delete(void* memory, size_t) noexcept { Free(memory); }
