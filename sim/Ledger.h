// What was handed to the DLL and not given back. The same handle may be handed out several times (a module, an atom).
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "sim/Lock.h"

namespace sim {

class Ledger {
 public:
  void Take(const std::string& kind, uint64_t what);
  /// False when there is nothing of that kind and number to give back.
  bool Give(const std::string& kind, uint64_t what);
  bool Holds(const std::string& kind, uint64_t what) const;
  uint32_t Count(const std::string& kind) const;
  void Clear();
  /// "device list 0x1f0\nkey 0x20 (2 times)\n"; "" when balanced.
  std::string Outstanding() const;

 private:
  mutable Mutex mutex_;
  std::map<std::pair<std::string, uint64_t>, uint32_t> held_;
};

}  // namespace sim
