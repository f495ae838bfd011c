// Device lists: the display adapters and the monitors that are present, their properties, and the
// configuration manager's word on them.
#include <guiddef.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "sim/Topology.h"
#include "sim/faces/FaceHelp.h"
#include "sim/faces/RegistryStore.h"

// After windows.h.
#include <cfgmgr32.h>
#include <setupapi.h>

namespace sim {
namespace {

// The ledger tells the lists of the two calls apart.
constexpr char kListKind[] = "device list";
constexpr char kWideListKind[] = "wide device list";
constexpr GUID kDisplayClass = {
    0x4D36E968, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};
constexpr GUID kMonitorClass = {
    0x4D36E96E, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

// Device instances: adapters and monitors have numbers of their own.
constexpr DWORD kFirstAdapter = 0x1000;
constexpr DWORD kFirstMonitor = 0x2000;
constexpr DWORD kDisabledProblem = 22;

struct Device {
  GUID device_class;
  DWORD instance;
};

struct DeviceList {
  const char* kind = kListKind;
  std::vector<Device> devices;
};

std::map<HDEVINFO, DeviceList>& OpenLists() {
  static std::map<HDEVINFO, DeviceList> lists;
  return lists;
}

bool SameGuid(const GUID& a, const GUID& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

std::vector<Device> PresentDevices(const Model& model, const GUID* wanted) {
  std::vector<Device> devices;
  if (wanted == nullptr || SameGuid(*wanted, kDisplayClass)) {
    for (size_t i = 0; i < model.adapters.size(); ++i) {
      if (!model.adapters[i].enumerated) continue;
      devices.push_back({kDisplayClass, kFirstAdapter + static_cast<DWORD>(i)});
    }
  }
  if (wanted == nullptr || SameGuid(*wanted, kMonitorClass)) {
    for (size_t i = 0; i < model.connectors.size(); ++i) {
      if (!IsConnected(model, i)) continue;
      devices.push_back({kMonitorClass, kFirstMonitor + static_cast<DWORD>(i)});
    }
  }
  return devices;
}

const Adapter* AdapterOf(const Model& model, DWORD instance) {
  if (instance < kFirstAdapter || instance - kFirstAdapter >= model.adapters.size()) return nullptr;
  return &model.adapters[instance - kFirstAdapter];
}

const Connector* ConnectorOf(const Model& model, DWORD instance) {
  if (instance < kFirstMonitor || instance - kFirstMonitor >= model.connectors.size()) {
    return nullptr;
  }
  const Connector& connector = model.connectors[instance - kFirstMonitor];
  return connector.monitor ? &connector : nullptr;
}

HDEVINFO OpenList(const char* function, const char* kind, const GUID* wanted, DWORD flags) {
  Call call(function);
  if (call.Fails()) {
    SetLastError(FaultOr(call, ERROR_NOT_ENOUGH_MEMORY));
    call.Read(-1, "flags=0x%lx", flags);
    return INVALID_HANDLE_VALUE;
  }
  if (wanted == nullptr && (flags & DIGCF_ALLCLASSES) == 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    call.Read(-1, "flags=0x%lx", flags);
    return INVALID_HANDLE_VALUE;
  }
  static uintptr_t next = 0x61000;
  const HDEVINFO list = reinterpret_cast<HDEVINFO>(next += 4);
  const bool all = (flags & DIGCF_ALLCLASSES) != 0;
  OpenLists()[list] = {kind, PresentDevices(CurrentModel(), all ? nullptr : wanted)};
  LedgerTake(kind, list);
  LeaveDirtyLastError();
  call.Read(0, "flags=0x%lx", flags);
  return list;
}

HDEVINFO WINAPI FakeSetupDiGetClassDevsA(const GUID* wanted, PCSTR, HWND, DWORD flags) {
  return OpenList("SetupDiGetClassDevsA", kListKind, wanted, flags);
}

HDEVINFO WINAPI FakeSetupDiGetClassDevsW(const GUID* wanted, PCWSTR, HWND, DWORD flags) {
  return OpenList("SetupDiGetClassDevsW", kWideListKind, wanted, flags);
}

BOOL Refuse(const Call& call, DWORD error) {
  SetLastError(call.Fails() ? FaultOr(call, error) : error);
  return FALSE;
}

BOOL WINAPI FakeSetupDiEnumDeviceInfo(HDEVINFO list, DWORD index, PSP_DEVINFO_DATA data) {
  Call call("SetupDiEnumDeviceInfo");
  if (call.Fails()) return Refuse(call, ERROR_NO_MORE_ITEMS);
  const auto open = OpenLists().find(list);
  if (open == OpenLists().end()) return Refuse(call, ERROR_INVALID_HANDLE);
  if (data == nullptr || data->cbSize != sizeof *data) {
    return Refuse(call, ERROR_INVALID_USER_BUFFER);
  }
  const std::vector<Device>& devices = open->second.devices;
  if (index >= devices.size()) return Refuse(call, ERROR_NO_MORE_ITEMS);
  data->ClassGuid = devices[index].device_class;
  data->DevInst = devices[index].instance;
  data->Reserved = 0;
  LeaveDirtyLastError();
  return static_cast<BOOL>(call.Read(TRUE, "%lu", index));
}

// A property: its registry type and its texts, one each for REG_SZ and any number for REG_MULTI_SZ.
struct Property {
  DWORD type = REG_SZ;
  std::vector<std::string> texts;
};

// "PCI\VEN_8086&DEV_0166&SUBSYS_...&REV_09" and, behind it, the same without the last parts.
std::vector<std::string> HardwareIds(const std::string& id) {
  std::vector<std::string> ids = {id};
  for (const char* part : {"&REV_", "&SUBSYS_"}) {
    const size_t at = ids.back().find(part);
    if (at != std::string::npos) ids.push_back(ids.back().substr(0, at));
  }
  return ids;
}

std::optional<Property> AdapterProperty(const Adapter& adapter, DWORD property) {
  switch (property) {
    case SPDRP_HARDWAREID:
      if (!adapter.hardware_id_readable) return std::nullopt;
      return Property{REG_MULTI_SZ, HardwareIds(adapter.hardware_id)};
    case SPDRP_DEVICEDESC:
    case SPDRP_FRIENDLYNAME:
      return Property{REG_SZ, {adapter.name}};
    case SPDRP_CLASS:
      return Property{REG_SZ, {"Display"}};
    default:
      return std::nullopt;
  }
}

std::optional<Property> MonitorProperty(DWORD property) {
  switch (property) {
    case SPDRP_HARDWAREID:
      return Property{REG_MULTI_SZ, {"MONITOR\\OST0101"}};
    case SPDRP_DEVICEDESC:
      return Property{REG_SZ, {"Generic PnP Monitor"}};
    case SPDRP_CLASS:
      return Property{REG_SZ, {"Monitor"}};
    default:
      return std::nullopt;
  }
}

std::optional<Property> PropertyOf(const Model& model, DWORD instance, DWORD property) {
  if (const Adapter* adapter = AdapterOf(model, instance))
    return AdapterProperty(*adapter, property);
  if (ConnectorOf(model, instance) != nullptr) return MonitorProperty(property);
  return std::nullopt;
}

template <typename Character>
std::basic_string<Character> Laid(const Property& property) {
  std::basic_string<Character> laid;
  for (const std::string& text : property.texts) {
    laid.append(text.begin(), text.end());
    laid.push_back(Character());
  }
  if (property.type == REG_MULTI_SZ) laid.push_back(Character());
  return laid;
}

template <typename Character>
BOOL ReadProperty(const char* function, HDEVINFO list, const SP_DEVINFO_DATA* data, DWORD property,
                  PDWORD type, PBYTE buffer, DWORD room, PDWORD required) {
  Call call(function);
  if (call.Fails()) return Refuse(call, ERROR_INVALID_DATA);
  if (OpenLists().count(list) == 0) return Refuse(call, ERROR_INVALID_HANDLE);
  if (data == nullptr || data->cbSize != sizeof *data) {
    return Refuse(call, ERROR_INVALID_PARAMETER);
  }
  const std::optional<Property> found = PropertyOf(CurrentModel(), data->DevInst, property);
  if (!found) return Refuse(call, ERROR_INVALID_DATA);
  const std::basic_string<Character> laid = Laid<Character>(*found);
  const DWORD size = static_cast<DWORD>(laid.size() * sizeof(Character));
  if (required != nullptr) *required = size;
  if (type != nullptr) *type = found->type;
  if (buffer == nullptr || room < size) return Refuse(call, ERROR_INSUFFICIENT_BUFFER);
  const auto* bytes = reinterpret_cast<const BYTE*>(laid.data());
  std::copy(bytes, bytes + size, buffer);
  LeaveDirtyLastError();
  return static_cast<BOOL>(call.Read(TRUE, "0x%lx property=%lu", data->DevInst, property));
}

BOOL WINAPI FakeSetupDiGetDeviceRegistryPropertyA(HDEVINFO list, PSP_DEVINFO_DATA data,
                                                  DWORD property, PDWORD type, PBYTE buffer,
                                                  DWORD room, PDWORD required) {
  return ReadProperty<char>("SetupDiGetDeviceRegistryPropertyA", list, data, property, type, buffer,
                            room, required);
}

BOOL WINAPI FakeSetupDiGetDeviceRegistryPropertyW(HDEVINFO list, PSP_DEVINFO_DATA data,
                                                  DWORD property, PDWORD type, PBYTE buffer,
                                                  DWORD room, PDWORD required) {
  return ReadProperty<wchar_t>("SetupDiGetDeviceRegistryPropertyW", list, data, property, type,
                               buffer, room, required);
}

BOOL WINAPI FakeSetupDiDestroyDeviceInfoList(HDEVINFO list) {
  Call call("SetupDiDestroyDeviceInfoList");
  if (call.Fails()) return Refuse(call, ERROR_INVALID_HANDLE);
  const auto open = OpenLists().find(list);
  LedgerGive(open != OpenLists().end() ? open->second.kind : kListKind, list);
  if (open == OpenLists().end()) return Refuse(call, ERROR_INVALID_HANDLE);
  OpenLists().erase(open);
  LeaveDirtyLastError();
  return TRUE;
}

// A monitor's hardware key, where its EDID lies.
HKEY WINAPI FakeSetupDiOpenDevRegKey(HDEVINFO list, PSP_DEVINFO_DATA data, DWORD scope, DWORD,
                                     DWORD key_type, REGSAM access) {
  Call call("SetupDiOpenDevRegKey");
  HKEY key = static_cast<HKEY>(INVALID_HANDLE_VALUE);
  DWORD error = ERROR_SUCCESS;
  if (call.Fails()) {
    error = FaultOr(call, ERROR_KEY_DOES_NOT_EXIST);
  } else if (OpenLists().count(list) == 0) {
    error = ERROR_INVALID_HANDLE;
  } else if (data == nullptr || data->cbSize != sizeof *data || scope != DICS_FLAG_GLOBAL) {
    error = ERROR_INVALID_PARAMETER;
  } else {
    const Connector* connector = ConnectorOf(CurrentModel(), data->DevInst);
    if (connector == nullptr || key_type != DIREG_DEV) {
      error = ERROR_KEY_DOES_NOT_EXIST;
    } else {
      key = OpenKeyHandle(MonitorKeyPath(*connector), access);
    }
  }
  SetLastError(error != ERROR_SUCCESS ? error : ERROR_ARENA_TRASHED);
  return key;
}

CONFIGRET StatusOf(const Model& model, DWORD instance, PULONG status, PULONG problem) {
  constexpr ULONG kRunning = DN_DRIVER_LOADED | DN_STARTED;
  if (status == nullptr || problem == nullptr) return CR_INVALID_POINTER;
  const Adapter* adapter = AdapterOf(model, instance);
  if (adapter == nullptr) {
    if (ConnectorOf(model, instance) == nullptr) return CR_NO_SUCH_DEVNODE;
    *status = kRunning;
    *problem = 0;
    return CR_SUCCESS;
  }
  if (!adapter->status_readable) return CR_FAILURE;
  *problem = adapter->disabled ? kDisabledProblem : adapter->problem;
  *status = *problem != 0 ? DN_HAS_PROBLEM : kRunning;
  if (adapter->root_enumerated) *status |= DN_ROOT_ENUMERATED;
  return CR_SUCCESS;
}

CONFIGRET DevNodeStatus(const char* function, PULONG status, PULONG problem, DEVINST instance) {
  Call call(function);
  const CONFIGRET result = call.Fails() ? FaultOr(call, CR_FAILURE)
                                        : StatusOf(CurrentModel(), instance, status, problem);
  LeaveDirtyLastError();
  return static_cast<CONFIGRET>(call.Read(result, "0x%lx", instance));
}

CONFIGRET WINAPI FakeGetDevNodeStatus(PULONG status, PULONG problem, DEVINST instance, ULONG) {
  return DevNodeStatus("CM_Get_DevNode_Status", status, problem, instance);
}

CONFIGRET WINAPI FakeGetDevNodeStatusEx(PULONG status, PULONG problem, DEVINST instance, ULONG,
                                        HMACHINE) {
  return DevNodeStatus("CM_Get_DevNode_Status_Ex", status, problem, instance);
}

}  // namespace

const std::vector<Entry>& SetupApiFace() {
  static const std::vector<Entry> kEntries = {
      {"setupapi.dll", "SetupDiGetClassDevsA", Guard<FakeSetupDiGetClassDevsA>()},
      {"setupapi.dll", "SetupDiGetClassDevsW", Guard<FakeSetupDiGetClassDevsW>()},
      {"setupapi.dll", "SetupDiEnumDeviceInfo", Guard<FakeSetupDiEnumDeviceInfo>()},
      {"setupapi.dll", "SetupDiGetDeviceRegistryPropertyA",
       Guard<FakeSetupDiGetDeviceRegistryPropertyA>()},
      {"setupapi.dll", "SetupDiGetDeviceRegistryPropertyW",
       Guard<FakeSetupDiGetDeviceRegistryPropertyW>()},
      {"setupapi.dll", "SetupDiDestroyDeviceInfoList", Guard<FakeSetupDiDestroyDeviceInfoList>()},
      {"setupapi.dll", "SetupDiOpenDevRegKey", Guard<FakeSetupDiOpenDevRegKey>()},
      // The configuration manager's functions stand in both modules.
      {"setupapi.dll", "CM_Get_DevNode_Status", Guard<FakeGetDevNodeStatus>()},
      {"setupapi.dll", "CM_Get_DevNode_Status_Ex", Guard<FakeGetDevNodeStatusEx>()},
      {"cfgmgr32.dll", "CM_Get_DevNode_Status", Guard<FakeGetDevNodeStatus>()},
      {"cfgmgr32.dll", "CM_Get_DevNode_Status_Ex", Guard<FakeGetDevNodeStatusEx>()},
  };
  return kEntries;
}

}  // namespace sim
