#include "Common/LogSetup.h"

#include <stdexcept>
#include <string>
#include <vector>

#include "BuildStamps.h"
#include "Common/AtExitManager.h"
#include "Common/CommandLine.h"
#include "Common/LogFile.h"
#include "Common/LogFormat.h"
#include "Common/LogState.h"
#include "Common/Logging.h"
#include "Common/Owners.h"
#include "Common/ParseInt.h"
#include "Common/Verbosity.h"
#include "Common/Win.h"

#include <shlobj.h>
#include <shlwapi.h>

namespace {

bool g_setUpDone = false;

constexpr int64_t kLargestLogSize = 20971520;

// The application-data folder by its variable, for systems whose shell cannot tell it.
std::wstring ExpandAppDataVariable() {
  wchar_t folder[MAX_PATH] = {};
  if (ExpandEnvironmentStringsW(L"%APPDATA%", folder, MAX_PATH) == 0) {
    LOG_SYSTEM_ERROR(ERROR, GetLastError()) << "ExpandEnvironmentStringsW() failed";
    CloseLogFile();  // the load fails now, and nothing else would give the record's file and mutex
                     // back
    throw std::runtime_error("Calling ExpandEnvironmentStringsW() failed");
  }
  folder[MAX_PATH - 1] = L'\0';
  PathRemoveBackslashW(folder);
  return folder;
}

std::wstring FindLogFolder() {
  wchar_t shell_folder[MAX_PATH] = {};
  const HRESULT result =
      SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_DEFAULT, shell_folder);
  std::wstring folder = result == S_OK ? shell_folder : ExpandAppDataVariable();
  if (!folder.empty() && folder.back() != L'\\') folder += L'\\';
  return folder + L"hd";
}

// One level only.
void MakeFolder(const std::wstring& folder) {
  const DWORD attributes = GetFileAttributesW(folder.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return;
  if (CreateDirectoryW(folder.c_str(), nullptr)) return;
  LOG(ERROR) << "Can't create directory for log file: " << folder;
  DCHECK(false) << "Can't create directory for log file!!";
}

// Share mode 0: while any process has the log open the answer is no, so that nobody's log is taken
// away.
bool IsOversized(const std::wstring& path) {
  const UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  LARGE_INTEGER size = {};
  if (!file.IsValid() || !GetFileSizeEx(file.get(), &size)) return false;
  // Deliberate: a log of exactly the limit is kept.
  return size.QuadPart > kLargestLogSize;
}

// Deliberate: the date is UTC while the lines inside carry local time, and a failed copy is not
// noticed, so that the old content is then lost.
void KeepDatedCopy(const std::wstring& path) {
  SYSTEMTIME now;
  GetSystemTime(&now);
  const std::wstring backup = MakeBackupPath(path, now.wYear, now.wMonth, now.wDay);
  CopyFileW(path.c_str(), backup.c_str(), FALSE);
}

void BuildVerbosityTable(const CommandLine& command_line) {
  SetVerbosityTable(nullptr);
  const bool has_v = command_line.HasSwitch("v");
  if (!has_v && !command_line.HasSwitch("vmodule")) return;
  const std::string v = command_line.GetSwitchValueASCII("v");
  const std::string vmodule = command_line.GetSwitchValueASCII("vmodule");
  std::vector<std::string> complaints;
  SetVerbosityTable(new VerbosityTable(has_v ? &v : nullptr, vmodule, &complaints));
  // Deliberate: these records come before the log is opened; they go to debug.log beside the host
  // and choose the mutex.
  for (const std::string& complaint : complaints) LOG(WARNING) << complaint;
}

std::string ReadVariable(const char* name) {
  std::string value;
  DWORD length = GetEnvironmentVariableA(name, nullptr, 0);
  while (length > value.size()) {
    value.resize(length);
    length = GetEnvironmentVariableA(name, value.data(), static_cast<DWORD>(value.size()));
  }
  value.resize(length);
  return value;
}

// What a record begins with: each item's variable first, then its switch.
// Deliberate: the switch wins, and a value that is not wholly a number changes nothing.
struct ItemSource {
  const char* variable;
  const char* switch_name;
  bool LogItems::*item;
};
constexpr ItemSource kItemSources[] = {
    {"LOG_HAS_TICK_COUNT", "log-has-tick-count", &LogItems::tick_count},
    {"LOG_HAS_TIME_STAMP", "log-has-time-stamp", &LogItems::time_stamp},
    {"LOG_HAS_THREAD_ID", "log-has-thread-id", &LogItems::thread_id},
    {"LOG_HAS_PROCESS_ID", "log-has-process-id", &LogItems::process_id},
};

// Deliberate: a value that is not wholly a number, an empty one included, leaves the item as it
// was.
void ApplyItemValue(const std::string& text, bool* item) {
  int32_t number = 0;
  if (ParseWholeInt(text, &number)) *item = number > 0;
}

void ChooseLogItems(const CommandLine& command_line) {
  LogItems items;
  items.process_id = true;
  for (const ItemSource& source : kItemSources) {
    ApplyItemValue(ReadVariable(source.variable), &(items.*source.item));
    ApplyItemValue(command_line.GetSwitchValueASCII(source.switch_name), &(items.*source.item));
  }
  SetLogItems(items.process_id, items.thread_id, items.time_stamp, items.tick_count);
}

// Deliberate: "2abc" is 2 and "abc" is 0; no range.
void ChooseMinLogLevel() {
  const std::string level = ReadVariable("OSTREL_LOG_LEVEL");
  if (!level.empty()) SetMinLogLevel(ParseLenientInt(level));
}

void WriteBanner() {
  LOG(INFO) << "=====================================";
  LOG(INFO) << "=== New process(PID:" << GetCurrentProcessId() << ") started ===";
  LOG(INFO) << "=====================================";
  LOG(INFO) << "logging settings done:\n"
            << "\tTarget revision: " << OSTREL_REVISION << "\n"
            << "\tBuild time: " << OSTREL_BUILD_TIME << "\n"
            << "\tLast commit time: " << OSTREL_COMMIT_TIME << "\n"
            << "\tPath: " << OSTREL_SOURCE_PATH;
}

void CloseLog(void* /*parameter*/) {
  CloseLogFile();
  SetVerbosityTable(nullptr);
}

}  // namespace

void SetUpLogging() {
  const bool was_initialized = g_setUpDone;
  DCHECK(was_initialized == false);
  if (was_initialized) return;

  const CommandLine command_line = CommandLine::ForCurrentProcess();
  const std::wstring folder = FindLogFolder();
  MakeFolder(folder);
  const std::wstring path = folder + L"\\Ostrel.log";
  const bool oversized = IsOversized(path);
  if (oversized) KeepDatedCopy(path);

  g_checksEnabled = command_line.HasSwitch("enable-dcheck");
  BuildVerbosityTable(command_line);
  InitLogFile(path, kLogToFile, oversized);

  ChooseLogItems(command_line);
  ChooseMinLogLevel();
  WriteBanner();
  AtExitManager::RegisterCallback(&CloseLog, nullptr);
  g_setUpDone = true;
}
