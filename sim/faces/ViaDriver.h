// The private escape of VIA's display driver over the one machine model: ExtEscape, code 0x3000. It
// is answered while the primary display hangs on a working VIA adapter that brought its driver
// (Adapter::vendor_library); on any other machine no driver has any escape.
//
// The first word of the input says what is wanted; a call with other sizes fails the test.
//   7 (4 bytes), output 4 bytes: the devices that are plugged in
//   1 (4 bytes), output 8 bytes: the devices that are active, and a word of the driver's own
//   2, devices, 0 (12 bytes): shows these and no other
// Devices are 1 CRT, 2 panel, 4 television, 16 DVI; other outputs are none of the driver's.
//
//   machine.Fail("ExtEscape", 1);       // -1; nothing is written and nothing is switched
//   machine.Fail("ExtEscape", 1, 2);    // that result
#pragma once

#include <cstdint>

#include "sim/Machine.h"

namespace sim {

/// The second word of what is told about the active devices.
constexpr uint32_t kViaOwnWord = 0x16051605;

/// The driver tells these masks from now on, whatever the model says.
void SetViaDevices(Machine& machine, uint32_t connected, uint32_t active);

}  // namespace sim
