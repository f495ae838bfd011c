// NVAPI's records, as its published interface lays them out, and those of its entries that are not
// published, of which only the named fields are known. Every record with a version word carries its
// own size in the low half of it; the driver refuses any other word.
#pragma once

#include <cstddef>
#include <cstdint>

using NvAPI_Status = int32_t;
constexpr NvAPI_Status NVAPI_OK = 0;
constexpr NvAPI_Status NVAPI_NO_IMPLEMENTATION = -3;

struct NvPhysicalGpu;
struct NvDisplay;
using NvPhysicalGpuHandle = NvPhysicalGpu*;
using NvDisplayHandle = NvDisplay*;

constexpr uint32_t NVAPI_MAX_PHYSICAL_GPUS = 64;
using NvAPI_ShortString = char[64];

template <typename Record>
constexpr uint32_t NvVersionWord(uint32_t version) {
  return static_cast<uint32_t>(sizeof(Record)) | (version << 16);
}

/// NvAPI_SetViewEx's view. Pixels, bits per pixel, Hz.
enum NV_TARGET_VIEW_MODE : uint32_t {
  NV_VIEW_MODE_STANDARD = 0,
  NV_VIEW_MODE_CLONE = 1,
  NV_VIEW_MODE_DUALVIEW = 4,
};

struct NV_DISPLAY_PATH {
  uint32_t deviceMask;
  uint32_t sourceId;
  uint32_t bPrimary;  // bit 0
  uint32_t connector;
  uint32_t width;
  uint32_t height;
  uint32_t depth;
  uint32_t colorFormat;
  uint32_t rotation;
  uint32_t scaling;
  uint32_t refreshRate;
  uint32_t interlaced;  // bit 0
  uint32_t tvFormat;
  uint32_t posx;
  uint32_t posy;
  uint32_t bGDIPrimary;  // bit 0; further bits stay clear
};
static_assert(sizeof(NV_DISPLAY_PATH) == 64 && offsetof(NV_DISPLAY_PATH, bPrimary) == 8 &&
              offsetof(NV_DISPLAY_PATH, width) == 16 &&
              offsetof(NV_DISPLAY_PATH, refreshRate) == 40 &&
              offsetof(NV_DISPLAY_PATH, posx) == 52 &&
              offsetof(NV_DISPLAY_PATH, bGDIPrimary) == 60);

struct NV_DISPLAY_PATH_INFO {
  uint32_t version;
  uint32_t count;
  NV_DISPLAY_PATH path[4];
};
static_assert(sizeof(NV_DISPLAY_PATH_INFO) == 264 && offsetof(NV_DISPLAY_PATH_INFO, path) == 8);
constexpr uint32_t NV_DISPLAY_PATH_INFO_VER4 = NvVersionWord<NV_DISPLAY_PATH_INFO>(4);
static_assert(NV_DISPLAY_PATH_INFO_VER4 == 0x40108);

struct NV_EDID {
  uint32_t version;
  uint8_t EDID_Data[256];
  uint32_t sizeofEDID;
  uint32_t edidId;
  uint32_t offset;
};
static_assert(sizeof(NV_EDID) == 272 && offsetof(NV_EDID, sizeofEDID) == 260);
constexpr uint32_t NV_EDID_VER3 = NvVersionWord<NV_EDID>(3);
static_assert(NV_EDID_VER3 == 0x30110);

struct NV_DISPLAYCONFIG_PATH_TARGET_INFO {
  uint32_t displayId;
  void* details;
  uint32_t targetId;  // Windows' target id, for a display of another adapter
};
static_assert(sizeof(NV_DISPLAYCONFIG_PATH_TARGET_INFO) == 24 &&
              offsetof(NV_DISPLAYCONFIG_PATH_TARGET_INFO, details) == 8 &&
              offsetof(NV_DISPLAYCONFIG_PATH_TARGET_INFO, targetId) == 16);

struct NV_RESOLUTION {
  uint32_t width;
  uint32_t height;
  uint32_t colorDepth;
};

struct NV_POSITION {
  int32_t x;
  int32_t y;
};

struct NV_DISPLAYCONFIG_SOURCE_MODE_INFO {
  NV_RESOLUTION resolution;
  uint32_t colorFormat;  // NV_FORMAT
  NV_POSITION position;
  uint32_t spanningOrientation;
  uint32_t bGDIPrimary;  // bit 0
};
static_assert(sizeof(NV_DISPLAYCONFIG_SOURCE_MODE_INFO) == 32 &&
              offsetof(NV_DISPLAYCONFIG_SOURCE_MODE_INFO, position) == 16 &&
              offsetof(NV_DISPLAYCONFIG_SOURCE_MODE_INFO, bGDIPrimary) == 28);

struct NV_DISPLAYCONFIG_PATH_INFO {
  uint32_t version;
  uint32_t sourceId;
  uint32_t targetInfoCount;
  NV_DISPLAYCONFIG_PATH_TARGET_INFO* targetInfo;
  NV_DISPLAYCONFIG_SOURCE_MODE_INFO* sourceModeInfo;
  uint32_t IsNonNVIDIAAdapter;  // bit 0
  void* pOSAdapterID;           // a LUID, for another adapter only
};
static_assert(sizeof(NV_DISPLAYCONFIG_PATH_INFO) == 48 &&
              offsetof(NV_DISPLAYCONFIG_PATH_INFO, targetInfo) == 16 &&
              offsetof(NV_DISPLAYCONFIG_PATH_INFO, sourceModeInfo) == 24 &&
              offsetof(NV_DISPLAYCONFIG_PATH_INFO, IsNonNVIDIAAdapter) == 32 &&
              offsetof(NV_DISPLAYCONFIG_PATH_INFO, pOSAdapterID) == 40);
constexpr uint32_t NV_DISPLAYCONFIG_PATH_INFO_VER2 = NvVersionWord<NV_DISPLAYCONFIG_PATH_INFO>(2);
static_assert(NV_DISPLAYCONFIG_PATH_INFO_VER2 == 0x20030);

// --- Not published: the fields that are known.

struct NvConnectorInfo {
  uint32_t version;
  uint32_t reserved_4[2];
  uint32_t type;
  uint32_t reserved_16[7];
};
static_assert(sizeof(NvConnectorInfo) == 44 && offsetof(NvConnectorInfo, type) == 12);
constexpr uint32_t kNvConnectorInfoVersion = NvVersionWord<NvConnectorInfo>(1);
static_assert(kNvConnectorInfoVersion == 0x1002C);

struct NvDisplaySettings {
  uint32_t version;
  uint32_t reserved_4;
  uint32_t connector_type;  // 0xFFFFFFFF when the driver does not say
  uint32_t reserved_12[2];
  uint32_t width;
  uint32_t height;
  uint32_t bits_per_pixel;
  uint32_t rotation;  // 0 to 3
  uint32_t reserved_36[15];
  uint32_t refresh_rate;
  uint32_t reserved_100[27];
};
static_assert(sizeof(NvDisplaySettings) == 208 &&
              offsetof(NvDisplaySettings, connector_type) == 8 &&
              offsetof(NvDisplaySettings, width) == 20 &&
              offsetof(NvDisplaySettings, bits_per_pixel) == 28 &&
              offsetof(NvDisplaySettings, rotation) == 32 &&
              offsetof(NvDisplaySettings, refresh_rate) == 96);
constexpr uint32_t kNvDisplaySettingsVersion = NvVersionWord<NvDisplaySettings>(4);
static_assert(kNvDisplaySettingsVersion == 0x400D0);

struct NvHdmiSupport {
  uint32_t version;
  uint32_t flags;  // bit 7: the monitor is HDMI
  uint32_t revision;
};
static_assert(sizeof(NvHdmiSupport) == 12 && offsetof(NvHdmiSupport, flags) == 4);
constexpr uint32_t kNvHdmiSupportVersion = NvVersionWord<NvHdmiSupport>(1);
static_assert(kNvHdmiSupportVersion == 0x1000C);

/// One display of a clone group.
struct NvTopologyItem {
  static constexpr uint32_t kForeign = 0x1;  // the id is Windows' target id on another adapter
  static constexpr uint32_t kNotebookPanel = 0x2;  // goes with kForeign when a group is written

  uint32_t version;
  uint32_t flags;
  uint32_t reserved_8;
  uint32_t id;
  uint32_t reserved_16[7];
};
static_assert(sizeof(NvTopologyItem) == 44 && offsetof(NvTopologyItem, flags) == 4 &&
              offsetof(NvTopologyItem, id) == 12);
constexpr uint32_t kNvTopologyItemVersion = NvVersionWord<NvTopologyItem>(1);
static_assert(kNvTopologyItemVersion == 0x1002C);

/// Both levels of the clone topology: the record on top has groups for elements, a group has items.
struct NvTopology {
  uint32_t version;
  uint32_t count;
  void* elements;  // NvTopology[count] on top, NvTopologyItem[count] in a group; may be null
  uint64_t reserved_16;
};
static_assert(sizeof(NvTopology) == 24 && offsetof(NvTopology, elements) == 8);
constexpr uint32_t kNvTopologyVersion = NvVersionWord<NvTopology>(1);
static_assert(kNvTopologyVersion == 0x10018);
