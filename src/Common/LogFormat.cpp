#include "Common/LogFormat.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace {

// The index is the severity.
constexpr const char* kSeverityNames[] = {"INFO", "WARNING", "ERROR", "ERROR_REPORT", "FATAL"};

const char* SeverityName(int32_t severity) {
  const auto index = static_cast<size_t>(severity);
  return severity >= 0 && index < std::size(kSeverityNames) ? kSeverityNames[index] : "UNKNOWN";
}

std::string TwoDigits(uint32_t number) {
  const std::string digits = std::to_string(number);
  return digits.size() < 2 ? "0" + digits : digits;
}

}  // namespace

const char* LogFileBaseName(const char* file) {
  const char* last_backslash = std::strrchr(file, '\\');
  return last_backslash != nullptr ? last_backslash + 1 : file;
}

std::string FormatLogPrefix(const LogItems& items, const LogStamp& stamp, int32_t severity,
                            const char* file, int line) {
  std::string prefix = "[";
  if (items.process_id) prefix += std::to_string(stamp.process_id) + ":";
  if (items.thread_id) prefix += std::to_string(stamp.thread_id) + ":";
  if (items.time_stamp) {
    prefix += TwoDigits(stamp.month) + TwoDigits(stamp.day) + "/" + TwoDigits(stamp.hour) +
              TwoDigits(stamp.minute) + TwoDigits(stamp.second) + ":";
  }
  if (items.tick_count) prefix += std::to_string(stamp.tick_count) + ":";
  prefix += SeverityName(severity);
  prefix += ":";
  prefix += LogFileBaseName(file);
  prefix += "(" + std::to_string(line) + ")] ";
  return prefix;
}

std::wstring MakeBackupPath(const std::wstring& path, uint32_t year, uint32_t month, uint32_t day) {
  const size_t name_start = path.find_last_of(L"\\/") + 1;  // 0 when there is no separator
  size_t extension = path.rfind(L'.');
  if (extension == std::wstring::npos || extension < name_start) extension = path.size();
  wchar_t date[40];
  std::swprintf(date, std::size(date), L".%4d-%02d-%02d", static_cast<int>(year),
                static_cast<int>(month), static_cast<int>(day));
  return path.substr(0, extension) + date + path.substr(extension);
}

std::wstring MakeLogMutexName(const std::wstring& path) {
  std::wstring name = path;
  std::replace(name.begin(), name.end(), L'\\', L'/');
  return L"Global\\" + name;
}
