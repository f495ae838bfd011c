// Calls a simulated function as the DLL under test would.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "sim/FaceTable.h"
#include "sim/Failure.h"

namespace sim {

/// The simulated function of that name, with the type of the real one: Fake(Sleep, "Sleep")(100).
template <typename Function>
Function* Fake(Function*, const char* name) {
  const Entry* entry = FindEntryByName(name);
  if (entry == nullptr) throw std::runtime_error(std::string("not simulated: ") + name);
  return reinterpret_cast<Function*>(entry->function);
}

/// Catches what would otherwise fail the running test.
class CaughtFailures {
 public:
  CaughtFailures() : before_(SetFailureSink(Keep)) { list().clear(); }
  ~CaughtFailures() { SetFailureSink(before_); }
  CaughtFailures(const CaughtFailures&) = delete;
  CaughtFailures& operator=(const CaughtFailures&) = delete;

  static std::vector<std::string>& list() {
    static std::vector<std::string> failures;
    return failures;
  }

 private:
  static void Keep(const std::string& text) { list().push_back(text); }
  FailureSink before_;
};

}  // namespace sim

#define SIM_FAKE(Function) ::sim::Fake(&Function, #Function)
