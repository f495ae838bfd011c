#include "sim/ShortForm.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "sim/EdidMaker.h"
#include "sim/Machine.h"
#include "sim/Topology.h"
#include "sim/faces/DisplayLink.h"

namespace sim {
namespace {

struct WindowsWord {
  const char* word;
  uint32_t major, minor, build;
  uint8_t product_type;
  int product;  // -1: Kernel32 has no GetProductInfo
  const char* service_pack;
};
constexpr WindowsWord kWindows[] = {
    {"win10", 10, 0, 19045, 1, 48, ""},
    {"win8", 6, 2, 9200, 1, 48, ""},
    {"win7", 6, 1, 7601, 1, 48, "Service Pack 1"},
    {"win7starter", 6, 1, 7601, 1, 11, "Service Pack 1"},
    {"vista", 6, 0, 6002, 1, 6, "Service Pack 2"},
    {"2008", 6, 0, 6002, 3, 7, "Service Pack 2"},
    {"2008r2", 6, 1, 7601, 3, 7, "Service Pack 1"},
    {"2003", 5, 2, 3790, 3, -1, "Service Pack 2"},
    {"xp", 5, 1, 2600, 1, -1, "Service Pack 3"},
};

struct AdapterWord {
  const char* word;
  const char* name;
  const char* hardware_id;
};
constexpr AdapterWord kAdapters[] = {
    {"intel", "Intel(R) HD Graphics 4000", "PCI\\VEN_8086&DEV_0166&SUBSYS_397717AA&REV_09"},
    {"nvidia", "NVIDIA GeForce GT 540M", "PCI\\VEN_10DE&DEV_0DF4&SUBSYS_397717AA&REV_A1"},
    {"amd", "AMD Radeon HD 7500M", "PCI\\VEN_1002&DEV_6841&SUBSYS_397717AA&REV_00"},
    {"sis", "SiS Mirage 3 Graphics", "PCI\\VEN_1039&DEV_6351&SUBSYS_397717AA&REV_10"},
    {"via", "VIA Chrome9 HC IGP", "PCI\\VEN_1106&DEV_3371&SUBSYS_397717AA&REV_01"},
    {"displaylink", "DisplayLink Graphics Adapter", "USB\\VID_17E9&PID_0290&MI_00"},
    // Drives the displays, but stands in no list of devices.
    {"none", "Standard VGA Graphics Adapter", ""},
};

constexpr char kUsbAdapter[] = "displaylink";

struct ConnectorWord {
  const char* word;
  uint32_t technology;
  const char* monitor;
};
constexpr ConnectorWord kConnectors[] = {
    {"internal", kTechnologyInternal, "Panel"},
    {"crt", kTechnologyHd15, "CRT Monitor"},
    {"tv", 1, "Television"},
    {"dvi", 4, "DVI Monitor"},
    {"hdmi", 5, "HDMI Monitor"},
    {"dp", 10, "DP Monitor"},
    {"edp", kTechnologyEmbeddedDisplayPort, "eDP Panel"},
    {"other", 0xFFFFFFFF, "Projector"},
    {"usb", 0xFFFFFFFF, "USB Monitor"},
    {"wireless", 15, "Wireless"},
};

struct Size {
  uint32_t width, height;
};
constexpr Size kUsualSizes[] = {
    {640, 480},  {800, 600},  {1024, 768},  {1280, 720},  {1280, 800},  {1280, 1024}, {1366, 768},
    {1440, 900}, {1600, 900}, {1600, 1200}, {1680, 1050}, {1920, 1080}, {1920, 1200},
};

std::string Trim(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\n");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\n") - first + 1);
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  size_t start = 0;
  while (true) {
    const size_t end = text.find(separator, start);
    parts.push_back(Trim(text.substr(start, end - start)));
    if (end == std::string::npos) return parts;
    start = end + 1;
  }
}

std::vector<std::string> Words(const std::string& text) {
  std::vector<std::string> words;
  for (const std::string& word : Split(text, ' ')) {
    if (!word.empty()) words.push_back(word);
  }
  return words;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::optional<uint32_t> ParseNumber(const std::string& text) {
  if (text.empty() || text.size() > 9 || !std::all_of(text.begin(), text.end(), IsDigit)) {
    return std::nullopt;
  }
  return static_cast<uint32_t>(std::stoul(text));
}

const ConnectorWord* FindConnectorWord(std::string id) {
  if (!id.empty() && IsDigit(id.back())) id.pop_back();
  for (const ConnectorWord& row : kConnectors) {
    if (id == row.word) return &row;
  }
  return nullptr;
}

// Reads one machine text; complains about single words of it.
class ShortFormReader {
 public:
  explicit ShortFormReader(const std::string& text) : text_(text) {}

  Model Read() {
    const size_t colon = text_.find(':');
    if (colon == std::string::npos) Complain(text_, "no \":\" in front of the connectors");
    ReadHardware(text_.substr(0, colon));
    ReadConnectors(Trim(text_.substr(colon + 1)));
    AddCommonFurniture(model_);
    const auto is_usb = [](const Adapter& adapter) { return adapter.usb; };
    if (std::any_of(model_.adapters.begin(), model_.adapters.end(), is_usb)) {
      InstallDisplayLink(model_);
    }
    if (!StartWith(model_, active_, clone_)) {
      Complain(text_, "the active connectors cannot be shown together");
    }
    return model_;
  }

 private:
  [[noreturn]] void Complain(const std::string& field, const std::string& what) const {
    throw MachineFileError("machine text \"" + text_ + "\", line 1, field \"" + field +
                           "\": " + what);
  }

  void ReadHardware(const std::string& text) {
    std::vector<std::string> words = Words(text);
    if (words.size() < 2) Complain(text, "a Windows and an adapter are needed");
    const std::optional<WindowsVersion> windows = WindowsByWord(words[0]);
    if (!windows) Complain(words[0], "no such Windows");
    model_.windows = *windows;
    const size_t first = text.find(words[0]) + words[0].size();
    for (const std::string& part : Split(text.substr(first), ',')) ReadAdapter(part);
  }

  void ReadAdapter(const std::string& text) {
    const std::vector<std::string> parts = Split(text, '*');
    std::optional<Adapter> adapter = AdapterByWord(parts[0]);
    if (!adapter) Complain(text, "no such adapter");
    if (parts.size() > 1) {
      const std::optional<uint32_t> count = ParseNumber(parts[1]);
      if (!count || *count == 0 || *count > 8) Complain(text, "1 to 8 displays behind \"*\"");
      adapter->sources = *count;
    }
    model_.adapters.push_back(*adapter);
  }

  void ReadConnectors(std::string text) {
    const std::string kClone = "clone ";
    if (text.compare(0, kClone.size(), kClone) == 0) {
      clone_ = true;
      text = Trim(text.substr(kClone.size()));
    }
    if (text.empty()) return;
    for (const std::string& part : Split(text, ',')) ReadConnector(part);
  }

  void ReadConnector(const std::string& text) {
    const std::vector<std::string> words = Words(text);
    if (words.empty()) Complain(text, "an empty connector");
    const std::vector<std::string> name = Split(words[0], '@');
    const ConnectorWord* row = FindConnectorWord(name[0]);
    if (row == nullptr) Complain(words[0], "no such connector");
    if (FindConnector(model_, name[0])) Complain(words[0], "this connector stands there already");
    Connector connector;
    connector.id = name[0];
    connector.technology = row->technology;
    if (name.size() > 1) {
      const std::optional<uint32_t> adapter = ParseNumber(name[1]);
      if (!adapter || *adapter == 0 || *adapter > model_.adapters.size()) {
        Complain(words[0], "no such adapter");
      }
      connector.adapter = *adapter - 1;
    }
    for (size_t i = 1; i < words.size(); ++i) {
      if (words[i] == "active") {
        active_.push_back(model_.connectors.size());
      } else {
        connector.monitor = ReadMonitor(*row, words[i]);
      }
    }
    model_.connectors.push_back(connector);
  }

  Monitor ReadMonitor(const ConnectorWord& row, const std::string& word) const {
    const std::vector<std::string> sides = Split(word, 'x');
    if (sides.size() != 2) Complain(word, "a size is <W>x<H>");
    const std::optional<uint32_t> width = ParseNumber(sides[0]);
    const std::optional<uint32_t> height = ParseNumber(sides[1]);
    if (!width || !height || *width == 0 || *height == 0) Complain(word, "a size is <W>x<H>");
    return MakeMonitor(row.monitor, *width, *height);
  }

  const std::string text_;
  Model model_;
  std::vector<size_t> active_;
  bool clone_ = false;
};

}  // namespace

std::optional<WindowsVersion> WindowsByWord(const std::string& word) {
  for (const WindowsWord& row : kWindows) {
    if (word != row.word) continue;
    WindowsVersion windows;
    windows.major = row.major;
    windows.minor = row.minor;
    windows.build = row.build;
    windows.product_type = row.product_type;
    windows.product.reset();
    if (row.product >= 0) windows.product = static_cast<uint32_t>(row.product);
    windows.service_pack = row.service_pack;
    return windows;
  }
  return std::nullopt;
}

std::optional<Adapter> AdapterByWord(const std::string& word) {
  for (const AdapterWord& row : kAdapters) {
    if (word != row.word) continue;
    Adapter adapter;
    adapter.name = row.name;
    adapter.hardware_id = row.hardware_id;
    adapter.enumerated = !adapter.hardware_id.empty();
    adapter.usb = word == kUsbAdapter;
    adapter.root_enumerated = adapter.usb;
    return adapter;
  }
  return std::nullopt;
}

std::optional<uint32_t> TechnologyByWord(const std::string& id) {
  const ConnectorWord* row = FindConnectorWord(id);
  if (row == nullptr) return std::nullopt;
  return row->technology;
}

Monitor MakeMonitor(const std::string& name, uint32_t width, uint32_t height) {
  Monitor monitor;
  monitor.name = name;
  monitor.preferred = {width, height, 32, 60};
  monitor.edid = MakeEdid(name, monitor.preferred);
  for (uint32_t bits : {16U, 32U}) {
    bool has_native = false;
    for (const Size& size : kUsualSizes) {
      if (size.width > width || size.height > height) continue;
      monitor.modes.push_back({size.width, size.height, bits, 60});
      has_native = has_native || (size.width == width && size.height == height);
    }
    if (!has_native) monitor.modes.push_back({width, height, bits, 60});
  }
  return monitor;
}

void AddCommonFurniture(Model& model) {
  model.registry["HKLM\\HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0"].emplace(
      "VendorIdentifier", "GenuineIntel");
  if (!model.processes.empty()) return;
  model.processes = {{4, "System"}, {1200, "explorer.exe"}, {2400, "host.exe"}};
}

bool StartWith(Model& model, const std::vector<size_t>& connectors, bool clone) {
  std::vector<uint32_t> used(model.adapters.size(), 0);
  for (size_t connector : connectors) {
    const size_t adapter = model.connectors[connector].adapter;
    if (!IsConnected(model, connector)) return false;
    if (clone && adapter != model.connectors[connectors[0]].adapter) return false;
    ++used[adapter];
  }
  for (size_t i = 0; i < model.adapters.size(); ++i) {
    Adapter& adapter = model.adapters[i];
    if (!clone) adapter.sources = std::max(adapter.sources, used[i]);
    if (used[i] > HeadCount(adapter)) adapter.heads = used[i];
  }
  NumberDevices(model);
  std::fill(used.begin(), used.end(), 0);
  Arrangement start{{}, model.sources, 0};
  int32_t x = 0;
  for (size_t connector : connectors) {
    const size_t adapter = model.connectors[connector].adapter;
    const auto first = std::find_if(model.sources.begin(), model.sources.end(),
                                    [adapter](const Source& s) { return s.adapter == adapter; });
    if (first == model.sources.end()) return false;
    const size_t source = static_cast<size_t>(first - model.sources.begin()) + used[adapter];
    start.paths.push_back({source, connector});
    const std::optional<DisplayMode> mode =
        BestMode(model, clone ? connectors : std::vector<size_t>{connector});
    if (!mode) return false;
    start.sources[source].mode = *mode;
    start.sources[source].x = x;
    if (clone) continue;
    ++used[adapter];
    x += static_cast<int32_t>(mode->width);
  }
  ApplyArrangement(model, start);
  RememberCurrent(model);
  return true;
}

Model ParseShortForm(const std::string& text) { return ShortFormReader(text).Read(); }

}  // namespace sim
