// Presses on whole notebooks: the library as it ships over the operating system's own display
// configuration.
#include <gtest/gtest.h>

#include <string>

#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/support/SessionBench.h"

namespace {

class Notebook : public testing::Test {
 protected:
  void Start(const std::string& text) {
    machine.emplace(text);
    machine->UsePictures(BuiltPictureFolder());
    machine->Config("Settings", "Prefer Windows 7 CCD API", 1);
    machine->Config("PM:1024x768", "Support This Mode", 0);
    ostrel.emplace(*machine);
    ASSERT_TRUE(ostrel->Init());
    ASSERT_TRUE(ostrel->RegisterNotification(SessionBench::Receiver(), SessionBench::kMessage));
    machine->TakeJournal();
  }
  void TearDown() override {
    if (ostrel) ostrel->DeInit();
    ostrel.reset();
    machine.reset();
  }
  void Press(int times) {
    for (int i = 0; i != times; ++i) ASSERT_TRUE(ostrel->Run());
  }

  std::optional<sim::Machine> machine;
  std::optional<sim::Library> ostrel;
};

TEST_F(Notebook, PanelAndCrtTwoPressesEndInClone) {
  Start("win7 intel: internal 1366x768 active, crt 1024x768");
  Press(2);
  EXPECT_EQ(machine->Topology(), "single internal");
  machine->Advance(1500);
  EXPECT_EQ(machine->Popup(), nullptr);
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
}

TEST_F(Notebook, TheHostHearsOfOpenAndCloseBeforeTheChange) {
  Start("win7 intel: internal 1366x768 active, crt 1024x768");
  Press(2);
  machine->Advance(1500);
  const std::string journal = machine->TakeJournal();
  const size_t opened = journal.find("PostMessageA(id=1025 wparam=1 lparam=0)");
  const size_t closed = journal.find("PostMessageA(id=1025 wparam=2 lparam=0)");
  const size_t changed = journal.find("SetDisplayConfig(");
  ASSERT_NE(opened, std::string::npos);
  ASSERT_NE(closed, std::string::npos);
  ASSERT_NE(changed, std::string::npos);
  EXPECT_LT(opened, closed);
  EXPECT_LT(closed, changed);
  EXPECT_EQ(machine->Notifications().size(), 2u);
}

TEST_F(Notebook, LeftAloneNothingIsChangedOrValidated) {
  Start("win7 intel: internal 1366x768 active, crt 1024x768");
  Press(1);
  machine->Advance(3000);
  EXPECT_EQ(machine->TakeJournal(),
            "PostMessageA(id=1025 wparam=1 lparam=0)\n"
            "PostMessageA(id=1025 wparam=2 lparam=0)\n");
  EXPECT_EQ(machine->Topology(), "single internal");
}

TEST_F(Notebook, ThreePressesEndOnTheCrtAlone) {
  Start("win7 intel: internal 1366x768 active, crt 1024x768");
  Press(3);
  machine->Advance(1500);
  EXPECT_EQ(machine->Topology(), "single crt");
}

TEST_F(Notebook, FourPressesEndInExtendedDesktop) {
  Start("win7 intel: internal 1366x768 active, crt 1024x768");
  Press(4);
  machine->Advance(1500);
  EXPECT_EQ(machine->Topology(), "extend internal+crt");
}

TEST_F(Notebook, GoesThroughAllModesAndBack) {
  Start("win10 intel: internal 1920x1080 active, hdmi 1920x1080");
  const char* const kTopologies[] = {"clone internal+hdmi", "single hdmi", "extend internal+hdmi",
                                     "single internal"};
  for (const char* topology : kTopologies) {
    Press(2);  // the first opens on the current mode, the second goes one on
    machine->Advance(1500);
    EXPECT_EQ(machine->Topology(), topology);
  }
}

TEST_F(Notebook, OpensWithTheCloneThatItFinds) {
  Start("win7 intel: clone internal 1366x768 active, crt 1024x768 active");
  Press(1);
  ASSERT_FALSE(machine->PopupDrawing().empty());
  EXPECT_EQ(machine->PopupDrawing().back().file, "NB-CRT.png");
}

TEST_F(Notebook, AFailedSwitchLeavesTheMachineAndTheFileAlone) {
  Start("win7 intel: internal 1366x768 active, crt 1024x768");
  Press(2);
  machine->Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE, sim::Machine::Repeat::kFromThenOn);
  machine->Advance(1500);
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(machine->Popup(), nullptr);
  EXPECT_EQ(machine->Notifications().size(), 2u);
}

TEST_F(Notebook, ADisplayPluggedInBetweenIsOfferedAtTheNextPress) {
  Start("win7 intel: internal 1366x768 active, crt 1024x768, hdmi");
  Press(1);
  EXPECT_EQ(machine->PopupPicture().width, 370u);
  machine->Advance(3000);
  machine->Plug("hdmi", machine->model().connectors[1].monitor.value());
  Press(1);
  EXPECT_EQ(machine->PopupPicture().width, 640u);
}

}  // namespace
