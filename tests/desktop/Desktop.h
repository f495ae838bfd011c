// The library on the real desktop: nothing simulated, one function lent to an older Wine that lacks
// it (and that is bound, never called), two outputs, the panel's 1366 by 768 at the
// left and 1024 by 768 to its right, at the beginning of every test.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "Common/Win.h"
#include "ostrel/ostrel.h"
#include "tests/whitebox/WhiteBox.h"

constexpr char kBothOn[] = "DUMMY0 1366x768+0+0\nDUMMY1 1024x768+1366+0\n";
constexpr char kFirstAlone[] = "DUMMY0 1366x768+0+0\n";
constexpr char kFirstDevice[] = "\\\\.\\DISPLAY1";
constexpr char kSecondDevice[] = "\\\\.\\DISPLAY2";

class Desktop : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// Before Load: one key of the Ostrel.cfg beside this program.
  void Config(const char* section, const char* key, uint32_t value);

  /// Loads the white-box build, the same objects as the one that ships, with fresh state.
  void Load();
  /// The end of a host's process, as far as the library can see one.
  void Unload();
  const CoreBox& core() const { return *white_box_->core; }
  const FactoryBox& factory() const { return *white_box_->factory; }

  Ostrel_InitProc Init = nullptr;
  Ostrel_DeInitProc DeInit = nullptr;
  Ostrel_RunProc Run = nullptr;
  Ostrel_RunExProc RunEx = nullptr;
  Ostrel_FlushRememberedSettingsProc FlushRememberedSettings = nullptr;
  Ostrel_RegisterNotificationProc RegisterNotification = nullptr;
  Ostrel_InitExtendModeProc InitExtendMode = nullptr;
  Ostrel_DeInitExtendModeProc DeInitExtendMode = nullptr;
  Ostrel_EnableExtendModeProc EnableExtendMode = nullptr;
  Ostrel_IsExtendModeEnabledProc IsExtendModeEnabled = nullptr;
  Ostrel_HasDualOutputCapabilityProc HasDualOutputCapability = nullptr;

 private:
  HMODULE library_ = nullptr;
  const WhiteBox* white_box_ = nullptr;
};

/// What the two outputs are to show, by Windows' own means. A width of 0 detaches the second.
void Arrange(uint32_t second_width, uint32_t second_height);

/// A resolution as ChangeDisplayResolution takes it.
DEVMODEA Resolution(uint32_t width, uint32_t height);

/// Handles this thread's messages for so many milliseconds.
void Pump(uint32_t milliseconds);
