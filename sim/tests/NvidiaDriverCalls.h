// NVIDIA's driver as a client without any declaration of it would call it: by interface id, with
// records of bytes.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "sim/Machine.h"
#include "sim/tests/Fakes.h"

namespace sim {

// The interface ids.
constexpr uint32_t kInitializeId = 0x0150E828;
constexpr uint32_t kVersionStringId = 0x01053FA5;
constexpr uint32_t kEnumGpusId = 0xE5AC921F;
constexpr uint32_t kEnumDisplaysId = 0x9ABDD40D;
constexpr uint32_t kGpusOfDisplayId = 0x34EF9506;
constexpr uint32_t kOutputOfDisplayId = 0xD995937E;
constexpr uint32_t kAllOutputsId = 0x7D554F8E;
constexpr uint32_t kConnectedOutputsId = 0x1730BFC9;
constexpr uint32_t kActiveOutputsId = 0xE3E89B6F;
constexpr uint32_t kConnectorInfoId = 0x4ECA2C10;
constexpr uint32_t kEdidId = 0x37D32E69;
constexpr uint32_t kHdmiId = 0x6AE16EC3;
constexpr uint32_t kSettingsId = 0xDC27D5D4;
constexpr uint32_t kSetViewId = 0x06B89E68;
constexpr uint32_t kCoprocId = 0x1EFC3957;
constexpr uint32_t kDisplayIdId = 0x08F2BAB4;
constexpr uint32_t kGpuAndOutputId = 0x112BA1A5;
constexpr uint32_t kSetPathsId = 0x5D8CF8DE;
constexpr uint32_t kHybridId = 0xE23B68C1;
constexpr uint32_t kReadGroupsId = 0x47BAD137;
constexpr uint32_t kWriteGroupsId = 0x61041C24;

constexpr uint32_t kUnwritten = 0xEEEEEEEE;

/// A record: little-endian words and pointers at byte offsets.
class Record {
 public:
  Record(size_t size, uint32_t version) : bytes(size, 0) { Set(0, version); }
  uint32_t At(size_t offset) const {
    uint32_t value = 0;
    std::memcpy(&value, &bytes.at(offset + 3) - 3, 4);
    return value;
  }
  Record& Set(size_t offset, uint32_t value) {
    std::memcpy(&bytes.at(offset + 3) - 3, &value, 4);
    return *this;
  }
  Record& Point(size_t offset, void* value) {
    std::memcpy(&bytes.at(offset + 7) - 7, &value, 8);
    return *this;
  }
  /// Puts another record into this one, as an element of an array.
  Record& Put(size_t offset, const Record& part) {
    std::memcpy(&bytes.at(offset + part.bytes.size() - 1) - (part.bytes.size() - 1),
                part.bytes.data(), part.bytes.size());
    return *this;
  }
  void* data() { return bytes.data(); }

  std::vector<uint8_t> bytes;
};

class NvClient {
 public:
  /// Loads the library and brings it up.
  explicit NvClient(bool initialize = true) : module_(SIM_FAKE(LoadLibraryA)("nvapi64.dll")) {
    if (module_ == nullptr) throw std::runtime_error("there is no nvapi64.dll");
    if (initialize && Ask(kInitializeId) != 0) throw std::runtime_error("NVAPI does not come up");
  }
  ~NvClient() { SIM_FAKE(FreeLibrary)(module_); }
  NvClient(const NvClient&) = delete;
  NvClient& operator=(const NvClient&) = delete;

  void* Find(uint32_t id) const {
    const auto query = reinterpret_cast<void* (*)(uint32_t)>(
        reinterpret_cast<void*>(SIM_FAKE(GetProcAddress)(module_, "nvapi_QueryInterface")));
    return query != nullptr ? query(id) : nullptr;
  }
  template <typename... Arguments>
  int32_t Ask(uint32_t id, Arguments... arguments) const {
    void* const function = Find(id);
    if (function == nullptr) throw std::runtime_error("the driver has no such function");
    return reinterpret_cast<int32_t (*)(Arguments...)>(function)(arguments...);
  }

  /// The handle of the n-th GPU; fails the test when there is none.
  void* Gpu(size_t index = 0) const {
    void* gpus[64] = {};
    uint32_t count = 0;
    EXPECT_EQ(Ask(kEnumGpusId, &gpus[0], &count), 0);
    EXPECT_LT(index, count);
    return gpus[index];
  }
  /// The handle of the n-th display; null when the enumeration ends before.
  void* Display(uint32_t index = 0) const {
    void* handle = nullptr;
    return Ask(kEnumDisplaysId, index, &handle) == 0 ? handle : nullptr;
  }
  uint32_t Outputs(uint32_t id, void* gpu) const {
    uint32_t mask = kUnwritten;
    EXPECT_EQ(Ask(id, gpu, &mask), 0);
    return mask;
  }
  uint32_t DisplayId(void* gpu, uint32_t output) const {
    uint32_t id = kUnwritten;
    EXPECT_EQ(Ask(kDisplayIdId, gpu, output, &id), 0);
    return id;
  }
  int32_t SetView(uint32_t view, Record record) const {
    return Ask(kSetViewId, Display(), record.data(), view);
  }
  HMODULE module() const { return module_; }

 private:
  HMODULE module_;
};

/// One path of a view, 64 bytes; `flags` 1 makes it the primary display of the desktop.
inline Record ViewPath(uint32_t mask, uint32_t width, uint32_t height, uint32_t flags = 0,
                       uint32_t x = 0) {
  Record path(64, mask);
  path.Set(16, width).Set(20, height).Set(24, 32).Set(40, 60);
  return path.Set(52, x).Set(60, flags);
}

inline Record View(const std::vector<Record>& paths) {
  Record record(264, 0x40108);
  record.Set(4, static_cast<uint32_t>(paths.size()));
  for (size_t i = 0; i < paths.size(); ++i) record.Put(8 + 64 * i, paths[i]);
  return record;
}

/// The paths of NvAPI_DISP_SetDisplayConfig with what they point to.
class PathRecords {
 public:
  struct Target {
    uint32_t display_id = 0;
    uint32_t target_id = 0;
  };
  struct Size {
    uint32_t width = 0;
    uint32_t height = 0;
    int32_t x = 0;
    bool primary = false;
  };
  /// @param size  nothing for a width of 0
  PathRecords& Add(const std::vector<Target>& targets, const Size& size, bool foreign = false) {
    Record path(48, 0x20030);
    Record array(24 * targets.size() + 4, 0);
    for (size_t i = 0; i < targets.size(); ++i) {
      array.Set(24 * i, targets[i].display_id).Set(24 * i + 16, targets[i].target_id);
    }
    path.Set(8, static_cast<uint32_t>(targets.size())).Set(32, foreign ? 1 : 0);
    path.Point(16, Keep(array));
    if (size.width != 0) {
      Record mode(32, size.width);
      mode.Set(4, size.height).Set(8, 32).Set(12, 21);
      mode.Set(16, static_cast<uint32_t>(size.x)).Set(28, size.primary ? 1 : 0);
      path.Point(24, Keep(mode));
    }
    paths_.push_back(path);
    return *this;
  }
  PathRecords& Adapter(uint32_t luid_low) {
    paths_.back().Point(40, Keep(Record(8, luid_low)));
    return *this;
  }
  Record& last() { return paths_.back(); }

  int32_t Set(const NvClient& driver, uint32_t flags) const {
    Record all(48 * paths_.size() + 4, 0);
    for (size_t i = 0; i < paths_.size(); ++i) all.Put(48 * i, paths_[i]);
    return driver.Ask(kSetPathsId, static_cast<uint32_t>(paths_.size()), all.data(), flags);
  }

 private:
  void* Keep(const Record& record) {
    kept_.push_back(std::make_unique<Record>(record));
    return kept_.back()->data();
  }
  std::vector<Record> paths_;
  std::vector<std::unique_ptr<Record>> kept_;
};

}  // namespace sim
