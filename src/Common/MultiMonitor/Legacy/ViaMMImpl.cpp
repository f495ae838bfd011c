#include "Common/MultiMonitor/Legacy/ViaMMImpl.h"

#include "Common/Owners.h"

namespace {

constexpr int kEscape = 0x3000;
constexpr int kDone = 1;  // the one result of the escape that is success

// The first word of its input.
constexpr uint32_t kAskActive = 1;
constexpr uint32_t kSetDisplays = 2;
constexpr uint32_t kAskConnected = 7;

UniqueContext NewContext() {
  return UniqueContext(CreateDCA("DISPLAY", nullptr, nullptr, nullptr));
}

template <size_t kWords>
bool RunEscape(HDC dc, int escape, const uint32_t (&input)[kWords], uint32_t* output = nullptr,
               int output_size = 0) {
  return ExtEscape(dc, escape, sizeof(input), reinterpret_cast<const char*>(input), output_size,
                   reinterpret_cast<char*>(output)) == kDone;
}

// In the order in which the displays of a report are counted.
struct DeviceFlag {
  uint32_t bit;
  uint32_t flag;
};
constexpr DeviceFlag kDeviceFlags[] = {
    {0x01, IMMonitor::MD_CRT},
    {0x02, IMMonitor::MD_NB},
    {0x04, IMMonitor::MD_TV},
    {0x10, IMMonitor::MD_DVI},
};

// Asks for a mask of devices and tells it as displays. The answer has `kWords` words, of which the
// first is the mask.
template <size_t kWords>
BOOL Report(uint32_t question, uint32_t* displays, uint32_t* display_count) {
  if (displays == nullptr || display_count == nullptr) return FALSE;
  const UniqueContext dc = NewContext();
  if (!dc.IsValid()) return FALSE;
  const uint32_t input[] = {question};
  uint32_t answer[kWords] = {};
  if (!RunEscape(dc.get(), kEscape, input, answer, sizeof(answer))) return FALSE;
  *displays = 0;
  *display_count = 0;
  for (const DeviceFlag& row : kDeviceFlags) {
    if ((answer[0] & row.bit) == 0) continue;
    *displays |= row.flag;
    ++*display_count;
  }
  return TRUE;
}

// The devices to be shown for a display of the mask, the first row of a mode that fits.
struct Target {
  uint32_t mode;
  uint32_t display;
  uint32_t devices;
};
constexpr Target kTargets[] = {
    {IMMonitor::DM_SINGLE, IMMonitor::MD_NB, 0x02}, {IMMonitor::DM_SINGLE, IMMonitor::MD_CRT, 0x01},
    {IMMonitor::DM_SINGLE, IMMonitor::MD_TV, 0x04}, {IMMonitor::DM_SINGLE, IMMonitor::MD_DVI, 0x10},
    {IMMonitor::DM_CLONE, IMMonitor::MD_CRT, 0x03}, {IMMonitor::DM_CLONE, IMMonitor::MD_TV, 0x06},
    {IMMonitor::DM_CLONE, IMMonitor::MD_DVI, 0x12},
};

// 0 when the mode cannot be had on the mask.
uint32_t DevicesFor(uint32_t mode, uint32_t displays) {
  for (const Target& row : kTargets) {
    if (row.mode == mode && (row.display & displays) != 0) return row.devices;
  }
  return 0;
}

}  // namespace

ViaMMImpl::ViaMMImpl() {
  const UniqueContext dc = NewContext();
  if (!dc.IsValid()) return;
  const uint32_t escape[] = {kEscape};
  if (RunEscape(dc.get(), QUERYESCSUPPORT, escape)) return;
  // Deliberate: a bare text is thrown, no exception class. Whoever makes the object catches
  // everything.
  throw "S3 VGA Library not present!";
}

BOOL ViaMMImpl::GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) {
  return Report<1>(kAskConnected, displays, display_count);
}

BOOL ViaMMImpl::GetActiveDisplays(uint32_t* displays, uint32_t* display_count) {
  return Report<2>(kAskActive, displays, display_count);
}

BOOL ViaMMImpl::GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) {
  if (mode == nullptr || displays == nullptr) return FALSE;
  uint32_t active = 0;
  uint32_t count = 0;
  // Deliberate: a driver that does not answer is a success without a word about the mode.
  if (GetActiveDisplays(&active, &count) == 0) return TRUE;
  *displays = active;
  if (count != 1 && count != 2) return FALSE;
  // Deliberate: the number of displays is the mode, an extended desktop is not asked for.
  *mode = count == 1 ? DM_SINGLE : DM_CLONE;
  return TRUE;
}

BOOL ViaMMImpl::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  // Deliberate: a clone has the panel whether or not the mask does.
  const uint32_t devices = DevicesFor(mode, displays & 0xFF);
  if (devices == 0) return FALSE;
  const UniqueContext dc = NewContext();
  if (!dc.IsValid()) return FALSE;
  const uint32_t input[] = {kSetDisplays, devices, 0};
  return RunEscape(dc.get(), kEscape, input) ? TRUE : FALSE;
}
