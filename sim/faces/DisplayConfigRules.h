// What QueryDisplayConfig reports and SetDisplayConfig does: the rules of the functions, apart from
// their calling conventions.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Common/Win.h"
#include "sim/Model.h"

namespace sim {

/// One answer of QueryDisplayConfig.
struct DisplayConfig {
  std::vector<DISPLAYCONFIG_PATH_INFO> paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  uint32_t topology = 0;  // QDC_DATABASE_CURRENT only
};

/// What the caller supplied to SetDisplayConfig; both arrays empty when it gave none.
struct SuppliedConfig {
  const DISPLAYCONFIG_PATH_INFO* paths = nullptr;
  uint32_t path_count = 0;
  const DISPLAYCONFIG_MODE_INFO* modes = nullptr;
  uint32_t mode_count = 0;
};

LUID LuidOf(const Adapter& adapter);
std::optional<size_t> SourceById(const Model& model, LUID adapter, uint32_t id);
std::optional<size_t> ConnectorById(const Model& model, LUID adapter, uint32_t id);
/// The signal on the connector while its source stands in this mode: panels and digital displays
/// get their native size and scale, analog ones the mode itself.
DisplayMode SignalOn(const Connector& connector, const DisplayMode& mode);
DISPLAYCONFIG_VIDEO_SIGNAL_INFO DescribeSignal(const DisplayMode& mode);

/// Exactly one of the three QDC flags.
bool QueryFlagsAreValid(uint32_t flags);
DisplayConfig QueryConfig(const Model& model, uint32_t flags);

/// @return ERROR_SUCCESS, ERROR_INVALID_PARAMETER, ERROR_NOT_SUPPORTED, ERROR_GEN_FAILURE or
/// ERROR_BAD_CONFIGURATION
LONG SetConfig(Model& model, const SuppliedConfig& supplied, uint32_t flags);

}  // namespace sim
