// Machines as files: machines/*.toml.
#pragma once

#include <string>

#include "sim/Model.h"

namespace sim {

/// Reads a machine file. Its fields, with defaults, stand in docs/simulator.md; one that is not
/// listed there is an error, as is a missing one without a default.
/// @param path  a TOML file, as the process sees it
/// @throws MachineFileError "<path>, line <n>, field \"<field>\": <what is wrong>"
Model LoadMachineFile(const std::string& path);
/// The same for text that is at hand; `path` is for the messages only.
Model ParseMachineText(const std::string& text, const std::string& path);

}  // namespace sim
