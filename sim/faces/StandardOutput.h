// What the DLL writes to the standard output of its process: kept here, and not shown.
#pragma once

#include <string>

#include "sim/Lock.h"

namespace sim {

class Machine;

/// Written on any thread of the DLL.
class StandardOutput {
 public:
  void Write(const char* text, size_t size);
  void Flush();
  std::string Take();
  std::string Unflushed() const;

 private:
  mutable Mutex mutex_;
  std::string text_;
  std::string unflushed_;
};

/// Everything that was written since the last call, as the DLL wrote it: a line feed is one byte.
std::string TakeStandardOutput(Machine& machine);
/// What of it has not been flushed yet, and so might never be seen.
std::string UnflushedStandardOutput(const Machine& machine);

}  // namespace sim
