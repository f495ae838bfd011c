#include "Common/DebuggerOutput.h"

#include "Common/Win.h"

void WriteToDebugger(const char* text) { OutputDebugStringA(text); }
