// An N-view block in memory: a head and as many entries as fit. Sizes and counts that the driver
// wrote are never trusted further than the memory reaches.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "Common/MultiMonitor/Intel/CuiRecords.h"

class CuiNViewBlock {
 public:
  /// A zeroed block whose head holds its size.
  /// @param size  bytes; raised to that of a head and one entry
  explicit CuiNViewBlock(uint32_t size);

  /// False when there was no memory for it: nothing else may then be called.
  bool IsValid() const { return bytes_ != nullptr; }

  uint8_t* data() { return bytes_.get(); }
  uint32_t size() const { return size_; }

  CuiNViewHead Head() const;
  void SetHead(const CuiNViewHead& head);

  /// How many entries the head tells of that are in the block.
  uint32_t EntryCount() const;

  /// An entry; zero outside the block.
  CuiNViewEntry Entry(uint32_t index) const;

  /// Outside the block nothing happens.
  void SetEntry(uint32_t index, const CuiNViewEntry& entry);

 private:
  struct Free {
    void operator()(uint8_t* bytes) const { std::free(bytes); }
  };

  uint32_t Capacity() const;

  uint32_t size_;
  std::unique_ptr<uint8_t, Free> bytes_;
};
