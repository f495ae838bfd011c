// The switch told call by call on whole notebooks, over the operating system's own display
// configuration and with the workarounds that the machine really gets.
#include <string>

#include "tests/session/ApplyJournal.h"

using namespace apply_journal;

namespace {

std::string Config(uint32_t paths, const char* flags, uint32_t result = 0) {
  return "SetDisplayConfig(paths=" + std::to_string(paths) + " flags=" + flags +
         ")=" + std::to_string(result) + "\n";
}

std::string Staged(const char* device, const char* what, const char* flags) {
  return std::string("ChangeDisplaySettingsExA(\\\\.\\") + device + " " + what +
         " fields=0x5c00a0 flags=" + flags + ")=0\n";
}

constexpr char kPanelAndCrt[] = "win7 intel: internal 1366x768 active, crt 1024x768";

class ApplyOnNotebook : public testing::Test {
 protected:
  /// The pop-up opens and the highlight moves `moves` items on.
  void Open(const std::string& text, int moves) {
    Prepare(text);
    Press(moves);
  }
  void Prepare(const std::string& text) {
    machine.emplace(text);
    machine->UsePictures(BuiltPictureFolder());
    machine->Config("Settings", "Prefer Windows 7 CCD API", 1);
    machine->Config("PM:1024x768", "Support This Mode", 0);
  }
  void Press(int moves) {
    ostrel.emplace(*machine, sim::Library::Build::kWhiteBox);
    ASSERT_TRUE(ostrel->Init());
    ASSERT_TRUE(ostrel->RegisterNotification(SessionBench::Receiver(), SessionBench::kMessage));
    for (int i = 0; i <= moves; ++i) ASSERT_TRUE(ostrel->Run());
    const SessionState state = ostrel->white_box().session->State();
    signature = state.settings_keys.at(0).signature;
  }
  void TearDown() override {
    if (ostrel) ostrel->DeInit();
    ostrel.reset();
    machine.reset();
  }

  /// What happens when the pop-up's time is over.
  std::string TimeOut() {
    machine->TakeJournal();
    machine->JournalReads(true);
    machine->Advance(1500);
    machine->JournalReads(false);
    return StepsOf(machine->TakeJournal());
  }
  /// The panel alone, as it is left.
  std::string SavedPanel() const { return Saved("1,1 | " + signature, 1366, 768); }

  std::optional<sim::Machine> machine;
  std::optional<sim::Library> ostrel;
  std::string signature;
};

TEST_F(ApplyOnNotebook, CloneGetsTheBestCommonSizeWithNothingRemembered) {
  Open(kPanelAndCrt, 1);
  EXPECT_EQ(TimeOut(), kClosed + SavedPanel() + Config(0, "0x42") + Config(0, "0x82") +
                           Recorded(2, 3, 0) + Config(2, "0x60") + Config(2, "0x2a0"));
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
}

TEST_F(ApplyOnNotebook, CrtAloneGetsItsNativeSize) {
  Open(kPanelAndCrt, 2);
  EXPECT_EQ(TimeOut(), kClosed + SavedPanel() + Config(0, "0x48") + Config(0, "0x88") +
                           Recorded(1, 2, 0) + Config(1, "0x60") + Config(1, "0x2a0"));
  EXPECT_EQ(machine->Topology(), "single crt");
}

TEST_F(ApplyOnNotebook, ExtendedDesktopIsStagedPanelFirstAndCommittedOnce) {
  Open(kPanelAndCrt, 3);
  EXPECT_EQ(TimeOut(), kClosed + SavedPanel() + Config(0, "0x84") +
                           Staged("DISPLAY1", "1366x768x32@60 at 0,0", "0x1b") +
                           Staged("DISPLAY1", "1366x768x32@60 at 0,0", "0x10000019") +
                           Staged("DISPLAY2", "1024x768x32@60 at 1366,0", "0xb") +
                           Staged("DISPLAY2", "1024x768x32@60 at 1366,0", "0x10000009") +
                           "ChangeDisplaySettingsExA(null null flags=0x0)=0\n");
  EXPECT_EQ(machine->Topology(), "extend internal+crt");
}

TEST_F(ApplyOnNotebook, RefusedSwitchTriesThePathsAndLeavesEverything) {
  Open(kPanelAndCrt, 1);
  machine->Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(TimeOut(), kClosed + SavedPanel() + Config(0, "0x42", 31) + Config(2, "0x660", 31) +
                           Config(2, "0x92", 31));
  EXPECT_EQ(machine->Topology(), "single internal");
}

TEST_F(ApplyOnNotebook, RefusedRestoreLeavesTheSwitchDone) {
  Open(kPanelAndCrt, 1);
  machine->Fail("SetDisplayConfig", 3, ERROR_GEN_FAILURE, sim::Machine::Repeat::kFromThenOn);
  const std::string steps = TimeOut();
  EXPECT_EQ(steps.rfind(kClosed + SavedPanel() + Config(0, "0x42") + Config(0, "0x82") +
                            Recorded(2, 3, 0) + Config(2, "0x60", 31) + Config(2, "0x6a0", 31),
                        0),
            0u)
      << steps;
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
}

// --- With the tool MonitorTest on the machine.

class ApplyWithMonitorTest : public ApplyOnNotebook {
 protected:
  void Install(int key) {
    Prepare(kPanelAndCrt);
    machine->model().registry
        ["HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
         "MonitorTest_is1"]["DisplayName"] = "MonitorTest";
    machine->Config("Settings", "Support Monitor Test Workaround", key);
    Press(1);
  }
};

TEST_F(ApplyWithMonitorTest, DesktopIsFlippedBetweenSavingAndSwitch) {
  Install(1);
  EXPECT_EQ(TimeOut(), kClosed + SavedPanel() + Config(1, "0x60") + Config(1, "0x2a0") +
                           Config(0, "0x42") + Config(0, "0x82") + Recorded(2, 3, 0) +
                           Config(2, "0x60") + Config(2, "0x2a0"));
}

TEST_F(ApplyWithMonitorTest, NothingIsFlippedWithoutTheKey) {
  Install(0);
  EXPECT_EQ(TimeOut(), kClosed + SavedPanel() + Config(0, "0x42") + Config(0, "0x82") +
                           Recorded(2, 3, 0) + Config(2, "0x60") + Config(2, "0x2a0"));
}

TEST_F(ApplyOnNotebook, NothingIsFlippedWithoutTheTool) {
  Prepare(kPanelAndCrt);
  machine->Config("Settings", "Support Monitor Test Workaround", 1);
  Press(1);
  EXPECT_EQ(TimeOut(), kClosed + SavedPanel() + Config(0, "0x42") + Config(0, "0x82") +
                           Recorded(2, 3, 0) + Config(2, "0x60") + Config(2, "0x2a0"));
}

// --- With an HDMI monitor that an Intel driver has left at a low rate.

class ApplyWithSlowHdmi : public testing::Test {
 protected:
  void SetUp() override {
    bench.script->connected = IMMonitor::MD_NB | IMMonitor::MD_HDMI;
    bench.script->follows = true;
    bench.script->should_reset = 0;
    bench.script->settings_result = true;
    bench.script->settings.dmDisplayFrequency = 58;
    ASSERT_TRUE(bench.Start());
  }
  void TearDown() override { bench.script->on_call = nullptr; }
  /// The journal of a switch to the item `moves` behind the current one.
  std::string Switch(int moves) {
    for (int i = 0; i <= moves; ++i) EXPECT_TRUE(bench.ostrel().Run());
    bench.script->on_call = [](const std::string& call) { sim::JournalLine("object: " + call); };
    bench.machine.TakeJournal();
    bench.machine.Advance(1500);
    bench.script->on_call = nullptr;
    return StepsOf(bench.machine.TakeJournal());
  }

  SessionBench bench{"win7 intel: clone internal 1366x768 active, hdmi 1920x1080 active"};
  const std::string looked = "object: GetCurrentDisplayMode\n";
  const std::string raised = Config(2, "0x60") + Config(2, "0x2a0");
};

TEST_F(ApplyWithSlowHdmi, RateIsRaisedBehindTheSwitchAndBehindTheRestore) {
  EXPECT_EQ(Switch(1),
            kClosed + Set(2, "0x11") + looked + raised + kAskedForReset + looked + raised);
}

TEST_F(ApplyWithSlowHdmi, AndTwiceBehindExtendedDesktop) {
  EXPECT_EQ(Switch(3), std::string(kClosed) + "object: EnableExtendModeOnDisplays(1, 0x10)\n" +
                           looked + raised + kAskedForReset + looked + raised);
}

TEST_F(ApplyWithSlowHdmi, NotAtAllBehindAFailedSwitch) {
  bench.script->set_result = 0;
  EXPECT_EQ(Switch(1), kClosed + Set(2, "0x11"));
}

}  // namespace
