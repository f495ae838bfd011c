// A monitor's own word on itself: the 128 bytes of an EDID 1.x base block, their check, and what is
// read out of them. Plain bytes in, plain values out; nothing here needs Windows.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

/// The block does not begin as an EDID of version 1 does.
class invalid_edid_header : public std::runtime_error {
 public:
  invalid_edid_header();
};

/// The bytes of the block do not add to 0 modulo 256.
class invalid_edid_checksum : public std::runtime_error {
 public:
  invalid_edid_checksum();
};

/// What stands in place of the name of a monitor whose EDID is damaged.
constexpr char kUnknownMonitorName[] = "Unknown Mnt";

/// The first detailed timing: pixels, and Hz cut to a whole number and to its low 8 bits.
struct EdidTiming {
  uint16_t width = 0;
  uint16_t height = 0;
  uint8_t refresh = 0;
};

/// One base block. Nothing but `m_raw`'s 128 bytes is ever read.
struct EDID {
  static constexpr uint32_t kBlockSize = 128;
  static constexpr uint32_t kDescriptorSize = 18;
  static constexpr uint32_t kTextSize = 13;  // of a descriptor, its end included

  uint8_t m_valid = 0;  // 0 until a block was loaded
  uint8_t m_raw[kBlockSize] = {};

  /// Checks a block and takes its first 128 bytes; extension blocks behind them are left out.
  /// @param data  `size` bytes; null is no block
  /// @return 0 without a block or with fewer than 128 bytes; the record is then unchanged
  /// @throws invalid_edid_header, invalid_edid_checksum; each tells the debugger first
  int32_t Load(const void* data, uint32_t size);

  /// @param block  128 bytes
  /// @throws invalid_edid_header unless the block begins as an EDID of version 1 does
  static void ValidateEDIDHeader(const uint8_t* block);

  /// @param block  128 bytes
  /// @throws invalid_edid_checksum unless the bytes add to 0 modulo 256
  static void ValidateEDIDChecksum(const uint8_t* block);

  /// True when the monitor calls its first detailed timing the preferred one.
  bool HasPreferredTiming() const;

  /// Reads the first descriptor as a detailed timing.
  /// @param timing  out; unchanged when there is none
  /// @return 0 when the first descriptor is no timing
  int32_t GetDetailedTiming(EdidTiming* timing) const;

  /// Reads the text of a descriptor, up to its line feed. Blanks in front of that stay.
  /// @param descriptor  18 bytes
  /// @param text        out, zero-terminated; unchanged on failure
  /// @param length      in: room in `text`; out: bytes written with the zero; unchanged on failure
  /// @return 0 when no line feed ends the text, or it has no room
  static int32_t GetDescriptorText(const uint8_t* descriptor, char* text, uint32_t* length);

  /// The monitor's name: the first descriptor that holds a name or a free text and can be read.
  /// @param name  out; unchanged when there is none; empty when the text begins with its end
  bool FindName(std::string* name) const;
};
