#include "sim/Journal.h"

#include <utility>

namespace sim {

void Journal::Write(const std::string& line) {
  Lock lock(mutex_);
  text_ += line;
  text_ += '\n';
  history_ += line;
  history_ += '\n';
}

std::string Journal::Take() {
  Lock lock(mutex_);
  return std::exchange(text_, std::string());
}

}  // namespace sim
