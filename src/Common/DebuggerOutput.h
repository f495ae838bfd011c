// A line for whoever has a debugger attached. The only way to it that code without Windows has.
#pragma once

/// @param text  with its line feed; never null
void WriteToDebugger(const char* text);
