// ADL: the display map, read and set. A map is a desktop, its targets are the displays that show
// it; a map names its targets by their place in the list of targets.
#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <utility>

#include "sim/Topology.h"
#include "sim/faces/AmdAdl.h"
#include "sim/faces/AmdDriver.h"

namespace sim {
namespace {

constexpr int32_t kAllAdapters = -1;

// ADLDisplayMap.
constexpr size_t kMapIndexAt = 0;
constexpr size_t kModeAt = 4;
constexpr size_t kTargetCountAt = 64;
constexpr size_t kFirstTargetAt = 68;
constexpr size_t kMapMaskAt = 72;
constexpr size_t kMapValueAt = 76;
constexpr uint32_t kMapManners = 0x6E;
constexpr uint32_t kMapSingle = 0x4;
constexpr uint32_t kMapClone = 0x8;

// ADLDisplayTarget.
constexpr size_t kTargetMapAt = 16;
constexpr size_t kTargetMaskAt = 20;
constexpr size_t kTargetValueAt = 24;
constexpr uint32_t kPreferred = 0x1;

// ADLMode, within a map.
constexpr size_t kXAt = kModeAt + 20;
constexpr size_t kYAt = kModeAt + 24;
constexpr size_t kWidthAt = kModeAt + 28;
constexpr size_t kHeightAt = kModeAt + 32;
constexpr size_t kDepthAt = kModeAt + 36;
constexpr size_t kRefreshAt = kModeAt + 40;
constexpr size_t kOrientationAt = kModeAt + 44;
constexpr int32_t kQuarterTurn = 90;

// The GPUs that a call is about: that of the adapter, or all that work.
int32_t FindGpus(const Call& call, int32_t index, std::vector<size_t>* gpus) {
  if (index == kAllAdapters) {
    for (const AdlAdapter& adapter : ListedAdlAdapters(CurrentModel())) {
      const bool known = std::find(gpus->begin(), gpus->end(), adapter.gpu) != gpus->end();
      if (adapter.enabled && !known) gpus->push_back(adapter.gpu);
    }
    return AdlRefusal(call);
  }
  AdlAdapter adapter;
  const int32_t result = AdlRefusal(call, index, &adapter);
  if (result == kAdlOk) gpus->push_back(adapter.gpu);
  return result;
}

// --- Reading. The map's index is that of the desktop with Windows.

void PutMaps(const Model& model, const std::vector<size_t>& desktops, AmdRecord maps,
             AmdRecord targets) {
  size_t next = 0;
  for (size_t i = 0; i < desktops.size(); ++i) {
    const std::vector<size_t> connectors = ConnectorsOfSource(model, desktops[i]);
    const auto index = static_cast<int32_t>(desktops[i]);
    const AmdRecord map = maps.Slice(i * kAdlMapSize, kAdlMapSize);
    AmdRecord record = map;
    record.PutInt(kMapIndexAt, index);
    PutAdlMode(model, desktops[i], connectors[0], map.Slice(kModeAt, kAdlModeSize));
    record.Put(kTargetCountAt, static_cast<uint32_t>(connectors.size()));
    record.Put(kFirstTargetAt, static_cast<uint32_t>(next));
    record.Put(kMapMaskAt, kMapManners);
    record.Put(kMapValueAt, connectors.size() > 1 ? kMapClone : kMapSingle);
    for (size_t place = 0; place < connectors.size(); ++place, ++next) {
      AmdRecord target = targets.Slice(next * kAdlTargetSize, kAdlTargetSize);
      PutAdlDisplayId(model, connectors[place], AdlIndexOfSource(model, desktops[i]), target);
      target.PutInt(kTargetMapAt, index);
      target.Put(kTargetMaskAt, kPreferred);
      target.Put(kTargetValueAt, place == 0 ? kPreferred : 0);
    }
  }
}

int32_t GiveMaps(const Model& model, const std::vector<size_t>& gpus, int* map_count,
                 void** maps_out, int* target_count, void** targets_out) {
  std::vector<size_t> desktops;
  for (const size_t gpu : gpus) {
    const std::vector<size_t> more = AmdDesktops(model, gpu);
    desktops.insert(desktops.end(), more.begin(), more.end());
  }
  size_t shown = 0;
  for (const size_t source : desktops) shown += ConnectorsOfSource(model, source).size();
  AmdRecord maps(nullptr, 0);
  AmdRecord targets(nullptr, 0);
  const int32_t result = GiveAdlArray(desktops.size(), kAdlMapSize, map_count, maps_out, &maps);
  if (result != kAdlOk) return result;
  const int32_t second = GiveAdlArray(shown, kAdlTargetSize, target_count, targets_out, &targets);
  if (second == kAdlOk) PutMaps(model, desktops, maps, targets);
  return second;
}

int WINAPI DisplayMapConfigGet(int index, int* map_count, void** maps, int* target_count,
                               void** targets, int options) {
  Call call("ADL_Display_DisplayMapConfig_Get");
  std::vector<size_t> gpus;
  int32_t result = FindGpus(call, index, &gpus);
  const bool complete =
      map_count != nullptr && maps != nullptr && target_count != nullptr && targets != nullptr;
  if (result == kAdlOk && !complete) result = kAdlNullPointer;
  if (result == kAdlOk && options != 0 && options != 1) result = kAdlInvalidParameter;
  if (result == kAdlOk) {
    result = GiveMaps(CurrentModel(), gpus, map_count, maps, target_count, targets);
  }
  return static_cast<int>(call.Read(result, "adapter=%d option=%d", index, options));
}

// --- Setting.

struct Wish {
  size_t gpu = 0;
  AmdDesktop desktop;
};

// The connector of a target: its display index on the adapter of the call, or, where the call is
// for all of them, on the adapter that the target names.
int32_t FindTarget(const Model& model, int32_t index, const std::vector<size_t>& gpus,
                   const AmdRecord& target, size_t* connector) {
  std::optional<size_t> gpu;
  if (index != kAllAdapters) {
    gpu = gpus[0];
  } else if (const auto named = FindAdlAdapter(model, target.Int(kAdlLogicalAdapterAt))) {
    gpu = named->gpu;
  }
  if (!gpu) return kAdlInvalidAdapter;
  const std::optional<size_t> found = AdlConnector(model, *gpu, target.Int(kAdlLogicalIndexAt));
  if (!found) return kAdlInvalidDisplay;
  *connector = *found;
  return kAdlOk;
}

int32_t ReadMode(const AmdRecord& map, AmdDesktop* desktop) {
  const int32_t orientation = map.Int(kOrientationAt);
  const float refresh = map.Float(kRefreshAt);
  const bool sound = map.Int(kWidthAt) > 0 && map.Int(kHeightAt) > 0 && refresh >= 0 &&
                     orientation >= 0 && orientation < 4 * kQuarterTurn &&
                     orientation % kQuarterTurn == 0;
  if (!sound) return kAdlInvalidParameter;
  desktop->mode = DisplayMode{map.Get(kWidthAt), map.Get(kHeightAt), map.Get(kDepthAt),
                              static_cast<uint32_t>(std::lround(refresh))};
  desktop->nearest = true;
  desktop->placed = true;
  desktop->x = map.Int(kXAt);
  desktop->y = map.Int(kYAt);
  desktop->orientation = static_cast<uint32_t>(orientation / kQuarterTurn);
  return kAdlOk;
}

// One map with its targets.
int32_t ReadMap(const Model& model, int32_t index, const std::vector<size_t>& gpus,
                const AmdRecord& map, const std::vector<AmdRecord>& targets, Wish* wish) {
  const int64_t first = map.Int(kFirstTargetAt);
  const int64_t count = map.Int(kTargetCountAt);
  const auto most = static_cast<int64_t>(targets.size());
  if (first < 0 || count < 1 || first + count > most) return kAdlInvalidParameter;
  const int32_t mode = ReadMode(map, &wish->desktop);
  if (mode != kAdlOk) return mode;
  for (auto i = static_cast<size_t>(first); i < static_cast<size_t>(first + count); ++i) {
    size_t connector = 0;
    const int32_t result = FindTarget(model, index, gpus, targets[i], &connector);
    if (result != kAdlOk) return result;
    wish->desktop.connectors.push_back(connector);
  }
  wish->gpu = model.connectors[wish->desktop.connectors[0]].adapter;
  const bool one_gpu = std::all_of(
      wish->desktop.connectors.begin(), wish->desktop.connectors.end(),
      [&](size_t connector) { return model.connectors[connector].adapter == wish->gpu; });
  return one_gpu ? kAdlOk : kAdlInvalidParameter;
}

int32_t ResultOf(AmdOutcome outcome) {
  switch (outcome) {
    case AmdOutcome::kDone:
      return kAdlOk;
    case AmdOutcome::kTwice:
      return kAdlInvalidParameter;
    default:
      return kAdlError;
  }
}

int32_t SetMaps(Model& model, int32_t index, const std::vector<size_t>& gpus,
                const std::vector<AmdRecord>& maps, const std::vector<AmdRecord>& targets) {
  if (maps.empty() || targets.empty()) return kAdlInvalidParameter;
  std::vector<Wish> wishes(maps.size());
  for (size_t i = 0; i < maps.size(); ++i) {
    for (size_t j = 0; j < i; ++j) {
      if (maps[j].Int(kMapIndexAt) == maps[i].Int(kMapIndexAt)) return kAdlInvalidParameter;
    }
    const int32_t result = ReadMap(model, index, gpus, maps[i], targets, &wishes[i]);
    if (result != kAdlOk) return result;
  }
  // All or nothing: one adapter's refusal leaves the others as they were.
  Model changed = model;
  for (const size_t gpu : gpus) {
    std::vector<AmdDesktop> desktops;
    for (const Wish& wish : wishes) {
      if (wish.gpu == gpu) desktops.push_back(wish.desktop);
    }
    if (desktops.empty()) continue;
    const int32_t result = ResultOf(ShowAmdDesktops(changed, gpu, desktops));
    if (result != kAdlOk) return result;
  }
  model = std::move(changed);
  return kAdlOk;
}

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...) {
  char text[256];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return text;
}

// Logical and physical display, logical and physical adapter.
std::string DescribeId(const AmdRecord& id) {
  return Format("%d/%d/%d/%d", id.Int(kAdlLogicalIndexAt), id.Int(kAdlPhysicalIndexAt),
                id.Int(kAdlLogicalAdapterAt), id.Int(kAdlPhysicalAdapterAt));
}

std::string DescribeMap(const AmdRecord& map) {
  const AmdRecord mode = map.Slice(kModeAt, kAdlModeSize);
  return Format("[%d: %dx%dx%d@%g at %d,%d turn=%d", map.Int(kMapIndexAt), map.Int(kWidthAt),
                map.Int(kHeightAt), map.Int(kDepthAt), static_cast<double>(map.Float(kRefreshAt)),
                map.Int(kXAt), map.Int(kYAt), map.Int(kOrientationAt)) +
         Format(" adapter=%d id=%s flag=%d mode=0x%x/0x%x", mode.Int(0),
                DescribeId(mode.Slice(4, 16)).c_str(), mode.Int(48), mode.Get(52), mode.Get(56)) +
         Format(" targets=%d+%d map=0x%x/0x%x]", map.Int(kFirstTargetAt), map.Int(kTargetCountAt),
                map.Get(kMapMaskAt), map.Get(kMapValueAt));
}

std::string DescribeTarget(const AmdRecord& target) {
  return Format("[%s map=%d mask=0x%x value=0x%x]", DescribeId(target).c_str(),
                target.Int(kTargetMapAt), target.Get(kTargetMaskAt), target.Get(kTargetValueAt));
}

std::vector<AmdRecord> RecordsOf(void* array, int count, size_t size) {
  std::vector<AmdRecord> records;
  for (int i = 0; array != nullptr && i < count; ++i) {
    records.emplace_back(static_cast<uint8_t*>(array) + static_cast<size_t>(i) * size, size);
  }
  return records;
}

int WINAPI DisplayMapConfigSet(int index, int map_count, void* map_array, int target_count,
                               void* target_array) {
  Call call("ADL_Display_DisplayMapConfig_Set");
  const std::vector<AmdRecord> maps = RecordsOf(map_array, map_count, kAdlMapSize);
  const std::vector<AmdRecord> targets = RecordsOf(target_array, target_count, kAdlTargetSize);
  std::vector<size_t> gpus;
  int32_t result = FindGpus(call, index, &gpus);
  const bool complete = map_array != nullptr && target_array != nullptr;
  if (result == kAdlOk && !complete) result = kAdlNullPointer;
  if (result == kAdlOk) result = SetMaps(CurrentModel(), index, gpus, maps, targets);
  std::string text;
  for (const AmdRecord& map : maps) text += DescribeMap(map);
  text += " targets=";
  for (const AmdRecord& target : targets) text += DescribeTarget(target);
  return static_cast<int>(call.Changed(result, "adapter=%d maps=%s", index, text.c_str()));
}

}  // namespace

void AddAdlMapEntries(std::vector<Entry>* entries) {
  const Entry own[] = {
      {kAdlLibrary, "ADL_Display_DisplayMapConfig_Get", Guard<DisplayMapConfigGet>()},
      {kAdlLibrary, "ADL_Display_DisplayMapConfig_Set", Guard<DisplayMapConfigSet>()},
  };
  entries->insert(entries->end(), std::begin(own), std::end(own));
}

}  // namespace sim
