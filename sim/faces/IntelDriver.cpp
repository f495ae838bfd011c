#include "sim/faces/IntelDriver.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "sim/Failure.h"
#include "sim/faces/BasicStrings.h"
#include "sim/faces/FaceHelp.h"
#include "sim/faces/IntelDriverRules.h"

#include <objbase.h>

namespace sim {
namespace {

constexpr CLSID kClass = {
    0x7160A13D, 0x73DA, 0x4CEA, {0x95, 0xB9, 0x37, 0x35, 0x64, 0x78, 0x58, 0x8A}};
constexpr IID kInterface = {
    0xF932C038, 0x6484, 0x45CA, {0x8F, 0xA1, 0x7C, 0x8C, 0x27, 0x9F, 0x7A, 0xEE}};

constexpr GUID kNViewBlock = {
    0x21ADA76B, 0xA70E, 0x4D4E, {0x94, 0xE2, 0x4B, 0x8E, 0xE0, 0xCC, 0x32, 0x84}};
constexpr GUID kActiveDevices = {
    0x381ECED3, 0xEFF1, 0x4DF2, {0xB5, 0x60, 0x66, 0x48, 0xE3, 0x52, 0xB1, 0x8E}};
constexpr GUID kEdidBlock = {
    0x897843AE, 0x998A, 0x4EEC, {0xA2, 0x1E, 0xEA, 0x64, 0x2B, 0x44, 0x90, 0xEC}};
constexpr GUID kConnectorBlock = {
    0x2F317ACE, 0x3968, 0x4A57, {0x96, 0x67, 0xC6, 0xA4, 0x7B, 0x6C, 0x4B, 0x8C}};

// An object of the driver's server: its first word is the table, as the binary interface has it.
struct Driver {
  void* const* table;
};

// References that the object's user made itself. The first one, from CoCreateInstance, is not here.
constexpr char kReference[] = "ICUIExternal8 reference";
constexpr char kReferenceCount[] = "intel driver: references";
constexpr char kAspectScaling[] = "intel driver: aspect scaling of ";
constexpr uint32_t kFirstAspectScaling = 4;
constexpr uint32_t kAspectScalings = 7;  // each bit is a setting
constexpr uint32_t kAspectOperatingMode = 1;
constexpr uint32_t kEveryType = 0xFFFFFFFF;

Machine::State& State() { return Machine::Current().state(); }

// --- Results.

struct Outcome {
  HRESULT result;
  uint32_t err;
};

Outcome OutcomeOf(IntelError error) {
  if (error == kIntelSuccess) return {S_OK, kIntelSuccess};
  const bool invalid = error == kIntelBadArgument || error == kIntelUnknownBlock;
  return {invalid ? E_INVALIDARG : E_FAIL, error};
}

// A declared fault: a failing result, or a success that is none.
Outcome FaultOf(const Call& call) {
  const uint32_t code = call.FaultCode();
  if (code == 0) return {E_FAIL, kIntelFault};
  if (static_cast<HRESULT>(code) < 0) return {static_cast<HRESULT>(code), kIntelFault};
  return {S_OK, code};
}

HRESULT Tell(const Outcome& outcome, uint32_t* err) {
  if (err != nullptr) *err = outcome.err;
  return outcome.result;
}

// --- Slots 0 to 2.

HRESULT WINAPI QueryInterface(Driver* self, const IID* id, void** object) {
  if (object == nullptr || id == nullptr) return E_POINTER;
  *object = nullptr;
  if (!IsEqualIID(*id, kInterface) && !IsEqualIID(*id, IID_IUnknown)) return E_NOINTERFACE;
  *object = self;
  ++State().counters[kReferenceCount];
  LedgerTake(kReference, self);
  return S_OK;
}

ULONG WINAPI AddRef(Driver* self) {
  LedgerTake(kReference, self);
  return static_cast<ULONG>(++State().counters[kReferenceCount]);
}

ULONG WINAPI Release(Driver* self) {
  LedgerGive(kReference, self);
  uint64_t& count = State().counters[kReferenceCount];
  if (count > 0) --count;
  return static_cast<ULONG>(count);
}

// --- Slot 11.

constexpr char kChangeActiveDevices[] = "ICUIExternal8::ChangeActiveDevices";

HRESULT WINAPI ChangeActiveDevices(Driver*, const GUID* id, uint32_t size, uint8_t* records,
                                   uint32_t* err) {
  Call call(kChangeActiveDevices);
  if (id == nullptr || records == nullptr) return E_POINTER;
  const IntelBlock block(records, size);
  Outcome outcome = FaultOf(call);
  if (!call.Fails()) {
    outcome = OutcomeOf(IsEqualGUID(*id, kActiveDevices) ? ChangeIntelDevices(CurrentModel(), block)
                                                         : kIntelUnknownBlock);
  }
  call.Changed(outcome.result, "%s err=%u", DescribeIntelRecords(block).c_str(), outcome.err);
  return Tell(outcome, err);
}

// --- Slot 12.

constexpr char kEnumDevices[] = "ICUIExternal8::EnumDevices";

// On entry `type` selects the kind of device, all of them with all bits set. What ends the walk is
// a success by the sign of its number, and leaves the outputs as they were.
HRESULT WINAPI EnumDevices(Driver*, BSTR device_name, uint32_t index, uint32_t* uid, uint32_t* type,
                           uint32_t* status) {
  Call call(kEnumDevices);
  if (device_name == nullptr || uid == nullptr || type == nullptr || status == nullptr) {
    return E_POINTER;
  }
  KeepBasicString(kEnumDevices, device_name);
  const std::string name = Narrow(device_name);
  const char* const shown = name.c_str();
  if (call.Fails()) {
    return static_cast<HRESULT>(call.Read(FaultOf(call).result, "%s %u", shown, index));
  }
  const Model& model = CurrentModel();
  const auto connectors = IntelConnectorsOfDevice(model, name);
  if (!connectors) return static_cast<HRESULT>(call.Read(E_INVALIDARG, "%s %u", shown, index));
  std::vector<size_t> selected;
  for (const size_t connector : *connectors) {
    const uint32_t kind = IntelDeviceType(model.connectors[connector]);
    if (*type == kEveryType || *type == kind) selected.push_back(connector);
  }
  if (index >= selected.size()) {
    return static_cast<HRESULT>(call.Read(S_FALSE, "%s %u", shown, index));
  }
  *uid = IntelUid(model, selected[index]);
  *type = IntelDeviceType(model.connectors[selected[index]]);
  *status = IntelStatus(model, selected[index]);
  return static_cast<HRESULT>(
      call.Read(S_OK, "%s %u uid=0x%x type=%u status=0x%x", shown, index, *uid, *type, *status));
}

// --- Slots 27 and 28.

constexpr char kGetAspectScaling[] = "ICUIExternal8::GetAspectScaling";
constexpr char kSetAspectScaling[] = "ICUIExternal8::SetAspectScaling";

IntelError CheckDevice(uint32_t uid) {
  return IntelConnector(CurrentModel(), uid) ? kIntelSuccess : kIntelUnknownDevice;
}

HRESULT WINAPI GetAspectScaling(Driver*, uint32_t uid, uint32_t operating_mode,
                                uint32_t* capabilities, uint32_t* current, uint32_t* err) {
  Call call(kGetAspectScaling);
  if (capabilities == nullptr || current == nullptr) return E_POINTER;
  Outcome outcome = FaultOf(call);
  if (!call.Fails()) {
    outcome =
        OutcomeOf(operating_mode == kAspectOperatingMode ? CheckDevice(uid) : kIntelBadArgument);
  }
  if (outcome.err == kIntelSuccess) {
    *capabilities = kAspectScalings;
    *current = IntelAspectScaling(Machine::Current(), uid);
  }
  call.Read(outcome.result, "uid=0x%x mode=%u err=%u", uid, operating_mode, outcome.err);
  return Tell(outcome, err);
}

HRESULT WINAPI SetAspectScaling(Driver*, uint32_t uid, uint32_t setting, uint32_t* err) {
  Call call(kSetAspectScaling);
  Outcome outcome = FaultOf(call);
  if (!call.Fails()) {
    const bool one_bit = setting != 0 && (setting & (setting - 1)) == 0;
    const bool known = one_bit && (setting & ~kAspectScalings) == 0;
    outcome = OutcomeOf(known ? CheckDevice(uid) : kIntelBadArgument);
  }
  if (outcome.err == kIntelSuccess) SetIntelAspectScaling(Machine::Current(), uid, setting);
  call.Changed(outcome.result, "uid=0x%x setting=%u err=%u", uid, setting, outcome.err);
  return Tell(outcome, err);
}

// --- Slots 43 and 44.

constexpr char kGetDeviceData[] = "ICUIExternal8::GetDeviceData";
constexpr char kSetDeviceData[] = "ICUIExternal8::SetDeviceData";

IntelError ReadBlock(const GUID& id, const IntelBlock& block) {
  const Model& model = CurrentModel();
  if (IsEqualGUID(id, kNViewBlock)) return GetNView(model, block);
  if (IsEqualGUID(id, kEdidBlock)) return GetIntelEdid(model, block);
  if (IsEqualGUID(id, kConnectorBlock)) return GetIntelConnectors(model, block);
  return kIntelUnknownBlock;
}

std::string DescribeBlock(const GUID& id, const IntelBlock& block) {
  if (IsEqualGUID(id, kNViewBlock)) return DescribeNView(block);
  if (IsEqualGUID(id, kConnectorBlock)) return "connectors";
  if (!IsEqualGUID(id, kEdidBlock)) return "an unknown block";
  const std::string size = "edid size=" + std::to_string(block.size());
  return block.size() < 4 ? size : size + " uid=" + std::to_string(block.Get(0));
}

HRESULT WINAPI GetDeviceData(Driver*, const GUID* id, uint32_t size, uint8_t* bytes,
                             uint32_t* err) {
  Call call(kGetDeviceData);
  if (id == nullptr || bytes == nullptr) return E_POINTER;
  const IntelBlock block(bytes, size);
  const std::string asked = DescribeBlock(*id, block);
  const Outcome outcome = call.Fails() ? FaultOf(call) : OutcomeOf(ReadBlock(*id, block));
  call.Read(outcome.result, "%s err=%u", asked.c_str(), outcome.err);
  return Tell(outcome, err);
}

HRESULT WINAPI SetDeviceData(Driver*, const GUID* id, uint32_t size, uint8_t* bytes,
                             uint32_t* err) {
  Call call(kSetDeviceData);
  if (id == nullptr || bytes == nullptr) return E_POINTER;
  const IntelBlock block(bytes, size);
  const std::string asked = DescribeBlock(*id, block);
  Outcome outcome = FaultOf(call);
  if (!call.Fails()) {
    outcome = OutcomeOf(IsEqualGUID(*id, kNViewBlock) ? SetNView(CurrentModel(), block)
                                                      : kIntelUnknownBlock);
  }
  call.Changed(outcome.result, "%s err=%u", asked.c_str(), outcome.err);
  return Tell(outcome, err);
}

// --- The table.

constexpr size_t kSlots = 45;
constexpr const char* kSlotNames[kSlots] = {
    "QueryInterface", "AddRef", "Release",
    // ICUIExternal2
    "EnumActiveDevices", "GetConfiguration", "get_SupportedEvents", "RegisterEvent",
    "RegisterNotify", "DeRegisterEvent", "DeRegisterNotify", "SetConfiguration",
    // ICUIExternal3
    "ChangeActiveDevices", "EnumDevices",
    // ICUIExternal4
    "MCCS operation 1", "MCCS operation 2", "MCCS operation 3", "MCCS operation 4",
    "MCCS operation 5", "MCCS operation 6", "MCCS operation 7",
    // ICUIExternal5
    "power operation 1", "power operation 2", "power operation 3", "power operation 4",
    "power operation 5",
    // ICUIExternal6
    "GetGammaRamp", "SetGammaRamp", "GetAspectScaling", "SetAspectScaling",
    "GetAvailableConnectors", "SetConnectorSelection", "GetConnectorAttachedStatus",
    "GetConnectorSelection", "GetCloneRefreshRates", "SetCloneView", "GetTvParameters",
    "SetTvParameters",
    // ICUIExternal7
    "GetInverterParams", "SetInverterParams",
    // ICUIDownScale
    "down-scaling operation 1", "down-scaling operation 2", "down-scaling operation 3",
    "down-scaling operation 4",
    // ICUIExternal8
    "GetDeviceData", "SetDeviceData"};

// The caller clears the stack, so that the arguments of an operation that is not simulated need not
// be known.
template <size_t kSlot>
HRESULT WINAPI NotSimulated(Driver*) {
  ReportFailure("ICUIExternal8::" + std::string(kSlotNames[kSlot]) +
                " was called, which is not simulated");
  return E_NOTIMPL;
}

template <size_t... kSlot>
std::array<void*, kSlots> MakeTable(std::index_sequence<kSlot...>) {
  std::array<void*, kSlots> table = {Guard<NotSimulated<kSlot>>()...};
  table[0] = Guard<QueryInterface>();
  table[1] = Guard<AddRef>();
  table[2] = Guard<Release>();
  table[11] = Guard<ChangeActiveDevices>();
  table[12] = Guard<EnumDevices>();
  table[27] = Guard<GetAspectScaling>();
  table[28] = Guard<SetAspectScaling>();
  table[43] = Guard<GetDeviceData>();
  table[44] = Guard<SetDeviceData>();
  return table;
}

HRESULT CreateDriver(REFIID interface_id, void** object) {
  static const std::array<void*, kSlots> table = MakeTable(std::make_index_sequence<kSlots>());
  static Driver driver = {table.data()};
  *object = nullptr;
  if (!IsEqualIID(interface_id, kInterface) && !IsEqualIID(interface_id, IID_IUnknown)) {
    return E_NOINTERFACE;
  }
  ++State().counters[kReferenceCount];
  *object = &driver;
  return S_OK;
}

std::string AspectKey(uint32_t uid) { return kAspectScaling + std::to_string(uid); }

}  // namespace

const ComClass* FindIntelDriver(const Model& model) {
  static const ComClass driver = {kClass, CreateDriver, CLSCTX_LOCAL_SERVER};
  return IntelDriverInstalled(model) ? &driver : nullptr;
}

bool IsIntelDriverOperation(const std::string& name) {
  const char* const operations[] = {kChangeActiveDevices, kEnumDevices,   kGetAspectScaling,
                                    kSetAspectScaling,    kGetDeviceData, kSetDeviceData};
  return std::any_of(std::begin(operations), std::end(operations),
                     [&name](const char* operation) { return name == operation; });
}

uint32_t IntelAspectScaling(const Machine& machine, uint32_t uid) {
  const auto& counters = machine.state().counters;
  const auto found = counters.find(AspectKey(uid));
  return found == counters.end() ? kFirstAspectScaling : static_cast<uint32_t>(found->second);
}

void SetIntelAspectScaling(Machine& machine, uint32_t uid, uint32_t setting) {
  machine.state().counters[AspectKey(uid)] = setting;
}

uint64_t IntelDriverReferences(const Machine& machine) {
  const auto& counters = machine.state().counters;
  const auto found = counters.find(kReferenceCount);
  return found == counters.end() ? 0 : found->second;
}

}  // namespace sim
