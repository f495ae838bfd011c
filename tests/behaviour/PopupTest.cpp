// The pop-up's window: its styles, its place, and the objects that it owns.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/SessionBench.h"

namespace {

RECT RectOf(HWND window) {
  RECT rect = {};
  GetWindowRect(window, &rect);
  return rect;
}

RECT WorkAreaOf(HWND window) {
  MONITORINFO info = {};
  info.cbSize = sizeof(info);
  GetMonitorInfoA(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &info);
  return info.rcWork;
}

class PopupWindow : public testing::Test {
 protected:
  void Open() {
    ASSERT_TRUE(bench.Start());
    ASSERT_TRUE(bench.ostrel().Run());
    window = bench.machine.Popup();
  }
  SessionBench bench;
  HWND window = nullptr;
};

TEST_F(PopupWindow, IsALayeredTopmostToolWindowWithoutABorder) {
  Open();
  const LONG ex_style = GetWindowLongA(window, GWL_EXSTYLE);
  EXPECT_NE(ex_style & WS_EX_LAYERED, 0);
  EXPECT_NE(ex_style & WS_EX_TOPMOST, 0);
  EXPECT_NE(ex_style & WS_EX_TOOLWINDOW, 0);
  const LONG style = GetWindowLongA(window, GWL_STYLE);
  EXPECT_NE(style & WS_POPUP, 0);
  EXPECT_EQ(style & WS_CHILD, 0);
  EXPECT_EQ(style & WS_CAPTION, 0);
  EXPECT_NE(style & WS_VISIBLE, 0);
}

TEST_F(PopupWindow, IsNinetyAnItemWideAndAHundredHigh) {
  Open();
  const RECT rect = RectOf(window);
  EXPECT_EQ(rect.right - rect.left, 370);
  EXPECT_EQ(rect.bottom - rect.top, 100);
}

TEST_F(PopupWindow, StandsInTheMiddleOfTheWorkArea) {
  Open();
  const RECT rect = RectOf(window);
  const RECT area = WorkAreaOf(window);
  EXPECT_EQ(rect.left, (area.left + area.right) / 2 - 370 / 2);
  EXPECT_EQ(rect.top, (area.top + area.bottom) / 2 - 100 / 2);
}

TEST_F(PopupWindow, WiderThanTheScreenStartsAtItsLeftEdge) {
  bench.script->connected = 0x7F;
  bench.script->connected_count = 7;
  Open();
  const RECT rect = RectOf(window);
  const RECT area = WorkAreaOf(window);
  const LONG width = area.right - area.left;
  const LONG expected = width >= 1630 ? (area.left + area.right) / 2 - 815 : area.left;
  EXPECT_EQ(rect.left, expected);
}

TEST_F(PopupWindow, StaysWhereItIsWithoutAMonitor) {
  ASSERT_TRUE(bench.Start());
  bench.machine.Fail("GetMonitorInfoA", 1);
  const uint32_t placed = bench.machine.Calls("SetWindowPos");
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.machine.Calls("SetWindowPos") - placed, 1u);  // sized and shown, not moved
}

TEST_F(PopupWindow, IsBroughtToTheTopShownAndPlacedOnce) {
  ASSERT_TRUE(bench.Start());
  const uint32_t placed = bench.machine.Calls("SetWindowPos");
  const uint32_t topped = bench.machine.Calls("BringWindowToTop");
  ASSERT_TRUE(bench.ostrel().Run());
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.machine.Calls("SetWindowPos") - placed, 2u);
  EXPECT_EQ(bench.machine.Calls("BringWindowToTop") - topped, 1u);
}

// --- The placement's other branches, on windows of the test's own.

class Placement : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(bench.Start()); }
  void TearDown() override {
    if (child != nullptr) DestroyWindow(child);
    if (parent != nullptr) DestroyWindow(parent);
  }
  void Make(DWORD parent_style, DWORD child_style) {
    parent = CreateWindowExA(WS_EX_TOOLWINDOW, "STATIC", "", WS_POPUP | parent_style, 100, 120, 400,
                             300, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(parent, nullptr);
    child = CreateWindowExA(0, "STATIC", "", child_style, 5, 6, 100, 60, parent, nullptr, nullptr,
                            nullptr);
    ASSERT_NE(child, nullptr);
    bench.box().CenterWindowOnMonitor(child);
  }

  SessionBench bench;
  HWND parent = nullptr;
  HWND child = nullptr;
};

TEST_F(Placement, OfAChildIsTheMiddleOfItsParent) {
  Make(0, WS_CHILD);
  RECT rect = RectOf(child);
  MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
  EXPECT_EQ(rect.left, 150);
  EXPECT_EQ(rect.top, 120);
}

TEST_F(Placement, OfAnOwnedWindowIsTheMiddleOfItsVisibleOwner) {
  Make(WS_VISIBLE, WS_POPUP);
  const RECT owner = RectOf(parent);
  const RECT rect = RectOf(child);
  EXPECT_EQ(rect.left, (owner.left + owner.right) / 2 - 50);
  EXPECT_EQ(rect.top, (owner.top + owner.bottom) / 2 - 30);
}

TEST_F(Placement, OfAWindowWithAHiddenOwnerIsTheMiddleOfTheScreen) {
  Make(0, WS_POPUP);
  const RECT area = WorkAreaOf(child);
  const RECT rect = RectOf(child);
  EXPECT_EQ(rect.left, (area.left + area.right) / 2 - 50);
  EXPECT_EQ(rect.top, (area.top + area.bottom) / 2 - 30);
}

TEST_F(Placement, KeepsTheSize) {
  Make(0, WS_POPUP);
  const RECT rect = RectOf(child);
  EXPECT_EQ(rect.right - rect.left, 100);
  EXPECT_EQ(rect.bottom - rect.top, 60);
}

// --- The brush and the pens.

class UIObjectsOfTheSession : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(bench.Start()); }
  SessionBench bench;
};

TEST_F(UIObjectsOfTheSession, AreMadeAtOpeningAndReleasedWithTheSession) {
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_TRUE(bench.State().has_ui_objects);
  EXPECT_NE(bench.machine.Outstanding().find("brush"), std::string::npos);
  EXPECT_NE(bench.machine.Outstanding().find("GDI+ pen"), std::string::npos);
  bench.ostrel().Run();
  bench.machine.Advance(1500);
  EXPECT_FALSE(bench.State().has_ui_objects);
  EXPECT_EQ(bench.machine.Outstanding().find("brush"), std::string::npos);
  EXPECT_EQ(bench.machine.Outstanding().find("GDI+ pen"), std::string::npos);
}

TEST_F(UIObjectsOfTheSession, ThatWereLeftKeepTheBrushAndGetNewPens) {
  ASSERT_TRUE(bench.ostrel().Run());
  bench.machine.Advance(3000);
  const uint32_t brushes = bench.machine.Calls("CreateSolidBrush");
  const uint32_t pens = bench.machine.Calls("GdipCreatePen1");
  const uint32_t deleted = bench.machine.Calls("GdipDeletePen");
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.machine.Calls("CreateSolidBrush"), brushes);
  EXPECT_EQ(bench.machine.Calls("GdipCreatePen1"), pens + 2);
  EXPECT_EQ(bench.machine.Calls("GdipDeletePen"), deleted + 2);
}

TEST_F(UIObjectsOfTheSession, AreGivenUpWithTheBrush) {
  bench.machine.Fail("CreateSolidBrush", 1);
  EXPECT_FALSE(bench.ostrel().Run());
  EXPECT_EQ(bench.machine.Outstanding().find("GDI+ pen"), std::string::npos);
}

}  // namespace
