// The binding of the AMD Display Library, atiadlxx.dll.
#pragma once

#include "Common/LoadDLL.h"
#include "Common/MultiMonitor/Amd/AdlRecords.h"

using ADL_MAIN_MALLOC_CALLBACK = void*(WINAPI*)(int size);

/// All entries are required. Those that exist are bound all the same when one is missing: call them
/// by way of Call.
class VADLLib : public LoadDLL {
 public:
  BOOL Load(const char* file_name) override;

  /// The entry's own result. An entry that is not bound refuses as a library that nobody has
  /// started.
  template <typename... Parameters, typename... Arguments>
  static int Call(int (*entry)(Parameters...), Arguments... arguments) {
    return entry != nullptr ? entry(arguments...) : ADL_ERR_NOT_INIT;
  }

  // Arrays that come back through a pointer to a pointer are the caller's (AdlArray).
  int (*ADL_Main_Control_Create)(ADL_MAIN_MALLOC_CALLBACK callback,
                                 int iEnumConnectedAdapters) = nullptr;
  int (*ADL_Main_Control_Destroy)() = nullptr;
  int (*ADL_Main_Control_Refresh)() = nullptr;
  int (*ADL_Adapter_NumberOfAdapters_Get)(int* count) = nullptr;
  int (*ADL_Adapter_AdapterInfo_Get)(ADLAdapterInfo* infos, int size) = nullptr;
  int (*ADL_Adapter_Active_Get)(int adapter, int* status) = nullptr;
  int (*ADL_Display_DisplayInfo_Get)(int adapter, int* count, ADLDisplayInfo** infos,
                                     int force_detect) = nullptr;
  int (*ADL_Display_NumberOfDisplays_Get)(int adapter, int* count) = nullptr;
  int (*ADL_Display_SwitchingCapability_Get)(int adapter, int* result) = nullptr;
  int (*ADL_Display_DisplayMapConfig_Get)(int adapter, int* map_count, ADLDisplayMap** maps,
                                          int* target_count, ADLDisplayTarget** targets,
                                          int options) = nullptr;
  int (*ADL_Display_DisplayMapConfig_Set)(int adapter, int map_count, ADLDisplayMap* maps,
                                          int target_count, ADLDisplayTarget* targets) = nullptr;
  int (*ADL_Display_EdidData_Get)(int adapter, int display, ADLDisplayEDIDData* data) = nullptr;
  int (*ADL_Display_PowerXpressVersion_Get)(int adapter, int* version) = nullptr;
  int (*ADL_Display_PowerXpressActiveGPU_Get)(int adapter, int* gpu) = nullptr;
  int (*ADL_Display_Capabilities_Get)(int adapter, int* controllers, int* displays) = nullptr;
  int (*ADL_Display_SLSMapIndex_Get)(int adapter, int target_count, ADLDisplayTarget* targets,
                                     int* map_index) = nullptr;
  int (*ADL_Display_SLSMapConfig_Get)(int adapter, int map_index, ADLSLSMap* map, int* target_count,
                                      ADLSLSTarget** targets, int* native_count,
                                      ADLSLSMode** native, int* bezel_count,
                                      ADLBezelTransientMode** bezel, int* transient_count,
                                      ADLBezelTransientMode** transient, int* offset_count,
                                      ADLSLSOffset** offsets, int option) = nullptr;
  int (*ADL_Display_SLSGrid_Caps)(int adapter, int* count, ADLSLSGrid** grids,
                                  int option) = nullptr;
  int (*ADL_Display_Modes_Get)(int adapter, int display, int* count, ADLMode** modes) = nullptr;
};
