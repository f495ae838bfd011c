// Functions that stay real and are only counted and made to fail on request.
#pragma once

#include "Common/Win.h"
#include "sim/Face.h"

namespace sim {

/// A declared fault makes the function answer 0, FALSE or null with the declared last error.
template <auto kReal>
struct Counted;

template <typename Result, typename... Arguments, Result (*kReal)(Arguments...)>
struct Counted<kReal> {
  static inline const char* name = nullptr;

  static Result Run(Arguments... arguments) noexcept {
    const Call call(name);
    if (!call.Fails()) return kReal(arguments...);
    SetLastError(call.FaultCode() != 0 ? call.FaultCode() : ERROR_GEN_FAILURE);
    return Result();
  }
};

template <auto kReal>
Entry CountedEntry(const char* module, const char* name) {
  Counted<kReal>::name = name;
  return {module, name, Erase(&Counted<kReal>::Run)};
}

}  // namespace sim
