// QueryDisplayConfig, SetDisplayConfig and their fellows: there from Windows 7 on.
#include "sim/Topology.h"
#include "sim/faces/DisplayConfigRules.h"
#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

LONG WINAPI FakeGetDisplayConfigBufferSizes(UINT32 flags, UINT32* paths, UINT32* modes) {
  Call call("GetDisplayConfigBufferSizes");
  LeaveDirtyLastError();
  if (call.Fails()) {
    return static_cast<LONG>(call.Read(FaultOr(call, ERROR_GEN_FAILURE), "flags=0x%x", flags));
  }
  if (paths == nullptr || modes == nullptr || !QueryFlagsAreValid(flags)) {
    return static_cast<LONG>(call.Read(ERROR_INVALID_PARAMETER, "flags=0x%x", flags));
  }
  const DisplayConfig config = QueryConfig(CurrentModel(), flags);
  *paths = static_cast<UINT32>(config.paths.size());
  *modes = static_cast<UINT32>(config.modes.size());
  return static_cast<LONG>(call.Read(ERROR_SUCCESS, "flags=0x%x", flags));
}

LONG Query(UINT32 flags, UINT32* path_count, DISPLAYCONFIG_PATH_INFO* paths, UINT32* mode_count,
           DISPLAYCONFIG_MODE_INFO* modes, DISPLAYCONFIG_TOPOLOGY_ID* topology) {
  if (!QueryFlagsAreValid(flags)) return ERROR_INVALID_PARAMETER;
  if (path_count == nullptr || mode_count == nullptr || paths == nullptr || modes == nullptr) {
    return ERROR_INVALID_PARAMETER;
  }
  if (*path_count == 0 || *mode_count == 0) return ERROR_INVALID_PARAMETER;
  // The topology is told of the database only, and must be taken there.
  if ((topology != nullptr) != (flags == QDC_DATABASE_CURRENT)) return ERROR_INVALID_PARAMETER;
  const DisplayConfig config = QueryConfig(CurrentModel(), flags);
  if (*path_count < config.paths.size() || *mode_count < config.modes.size()) {
    return ERROR_INSUFFICIENT_BUFFER;
  }
  std::copy(config.paths.begin(), config.paths.end(), paths);
  std::copy(config.modes.begin(), config.modes.end(), modes);
  *path_count = static_cast<UINT32>(config.paths.size());
  *mode_count = static_cast<UINT32>(config.modes.size());
  if (topology != nullptr) *topology = static_cast<DISPLAYCONFIG_TOPOLOGY_ID>(config.topology);
  return ERROR_SUCCESS;
}

LONG WINAPI FakeQueryDisplayConfig(UINT32 flags, UINT32* path_count, DISPLAYCONFIG_PATH_INFO* paths,
                                   UINT32* mode_count, DISPLAYCONFIG_MODE_INFO* modes,
                                   DISPLAYCONFIG_TOPOLOGY_ID* topology) {
  Call call("QueryDisplayConfig");
  const LONG result = call.Fails() ? static_cast<LONG>(FaultOr(call, ERROR_GEN_FAILURE))
                                   : Query(flags, path_count, paths, mode_count, modes, topology);
  LeaveDirtyLastError();
  return static_cast<LONG>(call.Read(result, "flags=0x%x", flags));
}

LONG WINAPI FakeSetDisplayConfig(UINT32 path_count, DISPLAYCONFIG_PATH_INFO* paths,
                                 UINT32 mode_count, DISPLAYCONFIG_MODE_INFO* modes, UINT32 flags) {
  Call call("SetDisplayConfig");
  const SuppliedConfig supplied{paths, path_count, modes, mode_count};
  const LONG result = call.Fails() ? static_cast<LONG>(FaultOr(call, ERROR_GEN_FAILURE))
                                   : SetConfig(CurrentModel(), supplied, flags);
  LeaveDirtyLastError();
  return static_cast<LONG>(call.Changed(result, "paths=%u flags=0x%x", path_count, flags));
}

// --- DisplayConfigGetDeviceInfo, one function per kind of record. A wrong size, adapter or id is a
// general failure, an unknown kind an invalid parameter, as Windows has it and not as its
// documentation suggests.

LONG GiveSourceName(const Model& model, DISPLAYCONFIG_SOURCE_DEVICE_NAME* record) {
  const auto source = SourceById(model, record->header.adapterId, record->header.id);
  if (!source) return ERROR_GEN_FAILURE;
  CopyText(record->viewGdiDeviceName, CCHDEVICENAME, Widen(model.sources[*source].device_name));
  return ERROR_SUCCESS;
}

LONG GiveTargetName(const Model& model, DISPLAYCONFIG_TARGET_DEVICE_NAME* record) {
  const auto index = ConnectorById(model, record->header.adapterId, record->header.id);
  if (!index) return ERROR_GEN_FAILURE;
  const Connector& connector = model.connectors[*index];
  record->flags.value = 0;
  record->outputTechnology =
      static_cast<DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY>(connector.technology);
  record->edidManufactureId = 0;
  record->edidProductCodeId = 0;
  record->connectorInstance = 0;
  CopyText(record->monitorFriendlyDeviceName, 64, std::wstring());
  CopyText(record->monitorDevicePath, 128, std::wstring());
  if (!connector.monitor) return ERROR_SUCCESS;
  const Monitor& monitor = *connector.monitor;
  if (monitor.edid.size() >= 128) {
    record->flags.friendlyNameFromEdid = 1;
    record->flags.edidIdsValid = 1;
    record->edidManufactureId = static_cast<UINT16>(monitor.edid[8] | monitor.edid[9] << 8);
    record->edidProductCodeId = static_cast<UINT16>(monitor.edid[10] | monitor.edid[11] << 8);
    CopyText(record->monitorFriendlyDeviceName, 64, Widen(monitor.name));
  }
  const std::wstring path =
      L"\\\\?\\DISPLAY#OST0101#" + Widen(connector.id) + L"#{e6f07b5f-ee97-4a90-b076-33f57bf4eaa7}";
  CopyText(record->monitorDevicePath, 128, path);
  return ERROR_SUCCESS;
}

LONG GivePreferredMode(const Model& model, DISPLAYCONFIG_TARGET_PREFERRED_MODE* record) {
  const auto index = ConnectorById(model, record->header.adapterId, record->header.id);
  if (!index) return ERROR_GEN_FAILURE;
  if (!IsConnected(model, *index)) return ERROR_GEN_FAILURE;
  const DisplayMode& mode = model.connectors[*index].monitor->preferred;
  record->width = mode.width;
  record->height = mode.height;
  record->targetMode.targetVideoSignalInfo = DescribeSignal(mode);
  return ERROR_SUCCESS;
}

LONG GiveAdapterName(const Model& model, DISPLAYCONFIG_ADAPTER_NAME* record) {
  for (const Adapter& adapter : model.adapters) {
    const LUID luid = LuidOf(adapter);
    if (luid.LowPart != record->header.adapterId.LowPart ||
        luid.HighPart != record->header.adapterId.HighPart) {
      continue;
    }
    std::string id = adapter.hardware_id;
    std::replace(id.begin(), id.end(), '\\', '#');
    const std::string path =
        "\\\\?\\" + id + "#3&11583659&0&10#{5b45201d-f2f2-4f3b-85bb-30ff1f953599}";
    CopyText(record->adapterDevicePath, 128, Widen(path));
    return ERROR_SUCCESS;
  }
  return ERROR_GEN_FAILURE;
}

LONG GiveBaseType(const Model& model, DISPLAYCONFIG_TARGET_BASE_TYPE* record) {
  const auto index = ConnectorById(model, record->header.adapterId, record->header.id);
  if (!index) return ERROR_GEN_FAILURE;
  record->baseOutputTechnology =
      static_cast<DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY>(model.connectors[*index].technology);
  return ERROR_SUCCESS;
}

// Asks `give` when the caller's record has the size that the kind of record has.
template <typename Record>
LONG Give(LONG (*give)(const Model&, Record*), DISPLAYCONFIG_DEVICE_INFO_HEADER* header) {
  if (header->size != sizeof(Record)) return ERROR_GEN_FAILURE;
  return give(CurrentModel(), reinterpret_cast<Record*>(header));
}

LONG GiveDeviceInfo(DISPLAYCONFIG_DEVICE_INFO_HEADER* header) {
  switch (static_cast<int>(header->type)) {
    case DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME:
      return Give(GiveSourceName, header);
    case DISPLAYCONFIG_DEVICE_INFO_GET_TARGET_NAME:
      return Give(GiveTargetName, header);
    case DISPLAYCONFIG_DEVICE_INFO_GET_TARGET_PREFERRED_MODE:
      return Give(GivePreferredMode, header);
    case DISPLAYCONFIG_DEVICE_INFO_GET_ADAPTER_NAME:
      return Give(GiveAdapterName, header);
    case DISPLAYCONFIG_DEVICE_INFO_GET_TARGET_BASE_TYPE:
      return Give(GiveBaseType, header);
    default:
      return ERROR_INVALID_PARAMETER;
  }
}

LONG WINAPI FakeDisplayConfigGetDeviceInfo(DISPLAYCONFIG_DEVICE_INFO_HEADER* header) {
  Call call("DisplayConfigGetDeviceInfo");
  LeaveDirtyLastError();
  if (header == nullptr) return static_cast<LONG>(call.Read(ERROR_GEN_FAILURE, "null"));
  const LONG result =
      call.Fails() ? static_cast<LONG>(FaultOr(call, ERROR_GEN_FAILURE)) : GiveDeviceInfo(header);
  return static_cast<LONG>(
      call.Read(result, "type=%d id=0x%x", static_cast<int>(header->type), header->id));
}

LONG SetPersistence(Model& model, const DISPLAYCONFIG_SET_TARGET_PERSISTENCE& record) {
  if (record.header.size != sizeof record) return ERROR_INVALID_PARAMETER;
  const auto index = ConnectorById(model, record.header.adapterId, record.header.id);
  if (!index) return ERROR_INVALID_PARAMETER;
  model.connectors[*index].boot_persistent = record.bootPersistenceOn != 0;
  return ERROR_SUCCESS;
}

LONG WINAPI FakeDisplayConfigSetDeviceInfo(DISPLAYCONFIG_DEVICE_INFO_HEADER* header) {
  Call call("DisplayConfigSetDeviceInfo");
  LeaveDirtyLastError();
  if (header == nullptr) return static_cast<LONG>(call.Changed(ERROR_INVALID_PARAMETER, "null"));
  LONG result = ERROR_INVALID_PARAMETER;
  if (call.Fails()) {
    result = static_cast<LONG>(FaultOr(call, ERROR_GEN_FAILURE));
  } else if (header->type == DISPLAYCONFIG_DEVICE_INFO_SET_TARGET_PERSISTENCE) {
    result = SetPersistence(CurrentModel(),
                            *reinterpret_cast<const DISPLAYCONFIG_SET_TARGET_PERSISTENCE*>(header));
  }
  return static_cast<LONG>(
      call.Changed(result, "type=%d id=0x%x", static_cast<int>(header->type), header->id));
}

bool HasDisplayConfig(const Model& model) { return model.windows.HasDisplayConfig(); }

}  // namespace

const std::vector<Entry>& DisplayConfigFace() {
  static const std::vector<Entry> kEntries = {
      {"user32.dll", "GetDisplayConfigBufferSizes", Guard<FakeGetDisplayConfigBufferSizes>(),
       HasDisplayConfig},
      {"user32.dll", "QueryDisplayConfig", Guard<FakeQueryDisplayConfig>(), HasDisplayConfig},
      {"user32.dll", "DisplayConfigGetDeviceInfo", Guard<FakeDisplayConfigGetDeviceInfo>(),
       HasDisplayConfig},
      {"user32.dll", "DisplayConfigSetDeviceInfo", Guard<FakeDisplayConfigSetDeviceInfo>(),
       HasDisplayConfig},
      {"user32.dll", "SetDisplayConfig", Guard<FakeSetDisplayConfig>(), HasDisplayConfig},
  };
  return kEntries;
}

}  // namespace sim
