#include "Common/ConfigSection.h"

namespace {

// The numbers of IMMonitor::DM_* and MD_*, which belong to a layer above this one.
constexpr uint32_t kSingle = 1;
constexpr uint32_t kClone = 2;
constexpr uint32_t kExtend = 4;
// Deliberate: CRT, TV, DVI, HDMI and DP; the wireless bit 0x40 is not among them and counts as the
// panel.
constexpr uint32_t kExternalDisplays = 0x02 | 0x04 | 0x08 | 0x10 | 0x20;

}  // namespace

bool GetModeSection(uint32_t mode, uint32_t displays, std::wstring* section) {
  if (mode == kSingle) {
    *section = (displays & kExternalDisplays) != 0 ? L"Single External" : L"Single Internal";
  } else if (mode == kClone) {
    *section = L"Clone";
  } else if (mode == kExtend) {
    *section = L"Extend";
  } else {
    // Deliberate: three-display modes too read the general section.
    *section = L"Settings";
  }
  return true;
}
