#include "Common/MultiMonitor/Intel/CuiNViewBlock.h"

#include <algorithm>
#include <cstring>

namespace {

size_t PlaceOf(uint32_t index) {
  return sizeof(CuiNViewHead) + size_t{index} * sizeof(CuiNViewEntry);
}

}  // namespace

// calloc, because a size out of the driver may be absurd: untouched pages then cost nothing, and no
// memory is an answer instead of an exception.
CuiNViewBlock::CuiNViewBlock(uint32_t size)
    : size_(std::max(size, kCuiSmallestNView)),
      bytes_(static_cast<uint8_t*>(std::calloc(size_, 1))) {
  if (bytes_ == nullptr) return;
  CuiNViewHead head = {};
  head.size = size_;
  SetHead(head);
}

CuiNViewHead CuiNViewBlock::Head() const {
  CuiNViewHead head;
  std::memcpy(&head, bytes_.get(), sizeof(head));
  return head;
}

void CuiNViewBlock::SetHead(const CuiNViewHead& head) {
  std::memcpy(bytes_.get(), &head, sizeof(head));
}

uint32_t CuiNViewBlock::Capacity() const {
  return static_cast<uint32_t>((size_ - sizeof(CuiNViewHead)) / sizeof(CuiNViewEntry));
}

uint32_t CuiNViewBlock::EntryCount() const { return std::min(Head().display_count, Capacity()); }

CuiNViewEntry CuiNViewBlock::Entry(uint32_t index) const {
  CuiNViewEntry entry = {};
  if (index < Capacity()) std::memcpy(&entry, bytes_.get() + PlaceOf(index), sizeof(entry));
  return entry;
}

void CuiNViewBlock::SetEntry(uint32_t index, const CuiNViewEntry& entry) {
  if (index < Capacity()) std::memcpy(bytes_.get() + PlaceOf(index), &entry, sizeof(entry));
}
