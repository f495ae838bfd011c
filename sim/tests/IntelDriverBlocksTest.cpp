// The blocks of the simulated Intel driver: N-view, EDID, connectors, aspect scaling.
#include <gtest/gtest.h>

#include "sim/EdidMaker.h"
#include "sim/faces/IntelDriver.h"
#include "sim/faces/IntelDriverRules.h"
#include "sim/tests/Fakes.h"
#include "sim/tests/IntelDriverCalls.h"

namespace sim {
namespace {

constexpr char kThree[] = "win7 intel*3: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080";
constexpr char kExtended[] = "win7 intel: internal 1366x768 active, crt 1280x1024 active";
constexpr uint32_t kPanel = 0x1000;
constexpr uint32_t kCrt = 0x1;
constexpr uint32_t kHdmi = 0x10000;
constexpr DriverSaid kFine = {S_OK, 0};
constexpr DriverSaid kBadArgument = {E_INVALIDARG, kIntelBadArgument};

// --- N-view, read.

TEST(IntelNView, SingleDisplayFillsTheSmallestBlock) {
  const Machine machine(kThree);
  const DriverClient driver;
  Words block = NView(0, 0, 1);
  EXPECT_EQ(driver.Get(kNView, &block), kFine);
  Words expected = NView(1, 1, 1);
  PutEntry(&expected, 0, kPanel, 1366, 768, {0, 1366, 0, 768});
  EXPECT_EQ(block.bytes, expected.bytes);
}

TEST(IntelNView, ProbeIsToldTheSizeAndNoDisplay) {
  const Machine machine(kExtended);
  const DriverClient driver;
  Words block = NView(0, 0, 1).Set(4, 1);
  EXPECT_EQ(driver.Get(kNView, &block), kFine);
  EXPECT_EQ(block.bytes, NView(0, 2, 1).Set(4, 1).Set(8, 152).bytes);
}

TEST(IntelNView, ExtendedDesktopIsToldWithItsPlaces) {
  const Machine machine(kExtended);
  const DriverClient driver;
  Words block = NView(0, 0, 2);
  EXPECT_EQ(driver.Get(kNView, &block), kFine);
  Words expected = NView(5, 2, 2);
  PutEntry(&expected, 0, kPanel, 1366, 768, {0, 1366, 0, 768});
  PutEntry(&expected, 1, kCrt, 1280, 1024, {1366, 2646, 0, 1024});
  EXPECT_EQ(block.bytes, expected.bytes);
}

TEST(IntelNView, BlockThatIsTooSmallHoldsTheFirstAndCountsAll) {
  const Machine machine(kExtended);
  const DriverClient driver;
  Words block = NView(0, 0, 1);
  EXPECT_EQ(driver.Get(kNView, &block), kFine);
  EXPECT_EQ(block.At(8), 84u);
  EXPECT_EQ(block.At(12), 2u);
  EXPECT_EQ(block.At(16), kPanel);
}

TEST(IntelNView, CloneIsToldAsOne) {
  const Machine machine("win7 intel: clone internal 1366x768 active, crt 1280x1024 active");
  const DriverClient driver;
  Words block = NView(0, 0, 2);
  EXPECT_EQ(driver.Get(kNView, &block), kFine);
  EXPECT_EQ(block.At(0), 3u);
  EXPECT_EQ(block.At(12), 2u);
  EXPECT_EQ(block.At(16), kPanel);
  EXPECT_EQ(block.At(84), kCrt);
}

TEST(IntelNView, TurnedDesktopIsTold) {
  const Machine machine(kThree);
  DEVMODEA turned = Sized(768, 1366);
  turned.dmFields |= DM_DISPLAYORIENTATION;
  turned.dmDisplayOrientation = DMDO_270;
  ASSERT_EQ(Change(kFirst, turned, CDS_UPDATEREGISTRY), DISP_CHANGE_SUCCESSFUL);
  const DriverClient driver;
  Words block = NView(0, 0, 1);
  EXPECT_EQ(driver.Get(kNView, &block), kFine);
  EXPECT_EQ(block.At(16 + 4), 768u);
  EXPECT_EQ(block.At(16 + 56), 3u);
}

TEST(IntelNView, HeadsThatItRefuses) {
  const Machine machine(kThree);
  const DriverClient driver;
  Words small(80);
  small.Set(8, 80);
  Words wrong_size = NView(0, 0, 1).Set(8, 16);
  Words probe = NView(0, 0, 1).Set(4, 2);
  for (Words* block : {&small, &wrong_size, &probe}) {
    EXPECT_EQ(driver.Get(kNView, block), kBadArgument);
    EXPECT_EQ(driver.Set(kNView, block), kBadArgument);
  }
  const GUID unknown = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  Words block = NView(0, 0, 1);
  EXPECT_EQ(driver.Get(unknown, &block), (DriverSaid{E_INVALIDARG, kIntelUnknownBlock}));
  EXPECT_EQ(driver.Set(kEdid, &block), (DriverSaid{E_INVALIDARG, kIntelUnknownBlock}));
}

// --- N-view, written.

TEST(IntelNView, ProbeOfAWriteTellsTheSizeAndChangesNothing) {
  Machine machine(kThree);
  const DriverClient driver;
  Words block = NView(0, 3, 1).Set(4, 1);
  EXPECT_EQ(driver.Set(kNView, &block), kFine);
  EXPECT_EQ(block.At(8), 220u);
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(machine.TakeJournal(),
            "ICUIExternal8::SetDeviceData(n-view mode=0 probe=1 size=84 count=3 err=0)=0\n");
}

TEST(IntelNView, ThreeDisplaysSideBySide) {
  Machine machine(kThree);
  const DriverClient driver;
  Words block = NView(5, 3, 3);
  PutEntry(&block, 0, kPanel, 1366, 768);
  PutEntry(&block, 1, kHdmi, 1920, 1080, {1366, 3286, 0, 1080});
  PutEntry(&block, 2, kCrt, 1024, 768, {3286, 4310, 0, 768});
  EXPECT_EQ(driver.Set(kNView, &block), kFine);
  EXPECT_EQ(machine.Topology(), "extend internal+crt+hdmi");
  EXPECT_EQ(Now(kFirst), "1366x768x32@60 at 0,0");
  EXPECT_EQ(Now(kSecond), "1920x1080x32@60 at 1366,0");
  EXPECT_EQ(Now("\\\\.\\DISPLAY3"), "1024x768x32@60 at 3286,0");
  EXPECT_EQ(machine.TakeJournal(),
            "ICUIExternal8::SetDeviceData(n-view mode=5 probe=0 size=220 count=3, "
            "0x1000 1366x768x32@60 left=0 right=0 top=0 bottom=0 orientation=0 scaling=0, "
            "0x10000 1920x1080x32@60 left=1366 right=3286 top=0 bottom=1080 orientation=0 "
            "scaling=0, "
            "0x1 1024x768x32@60 left=3286 right=4310 top=0 bottom=768 orientation=0 scaling=0 "
            "err=0)=0\n");
  Words read = NView(0, 0, 3);
  EXPECT_EQ(driver.Get(kNView, &read), kFine);
  EXPECT_EQ(read.At(0), 5u);
  EXPECT_EQ(read.At(12), 3u);
}

TEST(IntelNView, CloneOfOneSize) {
  Machine machine(kThree);
  const DriverClient driver;
  Words block = NView(3, 2, 2);
  PutEntry(&block, 0, kPanel, 1024, 768);
  PutEntry(&block, 1, kCrt, 1024, 768);
  block.Set(16 + 60, 4).Set(84 + 60, 64);
  EXPECT_EQ(driver.Set(kNView, &block), kFine);
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
  EXPECT_EQ(Now(kFirst), "1024x768x32@60 at 0,0");
}

TEST(IntelNView, CloneOfDifferentSizesGetsTheBestThatAllTake) {
  Machine machine(kThree);
  const DriverClient driver;
  Words block = NView(3, 3, 3);
  PutEntry(&block, 0, kPanel, 1366, 768);
  PutEntry(&block, 1, kHdmi, 1920, 1080);
  PutEntry(&block, 2, kCrt, 1280, 1024);
  EXPECT_EQ(driver.Set(kNView, &block), kFine);
  EXPECT_EQ(machine.Topology(), "clone internal+crt+hdmi");
  EXPECT_EQ(Now(kFirst), "1280x720x32@60 at 0,0");
}

TEST(IntelNView, WritesThatItRefuses) {
  Machine machine("win7 intel: internal 1366x768 active, crt 1280x1024, hdmi");
  const DriverClient driver;
  Words good = NView(5, 2, 2);
  PutEntry(&good, 0, kPanel, 1366, 768);
  PutEntry(&good, 1, kCrt, 1280, 1024, {1366, 2646, 0, 1024});
  const size_t second = 84;
  const struct {
    const char* what;
    size_t offset;
    uint32_t value;
    DriverSaid said;
  } refusals[] = {
      {"mode", 0, 2, kBadArgument},
      {"mode of one", 0, 1, kBadArgument},
      {"no display", 12, 0, kBadArgument},
      {"more than it drives", 12, 3, {E_FAIL, kIntelTooManyDisplays}},
      {"unknown uid", second, 0x1001, {E_FAIL, kIntelUnknownDevice}},
      {"no uid", second, 0, {E_FAIL, kIntelUnknownDevice}},
      {"nothing attached", second, kHdmi, {E_FAIL, kIntelNotAttached}},
      {"one display twice", second, kPanel, kBadArgument},
      {"size of no monitor", second + 4, 1281, kBadArgument},  // nor is it the rectangle's
      {"refresh rate", second + 12, 85, {E_FAIL, kIntelNoSuchMode}},
      {"bits", second + 16, 24, {E_FAIL, kIntelNoSuchMode}},
      {"first gap", second + 20, 1, kBadArgument},
      {"first gap's end", second + 28, 1, kBadArgument},
      {"left", second + 32, 0, kBadArgument},
      {"bottom", second + 44, 1, kBadArgument},
      {"second gap", second + 52, 1, kBadArgument},
      {"orientation", second + 56, 4, kBadArgument},
      {"third gap", second + 64, 1, kBadArgument},
  };
  for (const auto& refusal : refusals) {
    Words block = good;
    block.Set(refusal.offset, refusal.value);
    EXPECT_EQ(driver.Set(kNView, &block), refusal.said) << refusal.what;
  }
  Words unplaced = good;
  unplaced.Set(second + 32, 0).Set(second + 36, 0).Set(second + 44, 0);
  EXPECT_EQ(driver.Set(kNView, &unplaced), kBadArgument);
  Words probe = NView(0, 3, 1).Set(4, 1);
  EXPECT_EQ(driver.Set(kNView, &probe), (DriverSaid{E_FAIL, kIntelTooManyDisplays}));
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(driver.Set(kNView, &good), kFine);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
}

// --- EDID.

TEST(IntelEdidBlock, HoldsTheMonitorsBytes) {
  const Machine machine(kThree);
  const DriverClient driver;
  Words block(268);
  block.Set(0, kHdmi).Set(4, 256);
  EXPECT_EQ(driver.Get(kEdid, &block), kFine);
  const std::vector<uint8_t> expected = MakeEdid("HDMI Monitor", {1920, 1080, 32, 60});
  EXPECT_EQ(std::vector<uint8_t>(&block.bytes[12], &block.bytes[12] + 128), expected);
  EXPECT_EQ(block.At(0), kHdmi);
  EXPECT_EQ(block.At(8), 0u);
}

TEST(IntelEdidBlock, RefusesWhatItHasNot) {
  Machine machine("win7 intel: internal 1366x768 active, crt 1280x1024, hdmi");
  machine.model().connectors[1].monitor->edid.clear();
  const DriverClient driver;
  const auto ask = [&driver](size_t size, uint32_t uid, uint32_t length) {
    Words block(size);
    block.Set(0, uid).Set(4, length);
    return driver.Get(kEdid, &block);
  };
  EXPECT_EQ(ask(268, kPanel, 256), kFine);
  EXPECT_EQ(ask(268, kPanel, 128), kBadArgument);
  EXPECT_EQ(ask(264, kPanel, 256), kBadArgument);
  EXPECT_EQ(ask(268, 0, 256), (DriverSaid{E_FAIL, kIntelUnknownDevice}));
  EXPECT_EQ(ask(268, kHdmi, 256), (DriverSaid{E_FAIL, kIntelNotAttached}));
  EXPECT_EQ(ask(268, kCrt, 256), (DriverSaid{E_FAIL, kIntelNotAttached}));
}

// --- Connectors.

TEST(IntelConnectorBlock, TellsWhatIsThereAttachedAndActive) {
  const Machine machine("win7 intel: internal 1366x768 active, crt 1280x1024, hdmi");
  const DriverClient driver;
  Words block(12);
  EXPECT_EQ(driver.Get(kConnectors, &block), kFine);
  EXPECT_EQ(block.bytes, Words(12).Set(0, 0x19).Set(4, 0x11).Set(8, 0x10).bytes);
  Words large(16);
  EXPECT_EQ(driver.Get(kConnectors, &large), kBadArgument);
}

TEST(IntelConnectorBlock, LeavesOutAdaptersThatDoNotWork) {
  Machine machine("win7 intel, intel: internal 1366x768 active, crt 1280x1024, hdmi@2 1920x1080");
  const DriverClient driver;
  Words block(12);
  EXPECT_EQ(driver.Get(kConnectors, &block), kFine);
  EXPECT_EQ(block.bytes, Words(12).Set(0, 0x19).Set(4, 0x19).Set(8, 0x10).bytes);
  machine.model().adapters[1].disabled = true;
  EXPECT_EQ(driver.Get(kConnectors, &block), kFine);
  EXPECT_EQ(block.bytes, Words(12).Set(0, 0x11).Set(4, 0x11).Set(8, 0x10).bytes);
}

TEST(IntelConnectorBlock, ThreeHeadsHaveABitOfTheirOwn) {
  const Machine machine(kThree);
  const DriverClient driver;
  Words block(12);
  EXPECT_EQ(driver.Get(kConnectors, &block), kFine);
  EXPECT_EQ(block.At(0), 0x219u);
}

// --- Aspect scaling.

TEST(IntelAspect, IsKeptPerMachine) {
  uint32_t capabilities = 0;
  uint32_t current = 0;
  uint32_t err = 9;
  {
    Machine machine(kThree);
    const DriverClient driver;
    EXPECT_EQ(driver.Slot(27, kPanel, 1U, &capabilities, &current, &err), S_OK);
    EXPECT_EQ(capabilities, 7u);
    EXPECT_EQ(current, 4u);
    EXPECT_EQ(err, 0u);
    EXPECT_EQ(driver.Slot(28, kPanel, 2U, &err), S_OK);
    EXPECT_EQ(driver.Slot(27, kPanel, 1U, &capabilities, &current, &err), S_OK);
    EXPECT_EQ(current, 2u);
    EXPECT_EQ(machine.TakeJournal(),
              "ICUIExternal8::SetAspectScaling(uid=0x1000 setting=2 err=0)=0\n");
  }
  const Machine other(kThree);
  EXPECT_EQ(IntelAspectScaling(other, kPanel), 4u);
}

TEST(IntelAspect, RefusesAnotherModeAnUnknownDeviceAndAnUnknownSetting) {
  const Machine machine("win7 intel: crt 1280x1024 active");
  const DriverClient driver;
  uint32_t out[2] = {77, 77};
  uint32_t err = 0;
  EXPECT_EQ(driver.Slot(27, kCrt, 2U, &out[0], &out[1], &err), E_INVALIDARG);
  EXPECT_EQ(driver.Slot(27, kPanel, 1U, &out[0], &out[1], &err), E_FAIL);
  EXPECT_EQ(err, kIntelUnknownDevice);
  EXPECT_EQ(out[1], 77u);
  EXPECT_EQ(driver.Slot(28, kPanel, 2U, &err), E_FAIL);
  EXPECT_EQ(driver.Slot(28, kCrt, 3U, &err), E_INVALIDARG);
  EXPECT_EQ(driver.Slot(28, kCrt, 8U, &err), E_INVALIDARG);
}

// --- The keyboard and the window in front.

TEST(Keyboard, PressesAndTheWindowInFrontAreJournalled) {
  Machine machine(kThree);
  const HWND before = FAKE(GetForegroundWindow)();
  EXPECT_NE(before, nullptr);
  EXPECT_TRUE(FAKE(SetForegroundWindow)(FAKE(GetDesktopWindow)()));
  EXPECT_EQ(FAKE(GetForegroundWindow)(), GetDesktopWindow());
  FAKE(keybd_event)(162, 29, 0, 0);
  FAKE(keybd_event)(162, 29, KEYEVENTF_KEYUP, 0);
  EXPECT_TRUE(FAKE(SetForegroundWindow)(before));
  EXPECT_FALSE(FAKE(SetForegroundWindow)(nullptr));
  EXPECT_EQ(FAKE(GetForegroundWindow)(), before);
  EXPECT_EQ(machine.TakeJournal(),
            "SetForegroundWindow(desktop)=1\n"
            "keybd_event(key=162 scan=29 flags=0)\n"
            "keybd_event(key=162 scan=29 flags=2)\n"
            "SetForegroundWindow(0x4f0001)=1\n"
            "SetForegroundWindow(0x0)=0\n");
}

}  // namespace
}  // namespace sim
