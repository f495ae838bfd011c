// The VIA back-end.
#include <gtest/gtest.h>

#include "tests/behaviour/LegacyHost.h"
#include "tests/support/RaiseWatch.h"

namespace {

constexpr uint32_t kSingle = IMMonitor::DM_SINGLE;
constexpr uint32_t kClone = IMMonitor::DM_CLONE;
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kTv = IMMonitor::MD_TV;
constexpr uint32_t kDvi = IMMonitor::MD_DVI;
constexpr uint32_t kOthers = IMMonitor::MD_HDMI | IMMonitor::MD_DP;

constexpr char kScreen[] = "CreateDCA(driver=DISPLAY device=null port=null)=1\n";
constexpr char kOtherDriver[] = "xp sis: internal 1280x800 active, crt 1280x1024";

// The escape as the journal has it.
std::string Told(const std::string& input, uint32_t output, int32_t result = 1) {
  return "ExtEscape(0x3000 in=" + input + " out=" + std::to_string(output) +
         " bytes)=" + std::to_string(result) + "\n";
}

// A switch to these devices, in hexadecimal digits.
std::string Sent(const std::string& devices, int32_t result = 1) {
  return Told("2," + devices + ",0 (12 bytes)", 0, result);
}

// --- Construction.

TEST(ViaMMImpl, ConstructionAsksWhetherTheDriverHasTheEscape) {
  ViaHost host;
  host.box();
  host.machine.JournalReads(true);
  EXPECT_EQ(host.Raised(), "");
  const std::string journal = host.machine.TakeJournal();
  const size_t screen = journal.find("CreateDCA(");
  ASSERT_NE(screen, std::string::npos);
  EXPECT_EQ(journal.substr(screen),
            std::string(kScreen) + "ExtEscape(0x8 in=3000 (4 bytes) out=0 bytes)=1\n");
  EXPECT_EQ(host.Contexts(), 0u);
  EXPECT_EQ(host.machine.Calls("DeleteDC"), 1u);
}

TEST(ViaMMImpl, DriverWithoutTheEscapeStopsConstructionWithABareText) {
  ViaHost host(kOtherDriver);
  EXPECT_EQ(host.Raised(), "S3 VGA Library not present!");
  EXPECT_EQ(host.machine.Calls("ExtEscape"), 1u);
  EXPECT_EQ(host.Contexts(), 0u);
  EXPECT_EQ(host.machine.Calls("DeleteDC"), 1u);
}

TEST(ViaMMImpl, AnyAnswerButOneStopsConstruction) {
  for (const uint32_t answer : {2u, 0xFFFFFFFFu, 0x3000u}) {
    ViaHost host;
    host.box();
    host.machine.Fail("ExtEscape", 1, answer);
    EXPECT_EQ(host.Raised(), "S3 VGA Library not present!") << answer;
    EXPECT_EQ(host.Contexts(), 0u);
    EXPECT_EQ(host.Raised(), "");
  }
}

TEST(ViaMMImpl, WithoutAContextTheObjectStandsAsItIs) {
  ViaHost host(kOtherDriver);
  host.box();
  host.machine.Fail("CreateDCA", 1);
  EXPECT_EQ(host.Raised(), "");
  EXPECT_EQ(host.machine.Calls("ExtEscape"), 0u);
  EXPECT_EQ(host.machine.Calls("DeleteDC"), 0u);
  EXPECT_EQ(host.via().GetVgaVendor(), 0x1106u);
}

TEST(ViaMMImpl, StoppedConstructionLeavesNoMemoryBehind) {
  ViaHost host(kOtherDriver);
  host.Raised();
  const auto pieces_out = host.ostrel().white_box().factory->PiecesOut;
  std::string raised(64, ' ');  // room for the text, so that the library takes none for it
  const int64_t before = pieces_out();
  EXPECT_EQ(host.box().NewViaMMImpl(&raised), nullptr);
  EXPECT_EQ(pieces_out(), before);
}

TEST(ViaMMImpl, InitialDoesNothing) {
  ViaHost host;
  IMMonitor& via = host.via();
  host.machine.JournalReads(true);
  host.Forget();
  EXPECT_EQ(via.Initial(), 1);
  EXPECT_EQ(via.Initial(), 1);
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

// --- Reports.

TEST(ViaReports, ConnectedDisplaysAreAskedForWithASeven) {
  ViaHost host;
  host.via();
  host.machine.JournalReads(true);
  host.Forget();
  EXPECT_EQ(host.Connected(), "0xb (3)");
  EXPECT_EQ(host.machine.TakeJournal(), kScreen + Told("7 (4 bytes)", 4));
  EXPECT_EQ(host.Contexts(), 0u);
}

TEST(ViaReports, ActiveDisplaysAreAskedForWithAOneAndHaveEightBytes) {
  ViaHost host;
  host.via();
  host.machine.JournalReads(true);
  host.Forget();
  EXPECT_EQ(host.Active(), "0x1 (1)");
  EXPECT_EQ(host.machine.TakeJournal(), kScreen + Told("1 (4 bytes)", 8));
  EXPECT_EQ(host.Contexts(), 0u);
}

TEST(ViaReports, EveryMaskOfDevices) {
  // By the low five bits: CRT, panel, television, nothing, DVI.
  constexpr uint32_t kDisplays[] = {0, 2,  1, 3,  4,  6,  5,  7,  0, 2,  1, 3,  4,  6,  5,  7,
                                    8, 10, 9, 11, 12, 14, 13, 15, 8, 10, 9, 11, 12, 14, 13, 15};
  ViaHost host;
  for (uint32_t devices = 0; devices < 32; ++devices) {
    for (const uint32_t more : {0u, 0x20u, 0xFFFFFFE0u}) {
      const uint32_t displays = kDisplays[devices];
      uint32_t count = 0;
      for (uint32_t bit = 1; bit < 16; bit *= 2) count += (displays & bit) != 0 ? 1 : 0;
      const std::string expected = LegacyHost::Hex(displays) + " (" + std::to_string(count) + ")";
      sim::SetViaDevices(host.machine, devices | more, 0);
      EXPECT_EQ(host.Connected(), expected) << devices;
      sim::SetViaDevices(host.machine, 0, devices | more);
      EXPECT_EQ(host.Active(), expected) << devices;
    }
  }
}

TEST(ViaReports, EscapeThatDoesNotAnswerOneLeavesTheOutputs) {
  ViaHost host;
  host.via();
  for (const uint32_t answer : {0u, 2u, 0xFFFFFFFFu}) {
    host.machine.Fail("ExtEscape", 1, answer);
    EXPECT_EQ(host.Connected(), "failed - (-)");
    host.machine.Fail("ExtEscape", 1, answer);
    EXPECT_EQ(host.Active(), "failed - (-)");
  }
  host.model().adapters[0].vendor_library = false;  // the driver is gone: Windows answers 0
  EXPECT_EQ(host.Connected(), "failed - (-)");
  EXPECT_EQ(host.Active(), "failed - (-)");
  EXPECT_EQ(host.Contexts(), 0u);
  EXPECT_EQ(host.machine.Calls("DeleteDC"), host.machine.Calls("CreateDCA"));
}

TEST(ViaReports, WithoutAContextThereIsNone) {
  ViaHost host;
  host.via();
  const uint32_t escapes = host.machine.Calls("ExtEscape");
  host.machine.Fail("CreateDCA", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.Connected(), "failed - (-)");
  EXPECT_EQ(host.Active(), "failed - (-)");
  EXPECT_EQ(host.Mode(), "- -");
  EXPECT_EQ(host.Switch(kSingle, kNb), "0");
  EXPECT_EQ(host.machine.Calls("ExtEscape"), escapes);
  EXPECT_EQ(host.Contexts(), 0u);
}

TEST(ViaReports, NullPointersFail) {
  ViaHost host;
  host.via();
  host.ExpectNullPointersToFail("CreateDCA");
}

// --- The mode.

TEST(ViaMode, IsTheNumberOfActiveDisplays) {
  const struct {
    uint32_t devices;
    const char* mode;
  } rows[] = {{0x01, "1 0x2"},        {0x02, "1 0x1"},        {0x04, "1 0x4"},
              {0x10, "1 0x8"},        {0x28, "failed - 0x0"}, {0x00, "failed - 0x0"},
              {0x03, "2 0x3"},        {0x05, "2 0x6"},        {0x12, "2 0x9"},
              {0x07, "failed - 0x7"}, {0x13, "failed - 0xb"}, {0x17, "failed - 0xf"},
              {0xFFFFFFEA, "1 0x1"}};
  ViaHost host;
  for (const auto& row : rows) {
    sim::SetViaDevices(host.machine, 0, row.devices);
    EXPECT_EQ(host.Mode(), row.mode) << row.devices;
  }
}

TEST(ViaMode, DriverThatDoesNotAnswerIsASuccessThatTellsNothing) {
  ViaHost host;
  host.via();
  for (const uint32_t answer : {0u, 2u, 0xFFFFFFFFu}) {
    host.machine.Fail("ExtEscape", 1, answer);
    EXPECT_EQ(host.Mode(), "- -") << answer;
  }
  EXPECT_EQ(host.Mode(), "1 0x1");
}

TEST(ViaMode, ExtendedDesktopIsReportedAsAClone) {
  ViaHost host("xp via: internal 1280x800 active, crt 1280x1024 active");
  EXPECT_EQ(host.via().IsExtendModeEnabled(), 1);
  const uint32_t asked = host.machine.Calls("EnumDisplayDevicesA");
  EXPECT_EQ(host.Mode(), "2 0x3");
  EXPECT_EQ(host.machine.Calls("EnumDisplayDevicesA"), asked);
}

// --- Switching.

constexpr char kEverything[] =
    "xp via: internal 1280x800 active, crt 1280x1024, tv 1024x768, dvi 1280x1024";

struct SwitchRow {
  uint32_t mode;
  uint32_t displays;
  const char* devices;
  const char* topology;
};

TEST(ViaSwitch, FirstDisplayOfTheModeDecides) {
  constexpr SwitchRow kRows[] = {
      {kSingle, kNb, "2", "single internal"},
      {kSingle, kCrt, "1", "single crt"},
      {kSingle, kTv, "4", "single tv"},
      {kSingle, kDvi, "10", "single dvi"},
      {kSingle, kNb | kCrt | kTv | kDvi, "2", "single internal"},
      {kSingle, kCrt | kTv | kDvi, "1", "single crt"},
      {kSingle, kTv | kDvi, "4", "single tv"},
      {kSingle, kDvi | kOthers | 0xC0, "10", "single dvi"},
      {kClone, kCrt, "3", "clone internal+crt"},
      {kClone, kTv, "6", "clone internal+tv"},
      {kClone, kDvi, "12", "clone internal+dvi"},
      {kClone, kNb | kCrt | kTv | kDvi, "3", "clone internal+crt"},
      {kClone, kNb | kTv | kDvi, "6", "clone internal+tv"},
      {kClone, kNb | kDvi | kOthers, "12", "clone internal+dvi"},
  };
  ViaHost host(kEverything);
  for (const SwitchRow& row : kRows) {
    EXPECT_EQ(host.Switch(row.mode, row.displays), Sent(row.devices) + "1");
    EXPECT_EQ(host.machine.Topology(), row.topology);
  }
  EXPECT_EQ(host.Contexts(), 0u);
}

TEST(ViaSwitch, WhatCannotBeHadAsksForNoContext) {
  ViaHost host(kEverything);
  host.via();
  const uint32_t contexts = host.machine.Calls("CreateDCA");
  for (const uint32_t displays : {0u, kOthers, 0xC0u, 0xFFFFFF00u}) {
    EXPECT_EQ(host.Switch(kSingle, displays), "0") << displays;
    EXPECT_EQ(host.Switch(kClone, displays), "0") << displays;
    EXPECT_EQ(host.Switch(kClone, displays | kNb), "0") << displays;
  }
  for (const uint32_t mode : {0u, 3u, 4u, 8u, 16u, 128u, 256u, 512u, 1024u, 0x101u}) {
    EXPECT_EQ(host.Switch(mode, kNb | kCrt), "0") << mode;
  }
  EXPECT_EQ(host.machine.Calls("CreateDCA"), contexts);
}

TEST(ViaSwitch, DisplaysBeyondTheLowEightBitsAreNotLookedAt) {
  ViaHost host(kEverything);
  EXPECT_EQ(host.Switch(kSingle, 0xFFFFFF00 | kTv), Sent("4") + "1");
  EXPECT_EQ(host.Switch(kClone, 0x01020800 | kDvi), Sent("12") + "1");
}

TEST(ViaSwitch, ResultIsThatTheEscapeAnsweredOne) {
  ViaHost host;
  host.via();
  for (const uint32_t answer : {2u, 0xFFFFFFFFu}) {
    host.machine.Fail("ExtEscape", 1, answer);
    EXPECT_EQ(host.Switch(kSingle, kCrt), Sent("1", static_cast<int32_t>(answer)) + "0");
  }
  host.model().adapters[0].vendor_library = false;
  EXPECT_EQ(host.Switch(kSingle, kCrt), Sent("1", 0) + "0");
  EXPECT_EQ(host.machine.Topology(), "single internal");
  EXPECT_EQ(host.Contexts(), 0u);
  EXPECT_EQ(host.machine.Calls("DeleteDC"), host.machine.Calls("CreateDCA"));
}

TEST(ViaSwitch, DisplayThatIsNotThereIsTheDriversToRefuse) {
  ViaHost host("xp via: internal 1280x800 active, crt, tv");
  EXPECT_EQ(host.Switch(kClone, kTv), Sent("6", -1) + "0");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

// --- What is left to the base class, the log, and the factory.

TEST(ViaMMImpl, IsVias) {
  ViaHost host;
  EXPECT_EQ(host.via().GetVgaVendor(), 0x1106u);
  EXPECT_FALSE(host.box().HasExtension(&host.via()));
}

TEST(ViaMMImpl, WindowsDoesTheRest) {
  ViaHost host("win7 via: internal 1280x800 active, crt 1280x1024");
  IMMonitor& via = host.via();
  EXPECT_EQ(via.HasDualOutputCapability(), 1);
  EXPECT_EQ(via.HasDisplaySwitchingCapability(), 1);
  EXPECT_EQ(via.ShouldResetDisplaySettingAfterSwtich(), 1);
  EXPECT_EQ(via.EnableExtendMode(1), 1);
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
  EXPECT_EQ(via.EnableExtendModeOnDisplays(0, kCrt), 1);
  EXPECT_EQ(host.machine.Topology(), "single internal");
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  EXPECT_TRUE(via.GetDisplaySettings(kNb, &dm));
  EXPECT_EQ(dm.dmPelsWidth, 1280u);
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "ExtEscape("), 0u);
  EXPECT_EQ(via.ChangeToNBOnlySingleDisplayMode(), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Sent("2"));
}

TEST(ViaMMImpl, OldWindowsTellsNoSettings) {
  ViaHost host;
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  EXPECT_FALSE(host.via().GetDisplaySettings(kNb, &dm));
}

TEST(ViaMMImpl, StoppedConstructionLogsNothing) {
  ViaHost host(kOtherDriver);
  host.box();
  host.ForgetLog();
  EXPECT_NE(host.Raised(), "");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(ViaMMImpl, LogsNothing) {
  ViaHost host;
  host.box();
  host.ForgetLog();
  EXPECT_EQ(host.Connected(), "0xb (3)");
  host.machine.Fail("ExtEscape", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.Connected(), "failed - (-)");
  EXPECT_EQ(host.Mode(), "- -");
  EXPECT_EQ(host.via().SetNewDisplayMode(kSingle, kNb), 0);
  host.ExpectNullPointersToFail("CreateDCA");
  host.End();
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(ViaMMImpl, FactoryMakesAndStoresIt) {
  ViaHost host;
  const FactoryBox& factory = *host.ostrel().white_box().factory;
  IMMonitor* const via = factory.CreateIMMonitorByVendor(0x1106);
  ASSERT_NE(via, nullptr);
  EXPECT_EQ(factory.ActiveMonitor(), via);
  EXPECT_EQ(via->SetNewDisplayMode(kClone, kNb | kDvi), 1);
  EXPECT_EQ(host.machine.Topology(), "clone internal+dvi");
  factory.DeleteMultiMonitorObject();
}

TEST(ViaMMImpl, FactoryCatchesWhatConstructionRaises) {
  ViaHost host(kOtherDriver);
  const FactoryBox& factory = *host.ostrel().white_box().factory;
  IMMonitor* const before = factory.CreateIMMonitorByVendor(0x1039);
  ASSERT_NE(before, nullptr);
  host.ForgetLog();
  RaiseWatch watch;
  EXPECT_EQ(factory.CreateIMMonitorByVendor(0x1106), nullptr);
  EXPECT_EQ(CountOf(watch.Take(), "throw\n"), 1u);
  EXPECT_EQ(factory.ActiveMonitor(), before);
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Exception occurred while creating IMMonitor object\n");
  EXPECT_EQ(host.Contexts(), 0u);
  factory.DeleteMultiMonitorObject();
}

TEST(ViaMMImpl, WithoutMemoryThereIsNone) {
  ViaHost host(kOtherDriver);
  const auto refuse = host.ostrel().white_box().projectors->RefuseMemory;
  std::string raised;
  refuse(1);
  EXPECT_EQ(host.box().NewViaMMImpl(&raised), nullptr);
  EXPECT_FALSE(refuse(0));
  EXPECT_EQ(raised, "");  // there was no object to be constructed
}

}  // namespace
