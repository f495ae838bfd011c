// What was handed to the DLL and not given back. The same handle may be handed out several times (a
// module, an atom).
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
  /// Nobody will give these back, and nobody is asked to.
  void WriteOff(const std::string& kind);
  /// What is held now belongs to the DLL from its load to its unload, as the log file does, and is
  /// not told by Outstanding() until Settle().
  void MarkResident();
  /// The DLL is gone: nothing has a right to be held any more.
  void Settle();
  /// "device list 0x1f0\nkey 0x20 (2 times)\n"; "" when balanced.
  std::string Outstanding() const;

 private:
  mutable Mutex mutex_;
  using Key = std::pair<std::string, uint64_t>;
  std::map<Key, uint32_t> held_;
  std::map<Key, uint32_t> resident_;  // how many of the held ones are
};

}  // namespace sim
