// EDID base blocks byte by byte, for tests of who reads them.
//
//   EdidBlock block;                              // header, version and checksum right, no texts
//   block.Text(72, 0xFC, "Veld A1\n").Sum();      // Sum() after the last change
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

constexpr char kHeaderLine[] = "EDID::ValidateEDIDHeader() function failed\n";
constexpr char kChecksumLine[] = "EDID::ValidateEDIDChecksum() function failed\n";

class EdidBlock {
 public:
  EdidBlock() : bytes_(128, 0) {
    for (size_t i = 1; i < 7; ++i) bytes_[i] = 0xFF;
    bytes_[18] = 1;
    Sum();
  }

  /// Bytes from `at` on.
  EdidBlock& Put(size_t at, const std::vector<uint8_t>& bytes) {
    std::memcpy(&bytes_.at(at), bytes.data(), bytes.size());
    return *this;
  }

  /// A descriptor at `at` with a tag; `text` stands as it is, zeros behind it.
  EdidBlock& Text(size_t at, uint8_t tag, const std::string& text) {
    std::vector<uint8_t> descriptor(18, 0);
    descriptor[3] = tag;
    std::memcpy(&descriptor[5], text.data(), text.size());
    return Put(at, descriptor);
  }

  /// The first descriptor as a timing of 1366x768 at 60 Hz, flagged as preferred or not.
  EdidBlock& PanelTiming(bool preferred = true) {
    bytes_[24] = preferred ? 0x02 : 0x00;
    return Put(54, {0xEE, 0x1A, 0x56, 0x46, 0x50, 0x00, 0x26, 0x30});
  }

  EdidBlock& Sum() {
    uint32_t sum = 0;
    for (size_t i = 0; i < 127; ++i) sum += bytes_[i];
    bytes_[127] = static_cast<uint8_t>(256 - sum % 256);
    return *this;
  }

  /// Makes the checksum wrong.
  EdidBlock& Spoil() {
    ++bytes_[127];
    return *this;
  }

  const std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
};

/// A copy on the heap with nothing behind its last byte: where reads outside are watched, one is
/// seen.
class ExactBytes {
 public:
  explicit ExactBytes(const std::vector<uint8_t>& bytes)
      : size_(static_cast<uint32_t>(bytes.size())), bytes_(new uint8_t[bytes.size()]) {
    if (!bytes.empty()) std::memcpy(bytes_.get(), bytes.data(), bytes.size());
  }
  const uint8_t* data() const { return bytes_.get(); }
  uint32_t size() const { return size_; }

 private:
  uint32_t size_;
  std::unique_ptr<uint8_t[]> bytes_;
};
