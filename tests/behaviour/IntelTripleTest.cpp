// Whole arrangements in one call of the Intel driver: three displays, and clone in a resolution.
#include <gtest/gtest.h>

#include "sim/EdidMaker.h"
#include "tests/behaviour/IntelHost.h"
#include "tests/support/EdidBlock.h"
#include "tests/support/ScriptedCui.h"

namespace {

using Bytes = ScriptedCui::Bytes;

constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kDvi = IMMonitor::MD_DVI;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;
constexpr uint32_t kDp = IMMonitor::MD_DP;
constexpr uint32_t kTripleExtend = IMMonitor::DM_TRIPLE_EXTEND;
constexpr uint32_t kTripleClone = IMMonitor::DM_TRIPLE_CLONE;
constexpr int32_t kFailed = static_cast<int32_t>(0x80004005);
constexpr char kSetDeviceData[] = "ICUIExternal8::SetDeviceData";
constexpr char kGetDeviceData[] = "ICUIExternal8::GetDeviceData";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";

constexpr char kThree[] = "win7 intel*3: internal 1366x768 active, hdmi 1920x1080, crt 1024x768";

// --- On the simulated driver.

struct Edges {
  int32_t left = 0;
  int32_t right = 0;
  int32_t top = 0;
  int32_t bottom = 0;
};

std::string Entry(uint32_t uid, const std::string& mode, const Edges& edges = {},
                  uint32_t scaling = 0) {
  std::ostringstream text;
  text << ", " << Hex(uid) << " " << mode << " left=" << edges.left << " right=" << edges.right
       << " top=" << edges.top << " bottom=" << edges.bottom
       << " orientation=0 scaling=" << scaling;
  return text.str();
}

std::string SetNView(const std::string& what, int32_t result = 0, uint32_t err = 0) {
  return std::string(kSetDeviceData) + "(n-view " + what + " err=" + std::to_string(err) +
         ")=" + std::to_string(result) + "\n";
}
std::string Probe(uint32_t count) {
  return SetNView("mode=0 probe=1 size=84 count=" + std::to_string(count));
}

std::string ThreeSideBySide() {
  return "mode=5 probe=0 size=220 count=3" + Entry(kPanelUid, "1366x768x32@60") +
         Entry(kHdmiUid, "1920x1080x32@60", {1366, 3286, 0, 1080}) +
         Entry(kCrtUid, "1024x768x32@60", {3286, 4310, 0, 768});
}

// The setting calls of a switch and its result.
std::string SetCalls(IntelHost* host, uint32_t mode, uint32_t displays) {
  const std::string result = host->Switch(mode, displays);
  std::istringstream lines(host->machine.TakeJournal());
  std::string calls;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(kSetDeviceData, 0) == 0) calls += line + "\n";
  }
  return calls + result;
}

TEST(IntelTriple, ExtendedStandsSideBySide) {
  IntelHost host(kThree);
  EXPECT_EQ(SetCalls(&host, kTripleExtend, kHdmi | kCrt),
            Probe(3) + SetNView(ThreeSideBySide()) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi+crt");
  EXPECT_EQ(host.Mode(), "512 0x13");
}

TEST(IntelTriple, CloneHasNoEdges) {
  IntelHost host(kThree);
  EXPECT_EQ(SetCalls(&host, kTripleClone, kNb | kHdmi | kCrt),
            Probe(3) +
                SetNView("mode=3 probe=0 size=220 count=3" + Entry(kPanelUid, "1366x768x32@60") +
                         Entry(kHdmiUid, "1920x1080x32@60") + Entry(kCrtUid, "1024x768x32@60")) +
                "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+hdmi+crt");
}

TEST(IntelTriple, RunsAsEverySwitchBeforeIt) {
  IntelHost host(kThree);
  host.machine.Config("Settings:Intel", "Support Aspect Ratio Workaround", 1);
  const std::string protocol = host.SwitchProtocol(kTripleExtend, kNb | kHdmi | kCrt);
  const std::string start = kEnumDevices + Downgrade() + kSleepSecond + kPreload + kEnumDevices +
                            kGetAspectScaling + Probe(3);
  EXPECT_EQ(protocol.substr(0, start.size()), start);
  const std::string end = SetNView(ThreeSideBySide()) + SetAspectScaling(2) + "1";
  EXPECT_EQ(protocol.substr(protocol.size() - end.size()), end);
}

TEST(IntelTriple, FailedProbeEndsIt) {
  IntelHost host(kThree, kChecked);
  host.machine.Fail(kSetDeviceData, 1);
  EXPECT_EQ(SetCalls(&host, kTripleExtend, kHdmi | kCrt),
            SetNView("mode=0 probe=1 size=84 count=3", kFailed, 7) + "0");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: SUCCEEDED(hr). \n"
            "ERROR_REPORT Check failed: err == IGFX_SUCCESS. \n");
}

TEST(IntelTriple, ProbeWithAnErrorGoesOn) {
  IntelHost host(kThree, kChecked);
  host.machine.Fail(kSetDeviceData, 1, 5);
  EXPECT_EQ(SetCalls(&host, kTripleExtend, kHdmi | kCrt),
            SetNView("mode=0 probe=1 size=84 count=3", 0, 5) + SetNView(ThreeSideBySide()) + "1");
  EXPECT_EQ(host.TakeLog(), "Check failed: err == IGFX_SUCCESS. \n");
}

TEST(IntelTriple, FailedWriteIsLogged) {
  IntelHost host(kThree);
  host.machine.Fail(kSetDeviceData, 2);
  EXPECT_EQ(SetCalls(&host, kTripleClone, kHdmi | kCrt).back(), '0');
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Set up Triple display output failed, hr = -2147467259, err = 7\n");
}

TEST(IntelTriple, WriteWithAnErrorIsAFailure) {
  IntelHost host(kThree);
  host.machine.Fail(kSetDeviceData, 2, 5);
  EXPECT_EQ(SetCalls(&host, kTripleExtend, kHdmi | kCrt).back(), '0');
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Set up Triple display output failed, hr = 0, err = 5\n");
}

// A failure is not answered by a second try, unlike one of single and clone.
TEST(IntelTriple, FailureIsFinal) {
  for (const uint32_t mode : {kTripleExtend, kTripleClone}) {
    IntelHost host(kThree);
    host.machine.Fail(kSetDeviceData, 2);
    const std::string protocol = host.SwitchProtocol(mode, kHdmi | kCrt);
    EXPECT_EQ(CountOf(protocol, kSetDeviceData), 2u);
    EXPECT_EQ(CountOf(protocol, kSleepSecond), 1u);
  }
}

TEST(IntelTriple, EdidThatCannotBeReadGivesTheUsualSize) {
  IntelHost host(kThree);
  host.machine.Fail(kGetDeviceData, 2);  // that of the HDMI display
  EXPECT_EQ(SetCalls(&host, kTripleExtend, kHdmi | kCrt),
            Probe(3) +
                SetNView("mode=5 probe=0 size=220 count=3" + Entry(kPanelUid, "1366x768x32@60") +
                         Entry(kHdmiUid, "1024x768x32@60", {1366, 2390, 0, 768}) +
                         Entry(kCrtUid, "1024x768x32@60", {2390, 3414, 0, 768})) +
                "1");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "WARNING Failed to retrieve EDID from monitor, id = 0x10\n");
}

TEST(IntelTriple, MonitorWithoutAPreferredTimingGetsTheUsualSize) {
  for (const bool preferred : {true, false}) {
    IntelHost host(kThree);
    EdidBlock block;
    if (preferred) {
      block.PanelTiming().Put(54, {0, 1});  // flagged, but the first descriptor is none
    } else {
      block.PanelTiming(false);
    }
    host.model().connectors[1].monitor->edid = block.Sum().bytes();
    EXPECT_NE(SetCalls(&host, kTripleClone, kHdmi | kCrt).find(Entry(kHdmiUid, "1024x768x32@60")),
              std::string::npos);
    EXPECT_EQ(host.TakeLog(), "");
  }
}

TEST(IntelTriple, RefreshRateIsThatOfThePreferredTiming) {
  for (const uint32_t rate : {75u, 50u}) {
    IntelHost host(kThree);
    sim::Monitor& crt = *host.model().connectors[2].monitor;
    crt.modes.push_back({1024, 768, 32, rate});
    crt.edid = sim::MakeEdid("Veld A1", {1024, 768, 32, rate});
    EXPECT_EQ(
        SetCalls(&host, kTripleExtend, kHdmi | kCrt),
        Probe(3) +
            SetNView("mode=5 probe=0 size=220 count=3" + Entry(kPanelUid, "1366x768x32@60") +
                     Entry(kHdmiUid, "1920x1080x32@60", {1366, 3286, 0, 1080}) +
                     Entry(kCrtUid, "1024x768x32@" + std::to_string(rate), {3286, 4310, 0, 768})) +
            "1");
  }
}

TEST(IntelTriple, DamagedEdidEndsTheSwitchAndRestoresTheAspect) {
  IntelHost host(kThree);
  host.machine.Config("Settings:Intel", "Support Aspect Ratio Workaround", 1);
  host.model().connectors[1].monitor->edid = EdidBlock().Spoil().bytes();
  EXPECT_EQ(host.Switch(kTripleExtend, kNb | kHdmi | kCrt),
            "EDID::ValidateEDIDChecksum() function failed");
  const std::string journal = host.machine.TakeJournal();
  const std::string end = Probe(3) + SetAspectScaling(2);
  ASSERT_GT(journal.size(), end.size());
  EXPECT_EQ(journal.substr(journal.size() - end.size()), end);
}

// --- Whether remembered resolutions are put back.

TEST(IntelReset, IsLeftOutOnceBehindATripleExtendedDesktop) {
  IntelHost host(kThree);
  EXPECT_EQ(host.intel().ShouldResetDisplaySettingAfterSwtich(), 1);
  EXPECT_EQ(host.Switch(kTripleExtend, kHdmi | kCrt), "1");
  EXPECT_EQ(host.intel().ShouldResetDisplaySettingAfterSwtich(), 0);
  EXPECT_EQ(host.intel().ShouldResetDisplaySettingAfterSwtich(), 1);
}

TEST(IntelReset, StaysBehindOtherSwitchesAndFailures) {
  IntelHost host(kThree);
  EXPECT_EQ(host.Switch(kTripleClone, kHdmi | kCrt), "1");
  EXPECT_EQ(host.intel().ShouldResetDisplaySettingAfterSwtich(), 1);
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kNb | kCrt), "1");
  EXPECT_EQ(host.intel().ShouldResetDisplaySettingAfterSwtich(), 1);
  host.machine.Fail(kSetDeviceData, 2);
  EXPECT_EQ(host.Switch(kTripleExtend, kHdmi | kCrt), "0");
  EXPECT_EQ(host.intel().ShouldResetDisplaySettingAfterSwtich(), 1);
}

// --- By bytes.

class IntelBlocks : public testing::Test {
 protected:
  static constexpr uint32_t kUids[] = {0x501, 0x502, 0x503, 0x505, 0x507};

  IntelBlocks() : host_("win7 intel: internal 1366x768 active") {
    for (const uint32_t uid : kUids) cui_.devices.push_back({uid, uid - 0x500, 2});
    cui_.get = [](const GUID&, Bytes*, uint32_t*) { return E_FAIL; };
    Answer(0);
    cui_.Install(&host_.machine);
  }

  /// What a probe is told; 0: the size that the count needs.
  void Answer(uint32_t size) {
    cui_.set = [=](const GUID&, Bytes* block, uint32_t* err) {
      *err = 0;
      const uint32_t needed = 16 + 68 * ScriptedCui::Get(*block, 12);
      if (ScriptedCui::Get(*block, 4) != 0) ScriptedCui::Put(block, 8, size != 0 ? size : needed);
      return S_OK;
    };
  }

  /// The blocks written, EDID reads left out.
  std::vector<Bytes> Switch(uint32_t mode, uint32_t displays) {
    cui_.given.clear();
    host_.Switch(mode, displays);
    std::vector<Bytes> written;
    for (const Bytes& block : cui_.given) {
      if (block.size() != 268) written.push_back(block);
    }
    return written;
  }

  static Bytes Block(uint32_t size, uint32_t mode, uint32_t probe, uint32_t count) {
    Bytes block(size, 0);
    ScriptedCui::Put(&block, 0, mode);
    ScriptedCui::Put(&block, 4, probe);
    ScriptedCui::Put(&block, 8, size);
    ScriptedCui::Put(&block, 12, count);
    return block;
  }
  static void PutEntry(Bytes* block, uint32_t index, const std::vector<uint32_t>& first_five) {
    for (size_t i = 0; i < first_five.size(); ++i) {
      ScriptedCui::Put(block, 16 + 68 * index + 4 * i, first_five[i]);
    }
  }
  static void PutEdges(Bytes* block, uint32_t index, const std::vector<uint32_t>& edges) {
    for (size_t i = 0; i < edges.size(); ++i) {
      ScriptedCui::Put(block, 16 + 68 * index + 32 + 4 * i, edges[i]);
    }
  }

  IntelHost host_;
  ScriptedCui cui_;
};

TEST_F(IntelBlocks, TripleExtend) {
  const std::vector<Bytes> written = Switch(kTripleExtend, kNb | kCrt | kDp);
  ASSERT_EQ(written.size(), 2u);
  EXPECT_EQ(written[0], Block(84, 0, 1, 3));
  Bytes expected = Block(220, 5, 0, 3);
  PutEntry(&expected, 0, {0x502, 1024, 768, 60, 32});
  PutEntry(&expected, 1, {0x507, 1024, 768, 60, 32});
  PutEdges(&expected, 1, {1024, 2048, 0, 768});
  PutEntry(&expected, 2, {0x501, 1024, 768, 60, 32});
  PutEdges(&expected, 2, {2048, 3072, 0, 768});
  EXPECT_EQ(written[1], expected);
}

TEST_F(IntelBlocks, TripleClone) {
  const std::vector<Bytes> written = Switch(kTripleClone, kDvi | kHdmi);
  ASSERT_EQ(written.size(), 2u);
  EXPECT_EQ(written[0], Block(84, 0, 1, 3));
  Bytes expected = Block(220, 3, 0, 3);
  PutEntry(&expected, 0, {0x502, 1024, 768, 60, 32});
  PutEntry(&expected, 1, {0x505, 1024, 768, 60, 32});
  PutEntry(&expected, 2, {0x503, 1024, 768, 60, 32});
  EXPECT_EQ(written[1], expected);
}

TEST_F(IntelBlocks, FourthDisplayIsLeftOut) {
  const std::vector<Bytes> written = Switch(kTripleClone, kNb | kHdmi | kDvi | kDp | kCrt);
  ASSERT_EQ(written.size(), 2u);
  Bytes expected = Block(220, 3, 0, 3);
  PutEntry(&expected, 0, {0x502, 1024, 768, 60, 32});
  PutEntry(&expected, 1, {0x505, 1024, 768, 60, 32});
  PutEntry(&expected, 2, {0x503, 1024, 768, 60, 32});
  EXPECT_EQ(written[1], expected);
}

TEST_F(IntelBlocks, MissingEntriesStayZero) {
  const std::vector<Bytes> written = Switch(kTripleExtend, IMMonitor::MD_TV);
  ASSERT_EQ(written.size(), 2u);
  Bytes expected = Block(220, 5, 0, 3);
  PutEntry(&expected, 0, {0x502, 1024, 768, 60, 32});
  EXPECT_EQ(written[1], expected);
}

TEST_F(IntelBlocks, DriversSizeCountsUnlessItIsTooSmall) {
  Answer(300);
  EXPECT_EQ(Switch(kTripleClone, kDvi | kHdmi).at(1).size(), 300u);
  for (const uint32_t size : {1u, 84u, 219u}) {
    Answer(size);
    EXPECT_EQ(Switch(kTripleClone, kDvi | kHdmi).at(1).size(), 220u) << size;
  }
}

TEST_F(IntelBlocks, UnknownDeviceHasNoUid) {
  cui_.devices.clear();
  const std::vector<Bytes> written = Switch(kTripleClone, kDvi | kHdmi);
  for (uint32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(ScriptedCui::Get(written.at(1), 16 + 68 * i), 0u);
    EXPECT_EQ(ScriptedCui::Get(written.at(1), 16 + 68 * i + 4), 1024u);
  }
}

// --- Clone in a resolution.

class IntelCloneWithResolution : public IntelBlocks {
 protected:
  IntelCloneWithResolution() {
    dm_.dmPelsWidth = 800;
    dm_.dmPelsHeight = 600;
    dm_.dmDisplayFrequency = 75;
    dm_.dmBitsPerPel = 16;
  }

  BOOL Set(uint32_t mode, uint32_t displays) {
    host_.Forget();
    uint32_t ignored = 0;
    host_.intel().GetCurrentDisplayMode(&ignored, &ignored);  // lists the devices
    cui_.given.clear();
    return host_.box().ExOf(&host_.intel())->SetDisplayModeWithSettings(mode, displays, &dm_);
  }
  void LetModeBeRead() {
    cui_.get = [](const GUID&, Bytes*, uint32_t*) { return S_OK; };
  }

  DEVMODEW dm_ = {};
};

TEST_F(IntelCloneWithResolution, WritesBothDisplays) {
  LetModeBeRead();
  EXPECT_EQ(Set(IMMonitor::DM_CLONE, kCrt), 1);
  ASSERT_EQ(cui_.given.size(), 2u);
  EXPECT_EQ(cui_.given[0], Block(84, 0, 1, 2));
  Bytes expected = Block(152, 3, 0, 2);
  PutEntry(&expected, 0, {0x502, 800, 600, 75, 16});
  ScriptedCui::Put(&expected, 16 + 60, 4);
  PutEntry(&expected, 1, {0x501, 800, 600, 75, 16});
  ScriptedCui::Put(&expected, 16 + 68 + 60, 64);
  EXPECT_EQ(cui_.given[1], expected);
}

TEST_F(IntelCloneWithResolution, OnlyPanelAndCrtAreScaled) {
  LetModeBeRead();
  const std::pair<uint32_t, uint32_t> others[] = {{kHdmi, 0x505}, {kDvi, 0x503}, {kDp, 0x507}};
  for (const auto& [display, uid] : others) {
    EXPECT_EQ(Set(32, kNb | display), 1);
    EXPECT_EQ(ScriptedCui::Get(cui_.given.at(1), 16 + 60), 4u);
    EXPECT_EQ(ScriptedCui::Get(cui_.given.at(1), 16 + 68), uid);
    EXPECT_EQ(ScriptedCui::Get(cui_.given.at(1), 16 + 68 + 60), 0u);
  }
}

TEST_F(IntelCloneWithResolution, ThirdDisplayIsLeftOut) {
  LetModeBeRead();
  EXPECT_EQ(Set(64, kCrt | kHdmi), 1);
  Bytes expected = Block(152, 3, 0, 2);
  PutEntry(&expected, 0, {0x502, 800, 600, 75, 16});
  ScriptedCui::Put(&expected, 16 + 60, 4);
  PutEntry(&expected, 1, {0x505, 800, 600, 75, 16});
  EXPECT_EQ(cui_.given.at(1), expected);
}

TEST_F(IntelCloneWithResolution, DevicesAreThoseListedLast) {
  host_.Forget();
  cui_.given.clear();
  EXPECT_TRUE(host_.box().ExOf(&host_.intel())->SetDisplayModeWithSettings(2, kCrt, &dm_));
  EXPECT_EQ(ScriptedCui::Get(cui_.given.at(1), 16), 0u);  // nobody has listed any
}

TEST_F(IntelCloneWithResolution, GetMonitorEdidListsThem) {
  LetModeBeRead();
  EdidBlob ignored;
  host_.box().GetMonitorEDID(&host_.intel(), kCrt, &ignored);
  cui_.given.clear();
  EXPECT_TRUE(host_.box().ExOf(&host_.intel())->SetDisplayModeWithSettings(2, kCrt, &dm_));
  EXPECT_EQ(ScriptedCui::Get(cui_.given.at(1), 16), 0x502u);
}

TEST_F(IntelCloneWithResolution, OtherModesAreRefusedAtOnce) {
  LetModeBeRead();
  for (const uint32_t mode : {0u, 1u, 4u, 8u, 16u, 128u, 256u, 512u, 1024u}) {
    EXPECT_EQ(Set(mode, kNb | kCrt), 0) << mode;
    EXPECT_TRUE(cui_.given.empty()) << mode;
  }
}

TEST_F(IntelCloneWithResolution, LeavesTheResetOutOnce) {
  LetModeBeRead();
  for (const uint32_t mode : {2u, 32u, 64u}) {
    EXPECT_EQ(Set(mode, kNb | kCrt), 1) << mode;
    EXPECT_EQ(host_.intel().ShouldResetDisplaySettingAfterSwtich(), 0) << mode;
    EXPECT_EQ(host_.intel().ShouldResetDisplaySettingAfterSwtich(), 1) << mode;
  }
}

TEST(IntelCloneWithSettings, EachFailedCallFails) {
  const struct {
    uint32_t nth;
    uint32_t code;
    BOOL result;
    const char* log;
  } cases[] = {
      {1, 0, 0, "Check failed: SUCCEEDED(hr). \nCheck failed: err == IGFX_SUCCESS. \n"},
      {1, 5, 1, "Check failed: err == IGFX_SUCCESS. \n"},
      {2, 0, 0, "Check failed: SUCCEEDED(hr). \nCheck failed: err == IGFX_SUCCESS. \n"},
      {2, 5, 0, "Check failed: err == IGFX_SUCCESS. \n"},
  };
  for (const auto& c : cases) {
    IntelHost host("win7 intel: internal 1366x768 active, crt 1024x768", kChecked);
    host.Mode();
    host.Forget();
    host.machine.Fail(kSetDeviceData, c.nth, c.code);
    DEVMODEW dm = {};
    dm.dmPelsWidth = 1024;
    dm.dmPelsHeight = 768;
    dm.dmDisplayFrequency = 60;
    dm.dmBitsPerPel = 32;
    IMMonitorEx& ex = *host.box().ExOf(&host.intel());
    EXPECT_EQ(ex.SetDisplayModeWithSettings(2, kCrt, &dm), c.result) << c.nth << " " << c.code;
    EXPECT_EQ(host.TakeLog(), c.log);
    EXPECT_EQ(host.intel().ShouldResetDisplaySettingAfterSwtich(), c.result == 0 ? 1 : 0);
  }
}

TEST(IntelCloneWithSettings, WantsTwoDisplays) {
  IntelHost host("win7 intel: internal 1366x768 active, crt 1024x768", kChecked);
  host.Mode();
  host.Forget();
  DEVMODEW dm = {};
  host.box().ExOf(&host.intel())->SetDisplayModeWithSettings(2, kNb, &dm);
  EXPECT_EQ(host.TakeLog().rfind("Check failed: CountBits(displays_include_nb) == 2. \n", 0), 0u);
}

}  // namespace
