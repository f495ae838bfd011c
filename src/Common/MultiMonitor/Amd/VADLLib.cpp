#include "Common/MultiMonitor/Amd/VADLLib.h"

BOOL VADLLib::Load(const char* file_name) {
  const Entry entries[] = {
      {"ADL_Main_Control_Create", Slot(ADL_Main_Control_Create)},
      {"ADL_Main_Control_Destroy", Slot(ADL_Main_Control_Destroy)},
      {"ADL_Main_Control_Refresh", Slot(ADL_Main_Control_Refresh)},
      {"ADL_Adapter_NumberOfAdapters_Get", Slot(ADL_Adapter_NumberOfAdapters_Get)},
      {"ADL_Adapter_AdapterInfo_Get", Slot(ADL_Adapter_AdapterInfo_Get)},
      {"ADL_Adapter_Active_Get", Slot(ADL_Adapter_Active_Get)},
      {"ADL_Display_DisplayInfo_Get", Slot(ADL_Display_DisplayInfo_Get)},
      {"ADL_Display_NumberOfDisplays_Get", Slot(ADL_Display_NumberOfDisplays_Get)},
      {"ADL_Display_SwitchingCapability_Get", Slot(ADL_Display_SwitchingCapability_Get)},
      {"ADL_Display_DisplayMapConfig_Get", Slot(ADL_Display_DisplayMapConfig_Get)},
      {"ADL_Display_DisplayMapConfig_Set", Slot(ADL_Display_DisplayMapConfig_Set)},
      {"ADL_Display_EdidData_Get", Slot(ADL_Display_EdidData_Get)},
      {"ADL_Display_PowerXpressVersion_Get", Slot(ADL_Display_PowerXpressVersion_Get)},
      {"ADL_Display_PowerXpressActiveGPU_Get", Slot(ADL_Display_PowerXpressActiveGPU_Get)},
      {"ADL_Display_Capabilities_Get", Slot(ADL_Display_Capabilities_Get)},
      {"ADL_Display_SLSMapIndex_Get", Slot(ADL_Display_SLSMapIndex_Get)},
      {"ADL_Display_SLSMapConfig_Get", Slot(ADL_Display_SLSMapConfig_Get)},
      {"ADL_Display_SLSGrid_Caps", Slot(ADL_Display_SLSGrid_Caps)},
      {"ADL_Display_Modes_Get", Slot(ADL_Display_Modes_Get)},
  };
  return Bind(file_name, entries);
}
