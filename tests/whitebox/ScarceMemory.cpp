#include "tests/whitebox/ScarceMemory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

uint32_t g_piecesLeft = 0;  // up to the one that is refused, which counts; 0 when none is

}  // namespace

bool RefuseMemory(uint32_t nth) {
  const bool still_to_come = g_piecesLeft != 0;
  g_piecesLeft = nth;
  return still_to_come;
}

// In place of the language's own, for this library alone; array forms end here as well.
void* operator new(size_t size) {
  if (g_piecesLeft != 0 && --g_piecesLeft == 0) throw std::bad_alloc();
  void* const memory = std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, size_t) noexcept { std::free(memory); }
