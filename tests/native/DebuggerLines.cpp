#include "tests/native/DebuggerLines.h"

#include <utility>

#include "Common/DebuggerOutput.h"

namespace {

std::string& Lines() {
  static std::string lines;
  return lines;
}

}  // namespace

void WriteToDebugger(const char* text) { Lines() += text; }

std::string TakeDebuggerLines() { return std::exchange(Lines(), std::string()); }
