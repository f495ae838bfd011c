#include <gtest/gtest.h>

#include <string>

#include "sim/MachineState.h"
#include "sim/tests/Fakes.h"
#include "sim/tests/SampleLibrary.h"

#include <objidl.h>
#include <propidl.h>

#include <algorithm>
namespace Gdiplus {
using std::max;
using std::min;
}  // namespace Gdiplus
#include <gdiplus.h>

namespace sim {
namespace {

namespace flat = Gdiplus::DllExports;

std::string g_messages;

INT_PTR CALLBACK OnDialog(HWND, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_KEYDOWN) g_messages += "key " + std::to_string(wparam) + "\n";
  if (message == WM_MOUSEMOVE) g_messages += "mouse " + std::to_string(lparam) + "\n";
  if (message == WM_LBUTTONDOWN) g_messages += "click " + std::to_string(lparam) + "\n";
  return FALSE;
}

class Window : public testing::Test {
 protected:
  Window() : machine_(kSampleMachine) { g_messages.clear(); }

  HWND OpenDialog() {
    return SIM_FAKE(CreateDialogParamA)(sample_.module(), MAKEINTRESOURCEA(101), nullptr, OnDialog,
                                        0);
  }

  Machine machine_;
  SampleLibrary sample_;
};

TEST_F(Window, DialogIsThePopupUntilItIsDestroyed) {
  EXPECT_EQ(machine_.Popup(), nullptr);
  const HWND dialog = OpenDialog();
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(machine_.Popup(), dialog);
  EXPECT_NE(machine_.Outstanding().find("window 0x"), std::string::npos);
  EXPECT_TRUE(SIM_FAKE(DestroyWindow)(dialog));
  EXPECT_EQ(machine_.Popup(), nullptr);
  EXPECT_FALSE(IsWindow(dialog));
  EXPECT_EQ(machine_.Outstanding(), "");
}

TEST_F(Window, DestroyingTakesItsTimersAlong) {
  const HWND dialog = OpenDialog();
  SIM_FAKE(SetTimer)(dialog, 1234, 3000, nullptr);
  SIM_FAKE(DestroyWindow)(dialog);
  EXPECT_TRUE(machine_.ArmedTimers().empty());
}

TEST_F(Window, KeysAndMouseReachThePopup) {
  const HWND dialog = OpenDialog();
  machine_.PressKey(VK_RIGHT);
  machine_.MoveMouse(3, 2);
  machine_.Click(5, 1);
  EXPECT_EQ(g_messages, "key 39\nmouse 131075\nclick 65541\n");
  SIM_FAKE(DestroyWindow)(dialog);
}

TEST_F(Window, MessageWithoutAPopupFailsTheTest) {
  CaughtFailures failures;
  machine_.PressKey(VK_RIGHT);
  EXPECT_EQ(failures.list().size(), 1u);
}

TEST_F(Window, DeclaredFaultMakesNoDialog) {
  machine_.Fail("CreateDialogParamA", 1);
  EXPECT_EQ(OpenDialog(), nullptr);
  EXPECT_EQ(machine_.Popup(), nullptr);
}

TEST_F(Window, CursorIsTheMachines) {
  machine_.SetCursor(17, 4);
  POINT point = {};
  EXPECT_TRUE(SIM_FAKE(GetCursorPos)(&point));
  EXPECT_EQ(point.x, 17);
  EXPECT_EQ(point.y, 4);
  EXPECT_TRUE(SIM_FAKE(SetCursorPos)(100, 200));
  SIM_FAKE(GetCursorPos)(&point);
  EXPECT_EQ(point.x, 100);
}

TEST_F(Window, PostIsANotificationWithItsPlaceInTheJournal) {
  const HWND host =
      CreateWindowExA(0, "STATIC", "", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr, nullptr, nullptr);
  EXPECT_TRUE(SIM_FAKE(PostMessageA)(host, 1025, 1, 0));
  ASSERT_EQ(machine_.Notifications().size(), 1u);
  EXPECT_EQ(machine_.Notifications()[0].receiver, host);
  EXPECT_EQ(machine_.Notifications()[0].message, 1025u);
  EXPECT_EQ(machine_.Notifications()[0].wparam, 1u);
  EXPECT_EQ(machine_.TakeJournal(), "PostMessageA(id=1025 wparam=1 lparam=0)\n");
  MSG message = {};
  EXPECT_FALSE(PeekMessageA(&message, host, 0, 0, PM_REMOVE));  // nothing was really posted
  DestroyWindow(host);
  EXPECT_FALSE(SIM_FAKE(PostMessageA)(host, 1025, 2, 0));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_WINDOW_HANDLE));
}

TEST_F(Window, RealTimePostsReally) {
  machine_.UseRealTime();
  const HWND host =
      CreateWindowExA(0, "STATIC", "", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr, nullptr, nullptr);
  EXPECT_TRUE(SIM_FAKE(PostMessageA)(host, 1025, 1, 0));
  MSG message = {};
  EXPECT_TRUE(PeekMessageA(&message, host, 1025, 1025, PM_REMOVE));
  EXPECT_EQ(message.wParam, 1u);
  EXPECT_EQ(machine_.Notifications().size(), 1u);
  DestroyWindow(host);
}

TEST_F(Window, RegisteredClassIsRemembered) {
  WNDCLASSEXW record = {};
  record.cbSize = sizeof(record);
  record.lpfnWndProc = DefWindowProcW;
  record.hInstance = GetModuleHandleW(nullptr);
  record.lpszClassName = L"SimulatorTestClass";
  EXPECT_NE(SIM_FAKE(RegisterClassExW)(&record), 0);
  ASSERT_EQ(machine_.state().windows.classes.size(), 1u);
  EXPECT_EQ(machine_.state().windows.classes[0].name, L"SimulatorTestClass");
  UnregisterClassW(L"SimulatorTestClass", record.hInstance);
}

// A press of the pop-up in small: a bitmap with a drawing goes to the layered window.
TEST_F(Window, LayeredPictureIsKeptWithItsPixels) {
  const HWND dialog = OpenDialog();
  SetWindowLongA(dialog, GWL_EXSTYLE, GetWindowLongA(dialog, GWL_EXSTYLE) | WS_EX_LAYERED);
  ULONG_PTR token = 0;
  const Gdiplus::GdiplusStartupInput input;
  ASSERT_EQ(Fake(&Gdiplus::GdiplusStartup, "GdiplusStartup")(&token, &input, nullptr), Gdiplus::Ok);
  Gdiplus::GpBitmap* bitmap = nullptr;
  ASSERT_EQ(Fake(&flat::GdipCreateBitmapFromScan0, "GdipCreateBitmapFromScan0")(
                3, 2, 0, PixelFormat32bppARGB, nullptr, &bitmap),
            Gdiplus::Ok);
  flat::GdipBitmapSetPixel(bitmap, 1, 0, 0xFF102030);
  HBITMAP picture = nullptr;
  ASSERT_EQ(
      Fake(&flat::GdipCreateHBITMAPFromBitmap, "GdipCreateHBITMAPFromBitmap")(bitmap, &picture, 0),
      Gdiplus::Ok);
  const HDC dc = SIM_FAKE(CreateCompatibleDC)(nullptr);
  const HGDIOBJ old = SIM_FAKE(SelectObject)(dc, picture);
  SIZE size = {3, 2};
  POINT origin = {0, 0};
  BLENDFUNCTION blend = {AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
  EXPECT_TRUE(SIM_FAKE(UpdateLayeredWindow)(dialog, nullptr, nullptr, &size, dc, &origin, 0, &blend,
                                            ULW_ALPHA));
  EXPECT_EQ(machine_.PopupPicture().width, 3u);
  EXPECT_EQ(machine_.PopupPicture().height, 2u);
  ASSERT_EQ(machine_.PopupPicture().pixels.size(), 6u);
  EXPECT_EQ(machine_.PopupPicture().pixels[0], 0u);
  EXPECT_EQ(machine_.PopupPicture().pixels[1], 0xFF102030u);
  SIM_FAKE(SelectObject)(dc, old);
  SIM_FAKE(DeleteDC)(dc);
  SIM_FAKE(DeleteObject)(picture);
  Fake(&flat::GdipDisposeImage, "GdipDisposeImage")(bitmap);
  SIM_FAKE(DestroyWindow)(dialog);
  Fake(&Gdiplus::GdiplusShutdown, "GdiplusShutdown")(token);
  EXPECT_EQ(machine_.Outstanding(), "");
}

class Gdi : public testing::Test {
 protected:
  Gdi() : machine_(kSampleMachine) {}

  void Start() {
    const Gdiplus::GdiplusStartupInput input;
    Fake(&Gdiplus::GdiplusStartup, "GdiplusStartup")(&token_, &input, nullptr);
  }
  void Stop() { Fake(&Gdiplus::GdiplusShutdown, "GdiplusShutdown")(token_); }

  Gdiplus::GpStatus MakeBitmap(Gdiplus::GpBitmap** bitmap) {
    return Fake(&flat::GdipCreateBitmapFromScan0, "GdipCreateBitmapFromScan0")(
        20, 10, 0, PixelFormat32bppARGB, nullptr, bitmap);
  }

  // A picture of 4 by 4 in the folder of the host's pictures.
  std::wstring WritePicture(const wchar_t* name) {
    const std::wstring folder = machine_.HostFolder() + L"\\OstrelRes";
    CreateDirectoryW(folder.c_str(), nullptr);
    Gdiplus::GpBitmap* bitmap = nullptr;
    flat::GdipCreateBitmapFromScan0(4, 4, 0, PixelFormat32bppARGB, nullptr, &bitmap);
    // The PNG encoder's class.
    const CLSID png = {0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0, 0, 0xf8, 0x1e, 0xf3, 0x2e}};
    const std::wstring path = folder + L"\\" + name;
    flat::GdipSaveImageToFile(bitmap, path.c_str(), &png, nullptr);
    flat::GdipDisposeImage(bitmap);
    return path;
  }

  Machine machine_;
  ULONG_PTR token_ = 0;
};

TEST_F(Gdi, NothingWorksBeforeTheStart) {
  Gdiplus::GpBitmap* bitmap = nullptr;
  EXPECT_EQ(MakeBitmap(&bitmap), Gdiplus::GdiplusNotInitialized);
}

TEST_F(Gdi, BitmapIsInTheLedgerUntilDisposed) {
  Start();
  Gdiplus::GpBitmap* bitmap = nullptr;
  ASSERT_EQ(MakeBitmap(&bitmap), Gdiplus::Ok);
  EXPECT_NE(machine_.Outstanding().find("GDI+ image 0x"), std::string::npos);
  EXPECT_EQ(Fake(&flat::GdipDisposeImage, "GdipDisposeImage")(bitmap), Gdiplus::Ok);
  Stop();
  EXPECT_EQ(machine_.Outstanding(), "");
}

TEST_F(Gdi, DeclaredFaultAnswersItsStatus) {
  Start();
  machine_.Fail("GdipCreateBitmapFromScan0", 1, Gdiplus::OutOfMemory);
  Gdiplus::GpBitmap* bitmap = nullptr;
  EXPECT_EQ(MakeBitmap(&bitmap), Gdiplus::OutOfMemory);
  machine_.Fail("GdipCreateBitmapFromScan0", 1);
  EXPECT_EQ(MakeBitmap(&bitmap), Gdiplus::GenericError);
  Stop();
}

TEST_F(Gdi, BrushAndScreenDcAreCounted) {
  const HBRUSH brush = SIM_FAKE(CreateSolidBrush)(0xE0E0E0);
  const HDC dc = SIM_FAKE(GetDC)(nullptr);
  EXPECT_NE(machine_.Outstanding().find("brush 0x"), std::string::npos);
  EXPECT_NE(machine_.Outstanding().find("window DC 0x"), std::string::npos);
  SIM_FAKE(DeleteObject)(brush);
  SIM_FAKE(ReleaseDC)(nullptr, dc);
  EXPECT_EQ(machine_.Outstanding(), "");
  machine_.Fail("CreateSolidBrush", 1);
  EXPECT_EQ(SIM_FAKE(CreateSolidBrush)(0xE0E0E0), nullptr);
}

TEST_F(Gdi, DrawingIsToldFileByFile) {
  Start();
  const std::wstring path = WritePicture(L"NB.png");
  Gdiplus::GpImage* image = nullptr;
  ASSERT_EQ(Fake(&flat::GdipLoadImageFromFile, "GdipLoadImageFromFile")(path.c_str(), &image),
            Gdiplus::Ok);
  Gdiplus::GpBitmap* bitmap = nullptr;
  MakeBitmap(&bitmap);
  Gdiplus::GpGraphics* graphics = nullptr;
  Fake(&flat::GdipGetImageGraphicsContext, "GdipGetImageGraphicsContext")(bitmap, &graphics);
  const auto draw = Fake(&flat::GdipDrawImageRectI, "GdipDrawImageRectI");
  EXPECT_EQ(draw(graphics, image, 10, 1, 8, 9), Gdiplus::Ok);
  Fake(&flat::GdipDeleteGraphics, "GdipDeleteGraphics")(graphics);
  Gdiplus::GpBitmap* clone = nullptr;
  Fake(&flat::GdipCloneBitmapAreaI, "GdipCloneBitmapAreaI")(0, 0, 20, 10, PixelFormat32bppARGB,
                                                            bitmap, &clone);
  const std::vector<Drawn>& drawn = machine_.state().drawings.bitmaps[clone];
  ASSERT_EQ(drawn.size(), 1u);
  EXPECT_EQ(drawn[0].file, "NB.png");
  EXPECT_EQ(drawn[0].x, 10);
  EXPECT_EQ(drawn[0].height, 9);
  for (Gdiplus::GpImage* each :
       {image, static_cast<Gdiplus::GpImage*>(bitmap), static_cast<Gdiplus::GpImage*>(clone)}) {
    Fake(&flat::GdipDisposeImage, "GdipDisposeImage")(each);
  }
  Stop();
  EXPECT_EQ(machine_.Outstanding(), "");
}

TEST_F(Gdi, MissingFileIsNoPicture) {
  Start();
  Gdiplus::GpImage* image = nullptr;
  const std::wstring path = machine_.HostFolder() + L"\\OstrelRes\\NoSuch.png";
  EXPECT_NE(Fake(&flat::GdipLoadImageFromFile, "GdipLoadImageFromFile")(path.c_str(), &image),
            Gdiplus::Ok);
  Stop();
  EXPECT_EQ(machine_.Outstanding(), "");
}

}  // namespace
}  // namespace sim
