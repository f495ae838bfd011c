#include "Common/cpu_id.h"

#include <intrin.h>

#include <string>

#include "Common/Logging.h"
#include "Common/Owners.h"
#include "Common/Win.h"

namespace {

constexpr wchar_t kProcessorKey[] = L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";

struct BrandName {
  const wchar_t* vendor;
  CPUBrand brand;
};
constexpr BrandName kBrandNames[] = {
    {L"GenuineIntel", kIntelCPU},
    {L"AuthenticAMD", kAmdCPU},
};

std::wstring ReadVendorIdentifier() {
  HKEY opened = nullptr;
  const LSTATUS rv = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kProcessorKey, 0, KEY_READ, &opened);
  DCHECK(rv == ERROR_SUCCESS);
  if (rv != ERROR_SUCCESS) return std::wstring();
  const UniqueKey key(opened);

  wchar_t buffer[256 / sizeof(wchar_t)] = {};
  // The last character stays free: a stored text need not end with a zero.
  DWORD size = sizeof(buffer) - sizeof(wchar_t);
  DWORD type = REG_NONE;
  const LSTATUS read = RegQueryValueExW(key.get(), L"VendorIdentifier", nullptr, &type,
                                        reinterpret_cast<BYTE*>(buffer), &size);
  return read == ERROR_SUCCESS && type == REG_SZ ? std::wstring(buffer) : std::wstring();
}

}  // namespace

CPUBrand GetCPUBrand() {
  const std::wstring vendor = ReadVendorIdentifier();
  for (const BrandName& row : kBrandNames) {
    if (vendor == row.vendor) return row.brand;
  }
  return kUnknownCPU;
}

uint8_t GetIntelCPUGeneration() {
  DCHECK(GetCPUBrand() == kIntelCPU);
  int registers[4] = {};  // EAX, EBX, ECX, EDX
  __cpuid(registers, 1);
  return IntelCPUGenerationFromSignature(static_cast<uint32_t>(registers[0]));
}
