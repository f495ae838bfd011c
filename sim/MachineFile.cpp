#include "sim/MachineFile.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

#include <toml++/toml.h>

#include "sim/EdidMaker.h"
#include "sim/Machine.h"
#include "sim/ShortForm.h"
#include "sim/Topology.h"

namespace sim {
namespace {

constexpr int64_t kLargest = 0xFFFFFFFF;
constexpr int64_t kLargestSide = 4095;  // an EDID has 12 bits for it

class Complaint {
 public:
  explicit Complaint(std::string path) : path_(std::move(path)) {}
  [[noreturn]] void Raise(uint32_t line, const std::string& field, const std::string& what) const {
    throw MachineFileError(path_ + ", line " + std::to_string(line) + ", field \"" + field +
                           "\": " + what);
  }

 private:
  std::string path_;
};

// One table of the file. It remembers which fields were asked for; the rest are errors.
class Fields {
 public:
  Fields(const Complaint& complaint, const toml::table& table, std::string name, uint32_t line)
      : complaint_(complaint), table_(table), name_(std::move(name)), line_(line) {}

  const toml::node* Find(const std::string& field) {
    asked_.insert(field);
    return table_.get(field);
  }

  std::string Text(const std::string& field) { return Text(field, Need(field)); }
  std::string TextOr(const std::string& field, const std::string& usual) {
    const toml::node* node = Find(field);
    return node != nullptr ? Text(field, *node) : usual;
  }
  uint32_t Number(const std::string& field, int64_t most = kLargest) {
    return Number(field, Need(field), most);
  }
  uint32_t NumberOr(const std::string& field, uint32_t usual, int64_t most = kLargest) {
    const toml::node* node = Find(field);
    return node != nullptr ? Number(field, *node, most) : usual;
  }
  bool TruthOr(const std::string& field, bool usual) {
    const toml::node* node = Find(field);
    if (node == nullptr) return usual;
    if (!node->is_boolean()) Raise(field, *node, "true or false is needed");
    return node->as_boolean()->get();
  }
  std::vector<std::string> Texts(const std::string& field, const toml::node& node) const {
    if (!node.is_array()) Raise(field, node, "a list of texts is needed");
    std::vector<std::string> texts;
    for (const toml::node& element : *node.as_array()) texts.push_back(Text(field, element));
    return texts;
  }
  std::vector<std::string> Texts(const std::string& field) { return Texts(field, Need(field)); }

  Fields Table(const std::string& field, const toml::node& node) const {
    if (!node.is_table()) Raise(field, node, "a table is needed");
    return {complaint_, *node.as_table(), Full(field), LineOf(node)};
  }
  std::vector<Fields> Tables(const std::string& field) {
    const toml::node* node = Find(field);
    std::vector<Fields> tables;
    if (node == nullptr) return tables;
    if (!node->is_array())
      Raise(field, *node, "a list of tables, [[" + Full(field) + "]], is needed");
    for (const toml::node& element : *node->as_array()) tables.push_back(Table(field, element));
    return tables;
  }

  const toml::table& table() const { return table_; }

  void RefuseTheRest() const {
    for (const auto& [key, node] : table_) {
      const std::string field(key.str());
      if (asked_.count(field) == 0) {
        complaint_.Raise(key.source().begin.line, Full(field), "there is no such field");
      }
    }
  }

  [[noreturn]] void Raise(const std::string& field, const std::string& what) const {
    const toml::node* node = table_.get(field);
    complaint_.Raise(node != nullptr ? LineOf(*node) : line_, Full(field), what);
  }

 private:
  [[noreturn]] void Raise(const std::string& field, const toml::node& node,
                          const std::string& what) const {
    complaint_.Raise(LineOf(node), Full(field), what);
  }

  std::string Full(const std::string& field) const {
    return name_.empty() ? field : name_ + "." + field;
  }
  static uint32_t LineOf(const toml::node& node) { return node.source().begin.line; }

  const toml::node& Need(const std::string& field) {
    const toml::node* node = Find(field);
    if (node == nullptr) complaint_.Raise(line_, Full(field), "is missing");
    return *node;
  }
  std::string Text(const std::string& field, const toml::node& node) const {
    if (!node.is_string()) Raise(field, node, "a text is needed");
    return node.as_string()->get();
  }
  uint32_t Number(const std::string& field, const toml::node& node, int64_t most) const {
    if (!node.is_integer()) Raise(field, node, "a whole number is needed");
    const int64_t value = node.as_integer()->get();
    if (value < 0 || value > most) {
      Raise(field, node, "a number from 0 to " + std::to_string(most) + " is needed");
    }
    return static_cast<uint32_t>(value);
  }

  const Complaint& complaint_;
  const toml::table& table_;
  std::string name_;
  uint32_t line_;
  std::set<std::string> asked_;
};

// "<W>x<H>[x<bits>][@<Hz>]"; bits 0 where none are given.
std::optional<DisplayMode> ParseMode(const std::string& text) {
  DisplayMode mode{0, 0, 0, 60};
  std::istringstream in(text);
  char x = 0;
  if (!(in >> mode.width >> x >> mode.height) || x != 'x') return std::nullopt;
  if (in.peek() == 'x' && !(in >> x >> mode.bits)) return std::nullopt;
  if (in.peek() == '@' && !(in >> x >> mode.frequency)) return std::nullopt;
  if (in.peek() != std::istringstream::traits_type::eof()) return std::nullopt;
  const bool has_size = mode.width > 0 && mode.height > 0;
  if (!has_size || mode.width > kLargestSide || mode.height > kLargestSide) return std::nullopt;
  return mode;
}

WindowsVersion ReadWindows(Fields fields) {
  WindowsVersion windows;
  if (fields.Find("version") != nullptr) {
    const std::optional<WindowsVersion> known = WindowsByWord(fields.Text("version"));
    if (!known) fields.Raise("version", "no such Windows");
    windows = *known;
  } else {
    windows.major = fields.Number("major");
    windows.minor = fields.Number("minor");
    windows.build = fields.Number("build");
    windows.product.reset();
  }
  windows.major = fields.NumberOr("major", windows.major);
  windows.minor = fields.NumberOr("minor", windows.minor);
  windows.build = fields.NumberOr("build", windows.build);
  windows.product_type =
      static_cast<uint8_t>(fields.NumberOr("product_type", windows.product_type, 3));
  if (fields.Find("product") != nullptr) windows.product = fields.Number("product");
  windows.service_pack = fields.TextOr("service_pack", windows.service_pack);
  fields.RefuseTheRest();
  return windows;
}

Adapter ReadAdapter(Fields fields) {
  Adapter adapter;
  if (fields.Find("kind") != nullptr) {
    const std::optional<Adapter> known = AdapterByWord(fields.Text("kind"));
    if (!known) fields.Raise("kind", "no such adapter");
    adapter = *known;
    adapter.name = fields.TextOr("name", adapter.name);
    adapter.hardware_id = fields.TextOr("hardware_id", adapter.hardware_id);
  } else {
    adapter.name = fields.Text("name");
    adapter.hardware_id = fields.Text("hardware_id");
  }
  adapter.hardware_id_readable =
      fields.TruthOr("hardware_id_readable", adapter.hardware_id_readable);
  adapter.enumerated = fields.TruthOr("enumerated", adapter.enumerated);
  adapter.disabled = fields.TruthOr("disabled", adapter.disabled);
  adapter.problem = fields.NumberOr("problem", adapter.problem);
  adapter.root_enumerated = fields.TruthOr("root_enumerated", adapter.root_enumerated);
  adapter.status_readable = fields.TruthOr("status_readable", adapter.status_readable);
  adapter.mirroring = fields.TruthOr("mirroring", adapter.mirroring);
  adapter.sources = fields.NumberOr("sources", adapter.sources, 16);
  adapter.heads = fields.NumberOr("heads", adapter.heads, 16);
  fields.RefuseTheRest();
  return adapter;
}

std::vector<DisplayMode> ReadModes(Fields* fields, const DisplayMode& native) {
  std::vector<DisplayMode> modes;
  for (const std::string& text : fields->Texts("modes")) {
    const std::optional<DisplayMode> mode = ParseMode(text);
    if (!mode) fields->Raise("modes", "\"" + text + "\" is no <W>x<H>[x<bits>][@<Hz>]");
    if (mode->bits != 0) {
      modes.push_back(*mode);
      continue;
    }
    for (uint32_t bits : {16U, 32U}) {
      modes.push_back({mode->width, mode->height, bits, mode->frequency});
    }
  }
  if (std::find(modes.begin(), modes.end(), native) == modes.end()) modes.push_back(native);
  return modes;
}

std::vector<uint8_t> ReadEdid(Fields* fields, const std::string& digits) {
  constexpr size_t kDigits = 256;
  const bool all_hex = digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (digits.size() < kDigits || digits.size() % 2 != 0 || !all_hex) {
    fields->Raise("edid", "256 hexadecimal digits or more are needed");
  }
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

Monitor ReadMonitor(Fields fields) {
  const std::string name = fields.Text("name");
  std::optional<DisplayMode> native = ParseMode(fields.Text("native"));
  if (!native) fields.Raise("native", "a size is \"<W>x<H>\" or \"<W>x<H>@<Hz>\"");
  native->bits = 32;
  Monitor monitor = MakeMonitor(name, native->width, native->height);
  monitor.preferred = *native;
  monitor.edid = MakeEdid(name, *native);
  if (fields.Find("modes") != nullptr) {
    monitor.modes = ReadModes(&fields, *native);
  } else if (native->frequency != 60) {
    monitor.modes.push_back(*native);
  }
  const toml::node* edid = fields.Find("edid");
  if (edid != nullptr && edid->is_string()) {
    monitor.edid = ReadEdid(&fields, fields.Text("edid"));
  } else if (!fields.TruthOr("edid", true)) {
    monitor.edid.clear();
  }
  fields.RefuseTheRest();
  return monitor;
}

Connector ReadConnector(Fields fields, const Model& model) {
  Connector connector;
  connector.id = fields.Text("id");
  if (FindConnector(model, connector.id)) fields.Raise("id", "this connector stands there already");
  const std::optional<uint32_t> usual = TechnologyByWord(connector.id);
  connector.technology =
      usual ? fields.NumberOr("technology", *usual) : fields.Number("technology");
  connector.adapter = fields.NumberOr("adapter", 0);
  if (connector.adapter >= model.adapters.size()) fields.Raise("adapter", "no such adapter");
  connector.target_id = fields.NumberOr("target_id", 0);
  const toml::node* monitor = fields.Find("monitor");
  if (monitor != nullptr) connector.monitor = ReadMonitor(fields.Table("monitor", *monitor));
  fields.RefuseTheRest();
  return connector;
}

void ReadTopology(Fields fields, Model* model) {
  const std::string kind = fields.Text("kind");
  if (kind != "none" && kind != "single" && kind != "clone" && kind != "extend") {
    fields.Raise("kind", "none, single, clone or extend is needed");
  }
  std::vector<size_t> connectors;
  if (kind != "none") {
    for (const std::string& id : fields.Texts("connectors")) {
      const std::optional<size_t> connector = FindConnector(*model, id);
      if (!connector) fields.Raise("connectors", "there is no connector \"" + id + "\"");
      connectors.push_back(*connector);
    }
    const bool one = connectors.size() == 1;
    if (connectors.empty() || one != (kind == "single")) {
      fields.Raise("connectors", "one for a single display, two or more otherwise");
    }
  }
  fields.RefuseTheRest();
  if (!StartWith(*model, connectors, kind == "clone")) {
    fields.Raise("connectors", "these cannot be shown together");
  }
}

// Tables whose keys are free: values by name, told as texts.
std::map<std::string, std::string> ReadValues(const Fields& fields, const char* number_prefix) {
  std::map<std::string, std::string> values;
  for (const auto& [key, node] : fields.table()) {
    const std::string name(key.str());
    if (node.is_string()) {
      values[name] = node.as_string()->get();
    } else if (node.is_integer()) {
      values[name] = number_prefix + std::to_string(node.as_integer()->get());
    } else {
      fields.Raise(name, "a text or a whole number is needed");
    }
  }
  return values;
}

void ReadGroups(Fields* file, const std::string& field, const char* number_prefix,
                std::map<std::string, std::map<std::string, std::string>>* groups) {
  const toml::node* node = file->Find(field);
  if (node == nullptr) return;
  const Fields group = file->Table(field, *node);
  for (const auto& [key, table] : group.table()) {
    const std::string name(key.str());
    for (const auto& value : ReadValues(group.Table(name, table), number_prefix)) {
      (*groups)[name][value.first] = value.second;
    }
  }
}

Model ReadModel(Fields file) {
  Model model;
  file.TextOr("name", "");
  const toml::node* windows = file.Find("windows");
  if (windows == nullptr) file.Raise("windows", "is missing");
  model.windows = ReadWindows(file.Table("windows", *windows));
  for (const Fields& fields : file.Tables("adapter")) {
    model.adapters.push_back(ReadAdapter(fields));
  }
  if (model.adapters.empty()) file.Raise("adapter", "is missing");
  for (const Fields& fields : file.Tables("connector")) {
    model.connectors.push_back(ReadConnector(fields, model));
  }
  for (Fields fields : file.Tables("process")) {
    model.processes.push_back({fields.Number("id"), fields.Text("executable")});
    fields.RefuseTheRest();
  }
  ReadGroups(&file, "registry", "dword:", &model.registry);
  ReadGroups(&file, "config", "", &model.config);
  if (const toml::node* sound = file.Find("sound")) {
    Fields fields = file.Table("sound", *sound);
    model.wave_out_devices = fields.NumberOr("wave_out_devices", model.wave_out_devices);
    fields.RefuseTheRest();
  }
  AddCommonFurniture(model);
  const toml::node* topology = file.Find("topology");
  if (topology == nullptr) file.Raise("topology", "is missing");
  ReadTopology(file.Table("topology", *topology), &model);
  file.RefuseTheRest();
  return model;
}

}  // namespace

Model ParseMachineText(const std::string& text, const std::string& path) {
  const Complaint complaint(path);
  try {
    const toml::table table = toml::parse(text);
    return ReadModel(Fields(complaint, table, "", 1));
  } catch (const toml::parse_error& error) {
    complaint.Raise(error.source().begin.line, "", std::string(error.description()));
  }
}

Model LoadMachineFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw MachineFileError(path + ": the file cannot be read");
  std::ostringstream text;
  text << in.rdbuf();
  return ParseMachineText(text.str(), path);
}

}  // namespace sim
