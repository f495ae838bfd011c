// The display driver's mode pruning: whether it hides the modes that a monitor does not report.
#pragma once

#include "Common/Win.h"

/// Turns the mode pruning of the first video device off, for good.
/// @return 0 when it was off already, or the registry does not have it or does not let it be
///         changed
BOOL ClearPruningMode();
