#include "Common/MultiMonitor/Nvidia/NVApiWrapper.h"

#include "Common/Logging.h"

NVApiWrapper::NVApiWrapper() { NvApi::Get().AddUser(); }

NVApiWrapper::~NVApiWrapper() { NvApi::Get().RemoveUser(); }

bool NVApiWrapper::Initialize() {
  NvApi& api = NvApi::Get();
  api.EnsureBound();  // without the library both functions below answer as absent ones
  const NvAPI_Status status = api.Initialize();
  NvAPI_ShortString version = {};
  api.GetInterfaceVersionString(version);
  LOG(INFO) << "NVAPI interface version: " << version;
  return status == NVAPI_OK;
}

bool NVApiWrapper::GetDisplayTopology(NvTopology* topology) {
  DCHECK(topology != NULL);
  return NvApi::Get().GetTopology(topology) == NVAPI_OK;
}

bool NVApiWrapper::SetDisplayTopology(NvTopology* topology) {
  DCHECK(topology != NULL);
  return NvApi::Get().SetTopology(topology) == NVAPI_OK;
}

bool NVApiWrapper::GetDisplayIdFromGpuAndOutputId(NvPhysicalGpuHandle gpu, uint32_t output_id,
                                                  uint32_t* display_id) {
  DCHECK(gpu != NULL);
  DCHECK(output_id != 0);
  DCHECK(display_id != NULL);
  uint32_t found = 0;
  if (NvApi::Get().SYS_GetDisplayIdFromGpuAndOutputId(gpu, output_id, &found) != NVAPI_OK) {
    return false;
  }
  if (display_id == nullptr) return false;
  *display_id = found;
  return true;
}

bool NVApiWrapper::GetGpuAndOutputIdFromDisplayId(uint32_t display_id, NvPhysicalGpuHandle* gpu,
                                                  uint32_t* output_id) {
  DCHECK(display_id != 0);
  DCHECK(gpu != NULL);
  DCHECK(output_id != NULL);
  return NvApi::Get().SYS_GetGpuAndOutputIdFromDisplayId(display_id, gpu, output_id) == NVAPI_OK;
}

bool NVApiWrapper::SetDisplayConfig(uint32_t path_count, NV_DISPLAYCONFIG_PATH_INFO* path,
                                    uint32_t flags) {
  DCHECK(path != NULL);
  return NvApi::Get().DISP_SetDisplayConfig(path_count, path, flags) == NVAPI_OK;
}
