// The switch told call by call: the ways through it, with and without a restore.
#include <string>
#include <vector>

#include "tests/session/ApplyJournal.h"

using namespace apply_journal;

namespace {

// --- Nothing to do, or not now.

TEST_F(ApplyJournal, UnchangedSelectionOnlyCloses) {
  Open(0);
  EXPECT_EQ(Apply(), std::string(kClosed) + "returned 0\n");
  EXPECT_EQ(bench.State().items.size(), 4u);
}

TEST_F(ApplyJournal, PlayerThatShowsAVideoRefusesAndTheSelectionStays) {
  bench.machine.Config("Settings", "Disable When Video Playback", 1);
  bench.machine.model().other_windows = {
      {"WMPlayerApp", "Windows Media Player", {"Button", "EVRVideoHandler"}}};
  Open(1);
  EXPECT_EQ(Apply(), std::string(kClosed) + "returned 0\n");
  EXPECT_EQ(bench.State().items.size(), 4u);
  EXPECT_EQ(bench.State().selected.value, 1u);
  EXPECT_EQ(bench.State().opened.value, 0u);

  bench.machine.model().other_windows.clear();  // the player ends: the same switch goes ahead
  EXPECT_EQ(Apply().rfind(Saved(1, 1) + Set(2, "0x3"), 0), 0u);
}

TEST_F(ApplyJournal, PlayerIsNotLookedForWithoutTheKey) {
  bench.machine.model().other_windows = {{"WMPlayerApp", "", {"EVRVideoHandler"}}};
  Open(1);
  EXPECT_EQ(Apply().rfind(kClosed + Saved(1, 1) + Set(2, "0x3"), 0), 0u);
}

TEST_F(ApplyJournal, WithoutAnObjectNothingIsSavedOrSet) {
  Open(1);
  bench.LoseObject();
  EXPECT_EQ(Apply(), std::string(kClosed) + "returned 0\n");
  ExpectEnded();
}

// --- The whole way.

TEST_F(ApplyJournal, CloneIsSavedSetRecordedAndRestoredInThisOrder) {
  Open(1);
  Remember(2, 3, 1024, 768);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) +
                         kAskedForReset + "Sleep(700)=0\n" + kResized + kAdjusted + "returned 1\n");
  EXPECT_EQ(Width(), 1024u);
  ExpectEnded();
}

TEST_F(ApplyJournal, WithoutADelayNothingIsWaitedFor) {
  bench.machine.Config("Settings", "Delay Time To Restore Display Settings", 0);
  Open(1);
  Remember(2, 3, 1024, 768);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) +
                         kAskedForReset + kResized + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournal, ForcedSwitchSavesNothing) {
  Open(0);
  Remember(1, 1, 1024, 768);
  bench.box().SetForceApply(true);
  EXPECT_EQ(Apply(), kClosed + Set(1, "0x1") + kAdjusted + Recorded(1, 1, 0) + kAskedForReset +
                         "Sleep(700)=0\n" + kResized + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournal, FailedSwitchRecordsRestoresAndAdjustsNothing) {
  bench.script->set_result = 0;
  Open(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") + "returned 0\n");
  EXPECT_EQ(bench.State().last_mode, 1u);
  ExpectEnded();
}

TEST_F(ApplyJournal, RefusedWritesAreNotLookedAt) {
  Open(1);
  bench.machine.Fail("WritePrivateProfileStringA", 1, ERROR_ACCESS_DENIED,
                     sim::Machine::Repeat::kFromThenOn);
  const std::string steps = Apply();
  EXPECT_NE(steps.find(Set(2, "0x3") + kAdjusted), std::string::npos);
  EXPECT_NE(steps.find("returned 1\n"), std::string::npos);
  EXPECT_EQ(bench.State().last_mode, 2u);
}

TEST_F(ApplyJournal, SessionEndsBehindEverythingElse) {
  Open(1);
  std::vector<size_t> items;
  bench.script->on_call = [&](const std::string&) { items.push_back(bench.State().items.size()); };
  Apply();
  ASSERT_FALSE(items.empty());
  for (const size_t count : items) EXPECT_EQ(count, 4u);
  ExpectEnded();
}

// --- No restore.

TEST_F(ApplyJournal, ObjectThatNeedsNoRestoreGetsNone) {
  bench.script->should_reset = 0;
  Open(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) +
                         kAskedForReset + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournal, KeyForbidsTheRestore) {
  bench.machine.Config("Settings", "Restore Display Settings After Switch", 0);
  Open(1);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) +
                         kAskedForReset + kAdjusted + "returned 1\n");
}

class ApplyJournalAdvanced : public ApplyJournal {
 protected:
  void SetUp() override {
    bench.script->connected = 0x23;
    bench.script->connected_count = 3;
  }
};

TEST_F(ApplyJournalAdvanced, FirstIsRecordedAndAskedForAndNotRestored) {
  Open(1, kVendorHybrid);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(128, "0x33") + kAdjusted + Recorded(128, 51, 0) +
                         kAskedForReset + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalAdvanced, SecondIsRestored) {
  Open(2, kVendorHybrid);
  Remember(256, 51, 1024, 768);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(256, "0x33") + kAdjusted + Recorded(256, 51, 0) +
                         kAskedForReset + "Sleep(700)=0\n" + kResized + kAdjusted + "returned 1\n");
}

// --- From a mode that no item stands for.

class ApplyJournalUnmatched : public ApplyJournal {
 protected:
  void SetUp() override {
    bench.script->mode = IMMonitor::DM_HSPAN;
    bench.script->active = 0x03;
  }
};

TEST_F(ApplyJournalUnmatched, NothingIsSavedAndThePanelComesFirst) {
  Open(2);
  Remember(2, 3, 1024, 768);
  EXPECT_EQ(Apply(), kClosed + Set(1, "0x1") + Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) +
                         kAskedForReset + "Sleep(700)=0\n" + kResized + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalUnmatched, AnotherDisplayAloneComesBehindThePanel) {
  bench.script->should_reset = 0;
  Open(3);
  EXPECT_EQ(Apply(), kClosed + Set(1, "0x1") + Set(1, "0x2") + kAdjusted + Recorded(1, 2, 0) +
                         kAskedForReset + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalUnmatched, ThePanelItselfIsSetOnceAndRecordedEvenIfItFailed) {
  bench.script->set_result = 0;
  Open(1);
  Remember(1, 1, 1024, 768);
  EXPECT_EQ(Apply(), kClosed + Set(1, "0x1") + kAdjusted + Recorded(1, 1, 0) + kAskedForReset +
                         "Sleep(700)=0\n" + kResized + kAdjusted + "returned 1\n");
}

TEST_F(ApplyJournalUnmatched, FailureBehindThePanelEndsIt) {
  bench.script->set_result = 0;
  Open(2);
  EXPECT_EQ(Apply(), kClosed + Set(1, "0x1") + Set(2, "0x3") + "returned 0\n");
  ExpectEnded();
}

TEST_F(ApplyJournalUnmatched, ExtendedDesktopGoesOverThePanelToo) {
  bench.script->should_reset = 0;
  Open(4);
  EXPECT_EQ(Apply(), kClosed + Set(1, "0x1") + "object: EnableExtendModeOnDisplays(1, 0x2)\n" +
                         kAdjusted + kAskedForReset + kAdjusted + "returned 1\n");
}

// --- Presentation items.

class ApplyJournalPresentation : public ApplyJournal {
 protected:
  /// Both presentation items behind the list; the highlight goes from one place to another.
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

TEST_F(ApplyJournalPresentation, FromOneToTheOtherOnlyTheResolutionChangesWithoutAWait) {
  OpenAt(k800x600, k1024x768);
  EXPECT_EQ(Apply(), kClosed + (kAdjusted + Recorded(2, 3, 64)) + kAskedForReset + kResized +
                         kAdjusted + "returned 1\n");
  EXPECT_EQ(Width(), 1024u);
}

TEST_F(ApplyJournalPresentation, FromAPlainItemThatOneIsSavedAndThePresentationSizeFollows) {
  OpenAt(0, k800x600);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + Set(2, "0x3") + kAdjusted + Recorded(2, 3, 32) +
                         kAskedForReset + "Sleep(700)=0\n" + kResized + kAdjusted + "returned 1\n");
  EXPECT_EQ(Width(), 800u);
}

TEST_F(ApplyJournalPresentation, ToAPlainItemThePresentationsSettingsAreNotSaved) {
  OpenAt(k1024x768, 1);
  Remember(2, 3, 1280, 720);
  EXPECT_EQ(Apply(), kClosed + Set(2, "0x3") + kAdjusted + Recorded(2, 3, 0) + kAskedForReset +
                         "Sleep(700)=0\n" + kResized + kAdjusted + "returned 1\n");
  EXPECT_EQ(Width(), 1280u);
}

// --- Extended desktop.

TEST_F(ApplyJournal, ExtendedDesktopIsAdjustedTwiceAndNotRecorded) {
  Open(3);
  // One device shows the desktop, so that nothing of an extended one can be put back.
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + "object: EnableExtendModeOnDisplays(1, 0x2)\n" +
                         kAdjusted + kAskedForReset + "Sleep(700)=0\n" + kAdjusted +
                         "returned 1\n");
  EXPECT_EQ(bench.State().last_mode, 1u);
  ExpectEnded();
}

TEST_F(ApplyJournal, ExtendedDesktopThatFailsGoesTheSameWay) {
  bench.script->extend_result = 0;
  Open(3);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + "object: EnableExtendModeOnDisplays(1, 0x2)\n" +
                         kAdjusted + kAskedForReset + "Sleep(700)=0\n" + kAdjusted +
                         "returned 1\n");
}

TEST_F(ApplyJournal, ExtendedDesktopWithoutARestoreWaitsForNothing) {
  bench.machine.Config("Settings", "Restore Display Settings After Switch", 0);
  Open(3);
  EXPECT_EQ(Apply(), kClosed + Saved(1, 1) + "object: EnableExtendModeOnDisplays(1, 0x2)\n" +
                         kAdjusted + kAskedForReset + kAdjusted + "returned 1\n");
}

}  // namespace
