#include <cstddef>

#include "Common/cpu_id.h"

namespace {

// The fields of CPUID leaf 1. Only four bits of the extended family are looked at.
struct KnownProcessor {
  uint8_t model;
  uint8_t family;
  uint8_t extended_model;
  uint8_t extended_family;
};
// The row is the generation.
constexpr KnownProcessor kKnownProcessors[] = {
    {10, 6, 2, 0},
    {10, 6, 3, 0},
};

// Deliberate: higher than every row, so that an unknown processor passes a test for "at least".
constexpr uint8_t kUnknownGeneration = 255;

uint8_t Nibble(uint32_t value, unsigned shift) {
  return static_cast<uint8_t>((value >> shift) & 0xF);
}

}  // namespace

uint8_t IntelCPUGenerationFromSignature(uint32_t eax) {
  uint8_t row = 0;
  for (const KnownProcessor& known : kKnownProcessors) {
    if (known.model == Nibble(eax, 4) && known.family == Nibble(eax, 8) &&
        known.extended_model == Nibble(eax, 16) && known.extended_family == Nibble(eax, 20)) {
      return row;
    }
    ++row;
  }
  return kUnknownGeneration;
}
