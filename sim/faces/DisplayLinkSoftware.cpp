// DisplayLink's software as a whole: installed, stopped, removed, and what it tells of its
// displays.
#include <algorithm>
#include <stdexcept>

#include "sim/FaceTable.h"
#include "sim/Topology.h"
#include "sim/faces/DisplayLink.h"
#include "sim/faces/DisplayLinkRules.h"

namespace sim {
namespace {

constexpr char kCoreKey[] = "HKLM\\SOFTWARE\\DisplayLink\\Core";
constexpr char kFileValue[] = "AddOnApi64FileLocation";
constexpr char kServiceName[] = "DisplayLinkService";

// Larger than 32 bits, and unlike any other number of the machine.
constexpr uint64_t kFirstHandle = 0xD15B000000000010;

bool IsUsb(const Model& model, size_t connector) {
  const size_t adapter = model.connectors[connector].adapter;
  return adapter < model.adapters.size() && model.adapters[adapter].usb;
}

void InstallFiles(Model& model) {
  model.displaylink.library = true;
  model.displaylink.working = true;
  model.registry[kCoreKey][kFileValue] = model.displaylink.file;
}

bool IsTheService(const Service& service) { return service.name == kServiceName; }

// Those of products that nobody has subscribed stay unmentioned; what concerns no display is told
// in any case.
bool IsHeard(const Model& model, const std::vector<uint32_t>& pids, uint64_t handle) {
  const std::optional<size_t> connector = NivoConnector(model, handle);
  if (!connector) return true;
  const uint32_t product = model.connectors[*connector].nivo.product;
  return std::find(pids.begin(), pids.end(), product) != pids.end();
}

void Post(Machine& machine, const NivoEvent& event, bool whoever) {
  Machine::State& state = machine.state();
  DisplayLinkBook& book = state.displaylink;
  {
    const Lock lock(book.mutex);
    book.told.insert(event.handle);
    if (!whoever && !IsHeard(state.model, book.pids, event.handle)) return;
    for (NivoListener& listener : book.listeners) listener.pending.push_back(event);
  }
  SetEvent(book.arrived);
  state.threads.WakeIdle();
}

void StopDisplays(Machine& machine) {
  Model& model = machine.model();
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (IsUsb(model, i) && model.connectors[i].monitor) UnplugMonitor(model, i);
  }
}

}  // namespace

// --- What the library knows.

uint64_t NivoHandle(const Model& model, size_t connector) {
  const uint64_t handle = model.connectors[connector].nivo.handle;
  return handle != 0 ? handle : kFirstHandle + connector;
}

std::optional<size_t> NivoConnector(const Model& model, uint64_t handle) {
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (IsUsb(model, i) && NivoHandle(model, i) == handle) return i;
  }
  return std::nullopt;
}

bool NivoHandleIsKnown(const Machine::State& state, uint64_t handle) {
  const DisplayLinkBook& book = state.displaylink;
  return NivoConnector(state.model, handle) || book.told.count(handle) != 0 ||
         book.states.count(handle) != 0;
}

uint32_t NivoState(const Machine::State& state, uint64_t handle) {
  const auto set = state.displaylink.states.find(handle);
  if (set != state.displaylink.states.end()) return set->second;
  const std::optional<size_t> connector = NivoConnector(state.model, handle);
  if (!connector) return NivoOutput().execution_state;
  if (!IsConnected(state.model, *connector)) return kNivoOffDesktop;
  return state.model.connectors[*connector].nivo.execution_state;
}

// A new listener hears that it is connected, and of the displays that are there.
std::deque<NivoEvent> FirstNivoEvents(const Model& model, const std::vector<uint32_t>& pids) {
  std::deque<NivoEvent> events = {{kNivoConnected, 0}};
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    const uint64_t handle = NivoHandle(model, i);
    if (!IsUsb(model, i) || !IsConnected(model, i) || !IsHeard(model, pids, handle)) continue;
    events.push_back({kNivoDisplayAdded, handle});
  }
  return events;
}

// --- Installed, stopped, removed.

void InstallDisplayLink(Model& model) {
  InstallFiles(model);
  const auto known = std::find_if(model.services.begin(), model.services.end(), IsTheService);
  if (known == model.services.end()) {
    model.services.push_back({kServiceName, true});
  } else {
    known->running = true;
  }
}

void InstallDisplayLink(Machine& machine) { InstallDisplayLink(machine.model()); }
void InstallDisplayLinkLibrary(Machine& machine) { InstallFiles(machine.model()); }

void StopDisplayLink(Machine& machine) {
  Model& model = machine.model();
  model.displaylink.working = false;
  for (Service& service : model.services) {
    if (IsTheService(service)) service.running = false;
  }
  StopDisplays(machine);
  Post(machine, {kNivoShutdown, 0}, true);
}

void RemoveDisplayLink(Machine& machine) {
  StopDisplayLink(machine);
  Model& model = machine.model();
  model.displaylink.library = false;
  model.registry.erase(kCoreKey);
  auto& services = model.services;
  services.erase(std::remove_if(services.begin(), services.end(), IsTheService), services.end());
  Post(machine, {kNivoUnloadApi, 0}, true);
}

void RemoveDisplayLinkEntry(Machine& machine, const std::string& name) {
  Machine::State& state = machine.state();
  std::vector<Entry>& entries = state.invented.at(LowerCase(state.model.displaylink.file)).entries;
  const auto entry = std::find_if(entries.begin(), entries.end(),
                                  [&name](const Entry& e) { return name == e.name; });
  if (entry == entries.end()) throw std::runtime_error("AddOnApi64.dll has no entry " + name);
  entries.erase(entry);
}

// --- Displays.

void TellOfUsbDisplay(Machine& machine, size_t connector, uint32_t event) {
  const Model& model = machine.model();
  if (!IsUsb(model, connector) || !model.displaylink.working) return;
  Post(machine, {event, NivoHandle(model, connector)}, false);
}

uint64_t NivoHandleOf(const Machine& machine, const std::string& connector) {
  const Model& model = machine.state().model;
  const std::optional<size_t> index = FindConnector(model, connector);
  if (!index || !IsUsb(model, *index)) throw std::runtime_error("no USB display is " + connector);
  return NivoHandle(model, *index);
}

void SetNivoState(Machine& machine, uint64_t handle, uint32_t state) {
  DisplayLinkBook& book = machine.state().displaylink;
  const Lock lock(book.mutex);
  book.states[handle] = state;
}

void PostNivoEvent(Machine& machine, uint32_t event, uint64_t handle) {
  Post(machine, {event, handle}, true);
}

std::vector<uint32_t> SubscribedPids(const Machine& machine) {
  const DisplayLinkBook& book = machine.state().displaylink;
  const Lock lock(book.mutex);
  return book.pids;
}

size_t NivoListeners(const Machine& machine) {
  const DisplayLinkBook& book = machine.state().displaylink;
  const Lock lock(book.mutex);
  return book.listeners.size();
}

}  // namespace sim
