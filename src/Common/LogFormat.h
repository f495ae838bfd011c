// How one log record looks. Knows no Windows, so that it can be tested anywhere.
#pragma once

#include <cstdint>
#include <string>

/// What stands in front of the severity. The values are those before set-up.
struct LogItems {
  bool process_id = false;
  bool thread_id = false;
  bool time_stamp = true;
  bool tick_count = false;
};

/// Where and when a record was written; local time.
struct LogStamp {
  uint32_t process_id = 0;
  uint32_t thread_id = 0;
  uint32_t month = 0;
  uint32_t day = 0;
  uint32_t hour = 0;
  uint32_t minute = 0;
  uint32_t second = 0;
  uint32_t tick_count = 0;
};

/// Everything behind the last backslash of a compile-time path, or the whole of it.
const char* LogFileBaseName(const char* file);

/// "[1234:0829/043626:INFO:module.ext(120)] ", by the items that are on.
std::string FormatLogPrefix(const LogItems& items, const LogStamp& stamp, int32_t severity,
                            const char* file, int line);

/// The name of a dated copy: the path with ".2012-08-29" in front of its extension.
std::wstring MakeBackupPath(const std::wstring& path, uint32_t year, uint32_t month, uint32_t day);

/// The name of the mutex that several processes share for a log file.
std::wstring MakeLogMutexName(const std::wstring& path);
