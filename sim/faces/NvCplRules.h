// What the simulated control-panel library knows and does, apart from its calling conventions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/MachineState.h"
#include "sim/Model.h"
#include "sim/faces/NvidiaDriverRules.h"

namespace sim {

/// What NvGetWindowsDisplayState answers.
enum NvCplState : int32_t {
  kNvCplStateFailed = 0,
  kNvCplStateNotFound = 1,
  kNvCplStateUnattached = 2,
  kNvCplStateNotNvidia = 3,
  kNvCplStateSingle = 4,
  kNvCplStateDualView = 5,
  kNvCplStateClone = 6,
  kNvCplStateHorizontalSpan = 7,
  kNvCplStateVerticalSpan = 8,
};

/// The state of a Windows monitor number, 1 for \\.\DISPLAY1, which is that of its adapter; 0
/// stands for the whole desktop. One desktop on several displays is a span where it is wider or
/// higher than any of them takes.
NvCplState NvCplStateOf(const Model& model, uint32_t monitor);

/// The control panel's name of a display: "#", its kind (A analog, D digital, T television) and its
/// place among those of its kind, both as letters. Connector::nvidia_moniker takes its place.
std::string NvCplMoniker(const Model& model, size_t connector);

/// 0x1000 CRT, 0x2000 digital, 0x2001 panel, 0x2002 HDMI, 0x3000 television, 0x3001 component.
/// Connector::nvidia_display_type takes its place.
uint32_t NvCplDisplayType(const Connector& connector);

/// The monikers of the NVIDIA displays in model order, commas between them. What is connected is
/// what the last detection found; before the first one, what is connected now.
std::string NvCplConnectedText(const Machine& machine, bool only_active);
void DetectNvCplDisplays(Machine& machine);

/// Fills what the record asks for. @return false for a record of another size, and for a moniker
/// without a connected display
bool GetNvCplDisplayInfo(const Model& model, const std::string& moniker, NvRecord record);

/// "setview 0 clone DA AA": a GPU or display number, the view, and its displays by their monikers
/// without "#". @return false, and nothing changes, for what cannot be
bool RunNvCplCommand(Machine& machine, const std::string& command);

}  // namespace sim
