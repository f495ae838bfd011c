// What ChangeDisplaySettingsEx does to the machine: the rules of the function, apart from its
// calling convention.
#pragma once

#include <cstdint>
#include <optional>

#include "Common/Win.h"
#include "sim/Model.h"

namespace sim {

/// The part of a DEVMODE that speaks of displays.
struct SettingsRequest {
  DWORD fields = 0;  // DM_*
  DisplayMode mode;
  int32_t x = 0;
  int32_t y = 0;
  uint32_t orientation = 0;
};

/// @param source   the display device, or nothing for the primary one
/// @param request  null: back to what the registry holds; with no source either, all devices: the
/// commit
/// @param flags    CDS_*
/// @return DISP_CHANGE_*
LONG ChangeSettings(Model& model, std::optional<size_t> source, const SettingsRequest* request,
                    DWORD flags);

}  // namespace sim
