// The library's white-box build on a simulated notebook, for tests of the display-control core.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Common/MultiMonitor/Win7CCD.h"
#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/behaviour/LogText.h"

/// Gives a reference-counted object back where a test ends.
struct Releaser {
  void operator()(Win7CCD* ccd) const { ccd->Release(); }
};
using CcdPointer = std::unique_ptr<Win7CCD, Releaser>;

struct CoreHost {
  /// `switches` stand behind the host's program name: "--enable-dcheck --v=2".
  explicit CoreHost(const std::string& text, const std::wstring& switches = L"") : machine(text) {
    machine.SetCommandLine(L"host.exe " + switches);
  }

  /// Loads the library on the first call: what is read at load can be prepared before.
  sim::Library& ostrel() {
    if (library_ == nullptr) {
      library_ = std::make_unique<sim::Library>(machine, sim::Library::Build::kWhiteBox);
    }
    return *library_;
  }
  const CoreBox& core() { return *ostrel().white_box().core; }

  /// A Win7CCD with the test's reference on it, initialised.
  CcdPointer NewCcd() {
    CcdPointer ccd = NewBareCcd();
    EXPECT_EQ(core().InitialOf(ccd.get()), "1");
    return ccd;
  }
  CcdPointer NewBareCcd() {
    Win7CCD* const ccd = core().NewWin7CCD();
    ccd->AddRef();
    return CcdPointer(ccd);
  }

  /// The log's messages from now on.
  std::string TakeLog() { return Messages(TakeRecords()); }
  /// As TakeLog, with the severity in front of each: "ERROR text".
  std::string TakeLogWithSeverity() { return MessagesWithSeverity(TakeRecords()); }
  /// How many libraries the DLL holds.
  size_t Modules() const { return CountOf(machine.Outstanding(), "module "); }

  /// Leaves the messages so far out of the next TakeLog.
  void ForgetLog() { TakeLog(); }

  sim::Machine machine;

 private:
  std::string TakeRecords() {
    const std::string all = machine.Log();
    const size_t from = log_taken_;
    log_taken_ = all.size();
    return all.substr(from);
  }

  std::unique_ptr<sim::Library> library_;
  size_t log_taken_ = 0;
};
