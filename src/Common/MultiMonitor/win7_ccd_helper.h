// Display configuration for callers outside Win7CCD.
#pragma once

#include "Common/MultiMonitor/Win7CCDApi.h"
#include "Common/Win.h"

#include <cstdint>
#include <memory>

/// @param imm_display  exactly one MD_* bit
/// @return its DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY as an unsigned number; 0xFFFFFFFF, "other",
/// for anything else
uint32_t OutputTechnologyFromDisplay(uint32_t imm_display);

/// Reads the paths and modes that `flags` (QDC_*) names.
/// @return false when they cannot be read; the outputs are then unchanged
bool GetDisplayConfigBuffers(Win7CCDApi* ccd, UINT32 flags, UINT32* path_count,
                             std::unique_ptr<DISPLAYCONFIG_PATH_INFO[]>* paths, UINT32* mode_count,
                             std::unique_ptr<DISPLAYCONFIG_MODE_INFO[]>* modes);

/// Reads the name (\\.\DISPLAYn) of the source `source_id` of an adapter.
/// @param source_name  out; unspecified on failure
bool GetSourceDeviceName(Win7CCDApi* ccd, LUID adapter_id, UINT32 source_id,
                         DISPLAYCONFIG_SOURCE_DEVICE_NAME* source_name);
