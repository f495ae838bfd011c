// What stops a switch or shapes it: players that show video, extended desktop, the edition, and the
// television that needs its driver's mode pruning off.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/EdidMaker.h"
#include "tests/behaviour/CoreHost.h"
#include "tests/support/SessionBench.h"

namespace {

constexpr char kWin7[] = "win7 intel: internal 1366x768 active";
constexpr char kXp[] = "xp intel: internal 1366x768 active, hdmi 1360x768";
constexpr char kDeviceMap[] = "HKLM\\HARDWARE\\DEVICEMAP\\VIDEO";
constexpr char kFirstDevice[] = "\\Device\\Video0";
constexpr char kDeviceKey[] = "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Video\\{1}\\0000";
constexpr char kDevicePath[] =
    "\\Registry\\Machine\\SYSTEM\\CurrentControlSet\\Control\\Video\\{1}\\0000";

using Windows = std::vector<sim::OtherWindow>;

class Guards {
 public:
  explicit Guards(const std::string& text) : host(text) {}
  const ProjectorBox& box() { return *host.ostrel().white_box().projectors; }
  sim::Model& model() { return host.machine.model(); }
  CoreHost host;
};

// --- Windows Media Player.

class MediaPlayer : public testing::Test, public Guards {
 protected:
  MediaPlayer() : Guards(kWin7) {}
  bool PlayingWith(const Windows& windows) {
    model().other_windows = windows;
    return box().IsWindowsMediaPlayerPlaying();
  }
};

TEST_F(MediaPlayer, IsNotPlayingWithoutItsWindow) {
  EXPECT_FALSE(PlayingWith({}));
  EXPECT_FALSE(PlayingWith({{"Other", "Windows Media Player", {"EVRVideoHandler"}}}));
}

TEST_F(MediaPlayer, IsPlayingWhileItHasAVideoChild) {
  EXPECT_TRUE(PlayingWith({{"WMPlayerApp", "Windows Media Player", {"EVRVideoHandler"}}}));
  EXPECT_TRUE(PlayingWith({{"WMPlayerApp", "", {"ToolBar", "", "evrVIDEOhandler", "Last"}}}));
}

TEST_F(MediaPlayer, IsNotPlayingWhenItPlaysSoundOnly) {
  EXPECT_FALSE(PlayingWith({{"WMPlayerApp", "Windows Media Player", {"ToolBar"}}}));
  EXPECT_FALSE(PlayingWith({{"WMPlayerApp", "Windows Media Player", {}}}));
  EXPECT_FALSE(PlayingWith({{"WMPlayerApp", "", {"EVRVideoHandler2", "EVRVideoHandle"}}}));
}

TEST_F(MediaPlayer, StopsLookingAtTheFirstVideoChild) {
  const uint32_t before = host.machine.Calls("GetClassNameW");
  EXPECT_TRUE(PlayingWith({{"WMPlayerApp", "", {"ToolBar", "EVRVideoHandler", "ToolBar"}}}));
  EXPECT_EQ(host.machine.Calls("GetClassNameW"), before + 2);
}

TEST_F(MediaPlayer, PassesAChildWhoseClassCannotBeRead) {
  box();
  host.machine.Fail("GetClassNameW", 1);
  EXPECT_TRUE(PlayingWith({{"WMPlayerApp", "", {"ToolBar", "EVRVideoHandler"}}}));
}

TEST_F(MediaPlayer, IsNotPlayingWhereWindowsDoesNotTell) {
  const Windows playing = {{"WMPlayerApp", "", {"EVRVideoHandler"}}};
  box();
  for (const char* function : {"FindWindowW", "EnumChildWindows"}) {
    host.machine.Fail(function, 1);
    EXPECT_FALSE(PlayingWith(playing)) << function;
  }
  EXPECT_TRUE(PlayingWith(playing));
}

// --- PowerDVD 8.

const sim::OtherWindow kPowerDvd = {"CLMain", "CyberLink PowerDVD8", {"Bar", "VideoRenderer"}};

class PowerDvd : public testing::Test, public Guards {
 protected:
  PowerDvd() : Guards(kWin7) {
    model().processes = {{4, "System"}, {77, "PowerDVD8.exe"}};
    model().other_windows = {kPowerDvd};
  }
  bool Playing() { return box().IsPowerDVDPlaying(); }
};

TEST_F(PowerDvd, IsPlayingWithProcessTitleAndVideoChild) {
  EXPECT_TRUE(Playing());
  EXPECT_EQ(CountOf(host.machine.Outstanding(), "snapshot"), 0u) << host.machine.Outstanding();
}

TEST_F(PowerDvd, IsRecognisedWithoutRegardToCase) {
  model().processes = {{77, "powerdvd8.EXE"}};
  model().other_windows = {{"x", "CYBERLINK powerdvd8", {"videorenderer"}}};
  EXPECT_TRUE(Playing());
}

TEST_F(PowerDvd, IsNotPlayingWithoutItsProcess) {
  for (const char* name : {"PowerDVD9.exe", "PowerDVD8", "PowerDVD8.exe.exe", "xPowerDVD8.exe"}) {
    model().processes = {{77, name}};
    EXPECT_FALSE(Playing()) << name;
  }
  model().processes.clear();
  EXPECT_FALSE(Playing());
  EXPECT_EQ(host.machine.Calls("EnumWindows"), 0u);
  EXPECT_EQ(CountOf(host.machine.Outstanding(), "snapshot"), 0u) << host.machine.Outstanding();
}

TEST_F(PowerDvd, IsNotPlayingWithoutItsTitle) {
  for (const char* title : {"", "CyberLink PowerDVD", "CyberLink PowerDVD8 - film"}) {
    model().other_windows = {{"CLMain", title, {"VideoRenderer"}}};
    EXPECT_FALSE(Playing()) << title;
  }
}

TEST_F(PowerDvd, IsNotPlayingWithoutAChildWindow) {
  model().other_windows = {{"CLMain", "CyberLink PowerDVD8", {}}};
  EXPECT_FALSE(Playing());
}

TEST_F(PowerDvd, IsNotPlayingWithOtherChildrenOnly) {
  model().other_windows = {{"CLMain", "CyberLink PowerDVD8", {"Bar", "VideoRenderer2"}}};
  EXPECT_FALSE(Playing());
}

TEST_F(PowerDvd, AWindowOfItsTitleWithoutAChildIsPassedOver) {
  model().other_windows = {{"CLTray", "CyberLink PowerDVD8", {}}, kPowerDvd};
  EXPECT_TRUE(Playing());
}

TEST_F(PowerDvd, OnlyTheFirstWindowWithAChildIsLookedInto) {
  model().other_windows = {{"CLMain", "CyberLink PowerDVD8", {"Bar"}}, kPowerDvd};
  EXPECT_FALSE(Playing());
}

TEST_F(PowerDvd, OnlyTheFirstProcessIsLookedAt) {
  model().processes.push_back({78, "PowerDVD8.exe"});
  EXPECT_TRUE(Playing());
  EXPECT_EQ(host.machine.Calls("Process32First"), 1u);
  EXPECT_EQ(host.machine.Calls("Process32Next"), 1u);
  EXPECT_EQ(host.machine.Calls("EnumWindows"), 1u);
  model().other_windows.clear();  // without a window of the first, the second is not tried
  EXPECT_FALSE(Playing());
  EXPECT_EQ(host.machine.Calls("Process32Next"), 2u);
  EXPECT_EQ(host.machine.Calls("EnumWindows"), 2u);
}

TEST_F(PowerDvd, IsNotPlayingWhereWindowsDoesNotTell) {
  box();
  for (const char* function : {"CreateToolhelp32Snapshot", "Process32First", "Process32Next",
                               "EnumWindows", "GetWindowTextW", "GetWindow", "EnumChildWindows"}) {
    host.machine.Fail(function, 1);
    EXPECT_FALSE(Playing()) << function;
    EXPECT_EQ(CountOf(host.machine.Outstanding(), "snapshot"), 0u) << function;
  }
  EXPECT_TRUE(Playing());
}

// --- The guard of a switch.

class PlaybackGuard : public testing::Test {
 protected:
  PlaybackGuard() { bench.machine.Config("Settings", "Disable When Video Playback", 1); }
  void ShowVideo() {
    bench.machine.model().other_windows = {{"WMPlayerApp", "", {"EVRVideoHandler"}}};
  }
  /// One press, and one to the next item.
  void OpenAndMove() {
    ASSERT_TRUE(bench.Start());
    ASSERT_TRUE(bench.ostrel().Run());
    ASSERT_TRUE(bench.ostrel().Run());
    bench.Calls();
  }
  SessionBench bench;
};

TEST_F(PlaybackGuard, RefusesTheSwitchWhenThePopUpCloses) {
  ShowVideo();
  OpenAndMove();  // it opens all the same
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Calls(), "");
  EXPECT_EQ(bench.TakeNotifications(), "12");
}

TEST_F(PlaybackGuard, IsNotAskedWhenThePopUpOpens) {
  OpenAndMove();
  EXPECT_EQ(bench.machine.Calls("FindWindowW"), 0u);
  ShowVideo();  // only now
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Calls(), "");
}

TEST_F(PlaybackGuard, KeepsTheSelectionForALaterStop) {
  ShowVideo();
  OpenAndMove();
  bench.machine.Advance(1500);
  bench.machine.model().other_windows.clear();
  EXPECT_TRUE(bench.ostrel().Stop());
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
}

TEST_F(PlaybackGuard, RefusesForPowerDvdToo) {
  bench.machine.model().processes = {{77, "PowerDVD8.exe"}};
  bench.machine.model().other_windows = {kPowerDvd};
  OpenAndMove();
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Calls(), "");
}

TEST_F(PlaybackGuard, LetsTheSwitchGoWhenNothingPlays) {
  OpenAndMove();
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
}

TEST_F(PlaybackGuard, IsOffByDefault) {
  bench.machine.Config("Settings", "Disable When Video Playback", int64_t{0});
  ShowVideo();
  OpenAndMove();
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
  EXPECT_EQ(bench.machine.Calls("FindWindowW"), 0u);
}

// --- Extended desktop.

TEST(ExtendedGuard, RefusesThePressInExtendedDesktopWithoutANotification) {
  SessionBench bench;
  bench.machine.Config("Settings", "Disable In Extend Mode", 1);
  bench.script->extend_enabled = 1;
  ASSERT_TRUE(bench.Start());
  EXPECT_FALSE(bench.ostrel().Run());
  EXPECT_EQ(bench.TakeNotifications(), "");
  EXPECT_EQ(bench.machine.Popup(), nullptr);
  bench.script->extend_enabled = 0;
  EXPECT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.Items().find("4 0x"), std::string::npos);  // and offers no extended item
}

// --- Mode pruning.

class Pruning : public testing::Test, public Guards {
 protected:
  explicit Pruning(const char* text = kXp) : Guards(text) {
    model().registry[kDeviceMap][kFirstDevice] = kDevicePath;
    model().registry[kDeviceKey]["PruningMode"] = "dword:1";
  }
  std::string Value() { return model().registry[kDeviceKey]["PruningMode"]; }
  std::string Journal() { return host.machine.TakeJournal(); }
  std::string Keys() {
    std::string keys;
    const std::string outstanding = host.machine.Outstanding();
    return CountOf(outstanding, "registry key") == 0 ? keys : outstanding;
  }
};

TEST_F(Pruning, IsClearedForTheFirstVideoDevice) {
  EXPECT_EQ(box().ClearPruningMode(), 1);
  EXPECT_EQ(Journal(), std::string("RegSetValueExW(") + kDeviceKey + " PruningMode dword:0)=0\n");
  EXPECT_EQ(Value(), "dword:0");
  EXPECT_EQ(Keys(), "");
}

TEST_F(Pruning, ThatIsOffAlreadyIsLeftAlone) {
  model().registry[kDeviceKey]["PruningMode"] = "dword:0";
  EXPECT_EQ(box().ClearPruningMode(), 0);
  EXPECT_EQ(Journal(), "");
  EXPECT_EQ(Keys(), "");
}

TEST_F(Pruning, KeepsTypeAndSizeAsTheyWere) {
  model().registry[kDeviceKey]["PruningMode"] = "hex:0100";
  EXPECT_EQ(box().ClearPruningMode(), 1);
  EXPECT_EQ(Value(), "hex:0000");
}

TEST_F(Pruning, OfMoreThanFourBytesIsLeftAlone) {
  model().registry[kDeviceKey]["PruningMode"] = "hex:0100000000";
  EXPECT_EQ(box().ClearPruningMode(), 0);
  EXPECT_EQ(Journal(), "");
  EXPECT_EQ(Keys(), "");
}

TEST_F(Pruning, AsksForTheAccessItNeeds) {
  host.ostrel();
  host.machine.JournalReads(true);
  host.machine.TakeJournal();
  box().ClearPruningMode();
  const std::string journal = Journal();
  EXPECT_EQ(CountOf(journal, "RegOpenKeyExW(HARDWARE\\DEVICEMAP\\VIDEO 0x20019)=0\n"), 1u)
      << journal;
  EXPECT_EQ(CountOf(journal,
                    "RegOpenKeyExW(SYSTEM\\CurrentControlSet\\Control\\Video\\{1}\\0000 "
                    "0x2001f)=0\n"),
            1u)
      << journal;
}

TEST_F(Pruning, FailsWithoutDeviceMapDeviceKeyOrValue) {
  const auto whole = model().registry;
  const auto fails = [&](const char* what) {
    EXPECT_EQ(box().ClearPruningMode(), 0) << what;
    EXPECT_EQ(Journal(), "") << what;
    EXPECT_EQ(Keys(), "") << what;
    model().registry = whole;
  };
  model().registry.erase(kDeviceMap);
  fails("device map");
  model().registry[kDeviceMap].erase(kFirstDevice);
  fails("first device");
  model().registry.erase(kDeviceKey);
  fails("device key");
  model().registry[kDeviceKey].erase("PruningMode");
  fails("value");
  EXPECT_EQ(box().ClearPruningMode(), 1);
}

TEST_F(Pruning, FailsForAPathShorterThanItsBeginning) {
  for (const char* path : {"", "\\Registry", "\\Registry\\Machine", "hex:", "hex:41"}) {
    model().registry[kDeviceMap][kFirstDevice] = path;
    const uint32_t before = host.machine.Calls("RegOpenKeyExW");
    EXPECT_EQ(box().ClearPruningMode(), 0) << path;
    EXPECT_EQ(host.machine.Calls("RegOpenKeyExW"), before + 1) << path;
  }
}

TEST_F(Pruning, PassesOverTheBeginningByItsLength) {
  model().registry[kDeviceMap][kFirstDevice] =
      std::string("\\REGISTRY\\machine\\") + (kDevicePath + 18);
  EXPECT_EQ(box().ClearPruningMode(), 1);
}

TEST_F(Pruning, FailsForAPathThatFillsTheRoomWithoutAnEnd) {
  // 256 bytes of 'A' and no terminating zero.
  std::string path = "hex:";
  for (int i = 0; i != 128; ++i) path += "4100";
  model().registry[kDeviceMap][kFirstDevice] = path;
  host.ostrel();
  host.machine.JournalReads(true);
  host.machine.TakeJournal();
  EXPECT_EQ(box().ClearPruningMode(), 0);
  const std::string opened = "RegOpenKeyExW(" + std::string(110, 'A') + " 0x2001f)=2\n";
  const std::string journal = Journal();
  EXPECT_EQ(CountOf(journal, opened), 1u) << journal;
}

TEST_F(Pruning, FailsForAPathBeyondTheRoom) {
  model().registry[kDeviceMap][kFirstDevice] = kDevicePath + std::string(128, 'A');
  EXPECT_EQ(box().ClearPruningMode(), 0);
  EXPECT_EQ(Keys(), "");
}

TEST_F(Pruning, AWriteThatWindowsRefusesCountsAsDone) {
  host.ostrel();
  host.machine.Fail("RegSetValueExW", 1);
  EXPECT_EQ(box().ClearPruningMode(), 1);
  EXPECT_EQ(Value(), "dword:1");
  EXPECT_EQ(Keys(), "");
}

// --- The television.

class Television : public Pruning {
 protected:
  explicit Television(const char* text = kXp) : Pruning(text) { Attach("Veld TV4810"); }
  void Attach(const std::string& name) {
    sim::Monitor& monitor = *model().connectors[1].monitor;
    monitor.edid = sim::MakeEdid(name, monitor.preferred);
  }
};

TEST_F(Television, TurnsPruningOffOnXp) {
  box().ApplyTV4810Workaround();
  EXPECT_EQ(Value(), "dword:0");
}

TEST_F(Television, IsKnownByItsExactName) {
  for (const char* name : {"Veld TV481", "VELD TV4810", "Veld TV48100"}) {
    Attach(name);
    box().ApplyTV4810Workaround();
    EXPECT_EQ(Value(), "dword:1") << name;
  }
}

TEST_F(Television, IsNotLookedForWithoutAnyMonitorName) {
  host.ostrel().ForgiveLeaks();  // the listing keeps the keys of monitors without an EDID open
  for (sim::Connector& connector : model().connectors) connector.monitor->edid.clear();
  box().ApplyTV4810Workaround();
  EXPECT_EQ(Value(), "dword:1");
}

TEST(TelevisionOn, ServerIsServedAndLaterWindowsAreNot) {
  struct {
    const char* windows;
    const char* value;
  } const rows[] = {{"2003", "dword:0"}, {"vista", "dword:1"}, {"win7", "dword:1"}};
  for (const auto& row : rows) {
    Guards guards(std::string(row.windows) + " intel: internal 1366x768 active, hdmi 1360x768");
    sim::Model& model = guards.model();
    model.connectors[1].monitor->edid = sim::MakeEdid("Veld TV4810", {1360, 768, 32, 60});
    model.registry[kDeviceMap][kFirstDevice] = kDevicePath;
    model.registry[kDeviceKey]["PruningMode"] = "dword:1";
    guards.box().ApplyTV4810Workaround();
    EXPECT_EQ(model.registry[kDeviceKey]["PruningMode"], row.value) << row.windows;
  }
}

TEST(TelevisionOn, Windows2000IsLeftAlone) {
  Guards guards(kXp);
  sim::Model& model = guards.model();
  model.windows.minor = 0;
  model.connectors[1].monitor->edid = sim::MakeEdid("Veld TV4810", {1360, 768, 32, 60});
  model.registry[kDeviceMap][kFirstDevice] = kDevicePath;
  model.registry[kDeviceKey]["PruningMode"] = "dword:1";
  guards.box().ApplyTV4810Workaround();
  EXPECT_EQ(model.registry[kDeviceKey]["PruningMode"], "dword:1");
}

class TelevisionInASwitch : public testing::Test {
 protected:
  TelevisionInASwitch() {
    model.connectors[1].monitor->edid = sim::MakeEdid("Veld TV4810", {1024, 768, 32, 60});
    model.registry[kDeviceMap][kFirstDevice] = kDevicePath;
    Value() = "dword:1";
    bench.script->on_call = [this](const std::string& call) {
      if (call == "SetNewDisplayMode(2, 0x3)") at_the_switch = Value();
    };
  }
  std::string& Value() { return model.registry[kDeviceKey]["PruningMode"]; }
  /// The pop-up opens, the highlight moves to the clone, and the time runs out.
  void SwitchToClone() {
    ASSERT_TRUE(bench.Start<FakeExtensionMonitor>());
    ASSERT_TRUE(bench.ostrel().Run());
    ASSERT_TRUE(bench.ostrel().Run());
    EXPECT_EQ(Value(), "dword:1");
    bench.machine.Advance(1500);
  }

  SessionBench bench{"xp intel: internal 1366x768 active, crt 1024x768"};
  sim::Model& model = bench.machine.model();
  std::string at_the_switch;
};

TEST_F(TelevisionInASwitch, IsServedBeforeTheModeIsSetAndPruningStaysOff) {
  bench.machine.Config("Settings", "Support Veld TV4810 Workaround", 1);
  SwitchToClone();
  EXPECT_EQ(at_the_switch, "dword:0");
  EXPECT_EQ(Value(), "dword:0");
  bench.ostrel().DeInit();
  EXPECT_EQ(Value(), "dword:0");
}

TEST_F(TelevisionInASwitch, IsNotServedByDefault) {
  SwitchToClone();
  EXPECT_EQ(at_the_switch, "dword:1");
  EXPECT_EQ(Value(), "dword:1");
}

}  // namespace
