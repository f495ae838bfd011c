// NVAPI, NVIDIA's programming interface: every function is asked for by a number, from the one
// export of nvapi64.dll.
#pragma once

#include <cstdint>

#include "Common/LoadDLL.h"
#include "Common/MultiMonitor/Nvidia/NvRecords.h"
#include "Common/Win.h"

/// A function of NVAPI. Called while it is not bound, or when this driver does not have it, it
/// answers NVAPI_NO_IMPLEMENTATION and writes nothing.
template <typename... Arguments>
class NvApiFunction {
 public:
  NvAPI_Status operator()(Arguments... arguments) const {
    return function_ != nullptr ? function_(arguments...) : NVAPI_NO_IMPLEMENTATION;
  }

 private:
  friend class NvApi;
  NvAPI_Status(__cdecl* function_)(Arguments...) = nullptr;
};

/// The functions that the library uses. One binding serves every object: NVApiWrapper counts its
/// users. Host thread only.
class NvApi : public LoadDLL {
 public:
  /// The binding; its functions answer as unbound ones until a wrapper has initialised NVAPI.
  static NvApi& Get();

  /// A user more; binds nothing yet.
  void AddUser();
  /// A user less. The last one gives the library back.
  void RemoveUser();

  /// Loads "nvapi64.dll" and asks it for every function, once for all users.
  /// @return false without the library or its export
  bool EnsureBound();

  BOOL Load(const char* file_name) override;

  NvApiFunction<> Initialize;
  NvApiFunction<char*> GetInterfaceVersionString;
  NvApiFunction<NvPhysicalGpuHandle*, uint32_t*> EnumPhysicalGPUs;
  NvApiFunction<uint32_t, NvDisplayHandle*> EnumNvidiaDisplayHandle;
  NvApiFunction<NvDisplayHandle, NvPhysicalGpuHandle*, uint32_t*> GetPhysicalGPUsFromDisplay;
  NvApiFunction<NvDisplayHandle, uint32_t*> GetAssociatedDisplayOutputId;
  NvApiFunction<NvPhysicalGpuHandle, uint32_t*> GPU_GetAllOutputs;
  NvApiFunction<NvPhysicalGpuHandle, uint32_t*> GPU_GetConnectedOutputs;
  NvApiFunction<NvPhysicalGpuHandle, uint32_t*> GPU_GetActiveOutputs;
  NvApiFunction<NvPhysicalGpuHandle, uint32_t, NvConnectorInfo*> GPU_GetConnectorInfo;
  NvApiFunction<NvPhysicalGpuHandle, uint32_t, NV_EDID*> GPU_GetEDID;
  NvApiFunction<NvDisplayHandle, uint32_t, NvHdmiSupport*> GetHDMISupportInfo;
  NvApiFunction<NvDisplayHandle, NvDisplaySettings*, uint32_t*> GetDisplaySettings;
  NvApiFunction<NvDisplayHandle, NV_DISPLAY_PATH_INFO*, uint32_t> SetViewEx;
  NvApiFunction<uint32_t*, uint32_t*> GetCoprocStatus;  // the discrete-only question
  NvApiFunction<NvPhysicalGpuHandle, uint32_t, uint32_t*> SYS_GetDisplayIdFromGpuAndOutputId;
  NvApiFunction<uint32_t, NvPhysicalGpuHandle*, uint32_t*> SYS_GetGpuAndOutputIdFromDisplayId;
  NvApiFunction<uint32_t, NV_DISPLAYCONFIG_PATH_INFO*, uint32_t> DISP_SetDisplayConfig;
  NvApiFunction<uint32_t*> GetHybridMode;  // which adapter is in charge
  NvApiFunction<NvTopology*> GetTopology;  // clone groups across adapters
  NvApiFunction<NvTopology*> SetTopology;

 private:
  NvApi() = default;
  uint32_t users_ = 0;
};
