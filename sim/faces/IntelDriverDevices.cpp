// The driver's devices: which kinds there are, how they are numbered, and their state.
#include <algorithm>
#include <stdexcept>

#include "sim/Topology.h"
#include "sim/faces/FaceHelp.h"
#include "sim/faces/IntelDriverRules.h"

namespace sim {
namespace {

constexpr uint32_t kPanelType = 2;
constexpr uint32_t kUnnumberedType = 9;

struct TypeRow {
  uint32_t technology;
  uint32_t type;
};
// By the output technology of Windows. Panels are told apart before this table is asked.
constexpr TypeRow kTypes[] = {
    {kTechnologyHd15, 1}, {1, 4}, {2, 4}, {kTechnologyComponent, 4}, {4, 3}, {5, 5}, {10, 7},
    {0xFFFFFFFF, 6},
};

// Four bits of the uid for each kind, so that no uid equals the number of its kind, save the CRT's.
struct UidRow {
  uint32_t type;
  uint32_t first_uid;
};
constexpr UidRow kUids[] = {
    {1, 0x1},     {4, 0x10},     {3, 0x100},     {2, 0x1000},
    {5, 0x10000}, {7, 0x100000}, {6, 0x1000000}, {kUnnumberedType, 0x10000000},
};

}  // namespace

uint32_t IntelBlock::Get(uint32_t offset) const {
  if (offset > size_ || size_ - offset < 4) throw std::out_of_range("read beyond a driver's block");
  uint32_t value = 0;
  for (uint32_t i = 4; i-- > 0;) value = value << 8 | bytes_[offset + i];
  return value;
}

void IntelBlock::Put(uint32_t offset, uint32_t value) {
  if (offset > size_ || size_ - offset < 4)
    throw std::out_of_range("write beyond a driver's block");
  for (uint32_t i = 0; i < 4; ++i) bytes_[offset + i] = static_cast<uint8_t>(value >> 8 * i);
}

void IntelBlock::PutBytes(uint32_t offset, const std::vector<uint8_t>& bytes) {
  const size_t room = size_ - std::min(offset, size_);
  std::copy_n(bytes.begin(), std::min(bytes.size(), room), bytes_ + offset);
}

std::optional<std::string> IntelBlock::Text(uint32_t offset, uint32_t room) const {
  std::string text;
  for (uint32_t i = 0; i < room && offset + i < size_; ++i) {
    if (bytes_[offset + i] == 0) return text;
    text += static_cast<char>(bytes_[offset + i]);
  }
  return std::nullopt;
}

bool IntelBlock::IsZero(uint32_t offset, uint32_t end) const {
  for (; offset < end; offset += 4) {
    if (Get(offset) != 0) return false;
  }
  return true;
}

IntelBlock IntelBlock::Slice(uint32_t offset, uint32_t size) const {
  if (offset > size_ || size_ - offset < size) throw std::out_of_range("slice beyond a block");
  return {bytes_ + offset, size};
}

bool IsIntelAdapter(const Adapter& adapter) {
  return Lower(adapter.hardware_id).find("ven_8086") != std::string::npos;
}

bool IsIntelDriven(const Model& model, size_t connector) {
  const size_t adapter = model.connectors[connector].adapter;
  return adapter < model.adapters.size() && IsIntelAdapter(model.adapters[adapter]) &&
         AdapterWorks(model.adapters[adapter]);
}

bool IntelDriverInstalled(const Model& model) {
  return std::any_of(model.adapters.begin(), model.adapters.end(), [](const Adapter& adapter) {
    return IsIntelAdapter(adapter) && adapter.vendor_library;
  });
}

uint32_t IntelDeviceType(const Connector& connector) {
  if (IsInternal(connector.technology)) return kPanelType;
  for (const TypeRow& row : kTypes) {
    if (row.technology == connector.technology) return row.type;
  }
  return kUnnumberedType;
}

uint32_t IntelUid(const Model& model, size_t connector) {
  const uint32_t type = IntelDeviceType(model.connectors[connector]);
  uint32_t before = 0;
  for (size_t i = 0; i < connector; ++i) {
    if (IsIntelDriven(model, i) && IntelDeviceType(model.connectors[i]) == type) ++before;
  }
  const auto row = std::find_if(std::begin(kUids), std::end(kUids),
                                [type](const UidRow& r) { return r.type == type; });
  return row->first_uid + before;
}

std::optional<size_t> IntelConnector(const Model& model, uint32_t uid) {
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (IsIntelDriven(model, i) && IntelUid(model, i) == uid) return i;
  }
  return std::nullopt;
}

std::optional<size_t> IntelSource(const Model& model, const std::string& device_name) {
  for (size_t i = 0; i < model.sources.size(); ++i) {
    if (Lower(model.sources[i].device_name) != Lower(device_name)) continue;
    const Adapter& adapter = model.adapters[model.sources[i].adapter];
    if (IsIntelAdapter(adapter) && AdapterWorks(adapter)) return i;
  }
  return std::nullopt;
}

std::optional<std::vector<size_t>> IntelConnectorsOfDevice(const Model& model,
                                                           const std::string& device_name) {
  const std::optional<size_t> source = IntelSource(model, device_name);
  if (!source) return std::nullopt;
  std::vector<size_t> connectors;
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (model.connectors[i].adapter == model.sources[*source].adapter) connectors.push_back(i);
  }
  return connectors;
}

uint32_t IntelStatus(const Model& model, size_t connector) {
  const uint32_t attached = IsConnected(model, connector) ? kIntelStatusAttached : 0;
  return attached | (SourceOfConnector(model, connector) ? kIntelStatusActive : 0);
}

}  // namespace sim
