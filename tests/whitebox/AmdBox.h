// The AMD back-ends from inside. Objects end by delete through IMMonitor.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/Amd/AdlRecords.h"
#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/Win.h"

struct AmdBox {
  // --- The display library.
  IMMonitor* (*NewADLImpl)();  // not initialised
  IDisplayExtensionAMD* (*ExtensionOf)(IMMonitor* adl);
  bool (*GetDisplayMap)(IMMonitor* adl, ADLDisplayMap** ppmaps, int* pnum_map,
                        ADLDisplayTarget** pptargets, int* pnum_target);
  int32_t (*DisplayIndexFromConnector)(const ADLDisplayInfo* all_display_infos, int num_display,
                                       int32_t connector);
  void (*FreeAdlBuffer)(void** buffer);
  bool (*AdlLibraryQualifies)();
  IMMonitor* (*CreateAMDObject)();
  /// Loads the binding and lets go of it. @return what the load gave
  BOOL (*LoadVADLLib)(const char* file_name);
};

const AmdBox* GetAmdBox();
