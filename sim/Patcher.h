// Loads one DLL with its import table rewritten before its DllMain runs, and only its own table:
// the C run-time of the test, Wine's libraries and everything else in the process keep the real
// functions.
//
// How: a loader notification (LdrRegisterDllNotification) is sent when the module is mapped and its
// imports are bound, and before any of its code runs. For each import the resolver decides: another
// function, or the real one back.
#pragma once

#include <string>
#include <vector>

#include "Common/Win.h"

namespace sim {

struct Import {
  std::string module;  // lower case, "user32.dll"
  std::string name;    // "#12" for an import by ordinal
};

/// What an import is bound to; `real` is what Windows bound it to.
using ImportResolver = void* (*)(const Import& import, void* real);

/// Loads `path` patched. Throws std::runtime_error when the loader has no notifications, when the
/// file does not load or its DllMain refuses, and when it is in the process already (its
/// process-wide state would not be fresh). When `resolve` throws, the load fails with its text
/// before any code of the DLL ran.
HMODULE LoadPatched(const std::wstring& path, ImportResolver resolve);

/// The imports of a mapped module, in the order of its table.
std::vector<Import> ListImports(HMODULE module);

/// A function of any signature that reports "<what>" as a failure of the running test and answers
/// 0. Made at run time, one per text, and never freed.
void* MakeTrap(const std::string& what);

}  // namespace sim
