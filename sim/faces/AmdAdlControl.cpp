// ADL: its session, its adapters, its buffers.
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iterator>
#include <stdexcept>

#include "sim/Ledger.h"
#include "sim/Topology.h"
#include "sim/faces/AmdAdl.h"
#include "sim/faces/AmdDriver.h"

namespace sim {
namespace {

constexpr char kRunning[] = "adl: running";
constexpr char kCallback[] = "adl: callback";
constexpr char kPresentOnly[] = "adl: present adapters only";
constexpr char kSession[] = "ADL session";
constexpr char kBuffer[] = "ADL buffer";

Machine::State& State() { return Machine::Current().state(); }
const void* SessionKey() { return &State(); }

bool SessionIsHeld() {
  return State().ledger.Holds(kSession, reinterpret_cast<uint64_t>(SessionKey()));
}

void EndSession() {
  State().counters.erase(kRunning);
  if (SessionIsHeld()) LedgerGive(kSession, SessionKey());
}

// --- The session.

// A second start while one is running is none of its own: one end ends both. Where an end was
// refused before, the start is to be ended like a first one.
int WINAPI MainControlCreate(AdlAllocate callback, int present_only) {
  Call call("ADL_Main_Control_Create");
  int32_t result = kAdlOk;
  if (call.Fails()) {
    result = static_cast<int32_t>(FaultOr(call, static_cast<uint32_t>(kAdlError)));
  } else if (callback == nullptr) {
    result = kAdlInvalidCallback;
  } else if (present_only != 0 && present_only != 1) {
    result = kAdlInvalidParameter;
  } else {
    if (!SessionIsHeld()) LedgerTake(kSession, SessionKey());
    State().counters[kRunning] = 1;
    State().counters[kCallback] = reinterpret_cast<uint64_t>(callback);
    State().counters[kPresentOnly] = static_cast<uint64_t>(present_only);
  }
  return static_cast<int>(call.Read(result, "%d", present_only));
}

// Whoever was refused has done what it could: the session is not held against it.
int WINAPI MainControlDestroy() {
  Call call("ADL_Main_Control_Destroy");
  const int32_t result = AdlRefusal(call);
  if (call.Fails() && AdlIsRunning(Machine::Current())) {
    EndSession();
    State().counters[kRunning] = 1;
  } else if (result == kAdlOk) {
    EndSession();
  }
  return static_cast<int>(call.Read(result, "%s", ""));
}

int WINAPI MainControlRefresh() {
  Call call("ADL_Main_Control_Refresh");
  return static_cast<int>(call.Read(AdlRefusal(call), "%s", ""));
}

// --- Adapters.

int WINAPI NumberOfAdaptersGet(int* count) {
  Call call("ADL_Adapter_NumberOfAdapters_Get");
  int32_t result = AdlRefusal(call);
  if (result == kAdlOk && count == nullptr) result = kAdlNullPointer;
  if (result == kAdlOk) *count = static_cast<int>(ListedAdlAdapters(CurrentModel()).size());
  return static_cast<int>(call.Read(result, "%s", ""));
}

void PutAdapterInfo(const Model& model, const AdlAdapter& adapter, AmdRecord record) {
  constexpr int32_t kVendor = 1002;  // its PCI number, read as a decimal one
  const Adapter& gpu = model.adapters[adapter.gpu];
  const Source& source = model.sources[adapter.source];
  record.PutInt(0, static_cast<int32_t>(kAdlAdapterInfoSize));
  record.PutInt(4, adapter.index);
  record.PutText(8, 256, "PCI_" + gpu.hardware_id.substr(gpu.hardware_id.find('\\') + 1) + "A");
  record.PutInt(264, static_cast<int32_t>(adapter.gpu) + 1);
  record.PutInt(268, 0);
  record.PutInt(272, static_cast<int32_t>(source.source_id));
  record.PutInt(276, kVendor);
  record.PutText(280, 256, gpu.name);
  record.PutText(536, 256, source.device_name);
  record.PutInt(792, adapter.enabled ? 1 : 0);
  record.PutInt(796, 1);
  const std::string driver =
      "\\Registry\\Machine\\System\\CurrentControlSet\\Control\\Class\\"
      "{4d36e968-e325-11ce-bfc1-08002be10318}\\000" +
      std::to_string(adapter.gpu);
  record.PutText(800, 256, driver);
  record.PutText(1056, 256, driver);
  record.PutText(1312, 256, gpu.hardware_id);
  record.PutInt(1568, static_cast<int32_t>(adapter.source));
}

int WINAPI AdapterInfoGet(void* infos, int size) {
  Call call("ADL_Adapter_AdapterInfo_Get");
  const std::vector<AdlAdapter> adapters = ListedAdlAdapters(CurrentModel());
  int32_t result = AdlRefusal(call);
  if (result == kAdlOk && infos == nullptr) result = kAdlNullPointer;
  const size_t needed = adapters.size() * kAdlAdapterInfoSize;
  const bool enough = size >= 0 && static_cast<size_t>(size) >= needed;
  if (result == kAdlOk && !enough) result = kAdlInvalidParameterSize;
  if (result == kAdlOk) {
    const AmdRecord records(infos, needed);
    for (size_t i = 0; i < adapters.size(); ++i) {
      PutAdapterInfo(CurrentModel(), adapters[i],
                     records.Slice(i * kAdlAdapterInfoSize, kAdlAdapterInfoSize));
    }
  }
  return static_cast<int>(call.Read(result, "size=%d", size));
}

int WINAPI AdapterActiveGet(int index, int* status) {
  Call call("ADL_Adapter_Active_Get");
  AdlAdapter adapter;
  int32_t result = AdlRefusal(call, index, &adapter);
  if (result == kAdlOk && status == nullptr) result = kAdlNullPointer;
  // A disabled adapter can be asked: it is not active.
  if (result == kAdlDisabledAdapter && status != nullptr) {
    *status = 0;
    result = kAdlOk;
  } else if (result == kAdlOk) {
    *status = IsAttached(CurrentModel(), adapter.source) ? 1 : 0;
  }
  return static_cast<int>(call.Read(result, "adapter=%d", index));
}

// --- The client's memory.

std::atomic<uint32_t> g_buffers{0};

// Every block that the library frees comes by here, most of them its own.
void FreeBlock(void* block) {
  Machine* const machine = g_buffers.load() != 0 ? CurrentOrNull() : nullptr;
  if (machine != nullptr &&
      machine->state().ledger.Holds(kBuffer, reinterpret_cast<uint64_t>(block))) {
    LedgerGive(kBuffer, block);
    --g_buffers;
  }
  std::free(block);
}

}  // namespace

int32_t AdlRefusal(const Call& call) {
  if (call.Fails()) {
    return static_cast<int32_t>(FaultOr(call, static_cast<uint32_t>(kAdlError)));
  }
  return AdlIsRunning(Machine::Current()) ? kAdlOk : kAdlNotInitialised;
}

int32_t AdlRefusal(const Call& call, int32_t adapter_index, AdlAdapter* adapter) {
  const int32_t result = AdlRefusal(call);
  if (result != kAdlOk) return result;
  for (const AdlAdapter& listed : ListedAdlAdapters(CurrentModel())) {
    if (listed.index != adapter_index) continue;
    *adapter = listed;
    return listed.enabled ? kAdlOk : kAdlDisabledAdapter;
  }
  return kAdlInvalidAdapter;
}

std::vector<AdlAdapter> ListedAdlAdapters(const Model& model) {
  std::vector<AdlAdapter> adapters = AdlAdapters(model);
  if (State().counters[kPresentOnly] == 0) return adapters;
  const auto is_absent = [](const AdlAdapter& adapter) { return !adapter.enabled; };
  adapters.erase(std::remove_if(adapters.begin(), adapters.end(), is_absent), adapters.end());
  return adapters;
}

void* NewAdlArray(size_t count, size_t record_size) {
  const size_t size = count * record_size;
  if (size == 0) return nullptr;
  const auto allocate = reinterpret_cast<AdlAllocate>(State().counters[kCallback]);
  void* const array = allocate(static_cast<int>(size));
  if (array == nullptr) return nullptr;
  std::memset(array, 0, size);
  LedgerTake(kBuffer, array);
  ++g_buffers;
  return array;
}

bool AdlIsRunning(const Machine& machine) {
  const auto& counters = machine.state().counters;
  const auto found = counters.find(kRunning);
  return found != counters.end() && found->second != 0;
}

void StopAdl() { State().counters.erase(kRunning); }

void AddAdlControlEntries(std::vector<Entry>* entries) {
  const Entry own[] = {
      {kAdlLibrary, "ADL_Main_Control_Create", Guard<MainControlCreate>()},
      {kAdlLibrary, "ADL_Main_Control_Destroy", Guard<MainControlDestroy>()},
      {kAdlLibrary, "ADL_Main_Control_Refresh", Guard<MainControlRefresh>()},
      {kAdlLibrary, "ADL_Adapter_NumberOfAdapters_Get", Guard<NumberOfAdaptersGet>()},
      {kAdlLibrary, "ADL_Adapter_AdapterInfo_Get", Guard<AdapterInfoGet>()},
      {kAdlLibrary, "ADL_Adapter_Active_Get", Guard<AdapterActiveGet>()},
  };
  entries->insert(entries->end(), std::begin(own), std::end(own));
}

const std::vector<Entry>& AdlEntries() {
  static const std::vector<Entry> entries = [] {
    std::vector<Entry> all;
    AddAdlControlEntries(&all);
    AddAdlDisplayEntries(&all);
    AddAdlMapEntries(&all);
    AddAdlSlsEntries(&all);
    return all;
  }();
  return entries;
}

const std::vector<Entry>& ClientHeapFace() {
  static const std::vector<Entry> entries = {{"msvcrt.dll", "free", Guard<FreeBlock>()}};
  return entries;
}

}  // namespace sim
