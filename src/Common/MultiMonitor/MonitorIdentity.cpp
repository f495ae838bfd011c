#include "Common/MultiMonitor/MonitorIdentity.h"

#include "Common/MultiMonitor/Edid.h"
#include "Common/Owners.h"

#include <guiddef.h>

// After windows.h.
#include <setupapi.h>

#include <cstdlib>
#include <memory>

namespace {

constexpr GUID kMonitorClass = {
    0x4D36E96E, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};
constexpr char kEdidValue[] = "EDID";
constexpr char kPruningTelevision[] = "Veld TV4810";

struct DeviceListTraits {
  using Handle = HDEVINFO;
  static Handle Invalid() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle devices) { SetupDiDestroyDeviceInfoList(devices); }
};
using UniqueDeviceList = UniqueResource<DeviceListTraits>;

struct FreeBuffer {
  void operator()(void* buffer) const { std::free(buffer); }
};
using Buffer = std::unique_ptr<void, FreeBuffer>;

/// Frees the buffers of a list that ListRegistryEDIDs filled.
class EdidList {
 public:
  EdidList() = default;
  ~EdidList() {
    for (const RegistryEDID& edid : edids) std::free(edid.pv);
  }
  EdidList(const EdidList&) = delete;
  EdidList& operator=(const EdidList&) = delete;

  std::vector<RegistryEDID> edids;
};

/// Reads the EDID under an open key.
/// @param size  out; the bytes read, fewer than were announced if the entry has shrunk meanwhile
/// @return null when there is none, or it cannot be read
Buffer ReadEdidValue(HKEY key, DWORD* size) {
  *size = 0;
  if (RegQueryValueExA(key, kEdidValue, nullptr, nullptr, nullptr, size) != ERROR_SUCCESS ||
      *size == 0) {
    return nullptr;
  }
  Buffer buffer(std::malloc(*size));
  if (buffer == nullptr) return nullptr;
  DWORD type = REG_BINARY;
  if (RegQueryValueExA(key, kEdidValue, nullptr, &type, static_cast<BYTE*>(buffer.get()), size) !=
      ERROR_SUCCESS) {
    return nullptr;
  }
  return buffer;
}

void AppendEdidOf(HDEVINFO devices, SP_DEVINFO_DATA* device, std::vector<RegistryEDID>* edids) {
  const HKEY key = SetupDiOpenDevRegKey(devices, device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
  if (key == INVALID_HANDLE_VALUE) return;
  DWORD size = 0;
  Buffer buffer = ReadEdidValue(key, &size);
  // Deliberate: the key stays open, here and wherever else no entry comes of it.
  if (buffer == nullptr) return;
  edids->push_back({size, buffer.get()});
  static_cast<void>(buffer.release());  // from here on the list's
  RegCloseKey(key);
}

/// @return false when the EDID gives the monitor no name
bool NameFrom(const RegistryEDID& entry, std::string* name) {
  EDID edid;
  try {
    edid.Load(entry.pv, entry.cb);
  } catch (const std::runtime_error&) {
    // Deliberate: a damaged EDID has a name, and one that is too short has none.
    *name = kUnknownMonitorName;
    return true;
  }
  return edid.m_valid != 0 && edid.FindName(name);
}

}  // namespace

void ListRegistryEDIDs(std::vector<RegistryEDID>* edids) {
  const UniqueDeviceList devices(
      SetupDiGetClassDevsA(&kMonitorClass, nullptr, nullptr, DIGCF_PRESENT));
  if (!devices.IsValid()) return;
  SP_DEVINFO_DATA device = {};
  device.cbSize = sizeof(device);
  for (DWORD i = 0; SetupDiEnumDeviceInfo(devices.get(), i, &device) != FALSE; ++i) {
    AppendEdidOf(devices.get(), &device, edids);
  }
}

void ListMonitorNamesFromRegistry(std::set<std::string>* names) {
  EdidList list;
  ListRegistryEDIDs(&list.edids);
  for (const RegistryEDID& entry : list.edids) {
    std::string name;
    if (NameFrom(entry, &name)) names->insert(name);
  }
}

uint32_t CountMonitorsNamed(const std::set<std::string>& names) {
  return static_cast<uint32_t>(names.count(kPruningTelevision));
}
