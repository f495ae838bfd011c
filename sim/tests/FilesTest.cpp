// The simulated system folder and the versions of the files in it.
#include <gtest/gtest.h>

#include "sim/tests/FaceCalls.h"

// After windows.h.
#include <shlobj.h>
#include <shlwapi.h>

namespace sim {
namespace {

constexpr char kAmd[] = "win7 amd: internal 1366x768 active";
constexpr char kFile[] = "C:\\Windows\\System32\\atiadlxx.dll";
constexpr wchar_t kWideFile[] = L"C:\\Windows\\System32\\atiadlxx.dll";

// "8.14.10.1120", "none".
std::string VersionOf(const wchar_t* path) {
  DWORD ignored = 7;
  const DWORD size = FAKE(GetFileVersionInfoSizeW)(path, &ignored);
  if (size == 0) return "none";
  std::vector<uint8_t> block(size);
  if (!FAKE(GetFileVersionInfoW)(path, 0, size, block.data())) return "unreadable";
  using Query = BOOL(WINAPI*)(const void*, const wchar_t*, void**, UINT*);
  const FARPROC query = GetProcAddress(LoadLibraryW(L"version.dll"), "VerQueryValueW");
  void* found = nullptr;
  UINT length = 0;
  if (!reinterpret_cast<Query>(reinterpret_cast<void*>(query))(block.data(), L"\\", &found,
                                                               &length)) {
    return "no fixed block";
  }
  EXPECT_EQ(length, 52u);
  const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(found);
  EXPECT_EQ(fixed->dwSignature, 0xFEEF04BDu);
  return std::to_string(HIWORD(fixed->dwFileVersionMS)) + "." +
         std::to_string(LOWORD(fixed->dwFileVersionMS)) + "." +
         std::to_string(HIWORD(fixed->dwFileVersionLS)) + "." +
         std::to_string(LOWORD(fixed->dwFileVersionLS));
}

TEST(Files, SystemFolderIsTold) {
  Machine machine(kAmd);
  char path[MAX_PATH] = "before";
  EXPECT_TRUE(FAKE(SHGetSpecialFolderPathA)(nullptr, path, CSIDL_SYSTEM, FALSE));
  EXPECT_STREQ(path, "C:\\Windows\\system32");
  EXPECT_FALSE(FAKE(SHGetSpecialFolderPathA)(nullptr, path, CSIDL_DESKTOP, FALSE));
  machine.Fail("SHGetSpecialFolderPathA", 1);
  EXPECT_FALSE(FAKE(SHGetSpecialFolderPathA)(nullptr, path, CSIDL_SYSTEM, FALSE));
  EXPECT_STREQ(path, "");
}

TEST(Files, SystemFolderIsJournalledWithWindowAndFlag) {
  Machine machine(kAmd);
  char path[MAX_PATH] = {};
  machine.JournalReads(true);
  FAKE(SHGetSpecialFolderPathA)(nullptr, path, CSIDL_SYSTEM, FALSE);
  FAKE(SHGetSpecialFolderPathA)(GetDesktopWindow(), path, CSIDL_SYSTEM, TRUE);
  machine.JournalReads(false);
  EXPECT_EQ(machine.TakeJournal(),
            "SHGetSpecialFolderPathA(37 window=none create=0)=1\n"
            "SHGetSpecialFolderPathA(37 window=given create=1)=1\n");
}

TEST(Files, SystemFolderHoldsWhatTheMachineHas) {
  Machine machine(kAmd);
  EXPECT_TRUE(FAKE(PathFileExistsA)(kFile));
  EXPECT_TRUE(FAKE(PathFileExistsA)("c:\\windows\\system32\\AtiPdl64.dll"));
  EXPECT_TRUE(FAKE(PathFileExistsA)("C:\\Windows\\System32\\kernel32.dll"));
  machine.model().adapters[0].amd.adl_library = false;
  SetLastError(0);
  EXPECT_FALSE(FAKE(PathFileExistsA)(kFile));
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  // Files that only the real system folder has.
  EXPECT_FALSE(FAKE(PathFileExistsA)("C:\\Windows\\System32\\cmd.exe"));
  machine.Fail("PathFileExistsA", 1);
  EXPECT_FALSE(FAKE(PathFileExistsA)("C:\\Windows\\System32\\kernel32.dll"));
}

TEST(Files, FilesElsewhereAreReal) {
  Machine machine(kAmd);
  const std::string folder = Narrow(machine.TempFolder());
  EXPECT_TRUE(FAKE(PathFileExistsA)(folder.c_str()));
  EXPECT_FALSE(FAKE(PathFileExistsA)((folder + "\\atiadlxx.dll").c_str()));
}

TEST(Files, FoldersBelowTheSystemFolderAreReal) {
  const Machine machine(kAmd);
  const char path[] = "C:\\Windows\\System32\\drivers\\etc";
  ASSERT_TRUE(PathFileExistsA(path));
  EXPECT_TRUE(FAKE(PathFileExistsA)(path));
}

TEST(Files, VersionOfTheDriversFile) {
  Machine machine(kAmd);
  EXPECT_EQ(VersionOf(kWideFile), "8.14.10.1120");
  machine.model().adapters[0].amd.adl_version = "7.15.20.1049";
  EXPECT_EQ(VersionOf(L"c:\\windows\\SYSTEM32\\ATIADLXX.DLL"), "7.15.20.1049");
  machine.model().adapters[0].amd.adl_version = "1.2.3.65535";
  EXPECT_EQ(VersionOf(kWideFile), "1.2.3.65535");
}

TEST(Files, VersionIsThatOfTheDriverThatBroughtTheFile) {
  Machine machine("win7 amd, amd: internal 1366x768 active, crt@2 1280x1024");
  Adapter& first = machine.model().adapters[0];
  first.amd.adl_version = "8.14.10.1049";
  machine.model().adapters[1].amd.adl_version = "8.14.10.1050";
  EXPECT_EQ(VersionOf(kWideFile), "8.14.10.1049");
  first.disabled = true;
  EXPECT_EQ(VersionOf(kWideFile), "8.14.10.1050");
  first.disabled = false;
  first.vendor_library = false;
  EXPECT_EQ(VersionOf(kWideFile), "8.14.10.1050");
  first.vendor_library = true;
  first.amd.adl_library = false;
  EXPECT_EQ(VersionOf(kWideFile), "8.14.10.1050");
}

TEST(Files, FileWithoutAVersion) {
  Machine machine(kAmd);
  machine.model().adapters[0].amd.adl_version = "";
  EXPECT_EQ(VersionOf(kWideFile), "none");
  EXPECT_EQ(GetLastError(), ERROR_RESOURCE_DATA_NOT_FOUND);
  machine.model().adapters[0].amd.adl_library = false;
  EXPECT_EQ(VersionOf(kWideFile), "none");
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(VersionOf(L"C:\\Windows\\System32\\AtiPdl64.dll"), "none");
}

TEST(Files, VersionNeedsEnoughRoom) {
  Machine machine(kAmd);
  DWORD handle = 7;
  const DWORD size = FAKE(GetFileVersionInfoSizeW)(kWideFile, &handle);
  EXPECT_EQ(handle, 0u);
  std::vector<uint8_t> block(size);
  EXPECT_FALSE(FAKE(GetFileVersionInfoW)(kWideFile, 0, size - 1, block.data()));
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_TRUE(FAKE(GetFileVersionInfoW)(kWideFile, 0, size, block.data()));
  machine.Fail("GetFileVersionInfoSizeW", 1);
  EXPECT_EQ(VersionOf(kWideFile), "none");
  machine.Fail("GetFileVersionInfoW", 1);
  EXPECT_EQ(VersionOf(kWideFile), "unreadable");
}

}  // namespace
}  // namespace sim
