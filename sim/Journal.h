// The text journal: one line for each call that changes or validates the machine. Tests compare it
// whole.
#pragma once

#include <string>

#include "sim/Lock.h"

namespace sim {

class Journal {
 public:
  void Write(const std::string& line);  // without line feed
  std::string Take();                   // the lines so far, and empties
  const std::string& text() const { return text_; }
  /// Everything ever written, taken or not: what a failing test prints.
  const std::string& history() const { return history_; }
  void set_reads(bool on) { reads_ = on; }
  bool reads() const { return reads_; }

 private:
  Mutex mutex_;
  std::string text_;
  std::string history_;
  bool reads_ = false;
};

}  // namespace sim
