// The log from the library's load to its unload: where it lies, how it is rotated, what it begins
// with, and what happens when a step of the set-up fails.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/behaviour/LogText.h"

namespace {

using sim::Library;
using sim::Machine;

constexpr char kNotebook[] = "win7 intel: internal 1366x768 active";
constexpr uint32_t kLimit = 20971520;
constexpr char kRule[] = "=====================================\n";

std::string ProcessId() { return std::to_string(GetCurrentProcessId()); }

// The four records of the banner, without prefixes.
bool HasBanner(const std::string& log) {
  const std::string banner = std::string(kRule) + "=== New process(PID:" + ProcessId() +
                             ") started ===\n" + kRule + "logging settings done:\n";
  return Messages(log).find(banner) != std::string::npos;
}

TEST(LogSetup, FirstLoadMakesTheFolderAndWritesTheBanner) {
  Machine machine(kNotebook);
  SetAugustMorning(&machine);
  { Library ostrel(machine); }
  const std::string prefix =
      "\\[" + ProcessId() + ":0829/043626:INFO:LogSetup\\.cpp\\([0-9]+\\)\\] ";
  const std::string stamp = "[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}";
  const std::regex expected(prefix + kRule + prefix + "=== New process\\(PID:" + ProcessId() +
                            "\\) started ===\n" + prefix + kRule + prefix +
                            "logging settings done:\n\tTarget revision: [0-9]+\n\tBuild time: " +
                            stamp + "\n\tLast commit time: " + stamp + "\n\tPath: [^/\n][^\n]*\n");
  EXPECT_TRUE(std::regex_match(machine.Log(), expected)) << machine.Log();
}

TEST(LogSetup, ExistingLogIsAppendedTo) {
  Machine machine(kNotebook);
  CreateDirectoryW(LogFolder(machine).c_str(), nullptr);
  WriteFileText(LogPath(machine), "old line\n");
  { Library ostrel(machine); }
  EXPECT_EQ(machine.Log().rfind("old line\n[", 0), 0u) << machine.Log();
}

TEST(LogSetup, EveryLoadWritesItsBannerAndLeavesTheFileClosed) {
  Machine machine(kNotebook);
  { Library ostrel(machine); }
  { Library ostrel(machine); }
  EXPECT_EQ(CountOf(machine.Log(), "=== New process(PID:"), 2u);
  EXPECT_TRUE(DeleteFileW(LogPath(machine).c_str())) << GetLastError();
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(LogSetup, LogOfExactlyTheLimitIsKeptAndAppendedTo) {
  Machine machine(kNotebook);
  SetAugustMorning(&machine);
  CreateDirectoryW(LogFolder(machine).c_str(), nullptr);
  WriteFileText(LogPath(machine), "old", kLimit);
  { Library ostrel(machine); }
  EXPECT_GT(SizeOf(LogPath(machine)), int64_t{kLimit});
  EXPECT_EQ(SizeOf(LogFolder(machine) + L"\\Ostrel.2012-08-29.log"), -1);
}

TEST(LogSetup, OneByteMoreIsCopiedToTheDatedNameAndStartedAfresh) {
  Machine machine(kNotebook);
  SetAugustMorning(&machine);
  CreateDirectoryW(LogFolder(machine).c_str(), nullptr);
  WriteFileText(LogPath(machine), "old", kLimit + 1);
  { Library ostrel(machine); }
  EXPECT_EQ(SizeOf(LogFolder(machine) + L"\\Ostrel.2012-08-29.log"), int64_t{kLimit} + 1);
  EXPECT_LT(SizeOf(LogPath(machine)), 2000);
  EXPECT_TRUE(HasBanner(machine.Log()));
}

TEST(LogSetup, TwoOversizedStartsOnOneDayLeaveTheLaterBackup) {
  Machine machine(kNotebook);
  SetAugustMorning(&machine);
  CreateDirectoryW(LogFolder(machine).c_str(), nullptr);
  WriteFileText(LogPath(machine), "first", kLimit + 1);
  { Library ostrel(machine); }
  WriteFileText(LogPath(machine), "second", kLimit + 2);
  { Library ostrel(machine); }
  const std::wstring backup = LogFolder(machine) + L"\\Ostrel.2012-08-29.log";
  EXPECT_EQ(SizeOf(backup), int64_t{kLimit} + 2);
  EXPECT_EQ(ReadFileText(backup).substr(0, 6), "second");
}

TEST(LogSetup, BackupsDateIsUtcWhileTheLinesAreLocal) {
  Machine machine(kNotebook);
  SYSTEMTIME utc = {};
  utc.wYear = 2012;
  utc.wMonth = 8;
  utc.wDay = 29;
  utc.wHour = 23;
  utc.wMinute = 5;
  machine.SetCalendar(utc, 120);
  CreateDirectoryW(LogFolder(machine).c_str(), nullptr);
  WriteFileText(LogPath(machine), "old", kLimit + 1);
  { Library ostrel(machine); }
  EXPECT_EQ(SizeOf(LogFolder(machine) + L"\\Ostrel.2012-08-29.log"), int64_t{kLimit} + 1);
  EXPECT_NE(machine.Log().find(":0830/010500:INFO:"), std::string::npos) << machine.Log();
}

TEST(LogSetup, OversizedLogThatCannotBeCopiedIsLost) {
  Machine machine(kNotebook);
  SetAugustMorning(&machine);
  CreateDirectoryW(LogFolder(machine).c_str(), nullptr);
  WriteFileText(LogPath(machine), "old", kLimit + 1);
  CreateDirectoryW((LogFolder(machine) + L"\\Ostrel.2012-08-29.log").c_str(), nullptr);
  { Library ostrel(machine); }
  EXPECT_LT(SizeOf(LogPath(machine)), 2000);
  EXPECT_TRUE(HasBanner(machine.Log()));
}

TEST(LogSetup, LogHeldOpenElsewhereIsNotOversizedAndAppendedTo) {
  Machine machine(kNotebook);
  SetAugustMorning(&machine);
  CreateDirectoryW(LogFolder(machine).c_str(), nullptr);
  WriteFileText(LogPath(machine), "old", kLimit + 1);
  const HANDLE other =
      CreateFileW(LogPath(machine).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(other, INVALID_HANDLE_VALUE);
  { Library ostrel(machine); }
  CloseHandle(other);
  EXPECT_GT(SizeOf(LogPath(machine)), int64_t{kLimit} + 1);
  EXPECT_EQ(SizeOf(LogFolder(machine) + L"\\Ostrel.2012-08-29.log"), -1);
}

TEST(LogSetup, WithoutTheShellTheVariableTellsTheFolder) {
  Machine machine(kNotebook);
  machine.SetEnvironment("APPDATA", "");
  const std::wstring other = machine.TempFolder() + L"\\roaming";
  CreateDirectoryW(other.c_str(), nullptr);
  machine.SetEnvironment("APPDATA", std::string(other.begin(), other.end()) + "\\");
  machine.Fail("SHGetFolderPathW", 1);
  { Library ostrel(machine); }
  EXPECT_EQ(machine.Log(), "");
  EXPECT_TRUE(HasBanner(ReadFileText(other + L"\\hd\\Ostrel.log")));
}

TEST(LogSetup, WithNeitherTheLoadFailsAndSaysWhyBesideTheHost) {
  Machine machine(kNotebook);
  machine.Fail("SHGetFolderPathW", 1);
  machine.Fail("ExpandEnvironmentStringsW", 1, ERROR_ACCESS_DENIED);
  EXPECT_THROW(Library ostrel(machine), std::runtime_error);
  const std::string debug_log = ReadFileText(machine.HostFolder() + L"\\debug.log");
  EXPECT_EQ(Messages(debug_log).rfind("ExpandEnvironmentStringsW() failed: ", 0), 0u) << debug_log;
  EXPECT_EQ(CountOf(debug_log, "\n"), 1u);
  EXPECT_EQ(machine.Outstanding(), "");
}

// Keeps the test's own current folder out of the way of ".\debug.log".
class CurrentFolder {
 public:
  explicit CurrentFolder(const std::wstring& folder) {
    GetCurrentDirectoryW(MAX_PATH, before_);
    SetCurrentDirectoryW(folder.c_str());
  }
  ~CurrentFolder() { SetCurrentDirectoryW(before_); }
  CurrentFolder(const CurrentFolder&) = delete;
  CurrentFolder& operator=(const CurrentFolder&) = delete;

 private:
  wchar_t before_[MAX_PATH] = {};
};

TEST(LogSetup, FolderThatCannotBeMadeSendsTheLogToTheCurrentFolder) {
  Machine machine(kNotebook);
  SetAugustMorning(&machine);
  const CurrentFolder current(machine.TempFolder());
  WriteFileText(LogFolder(machine), "a file where the folder should be");
  { Library ostrel(machine); }
  const std::string debug_log = ReadFileText(machine.HostFolder() + L"\\debug.log");
  // Before set-up: time stamp only. The check that follows is not on yet, so that one record is
  // all.
  EXPECT_EQ(WithoutSourceLines(debug_log).rfind(
                "[0829/043626:ERROR:LogSetup.cpp] Can't create directory for log file: ", 0),
            0u)
      << debug_log;
  EXPECT_EQ(CountOf(debug_log, "\n"), 1u);
  EXPECT_TRUE(HasBanner(ReadFileText(machine.TempFolder() + L"\\debug.log")));
}

TEST(LogSetup, ChecksAreNotYetOnWhenTheFolderCannotBeMade) {
  Machine machine(kNotebook);
  const CurrentFolder current(machine.TempFolder());
  machine.SetCommandLine(L"host.exe --enable-dcheck");
  WriteFileText(LogFolder(machine), "");
  { Library ostrel(machine); }
  EXPECT_EQ(CountOf(ReadFileText(machine.HostFolder() + L"\\debug.log"), "\n"), 1u);
}

TEST(LogSetup, FolderIsMadeOneLevelDeepOnly) {
  Machine machine(kNotebook);
  const CurrentFolder current(machine.TempFolder());
  RemoveDirectoryW(machine.AppDataFolder().c_str());
  { Library ostrel(machine); }
  EXPECT_EQ(GetFileAttributesW(LogFolder(machine).c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(CountOf(ReadFileText(machine.HostFolder() + L"\\debug.log"),
                    "Can't create directory for log file: "),
            1u);
}

TEST(LogSetup, NormallyNoMutexIsMade) {
  Machine machine(kNotebook);
  { Library ostrel(machine); }
  EXPECT_EQ(machine.Calls("CreateMutexW"), 0u);
  EXPECT_EQ(SizeOf(machine.HostFolder() + L"\\debug.log"), -1);
}

TEST(LogSetup, RecordBeforeTheLogIsOpenFixesTheMutexForGood) {
  Machine machine(kNotebook);
  machine.SetCommandLine(L"host.exe --v=1x");
  Library ostrel(machine, Library::Build::kWhiteBox);
  EXPECT_EQ(machine.Calls("CreateMutexW"), 1u);
  const uint32_t waits = machine.Calls("WaitForSingleObject");
  EXPECT_GE(waits, 6u);  // the warning, the opening, the banner
  uint32_t count = 0;
  ostrel.white_box().foundation->LogInfo("later", &count);
  EXPECT_EQ(machine.Calls("WaitForSingleObject"), waits + 1);
  EXPECT_EQ(machine.Calls("CreateMutexW"), 1u);

  // The name is global and made of the path that the log had then.
  std::wstring name = machine.HostFolder() + L"\\debug.log";
  for (wchar_t& c : name) {
    if (c == L'\\') c = L'/';
  }
  const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, (L"Global\\" + name).c_str());
  EXPECT_NE(mutex, nullptr);
  if (mutex != nullptr) CloseHandle(mutex);
}

TEST(LogSetup, MutexThatCannotBeMadeIsTriedAgainByTheNextRecord) {
  Machine machine(kNotebook);
  machine.SetCommandLine(L"host.exe --v=1x --vmodule=broken");
  machine.Fail("CreateMutexW", 1, ERROR_ACCESS_DENIED);
  { Library ostrel(machine); }
  EXPECT_EQ(machine.Calls("CreateMutexW"), 2u);
  EXPECT_EQ(CountOf(ReadFileText(machine.HostFolder() + L"\\debug.log"), "\n"), 2u);
  EXPECT_TRUE(HasBanner(machine.Log()));
}

TEST(LogSetup, WhileNoMutexCanBeMadeTheLockStaysOpenForTheInProcessOne) {
  Machine machine(kNotebook);
  machine.SetCommandLine(L"host.exe --v=1x");
  machine.Fail("CreateMutexW", 1, ERROR_ACCESS_DENIED);
  { Library ostrel(machine); }
  EXPECT_EQ(machine.Calls("CreateMutexW"), 1u);  // set-up chose the critical section then
  EXPECT_TRUE(HasBanner(machine.Log()));
}

TEST(LogSetup, WithNoFileAtAllRecordsAreDroppedButErrorsReachStandardError) {
  Machine machine(kNotebook);
  machine.Fail("CreateFileW", 1, ERROR_ACCESS_DENIED, Machine::Repeat::kFromThenOn);
  Library ostrel(machine, Library::Build::kWhiteBox);
  uint32_t count = 0;
  testing::internal::CaptureStderr();
  ostrel.white_box().foundation->LogInfo("unheard", &count);
  ostrel.white_box().foundation->LogError("still heard", &count);
  const std::string standard_error = testing::internal::GetCapturedStderr();
  EXPECT_EQ(CountOf(standard_error, "still heard"), 1u);
  EXPECT_EQ(CountOf(standard_error, "unheard"), 0u);
  EXPECT_EQ(machine.Log(), "");
}

TEST(LogSetup, SecondSetUpStopsAtItsCheck) {
  Machine machine(kNotebook);
  machine.SetCommandLine(L"host.exe --enable-dcheck");
  Library ostrel(machine, Library::Build::kWhiteBox);
  const size_t before = machine.Log().size();
  ostrel.white_box().foundation->SetUpLogging();
  EXPECT_EQ(Messages(machine.Log().substr(before)), "Check failed: was_initialized == false. \n");
}

TEST(LogSetup, OversizedWhileRunningIsNotRotated) {
  Machine machine(kNotebook);
  SetAugustMorning(&machine);
  Library ostrel(machine, Library::Build::kWhiteBox);
  const std::string megabyte(1 << 20, 'x');
  uint32_t count = 0;
  for (int i = 0; i < 21; ++i) ostrel.white_box().foundation->LogInfo(megabyte.c_str(), &count);
  EXPECT_GT(SizeOf(LogPath(machine)), int64_t{kLimit});
  EXPECT_EQ(SizeOf(LogFolder(machine) + L"\\Ostrel.2012-08-29.log"), -1);
}

}  // namespace
