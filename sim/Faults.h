// Declared faults and call counts, by function name.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sim/Lock.h"

namespace sim {

class Faults {
 public:
  /// The nth call from now on (1 = the next) fails with `code`: that one, or that one and all
  /// behind it.
  void Declare(const std::string& function, uint32_t nth, uint32_t code, bool from_then_on);
  void Clear();
  /// The declared faults whose call has not come, "SetTimer, call 2", one text each.
  std::vector<std::string> Unused() const;
  /// Counts a call; the code when this call is to fail.
  std::optional<uint32_t> OnCall(const std::string& function);
  uint32_t Calls(const std::string& function) const;
  /// How many calls were made to fail so far. A fault sweep ends when a run has none.
  uint32_t Given() const;

 private:
  struct Fault {
    uint32_t nth;   // as declared
    uint32_t call;  // counted from the first call ever
    uint32_t code;
    bool from_then_on;
    bool given;
  };
  mutable Mutex mutex_;
  std::map<std::string, uint32_t> calls_;
  std::map<std::string, std::vector<Fault>> faults_;
  uint32_t given_ = 0;
};

}  // namespace sim
