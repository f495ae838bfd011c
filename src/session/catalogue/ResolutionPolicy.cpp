// The resolution after a switch: what is remembered for the mode, or what the configuration asks
// for.
#include "session/DMSwitch.h"

void DMSwitch::RestoreDisplaySettings(uint32_t mode, uint32_t displays) {
  // No policy yet: the resolution stays what the driver made it.
  static_cast<void>(mode);
  static_cast<void>(displays);
}
