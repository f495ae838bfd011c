// How Win7CCD turns a request into SetDisplayConfig.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/behaviour/CcdReports.h"

using namespace ccd_test;

namespace {

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

}  // namespace
