// The Intel driver as a client without any declaration of it would call it: by slot of its table.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "sim/Machine.h"
#include "sim/tests/FaceCalls.h"

#include <objbase.h>
#include <oleauto.h>

namespace sim {

constexpr CLSID kDriverClass = {
    0x7160A13D, 0x73DA, 0x4CEA, {0x95, 0xB9, 0x37, 0x35, 0x64, 0x78, 0x58, 0x8A}};
constexpr IID kDriverInterface = {
    0xF932C038, 0x6484, 0x45CA, {0x8F, 0xA1, 0x7C, 0x8C, 0x27, 0x9F, 0x7A, 0xEE}};
constexpr GUID kNView = {
    0x21ADA76B, 0xA70E, 0x4D4E, {0x94, 0xE2, 0x4B, 0x8E, 0xE0, 0xCC, 0x32, 0x84}};
constexpr GUID kActiveDevices = {
    0x381ECED3, 0xEFF1, 0x4DF2, {0xB5, 0x60, 0x66, 0x48, 0xE3, 0x52, 0xB1, 0x8E}};
constexpr GUID kEdid = {
    0x897843AE, 0x998A, 0x4EEC, {0xA2, 0x1E, 0xEA, 0x64, 0x2B, 0x44, 0x90, 0xEC}};
constexpr GUID kConnectors = {
    0x2F317ACE, 0x3968, 0x4A57, {0x96, 0x67, 0xC6, 0xA4, 0x7B, 0x6C, 0x4B, 0x8C}};

/// A block of little-endian words.
class Words {
 public:
  explicit Words(size_t size) : bytes(size, 0) {}
  uint32_t At(size_t offset) const {
    uint32_t value = 0;
    std::memcpy(&value, &bytes.at(offset), 4);
    return value;
  }
  Words& Set(size_t offset, uint32_t value) {
    std::memcpy(&bytes.at(offset), &value, 4);
    return *this;
  }
  uint32_t size() const { return static_cast<uint32_t>(bytes.size()); }

  std::vector<uint8_t> bytes;
};

/// What an operation gave: the result, and `err` where it has one.
struct DriverSaid {
  HRESULT result;
  uint32_t err;
};
inline bool operator==(const DriverSaid& a, const DriverSaid& b) {
  return a.result == b.result && a.err == b.err;
}
inline std::ostream& operator<<(std::ostream& out, const DriverSaid& told) {
  return out << "result " << told.result << ", err " << told.err;
}

class DriverClient {
 public:
  DriverClient() {
    if (FAKE(CoCreateInstance)(kDriverClass, nullptr, CLSCTX_LOCAL_SERVER, kDriverInterface,
                               &object_) != S_OK) {
      throw std::runtime_error("the driver's class cannot be made");
    }
  }

  template <typename... Arguments>
  HRESULT Slot(size_t slot, Arguments... arguments) const {
    using Operation = HRESULT(WINAPI*)(void*, Arguments...);
    void* const* const table = *static_cast<void* const* const*>(object_);
    return reinterpret_cast<Operation>(table[slot])(object_, arguments...);
  }

  DriverSaid Change(Words records, const GUID& id = kActiveDevices) const {
    uint32_t err = 0xEEEEEEEE;
    const HRESULT result = Slot(11, &id, records.size(), records.bytes.data(), &err);
    return {result, err};
  }
  DriverSaid Get(const GUID& id, Words* block) const {
    uint32_t err = 0xEEEEEEEE;
    const HRESULT result = Slot(43, &id, block->size(), block->bytes.data(), &err);
    return {result, err};
  }
  DriverSaid Set(const GUID& id, Words* block) const {
    uint32_t err = 0xEEEEEEEE;
    const HRESULT result = Slot(44, &id, block->size(), block->bytes.data(), &err);
    return {result, err};
  }

  /// "0x1000 type 2 status 0x12", and what ends the walk as the last line.
  std::string Walk(const wchar_t* device, uint32_t selected = 0xFFFFFFFF) const {
    const BSTR name = FAKE(SysAllocString)(device);
    std::string text;
    for (uint32_t index = 0;; ++index) {
      uint32_t uid = 0xEEEEEEEE;
      uint32_t type = selected;
      uint32_t status = 0xEEEEEEEE;
      const HRESULT result = Slot(12, name, index, &uid, &type, &status);
      if (result != S_OK) {
        const bool untouched = uid == 0xEEEEEEEE && type == selected && status == 0xEEEEEEEE;
        return text + "end " + std::to_string(result) + (untouched ? "" : ", outputs written");
      }
      char line[64];
      std::snprintf(line, sizeof line, "0x%x type %u status 0x%x\n", uid, type, status);
      text += line;
    }
  }

  void* object() const { return object_; }

 private:
  void* object_ = nullptr;
};

/// An active-devices record; `second` makes it a clone's.
inline Words Record(const char* device, uint32_t first, uint32_t second = 0) {
  Words record(120);
  std::memcpy(&record.bytes[4], device, std::strlen(device));
  record.Set(0, 120).Set(84, second != 0 ? 3 : 1).Set(88, second != 0 ? first : 0);
  return record.Set(92, second != 0 ? 2 : 1).Set(96, first).Set(100, second);
}

inline Words Both(const Words& a, const Words& b) {
  Words both(a);
  both.bytes.insert(both.bytes.end(), b.bytes.begin(), b.bytes.end());
  return both;
}

/// An N-view block with room for `entries`, and its head.
inline Words NView(uint32_t mode, uint32_t count, size_t entries) {
  Words block(16 + 68 * entries);
  return block.Set(0, mode).Set(8, block.size()).Set(12, count);
}

struct Place {
  uint32_t left, right, top, bottom;
};
inline void PutEntry(Words* block, size_t entry, uint32_t uid, uint32_t width, uint32_t height,
                     Place place = {0, 0, 0, 0}) {
  const size_t at = 16 + 68 * entry;
  block->Set(at, uid).Set(at + 4, width).Set(at + 8, height).Set(at + 12, 60).Set(at + 16, 32);
  block->Set(at + 32, place.left).Set(at + 36, place.right);
  block->Set(at + 40, place.top).Set(at + 44, place.bottom);
}

}  // namespace sim
