// What the C run-time tells about the process.
#include <cstdlib>
#include <cstring>

#include "sim/MachineState.h"

namespace sim {
namespace {

// The counters of a coverage build look for their folder in the real environment.
constexpr char kCoveragePrefix[] = "GCOV_";

char* FakeGetenv(const char* name) {
  if (std::strncmp(name, kCoveragePrefix, sizeof(kCoveragePrefix) - 1) == 0) {
    return std::getenv(name);
  }
  auto& environment = Machine::Current().state().host.environment;
  const auto found = environment.find(name);
  return found == environment.end() ? nullptr : found->second.data();
}

}  // namespace

const std::vector<Entry>& RunTimeFace() {
  static const std::vector<Entry> entries = {
      {"msvcrt.dll", "getenv", Guard<FakeGetenv>()},
  };
  return entries;
}

}  // namespace sim
