// What the library leaves in the process around it: threads, profile files, lines for a debugger,
// device lists of the two kinds.
#include <gtest/gtest.h>

#include <string>

#include "sim/Ledger.h"
#include "sim/tests/FaceCalls.h"
#include "sim/tests/Fakes.h"

// After windows.h.
#include <setupapi.h>

namespace sim {
namespace {

constexpr char kMachine[] = "win7 intel: internal 1366x768 active";
constexpr GUID kDisplayClass = {
    0x4D36E968, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

DWORD WINAPI Answer(void* number) { return *static_cast<DWORD*>(number); }

TEST(HostTraces, ThreadRunsAndIsInTheLedgerUntilItsHandleIsClosed) {
  Machine machine(kMachine);
  DWORD number = 42;
  DWORD id = 0;
  const HANDLE thread = FAKE(CreateThread)(nullptr, 0, Answer, &number, 0, &id);
  ASSERT_NE(thread, nullptr);
  EXPECT_NE(id, 0u);
  EXPECT_EQ(FAKE(WaitForSingleObject)(thread, INFINITE), WAIT_OBJECT_0);
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, 42u);
  EXPECT_EQ(machine.Outstanding().rfind("thread 0x", 0), 0u);
  EXPECT_TRUE(FAKE(CloseHandle)(thread));
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(HostTraces, ThreadThatCannotBeStartedIsTold) {
  Machine machine(kMachine);
  machine.Fail("CreateThread", 1, ERROR_NO_SYSTEM_RESOURCES);
  EXPECT_EQ(FAKE(CreateThread)(nullptr, 0, Answer, nullptr, 0, nullptr), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_SYSTEM_RESOURCES));
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(HostTraces, ProfileFileIsReallyWrittenAndToldAsARead) {
  Machine machine(kMachine);
  const std::string file = Narrow(machine.TempFolder()) + "\\some.ini";
  EXPECT_TRUE(FAKE(WritePrivateProfileStringA)("S", "K", "1", file.c_str()));
  EXPECT_EQ(machine.TakeJournal(), "");
  machine.JournalReads(true);
  EXPECT_TRUE(FAKE(WritePrivateProfileStringA)("S", "K", "2", file.c_str()));
  EXPECT_EQ(machine.TakeJournal(), "WritePrivateProfileStringA([S] K=2)=1\n");
  EXPECT_EQ(GetPrivateProfileIntA("S", "K", 0, file.c_str()), 2u);
}

TEST(HostTraces, RefusedProfileFileStaysAsItWas) {
  Machine machine(kMachine);
  const std::string file = Narrow(machine.TempFolder()) + "\\some.ini";
  FAKE(WritePrivateProfileStringA)("S", "K", "1", file.c_str());
  machine.Fail("WritePrivateProfileStringA", 1);
  EXPECT_FALSE(FAKE(WritePrivateProfileStringA)("S", "K", "2", file.c_str()));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  EXPECT_EQ(GetPrivateProfileIntA("S", "K", 0, file.c_str()), 1u);
}

TEST(HostTraces, LineForADebuggerIsOneLineOfTheJournal) {
  Machine machine(kMachine);
  FAKE(OutputDebugStringW)(L"unseen");
  EXPECT_EQ(machine.TakeJournal(), "");
  machine.JournalReads(true);
  FAKE(OutputDebugStringW)(L"one\ntwo\n");
  FAKE(OutputDebugStringW)(nullptr);
  EXPECT_EQ(machine.TakeJournal(), "OutputDebugStringW(one\\ntwo\\n)=0\nOutputDebugStringW()=0\n");
}

TEST(HostTraces, HostIsA32BitProcessWhereTheEnvironmentSaysSo) {
  Machine machine(kMachine);
  BOOL answer = TRUE;
  EXPECT_TRUE(FAKE(IsWow64Process)(GetCurrentProcess(), &answer));
  EXPECT_FALSE(answer);
  machine.SetEnvironment("PROCESSOR_ARCHITEW6432", "AMD64");
  EXPECT_TRUE(FAKE(IsWow64Process)(GetCurrentProcess(), &answer));
  EXPECT_TRUE(answer);
  machine.Fail("IsWow64Process", 1, ERROR_ACCESS_DENIED);
  EXPECT_FALSE(FAKE(IsWow64Process)(GetCurrentProcess(), &answer));
}

TEST(HostTraces, LedgerTellsTheTwoKindsOfDeviceListsApart) {
  Machine machine(kMachine);
  const HDEVINFO narrow =
      FAKE(SetupDiGetClassDevsA)(&kDisplayClass, nullptr, nullptr, DIGCF_PRESENT);
  const HDEVINFO wide = FAKE(SetupDiGetClassDevsW)(&kDisplayClass, nullptr, nullptr, DIGCF_PRESENT);
  EXPECT_EQ(machine.Outstanding().rfind("device list 0x", 0), 0u);
  EXPECT_NE(machine.Outstanding().find("\nwide device list 0x"), std::string::npos);
  EXPECT_TRUE(FAKE(SetupDiDestroyDeviceInfoList)(narrow));
  EXPECT_EQ(machine.Outstanding().rfind("wide device list 0x", 0), 0u);
  EXPECT_TRUE(FAKE(SetupDiDestroyDeviceInfoList)(wide));
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(HostTraces, WhatIsWrittenOffIsHeldNoLonger) {
  Ledger ledger;
  ledger.Take("list", 1);
  ledger.Take("list", 2);
  ledger.Take("list", 2);
  ledger.Take("key", 1);
  ledger.WriteOff("list");
  EXPECT_EQ(ledger.Outstanding(), "key 0x1\n");
  EXPECT_FALSE(ledger.Give("list", 1));
}

}  // namespace
}  // namespace sim
