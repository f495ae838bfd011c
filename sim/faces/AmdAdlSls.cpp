// ADL: one picture across several displays (a "single large surface"). The driver keeps the ways of
// laying displays out ("grids") and the arrangements that somebody has made with them ("maps").
#include <algorithm>
#include <iterator>
#include <set>

#include "sim/Topology.h"
#include "sim/faces/AmdAdl.h"
#include "sim/faces/AmdDriver.h"

namespace sim {
namespace {

constexpr int32_t kFirstMapIndex = 3;  // none of the other numbers
constexpr int32_t kFirstOption = 1;
constexpr int32_t kLastOption = 2;

// --- Which map the targets make.

std::set<size_t> ConnectorsOfMap(const Model& model, const AmdSlsMap& map) {
  std::set<size_t> connectors;
  for (const std::string& id : map.connectors) {
    if (const std::optional<size_t> connector = FindConnector(model, id)) {
      connectors.insert(*connector);
    }
  }
  return connectors;
}

int32_t FindMap(const Model& model, size_t gpu, int count, void* targets, int* map_index) {
  std::set<size_t> connectors;
  const AmdRecord records(targets, static_cast<size_t>(count) * kAdlTargetSize);
  for (int i = 0; i < count; ++i) {
    const auto at = static_cast<size_t>(i) * kAdlTargetSize;
    const auto connector = AdlConnector(model, gpu, records.Int(at + kAdlLogicalIndexAt));
    if (!connector) return kAdlInvalidDisplay;
    connectors.insert(*connector);
  }
  const std::vector<AmdSlsMap>& maps = model.adapters[gpu].amd.sls_maps;
  for (size_t i = 0; i < maps.size(); ++i) {
    if (ConnectorsOfMap(model, maps[i]) != connectors) continue;
    *map_index = kFirstMapIndex + static_cast<int32_t>(i);
    return kAdlOk;
  }
  return kAdlError;
}

int WINAPI SlsMapIndexGet(int index, int count, void* targets, int* map_index) {
  Call call("ADL_Display_SLSMapIndex_Get");
  AdlAdapter adapter;
  int32_t result = AdlRefusal(call, index, &adapter);
  if (result == kAdlOk && (targets == nullptr || map_index == nullptr)) result = kAdlNullPointer;
  if (result == kAdlOk && count < 1) result = kAdlInvalidParameter;
  if (result == kAdlOk) result = FindMap(CurrentModel(), adapter.gpu, count, targets, map_index);
  return static_cast<int>(call.Read(result, "adapter=%d targets=%d", index, count));
}

// --- A map and all that belongs to it.

struct MapRecords {
  const Model& model;
  const AmdSlsMap& map;
  AdlAdapter adapter;
  int32_t index;
  std::vector<size_t> connectors;
};

void PutGrid(int32_t adapter, size_t place, uint32_t rows, uint32_t columns, AmdRecord record) {
  record.PutInt(0, adapter);
  record.Put(4, static_cast<uint32_t>(place));
  record.Put(8, rows);
  record.Put(12, columns);
  record.Put(16, 0);
  record.Put(20, 0);
}

void PutMap(const MapRecords& from, AmdRecord record) {
  const AmdSlsMap& map = from.map;
  record.PutInt(0, from.adapter.index);
  record.PutInt(4, from.index);
  PutGrid(from.adapter.index, 0, map.rows, map.columns, record.Slice(8, kAdlSlsGridSize));
  const size_t counts[] = {from.connectors.size(), map.native.size(), map.bezel.size(), 0};
  for (size_t i = 0; i < std::size(counts); ++i) {
    record.Put(40 + 8 * i, static_cast<uint32_t>(counts[i]));
  }
}

// The fields that all of these records begin with, and the size in the ADLMode behind them.
void PutModeHead(const MapRecords& from, size_t place, const DisplayMode& mode, AmdRecord record) {
  constexpr size_t kModeAt = 12;
  record.PutInt(0, from.adapter.index);
  record.PutInt(4, from.index);
  record.Put(8, static_cast<uint32_t>(place));
  record.PutInt(kModeAt, from.adapter.index);
  record.Put(kModeAt + 28, mode.width);
  record.Put(kModeAt + 32, mode.height);
  record.Put(kModeAt + 36, mode.bits);
  record.PutFloat(kModeAt + 40, static_cast<float>(mode.frequency));
}

int32_t GiveModes(const MapRecords& from, const std::vector<DisplayMode>& modes, size_t record_size,
                  int* count, void** array) {
  AmdRecord records(nullptr, 0);
  const int32_t result = GiveAdlArray(modes.size(), record_size, count, array, &records);
  for (size_t i = 0; result == kAdlOk && i < modes.size(); ++i) {
    PutModeHead(from, i, modes[i], records.Slice(i * record_size, record_size));
  }
  return result;
}

int32_t GiveTargets(const MapRecords& from, int* count, void** array) {
  constexpr size_t kDisplayAt = 8;
  AmdRecord records(nullptr, 0);
  const size_t shown = from.connectors.size();
  const int32_t result = GiveAdlArray(shown, kAdlSlsTargetSize, count, array, &records);
  for (size_t i = 0; result == kAdlOk && i < shown; ++i) {
    AmdRecord record = records.Slice(i * kAdlSlsTargetSize, kAdlSlsTargetSize);
    record.PutInt(0, from.adapter.index);
    record.PutInt(4, from.index);
    PutAdlDisplayId(from.model, from.connectors[i], from.adapter.index,
                    record.Slice(kDisplayAt, 16));
    const uint32_t columns = std::max(1U, from.map.columns);
    record.Put(36, static_cast<uint32_t>(i) % columns);
    record.Put(40, static_cast<uint32_t>(i) / columns);
  }
  return result;
}

// NOLINTNEXTLINE(readability-function-size): the arguments are those of the published interface
int WINAPI SlsMapConfigGet(int index, int map_index, void* map, int* target_count, void** targets,
                           int* native_count, void** native, int* bezel_count, void** bezel,
                           int* transient_count, void** transient, int* offset_count,
                           void** offsets, int option) {
  Call call("ADL_Display_SLSMapConfig_Get");
  const void* const outputs[] = {map,       target_count, targets,     native_count,
                                 native,    bezel,        bezel_count, transient_count,
                                 transient, offset_count, offsets};
  AdlAdapter adapter;
  int32_t result = AdlRefusal(call, index, &adapter);
  const bool complete = std::all_of(std::begin(outputs), std::end(outputs),
                                    [](const void* output) { return output != nullptr; });
  if (result == kAdlOk && !complete) result = kAdlNullPointer;
  const bool known = option >= kFirstOption && option <= kLastOption;
  if (result == kAdlOk && !known) result = kAdlInvalidParameter;
  const Model& model = CurrentModel();
  const std::vector<AmdSlsMap>& maps = model.adapters[adapter.gpu].amd.sls_maps;
  const auto place = static_cast<size_t>(int64_t{map_index} - kFirstMapIndex);
  if (result == kAdlOk && place >= maps.size()) result = kAdlInvalidParameter;
  if (result == kAdlOk) {
    MapRecords from = {model, maps[place], adapter, map_index, {}};
    for (const std::string& id : maps[place].connectors) {
      if (const auto connector = FindConnector(model, id)) from.connectors.push_back(*connector);
    }
    PutMap(from, AmdRecord(map, kAdlSlsMapSize));
    AmdRecord none(nullptr, 0);
    const int32_t results[] = {
        GiveTargets(from, target_count, targets),
        GiveModes(from, maps[place].native, kAdlSlsModeSize, native_count, native),
        GiveModes(from, maps[place].bezel, kAdlTransientModeSize, bezel_count, bezel),
        GiveModes(from, maps[place].transient, kAdlTransientModeSize, transient_count, transient),
        GiveAdlArray(0, kAdlSlsOffsetSize, offset_count, offsets, &none),
    };
    result = *std::min_element(std::begin(results), std::end(results));
  }
  return static_cast<int>(
      call.Read(result, "adapter=%d map=%d option=%d", index, map_index, option));
}

// --- Grids.

constexpr char kGridCaps[] = "ADL_Display_SLSGrid_Caps";

// Option 0 is not published and taken all the same.
int WINAPI SlsGridCaps(int index, int* count, void** grids, int option) {
  Call call(kGridCaps);
  AdlAdapter adapter;
  int32_t result = AdlRefusal(call, index, &adapter);
  if (result == kAdlOk && (count == nullptr || grids == nullptr)) result = kAdlNullPointer;
  if (result == kAdlOk && (option < 0 || option > kLastOption)) result = kAdlInvalidParameter;
  if (result == kAdlOk) {
    const auto& known = CurrentModel().adapters[adapter.gpu].amd.sls_grids;
    AmdRecord records(nullptr, 0);
    result = GiveAdlArray(known.size(), kAdlSlsGridSize, count, grids, &records);
    for (size_t i = 0; result == kAdlOk && i < known.size(); ++i) {
      PutGrid(adapter.index, i, known[i].first, known[i].second,
              records.Slice(i * kAdlSlsGridSize, kAdlSlsGridSize));
    }
    if (result == kAdlOk) {
      *count = static_cast<int>(AmdAnswerOr(kGridCaps, static_cast<uint32_t>(*count)));
    }
  }
  return static_cast<int>(call.Read(result, "adapter=%d option=%d", index, option));
}

}  // namespace

void AddAdlSlsEntries(std::vector<Entry>* entries) {
  const Entry own[] = {
      {kAdlLibrary, "ADL_Display_SLSMapIndex_Get", Guard<SlsMapIndexGet>()},
      {kAdlLibrary, "ADL_Display_SLSMapConfig_Get", Guard<SlsMapConfigGet>()},
      {kAdlLibrary, kGridCaps, Guard<SlsGridCaps>()},
  };
  entries->insert(entries->end(), std::begin(own), std::end(own));
}

}  // namespace sim
