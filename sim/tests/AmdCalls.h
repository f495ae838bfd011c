// AMD's libraries as a client without any declaration of them would call them: by the names of
// their exports, with records by offset.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "sim/Machine.h"
#include "sim/tests/FaceCalls.h"

namespace sim {

/// A record or an array of them.
class AmdBytes {
 public:
  explicit AmdBytes(size_t size, uint8_t fill = 0) : bytes(size, fill) {}
  uint32_t At(size_t offset) const {
    uint32_t value = 0;
    std::memcpy(&value, &bytes.at(offset + 3) - 3, 4);
    return value;
  }
  float FloatAt(size_t offset) const {
    float value = 0;
    std::memcpy(&value, &bytes.at(offset + 3) - 3, 4);
    return value;
  }
  std::string TextAt(size_t offset) const {
    return reinterpret_cast<const char*>(&bytes.at(offset));
  }
  AmdBytes& Set(size_t offset, uint32_t value) {
    std::memcpy(&bytes.at(offset + 3) - 3, &value, 4);
    return *this;
  }
  AmdBytes& SetFloat(size_t offset, float value) {
    std::memcpy(&bytes.at(offset + 3) - 3, &value, 4);
    return *this;
  }
  void* data() { return bytes.data(); }

  std::vector<uint8_t> bytes;
};

/// Several records in a row.
inline AmdBytes Joined(const std::vector<AmdBytes>& records) {
  AmdBytes all(0);
  for (const AmdBytes& record : records) {
    all.bytes.insert(all.bytes.end(), record.bytes.begin(), record.bytes.end());
  }
  return all;
}

/// A loaded library; gone with this object.
class AmdLibrary {
 public:
  explicit AmdLibrary(const char* file) : module_(FAKE(LoadLibraryA)(file)) {
    if (module_ == nullptr) throw std::runtime_error(std::string("does not load: ") + file);
  }
  ~AmdLibrary() { FAKE(FreeLibrary)(module_); }
  AmdLibrary(const AmdLibrary&) = delete;
  AmdLibrary& operator=(const AmdLibrary&) = delete;

  bool Has(const char* name) const { return FAKE(GetProcAddress)(module_, name) != nullptr; }

  template <typename... Arguments>
  int Call(const char* name, Arguments... arguments) const {
    const FARPROC found = FAKE(GetProcAddress)(module_, name);
    if (found == nullptr) throw std::runtime_error(std::string("no such export: ") + name);
    using Function = int(WINAPI*)(Arguments...);
    return reinterpret_cast<Function>(reinterpret_cast<void*>(found))(arguments...);
  }

 private:
  HMODULE module_;
};

inline void* WINAPI AmdAllocate(int size) { return std::malloc(static_cast<size_t>(size)); }
inline void* WINAPI AmdAllocateNothing(int) { return nullptr; }
inline void AmdFree(void* block) { SimulatedFunction<void(void*)>("free")(block); }

/// What an export handed out: its result, and a copy of its array, which is freed.
struct AdlList {
  int result = 0;
  int count = -77;
  AmdBytes bytes = AmdBytes(0);

  AmdBytes Record(size_t place, size_t size) const {
    AmdBytes record(size);
    std::memcpy(record.data(), &bytes.bytes.at(place * size), size);
    return record;
  }
};

/// atiadlxx.dll from ADL_Main_Control_Create to ADL_Main_Control_Destroy.
class AdlClient : public AmdLibrary {
 public:
  explicit AdlClient(int present_only = 0) : AmdLibrary("atiadlxx.dll") {
    EXPECT_EQ(Call("ADL_Main_Control_Create", AmdAllocate, present_only), 0);
  }
  ~AdlClient() { Call("ADL_Main_Control_Destroy"); }
  AdlClient(const AdlClient&) = delete;
  AdlClient& operator=(const AdlClient&) = delete;

  static AdlList Take(int result, int count, void* array, size_t size) {
    AdlList list;
    list.result = result;
    list.count = count;
    if (result == 0 && array != nullptr) {
      list.bytes.bytes.resize(static_cast<size_t>(count) * size);
      std::memcpy(list.bytes.data(), array, list.bytes.bytes.size());
    }
    if (array != nullptr) AmdFree(array);
    return list;
  }

  AdlList Displays(int adapter) const {
    int count = -77;
    void* array = nullptr;
    const int result = Call("ADL_Display_DisplayInfo_Get", adapter, &count, &array, 1);
    return Take(result, count, array, 552);
  }

  AdlList Modes(int adapter, int display) const {
    int count = -77;
    void* array = nullptr;
    const int result = Call("ADL_Display_Modes_Get", adapter, display, &count, &array);
    return Take(result, count, array, 60);
  }

  /// Maps and targets, and the result in both.
  std::pair<AdlList, AdlList> Maps(int adapter, int options = 1) const {
    int counts[2] = {-77, -77};
    void* arrays[2] = {};
    const int result = Call("ADL_Display_DisplayMapConfig_Get", adapter, &counts[0], &arrays[0],
                            &counts[1], &arrays[1], options);
    return {Take(result, counts[0], arrays[0], 80), Take(result, counts[1], arrays[1], 28)};
  }

  int Set(int adapter, const std::vector<AmdBytes>& maps,
          const std::vector<AmdBytes>& targets) const {
    AmdBytes all_maps = Joined(maps);
    AmdBytes all_targets = Joined(targets);
    return Call("ADL_Display_DisplayMapConfig_Set", adapter, static_cast<int>(maps.size()),
                all_maps.data(), static_cast<int>(targets.size()), all_targets.data());
  }

  /// An export that gives one number; -99 where it did not write it.
  std::pair<int, int> Number(const char* name, int adapter) const {
    int value = -99;
    const int result = Call(name, adapter, &value);
    return {result, value};
  }
};

/// ADLDisplayMap: a desktop of this size that the targets from `first` on show.
inline AmdBytes AdlMap(int index, uint32_t width, uint32_t height, int first, int count,
                       int x = 0) {
  AmdBytes map(80);
  map.Set(0, static_cast<uint32_t>(index)).Set(24, static_cast<uint32_t>(x));
  map.Set(32, width).Set(36, height).Set(40, 32).SetFloat(44, 60.0F);
  return map.Set(64, static_cast<uint32_t>(count)).Set(68, static_cast<uint32_t>(first));
}

/// ADLDisplayTarget: the display with this logical index.
inline AmdBytes AdlTarget(int display, int map = 0, int adapter = 0) {
  AmdBytes target(28);
  target.Set(0, static_cast<uint32_t>(display)).Set(8, static_cast<uint32_t>(adapter));
  return target.Set(16, static_cast<uint32_t>(map)).Set(20, 1).Set(24, 1);
}

}  // namespace sim
