// The remedy for machines on which the tool MonitorTest is installed.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/behaviour/CcdReports.h"
#include "tests/support/FakeMonitor.h"

using ccd_test::Set;

namespace {

constexpr char kPanel[] = "win7 intel: internal 1366x768 active";
constexpr char kUninstallKey[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\MonitorTest_is1";

class MonitorTest : public testing::Test {
 protected:
  const WorkaroundBox& box() { return *host.ostrel().white_box().workarounds; }
  MonitorTestV3Workaround* V3() {
    if (v3 == nullptr) v3.reset(box().NewMonitorTestV3Workaround());
    return v3.get();
  }

  /// The folder of 32-bit programs is one of the machine's own, with the tool's file in it.
  void InstallFile() {
    const std::wstring programs = host.machine.HostFolder();
    host.machine.SetEnvironment("ProgramFiles(x86)", std::string(programs.begin(), programs.end()));
    CreateDirectoryW((programs + L"\\MonitorTest").c_str(), nullptr);
    WriteFileText(programs + L"\\MonitorTest\\MonitorTest.exe", "MZ");
  }
  void InstallKey() {
    host.machine.model().registry[std::string("HKLM\\") + kUninstallKey]["DisplayName"] = "Tool";
  }

  /// What the flip makes of a size, on this Windows; "refused" when it says that it failed.
  std::string Flip(uint32_t width, uint32_t height) {
    sim::DisplayMode& mode = host.machine.model().sources[0].mode;
    mode = {width, height, 32, 60};
    if (V3()->ChangeResolutionBeforeSwitch(&monitor) == 0) return "refused";
    const sim::DisplayMode& now = host.machine.model().sources[0].mode;
    return std::to_string(now.width) + "x" + std::to_string(now.height) + "x" +
           std::to_string(now.bits) + "@" + std::to_string(now.frequency);
  }

  CoreHost host{kPanel};
  std::shared_ptr<FakeScript> script = std::make_shared<FakeScript>();
  FakeMonitor monitor{script};
  std::unique_ptr<MonitorTestV3Workaround> v3;
};

// --- Whether the tool is there.

TEST_F(MonitorTest, ToolIsNotInstalledWithoutFileAndKey) { EXPECT_FALSE(V3()->IsToolInstalled()); }

TEST_F(MonitorTest, FileAloneCounts) {
  InstallFile();
  EXPECT_TRUE(V3()->IsToolInstalled());
  EXPECT_FALSE(V3()->HasUninstallKey());
}

TEST_F(MonitorTest, UninstallKeyAloneCounts) {
  InstallKey();
  EXPECT_TRUE(V3()->IsToolInstalled());
  EXPECT_TRUE(V3()->HasUninstallKey());
}

TEST_F(MonitorTest, KeyIsNotAskedWhereTheFileIs) {
  InstallFile();
  V3()->IsToolInstalled();
  EXPECT_EQ(host.machine.Calls("RegOpenKeyExA"), 0u);
}

TEST_F(MonitorTest, KeyIsOpenedForReadingAndClosedAtOnce) {
  InstallKey();
  V3();
  host.machine.TakeJournal();
  host.machine.JournalReads(true);
  V3()->HasUninstallKey();
  EXPECT_EQ(host.machine.TakeJournal(),
            std::string("RegOpenKeyExA(") + kUninstallKey + " 0x20019)=0\n");
  EXPECT_EQ(CountOf(host.machine.Outstanding(), "registry key"), 0u);
}

TEST_F(MonitorTest, KeyThatCannotBeOpenedIsNone) {
  InstallKey();
  V3();
  host.machine.Fail("RegOpenKeyExA", 1, ERROR_ACCESS_DENIED);
  EXPECT_FALSE(V3()->IsToolInstalled());
}

// --- Where it would be.

TEST_F(MonitorTest, PathsLieInTheFolderOf32BitPrograms) {
  EXPECT_EQ(V3()->GetInstallFolder(), "C:\\Program Files (x86)\\MonitorTest");
  EXPECT_EQ(V3()->GetExecutablePath(), "C:\\Program Files (x86)\\MonitorTest\\MonitorTest.exe");
  EXPECT_EQ(V3()->GetUninstallKey(), kUninstallKey);
}

TEST_F(MonitorTest, A32BitHostFindsThatFolderUnderTheOtherName) {
  host.machine.SetEnvironment("PROCESSOR_ARCHITEW6432", "AMD64");
  host.machine.SetEnvironment("ProgramFiles", "D:\\Programs");
  EXPECT_EQ(V3()->GetInstallFolder(), "D:\\Programs\\MonitorTest");
}

TEST_F(MonitorTest, WithoutIsWow64ProcessTheAnswerIsNo) {
  host.machine.SetEnvironment("PROCESSOR_ARCHITEW6432", "AMD64");
  V3();
  host.machine.Fail("GetProcAddress", 1);
  EXPECT_EQ(V3()->GetInstallFolder(), "C:\\Program Files (x86)\\MonitorTest");
}

TEST_F(MonitorTest, FailingIsWow64ProcessIsNo) {
  host.machine.SetEnvironment("PROCESSOR_ARCHITEW6432", "AMD64");
  V3();
  host.machine.Fail("IsWow64Process", 1);
  EXPECT_EQ(V3()->GetInstallFolder(), "C:\\Program Files (x86)\\MonitorTest");
}

TEST_F(MonitorTest, IsWow64ProcessIsBoundAtFirstUseAndKept) {
  V3();
  const uint32_t before = host.machine.Calls("GetProcAddress");
  V3()->GetInstallFolder();
  EXPECT_EQ(host.machine.Calls("GetProcAddress"), before + 1);
  V3()->GetInstallFolder();
  EXPECT_EQ(host.machine.Calls("GetProcAddress"), before + 1);
  EXPECT_EQ(host.machine.Calls("IsWow64Process"), 2u);
}

TEST_F(MonitorTest, FolderThatCannotBeToldIsEmpty) {
  V3();
  host.machine.Fail("ExpandEnvironmentStringsA", 1);
  EXPECT_EQ(V3()->GetInstallFolder(), "");
  host.machine.SetEnvironment("ProgramFiles(x86)", std::string(260, 'x'));
  EXPECT_EQ(V3()->GetInstallFolder(), "");
}

TEST_F(MonitorTest, WithoutTheFolderNoFileIsLookedForAtTheRootOfTheDrive) {
  host.machine.SetEnvironment("ProgramFiles(x86)", std::string(260, 'x'));
  EXPECT_EQ(V3()->GetExecutablePath(), "");
  EXPECT_FALSE(V3()->IsToolInstalled());
}

// --- The factory.

TEST_F(MonitorTest, FactoryGivesTheWorkingOneWhereTheToolIs) {
  InstallKey();
  box();
  host.machine.JournalReads(true);
  host.machine.TakeJournal();
  const auto workaround = box().CreateMonitorTestWorkaround();
  EXPECT_EQ(box().NameOfMonitorTestWorkaround(workaround.get()), "MonitorTestV3Workaround");
  const std::string journal = host.machine.TakeJournal();
  EXPECT_EQ(journal.rfind("OutputDebugStringW(MonitorTestV3Workaround ctor\\n)=0\n", 0), 0u);
  EXPECT_EQ(CountOf(journal, "OutputDebugStringW("), 1u);
}

TEST_F(MonitorTest, FactoryGivesTheEmptyOneElsewhereBehindTheOther) {
  box();
  host.machine.JournalReads(true);
  host.machine.TakeJournal();
  const auto workaround = box().CreateMonitorTestWorkaround();
  EXPECT_EQ(box().NameOfMonitorTestWorkaround(workaround.get()), "NoMonitorTestV3Workaround");
  const std::string journal = host.machine.TakeJournal();
  EXPECT_EQ(journal.rfind("OutputDebugStringW(MonitorTestV3Workaround ctor\\n)=0\n", 0), 0u);
  const std::string last = "OutputDebugStringW(NoMonitorTestV3Workaround ctor\\n)=0\n";
  ASSERT_GE(journal.size(), last.size());
  EXPECT_EQ(journal.substr(journal.size() - last.size()), last);
  EXPECT_EQ(CountOf(journal, "OutputDebugStringW("), 2u);
}

// --- The change.

TEST_F(MonitorTest, OnlyAWidthOf800GoesToTheLargeSize) {
  EXPECT_EQ(Flip(800, 600), "1024x768x32@60");
  EXPECT_EQ(Flip(1024, 768), "800x600x32@60");
  EXPECT_EQ(Flip(1366, 768), "800x600x32@60");
  EXPECT_EQ(Flip(1280, 720), "800x600x32@60");
}

TEST_F(MonitorTest, OnlyTheWidthIsLookedAt) { EXPECT_EQ(Flip(800, 480), "1024x768x32@60"); }

TEST_F(MonitorTest, FlipIsOneChangeThroughTheDisplayConfiguration) {
  EXPECT_EQ(Flip(1366, 768), "800x600x32@60");
  EXPECT_EQ(host.machine.TakeJournal(), Set(1, "0x60") + Set(1, "0x2a0"));
}

TEST_F(MonitorTest, FailureOfTheChangeIsTold) {
  V3();
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE, sim::Machine::Repeat::kFromThenOn);
  host.machine.Fail("ChangeDisplaySettingsExA", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(Flip(1366, 768), "refused");
}

TEST_F(MonitorTest, NothingIsChangedWhereTheModeCannotBeRead) {
  V3();
  host.machine.Fail("EnumDisplaySettingsExA", 1);
  EXPECT_EQ(Flip(1366, 768), "refused");
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST(MonitorTestOnVista, FlipGoesThroughTheObject) {
  CoreHost host("vista intel: internal 1366x768 active");
  const auto script = std::make_shared<FakeScript>();
  FakeMonitor monitor(script);
  const std::unique_ptr<MonitorTestV3Workaround> v3(
      host.ostrel().white_box().workarounds->NewMonitorTestV3Workaround());
  EXPECT_TRUE(v3->ChangeResolutionBeforeSwitch(&monitor));
  EXPECT_EQ(script->TakeCalls(), "PreloadDisplayModes\n");
  EXPECT_EQ(host.machine.model().sources[0].mode.width, 800u);
}

TEST_F(MonitorTest, EmptyOneFindsNothingAndChangesNothing) {
  InstallKey();
  const std::unique_ptr<IMonitorTestWorkaround> none(box().NewNoMonitorTestV3Workaround());
  EXPECT_FALSE(none->IsToolInstalled());
  EXPECT_FALSE(none->ChangeResolutionBeforeSwitch(&monitor));
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(script->TakeCalls(), "");
}

// --- The order of the virtual operations is part of the contract. An object begins with the
// address of its table; the destructor takes two places in it.

template <typename Result>
Result CallSlot(MonitorTestV3Workaround* object, size_t slot) {
  using Operation = Result (*)(MonitorTestV3Workaround*, IMMonitor*);
  void* const operation = (*reinterpret_cast<void***>(object))[slot];
  return reinterpret_cast<Operation>(operation)(object, nullptr);
}

TEST_F(MonitorTest, OperationsStandInTheirOrder) {
  InstallKey();
  EXPECT_TRUE(CallSlot<bool>(V3(), 0));
  EXPECT_EQ(host.machine.TakeJournal(), "");
  CallSlot<BOOL>(V3(), 1);
  EXPECT_NE(host.machine.TakeJournal(), "");
  EXPECT_EQ(CallSlot<std::string>(V3(), 4),
            "C:\\Program Files (x86)\\MonitorTest\\MonitorTest.exe");
  EXPECT_EQ(CallSlot<BOOL>(V3(), 5), 1);
  EXPECT_EQ(CallSlot<std::string>(V3(), 6), "C:\\Program Files (x86)\\MonitorTest");
  EXPECT_EQ(CallSlot<std::string>(V3(), 7), kUninstallKey);
}

}  // namespace
