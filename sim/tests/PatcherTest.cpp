#include "sim/Patcher.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "sim/Machine.h"
#include "sim/tests/Fakes.h"
#include "sim/tests/SampleLibrary.h"

namespace sim {
namespace {

void* KeepReal(const Import&, void* real) { return real; }

// How often DllMain of the sample ran: it prints, which Windows does by raising an exception.
class AttachCounter {
 public:
  AttachCounter() : handler_(AddVectoredExceptionHandler(1, Count)) { count() = 0; }
  ~AttachCounter() { RemoveVectoredExceptionHandler(handler_); }
  AttachCounter(const AttachCounter&) = delete;
  AttachCounter& operator=(const AttachCounter&) = delete;

  static uint32_t& count() {
    static uint32_t counted = 0;
    return counted;
  }

 private:
  static constexpr DWORD kPrinted = 0x40010006;  // DBG_PRINTEXCEPTION_C
  static LONG CALLBACK Count(EXCEPTION_POINTERS* facts) {
    if (facts->ExceptionRecord->ExceptionCode == kPrinted) ++count();
    return EXCEPTION_CONTINUE_SEARCH;
  }
  void* handler_;
};

// Throws in the middle of the table: some imports come before it, some behind.
void* ThrowForSleep(const Import& import, void* real) {
  if (import.name == "Sleep") throw std::runtime_error("no Sleep today");
  return real;
}

TEST(Patcher, NoCodeOfTheDllRunsWhenAnImportCannotBeResolved) {
  Machine machine(kSampleMachine);
  AttachCounter attached;
  {
    SampleLibrary sample;
    EXPECT_EQ(attached.count(), 1u);
  }
  std::string why;
  try {
    LoadPatched(SampleLibrary::Path(), ThrowForSleep);
  } catch (const std::runtime_error& error) {
    why = error.what();
  }
  EXPECT_NE(why.find("SimSample.dll cannot be patched: no Sleep today"), std::string::npos) << why;
  EXPECT_EQ(attached.count(), 1u);
  EXPECT_EQ(GetModuleHandleW(SampleLibrary::Path().c_str()), nullptr);
  SampleLibrary again;  // the file itself is untouched
  EXPECT_EQ(attached.count(), 2u);
}

TEST(Patcher, DllMainMeetsSimulatedFunctions) {
  Machine machine(kSampleMachine);
  SampleLibrary sample;
  // The virtual tick count at the machine's time 0, which no real machine shows.
  EXPECT_EQ(sample.TicksAtLoad(), 600000u);
}

TEST(Patcher, UnlistedImportIsATrapThatNamesIt) {
  Machine machine(kSampleMachine);
  SampleLibrary sample;
  CaughtFailures failures;
  EXPECT_EQ(sample.CallUnlisted(), FALSE);
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_EQ(failures.list()[0],
            "an import that nobody listed was called: kernel32.dll!SetComputerNameA");
}

TEST(Patcher, OnlyTheLoadedDllIsPatched) {
  Machine machine(kSampleMachine);
  SampleLibrary sample;
  EXPECT_NE(GetTickCount64(), 600000u);  // this program's own import
  sample.Sleep(123456);
  EXPECT_EQ(machine.Now(), 123456u);
}

TEST(Patcher, UnloadAndLoadGiveFreshState) {
  Machine machine(kSampleMachine);
  {
    SampleLibrary sample;
    EXPECT_EQ(sample.Count(), 1u);
    EXPECT_EQ(sample.Count(), 2u);
  }
  SampleLibrary sample;
  EXPECT_EQ(sample.Count(), 1u);
}

TEST(Patcher, RunTimeOfTheDllWorksUnderThePatches) {
  Machine machine(kSampleMachine);
  SampleLibrary sample;
  EXPECT_EQ(sample.UseRunTime(), 3u + 20u);
}

TEST(Patcher, SecondLoadIsRefused) {
  Machine machine(kSampleMachine);
  SampleLibrary sample;
  EXPECT_THROW(LoadPatched(SampleLibrary::Path(), KeepReal), std::runtime_error);
}

TEST(Patcher, MissingFileIsRefused) {
  EXPECT_THROW(LoadPatched(L"C:\\no\\such.dll", KeepReal), std::runtime_error);
}

TEST(Patcher, ListsImportsByModuleAndName) {
  Machine machine(kSampleMachine);
  SampleLibrary sample;
  const std::vector<Import> imports = ListImports(sample.module());
  const auto is_set_timer = [](const Import& import) {
    return import.module == "user32.dll" && import.name == "SetTimer";
  };
  EXPECT_EQ(std::count_if(imports.begin(), imports.end(), is_set_timer), 1);
}

TEST(Patcher, TrapsOfOneTextAreOneTrap) {
  EXPECT_EQ(MakeTrap("a!b"), MakeTrap("a!b"));
  EXPECT_NE(MakeTrap("a!b"), MakeTrap("a!c"));
}

TEST(Patcher, TrapAnswersZeroWhateverItsArguments) {
  CaughtFailures failures;
  using Function = uint64_t (*)(uint64_t, double, const char*, uint64_t, uint64_t, uint64_t);
  const auto trap = reinterpret_cast<Function>(MakeTrap("some!Function"));
  EXPECT_EQ(trap(1, 2.0, "three", 4, 5, 6), 0u);
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_EQ(failures.list()[0], "some!Function");
}

}  // namespace
}  // namespace sim
