// Setting up the log, once, while the library is being loaded.
#pragma once

/// Finds the log folder, rotates an oversized Ostrel.log, reads the host's switches and environment
/// and writes the start banner. Needs an AtExitManager; registers with it what closes the log
/// again. A second call does nothing.
/// @throws std::runtime_error when the application-data folder cannot be found; the library's entry
/// point catches it
/// @note under the loader lock: starts no thread and uses no COM
void SetUpLogging();
