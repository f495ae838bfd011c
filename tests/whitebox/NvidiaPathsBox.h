// NVIDIA over display paths from inside. Objects end by delete through IMMonitor; their virtual
// operations can be called straight away, the others stand here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV3CrossAdapter.h"

/// In a file name's place: an API that is loaded and knows no path.
constexpr char kApiWithoutPaths[] = "no paths";

struct NvidiaPathsBox {
  // --- Makers; none is initialised.
  NvidiaMMImplV3* (*NewV3)();
  NvidiaMMImplV3* (*NewV3WithoutApi)();
  NvidiaMMImplV3CrossAdapter* (*NewCrossAdapter)();
  /// A derived one that says that it is none.
  NvidiaMMImplV3CrossAdapter* (*NewIncapableCrossAdapter)();
  /// A derived one that writes down what its EnableExtendMode is asked.
  NvidiaMMImplV3CrossAdapter* (*NewTellingCrossAdapter)(std::vector<BOOL>* enables);

  // --- What display paths tell, by an API that is loaded from `file_name` for the call; with ""
  // not loaded; with null there is none.
  bool (*IsDisplayOnNvidia)(const char* file_name, uint32_t imm_display);
  uint32_t (*GetDisplayTargetId)(const char* file_name, uint32_t imm_display);
  bool (*GetNotebookAdapterId)(const char* file_name, uint32_t imm_display, LUID* adapter_id);

  uint32_t (*ColorFormat)(uint32_t depth);
  uint32_t (*DisplayIdOfDisplay)(const NvidiaMMImplV3* nv, uint32_t imm_display);
  void (*FreeAdapterId)(NV_DISPLAYCONFIG_PATH_INFO* path);
  bool (*NativeSizeAcrossAdapters)(NvidiaMMImplV3CrossAdapter* nv, uint32_t imm_display,
                                   uint32_t* width, uint32_t* height);

  // --- What may throw: the result, or the text of what it threw.
  std::string (*MakeAndEnd)(bool cross_adapter);  // as the library makes them; "1"
  std::string (*ApplyCrossAdapterClone)(NvidiaMMImplV3CrossAdapter* nv, uint32_t displays);
  std::string (*GetCurrentDisplayMode)(NvidiaMMImplV3* nv, uint32_t* imm_mode,
                                       uint32_t* imm_displays);
  std::string (*ApplyExtendModeOnDisplay)(NvidiaMMImplV3* nv, uint32_t external_display);

  /// A ruder driver's topology read than the simulated one's, until the library is given back.
  void (*ReplaceGetTopology)(NvAPI_Status (*function)(NvTopology* topology));

  bool (*RefuseMemory)(uint32_t nth);
  int64_t (*PiecesOut)();
};

const NvidiaPathsBox* GetNvidiaPathsBox();
