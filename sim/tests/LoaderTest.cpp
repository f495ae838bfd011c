#include <gtest/gtest.h>

#include "sim/MachineState.h"
#include "sim/tests/Fakes.h"
#include "sim/tests/SampleLibrary.h"

namespace sim {
namespace {

int VendorFunction() { return 42; }
bool NeverAvailable(const Model&) { return false; }

TEST(Loader, UnknownLibraryIsNotFound) {
  Machine machine(kSampleMachine);
  SetLastError(0);
  EXPECT_EQ(SIM_FAKE(LoadLibraryA)("nvapi64.dll"), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(Loader, SystemLibraryIsRealAndItsSimulatedFunctionsAreFound) {
  Machine machine(kSampleMachine);
  const HMODULE user32 = SIM_FAKE(LoadLibraryA)("User32.dll");
  EXPECT_EQ(user32, GetModuleHandleW(L"user32.dll"));
  const FARPROC found = SIM_FAKE(GetProcAddress)(user32, "SetTimer");
  EXPECT_EQ(reinterpret_cast<void*>(found), FindEntryByName("SetTimer")->function);
  EXPECT_EQ(SIM_FAKE(GetProcAddress)(user32, "NoSuchFunction"), nullptr);
  EXPECT_TRUE(SIM_FAKE(FreeLibrary)(user32));
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(Loader, FunctionThatThisWindowsHasNotIsNotFound) {
  Machine machine(kSampleMachine);  // 6.1; the function came with 6.2
  const HMODULE kernel = SIM_FAKE(GetModuleHandleA)("kernel32");
  SetLastError(0);
  EXPECT_EQ(SIM_FAKE(GetProcAddress)(kernel, "GetSystemTimePreciseAsFileTime"), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
  machine.model().windows.minor = 2;
  EXPECT_NE(SIM_FAKE(GetProcAddress)(kernel, "GetSystemTimePreciseAsFileTime"), nullptr);
}

TEST(Loader, UnlistedFunctionFailsTheTestByName) {
  Machine machine(kSampleMachine);
  CaughtFailures failures;
  const HMODULE kernel = SIM_FAKE(GetModuleHandleA)("kernel32.dll");
  EXPECT_EQ(SIM_FAKE(GetProcAddress)(kernel, "SetComputerNameA"), nullptr);
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_EQ(
      failures.list()[0],
      "GetProcAddress asked for kernel32.dll!SetComputerNameA, which is neither simulated nor "
      "listed as real");
}

TEST(Loader, InventedLibraryAnswersFromItsTable) {
  Machine machine(kSampleMachine);
  machine.state().invented["vendor.dll"] = {
      "vendor.dll",
      {{"vendor.dll", "Present", Erase(VendorFunction)},
       {"vendor.dll", "Absent", Erase(VendorFunction), NeverAvailable}},
      0,
      nullptr,
      nullptr};
  EXPECT_EQ(SIM_FAKE(GetModuleHandleA)("vendor.dll"), nullptr);  // not loaded yet
  const HMODULE module = SIM_FAKE(LoadLibraryA)("C:\\Windows\\Vendor");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(SIM_FAKE(GetModuleHandleA)("VENDOR.dll"), module);
  void* found = reinterpret_cast<void*>(SIM_FAKE(GetProcAddress)(module, "Present"));
  const auto present = reinterpret_cast<int (*)()>(found);
  ASSERT_NE(present, nullptr);
  EXPECT_EQ(present(), 42);
  EXPECT_EQ(SIM_FAKE(GetProcAddress)(module, "Absent"), nullptr);
  EXPECT_EQ(SIM_FAKE(GetProcAddress)(module, "Unknown"), nullptr);
  EXPECT_NE(machine.Outstanding(), "");
  EXPECT_TRUE(SIM_FAKE(FreeLibrary)(module));
  EXPECT_EQ(machine.Outstanding(), "");
  EXPECT_EQ(SIM_FAKE(GetModuleHandleA)("vendor.dll"), nullptr);
}

TEST(Loader, FreeingTooOftenFailsTheTest) {
  Machine machine(kSampleMachine);
  const HMODULE module = SIM_FAKE(LoadLibraryW)(L"version.dll");
  ASSERT_NE(module, nullptr);
  EXPECT_TRUE(SIM_FAKE(FreeLibrary)(module));
  CaughtFailures failures;
  SIM_FAKE(FreeLibrary)(module);
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_EQ(failures.list()[0].find("gave back what it does not hold: module 0x"), 0u);
}

TEST(Loader, NullModuleIsTheHostsExecutable) {
  Machine machine(kSampleMachine);
  EXPECT_EQ(SIM_FAKE(GetModuleHandleW)(nullptr), GetModuleHandleW(nullptr));
}

TEST(Loader, DeclaredFaultIsAMissingLibrary) {
  Machine machine(kSampleMachine);
  machine.Fail("LoadLibraryA", 1);
  EXPECT_EQ(SIM_FAKE(LoadLibraryA)("User32.dll"), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
}

TEST(Loader, LibraryUnderTestCallsTheSimulatedLoader) {
  Machine machine(kSampleMachine);
  SampleLibrary sample;
  EXPECT_EQ(sample.LoadDll("atiadlxx.dll"), nullptr);
  const HMODULE user32 = sample.LoadDll("user32.dll");
  EXPECT_EQ(sample.Find(user32, "KillTimer"), FindEntryByName("KillTimer")->function);
  EXPECT_TRUE(sample.FreeDll(user32));
  EXPECT_EQ(machine.Calls("LoadLibraryA"), 2u);
}

// A typing error in a face's table would make the row a dead one.
TEST(FaceTable, EveryRowNamesAFunctionThatItsLibraryHas) {
  Machine machine(kSampleMachine);
  for (const Entry* entry : AllEntries()) {
    const HMODULE module = LoadLibraryA(entry->module);
    ASSERT_NE(module, nullptr) << entry->module;
    const std::string name = entry->name;
    if (name == "DisplayConfigSetDeviceInfo") continue;  // not in Wine's user32
    EXPECT_NE(GetProcAddress(module, name.c_str()), nullptr) << entry->module << "!" << name;
    FreeLibrary(module);
  }
}

}  // namespace
}  // namespace sim
