#include "Common/LogFile.h"

#include <cstdio>

#include "Common/HostFolder.h"
#include "Common/LogFormat.h"
#include "Common/Logging.h"
#include "Common/Win.h"

namespace {

enum class LockKind { kNotChosen, kInProcess, kMutex };

struct LogFileState {
  uint32_t destination = kLogToFile;
  // Null until needed. A pointer, so that the state needs neither construction at load nor
  // destruction.
  std::wstring* path = nullptr;
  HANDLE file = nullptr;
  LockKind lock_kind = LockKind::kNotChosen;
  CRITICAL_SECTION section = {};
  HANDLE mutex = nullptr;
};
LogFileState g_log;

constexpr DWORD kSpinCount = 2000;

bool DestinationIncludes(LogDestination part) { return (g_log.destination & part) != 0; }

void StorePath(const std::wstring& path) {
  if (g_log.path == nullptr) g_log.path = new std::wstring();
  *g_log.path = path;
}

const std::wstring& PathOrDefault() {
  if (g_log.path == nullptr) {
    std::wstring folder;
    StorePath(GetHostFolder(&folder) ? folder + L"\\debug.log" : L"debug.log");
  }
  return *g_log.path;
}

// The kind is chosen once and never changes.
void ChooseInProcessLock() {
  if (g_log.lock_kind != LockKind::kNotChosen) return;
  InitializeCriticalSectionAndSpinCount(&g_log.section, kSpinCount);
  g_log.lock_kind = LockKind::kInProcess;
}

// Deliberate: a record that comes before set-up fixes the mutex for good. Without the mutex the
// choice stays open, and the next record tries again.
void ChooseMutex() {
  if (g_log.lock_kind != LockKind::kNotChosen) return;
  g_log.mutex = CreateMutexW(nullptr, FALSE, MakeLogMutexName(PathOrDefault()).c_str());
  if (g_log.mutex != nullptr) g_log.lock_kind = LockKind::kMutex;
}

class ScopedLogLock {
 public:
  ScopedLogLock() {
    if (kind_ == LockKind::kInProcess) EnterCriticalSection(&g_log.section);
    if (kind_ == LockKind::kMutex) WaitForSingleObject(g_log.mutex, INFINITE);
  }
  ~ScopedLogLock() {
    if (kind_ == LockKind::kInProcess) LeaveCriticalSection(&g_log.section);
    if (kind_ == LockKind::kMutex) ReleaseMutex(g_log.mutex);
  }
  ScopedLogLock(const ScopedLogLock&) = delete;
  ScopedLogLock& operator=(const ScopedLogLock&) = delete;

 private:
  const LockKind kind_ = g_log.lock_kind;
};

HANDLE OpenForAppending(const wchar_t* path) {
  const HANDLE file = CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  return file != INVALID_HANDLE_VALUE ? file : nullptr;
}

// Under the lock.
bool OpenFileIfNeeded() {
  if (g_log.file != nullptr || !DestinationIncludes(kLogToFile)) return true;
  g_log.file = OpenForAppending(PathOrDefault().c_str());
  if (g_log.file == nullptr) g_log.file = OpenForAppending(L".\\debug.log");
  if (g_log.file == nullptr) return false;
  SetFilePointer(g_log.file, 0, nullptr, FILE_END);
  return true;
}

// Under the lock.
void CloseFile() {
  if (g_log.file != nullptr) CloseHandle(g_log.file);
  g_log.file = nullptr;
}

void WriteToFile(const std::string& text) {
  const ScopedLogLock lock;
  OpenFileIfNeeded();
  if (g_log.file == nullptr) return;
  // Another process may have written since: each record goes to the end as it is now.
  SetFilePointer(g_log.file, 0, nullptr, FILE_END);
  DWORD written = 0;
  WriteFile(g_log.file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

}  // namespace

bool InitLogFile(const std::wstring& path, LogDestination destination, bool delete_old) {
  ChooseInProcessLock();
  const ScopedLogLock lock;
  CloseFile();
  g_log.destination = destination;
  StorePath(path);
  if (delete_old) DeleteFileW(path.c_str());
  return OpenFileIfNeeded();
}

void WriteLogText(const std::string& text, int32_t severity) {
  if (DestinationIncludes(kLogToDebugOutput)) OutputDebugStringA(text.c_str());
  if (DestinationIncludes(kLogToDebugOutput) || severity >= kLogSeverityERROR) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
  }
  ChooseMutex();
  if (DestinationIncludes(kLogToFile)) WriteToFile(text);
}

void CloseLogFile() {
  {
    const ScopedLogLock lock;
    CloseFile();
    g_log.destination = kLogToNowhere;
  }
  if (g_log.lock_kind == LockKind::kMutex) CloseHandle(g_log.mutex);
  if (g_log.lock_kind == LockKind::kInProcess) DeleteCriticalSection(&g_log.section);
  g_log.lock_kind = LockKind::kNotChosen;
  g_log.mutex = nullptr;
  delete g_log.path;
  g_log.path = nullptr;
}
