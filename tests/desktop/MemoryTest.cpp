// Resolutions that are remembered and come back on real outputs. The hotkey is pressed as a host
// would press it; leaving and entering a mode detaches and attaches the second output; Ostrel.ini
// is a real file; and the X server says what stands on the outputs.
#include <memory>
#include <string>

#include "tests/desktop/Desktop.h"
#include "tests/desktop/XServer.h"
#include "tests/support/FakeMonitor.h"

namespace {

constexpr uint32_t kPanelAndCrt = IMMonitor::MD_NB | IMMonitor::MD_CRT;

// Presses from the panel's item, the first of four, to the extended desktop's, the last, and back:
// the first press opens.
constexpr int kToExtended = 4;
constexpr int kToPanel = 2;

/// What no vendor's library is there to do on this desktop: it tells the two outputs as panel and
/// CRT monitor, and switches between the panel alone and the extended desktop by the library's own
/// Windows way, which really detaches and attaches the second output.
class OutputsMonitor : public FakeMonitor {
 public:
  OutputsMonitor(std::shared_ptr<FakeScript> script, std::unique_ptr<MultiMonitor> windows)
      : FakeMonitor(std::move(script)), windows_(std::move(windows)) {}

  BOOL GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) override {
    const bool extended = windows_->IsExtendModeEnabled() != 0;
    *mode = extended ? DM_EXTEND : DM_SINGLE;
    *displays = extended ? kPanelAndCrt : static_cast<uint32_t>(MD_NB);
    return 1;
  }
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override {
    if (mode != DM_SINGLE || displays != MD_NB) return 0;
    return windows_->EnableExtendMode(0);
  }
  BOOL EnableExtendModeOnDisplays(BOOL enable, uint32_t) override {
    return windows_->EnableExtendMode(enable);
  }
  BOOL IsExtendModeEnabled() override { return windows_->IsExtendModeEnabled(); }
  void PreloadDisplayModes() override { windows_->PreloadDisplayModes(); }
  bool GetDisplaySettings(uint32_t display, DEVMODEA* dm) override {
    const char* device = display == MD_NB ? kFirstDevice : kSecondDevice;
    return EnumDisplaySettingsA(device, ENUM_CURRENT_SETTINGS, dm) != 0;
  }

 private:
  std::unique_ptr<MultiMonitor> windows_;
};

std::string SettingsFile() {
  char folder[MAX_PATH] = {};
  GetTempPathA(MAX_PATH, folder);
  return std::string(folder) + "Ostrel.ini";
}

class DesktopMemory : public Desktop {
 protected:
  void SetUp() override {
    Desktop::SetUp();
    DeleteFileA(SettingsFile().c_str());
    Arrange(0, 0);
    ASSERT_EQ(OutputsThatAreOn(), kFirstAlone);
    Config("Settings", "Prefer Windows 7 CCD API", 1);
    Config("PM:1024x768", "Support This Mode", 0);
  }
  void TearDown() override {
    EndProcess();
    DeleteFileA(SettingsFile().c_str());
    Desktop::TearDown();
  }

  void StartProcess() {
    Load();
    if (HasFatalFailure()) return;
    running_ = true;
    auto script = std::make_shared<FakeScript>();
    script->connected = kPanelAndCrt;
    script->connected_count = 2;
    script->vendor = kVendorUnknown;
    std::unique_ptr<MultiMonitor> windows(core().NewBareMultiMonitor());
    factory().InstallMonitor(new OutputsMonitor(script, std::move(windows)),
                             static_cast<uint16_t>(kVendorWin7CCD));
    ASSERT_TRUE(Init());
  }

  void EndProcess() {
    if (!running_) return;
    running_ = false;
    DeInit();
    factory().DeleteMultiMonitorObject();
    Unload();
  }

  /// Presses the hotkey so many times and lets the pop-up's own timer apply the choice.
  void Press(int times) {
    HWND popup = nullptr;
    for (int i = 0; i < times; ++i) {
      popup = RunEx();
      ASSERT_NE(popup, nullptr);
    }
    const DWORD begin = GetTickCount();
    while (IsWindow(popup) && GetTickCount() - begin < 6000) Pump(20);
    ASSERT_FALSE(IsWindow(popup));
    Pump(100);
  }

  /// The user sets an output's size by Windows' own means.
  static void UserSets(const char* device, uint32_t width, uint32_t height) {
    DEVMODEA mode = Resolution(width, height);
    ASSERT_EQ(ChangeDisplaySettingsExA(device, &mode, nullptr, CDS_UPDATEREGISTRY, nullptr),
              DISP_CHANGE_SUCCESSFUL);
  }

 private:
  bool running_ = false;
};

// A desktop that tells no native size gets 1024 by 768 where nothing is remembered.
constexpr char kFreshlyExtended[] = "DUMMY0 1024x768+0+0\nDUMMY1 1024x768+1024+0\n";

TEST_F(DesktopMemory, PanelsOldSizeIsBackAfterTheExtendedDesktop) {
  StartProcess();
  UserSets(kFirstDevice, 800, 600);
  ASSERT_EQ(OutputsThatAreOn(), "DUMMY0 800x600+0+0\n");
  Press(kToExtended);
  EXPECT_EQ(OutputsThatAreOn(), kFreshlyExtended);
  Press(kToPanel);
  EXPECT_EQ(OutputsThatAreOn(), "DUMMY0 800x600+0+0\n");
}

TEST_F(DesktopMemory, NothingIsBackOnceTheMemoryIsFlushed) {
  StartProcess();
  UserSets(kFirstDevice, 800, 600);
  Press(kToExtended);
  ASSERT_TRUE(FlushRememberedSettings());
  Press(kToPanel);
  EXPECT_EQ(OutputsThatAreOn(), "DUMMY0 1024x768+0+0\n");
}

TEST_F(DesktopMemory, BothSizesOfTheExtendedDesktopAreBackInAnotherProcess) {
  StartProcess();
  Press(kToExtended);
  ASSERT_EQ(OutputsThatAreOn(), kFreshlyExtended);
  UserSets(kSecondDevice, 1280, 1024);
  UserSets(kFirstDevice, 800, 600);
  Press(kToPanel);
  EXPECT_EQ(OutputsThatAreOn(), kFirstAlone);
  EndProcess();

  StartProcess();
  Press(kToExtended);
  EXPECT_EQ(OutputsThatAreOn(), "DUMMY0 800x600+0+0\nDUMMY1 1280x1024+800+0\n");
}

}  // namespace
