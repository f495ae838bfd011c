#include "tests/support/Environment.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "Common/Win.h"
#include "sim/Failure.h"
#include "sim/Machine.h"

namespace test_support {
namespace {

constexpr ULONGLONG kDefaultPatience = 60;  // seconds
constexpr DWORD kLook = 250;                // ms between two looks of the watchdog
constexpr UINT kEndedByWatchdog = 3;
constexpr UINT kEndedByCrash = 4;

std::atomic<ULONGLONG> g_started{
    0};  // tick count at the start of the running test; 0 between tests
char g_test_name[512];

void Print(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

void PrintCurrentMachine() {
  const sim::Machine* machine = sim::CurrentOrNull();
  Print(machine != nullptr ? sim::ReportOf(*machine) : "(no machine)\n");
}

[[noreturn]] void End(const std::string& why, UINT code) {
  Print("\n" + why + " in " + g_test_name + "\n");
  PrintCurrentMachine();
  TerminateProcess(GetCurrentProcess(), code);
  std::abort();
}

// --- Watchdog.
// ----------------------------------------------------------------------------------------------------

ULONGLONG Patience() {
  const char* seconds = std::getenv("OSTREL_TEST_PATIENCE");
  const ULONGLONG given = seconds != nullptr ? std::strtoull(seconds, nullptr, 10) : 0;
  return (given != 0 ? given : kDefaultPatience) * 1000;
}

DWORD WINAPI Watch(void*) {
  const ULONGLONG patience = Patience();
  for (;; Sleep(kLook)) {
    const ULONGLONG started = g_started;
    if (started != 0 && GetTickCount64() - started > patience) {
      End("[ HANG ] no end after " + std::to_string(patience / 1000) + " s", kEndedByWatchdog);
    }
  }
}

// --- Crashes.
// -----------------------------------------------------------------------------------------------------

// "Ostrel.dll+0x1234": what a debugger or addr2line needs.
std::string Place(const void* address) {
  HMODULE module = nullptr;
  char text[MAX_PATH + 64] = "unknown module";
  GetModuleHandleExA(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      static_cast<const char*>(address), &module);
  if (module != nullptr) GetModuleFileNameA(module, text, MAX_PATH);
  const std::string path = text;
  std::snprintf(text, sizeof(text), "+0x%llx",
                static_cast<unsigned long long>(reinterpret_cast<uint64_t>(address) -
                                                reinterpret_cast<uint64_t>(module)));
  return path.substr(path.find_last_of('\\') + 1) + text;
}

LONG WINAPI OnCrash(EXCEPTION_POINTERS* exception) {
  char code[32];
  std::snprintf(code, sizeof(code), "0x%08lx", exception->ExceptionRecord->ExceptionCode);
  End(std::string("[ CRASH ] exception ") + code + " at " +
          Place(exception->ExceptionRecord->ExceptionAddress),
      kEndedByCrash);
}

[[noreturn]] void OnTerminate() {
  std::string what = "unknown";
  try {
    if (const std::exception_ptr current = std::current_exception())
      std::rethrow_exception(current);
  } catch (const std::exception& error) {
    what = error.what();
  } catch (...) {
  }
  End("[ CRASH ] std::terminate, exception: " + what, kEndedByCrash);
}

// --- Before and after each test.
// ----------------------------------------------------------------------------------

void FailTest(const std::string& text) { ADD_FAILURE() << text; }

void CheckNothingIsLeft() {
  if (sim::CurrentOrNull() != nullptr) ADD_FAILURE() << "the test left a machine behind";
  for (const char* name : {"Ostrel.dll", "OstrelWhiteBox.dll"}) {
    if (GetModuleHandleA(name) != nullptr) ADD_FAILURE() << "the test left " << name << " loaded";
  }
}

class Around : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(const testing::TestInfo& test) override {
    std::snprintf(g_test_name, sizeof(g_test_name), "%s.%s", test.test_suite_name(), test.name());
    sim::TakeLastReport();
    g_started = GetTickCount64();
  }

  void OnTestEnd(const testing::TestInfo& test) override {
    g_started = 0;
    CheckNothingIsLeft();
    if (test.result()->Failed()) Print(sim::TakeLastReport());
  }
};

}  // namespace

void InstallEnvironment() {
  setvbuf(stdout, nullptr, _IOFBF, 1 << 16);
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  SetUnhandledExceptionFilter(OnCrash);
  std::set_terminate(OnTerminate);
  sim::SetFailureSink(FailTest);
  // gtest's own printer stands first; what a listener adds at the end of a test still counts for
  // that test.
  testing::UnitTest::GetInstance()->listeners().Append(new Around);
  const HANDLE watchdog = CreateThread(nullptr, 0, Watch, nullptr, 0, nullptr);
  if (watchdog != nullptr) CloseHandle(watchdog);
}

}  // namespace test_support
