#include "sim/faces/SisDriver.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <stdexcept>

#include "sim/Failure.h"
#include "sim/Topology.h"
#include "sim/faces/AmdDriverRules.h"
#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

constexpr char kSwitchMode[] = "SwitchMode";
constexpr char kDeviceState[] = "GetCurDeviceState";
constexpr char kStateTold[] = "sis driver: state is told";
constexpr const char* kStateWords[] = {"sis driver: first", "sis driver: second",
                                       "sis driver: attached"};

constexpr uint32_t kTelevision = 1;
constexpr uint32_t kPanel = 2;
constexpr uint32_t kSecondCrt = 4;
constexpr uint32_t kCrt = 8;

constexpr uint32_t kTwoDisplays = 1;  // kinds of SwitchMode
constexpr uint32_t kOneDisplay = 2;

constexpr size_t kRecordWords = 5;  // device, width, height, depth, frequency

// The first working SiS adapter whose driver brought the library.
std::optional<size_t> FindSisAdapter(const Model& model) {
  for (size_t i = 0; i < model.adapters.size(); ++i) {
    const Adapter& adapter = model.adapters[i];
    const bool sis = adapter.hardware_id.find("VEN_1039") != std::string::npos;
    if (sis && adapter.vendor_library && AdapterWorks(adapter)) return i;
  }
  return std::nullopt;
}

bool SisDriverInstalled(const Model& model) { return FindSisAdapter(model).has_value(); }

// 0 for an output that the library does not know.
uint32_t BitOfTechnology(uint32_t technology) {
  if (IsInternal(technology)) return kPanel;
  if (technology == kTechnologyHd15) return kCrt;
  return technology <= kTechnologyComponent ? kTelevision : 0;
}

// A second CRT has a bit of its own.
uint32_t BitOf(const Model& model, size_t connector) {
  const Connector& c = model.connectors[connector];
  const uint32_t bit = BitOfTechnology(c.technology);
  if (bit != kCrt) return bit;
  for (const size_t other : ConnectorsOfAdapter(model, c.adapter)) {
    if (model.connectors[other].technology == kTechnologyHd15) {
      return other == connector ? kCrt : kSecondCrt;
    }
  }
  return bit;
}

std::optional<size_t> ConnectorOfBit(const Model& model, size_t gpu, uint32_t bit) {
  for (const size_t connector : ConnectorsOfAdapter(model, gpu)) {
    if (BitOf(model, connector) == bit) return connector;
  }
  return std::nullopt;
}

// --- GetCurDeviceState.

struct State {
  uint32_t words[3] = {};  // first, second, attached
};

State StateOfModel(const Model& model, size_t gpu) {
  State state;
  size_t active = 0;
  for (const size_t source : AmdDesktops(model, gpu)) {
    for (const size_t connector : ConnectorsOfSource(model, source)) {
      const uint32_t bit = BitOf(model, connector);
      if (bit != 0 && active < 2) state.words[active++] = bit;
    }
  }
  for (const size_t connector : ConnectorsOfAdapter(model, gpu)) {
    if (IsConnected(model, connector)) state.words[2] |= BitOf(model, connector);
  }
  return state;
}

State StateNow() {
  const auto& counters = Machine::Current().state().counters;
  const Model& model = CurrentModel();
  if (counters.count(kStateTold) == 0) return StateOfModel(model, FindSisAdapter(model).value());
  State state;
  for (size_t i = 0; i < std::size(kStateWords); ++i) {
    state.words[i] = static_cast<uint32_t>(counters.at(kStateWords[i]));
  }
  return state;
}

int32_t WINAPI GetCurDeviceState(uint32_t* first, uint32_t* second, uint32_t* attached) {
  Call call(kDeviceState);
  const bool complete = first != nullptr && second != nullptr && attached != nullptr;
  if (call.Fails() || !complete || !SisDriverInstalled(CurrentModel())) {
    return static_cast<int32_t>(call.Read(0, "refused"));
  }
  const State state = StateNow();
  *first = state.words[0];
  *second = state.words[1];
  *attached = state.words[2];
  return static_cast<int32_t>(
      call.Read(kSisSwitched, "first=%u second=%u attached=%u", *first, *second, *attached));
}

// --- SwitchMode.

struct Record {
  uint32_t words[kRecordWords] = {};

  explicit Record(const void* bytes) {
    if (bytes != nullptr) std::memcpy(words, bytes, sizeof(words));
  }
  uint32_t device() const { return words[0]; }
  DisplayMode mode() const { return {words[1], words[2], words[3], words[4]}; }
  bool IsZero() const {
    return std::all_of(std::begin(words), std::end(words), [](uint32_t word) { return word == 0; });
  }
  std::string Text() const {
    return std::to_string(words[0]) + " " + std::to_string(words[1]) + "x" +
           std::to_string(words[2]) + "x" + std::to_string(words[3]) + "@" +
           std::to_string(words[4]);
  }
};

// One desktop on one display, or on two at the same size.
bool Switch(Model& model, uint32_t kind, const Record& first, const Record& second) {
  const std::optional<size_t> gpu = FindSisAdapter(model);
  if (!gpu) return false;
  const bool sound = kind == kOneDisplay    ? second.IsZero()
                     : kind == kTwoDisplays ? first.mode() == second.mode()
                                            : false;
  if (!sound) return false;
  AmdDesktop desktop;
  desktop.mode = first.mode();
  for (const Record* record : {&first, &second}) {
    if (kind == kOneDisplay && record == &second) continue;
    const std::optional<size_t> connector = ConnectorOfBit(model, *gpu, record->device());
    if (record->device() == 0 || !connector) return false;
    desktop.connectors.push_back(*connector);
  }
  return ShowAmdDesktops(model, *gpu, {desktop}) == AmdOutcome::kDone;
}

int32_t WINAPI SwitchMode(uint32_t kind, const void* first, const void* second) {
  Call call(kSwitchMode);
  const Record one(first);
  const Record other(second);
  int32_t result = static_cast<int32_t>(call.FaultCode());
  if (!call.Fails() && first != nullptr && second != nullptr) {
    result = Switch(CurrentModel(), kind, one, other) ? kSisSwitched : 0;
  }
  return static_cast<int32_t>(call.Changed(result, "kind=%u [%s] [%s]", kind,
                                           first != nullptr ? one.Text().c_str() : "null",
                                           second != nullptr ? other.Text().c_str() : "null"));
}

// --- Entries that are there and that nobody needs. The caller clears the stack, so that their
// arguments need not be known.

int32_t NotSimulated(const char* name) {
  ReportFailure(std::string(name) + " was called, which is not simulated");
  return 0;
}

int32_t WINAPI ChangeTVMode() { return NotSimulated("ChangeTVMode"); }
int32_t WINAPI GetDriverModeData() { return NotSimulated("GetDriverModeData"); }
int32_t WINAPI NoDeviceTest() { return NotSimulated("NoDeviceTest"); }

}  // namespace

InventedModule SisLibrary() {
  InventedModule library;
  library.name = kSisLibrary;
  library.entries = {
      {kSisLibrary, kSwitchMode, Guard<SwitchMode>()},
      {kSisLibrary, kDeviceState, Guard<GetCurDeviceState>()},
      {kSisLibrary, "ChangeTVMode", Guard<ChangeTVMode>()},
      {kSisLibrary, "GetDriverModeData", Guard<GetDriverModeData>()},
      {kSisLibrary, "NoDeviceTest", Guard<NoDeviceTest>()},
  };
  library.available = SisDriverInstalled;
  return library;
}

void RemoveSisEntry(Machine& machine, const std::string& name) {
  std::vector<Entry>& entries = machine.state().invented.at(kSisLibrary).entries;
  const auto entry = std::find_if(entries.begin(), entries.end(),
                                  [&name](const Entry& e) { return name == e.name; });
  if (entry == entries.end()) throw std::runtime_error("SisVga.dll has no entry " + name);
  entries.erase(entry);
}

void SetSisState(Machine& machine, uint32_t first, uint32_t second, uint32_t attached) {
  auto& counters = machine.state().counters;
  counters[kStateTold] = 1;
  counters[kStateWords[0]] = first;
  counters[kStateWords[1]] = second;
  counters[kStateWords[2]] = attached;
}

}  // namespace sim
