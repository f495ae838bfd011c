// Stands in for the debugger where there is no Windows.
#pragma once

#include <string>

/// What was written to it since the last call.
std::string TakeDebuggerLines();
