// What the simulated NVIDIA driver knows and does, apart from its calling conventions: its outputs,
// its names for them, its views, paths and clone groups. Every record is read and written by
// offset.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "sim/MachineState.h"
#include "sim/Model.h"

namespace sim {

/// What the functions answer.
enum NvStatus : int32_t {
  kNvOk = 0,
  kNvError = -1,
  kNvNoImplementation = -3,
  kNvNotInitialized = -4,
  kNvInvalidArgument = -5,
  kNvDeviceNotFound = -6,
  kNvEndEnumeration = -7,
  kNvInvalidHandle = -8,
  kNvIncompatibleVersion = -9,
};

// Version words: the record's size below, its version above.
constexpr uint32_t kNvViewVersion = 0x40108;
constexpr uint32_t kNvSettingsVersion = 0x400D0;
constexpr uint32_t kNvEdidVersion = 0x30110;
constexpr uint32_t kNvPathVersion = 0x20030;
constexpr uint32_t kNvConnectorVersion = 0x1002C;
constexpr uint32_t kNvCloneItemVersion = 0x1002C;
constexpr uint32_t kNvCloneVersion = 0x10018;
constexpr uint32_t kNvHdmiVersion = 0x1000C;
constexpr uint32_t kNvHdmiVersion2 = 0x2000C;

constexpr uint32_t kNvUnknownConnector = 0xFFFFFFFF;

/// A record of the caller: little-endian words at byte offsets, and pointers at multiples of 8.
class NvRecord {
 public:
  explicit NvRecord(void* bytes) : bytes_(static_cast<uint8_t*>(bytes)) {}
  explicit operator bool() const { return bytes_ != nullptr; }
  uint32_t version() const { return Get(0); }
  uint32_t Get(uint32_t offset) const {
    uint32_t value = 0;
    std::memcpy(&value, bytes_ + offset, sizeof value);
    return value;
  }
  int32_t GetSigned(uint32_t offset) const { return static_cast<int32_t>(Get(offset)); }
  void* GetPointer(uint32_t offset) const {
    void* value = nullptr;
    std::memcpy(&value, bytes_ + offset, sizeof value);
    return value;
  }
  void Put(uint32_t offset, uint32_t value) { std::memcpy(bytes_ + offset, &value, sizeof value); }
  void PutBytes(uint32_t offset, const uint8_t* bytes, size_t size) {
    std::memcpy(bytes_ + offset, bytes, size);
  }
  NvRecord At(uint32_t offset) const { return NvRecord(bytes_ + offset); }

 private:
  uint8_t* bytes_;
};

std::string NvHex(uint32_t value);                       // "0x10000"
std::string NvSize(const DisplayMode&);                  // "1024x768x32@60", without "@0"
void NvAdd(std::string* text, const std::string& word);  // with a blank between words

// --- GPUs, outputs, displays (NvidiaDriverOutputs.cpp).

bool IsNvidiaAdapter(const Adapter& adapter);
/// A working NVIDIA adapter of this machine brought the library.
bool NvidiaDriverInstalled(const Model& model);
/// The working NVIDIA adapters, in model order.
std::vector<size_t> NvGpus(const Model& model);
std::optional<size_t> NvGpuFromHandle(const Model& model, const void* handle);

/// The output's bit; unique on its adapter.
uint32_t NvOutput(const Model& model, size_t connector);
uint32_t NvConnectorType(const Connector& connector);
uint32_t NvDisplayId(const Model& model, size_t connector);
std::optional<size_t> NvConnectorByOutput(const Model& model, size_t gpu, uint32_t output);
std::optional<size_t> NvConnectorByDisplayId(const Model& model, uint32_t display_id);
/// Whether the output sends a picture: on a path of Windows, or in a clone group.
bool NvIsActive(const Model& model, size_t connector);

/// The desktops that GPUs show, one display handle each, in the order of the enumeration.
std::vector<size_t> NvDisplays(const Model& model);
void* NvDisplayHandle(Machine& machine, size_t source);
/// Nothing for 0, for a handle from before the last mode set, and for what never was one.
std::optional<size_t> NvDisplayFromHandle(Machine& machine, const void* handle);
/// "1" for the first handle of the enumeration, "0", "stale", "unknown".
std::string NvHandleName(Machine& machine, const void* handle);
/// False once a test made the driver silent about them in its display settings.
bool NvTellsConnectorTypes(const Machine& machine);
/// A mode set came from the driver itself: all display handles become invalid.
void NvForgetHandles(Machine& machine);

// --- Showing desktops (NvidiaDriverShow.cpp).

/// One desktop that the driver is told to show.
struct NvDesktop {
  size_t source = 0;
  std::vector<size_t> connectors;
  std::optional<DisplayMode> mode;  // absent: as these displays were used last, else their best;
                                    // a frequency of 0 leaves it to the driver
  int32_t x = 0;
  int32_t y = 0;
  uint32_t orientation = 0;
  bool primary = false;
};

/// Whether the monitors and the hardware can show these desktops and nothing else, on `only` alone
/// or on all adapters; `result` is what Windows would then have.
NvStatus ArrangeNvDesktops(const Model& model, const std::vector<NvDesktop>& desktops,
                           std::optional<size_t> only, Arrangement* result);
/// The source of the adapter with this id, unless `taken`; with id 0 the lowest that is free.
std::optional<size_t> NvFreeSource(const Model& model, size_t adapter, uint32_t source_id,
                                   const std::vector<NvDesktop>& taken);

// --- Views and paths.

NvStatus SetNvView(Machine& machine, const void* handle, NvRecord record, uint32_t view);
std::string DescribeNvView(const NvRecord& record);

constexpr uint32_t kNvValidateOnly = 1;
constexpr uint32_t kNvSave = 2;
NvStatus SetNvPaths(Machine& machine, uint32_t count, NvRecord paths, uint32_t flags);
std::string DescribeNvPaths(const Model& model, uint32_t count, NvRecord paths);

// --- Clone groups over several adapters (NvidiaDriverClone.cpp).

/// The display that an item names; nothing when there is none such.
std::optional<size_t> NvCloneConnector(const Model& model, const NvidiaCloneItem& item);
NvStatus ReadNvCloneGroups(const Model& model, NvRecord top);
NvStatus WriteNvCloneGroups(Model& model, NvRecord top);
std::string DescribeNvCloneGroups(const Model& model, const NvRecord& top);

// --- What monitors and connectors say (NvidiaDriverQueries.cpp).

NvStatus GetNvConnectorInfo(const Model& model, size_t gpu, uint32_t output, NvRecord record);
NvStatus GetNvEdid(const Model& model, size_t gpu, uint32_t output, NvRecord record);
NvStatus GetNvHdmiSupport(Machine& machine, const void* handle, uint32_t id, NvRecord record);
NvStatus GetNvDisplaySettings(Machine& machine, const void* handle, NvRecord records,
                              uint32_t* count);

}  // namespace sim
