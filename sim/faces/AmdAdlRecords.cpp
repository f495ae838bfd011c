// Records that ADL's exports write.
#include <algorithm>
#include <stdexcept>

#include "sim/faces/AmdAdl.h"

namespace sim {

uint8_t* AmdRecord::Place(size_t offset, size_t size) const {
  if (offset + size > size_) throw std::out_of_range("a field lies beyond its record");
  return bytes_ + offset;
}

uint32_t AmdRecord::Get(size_t offset) const {
  uint32_t value = 0;
  std::memcpy(&value, Place(offset, sizeof value), sizeof value);
  return value;
}

float AmdRecord::Float(size_t offset) const {
  float value = 0;
  std::memcpy(&value, Place(offset, sizeof value), sizeof value);
  return value;
}

void AmdRecord::Put(size_t offset, uint32_t value) {
  std::memcpy(Place(offset, sizeof value), &value, sizeof value);
}

void AmdRecord::PutFloat(size_t offset, float value) {
  std::memcpy(Place(offset, sizeof value), &value, sizeof value);
}

void AmdRecord::PutText(size_t offset, size_t room, const std::string& text) {
  CopyText(reinterpret_cast<char*>(Place(offset, room)), room, text);
}

void AmdRecord::PutBytes(size_t offset, const std::vector<uint8_t>& bytes) {
  std::copy(bytes.begin(), bytes.end(), Place(offset, bytes.size()));
}

AmdRecord AmdRecord::Slice(size_t offset, size_t size) const { return {Place(offset, size), size}; }

// The persistent number of a display is its place on the machine; it is none of its other numbers.
void PutAdlDisplayId(const Model& model, size_t connector, int32_t logical_adapter,
                     AmdRecord record) {
  record.PutInt(kAdlLogicalIndexAt, AdlDisplayIndex(model, connector));
  record.PutInt(kAdlPhysicalIndexAt, kAdlFirstPhysicalIndex + static_cast<int32_t>(connector));
  record.PutInt(kAdlLogicalAdapterAt, logical_adapter);
  record.PutInt(kAdlPhysicalAdapterAt,
                AdlPhysicalAdapter(model, model.connectors[connector].adapter));
}

void PutAdlMode(const Model& model, size_t source, size_t connector, AmdRecord record) {
  constexpr int32_t kQuarterTurn = 90;
  const Source& s = model.sources[source];
  const int32_t adapter = AdlIndexOfSource(model, source);
  record.PutInt(0, adapter);
  PutAdlDisplayId(model, connector, adapter, record.Slice(4, 16));
  record.PutInt(20, s.x);
  record.PutInt(24, s.y);
  record.Put(28, s.mode.width);
  record.Put(32, s.mode.height);
  record.Put(36, s.mode.bits);
  record.PutFloat(40, static_cast<float>(s.mode.frequency));
  record.PutInt(44, static_cast<int32_t>(s.orientation) * kQuarterTurn);
  record.Put(52, 2);  // progressive or interlaced; it is progressive
}

}  // namespace sim
