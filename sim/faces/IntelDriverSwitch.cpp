// Changing what the driver shows: the records of ChangeActiveDevices, and the arrangement behind
// them and behind the N-view block.
#include <algorithm>
#include <cstdio>
#include <set>
#include <utility>

#include "sim/Topology.h"
#include "sim/faces/IntelDriverRules.h"

namespace sim {
namespace {

// The active-devices record.
constexpr uint32_t kRecordSize = 120;
constexpr uint32_t kSizeAt = 0;
constexpr uint32_t kNameAt = 4;
constexpr uint32_t kNameRoom = 80;
constexpr uint32_t kModeAt = 84;
constexpr uint32_t kPrimaryAt = 88;
constexpr uint32_t kCountAt = 92;
constexpr uint32_t kFirstUidAt = 96;
constexpr uint32_t kSecondUidAt = 100;
constexpr uint32_t kReservedAt = 104;

constexpr uint32_t kSingle = 1;
constexpr uint32_t kClone = 3;

IntelError CheckConnectors(const Model& model, const std::vector<IntelDesktop>& desktops) {
  std::set<size_t> seen;
  for (const IntelDesktop& desktop : desktops) {
    for (const size_t connector : desktop.connectors) {
      const size_t adapter = model.connectors[connector].adapter;
      if (adapter != model.sources[desktop.source].adapter) return kIntelUnknownDevice;
      if (!IsConnected(model, connector)) return kIntelNotAttached;
      if (!seen.insert(connector).second) return kIntelBadArgument;
    }
  }
  return kIntelSuccess;
}

// Size and place of one desktop in the arrangement; `right` is where the one before ends.
IntelError Settle(const Model& model, const IntelDesktop& desktop, const Arrangement* last_use,
                  int32_t right, Source* source) {
  if (desktop.mode) {
    const std::vector<DisplayMode> modes = CommonModes(model, desktop.connectors);
    const std::optional<DisplayMode> found =
        FindMode(modes, Turned(*desktop.mode, desktop.orientation));
    if (!found) return kIntelNoSuchMode;
    source->mode = Turned(*found, desktop.orientation);
    source->orientation = desktop.orientation;
  } else if (last_use != nullptr) {
    *source = last_use->sources[desktop.source];
    return kIntelSuccess;
  } else {
    const std::optional<DisplayMode> best = BestMode(model, desktop.connectors);
    if (!best) return kIntelNoSuchMode;
    source->mode = *best;
    source->orientation = 0;
  }
  source->x = desktop.placed ? desktop.x : right;
  source->y = desktop.placed ? desktop.y : 0;
  return kIntelSuccess;
}

// The parts of one record, checked by themselves.
IntelError ReadRecord(const Model& model, const IntelBlock& record, IntelDesktop* desktop) {
  const std::optional<std::string> name = record.Text(kNameAt, kNameRoom);
  const uint32_t mode = record.Get(kModeAt);
  const uint32_t primary = record.Get(kPrimaryAt);
  const uint32_t first = record.Get(kFirstUidAt);
  const uint32_t second = record.Get(kSecondUidAt);
  const uint32_t count = record.Get(kCountAt);
  if (record.Get(kSizeAt) != kRecordSize || !name || !record.IsZero(kReservedAt, kRecordSize)) {
    return kIntelBadArgument;
  }
  const bool is_single = mode == kSingle && count == 1 && primary == 0 && second == 0;
  const bool is_clone = mode == kClone && count == 2 && (primary == first || primary == second);
  if (!is_single && !is_clone) return kIntelBadArgument;
  const std::optional<size_t> source = IntelSource(model, *name);
  if (!source) return kIntelUnknownDevice;
  desktop->source = *source;
  for (uint32_t i = 0; i < count; ++i) {
    const std::optional<size_t> connector = IntelConnector(model, i == 0 ? first : second);
    if (!connector) return kIntelUnknownDevice;
    desktop->connectors.push_back(*connector);
  }
  return kIntelSuccess;
}

}  // namespace

IntelError ShowIntelDesktops(Model& model, const std::vector<IntelDesktop>& desktops) {
  if (const IntelError error = CheckConnectors(model, desktops)) return error;
  const size_t adapter = model.sources[desktops[0].source].adapter;
  Arrangement arrangement{{}, model.sources, 0};
  for (const Path& path : model.active) {
    if (model.sources[path.source].adapter != adapter) arrangement.paths.push_back(path);
  }
  for (const IntelDesktop& desktop : desktops) {
    for (const size_t connector : desktop.connectors) {
      arrangement.paths.push_back({desktop.source, connector});
    }
  }
  if (!PathsAreDrivable(model, arrangement.paths)) return kIntelTooManyDisplays;

  const Arrangement* const last_use = LastUse(model, arrangement.paths);
  int32_t right = 0;
  for (const IntelDesktop& desktop : desktops) {
    Source& source = arrangement.sources[desktop.source];
    if (const IntelError error = Settle(model, desktop, last_use, right, &source)) return error;
    right = source.x + static_cast<int32_t>(source.mode.width);
  }
  // The primary stays where another adapter shows it; otherwise the first desktop has it.
  const size_t primary = model.primary_source;
  const bool elsewhere = IsAttached(model, primary) && model.sources[primary].adapter != adapter;
  PlaceDesktops(&arrangement, elsewhere ? primary : desktops[0].source);
  ApplyArrangement(model, arrangement);
  RememberCurrent(model);
  return kIntelSuccess;
}

IntelError ChangeIntelDevices(Model& model, const IntelBlock& records) {
  const uint32_t count = records.size() / kRecordSize;
  if (records.size() % kRecordSize != 0 || count < 1 || count > 2) return kIntelBadArgument;
  std::vector<IntelDesktop> desktops(count);
  for (uint32_t i = 0; i < count; ++i) {
    const IntelBlock record = records.Slice(i * kRecordSize, kRecordSize);
    if (const IntelError error = ReadRecord(model, record, &desktops[i])) return error;
    // Several records are an extended desktop: each shows one of its own.
    if (count > 1 && desktops[i].connectors.size() != 1) return kIntelBadArgument;
    if (i > 0 && desktops[i].source == desktops[0].source) return kIntelBadArgument;
    if (model.sources[desktops[i].source].adapter != model.sources[desktops[0].source].adapter) {
      return kIntelUnknownDevice;
    }
  }
  return ShowIntelDesktops(model, desktops);
}

std::string DescribeIntelRecords(const IntelBlock& records) {
  std::string text;
  for (uint32_t at = 0; at + kRecordSize <= records.size(); at += kRecordSize) {
    const IntelBlock record = records.Slice(at, kRecordSize);
    char fields[160];
    snprintf(fields, sizeof fields, "%s mode=%u primary=0x%x count=%u first=0x%x second=0x%x",
             record.Text(kNameAt, kNameRoom).value_or("?").c_str(), record.Get(kModeAt),
             record.Get(kPrimaryAt), record.Get(kCountAt), record.Get(kFirstUidAt),
             record.Get(kSecondUidAt));
    text += (text.empty() ? "" : ", ") + std::string(fields);
  }
  return text.empty() ? "size=" + std::to_string(records.size()) : text;
}

}  // namespace sim
