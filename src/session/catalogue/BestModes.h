// The best of a list of display modes, found in one walk that keeps two of them. Pure code: a mode
// is any record that names its fields as DEVMODE does.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace catalogue {

/// The two switches of Ostrel.cfg that speak of frequencies.
struct FrequencyRules {
  bool prefer_60 = false;           // "Frequency 60Hz Is Better"
  bool eliminate_below_60 = false;  // "Eliminate Frequency Less Then 60Hz"
};

constexpr uint32_t kLowestBits = 16;
constexpr uint32_t kLowestFrequency = 30;
constexpr uint32_t kUsualFrequency = 60;
constexpr uint32_t kLowestWidth = 800;
constexpr uint32_t kLowestHeight = 600;

/// Of two frequencies at one resolution, whether the candidate's is the better one: 60 Hz, once
/// reached, stays, and above it the lower wins.
template <typename Mode>
bool IsBetterFrequency(const Mode& current, const Mode& candidate) {
  if (current.dmDisplayFrequency == kUsualFrequency) return false;
  if (current.dmDisplayFrequency < kUsualFrequency) return true;
  return candidate.dmDisplayFrequency <= kUsualFrequency ||
         candidate.dmDisplayFrequency <= current.dmDisplayFrequency;
}

/// Whether `candidate` takes the place of `current`.
template <typename Mode>
bool IsBetter(const Mode& current, const Mode& candidate, bool prefer_60) {
  if (candidate.dmBitsPerPel < current.dmBitsPerPel) return false;
  if (candidate.dmPelsWidth < current.dmPelsWidth) return false;
  // Deliberate: a wider mode wins also when it is lower.
  const bool same_width = candidate.dmPelsWidth == current.dmPelsWidth;
  if (same_width && candidate.dmPelsHeight < current.dmPelsHeight) return false;
  // Deliberate: of equal modes the last listed wins, whatever their frequencies.
  if (!prefer_60) return true;
  if (candidate.dmBitsPerPel != current.dmBitsPerPel || !same_width) return true;
  if (candidate.dmPelsHeight != current.dmPelsHeight) return true;
  return IsBetterFrequency(current, candidate);
}

/// Puts a mode into a list of at most two, the best in front.
// Deliberate: a mode that is only second best does not take the second place.
template <typename Mode>
void KeepBest(std::vector<Mode>* list, const Mode& mode, bool prefer_60) {
  if (list->size() < 2) {
    list->push_back(mode);
    if (list->size() < 2) return;
    if (IsBetter((*list)[0], (*list)[1], prefer_60)) std::swap((*list)[0], (*list)[1]);
    return;
  }
  if (!IsBetter((*list)[0], mode, prefer_60)) return;
  (*list)[1] = (*list)[0];
  (*list)[0] = mode;
}

/// One walk over a display's modes. Each is looked at once, and two are kept.
template <typename Mode>
class BestModes {
 public:
  explicit BestModes(FrequencyRules rules) : rules_(rules) { list_.reserve(2); }

  /// Takes the next mode of the list.
  void Add(const Mode& mode) {
    if (IsAccepted(mode)) KeepBest(&list_, mode, rules_.prefer_60);
  }

  /// None, one or two modes, the best in front.
  const std::vector<Mode>& list() const { return list_; }

 private:
  bool IsAccepted(const Mode& mode) {
    if (mode.dmBitsPerPel < min_bits_) return false;
    // Deliberate: the depth counts from here on, also when the mode is refused for its size.
    min_bits_ = mode.dmBitsPerPel;
    if (mode.dmPelsWidth < kLowestWidth || mode.dmPelsHeight < kLowestHeight) return false;
    // Deliberate: a portrait mode is never chosen.
    if (mode.dmPelsWidth < mode.dmPelsHeight) return false;
    if (mode.dmDisplayFrequency < min_frequency_) return false;
    // Deliberate: modes below 60 Hz are refused from the first one of at least 60 Hz on; those met
    // before stay.
    if (rules_.eliminate_below_60 && mode.dmDisplayFrequency >= kUsualFrequency) {
      min_frequency_ = kUsualFrequency;
    }
    return true;
  }

  const FrequencyRules rules_;
  std::vector<Mode> list_;
  uint32_t min_bits_ = kLowestBits;
  uint32_t min_frequency_ = kLowestFrequency;
};

/// The sizes to try on a display, best first.
/// @param best    what the walk kept; not empty
/// @param limit   an upper size, or null for none
template <typename Mode, typename Size>
std::vector<Mode> ModesToTry(const std::vector<Mode>& best, const Size* limit) {
  std::vector<Mode> modes = best;
  modes.push_back(best[0]);
  modes.back().dmPelsWidth = 1024;
  modes.back().dmPelsHeight = 768;
  Mode& first = modes[0];
  if (limit == nullptr) return modes;
  if (first.dmPelsWidth <= limit->width && first.dmPelsHeight <= limit->height) return modes;
  // Deliberate: both sides become the limit's, whatever the shape and whether or not it is listed.
  first.dmPelsWidth = limit->width;
  first.dmPelsHeight = limit->height;
  return modes;
}

}  // namespace catalogue
