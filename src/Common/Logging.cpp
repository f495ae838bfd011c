#include "Common/Logging.h"

#include <algorithm>
#include <limits>

#include "Common/LogFile.h"
#include "Common/LogFormat.h"
#include "Common/LogState.h"
#include "Common/Text.h"
#include "Common/Verbosity.h"
#include "Common/Win.h"

int32_t g_minLogLevel = kLogSeverityINFO;
bool g_checksEnabled = false;
int32_t g_verbosityCeiling = 0;  // without a table every file has verbosity 0

namespace {

LogItems g_items;
const VerbosityTable* g_verbosity = nullptr;

// A VLOG is an INFO record: above that level none is written, whatever the table says.
void UpdateVerbosityCeiling() {
  if (g_minLogLevel > kLogSeverityINFO) {
    g_verbosityCeiling = std::numeric_limits<int32_t>::min();
  } else {
    g_verbosityCeiling = g_verbosity != nullptr ? g_verbosity->Ceiling() : 0;
  }
}

LogStamp MakeStamp() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  LogStamp stamp;
  stamp.process_id = GetCurrentProcessId();
  stamp.thread_id = GetCurrentThreadId();
  stamp.month = now.wMonth;
  stamp.day = now.wDay;
  stamp.hour = now.wHour;
  stamp.minute = now.wMinute;
  stamp.second = now.wSecond;
  stamp.tick_count = g_items.tick_count ? GetTickCount() : 0;
  return stamp;
}

void TrimTrailingSpace(std::string* text) {
  text->erase(text->find_last_not_of(" \t\r\n\v\f") + 1);
}

}  // namespace

int32_t GetMinLogLevel() { return g_minLogLevel; }

void SetMinLogLevel(int32_t level) {
  g_minLogLevel = level;
  UpdateVerbosityCeiling();
}

void SetLogItems(bool process_id, bool thread_id, bool time_stamp, bool tick_count) {
  g_items = {process_id, thread_id, time_stamp, tick_count};
}

void SetVerbosityTable(const VerbosityTable* table) {
  delete g_verbosity;
  g_verbosity = table;
  UpdateVerbosityCeiling();
}

bool IsVerbose(const char* file, int32_t level) {
  if (g_minLogLevel > kLogSeverityINFO) return false;
  return (g_verbosity != nullptr ? g_verbosity->LevelFor(file) : 0) >= level;
}

LogRecord::LogRecord(const char* file, int line, int32_t severity)
    : last_error_(GetLastError()), severity_(severity), has_system_error_(false), system_error_(0) {
  Open(file, line);
}

LogRecord::LogRecord(const char* file, int line, int32_t severity, unsigned long system_error)
    : last_error_(GetLastError()),
      severity_(severity),
      has_system_error_(true),
      system_error_(system_error) {
  Open(file, line);
}

LogRecord::LogRecord(const char* file, int line, int32_t severity, const char* check)
    : last_error_(GetLastError()), severity_(severity), has_system_error_(false), system_error_(0) {
  Open(file, line);
  stream_ << check;
}

void LogRecord::Open(const char* file, int line) {
  stream_ << FormatLogPrefix(g_items, MakeStamp(), severity_, file, line);
  SetLastError(last_error_);  // what the statement streams may ask for it
}

LogRecord::~LogRecord() {
  try {
    if (severity_ >= g_minLogLevel) {
      if (has_system_error_) AppendSystemError();
      stream_.clear();  // a null narrow string in the message must not swallow the line feed
      stream_ << '\n';
      WriteLogText(stream_.str(), severity_);
      if (severity_ >= kLogSeverityFATAL) DebugBreak();
    }
  } catch (...) {
    // Out of memory: the record is lost, the caller goes on.
  }
  // Deliberate: a record may stand between a failing call and the question for its error.
  SetLastError(last_error_);
}

void LogRecord::AppendSystemError() {
  constexpr DWORD kLanguage = 0x400;
  char buffer[256] = {};
  const DWORD length =
      FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                     system_error_, kLanguage, buffer, sizeof(buffer), nullptr);
  const DWORD format_error = GetLastError();
  stream_.clear();
  if (length == 0) {
    stream_ << std::dec << ": Error " << format_error << " while retrieving error "
            << system_error_;
    return;
  }
  std::string text(buffer, std::min<size_t>(length, sizeof(buffer)));
  TrimTrailingSpace(&text);
  stream_ << ": " << text;
}

std::ostream& operator<<(std::ostream& out, const wchar_t* text) {
  return text != nullptr ? out << NarrowFromWide(text) : out;
}

std::ostream& operator<<(std::ostream& out, const std::wstring& text) {
  return out << NarrowFromWide(text);
}
