// Resolution changes that reach the glass. Wine accepts SetDisplayConfig and does nothing, so every
// change below goes the whole way: the first try without effect, the look at the width, and
// ChangeDisplaySettingsEx.
#include <memory>
#include <string>

#include "tests/desktop/Desktop.h"
#include "tests/desktop/XServer.h"

namespace {

class DesktopResolution : public Desktop {
 protected:
  void SetUp() override {
    Desktop::SetUp();
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

TEST_F(DesktopResolution, ChangeReachesTheOutput) {
  EXPECT_TRUE(core().ChangeDisplayResolution(monitor_.get(), Resolution(1024, 768)));
  EXPECT_EQ(OutputsThatAreOn().substr(0, 20), "DUMMY0 1024x768+0+0\n");

  EXPECT_TRUE(core().ChangeDisplayResolution(monitor_.get(), Resolution(800, 600)));
  EXPECT_EQ(OutputsThatAreOn().substr(0, 19), "DUMMY0 800x600+0+0\n");

  EXPECT_TRUE(core().ChangeDisplayResolution(monitor_.get(), Resolution(1366, 768)));
  EXPECT_EQ(OutputsThatAreOn().substr(0, 20), "DUMMY0 1366x768+0+0\n");
}

TEST_F(DesktopResolution, ImpossibleSizeFailsAndChangesNothing) {
  EXPECT_FALSE(core().ChangeDisplayResolution(monitor_.get(), Resolution(1234, 567)));
  EXPECT_EQ(OutputsThatAreOn(), kBothOn);
}

TEST_F(DesktopResolution, ReadDisplaySettingsAgreesWithTheServer) {
  Arrange(800, 600);
  DEVMODEA first = {};
  DEVMODEA second = {};
  ASSERT_TRUE(core().ReadDisplaySettings(ENUM_CURRENT_SETTINGS, kFirstDevice, &first));
  ASSERT_TRUE(core().ReadDisplaySettings(ENUM_CURRENT_SETTINGS, kSecondDevice, &second));
  const auto text = [](const char* name, const DEVMODEA& mode) {
    return std::string(name) + " " + std::to_string(mode.dmPelsWidth) + "x" +
           std::to_string(mode.dmPelsHeight) + "+" + std::to_string(mode.dmPosition.x) + "+" +
           std::to_string(mode.dmPosition.y) + "\n";
  };
  EXPECT_EQ(text("DUMMY0", first) + text("DUMMY1", second), OutputsThatAreOn());
}

}  // namespace
