#include "sim/Faults.h"

namespace sim {

void Faults::Declare(const std::string& function, uint32_t nth, uint32_t code, bool from_then_on) {
  Lock lock(mutex_);
  const auto counted = calls_.find(function);
  const uint32_t so_far = counted == calls_.end() ? 0 : counted->second;
  faults_[function].push_back({so_far + nth, code, from_then_on});
}

void Faults::Clear() {
  Lock lock(mutex_);
  faults_.clear();
}

std::optional<uint32_t> Faults::OnCall(const std::string& function) {
  Lock lock(mutex_);
  const uint32_t call = ++calls_[function];
  const auto declared = faults_.find(function);
  if (declared == faults_.end()) return std::nullopt;
  for (const Fault& fault : declared->second) {
    if (call == fault.call || (fault.from_then_on && call > fault.call)) {
      ++given_;
      return fault.code;
    }
  }
  return std::nullopt;
}

uint32_t Faults::Calls(const std::string& function) const {
  Lock lock(mutex_);
  const auto counted = calls_.find(function);
  return counted == calls_.end() ? 0 : counted->second;
}

uint32_t Faults::Given() const {
  Lock lock(mutex_);
  return given_;
}

}  // namespace sim
