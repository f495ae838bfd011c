// What a machine file says of AMD's driver.
#include <cstdio>
#include <set>

#include "sim/MachineFields.h"
#include "sim/faces/AmdDriver.h"

namespace sim {
namespace {

// "8.14.10.1120", or nothing for a file without a version.
std::string ReadVersion(Fields* fields, const std::string& usual) {
  const std::string field = "adl_version";
  std::string text = fields->TextOr(field, usual);
  if (text.empty()) return text;
  unsigned numbers[4] = {};
  int length = 0;
  const int read = std::sscanf(text.c_str(), "%5u.%5u.%5u.%5u%n", &numbers[0], &numbers[1],
                               &numbers[2], &numbers[3], &length);
  bool sound = read == 4 && static_cast<size_t>(length) == text.size();
  for (const unsigned number : numbers) sound = sound && number <= 0xFFFF;
  if (!sound) fields->Raise(field, "four numbers up to 65535 with points between them are needed");
  return text;
}

std::vector<uint32_t> ReadIndices(Fields* fields) {
  const std::string field = "adl_indices";
  std::vector<uint32_t> indices = fields->NumbersOrNone(field, 255);
  if (std::set<uint32_t>(indices.begin(), indices.end()).size() != indices.size()) {
    fields->Raise(field, "each index stands for one adapter");
  }
  return indices;
}

// "1x2": rows and columns.
std::vector<std::pair<uint32_t, uint32_t>> ReadGrids(Fields* fields) {
  const std::string field = "sls_grids";
  std::vector<std::pair<uint32_t, uint32_t>> grids;
  for (const std::string& text : fields->TextsOrNone(field)) {
    unsigned rows = 0;
    unsigned columns = 0;
    int length = 0;
    const int read = std::sscanf(text.c_str(), "%2ux%2u%n", &rows, &columns, &length);
    const bool whole = read == 2 && static_cast<size_t>(length) == text.size();
    if (!whole || rows == 0 || columns == 0) {
      fields->Raise(field, "\"" + text + "\" is no <rows>x<columns>");
    }
    grids.emplace_back(rows, columns);
  }
  return grids;
}

std::optional<uint32_t> NumberIfAny(Fields* fields, const std::string& field) {
  if (fields->Find(field) == nullptr) return std::nullopt;
  return fields->Number(field, 255);
}

}  // namespace

AmdDriver ReadAmdDriver(Fields* adapter) {
  AmdDriver amd;
  amd.adl_library = adapter->TruthOr("adl_library", amd.adl_library);
  amd.adl_version = ReadVersion(adapter, amd.adl_version);
  amd.legacy_library = adapter->TruthOr("legacy_library", amd.legacy_library);
  amd.adl_indices = ReadIndices(adapter);
  amd.powerxpress = adapter->NumberOr("powerxpress", amd.powerxpress);
  amd.active_gpu = adapter->NumberOr("active_gpu", amd.active_gpu, 2);
  amd.switching_capability = adapter->NumberOr("switching_capability", amd.switching_capability, 1);
  amd.sls_grids = ReadGrids(adapter);
  return amd;
}

AmdOutput ReadAmdOutput(Fields* connector) {
  AmdOutput amd;
  amd.display_type = NumberIfAny(connector, "adl_type");
  amd.connector = NumberIfAny(connector, "adl_connector");
  amd.display_index = NumberIfAny(connector, "adl_display");
  amd.legacy_type = NumberIfAny(connector, "legacy_type");
  amd.legacy_kind = NumberIfAny(connector, "legacy_kind");
  return amd;
}

}  // namespace sim
