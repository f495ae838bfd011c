#include "sim/faces/RegistryStore.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>

#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

constexpr char kMonitorClass[] = "HKLM\\SYSTEM\\CurrentControlSet\\Enum\\DISPLAY\\OST0101\\";
constexpr char kMonitorKeyEnd[] = "\\Device Parameters";
constexpr char kDword[] = "dword:";
constexpr char kHex[] = "hex:";

struct RootKey {
  HKEY key;
  const char* name;
};
const RootKey kRoots[] = {
    {HKEY_LOCAL_MACHINE, "HKLM"},
    {HKEY_CURRENT_USER, "HKCU"},
    {HKEY_CLASSES_ROOT, "HKCR"},
    {HKEY_USERS, "HKU"},
};

bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

// The model's spelling of a key's path, or the end of its list.
std::map<std::string, std::map<std::string, std::string>>::const_iterator FindKey(
    const Model& model, const std::string& path) {
  return std::find_if(model.registry.begin(), model.registry.end(),
                      [&](const auto& key) { return Lower(key.first) == Lower(path); });
}

const Connector* MonitorOfKey(const Model& model, const std::string& path) {
  for (const Connector& connector : model.connectors) {
    if (connector.monitor && Lower(MonitorKeyPath(connector)) == Lower(path)) return &connector;
  }
  return nullptr;
}

uint8_t HexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<uint8_t>(c - '0');
  return static_cast<uint8_t>((c | 0x20) - 'a' + 10);
}

RegistryData TextData(const std::string& text) {
  const std::wstring wide = Widen(text);
  const auto* bytes = reinterpret_cast<const uint8_t*>(wide.c_str());
  return {REG_SZ, {bytes, bytes + (wide.size() + 1) * sizeof(wchar_t)}};
}

}  // namespace

std::string JoinKey(const std::string& path, const std::string& subkey) {
  std::string name = subkey;
  while (!name.empty() && name.back() == '\\') name.pop_back();
  const size_t first = name.find_first_not_of('\\');
  if (first == std::string::npos) return path;
  return path + "\\" + name.substr(first);
}

bool KeyExists(const Model& model, const std::string& path) {
  const std::string wanted = Lower(path);
  for (const RootKey& root : kRoots) {
    if (wanted == Lower(root.name)) return true;
  }
  if (MonitorOfKey(model, path) != nullptr) return true;
  return std::any_of(model.registry.begin(), model.registry.end(), [&](const auto& key) {
    const std::string name = Lower(key.first);
    return name == wanted || StartsWith(name, wanted + "\\");
  });
}

std::vector<std::string> SubkeysOf(const Model& model, const std::string& path) {
  std::vector<std::string> subkeys;
  std::set<std::string> seen;
  const std::string start = Lower(path) + "\\";
  for (const auto& key : model.registry) {
    if (!StartsWith(Lower(key.first), start)) continue;
    const size_t end = key.first.find('\\', start.size());
    const std::string name = key.first.substr(start.size(), end - start.size());
    if (seen.insert(Lower(name)).second) subkeys.push_back(name);
  }
  return subkeys;
}

std::optional<RegistryData> ReadRegistry(const Model& model, const std::string& path,
                                         const std::string& name) {
  const auto key = FindKey(model, path);
  if (key != model.registry.end()) {
    for (const auto& value : key->second) {
      if (Lower(value.first) == Lower(name)) return ParseRegistryText(value.second);
    }
  }
  const Connector* connector = MonitorOfKey(model, path);
  if (connector == nullptr || Lower(name) != "edid" || connector->monitor->edid.empty()) {
    return std::nullopt;
  }
  return RegistryData{REG_BINARY, connector->monitor->edid};
}

void WriteRegistry(Model& model, const std::string& path, const std::string& name,
                   const RegistryData& data) {
  const auto key = FindKey(model, path);
  auto& values = model.registry[key != model.registry.end() ? key->first : path];
  std::string spelling = name;
  for (const auto& value : values) {
    if (Lower(value.first) == Lower(name)) spelling = value.first;
  }
  values[spelling] = FormatRegistryText(data);
}

RegistryData ParseRegistryText(const std::string& text) {
  if (StartsWith(text, kDword)) {
    const auto number =
        static_cast<uint32_t>(std::strtoul(text.c_str() + sizeof kDword - 1, nullptr, 0));
    const auto* bytes = reinterpret_cast<const uint8_t*>(&number);
    return {REG_DWORD, {bytes, bytes + sizeof number}};
  }
  if (!StartsWith(text, kHex)) return TextData(text);
  RegistryData data{REG_BINARY, {}};
  for (size_t i = sizeof kHex - 1; i + 1 < text.size(); i += 2) {
    data.bytes.push_back(static_cast<uint8_t>(HexDigit(text[i]) << 4 | HexDigit(text[i + 1])));
  }
  return data;
}

std::string FormatRegistryText(const RegistryData& data) {
  if (data.type == REG_DWORD && data.bytes.size() == sizeof(uint32_t)) {
    uint32_t number = 0;
    std::copy(data.bytes.begin(), data.bytes.end(), reinterpret_cast<uint8_t*>(&number));
    return kDword + std::to_string(number);
  }
  if (data.type == REG_SZ || data.type == REG_EXPAND_SZ) {
    std::wstring text(data.bytes.size() / sizeof(wchar_t), L'\0');
    std::copy_n(data.bytes.begin(), text.size() * sizeof(wchar_t),
                reinterpret_cast<uint8_t*>(text.data()));
    return Narrow(text.substr(0, text.find(L'\0')));
  }
  std::string hex = kHex;
  for (uint8_t byte : data.bytes) {
    hex += "0123456789abcdef"[byte >> 4];
    hex += "0123456789abcdef"[byte & 15];
  }
  return hex;
}

std::string MonitorKeyPath(const Connector& connector) {
  return kMonitorClass + connector.id + kMonitorKeyEnd;
}

}  // namespace sim
