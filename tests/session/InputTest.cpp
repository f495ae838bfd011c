// Keys, the mouse, and every row of the dialog procedure.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/SessionBench.h"

namespace {

// Items of panel and CRT stand at 10, 100, 190 and 280, each 80 wide; the pop-up is 370 wide.
class Input : public testing::Test {
 protected:
  void Open() {
    ASSERT_TRUE(bench.Start());
    OpenAgain();
  }
  void OpenAgain() {
    ASSERT_TRUE(bench.ostrel().Run());
    bench.Calls();
    bench.TakeNotifications();
  }
  INT_PTR Send(UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
    return bench.box().SendToDialogProc(bench.machine.Popup(), message, wparam, lparam);
  }
  static LPARAM At(int x, int y) { return MAKELPARAM(x, y); }

  SessionBench bench;
};

// --- Keys.

TEST_F(Input, RightAndDownMoveForward) {
  Open();
  bench.machine.PressKey(VK_RIGHT);
  EXPECT_EQ(bench.Flags(), "0100");
  EXPECT_EQ(bench.PopupPeriod(), 1500u);
  bench.machine.PressKey(VK_DOWN);
  EXPECT_EQ(bench.Flags(), "0010");
}

TEST_F(Input, LeftAndUpMoveBackAndWrap) {
  Open();
  bench.machine.PressKey(VK_LEFT);
  EXPECT_EQ(bench.Flags(), "0001");
  EXPECT_EQ(bench.PopupPeriod(), 1500u);
  bench.machine.PressKey(VK_UP);
  EXPECT_EQ(bench.Flags(), "0010");
}

TEST_F(Input, EnterAppliesAtOnce) {
  Open();
  bench.machine.PressKey(VK_RIGHT);
  bench.machine.PressKey(VK_RETURN);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.TakeNotifications(), "2");
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
}

TEST_F(Input, EscapeClosesAndPutsTheSelectionBack) {
  Open();
  bench.machine.PressKey(VK_RIGHT);
  bench.machine.PressKey(VK_ESCAPE);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.TakeNotifications(), "2");
  EXPECT_EQ(bench.State().selected.value, 0u);
  EXPECT_TRUE(bench.ostrel().Stop());
  bench.machine.Advance(5000);
  EXPECT_EQ(bench.Calls(), "");
}

TEST_F(Input, EscapeWithoutAMoveCloses) {
  Open();
  bench.machine.PressKey(VK_ESCAPE);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.TakeNotifications(), "2");
}

TEST_F(Input, OtherKeysDoNothing) {
  Open();
  bench.machine.PressKey(VK_SPACE);
  bench.machine.PressKey('A');
  EXPECT_EQ(bench.Flags(), "1000");
  EXPECT_EQ(bench.PopupPeriod(), 3000u);
  EXPECT_NE(bench.machine.Popup(), nullptr);
}

// --- Results of the dialog procedure, row by row.

TEST_F(Input, ResultsOfTheDialogProcedure) {
  Open();
  EXPECT_EQ(Send(WM_INITDIALOG), 0);
  EXPECT_EQ(Send(WM_TIMER, 77), 1);
  EXPECT_EQ(Send(WM_MOUSEMOVE, 0, At(50, 50)), 1);
  EXPECT_EQ(Send(WM_KEYDOWN, VK_RIGHT), 1);
  EXPECT_EQ(Send(WM_KEYDOWN, VK_DOWN), 1);
  EXPECT_EQ(Send(WM_KEYDOWN, VK_LEFT), 1);
  EXPECT_EQ(Send(WM_KEYDOWN, VK_UP), 1);
  EXPECT_EQ(Send(WM_KEYDOWN, 'A'), 1);
  EXPECT_EQ(Send(WM_PAINT), 0);
  EXPECT_EQ(Send(WM_CLOSE), 0);
  EXPECT_EQ(Send(WM_COMMAND, IDCANCEL), 0);
  EXPECT_EQ(Send(WM_KEYUP, VK_RETURN), 0);
  EXPECT_NE(bench.machine.Popup(), nullptr);
  EXPECT_EQ(Send(WM_KEYDOWN, VK_ESCAPE), 1);
}

TEST_F(Input, ResultsOfTheEndingMessages) {
  Open();
  EXPECT_EQ(Send(WM_TIMER, 1234), 1);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  OpenAgain();
  EXPECT_EQ(Send(WM_LBUTTONDOWN, 0, At(50, 50)), 1);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  OpenAgain();
  EXPECT_EQ(Send(WM_KEYDOWN, VK_RETURN), 1);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
}

TEST_F(Input, AnotherTimerChangesNothing) {
  Open();
  Send(WM_TIMER, 1233);
  EXPECT_NE(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.PopupPeriod(), 3000u);
}

TEST_F(Input, TheTimersEndKillsTheTimer) {
  Open();
  const uint32_t killed = bench.machine.Calls("KillTimer");
  bench.machine.Advance(3000);
  EXPECT_EQ(bench.machine.Calls("KillTimer"), killed + 1);
  EXPECT_TRUE(bench.machine.ArmedTimers().empty());
}

TEST_F(Input, WithoutASessionTheDialogProcedureHandlesNothing) {
  Open();
  bench.ostrel().DeInit();
  EXPECT_EQ(bench.box().SendToDialogProc(nullptr, WM_TIMER, 1234, 0), 0);
  EXPECT_EQ(bench.box().SendToDialogProc(nullptr, WM_KEYDOWN, VK_RETURN, 0), 0);
}

// --- The mouse.

TEST_F(Input, TheMouseSelectsWhatItIsOn) {
  Open();
  bench.machine.MoveMouse(200, 50);
  EXPECT_EQ(bench.Flags(), "0010");
  EXPECT_EQ(bench.State().selected.value, 2u);
  EXPECT_EQ(bench.PopupPeriod(), 1500u);
  EXPECT_EQ(bench.Highlight(), "selected.png at 190,10 80x80\nCRT.png at 190,10 80x80\n");
}

TEST_F(Input, TheMouseHitsAPictureUpToItsRightAndBottomEdge) {
  Open();
  bench.machine.MoveMouse(179, 89);
  EXPECT_EQ(bench.Flags(), "0100");
  bench.machine.MoveMouse(280, 10);
  EXPECT_EQ(bench.Flags(), "0001");
  bench.machine.MoveMouse(180, 50);
  bench.machine.MoveMouse(150, 90);
  bench.machine.MoveMouse(150, 9);
  bench.machine.MoveMouse(99, 50);
  EXPECT_EQ(bench.Flags(), "0001");
}

TEST_F(Input, TheMouseBetweenPicturesLeavesTheTimeAlone) {
  Open();
  bench.machine.MoveMouse(95, 50);
  EXPECT_EQ(bench.Flags(), "1000");
  EXPECT_EQ(bench.PopupPeriod(), 3000u);
}

TEST_F(Input, TheMouseOnTheHighlightedItemStartsTheTimeAnewAndDrawsNothing) {
  Open();
  const uint32_t drawn = bench.machine.Calls("UpdateLayeredWindow");
  bench.machine.MoveMouse(20, 20);
  EXPECT_EQ(bench.PopupPeriod(), 1500u);
  EXPECT_EQ(bench.machine.Calls("UpdateLayeredWindow"), drawn);
  EXPECT_EQ(bench.Flags(), "1000");
}

TEST_F(Input, ANegativePointHitsNothing) {
  Open();
  bench.machine.MoveMouse(-300, 50);
  bench.machine.MoveMouse(50, -20);
  EXPECT_EQ(bench.Flags(), "1000");
  EXPECT_EQ(bench.PopupPeriod(), 3000u);
}

TEST_F(Input, AMouseThatRestsWhereThePopupAppearsSelectsNothingUntilItMoves) {
  Open();
  bench.SetCursorInPopup(140, 50);
  bench.ostrel().Cancel();
  OpenAgain();
  ASSERT_EQ(bench.State().cursor_at_open.x, 140);
  ASSERT_EQ(bench.State().cursor_at_open.y, 50);
  bench.machine.MoveMouse(140, 50);
  EXPECT_EQ(bench.Flags(), "1000");
  EXPECT_EQ(bench.PopupPeriod(), 3000u);
  bench.machine.MoveMouse(141, 50);
  EXPECT_EQ(bench.Flags(), "0100");
}

TEST_F(Input, APointSeenLastDoesNothingInTheNextSessionEither) {
  Open();
  bench.machine.MoveMouse(140, 50);
  EXPECT_EQ(bench.Flags(), "0100");
  bench.ostrel().Cancel();
  OpenAgain();
  bench.machine.MoveMouse(140, 50);
  EXPECT_EQ(bench.Flags(), "1000");
  EXPECT_EQ(bench.PopupPeriod(), 3000u);
  bench.machine.MoveMouse(141, 50);
  EXPECT_EQ(bench.Flags(), "0100");
}

TEST_F(Input, TheFirstPointCountsAsSeenOnlyAtTheOrigin) {
  Open();
  bench.machine.MoveMouse(0, 0);
  EXPECT_EQ(bench.PopupPeriod(), 3000u);
  bench.machine.MoveMouse(10, 10);
  EXPECT_EQ(bench.PopupPeriod(), 1500u);
}

TEST_F(Input, AClickOnAPictureAppliesIt) {
  Open();
  bench.machine.Click(200, 50);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.TakeNotifications(), "2");
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(1, 0x2)\n");
}

TEST_F(Input, AClickBetweenPicturesAppliesTheHighlightedItem) {
  Open();
  bench.machine.PressKey(VK_RIGHT);
  bench.machine.Click(95, 50);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
}

TEST_F(Input, AClickOnTheCurrentItemClosesWithoutAChange) {
  Open();
  bench.machine.Click(50, 50);
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  EXPECT_EQ(bench.Calls(), "");
}

TEST_F(Input, SelectingNoPositionFailsItsCheck) {
  bench.machine.SetCommandLine(L"host.exe --enable-dcheck");
  Open();
  bench.box().SelectItem(SIndex::BadValue);
  EXPECT_TRUE(bench.LogHas("Check failed: icon_index != SIndex::BadValue. "));
  EXPECT_TRUE(bench.LogHas("Check failed: icon_index <= SIndex::MAX. "));
  EXPECT_EQ(bench.Flags(), "0000");
}

}  // namespace
