#include "sim/Faults.h"

namespace sim {

void Faults::Declare(const std::string& function, uint32_t nth, uint32_t code, bool from_then_on) {
  Lock lock(mutex_);
  const auto counted = calls_.find(function);
  const uint32_t so_far = counted == calls_.end() ? 0 : counted->second;
  faults_[function].push_back({nth, so_far + nth, code, from_then_on, false});
}

void Faults::Clear() {
  Lock lock(mutex_);
  faults_.clear();
}

std::vector<std::string> Faults::Unused() const {
  Lock lock(mutex_);
  std::vector<std::string> unused;
  for (const auto& [function, faults] : faults_) {
    for (const Fault& fault : faults) {
      if (fault.given) continue;
      unused.push_back(function + ", call " + std::to_string(fault.nth));
    }
  }
  return unused;
}

std::optional<uint32_t> Faults::OnCall(const std::string& function) {
  Lock lock(mutex_);
  const uint32_t call = ++calls_[function];
  const auto declared = faults_.find(function);
  if (declared == faults_.end()) return std::nullopt;
  for (Fault& fault : declared->second) {
    if (call == fault.call || (fault.from_then_on && call > fault.call)) {
      fault.given = true;
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
