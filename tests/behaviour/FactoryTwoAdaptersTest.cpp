// A machine with two adapters: who is asked what, which object it comes to, and whose objects end.
#include <gtest/gtest.h>

#include "tests/behaviour/FactoryHost.h"

namespace {

/// What SupportNvidiaCrossAdapter says, and which objects it leaves.
std::string CrossAdapter(StandInHost* host) {
  IMMonitor* intel = nullptr;
  IMMonitor* nv = nullptr;
  std::string said = (*host)->SupportNvidiaCrossAdapter(&intel, &nv) ? "yes " : "no ";
  said += NameOf(intel) + " " + NameOf(nv);
  delete intel;
  delete nv;
  return said;
}

std::string CrossAdapterTrace(StandInHost* host) {
  host->backends.TakeTrace();
  CrossAdapter(host);
  const std::string trace = host->backends.TakeTrace();
  return trace.substr(0, trace.find("NvidiaMMImplV3.Ended"));  // what it left is ended last
}

constexpr char kBothStarted[] =
    "IntelMMImpl.Made\nIntelMMImpl.Initial\nIntelMMImpl.CanControlHDMIMonitor\n"
    "NvidiaMMImplV3.Made\nNvidiaMMImplV3.Initial\n";

// --- SupportNvidiaCrossAdapter, step by step.

TEST(SupportNvidiaCrossAdapter, TwoAdaptersWithDisplaysSettleIt) {
  StandInHost host(kDisplaysOnBoth);
  EXPECT_EQ(CrossAdapter(&host), "yes IntelMMImpl NvidiaMMImplV3");
  const std::string trace = CrossAdapterTrace(&host);
  EXPECT_EQ(trace.find("IsDiscreteOnly"), std::string::npos) << trace;
}

TEST(SupportNvidiaCrossAdapter, AsksTheDriverWhereOnlyOneAdapterHasDisplays) {
  StandInHost host(kIntelAndNvidia);
  MakeNvidiaCross(&host.backends.script);
  EXPECT_EQ(CrossAdapter(&host), "yes IntelMMImpl NvidiaMMImplV3");
  const std::string trace = CrossAdapterTrace(&host);
  EXPECT_EQ(trace.substr(0, trace.find("IntelMMImpl.Ended")),
            std::string(kBothStarted) +
                "NvidiaMMImplV3.IsDiscreteOnly\nNvidiaMMImplV3.DetectDisplays\n"
                "NvidiaMMImplV3.IsCrossAdapterCapable\n");
}

TEST(SupportNvidiaCrossAdapter, IsFalseForADriverThatLacksEither) {
  StandInHost host(kIntelAndNvidia);
  MakeNvidiaDiscrete(&host.backends.script);
  EXPECT_EQ(CrossAdapter(&host), "no IntelMMImpl NvidiaMMImplV3");
  host.backends.script.discrete_only = false;
  host.backends.script.cross_adapter_capable = true;
  EXPECT_EQ(CrossAdapter(&host), "no IntelMMImpl NvidiaMMImplV3");
  const std::string trace = CrossAdapterTrace(&host);
  EXPECT_EQ(trace.find("IsCrossAdapterCapable"), std::string::npos) << trace;
  EXPECT_EQ(trace.find("DetectDisplays"), std::string::npos) << trace;
}

TEST(SupportNvidiaCrossAdapter, WindowsThatCannotBeAskedDoesNotSettleIt) {
  StandInHost host(kDisplaysOnBoth);
  host.machine.Fail("GetDisplayConfigBufferSizes", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(CrossAdapter(&host), "no IntelMMImpl NvidiaMMImplV3");
  host.backends.script.display_link_service = true;
  host.backends.script.display_link = Start::kFails;
  EXPECT_EQ(CrossAdapter(&host), "no IntelMMImpl NvidiaMMImplV3");
}

TEST(SupportNvidiaCrossAdapter, AnObjectThatDoesNotStartIsEnded) {
  StandInHost host(kDisplaysOnBoth);
  host.backends.script.nvidia = Start::kFails;
  EXPECT_EQ(CrossAdapter(&host), "no IntelMMImpl none");
  host.backends.script.intel = Start::kFails;
  EXPECT_EQ(CrossAdapter(&host), "no none none");
  EXPECT_EQ(host.backends.Living(), "");
}

TEST(SupportNvidiaCrossAdapter, AnObjectThatThrowsStaysWithTheCaller) {
  StandInHost host(kDisplaysOnBoth);
  host.backends.script.nvidia = Start::kThrows;
  EXPECT_EQ(CrossAdapter(&host), "no IntelMMImpl NvidiaMMImplV3");
  EXPECT_TRUE(host.LogHas("Exception occurred while creating NvidiaMMImplV3 object: no driver\n"));
  host.backends.script.intel = Start::kThrows;
  EXPECT_EQ(CrossAdapter(&host), "no IntelMMImpl none");
  EXPECT_TRUE(host.LogHas("Exception occurred while creating IntelMMImpl object: no driver\n"));
}

TEST(SupportNvidiaCrossAdapter, ConstructorsThatThrowLeaveNothing) {
  StandInHost host(kDisplaysOnBoth);
  host.backends.maker_throws = Backend::kNvidiaMMImplV3;
  EXPECT_EQ(CrossAdapter(&host), "no IntelMMImpl none");
  EXPECT_TRUE(
      host.LogHas("Exception occurred while creating NvidiaMMImplV3 object: no such card\n"));
  host.backends.maker_throws = Backend::kIntelMMImpl;
  EXPECT_EQ(CrossAdapter(&host), "no none none");
  EXPECT_TRUE(host.LogHas("Exception occurred while creating IntelMMImpl object: no such card\n"));
}

// --- The controller of both.

TEST(TwoAdapters, TheControllerGetsTheProbesIntelObjectAndANewNvidiaOne) {
  StandInHost host(kDisplaysOnBoth);
  EXPECT_EQ(host.Answer(), "HybridController");
  EXPECT_EQ(host.backends.TakeTrace(),
            std::string(kBothStarted) + "NvidiaMMImplV3.Ended\nNvidiaMMImplV3CrossAdapter.Made\n");
  EXPECT_EQ(host->State().active_vendor, 0xFFFF);
  EXPECT_EQ(host->State().factory_vendor, 0);
}

TEST(TwoAdapters, WithDisplayLinkTheControllerGetsAStartedObjectOfItInstead) {
  StandInHost host(kDisplaysOnBoth);
  host.backends.script.display_link_service = true;
  EXPECT_EQ(host.Answer(), "HybridController");
  const std::string trace = host.backends.TakeTrace();
  EXPECT_NE(trace.find("NvidiaMMImplV3CrossAdapter.Made\nIntelMMImpl.Ended\n"
                       "DisplayLinkWorkaroundImpl.Made\nDisplayLinkWorkaroundImpl.Initial\n"
                       "DisplayLinkWorkaroundImpl.Made\n"),
            std::string::npos)
      << trace;
  EXPECT_EQ(host->GetMultiMonitorObject(), host->ActiveMonitor());
  EXPECT_EQ(NameOf(host->ActiveMonitor()), "HybridController");
}

TEST(TwoAdapters, AnActiveObjectStaysAndTheProbeIsForNothing) {
  StandInHost host(kIntelAndNvidia);
  ASSERT_EQ(host.Answer(), "IntelMMImpl");
  IMMonitor* const object = host->ActiveMonitor();
  MakeNvidiaCross(&host.backends.script);
  for (int call = 0; call < 2; ++call) {
    EXPECT_EQ(host->GetMultiMonitorObject(), object);
    EXPECT_EQ(host.backends.Living(), "IntelMMImpl ");
    EXPECT_EQ(host->State().active_vendor, 0x8086);
  }
  EXPECT_EQ(host.backends.Made(Backend::kIntelMMImpl), 3u);
}

TEST(TwoAdapters, TheControllerGivesWayWhenAnAdapterVanishesAndDoesNotComeBack) {
  StandInHost host(kDisplaysOnBoth);
  ASSERT_EQ(host.Answer(), "HybridController");
  host.Disable(1);
  EXPECT_EQ(host.Answer(), "IntelMMImpl");
  EXPECT_EQ(host.backends.Living(), "IntelMMImpl ");
  host.Disable(1, false);
  EXPECT_EQ(host.Answer(), "IntelMMImpl");
}

TEST(TwoAdapters, AControllerThatCountsAsTheLastVendorsStays) {
  StandInHost host(kDisplaysOnBoth);
  host.Disable(1);
  ASSERT_EQ(host.Answer(), "IntelMMImpl");
  host->DeleteMultiMonitorObject();
  host.Disable(1, false);
  ASSERT_EQ(host.Answer(), "HybridController");
  host.Disable(1);
  EXPECT_EQ(host.Answer(), "HybridController");
  EXPECT_EQ(host->State().active_vendor, 0x8086);
}

// --- The probe.

TEST(NvidiaProbe, DetectsBeforeItAsksWhatNvidiaCanManage) {
  StandInHost host(kVistaIntelAndNvidia);
  MakeNvidiaDiscrete(&host.backends.script);
  EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_EQ(host.backends.TakeTrace(),
            "NvidiaMMImplV3.Made\nNvidiaMMImplV3.Initial\nNvidiaMMImplV3.IsDiscreteOnly\n"
            "NvidiaMMImplV3.DetectDisplays\nNvidiaMMImplV3.CouldManageMultipleDisplay\n");
}

TEST(NvidiaProbe, AsksForTheAdapterModeWithThreeInHand) {
  StandInHost host(kVistaIntelAndNvidia);
  host.backends.script.adapter_mode = 3;
  EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_EQ(host.backends.TakeTrace(),
            "NvidiaMMImplV3.Made\nNvidiaMMImplV3.Initial\nNvidiaMMImplV3.IsDiscreteOnly\n"
            "NvidiaMMImplV3.AdapterMode(3)\n");
}

TEST(NvidiaProbe, TheDiscreteAnswerIsGivenOnce) {
  StandInHost host(kVistaIntelAndNvidia);
  MakeNvidiaDiscrete(&host.backends.script, false);
  EXPECT_EQ(host.Answer(), "IntelMMImpl");
  EXPECT_EQ(host->State().probe_nvidia, 0);
  host.backends.script.could_manage = true;
  host.backends.TakeTrace();
  EXPECT_EQ(host.Answer(), "IntelMMImpl");
  EXPECT_EQ(host.backends.TakeTrace(), "");
}

TEST(NvidiaProbe, TheOtherAnswerIsAskedForAtEachCallUntilNvidiaIsNamed) {
  StandInHost host(kVistaIntelAndNvidia);
  for (const uint32_t mode : {0u, 2u}) {
    host.backends.script.adapter_mode = mode;
    EXPECT_EQ(host.Answer(), "IntelMMImpl");
    EXPECT_EQ(host.backends.TakeStarts(), "NvidiaMMImplV3 ");
    EXPECT_EQ(host->State().probe_nvidia, 1);
  }
  host.backends.script.adapter_mode = 1;
  EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
  // Sticky: what the driver says later counts no more, though it is asked.
  host.backends.script.adapter_mode = 2;
  EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_EQ(host->State().probe_nvidia, 1);
}

TEST(NvidiaProbe, AsksTheActiveObjectItselfAndKeepsIt) {
  StandInHost host(kVistaIntelAndNvidia);
  host.backends.script.adapter_mode = 1;
  ASSERT_EQ(host.Answer(), "NvidiaMMImplV3");
  IMMonitor* const object = host->ActiveMonitor();
  host.backends.TakeStarts();
  EXPECT_EQ(host->GetMultiMonitorObject(), object);
  EXPECT_EQ(host.backends.TakeStarts(), "NvidiaMMImplV3 ");
  EXPECT_EQ(host.backends.Made(Backend::kNvidiaMMImplV3), 1u);
}

TEST(NvidiaProbe, AnActiveObjectThatNoLongerStartsIsEndedOnceAndReplaced) {
  StandInHost host(kVistaIntelAndNvidia);
  host.backends.script.adapter_mode = 1;
  ASSERT_EQ(host.Answer(), "NvidiaMMImplV3");
  host.backends.script.nvidia = Start::kFails;
  host.backends.TakeTrace();
  EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_EQ(host.backends.TakeTrace(),
            "NvidiaMMImplV3.Initial\nNvidiaMMImplV3.Ended\nNvidiaMMImplV3.Made\n");
  EXPECT_TRUE(host.LogHas("Check failed: nv != NULL. "));
  EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
}

TEST(NvidiaProbe, AnActiveObjectThatThrowsStaysTheActiveOne) {
  StandInHost host(kVistaIntelAndNvidia);
  host.backends.script.adapter_mode = 1;
  ASSERT_EQ(host.Answer(), "NvidiaMMImplV3");
  IMMonitor* const object = host->ActiveMonitor();
  host.backends.script.nvidia = Start::kThrows;
  EXPECT_THROW(host->GetMultiMonitorObject(), std::runtime_error);
  EXPECT_EQ(host->ActiveMonitor(), object);
  EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
}

// NVIDIA alone first, then Intel, which has the HDMI connector, so that no other NVIDIA object is
// at hand.
TEST(NvidiaProbe, TheActiveObjectIsEndedOnceWhenIntelIsChosen) {
  StandInHost host(kIntelAndNvidia);
  host.backends.script.intel_has_hdmi = true;
  host.Disable(0);
  ASSERT_EQ(host.Answer(), "NvidiaMMImplV3");
  host.Disable(0, false);
  host.backends.TakeTrace();
  EXPECT_EQ(host.Answer(), "IntelMMImpl");
  EXPECT_EQ(host.backends.TakeTrace(),
            "IntelMMImpl.Made\nIntelMMImpl.Initial\nIntelMMImpl.CanControlHDMIMonitor\n"
            "NvidiaMMImplV3.Initial\nNvidiaMMImplV3.IsDiscreteOnly\n"
            "NvidiaMMImplV3.AdapterMode(3)\nNvidiaMMImplV3.Ended\n");
}

TEST(NvidiaProbe, AnActiveObjectOfAnotherGenerationIsNotAskedAndStays) {
  StandInHost host(kVistaIntelAndNvidia);
  host.backends.script.adapter_mode = 1;
  host.Disable(0);
  ASSERT_EQ(host.Answer(), "NvidiaMMImplV2");
  IMMonitor* const object = host->ActiveMonitor();
  host.Disable(0, false);
  host.backends.TakeStarts();
  EXPECT_EQ(host->GetMultiMonitorObject(), object);
  EXPECT_EQ(host.backends.TakeStarts(), "NvidiaMMImplV3 ");
  EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV2 ");  // what was probed is not used, and ends
}

TEST(NvidiaProbe, WithoutAnIntelObjectNothingSpeaksAgainstNvidia) {
  StandInHost host(kVistaIntelAndNvidia);
  MakeNvidiaDiscrete(&host.backends.script);
  host.backends.script.intel_has_hdmi = true;  // nobody to ask below Windows 7
  EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");
}

TEST(NvidiaProbe, KeepsTheChosenObjectWithoutOneFromTheProbeAndSaysSo) {
  StandInHost host(kVistaIntelAndNvidia);
  MakeNvidiaDiscrete(&host.backends.script);
  ASSERT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_FALSE(host.LogHas("Check failed: nv != NULL. "));
  IMMonitor* const object = host->ActiveMonitor();
  EXPECT_EQ(host->GetMultiMonitorObject(), object);
  EXPECT_TRUE(host.LogHas("Check failed: nv != NULL. "));
}

TEST(NvidiaProbe, MakesAnObjectForTheRememberedAnswer) {
  StandInHost host(kVistaIntelAndNvidia);
  MakeNvidiaDiscrete(&host.backends.script);
  ASSERT_EQ(host.Answer(), "NvidiaMMImplV3");
  host->DeleteMultiMonitorObject();
  host.backends.TakeTrace();
  EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_EQ(host.backends.TakeTrace(), "NvidiaMMImplV3.Made\n");
  EXPECT_TRUE(host.LogHas("Check failed: nv != NULL. "));
}

TEST(NvidiaProbe, NvidiaReplacesIntelWhenItComesToLead) {
  StandInHost host(kIntelAndNvidia);
  ASSERT_EQ(host.Answer(), "IntelMMImpl");
  host.backends.script.adapter_mode = 3;
  host.backends.TakeStarts();
  EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_EQ(host.backends.TakeStarts(), "IntelMMImpl NvidiaMMImplV3 NvidiaMMImplV3 ");
  EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
}

TEST(NvidiaProbe, DisplayLinkTakesTheIntelObjectsPlaceStarted) {
  StandInHost host(kIntelAndNvidia);
  host.backends.script.display_link_service = true;
  EXPECT_EQ(host.Answer(), "DisplayLinkWorkaroundImpl");
  EXPECT_EQ(host.backends.Living(), "DisplayLinkWorkaroundImpl ");
  EXPECT_EQ(host->State().active_vendor, 0x8086);
  host->Reset();
  host.backends.maker_gives_null = Backend::kDisplayLinkWorkaroundImpl;
  EXPECT_EQ(host.Answer(), "none");
  EXPECT_TRUE(host.LogHas("Check failed: m_instance != NULL. "));
  host->Reset();
  // Without an Intel object at hand it is not started.
  host.backends.maker_gives_null.reset();
  host.backends.script.intel = Start::kFails;
  host.backends.TakeStarts();
  EXPECT_EQ(host.Answer(), "DisplayLinkWorkaroundImpl");
  EXPECT_EQ(host.backends.TakeStarts(), "IntelMMImpl NvidiaMMImplV3 ");
}

// --- AMD beside Intel.

TEST(IntelAndAmd, AnObjectThatIsNotNeededEnds) {
  StandInHost host(kIntelAndAmd);
  ASSERT_EQ(host.Answer(), "ADLImpl");
  IMMonitor* const object = host->ActiveMonitor();
  host.backends.TakeTrace();
  EXPECT_EQ(host->GetMultiMonitorObject(), object);
  EXPECT_EQ(host.backends.TakeTrace(), "ADLImpl.Made\nADLImpl.Initial\nADLImpl.Ended\n");
}

TEST(IntelAndAmd, EachTakesTheOthersPlace) {
  StandInHost host(kIntelAndAmd);
  host.backends.script.adl = Start::kFails;
  EXPECT_EQ(host.Answer(), "IntelMMImpl");
  EXPECT_EQ(host.backends.TakeTrace(),
            "ADLImpl.Made\nADLImpl.Initial\nADLImpl.Ended\nIntelMMImpl.Made\n");
  EXPECT_EQ(host->State().factory_vendor, 0x8086);
  host.backends.script.adl = Start::kWorks;
  EXPECT_EQ(host.Answer(), "ADLImpl");
  EXPECT_EQ(host.backends.TakeTrace(), "ADLImpl.Made\nADLImpl.Initial\nIntelMMImpl.Ended\n");
  EXPECT_EQ(host->State().active_vendor, 0x1002);
  host.backends.script.adl = Start::kFails;
  EXPECT_EQ(host.Answer(), "IntelMMImpl");
  EXPECT_EQ(host.backends.Living(), "IntelMMImpl ");
}

TEST(IntelAndAmd, WhetherTheLibraryQualifiesIsNotAsked) {
  StandInHost host(kIntelAndAmd);
  host.backends.script.adl_qualifies = false;
  EXPECT_EQ(host.Answer(), "ADLImpl");
}

// --- The active vendor.

TEST(ActiveVendor, FlipsWhereTheProbeAndTheActiveVendorDisagree) {
  StandInHost host(kDisplaysOnBoth);
  MakeNvidiaDiscrete(&host.backends.script);
  host.backends.script.intel_has_hdmi = true;  // the probe says Intel, the displays NVIDIA
  ASSERT_EQ(host.Answer(), "IntelMMImpl");
  for (int call = 0; call < 3; ++call) {
    IMMonitor* const before = host->ActiveMonitor();
    host->OnActiveDisplayAdapterVendorChanged();
    EXPECT_NE(host->ActiveMonitor(), before);
    EXPECT_EQ(NameOf(host->ActiveMonitor()), "NvidiaMMImplV3");
    EXPECT_EQ(host->State().active_vendor, 0x10DE);
    EXPECT_EQ(host->State().factory_vendor, 0x8086);
    host.backends.TakeStarts();
    EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");  // counts as the Intel object
    EXPECT_EQ(host.backends.TakeStarts(), "IntelMMImpl ");
    EXPECT_EQ(host->State().active_vendor, 0x8086);
    EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
  }
}

TEST(ActiveVendor, IsAskedOfAnObjectOfTheSecondGenerationThatEnds) {
  StandInHost host(kVistaIntelAndNvidia);
  MakeNvidiaDiscrete(&host.backends.script);
  EXPECT_EQ(host->GetActiveVendorId(), 0x10DEu);
  EXPECT_EQ(host.backends.TakeTrace(),
            "NvidiaMMImplV2.Made\nNvidiaMMImplV2.Initial\nNvidiaMMImplV2.IsDiscreteOnly\n"
            "NvidiaMMImplV2.DetectDisplays\nNvidiaMMImplV2.CouldManageMultipleDisplay\n"
            "NvidiaMMImplV2.Ended\n");
  host.backends.script.discrete_only = false;
  host.backends.script.adapter_mode = 1;
  EXPECT_EQ(host->GetActiveVendorId(), 0x10DEu);
  EXPECT_EQ(host.backends.TakeTrace(),
            "NvidiaMMImplV2.Made\nNvidiaMMImplV2.Initial\nNvidiaMMImplV2.IsDiscreteOnly\n"
            "NvidiaMMImplV2.AdapterMode(3)\nNvidiaMMImplV2.Ended\n");
}

TEST(ActiveVendor, IsThatOfTheAdaptersWithDisplaysFromWindows7On) {
  StandInHost host(kDisplaysOnBoth);
  MakeNvidiaDiscrete(&host.backends.script, false);
  EXPECT_EQ(host->GetActiveVendorId(), 0x10DEu);
  EXPECT_EQ(host.backends.TakeTrace().find("CouldManage"), std::string::npos);
}

TEST(ActiveVendor, IsIntelFromWindows7OnWhereOnlyOneAdapterHasDisplays) {
  StandInHost host(kIntelAndNvidia);
  MakeNvidiaDiscrete(&host.backends.script, true);
  EXPECT_EQ(host->GetActiveVendorId(), 0x8086u);
  EXPECT_EQ(host.backends.TakeTrace().find("CouldManage"), std::string::npos);
}

TEST(ActiveVendor, CannotBeToldOnAServerAndNothingIsLeft) {
  StandInHost host("2008 intel, nvidia: internal 1366x768 active");
  MakeNvidiaDiscrete(&host.backends.script);
  ASSERT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_THROW(host->GetActiveVendorId(), std::runtime_error);
  EXPECT_THROW(host->OnActiveDisplayAdapterVendorChanged(), std::runtime_error);
  EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
  EXPECT_EQ(host->CreateIMMonitorForActiveVendor(), nullptr);
  EXPECT_TRUE(host.LogHas("Exception occurred while creating IMMonitor object\n"));
}

TEST(ActiveVendor, AnObjectThatCannotBeMadeLeavesNone) {
  StandInHost host(kIntelAndNvidia);
  ASSERT_EQ(host.Answer(), "IntelMMImpl");
  host.backends.script.adapter_mode = 1;
  host.backends.maker_throws = Backend::kNvidiaMMImplV3;
  host->OnActiveDisplayAdapterVendorChanged();
  EXPECT_EQ(host->ActiveMonitor(), nullptr);
  EXPECT_EQ(host->State().active_vendor, 0x10DE);
  EXPECT_TRUE(host.LogHas("Exception occurred while creating IMMonitor object\n"));
  EXPECT_TRUE(host.LogHas("Check failed: m_instance != NULL. "));
  EXPECT_EQ(host.backends.Living(), "");
}

TEST(ActiveVendor, AnObjectThatWasReplacedIsRebuiltForTheOneListedVendor) {
  StandInHost host("win7 amd, intel: internal 1366x768 active");
  host.Disable(1);
  ASSERT_EQ(host.Answer(), "ADLImpl");
  host.Adapter(0).hardware_id = "PCI\\VEN_10DE&DEV_0DF4";
  host->OnActiveDisplayAdapterVendorChanged();
  IMMonitor* const replaced = host->ActiveMonitor();
  EXPECT_EQ(NameOf(replaced), "NvidiaMMImplV3");
  EXPECT_EQ(host->State().factory_vendor, 0x1002);
  EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_EQ(host.backends.Made(Backend::kNvidiaMMImplV3), 2u);
  EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
}

}  // namespace
