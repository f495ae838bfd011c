// The pop-up on the real desktop, seen as a person would see it: through a screenshot of the X
// server, over a desktop of a known colour.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>

#include "tests/desktop/Desktop.h"
#include "tests/desktop/ExpectedPopup.h"
#include "tests/desktop/XServer.h"
#include "tests/support/FakeMonitor.h"

namespace {

// Three different channels, so that a mixed-up pixel shows.
constexpr uint32_t kDesktopColour = 0x3A7BD5;
constexpr UINT kMessage = WM_APP + 1;
// Two roundings of each channel: in the library's bitmap and in the compositor.
constexpr int kTolerance = 4;

std::string g_notifications;

/// What the pop-up floats over: a window of one colour on both outputs.
HWND OpenBackdrop() {
  WNDCLASSA window_class = {};
  window_class.lpfnWndProc = DefWindowProcA;
  window_class.hInstance = GetModuleHandleA(nullptr);
  window_class.lpszClassName = "DesktopTestBackdrop";
  window_class.hbrBackground = CreateSolidBrush(
      RGB(kDesktopColour >> 16, kDesktopColour >> 8 & 0xFF, kDesktopColour & 0xFF));
  RegisterClassA(&window_class);
  const HWND window =
      CreateWindowExA(WS_EX_NOACTIVATE | WS_EX_TOOLWINDOW, "DesktopTestBackdrop", "", WS_POPUP, 0,
                      0, GetSystemMetrics(SM_CXVIRTUALSCREEN), GetSystemMetrics(SM_CYVIRTUALSCREEN),
                      nullptr, nullptr, window_class.hInstance, nullptr);
  ShowWindow(window, SW_SHOWNOACTIVATE);
  return window;
}

LRESULT CALLBACK HostProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message != kMessage) return DefWindowProcA(window, message, wparam, lparam);
  g_notifications += std::to_string(wparam);
  return 0;
}

int ChannelDifference(uint32_t a, uint32_t b) {
  int most = 0;
  for (int shift = 0; shift <= 16; shift += 8) {
    const int left = static_cast<int>(a >> shift & 0xFF);
    const int right = static_cast<int>(b >> shift & 0xFF);
    most = std::max(most, std::abs(left - right));
  }
  return most;
}

/// "" when the strip below `rect` is as expected; otherwise how many pixels differ and where first.
std::string Compare(const Screenshot& shot, const RECT& rect, const std::vector<uint32_t>& wanted) {
  const auto width = static_cast<uint32_t>(rect.right - rect.left);
  const auto height = static_cast<uint32_t>(rect.bottom - rect.top);
  std::ostringstream text;
  uint32_t different = 0;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const uint32_t seen =
          shot.At(static_cast<uint32_t>(rect.left) + x, static_cast<uint32_t>(rect.top) + y);
      if (ChannelDifference(seen, wanted[y * width + x]) <= kTolerance) continue;
      if (different++ == 0) {
        text << "first at " << x << ", " << y << std::hex << ": seen " << seen << ", wanted "
             << wanted[y * width + x];
      }
    }
  }
  return different == 0 ? "" : std::to_string(different) + " pixels differ, " + text.str();
}

/// How many pixels of the whole screen are not the desktop.
size_t PixelsOverDesktop(const Screenshot& shot) {
  return static_cast<size_t>(std::count_if(
      shot.pixels.begin(), shot.pixels.end(),
      [](uint32_t pixel) { return ChannelDifference(pixel, kDesktopColour) > kTolerance; }));
}

class DesktopPopup : public Desktop {
 protected:
  void SetUp() override {
    Desktop::SetUp();
    g_notifications.clear();
    WNDCLASSA window_class = {};
    window_class.lpfnWndProc = HostProcedure;
    window_class.hInstance = GetModuleHandleA(nullptr);
    window_class.lpszClassName = "DesktopTestHost";
    RegisterClassA(&window_class);
    host_ = CreateWindowExA(0, "DesktopTestHost", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                            window_class.hInstance, nullptr);
    ASSERT_NE(host_, nullptr);
    backdrop_ = OpenBackdrop();
    ASSERT_NE(backdrop_, nullptr);
    Pump(300);
    ASSERT_EQ(PixelsOverDesktop(TakeScreenshot()), 0u);
    Config("Settings", "Prefer Windows 7 CCD API", 1);
    Load();
  }
  void TearDown() override {
    if (DeInit != nullptr) DeInit();
    DestroyWindow(host_);
    DestroyWindow(backdrop_);
    UnregisterClassA("DesktopTestHost", GetModuleHandleA(nullptr));
    UnregisterClassA("DesktopTestBackdrop", GetModuleHandleA(nullptr));
    Desktop::TearDown();
  }

  void Start() {
    ASSERT_TRUE(Init());
    ASSERT_TRUE(RegisterNotification(host_, kMessage));
  }

  /// A panel and one more display in clone, told by an object in the place of a vendor's.
  std::shared_ptr<FakeScript> InstallClone(uint32_t external) {
    auto script = std::make_shared<FakeScript>();
    script->connected = script->active = IMMonitor::MD_NB | external;
    script->connected_count = script->active_count = 2;
    script->mode = IMMonitor::DM_CLONE;
    script->vendor = kVendorUnknown;
    factory().InstallMonitor(new FakeMonitor(script), static_cast<uint16_t>(kVendorWin7CCD));
    return script;
  }

  /// Gives the screen two seconds to show the pop-up, which touches it up to keep it open.
  void ExpectOnScreen(HWND popup, const ExpectedPopup& expected) {
    RECT rect = {};
    ASSERT_TRUE(GetWindowRect(popup, &rect));
    ASSERT_EQ(static_cast<uint32_t>(rect.right - rect.left), PopupWidth(expected));
    ASSERT_EQ(static_cast<uint32_t>(rect.bottom - rect.top), kPopupHeight);
    EXPECT_EQ(rect.left, 1366 / 2 - static_cast<LONG>(PopupWidth(expected)) / 2);
    EXPECT_EQ(rect.top, 768 / 2 - static_cast<LONG>(kPopupHeight) / 2);
    const std::vector<uint32_t> wanted = DrawOverDesktop(expected, kDesktopColour);
    const DWORD begin = GetTickCount();
    std::string difference;
    do {
      Pump(50);
      const Screenshot shot = TakeScreenshot();
      ASSERT_EQ(shot.width, 1366u + 1024u);
      difference = Compare(shot, rect, wanted);
    } while (!difference.empty() && GetTickCount() - begin < 1000);
    EXPECT_EQ(difference, "");
  }

  /// Waits for the pop-up's own timer.
  void ExpectGoneFromScreen(HWND popup) {
    const DWORD begin = GetTickCount();
    while (IsWindow(popup) && GetTickCount() - begin < 6000) Pump(50);
    ASSERT_FALSE(IsWindow(popup));
    Pump(300);
    EXPECT_EQ(PixelsOverDesktop(TakeScreenshot()), 0u);
  }

  HWND host_ = nullptr;
  HWND backdrop_ = nullptr;
};

TEST_F(DesktopPopup, NothingIsShownBeforeAPress) {
  Start();
  Pump(300);
  EXPECT_EQ(PixelsOverDesktop(TakeScreenshot()), 0u);
}

// Wine reports its outputs as external DisplayPort and as one technology, so there is one mode to
// offer, and it is the current one.
TEST_F(DesktopPopup, OneRealDisplayIsOneHighlightedPicture) {
  Start();
  const HWND popup = RunEx();
  ASSERT_NE(popup, nullptr);
  ExpectOnScreen(popup, {{"DP.png"}, 0});
  ExpectGoneFromScreen(popup);
  EXPECT_EQ(g_notifications, "12");
  EXPECT_EQ(OutputsThatAreOn(), kBothOn);
}

// With no word in the configuration the larger presentation is offered and the smaller is not.
TEST_F(DesktopPopup, PresentationIsAmongThePictures) {
  InstallClone(IMMonitor::MD_CRT);
  Start();
  const HWND popup = RunEx();
  ASSERT_NE(popup, nullptr);
  ExpectOnScreen(popup, {{"NB.png", "NB-CRT.png", "CRT.png", "p1024x768.png", "Extend.png"}, 1});
  ExpectGoneFromScreen(popup);
}

TEST_F(DesktopPopup, SecondPressMovesTheFrame) {
  Config("PM:1024x768", "Support This Mode", 0);
  auto script = InstallClone(IMMonitor::MD_DVI);
  Start();
  const HWND popup = RunEx();
  ASSERT_NE(popup, nullptr);
  ExpectedPopup expected = {{"NB.png", "NB-DVI.png", "DVI.png", "Extend.png"}, 1};
  ExpectOnScreen(popup, expected);

  ASSERT_EQ(RunEx(), popup);
  expected.highlighted = 2;
  ExpectOnScreen(popup, expected);
  script->TakeCalls();
  ExpectGoneFromScreen(popup);
  EXPECT_EQ(g_notifications, "12");
  EXPECT_NE(script->TakeCalls().find("SetNewDisplayMode(1, 0x8)\n"), std::string::npos);
}

}  // namespace
