#include "sim/faces/NvCplRules.h"

#include <algorithm>
#include <optional>
#include <sstream>

#include "sim/Topology.h"

namespace sim {
namespace {

constexpr char kDetected[] = "nvcpl: detected";
constexpr uint64_t kSomethingDetected = uint64_t{1} << 63;

// The record of NvGetDisplayInfo.
constexpr uint32_t kRecordSize = 2048;
constexpr uint32_t kSizeAt = 0;
constexpr uint32_t kAskedFirstAt = 4;
constexpr uint32_t kToldFirstAt = 8;
constexpr uint32_t kAskedSecondAt = 12;
constexpr uint32_t kToldSecondAt = 16;
constexpr uint32_t kDisplayTypeAt = 1644;
constexpr uint32_t kConnectedMonikerAt = 2016;
constexpr uint32_t kActiveMonikerAt = 2032;
constexpr size_t kMonikerRoom = 16;
constexpr uint32_t kAsksDisplayType = 0x1000;
constexpr uint32_t kAsksConnectedMoniker = 0x4;
constexpr uint32_t kAsksActiveMoniker = 0x8;

struct KindRow {
  uint32_t technology;
  uint32_t display_type;
  char letter;
};
// By the output technology of Windows. Panels are told apart before this table is asked, and what
// has no row is digital.
constexpr KindRow kKinds[] = {
    {kTechnologyHd15, 0x1000, 'A'},      {1, 0x3000, 'T'}, {2, 0x3000, 'T'},
    {kTechnologyComponent, 0x3001, 'T'}, {4, 0x2000, 'D'}, {5, 0x2002, 'D'},
};
constexpr KindRow kPanel = {kTechnologyInternal, 0x2001, 'D'};
constexpr KindRow kDigital = {0, 0x2000, 'D'};

const KindRow& KindOf(const Connector& connector) {
  if (IsInternal(connector.technology)) return kPanel;
  for (const KindRow& row : kKinds) {
    if (row.technology == connector.technology) return row;
  }
  return kDigital;
}

bool IsNvidiaDriven(const Model& model, size_t connector) {
  const size_t adapter = model.connectors[connector].adapter;
  return adapter < model.adapters.size() && IsNvidiaAdapter(model.adapters[adapter]) &&
         AdapterWorks(model.adapters[adapter]);
}

bool IsNvidiaSource(const Model& model, size_t source) {
  return IsNvidiaAdapter(model.adapters[model.sources[source].adapter]);
}

uint64_t ConnectedNow(const Model& model) {
  uint64_t mask = 0;
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (IsNvidiaDriven(model, i) && IsConnected(model, i)) mask |= uint64_t{1} << i;
  }
  return mask;
}

// Whether the desktop is larger than its displays can show at once, each by itself.
NvCplState SpanOrClone(const Model& model, size_t source) {
  uint32_t width = 0;
  uint32_t height = 0;
  for (const size_t connector : ConnectorsOfSource(model, source)) {
    for (const DisplayMode& mode : ModesOfConnector(model, connector)) {
      width = std::max(width, mode.width);
      height = std::max(height, mode.height);
    }
  }
  const DisplayMode& desktop = model.sources[source].mode;
  if (desktop.width > width) return kNvCplStateHorizontalSpan;
  return desktop.height > height ? kNvCplStateVerticalSpan : kNvCplStateClone;
}

// --- The command.

std::optional<size_t> ConnectorNamed(const Model& model, const std::string& name) {
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (!IsNvidiaDriven(model, i) || !IsConnected(model, i)) continue;
    const std::string moniker = NvCplMoniker(model, i);
    if (moniker == "#" + name || moniker == name) return i;
  }
  return std::nullopt;
}

// A GPU's or display's number; 0 stands for the one that is meant when none is chosen.
bool IsNumberOfThisMachine(const Model& model, const std::string& text) {
  if (text.size() != 1 || text[0] < '0' || text[0] > '9') return false;
  return static_cast<size_t>(text[0] - '0') <= model.sources.size();
}

// What a view shows: its displays share one desktop, or have one each.
std::vector<NvDesktop> DesktopsOf(const Model& model, bool shared,
                                  const std::vector<size_t>& connectors) {
  std::vector<NvDesktop> desktops;
  for (const size_t connector : connectors) {
    if (shared && !desktops.empty()) {
      desktops[0].connectors.push_back(connector);
      continue;
    }
    const std::optional<size_t> source =
        NvFreeSource(model, model.connectors[connector].adapter, 0, desktops);
    if (!source) return {};
    NvDesktop desktop;
    desktop.source = *source;
    desktop.connectors = {connector};
    desktop.primary = desktops.empty();
    desktops.push_back(desktop);
  }
  return desktops;
}

struct View {
  const char* word;
  size_t displays;
  bool shared;
};
constexpr View kViews[] = {{"standard", 1, true}, {"clone", 2, true}, {"dualview", 2, false}};

}  // namespace

NvCplState NvCplStateOf(const Model& model, uint32_t monitor) {
  std::optional<size_t> adapter;
  if (monitor != 0) {
    const auto source = FindSource(model, "\\\\.\\DISPLAY" + std::to_string(monitor));
    if (!source) return kNvCplStateNotFound;
    if (!IsAttached(model, *source)) return kNvCplStateUnattached;
    if (!IsNvidiaSource(model, *source)) return kNvCplStateNotNvidia;
    adapter = model.sources[*source].adapter;
  }
  std::vector<size_t> desktops;
  for (size_t i = 0; i < model.sources.size(); ++i) {
    if (!IsNvidiaSource(model, i) || !IsAttached(model, i)) continue;
    if (!adapter || model.sources[i].adapter == *adapter) desktops.push_back(i);
  }
  if (desktops.empty()) return kNvCplStateUnattached;
  if (desktops.size() > 1) return kNvCplStateDualView;
  if (ConnectorsOfSource(model, desktops[0]).size() == 1) return kNvCplStateSingle;
  return SpanOrClone(model, desktops[0]);
}

std::string NvCplMoniker(const Model& model, size_t connector) {
  const Connector& c = model.connectors[connector];
  if (c.nvidia_moniker) return *c.nvidia_moniker;
  const char kind = KindOf(c).letter;
  char place = 'A';
  for (size_t i = 0; i < connector; ++i) {
    if (IsNvidiaDriven(model, i) && KindOf(model.connectors[i]).letter == kind) ++place;
  }
  return std::string("#") + kind + place;
}

uint32_t NvCplDisplayType(const Connector& connector) {
  return connector.nvidia_display_type.value_or(KindOf(connector).display_type);
}

std::string NvCplConnectedText(const Machine& machine, bool only_active) {
  const Model& model = machine.state().model;
  const auto detected = machine.state().counters.find(kDetected);
  const uint64_t mask =
      detected != machine.state().counters.end() ? detected->second : ConnectedNow(model);
  std::string text;
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if ((mask >> i & 1) == 0 || (only_active && !NvIsActive(model, i))) continue;
    text += (text.empty() ? "" : ",") + NvCplMoniker(model, i);
  }
  return text;
}

void DetectNvCplDisplays(Machine& machine) {
  machine.state().counters[kDetected] = ConnectedNow(machine.state().model) | kSomethingDetected;
}

bool GetNvCplDisplayInfo(const Model& model, const std::string& moniker, NvRecord record) {
  if (record.Get(kSizeAt) != kRecordSize) return false;
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (!IsNvidiaDriven(model, i) || !IsConnected(model, i)) continue;
    if (NvCplMoniker(model, i) != moniker) continue;
    const auto put_moniker = [&](uint32_t at) {
      uint8_t text[kMonikerRoom] = {};
      std::copy_n(moniker.begin(), std::min(moniker.size(), kMonikerRoom - 1), text);
      record.PutBytes(at, text, sizeof text);
    };
    const uint32_t second = record.Get(kAskedSecondAt);
    const bool asks_type = (record.Get(kAskedFirstAt) & kAsksDisplayType) != 0;
    const bool tells_connected = (second & kAsksConnectedMoniker) != 0;
    const bool tells_active = (second & kAsksActiveMoniker) != 0 && NvIsActive(model, i);
    if (asks_type) record.Put(kDisplayTypeAt, NvCplDisplayType(model.connectors[i]));
    if (tells_connected) put_moniker(kConnectedMonikerAt);
    if (tells_active) put_moniker(kActiveMonikerAt);
    record.Put(kToldFirstAt, asks_type ? kAsksDisplayType : 0);
    record.Put(kToldSecondAt, (tells_connected ? kAsksConnectedMoniker : 0) |
                                  (tells_active ? kAsksActiveMoniker : 0));
    return true;
  }
  return false;
}

bool RunNvCplCommand(Machine& machine, const std::string& command) {
  Model& model = machine.model();
  std::istringstream words(command);
  std::string verb;
  std::string number;
  std::string word;
  words >> verb >> number >> word;
  if (verb != "setview" || !IsNumberOfThisMachine(model, number)) return false;
  const auto view = std::find_if(std::begin(kViews), std::end(kViews),
                                 [&word](const View& row) { return word == row.word; });
  if (view == std::end(kViews)) return false;
  std::vector<size_t> connectors;
  for (std::string name; words >> name;) {
    const std::optional<size_t> connector = ConnectorNamed(model, name);
    if (!connector) return false;
    connectors.push_back(*connector);
  }
  if (connectors.size() != view->displays) return false;
  Arrangement arrangement;
  const size_t adapter = model.connectors[connectors[0]].adapter;
  const NvStatus status =
      ArrangeNvDesktops(model, DesktopsOf(model, view->shared, connectors), adapter, &arrangement);
  if (status != kNvOk) return false;
  ApplyArrangement(model, arrangement);
  RememberCurrent(model);
  NvForgetHandles(machine);
  return true;
}

}  // namespace sim
