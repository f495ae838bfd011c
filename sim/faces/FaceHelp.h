// Small things that the faces share.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

#include "Common/Win.h"
#include "sim/Face.h"
#include "sim/Machine.h"
#include "sim/MachineState.h"

namespace sim {

inline Model& CurrentModel() { return Machine::Current().state().model; }

/// The declared fault's code, or the failure that the function documents first.
inline uint32_t FaultOr(const Call& call, uint32_t documented) {
  return call.FaultCode() != 0 ? call.FaultCode() : documented;
}

/// Functions that give their result back may leave any last error behind, and do.
inline void LeaveDirtyLastError() { SetLastError(ERROR_ARENA_TRASHED); }

/// Writes text with its terminating zero, cut to the room there is.
template <typename Character>
void CopyText(Character* to, size_t room, const std::basic_string<Character>& text) {
  const size_t length = std::min(text.size(), room - 1);
  std::copy_n(text.begin(), length, to);
  to[length] = Character();
}

/// The rule of the functions that give a string back by length: with enough room the text and its
/// length, otherwise the room that is needed, terminating zero included.
template <typename Character>
DWORD GiveText(const std::basic_string<Character>& text, Character* to, DWORD room) {
  if (to == nullptr || room <= text.size()) return static_cast<DWORD>(text.size() + 1);
  CopyText(to, room, text);
  return static_cast<DWORD>(text.size());
}

inline std::string Lower(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

}  // namespace sim
