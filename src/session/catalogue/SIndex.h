// A position in the list of items, and how a press moves it.
#pragma once

#include <cstdint>

struct SIndex {
  static constexpr uint32_t BadValue = 0xFFFFFFFF;  // no position: the current mode matched no item
  static constexpr uint32_t MAX = 14;               // the last position that keys can reach

  uint32_t value = 0;
  uint32_t min = 0;
  uint32_t max = MAX;
};

/// True when `value` is a position that a move can start from.
constexpr bool IsReachable(uint32_t value) { return value <= SIndex::MAX; }

/// The position one step forward or back from `index`, wrapping round between `min` and `max`.
constexpr uint32_t NextPosition(const SIndex& index, bool forward) {
  // Deliberate: from no position, or one that only the mouse can reach, a move goes to the first
  // item either way.
  if (!IsReachable(index.value)) return 0;
  if (forward) return index.value == index.max ? index.min : index.value + 1;
  return index.value == index.min ? index.max : index.value - 1;
}

/// The highest position of a list of `item_count` items; `left_over` is what the index holds now.
constexpr uint32_t HighestPosition(uint32_t item_count, uint32_t left_over) {
  // Deliberate: a list that is empty or longer than 14 leaves the bound as the previous session
  // left it.
  return item_count >= 1 && item_count <= SIndex::MAX ? item_count - 1 : left_over;
}
