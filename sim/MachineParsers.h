// The two written forms of a machine.
#pragma once

#include <string>

#include "sim/Model.h"

namespace sim {

/// The one-line form of Machine's constructor. Throws MachineFileError with the word that is wrong.
Model ParseShortForm(const std::string& text);

/// A machines/*.toml. Throws MachineFileError with file, line and field.
Model LoadMachineFile(const std::string& path);

}  // namespace sim
