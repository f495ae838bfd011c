// What the walk over a display's modes costs.
#pragma once

/// Times the walk over 10,000 and over 100,000 modes and prints both.
/// @return false when ten times the modes cost more than twelve times as much
bool MeasureWalk();
