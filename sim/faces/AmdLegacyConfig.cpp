// The legacy library's records of arrangements, and what setting them does.
#include <algorithm>
#include <cstdio>
#include <iterator>

#include "sim/Topology.h"
#include "sim/faces/AmdLegacy.h"

namespace sim {
namespace {

// AtiConfigRecord.
constexpr size_t kArrangementAt = 4;
constexpr size_t kVectorsAt = 8;
constexpr size_t kVectorCountAt = 36;
constexpr size_t kConfigRestAt = 40;
constexpr uint32_t kClone = 2;
constexpr uint32_t kSingle = 3;
constexpr uint32_t kExtended = 5;

// AtiAdapterConfig and its two entries.
constexpr size_t kSetWordAt = 4;
constexpr size_t kEntriesAt[] = {8, 80};
constexpr size_t kLastWordAt = 152;
constexpr size_t kEntrySize = 72;
constexpr size_t kAdapterAt = 4;
constexpr size_t kSlotCountAt = 8;
constexpr size_t kSlotsAt = 12;
constexpr size_t kSlotSize = 16;
constexpr size_t kSlots = 2;
constexpr size_t kHeightAt = 44;
constexpr size_t kWidthAt = 48;
constexpr size_t kBitsAt = 52;
constexpr size_t kFrequencyAt = 56;
constexpr size_t kXAt = 64;
constexpr size_t kYAt = 68;
// Words that are the library's own. It gives them and wants them back.
constexpr size_t kOwnSlotWordAt = 12;
constexpr uint32_t kOwnSlotWord = 0x51070000;
constexpr size_t kOwnEntryWordAt = 60;
constexpr uint32_t kOwnEntryWord = 0xE2700000;

AmdLegacyResult ResultOf(AmdOutcome outcome) {
  switch (outcome) {
    case AmdOutcome::kDone:
      return kLegacySuccess;
    case AmdOutcome::kNotConnected:
      return kLegacyNotConnected;
    case AmdOutcome::kTwice:
      return kLegacyBadArgument;
    case AmdOutcome::kTooMany:
      return kLegacyTooManyDisplays;
    default:
      return kLegacyNoSuchMode;
  }
}

std::vector<Path> PathsOf(const Model& model, size_t gpu) {
  std::vector<Path> paths;
  for (const size_t source : AmdDesktops(model, gpu)) {
    for (const size_t connector : ConnectorsOfSource(model, source)) {
      paths.push_back({source, connector});
    }
  }
  return paths;
}

// The connector of a vector that has one bit.
AmdLegacyResult ConnectorOfVector(const Model& model, size_t gpu, uint32_t vector,
                                  size_t* connector) {
  if (vector == 0 || (vector & (vector - 1)) != 0) return kLegacyBadArgument;
  for (const size_t display : LegacyDisplays(model, gpu)) {
    if (LegacyVector(model, display) != vector) continue;
    *connector = display;
    return kLegacySuccess;
  }
  return kLegacyUnknownDisplay;
}

std::string Words(const AmdRecord& record, size_t first, size_t end) {
  std::string text;
  for (size_t at = first; at < end; at += 4) {
    char word[16];
    snprintf(word, sizeof word, "%s%x", text.empty() ? "" : ",", record.Get(at));
    text += word;
  }
  return text;
}

}  // namespace

// --- AtiConfigRecord.

AmdLegacyResult GetLegacyActive(const Model& model, size_t gpu, AmdRecord record) {
  const std::vector<Path> paths = PathsOf(model, gpu);
  const size_t desktops = AmdDesktops(model, gpu).size();
  const size_t count = std::min<size_t>(paths.size(), kLegacyDisplays);
  record.Put(0, kLegacyConfigSize);
  record.Put(kArrangementAt, desktops > 1 ? kExtended : count > 1 ? kClone : kSingle);
  for (size_t i = 0; i < count; ++i) {
    record.Put(kVectorsAt + 4 * i, LegacyVector(model, paths[i].connector));
  }
  record.Put(kVectorCountAt, static_cast<uint32_t>(count));
  return kLegacySuccess;
}

AmdLegacyResult SetLegacyConfig(Model& model, uint32_t adapter, const AmdRecord& record) {
  const std::optional<size_t> source = LegacySource(model, adapter);
  if (!source) return kLegacyUnknownAdapter;
  const size_t gpu = model.sources[*source].adapter;
  const uint32_t arrangement = record.Get(kArrangementAt);
  const uint32_t count = record.Get(kVectorCountAt);
  const bool sound = arrangement == kSingle ? count == 1
                                            : (arrangement == kClone || arrangement == kExtended) &&
                                                  count >= 2 && count <= kLegacyDisplays;
  bool rest_is_zero = true;
  for (size_t at = kConfigRestAt; at < kLegacyConfigSize; at += 4) {
    rest_is_zero = rest_is_zero && record.Get(at) == 0;
  }
  if (record.Get(0) != kLegacyConfigSize || !sound || !rest_is_zero) return kLegacyBadArgument;
  std::vector<AmdDesktop> desktops(arrangement == kExtended ? count : 1);
  for (uint32_t i = 0; i < count; ++i) {
    size_t connector = 0;
    const AmdLegacyResult result =
        ConnectorOfVector(model, gpu, record.Get(kVectorsAt + size_t{4} * i), &connector);
    if (result != kLegacySuccess) return result;
    desktops[arrangement == kExtended ? i : 0].connectors.push_back(connector);
  }
  return ResultOf(ShowAmdDesktops(model, gpu, desktops));
}

std::string DescribeLegacyConfig(const AmdRecord& record) {
  char text[96];
  snprintf(text, sizeof text, "size=%u arrangement=%u count=%u", record.Get(0),
           record.Get(kArrangementAt), record.Get(kVectorCountAt));
  return text + std::string(" vectors=") + Words(record, kVectorsAt, kVectorCountAt) +
         " rest=" + Words(record, kConfigRestAt, kLegacyConfigSize);
}

// --- AtiAdapterConfig.

namespace {

void PutEntry(const Model& model, size_t source, AmdRecord entry) {
  const std::vector<size_t> connectors = ConnectorsOfSource(model, source);
  const size_t slots = std::min(connectors.size(), kSlots);
  entry.Put(kSlotCountAt, static_cast<uint32_t>(slots));
  for (size_t i = 0; i < kSlots; ++i) {
    AmdRecord slot = entry.Slice(kSlotsAt + i * kSlotSize, kSlotSize);
    slot.Put(0, i < slots ? LegacyVector(model, connectors[i]) : 0);
    slot.Put(kOwnSlotWordAt, kOwnSlotWord + static_cast<uint32_t>(i));
  }
  const Source& s = model.sources[source];
  const bool shows = slots != 0;
  entry.Put(kHeightAt, shows ? s.mode.height : 0);
  entry.Put(kWidthAt, shows ? s.mode.width : 0);
  entry.Put(kBitsAt, shows ? s.mode.bits : 0);
  entry.Put(kFrequencyAt, shows ? s.mode.frequency : 0);
  entry.Put(kOwnEntryWordAt, kOwnEntryWord + static_cast<uint32_t>(source));
  entry.PutInt(kXAt, shows ? s.x : 0);
  entry.PutInt(kYAt, shows ? s.y : 0);
}

bool OwnWordsAreBack(size_t source, const AmdRecord& entry) {
  bool back = entry.Get(kOwnEntryWordAt) == kOwnEntryWord + static_cast<uint32_t>(source);
  for (size_t i = 0; i < kSlots; ++i) {
    const uint32_t word = entry.Get(kSlotsAt + i * kSlotSize + kOwnSlotWordAt);
    back = back && word == kOwnSlotWord + static_cast<uint32_t>(i);
  }
  return back;
}

// The source of each entry; both belong to one adapter.
AmdLegacyResult FindEntries(const Model& model, const AmdRecord& record, size_t (&sources)[2]) {
  if (record.Get(0) != kLegacyAdapterConfigSize) return kLegacyBadArgument;
  for (size_t i = 0; i < 2; ++i) {
    const AmdRecord entry = record.Slice(kEntriesAt[i], kEntrySize);
    if (entry.Get(0) != kEntrySize) return kLegacyBadArgument;
    const std::optional<size_t> source = LegacySource(model, entry.Get(kAdapterAt));
    if (!source) return kLegacyUnknownAdapter;
    sources[i] = *source;
  }
  const bool same = model.sources[sources[0]].adapter == model.sources[sources[1]].adapter;
  return same ? kLegacySuccess : kLegacyUnknownAdapter;
}

DisplayMode ModeOf(const AmdRecord& entry) {
  return {entry.Get(kWidthAt), entry.Get(kHeightAt), entry.Get(kBitsAt), entry.Get(kFrequencyAt)};
}

// What the first entry names is the vector of what it shows.
AmdLegacyResult ReadFirst(const Model& model, size_t gpu, const AmdRecord& entry,
                          AmdDesktop* desktop) {
  const uint32_t slots = entry.Get(kSlotCountAt);
  if (slots < 1 || slots > kSlots) return kLegacyBadArgument;
  for (size_t i = 0; i < slots; ++i) {
    size_t connector = 0;
    const uint32_t vector = entry.Get(kSlotsAt + i * kSlotSize);
    const AmdLegacyResult result = ConnectorOfVector(model, gpu, vector, &connector);
    if (result != kLegacySuccess) return result;
    desktop->connectors.push_back(connector);
  }
  desktop->mode = ModeOf(entry);
  desktop->placed = true;
  desktop->x = entry.Int(kXAt);
  desktop->y = entry.Int(kYAt);
  return kLegacySuccess;
}

// What the second entry names is a type: the first connected display of it that the first entry
// does not show. The types 2 and 5 are one.
AmdLegacyResult ReadSecond(const Model& model, size_t gpu, const AmdRecord& entry,
                           const std::vector<size_t>& shown, AmdDesktop* desktop) {
  const auto plain = [](uint32_t type) { return type == 5 ? 2 : type; };
  if (entry.Get(kSlotCountAt) != 1) return kLegacyBadArgument;
  for (const size_t display : LegacyDisplays(model, gpu)) {
    const bool wanted = plain(LegacyType(model.connectors[display])) == plain(entry.Get(kSlotsAt));
    const bool free = std::find(shown.begin(), shown.end(), display) == shown.end();
    if (!wanted || !free || !IsConnected(model, display)) continue;
    desktop->connectors = {display};
    desktop->mode = ModeOf(entry);
    desktop->placed = true;
    desktop->x = entry.Int(kXAt);
    desktop->y = entry.Int(kYAt);
    return kLegacySuccess;
  }
  return kLegacyUnknownDisplay;
}

}  // namespace

AmdLegacyResult GetLegacyAdapterConfig(const Model& model, AmdRecord record) {
  size_t sources[2] = {};
  const AmdLegacyResult result = FindEntries(model, record, sources);
  if (result != kLegacySuccess) return result;
  for (size_t i = 0; i < 2; ++i) {
    PutEntry(model, sources[i], record.Slice(kEntriesAt[i], kEntrySize));
  }
  record.Put(kLastWordAt, 1);
  return kLegacySuccess;
}

AmdLegacyResult SetLegacyAdapterConfig(Model& model, const AmdRecord& record) {
  size_t sources[2] = {};
  const AmdLegacyResult result = FindEntries(model, record, sources);
  if (result != kLegacySuccess) return result;
  if (record.Get(kSetWordAt) != 1) return kLegacyBadArgument;
  for (size_t i = 0; i < 2; ++i) {
    if (!OwnWordsAreBack(sources[i], record.Slice(kEntriesAt[i], kEntrySize))) {
      return kLegacyBadArgument;
    }
  }
  const size_t gpu = model.sources[sources[0]].adapter;
  std::vector<AmdDesktop> desktops(2);
  for (size_t i = 0; i < 2; ++i) {
    const AmdRecord entry = record.Slice(kEntriesAt[i], kEntrySize);
    desktops[i].source = sources[i];
    const AmdLegacyResult read =
        i == 0 ? ReadFirst(model, gpu, entry, &desktops[0])
               : ReadSecond(model, gpu, entry, desktops[0].connectors, &desktops[1]);
    if (read != kLegacySuccess) return read;
  }
  return ResultOf(ShowAmdDesktops(model, gpu, desktops));
}

std::string DescribeLegacyAdapterConfig(const AmdRecord& record) {
  char head[64];
  snprintf(head, sizeof head, "size=%u set=%u", record.Get(0), record.Get(kSetWordAt));
  std::string text = head;
  for (const size_t at : kEntriesAt) {
    const AmdRecord entry = record.Slice(at, kEntrySize);
    char fields[160];
    snprintf(fields, sizeof fields, " [size=%u adapter=%u slots=%u ", entry.Get(0),
             entry.Get(kAdapterAt), entry.Get(kSlotCountAt));
    text += fields + Words(entry, kSlotsAt, kHeightAt);
    snprintf(fields, sizeof fields, " %ux%ux%u@%u at %d,%d own=%x]", entry.Get(kWidthAt),
             entry.Get(kHeightAt), entry.Get(kBitsAt), entry.Get(kFrequencyAt), entry.Int(kXAt),
             entry.Int(kYAt), entry.Get(kOwnEntryWordAt));
    text += fields;
  }
  return text + " last=" + std::to_string(record.Get(kLastWordAt));
}

// --- EnableExtendedDesktop.

AmdLegacyResult ExtendLegacy(Model& model, uint32_t adapter, bool enable) {
  const std::optional<size_t> source = LegacySource(model, adapter);
  if (!source) return kLegacyUnknownAdapter;
  if (IsAttached(model, *source) == enable) return kLegacySuccess;
  const size_t gpu = model.sources[*source].adapter;
  size_t taken = model.connectors.size();
  if (enable) {
    const std::optional<size_t> found = ConnectorForSource(model, model.active, *source);
    if (!found) return kLegacyNotConnected;
    taken = *found;
  }
  std::vector<AmdDesktop> desktops;
  for (const size_t shown : AmdDesktops(model, gpu)) {
    if (shown == *source) continue;
    AmdDesktop desktop;
    for (const size_t connector : ConnectorsOfSource(model, shown)) {
      if (connector != taken) desktop.connectors.push_back(connector);
    }
    const Source& s = model.sources[shown];
    desktop.source = shown;
    desktop.mode = s.mode;
    desktop.placed = true;
    desktop.x = s.x;
    desktop.y = s.y;
    desktop.orientation = s.orientation;
    desktops.push_back(desktop);
  }
  // The last desktop of the machine stays.
  if (!enable && desktops.empty()) return kLegacyBadArgument;
  if (enable) {
    AmdDesktop added;
    added.source = source;
    added.connectors = {taken};
    desktops.push_back(added);
  }
  return ResultOf(ShowAmdDesktops(model, gpu, desktops));
}

}  // namespace sim
