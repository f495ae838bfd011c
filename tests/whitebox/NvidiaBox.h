// The NVIDIA back-ends from inside. Objects end by delete through IMMonitor; their virtual
// operations can be called straight away, the others stand here.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV2.h"
#include "tests/whitebox/NvidiaPathsBox.h"

/// How a derived object's own proxy operations answer, and what they were asked for.
struct NvProxyScript {
  bool create = true;
  uint32_t created = 0;
  uint32_t destroyed = 0;
};

struct NvidiaBox {
  NvidiaMMImplV2* (*NewV2)();                                   // not initialised
  NvidiaMMImplV2* (*NewV2WithOwnProxy)(NvProxyScript* script);  // `script` outlives it
  void (*GiveProxy)(NvidiaMMImplV2* nv);  // as one that an earlier attempt left
  bool (*HasProxy)(const NvidiaMMImplV2* nv);
  void (*RecognizeConnectors)(NvidiaMMImplV2* nv);
  bool (*RefreshGpus)(NvidiaMMImplV2* nv);
  bool (*CouldManageMultipleDisplay)(NvidiaMMImplV2* nv);
  bool (*LeadsByAdapterMode)(NvidiaMMImplV2* nv);  // of the two adapters that a notebook has
  uint32_t (*NvOutputOfDisplay)(const NvidiaMMImplV2* nv, uint32_t display);
  uint32_t (*DisplayToConnector)(const NvidiaMMImplV2* nv, uint32_t imm_display);
  void (*NvMaskToDisplays)(NvidiaMMImplV2* nv, uint32_t nv_mask, uint32_t* imm_displays,
                           uint32_t* display_count);
  NvPhysicalGpuHandle (*CurrentGpu)(const NvidiaMMImplV2* nv);
  bool (*FirstDisplayHandle)(NvDisplayHandle* pnvHandle);

  NVApiWrapper* (*NewWrapper)();  // ends by delete
  bool (*Initialize)(NVApiWrapper* wrapper);
  bool (*GetDisplayTopology)(NVApiWrapper* wrapper, NvTopology* topology);
  bool (*SetDisplayTopology)(NVApiWrapper* wrapper, NvTopology* topology);
  bool (*GetDisplayIdFromGpuAndOutputId)(NVApiWrapper* wrapper, NvPhysicalGpuHandle gpu,
                                         uint32_t output_id, uint32_t* display_id);
  bool (*GetGpuAndOutputIdFromDisplayId)(NVApiWrapper* wrapper, uint32_t display_id,
                                         NvPhysicalGpuHandle* gpu, uint32_t* output_id);
  bool (*SetDisplayConfig)(NVApiWrapper* wrapper, uint32_t path_count,
                           NV_DISPLAYCONFIG_PATH_INFO* path, uint32_t flags);
  bool (*IsNvApiLoaded)();
  bool (*LoadNvApi)(const char* file_name);

  // Functions of a ruder driver than the simulated one, until the library is given back.
  void (*ReplaceEnumPhysicalGPUs)(NvAPI_Status (*function)(NvPhysicalGpuHandle*, uint32_t*));
  void (*ReplaceGetPhysicalGPUsFromDisplay)(NvAPI_Status (*function)(NvDisplayHandle,
                                                                     NvPhysicalGpuHandle*,
                                                                     uint32_t*));
  void (*ReplaceGetDisplaySettings)(NvAPI_Status (*function)(NvDisplayHandle, NvDisplaySettings*,
                                                             uint32_t*));

  const NvidiaPathsBox* (*Paths)();  // NvidiaMMImplV3 and what derives from it
};

const NvidiaBox* GetNvidiaBox();
