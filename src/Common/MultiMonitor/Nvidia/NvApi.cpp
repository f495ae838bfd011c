#include "Common/MultiMonitor/Nvidia/NvApi.h"

#include <cstring>

namespace {

using QueryInterface = void*(__cdecl*)(uint32_t id);

QueryInterface FindQueryInterface(HMODULE module) {
  const FARPROC address = GetProcAddress(module, "nvapi_QueryInterface");
  QueryInterface query = nullptr;
  std::memcpy(&query, &address, sizeof(query));
  return query;
}

}  // namespace

NvApi& NvApi::Get() {
  static NvApi api;
  return api;
}

void NvApi::AddUser() { ++users_; }

void NvApi::RemoveUser() {
  if (--users_ == 0) Load(nullptr);
}

bool NvApi::EnsureBound() { return IsLoaded() || Load("nvapi64.dll") != FALSE; }

BOOL NvApi::Load(const char* file_name) {
  if (module_ != nullptr) FreeLibrary(module_);
  module_ = file_name != nullptr ? LoadLibraryA(file_name) : nullptr;
  const QueryInterface query = module_ != nullptr ? FindQueryInterface(module_) : nullptr;
  if (query == nullptr && module_ != nullptr) {
    FreeLibrary(module_);
    module_ = nullptr;
  }

  struct Row {
    uint32_t id;
    void* slot;
  };
  const Row rows[] = {
      {0x0150E828, Slot(Initialize.function_)},
      {0x01053FA5, Slot(GetInterfaceVersionString.function_)},
      {0xE5AC921F, Slot(EnumPhysicalGPUs.function_)},
      {0x9ABDD40D, Slot(EnumNvidiaDisplayHandle.function_)},
      {0x34EF9506, Slot(GetPhysicalGPUsFromDisplay.function_)},
      {0xD995937E, Slot(GetAssociatedDisplayOutputId.function_)},
      {0x7D554F8E, Slot(GPU_GetAllOutputs.function_)},
      {0x1730BFC9, Slot(GPU_GetConnectedOutputs.function_)},
      {0xE3E89B6F, Slot(GPU_GetActiveOutputs.function_)},
      {0x4ECA2C10, Slot(GPU_GetConnectorInfo.function_)},
      {0x37D32E69, Slot(GPU_GetEDID.function_)},
      {0x6AE16EC3, Slot(GetHDMISupportInfo.function_)},
      {0xDC27D5D4, Slot(GetDisplaySettings.function_)},
      {0x06B89E68, Slot(SetViewEx.function_)},
      {0x1EFC3957, Slot(GetCoprocStatus.function_)},
      {0x08F2BAB4, Slot(SYS_GetDisplayIdFromGpuAndOutputId.function_)},
      {0x112BA1A5, Slot(SYS_GetGpuAndOutputIdFromDisplayId.function_)},
      {0x5D8CF8DE, Slot(DISP_SetDisplayConfig.function_)},
      {0xE23B68C1, Slot(GetHybridMode.function_)},
      {0x47BAD137, Slot(GetTopology.function_)},
      {0x61041C24, Slot(SetTopology.function_)},
  };
  for (const Row& row : rows) {
    void* const address = query != nullptr ? query(row.id) : nullptr;
    std::memcpy(row.slot, &address, sizeof(address));
  }
  return query != nullptr ? TRUE : FALSE;
}
