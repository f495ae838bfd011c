// How the simulator tells that the running test is wrong: an unlisted import was called, a handle
// was given back twice, something leaked. The test main turns it into a failed test; without one it
// goes to standard error.
#pragma once

#include <string>

namespace sim {

using FailureSink = void (*)(const std::string& text);

/// Takes over the reports; null brings standard error back. Returns the sink that was there.
FailureSink SetFailureSink(FailureSink sink);

/// Never throws and returns to its caller, so that a simulated function may use it below frames of
/// the DLL.
void ReportFailure(const std::string& text) noexcept;

}  // namespace sim
