// Where finished log records go, and the lock around it. Used by Logging and LogSetup only.
#pragma once

#include <cstdint>
#include <string>

enum LogDestination : uint32_t {
  kLogToNowhere = 0,
  kLogToFile = 1,
  kLogToDebugOutput = 2,
  kLogToFileAndDebugOutput = 3,
};

/// Points the log at `path`, under the in-process lock unless a record has already chosen the
/// mutex, and opens it.
/// @param delete_old  delete the file first
/// @return false when neither the file nor its stand-in in the current folder could be opened
bool InitLogFile(const std::wstring& path, LogDestination destination, bool delete_old);

/// Hands out a complete record. Before InitLogFile it goes to debug.log beside the host's
/// executable.
void WriteLogText(const std::string& text, int32_t severity);

/// Closes the file, then destroys the lock. What is written behind that reaches standard error at
/// most.
void CloseLogFile();
