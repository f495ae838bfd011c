// The imports that stay real because Wine is good at them: memory, locks, threads, files in the
// test's own folder, profile files, text and the C run-time. Everything that is neither here nor in
// a face is a trap.
#pragma once

#include <string>

namespace sim {

/// Whether `name` of `module` (lower case) is on the list.
bool IsRealImport(const std::string& module, const std::string& name);

/// A system library that a LoadLibrary or GetModuleHandle of the DLL may find for real.
bool IsSystemModule(const std::string& base_name);

}  // namespace sim
