// Presses of the hotkey on AMD notebooks that their older library serves: a driver whose display
// library is too old, and Windows XP, which has none.

#include "tests/session/Story.h"

namespace {

class AmdLegacyStory : public Story {
 protected:
  void OnAmd(const std::string& notebook) {
    OnFile(notebook);
    ThroughTheVendor();
    machine->Config("Settings", "Restore Display Settings After Switch", 0);
  }

  /// The changes that the library was asked for since the last call.
  std::string TakeSets() { return TakeLines({"ATIDL_", "EnableExtendedDesktop"}); }
  /// One such change: the arrangement, the number of its vectors, and the first two.
  static std::string Set(const std::string& arrangement, const std::string& vectors,
                         const std::string& result = "0") {
    return "ATIDL_SetConfigurationEx(adapter=0 size=64 arrangement=" + arrangement +
           " vectors=" + vectors + ",0,0,0,0,0 rest=0,0,0,0,0,0)=" + result + "\n";
  }
  void ExpectExtendedAndBack(const std::string& desktops) {
    Choose("Extend.png");
    EXPECT_EQ(machine->Topology(), "extend internal+crt");
    EXPECT_EQ(Desktops(), desktops);
    EXPECT_EQ(TakeSets(), Set("5 count=2", "1,2"));
    Look();
    EXPECT_EQ(Highlighted(), "Extend.png");
    Choose("NB.png");
    EXPECT_EQ(machine->Topology(), "single internal");
    EXPECT_EQ(TakeSets(), Set("3 count=1", "1,0"));
    Look();
    EXPECT_EQ(Highlighted(), "NB.png");
  }
};

// --- A display library of version 1049.

class AmdLegacyPair : public AmdLegacyStory {
 protected:
  void SetUp() override { OnAmd("amd-legacy-panel-crt"); }
};

TEST_F(AmdLegacyPair, PressToExtendedAndBack) {
  StartProcess();
  ExpectExtendedAndBack("internal 1366x768x32@60 at 0,0; crt 1280x1024x32@60 at 1366,0");
  EndProcess();
  EXPECT_EQ(machine->Outstanding(), "");
}

TEST_F(AmdLegacyPair, WindowsExtendsWhereTheLibraryRefuses) {
  StartProcess();
  machine->Fail("ATIDL_SetConfigurationEx", 1);
  Choose("Extend.png");
  EXPECT_EQ(TakeSets(), Set("5 count=2", "1,2", "7"));
  EXPECT_EQ(machine->Topology(), "extend internal+crt");
  Look();
  EXPECT_EQ(Highlighted(), "Extend.png");
}

TEST_F(AmdLegacyPair, PressFromExtendedToClone) {
  StartProcess();
  Choose("Extend.png");
  TakeSets();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(TakeSets(), Set("2 count=2", "1,2"));
}

// --- Windows XP.

class AmdXpPair : public AmdLegacyStory {
 protected:
  void SetUp() override { OnAmd("xp-amd"); }
};

TEST_F(AmdXpPair, PressToExtendedAndBack) {
  StartProcess();
  ExpectExtendedAndBack("internal 1280x800x32@60 at 0,0; crt 1280x1024x32@60 at 1280,0");
  EndProcess();
  EXPECT_EQ(machine->Outstanding(), "");
}

TEST_F(AmdXpPair, PressToCloneAndToTheMonitor) {
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(TakeSets(), Set("2 count=2", "1,2"));
  Choose("CRT.png");
  EXPECT_EQ(machine->Topology(), "single crt");
  EXPECT_EQ(TakeSets(), Set("3 count=1", "2,0"));
  Look();
  EXPECT_EQ(Highlighted(), "CRT.png");
}

}  // namespace
