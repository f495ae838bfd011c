// EnumDisplayDevices, EnumDisplaySettings and ChangeDisplaySettings over the one model.
#include <cstring>

#include "sim/Topology.h"
#include "sim/faces/ChangeSettings.h"
#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

constexpr DWORD kCurrentFields = DM_POSITION | DM_DISPLAYORIENTATION | DM_BITSPERPEL |
                                 DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFLAGS |
                                 DM_DISPLAYFREQUENCY;
// A DEVMODE reaches at least up to here; the fields behind speak of printers and colour profiles.
constexpr WORD kSmallestNarrow = offsetof(DEVMODEA, dmICMMethod);
constexpr WORD kSmallestWide = offsetof(DEVMODEW, dmICMMethod);
// The record of Windows NT 4, which ends behind the state flags.
constexpr DWORD kOldNarrowDevice = offsetof(DISPLAY_DEVICEA, DeviceID);
constexpr DWORD kOldWideDevice = offsetof(DISPLAY_DEVICEW, DeviceID);

struct DeviceText {
  std::string name, text, id, key;
  DWORD flags = 0;
};

struct SettingsView {
  DisplayMode mode;
  int32_t x = 0;
  int32_t y = 0;
  uint32_t orientation = 0;
};

std::optional<size_t> SourceByName(const Model& model, const std::string& name) {
  for (size_t i = 0; i < model.sources.size(); ++i) {
    if (Lower(model.sources[i].device_name) == Lower(name)) return i;
  }
  return std::nullopt;
}

// The display devices in enumeration order: those of every adapter that works.
std::vector<size_t> ListedSources(const Model& model) {
  std::vector<size_t> listed;
  for (size_t i = 0; i < model.sources.size(); ++i) {
    const Adapter& adapter = model.adapters[model.sources[i].adapter];
    if (AdapterWorks(adapter) || adapter.mirroring) listed.push_back(i);
  }
  return listed;
}

std::optional<DeviceText> DescribeDevice(const Model& model, DWORD index) {
  const std::vector<size_t> listed = ListedSources(model);
  if (index >= listed.size()) return std::nullopt;
  const size_t source = listed[index];
  const Adapter& adapter = model.adapters[model.sources[source].adapter];
  DeviceText device;
  device.name = model.sources[source].device_name;
  device.text = adapter.name;
  device.id = adapter.hardware_id;
  char key[128];
  snprintf(key, sizeof key,
           "\\Registry\\Machine\\System\\CurrentControlSet\\Control\\Video\\"
           "{00000000-0000-4000-8000-%012u}\\%04u",
           static_cast<unsigned>(model.sources[source].adapter + 1),
           static_cast<unsigned>(model.sources[source].source_id));
  device.key = key;
  if (adapter.mirroring) device.flags = DISPLAY_DEVICE_MIRRORING_DRIVER;
  if (IsAttached(model, source)) {
    device.flags |= DISPLAY_DEVICE_ATTACHED_TO_DESKTOP;
    if (source == model.primary_source) device.flags |= DISPLAY_DEVICE_PRIMARY_DEVICE;
  }
  return device;
}

// The monitors of a display device: what it shows itself on.
std::optional<DeviceText> DescribeMonitor(const Model& model, const std::string& name,
                                          DWORD index) {
  const std::optional<size_t> source = SourceByName(model, name);
  if (!source) return std::nullopt;
  const std::vector<size_t> connectors = ConnectorsOfSource(model, *source);
  if (index >= connectors.size()) return std::nullopt;
  const Connector& connector = model.connectors[connectors[index]];
  DeviceText device;
  device.name = model.sources[*source].device_name + "\\Monitor" + std::to_string(index);
  device.text = "Generic PnP Monitor";
  device.id = "MONITOR\\OST0101\\{4d36e96e-e325-11ce-bfc1-08002be10318}\\000" +
              std::to_string(connectors[index]);
  device.key =
      "\\Registry\\Machine\\System\\CurrentControlSet\\Control\\Class"
      "\\{4d36e96e-e325-11ce-bfc1-08002be10318}\\000" +
      std::to_string(connectors[index]);
  device.flags = DISPLAY_DEVICE_ACTIVE | (connector.monitor ? DISPLAY_DEVICE_ATTACHED : 0);
  return device;
}

std::optional<DeviceText> Describe(const Model& model, const std::optional<std::string>& name,
                                   DWORD index) {
  return name ? DescribeMonitor(model, *name, index) : DescribeDevice(model, index);
}

BOOL WINAPI FakeEnumDisplayDevicesA(LPCSTR device, DWORD index, PDISPLAY_DEVICEA record, DWORD) {
  Call call("EnumDisplayDevicesA");
  const char* shown = device != nullptr ? device : "null";
  if (call.Fails()) return static_cast<BOOL>(call.Read(FALSE, "%s %lu", shown, index));
  if (record == nullptr || record->cb < kOldNarrowDevice) {
    return static_cast<BOOL>(call.Read(FALSE, "%s %lu", shown, index));
  }
  const std::optional<std::string> name =
      device != nullptr ? std::make_optional<std::string>(device) : std::nullopt;
  const std::optional<DeviceText> found = Describe(CurrentModel(), name, index);
  if (!found) return static_cast<BOOL>(call.Read(FALSE, "%s %lu", shown, index));
  CopyText(record->DeviceName, sizeof record->DeviceName, found->name);
  CopyText(record->DeviceString, sizeof record->DeviceString, found->text);
  record->StateFlags = found->flags;
  if (record->cb >= sizeof(DISPLAY_DEVICEA)) {
    CopyText(record->DeviceID, sizeof record->DeviceID, found->id);
    CopyText(record->DeviceKey, sizeof record->DeviceKey, found->key);
  }
  return static_cast<BOOL>(call.Read(TRUE, "%s %lu", shown, index));
}

BOOL WINAPI FakeEnumDisplayDevicesW(LPCWSTR device, DWORD index, PDISPLAY_DEVICEW record, DWORD) {
  Call call("EnumDisplayDevicesW");
  std::optional<std::string> name;
  if (device != nullptr) name = Narrow(device);
  const std::string shown = name.value_or("null");
  if (call.Fails() || record == nullptr || record->cb < kOldWideDevice) {
    return static_cast<BOOL>(call.Read(FALSE, "%s %lu", shown.c_str(), index));
  }
  const std::optional<DeviceText> found = Describe(CurrentModel(), name, index);
  if (!found) return static_cast<BOOL>(call.Read(FALSE, "%s %lu", shown.c_str(), index));
  CopyText(record->DeviceName, 32, Widen(found->name));
  CopyText(record->DeviceString, 128, Widen(found->text));
  record->StateFlags = found->flags;
  if (record->cb >= sizeof(DISPLAY_DEVICEW)) {
    CopyText(record->DeviceID, 128, Widen(found->id));
    CopyText(record->DeviceKey, 128, Widen(found->key));
  }
  return static_cast<BOOL>(call.Read(TRUE, "%s %lu", shown.c_str(), index));
}

// The settings of a device now: a detached one answers with sizes of zero.
SettingsView CurrentSettings(const Model& model, size_t index) {
  const Source& source = model.sources[index];
  if (!IsAttached(model, index)) return {DisplayMode{0, 0, 0, 0}, 0, 0, 0};
  return {source.mode, source.x, source.y, source.orientation};
}

std::optional<SettingsView> StoredSettings(const Model& model, size_t index) {
  const Source& source = model.sources[index];
  if (source.staged) {
    const Staged& staged = *source.staged;
    if (!staged.attached) return SettingsView{DisplayMode{0, 0, 0, 0}, 0, 0, 0};
    return SettingsView{staged.mode, staged.x, staged.y, staged.orientation};
  }
  if (!source.registry) return std::nullopt;
  return SettingsView{*source.registry, source.x, source.y, source.orientation};
}

std::optional<SettingsView> ReadSettings(const Model& model,
                                         const std::optional<std::string>& device, DWORD number) {
  std::optional<size_t> source = model.primary_source;
  if (device) source = SourceByName(model, *device);
  if (!source || *source >= model.sources.size()) return std::nullopt;
  const Adapter& adapter = model.adapters[model.sources[*source].adapter];
  if (!AdapterWorks(adapter)) return std::nullopt;
  if (number == ENUM_CURRENT_SETTINGS) return CurrentSettings(model, *source);
  if (number == ENUM_REGISTRY_SETTINGS) return StoredSettings(model, *source);
  const std::vector<DisplayMode> modes = ModesOfSource(model, *source);
  if (number >= modes.size()) return std::nullopt;
  return SettingsView{modes[number], 0, 0, 0};
}

template <typename DevMode>
void FillSettings(const SettingsView& view, bool is_listed_mode, DevMode* dm) {
  dm->dmSize = offsetof(DevMode, dmICMMethod);  // how far Windows writes, whatever came in
  dm->dmFields =
      is_listed_mode ? kCurrentFields & ~static_cast<DWORD>(DM_POSITION) : kCurrentFields;
  dm->dmSpecVersion = DM_SPECVERSION;
  dm->dmDriverVersion = DM_SPECVERSION;
  dm->dmPosition.x = view.x;
  dm->dmPosition.y = view.y;
  dm->dmDisplayOrientation = view.orientation;
  dm->dmDisplayFixedOutput = 0;
  dm->dmBitsPerPel = view.mode.bits;
  dm->dmPelsWidth = view.mode.width;
  dm->dmPelsHeight = view.mode.height;
  dm->dmDisplayFlags = 0;
  dm->dmDisplayFrequency = view.mode.frequency;
}

BOOL EnumNarrow(const char* function, LPCSTR device, DWORD number, LPDEVMODEA dm) {
  Call call(function);
  const char* shown = device != nullptr ? device : "null";
  const int shown_number = static_cast<int>(number);
  std::optional<SettingsView> view;
  if (!call.Fails() && dm != nullptr && dm->dmSize >= kSmallestNarrow) {
    const std::optional<std::string> name =
        device != nullptr ? std::make_optional<std::string>(device) : std::nullopt;
    view = ReadSettings(CurrentModel(), name, number);
  }
  if (!view) {
    if (call.Fails() && call.FaultCode() != 0) SetLastError(call.FaultCode());
    return static_cast<BOOL>(call.Read(FALSE, "%s %d", shown, shown_number));
  }
  CopyText(reinterpret_cast<char*>(dm->dmDeviceName), CCHDEVICENAME, std::string("simdisp"));
  FillSettings(*view, shown_number >= 0, dm);
  return static_cast<BOOL>(call.Read(TRUE, "%s %d", shown, shown_number));
}

BOOL EnumWide(const char* function, LPCWSTR device, DWORD number, LPDEVMODEW dm) {
  Call call(function);
  std::optional<std::string> name;
  if (device != nullptr) name = Narrow(device);
  const std::string shown = name.value_or("null");
  const int shown_number = static_cast<int>(number);
  std::optional<SettingsView> view;
  if (!call.Fails() && dm != nullptr && dm->dmSize >= kSmallestWide) {
    view = ReadSettings(CurrentModel(), name, number);
  }
  if (!view) {
    if (call.Fails() && call.FaultCode() != 0) SetLastError(call.FaultCode());
    return static_cast<BOOL>(call.Read(FALSE, "%s %d", shown.c_str(), shown_number));
  }
  CopyText(dm->dmDeviceName, CCHDEVICENAME, std::wstring(L"simdisp"));
  FillSettings(*view, shown_number >= 0, dm);
  return static_cast<BOOL>(call.Read(TRUE, "%s %d", shown.c_str(), shown_number));
}

BOOL WINAPI FakeEnumDisplaySettingsA(LPCSTR device, DWORD number, LPDEVMODEA dm) {
  return EnumNarrow("EnumDisplaySettingsA", device, number, dm);
}

BOOL WINAPI FakeEnumDisplaySettingsExA(LPCSTR device, DWORD number, LPDEVMODEA dm, DWORD) {
  return EnumNarrow("EnumDisplaySettingsExA", device, number, dm);
}

BOOL WINAPI FakeEnumDisplaySettingsW(LPCWSTR device, DWORD number, LPDEVMODEW dm) {
  return EnumWide("EnumDisplaySettingsW", device, number, dm);
}

BOOL WINAPI FakeEnumDisplaySettingsExW(LPCWSTR device, DWORD number, LPDEVMODEW dm, DWORD) {
  return EnumWide("EnumDisplaySettingsExW", device, number, dm);
}

SettingsRequest RequestOf(const DEVMODEA& dm) {
  SettingsRequest request;
  request.fields = dm.dmFields;
  request.mode = {dm.dmPelsWidth, dm.dmPelsHeight, dm.dmBitsPerPel, dm.dmDisplayFrequency};
  request.x = dm.dmPosition.x;
  request.y = dm.dmPosition.y;
  request.orientation = dm.dmDisplayOrientation;
  return request;
}

LONG ResultOfChange(LPCSTR device, const DEVMODEA* dm, HWND window, DWORD flags, LPVOID param) {
  Model& model = CurrentModel();
  if (window != nullptr) return DISP_CHANGE_BADPARAM;
  if (param != nullptr && (flags & CDS_VIDEOPARAMETERS) == 0) return DISP_CHANGE_BADPARAM;
  std::optional<size_t> source;
  if (device != nullptr) {
    source = SourceByName(model, device);
    if (!source) return DISP_CHANGE_BADPARAM;
  }
  if (dm == nullptr) return ChangeSettings(model, source, nullptr, flags);
  if (dm->dmSize < kSmallestNarrow) return DISP_CHANGE_BADMODE;
  const SettingsRequest request = RequestOf(*dm);
  return ChangeSettings(model, source, &request, flags);
}

LONG Change(const char* function, LPCSTR device, LPDEVMODEA dm, HWND window, DWORD flags,
            LPVOID param) {
  Call call(function);
  const LONG result =
      call.Fails() ? static_cast<LONG>(FaultOr(call, static_cast<uint32_t>(DISP_CHANGE_FAILED)))
                   : ResultOfChange(device, dm, window, flags, param);
  LeaveDirtyLastError();
  const char* shown = device != nullptr ? device : "null";
  if (dm == nullptr)
    return static_cast<LONG>(call.Changed(result, "%s null flags=0x%lx", shown, flags));
  return static_cast<LONG>(
      call.Changed(result, "%s %lux%lux%lu@%lu at %ld,%ld fields=0x%lx flags=0x%lx", shown,
                   dm->dmPelsWidth, dm->dmPelsHeight, dm->dmBitsPerPel, dm->dmDisplayFrequency,
                   dm->dmPosition.x, dm->dmPosition.y, dm->dmFields, flags));
}

LONG WINAPI FakeChangeDisplaySettingsA(LPDEVMODEA dm, DWORD flags) {
  return Change("ChangeDisplaySettingsA", nullptr, dm, nullptr, flags, nullptr);
}

LONG WINAPI FakeChangeDisplaySettingsExA(LPCSTR device, LPDEVMODEA dm, HWND window, DWORD flags,
                                         LPVOID param) {
  return Change("ChangeDisplaySettingsExA", device, dm, window, flags, param);
}

}  // namespace

const std::vector<Entry>& DisplayDevicesFace() {
  static const std::vector<Entry> kEntries = {
      {"user32.dll", "EnumDisplayDevicesA", Guard<FakeEnumDisplayDevicesA>()},
      {"user32.dll", "EnumDisplayDevicesW", Guard<FakeEnumDisplayDevicesW>()},
      {"user32.dll", "EnumDisplaySettingsA", Guard<FakeEnumDisplaySettingsA>()},
      {"user32.dll", "EnumDisplaySettingsW", Guard<FakeEnumDisplaySettingsW>()},
      {"user32.dll", "EnumDisplaySettingsExA", Guard<FakeEnumDisplaySettingsExA>()},
      {"user32.dll", "EnumDisplaySettingsExW", Guard<FakeEnumDisplaySettingsExW>()},
      {"user32.dll", "ChangeDisplaySettingsA", Guard<FakeChangeDisplaySettingsA>()},
      {"user32.dll", "ChangeDisplaySettingsExA", Guard<FakeChangeDisplaySettingsExA>()},
  };
  return kEntries;
}

}  // namespace sim
