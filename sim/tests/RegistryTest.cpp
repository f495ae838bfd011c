#include <gtest/gtest.h>

#include "sim/tests/FaceCalls.h"
#include "sim/tests/Fakes.h"

// After windows.h.
#include <shlwapi.h>

namespace sim {
namespace {

constexpr char kMachine[] = "win7 intel: internal 1366x768 active";

HKEY Open(const char* path, REGSAM access = KEY_READ) {
  HKEY key = nullptr;
  const LSTATUS status = FAKE(RegOpenKeyExA)(HKEY_LOCAL_MACHINE, path, 0, access, &key);
  EXPECT_EQ(status, ERROR_SUCCESS) << path;
  return key;
}

TEST(Registry, EveryMachineHasAProcessor) {
  Machine machine(kMachine);
  const HKEY key = Open("HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0");
  char text[256] = {};
  DWORD size = sizeof text;
  DWORD type = 0;
  EXPECT_EQ(FAKE(RegQueryValueExA)(key, "VendorIdentifier", nullptr, &type,
                                   reinterpret_cast<LPBYTE>(text), &size),
            ERROR_SUCCESS);
  EXPECT_STREQ(text, "GenuineIntel");
  EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
  EXPECT_EQ(size, 13u);
  FAKE(RegCloseKey)(key);
}

TEST(Registry, KeyThatNobodyPutThereIsNotFound) {
  Machine machine(kMachine);
  HKEY key = nullptr;
  EXPECT_EQ(FAKE(RegOpenKeyExA)(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft", 0, KEY_READ, &key),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(key, nullptr);
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(Registry, NamesDifferNotByCaseAndParentsExistWithTheirChildren) {
  Machine machine(kMachine);
  machine.model().registry["HKLM\\SOFTWARE\\Harbor\\Deep"]["Value"] = "text";
  const HKEY parent = Open("software\\HARBOR");
  HKEY key = nullptr;
  ASSERT_EQ(FAKE(RegOpenKeyExW)(parent, L"deep", 0, KEY_READ, &key), ERROR_SUCCESS);
  wchar_t text[8] = {};
  DWORD size = sizeof text;
  EXPECT_EQ(FAKE(RegQueryValueExW)(key, L"VALUE", nullptr, nullptr, reinterpret_cast<LPBYTE>(text),
                                   &size),
            ERROR_SUCCESS);
  EXPECT_STREQ(text, L"text");
  EXPECT_EQ(size, 10u);
  FAKE(RegCloseKey)(key);
  FAKE(RegCloseKey)(parent);
}

TEST(Registry, NumbersAndBytesHaveTheirTypes) {
  Machine machine(kMachine);
  auto& values = machine.model().registry["HKLM\\K"];
  values["Number"] = "dword:0x10";
  values["Bytes"] = "hex:0aFF";
  const HKEY key = Open("K");
  DWORD number = 0;
  DWORD size = sizeof number;
  DWORD type = 0;
  EXPECT_EQ(FAKE(RegQueryValueExA)(key, "Number", nullptr, &type, reinterpret_cast<LPBYTE>(&number),
                                   &size),
            ERROR_SUCCESS);
  EXPECT_EQ(number, 16u);
  EXPECT_EQ(type, static_cast<DWORD>(REG_DWORD));
  BYTE bytes[4] = {};
  size = sizeof bytes;
  EXPECT_EQ(FAKE(RegQueryValueExA)(key, "Bytes", nullptr, &type, bytes, &size), ERROR_SUCCESS);
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(bytes[1], 0xFF);
  FAKE(RegCloseKey)(key);
}

TEST(Registry, BufferTooSmallIsToldTheRoomAndNotWritten) {
  Machine machine(kMachine);
  machine.model().registry["HKLM\\K"]["V"] = "longer";
  const HKEY key = Open("K");
  BYTE bytes[3] = {};
  DWORD size = sizeof bytes;
  EXPECT_EQ(FAKE(RegQueryValueExA)(key, "V", nullptr, nullptr, bytes, &size), ERROR_MORE_DATA);
  EXPECT_EQ(size, 7u);
  EXPECT_EQ(bytes[0], 0);
  EXPECT_EQ(FAKE(RegQueryValueExA)(key, "V", nullptr, nullptr, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(FAKE(RegQueryValueExA)(key, "W", nullptr, nullptr, nullptr, &size),
            ERROR_FILE_NOT_FOUND);
  FAKE(RegCloseKey)(key);
}

TEST(Registry, WritingNeedsTheRightAndIsJournalled) {
  Machine machine(kMachine);
  machine.model().registry["HKLM\\K"]["V"] = "dword:1";
  const DWORD zero = 0;
  const auto* bytes = reinterpret_cast<const BYTE*>(&zero);
  HKEY key = Open("K", KEY_READ);
  EXPECT_EQ(FAKE(RegSetValueExW)(key, L"V", 0, REG_DWORD, bytes, sizeof zero), ERROR_ACCESS_DENIED);
  FAKE(RegCloseKey)(key);
  EXPECT_EQ(machine.model().registry["HKLM\\K"]["V"], "dword:1");
  key = Open("k", KEY_READ | KEY_WRITE);
  EXPECT_EQ(FAKE(RegSetValueExW)(key, L"v", 0, REG_DWORD, bytes, sizeof zero), ERROR_SUCCESS);
  FAKE(RegCloseKey)(key);
  EXPECT_EQ(machine.model().registry["HKLM\\K"]["V"], "dword:0");
  EXPECT_EQ(machine.model().registry["HKLM\\K"].size(), 1u);
  EXPECT_EQ(machine.TakeJournal(),
            "RegSetValueExW(HKLM\\K V dword:0)=5\n"
            "RegSetValueExW(HKLM\\k v dword:0)=0\n");
}

TEST(Registry, SubkeysAreListedInOrder) {
  Machine machine(kMachine);
  machine.model().registry["HKLM\\K\\A\\X"];
  machine.model().registry["HKLM\\K\\A\\Y"];
  machine.model().registry["HKLM\\K\\B"];
  const HKEY key = Open("K");
  char name[8] = {};
  DWORD size = sizeof name;
  EXPECT_EQ(FAKE(RegEnumKeyExA)(key, 1, name, &size, nullptr, nullptr, nullptr, nullptr),
            ERROR_SUCCESS);
  EXPECT_STREQ(name, "B");
  EXPECT_EQ(size, 1u);
  size = 1;
  EXPECT_EQ(FAKE(RegEnumKeyExA)(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr),
            ERROR_MORE_DATA);
  wchar_t wide[8] = {};
  size = 8;
  EXPECT_EQ(FAKE(RegEnumKeyExW)(key, 2, wide, &size, nullptr, nullptr, nullptr, nullptr),
            ERROR_NO_MORE_ITEMS);
  FAKE(RegCloseKey)(key);
}

TEST(Registry, KeyIsInTheLedgerUntilItIsClosed) {
  Machine machine(kMachine);
  const HKEY key = Open("HARDWARE");
  EXPECT_NE(machine.Outstanding().find("registry key"), std::string::npos);
  EXPECT_EQ(FAKE(RegCloseKey)(key), ERROR_SUCCESS);
  EXPECT_EQ(machine.Outstanding(), "");
  CaughtFailures failures;
  EXPECT_EQ(FAKE(RegCloseKey)(key), ERROR_INVALID_HANDLE);
  EXPECT_EQ(failures.list().size(), 1u);
}

TEST(Registry, ShellFunctionReadsInOneCall) {
  Machine machine(kMachine);
  machine.model().registry["HKLM\\SOFTWARE\\DisplayLink\\Core"]["AddOn"] = "C:\\a.dll";
  char path[260] = {};
  DWORD size = sizeof path;
  EXPECT_EQ(FAKE(SHGetValueA)(HKEY_LOCAL_MACHINE, "SOFTWARE\\DisplayLink\\Core", "AddOn", nullptr,
                              path, &size),
            ERROR_SUCCESS);
  EXPECT_STREQ(path, "C:\\a.dll");
  EXPECT_EQ(FAKE(SHGetValueA)(HKEY_LOCAL_MACHINE, "SOFTWARE\\Other", "AddOn", nullptr, path, &size),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(Registry, DeclaredFaultAnswersInPlaceOfTheFunction) {
  Machine machine(kMachine);
  machine.Fail("RegOpenKeyExA", 1, ERROR_ACCESS_DENIED);
  HKEY key = nullptr;
  EXPECT_EQ(FAKE(RegOpenKeyExA)(HKEY_LOCAL_MACHINE, "HARDWARE", 0, KEY_READ, &key),
            ERROR_ACCESS_DENIED);
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(Registry, KeyStaysOpenWhenClosingItFails) {
  Machine machine(kMachine);
  HKEY key = nullptr;
  ASSERT_EQ(FAKE(RegOpenKeyExA)(HKEY_LOCAL_MACHINE, "HARDWARE", 0, KEY_READ, &key), ERROR_SUCCESS);
  machine.Fail("RegCloseKey", 1);
  EXPECT_EQ(FAKE(RegCloseKey)(key), ERROR_INVALID_HANDLE);
  EXPECT_NE(machine.Outstanding(), "");
  EXPECT_EQ(FAKE(RegCloseKey)(key), ERROR_SUCCESS);
  EXPECT_EQ(machine.Outstanding(), "");
}

}  // namespace
}  // namespace sim
