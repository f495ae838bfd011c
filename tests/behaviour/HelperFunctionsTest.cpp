// Reading and changing the resolution of the desktop, on older Windows and on later ones.
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

#include "tests/behaviour/CoreHost.h"
#include "tests/support/FakeMonitor.h"

namespace {

constexpr char kWin7[] = "win7 intel: internal 1366x768 active";
constexpr char kVista[] = "vista intel: internal 1366x768 active";

DEVMODEA Wanted(uint32_t width, uint32_t height) {
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  dm.dmFields = 0x5C0000;
  dm.dmPelsWidth = width;
  dm.dmPelsHeight = height;
  dm.dmBitsPerPel = 32;
  dm.dmDisplayFrequency = 60;
  return dm;
}

// --- ReadDisplaySettings

TEST(ReadDisplaySettings, ReadsThePrimaryDisplayWithoutAName) {
  CoreHost host(kWin7);
  DEVMODEA dm;
  std::memset(&dm, 0x5A, sizeof(dm));
  EXPECT_NE(host.core().ReadDisplaySettings(ENUM_CURRENT_SETTINGS, nullptr, &dm), 0);
  EXPECT_EQ(dm.dmSize, 124);  // Windows puts how far it wrote in place of the 156
  EXPECT_EQ(dm.dmPelsWidth, 1366u);
  EXPECT_EQ(dm.dmPelsHeight, 768u);
  EXPECT_EQ(dm.dmBitsPerPel, 32u);
  EXPECT_EQ(dm.dmDisplayFrequency, 60u);
  EXPECT_EQ(dm.dmDriverExtra, 0);
}

TEST(ReadDisplaySettings, ReadsANamedDeviceByNumberAndOutOfTheRegistry) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1280x1024 active");
  host.machine.model().sources[1].registry = sim::DisplayMode{640, 480, 16, 60};
  host.machine.model().connectors[1].monitor->modes[1] = {320, 200, 16, 75};
  DEVMODEA dm = {};
  EXPECT_NE(host.core().ReadDisplaySettings(ENUM_CURRENT_SETTINGS, "\\\\.\\DISPLAY2", &dm), 0);
  EXPECT_EQ(dm.dmPelsWidth, 1280u);
  EXPECT_NE(host.core().ReadDisplaySettings(ENUM_REGISTRY_SETTINGS, "\\\\.\\DISPLAY2", &dm), 0);
  EXPECT_EQ(dm.dmPelsWidth, 640u);
  EXPECT_NE(host.core().ReadDisplaySettings(1, "\\\\.\\DISPLAY2", &dm), 0);
  EXPECT_EQ(dm.dmPelsWidth, 320u);
}

TEST(ReadDisplaySettings, FailureIsLoggedWithTheSystemsText) {
  CoreHost host(kWin7);
  host.core();
  host.ForgetLog();
  host.machine.Fail("EnumDisplaySettingsExA", 1, ERROR_ACCESS_DENIED);
  DEVMODEA dm;
  std::memset(&dm, 0x5A, sizeof(dm));
  EXPECT_EQ(host.core().ReadDisplaySettings(ENUM_CURRENT_SETTINGS, nullptr, &dm), 0);
  char text[256] = {};
  FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                 ERROR_ACCESS_DENIED, 0x400, text, sizeof(text), nullptr);
  std::string expected = text;
  expected.erase(expected.find_last_not_of(" \r\n\t") + 1);
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Calling EnumDisplaySettingsEx() failed: " + expected + "\n");
  // Cleared, and with what the call was made with.
  EXPECT_EQ(dm.dmFields, 0x5C0000u);
  EXPECT_EQ(dm.dmSize, 156);
  EXPECT_EQ(dm.dmPelsWidth, 0u);
}

// --- CreateDisplaySettingsHelper

TEST(CreateDisplaySettingsHelper, ChoosesByTheWindowsVersion) {
  const struct {
    const char* windows;
    const char* helper;
  } rows[] = {
      {"xp", "Win32ChangeDisplaySettings"},
      {"2003", "Win32ChangeDisplaySettings"},
      {"vista", "Win32ChangeDisplaySettings"},
      {"2008", "Fail to load User32.dll on Windows 7"},  // taken, and cannot load
      {"2008r2", "Win7CCDDisplaySettings"},
      {"win7", "Win7CCDDisplaySettings"},
      {"win8", "Win7CCDDisplaySettings"},
      {"win10", "Win7CCDDisplaySettings"},
  };
  for (const auto& row : rows) {
    CoreHost host(std::string(row.windows) + " intel: internal 1366x768 active");
    const auto script = std::make_shared<FakeScript>();
    FakeMonitor monitor(script);
    EXPECT_EQ(host.core().NameOfDisplaySettingsHelper(&monitor), row.helper) << row.windows;
  }
}

TEST(CreateDisplaySettingsHelper, ChecksTheObject) {
  CoreHost vista(kVista, L"--enable-dcheck");
  vista.core();
  vista.ForgetLog();
  EXPECT_EQ(vista.core().NameOfDisplaySettingsHelper(nullptr), "null");
  EXPECT_EQ(vista.TakeLog(), "Check failed: p != NULL. \n");
}

TEST(CreateDisplaySettingsHelper, LaterWindowsNeedsNoObject) {
  CoreHost win7(kWin7, L"--enable-dcheck");
  win7.core();
  win7.ForgetLog();
  EXPECT_EQ(win7.core().NameOfDisplaySettingsHelper(nullptr), "Win7CCDDisplaySettings");
  EXPECT_EQ(win7.TakeLog(), "Check failed: p != NULL. \n");
}

// --- ChangeDisplayResolution through ChangeDisplaySettingsEx

class ChangeDisplayResolution : public testing::Test {
 protected:
  bool Change(CoreHost* host, const DEVMODEA& dm) {
    host->core();
    host->ForgetLog();
    return host->core().ChangeDisplayResolution(&monitor, dm);
  }

  std::shared_ptr<FakeScript> script = std::make_shared<FakeScript>();
  FakeMonitor monitor{script};
};

using ChangeDisplayResolutionOnVista = ChangeDisplayResolution;
using ChangeDisplayResolutionOnWin7 = ChangeDisplayResolution;

std::string Tested(const std::string& what, int result = 0) {
  return "ChangeDisplaySettingsA(null " + what + " flags=0x2)=" + std::to_string(result) + "\n";
}
std::string Reset(const std::string& what, int result = 0) {
  return "ChangeDisplaySettingsExA(null " + what + " flags=0x40000009)=" + std::to_string(result) +
         "\n";
}
constexpr char kXga[] = "1024x768x32@60 at 0,0 fields=0x5c0000";

TEST_F(ChangeDisplayResolutionOnVista, PreloadsTestsAndResets) {
  CoreHost host(kVista, L"--v=2");
  EXPECT_TRUE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(host.machine.TakeJournal(), Tested(kXga) + Reset(kXga));
  EXPECT_EQ(script->TakeCalls(), "PreloadDisplayModes\n");
  EXPECT_EQ(host.TakeLog(), "New resolution: width = 1024, height = 768, color = 32, freq = 60\n");
  EXPECT_EQ(host.machine.model().sources[0].mode.width, 1024u);
  EXPECT_EQ(host.machine.Now(), 0u);
}

TEST_F(ChangeDisplayResolutionOnVista, RefusedTestPreloadsAgainAndGoesOn) {
  CoreHost host(kVista);
  host.core();
  host.machine.Fail("ChangeDisplaySettingsA", 1, static_cast<uint32_t>(DISP_CHANGE_FAILED));
  EXPECT_TRUE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(host.machine.TakeJournal(), Tested(kXga, -1) + Reset(kXga));
  EXPECT_EQ(script->TakeCalls(), "PreloadDisplayModes\nPreloadDisplayModes\n");
}

TEST_F(ChangeDisplayResolutionOnVista, SecondAttemptComesThreeSecondsLater) {
  CoreHost host(kVista);
  host.core();
  host.machine.Fail("ChangeDisplaySettingsExA", 1, static_cast<uint32_t>(DISP_CHANGE_FAILED));
  const uint64_t start = host.machine.Now();
  EXPECT_TRUE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(host.machine.Now(), start + 3000);
  EXPECT_EQ(host.machine.TakeJournal(), Tested(kXga) + Reset(kXga, -1) + Reset(kXga));
  EXPECT_EQ(host.TakeLog(), "Calling ChangeDisplaySettingsEx() failed: -1\n");
}

TEST_F(ChangeDisplayResolutionOnVista, TwoRefusalsAreAFailure) {
  CoreHost host(kVista);
  EXPECT_FALSE(Change(&host, Wanted(1234, 567)));
  const std::string what = "1234x567x32@60 at 0,0 fields=0x5c0000";
  EXPECT_EQ(host.machine.TakeJournal(), Tested(what, -2) + Reset(what, -2) + Reset(what, -2));
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Calling ChangeDisplaySettingsEx() failed: -2\n"
            "ERROR Calling ChangeDisplaySettingsEx() failed: -2\n"
            "WARNING Changing display resolution to 1234 x 567 failed\n");
}

TEST_F(ChangeDisplayResolutionOnVista, TheEffectIsNotLookedAt) {
  CoreHost host(kVista);
  host.core();
  const uint32_t reads = host.machine.Calls("EnumDisplaySettingsA");
  EXPECT_TRUE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(host.machine.Calls("EnumDisplaySettingsA"), reads);
}

TEST_F(ChangeDisplayResolutionOnVista, WithoutAnObjectItFails) {
  CoreHost host(kVista, L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  EXPECT_FALSE(host.core().ChangeDisplayResolution(nullptr, Wanted(1024, 768)));
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.TakeLog(),
            "Check failed: p != NULL. \nChanging display resolution to 1024 x 768 failed\n");
}

TEST_F(ChangeDisplayResolutionOnVista, WhatIsThrownIsAFailureWithoutAMessage) {
  CoreHost host(kVista);
  script->on_call = [](const std::string&) { throw std::runtime_error("no"); };
  EXPECT_FALSE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST_F(ChangeDisplayResolution, OnServer2008FailsForLackOfTheFunctions) {
  CoreHost host("2008 intel: internal 1366x768 active");
  EXPECT_FALSE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(script->TakeCalls(), "");
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.Modules(), 0u);
}

// --- Through SetDisplayConfig

std::string Set(uint32_t paths, const char* flags, int result = 0) {
  return "SetDisplayConfig(paths=" + std::to_string(paths) + " flags=" + flags +
         ")=" + std::to_string(result) + "\n";
}

TEST_F(ChangeDisplayResolutionOnWin7, ValidatesAndApplies) {
  CoreHost host(kWin7);
  EXPECT_TRUE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(host.machine.TakeJournal(), Set(1, "0x60") + Set(1, "0x2a0"));
  EXPECT_EQ(host.machine.model().sources[0].mode.width, 1024u);
  EXPECT_EQ(host.machine.model().sources[0].mode.height, 768u);
  EXPECT_EQ(script->TakeCalls(), "");
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.Modules(), 0u);  // the helper and its library are gone
}

TEST_F(ChangeDisplayResolutionOnWin7, NeedsNoObject) {
  CoreHost host(kWin7);
  EXPECT_TRUE(host.core().ChangeDisplayResolution(nullptr, Wanted(1024, 768)));
}

TEST_F(ChangeDisplayResolutionOnWin7, FailedValidationStillAppliesWithChangesAllowed) {
  CoreHost host(kWin7);
  host.core();
  host.machine.Fail("SetDisplayConfig", 1, ERROR_BAD_CONFIGURATION);
  EXPECT_TRUE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(host.machine.TakeJournal(), Set(1, "0x60", 1610) + Set(1, "0x6a0"));
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Calling SetDisplayConfig 1st attempt failed: r = 1610\n");
}

TEST_F(ChangeDisplayResolutionOnWin7, FailedChangeIsRepairedByTheOlderWay) {
  CoreHost host(kWin7);
  host.core();
  host.machine.Fail("SetDisplayConfig", 2, ERROR_GEN_FAILURE);
  EXPECT_TRUE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(host.machine.TakeJournal(),
            Set(1, "0x60") + Set(1, "0x2a0", 31) + Tested(kXga) + Reset(kXga));
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Calling SetDisplayConfig 2nd attempt failed: r = 31\n");
  EXPECT_EQ(host.machine.model().sources[0].mode.width, 1024u);
}

TEST_F(ChangeDisplayResolutionOnWin7, SuccessWithAnotherWidthGoesTheOlderWay) {
  // 1300x768 is no mode of the panel: with changes allowed Windows takes a smaller one and is
  // content.
  CoreHost host(kWin7);
  EXPECT_FALSE(Change(&host, Wanted(1300, 768)));
  const std::string what = "1300x768x32@60 at 0,0 fields=0x5c0000";
  EXPECT_EQ(host.machine.TakeJournal(), Set(1, "0x60", 1610) + Set(1, "0x6a0") + Tested(what, -2) +
                                            Reset(what, -2) + Reset(what, -2));
  EXPECT_EQ(host.TakeLog(),
            "Calling SetDisplayConfig 1st attempt failed: r = 1610\n"
            "Calling ChangeDisplaySettingsEx() failed: -2\n"
            "Calling ChangeDisplaySettingsEx() failed: -2\n"
            "Changing display resolution to 1300 x 768 failed\n");
}

TEST_F(ChangeDisplayResolutionOnWin7, FailedHeightGoesUnnoticed) {
  // 1280x750 becomes 1280x720, which has the wanted width.
  CoreHost host(kWin7);
  EXPECT_TRUE(Change(&host, Wanted(1280, 750)));
  EXPECT_EQ(host.machine.TakeJournal(), Set(1, "0x60", 1610) + Set(1, "0x6a0"));
  EXPECT_EQ(host.machine.model().sources[0].mode.height, 720u);
}

TEST_F(ChangeDisplayResolutionOnWin7, FailureWithTheWantedWidthStays) {
  CoreHost host(kWin7);
  host.core();
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE, sim::Machine::Repeat::kFromThenOn);
  EXPECT_FALSE(Change(&host, Wanted(1366, 768)));
  EXPECT_EQ(host.machine.TakeJournal(), Set(1, "0x60", 31) + Set(1, "0x6a0", 31));
  EXPECT_EQ(host.TakeLog(),
            "Calling SetDisplayConfig 1st attempt failed: r = 31\n"
            "Calling SetDisplayConfig 2nd attempt failed: r = 31\n"
            "Changing display resolution to 1366 x 768 failed\n");
}

TEST_F(ChangeDisplayResolutionOnWin7, UnreadableWidthIsNoReasonForTheOlderWay) {
  CoreHost host(kWin7);
  host.core();
  host.machine.Fail("SetDisplayConfig", 2, ERROR_GEN_FAILURE);
  host.machine.Fail("EnumDisplaySettingsA", 1);
  EXPECT_FALSE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(host.machine.TakeJournal(), Set(1, "0x60") + Set(1, "0x2a0", 31));
}

TEST_F(ChangeDisplayResolutionOnWin7, UnknownSizesGoTheOlderWayAtOnce) {
  CoreHost host(kWin7);
  host.core();
  host.machine.Fail("GetDisplayConfigBufferSizes", 1);
  EXPECT_TRUE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(host.machine.TakeJournal(), Tested(kXga) + Reset(kXga));
}

TEST_F(ChangeDisplayResolutionOnWin7, FailedQueryIsNotLookedAt) {
  CoreHost host(kWin7);
  host.core();
  host.machine.Fail("QueryDisplayConfig", 1);
  EXPECT_TRUE(Change(&host, Wanted(1024, 768)));
  const std::string journal = host.machine.TakeJournal();
  EXPECT_EQ(CountOf(journal, "SetDisplayConfig(paths=1 flags=0x60)"), 1u) << journal;
  EXPECT_EQ(CountOf(journal, "SetDisplayConfig("), 2u) << journal;
  EXPECT_EQ(CountOf(journal, Reset(kXga)), 1u) << journal;
}

TEST_F(ChangeDisplayResolutionOnWin7, EveryDisplayOfAnExtendedDesktopTakesTheSize) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1280x1024 active");
  EXPECT_TRUE(Change(&host, Wanted(800, 600)));
  EXPECT_EQ(host.machine.TakeJournal(), Set(2, "0x60") + Set(2, "0x2a0"));
  for (const sim::Source& source : host.machine.model().sources) {
    EXPECT_EQ(source.mode.width, 800u);
    EXPECT_EQ(source.mode.height, 600u);
  }
}

TEST_F(ChangeDisplayResolutionOnWin7, DepthCountsOnlyWhenItIsNamed) {
  const struct {
    DWORD fields;
    DWORD bits;
    uint32_t expected;
  } rows[] = {{0x180000, 16, 32},
              {0x1C0000, 16, 16},
              {0x1C0000, 23, 16},
              {0x1C0000, 32, 32},
              {0x1C0000, 64, 32}};
  for (const auto& row : rows) {
    CoreHost host(kWin7);
    DEVMODEA dm = Wanted(1024, 768);
    dm.dmFields = row.fields;
    dm.dmBitsPerPel = row.bits;
    EXPECT_TRUE(Change(&host, dm)) << row.bits;
    EXPECT_EQ(host.machine.model().sources[0].mode.bits, row.expected) << row.bits;
  }
}

TEST_F(ChangeDisplayResolutionOnWin7, PositionCountsOnlyWhenItIsNamed) {
  for (const bool named : {false, true}) {
    CoreHost host("win7 intel: internal 1366x768 active, crt 1280x1024 active");
    DEVMODEA dm = Wanted(1024, 768);
    if (named) dm.dmFields |= DM_POSITION;
    dm.dmPosition.x = 5000;  // for both: none is at the origin then, which Windows refuses
    Change(&host, dm);
    const std::string journal = host.machine.TakeJournal();
    EXPECT_EQ(CountOf(journal, Set(2, "0x60", 0)), named ? 0u : 1u) << journal;
  }
}

TEST_F(ChangeDisplayResolutionOnWin7, WhatIsThrownLeavesTheHelperBehind) {
  CoreHost host(kWin7);
  host.core();
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE, sim::Machine::Repeat::kFromThenOn);
  script->on_call = [](const std::string&) { throw std::runtime_error("no"); };
  EXPECT_FALSE(Change(&host, Wanted(1024, 768)));
  EXPECT_EQ(CountOf(host.TakeLog(), "Changing display resolution"), 0u);
  EXPECT_EQ(host.Modules(), 1u);  // the helper holds its library
  host.ostrel().ForgiveLeaks();
}

}  // namespace
