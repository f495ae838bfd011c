#include "Common/MultiMonitor/Edid.h"

#include "Common/DebuggerOutput.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint8_t kHeader[] = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};

// Places in the block.
constexpr uint32_t kVersionAt = 18;
constexpr uint32_t kFeaturesAt = 24;
constexpr uint32_t kTimingAt = 54;
constexpr uint32_t kDescriptorsAt[] = {54, 72, 90, 108};

constexpr uint8_t kVersion = 1;
constexpr uint8_t kPreferredTiming = 0x02;

// Places in a descriptor.
constexpr uint32_t kTagAt = 3;
constexpr uint32_t kTextAt = 5;

constexpr uint8_t kFreeText = 0xFE;
constexpr uint8_t kMonitorName = 0xFC;
constexpr uint8_t kLineFeed = 10;

constexpr double kPixelClockUnit = 10000.0;  // Hz

bool HoldsText(const uint8_t* descriptor) {
  if (descriptor[0] != 0 || descriptor[1] != 0 || descriptor[2] != 0) return false;
  // Deliberate: a free text in front of the name is taken for it.
  return descriptor[kTagAt] == kMonitorName || descriptor[kTagAt] == kFreeText;
}

// The upper four bits of a number stand in one half of a byte that it shares with another.
uint32_t WithHighHalf(uint8_t shared, uint8_t low) {
  return (static_cast<uint32_t>(shared >> 4) << 8) | low;
}
uint32_t WithLowHalf(uint8_t shared, uint8_t low) {
  return (static_cast<uint32_t>(shared & 0x0F) << 8) | low;
}

uint8_t RefreshOf(uint32_t pixel_clock, uint32_t horizontal_total, uint32_t vertical_total) {
  const double pixels = static_cast<double>(horizontal_total) * vertical_total;
  if (pixels == 0) return 0;
  // The largest clock over a single pixel still fits 32 bits.
  const auto refresh = static_cast<uint32_t>(pixel_clock * kPixelClockUnit / pixels);
  // Deliberate: cut to 8 bits, so that 300 Hz read as 44.
  return static_cast<uint8_t>(refresh);
}

}  // namespace

invalid_edid_header::invalid_edid_header()
    : std::runtime_error("EDID::ValidateEDIDHeader() function failed") {}

invalid_edid_checksum::invalid_edid_checksum()
    : std::runtime_error("EDID::ValidateEDIDChecksum() function failed") {}

int32_t EDID::Load(const void* data, uint32_t size) {
  if (data == nullptr || size < kBlockSize) return 0;
  const auto* const block = static_cast<const uint8_t*>(data);
  ValidateEDIDHeader(block);
  ValidateEDIDChecksum(block);
  std::memcpy(m_raw, block, kBlockSize);
  m_valid = 1;
  return 1;
}

void EDID::ValidateEDIDHeader(const uint8_t* block) {
  const bool header = std::equal(std::begin(kHeader), std::end(kHeader), block);
  if (header && block[kVersionAt] == kVersion) return;
  WriteToDebugger("EDID::ValidateEDIDHeader() function failed\n");
  throw invalid_edid_header();
}

void EDID::ValidateEDIDChecksum(const uint8_t* block) {
  uint8_t sum = 0;
  for (uint32_t i = 0; i < kBlockSize; ++i) sum = static_cast<uint8_t>(sum + block[i]);
  if (sum == 0) return;
  WriteToDebugger("EDID::ValidateEDIDChecksum() function failed\n");
  throw invalid_edid_checksum();
}

bool EDID::HasPreferredTiming() const { return (m_raw[kFeaturesAt] & kPreferredTiming) != 0; }

int32_t EDID::GetDetailedTiming(EdidTiming* timing) const {
  const uint8_t* const d = m_raw + kTimingAt;
  // Deliberate: the low byte of the pixel clock alone decides, so that a clock of a whole multiple
  // of 2.56 MHz counts as no timing.
  if (timing == nullptr || d[0] == 0) return 0;
  const uint32_t pixel_clock = static_cast<uint32_t>(d[1] << 8) | d[0];
  const uint32_t width = WithHighHalf(d[4], d[2]);
  const uint32_t height = WithHighHalf(d[7], d[5]);
  timing->width = static_cast<uint16_t>(width);
  timing->height = static_cast<uint16_t>(height);
  timing->refresh =
      RefreshOf(pixel_clock, width + WithLowHalf(d[4], d[3]), height + WithLowHalf(d[7], d[6]));
  return 1;
}

int32_t EDID::GetDescriptorText(const uint8_t* descriptor, char* text, uint32_t* length) {
  if (descriptor == nullptr || text == nullptr || length == nullptr) return 0;
  const uint8_t* const field = descriptor + kTextAt;
  const uint8_t* const end = std::find(field, field + kTextSize, kLineFeed);
  // Deliberate: without a line feed there is no text, so that a name of 13 characters is not read.
  if (end == field + kTextSize) return 0;
  const auto size = static_cast<uint32_t>(end - field);
  if (*length < size + 1) return 0;
  // Deliberate: blanks in front of the line feed belong to the text.
  std::copy(field, end, text);
  text[size] = '\0';
  *length = size + 1;
  return 1;
}

bool EDID::FindName(std::string* name) const {
  for (const uint32_t at : kDescriptorsAt) {
    const uint8_t* const descriptor = m_raw + at;
    if (!HoldsText(descriptor)) continue;
    char text[kTextSize] = {};
    uint32_t length = kTextSize;
    if (GetDescriptorText(descriptor, text, &length) == 0) continue;
    *name = text;
    return true;
  }
  return false;
}
