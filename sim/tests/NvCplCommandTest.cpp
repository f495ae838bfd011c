// The command of the simulated control-panel library, and the program that runs it.
#include <gtest/gtest.h>

#include "sim/faces/Programs.h"
#include "sim/tests/FaceCalls.h"

namespace sim {
namespace {

constexpr char kPair[] = "xp nvidia: internal 1280x800 active, crt 1280x1024";

/// Starts a program, gives its handles back. @return what CreateProcessA said, and the topology
std::string Start(Machine* machine, const std::string& line) {
  std::string writable = line;
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started = {};
  const BOOL done = FAKE(CreateProcessA)(nullptr, writable.data(), nullptr, nullptr, FALSE, 0,
                                         nullptr, nullptr, &startup, &started);
  EXPECT_EQ(writable, line);
  EXPECT_EQ(machine->Outstanding().find("process "), done ? 0u : std::string::npos);
  if (done) {
    EXPECT_NE(started.hProcess, started.hThread);
    EXPECT_NE(machine->Outstanding().find("thread "), std::string::npos);
    EXPECT_TRUE(FAKE(CloseHandle)(started.hProcess));
    EXPECT_TRUE(FAKE(CloseHandle)(started.hThread));
  }
  EXPECT_EQ(machine->Outstanding(), "");
  return std::to_string(done) + " " + machine->Topology();
}

std::string SetView(Machine* machine, const std::string& words) {
  return Start(machine, "rundll32.exe NvCpl.DLL,dtcfg setview " + words);
}

// --- The command.

TEST(NvCplCommand, SetsEveryView) {
  Machine machine(kPair);
  EXPECT_EQ(SetView(&machine, "0 clone DA AA"), "1 clone internal+crt");
  EXPECT_EQ(SetView(&machine, "0 dualview DA AA"), "1 extend internal+crt");
  EXPECT_EQ(SetView(&machine, "0 standard AA"), "1 single crt");
  EXPECT_EQ(SetView(&machine, "1 standard DA"), "1 single internal");
  EXPECT_EQ(machine.TakeJournal(),
            "CreateProcessA(rundll32.exe NvCpl.DLL,dtcfg setview 0 clone DA AA)=1\n"
            "dtcfg(setview 0 clone DA AA)=1\n"
            "CreateProcessA(rundll32.exe NvCpl.DLL,dtcfg setview 0 dualview DA AA)=1\n"
            "dtcfg(setview 0 dualview DA AA)=1\n"
            "CreateProcessA(rundll32.exe NvCpl.DLL,dtcfg setview 0 standard AA)=1\n"
            "dtcfg(setview 0 standard AA)=1\n"
            "CreateProcessA(rundll32.exe NvCpl.DLL,dtcfg setview 1 standard DA)=1\n"
            "dtcfg(setview 1 standard DA)=1\n");
}

TEST(NvCplCommand, FirstDisplayOfAnExtendedDesktopIsThePrimary) {
  Machine machine(kPair);
  EXPECT_EQ(SetView(&machine, "0 dualview AA DA"), "1 extend internal+crt");
  EXPECT_EQ(Now(kFirst), "1280x1024x32@60 at 0,0");
  EXPECT_EQ(Now(kSecond), "1280x800x32@60 at 1280,0");
}

TEST(NvCplCommand, SizesComeBackAsTheyWereLast) {
  Machine machine(kPair);
  SetView(&machine, "0 standard AA");
  EXPECT_EQ(Now(kFirst), "1280x1024x32@60 at 0,0");
  EXPECT_EQ(Change(kFirst, Sized(800, 600), CDS_UPDATEREGISTRY), DISP_CHANGE_SUCCESSFUL);
  SetView(&machine, "0 standard DA");
  EXPECT_EQ(Now(kFirst), "1280x800x32@60 at 0,0");
  SetView(&machine, "0 standard AA");
  EXPECT_EQ(Now(kFirst), "800x600x32@60 at 0,0");
}

TEST(NvCplCommand, LeavesOtherAdaptersAlone) {
  Machine machine("xp intel, nvidia: internal 1280x800 active, crt@2 800x600, dvi@2 800x600");
  EXPECT_EQ(SetView(&machine, "0 clone AA DA"), "1 extend internal+(crt+dvi)");
}

TEST(NvCplCommand, RefusalsChangeNothing) {
  Machine machine("xp nvidia: internal 1280x800 active, crt 1280x1024, hdmi 800x600, dvi");
  for (const char* words :
       {"", "0", "0 clone", "0 clone DA", "0 clone DA AA DB", "0 standard", "0 standard DA AA",
        "0 dualview DA", "0 triple DA AA", "0 clone DA DA", "0 clone DA XX", "0 standard DC",
        "9 clone DA AA", "x clone DA AA", "clone DA AA", "0 Clone DA AA", "0 clone da aa"}) {
    EXPECT_EQ(SetView(&machine, words), "1 single internal") << words;
    EXPECT_NE(machine.TakeJournal().find(")=0\n"), std::string::npos) << words;
  }
  EXPECT_EQ(Start(&machine, "rundll32.exe NvCpl.DLL,dtcfg other 0 clone DA AA"),
            "1 single internal");
}

TEST(NvCplCommand, CloneOverTwoAdaptersIsRefused) {
  Machine machine("xp nvidia, nvidia: internal 1280x800 active, crt@2 800x600");
  EXPECT_EQ(SetView(&machine, "0 clone DA AA"), "1 single internal");
}

TEST(NvCplCommand, FaultIsTheProgramsOwn) {
  Machine machine(kPair);
  machine.Fail("dtcfg", 1);
  EXPECT_EQ(SetView(&machine, "0 clone DA AA"), "1 single internal");
}

// --- The program.

TEST(Process, RefusedStartChangesNothing) {
  Machine machine(kPair);
  machine.Fail("CreateProcessA", 1);
  EXPECT_EQ(SetView(&machine, "0 clone DA AA"), "0 single internal");
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  machine.Fail("CreateProcessA", 1, ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(SetView(&machine, "0 clone DA AA"), "0 single internal");
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY));
}

TEST(Process, ProgramMayWorkBesideTheLibrary) {
  Machine machine(kPair);
  LetProgramsTake(machine, 400);
  machine.Advance(100);
  EXPECT_EQ(SetView(&machine, "0 clone DA AA"), "1 single internal");
  EXPECT_EQ(machine.TakeJournal(),
            "CreateProcessA(rundll32.exe NvCpl.DLL,dtcfg setview 0 clone DA AA)=1\n");
  machine.Advance(399);
  EXPECT_EQ(machine.Topology(), "single internal");
  machine.Advance(1);
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
  EXPECT_EQ(machine.TakeJournal(), "dtcfg(setview 0 clone DA AA)=1\n");
  LetProgramsTake(machine, 0);
  EXPECT_EQ(SetView(&machine, "0 standard DA"), "1 single internal");
}

// A window that counts the changes it is told of.
uint32_t g_changes = 0;
LRESULT CALLBACK CountChanges(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_DISPLAYCHANGE) ++g_changes;
  return DefWindowProcA(window, message, wparam, lparam);
}

TEST(Process, ViewThatChangesIsToldToWindows) {
  Machine machine(kPair);
  const HWND window =
      FAKE(CreateWindowExA)(0, "STATIC", "", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
  SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CountChanges));
  const auto changes_of = [&](const char* line) {
    g_changes = 0;
    std::string writable = line;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    FAKE(CreateProcessA)
    (nullptr, writable.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started);
    const uint32_t at_once = g_changes;
    machine.Advance(500);
    FAKE(CloseHandle)(started.hProcess);
    FAKE(CloseHandle)(started.hThread);
    return std::to_string(at_once) + " " + std::to_string(g_changes);
  };
  EXPECT_EQ(changes_of("rundll32.exe NvCpl.DLL,dtcfg setview 0 clone DA AA"), "1 1");
  EXPECT_EQ(changes_of("rundll32.exe NvCpl.DLL,dtcfg setview 0 clone DA XX"), "0 0");
  LetProgramsTake(machine, 500);
  EXPECT_EQ(changes_of("rundll32.exe NvCpl.DLL,dtcfg setview 0 standard DA"), "0 1");
  FAKE(DestroyWindow)(window);
}

TEST(Process, OtherProgramsAreNotThere) {
  Machine machine(kPair);
  EXPECT_EQ(Start(&machine, "notepad.exe NvCpl.DLL,dtcfg setview 0 clone DA AA"),
            "0 single internal");
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST(Process, ProgramThatFindsNoLibraryOrEntryStartsAndDoesNothing) {
  Machine machine(kPair);
  EXPECT_EQ(Start(&machine, "rundll32.exe"), "1 single internal");
  EXPECT_EQ(Start(&machine, "rundll32.exe Other.DLL,dtcfg setview 0 clone DA AA"),
            "1 single internal");
  EXPECT_EQ(Start(&machine, "rundll32.exe NvCpl.DLL,Dtcfg setview 0 clone DA AA"),
            "1 single internal");
  EXPECT_EQ(Start(&machine, "rundll32.exe NvCpl.DLL setview 0 clone DA AA"), "1 single internal");
  Machine other("xp intel: internal 1280x800 active, crt 800x600");
  EXPECT_EQ(SetView(&other, "0 clone DA AA"), "1 single internal");
}

TEST(Process, UnusualArgumentsAreTold) {
  Machine machine(kPair);
  char line[] = "notepad.exe";
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started = {};
  FAKE(CreateProcessA)(line, line, nullptr, nullptr, TRUE, 8, nullptr, "C:\\", &startup, &started);
  EXPECT_EQ(machine.TakeJournal(),
            "CreateProcessA(notepad.exe application=notepad.exe inherit flags=8 environment or "
            "folder)=0\n");
}

TEST(Process, RecordsAreNeeded) {
  Machine machine(kPair);
  char line[] = "rundll32.exe";
  STARTUPINFOA startup = {};
  PROCESS_INFORMATION started = {};
  EXPECT_FALSE(FAKE(CreateProcessA)(nullptr, line, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                    &startup, &started));  // without its size
  startup.cb = sizeof startup;
  EXPECT_FALSE(FAKE(CreateProcessA)(nullptr, line, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                    &startup, nullptr));
  EXPECT_FALSE(FAKE(CreateProcessA)(nullptr, nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                    &startup, &started));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

}  // namespace
}  // namespace sim
