#include "Common/MultiMonitor/Amd/AtiMMImplDisplays.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayDevices.h"
#include "Common/Owners.h"
#include "Common/Win.h"

#include <algorithm>

namespace {

constexpr uint32_t kNoAdapter = 0xFFFFFFFF;

// Whether the device can be drawn on.
bool HasContext(const char* device_name) {
  return UniqueContext(CreateDCA(nullptr, device_name, nullptr, nullptr)).IsValid();
}

// What a display is, by its kind, and where that says nothing by its type.
uint32_t ClassifyDisplay(VAtiLib* lib, uint32_t index) {
  const uint32_t display = DisplayOfAtiKind(ReadAtiDeviceKind(lib, index));
  if (display != 0) return display;
  uint32_t type = 0;
  return ReadAtiType(lib, index, &type) ? DisplayOfAtiDevice(0, type) : 0;
}

}  // namespace

uint32_t GetAtiAdapterIndex(VAtiLib* lib) {
  DCHECK(lib != NULL);
  if (lib == nullptr || lib->GetAdapterID == nullptr) return 0;
  DISPLAY_DEVICEA device = {};
  for (DWORD i = 0; ReadDisplayDevice(i, &device); ++i) {
    if (!IsAttached(device.StateFlags) || !HasContext(device.DeviceName)) continue;
    uint32_t id = 0;
    if (lib->GetAdapterID(i, &id) != 0 || id == 0) continue;
    return id == kNoAdapter ? 0 : i;
  }
  return 0;
}

bool CanClassifyAtiDisplays(const VAtiLib* lib) {
  return lib->DisplayGetDeviceConfig != nullptr && lib->EnumDisplays != nullptr;
}

bool ReadAtiType(VAtiLib* lib, uint32_t index, uint32_t* type) {
  return lib->EnumDisplays != nullptr &&
         lib->EnumDisplays(GetAtiAdapterIndex(lib), index, type) != 0;
}

uint32_t ReadAtiDeviceKind(VAtiLib* lib, uint32_t index) {
  if (lib->DisplayGetDeviceConfig == nullptr) return 0;
  AtiDeviceConfig config = {};
  config.size = sizeof(config);
  lib->DisplayGetDeviceConfig(GetAtiAdapterIndex(lib), index, &config);
  return config.kind;
}

int32_t ReadAtiActive(VAtiLib* lib, AtiConfigRecord* record) {
  *record = MakeAtiConfigRecord();
  return lib->GetActiveDisplays(GetAtiAdapterIndex(lib), record);
}

uint32_t CountAtiVectors(const AtiConfigRecord& record) {
  return std::min(static_cast<uint32_t>(std::max(record.vector_count, 0)), kAtiDisplays);
}

bool FindAtiDisplay(VAtiLib* lib, uint32_t imm_display, uint32_t* display_index,
                    uint32_t* display_vector) {
  DCHECK(lib != NULL);
  DCHECK(display_index != NULL);
  DCHECK(display_vector != NULL);
  if (lib == nullptr || display_index == nullptr || display_vector == nullptr) return false;
  if (!CanClassifyAtiDisplays(lib) || lib->GetActiveDisplays == nullptr) return false;
  AtiConfigRecord active;
  if (ReadAtiActive(lib, &active) != 0) return false;
  for (uint32_t word = 0; word < CountAtiVectors(active); ++word) {
    const uint32_t vector = active.vectors[word];
    for (uint32_t i = 0; i < kAtiDisplays; ++i) {
      if ((vector >> i & 1) == 0) continue;
      const uint32_t display = ClassifyDisplay(lib, i);
      if (display == 0 || display != imm_display) continue;
      *display_index = i;
      *display_vector = vector;
      return true;
    }
  }
  return false;
}

uint32_t ReadAtiTargetType(VAtiLib* lib) {
  DCHECK(lib != NULL);
  if (lib == nullptr || lib->GetConnectedDisplays == nullptr) return 0;
  uint32_t vector = 0;
  if (lib->GetConnectedDisplays(GetAtiAdapterIndex(lib), &vector) != 0 || vector == 0) return 0;
  uint32_t types[kAtiDisplays] = {};
  uint32_t count = 0;
  for (uint32_t i = 0; i < kAtiDisplays; ++i) {
    if ((vector >> i & 1) == 0) continue;
    if (!ReadAtiType(lib, i, &types[count])) break;
    ++count;
  }
  return AtiTargetType(types, count);
}
