// What the simulated AMD driver knows and does, apart from the calling conventions of its two
// libraries. Records are read and written by offset.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "sim/Face.h"
#include "sim/Model.h"

namespace sim {

/// Published results of ADL.
enum AdlResult : int32_t {
  kAdlOk = 0,
  kAdlError = -1,
  kAdlNotInitialised = -2,
  kAdlInvalidParameter = -3,
  kAdlInvalidParameterSize = -4,
  kAdlInvalidAdapter = -5,
  kAdlInvalidDisplay = -7,
  kAdlNotSupported = -8,
  kAdlNullPointer = -9,
  kAdlDisabledAdapter = -10,
  kAdlInvalidCallback = -11,
};

/// A record of the caller: little-endian 32-bit words at byte offsets.
class AmdRecord {
 public:
  AmdRecord(void* bytes, size_t size) : bytes_(static_cast<uint8_t*>(bytes)), size_(size) {}
  uint32_t Get(size_t offset) const;
  int32_t Int(size_t offset) const { return static_cast<int32_t>(Get(offset)); }
  float Float(size_t offset) const;
  void Put(size_t offset, uint32_t value);
  void PutInt(size_t offset, int32_t value) { Put(offset, static_cast<uint32_t>(value)); }
  void PutFloat(size_t offset, float value);
  /// Narrow text with its terminating zero, cut to `room` bytes.
  void PutText(size_t offset, size_t room, const std::string& text);
  void PutBytes(size_t offset, const std::vector<uint8_t>& bytes);
  AmdRecord Slice(size_t offset, size_t size) const;

 private:
  uint8_t* Place(size_t offset, size_t size) const;
  uint8_t* bytes_;
  size_t size_;
};

// --- Devices (AmdDevices.cpp).

bool IsAmdAdapter(const Adapter& adapter);  // by its hardware id
/// The adapter whose driver brought atiadlxx.dll; null without one.
const Adapter* AdlLibraryAdapter(const Model& model);

/// One of ADL's adapters: a display device of an AMD adapter.
struct AdlAdapter {
  int32_t index = 0;  // iAdapterIndex
  size_t source = 0;  // into Model::sources
  size_t gpu = 0;     // into Model::adapters
  bool enabled = true;
};
/// In the order in which ADL lists them.
std::vector<AdlAdapter> AdlAdapters(const Model& model);
std::optional<AdlAdapter> FindAdlAdapter(const Model& model, int32_t index);
/// iAdapterIndex of a source; -1 for none of AMD's.
int32_t AdlIndexOfSource(const Model& model, size_t source);
/// The persistent number of a GPU.
int32_t AdlPhysicalAdapter(const Model& model, size_t gpu);

std::vector<size_t> ConnectorsOfAdapter(const Model& model, size_t gpu);  // in model order
int32_t AdlDisplayIndex(const Model& model, size_t connector);            // iDisplayLogicalIndex
std::optional<size_t> AdlConnector(const Model& model, size_t gpu, int32_t display_index);
int32_t AdlDisplayType(const Connector& connector);
int32_t AdlConnectorType(const Connector& connector);
/// The sources of the GPU that show something, the primary one first.
std::vector<size_t> AmdDesktops(const Model& model, size_t gpu);

// --- Switching (AmdDesktops.cpp).

struct AmdDesktop {
  std::vector<size_t> connectors;
  std::optional<size_t> source;     // absent: the adapter's next one
  std::optional<DisplayMode> mode;  // absent: as these displays were used last, else their best
  bool nearest = false;  // a mode that the displays do not list becomes the nearest that they do
  bool placed = false;   // x and y are given; otherwise to the right of the desktop before
  int32_t x = 0;
  int32_t y = 0;
  uint32_t orientation = 0;
};

enum class AmdOutcome { kDone, kNotConnected, kTwice, kTooMany, kNoSuchMode };

/// Shows these desktops on the adapter and nothing else there; other adapters keep what they show.
AmdOutcome ShowAmdDesktops(Model& model, size_t gpu, const std::vector<AmdDesktop>& desktops);

// --- The libraries' exports.

const std::vector<Entry>& AdlEntries();
const std::vector<Entry>& AmdLegacyEntries();
void StopAdl();  // the module goes

/// What SetAmdAnswer has told for this.
uint32_t AmdAnswerOr(const char* what, uint32_t usual);

}  // namespace sim
