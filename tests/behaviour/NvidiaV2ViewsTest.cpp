// Modes that NvidiaMMImplV2 sets through the driver's views: the record that the driver gets, and
// what comes of it.
#include <gtest/gtest.h>

#include "tests/support/NvidiaHost.h"

namespace {

constexpr char kMachine[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080, crt 1280x1024";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";
constexpr char kUsualSize[] = "1024x768x32@60";
constexpr char kFirst[] = " primary gdi";
constexpr uint32_t kSingle = IMMonitor::DM_SINGLE;
constexpr uint32_t kClone = IMMonitor::DM_CLONE;
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;
constexpr int32_t kRefused = -1;
constexpr int32_t kInvalid = -5;
constexpr int32_t kBadHandle = -8;

std::string SingleView(uint32_t mask, int32_t result = 0) {
  return SetView(0, "[" + ViewPath(mask, kUsualSize, kFirst) + "]", result);
}
std::string CloneView(uint32_t second, int32_t result = 0) {
  return SetView(
      1, "[" + ViewPath(0x10000, kUsualSize, kFirst) + " " + ViewPath(second, kUsualSize) + "]",
      result);
}

// --- One display.

TEST(NvidiaV2Single, NamesTheDisplaysOutputInTheUsualSize) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.Switch(kSingle, kHdmi), SingleView(0x20000) + "1");
  EXPECT_EQ(host.machine.Topology(), "single hdmi");
  EXPECT_EQ(host.Switch(kSingle, kCrt), SingleView(0x1) + "1");
  EXPECT_EQ(host.machine.Topology(), "single crt");
  EXPECT_EQ(host.Switch(kSingle, kNb), SingleView(0x10000) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(NvidiaV2Single, SeveralDisplaysAreTheirOutputsTogether) {
  NvidiaHost host(
      "win7 nvidia: internal 1366x768 active, crt 1024x768, dvi 1024x768, hdmi 1024x768, tv, dp");
  host.connector("tv").monitor = host.connector("crt").monitor;
  host.connector("dp").monitor = host.connector("crt").monitor;
  EXPECT_EQ(host.Switch(kSingle, 0x3F), SingleView(0xF0101, kInvalid) + "0");
}

TEST(NvidiaV2Single, NoDisplayIsNoOutput) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  EXPECT_EQ(host.nv().SetNewDisplayMode(kSingle, 0), 0);
  EXPECT_EQ(host.machine.TakeJournal(), SingleView(0, kInvalid));
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2Single, DisplayThatWasNotMetIsNoOutput) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.Switch(kSingle, IMMonitor::MD_DP), SingleView(0, kInvalid) + "0");
}

TEST(NvidiaV2Single, LookUpBeforeTheDisplaysWereReadFailsItsCheck) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  EXPECT_EQ(host.nv().SetNewDisplayMode(kSingle, kHdmi), 0);
  EXPECT_EQ(host.machine.TakeJournal(), SingleView(0, kInvalid));
  EXPECT_EQ(host.TakeLog(), "Check failed: !m_idCached.empty(). \n");
}

TEST(NvidiaV2Single, RefusalIsAFailureWithoutALogLine) {
  NvidiaHost host(kMachine);
  host.Connected();
  host.machine.Fail("NvAPI_SetViewEx", 1);
  EXPECT_EQ(host.Switch(kSingle, kHdmi), SingleView(0x20000, kRefused) + "0");
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(NvidiaV2Single, EveryOtherResultThanZeroIsAFailure) {
  for (const int32_t status : {-3, 1, 100}) {
    NvidiaHost host(kMachine);
    host.machine.Fail("NvAPI_SetViewEx", 1, sim::NvCode(status));
    EXPECT_EQ(host.Switch(kSingle, kHdmi), SingleView(0x20000, status) + "0");
  }
}

TEST(NvidiaV2Single, DriverWithoutViewsIsAFailure) {
  NvidiaHost host(kMachine);
  sim::RemoveNvApi(host.machine, "NvAPI_SetViewEx");
  EXPECT_EQ(host.Switch(kSingle, kHdmi), "0");
}

// --- Clone.

TEST(NvidiaV2Clone, NamesThePanelsUsualOutputAndTheOtherDisplays) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.Switch(kClone, kNb | kHdmi), CloneView(0x20000) + "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+hdmi");
  EXPECT_EQ(host.Switch(kClone, kNb | kCrt), CloneView(0x1) + "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
}

TEST(NvidiaV2Clone, NamesItAlsoWhereThePanelHangsElsewhere) {
  NvidiaHost host(kMachine);
  host.connector("internal").nvidia_output = 0x100;
  EXPECT_EQ(host.Switch(kClone, kNb | kHdmi), CloneView(0x20000, kInvalid) + "0");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(NvidiaV2Clone, NamesItAlsoWhereNoPanelIsMeant) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.Switch(kClone, kHdmi), CloneView(0x20000) + "1");
}

TEST(NvidiaV2Clone, TwoOtherDisplaysShareThePath) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.Switch(kClone, kNb | kHdmi | kCrt), CloneView(0x20001, kInvalid) + "0");
}

TEST(NvidiaV2Clone, OfThePanelAloneHasNoSecondOutput) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  EXPECT_EQ(host.nv().SetNewDisplayMode(kClone, kNb), 0);
  EXPECT_EQ(host.machine.TakeJournal(), CloneView(0, kInvalid));
  EXPECT_EQ(host.TakeLog(), "");  // the panel is not looked up
}

// --- Sizes, other modes, handles.

TEST(NvidiaV2Apply, TakesTheSizeThatIsGiven) {
  NvidiaHost host(kMachine);
  host.Connected();
  host.Forget();
  const NvidiaModeSettings settings = {800, 600, 16, 75};
  host.machine.Fail("NvAPI_SetViewEx", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.nv().ApplyDisplayMode(kSingle, kHdmi, &settings), 0);
  EXPECT_EQ(host.machine.TakeJournal(),
            SetView(0, "[" + ViewPath(0x20000, "800x600x16@75", kFirst) + "]", kRefused));
  EXPECT_EQ(host.nv().ApplyDisplayMode(kClone, kNb | kHdmi, &settings), 0);
  EXPECT_EQ(host.machine.TakeJournal(), SetView(1,
                                                "[" + ViewPath(0x10000, "800x600x16@75", kFirst) +
                                                    " " + ViewPath(0x20000, "800x600x16@75") + "]",
                                                kRefused));
}

TEST(NvidiaV2Apply, SizeIsInEffect) {
  NvidiaHost host(kMachine);
  host.Connected();
  const NvidiaModeSettings settings = {1280, 1024, 32, 60};
  EXPECT_EQ(host.nv().ApplyDisplayMode(kSingle, kCrt, &settings), 1);
  EXPECT_EQ(host.Settings(kCrt), "1280x1024x32@60 turned 0");
}

TEST(NvidiaV2Apply, OtherModesAreAViewOfNothing) {
  NvidiaHost host(kMachine);
  for (const uint32_t mode :
       {IMMonitor::DM_EXTEND, IMMonitor::DM_HSPAN, IMMonitor::DM_VSPAN, IMMonitor::DM_ADVANCED_P1,
        IMMonitor::DM_ADVANCED_P2, IMMonitor::DM_TRIPLE_EXTEND, IMMonitor::DM_TRIPLE_CLONE}) {
    EXPECT_EQ(host.Switch(mode, kNb | kHdmi),
              SetView(0, "none unused=[" + ViewPath(0, kUsualSize, kFirst) + "]", kInvalid) + "0")
        << mode;
  }
  EXPECT_EQ(host.Switch(0, kNb),
            SetView(0, "none unused=[" + ViewPath(0, kUsualSize, kFirst) + "]", kInvalid) + "0");
}

TEST(NvidiaV2Apply, WithoutADisplayHandleTheDriverDecides) {
  NvidiaHost host(kMachine);
  host.Connected();
  host.machine.Fail("NvAPI_EnumNvidiaDisplayHandle", 1);
  EXPECT_EQ(host.Switch(kSingle, kHdmi),
            SetView(0, "[" + ViewPath(0x20000, kUsualSize, kFirst) + "]", kBadHandle, "0") + "0");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2Apply, HandlesAreEnumeratedAnewForEverySwitch) {
  NvidiaHost host(kMachine);
  NvDisplayHandle before = nullptr;
  host.nv();
  EXPECT_TRUE(host.box().FirstDisplayHandle(&before));
  EXPECT_EQ(host.Switch(kClone, kNb | kHdmi), CloneView(0x20000) + "1");
  NvDisplayHandle behind = nullptr;
  EXPECT_TRUE(host.box().FirstDisplayHandle(&behind));
  EXPECT_NE(before, behind);
  EXPECT_EQ(host.Switch(kSingle, kHdmi), SingleView(0x20000) + "1");
}

// --- The first display handle.

TEST(NvidiaV2Handles, AreWalkedToTheEndAndTheFirstIsGiven) {
  NvidiaHost host("win7 nvidia: internal 1366x768 active, hdmi 1920x1080 active");
  host.nv();
  host.machine.JournalReads(true);
  NvDisplayHandle handle = nullptr;
  EXPECT_TRUE(host.box().FirstDisplayHandle(&handle));
  EXPECT_EQ(host.machine.TakeJournal(),
            "NvAPI_EnumNvidiaDisplayHandle(0)=0\n"
            "NvAPI_EnumNvidiaDisplayHandle(1)=0\n"
            "NvAPI_EnumNvidiaDisplayHandle(2)=-7\n");
  EXPECT_NE(handle, nullptr);
}

TEST(NvidiaV2Handles, NoneIsZeroAndFalse) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  int anything = 0;
  auto* handle = reinterpret_cast<NvDisplayHandle>(&anything);
  host.machine.Fail("NvAPI_EnumNvidiaDisplayHandle", 1);
  EXPECT_FALSE(host.box().FirstDisplayHandle(&handle));
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2Handles, MissingPlaceFailsItsCheck) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  EXPECT_FALSE(host.box().FirstDisplayHandle(nullptr));
  EXPECT_EQ(host.TakeLog(), "Check failed: pnvHandle != NULL. \n");
}

TEST(NvidiaV2Handles, TableEndsAt128) {
  NvidiaHost host("win7 nvidia: internal 1366x768 active");
  sim::Model& model = host.model();
  const sim::Connector panel = model.connectors[0];
  const sim::Source desktop = model.sources[0];
  for (uint32_t i = 0; i < 140; ++i) {
    sim::Connector connector = panel;
    connector.id = "far" + std::to_string(i);
    connector.target_id = 5000 + i;
    sim::Source source = desktop;
    source.source_id = 10 + i;
    source.device_name = "\\\\.\\DISPLAY" + std::to_string(10 + i);
    model.connectors.push_back(connector);
    model.sources.push_back(source);
    model.active.push_back({model.sources.size() - 1, model.connectors.size() - 1});
  }
  host.nv();
  const uint32_t asked = host.machine.Calls("NvAPI_EnumNvidiaDisplayHandle");
  NvDisplayHandle handle = nullptr;
  EXPECT_TRUE(host.box().FirstDisplayHandle(&handle));
  EXPECT_EQ(host.machine.Calls("NvAPI_EnumNvidiaDisplayHandle"), asked + 128);
  EXPECT_NE(handle, nullptr);
}

}  // namespace
