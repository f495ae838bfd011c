// The controller over the display configuration functions of Windows 7.
#include <gtest/gtest.h>

#include <cstring>
#include <ostream>

#include "tests/behaviour/CoreHost.h"

namespace {

using PathList = std::vector<DISPLAYCONFIG_PATH_INFO>;

constexpr char kPanelAndCrt[] = "win7 intel: internal 1366x768 active, crt 1024x768";
constexpr char kThree[] = "win7 intel*3: internal 1366x768 active, crt 1024x768, hdmi 1920x1080";
constexpr uint32_t kInternal = 0x80000000;
constexpr uint32_t kOther = 0xFFFFFFFF;

struct Report {
  BOOL result = 0;
  uint32_t displays = 0;
  uint32_t count = 0;
};
bool operator==(const Report& a, const Report& b) {
  return a.result == b.result && a.displays == b.displays && a.count == b.count;
}
std::ostream& operator<<(std::ostream& out, const Report& report) {
  return out << report.result << ": 0x" << std::hex << report.displays << std::dec << " of "
             << report.count;
}

Report Connected(const CcdPointer& ccd) {
  Report report;
  report.result = ccd->GetConnectedDisplays(&report.displays, &report.count);
  return report;
}

Report Active(const CcdPointer& ccd) {
  Report report;
  report.result = ccd->GetActiveDisplays(&report.displays, &report.count);
  return report;
}

Report Mode(const CcdPointer& ccd) {  // the mode as the count
  Report report;
  report.result = ccd->GetCurrentDisplayMode(&report.count, &report.displays);
  return report;
}

std::string Set(uint32_t paths, const char* flags, uint32_t result = 0) {
  return "SetDisplayConfig(paths=" + std::to_string(paths) + " flags=" + flags +
         ")=" + std::to_string(result) + "\n";
}

// --- Initial

TEST(Win7CCDInitial, RefusesWhatIsOlderThanWindows7) {
  for (const char* windows : {"xp", "2003", "vista", "2008", "2008r2"}) {
    CoreHost host(std::string(windows) + " intel: internal 1366x768 active");
    const CcdPointer ccd = host.NewBareCcd();
    EXPECT_EQ(host.core().InitialOf(ccd.get()), "This class only support Windows 7 or later")
        << windows;
  }
}

TEST(Win7CCDInitial, LoadsTheLibraryOnce) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads + 1);
}

TEST(Win7CCDInitial, FailedLoadIsZeroAndIsTriedAgain) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  host.machine.Fail("LoadLibraryA", 1);
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "0");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
}

TEST(Win7CCDInitial, EveryFunctionIsRequired) {
  for (uint32_t entry = 1; entry <= 5; ++entry) {
    CoreHost host(kPanelAndCrt);
    const CcdPointer ccd = host.NewBareCcd();
    host.machine.Fail("GetProcAddress", entry);
    EXPECT_EQ(host.core().InitialOf(ccd.get()), "0") << entry;
  }
}

TEST(Win7CCDApi, LoadsNothingWithoutAName) {
  CoreHost host(kPanelAndCrt);
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  EXPECT_EQ(host.core().LoadWin7CCDApi(nullptr), 0);
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads);
  EXPECT_EQ(host.core().LoadWin7CCDApi("User32.dll"), 1);
  EXPECT_EQ(host.core().LoadWin7CCDApi("NoSuchLibrary.dll"), 0);
  EXPECT_EQ(host.Modules(), 0u);
}

// --- Without a bound API every operation gives its failure result.

void ExpectFailures(CoreHost* host, const CcdPointer& ccd) {
  EXPECT_EQ(Connected(ccd), Report());
  EXPECT_EQ(Active(ccd), Report());
  EXPECT_EQ(Mode(ccd), Report());
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 0);
  EXPECT_EQ(ccd->EnableExtendMode(1), 0);
  EXPECT_EQ(ccd->ChangeToNBOnlySingleDisplayMode(), 0);
  DEVMODEA dm = {};
  EXPECT_FALSE(ccd->GetDisplaySettings(IMMonitor::MD_NB, &dm));
  EXPECT_EQ(host->core().GetActiveTargetId(ccd.get(), IMMonitor::MD_NB), 0u);
  EXPECT_EQ(host->core().HasMultipleDisplayAdapter(ccd.get()), 0);
  EXPECT_EQ(host->machine.TakeJournal(), "");
}

TEST(Win7CCD, FailsBeforeInitial) {
  CoreHost host(kPanelAndCrt);
  ExpectFailures(&host, host.NewBareCcd());
}

TEST(Win7CCD, FailsWithoutAnApiAndChecksIt) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const CcdPointer ccd(host.core().NewWin7CCDWithoutApi());
  ccd->AddRef();
  ExpectFailures(&host, ccd);
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "0");
  uint32_t width = 1, height = 1;
  host.ForgetLog();
  EXPECT_FALSE(ccd->GetNativeResolution(IMMonitor::MD_NB, &width, &height));
  EXPECT_EQ(host.TakeLog(), "Check failed: m_ccd. \n");
}

TEST(Win7CCD, ApiCountsAsLoadedAfterAFailedInitialOnDemand) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  host.machine.Fail("LoadLibraryA", 1);
  uint32_t width = 1, height = 1;
  EXPECT_FALSE(ccd->GetNativeResolution(IMMonitor::MD_NB, &width, &height));
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
  EXPECT_FALSE(ccd->GetNativeResolution(IMMonitor::MD_NB, &width, &height));
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads);
  ExpectFailures(&host, ccd);
}

// --- Reference count

TEST(Win7CCD, LastReleaseEndsTheWholeObject) {
  CoreHost host(kPanelAndCrt);
  Win7CCD* const ccd = host.core().NewWin7CCD();
  ASSERT_EQ(host.core().InitialOf(ccd), "1");
  IPhysicalMonitor* const pm = ccd;
  EXPECT_EQ(pm->AddRef(), 1u);
  EXPECT_EQ(pm->AddRef(), 2u);
  EXPECT_EQ(pm->Release(), 1u);
  EXPECT_EQ(host.Modules(), 1u);  // its library
  EXPECT_EQ(pm->Release(), 0u);
  EXPECT_EQ(host.Modules(), 0u);
}

TEST(Win7CCD, QueryInterfaceFailsWithACheck) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  void* object = nullptr;
  EXPECT_EQ(static_cast<uint32_t>(ccd->QueryInterface(GUID(), &object)), 0x80004005u);
  EXPECT_EQ(host.TakeLog(), "Check failed: 0 && \"Should never call this function\". \n");
}

TEST(Win7CCD, HasAPseudoVendor) {
  CoreHost host(kPanelAndCrt);
  EXPECT_EQ(host.NewBareCcd()->GetVgaVendor(), 0x045Eu);
}

// --- Connected and active displays

struct TechnologyRow {
  uint32_t technology;
  uint32_t flag;
};
// Every row of the mapping, and some of "any other value".
constexpr TechnologyRow kTechnologyRows[] = {
    {kInternal, IMMonitor::MD_NB},
    {kOther, IMMonitor::MD_HDMI},
    {0, IMMonitor::MD_CRT},
    {1, IMMonitor::MD_TV},
    {2, IMMonitor::MD_TV},
    {3, IMMonitor::MD_TV},
    {4, IMMonitor::MD_DVI},
    {5, IMMonitor::MD_HDMI},
    {10, IMMonitor::MD_DP},
    {11, IMMonitor::MD_DP},
    {6, 0},
    {9, 0},
    {12, 0},
    {15, 0},
    {0x80000001, 0},
    {0xFFFFFFFE, 0},
};

TEST(Win7CCD, ReportsEveryTechnologyAsItsDisplayAndCountsIt) {
  for (const TechnologyRow& row : kTechnologyRows) {
    CoreHost host("win7 intel: internal 1366x768 active");
    host.machine.model().connectors[0].technology = row.technology;
    const CcdPointer ccd = host.NewCcd();
    EXPECT_EQ(Connected(ccd), (Report{1, row.flag, 1})) << std::hex << row.technology;
    EXPECT_EQ(Active(ccd), (Report{1, row.flag, 1})) << std::hex << row.technology;
  }
}

TEST(Win7CCD, ConnectedDisplaysAreActiveOrNot) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1024x768, hdmi 1920x1080, dp");
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(Connected(ccd), (Report{1, 0x13, 3}));
  EXPECT_EQ(Active(ccd), (Report{1, 0x01, 1}));
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST(Win7CCD, PathWithoutAFlagStillCounts) {
  CoreHost host("win7 intel: internal 1366x768 active, wireless 1280x720");
  EXPECT_EQ(Connected(host.NewCcd()), (Report{1, 0x01, 2}));
}

TEST(Win7CCD, TwoHdmiOutputsCountOnce) {
  CoreHost host("win7 intel: internal 1366x768 active, hdmi 1920x1080, hdmi2 1920x1080");
  EXPECT_EQ(Connected(host.NewCcd()), (Report{1, 0x11, 2}));
}

TEST(Win7CCD, HdmiAndOtherShareAFlagAndCountTwice) {
  CoreHost host("win7 intel: internal 1366x768 active, hdmi 1920x1080, other 1920x1080");
  EXPECT_EQ(Connected(host.NewCcd()), (Report{1, 0x11, 3}));
}

TEST(Win7CCD, ReportsAddToTheirOutputs) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  uint32_t displays = 0x40, count = 10;
  EXPECT_EQ(ccd->GetConnectedDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, 0x43u);
  EXPECT_EQ(count, 12u);
  EXPECT_EQ(ccd->GetActiveDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, 0x43u);
  EXPECT_EQ(count, 13u);
}

TEST(Win7CCD, ForcedPathIsNoDisplay) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1024x768 active");
  const CcdPointer ccd = host.NewCcd();
  host.machine.model().connectors[1].forced = true;
  EXPECT_EQ(Connected(ccd), (Report{1, 0x01, 1}));
  EXPECT_EQ(Active(ccd), (Report{1, 0x01, 1}));
}

TEST(Win7CCD, NoDisplayAtAllIsASuccess) {
  CoreHost host("win7 intel: internal 1366x768 active");
  const CcdPointer ccd = host.NewCcd();
  host.machine.model().connectors[0].forced = true;
  EXPECT_EQ(Connected(ccd), (Report{1, 0, 0}));
  EXPECT_EQ(Active(ccd), (Report{1, 0, 0}));
}

TEST(Win7CCD, FailedQueriesAreFailuresWithoutAMessage) {
  for (const char* function : {"GetDisplayConfigBufferSizes", "QueryDisplayConfig"}) {
    CoreHost host(kPanelAndCrt, L"--enable-dcheck");
    const CcdPointer ccd = host.NewCcd();
    host.ForgetLog();
    // A display plugged in between the two calls makes the buffers too small.
    host.machine.Fail(function, 1, ERROR_INSUFFICIENT_BUFFER, sim::Machine::Repeat::kFromThenOn);
    EXPECT_EQ(Connected(ccd), Report()) << function;
    EXPECT_EQ(Active(ccd), Report()) << function;
    EXPECT_EQ(Mode(ccd), Report()) << function;
    EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 0) << function;
    DEVMODEA dm = {};
    EXPECT_FALSE(ccd->GetDisplaySettings(IMMonitor::MD_NB, &dm)) << function;
    uint32_t width = 7, height = 7;
    EXPECT_FALSE(ccd->GetNativeResolution(IMMonitor::MD_NB, &width, &height)) << function;
    EXPECT_EQ(width, 0u);
    EXPECT_EQ(height, 0u);
    EXPECT_EQ(host.core().HasMultipleDisplayAdapter(ccd.get()), 0) << function;
    EXPECT_EQ(host.TakeLog(), "") << function;
    EXPECT_EQ(host.machine.TakeJournal(), "") << function;
  }
}

// --- GetCurrentDisplayMode

TEST(Win7CCDMode, TellsTheTopologyOfTheDatabase) {
  const struct {
    const char* machine;
    Report expected;  // result, active displays, mode
  } rows[] = {
      {"win7 intel: internal 1366x768 active, crt 1024x768", {1, 1, IMMonitor::DM_SINGLE}},
      {"win7 intel: internal 1366x768, crt 1024x768 active", {1, 2, IMMonitor::DM_SINGLE}},
      {"win7 intel: clone internal 1024x768 active, crt 1024x768 active",
       {1, 3, IMMonitor::DM_CLONE}},
      {"win7 intel: internal 1366x768 active, crt 1024x768 active", {1, 3, IMMonitor::DM_EXTEND}},
  };
  for (const auto& row : rows) {
    CoreHost host(row.machine);
    EXPECT_EQ(Mode(host.NewCcd()), row.expected) << row.machine;
  }
}

TEST(Win7CCDMode, UnknownTopologyIsModeZeroWithSuccess) {
  CoreHost host(kPanelAndCrt);
  for (auto& entry : host.machine.model().database) entry.second.topology = 3;
  EXPECT_EQ(Mode(host.NewCcd()), (Report{1, 1, 0}));
}

TEST(Win7CCDMode, SetsItsOutputsWhateverTheyHeld) {
  CoreHost host(kPanelAndCrt);
  uint32_t mode = 0xFF, displays = 0xF0;
  EXPECT_EQ(host.NewCcd()->GetCurrentDisplayMode(&mode, &displays), 1);
  EXPECT_EQ(mode, 1u);
  EXPECT_EQ(displays, 1u);
}

TEST(Win7CCDMode, FailsWhenOnlyTheDatabaseCannotBeRead) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("QueryDisplayConfig", 2);
  EXPECT_EQ(Mode(ccd), Report());
}

// --- SetNewDisplayMode

TEST(Win7CCDSet, RequestBecomesATopology) {
  const struct {
    uint32_t mode;
    uint32_t displays;
    const char* validate;
    const char* apply;
    const char* topology;
  } rows[] = {
      {IMMonitor::DM_CLONE, 3, "0x42", "0x82", "clone internal+crt"},
      {IMMonitor::DM_EXTEND, 3, "0x44", "0x84", "extend internal+crt"},
      {IMMonitor::DM_SINGLE, 1, "0x41", "0x81", "single internal"},
      {IMMonitor::DM_SINGLE, 3, "0x41", "0x81", "single internal"},
      {IMMonitor::DM_SINGLE, 2, "0x48", "0x88", "single crt"},
      {IMMonitor::DM_ADVANCED_P1, 2, "0x41", "0x81", "single internal"},
      {IMMonitor::DM_TRIPLE_CLONE, 3, "0x41", "0x81", "single internal"},
      {0, 0, "0x41", "0x81", "single internal"},
  };
  for (const auto& row : rows) {
    CoreHost host(kPanelAndCrt);
    EXPECT_EQ(host.NewCcd()->SetNewDisplayMode(row.mode, row.displays), 1) << row.mode;
    EXPECT_EQ(host.machine.TakeJournal(), Set(0, row.validate) + Set(0, row.apply));
    EXPECT_EQ(host.machine.Topology(), row.topology);
  }
}

TEST(Win7CCDSet, RefusedTopologyIsAFailureOnceItWasValidated) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("SetDisplayConfig", 2, ERROR_ACCESS_DENIED);
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 0);
  EXPECT_EQ(host.machine.TakeJournal(), Set(0, "0x42") + Set(0, "0x82", 5));
}

TEST(Win7CCDSet, FailedValidationFallsToSuppliedPaths) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Set(0, "0x42", 31) + Set(2, "0x660") + Set(2, "0x6a0"));
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
}

TEST(Win7CCDSet, FailedValidationOfThePathsFallsToTheTopologyFlags) {
  const struct {
    uint32_t mode;
    uint32_t displays;
    const char* validate;
    uint32_t paths;
    const char* apply;
  } rows[] = {{IMMonitor::DM_CLONE, 3, "0x42", 2, "0x92"},
              {IMMonitor::DM_EXTEND, 3, "0x44", 2, "0x94"},
              {IMMonitor::DM_SINGLE, 1, "0x41", 1, "0x91"},
              {IMMonitor::DM_SINGLE, 2, "0x48", 1, "0x98"}};
  for (const auto& row : rows) {
    CoreHost host(kPanelAndCrt);
    const CcdPointer ccd = host.NewCcd();
    host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE, sim::Machine::Repeat::kFromThenOn);
    EXPECT_EQ(ccd->SetNewDisplayMode(row.mode, row.displays), 0);
    EXPECT_EQ(host.machine.TakeJournal(), Set(0, row.validate, 31) + Set(row.paths, "0x660", 31) +
                                              Set(row.paths, row.apply, 31));
  }
}

TEST(Win7CCDSet, RefusedPathsAreNotTriedAgain) {
  CoreHost host(kThree);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("SetDisplayConfig", 2, ERROR_GEN_FAILURE);
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 0);
  EXPECT_EQ(host.machine.TakeJournal(), Set(2, "0x660") + Set(2, "0x6a0", 31));
}

TEST(Win7CCDSet, ThreeTechnologiesSkipTheTopology) {
  CoreHost host(kThree);
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, IMMonitor::MD_NB | IMMonitor::MD_HDMI), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Set(2, "0x660") + Set(2, "0x6a0"));
  EXPECT_EQ(host.machine.Topology(), "clone internal+hdmi");
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_CRT), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Set(1, "0x660") + Set(1, "0x6a0"));
  EXPECT_EQ(host.machine.Topology(), "single crt");
}

TEST(Win7CCDSet, TwoOutputsOfOneTechnologyAreNotThree) {
  CoreHost host("win7 intel: internal 1366x768 active, hdmi 1920x1080, hdmi2 1920x1080");
  EXPECT_EQ(host.NewCcd()->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Set(0, "0x41") + Set(0, "0x81"));
}

TEST(Win7CCDSet, WithTheLassoStatusThreeTechnologiesTakeTheTopology) {
  CoreHost host(kThree);
  const CcdPointer ccd = host.NewCcd();
  host.ostrel().SetLassoBoxStatus(1);
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Set(0, "0x41") + Set(0, "0x81"));
}

TEST(Win7CCDSet, AnyModeButSingleSuppliesTwoPaths) {
  for (const uint32_t mode :
       {IMMonitor::DM_EXTEND, IMMonitor::DM_TRIPLE_CLONE, IMMonitor::DM_ADVANCED_P1}) {
    CoreHost host(kThree);
    host.NewCcd()->SetNewDisplayMode(mode, IMMonitor::MD_NB | IMMonitor::MD_CRT);
    EXPECT_EQ(host.machine.TakeJournal(), Set(2, "0x660") + Set(2, "0x6a0")) << mode;
  }
}

TEST(Win7CCDSet, DisplayThatIsNotThereIsAFailureWithoutACall) {
  const struct {
    uint32_t mode;
    uint32_t displays;
  } rows[] = {{IMMonitor::DM_SINGLE, IMMonitor::MD_DVI},
              {IMMonitor::DM_SINGLE, 0},
              {IMMonitor::DM_SINGLE, 3},  // two displays are no display
              {IMMonitor::DM_CLONE, IMMonitor::MD_NB | IMMonitor::MD_DVI},
              {IMMonitor::DM_CLONE, IMMonitor::MD_NB},
              {IMMonitor::DM_EXTEND, 0x13}};
  for (const auto& row : rows) {
    CoreHost host(kThree);
    EXPECT_EQ(host.NewCcd()->SetNewDisplayMode(row.mode, row.displays), 0);
    EXPECT_EQ(host.machine.TakeJournal(), "") << row.mode << " " << row.displays;
  }
}

TEST(Win7CCDSet, TwoPathsNeedThePanel) {
  CoreHost host("win7 intel*3: crt 1024x768 active, hdmi 1920x1080, dvi 1920x1080");
  EXPECT_EQ(host.NewCcd()->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 0);
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST(Win7CCDSet, OtherTechnologyStandsInForAMissingDisplay) {
  CoreHost host("win7 intel*3: internal 1366x768 active, crt 1024x768, other 1280x720");
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_HDMI), 1);
  EXPECT_EQ(host.machine.Topology(), "single other");
}

TEST(Win7CCDSet, WithoutAnyPathOnlyTheTopologyIsTried) {
  CoreHost host("win7 intel: internal 1366x768 active");
  const CcdPointer ccd = host.NewCcd();
  host.machine.model().connectors[0].forced = true;
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB), 0);
  EXPECT_EQ(host.machine.TakeJournal(), Set(0, "0x41", 31));
}

// --- Forcing under the lasso status

struct ForceRow {
  uint32_t mode;
  uint32_t displays;
  const char* validate;
  const char* force;  // null: not forced
};

void ExpectForce(const ForceRow& row) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  host.ostrel().SetLassoBoxStatus(1);
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
  const BOOL result = ccd->SetNewDisplayMode(row.mode, row.displays);
  const std::string journal = host.machine.TakeJournal();
  if (row.force != nullptr) {
    EXPECT_EQ(result, 1) << row.mode << " " << row.displays;
    EXPECT_EQ(journal, Set(0, row.validate, 31) + Set(0, row.force));
    ASSERT_EQ(host.machine.ArmedTimers().size(), 1u);
    EXPECT_EQ(host.machine.ArmedTimers()[0].period, 3000u);
    EXPECT_EQ(host.machine.ArmedTimers()[0].window, nullptr);
  } else {
    EXPECT_EQ(journal.rfind(Set(0, row.validate, 31), 0), 0u) << journal;
    EXPECT_EQ(CountOf(journal, "flags=0x88"), 0u) << journal;
    EXPECT_TRUE(host.machine.ArmedTimers().empty());
  }
}

TEST(Win7CCDForce, ClonedExtendedAndExternalAreForcedOnCrtHdmiAndDvi) {
  constexpr uint32_t kNb = IMMonitor::MD_NB;
  const ForceRow rows[] = {
      {IMMonitor::DM_CLONE, kNb | IMMonitor::MD_CRT, "0x42", "0x882"},
      {IMMonitor::DM_CLONE, kNb | IMMonitor::MD_HDMI, "0x42", "0x882"},
      {IMMonitor::DM_CLONE, kNb | IMMonitor::MD_DVI, "0x42", "0x882"},
      {IMMonitor::DM_EXTEND, kNb | IMMonitor::MD_CRT, "0x44", "0x884"},
      {IMMonitor::DM_SINGLE, IMMonitor::MD_CRT, "0x48", "0x888"},
  };
  for (const ForceRow& row : rows) ExpectForce(row);
}

TEST(Win7CCDForce, OtherRequestsAreNotForced) {
  constexpr uint32_t kNb = IMMonitor::MD_NB;
  const ForceRow rows[] = {
      {IMMonitor::DM_SINGLE, kNb | IMMonitor::MD_CRT, "0x41", nullptr},  // the panel's topology
      {IMMonitor::DM_ADVANCED_P1, IMMonitor::MD_CRT, "0x41", nullptr},
      {IMMonitor::DM_CLONE, kNb | IMMonitor::MD_TV, "0x42", nullptr},
      {IMMonitor::DM_CLONE, kNb | IMMonitor::MD_DP, "0x42", nullptr},
      {IMMonitor::DM_EXTEND, kNb, "0x44", nullptr},
  };
  for (const ForceRow& row : rows) ExpectForce(row);
}

TEST(Win7CCDForce, RefusedForceFallsToSuppliedPaths) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  host.ostrel().SetLassoBoxStatus(1);
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
  host.machine.Fail("SetDisplayConfig", 2, ERROR_GEN_FAILURE);
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 1);
  EXPECT_EQ(host.machine.TakeJournal(),
            Set(0, "0x42", 31) + Set(0, "0x882", 31) + Set(2, "0x660") + Set(2, "0x6a0"));
  EXPECT_TRUE(host.machine.ArmedTimers().empty());
}

// --- EnableExtendMode

TEST(Win7CCDExtend, AsksWindowsForTheTopology) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(ccd->EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Set(0, "0x84"));
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
  EXPECT_EQ(ccd->EnableExtendMode(0), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Set(0, "0x81"));
  EXPECT_EQ(host.machine.Topology(), "single internal");
  EXPECT_EQ(ccd->EnableExtendModeOnDisplays(1, 0), 1);  // the mask does not matter
  EXPECT_EQ(host.machine.TakeJournal(), Set(0, "0x84"));
}

TEST(Win7CCDExtend, RefusalIsAFailure) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(ccd->EnableExtendMode(1), 0);
  EXPECT_EQ(host.machine.TakeJournal(), Set(0, "0x84", 31));
}

// --- GetDisplaySettings

DEVMODEA Filled() {
  DEVMODEA dm;
  std::memset(&dm, 0x5A, sizeof(dm));
  return dm;
}

TEST(Win7CCDSettings, FillsFourFieldsAndNothingElse) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1280x1024 active");
  host.machine.model().sources[1].mode.frequency = 75;
  const CcdPointer ccd = host.NewCcd();
  DEVMODEA dm = Filled();
  EXPECT_TRUE(ccd->GetDisplaySettings(IMMonitor::MD_CRT, &dm));
  DEVMODEA expected = Filled();
  expected.dmPelsWidth = 1280;
  expected.dmPelsHeight = 1024;
  expected.dmBitsPerPel = 32;
  expected.dmDisplayFrequency = 60;  // whatever the mode says
  EXPECT_EQ(std::memcmp(&dm, &expected, sizeof(dm)), 0);
}

TEST(Win7CCDSettings, DepthFollowsThePixelFormat) {
  for (const uint32_t bits : {8u, 16u, 24u, 32u}) {
    CoreHost host("win7 intel: internal 1366x768 active");
    host.machine.model().sources[0].mode.bits = bits;
    DEVMODEA dm = {};
    EXPECT_TRUE(host.NewCcd()->GetDisplaySettings(IMMonitor::MD_NB, &dm));
    EXPECT_EQ(dm.dmBitsPerPel, bits);
  }
}

TEST(Win7CCDSettings, BothDisplaysOfACloneHaveTheSharedMode) {
  CoreHost host("win7 intel: clone internal 1024x768 active, crt 1024x768 active");
  const CcdPointer ccd = host.NewCcd();
  for (const uint32_t display : {IMMonitor::MD_NB, IMMonitor::MD_CRT}) {
    DEVMODEA dm = {};
    EXPECT_TRUE(ccd->GetDisplaySettings(display, &dm));
    EXPECT_EQ(dm.dmPelsWidth, 1024u);
  }
}

TEST(Win7CCDSettings, DisplayThatShowsNothingHasNone) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1024x768, other 1280x720");
  const CcdPointer ccd = host.NewCcd();
  DEVMODEA dm = Filled();
  EXPECT_FALSE(ccd->GetDisplaySettings(IMMonitor::MD_CRT, &dm));
  // "Other" stands in for nothing here.
  EXPECT_FALSE(ccd->GetDisplaySettings(IMMonitor::MD_HDMI, &dm));
}

TEST(Win7CCDSettings, NullRecordFailsTheCheckAndTheCall) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  EXPECT_FALSE(ccd->GetDisplaySettings(IMMonitor::MD_NB, nullptr));
  EXPECT_EQ(host.TakeLog(), "Check failed: dm != NULL. \n");
}

// --- Technologies and paths

TEST(Win7CCDPaths, TechnologyOfADisplay) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  const TechnologyRow rows[] = {{kInternal, IMMonitor::MD_NB},
                                {0, IMMonitor::MD_CRT},
                                {1, IMMonitor::MD_TV},
                                {4, IMMonitor::MD_DVI},
                                {5, IMMonitor::MD_HDMI},
                                {10, IMMonitor::MD_DP},
                                {kOther, 0x40},
                                {kOther, 0},
                                {kOther, 3}};
  for (const TechnologyRow& row : rows) {
    EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), row.flag), row.technology) << row.flag;
  }
}

TEST(Win7CCDPaths, DisplayPortIsTenUnlessItWasTheFirstDisplaySeen) {
  CoreHost host("win7 intel: internal 1366x768 active, edp 1366x768");
  const CcdPointer ccd = host.NewCcd();
  ASSERT_EQ(Connected(ccd), (Report{1, 0x21, 2}));
  EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), IMMonitor::MD_DP), 10u);
}

TEST(Win7CCDPaths, DisplayPortSeenFirstIsLookedUpAsItWasSeen) {
  CoreHost host("win7 intel: edp 1366x768 active");
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), IMMonitor::MD_DP), 10u);
  ASSERT_EQ(Connected(ccd), (Report{1, 0x20, 1}));
  EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), IMMonitor::MD_DP), 11u);
}

TEST(Win7CCDPaths, DisplayWithoutAFlagTakesTheRunningMasksPlace) {
  // Keys are running masks: a path that adds no bit overwrites the entry in front of it.
  CoreHost host("win7 intel: edp 1366x768 active, wireless 1280x720");
  const CcdPointer ccd = host.NewCcd();
  ASSERT_EQ(Connected(ccd), (Report{1, 0x20, 2}));
  EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), IMMonitor::MD_DP), 15u);
}

TEST(Win7CCDPaths, ActiveDisplaysDoNotFillTheMap) {
  CoreHost host("win7 intel: edp 1366x768 active");
  const CcdPointer ccd = host.NewCcd();
  ASSERT_EQ(Active(ccd), (Report{1, 0x20, 1}));
  EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), IMMonitor::MD_DP), 10u);
}

DISPLAYCONFIG_PATH_INFO PathOf(uint32_t technology, UINT32 id) {
  DISPLAYCONFIG_PATH_INFO path = {};
  path.targetInfo.outputTechnology = static_cast<DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY>(technology);
  path.targetInfo.id = id;
  return path;
}

TEST(Win7CCDPaths, SelectsTheFirstOfATechnology) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  const PathList paths = {PathOf(kOther, 1), PathOf(5, 2), PathOf(5, 3)};
  DISPLAYCONFIG_PATH_INFO path = {};
  EXPECT_EQ(host.core().SelectPath(ccd.get(), IMMonitor::MD_HDMI, paths, &path), 1);
  EXPECT_EQ(std::memcmp(&path, &paths[1], sizeof(path)), 0);
}

TEST(Win7CCDPaths, SelectsOtherInPlaceOfAMissingTechnology) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  const PathList paths = {PathOf(5, 1), PathOf(kOther, 2), PathOf(kOther, 3)};
  DISPLAYCONFIG_PATH_INFO path = {};
  EXPECT_EQ(host.core().SelectPath(ccd.get(), IMMonitor::MD_CRT, paths, &path), 1);
  EXPECT_EQ(path.targetInfo.id, 2u);
}

TEST(Win7CCDPaths, SelectsNothingOutOfNothing) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  DISPLAYCONFIG_PATH_INFO path = PathOf(9, 99);
  EXPECT_EQ(host.core().SelectPath(ccd.get(), IMMonitor::MD_CRT, {PathOf(5, 1)}, &path), 0);
  EXPECT_EQ(host.core().SelectPath(ccd.get(), IMMonitor::MD_CRT, {}, &path), 0);
  EXPECT_EQ(path.targetInfo.id, 99u);
}

TEST(Win7CCDPaths, QueryAppendsAvailablePathsUnsorted) {
  CoreHost host("win7 intel*1: crt 1024x768 active, dvi, internal 1366x768");
  const CcdPointer ccd = host.NewCcd();
  PathList paths = {PathOf(9, 99)};
  EXPECT_EQ(host.core().QueryPaths(ccd.get(), QDC_ALL_PATHS, &paths, nullptr), 1);
  ASSERT_EQ(paths.size(), 3u);
  EXPECT_EQ(paths[0].targetInfo.id, 99u);
  EXPECT_EQ(paths[1].targetInfo.id, host.machine.model().connectors[0].target_id);
  EXPECT_EQ(paths[2].targetInfo.id, host.machine.model().connectors[2].target_id);
}

TEST(Win7CCDPaths, QueryTellsTheTopologyOfTheDatabase) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  PathList paths;
  DISPLAYCONFIG_TOPOLOGY_ID topology = {};
  EXPECT_EQ(host.core().QueryPaths(ccd.get(), QDC_DATABASE_CURRENT, &paths, &topology), 1);
  EXPECT_EQ(static_cast<int>(topology), 1);
  EXPECT_EQ(paths.size(), 1u);
}

TEST(Win7CCDPaths, ActiveTargetIsThePanelWhateverIsAskedFor) {
  CoreHost host("win7 intel: crt 1024x768 active, internal 1366x768");
  const CcdPointer ccd = host.NewCcd();
  const uint32_t panel = host.machine.model().connectors[1].target_id;
  for (const uint32_t display : {IMMonitor::MD_NB, IMMonitor::MD_CRT, IMMonitor::MD_DP}) {
    EXPECT_EQ(host.core().GetActiveTargetId(ccd.get(), display), panel);
  }
}

TEST(Win7CCDPaths, WithoutADisplayThereIsNoActiveTarget) {
  CoreHost host("win7 intel: internal 1366x768 active");
  const CcdPointer ccd = host.NewCcd();
  host.machine.model().connectors[0].forced = true;
  host.ForgetLog();
  EXPECT_EQ(host.core().GetActiveTargetId(ccd.get(), IMMonitor::MD_NB), 0u);
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(Win7CCDPaths, FailedQueryForTheActiveTargetIsLogged) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  host.machine.Fail("QueryDisplayConfig", 1);
  EXPECT_EQ(host.core().GetActiveTargetId(ccd.get(), IMMonitor::MD_NB), 0u);
  EXPECT_EQ(host.TakeLog(), "Can't find any active display path\n");
}

TEST(Win7CCDPaths, DisplaysOnTwoAdaptersAreSeveralAdapters) {
  CoreHost host("win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080", L"--v=2");
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  EXPECT_EQ(host.core().HasMultipleDisplayAdapter(ccd.get()), 1);
  EXPECT_EQ(host.TakeLog(), "HasMultipleDisplayAdapter() number of adapters =2\n");
}

TEST(Win7CCDPaths, AdapterWithoutADisplayDoesNotCount) {
  CoreHost host("win7 intel, nvidia: internal 1366x768 active, crt 1024x768, hdmi@2", L"--v=2");
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  EXPECT_EQ(host.core().HasMultipleDisplayAdapter(ccd.get()), 0);
  EXPECT_EQ(host.TakeLog(), "HasMultipleDisplayAdapter() number of adapters =1\n");
}

TEST(Win7CCDPaths, DisplaysOfOneTechnologyOnTwoAdaptersAreNotReduced) {
  CoreHost host("win7 intel, nvidia: hdmi 1366x768 active, hdmi2@2 1920x1080");
  EXPECT_EQ(host.core().HasMultipleDisplayAdapter(host.NewCcd().get()), 1);
}

TEST(Win7CCDPaths, AdaptersAreToldApartByBothHalvesOfTheirId) {
  CoreHost host("win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080");
  host.machine.model().adapters[1].luid_low = host.machine.model().adapters[0].luid_low;
  host.machine.model().adapters[1].luid_high = 1;
  EXPECT_EQ(host.core().HasMultipleDisplayAdapter(host.NewCcd().get()), 1);
}

// --- Native size

struct Size {
  bool result = false;
  uint32_t width = 0;
  uint32_t height = 0;
};
bool operator==(const Size& a, const Size& b) {
  return a.result == b.result && a.width == b.width && a.height == b.height;
}
std::ostream& operator<<(std::ostream& out, const Size& size) {
  return out << size.result << ": " << size.width << "x" << size.height;
}

Size Native(const CcdPointer& ccd, uint32_t display) {
  Size size = {false, 7, 7};
  size.result = ccd->GetNativeResolution(display, &size.width, &size.height);
  return size;
}

TEST(Win7CCDNative, IsThePreferredModeOfTheDisplay) {
  CoreHost host(
      "win7 intel: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080, dp 1920x1200");
  const CcdPointer ccd = host.NewBareCcd();  // loads the API itself
  EXPECT_EQ(Native(ccd, IMMonitor::MD_NB), (Size{true, 1366, 768}));
  EXPECT_EQ(Native(ccd, IMMonitor::MD_CRT), (Size{true, 1280, 1024}));
  EXPECT_EQ(Native(ccd, IMMonitor::MD_HDMI), (Size{true, 1920, 1080}));
  EXPECT_EQ(Native(ccd, IMMonitor::MD_DP), (Size{true, 1920, 1200}));
}

TEST(Win7CCDNative, DviAndHdmiAreLookedForAlike) {
  CoreHost hdmi("win7 intel: internal 1366x768 active, hdmi 1920x1080");
  EXPECT_EQ(Native(hdmi.NewCcd(), IMMonitor::MD_DVI), (Size{true, 1920, 1080}));
}

TEST(Win7CCDNative, DviComesFirstWhereBothAreThere) {
  CoreHost both("win7 intel: internal 1366x768 active, hdmi 1920x1080, dvi 1680x1050");
  const CcdPointer ccd = both.NewCcd();
  EXPECT_EQ(Native(ccd, IMMonitor::MD_HDMI), (Size{true, 1680, 1050}));
  EXPECT_EQ(Native(ccd, IMMonitor::MD_DVI), (Size{true, 1680, 1050}));
}

TEST(Win7CCDNative, EmbeddedDisplayPortIsDisplayPort) {
  CoreHost host("win7 intel: internal 1366x768 active, edp 1600x900");
  EXPECT_EQ(Native(host.NewCcd(), IMMonitor::MD_DP), (Size{true, 1600, 900}));
}

TEST(Win7CCDNative, AnythingElseIsTakenForThePanel) {
  CoreHost host("win7 intel: internal 1366x768 active, tv 800x600");
  const CcdPointer ccd = host.NewCcd();
  for (const uint32_t display : {uint32_t{IMMonitor::MD_TV}, 0x40u, 0u, 3u}) {
    EXPECT_EQ(Native(ccd, display), (Size{true, 1366, 768})) << display;
  }
}

TEST(Win7CCDNative, MissingDisplayHasNoneAndZeroesTheOutputs) {
  CoreHost host("win7 intel: internal 1366x768 active, other 1280x720");
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(Native(ccd, IMMonitor::MD_CRT), Size());
  EXPECT_EQ(Native(ccd, IMMonitor::MD_HDMI), Size());  // "other" stands in for nothing here
}

TEST(Win7CCDNative, DriverWithoutAnAnswerHasNone) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("DisplayConfigGetDeviceInfo", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(Native(ccd, IMMonitor::MD_NB), Size());
}

TEST(Win7CCDNative, ChecksItsArguments) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const CcdPointer ccd = host.NewCcd();
  uint32_t size = 7;
  host.ForgetLog();
  EXPECT_FALSE(ccd->GetNativeResolution(3, nullptr, &size));
  EXPECT_EQ(host.TakeLog(),
            "Check failed: width != NULL && height != NULL. \n"
            "Check failed: CountBits(monitor_id) == 1. \n");
  EXPECT_FALSE(ccd->GetNativeResolution(IMMonitor::MD_NB, &size, nullptr));
  EXPECT_EQ(host.TakeLog(), "Check failed: width != NULL && height != NULL. \n");
  EXPECT_EQ(size, 7u);
}

TEST(Win7CCDNative, PreferredModeIsTheWholeRecord) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();  // loads the API itself
  DISPLAYCONFIG_TARGET_PREFERRED_MODE record = {};
  EXPECT_EQ(ccd->GetTargetPreferredMode(IMMonitor::MD_CRT, &record), 1);
  EXPECT_EQ(record.width, 1024u);
  EXPECT_EQ(record.height, 768u);
  EXPECT_EQ(record.header.size, 80u);
  EXPECT_EQ(record.header.id, host.machine.model().connectors[1].target_id);
  EXPECT_EQ(record.targetMode.targetVideoSignalInfo.activeSize.cx, 1024u);
}

TEST(Win7CCDNative, PreferredModeOfAMissingDisplayLeavesTheRecord) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  DISPLAYCONFIG_TARGET_PREFERRED_MODE record = {};
  record.width = 7;
  EXPECT_EQ(ccd->GetTargetPreferredMode(IMMonitor::MD_DP, &record), 0);
  EXPECT_EQ(record.width, 7u);
}

TEST(Win7CCDNative, PreferredModeChecksItsArguments) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  EXPECT_EQ(ccd->GetTargetPreferredMode(0, nullptr), 0);
  EXPECT_EQ(host.TakeLog(), "Check failed: CountBits(monitor_id) == 1. \n");
}

// --- win7_ccd_helper

TEST(Win7CcdHelper, TechnologyOfADisplay) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const TechnologyRow rows[] = {{kInternal, IMMonitor::MD_NB},
                                {0, IMMonitor::MD_CRT},
                                {4, IMMonitor::MD_DVI},
                                {5, IMMonitor::MD_HDMI},
                                {10, IMMonitor::MD_DP},
                                {1, IMMonitor::MD_TV},
                                {kOther, 0x40}};
  host.core();
  host.ForgetLog();
  for (const TechnologyRow& row : rows) {
    EXPECT_EQ(host.core().OutputTechnologyFromDisplay(row.flag), row.technology) << row.flag;
  }
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.core().OutputTechnologyFromDisplay(0), kOther);
  EXPECT_EQ(host.core().OutputTechnologyFromDisplay(3), kOther);
  const std::string check = "Check failed: CountBits(imm_display) == 1. \n";
  EXPECT_EQ(host.TakeLog(), check + check);
}

TEST(Win7CcdHelper, ReadsPathsAndModes) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1024x768 active");
  PathList paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  EXPECT_TRUE(
      host.core().GetDisplayConfigBuffers("User32.dll", QDC_ONLY_ACTIVE_PATHS, &paths, &modes));
  EXPECT_EQ(paths.size(), 2u);
  EXPECT_EQ(modes.size(), 4u);  // a source and a target each
}

TEST(Win7CcdHelper, FailedSizesAreCheckedAndLogged) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  host.machine.Fail("GetDisplayConfigBufferSizes", 1, ERROR_GEN_FAILURE);
  PathList paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  EXPECT_FALSE(host.core().GetDisplayConfigBuffers("User32.dll", QDC_ALL_PATHS, &paths, &modes));
  EXPECT_EQ(host.TakeLog(),
            "Check failed: CCD_SUCCEEDED(r). \n"
            "Call to GetDisplayConfigBufferSizes() failed: r = 31\n");
}

TEST(Win7CcdHelper, FailedQueryIsSilent) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  host.machine.Fail("QueryDisplayConfig", 1, ERROR_GEN_FAILURE);
  PathList paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  EXPECT_FALSE(host.core().GetDisplayConfigBuffers("User32.dll", QDC_ALL_PATHS, &paths, &modes));
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(Win7CcdHelper, BuffersWithoutAnApiFail) {
  CoreHost host(kPanelAndCrt);
  PathList paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  EXPECT_FALSE(host.core().GetDisplayConfigBuffers(nullptr, QDC_ALL_PATHS, &paths, &modes));
}

TEST(Win7CcdHelper, BuffersCheckTheirPointers) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  EXPECT_FALSE(host.core().GetDisplayConfigBuffersOfNothing());
  EXPECT_EQ(host.TakeLog(),
            "Check failed: ccd != NULL. \n"
            "Check failed: path_count != NULL. \n"
            "Check failed: paths != NULL. \n"
            "Check failed: mode_count != NULL. \n"
            "Check failed: modes != NULL. \n");
}

LUID AdapterOf(CoreHost* host) {
  LUID luid;
  luid.LowPart = host->machine.model().adapters[0].luid_low;
  luid.HighPart = host->machine.model().adapters[0].luid_high;
  return luid;
}

TEST(Win7CcdHelper, ReadsTheNameOfASource) {
  CoreHost host(kPanelAndCrt);
  DISPLAYCONFIG_SOURCE_DEVICE_NAME name = {};
  EXPECT_TRUE(host.core().GetSourceDeviceName("User32.dll", AdapterOf(&host), 1, &name));
  EXPECT_EQ(std::wstring(name.viewGdiDeviceName), L"\\\\.\\DISPLAY2");
  EXPECT_EQ(static_cast<int>(name.header.type), 1);
  EXPECT_EQ(name.header.size, 84u);
}

TEST(Win7CcdHelper, UnknownSourceIsLogged) {
  CoreHost host(kPanelAndCrt);
  host.core();
  host.ForgetLog();
  DISPLAYCONFIG_SOURCE_DEVICE_NAME name = {};
  EXPECT_FALSE(host.core().GetSourceDeviceName("User32.dll", AdapterOf(&host), 17, &name));
  EXPECT_EQ(host.TakeLog(), "Call to DisplayConfigGetDeviceInfo(Source Name) failed\n");
}

TEST(Win7CcdHelper, SourceNameWithoutAnApiFails) {
  CoreHost host(kPanelAndCrt);
  DISPLAYCONFIG_SOURCE_DEVICE_NAME name = {};
  EXPECT_FALSE(host.core().GetSourceDeviceName(nullptr, AdapterOf(&host), 0, &name));
}

TEST(Win7CcdHelper, SourceNameChecksItsPointers) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  EXPECT_FALSE(host.core().GetSourceDeviceNameOfNothing());
  EXPECT_EQ(host.TakeLog(), "Check failed: ccd != NULL. \nCheck failed: source_name != NULL. \n");
}

}  // namespace
