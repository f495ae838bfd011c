#include <gtest/gtest.h>

#include "sim/ShortForm.h"
#include "sim/TempFolder.h"
#include "sim/tests/FaceCalls.h"
#include "sim/tests/Fakes.h"

// After windows.h.
#include <mmsystem.h>
#include <shlobj.h>
#include <tlhelp32.h>

namespace sim {
namespace {

constexpr char kMachine[] = "win7 intel: internal 1366x768 active";

TEST(System, VersionIsTheMachinesInBothRecords) {
  Machine machine("2008r2 intel: internal 1366x768 active");
  OSVERSIONINFOEXA a = {};
  a.dwOSVersionInfoSize = sizeof a;
  ASSERT_TRUE(FAKE(GetVersionExA)(reinterpret_cast<LPOSVERSIONINFOA>(&a)));
  EXPECT_EQ(a.dwMajorVersion, 6u);
  EXPECT_EQ(a.dwMinorVersion, 1u);
  EXPECT_EQ(a.wProductType, 3);
  EXPECT_EQ(a.wServicePackMajor, 1);
  EXPECT_STREQ(a.szCSDVersion, "Service Pack 1");
  OSVERSIONINFOEXW w = {};
  w.dwOSVersionInfoSize = sizeof w;
  ASSERT_TRUE(FAKE(GetVersionExW)(reinterpret_cast<LPOSVERSIONINFOW>(&w)));
  EXPECT_EQ(w.wProductType, 3);
  EXPECT_EQ(w.dwPlatformId, 2u);
}

TEST(System, ShortVersionRecordIsWrittenOnlyAsFarAsItReaches) {
  Machine machine(kMachine);
  OSVERSIONINFOEXA a = {};
  a.wProductType = 77;
  a.dwOSVersionInfoSize = sizeof(OSVERSIONINFOA);
  ASSERT_TRUE(FAKE(GetVersionExA)(reinterpret_cast<LPOSVERSIONINFOA>(&a)));
  EXPECT_EQ(a.wProductType, 77);
  a.dwOSVersionInfoSize = 0;
  EXPECT_FALSE(FAKE(GetVersionExA)(reinterpret_cast<LPOSVERSIONINFOA>(&a)));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
}

TEST(System, EditionIsThereFromVistaOn) {
  const Entry* entry = FindEntryByName("GetProductInfo");
  ASSERT_NE(entry, nullptr);
  EXPECT_FALSE(entry->available(ParseShortForm("xp intel: internal 800x600 active")));
  EXPECT_FALSE(entry->available(ParseShortForm("2003 intel: internal 800x600 active")));
  EXPECT_TRUE(entry->available(ParseShortForm("vista intel: internal 800x600 active")));
  Machine machine("win7starter intel: internal 1024x768 active");
  DWORD product = 0;
  ASSERT_TRUE(FAKE(GetProductInfo)(6, 1, 0, 0, &product));
  EXPECT_EQ(product, 11u);
}

TEST(System, EnvironmentIsTheMachinesOwn) {
  Machine machine(kMachine);
  machine.SetEnvironment("OSTREL_LOG_LEVEL", "2");
  char text[8] = {};
  EXPECT_EQ(FAKE(GetEnvironmentVariableA)("ostrel_log_level", text, sizeof text), 1u);
  EXPECT_STREQ(text, "2");
  EXPECT_EQ(FAKE(GetEnvironmentVariableA)("OSTREL_LOG_LEVEL", nullptr, 0), 2u);
  wchar_t wide[8] = {};
  EXPECT_EQ(FAKE(GetEnvironmentVariableW)(L"OSTREL_LOG_LEVEL", wide, 8), 1u);
  EXPECT_EQ(FAKE(GetEnvironmentVariableW)(L"WINEPREFIX", wide, 8), 0u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ENVVAR_NOT_FOUND));
}

TEST(System, VariablesExpandAndUnknownOnesStay) {
  Machine machine(kMachine);
  machine.SetEnvironment("Here", "there");
  char text[64] = {};
  EXPECT_EQ(FAKE(ExpandEnvironmentStringsA)("%Here%\\%Nowhere%\\100%", text, sizeof text), 21u);
  EXPECT_STREQ(text, "there\\%Nowhere%\\100%");
  EXPECT_EQ(FAKE(ExpandEnvironmentStringsA)("%Here%", text, 3), 6u);
  ASSERT_NE(FAKE(ExpandEnvironmentStringsA)("%ProgramFiles(x86)%", text, sizeof text), 0u);
  EXPECT_STREQ(text, "C:\\Program Files (x86)");
  wchar_t wide[MAX_PATH] = {};
  ASSERT_NE(FAKE(ExpandEnvironmentStringsW)(L"%APPDATA%", wide, MAX_PATH), 0u);
  EXPECT_EQ(wide, machine.AppDataFolder());
}

TEST(System, HostIsInTheMachinesFolder) {
  Machine machine(kMachine);
  wchar_t path[MAX_PATH] = {};
  const DWORD length = FAKE(GetModuleFileNameW)(nullptr, path, MAX_PATH);
  EXPECT_EQ(path, machine.HostFolder() + L"\\host.exe");
  EXPECT_EQ(length, std::wstring(path).size());
  EXPECT_EQ(FAKE(GetModuleFileNameW)(nullptr, path, 4), 4u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
  EXPECT_EQ(std::wstring(path).size(), 3u);
  EXPECT_EQ(FAKE(GetCommandLineW)(), L"\"" + machine.HostFolder() + L"\\host.exe\"");
  machine.SetCommandLine(L"host.exe --v=2");
  EXPECT_STREQ(FAKE(GetCommandLineW)(), L"host.exe --v=2");
}

TEST(System, ModuleWithAHandleHasItsRealPath) {
  Machine machine(kMachine);
  wchar_t real[MAX_PATH] = {};
  wchar_t path[MAX_PATH] = {};
  const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
  GetModuleFileNameW(kernel, real, MAX_PATH);
  FAKE(GetModuleFileNameW)(kernel, path, MAX_PATH);
  EXPECT_STREQ(path, real);
}

TEST(System, TempFolderEndsWithABackslash) {
  Machine machine(kMachine);
  char path[MAX_PATH] = {};
  const DWORD length = FAKE(GetTempPathA)(MAX_PATH, path);
  EXPECT_EQ(path, Narrow(machine.TempFolder()) + "\\");
  EXPECT_EQ(length, std::string(path).size());
  EXPECT_EQ(FAKE(GetTempPathA)(3, path), length + 1);
}

TEST(System, KeptTempFolderOutlivesTheMachine) {
  std::wstring folder;
  {
    Machine machine(kMachine);
    folder = machine.HostFolder().substr(0, machine.HostFolder().rfind(L'\\'));
    folder = folder.substr(0, folder.rfind(L'\\')) + L"\\ostrel-kept";
    KeepTempFolder(machine, folder + L"\\");
    char path[MAX_PATH] = {};
    FAKE(GetTempPathA)(MAX_PATH, path);
    EXPECT_EQ(path, Narrow(folder) + "\\");
    EXPECT_THROW(KeepTempFolder(machine, folder + L"\\no\\such"), std::runtime_error);
    EXPECT_EQ(machine.TempFolder(), folder);
  }
  EXPECT_NE(GetFileAttributesW(folder.c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_TRUE(RemoveDirectoryW(folder.c_str()));
}

TEST(System, AppDataFolderAndItsFault) {
  Machine machine(kMachine);
  wchar_t path[MAX_PATH] = {};
  EXPECT_EQ(FAKE(SHGetFolderPathW)(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_DEFAULT, path),
            S_OK);
  EXPECT_EQ(path, machine.AppDataFolder());
  EXPECT_EQ(FAKE(SHGetFolderPathW)(nullptr, CSIDL_FONTS, nullptr, 0, path), E_INVALIDARG);
  machine.Fail("SHGetFolderPathW", 1);
  EXPECT_EQ(FAKE(SHGetFolderPathW)(nullptr, CSIDL_APPDATA, nullptr, 0, path), E_FAIL);
  EXPECT_STREQ(path, L"");
}

TEST(System, SnapshotWalksTheProcessesAndIsClosed) {
  Machine machine(kMachine);
  machine.model().processes = {{4, "System"}, {77, "PowerDVD8.exe"}};
  const HANDLE snapshot = FAKE(CreateToolhelp32Snapshot)(TH32CS_SNAPPROCESS, 0);
  ASSERT_NE(snapshot, INVALID_HANDLE_VALUE);
  EXPECT_NE(machine.Outstanding(), "");
  PROCESSENTRY32 entry = {};
  EXPECT_FALSE(FAKE(Process32First)(snapshot, &entry));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BAD_LENGTH));
  entry.dwSize = sizeof entry;
  ASSERT_TRUE(FAKE(Process32First)(snapshot, &entry));
  EXPECT_STREQ(entry.szExeFile, "System");
  ASSERT_TRUE(FAKE(Process32Next)(snapshot, &entry));
  EXPECT_STREQ(entry.szExeFile, "PowerDVD8.exe");
  EXPECT_EQ(entry.th32ProcessID, 77u);
  EXPECT_FALSE(FAKE(Process32Next)(snapshot, &entry));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_MORE_FILES));
  EXPECT_TRUE(FAKE(CloseHandle)(snapshot));
  EXPECT_EQ(machine.Outstanding(), "");
  EXPECT_FALSE(FAKE(Process32First)(snapshot, &entry));
}

TEST(System, FailedSnapshotIsAnInvalidHandle) {
  Machine machine(kMachine);
  machine.Fail("CreateToolhelp32Snapshot", 1);
  EXPECT_EQ(FAKE(CreateToolhelp32Snapshot)(TH32CS_SNAPPROCESS, 0), INVALID_HANDLE_VALUE);
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(System, HandleStaysOpenWhenClosingItFails) {
  Machine machine(kMachine);
  const HANDLE snapshot = FAKE(CreateToolhelp32Snapshot)(TH32CS_SNAPPROCESS, 0);
  const HANDLE mutex = FAKE(CreateMutexW)(nullptr, FALSE, nullptr);
  ASSERT_NE(mutex, nullptr);
  for (const HANDLE handle : {snapshot, mutex}) {
    const std::string before = machine.Outstanding();
    machine.Fail("CloseHandle", 1);
    EXPECT_FALSE(FAKE(CloseHandle)(handle));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(machine.Outstanding(), before);
    EXPECT_TRUE(FAKE(CloseHandle)(handle));
    EXPECT_NE(machine.Outstanding(), before);
  }
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(System, HandleClosedTwiceFailsTheTest) {
  Machine machine(kMachine);
  const HANDLE mutex = FAKE(CreateMutexW)(nullptr, FALSE, nullptr);
  ASSERT_TRUE(FAKE(CloseHandle)(mutex));
  CaughtFailures failures;
  EXPECT_FALSE(FAKE(CloseHandle)(mutex));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_NE(failures.list()[0].find("closed a handle that is not open: 0x"), std::string::npos);
}

TEST(System, ComRefusesWithItsDocumentedFailure) {
  Machine machine(kMachine);
  machine.Fail("CoInitialize", 1);
  machine.Fail("CoInitializeEx", 1);
  EXPECT_EQ(FAKE(CoInitialize)(nullptr), E_OUTOFMEMORY);
  EXPECT_EQ(FAKE(CoInitializeEx)(nullptr, COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
  EXPECT_EQ(FAKE(CoInitialize)(nullptr), S_OK);
}

TEST(System, SoundDevicesAreCounted) {
  Machine machine(kMachine);
  EXPECT_EQ(FAKE(waveOutGetNumDevs)(), 1u);
  machine.model().wave_out_devices = 3;
  EXPECT_EQ(FAKE(waveOutGetNumDevs)(), 3u);
}

TEST(System, ReadsAreJournalledOnRequestOnly) {
  Machine machine(kMachine);
  FAKE(waveOutGetNumDevs)();
  EXPECT_EQ(machine.TakeJournal(), "");
  machine.JournalReads(true);
  FAKE(waveOutGetNumDevs)();
  EXPECT_EQ(machine.TakeJournal(), "waveOutGetNumDevs()=1\n");
}

}  // namespace
}  // namespace sim
