// Reading what the library logged, and making the files that it finds.
#pragma once

#include <regex>
#include <string>

#include "Common/Win.h"
#include "sim/Machine.h"

/// The log with the source lines taken out: "[1234:0829/043626:INFO:Logging.cpp] text". Line
/// numbers are not a promise.
inline std::string WithoutSourceLines(const std::string& log) {
  return std::regex_replace(log, std::regex("\\.cpp\\([0-9]+\\)\\] "), ".cpp] ");
}

/// Only what stands behind the prefixes, one record a line.
inline std::string Messages(const std::string& log) {
  return std::regex_replace(log, std::regex("\\[[^\\]\n]*\\] "), "");
}

/// As Messages, with the severity in front: "ERROR text".
inline std::string MessagesWithSeverity(const std::string& log) {
  return std::regex_replace(log, std::regex("\\[[^\\]\n]*:([A-Z_0-9]+):[^\\]\n:]*\\] "), "$1 ");
}

/// What stands in the log whenever the factory, or somebody who wants a Win7CCD, looks for the
/// DisplayLink software on a machine without it.
constexpr char kNoDisplayLink[] =
    "Cannot open DislayLink service, name = DisplayLinkService, last error = 1060\n";

inline size_t CountOf(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

inline std::string ReadFileText(const std::wstring& path) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return "";
  std::string text;
  char buffer[4096];
  DWORD size = 0;
  while (ReadFile(file, buffer, sizeof(buffer), &size, nullptr) && size > 0)
    text.append(buffer, size);
  CloseHandle(file);
  return text;
}

/// Makes or replaces a file of `size` bytes that begins with `text`.
inline void WriteFileText(const std::wstring& path, const std::string& text, uint32_t size = 0) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  DWORD written = 0;
  WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  if (size > text.size()) {
    SetFilePointer(file, static_cast<LONG>(size), nullptr, FILE_BEGIN);
    SetEndOfFile(file);
  }
  CloseHandle(file);
}

/// The size of a file; -1 when there is none.
inline int64_t SizeOf(const std::wstring& path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return -1;
  return static_cast<int64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
}

inline std::wstring LogFolder(const sim::Machine& machine) {
  return machine.AppDataFolder() + L"\\hd";
}
inline std::wstring LogPath(const sim::Machine& machine) {
  return LogFolder(machine) + L"\\Ostrel.log";
}

/// 29 August 2012, 02:36:26 UTC, which is 04:36:26 on a notebook two hours ahead.
inline void SetAugustMorning(sim::Machine* machine) {
  SYSTEMTIME utc = {};
  utc.wYear = 2012;
  utc.wMonth = 8;
  utc.wDay = 29;
  utc.wHour = 2;
  utc.wMinute = 36;
  utc.wSecond = 26;
  machine->SetCalendar(utc, 120);
}
