#include "Common/MultiMonitor/Intel/IntelHardwareId.h"

#include <string>

#include "Common/HexWord.h"

namespace {

constexpr size_t kDigits = 4;

}  // namespace

uint16_t DeviceFromHardwareId(std::string_view hardware_id) {
  const size_t vendor = hardware_id.find('_');
  if (vendor == std::string_view::npos) return 0;
  const size_t device = hardware_id.find('_', vendor + kDigits);
  if (device == std::string_view::npos) return 0;
  return ParseHexWord(std::string(hardware_id.substr(device + 1, kDigits)).c_str());
}
