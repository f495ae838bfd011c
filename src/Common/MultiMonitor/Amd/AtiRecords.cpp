#include "Common/MultiMonitor/Amd/AtiRecords.h"

#include "Common/MultiMonitor/DisplayNumbers.h"

#include <algorithm>
#include <iterator>

namespace {

struct NumberFlag {
  uint32_t number;
  uint32_t display;
};

// Kinds of ATIDL_DisplayGetDeviceConfig. One without a row leaves the display to its type.
constexpr NumberFlag kDeviceKinds[] = {
    {5, DisplayNumbers::MD_CRT},  {6, DisplayNumbers::MD_DVI},  {7, DisplayNumbers::MD_DVI},
    {8, DisplayNumbers::MD_HDMI}, {9, DisplayNumbers::MD_HDMI}, {10, DisplayNumbers::MD_DP},
};

// Types of EnumDisplays. One without a row has no flag.
constexpr NumberFlag kTypes[] = {
    {1, DisplayNumbers::MD_NB},  {2, DisplayNumbers::MD_CRT},  {5, DisplayNumbers::MD_CRT},
    {4, DisplayNumbers::MD_DVI}, {6, DisplayNumbers::MD_HDMI}, {8, DisplayNumbers::MD_HDMI},
};

constexpr uint32_t kTypePanel = 1;
constexpr uint32_t kTypeCrt = 2;
constexpr uint32_t kTypeOtherCrt = 5;

template <size_t kRows>
uint32_t FlagOf(const NumberFlag (&rows)[kRows], uint32_t number) {
  const auto* const row = std::find_if(std::begin(rows), std::end(rows),
                                       [number](const auto& r) { return r.number == number; });
  return row != std::end(rows) ? row->display : 0;
}

}  // namespace

AtiConfigRecord MakeAtiConfigRecord() {
  AtiConfigRecord record = {};
  record.size = sizeof(record);
  return record;
}

AtiEdidRecord MakeAtiEdidRecord(uint32_t data_size) {
  AtiEdidRecord record = {};
  record.size = sizeof(record);
  record.data_size = data_size;
  return record;
}

AtiAdapterConfig MakeAtiAdapterConfig() {
  AtiAdapterConfig config = {};
  config.size = sizeof(config);
  for (AtiAdapterEntry& entry : config.entries) entry.size = sizeof(entry);
  return config;
}

uint32_t DisplayOfAtiKind(uint32_t device_kind) { return FlagOf(kDeviceKinds, device_kind); }

uint32_t DisplayOfAtiDevice(uint32_t device_kind, uint32_t type) {
  const uint32_t display = DisplayOfAtiKind(device_kind);
  return display != 0 ? display : FlagOf(kTypes, type);
}

uint32_t AtiTargetType(const uint32_t* types, size_t count) {
  const uint32_t* const end = types + count;
  const uint32_t* const kept =
      std::find_if(types, end, [](uint32_t type) { return type != 0 && type != kTypePanel; });
  return kept == end || *kept == kTypeOtherCrt ? kTypeCrt : *kept;
}

const AtiAdapterEntry* FindAtiEntry(const AtiAdapterConfig& config, uint32_t display_vector) {
  for (const AtiAdapterEntry& entry : config.entries) {
    for (const AtiDisplaySlot& slot : entry.slots) {
      if (slot.display == display_vector) return &entry;
    }
  }
  return nullptr;
}

uint32_t AtiIndexOfVector(uint32_t display_vector) {
  uint32_t index = 0;
  for (; display_vector != 0 && (display_vector & 1) == 0; display_vector >>= 1) ++index;
  return index;
}
