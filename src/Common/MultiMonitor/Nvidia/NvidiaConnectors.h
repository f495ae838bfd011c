// NVIDIA's outputs and connector types, and the display flags they stand for.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/DisplayNumbers.h"

/// A GPU's output masks in the one order in which they are walked everywhere.
constexpr uint32_t kNvidiaOutputs[] = {0x1,   0x2,   0x4,     0x8,     0x100,   0x200,
                                       0x400, 0x800, 0x10000, 0x20000, 0x40000, 0x80000};

constexpr uint32_t kUnknownConnector = 0xFFFFFFFF;

/// The display flag of a connector type; 0 for a type without one.
uint32_t ConnectorToDisplay(uint32_t connector_type);

/// The connector type that a display is looked up by; kUnknownConnector for a display without one,
/// and for none or several.
/// @param embedded_display_port  the panel hangs on an internal DisplayPort
uint32_t ConnectorOfDisplay(uint32_t imm_display, bool embedded_display_port);
