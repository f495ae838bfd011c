// The identity of the processor.
#pragma once

#include <cstdint>

enum CPUBrand { kUnknownCPU = 0, kIntelCPU = 1, kAmdCPU = 2 };

/// The vendor of the first processor, read from the registry at every call.
CPUBrand GetCPUBrand();

/// Row of the processor in the table of known Intel processors, or 255, which counts higher than
/// every row.
/// @note Intel processors only
uint8_t GetIntelCPUGeneration();

/// The same from what CPUID leaf 1 gives in EAX.
uint8_t IntelCPUGenerationFromSignature(uint32_t eax);
