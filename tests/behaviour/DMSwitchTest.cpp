// The session object outside a press: its making, what it asks of the machine, saving,
// notifications.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Workaround/RefreshRateWorkaround.h"
#include "tests/support/SessionBench.h"

namespace {

constexpr char kProcessorKey[] = "HKLM\\HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";

// --- Initial.

TEST(DMSwitchInitial, AsksTheObjectNothing) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(bench.init_calls, "Initial\n");  // by the library boundary
  EXPECT_TRUE(bench.box().Exists());
}

class DMSwitchInitialAtStart : public testing::TestWithParam<const char*> {
 protected:
  DMSwitchInitialAtStart()
      : bench(std::string(GetParam()) + " intel: internal 1366x768 active, crt 1024x768") {
    bench.machine.Config("Settings", "Adjust Correct Resolution At Start On XP", 1);
  }
  SessionBench bench;
};

TEST_P(DMSwitchInitialAtStart, InitialisesTheObjectASecondTimeWithTheStartKey) {
  bench.machine.Config("Single Internal", "Setting Type", 0);
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(bench.init_calls, "Initial\nInitial\nDetectDisplays\nGetCurrentDisplayMode\n");
}

TEST_P(DMSwitchInitialAtStart, PutsTheResolutionOfTheModeFoundRight) {
  bench.machine.Config("Single Internal", "Setting Type", 1);
  bench.machine.Config("Single Internal", "Width", 800);
  bench.machine.Config("Single Internal", "Height", 600);
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(bench.machine.model().sources[0].mode.width, 800u);
  EXPECT_EQ(bench.machine.model().sources[0].mode.height, 600u);
}

TEST_P(DMSwitchInitialAtStart, LeavesTheResolutionOfAModeThatIsNotKnown) {
  bench.script->mode_result = 0;
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(bench.init_calls, "Initial\nInitial\nDetectDisplays\nGetCurrentDisplayMode\n");
  EXPECT_EQ(bench.machine.model().sources[0].mode.width, 1366u);
}

INSTANTIATE_TEST_SUITE_P(DMSwitchInitial, DMSwitchInitialAtStart, testing::Values("xp", "2003"));

TEST(DMSwitchInitial, DoesNotDoSoFromVistaOn) {
  SessionBench bench("vista intel: internal 1366x768 active, crt 1024x768");
  bench.machine.Config("Settings", "Adjust Correct Resolution At Start On XP", 1);
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(bench.init_calls, "Initial\n");
}

TEST(DMSwitchInitial, StopsAtAnObjectThatCannotBeInitialisedAgainAndSucceeds) {
  SessionBench bench("xp intel: internal 1366x768 active, crt 1024x768");
  bench.machine.Config("Settings", "Adjust Correct Resolution At Start On XP", 1);
  int initials = 0;
  bench.script->on_call = [&](const std::string& call) {
    if (call == "Initial" && ++initials == 2) bench.script->initial = 0;
  };
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(bench.init_calls, "Initial\nInitial\n");
}

TEST(DMSwitchInitial, FailsWithoutTheHostsFolder) {
  SessionBench bench;
  bench.Load();
  bench.machine.Fail("GetModuleFileNameW", 1, ERROR_NOT_ENOUGH_MEMORY,
                     sim::Machine::Repeat::kFromThenOn);
  EXPECT_FALSE(bench.Ready(new FakeMonitor(bench.script), static_cast<uint16_t>(kVendorIntel)));
  EXPECT_FALSE(bench.box().Exists());
}

class WatchedRefreshRate : public RefreshRateWorkaround {
 public:
  explicit WatchedRefreshRate(std::shared_ptr<std::string> events) : events_(std::move(events)) {}
  ~WatchedRefreshRate() override { *events_ += "deleted "; }
  void BeginMonitoring() override { *events_ += "begin "; }
  void EndMonitoring() override { *events_ += "end "; }
  void AdjustRefreshRate() override { *events_ += "adjust "; }

 private:
  std::shared_ptr<std::string> events_;
};

TEST(DMSwitchInitial, ReplacesTheRefreshRateObjectByTheNewOne) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  const auto events = std::make_shared<std::string>();
  bench.box().SetRefreshRateWorkaround(new WatchedRefreshRate(events));
  EXPECT_TRUE(bench.box().Initial());
  EXPECT_EQ(*events, "deleted ");
}

TEST(DMSwitchInitial, ChecksTheObjectForTheRefreshRate) {
  SessionBench bench;
  bench.machine.SetCommandLine(L"host.exe --enable-dcheck");
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.LogHas("Check failed: m != NULL. "));
  bench.LoseObject();
  EXPECT_TRUE(bench.box().Initial());
  EXPECT_TRUE(bench.LogHas("Check failed: m != NULL. "));
  EXPECT_FALSE(bench.LogHas("Check failed: intel_rr_workaround_.get() != NULL. "));
}

TEST(DMSwitchEnd, DeletesTheRefreshRateObject) {
  const auto events = std::make_shared<std::string>();
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.box().SetRefreshRateWorkaround(new WatchedRefreshRate(events));
  bench.ostrel().DeInit();
  EXPECT_EQ(*events, "deleted ");
  EXPECT_FALSE(bench.box().Exists());
}

// --- IsModeUsable over the session's own connected displays.

TEST(DMSwitchIsModeUsable, LooksAtTheDisplaysOfTheLastOpening) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.box().IsModeUsable(IMMonitor::DM_SINGLE, 0x01));
  bench.ostrel().Run();
  EXPECT_TRUE(bench.box().IsModeUsable(IMMonitor::DM_SINGLE, 0x01));
  EXPECT_TRUE(bench.box().IsModeUsable(IMMonitor::DM_CLONE, 0x03));
  EXPECT_FALSE(bench.box().IsModeUsable(IMMonitor::DM_CLONE, 0x11));
  EXPECT_TRUE(bench.box().IsModeUsable(IMMonitor::DM_ADVANCED_P2, 0x30));
}

// --- SaveCurrentMode.

class Save : public testing::Test {
 protected:
  std::string Written() {
    return bench.Remembered("Active Display Mode", "Display Mode") + " " +
           bench.Remembered("Active Display Mode", "Active Displays") + " " +
           bench.Remembered("Active Display Mode", "Presentation Mode");
  }
  SessionBench bench;
};

TEST_F(Save, WritesNothingWithoutAList) {
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.box().SaveCurrentMode());
  EXPECT_TRUE(bench.ostrel().SaveCurrentMode());
  EXPECT_EQ(Written(), "- - -");
}

TEST_F(Save, WritesTheLastModeAndTheSelectedItemsTypeWhileThePopupShows) {
  bench.script->mode = IMMonitor::DM_CLONE;
  bench.script->active = 0x03;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().Run();
  bench.box().SetItemType(1, 64);
  EXPECT_TRUE(bench.box().SaveCurrentMode());
  EXPECT_EQ(Written(), "2 3 64");
}

TEST_F(Save, WritesAfterAPopupThatWasCancelledAndNotAfterASwitch) {
  ASSERT_TRUE(bench.Start());
  bench.ostrel().Run();
  bench.ostrel().Cancel();
  EXPECT_TRUE(bench.box().SaveCurrentMode());
  EXPECT_EQ(Written(), "1 1 0");
  bench.ostrel().Run();
  bench.ostrel().Run();
  bench.ostrel().Stop();
  EXPECT_FALSE(bench.box().SaveCurrentMode());
}

TEST_F(Save, WritesNothingWithNoItemSelected) {
  bench.script->mode = IMMonitor::DM_HSPAN;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().Run();
  EXPECT_FALSE(bench.box().SaveCurrentMode());
  EXPECT_EQ(Written(), "- - -");
}

TEST_F(Save, WritesIntoTheTemporaryFolder) {
  ASSERT_TRUE(bench.Start());
  const std::wstring folder = bench.machine.TempFolder();
  EXPECT_EQ(bench.box().SettingsPath(), std::string(folder.begin(), folder.end()) + "\\Ostrel.ini");
}

TEST_F(Save, AKeyForDisplaysAloneHasAnEmptySignature) {
  ASSERT_TRUE(bench.Start());
  const SettingsKey key = bench.box().MakeSettingsKeyForDisplays(1, 0x10);
  EXPECT_EQ(key.mode, 1u);
  EXPECT_EQ(key.displays, 0x10u);
  EXPECT_EQ(key.section, "1,16 | ");
  EXPECT_EQ(key.signature, "");
}

// --- Notifications.

TEST(Notifications, AreWarnedAboutWithoutAReceiver) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().RegisterNotification(nullptr, SessionBench::kMessage);
  bench.ostrel().Run();
  EXPECT_TRUE(bench.LogHas(":WARNING:DMSwitch.cpp("));
  EXPECT_TRUE(bench.LogHas("Notify receiver did not assigned!"));
  EXPECT_EQ(bench.machine.Calls("PostMessageA"), 0u);
}

TEST(Notifications, AreNeverPostedBelow1024) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().RegisterNotification(SessionBench::Receiver(), 1023);
  bench.ostrel().Run();
  EXPECT_TRUE(bench.LogHas(":ERROR:DMSwitch.cpp("));
  EXPECT_TRUE(bench.LogHas("Invalid notify message id!"));
  EXPECT_EQ(bench.machine.Calls("PostMessageA"), 0u);
  EXPECT_NE(bench.machine.Popup(), nullptr);  // the session goes on
}

TEST(Notifications, ArePostedFrom1024On) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().RegisterNotification(SessionBench::Receiver(), 1024);
  bench.ostrel().Run();
  ASSERT_EQ(bench.machine.Notifications().size(), 1u);
  EXPECT_EQ(bench.machine.Notifications()[0].message, 1024u);
  EXPECT_EQ(bench.machine.Notifications()[0].wparam, 1u);
  EXPECT_EQ(bench.machine.Notifications()[0].lparam, 0);
}

TEST(Notifications, WithBothFaultsWarnOnly) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().RegisterNotification(nullptr, 5);
  bench.ostrel().Run();
  EXPECT_TRUE(bench.LogHas("Notify receiver did not assigned!"));
  EXPECT_FALSE(bench.LogHas("Invalid notify message id!"));
}

TEST(Notifications, ASecondRegistrationFailsItsChecksAndHolds) {
  SessionBench bench;
  bench.machine.SetCommandLine(L"host.exe --enable-dcheck");
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.LogHas("Check failed: notify_receiver_"));
  const HWND other = reinterpret_cast<HWND>(static_cast<uintptr_t>(0x777));
  EXPECT_TRUE(bench.ostrel().RegisterNotification(other, 2000));
  EXPECT_TRUE(bench.LogHas("Check failed: notify_receiver_ == NULL. "));
  EXPECT_TRUE(bench.LogHas("Check failed: notify_message_id_ == 0. "));
  bench.ostrel().Run();
  EXPECT_EQ(bench.machine.Notifications().back().receiver, other);
  EXPECT_EQ(bench.machine.Notifications().back().message, 2000u);
}

// --- What the list wants to know of the machine.

class Facts : public testing::Test {
 protected:
  void SetProcessor(const std::string& brand) {
    bench.machine.model().registry[kProcessorKey]["VendorIdentifier"] = brand;
  }
  SessionBench bench;
};

TEST_F(Facts, IntelDrivesThreeDisplaysIfItsObjectSaysSoAndTheAnswerIsKept) {
  SetProcessor("GenuineIntel");
  bench.script->triple_display = true;
  ASSERT_TRUE(bench.Start<FakeExtensionMonitor>());
  const bool supported = bench.box().TripleDisplaySupported();
  const bool asked = bench.Calls() == "SupportsTripleDisplay\n";
  EXPECT_EQ(supported, asked);  // a processor of the oldest known kind is not asked about
  bench.script->triple_display = !bench.script->triple_display;
  EXPECT_EQ(bench.box().TripleDisplaySupported(), supported);
  EXPECT_EQ(bench.Calls(), "");
}

TEST_F(Facts, IntelGraphicsOnAnotherProcessorDriveTwo) {
  SetProcessor("AuthenticAMD");
  bench.script->triple_display = true;
  ASSERT_TRUE(bench.Start<FakeExtensionMonitor>());
  EXPECT_FALSE(bench.box().TripleDisplaySupported());
  EXPECT_EQ(bench.Calls(), "");
}

TEST_F(Facts, IntelWithoutTheSideInterfaceDrivesTwo) {
  SetProcessor("GenuineIntel");
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.box().TripleDisplaySupported());
}

TEST_F(Facts, AmdIsAskedEachTime) {
  bench.script->vendor = kVendorAmd;
  ASSERT_TRUE(bench.Start<FakeAmdMonitor>());
  EXPECT_FALSE(bench.box().TripleDisplaySupported());
  bench.script->sls_grid = true;
  EXPECT_TRUE(bench.box().TripleDisplaySupported());
  bench.script->sls_grid = false;
  EXPECT_FALSE(bench.box().TripleDisplaySupported());
  EXPECT_EQ(bench.Calls(), "HasSLSGrid\nHasSLSGrid\nHasSLSGrid\n");
}

TEST_F(Facts, AmdWithoutTheSideInterfaceDrivesTwoAndThatIsNotKept) {
  bench.script->vendor = kVendorAmd;
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.box().TripleDisplaySupported());
  bench.script->sls_grid = true;
  bench.ostrel().white_box().factory->InstallMonitor(new FakeAmdMonitor(bench.script),
                                                     static_cast<uint16_t>(kVendorIntel));
  EXPECT_TRUE(bench.box().TripleDisplaySupported());
}

TEST_F(Facts, OtherVendorsDriveTwoAndThatIsKeptAcrossVendors) {
  bench.script->vendor = kVendorWin7CCD;
  bench.script->sls_grid = true;
  ASSERT_TRUE(bench.Start<FakeAmdMonitor>());
  EXPECT_FALSE(bench.box().TripleDisplaySupported());
  bench.script->vendor = kVendorAmd;
  EXPECT_FALSE(bench.box().TripleDisplaySupported());
  EXPECT_EQ(bench.Calls(), "");
}

TEST_F(Facts, TheTripleAnswerIsToldAtVerboseLevelOne) {
  SetProcessor("GenuineIntel");
  bench.machine.SetCommandLine(L"host.exe --v=1");
  ASSERT_TRUE(bench.Start());
  bench.box().TripleDisplaySupported();
  EXPECT_TRUE(bench.LogHas("VGA vendor = 32902\n"));
  EXPECT_TRUE(bench.LogHas("CPU Brand = 1\n"));
  EXPECT_TRUE(bench.LogHas("Intel CPU = "));
  EXPECT_TRUE(bench.LogHas("Support Intel triple display output? NO\n"));
}

TEST(FactsBelowVista, NoVendorDrivesThree) {
  SessionBench bench("xp amd: internal 1366x768 active, crt 1024x768");
  bench.script->vendor = kVendorAmd;
  bench.script->sls_grid = true;
  ASSERT_TRUE(bench.Start<FakeAmdMonitor>(static_cast<uint16_t>(kVendorAmd)));
  EXPECT_FALSE(bench.box().TripleDisplaySupported());
  EXPECT_EQ(bench.Calls(), "");
}

TEST_F(Facts, NvidiaIsDiscreteOnlyIfItsObjectSaysSoAndTheAnswerIsKept) {
  bench.script->vendor = kVendorNvidia;
  bench.script->discrete_only = true;
  ASSERT_TRUE(bench.Start<FakeNvidiaMonitor>());
  EXPECT_TRUE(bench.box().IsNvidiaDiscreteOnly());
  EXPECT_EQ(bench.Calls(), "InitialExtension\nIsDiscreteOnly\n");
  bench.script->discrete_only = false;
  EXPECT_TRUE(bench.box().IsNvidiaDiscreteOnly());
  EXPECT_EQ(bench.Calls(), "");
}

TEST_F(Facts, AFailedProbeForDiscreteOnlyIsKeptToo) {
  bench.script->vendor = kVendorNvidia;
  bench.script->discrete_only = true;
  bench.script->initial_extension = false;
  ASSERT_TRUE(bench.Start<FakeNvidiaMonitor>());
  EXPECT_FALSE(bench.box().IsNvidiaDiscreteOnly());
  bench.script->initial_extension = true;
  EXPECT_FALSE(bench.box().IsNvidiaDiscreteOnly());
}

TEST_F(Facts, AnotherVendorIsNotDiscreteOnly) {
  bench.script->discrete_only = true;  // the object is NVIDIA's, its vendor id is not
  ASSERT_TRUE(bench.Start<FakeNvidiaMonitor>());
  EXPECT_FALSE(bench.box().IsNvidiaDiscreteOnly());
}

TEST_F(Facts, AnNvidiaObjectWithoutTheSideInterfaceIsNotDiscreteOnly) {
  bench.script->vendor = kVendorNvidia;
  ASSERT_TRUE(bench.Start<FakeExtensionMonitor>());
  EXPECT_FALSE(bench.box().IsNvidiaDiscreteOnly());
}

TEST_F(Facts, AnObjectWithoutAnySideInterfaceIsNotDiscreteOnly) {
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.box().IsNvidiaDiscreteOnly());
}

TEST(FactsOnXP, NvidiaIsNeverAskedWhetherItIsDiscreteOnly) {
  SessionBench bench("xp nvidia: internal 1366x768 active, crt 1024x768");
  bench.script->vendor = kVendorNvidia;
  bench.script->discrete_only = true;
  ASSERT_TRUE(bench.Start<FakeNvidiaMonitor>(static_cast<uint16_t>(kVendorNvidia)));
  EXPECT_FALSE(bench.box().IsNvidiaDiscreteOnly());
  EXPECT_EQ(bench.Calls(), "");
}

// The object that CanCloneOnDiscreteOutputs asks is a new one, made for the question.
std::shared_ptr<FakeScript> g_probe;

IMMonitor* MakeProbe() { return new FakeMonitor(g_probe); }
IMMonitor* MakeNvidiaProbe() { return new FakeNvidiaMonitor(g_probe); }
IMMonitor* MakeNothing() { return nullptr; }
IMMonitor* MakeException() { throw 1; }

class CloneFact : public Facts {
 protected:
  void SetUp() override {
    g_probe = std::make_shared<FakeScript>();
    g_probe->vendor = kVendorNvidia;
    g_probe->connected_count = 2;
    ASSERT_TRUE(bench.Start());
  }
  void TearDown() override { g_probe.reset(); }
};

TEST_F(CloneFact, IsFalseOnceTheObjectSeesDisplaysOnOneAdapter) {
  EXPECT_FALSE(bench.box().CanCloneOnDiscreteOutputsOf(MakeNvidiaProbe));
  EXPECT_EQ(
      g_probe->calls.find("IsCrossAdapterCapable\nDetectDisplays\nGetConnectedDisplays\n"),
      g_probe->calls.size() -
          std::string("IsCrossAdapterCapable\nDetectDisplays\nGetConnectedDisplays\n").size());
  EXPECT_TRUE(g_probe->deleted);
  EXPECT_FALSE(bench.box().CanCloneOnDiscreteOutputs());  // kept
}

TEST_F(CloneFact, IsTrueAcrossAdapters) {
  g_probe->cross_adapter_capable = true;
  EXPECT_TRUE(bench.box().CanCloneOnDiscreteOutputsOf(MakeNvidiaProbe));
  EXPECT_TRUE(g_probe->deleted);
}

TEST_F(CloneFact, WithoutTheSideInterfaceIsFalse) {
  EXPECT_FALSE(bench.box().CanCloneOnDiscreteOutputsOf(MakeProbe));
  EXPECT_TRUE(g_probe->deleted);
}

TEST_F(CloneFact, DoesNotLookAtTheCrossingOfAnotherVendor) {
  g_probe->vendor = kVendorIntel;
  g_probe->cross_adapter_capable = true;
  EXPECT_FALSE(bench.box().CanCloneOnDiscreteOutputsOf(MakeNvidiaProbe));
}

TEST_F(CloneFact, IsTrueWhenNoDisplayIsCounted) {
  g_probe->connected_count = 0;
  EXPECT_TRUE(bench.box().CanCloneOnDiscreteOutputsOf(MakeNvidiaProbe));
  EXPECT_TRUE(g_probe->deleted);
}

TEST_F(CloneFact, IsTrueWhenTheObjectCannotBeInitialisedAndThatIsKept) {
  g_probe->initial = 0;
  EXPECT_TRUE(bench.box().CanCloneOnDiscreteOutputsOf(MakeNvidiaProbe));
  EXPECT_TRUE(g_probe->deleted);
  g_probe->initial = 1;
  EXPECT_TRUE(bench.box().CanCloneOnDiscreteOutputsOf(MakeNvidiaProbe));
}

TEST_F(CloneFact, IsTrueWithoutAnObject) {
  EXPECT_TRUE(bench.box().CanCloneOnDiscreteOutputsOf(MakeNothing));
}

TEST_F(CloneFact, IsTrueAfterAnException) {
  EXPECT_TRUE(bench.box().CanCloneOnDiscreteOutputsOf(MakeException));
}

TEST_F(CloneFact, ThrowingInTheMiddleDeletesTheObject) {
  g_probe->on_call = [](const std::string& call) {
    if (call == "DetectDisplays") throw 1;
  };
  EXPECT_TRUE(bench.box().CanCloneOnDiscreteOutputsOf(MakeNvidiaProbe));
  EXPECT_TRUE(g_probe->deleted);
}

class DigitalClone : public Facts {
 protected:
  void Start(bool clone_possible) {
    g_probe = std::make_shared<FakeScript>();
    g_probe->vendor = kVendorNvidia;
    g_probe->connected_count = clone_possible ? 0 : 2;
    bench.script->vendor = kVendorNvidia;
    bench.script->discrete_only = true;
    ASSERT_TRUE(bench.Start<FakeNvidiaMonitor>());
    bench.box().CanCloneOnDiscreteOutputsOf(MakeNvidiaProbe);
  }
  void TearDown() override { g_probe.reset(); }
};

TEST_F(DigitalClone, OfHdmiAndDviIsNotOfferedWhereItIsImpossible) {
  Start(false);
  ASSERT_TRUE(bench.box().PrepareDMItems(0x11, 2));
  EXPECT_EQ(bench.Items(), "1 0x1 icon 0\n1 0x10 icon 8\n4 0x11 icon 18\n");
  ASSERT_TRUE(bench.box().PrepareDMItems(0x09, 2));
  EXPECT_EQ(bench.Items(), "1 0x1 icon 0\n1 0x8 icon 3\n4 0x9 icon 18\n");
}

TEST_F(DigitalClone, OfCrtAndDisplayPortIsOfferedAllTheSame) {
  Start(false);
  ASSERT_TRUE(bench.box().PrepareDMItems(0x03, 2));
  EXPECT_NE(bench.Items().find("2 0x3 icon 5\n"), std::string::npos);
  ASSERT_TRUE(bench.box().PrepareDMItems(0x21, 2));
  EXPECT_NE(bench.Items().find("2 0x21 icon 13\n"), std::string::npos);
}

TEST_F(DigitalClone, IsOfferedWhereItIsPossible) {
  Start(true);
  ASSERT_TRUE(bench.box().PrepareDMItems(0x11, 2));
  EXPECT_NE(bench.Items().find("2 0x11 icon 9\n"), std::string::npos);
}

}  // namespace
