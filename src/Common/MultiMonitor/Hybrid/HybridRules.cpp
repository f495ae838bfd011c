#include "Common/MultiMonitor/Hybrid/HybridRules.h"

namespace {

constexpr uint32_t kNb = DisplayNumbers::MD_NB;
constexpr uint32_t kCrt = DisplayNumbers::MD_CRT;
constexpr uint32_t kHdmi = DisplayNumbers::MD_HDMI;
constexpr uint32_t kDp = DisplayNumbers::MD_DP;
constexpr uint32_t kSingle = DisplayNumbers::DM_SINGLE;
constexpr uint32_t kClone = DisplayNumbers::DM_CLONE;
constexpr uint32_t kExtend = DisplayNumbers::DM_EXTEND;
constexpr uint32_t kDigital = kHdmi | kDp;

struct DisplayOwner {
  uint32_t display;
  HybridAdapter adapter;
};

// Deliberate: television is nobody's.
constexpr DisplayOwner kOwners[] = {
    {kNb, HybridAdapter::kIntel},
    {kCrt, HybridAdapter::kIntel},
    {DisplayNumbers::MD_DVI, HybridAdapter::kNvidia},
    {kHdmi, HybridAdapter::kNvidia},
    {kDp, HybridAdapter::kNvidia},
};

// A display is placed when the connected displays, looked at through `mask`, are those of
// `connected`, the list is long enough and the display is wanted.
struct PlacingRow {
  uint32_t mask;
  uint32_t connected;
  NvidiaPlacing placing;
};

// Deliberate: DVI stands in neither table.
constexpr PlacingRow kSideBySide[] = {
    {kDigital, kHdmi | kDp, {kDp, 0}},
    {kDigital, kHdmi | kDp, {kHdmi, 1}},
    {kDigital, kHdmi, {kHdmi, 0}},
    {kDigital, kDp, {kDp, 0}},
};
// Without CRT the first entry shows the clone, together with the panel.
constexpr PlacingRow kBesideClone[] = {
    {kCrt | kHdmi, kHdmi, {kHdmi, 1}},
    // Deliberate: DisplayPort beside CRT goes on the second entry, although the first is free.
    {kCrt | kDigital, kCrt | kDp, {kDp, 1}},
    {kCrt | kDigital, kCrt | kHdmi, {kHdmi, 0}},
    {kCrt | kDigital, kCrt | kDigital, {kDp, 0}},
    {kCrt | kDigital, kCrt | kDigital, {kHdmi, 1}},
};

template <size_t kRows>
std::vector<NvidiaPlacing> PlacingsOf(const PlacingRow (&rows)[kRows], uint32_t connected,
                                      uint32_t wanted, size_t nvidia_devices) {
  std::vector<NvidiaPlacing> placings;
  for (const PlacingRow& row : rows) {
    if ((connected & row.mask) != row.connected) continue;
    if (row.placing.entry >= nvidia_devices || (wanted & row.placing.display) == 0) continue;
    placings.push_back(row.placing);
  }
  return placings;
}

bool IsThreeOrMore(uint32_t displays) { return CountBits(displays) >= 3; }

// Two displays in all, of which Intel has the panel: NVIDIA's clone or extension is with the panel.
bool NvidiaLeadsPair(const HybridAnswers& a) {
  return a.i_conn_count == 1 && (a.n_mode == kClone || a.n_mode == kExtend) &&
         !IsThreeOrMore(a.n_active | a.i_disp);
}

// A clone group over both adapters, of which Intel sees its half.
bool IsCloneOverBoth(const HybridAnswers& a) {
  constexpr uint32_t kPair = kNb | kHdmi;
  return a.n_mode == kClone && a.i_mode == kSingle && (a.n_disp & kPair) == kPair;
}

bool AgreeOnOrdinaryMode(const HybridAnswers& a) {
  if (a.i_mode != a.n_mode) return false;
  return a.i_mode != kExtend || !IsThreeOrMore(a.n_disp | a.i_disp);
}

}  // namespace

HybridAdapter AdapterOfDisplay(uint32_t display) {
  for (const DisplayOwner& owner : kOwners) {
    if (owner.display == display) return owner.adapter;
  }
  return HybridAdapter::kNone;
}

HybridMode DecideHybridMode(const HybridAnswers& a) {
  if (!a.i_ok && !a.n_ok) return {false, 0, 0};
  if (!a.i_ok || a.i_mode == 0) return {true, a.n_mode, a.n_disp};
  if (!a.n_ok || a.n_mode == 0 || a.n_conn_count == 0) return {true, a.i_mode, a.i_disp};
  if (NvidiaLeadsPair(a)) return {true, a.n_mode, a.n_disp | kNb};
  if (IsCloneOverBoth(a)) return {true, kClone, a.n_disp};
  if (AgreeOnOrdinaryMode(a)) {
    const uint32_t on_intel = a.i_disp != 0 ? a.i_disp : a.c_disp & ~kDigital;
    return {true, a.i_mode, a.n_disp | on_intel};
  }
  if (a.c_mode == kExtend && a.n_mode == kExtend) {
    return {true, DisplayNumbers::DM_ADVANCED_P1, a.n_disp | a.i_disp};
  }
  return {true, DisplayNumbers::DM_ADVANCED_P2, a.n_active | a.i_disp};
}

std::vector<NvidiaPlacing> PlacingsSideBySide(uint32_t connected, uint32_t wanted,
                                              size_t nvidia_devices) {
  return PlacingsOf(kSideBySide, connected, wanted, nvidia_devices);
}

std::vector<NvidiaPlacing> PlacingsBesideClone(uint32_t connected, uint32_t wanted,
                                               size_t nvidia_devices) {
  return PlacingsOf(kBesideClone, connected, wanted, nvidia_devices);
}
