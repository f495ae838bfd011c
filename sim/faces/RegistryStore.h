// The registry of the simulated machine, as far as somebody asks for it: keys by path, data by
// name, handles.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Common/Win.h"
#include "sim/Model.h"

namespace sim {

/// The data of one value.
struct RegistryData {
  DWORD type = REG_NONE;
  std::vector<uint8_t> bytes;  // texts are UTF-16 with their terminating zero
};

/// "HKLM\\A\\B" for an open handle or a root key; nothing for a handle that is none.
std::optional<std::string> PathOfKey(HKEY key);
/// Joins a path and a subkey's name, which may be null or begin and end with backslashes.
std::string JoinKey(const std::string& path, const std::string& subkey);
/// The key itself is there, or one below it.
bool KeyExists(const Model& model, const std::string& path);
std::vector<std::string> SubkeysOf(const Model& model, const std::string& path);
std::optional<RegistryData> ReadRegistry(const Model& model, const std::string& path,
                                         const std::string& name);
void WriteRegistry(Model& model, const std::string& path, const std::string& name,
                   const RegistryData& data);
/// Opens a handle and enters it in the ledger.
HKEY OpenKeyHandle(const std::string& path, REGSAM access);

/// Text of the model and back: "dword:12", "dword:0x0c", "hex:0aff", or the text of a REG_SZ.
RegistryData ParseRegistryText(const std::string& text);
std::string FormatRegistryText(const RegistryData& data);

/// The key where Windows keeps a monitor's EDID; its value "EDID" comes from the model's monitor.
std::string MonitorKeyPath(const Connector& connector);

}  // namespace sim
