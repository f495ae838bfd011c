// What the simulated Intel driver knows and does, apart from its calling conventions: its devices,
// its blocks and its records. Every block is read and written by offset.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sim/Model.h"

namespace sim {

/// What `err` of a call tells. The driver documents its success alone; the other numbers are the
/// simulator's own.
enum IntelError : uint32_t {
  kIntelSuccess = 0,
  kIntelBadArgument = 1,      // a size, an operating mode or a reserved field that cannot be
  kIntelUnknownBlock = 2,     // a block identifier that the operation does not take
  kIntelUnknownDevice = 3,    // a device name or a uid that is none of the driver's
  kIntelNotAttached = 4,      // nothing hangs on that connector, or it sends no EDID
  kIntelTooManyDisplays = 5,  // more than the adapter drives
  kIntelNoSuchMode = 6,       // a size that the displays do not take
  kIntelFault = 7,            // a declared fault that names no error
};

/// A block of the caller: little-endian 32-bit words at byte offsets.
class IntelBlock {
 public:
  IntelBlock(uint8_t* bytes, uint32_t size) : bytes_(bytes), size_(size) {}
  uint32_t size() const { return size_; }
  /// @throw std::out_of_range beyond the block
  uint32_t Get(uint32_t offset) const;
  void Put(uint32_t offset, uint32_t value);
  void PutBytes(uint32_t offset, const std::vector<uint8_t>& bytes);
  /// The zero-terminated text in a field of `room` bytes; nothing when no zero ends it.
  std::optional<std::string> Text(uint32_t offset, uint32_t room) const;
  /// Whether the words from `offset` up to `end` are zero.
  bool IsZero(uint32_t offset, uint32_t end) const;
  IntelBlock Slice(uint32_t offset, uint32_t size) const;

 private:
  uint8_t* bytes_;
  uint32_t size_;
};

// --- Devices (IntelDriverDevices.cpp).

constexpr uint32_t kIntelStatusAttached = 0x02;
constexpr uint32_t kIntelStatusActive = 0x10;

/// By its hardware id.
bool IsIntelAdapter(const Adapter& adapter);
/// The connector is one of a working Intel adapter.
bool IsIntelDriven(const Model& model, size_t connector);
/// An Intel adapter of this machine has the driver's programming interface.
bool IntelDriverInstalled(const Model& model);
/// The driver's number for the kind of device: 1 CRT, 2 panel, 3 DVI, 4 TV, 5 HDMI, 7 DisplayPort;
/// 6 for an output of no kind of its own, 9 for one that the driver has no fixed number for.
uint32_t IntelDeviceType(const Connector& connector);
/// The driver's number for the device itself: never 0, and the same from call to call. The first
/// CRT is 0x1, the first panel 0x1000; a second one of a kind is one higher.
uint32_t IntelUid(const Model& model, size_t connector);
std::optional<size_t> IntelConnector(const Model& model, uint32_t uid);
/// The connectors of the adapter behind a display device name, in model order; nothing when the
/// name stands for no working Intel adapter.
std::optional<std::vector<size_t>> IntelConnectorsOfDevice(const Model& model,
                                                           const std::string& device_name);
/// The display device behind a name, when its adapter is a working Intel one.
std::optional<size_t> IntelSource(const Model& model, const std::string& device_name);
uint32_t IntelStatus(const Model& model, size_t connector);

// --- Switching (IntelDriverSwitch.cpp).

/// One desktop that the driver is told to show.
struct IntelDesktop {
  size_t source = 0;
  std::vector<size_t> connectors;
  std::optional<DisplayMode> mode;  // absent: as these displays were used last, else their best
  int32_t x = 0;
  int32_t y = 0;
  uint32_t orientation = 0;
  bool placed = false;  // x and y are given; otherwise it stands to the right of the one before
};

/// Shows these desktops on their adapter, and nothing else there; other adapters keep what they
/// show.
IntelError ShowIntelDesktops(Model& model, const std::vector<IntelDesktop>& desktops);

/// ChangeActiveDevices: one record of 120 bytes or two.
IntelError ChangeIntelDevices(Model& model, const IntelBlock& records);
std::string DescribeIntelRecords(const IntelBlock& records);

// --- Blocks (IntelDriverBlocks.cpp).

IntelError GetNView(const Model& model, IntelBlock block);
IntelError SetNView(Model& model, IntelBlock block);
std::string DescribeNView(const IntelBlock& block);
IntelError GetIntelEdid(const Model& model, IntelBlock block);
IntelError GetIntelConnectors(const Model& model, IntelBlock block);

}  // namespace sim
