#include "sim/faces/AmdDriver.h"

#include <algorithm>
#include <iterator>

#include "sim/Failure.h"
#include "sim/Topology.h"
#include "sim/faces/AmdDriverRules.h"
#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

constexpr char kBrought[] = "amd driver: brought ";
constexpr char kRemoved[] = "amd driver: removed ";
constexpr char kAnswer[] = "amd driver: answer of ";

constexpr const char* kAnswers[] = {
    "ADL_Display_NumberOfDisplays_Get",
    "ADL_Display_Capabilities_Get controllers",
    "ADL_Display_Capabilities_Get displays",
    "ADL_Display_EdidData_Get",
    "ADL_Display_SLSGrid_Caps",
    "GetCapabilities first",
    "GetCapabilities second",
    "ATIDL_GetAdapterID",
    "GetConnectedDisplays",
};

// The first working adapter of AMD's whose driver brought a library; null without one.
template <typename Wanted>
const Adapter* FindDriver(const Model& model, Wanted wanted) {
  const auto found =
      std::find_if(model.adapters.begin(), model.adapters.end(), [&wanted](const Adapter& adapter) {
        return IsAmdAdapter(adapter) && AdapterWorks(adapter) && adapter.vendor_library &&
               wanted(adapter.amd);
      });
  return found != model.adapters.end() ? &*found : nullptr;
}

bool Has(const std::vector<Entry>& entries, const std::string& name) {
  return std::any_of(entries.begin(), entries.end(),
                     [&name](const Entry& entry) { return name == entry.name; });
}

// The exports that no test has taken away.
std::vector<Entry> Remaining(const Machine::State& state, const std::vector<Entry>& all) {
  std::vector<Entry> entries;
  for (const Entry& entry : all) {
    if (state.counters.count(kRemoved + std::string(entry.name)) == 0) entries.push_back(entry);
  }
  return entries;
}

void Bring(Machine::State& state, const char* file, bool present, const std::vector<Entry>& entries,
           void (*on_unload)()) {
  const std::string brought = kBrought + std::string(file);
  const bool own = state.counters.count(brought) != 0;
  if (present && state.invented.count(file) == 0) {
    state.invented[file] = {file, Remaining(state, entries), 0, nullptr, on_unload};
    state.counters[brought] = 1;
  } else if (!present && own && state.invented[file].references == 0) {
    state.invented.erase(file);
    state.counters.erase(brought);
  }
}

}  // namespace

const Adapter* AdlLibraryAdapter(const Model& model) {
  return FindDriver(model, [](const AmdDriver& driver) { return driver.adl_library; });
}

bool HasAdlLibrary(const Model& model) { return AdlLibraryAdapter(model) != nullptr; }

bool HasAmdLegacyLibrary(const Model& model) {
  return FindDriver(model, [](const AmdDriver& driver) { return driver.legacy_library; }) !=
         nullptr;
}

void BringAmdLibraries(Machine::State& state) {
  Bring(state, kAdlLibrary, HasAdlLibrary(state.model), AdlEntries(), StopAdl);
  Bring(state, kAmdLegacyLibrary, HasAmdLegacyLibrary(state.model), AmdLegacyEntries(), nullptr);
}

bool IsAmdOperation(const std::string& name) {
  return Has(AdlEntries(), name) || Has(AmdLegacyEntries(), name);
}

void RemoveAmdEntry(Machine& machine, const std::string& name) {
  if (!IsAmdOperation(name)) {
    ReportFailure(name + " is taken away, which none of AMD's libraries has");
    return;
  }
  Machine::State& state = machine.state();
  state.counters[kRemoved + name] = 1;
  for (const char* file : {kAdlLibrary, kAmdLegacyLibrary}) {
    const auto module = state.invented.find(file);
    if (module == state.invented.end()) continue;
    std::vector<Entry>& entries = module->second.entries;
    const auto same = [&name](const Entry& entry) { return name == entry.name; };
    entries.erase(std::remove_if(entries.begin(), entries.end(), same), entries.end());
  }
}

void SetAmdAnswer(Machine& machine, const std::string& what, uint32_t value) {
  const bool known = std::any_of(std::begin(kAnswers), std::end(kAnswers),
                                 [&what](const char* answer) { return what == answer; });
  if (!known) ReportFailure("an answer was set for \"" + what + "\", which has none");
  machine.state().counters[kAnswer + what] = value;
}

uint32_t AmdAnswerOr(const char* what, uint32_t usual) {
  const auto& counters = Machine::Current().state().counters;
  const auto found = counters.find(std::string(kAnswer) + what);
  return found == counters.end() ? usual : static_cast<uint32_t>(found->second);
}

}  // namespace sim
