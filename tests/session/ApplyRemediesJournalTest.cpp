// The switch told call by call: the remedies that have their turn in it, by configuration, monitor
// or vendor.
#include <string>

#include "sim/EdidMaker.h"
#include "tests/session/ApplyJournal.h"

using namespace apply_journal;

namespace {

constexpr char kOnXp[] = "xp intel: internal 1366x768 active, crt 1024x768";
constexpr char kOnXpNvidia[] = "xp nvidia: internal 1366x768 active, crt 1024x768";

// --- Remedies before the switch.

TEST_F(ApplyJournal, MonitorTestHasItsTurnBeforeTheSwitch) {
  bench.machine.Config("Settings", "Support Monitor Test Workaround", 1);
  bench.script->should_reset = 0;
  Open(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + "ChangeResolutionBeforeSwitch\n" + Set(2, "0x3") +
                         kAdjusted + Recorded(2, 3, 0) + kAskedForReset + kAdjusted +
                         "returned 1\n");
}

TEST_F(ApplyJournal, MonitorTestHasNoneBeforeExtendedDesktop) {
  bench.machine.Config("Settings", "Support Monitor Test Workaround", 1);
  Open(3);
  EXPECT_EQ(Apply().find("ChangeResolutionBeforeSwitch"), std::string::npos);
}

class ApplyJournalProjector : public ApplyJournal {
 protected:
  void SetUp() override {
    bench.machine.Config("Settings", "Stupid Projectors", "Beam 9, Beam 10");
    bench.machine.Config("Settings", "Support Monitor Test Workaround", 1);
    bench.script->should_reset = 0;
    bench.script->edid = sim::MakeEdid("Beam 10", {1024, 768, 32, 60});
  }
  const std::string both = "object: SetDisplayModeWithSettings(2, 0x3)\n";
};

TEST_F(ApplyJournalProjector, OneCallBehindTheMonitorTestIsTheWholeSwitch) {
  Open<FakeMonitorWithSettings>(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + "ChangeResolutionBeforeSwitch\n" + both + kAdjusted +
                         Recorded(2, 3, 0) + kAskedForReset + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalProjector, FailedCallIsFollowedByThePlainSwitch) {
  bench.script->set_with_settings_result = 0;
  Open<FakeMonitorWithSettings>(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + "ChangeResolutionBeforeSwitch\n" + both +
                         Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) + kAskedForReset +
                         kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalProjector, ThrowingCallIsFollowedByThePlainSwitch) {
  Open<FakeMonitorWithSettings>(1);
  bench.script->on_call = [](const std::string& call) {
    if (call.rfind("SetDisplayModeWithSettings", 0) == 0) throw 1;
  };
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + "ChangeResolutionBeforeSwitch\n" + both +
                         Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) + kAskedForReset +
                         kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalProjector, RetryBehindTheOneCallIsThePlainSwitch) {
  bench.machine.Config("Settings", "Retry When Operation Failed", 1);
  Open<FakeMonitorWithSettings>(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + "ChangeResolutionBeforeSwitch\n" + both +
                         "Sleep(3000)=0\nobject: GetCurrentDisplayMode\n" + Set(2, "0x3") +
                         kAdjusted + Recorded(2, 3, 0) + kAskedForReset + kAdjusted +
                         "returned 1\n");
}

TEST_F(ApplyJournalProjector, BothFailingIsAFailedSwitch) {
  bench.script->set_with_settings_result = 0;
  bench.script->set_result = 0;
  Open<FakeMonitorWithSettings>(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + "ChangeResolutionBeforeSwitch\n" + both +
                         Set(2, "0x3") + "returned 0\n");
}

// --- The television, on old systems.

class ApplyJournalTelevision : public ApplyJournal {
 protected:
  ApplyJournalTelevision() : ApplyJournal(kOnXp) {}
  void SetUp() override {
    bench.script->should_reset = 0;
    bench.machine.Config("Settings", "Support Veld TV4810 Workaround", 1);
    sim::Model& model = bench.machine.model();
    model.registry["HKLM\\HARDWARE\\DEVICEMAP\\VIDEO"]["\\Device\\Video0"] =
        "\\Registry\\Machine\\SYSTEM\\Video\\0000";
    model.registry["HKLM\\SYSTEM\\Video\\0000"]["PruningMode"] = "dword:1";
  }
  void NameTheCrt(const char* name) {
    bench.machine.model().connectors[1].monitor->edid = sim::MakeEdid(name, {1024, 768, 32, 60});
  }
};

TEST_F(ApplyJournalTelevision, PruningEndsBehindTheSavingAndBeforeTheSwitch) {
  NameTheCrt("Veld TV4810");
  Open(1);
  const std::string steps = Apply();
  const size_t pruning = steps.find("RegSetValueExW(");
  ASSERT_NE(pruning, std::string::npos) << steps;
  EXPECT_EQ(steps.substr(0, pruning), kClosed + Saved(1, 1));
  EXPECT_EQ(
      steps.substr(steps.find('\n', pruning) + 1),
      Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) + kAskedForReset + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalTelevision, AnotherMonitorIsLeftAlone) {
  NameTheCrt("Veld TV4811");
  Open(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) +
                         kAskedForReset + kAdjusted + "returned 1\n");
}

// --- The retry on Intel graphics.

class ApplyJournalRetry : public ApplyJournal {
 protected:
  void SetUp() override {
    bench.script->should_reset = 0;
    bench.machine.Config("Settings", "Retry When Operation Failed", 1);
  }
  const std::string looked = "Sleep(3000)=0\nobject: GetCurrentDisplayMode\n";
};

TEST_F(ApplyJournalRetry, AnotherModeBehindTheWaitIsSetASecondTime) {
  Open(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") + looked + Set(2, "0x3") + kAdjusted +
                         Recorded(2, 3, 0) + kAskedForReset + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalRetry, TheModeItselfIsNot) {
  bench.script->follows = true;
  Open(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") + looked + kAdjusted +
                         Recorded(2, 3, 0) + kAskedForReset + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalRetry, RetryThatFailsEndsIt) {
  bench.script->set_result = 0;
  Open(1);
  EXPECT_EQ(Apply(),
            kClosed + Saved(1, 1) + Set(2, "0x3") + looked + Set(2, "0x3") + "returned 0\n");
}

TEST_F(ApplyJournalRetry, RetryMendsAFailure) {
  bench.script->set_result = 0;
  Open(1);
  bench.script->on_call = [&](const std::string& call) {
    if (call == "GetCurrentDisplayMode") bench.script->set_result = 1;
  };
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") + looked + Set(2, "0x3") + kAdjusted +
                         Recorded(2, 3, 0) + kAskedForReset + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalRetry, WaitIsTheConfiguredOne) {
  bench.machine.Config("Settings", "Retry Delay Time", 250);
  bench.script->follows = true;
  Open(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") +
                         "Sleep(250)=0\nobject: GetCurrentDisplayMode\n" + kAdjusted +
                         Recorded(2, 3, 0) + kAskedForReset + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalRetry, NoOtherVendorIsLookedAfter) {
  Open(1, kVendorAmd);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) +
                         kAskedForReset + kAdjusted + "returned 1\n");
}

// --- NVIDIA below Windows Vista: display changes come to rest first, before anything is restored.

class ApplyJournalOldNvidia : public ApplyJournal {
 protected:
  ApplyJournalOldNvidia() : ApplyJournal(kOnXpNvidia) {}
  void TearDown() override {
    EXPECT_TRUE(bench.machine.ArmedTimers().empty());
    ApplyJournal::TearDown();
  }

  /// As Apply; the moments count from here.
  std::string ApplyAndTime() {
    const uint64_t begin = bench.machine.Now();
    const std::string steps = Apply();
    took = bench.machine.Now() - begin;
    return steps;
  }
  void ChangeAt(uint64_t milliseconds) {
    bench.machine.At(bench.machine.Now() + milliseconds,
                     [this] { bench.machine.BroadcastDisplayChange(); });
  }

  // What the desktop is set to: the size that is remembered.
  const std::string restored =
      "ChangeDisplaySettingsExA(null 1024x768x32@60 at 0,0 fields=0x80000 flags=0x40000009)=0\n";
  uint64_t took = 0;  // the configured 700 ms among it
};

TEST_F(ApplyJournalOldNvidia, RestoreIsLeftToTheWatchOfDisplayChanges) {
  Open(1, kVendorNvidia);
  Remember(2, 3, 1024, 768);
  EXPECT_EQ(ApplyAndTime(), kClosed + Saved(1, 1) + Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) +
                                kAskedForReset + "Sleep(700)=0\n" + restored + kAdjusted +
                                "returned 1\n");
  EXPECT_EQ(took, 700u + 1500u);
  EXPECT_EQ(Width(), 1024u);
  ExpectEnded();
}

TEST_F(ApplyJournalOldNvidia, SoIsThatOfExtendedDesktop) {
  Open(3, kVendorNvidia);
  const std::string steps = ApplyAndTime();
  const std::string before = kClosed + Saved(1, 1) +
                             "object: EnableExtendModeOnDisplays(1, 0x2)\n" + kAdjusted +
                             kAskedForReset + "Sleep(700)=0\n";
  EXPECT_EQ(steps.rfind(before, 0), 0u) << steps;
  EXPECT_EQ(took, 700u + 1500u);
  EXPECT_EQ(bench.machine.Calls("CreateThread"), 1u);
  ExpectEnded();
}

TEST_F(ApplyJournalOldNvidia, WatchHearsTheChangesOfTheSwitch) {
  Open(1, kVendorNvidia);
  Remember(2, 3, 1024, 768);
  for (const uint64_t moment : {700 + 500, 700 + 1000, 700 + 1500}) ChangeAt(moment);
  ApplyAndTime();
  EXPECT_EQ(took, 700u + 2300u);
  EXPECT_EQ(Width(), 1024u);
}

TEST_F(ApplyJournalOldNvidia, FromExtendedDesktopTheWatchIsMorePatient) {
  Open(1, kVendorNvidia);
  Remember(2, 3, 1024, 768);
  SIndex index = bench.State().opened;
  index.value = 3;
  bench.box().SetOpened(index);
  ChangeAt(700 + 500);
  ApplyAndTime();
  EXPECT_EQ(took, 700u + 2100u);
}

TEST_F(ApplyJournalOldNvidia, SwitchGoesOnWhenTheChangesNeverStop) {
  Open(1, kVendorNvidia);
  Remember(2, 3, 1024, 768);
  for (uint64_t moment = 0; moment <= 20000; moment += 500) ChangeAt(moment);
  EXPECT_EQ(ApplyAndTime(), kClosed + Saved(1, 1) + Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) +
                                kAskedForReset + "Sleep(700)=0\n" + kAdjusted + "returned 1\n");
  EXPECT_EQ(took, 700u + 10000u);
  EXPECT_EQ(Width(), 1366u);
  ExpectEnded();
}

TEST_F(ApplyJournalOldNvidia, NextSwitchIsWatchedLikeTheFirst) {
  Open(1, kVendorNvidia);
  Remember(2, 3, 1024, 768);
  Apply();
  bench.machine.model().sources[0].mode.width = 1366;
  Press(2);
  ApplyAndTime();
  EXPECT_EQ(took, 700u + 1500u);
  EXPECT_EQ(bench.machine.Calls("CreateThread"), 2u);
  EXPECT_EQ(Width(), 1024u);
}

TEST_F(ApplyJournalOldNvidia, FromOnePresentationToTheOtherTheSizeFollowsAtOnce) {
  Open(0, kVendorNvidia);
  ASSERT_TRUE(bench.box().AddPresentationItem(10, 0x03, 32));
  ASSERT_TRUE(bench.box().AddPresentationItem(11, 0x03, 64));
  bench.machine.model().sources[0].mode = {800, 600, 32, 60};
  SIndex index = bench.State().selected;
  index.value = 4;
  bench.box().SetOpened(index);
  index.value = 5;
  bench.box().SetSelected(index);
  const std::string steps = Apply();
  const std::string before = kClosed + (kAdjusted + Recorded(2, 3, 64)) + kAskedForReset;
  EXPECT_EQ(steps.rfind(before + "ChangeDisplaySettingsExA(", 0), 0u) << steps;
  EXPECT_EQ(Width(), 1024u);
}

TEST_F(ApplyJournalOldNvidia, AnotherVendorRestoresItself) {
  Open(1, kVendorNvidia);
  bench.script->vendor = kVendorIntel;
  Remember(2, 3, 1024, 768);
  const std::string steps = Apply();
  EXPECT_NE(steps.find("Sleep(700)=0\nChangeDisplaySettingsExA("), std::string::npos) << steps;
  EXPECT_EQ(Width(), 1024u);
}

// --- NVIDIA from Windows Vista on: nothing has to come to rest.

class ApplyJournalNvidiaOnVista : public ApplyJournal {
 protected:
  ApplyJournalNvidiaOnVista()
      : ApplyJournal("vista nvidia: internal 1366x768 active, crt 1024x768 active") {}
  /// The switch goes as far as the wait, and the desktop's settings follow at once.
  static void ExpectRestoreBehindTheWait(const std::string& steps) {
    EXPECT_NE(steps.find(kAskedForReset + std::string("Sleep(700)=0\nChangeDisplaySettingsExA(")),
              std::string::npos)
        << steps;
  }
};

TEST_F(ApplyJournalNvidiaOnVista, RememberedSizeComesBackAtOnce) {
  Open(1, kVendorNvidia);
  Remember(2, 3, 1024, 768);
  ExpectRestoreBehindTheWait(Apply());
  EXPECT_EQ(Width(), 1024u);
}

TEST_F(ApplyJournalNvidiaOnVista, SoDoesThatOfExtendedDesktop) {
  Open(3, kVendorNvidia);
  Remember(4, 3, 1024, 768);
  ExpectRestoreBehindTheWait(Apply());
  EXPECT_EQ(Width(), 1024u);
}

}  // namespace
