// What a PCI hardware id says, without Windows.
#pragma once

#include <cstdint>
#include <string_view>

/// The device id in "PCI\VEN_8086&DEV_2A42&...": the four characters behind the second underscore,
/// as hexadecimal. The second one is looked for behind the vendor's digits. 0 without it.
uint16_t DeviceFromHardwareId(std::string_view hardware_id);
