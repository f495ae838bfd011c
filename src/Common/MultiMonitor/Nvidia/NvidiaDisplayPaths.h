// What Windows' display paths tell about a display: whose it is, and by which numbers another
// driver can name it.
#pragma once

#include "Common/MultiMonitor/Win7CCDApi.h"
#include "Common/Win.h"

#include <cstdint>

/// Each asks Windows for all paths, active or not, and is answered with nothing found when Windows
/// refuses. `imm_display` is exactly one MD_* bit; a display is known by its output technology.

/// Whether the display hangs on an NVIDIA adapter, plugged in or not.
bool IsDisplayOnNvidia(Win7CCDApi* ccd, uint32_t imm_display);

/// @return Windows' target id of the display; 0 when none is plugged in
uint32_t GetDisplayTargetId(Win7CCDApi* ccd, uint32_t imm_display);

/// @param imm_display  MD_NB; any other is refused
/// @param adapter_id   out; unchanged when the result is false
bool GetNotebookAdapterId(Win7CCDApi* ccd, uint32_t imm_display, LUID* adapter_id);
