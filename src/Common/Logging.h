// The diagnostic log: three statement forms and the switches they look at. Nothing in the library
// depends on what is logged. Every form keeps the calling thread's last system error, so that code
// may log between a failing system call and GetLastError().
//
//   LOG(ERROR) << "SetDisplayConfig failed: " << result;
//   LOG_SYSTEM_ERROR(ERROR, GetLastError()) << "CreateProcess failed";  // appends ": " and the
//   system's text VLOG(1) << "paths: " << count; DCHECK(object != NULL) << "no object";
//
// A DCHECK never stops the program and never protects: the code behind it must be right also when
// the check failed.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>

// Severities; the number is also the index of the name in the line. They are spelt with the
// statement's word behind the prefix because LOG pastes it there: a pasted argument is not
// macro-expanded, which is how LOG(ERROR) survives the ERROR macro of windows.h.
constexpr int32_t kLogSeverityINFO = 0;
constexpr int32_t kLogSeverityWARNING = 1;
constexpr int32_t kLogSeverityERROR = 2;
constexpr int32_t kLogSeverityERROR_REPORT = 3;
constexpr int32_t kLogSeverityFATAL = 4;

/// Records of a lower severity are neither built nor written. Read through GetMinLogLevel outside
/// the macros.
extern int32_t g_minLogLevel;
/// True once the host was started with "enable-dcheck".
extern bool g_checksEnabled;
/// The highest VLOG level that any file may reach now; one comparison with it settles nearly every
/// VLOG.
extern int32_t g_verbosityCeiling;

int32_t GetMinLogLevel();
/// No range is enforced: 5 and above silences everything, negative behaves as 0.
void SetMinLogLevel(int32_t level);
/// What stands in front of each record.
void SetLogItems(bool process_id, bool thread_id, bool time_stamp, bool tick_count);

/// Whether VLOG(level) in `file` is written, the ceiling having been passed.
bool IsVerbose(const char* file, int32_t level);

/// One record: opened by the constructor, streamed into, written by the destructor as one piece.
class LogRecord {
 public:
  LogRecord(const char* file, int line, int32_t severity);
  /// The form with a system error; its text is appended when the record is finished.
  LogRecord(const char* file, int line, int32_t severity, unsigned long system_error);
  /// The form of a failed check; `check` is the whole beginning of the message.
  LogRecord(const char* file, int line, int32_t severity, const char* check);
  ~LogRecord();
  LogRecord(const LogRecord&) = delete;
  LogRecord& operator=(const LogRecord&) = delete;

  std::ostream& stream() { return stream_; }

 private:
  void Open(const char* file, int line);
  void AppendSystemError();

  const unsigned long last_error_;  // first member: read before anything else can change it
  const int32_t severity_;
  const bool has_system_error_;
  const unsigned long system_error_;
  std::ostringstream stream_;
};

/// Gives both arms of a log statement's conditional expression the type void; binds looser than <<.
struct LogVoidify {
  void operator&(std::ostream&) const {}
};

/// Wide text goes into a record as UTF-8; a null pointer adds nothing.
std::ostream& operator<<(std::ostream& out, const wchar_t* text);
std::ostream& operator<<(std::ostream& out, const std::wstring& text);

// The base name where the compiler has it, so that no path of a build machine ends up in the
// library.
#if defined(__FILE_NAME__)
#define OSTREL_LOG_FILE __FILE_NAME__
#else
#define OSTREL_LOG_FILE __FILE__
#endif

#define LOG(severity)                        \
  !(kLogSeverity##severity >= g_minLogLevel) \
      ? static_cast<void>(0)                 \
      : LogVoidify() & LogRecord(OSTREL_LOG_FILE, __LINE__, kLogSeverity##severity).stream()

#define LOG_SYSTEM_ERROR(severity, code)                                            \
  !(kLogSeverity##severity >= g_minLogLevel)                                        \
      ? static_cast<void>(0)                                                        \
      : LogVoidify() & LogRecord(OSTREL_LOG_FILE, __LINE__, kLogSeverity##severity, \
                                 static_cast<unsigned long>(code))                  \
                           .stream()

#define VLOG_IS_ON(level) ((level) <= g_verbosityCeiling && IsVerbose(OSTREL_LOG_FILE, (level)))

#define VLOG(level)          \
  !VLOG_IS_ON(level)         \
      ? static_cast<void>(0) \
      : LogVoidify() & LogRecord(OSTREL_LOG_FILE, __LINE__, kLogSeverityINFO).stream()

#define DCHECK_IS_ON() (g_checksEnabled && g_minLogLevel < kLogSeverityFATAL)

// The condition becomes text here, in the outermost macro: handed on to another macro, NULL and
// FALSE in it would be expanded first.
// Deliberate: a failed check writes its line and stops nothing.
#define DCHECK(condition)                                                             \
  !(DCHECK_IS_ON() && !(condition))                                                   \
      ? static_cast<void>(0)                                                          \
      : LogVoidify() & LogRecord(OSTREL_LOG_FILE, __LINE__, kLogSeverityERROR_REPORT, \
                                 "Check failed: " #condition ". ")                    \
                           .stream()
