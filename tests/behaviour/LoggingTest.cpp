// The statement forms of the log, and the switches and variables that they look at.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/behaviour/LogText.h"

namespace {

using sim::Library;
using sim::Machine;

constexpr char kNotebook[] = "win7 intel: internal 1366x768 active";

std::string ProcessId() { return std::to_string(GetCurrentProcessId()); }
std::string ThreadId() { return std::to_string(GetCurrentThreadId()); }

// A loaded library and what it logs from then on.
class Host {
 public:
  explicit Host(Machine& machine)
      : machine_(machine),
        library_(machine, Library::Build::kWhiteBox),
        start_(machine.Log().size()) {}

  const FoundationBox& box() const { return *library_.white_box().foundation; }
  std::string Log() const { return WithoutSourceLines(machine_.Log().substr(start_)); }

  // One record; true when its text was built.
  bool Info(const char* text) { return Built(box().LogInfo, text); }
  bool Warning(const char* text) { return Built(box().LogWarning, text); }
  bool Error(const char* text) { return Built(box().LogError, text); }
  bool Verbose(int32_t level, const char* text) {
    uint32_t count = 0;
    box().LogVerbose(level, text, &count);
    return count == 1;
  }
  // A failed check; true when the condition was evaluated.
  bool FailedCheck(const char* text) {
    uint32_t count = 0;
    box().CheckWindowIsNull(false, text, &count);
    return count == 1;
  }

 private:
  static bool Built(void (*statement)(const char*, uint32_t*), const char* text) {
    uint32_t count = 0;
    statement(text, &count);
    return count == 1;
  }

  Machine& machine_;
  Library library_;
  size_t start_;
};

std::string CapturedError(Host* host, const char* text) {
  testing::internal::CaptureStderr();
  host->Error(text);
  return testing::internal::GetCapturedStderr();
}

// --- Records.

TEST(Log, RecordHasTheDefaultPrefix) {
  Machine machine(kNotebook);
  SetAugustMorning(&machine);
  Host host(machine);
  EXPECT_TRUE(host.Info("some text"));
  EXPECT_TRUE(host.Warning("more"));
  EXPECT_TRUE(host.Error("most"));
  const std::string prefix = "[" + ProcessId() + ":0829/043626:";
  EXPECT_EQ(host.Log(), prefix + "INFO:FoundationBox.cpp] some text\n" + prefix +
                            "WARNING:FoundationBox.cpp] more\n" + prefix +
                            "ERROR:FoundationBox.cpp] most\n");
}

TEST(Log, SourceFileIsABaseNameWithItsLine) {
  Machine machine(kNotebook);
  Library ostrel(machine, Library::Build::kWhiteBox);
  uint32_t count = 0;
  ostrel.white_box().foundation->LogInfo("x", &count);
  EXPECT_TRUE(
      std::regex_search(machine.Log(), std::regex(":FoundationBox\\.cpp\\([1-9][0-9]*\\)\\] x\n")))
      << machine.Log();
}

TEST(Log, LineFeedsStayAndOnlyTheFirstLineHasAPrefix) {
  Machine machine(kNotebook);
  Host host(machine);
  host.Info("one\ntwo\n\tthree");
  EXPECT_EQ(Messages(host.Log()), "one\ntwo\n\tthree\n");
  EXPECT_EQ(CountOf(host.Log(), "INFO"), 1u);
}

TEST(Log, MessagesHaveNoLimit) {
  Machine machine(kNotebook);
  Host host(machine);
  const std::string text(3000000, 'x');
  host.Info(text.c_str());
  EXPECT_TRUE(Messages(host.Log()) == text + "\n");
}

TEST(Log, NarrowTextIsWrittenByteForByteAndWideAsUtf8) {
  Machine machine(kNotebook);
  Host host(machine);
  host.Info("\xFF\x01");
  host.box().LogWide(L"\u20ac", L"\U0001F4BB");
  EXPECT_EQ(Messages(host.Log()), "\xFF\x01\nwide \xE2\x82\xAC and \xF0\x9F\x92\xBB\n");
}

TEST(Log, NullTextsDoNotSwallowTheLineFeed) {
  Machine machine(kNotebook);
  Host host(machine);
  host.box().LogNullText();
  host.Info("next");
  EXPECT_EQ(Messages(host.Log()), "nothing:\nnext\n");
}

TEST(Log, FileIsSharedWithOthersThatWrite) {
  Machine machine(kNotebook);
  Host host(machine);
  host.Info("mine");
  const HANDLE other =
      CreateFileW(LogPath(machine).c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(other, INVALID_HANDLE_VALUE) << GetLastError();
  DWORD written = 0;
  WriteFile(other, "theirs\n", 7, &written, nullptr);
  host.Info("mine again");
  CloseHandle(other);
  EXPECT_EQ(Messages(host.Log()), "mine\ntheirs\nmine again\n");
}

TEST(Log, RecordsOfSeveralThreadsStayWhole) {
  Machine machine(kNotebook);
  Host host(machine);
  constexpr size_t kThreads = 4;
  constexpr size_t kRecords = 100;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (size_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&host, thread] {
      const std::string text = "record of thread " + std::to_string(thread) + " end";
      for (size_t i = 0; i < kRecords; ++i) host.Info(text.c_str());
    });
  }
  for (std::thread& thread : threads) thread.join();
  const std::string messages = Messages(host.Log());
  size_t whole = 0;
  for (size_t thread = 0; thread < kThreads; ++thread) {
    whole += CountOf(messages, "record of thread " + std::to_string(thread) + " end\n");
  }
  EXPECT_EQ(whole, kThreads * kRecords);
  EXPECT_EQ(CountOf(messages, "\n"), kThreads * kRecords);
}

// --- Standard error and the other destinations.

TEST(Log, ErrorsAlsoReachStandardErrorAndWarningsDoNot) {
  Machine machine(kNotebook);
  Host host(machine);
  testing::internal::CaptureStderr();
  host.Info("an info");
  host.Warning("a warning");
  host.Error("an error");
  const std::string standard_error = testing::internal::GetCapturedStderr();
  EXPECT_EQ(Messages(standard_error), "an error\n");
  EXPECT_EQ(Messages(host.Log()), "an info\na warning\nan error\n");
}

TEST(Log, DestinationNowhereWritesNoFile) {
  Machine machine(kNotebook);
  Host host(machine);
  host.box().InitLogFile(LogPath(machine), 0, false);
  host.Info("nowhere");
  EXPECT_EQ(CountOf(CapturedError(&host, "on standard error"), "on standard error"), 1u);
  EXPECT_EQ(host.Log(), "");
}

TEST(Log, DebugOutputGoesWithStandardErrorWhateverTheSeverity) {
  Machine machine(kNotebook);
  Host host(machine);
  host.box().InitLogFile(LogPath(machine), 2, false);
  testing::internal::CaptureStderr();
  host.Info("debug only");
  EXPECT_EQ(Messages(testing::internal::GetCapturedStderr()), "debug only\n");
  EXPECT_EQ(host.Log(), "");
  host.box().InitLogFile(LogPath(machine), 3, false);
  testing::internal::CaptureStderr();
  host.Info("both");
  EXPECT_EQ(Messages(testing::internal::GetCapturedStderr()), "both\n");
  EXPECT_EQ(Messages(host.Log()), "both\n");
}

// --- The last system error.

TEST(Log, EveryFormKeepsTheLastError) {
  Machine machine(kNotebook);
  machine.SetCommandLine(L"host.exe --enable-dcheck --v=1");
  Host host(machine);
  constexpr DWORD kError = 0xBEEF;
  testing::internal::CaptureStderr();
  SetLastError(kError);
  host.Info("x");
  EXPECT_EQ(GetLastError(), kError);
  SetLastError(kError);
  host.Error("x");
  EXPECT_EQ(GetLastError(), kError);
  SetLastError(kError);
  host.Verbose(1, "x");
  EXPECT_EQ(GetLastError(), kError);
  SetLastError(kError);
  host.FailedCheck("x");
  EXPECT_EQ(GetLastError(), kError);
  SetLastError(kError);
  host.box().LogSystemErrorCode(2, "x");
  EXPECT_EQ(GetLastError(), kError);
  SetLastError(kError);
  host.box().LogSystemErrorCode(0x2FFFFFFF, "x");
  EXPECT_EQ(GetLastError(), kError);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(CountOf(host.Log(), "\n"), 6u);
}

TEST(Log, LastErrorSurvivesAFailingWrite) {
  Machine machine(kNotebook);
  machine.Fail("CreateFileW", 1, ERROR_ACCESS_DENIED, Machine::Repeat::kFromThenOn);
  Host host(machine);
  SetLastError(0xBEEF);
  host.Info("x");
  EXPECT_EQ(GetLastError(), DWORD{0xBEEF});
}

TEST(Log, StatementItselfSeesTheLastErrorToo) {
  Machine machine(kNotebook);
  Host host(machine);
  EXPECT_EQ(host.box().LogLastErrorSeenInside(4711), 4711u);
}

TEST(LogSystemError, AppendsTheSystemsTextWithoutItsLineBreak) {
  Machine machine(kNotebook);
  Host host(machine);
  char text[256] = {};
  const DWORD length =
      FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                     ERROR_FILE_NOT_FOUND, 0x400, text, sizeof(text), nullptr);
  std::string expected(text, length);
  ASSERT_EQ(expected.substr(expected.size() - 2), "\r\n");  // there is something to cut
  expected.erase(expected.find_last_not_of(" \r\n") + 1);
  testing::internal::CaptureStderr();
  host.box().LogSystemErrorCode(ERROR_FILE_NOT_FOUND, "opening");
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(Messages(host.Log()), "opening: " + expected + "\n");
}

TEST(LogSystemError, CodeWithoutATextIsNamedInDecimal) {
  Machine machine(kNotebook);
  Host host(machine);
  testing::internal::CaptureStderr();
  host.box().LogSystemErrorCode(0x2FFFFFFF, "opening");
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(Messages(host.Log()), "opening: Error " + std::to_string(ERROR_MR_MID_NOT_FOUND) +
                                      " while retrieving error 805306367\n");
}

// --- Levels.

TEST(LogLevel, OneHidesTheBannerAndEveryVlog) {
  Machine machine(kNotebook);
  machine.SetEnvironment("OSTREL_LOG_LEVEL", "1");
  machine.SetCommandLine(L"host.exe --v=3");
  Host host(machine);
  EXPECT_EQ(machine.Log(), "");
  EXPECT_FALSE(host.Info("x"));
  EXPECT_FALSE(host.Verbose(0, "x"));
  EXPECT_TRUE(host.Warning("seen"));
  EXPECT_EQ(Messages(host.Log()), "seen\n");
}

TEST(LogLevel, FourHidesAllButFatalAndTurnsChecksOff) {
  Machine machine(kNotebook);
  machine.SetEnvironment("OSTREL_LOG_LEVEL", "4");
  machine.SetCommandLine(L"host.exe --enable-dcheck");
  Host host(machine);
  EXPECT_FALSE(host.Error("x"));
  EXPECT_FALSE(host.FailedCheck("x"));
  EXPECT_EQ(machine.Log(), "");
}

TEST(LogLevel, ThreeLeavesTheChecks) {
  Machine machine(kNotebook);
  machine.SetEnvironment("OSTREL_LOG_LEVEL", "3");
  machine.SetCommandLine(L"host.exe --enable-dcheck");
  Host host(machine);
  testing::internal::CaptureStderr();
  EXPECT_FALSE(host.Error("x"));
  EXPECT_TRUE(host.FailedCheck("y"));
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(Messages(host.Log()), "Check failed: wnd_ == NULL. y\n");
}

TEST(LogLevel, VariableIsParsedLeniently) {
  struct Row {
    const char* text;
    int32_t level;
  };
  for (const Row& row : {Row{"", 0}, Row{"2", 2}, Row{"2abc", 2}, Row{"abc", 0}, Row{"-3", -3},
                         Row{" 1", 1}, Row{"99", 99}, Row{"99999999999", 2147483647}}) {
    Machine machine(kNotebook);
    machine.SetEnvironment("OSTREL_LOG_LEVEL", row.text);
    Host host(machine);
    EXPECT_EQ(host.box().GetMinLogLevel(), row.level) << "\"" << row.text << "\"";
    EXPECT_EQ(machine.Log().empty(), row.level > 0) << "\"" << row.text << "\"";
  }
}

TEST(LogLevel, NegativeBehavesAsZero) {
  Machine machine(kNotebook);
  machine.SetEnvironment("OSTREL_LOG_LEVEL", "-3");
  Host host(machine);
  EXPECT_TRUE(host.Info("x"));
  EXPECT_TRUE(host.Verbose(0, "x"));
  EXPECT_FALSE(host.Verbose(1, "x"));
}

TEST(LogLevel, FiveSilencesEverything) {
  Machine machine(kNotebook);
  machine.SetEnvironment("OSTREL_LOG_LEVEL", "5");
  machine.SetCommandLine(L"host.exe --enable-dcheck --v=3");
  Host host(machine);
  EXPECT_EQ(CapturedError(&host, "x"), "");
  EXPECT_FALSE(host.FailedCheck("x"));
  EXPECT_EQ(machine.Log(), "");
}

// --- What stands in front.

struct ItemCase {
  const char* variable;  // null: not set
  const char* variable_value;
  const wchar_t* command_line;
  const char* prefix;  // P process id, T thread id, D date, C tick count
};

TEST(LogItems, VariablesAndSwitchesDecide) {
  constexpr ItemCase kCases[] = {
      {nullptr, "", L"host.exe", "PD"},
      {"LOG_HAS_PROCESS_ID", "0", L"host.exe", "D"},
      {"LOG_HAS_PROCESS_ID", "0", L"host.exe --log-has-process-id=1", "PD"},
      {"LOG_HAS_PROCESS_ID", "1", L"host.exe --log-has-process-id=0", "D"},
      {"LOG_HAS_PROCESS_ID", "-1", L"host.exe", "D"},
      {"LOG_HAS_THREAD_ID", "1", L"host.exe", "PTD"},
      {"LOG_HAS_THREAD_ID", "1", L"host.exe /log-has-thread-id=0", "PD"},
      {"LOG_HAS_THREAD_ID", "0", L"host.exe -Log-Has-Thread-Id=2", "PTD"},
      {"LOG_HAS_TIME_STAMP", "0", L"host.exe", "P"},
      {"LOG_HAS_TIME_STAMP", "0", L"host.exe --log-has-time-stamp=1", "PD"},
      {"LOG_HAS_TICK_COUNT", "1", L"host.exe", "PDC"},
      {"LOG_HAS_TICK_COUNT", "1", L"host.exe --log-has-tick-count=0", "PD"},
      {nullptr, "", L"host.exe --log-has-tick-count=1 --log-has-thread-id=1", "PTDC"},
      // What is not wholly a number changes nothing.
      {nullptr, "", L"host.exe --log-has-time-stamp=abc", "PD"},
      {nullptr, "", L"host.exe --log-has-thread-id", "PD"},
      {nullptr, "", L"host.exe --log-has-thread-id=1x", "PD"},
      {nullptr, "", L"host.exe \"--log-has-thread-id= 1\"", "PD"},
      {"LOG_HAS_THREAD_ID", " 1", L"host.exe", "PD"},
      {"LOG_HAS_PROCESS_ID", "", L"host.exe", "PD"},
      {"LOG_HAS_PROCESS_ID", "0", L"host.exe --log-has-process-id=x", "D"},
      // Behind a lone "--" there are no switches.
      {nullptr, "", L"host.exe -- --log-has-thread-id=1", "PD"},
  };
  for (const ItemCase& row : kCases) {
    Machine machine(kNotebook);
    SetAugustMorning(&machine);
    if (row.variable != nullptr) machine.SetEnvironment(row.variable, row.variable_value);
    machine.SetCommandLine(row.command_line);
    Host host(machine);
    host.Info("x");
    std::string expected = "[";
    for (const char* item = row.prefix; *item != '\0'; ++item) {
      if (*item == 'P') expected += ProcessId() + ":";
      if (*item == 'T') expected += ThreadId() + ":";
      if (*item == 'D') expected += "0829/043626:";
      if (*item == 'C') expected += "[0-9]+:";
    }
    expected += "INFO:FoundationBox.cpp] x\n";
    std::string pattern = std::regex_replace(expected, std::regex("[\\[\\].]"), "\\$&");
    pattern = std::regex_replace(pattern, std::regex("\\\\\\[0-9\\\\\\]"), "[0-9]");
    EXPECT_TRUE(std::regex_match(host.Log(), std::regex(pattern)))
        << (row.variable != nullptr ? row.variable : "") << "=" << row.variable_value << " "
        << row.prefix << "\n"
        << host.Log();
  }
}

TEST(LogItems, ItemsCanBeSetBySetLogItems) {
  Machine machine(kNotebook);
  Host host(machine);
  host.box().SetLogItems(false, false, false, false);
  host.Info("bare");
  EXPECT_EQ(host.Log(), "[INFO:FoundationBox.cpp] bare\n");
}

TEST(LogItems, TickCountIsTheSystems) {
  Machine machine(kNotebook);
  Host host(machine);
  host.box().SetLogItems(false, false, false, true);
  host.Info("first");
  machine.Advance(250);
  host.Info("second");
  std::smatch ticks;
  const std::string log = host.Log();
  ASSERT_TRUE(
      std::regex_match(log, ticks,
                       std::regex("\\[([0-9]+):INFO:FoundationBox\\.cpp\\] "
                                  "first\n\\[([0-9]+):INFO:FoundationBox\\.cpp\\] second\n")))
      << log;
  EXPECT_EQ(std::stoul(ticks[2]) - std::stoul(ticks[1]), 250u);
}

TEST(LogItems, ValueThatIsNotAsciiIsWarnedOfAndEmpty) {
  Machine machine(kNotebook);
  machine.SetCommandLine(L"host.exe --log-has-thread-id=\u0661");
  Library ostrel(machine);
  const std::string log = machine.Log();
  EXPECT_NE(log.find(":WARNING:"), std::string::npos) << log;
  EXPECT_EQ(Messages(log).rfind("Value of --log-has-thread-id must be ASCII.\n", 0), 0u) << log;
  EXPECT_EQ(log.find(":" + ThreadId() + ":"), std::string::npos) << log;
}

// --- Checks.

TEST(Dcheck, IsNotEvenEvaluatedWithoutTheSwitch) {
  Machine machine(kNotebook);
  Host host(machine);
  EXPECT_FALSE(host.FailedCheck("x"));
  EXPECT_EQ(host.Log(), "");
}

TEST(Dcheck, FailedOneWritesOneLineAndGoesOn) {
  Machine machine(kNotebook);
  SetAugustMorning(&machine);
  machine.SetCommandLine(L"host.exe --Enable-DCheck");
  Host host(machine);
  testing::internal::CaptureStderr();
  EXPECT_TRUE(host.FailedCheck("and a text"));
  host.Info("the next statement");
  const std::string line =
      "[" + ProcessId() +
      ":0829/043626:ERROR_REPORT:FoundationBox.cpp] Check failed: wnd_ == NULL. "
      "and a text\n";
  EXPECT_EQ(WithoutSourceLines(testing::internal::GetCapturedStderr()), line);
  EXPECT_EQ(host.Log(),
            line + "[" + ProcessId() + ":0829/043626:INFO:FoundationBox.cpp] the next statement\n");
}

TEST(Dcheck, OneThatHoldsWritesNothing) {
  Machine machine(kNotebook);
  machine.SetCommandLine(L"host.exe --enable-dcheck=0");  // presence alone counts
  Host host(machine);
  uint32_t count = 0;
  host.box().CheckWindowIsNull(true, "x", &count);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(host.Log(), "");
}

// --- Verbosity.

TEST(Vlog, WithoutSwitchesOnlyLevelZeroIsWritten) {
  Machine machine(kNotebook);
  Host host(machine);
  EXPECT_TRUE(host.Verbose(0, "zero"));
  EXPECT_FALSE(host.Verbose(1, "one"));
  EXPECT_EQ(Messages(host.Log()), "zero\n");
  EXPECT_NE(host.Log().find(":INFO:"), std::string::npos);
}

TEST(Vlog, DefaultLevelAndPatternsDecideByFile) {
  struct Row {
    const wchar_t* command_line;
    int32_t highest;
  };
  for (const Row& row :
       {Row{L"host.exe --v=2", 2}, Row{L"host.exe /v=-1", -1},
        Row{L"host.exe --vmodule=Foundation*=3", 3}, Row{L"host.exe --v=1 --vmodule=DMSwitch=3", 1},
        Row{L"host.exe --v=3 --vmodule=FoundationBo?=1,*=2", 1},
        Row{L"host.exe --v=2 --vmodule=foundationbox=0", 2}}) {
    Machine machine(kNotebook);
    machine.SetCommandLine(row.command_line);
    Host host(machine);
    for (int32_t level = 0; level <= 3; ++level) {
      EXPECT_EQ(host.Verbose(level, "x"), level <= row.highest) << row.highest << " " << level;
    }
  }
}

TEST(Vlog, BrokenSwitchesAreWarnedOfBesideTheHost) {
  Machine machine(kNotebook);
  SetAugustMorning(&machine);
  machine.SetCommandLine(L"host.exe --v=2abc --vmodule=rubbish,FoundationBox=1x");
  Host host(machine);
  const std::string prefix = "[0829/043626:WARNING:LogSetup.cpp] ";
  EXPECT_EQ(WithoutSourceLines(ReadFileText(machine.HostFolder() + L"\\debug.log")),
            prefix + "Parsed v switch \"2abc\" as 2\n" + prefix +
                "Could not fully parse vmodule switch \"rubbish,FoundationBox=1x\"\n" + prefix +
                "Parsed vlog level for \"FoundationBox=1x\" as 1\n");
  EXPECT_TRUE(host.Verbose(1, "x"));
  EXPECT_FALSE(host.Verbose(2, "x"));
}

TEST(Vlog, FollowsALevelSetLater) {
  Machine machine(kNotebook);
  machine.SetCommandLine(L"host.exe --v=1");
  Host host(machine);
  host.box().SetMinLogLevel(1);
  EXPECT_FALSE(host.Verbose(0, "x"));
  host.box().SetMinLogLevel(0);
  EXPECT_TRUE(host.Verbose(1, "x"));
}

}  // namespace
