// What the end of a pop-up does to the machine.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Workaround/IMonitorTestWorkaround.h"
#include "Workaround/RefreshRateWorkaround.h"
#include "tests/support/SessionBench.h"

namespace {

/// Writes its calls between those of the display object.
class NotedRefreshRate : public RefreshRateWorkaround {
 public:
  explicit NotedRefreshRate(std::shared_ptr<FakeScript> script) : script_(std::move(script)) {}
  void BeginMonitoring() override { script_->Note("BeginMonitoring"); }
  void EndMonitoring() override { script_->Note("EndMonitoring"); }
  void AdjustRefreshRate() override { script_->Note("AdjustRefreshRate"); }

 private:
  std::shared_ptr<FakeScript> script_;
};

class NotedMonitorTest : public IMonitorTestWorkaround {
 public:
  explicit NotedMonitorTest(std::shared_ptr<FakeScript> script) : script_(std::move(script)) {}
  bool IsToolInstalled() override { return true; }
  BOOL ChangeResolutionBeforeSwitch(IMMonitor* monitor) override {
    script_->Note(monitor != nullptr ? "ChangeResolutionBeforeSwitch" : "no monitor");
    return 1;
  }

 private:
  std::shared_ptr<FakeScript> script_;
};

class Apply : public testing::Test {
 protected:
  /// Opens the pop-up and moves the highlight `moves` items on; what went before is forgotten.
  void Open(int moves) {
    ASSERT_TRUE(bench.Start());
    bench.box().SetRefreshRateWorkaround(new NotedRefreshRate(bench.script));
    bench.box().SetMonitorTestWorkaround(new NotedMonitorTest(bench.script));
    Press(moves + 1);
  }
  void Press(int times) {
    for (int i = 0; i != times; ++i) ASSERT_TRUE(bench.ostrel().Run());
    bench.Calls();
  }
  /// What the timer does, with its result.
  BOOL ApplyIt() {
    bench.box().ClosePopup();
    return bench.box().ApplySelection();
  }
  std::string Active(const char* key) { return bench.Remembered("Active Display Mode", key); }

  void ExpectNothingRecorded() {
    EXPECT_EQ(Active("Display Mode"), "-");
    EXPECT_EQ(Active("Active Displays"), "-");
    EXPECT_EQ(Active("Presentation Mode"), "-");
    EXPECT_EQ(bench.State().last_mode, 1u);
    EXPECT_EQ(bench.State().last_displays, 1u);
  }
  void ExpectRecorded(const char* mode, const char* displays, const char* type) {
    EXPECT_EQ(Active("Display Mode"), mode);
    EXPECT_EQ(Active("Active Displays"), displays);
    EXPECT_EQ(Active("Presentation Mode"), type);
  }
  void ExpectSessionEnded() {
    const SessionState state = bench.State();
    EXPECT_TRUE(state.items.empty());
    EXPECT_FALSE(state.has_backgrounds);
    EXPECT_FALSE(state.has_whole_bitmap);
    EXPECT_FALSE(state.has_ui_objects);
    EXPECT_EQ(state.selected.value, 0u);
    EXPECT_EQ(state.opened.value, 0u);
    EXPECT_EQ(state.selected.max, 14u);
  }

  SessionBench bench;
};

TEST_F(Apply, UnchangedSelectionDoesNothingAndKeepsTheSession) {
  Open(0);
  EXPECT_FALSE(ApplyIt());
  EXPECT_EQ(bench.Calls(), "");
  EXPECT_EQ(bench.State().items.size(), 4u);
}

TEST_F(Apply, CloneIsSetRecordedAndPutRight) {
  Open(1);
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Calls(),
            "SetNewDisplayMode(2, 0x3)\n"
            "AdjustRefreshRate\n"
            "ShouldResetDisplaySettingAfterSwtich\n"
            "AdjustRefreshRate\n");
  ExpectRecorded("2", "3", "0");
  EXPECT_EQ(bench.State().last_mode, 2u);
  EXPECT_EQ(bench.State().last_displays, 3u);
  ExpectSessionEnded();
}

TEST_F(Apply, KeepsSettingsKeysHitRectanglesAndConnectedDisplays) {
  Open(1);
  const size_t keys = bench.State().settings_keys.size();
  ApplyIt();
  EXPECT_GT(keys, 0u);
  EXPECT_EQ(bench.State().settings_keys.size(), keys);
  EXPECT_EQ(bench.State().item_rects, 4u);
  EXPECT_EQ(bench.State().connected_displays, 3u);
  EXPECT_EQ(bench.State().connected_count, 2u);
}

TEST_F(Apply, ExtendedDesktopIsNotRecordedAndNamesTheExternalDisplayOnly) {
  Open(3);
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Calls(),
            "EnableExtendModeOnDisplays(1, 0x2)\n"
            "AdjustRefreshRate\n"
            "ShouldResetDisplaySettingAfterSwtich\n"
            "AdjustRefreshRate\n");
  ExpectNothingRecorded();
  ExpectSessionEnded();
}

TEST_F(Apply, ExtendedDesktopThatFailsIsReportedAsDone) {
  bench.script->extend_result = 0;
  Open(3);
  EXPECT_TRUE(ApplyIt());
  ExpectNothingRecorded();
  ExpectSessionEnded();
}

TEST_F(Apply, AFailedSwitchEndsTheSessionAndRecordsNothing) {
  bench.script->set_result = 0;
  Open(1);
  EXPECT_FALSE(ApplyIt());
  EXPECT_EQ(bench.Calls(), "SetNewDisplayMode(2, 0x3)\n");
  ExpectNothingRecorded();
  ExpectSessionEnded();
}

TEST_F(Apply, AForcedOneGoesAheadUnchangedOnce) {
  Open(0);
  bench.box().SetForceApply(true);
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(1, 0x1)\n");
  EXPECT_FALSE(bench.State().force_apply);
}

TEST_F(Apply, ASelectionBehindTheListEndsTheSessionWithoutADisplayCall) {
  Open(0);
  SIndex index = bench.State().selected;
  index.value = 4;
  bench.box().SetSelected(index);
  EXPECT_FALSE(ApplyIt());
  EXPECT_EQ(bench.Calls(), "");
  ExpectSessionEnded();
}

TEST_F(Apply, WithoutAnObjectCleansUp) {
  bench.machine.SetCommandLine(L"host.exe --enable-dcheck");
  Open(1);
  bench.LoseObject();
  EXPECT_FALSE(ApplyIt());
  EXPECT_TRUE(bench.LogHas("Check failed: pobj != NULL. "));
  EXPECT_EQ(bench.Calls(), "");
  ExpectNothingRecorded();
  ExpectSessionEnded();
}

TEST_F(Apply, ASwitchThatPumpsMessagesMayMeetAnotherPress) {
  bench.script->on_call = [&](const std::string& call) {
    if (call != "SetNewDisplayMode(2, 0x3)") return;
    bench.script->on_call = nullptr;
    bench.script->connected = 0x80;  // another list, without any item
    bench.script->connected_count = 1;
    bench.ostrel().Run();
    bench.ostrel().Cancel();
  };
  Open(1);
  EXPECT_TRUE(ApplyIt());
  ExpectRecorded("2", "3", "0");
}

TEST_F(Apply, AnExceptionOfTheObjectDoesNotReachTheMessageLoop) {
  Open(1);
  bench.script->on_call = [](const std::string& call) {
    if (call.rfind("SetNewDisplayMode", 0) == 0) throw 1;
  };
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  bench.script->on_call = nullptr;
  ExpectNothingRecorded();
  EXPECT_TRUE(bench.ostrel().Run());  // the next press works
}

TEST_F(Apply, ASwitchThatWasBrokenOffIsNotTriedAgainByAStop) {
  Open(1);
  bench.script->on_call = [](const std::string& call) {
    if (call.rfind("SetNewDisplayMode", 0) == 0) throw 1;
  };
  bench.machine.Advance(1500);
  bench.script->on_call = nullptr;
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
  bench.ostrel().Stop();
  EXPECT_EQ(bench.Calls(), "");
}

// --- From a mode that no item stands for.

class ApplyFromUnmatched : public Apply {
 protected:
  void SetUp() override {
    bench.script->mode = IMMonitor::DM_HSPAN;
    bench.script->active = 0x03;
  }
};

TEST_F(ApplyFromUnmatched, LeadsOverThePanelAlone) {
  Open(2);  // the first move goes to the first item
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(1, 0x1)\nSetNewDisplayMode(2, 0x3)\n");
  ExpectRecorded("2", "3", "0");
}

TEST_F(ApplyFromUnmatched, LeadsOverThePanelToExtendedDesktopToo) {
  Open(4);
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(1, 0x1)\nEnableExtendModeOnDisplays(1, 0x2)\n");
}

TEST_F(ApplyFromUnmatched, SetsThePanelOnceAndRecordsItEvenWhenThatFailed) {
  bench.script->set_result = 0;
  Open(1);
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Calls(),
            "SetNewDisplayMode(1, 0x1)\n"
            "AdjustRefreshRate\n"
            "ShouldResetDisplaySettingAfterSwtich\n"
            "AdjustRefreshRate\n");
  ExpectRecorded("1", "1", "0");
}

TEST_F(ApplyFromUnmatched, GoesOnAfterAFailureOfTheFirstSet) {
  bench.script->set_result = 0;
  bench.script->on_call = [&](const std::string& call) {
    if (call == "SetNewDisplayMode(2, 0x3)") bench.script->set_result = 1;
  };
  Open(2);
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(1, 0x1)\nSetNewDisplayMode(2, 0x3)\n");
}

// --- Presentation items.

class ApplyPresentation : public Apply {
 protected:
  /// The list of panel and CRT with both presentation items behind it, and the highlight moved
  /// between two of them.
  void OpenAt(uint32_t from, uint32_t to) {
    Open(0);
    ASSERT_TRUE(bench.box().AddPresentationItem(10, 0x03, 32));
    ASSERT_TRUE(bench.box().AddPresentationItem(11, 0x03, 64));
    SIndex index = bench.State().selected;
    index.value = from;
    bench.box().SetOpened(index);
    index.value = to;
    bench.box().SetSelected(index);
  }
  static constexpr uint32_t k800x600 = 4;
  static constexpr uint32_t k1024x768 = 5;
};

TEST_F(ApplyPresentation, FromOneToTheOtherTheModeStays) {
  bench.machine.Config("Settings", "Delay Time To Restore Display Settings", 700);
  OpenAt(k800x600, k1024x768);
  const uint64_t before = bench.machine.Now();
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Calls(),
            "AdjustRefreshRate\n"
            "ShouldResetDisplaySettingAfterSwtich\n"
            "AdjustRefreshRate\n");
  ExpectRecorded("2", "3", "64");
  EXPECT_EQ(bench.machine.Now(), before);  // nothing is restored, so nothing is waited for
}

TEST_F(ApplyPresentation, FromAPlainItemTheModeIsSet) {
  OpenAt(0, k1024x768);
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
  ExpectRecorded("2", "3", "64");
}

TEST_F(ApplyPresentation, ToAPlainItemTheModeIsSet) {
  OpenAt(k800x600, 1);
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
  ExpectRecorded("2", "3", "0");
}

// --- The retry on Intel graphics.

TEST_F(Apply, RetriesAReportedSuccessWhenAnotherModeIsFound) {
  bench.machine.Config("Settings", "Retry When Operation Failed", 1);
  Open(1);
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Calls(),
            "SetNewDisplayMode(2, 0x3)\n"
            "GetCurrentDisplayMode\n"
            "SetNewDisplayMode(2, 0x3)\n"
            "AdjustRefreshRate\n"
            "ShouldResetDisplaySettingAfterSwtich\n"
            "AdjustRefreshRate\n");
}

TEST_F(Apply, DoesNotSetTwiceWhenTheModeIsThere) {
  bench.machine.Config("Settings", "Retry When Operation Failed", 1);
  bench.script->follows = true;
  Open(1);
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
}

TEST_F(Apply, TheRetrysResultIsTheSwitchs) {
  bench.machine.Config("Settings", "Retry When Operation Failed", 1);
  bench.script->set_result = 0;
  bench.script->on_call = [&](const std::string& call) {
    if (call == "GetCurrentDisplayMode") bench.script->set_result = 1;
  };
  Open(1);
  bench.script->set_result = 0;
  EXPECT_TRUE(ApplyIt());
  ExpectRecorded("2", "3", "0");
}

TEST_F(Apply, AFailureStaysOneWhenTheModeIsThereAllTheSame) {
  bench.machine.Config("Settings", "Retry When Operation Failed", 1);
  bench.script->set_result = 0;
  Open(1);
  bench.script->mode = IMMonitor::DM_CLONE;
  EXPECT_FALSE(ApplyIt());
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
}

TEST_F(Apply, LooksAtTheModeEvenIfItCannotBeRead) {
  bench.machine.Config("Settings", "Retry When Operation Failed", 1);
  Open(1);
  bench.script->mode_result = 0;
  bench.script->mode = 0;
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\nSetNewDisplayMode(2, 0x3)\n");
}

TEST_F(Apply, RetriesOnNoOtherVendor) {
  bench.machine.Config("Settings", "Retry When Operation Failed", 1);
  bench.script->vendor = kVendorWin7CCD;
  Open(1);
  const uint64_t before = bench.machine.Now();
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
  EXPECT_EQ(bench.machine.Now(), before);
}

TEST_F(Apply, WaitsThreeSecondsBeforeTheRetry) {
  bench.machine.Config("Settings", "Retry When Operation Failed", 1);
  Open(1);
  const uint64_t before = bench.machine.Now();
  ApplyIt();
  EXPECT_EQ(bench.machine.Now() - before, 3000u);
}

TEST_F(Apply, ReadsTheRetrysWaitAtEachUse) {
  bench.machine.Config("Settings", "Retry When Operation Failed", 1);
  bench.machine.Config("Settings", "Retry Delay Time", 500);
  Open(1);
  uint64_t before = bench.machine.Now();
  ApplyIt();
  EXPECT_EQ(bench.machine.Now() - before, 500u);
  bench.machine.Config("Settings", "Retry Delay Time", 800);
  Press(2);
  before = bench.machine.Now();
  ApplyIt();
  EXPECT_EQ(bench.machine.Now() - before, 800u);
}

// --- Other workarounds around the switch.

TEST_F(Apply, ChangesTheResolutionBeforeASwitchWhereTheKeySaysSo) {
  bench.machine.Config("Settings", "Support Monitor Test Workaround", 1);
  Open(1);
  ApplyIt();
  EXPECT_EQ(bench.Calls().rfind("ChangeResolutionBeforeSwitch\nSetNewDisplayMode(2, 0x3)\n", 0),
            0u);
}

TEST_F(Apply, LeavesTheResolutionAloneBeforeExtendedDesktop) {
  bench.machine.Config("Settings", "Support Monitor Test Workaround", 1);
  Open(3);
  ApplyIt();
  EXPECT_EQ(bench.Calls().find("ChangeResolutionBeforeSwitch"), std::string::npos);
}

TEST_F(Apply, WaitsAsConfiguredBeforeSettingsAreRestored) {
  bench.machine.Config("Settings", "Delay Time To Restore Display Settings", 700);
  Open(1);
  const uint64_t before = bench.machine.Now();
  ApplyIt();
  EXPECT_EQ(bench.machine.Now() - before, 700u);
}

TEST_F(Apply, WaitsBeforeSettingsOfExtendedDesktopAreRestored) {
  bench.machine.Config("Settings", "Delay Time To Restore Display Settings", 700);
  Open(3);
  const uint64_t before = bench.machine.Now();
  ApplyIt();
  EXPECT_EQ(bench.machine.Now() - before, 700u);
}

TEST_F(Apply, WaitsForNothingWhereNothingIsRestored) {
  bench.machine.Config("Settings", "Delay Time To Restore Display Settings", 700);
  bench.script->should_reset = 0;
  Open(1);
  const uint64_t before = bench.machine.Now();
  ApplyIt();
  EXPECT_EQ(bench.machine.Now(), before);
}

TEST_F(Apply, WaitsForNothingWhereTheKeyForbidsTheRestore) {
  bench.machine.Config("Settings", "Delay Time To Restore Display Settings", 700);
  bench.machine.Config("Settings", "Restore Display Settings After Switch", 0);
  Open(3);
  const uint64_t before = bench.machine.Now();
  ApplyIt();
  EXPECT_EQ(bench.machine.Now(), before);
}

// --- The two modes of two adapters.

class ApplyAdvanced : public Apply {
 protected:
  void SetUp() override {
    bench.machine.Config("Settings", "Delay Time To Restore Display Settings", 700);
    bench.script->vendor = kVendorHybrid;
    bench.script->connected = 0x23;
    bench.script->connected_count = 3;
  }
};

TEST_F(ApplyAdvanced, TheFirstIsRecordedAndRestoresNothing) {
  Open(1);
  const uint64_t before = bench.machine.Now();
  EXPECT_TRUE(ApplyIt());
  EXPECT_EQ(bench.Calls(),
            "SetNewDisplayMode(128, 0x33)\n"
            "AdjustRefreshRate\n"
            "ShouldResetDisplaySettingAfterSwtich\n"
            "AdjustRefreshRate\n");
  ExpectRecorded("128", "51", "0");
  EXPECT_EQ(bench.machine.Now(), before);
}

TEST_F(ApplyAdvanced, TheSecondRestores) {
  Open(2);
  const uint64_t before = bench.machine.Now();
  EXPECT_TRUE(ApplyIt());
  ExpectRecorded("256", "51", "0");
  EXPECT_EQ(bench.machine.Now() - before, 700u);
}

// --- NVIDIA under Windows XP: the refresh of its sound device.

class ApplyOnOldNvidia : public testing::Test {
 protected:
  void Open(int moves) {
    bench.machine.SetCommandLine(L"host.exe --enable-dcheck");
    bench.script->vendor = kVendorNvidia;
    ASSERT_TRUE(bench.Start(static_cast<uint16_t>(kVendorNvidia)));
    for (int i = 0; i <= moves; ++i) ASSERT_TRUE(bench.ostrel().Run());
  }
  bool Refreshed() const { return bench.LogHas("Check failed: nv != NULL. "); }
  /// The last call of a switch to the item `moves` behind the current one.
  std::string LastCallOfSwitch(int moves) {
    Open(moves);
    bench.box().SetRefreshRateWorkaround(new NotedRefreshRate(bench.script));
    bench.script->TakeCalls();
    EXPECT_TRUE(bench.box().ApplySelection());
    const std::string calls = bench.script->TakeCalls();
    const size_t end = calls.find_last_not_of('\n');
    return calls.substr(calls.rfind('\n', end) + 1, end - calls.rfind('\n', end));
  }

  SessionBench bench{"xp nvidia: internal 1366x768 active, crt 1024x768"};
};

TEST_F(ApplyOnOldNvidia, RefreshesAfterASwitchToOneDisplay) {
  Open(2);
  EXPECT_TRUE(bench.box().ApplySelection());
  EXPECT_TRUE(Refreshed());
}

TEST_F(ApplyOnOldNvidia, RefreshesAfterAFailedSwitchToo) {
  bench.script->set_result = 0;
  Open(2);
  EXPECT_FALSE(bench.box().ApplySelection());
  EXPECT_TRUE(Refreshed());
}

TEST_F(ApplyOnOldNvidia, DoesNotRefreshAfterAClone) {
  Open(1);
  EXPECT_TRUE(bench.box().ApplySelection());
  EXPECT_FALSE(Refreshed());
}

TEST_F(ApplyOnOldNvidia, DoesNotRefreshAfterExtendedDesktop) {
  EXPECT_EQ(LastCallOfSwitch(3), "AdjustRefreshRate");
}

// The refresh begins with the question for the vendor, so that one who leaves it out shows.
TEST_F(ApplyOnOldNvidia, AsksForTheRefreshAfterEveryOtherMode) {
  EXPECT_EQ(LastCallOfSwitch(1), "GetVgaVendor");
}

TEST(ApplyOnNewerNvidia, DoesNotRefresh) {
  SessionBench bench("win7 nvidia: internal 1366x768 active, crt 1024x768");
  bench.machine.SetCommandLine(L"host.exe --enable-dcheck");
  bench.script->vendor = kVendorNvidia;
  ASSERT_TRUE(bench.Start(static_cast<uint16_t>(kVendorNvidia)));
  for (int i = 0; i != 3; ++i) ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_TRUE(bench.box().ApplySelection());
  EXPECT_FALSE(bench.LogHas("Check failed: nv != NULL. "));
}

}  // namespace
