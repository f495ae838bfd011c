#include "Common/ParseInt.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace {

constexpr int64_t kMinimum = std::numeric_limits<int32_t>::min();
constexpr int64_t kMaximum = std::numeric_limits<int32_t>::max();

}  // namespace

int32_t ParseLenientInt(const std::string& text) {
  // long is 32 bits on Windows and saturates there; the wider call gives the same answer
  // everywhere.
  const int64_t value = std::strtoll(text.c_str(), nullptr, 10);
  return static_cast<int32_t>(std::clamp(value, kMinimum, kMaximum));
}

bool ParseWholeInt(const std::string& text, int32_t* value) {
  const size_t first_digit = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  if (first_digit == text.size()) return false;
  if (text.find_first_not_of("0123456789", first_digit) != std::string::npos) return false;
  const int64_t wide = std::strtoll(text.c_str(), nullptr, 10);
  if (wide < kMinimum || wide > kMaximum) return false;
  *value = static_cast<int32_t>(wide);
  return true;
}
