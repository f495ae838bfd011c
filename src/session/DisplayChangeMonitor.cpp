#include "session/DisplayChangeMonitor.h"

void RunDisplayChangeMonitor(uint32_t previous_mode) {
  // Display changes are not watched yet: nothing is waited for, and the resolution stays what the
  // driver made it.
  static_cast<void>(previous_mode);
}
