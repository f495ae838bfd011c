// The records that are exchanged with Intel's driver. Numbers are little-endian; what is not named
// is zero. No operating-system header, so that layouts also build outside Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Operating modes of the N-view block and, but for the last, of the active-devices record.
constexpr uint32_t kCuiSingle = 1;
constexpr uint32_t kCuiClone = 3;
constexpr uint32_t kCuiExtended = 5;

/// The N-view block: this head, and behind it `display_count` entries.
struct CuiNViewHead {
  uint32_t operating_mode;  // 0 in a query
  uint32_t probe;           // 1: only the size that is needed is asked for
  uint32_t size;            // in: of the block; out of a probe: needed, in bytes
  uint32_t display_count;
};
static_assert(sizeof(CuiNViewHead) == 16, "as the driver has it");
static_assert(offsetof(CuiNViewHead, operating_mode) == 0, "as the driver has it");
static_assert(offsetof(CuiNViewHead, probe) == 4, "as the driver has it");
static_assert(offsetof(CuiNViewHead, size) == 8, "as the driver has it");
static_assert(offsetof(CuiNViewHead, display_count) == 12, "as the driver has it");

/// One display of the N-view block: pixels, Hz.
struct CuiNViewEntry {
  uint32_t uid;
  uint32_t width;
  uint32_t height;
  uint32_t refresh_rate;
  uint32_t bits_per_pixel;
  uint32_t unused_20[3];
  uint32_t left;
  uint32_t right;
  uint32_t top;
  uint32_t bottom;
  uint32_t unused_48[2];
  uint32_t orientation;  // quarter turns, 0 to 3
  uint32_t scaling;
  uint32_t unused_64;
};
static_assert(sizeof(CuiNViewEntry) == 68, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, uid) == 0, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, width) == 4, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, height) == 8, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, refresh_rate) == 12, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, bits_per_pixel) == 16, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, unused_20) == 20, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, left) == 32, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, right) == 36, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, top) == 40, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, bottom) == 44, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, unused_48) == 48, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, orientation) == 56, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, scaling) == 60, "as the driver has it");
static_assert(offsetof(CuiNViewEntry, unused_64) == 64, "as the driver has it");

/// A head and one entry.
constexpr uint32_t kCuiSmallestNView = sizeof(CuiNViewHead) + sizeof(CuiNViewEntry);
static_assert(kCuiSmallestNView == 84, "as the driver has it");

/// What is to be active on one Windows display device.
struct CuiActiveDevices {
  uint32_t size;         // of this record
  char device_name[80];  // \\.\DISPLAYn, zero-terminated
  uint32_t operating_mode;
  uint32_t primary_uid;  // clone only
  uint32_t display_count;
  uint32_t first_uid;
  uint32_t second_uid;  // clone only
  uint32_t unused_104[4];
};
static_assert(sizeof(CuiActiveDevices) == 120, "as the driver has it");
static_assert(offsetof(CuiActiveDevices, size) == 0, "as the driver has it");
static_assert(offsetof(CuiActiveDevices, device_name) == 4, "as the driver has it");
static_assert(offsetof(CuiActiveDevices, operating_mode) == 84, "as the driver has it");
static_assert(offsetof(CuiActiveDevices, primary_uid) == 88, "as the driver has it");
static_assert(offsetof(CuiActiveDevices, display_count) == 92, "as the driver has it");
static_assert(offsetof(CuiActiveDevices, first_uid) == 96, "as the driver has it");
static_assert(offsetof(CuiActiveDevices, second_uid) == 100, "as the driver has it");
static_assert(offsetof(CuiActiveDevices, unused_104) == 104, "as the driver has it");

constexpr uint32_t kCuiEdidLength = 256;

/// The EDID of one device: in, uid and length; out, the bytes.
struct CuiEdidBlock {
  uint32_t uid;
  uint32_t length;
  uint32_t reserved;
  uint8_t edid[kCuiEdidLength];
};
static_assert(sizeof(CuiEdidBlock) == 268, "as the driver has it");
static_assert(offsetof(CuiEdidBlock, uid) == 0, "as the driver has it");
static_assert(offsetof(CuiEdidBlock, length) == 4, "as the driver has it");
static_assert(offsetof(CuiEdidBlock, reserved) == 8, "as the driver has it");
static_assert(offsetof(CuiEdidBlock, edid) == 12, "as the driver has it");

/// Masks of the adapter's connectors, in the driver's own bits.
struct CuiConnectors {
  uint32_t dwConnectorSupported;
  uint32_t dwConnectorDispAttached;
  uint32_t dwConnectorDispActive;
};
static_assert(sizeof(CuiConnectors) == 12, "as the driver has it");
static_assert(offsetof(CuiConnectors, dwConnectorSupported) == 0, "as the driver has it");
static_assert(offsetof(CuiConnectors, dwConnectorDispAttached) == 4, "as the driver has it");
static_assert(offsetof(CuiConnectors, dwConnectorDispActive) == 8, "as the driver has it");

/// Bits of dwConnectorSupported.
constexpr uint32_t kCuiHdmiConnectors = 0x008 | 0x100;
constexpr uint32_t kCuiThirdConnector = 0x200;

/// One display shown by a Windows display device.
inline CuiActiveDevices CuiSingleRecord(const std::string& device_name, uint32_t uid) {
  CuiActiveDevices record = {};
  record.size = sizeof(record);
  device_name.copy(record.device_name, sizeof(record.device_name) - 1);
  record.operating_mode = kCuiSingle;
  record.display_count = 1;
  record.first_uid = uid;
  return record;
}

/// Two displays that show the desktop of one Windows display device.
inline CuiActiveDevices CuiCloneRecord(const std::string& device_name, uint32_t primary_uid,
                                       uint32_t second_uid) {
  CuiActiveDevices record = CuiSingleRecord(device_name, primary_uid);
  record.operating_mode = kCuiClone;
  record.primary_uid = primary_uid;
  record.display_count = 2;
  record.second_uid = second_uid;
  return record;
}
