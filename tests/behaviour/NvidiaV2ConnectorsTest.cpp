// How NvidiaMMImplV2 learns what is behind which output, and finds it again.
#include <gtest/gtest.h>

#include "tests/support/NvidiaHost.h"

namespace {

constexpr char kMachine[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kTv = IMMonitor::MD_TV;
constexpr uint32_t kDvi = IMMonitor::MD_DVI;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;
constexpr uint32_t kDp = IMMonitor::MD_DP;

std::string OneBitCheck() { return "Check failed: CountBits(imm_display) == 1. \n"; }

// A notebook with these connector types besides the panel's, one after the other from output 0x1.
std::unique_ptr<NvidiaHost> HostWithTypes(const std::vector<uint32_t>& types,
                                          const std::wstring& switches = L"") {
  auto host = std::make_unique<NvidiaHost>("win7 nvidia: internal 1366x768 active", switches);
  for (size_t i = 0; i < types.size(); ++i) {
    sim::Connector connector = host->connector("internal");
    connector.id = "plug" + std::to_string(i);
    connector.nvidia_output = kNvidiaOutputs[i];
    connector.nvidia_connector_type = types[i];
    connector.target_id += 100 + static_cast<uint32_t>(i);
    host->model().connectors.push_back(connector);
  }
  return host;
}

// What a mask of outputs stands for: "0x11 (2)".
std::string Displays(NvidiaHost* host, uint32_t nv_mask) {
  uint32_t displays = 0xEE;
  uint32_t count = 0xEE;
  host->box().NvMaskToDisplays(&host->nv(), nv_mask, &displays, &count);
  return Hex(displays) + " (" + std::to_string(count) + ")";
}

// --- Connectors.

TEST(NvidiaV2Connectors, EveryTypeReadsAsItsDisplay) {
  const struct {
    uint32_t type;
    const char* displays;
  } rows[] = {{0, "0x2 (1)"},    {16, "0x4 (1)"},  {17, "0x4 (1)"},  {19, "0x4 (1)"},
              {20, "0x4 (1)"},   {22, "0x4 (1)"},  {23, "0x10 (1)"}, {97, "0x10 (1)"},
              {99, "0x10 (1)"},  {32, "0x8 (1)"},  {33, "0x8 (1)"},  {48, "0x8 (1)"},
              {49, "0x8 (1)"},   {50, "0x8 (1)"},  {56, "0x8 (1)"},  {57, "0x8 (1)"},
              {64, "0x1 (1)"},   {71, "0x1 (1)"},  {70, "0x20 (1)"}, {72, "0x20 (1)"},
              {100, "0x20 (1)"}, {101, "0x20 (1)"}};
  for (const auto& row : rows) {
    const std::unique_ptr<NvidiaHost> host = HostWithTypes({row.type});
    EXPECT_EQ(Displays(host.get(), 0x1), row.displays) << row.type;
  }
}

TEST(NvidiaV2Connectors, TypeWithoutADisplayCountsWithoutABit) {
  for (const uint32_t type : {65u, 24u, 112u, 113u, 0xFFFFFFFFu}) {
    const std::unique_ptr<NvidiaHost> host = HostWithTypes({type});
    EXPECT_EQ(Displays(host.get(), 0x1), "0x0 (1)") << type;
    EXPECT_EQ(Displays(host.get(), 0x10001), "0x1 (2)") << type;
  }
}

TEST(NvidiaV2Connectors, AllTwelveOutputsAreRecognised) {
  for (const uint32_t output : kNvidiaOutputs) {
    NvidiaHost host("win7 nvidia: internal 1366x768 active");
    host.connector("internal").nvidia_output = output;
    EXPECT_EQ(host.Connected(), "0x1 (1)") << output;
    EXPECT_EQ(host.box().NvOutputOfDisplay(&host.nv(), kNb), output);
    EXPECT_EQ(CountOf(host.Switch(IMMonitor::DM_SINGLE, kNb), "[mask=" + Hex(output) + " "), 1u)
        << output;
  }
}

TEST(NvidiaV2Connectors, OutputBesideTheTwelveIsNotLookedAt) {
  NvidiaHost host("win7 nvidia: internal 1366x768 active, crt 1024x768");
  host.connector("crt").nvidia_output = 0x10;
  host.nv();
  EXPECT_EQ(host.machine.Calls("NvAPI_GPU_GetConnectorInfo"), 1u);
  EXPECT_EQ(host.Connected(), "0x1 (1)");
}

TEST(NvidiaV2Connectors, AreToldAtLevelTwoInTheOrderOfTheWalk) {
  NvidiaHost host("win7 nvidia: internal 1366x768 active, crt 1024x768, hdmi 1920x1080", kChecked);
  host.bare();
  host.ForgetLog();
  host.nv();
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "INFO NVAPI interface version: NVAPI Open Interface 1.0\n"
            "INFO Connector type recognized: nv_mask = 0x1, type = 0\n"
            "INFO Connector type recognized: nv_mask = 0x10000, type = 0x40\n"
            "INFO Connector type recognized: nv_mask = 0x20000, type = 0x61\n");
}

TEST(NvidiaV2Connectors, OneThatTheDriverRefusesIsLeftOutAndDoesNotCount) {
  NvidiaHost host("win7 nvidia: internal 1366x768 active, crt 1024x768, hdmi 1920x1080");
  host.ostrel();
  host.machine.Fail("NvAPI_GPU_GetConnectorInfo", 1);
  EXPECT_EQ(host.Connected(), "0x11 (2)");
  EXPECT_EQ(host.box().NvOutputOfDisplay(&host.nv(), kCrt), 0u);
}

TEST(NvidiaV2Connectors, KnownTypeStays) {
  NvidiaHost host(kMachine);
  host.nv();
  host.connector("hdmi").nvidia_connector_type = 70;
  host.box().RecognizeConnectors(&host.nv());
  EXPECT_EQ(host.Connected(), "0x11 (2)");
}

TEST(NvidiaV2Connectors, OneThatWasRefusedIsLearntLater) {
  NvidiaHost host(kMachine);
  host.ostrel();
  host.machine.Fail("NvAPI_GPU_GetConnectorInfo", 2);
  EXPECT_EQ(host.Connected(), "0x1 (1)");
  host.box().RecognizeConnectors(&host.nv());
  EXPECT_EQ(host.Connected(), "0x11 (2)");
}

TEST(NvidiaV2Connectors, AreLearntOfTheCurrentGpuOnly) {
  NvidiaHost host("win7 nvidia, nvidia: internal 1366x768 active, hdmi@2 1920x1080");
  host.nv();
  EXPECT_EQ(host.machine.Calls("NvAPI_GPU_GetAllOutputs"), 1u);
  EXPECT_EQ(host.box().NvOutputOfDisplay(&host.nv(), kHdmi), 0u);
  host.machine.Unplug("internal");
  EXPECT_EQ(host.Connected(), "0x0 (0)");
}

TEST(NvidiaV2Connectors, LaterChangeIsNotNoticed) {
  NvidiaHost host(kMachine);
  host.nv();
  host.connector("internal").nvidia_connector_type = 71;
  host.Connected();
  EXPECT_EQ(host.box().DisplayToConnector(&host.nv(), kNb), 64u);
}

TEST(NvidiaV2Connectors, GpusAreListedOnlyWhereNoneIsKnown) {
  NvidiaHost host(kMachine);
  host.nv();
  EXPECT_EQ(host.machine.Calls("NvAPI_EnumPhysicalGPUs"), 1u);
  host.box().RecognizeConnectors(&host.nv());
  EXPECT_EQ(host.machine.Calls("NvAPI_EnumPhysicalGPUs"), 1u);
}

TEST(NvidiaV2Connectors, RecognisingNeedsTheDriver) {
  NvidiaHost host(kMachine, kChecked);
  host.bare();
  host.ForgetLog();
  host.box().RecognizeConnectors(host.bare());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: m_nvProxy != NULL. \n"
            "ERROR Calling EnumPhysicalGPUs failed\n");
}

// --- From displays to connector types and outputs.

TEST(NvidiaV2Connectors, DisplayIsLookedUpByOneType) {
  const struct {
    uint32_t display;
    uint32_t type;
  } rows[] = {{kNb, 64}, {kCrt, 0}, {kDvi, 49}, {kHdmi, 97}, {kDp, 70}, {kTv, 0xFFFFFFFF}};
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  for (const auto& row : rows) {
    EXPECT_EQ(host.box().DisplayToConnector(&host.nv(), row.display), row.type) << row.display;
  }
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2Connectors, PanelOnAnEmbeddedDisplayPortIsLookedUpByItsType) {
  NvidiaHost host("win7 nvidia: edp 1366x768 active, hdmi 1920x1080");
  host.nv();
  EXPECT_EQ(host.box().DisplayToConnector(&host.nv(), kNb), 71u);
  EXPECT_EQ(host.box().DisplayToConnector(&host.nv(), kHdmi), 97u);
  EXPECT_EQ(host.box().NvOutputOfDisplay(&host.nv(), kNb), 0x10000u);
  EXPECT_EQ(host.Connected(), "0x11 (2)");
}

// One such connector anywhere hides the panel that hangs on the other kind.
TEST(NvidiaV2Connectors, OneEmbeddedDisplayPortDecidesForAllPanels) {
  const std::unique_ptr<NvidiaHost> host = HostWithTypes({71});
  host->nv();
  EXPECT_EQ(host->box().NvOutputOfDisplay(&host->nv(), kNb), 0x1u);
}

TEST(NvidiaV2Connectors, LookUpOfNoneOrSeveralFailsItsCheckOnce) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  EXPECT_EQ(host.box().DisplayToConnector(&host.nv(), 0), 0xFFFFFFFFu);
  EXPECT_EQ(host.TakeLog(), OneBitCheck());
  EXPECT_EQ(host.box().DisplayToConnector(&host.nv(), kNb | kHdmi), 0xFFFFFFFFu);
  EXPECT_EQ(host.TakeLog(), OneBitCheck());
  EXPECT_EQ(host.box().NvOutputOfDisplay(&host.nv(), kNb | kHdmi), 0u);
  EXPECT_EQ(host.TakeLog(), OneBitCheck());
}

TEST(NvidiaV2Connectors, OfSeveralOutputsOfATypeTheLowestIsTaken) {
  const std::unique_ptr<NvidiaHost> host = HostWithTypes({49, 97, 49, 97});
  host->nv();
  EXPECT_EQ(host->box().NvOutputOfDisplay(&host->nv(), kDvi), 0x1u);
  EXPECT_EQ(host->box().NvOutputOfDisplay(&host->nv(), kHdmi), 0x2u);
  EXPECT_EQ(host->box().NvOutputOfDisplay(&host->nv(), kDp), 0u);
}

TEST(NvidiaV2Connectors, ScartTelevisionReadsAsHdmiButIsNotFoundByIt) {
  const std::unique_ptr<NvidiaHost> host = HostWithTypes({23});
  EXPECT_EQ(Displays(host.get(), 0x1), "0x10 (1)");
  EXPECT_EQ(host->box().NvOutputOfDisplay(&host->nv(), kHdmi), 0u);
}

TEST(NvidiaV2Connectors, MiniHdmiReadsAsHdmiButIsNotFoundByIt) {
  const std::unique_ptr<NvidiaHost> host = HostWithTypes({99, 97});
  host->nv();
  EXPECT_EQ(host->box().NvOutputOfDisplay(&host->nv(), kHdmi), 0x2u);
}

// --- Masks.

TEST(NvidiaV2Masks, TwoOutputsOfOneDisplayBothCountAndTheLaterIsRemembered) {
  const std::unique_ptr<NvidiaHost> host = HostWithTypes({49, 49});
  EXPECT_EQ(Displays(host.get(), 0x3), "0x8 (2)");
  host->Forget();
  host->nv().SetNewDisplayMode(IMMonitor::DM_SINGLE, kDvi);
  EXPECT_EQ(CountOf(host->machine.TakeJournal(), "paths=[[mask=0x2 "), 1u);
}

TEST(NvidiaV2Masks, LastOutputMetStaysRemembered) {
  const std::unique_ptr<NvidiaHost> host = HostWithTypes({49, 97});
  Displays(host.get(), 0x1);
  Displays(host.get(), 0x2);
  host->Forget();
  host->nv().SetNewDisplayMode(IMMonitor::DM_SINGLE, kDvi | kHdmi);
  EXPECT_EQ(CountOf(host->machine.TakeJournal(), "paths=[[mask=0x3 "), 1u);
}

TEST(NvidiaV2Masks, UnknownOutputsAreLeftOut) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(Displays(&host, 0x8), "0x0 (0)");
  EXPECT_EQ(Displays(&host, 0x30008), "0x11 (2)");
}

TEST(NvidiaV2Masks, ZeroFailsItsCheckAndLeavesTheOutputs) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  EXPECT_EQ(Displays(&host, 0), "0xee (238)");
  EXPECT_EQ(host.TakeLog(), "Check failed: nv_mask > 0. \n");
}

TEST(NvidiaV2Masks, MissingPlacesFailTheirChecks) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  uint32_t number = 0xEE;
  host.box().NvMaskToDisplays(&host.nv(), 0, nullptr, nullptr);
  EXPECT_EQ(host.TakeLog(),
            "Check failed: imm_displays != NULL. \nCheck failed: display_count != NULL. \n"
            "Check failed: nv_mask > 0. \n");
  host.box().NvMaskToDisplays(&host.nv(), 1, nullptr, &number);
  EXPECT_EQ(host.TakeLog(), "Check failed: imm_displays != NULL. \n");
  host.box().NvMaskToDisplays(&host.nv(), 1, &number, nullptr);
  EXPECT_EQ(host.TakeLog(), "Check failed: display_count != NULL. \n");
  EXPECT_EQ(number, 0xEEu);
}

}  // namespace
