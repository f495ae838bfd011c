// Feeds arbitrary bytes to the EDID reader: as they come, and once more with header, version and
// checksum made right, so that what stands behind the checks is reached. The sanitizers watch every
// byte that is touched; what is wrong without touching a wrong byte is held here against a plain
// second reading.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "Common/DebuggerOutput.h"
#include "Common/MultiMonitor/Edid.h"

namespace {

constexpr size_t kBlock = 128;

unsigned g_lines = 0;  // written to the debugger since Load was called

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "edid_fuzz: %s\n", what);
  std::abort();
}

/// Bytes on the heap with nothing behind the last one.
std::unique_ptr<uint8_t[]> Exactly(const uint8_t* bytes, size_t size) {
  std::unique_ptr<uint8_t[]> copy(new uint8_t[size]);
  if (size != 0) std::memcpy(copy.get(), bytes, size);
  return copy;
}

enum class Outcome { kNoBlock, kBadHeader, kBadChecksum, kLoaded };

Outcome ExpectedOutcome(const uint8_t* bytes, size_t size) {
  if (size < kBlock) return Outcome::kNoBlock;
  if (std::memcmp(bytes, "\x00\xFF\xFF\xFF\xFF\xFF\xFF\x00", 8) != 0) return Outcome::kBadHeader;
  if (bytes[18] != 1) return Outcome::kBadHeader;
  unsigned sum = 0;
  for (size_t i = 0; i < kBlock; ++i) sum += bytes[i];
  return sum % 256 == 0 ? Outcome::kLoaded : Outcome::kBadChecksum;
}

Outcome Load(const uint8_t* bytes, size_t size, EDID* edid) {
  const std::unique_ptr<uint8_t[]> exact = Exactly(bytes, size);
  g_lines = 0;
  try {
    return edid->Load(exact.get(), static_cast<uint32_t>(size)) != 0 ? Outcome::kLoaded
                                                                     : Outcome::kNoBlock;
  } catch (const invalid_edid_header&) {
    return Outcome::kBadHeader;
  } catch (const invalid_edid_checksum&) {
    return Outcome::kBadChecksum;
  }
}

void CheckTiming(const EDID& edid) {
  const uint8_t* const b = edid.m_raw;
  EdidTiming timing;
  const bool has_timing = edid.GetDetailedTiming(&timing) != 0;
  Require(has_timing == (b[54] != 0), "a timing where there is none, or none where there is one");
  Require(edid.HasPreferredTiming() == ((b[24] & 2) != 0), "the preferred bit");
  if (!has_timing) return;
  const uint64_t width = (b[58] >> 4) * 256u + b[56];
  const uint64_t height = (b[61] >> 4) * 256u + b[59];
  const uint64_t pixels =
      (width + (b[58] & 15) * 256u + b[57]) * (height + (b[61] & 15) * 256u + b[60]);
  const uint64_t clock = (b[55] * 256u + b[54]) * uint64_t{10000};
  Require(timing.width == width && timing.height == height, "the size");
  Require(timing.refresh == (pixels == 0 ? 0 : clock / pixels % 256), "the refresh rate");
}

// What GetDescriptorText makes of one descriptor with room for `capacity` bytes; false without a
// text.
bool ReadText(const uint8_t* descriptor, uint32_t capacity, std::string* text) {
  const std::unique_ptr<uint8_t[]> exact = Exactly(descriptor, 18);
  const std::unique_ptr<char[]> room(new char[capacity]);
  uint32_t length = capacity;
  const bool read = EDID::GetDescriptorText(exact.get(), room.get(), &length) != 0;
  const void* const end = std::memchr(descriptor + 5, '\n', 13);
  const uint32_t needed =
      end == nullptr ? UINT32_MAX
                     : static_cast<uint32_t>(static_cast<const uint8_t*>(end) - descriptor - 5 + 1);
  Require(read == (needed <= capacity), "a text where there is none, or none where there is one");
  if (!read) {
    Require(length == capacity, "the length of a text that is not there");
    return false;
  }
  Require(length == needed && room[length - 1] == '\0', "the length of a text");
  Require(std::memcmp(room.get(), descriptor + 5, length - 1) == 0, "a text");
  *text = room.get();
  return true;
}

void CheckTexts(const EDID& edid) {
  std::string expected;
  bool expect_name = false;
  for (size_t at = 54; at <= 108; at += 18) {
    const uint8_t* const descriptor = edid.m_raw + at;
    std::string text;
    ReadText(descriptor, descriptor[17] % 13, &text);  // with some room or other
    const bool read = ReadText(descriptor, 13, &text);
    const bool candidate = std::memcmp(descriptor, "\0\0\0", 3) == 0 &&
                           (descriptor[3] == 0xFC || descriptor[3] == 0xFE);
    if (!read || !candidate || expect_name) continue;
    expect_name = true;
    expected = text;
  }
  std::string name = "unchanged";
  Require(edid.FindName(&name) == expect_name, "a name where there is none, or none");
  Require(name == (expect_name ? expected : "unchanged"), "the name");
}

void CheckBlock(const uint8_t* bytes, size_t size) {
  EDID edid;
  const Outcome outcome = Load(bytes, size, &edid);
  Require(outcome == ExpectedOutcome(bytes, size), "the outcome of Load");
  const bool raised = outcome == Outcome::kBadHeader || outcome == Outcome::kBadChecksum;
  Require(g_lines == (raised ? 1u : 0u), "a debugger line for every exception, and no other");
  const bool loaded = outcome == Outcome::kLoaded;
  Require(edid.m_valid == (loaded ? 1 : 0), "m_valid");
  if (loaded) Require(std::memcmp(edid.m_raw, bytes, kBlock) == 0, "the bytes kept");
  CheckTiming(edid);
  CheckTexts(edid);
}

}  // namespace

void WriteToDebugger(const char* text) {
  ++g_lines;
  Require(std::strcmp(text, "EDID::ValidateEDIDHeader() function failed\n") == 0 ||
              std::strcmp(text, "EDID::ValidateEDIDChecksum() function failed\n") == 0,
          "an unknown line for the debugger");
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CheckBlock(data, size);

  uint8_t repaired[kBlock] = {};
  std::memcpy(repaired, data, size < kBlock ? size : kBlock);
  std::memcpy(repaired, "\x00\xFF\xFF\xFF\xFF\xFF\xFF\x00", 8);
  repaired[18] = 1;
  unsigned sum = 0;
  for (size_t i = 0; i + 1 < kBlock; ++i) sum += repaired[i];
  repaired[kBlock - 1] = static_cast<uint8_t>(256 - sum % 256);
  Require(ExpectedOutcome(repaired, kBlock) == Outcome::kLoaded, "the repair");
  CheckBlock(repaired, kBlock);
  return 0;
}
