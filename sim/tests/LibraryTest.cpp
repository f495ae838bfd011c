#include "sim/Library.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "sim/FaceTable.h"
#include "sim/MachineState.h"
#include "sim/Patcher.h"
#include "sim/RealImports.h"
#include "sim/tests/Fakes.h"
#include "sim/tests/SampleLibrary.h"

namespace sim {
namespace {

// Another file for the time of a test.
class OtherFile {
 public:
  explicit OtherFile(const std::wstring& path) { _putenv_s("OSTREL_DLL", Narrow(path).c_str()); }
  ~OtherFile() { _putenv_s("OSTREL_DLL", ""); }
  OtherFile(const OtherFile&) = delete;
  OtherFile& operator=(const OtherFile&) = delete;
};

std::string WhyNotLoaded(Machine& machine) {
  try {
    Library library(machine);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

TEST(Library, EveryImportIsSimulatedOrListedAsReal) {
  Machine machine(kSampleMachine);
  for (const Library::Build build : {Library::Build::kShipped, Library::Build::kWhiteBox}) {
    Library ostrel(machine, build);
    for (const Import& import : ListImports(ostrel.module())) {
      EXPECT_TRUE(FindEntry(import.module, import.name) != nullptr ||
                  FindEntryByName(import.name) != nullptr ||
                  IsRealImport(import.module, import.name))
          << import.module << "!" << import.name;
    }
  }
}

TEST(Library, LoadingAndUnloadingLeavesNothingBehind) {
  Machine machine(kSampleMachine);
  {
    Library ostrel(machine);
    EXPECT_NE(ostrel.module(), nullptr);
  }
  EXPECT_EQ(machine.Outstanding(), "");
  EXPECT_TRUE(machine.state().windows.classes.empty());
  EXPECT_EQ(GetModuleHandleA("Ostrel.dll"), nullptr);
}

TEST(Library, LoadChangesNothingOnTheMachine) {
  Machine machine(kSampleMachine);
  Library ostrel(machine);
  EXPECT_EQ(machine.TakeJournal(), "");
}

TEST(Library, SecondLibraryAtATimeIsRefused) {
  Machine machine(kSampleMachine);
  Library ostrel(machine);
  EXPECT_NE(WhyNotLoaded(machine).find("in the process already"), std::string::npos);
}

TEST(Library, MissingFileIsToldByName) {
  Machine machine(kSampleMachine);
  OtherFile other(machine.HostFolder() + L"\\NoSuch.dll");
  EXPECT_NE(WhyNotLoaded(machine).find("NoSuch.dll does not load, error 126"), std::string::npos);
}

TEST(Library, MissingExportIsToldByName) {
  Machine machine(kSampleMachine);
  OtherFile other(SampleLibrary::Path());
  EXPECT_EQ(WhyNotLoaded(machine), "the DLL has no export Ostrel_Init");
}

TEST(Library, LeakFailsTheTestUnlessForgiven) {
  Machine machine(kSampleMachine);
  CaughtFailures failures;
  {
    Library ostrel(machine);
    LedgerTake("key", reinterpret_cast<const void*>(0x20));
  }
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_EQ(failures.list()[0], "not given back by the unload of the DLL:\nkey 0x20\n");
  Library again(machine);
  LedgerTake("key", reinterpret_cast<const void*>(0x20));
  again.ForgiveLeaks();
  again.Unload();
  EXPECT_EQ(failures.list().size(), 1u);
}

TIMERPROC ProcedureInside(const Library& library) {
  const FARPROC inside = GetProcAddress(library.module(), "Ostrel_Init");
  return reinterpret_cast<TIMERPROC>(reinterpret_cast<void*>(inside));
}

TEST(Library, TimerLeftArmedFailsTheTestUnlessForgiven) {
  Machine machine(kSampleMachine);
  CaughtFailures failures;
  UINT_PTR id = 0;
  {
    Library ostrel(machine);
    id = SIM_FAKE(SetTimer)(nullptr, 0, 100, ProcedureInside(ostrel));
  }
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_EQ(failures.list()[0],
            "left armed by the unload of the DLL: timer " + std::to_string(id) + ", period 100");
  Library again(machine);
  SIM_FAKE(SetTimer)(nullptr, 0, 100, ProcedureInside(again));
  again.ForgiveLeaks();
  again.Unload();
  EXPECT_EQ(failures.list().size(), 1u);
}

TEST(Library, UnloadUnregistersItsClassesAndDropsItsTimers) {
  Machine machine(kSampleMachine);
  Library ostrel(machine);
  ostrel.ForgiveLeaks();  // of the timer
  WNDCLASSEXW record = {};
  record.cbSize = sizeof(record);
  record.lpfnWndProc = DefWindowProcW;
  record.hInstance = GetModuleHandleW(nullptr);
  record.lpszClassName = L"LeftByTheLibrary";
  SIM_FAKE(RegisterClassExW)(&record);
  SIM_FAKE(SetTimer)(nullptr, 0, 100, ProcedureInside(ostrel));
  EXPECT_EQ(machine.ArmedTimers().size(), 1u);
  ostrel.Unload();
  EXPECT_TRUE(machine.ArmedTimers().empty());
  WNDCLASSEXW found = {};
  found.cbSize = sizeof(found);
  EXPECT_FALSE(GetClassInfoExW(record.hInstance, record.lpszClassName, &found));
}

TEST(Library, WindowLeftOpenIsALeakAndIsDestroyedBeforeTheCodeGoes) {
  Machine machine(kSampleMachine);
  CaughtFailures failures;
  HWND window = nullptr;
  {
    Library ostrel(machine);
    window = SIM_FAKE(CreateWindowExA)(0, "STATIC", "", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr,
                                       nullptr, nullptr);
    EXPECT_TRUE(IsWindow(window));
  }
  EXPECT_FALSE(IsWindow(window));
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_NE(failures.list()[0].find("window 0x"), std::string::npos);
}

TEST(Library, WhiteBoxIsInItsOwnBuildOnly) {
  Machine machine(kSampleMachine);
  {
    Library white(machine, Library::Build::kWhiteBox);
    EXPECT_NE(&white.white_box(), nullptr);
  }
  Library shipped(machine);
  EXPECT_THROW(shipped.white_box(), std::runtime_error);
}

TEST(Library, LoadReadsNoDisplay) {
  Machine machine(kSampleMachine);
  Library ostrel(machine);
  EXPECT_EQ(machine.Calls("EnumDisplayDevicesA"), 0u);
  EXPECT_EQ(machine.Calls("SetupDiGetClassDevsA"), 0u);
  EXPECT_EQ(machine.Calls("CreateMutexW"), 0u);
}

}  // namespace
}  // namespace sim
