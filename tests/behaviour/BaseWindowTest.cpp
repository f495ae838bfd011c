#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/behaviour/LogText.h"

namespace {

using sim::Library;
using sim::Machine;

constexpr char kNotebook[] = "win7 intel: internal 1366x768 active";

class BaseWindowTest : public testing::Test {
 protected:
  void Load(const wchar_t* command_line = L"host.exe") {
    machine_.SetCommandLine(command_line);
    library_ = std::make_unique<Library>(machine_, Library::Build::kWhiteBox);
    start_ = machine_.Log().size();
    window_.reset(library_->white_box().foundation->MakeProbeWindow());
  }
  bool Create() {
    return window_->Create(L"a title", WS_POPUP, WS_EX_TOOLWINDOW, 11, 12, 130, 140, nullptr);
  }
  bool Got(UINT message) const {
    return std::any_of(window_->messages().begin(), window_->messages().end(),
                       [message](const auto& noted) { return noted.message == message; });
  }
  std::string Log() const { return Messages(machine_.Log().substr(start_)); }

  Machine machine_{kNotebook};
  std::unique_ptr<Library> library_;
  std::unique_ptr<ProbeWindow> window_;  // goes before the library
  size_t start_ = 0;
};

TEST_F(BaseWindowTest, CreateMakesTheWindowAsAsked) {
  Load();
  ASSERT_TRUE(Create());
  ASSERT_NE(window_->wnd(), nullptr);
  EXPECT_TRUE(IsWindow(window_->wnd()));
  wchar_t text[100] = {};
  GetClassNameW(window_->wnd(), text, 100);
  EXPECT_STREQ(text, L"OstrelProbeWindow");
  GetWindowTextW(window_->wnd(), text, 100);
  EXPECT_STREQ(text, L"a title");
  RECT rect = {};
  GetWindowRect(window_->wnd(), &rect);
  EXPECT_EQ(rect.right - rect.left, 130);
  EXPECT_EQ(rect.bottom - rect.top, 140);
  EXPECT_NE(GetWindowLongPtrW(window_->wnd(), GWL_EXSTYLE) & WS_EX_TOOLWINDOW, 0);
  EXPECT_EQ(Log(), "");
}

TEST_F(BaseWindowTest, AskedPlaceIsNotUsed) {
  Load();
  ASSERT_TRUE(Create());
  RECT rect = {};
  GetWindowRect(window_->wnd(), &rect);
  // A pop-up style window at CW_USEDEFAULT stands at the origin.
  EXPECT_EQ(rect.left, 0);
  EXPECT_EQ(rect.top, 0);
}

TEST_F(BaseWindowTest, ClassIsRegisteredWithTheSharedRecord) {
  Load();
  ASSERT_TRUE(Create());
  WNDCLASSEXW wcex = {};
  wcex.cbSize = sizeof(wcex);
  ASSERT_TRUE(GetClassInfoExW(GetModuleHandleW(nullptr), L"OstrelProbeWindow", &wcex));
  EXPECT_EQ(wcex.style, UINT{CS_HREDRAW | CS_VREDRAW});
  WNDCLASSEXW filled;
  window_->FillWindowClass(&filled);
  EXPECT_EQ(filled.cbSize, 80u);
  EXPECT_EQ(filled.style, 3u);
  EXPECT_EQ(filled.hInstance, GetModuleHandleW(nullptr));
  EXPECT_STREQ(filled.lpszClassName, L"OstrelProbeWindow");
  EXPECT_EQ(filled.hCursor, nullptr);
  EXPECT_EQ(filled.lpszMenuName, nullptr);
}

TEST_F(BaseWindowTest, MessagesDuringCreationAlreadyHaveTheWindow) {
  Load();
  ASSERT_TRUE(Create());
  ASSERT_TRUE(Got(WM_NCCREATE));
  ASSERT_TRUE(Got(WM_CREATE));
  EXPECT_EQ(window_->messages().front().message, UINT{WM_NCCREATE});
  for (const auto& noted : window_->messages()) {
    EXPECT_EQ(noted.hwnd, window_->wnd());
    EXPECT_TRUE(noted.had_window) << noted.message;
  }
}

TEST_F(BaseWindowTest, MessagesReachTheirObject) {
  Load();
  ASSERT_TRUE(Create());
  SendMessageA(window_->wnd(), WM_APP + 1, 2, 3);
  EXPECT_TRUE(Got(WM_APP + 1));
}

TEST_F(BaseWindowTest, ShowShowsIt) {
  Load();
  ASSERT_TRUE(Create());
  EXPECT_FALSE(IsWindowVisible(window_->wnd()));
  window_->Show();
  EXPECT_TRUE(IsWindowVisible(window_->wnd()));
}

TEST_F(BaseWindowTest, DestroyingTheWindowClearsTheMemberAndItCanBeMadeAnew) {
  Load(L"host.exe --enable-dcheck");
  library_->ForgiveLeaks();  // the test destroys a window that the library made
  ASSERT_TRUE(Create());
  DestroyWindow(window_->wnd());
  EXPECT_TRUE(Got(WM_DESTROY));
  EXPECT_EQ(window_->wnd(), nullptr);
  EXPECT_TRUE(Create());  // the class is registered already, which is fine
  EXPECT_EQ(Log(), "");
}

TEST_F(BaseWindowTest, DestructionDestroysTheWindow) {
  Load();
  ASSERT_TRUE(Create());
  const HWND wnd = window_->wnd();
  window_.reset();
  EXPECT_FALSE(IsWindow(wnd));
}

TEST_F(BaseWindowTest, SecondCreateMakesASecondWindowOverTheMember) {
  Load(L"host.exe --enable-dcheck");
  library_->ForgiveLeaks();  // nobody but the test knows the first window any more
  ASSERT_TRUE(Create());
  const HWND first = window_->wnd();
  testing::internal::CaptureStderr();
  EXPECT_TRUE(Create());
  testing::internal::GetCapturedStderr();
  EXPECT_NE(window_->wnd(), first);
  EXPECT_TRUE(IsWindow(first));
  EXPECT_EQ(Log(),
            "Check failed: wnd_ == NULL. Create a window that already exists is not allowed\n");
  DestroyWindow(first);
}

TEST_F(BaseWindowTest, FailedCreationIsLogged) {
  Load(L"host.exe --enable-dcheck");
  window_->set_window_class_refused();
  window_->set_class_name(L"OstrelRefusedWindow");
  testing::internal::CaptureStderr();
  EXPECT_FALSE(Create());
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(window_->wnd(), nullptr);
  const std::regex expected(
      "Check failed: wnd_ != NULL\\. \nCreating window failed:\n[^\n]*ProbeWindow[^\n]*\n"
      "\t Window class name: OstrelRefusedWindow\n");
  EXPECT_TRUE(std::regex_match(Log(), expected)) << Log();
}

TEST_F(BaseWindowTest, NullClassRecordIsChecked) {
  Load(L"host.exe --enable-dcheck");
  testing::internal::CaptureStderr();
  window_->FillWindowClass(nullptr);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(Log(), "Check failed: wcex != NULL. \n");
}

}  // namespace
