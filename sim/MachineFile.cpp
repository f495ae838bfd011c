#include "sim/MachineFile.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "sim/EdidMaker.h"
#include "sim/Machine.h"
#include "sim/MachineFields.h"
#include "sim/ShortForm.h"
#include "sim/Topology.h"
#include "sim/faces/AmdDriver.h"
#include "sim/faces/ChangeSettings.h"
#include "sim/faces/DisplayLink.h"

namespace sim {
namespace {

constexpr int64_t kLargestSide = 4095;  // an EDID has 12 bits for it

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
  adapter.vendor_library = fields.TruthOr("vendor_library", adapter.vendor_library);
  adapter.usb = fields.TruthOr("usb", adapter.usb);
  adapter.sources = fields.NumberOr("sources", adapter.sources, 16);
  adapter.heads = fields.NumberOr("heads", adapter.heads, 16);
  adapter.nvidia_coproc_status = fields.NumberOr("coproc_status", adapter.nvidia_coproc_status);
  if (fields.Find("hybrid_mode") != nullptr) {
    adapter.nvidia_hybrid_mode = fields.Number("hybrid_mode");
  }
  adapter.amd = ReadAmdDriver(&fields);
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

// Hexadecimal digits in pairs, blanks and line breaks between them. Any number of bytes is a
// monitor's to send.
std::vector<uint8_t> ReadEdidBytes(const Fields& fields, const std::string& text) {
  std::string digits;
  for (const char c : text) {
    if (std::isspace(static_cast<unsigned char>(c)) == 0) digits += c;
  }
  const bool all_hex = digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (digits.empty() || digits.size() % 2 != 0 || !all_hex) {
    fields.Raise("edid", "\"none\" or pairs of hexadecimal digits are needed");
  }
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

// What the monitor says of itself: nothing, the bytes of the file, or its name and native mode.
std::vector<uint8_t> ReadEdid(Fields* fields, const std::string& name, const DisplayMode& native) {
  constexpr size_t kLongestName = 13;
  const toml::node* own_name = fields->Find("edid_name");
  const toml::node* edid = fields->Find("edid");
  const bool is_text = edid != nullptr && edid->is_string();
  const bool none = is_text ? fields->Text("edid") == "none" : !fields->TruthOr("edid", true);
  if (own_name != nullptr && (is_text || none)) {
    fields->Raise("edid_name", "the EDID is told already");
  }
  if (none) return {};
  if (is_text) return ReadEdidBytes(*fields, fields->Text("edid"));
  const std::string shown = fields->TextOr("edid_name", name.substr(0, kLongestName));
  if (shown.size() > kLongestName) fields->Raise("edid_name", "13 characters at most");
  return MakeEdid(shown, native);
}

Monitor ReadMonitor(Fields fields) {
  const std::string name = fields.Text("name");
  std::optional<DisplayMode> native = ParseMode(fields.Text("native"));
  if (!native) fields.Raise("native", "a size is \"<W>x<H>\" or \"<W>x<H>@<Hz>\"");
  native->bits = 32;
  Monitor monitor = MakeMonitor(name, native->width, native->height);
  monitor.preferred = *native;
  if (fields.Find("modes") != nullptr) {
    monitor.modes = ReadModes(&fields, *native);
  } else if (native->frequency != 60) {
    monitor.modes.push_back(*native);
  }
  monitor.edid = ReadEdid(&fields, name, *native);
  fields.RefuseTheRest();
  return monitor;
}

// One bit that no other output of the adapter was given.
uint32_t ReadNvidiaOutput(Fields* fields, const Model& model, size_t adapter) {
  if (fields->Find("nvidia_output") == nullptr) return 0;
  const uint32_t output = fields->Number("nvidia_output");
  if (output == 0 || (output & (output - 1)) != 0) {
    fields->Raise("nvidia_output", "one bit is needed");
  }
  for (const Connector& other : model.connectors) {
    if (other.adapter == adapter && other.nvidia_output == output) {
      fields->Raise("nvidia_output", "another connector of the adapter has it");
    }
  }
  return output;
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
  connector.nvidia_output = ReadNvidiaOutput(&fields, model, connector.adapter);
  if (fields.Find("nvidia_connector") != nullptr) {
    connector.nvidia_connector_type = fields.Number("nvidia_connector");
  }
  connector.amd = ReadAmdOutput(&fields);
  connector.nivo = ReadNivoOutput(&fields);
  const toml::node* monitor = fields.Find("monitor");
  if (monitor != nullptr) connector.monitor = ReadMonitor(fields.Table("monitor", *monitor));
  fields.RefuseTheRest();
  return connector;
}

// As if a user had set it in Windows' own settings.
void SetSize(const Fields& fields, size_t connector, const std::string& text, Model* model) {
  const std::optional<DisplayMode> mode = ParseMode(text);
  if (!mode) fields.Raise("sizes", "\"" + text + "\" is no <W>x<H>");
  SettingsRequest request;
  request.fields = DM_PELSWIDTH | DM_PELSHEIGHT;
  request.mode = *mode;
  const std::optional<size_t> source = SourceOfConnector(*model, connector);
  if (ChangeSettings(*model, source, &request, CDS_UPDATEREGISTRY) != DISP_CHANGE_SUCCESSFUL) {
    fields.Raise("sizes", "\"" + text + "\" is not in the list of modes");
  }
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
  const bool has_sizes = fields.Find("sizes") != nullptr;
  const std::vector<std::string> sizes = fields.TextsOrNone("sizes");
  fields.RefuseTheRest();
  if (!StartWith(*model, connectors, kind == "clone")) {
    fields.Raise("connectors", "these cannot be shown together");
  }
  if (!has_sizes) return;
  const size_t desktops = kind == "clone" ? 1 : connectors.size();
  if (sizes.size() != desktops) {
    fields.Raise("sizes", "one for each desktop is needed, from left to right");
  }
  for (size_t i = 0; i < desktops; ++i) SetSize(fields, connectors[i], sizes[i], model);
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

// What else runs on the machine: processes, windows of other programs, services.
void ReadPrograms(Fields* file, Model* model) {
  for (Fields fields : file->Tables("process")) {
    model->processes.push_back({fields.Number("id"), fields.Text("executable")});
    fields.RefuseTheRest();
  }
  for (Fields fields : file->Tables("window")) {
    model->other_windows.push_back(
        {fields.Text("class"), fields.TextOr("title", ""), fields.TextsOrNone("children")});
    fields.RefuseTheRest();
  }
  for (Fields fields : file->Tables("service")) {
    model->services.push_back({fields.Text("name"), fields.TruthOr("running", false)});
    fields.RefuseTheRest();
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
  ReadPrograms(&file, &model);
  ReadDisplayLink(&file, &model);
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
  std::ifstream in(std::filesystem::u8path(path), std::ios::binary);
  if (!in) throw MachineFileError(path + ": the file cannot be read");
  std::ostringstream text;
  text << in.rdbuf();
  return ParseMachineText(text.str(), path);
}

}  // namespace sim
