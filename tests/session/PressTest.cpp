// Presses of the hotkey: the pop-up opens, its highlight moves, it ends.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/SessionBench.h"

namespace {

constexpr char kPanelAndCrtItems[] =
    "1 0x1 icon 0\n"
    "2 0x3 icon 5\n"
    "1 0x2 icon 1\n"
    "4 0x3 icon 18\n";

void Press(SessionBench* bench, int times) {
  for (int i = 0; i != times; ++i) ASSERT_TRUE(bench->ostrel().Run());
}

TEST(Press, OpensThePopupWithTheCurrentModeHighlighted) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  EXPECT_TRUE(bench.ostrel().Run());
  ASSERT_NE(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.State().dialog, bench.machine.Popup());
  EXPECT_EQ(bench.Items(), kPanelAndCrtItems);
  EXPECT_EQ(bench.Flags(), "1000");
  EXPECT_EQ(bench.TakeNotifications(), "1");
  EXPECT_EQ(bench.PopupPeriod(), 3000u);
  EXPECT_EQ(bench.Changes(), "");
}

TEST(Press, AsksTheObjectInOrder) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().Run();
  EXPECT_EQ(bench.Calls(), "DetectDisplays\nGetConnectedDisplays\nGetCurrentDisplayMode\n");
}

TEST(Press, ReturnsTheWindowThroughRunEx) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  const HWND window = bench.ostrel().RunEx();
  EXPECT_NE(window, nullptr);
  EXPECT_EQ(window, bench.machine.Popup());
  EXPECT_EQ(bench.ostrel().RunEx(), window);
}

TEST(Press, LeftAloneClosesAfter3000msAndChangesNothing) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().Run();
  bench.machine.Advance(2999);
  EXPECT_NE(bench.machine.Popup(), nullptr);
  bench.machine.Advance(1);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.TakeNotifications(), "12");
  EXPECT_EQ(bench.Changes(), "");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Display Mode"), "-");
}

TEST(Press, LeftAloneLeavesListAndPicturesInMemory) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().Run();
  bench.machine.Advance(3000);
  const SessionState state = bench.State();
  EXPECT_EQ(state.dialog, nullptr);
  EXPECT_EQ(state.items.size(), 4u);
  EXPECT_TRUE(state.has_backgrounds);
  EXPECT_TRUE(state.has_whole_bitmap);
  EXPECT_TRUE(state.has_ui_objects);
}

TEST(Press, SecondOneMovesTheHighlightAndIsAppliedAfter1500ms) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().Run();
  bench.machine.Advance(2000);
  EXPECT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.Flags(), "0100");
  EXPECT_EQ(bench.PopupPeriod(), 1500u);
  bench.machine.Advance(1499);
  EXPECT_NE(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.Changes(), "");
  bench.machine.Advance(1);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
}

TEST(Press, EveryOneStartsTheTimeAnew) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().Run();
  for (int i = 0; i != 5; ++i) {
    bench.machine.Advance(1400);
    bench.ostrel().Run();
  }
  EXPECT_NE(bench.machine.Popup(), nullptr);
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
}

TEST(Press, AtTheLastItemWrapsToTheFirst) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 4);
  EXPECT_EQ(bench.Flags(), "0001");
  Press(&bench, 1);
  EXPECT_EQ(bench.Flags(), "1000");
}

TEST(Press, BackToTheFirstItemChangesNothing) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 5);
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Changes(), "");
}

TEST(Press, LooksAtTheDisplaysOnlyWhenItOpens) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 1);
  bench.Calls();
  Press(&bench, 2);
  EXPECT_EQ(bench.Calls(), "");
}

TEST(Press, TellsTheHostOfTheCloseBeforeTheSwitch) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  std::string posted_before_switch;
  bench.script->on_call = [&](const std::string& call) {
    if (call.rfind("SetNewDisplayMode", 0) == 0) posted_before_switch = bench.TakeNotifications();
  };
  Press(&bench, 2);
  bench.machine.Advance(1500);
  EXPECT_EQ(posted_before_switch, "12");
  EXPECT_EQ(bench.TakeNotifications(), "");  // nothing is posted when the mode has been applied
}

TEST(Press, AfterASwitchStartsAFreshSession) {
  SessionBench bench;
  bench.script->follows = true;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 2);
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Items(), "");
  Press(&bench, 1);
  EXPECT_EQ(bench.Items(), kPanelAndCrtItems);
  EXPECT_EQ(bench.Flags(), "0100");  // clone is the current mode now
}

TEST(Press, BeforeInitOpensNothing) {
  SessionBench bench;
  bench.Load();
  EXPECT_FALSE(bench.ostrel().Run());
  EXPECT_EQ(bench.ostrel().RunEx(), nullptr);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
}

TEST(Press, IsRefusedInExtendedModeWhereTheKeySaysSo) {
  SessionBench bench;
  bench.machine.Config("Settings", "Disable In Extend Mode", 1);
  bench.script->extend_enabled = 1;
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.ostrel().Run());
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.TakeNotifications(), "");
  EXPECT_EQ(bench.Calls(), "IsExtendModeEnabled\n");
}

TEST(Press, DoesNotAskForExtendedModeWithoutTheKey) {
  SessionBench bench;
  bench.script->extend_enabled = 1;
  ASSERT_TRUE(bench.Start());
  EXPECT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.Calls().find("IsExtendModeEnabled"), std::string::npos);
}

// --- Ends by the host.

TEST(Stop, AppliesAtOnce) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 3);
  EXPECT_TRUE(bench.ostrel().Stop());
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.TakeNotifications(), "12");
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(1, 0x2)\n");
}

TEST(Stop, WithNothingShownChangesNothing) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  EXPECT_TRUE(bench.ostrel().Stop());
  EXPECT_EQ(bench.Calls(), "");
  EXPECT_EQ(bench.TakeNotifications(), "");
}

TEST(Cancel, PutsTheSelectionBackAndChangesNothing) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 3);
  EXPECT_TRUE(bench.ostrel().Cancel());
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.TakeNotifications(), "12");
  EXPECT_EQ(bench.State().selected.value, 0u);
  EXPECT_TRUE(bench.ostrel().Stop());
  EXPECT_EQ(bench.Changes(), "");
  EXPECT_EQ(bench.State().items.size(), 4u);  // leftovers, until the next opening
}

TEST(DeInit, WithThePopupOpenDestroysItAndAppliesNothing) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 2);
  bench.ostrel().DeInit();
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.TakeNotifications(), "12");
  EXPECT_EQ(bench.Changes(), "");
  EXPECT_FALSE(bench.box().Exists());
  EXPECT_EQ(bench.machine.Outstanding().find("GDI+"), std::string::npos);
  bench.machine.Advance(5000);
  EXPECT_EQ(bench.Changes(), "");
}

TEST(DeInit, CanBeFollowedByAnotherInitAndPress) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 1);
  bench.ostrel().DeInit();
  ASSERT_TRUE(bench.Ready(new FakeMonitor(bench.script), static_cast<uint16_t>(kVendorIntel)));
  Press(&bench, 2);
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
}

// --- Lists that are too long, and lists without an item.

// Everything but the television: 11 ordinary items and 5 extended ones.
constexpr uint32_t kSixteenItems = 0x7B;

TEST(SixteenItems, AreAllShownButKeysReachFifteen) {
  SessionBench bench;
  bench.script->connected = kSixteenItems;
  bench.script->connected_count = 6;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 1);
  EXPECT_EQ(bench.State().items.size(), 16u);
  EXPECT_EQ(bench.State().item_rects, 16u);
  EXPECT_EQ(bench.State().selected.max, 14u);
  EXPECT_EQ(bench.machine.PopupPicture().width, 1450u);
  EXPECT_EQ(bench.ItemPictures().size(), 16u);
  Press(&bench, 14);
  EXPECT_EQ(bench.Flags(), "0000000000000010");
  Press(&bench, 1);
  EXPECT_EQ(bench.Flags(), "1000000000000000");
}

TEST(SixteenItems, TheMouseReachesTheLastAndTheNextKeyGoesToTheFirst) {
  SessionBench bench;
  bench.machine.SetCommandLine(L"host.exe --enable-dcheck");
  bench.script->connected = kSixteenItems;
  bench.script->connected_count = 6;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 1);
  bench.machine.MoveMouse(15 * 90 + 50, 50);
  EXPECT_EQ(bench.State().selected.value, 15u);
  EXPECT_EQ(bench.Flags(), "0000000000000001");
  EXPECT_TRUE(bench.LogHas("Check failed: icon_index <= SIndex::MAX. "));
  Press(&bench, 1);
  EXPECT_EQ(bench.State().selected.value, 0u);
  // The old flag was not taken away, and the frame goes to the first flagged item.
  EXPECT_EQ(bench.Flags(), "1000000000000001");
  EXPECT_EQ(bench.Highlight(), "selected.png at 10,10 80x80\nNB.png at 10,10 80x80\n");
}

TEST(SixteenItems, AClickAppliesTheLast) {
  SessionBench bench;
  bench.script->connected = kSixteenItems;
  bench.script->connected_count = 6;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 1);
  bench.machine.Click(15 * 90 + 50, 50);
  EXPECT_EQ(bench.Changes(), "EnableExtendModeOnDisplays(1, 0x40)\n");
}

TEST(SixteenItems, KeepTheSmallerBoundThatAnEarlierSessionLeft) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 1);
  bench.machine.Advance(3000);
  bench.script->connected = kSixteenItems;
  bench.script->connected_count = 6;
  Press(&bench, 1);
  EXPECT_EQ(bench.State().items.size(), 16u);
  EXPECT_EQ(bench.State().selected.max, 3u);
}

TEST(EmptyList, OpensTenPixelsWideAndAppliesNothing) {
  SessionBench bench;
  bench.machine.SetCommandLine(L"host.exe --enable-dcheck");
  bench.script->connected = 0x80;
  bench.script->connected_count = 1;
  ASSERT_TRUE(bench.Start());
  EXPECT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.machine.PopupPicture().width, 10u);
  EXPECT_EQ(bench.machine.PopupPicture().height, 100u);
  EXPECT_EQ(bench.State().opened.value, SIndex::BadValue);
  EXPECT_TRUE(bench.LogHas("Check failed: !m_items.empty(). "));
  Press(&bench, 1);
  EXPECT_EQ(bench.State().selected.value, 0u);
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Changes(), "");
  EXPECT_EQ(bench.TakeNotifications(), "12");
  EXPECT_FALSE(bench.State().has_whole_bitmap);  // the session has ended
}

TEST(EmptyList, LeftAloneDoesNothing) {
  SessionBench bench;
  bench.script->connected = 0x80;
  bench.script->connected_count = 1;
  ASSERT_TRUE(bench.Start());
  bench.ostrel().Run();
  bench.machine.Advance(3000);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.Changes(), "");
}

TEST(UnmatchedMode, HighlightsNothingAndTheFirstPressGoesToTheFirstItem) {
  SessionBench bench;
  bench.script->mode = IMMonitor::DM_HSPAN;
  bench.script->active = 0x03;
  ASSERT_TRUE(bench.Start());
  Press(&bench, 1);
  EXPECT_EQ(bench.Flags(), "0000");
  EXPECT_EQ(bench.Highlight(), "");
  EXPECT_EQ(bench.State().selected.value, SIndex::BadValue);
  EXPECT_EQ(bench.State().opened.value, SIndex::BadValue);
  Press(&bench, 1);
  EXPECT_EQ(bench.Flags(), "1000");
}

// --- Failures at opening.

void ExpectClosedAndIdle(SessionBench* bench) {
  EXPECT_EQ(bench->machine.Popup(), nullptr);
  EXPECT_EQ(bench->TakeNotifications(), "");
  const SessionState state = bench->State();
  EXPECT_EQ(state.dialog, nullptr);
  EXPECT_TRUE(state.items.empty());
  EXPECT_FALSE(state.has_backgrounds);
  EXPECT_FALSE(state.has_whole_bitmap);
  EXPECT_FALSE(state.has_ui_objects);
  EXPECT_EQ(state.selected.value, 0u);
  EXPECT_EQ(state.selected.max, 14u);
}

TEST(OpeningFails, WhenTheConnectedDisplaysCannotBeRead) {
  SessionBench bench;
  bench.script->connected_result = 0;
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.ostrel().Run());
  ExpectClosedAndIdle(&bench);
  EXPECT_FALSE(bench.LogHas("Retrieving"));
}

TEST(OpeningFails, WithNoDisplayCounted) {
  SessionBench bench;
  bench.script->connected_count = 0;
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.ostrel().Run());
  ExpectClosedAndIdle(&bench);
  EXPECT_FALSE(bench.LogHas("Preparing"));
}

TEST(OpeningFails, WhenTheModeCannotBeRead) {
  SessionBench bench;
  bench.script->mode_result = 0;
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.ostrel().Run());
  ExpectClosedAndIdle(&bench);
  EXPECT_FALSE(bench.LogHas("Retrieving"));
}

TEST(OpeningFails, WhenTheDialogCannotBeMade) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.machine.Fail("CreateDialogParamA", 1);
  EXPECT_FALSE(bench.ostrel().Run());
  ExpectClosedAndIdle(&bench);
  EXPECT_FALSE(bench.LogHas("Retrieving"));
  EXPECT_TRUE(bench.ostrel().Run());  // and the next press opens it
}

TEST(OpeningFails, WhenTheObjectThrows) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.script->on_call = [](const std::string& call) {
    if (call == "DetectDisplays") throw 1;
  };
  EXPECT_FALSE(bench.ostrel().Run());
  ExpectClosedAndIdle(&bench);
}

TEST(OpeningFails, WithoutTheBrushIsLoggedAndEndsNoSession) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  SIndex left_over;
  left_over.value = 7;
  bench.box().SetSelected(left_over);
  bench.machine.Fail("CreateSolidBrush", 1);
  EXPECT_FALSE(bench.ostrel().Run());
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_TRUE(bench.LogHas(":ERROR:DMSwitch.cpp("));
  EXPECT_TRUE(bench.LogHas("Initial UI objects failed"));
  EXPECT_FALSE(bench.State().has_ui_objects);
  EXPECT_EQ(bench.State().selected.value, 7u);
  EXPECT_EQ(bench.Calls(), "");
}

TEST(OpeningFails, WithoutAnObject) {
  SessionBench bench;
  ASSERT_TRUE(bench.Start());
  bench.LoseObject();
  EXPECT_FALSE(bench.ostrel().Run());
  ExpectClosedAndIdle(&bench);
}

// --- What the session remembers of the mode it found.

TEST(LastMode, FollowsAUsableModeFoundAtOpening) {
  SessionBench bench;
  bench.script->mode = IMMonitor::DM_CLONE;
  bench.script->active = 0x03;
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(bench.State().last_mode, 1u);
  EXPECT_EQ(bench.State().last_displays, 1u);
  Press(&bench, 1);
  EXPECT_EQ(bench.State().last_mode, 2u);
  EXPECT_EQ(bench.State().last_displays, 3u);
  EXPECT_EQ(bench.State().connected_displays, 3u);
  EXPECT_EQ(bench.State().connected_count, 2u);
}

TEST(LastMode, StaysWhenWhatWasFoundIsNotUsable) {
  SessionBench bench;
  bench.script->mode = IMMonitor::DM_CLONE;
  bench.script->active = 0x11;  // not connected
  ASSERT_TRUE(bench.Start());
  Press(&bench, 1);
  EXPECT_EQ(bench.State().last_mode, 1u);
  EXPECT_EQ(bench.State().last_displays, 1u);
}

}  // namespace
