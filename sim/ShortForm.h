// Machines in one line, for tests: the text of Machine's constructor.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "sim/Model.h"

namespace sim {

/// "<windows> <adapter>[, <adapter>...]: [clone] <connector> [<W>x<H>] [active] [, ...]", as
/// sim/Machine.h tells. A connector without a size has nothing plugged in. "*n" behind an adapter:
/// it has n sources and drives n displays at a time (2 by default). Several active connectors
/// without "clone" are extended, from left to right as they stand, and the first active one is the
/// primary display.
/// @throws MachineFileError naming the word that cannot be used
Model ParseShortForm(const std::string& text);

// --- The words of the short form, which machine files use too.

std::optional<WindowsVersion> WindowsByWord(const std::string& word);
std::optional<Adapter> AdapterByWord(const std::string& word);
/// The output technology of a connector by its id: "crt" and "crt2" are 0, ...
std::optional<uint32_t> TechnologyByWord(const std::string& id);

/// A monitor with this native size, an EDID, and the usual sizes up to it at 16 and 32 bits and 60
/// Hz.
Monitor MakeMonitor(const std::string& name, uint32_t width, uint32_t height);
/// The registry values and processes that every notebook has.
void AddCommonFurniture(Model& model);
/// Makes the connectors show one desktop together (`clone`) or one each from left to right, in
/// their best modes, and remembers that in the database. The hardware gets the sources and heads
/// that it takes.
/// @return false when that cannot be: clone over two adapters or without a common mode, nothing
/// plugged in
bool StartWith(Model& model, const std::vector<size_t>& connectors, bool clone);

}  // namespace sim
