#include "sim/Ledger.h"

#include <cinttypes>
#include <cstdio>
#include <iterator>

namespace sim {

void Ledger::Take(const std::string& kind, uint64_t what) {
  Lock lock(mutex_);
  ++held_[{kind, what}];
}

bool Ledger::Give(const std::string& kind, uint64_t what) {
  Lock lock(mutex_);
  const auto entry = held_.find({kind, what});
  if (entry == held_.end()) return false;
  const uint32_t left = --entry->second;
  if (left == 0) held_.erase(entry);
  const auto resident = resident_.find({kind, what});
  if (resident != resident_.end() && resident->second > left) resident->second = left;
  return true;
}

void Ledger::MarkResident() {
  Lock lock(mutex_);
  resident_ = held_;
}

void Ledger::Settle() {
  Lock lock(mutex_);
  resident_.clear();
}

bool Ledger::Holds(const std::string& kind, uint64_t what) const {
  Lock lock(mutex_);
  return held_.count({kind, what}) != 0;
}

uint32_t Ledger::Count(const std::string& kind) const {
  Lock lock(mutex_);
  uint32_t count = 0;
  for (const auto& [key, times] : held_) {
    if (key.first == kind) count += times;
  }
  return count;
}

void Ledger::Clear() {
  Lock lock(mutex_);
  held_.clear();
  resident_.clear();
}

void Ledger::WriteOff(const std::string& kind) {
  Lock lock(mutex_);
  for (auto entry = held_.begin(); entry != held_.end();) {
    entry = entry->first.first == kind ? held_.erase(entry) : std::next(entry);
  }
}

std::string Ledger::Outstanding() const {
  Lock lock(mutex_);
  std::string text;
  for (const auto& [key, held] : held_) {
    const auto resident = resident_.find(key);
    const uint32_t times = held - (resident == resident_.end() ? 0 : resident->second);
    if (times == 0) continue;
    char number[64];
    std::snprintf(number, sizeof(number), " 0x%" PRIx64, key.second);
    text += key.first + number;
    if (times > 1) text += " (" + std::to_string(times) + " times)";
    text += '\n';
  }
  return text;
}

}  // namespace sim
