// The windows of other programs, as the simulator shows them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/tests/FaceCalls.h"
#include "sim/tests/Fakes.h"

namespace sim {
namespace {

class Players : public testing::Test {
 protected:
  Players() {
    machine.model().other_windows = {
        {"Progman", "", {"SHELLDLL_DefView"}},
        {"WMPlayerApp", "Windows Media Player", {"ToolBar", "EVRVideoHandler"}},
        {"Lonely", "A title that is somewhat longer", {}},
    };
  }

  static BOOL CALLBACK Collect(HWND window, LPARAM list) {
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
  }
  static BOOL CALLBACK CollectOne(HWND window, LPARAM list) {
    Collect(window, list);
    return FALSE;
  }
  static std::vector<HWND> TopLevel(WNDENUMPROC procedure = Collect) {
    std::vector<HWND> windows;
    result = FAKE(EnumWindows)(procedure, reinterpret_cast<LPARAM>(&windows));
    return windows;
  }
  static std::vector<HWND> Children(HWND parent, WNDENUMPROC procedure = Collect) {
    std::vector<HWND> windows;
    FAKE(EnumChildWindows)(parent, procedure, reinterpret_cast<LPARAM>(&windows));
    return windows;
  }
  static std::wstring ClassOf(HWND window) {
    wchar_t name[64] = {};
    const int length = FAKE(GetClassNameW)(window, name, 64);
    EXPECT_EQ(static_cast<size_t>(length), std::wstring(name).size());
    return name;
  }

  static inline BOOL result = FALSE;
  Machine machine{"win7 intel: internal 1366x768 active"};
};

TEST_F(Players, TopLevelWindowsComeInTheModelsOrder) {
  const std::vector<HWND> windows = TopLevel();
  EXPECT_TRUE(result);
  ASSERT_EQ(windows.size(), 3u);
  EXPECT_EQ(ClassOf(windows[0]), L"Progman");
  EXPECT_EQ(ClassOf(windows[1]), L"WMPlayerApp");
  EXPECT_EQ(ClassOf(windows[2]), L"Lonely");
}

TEST_F(Players, TheWalkEndsWhereTheCallbackSaysSo) {
  EXPECT_EQ(TopLevel(CollectOne).size(), 1u);
  EXPECT_FALSE(result);
  const HWND player = FAKE(FindWindowW)(L"WMPlayerApp", nullptr);
  EXPECT_EQ(Children(player, CollectOne).size(), 1u);
}

TEST_F(Players, NothingOfTheRealDesktopShowsThrough) {
  machine.model().other_windows.clear();
  EXPECT_EQ(TopLevel().size(), 0u);
  EXPECT_EQ(FAKE(FindWindowW)(nullptr, nullptr), nullptr);
  EXPECT_NE(FindWindowW(nullptr, nullptr), nullptr);  // which there is
}

TEST_F(Players, ChildrenAreTheParentsOwnAndHaveNone) {
  const std::vector<HWND> windows = TopLevel();
  const std::vector<HWND> children = Children(windows[1]);
  ASSERT_EQ(children.size(), 2u);
  EXPECT_EQ(ClassOf(children[0]), L"ToolBar");
  EXPECT_EQ(ClassOf(children[1]), L"EVRVideoHandler");
  EXPECT_EQ(Children(children[0]).size(), 0u);
  EXPECT_EQ(Children(windows[2]).size(), 0u);
  EXPECT_EQ(Children(nullptr).size(), 3u);  // null stands for the desktop
}

TEST_F(Players, AreFoundByClassOrTitleWithoutRegardToCase) {
  const std::vector<HWND> windows = TopLevel();
  EXPECT_EQ(FAKE(FindWindowW)(L"wmplayerAPP", nullptr), windows[1]);
  EXPECT_EQ(FAKE(FindWindowW)(nullptr, L"windows media player"), windows[1]);
  EXPECT_EQ(FAKE(FindWindowW)(L"WMPlayerApp", L"Windows Media Player"), windows[1]);
  EXPECT_EQ(FAKE(FindWindowW)(L"WMPlayerApp", L"another"), nullptr);
  EXPECT_EQ(FAKE(FindWindowW)(L"EVRVideoHandler", nullptr), nullptr);  // children are not looked at
}

TEST_F(Players, TextsAreCutToTheRoomThereIs) {
  const HWND window = TopLevel()[2];
  wchar_t text[64] = {};
  EXPECT_EQ(FAKE(GetWindowTextW)(window, text, 64), 31);
  EXPECT_STREQ(text, L"A title that is somewhat longer");
  EXPECT_EQ(FAKE(GetWindowTextW)(window, text, 8), 7);
  EXPECT_STREQ(text, L"A title");
  EXPECT_EQ(FAKE(GetClassNameW)(window, text, 4), 3);
  EXPECT_STREQ(text, L"Lon");
  EXPECT_EQ(FAKE(GetWindowTextW)(TopLevel()[0], text, 64), 0);  // without a title
  EXPECT_STREQ(text, L"");
}

TEST_F(Players, TheFirstChildIsARelationAndOthersAreNotSimulated) {
  const std::vector<HWND> windows = TopLevel();
  EXPECT_EQ(FAKE(GetWindow)(windows[1], GW_CHILD), Children(windows[1])[0]);
  EXPECT_EQ(FAKE(GetWindow)(windows[2], GW_CHILD), nullptr);
  EXPECT_EQ(FAKE(GetWindow)(Children(windows[1])[0], GW_CHILD), nullptr);
  EXPECT_EQ(FAKE(GetWindow)(windows[1], GW_OWNER), nullptr);
  const CaughtFailures failures;
  EXPECT_EQ(FAKE(GetWindow)(windows[1], GW_HWNDNEXT), nullptr);
  EXPECT_EQ(failures.list().size(), 1u);
}

TEST_F(Players, AWindowThatIsGoneIsAnInvalidHandle) {
  const HWND window = TopLevel()[2];
  machine.model().other_windows.resize(1);
  wchar_t text[8] = {};
  SetLastError(0);
  EXPECT_EQ(FAKE(GetClassNameW)(window, text, 8), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_WINDOW_HANDLE));
  EXPECT_EQ(FAKE(GetWindowTextW)(window, text, 8), 0);
  EXPECT_EQ(FAKE(GetWindow)(window, GW_CHILD), nullptr);
  EXPECT_EQ(Children(window).size(), 0u);
}

TEST_F(Players, FailOnRequest) {
  const HWND window = TopLevel()[1];
  wchar_t text[8] = {};
  for (const char* name : {"FindWindowW", "EnumWindows", "EnumChildWindows", "GetClassNameW",
                           "GetWindowTextW", "GetWindow"}) {
    machine.Fail(name, 1, ERROR_ACCESS_DENIED);
  }
  EXPECT_EQ(FAKE(FindWindowW)(L"WMPlayerApp", nullptr), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  EXPECT_EQ(TopLevel().size(), 0u);
  EXPECT_FALSE(result);
  EXPECT_EQ(Children(window).size(), 0u);
  EXPECT_EQ(FAKE(GetClassNameW)(window, text, 8), 0);
  EXPECT_EQ(FAKE(GetWindowTextW)(window, text, 8), 0);
  EXPECT_EQ(FAKE(GetWindow)(window, GW_CHILD), nullptr);
  EXPECT_EQ(FAKE(GetWindow)(window, GW_CHILD), Children(window)[0]);
}

TEST_F(Players, WindowsOfTheLibraryStayRealAndStandInFront) {
  const HWND parent = FAKE(CreateWindowExW)(0, L"STATIC", L"ours", WS_POPUP, 0, 0, 10, 10, nullptr,
                                            nullptr, nullptr, nullptr);
  ASSERT_NE(parent, nullptr);
  const HWND child = FAKE(CreateWindowExW)(0, L"STATIC", L"inside", WS_CHILD, 0, 0, 5, 5, parent,
                                           nullptr, nullptr, nullptr);
  const std::vector<HWND> windows = TopLevel();
  ASSERT_EQ(windows.size(), 4u);
  EXPECT_EQ(windows[0], parent);
  EXPECT_EQ(ClassOf(parent), L"Static");
  wchar_t text[8] = {};
  EXPECT_EQ(FAKE(GetWindowTextW)(parent, text, 8), 4);
  EXPECT_STREQ(text, L"ours");
  EXPECT_EQ(FAKE(GetWindow)(parent, GW_CHILD), child);
  EXPECT_EQ(Children(parent), std::vector<HWND>{child});
  FAKE(DestroyWindow)(parent);
}

}  // namespace
}  // namespace sim
