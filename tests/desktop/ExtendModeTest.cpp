// The extended desktop through ChangeDisplaySettingsEx, on outputs that really come and go.
#include <memory>
#include <string>
#include <vector>

#include "tests/desktop/Desktop.h"
#include "tests/desktop/XServer.h"

namespace {

class DesktopExtendMode : public Desktop {
 protected:
  /// Loads the library, and an object that has nothing but the Windows defaults.
  void Start() {
    Load();
    if (HasFatalFailure()) return;
    monitor_.reset(core().NewBareMultiMonitor());
  }
  void TearDown() override {
    monitor_.reset();
    Desktop::TearDown();
  }

  std::unique_ptr<MultiMonitor> monitor_;
};

TEST_F(DesktopExtendMode, BothOutputsAreSeen) {
  Start();
  EXPECT_EQ(core().GetDisplayDeviceCount(), 2u);
  std::vector<std::string> attached;
  core().GetAttachedDevices(&attached);
  EXPECT_EQ(attached, (std::vector<std::string>{kFirstDevice, kSecondDevice}));
  EXPECT_TRUE(monitor_->HasDualOutputCapability());
  EXPECT_TRUE(monitor_->IsExtendModeEnabled());
}

TEST_F(DesktopExtendMode, OffDetachesTheSecondOutput) {
  Start();
  EXPECT_TRUE(monitor_->EnableExtendMode(FALSE));
  EXPECT_EQ(OutputsThatAreOn(), kFirstAlone);
  EXPECT_FALSE(monitor_->IsExtendModeEnabled());
}

TEST_F(DesktopExtendMode, OnAttachesTheSecondOutputToTheRight) {
  Arrange(0, 0);
  ASSERT_EQ(OutputsThatAreOn(), kFirstAlone);
  Start();
  EXPECT_FALSE(monitor_->IsExtendModeEnabled());
  EXPECT_TRUE(monitor_->EnableExtendMode(TRUE));
  EXPECT_EQ(OutputsThatAreOn(), kBothOn);
  EXPECT_TRUE(monitor_->IsExtendModeEnabled());
}

TEST_F(DesktopExtendMode, SizeOfTheSecondOutputComesFromTheConfiguration) {
  Arrange(0, 0);
  Config("ExtendMode:2nd", "Width", 1280);
  Config("ExtendMode:2nd", "Height", 1024);
  Start();
  EXPECT_TRUE(monitor_->EnableExtendMode(TRUE));
  EXPECT_EQ(OutputsThatAreOn(), "DUMMY0 1366x768+0+0\nDUMMY1 1280x1024+1366+0\n");
}

TEST_F(DesktopExtendMode, SizeThatTheOutputLacksBecomes800By600) {
  Arrange(0, 0);
  Config("ExtendMode:2nd", "Width", 1234);
  Config("ExtendMode:2nd", "Height", 567);
  Start();
  EXPECT_TRUE(monitor_->EnableExtendMode(TRUE));
  EXPECT_EQ(OutputsThatAreOn(), "DUMMY0 1366x768+0+0\nDUMMY1 800x600+1366+0\n");
}

TEST_F(DesktopExtendMode, OffAndOnComesBackToTheSameArrangement) {
  Start();
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(monitor_->EnableExtendMode(FALSE));
    ASSERT_EQ(OutputsThatAreOn(), kFirstAlone);
    ASSERT_TRUE(monitor_->EnableExtendModeOnDisplays(TRUE, IMMonitor::MD_NB | IMMonitor::MD_CRT));
    ASSERT_EQ(OutputsThatAreOn(), kBothOn);
  }
}

// Through the exports, as a host would: Wine's graphics card is no vendor's, so the object of the
// display configuration API answers, and the place of a vendor's object is taken by the bare one.
TEST_F(DesktopExtendMode, ExportsSwitchTheOutputs) {
  Config("Settings", "Prefer Windows 7 CCD API", 1);
  Config("Settings", "Assure Primary Display is Notebook", 0);
  Load();
  MultiMonitor* bare = core().NewBareMultiMonitor();
  factory().InstallMonitor(bare, static_cast<uint16_t>(kVendorWin7CCD));
  ASSERT_TRUE(InitExtendMode());
  EXPECT_TRUE(HasDualOutputCapability());
  EXPECT_TRUE(IsExtendModeEnabled());
  EXPECT_TRUE(EnableExtendMode(0));
  EXPECT_EQ(OutputsThatAreOn(), kFirstAlone);
  EXPECT_FALSE(IsExtendModeEnabled());
  EXPECT_TRUE(EnableExtendMode(1));
  EXPECT_EQ(OutputsThatAreOn(), kBothOn);
  DeInitExtendMode();
}

}  // namespace
