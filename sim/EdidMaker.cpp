#include "sim/EdidMaker.h"

#include <algorithm>

namespace sim {
namespace {

constexpr size_t kBlockSize = 128;
constexpr size_t kChecksum = 127;
constexpr size_t kTiming = 54;
constexpr size_t kNameDescriptor = 72;
constexpr size_t kDescriptorSize = 18;
constexpr size_t kTextSize = 13;
// Blanking as in reduced timings: enough for every size, and small enough that the pixel clock fits
// 16 bits.
constexpr uint32_t kHorizontalBlank = 160;
constexpr uint32_t kVerticalBlank = 30;

uint8_t Low(uint32_t value) { return static_cast<uint8_t>(value & 0xFF); }

void PutTiming(const DisplayMode& mode, uint8_t* d) {
  const uint64_t total = uint64_t{mode.width + kHorizontalBlank} * (mode.height + kVerticalBlank);
  // In 10 kHz, rounded up, so that a reader who truncates the refresh rate finds the one that was
  // meant.
  uint64_t clock = (total * mode.frequency + 9999) / 10000;
  if ((clock & 0xFF) == 0) ++clock;  // a first byte of zero would mean that this is no timing
  clock = std::min<uint64_t>(clock, 0xFFFF);
  d[0] = Low(static_cast<uint32_t>(clock));
  d[1] = Low(static_cast<uint32_t>(clock >> 8));
  d[2] = Low(mode.width);
  d[3] = Low(kHorizontalBlank);
  d[4] = Low(((mode.width >> 8) << 4) | (kHorizontalBlank >> 8));
  d[5] = Low(mode.height);
  d[6] = Low(kVerticalBlank);
  d[7] = Low(((mode.height >> 8) << 4) | (kVerticalBlank >> 8));
  d[8] = 48;     // horizontal front porch
  d[9] = 32;     // horizontal sync
  d[10] = 0x35;  // vertical front porch 3, sync 5
  d[12] = 0x40;
  d[13] = 0xF0;
  d[17] = 0x1E;  // digital separate sync
}

void PutName(const std::string& name, uint8_t* d) {
  d[3] = 0xFC;
  const size_t length = std::min(name.size(), kTextSize);
  std::fill(d + 5, d + kDescriptorSize, uint8_t{' '});
  std::copy_n(name.begin(), length, d + 5);
  if (length < kTextSize) d[5 + length] = '\n';
}

}  // namespace

std::vector<uint8_t> MakeEdid(const EdidText& text) {
  std::vector<uint8_t> edid(kBlockSize, 0);
  std::fill(edid.begin() + 1, edid.begin() + 7, uint8_t{0xFF});
  uint32_t maker = 0;
  for (size_t i = 0; i < 3; ++i) {
    const char letter = i < text.maker.size() ? text.maker[i] : 'A';
    maker = (maker << 5) | (static_cast<uint32_t>(letter - '@') & 0x1F);
  }
  edid[8] = Low(maker >> 8);
  edid[9] = Low(maker);
  edid[10] = Low(text.product);
  edid[11] = Low(uint32_t{text.product} >> 8);
  edid[16] = 1;     // week
  edid[17] = 22;    // year 2012
  edid[18] = 1;     // version
  edid[19] = 3;     // revision
  edid[20] = 0x80;  // digital
  edid[23] = 120;   // gamma 2.2
  edid[24] = text.preferred_bit ? 0x0A : 0x08;
  std::fill(edid.begin() + 38, edid.begin() + 54, uint8_t{0x01});  // no standard timings
  PutTiming(text.preferred, &edid[kTiming]);
  size_t next = kNameDescriptor;
  if (!text.name.empty()) {
    PutName(text.name, &edid[next]);
    next += kDescriptorSize;
  }
  for (; next + kDescriptorSize <= kChecksum; next += kDescriptorSize) edid[next + 3] = 0x10;
  FixEdidChecksum(&edid);
  return edid;
}

std::vector<uint8_t> MakeEdid(const std::string& name, const DisplayMode& preferred) {
  EdidText text;
  text.name = name;
  text.preferred = preferred;
  return MakeEdid(text);
}

void FixEdidChecksum(std::vector<uint8_t>* edid) {
  if (edid->size() < kBlockSize) return;
  uint32_t sum = 0;
  for (size_t i = 0; i < kChecksum; ++i) sum += (*edid)[i];
  (*edid)[kChecksum] = Low(256 - (sum & 0xFF));
}

}  // namespace sim
