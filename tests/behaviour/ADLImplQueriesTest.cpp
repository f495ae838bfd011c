// What ADLImpl reports: connected and active displays, the mode, and the rest.
#include "tests/behaviour/ADLImplHost.h"

namespace {

constexpr char kInfoGet[] = "ADL_Display_DisplayInfo_Get";
constexpr char kMapGet[] = "ADL_Display_DisplayMapConfig_Get";

// --- Connected.

TEST(ADLImplConnected, AreThoseOfTheAdapterWithTheirFlags) {
  AdlHost host(
      "win7 amd: internal 1366x768 active, crt 1280x1024, tv 800x600, dvi 1280x1024, hdmi "
      "1920x1080, dp");
  EXPECT_EQ(host.Connected(), "0x1f (5)");
  EXPECT_EQ(host.Calls([&] { host.Connected(); }),
            "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n");
}

TEST(ADLImplConnected, UnknownTypeCountsWithoutAFlag) {
  AdlHost host(kAdlTwo);
  host.output(1).display_type = 5;
  EXPECT_EQ(host.Connected(), "0x1 (2)");
}

TEST(ADLImplConnected, TwoOfOneKindAreTwo) {
  AdlHost host("win7 amd: internal 1366x768 active, hdmi 1920x1080, hdmi2 1280x720");
  EXPECT_EQ(host.Connected(), "0x11 (3)");
}

TEST(ADLImplConnected, HybridMachineIsRefreshedFirst) {
  AdlHost host("win7 amd, intel: internal 1366x768 active, crt 1280x1024");
  host.Forget();
  EXPECT_EQ(host.Calls([&] { EXPECT_EQ(host.Connected(), "0x3 (2)"); }),
            "ADL_Main_Control_Refresh()=0\nADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n");
}

TEST(ADLImplConnected, PowerXpressAloneIsNotRefreshed) {
  AdlHost host(kAdlTwo);
  host.driver().powerxpress = 4;
  host.Forget();
  EXPECT_EQ(host.Calls([&] { host.Connected(); }),
            "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n");
}

TEST(ADLImplConnected, AreThoseOfTheRecordAtTheActivePosition) {
  AdlHost host(kAdlTwo);
  host.driver().adl_indices = {1, 0};
  host.Forget();
  EXPECT_EQ(host.Calls([&] { EXPECT_EQ(host.Connected(), "0x3 (2)"); }),
            "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n");
}

TEST(ADLImplConnected, FailedCallIsMadeAgainAfterAReload) {
  for (const int32_t result : {-1, 1}) {
    AdlHost host(kAdlTwo);
    host.Forget();
    host.machine.Fail(kInfoGet, 1, AdlResultCode(result));
    const std::string told = std::to_string(result);
    EXPECT_EQ(host.Calls([&] { EXPECT_EQ(host.Connected(), "0x3 (2)"); }),
              "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=" + told + "\n" + AdlReloadText() +
                  "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n");
    EXPECT_EQ(host.TakeLogWithSeverity(),
              "ERROR Calling to ADL_Display_DisplayInfo_Get, rv = " + told + "\n" + kAdlActiveLine);
  }
}

TEST(ADLImplConnected, TwoFailuresAreAFailureAndTheListIsGone) {
  AdlHost host(kAdlTwo, kAdlChecked);
  host.Ready();
  host.machine.Fail(kInfoGet, 1, AdlResultCode(-1), sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.Connected(), "failed");
  EXPECT_EQ(
      host.TakeLogWithSeverity(),
      std::string("ERROR Calling to ADL_Display_DisplayInfo_Get, rv = -1\n") + kAdlActiveLine);
  EXPECT_EQ(host.Held(), "ADL session\n");
  host.machine.ClearFaults();
  // The switch behind it has no list to look the display up in.
  host.ForgetLog();
  host.adl().SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB);
  EXPECT_EQ(host.TakeLog(),
            "Check failed: all_display_infos != NULL. \nCheck failed: num_display > 0. \n");
}

TEST(ADLImplConnected, EachAnswerReplacesTheOneBefore) {
  AdlHost host(kAdlTwo);
  for (int i = 0; i < 3; ++i) {
    host.Connected();
    EXPECT_EQ(host.Held(), "ADL buffer\nADL session\n");
  }
}

// --- Active.

TEST(ADLImplActive, AreConnectedMappedAndTheAdaptersOwn) {
  EXPECT_EQ(AdlHost(kAdlTwo).Active(), "0x1 (1)");
  EXPECT_EQ(AdlHost(kAdlClone).Active(), "0x3 (2)");
  AdlHost extended(kAdlExtended);
  EXPECT_EQ(extended.Active(), "0x3 (2)");  // each display once, though both adapters list both
  EXPECT_EQ(extended.Calls([&] { extended.Active(); }),
            "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n"
            "ADL_Display_DisplayInfo_Get(adapter=1 force=1)=0\n");
  EXPECT_EQ(extended.Held(), "ADL session\n");
}

TEST(ADLImplActive, AdaptersAreAskedByTheirIndex) {
  AdlHost host(kAdlExtended);
  host.driver().adl_indices = {1, 0};
  host.Forget();
  EXPECT_EQ(host.Calls([&] { EXPECT_EQ(host.Active(), "0x3 (2)"); }),
            "ADL_Display_DisplayInfo_Get(adapter=1 force=1)=0\n"
            "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n");
}

TEST(ADLImplActive, MappedDisplayThatIsGoneDoesNotCount) {
  AdlHost host(kAdlExtended);
  host.adl();
  host.model().connectors[1].monitor.reset();
  EXPECT_EQ(host.Active(), "0x1 (1)");
}

TEST(ADLImplActive, FailedCallIsMadeAgainSilently) {
  AdlHost host(kAdlExtended);
  host.Forget();
  host.machine.Fail(kInfoGet, 1, AdlResultCode(1));
  EXPECT_EQ(host.Calls([&] { EXPECT_EQ(host.Active(), "0x3 (2)"); }),
            "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=1\n" + AdlReloadText() +
                "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n"
                "ADL_Display_DisplayInfo_Get(adapter=1 force=1)=0\n");
  EXPECT_EQ(host.TakeLogWithSeverity(), kAdlActiveLine);
}

TEST(ADLImplActive, AdapterThatFailsTwiceIsLeftOut) {
  AdlHost host(kAdlExtended);
  host.Forget();
  host.machine.Fail(kInfoGet, 1);
  host.machine.Fail(kInfoGet, 2);
  EXPECT_EQ(host.Active(), "0x2 (1)");
}

TEST(ADLImplActive, SucceedsWhateverFails) {
  AdlHost host(kAdlExtended);
  host.Forget();
  host.machine.Fail(kInfoGet, 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.Active(), "0x0 (0)");
}

// The first adapter's failure brings a list of two adapters in the place of four: the walk ends
// with them, and nobody brings the library up again for the places behind.
TEST(ADLImplActive, WalkGoesOnWithinTheNewList) {
  AdlHost host("win7 amd, amd: internal 1366x768 active, dp, crt@2 1280x1024 active");
  host.Forget();
  host.machine.Fail(kInfoGet, 1);
  host.model().adapters[1].hardware_id = "PCI\\VEN_1039&DEV_6351";
  const std::string calls = host.Calls([&] { EXPECT_EQ(host.Active(), "0x1 (1)"); });
  EXPECT_NE(calls.find("AdapterInfo_Get(size=3144)"), std::string::npos) << calls;
  EXPECT_EQ(CountOf(calls, kInfoGet), 3u) << calls;  // failed, again, and the second one's
  EXPECT_EQ(CountOf(calls, "ADL_Main_Control_Destroy"), 1u) << calls;
}

// And without any adapter after the failure it ends at once.
TEST(ADLImplActive, WalkEndsWhenTheNewListIsEmpty) {
  AdlHost host(kAdlExtended);
  host.Forget();
  host.machine.Fail(kInfoGet, 1);
  host.machine.Fail("ADL_Adapter_AdapterInfo_Get", 1);
  const std::string calls = host.Calls([&] { EXPECT_EQ(host.Active(), "0x0 (0)"); });
  EXPECT_EQ(CountOf(calls, kInfoGet), 1u) << calls;
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Call to ADL_Adapter_AdapterInfo_Get() failed, rv = -1\n");
}

// --- The mode.

TEST(ADLImplMode, GoesByMapsAndTargets) {
  EXPECT_EQ(AdlHost(kAdlTwo).Mode(), "1 0x1");
  EXPECT_EQ(AdlHost(kAdlClone).Mode(), "2 0x3");
  EXPECT_EQ(AdlHost(kAdlExtended).Mode(), "4 0x3");
  EXPECT_EQ(AdlHost("win7 amd*3: clone internal 1366x768 active, crt 1280x1024 active, hdmi "
                    "1920x1080 active")
                .Mode(),
            "1024 0x13");
  EXPECT_EQ(AdlHost("win7 amd*3: internal 1366x768 active, crt 1280x1024 active, hdmi 1920x1080 "
                    "active")
                .Mode(),
            "512 0x13");
}

TEST(ADLImplMode, AsksForTheMapWithGpuInformation) {
  AdlHost host(kAdlTwo);
  host.Forget();
  EXPECT_EQ(host.Calls([&] { host.Mode(); }),
            "ADL_Display_DisplayMapConfig_Get(adapter=0 option=0)=0\n"  // the SLS test
            "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n"
            "ADL_Display_DisplayInfo_Get(adapter=1 force=1)=0\n"
            "ADL_Display_DisplayMapConfig_Get(adapter=0 option=1)=0\n");
  EXPECT_EQ(host.Held(), "ADL session\n");
}

TEST(ADLImplMode, NoDesktopIsNoModeAndChecked) {
  AdlHost host("win7 intel, amd: internal 1366x768 active, crt@2 1280x1024 active, dp@2",
               kAdlChecked);
  host.Forget();
  host.model().active.pop_back();
  EXPECT_EQ(host.Mode(), "0 0x0");
  EXPECT_EQ(host.TakeLog(), "Check failed: num_map > 0. \n");
}

int TwoMapsOneTarget(int, int* map_count, void** maps, int* target_count, void** targets, int) {
  *map_count = 2;
  *target_count = 1;
  *maps = nullptr;
  *targets = nullptr;
  return 0;
}

TEST(ADLImplMode, ExtendedDesktopWithFewerTargetsIsChecked) {
  AdlHost host(kAdlTwo, kAdlChecked);
  ReplaceAdlEntry(&host.machine, kMapGet, sim::Erase(TwoMapsOneTarget));
  host.Forget();
  EXPECT_EQ(host.Mode(), "4 0x1");
  EXPECT_EQ(host.TakeLog(), "Check failed: num_target == num_map. \n");
}

TEST(ADLImplMode, OutputsStayWhenNoAdapterTells) {
  AdlHost host(kAdlTwo);
  host.Forget();
  host.machine.Fail(kMapGet, 1, 0, sim::Machine::Repeat::kFromThenOn);
  uint32_t mode = 0xEE;
  uint32_t displays = 0xEE;
  EXPECT_FALSE(host.adl().GetCurrentDisplayMode(&mode, &displays));
  EXPECT_EQ(mode, 0xEEu);
  EXPECT_EQ(displays, 0xEEu);
}

// --- The display map and its recovery.

class ADLImplMap : public testing::Test {
 protected:
  ADLImplMap() : host_(kAdlTwo, kAdlChecked) { host_.Forget(); }

  std::string Read() {
    ADLDisplayMap* maps = nullptr;
    ADLDisplayTarget* targets = nullptr;
    int num_map = -7;
    int num_target = -7;
    const bool known =
        host_.box().GetDisplayMap(&host_.bare(), &maps, &num_map, &targets, &num_target);
    host_.box().FreeAdlBuffer(reinterpret_cast<void**>(&maps));
    host_.box().FreeAdlBuffer(reinterpret_cast<void**>(&targets));
    return known ? std::to_string(num_map) + " " + std::to_string(num_target) : "failed";
  }

  AdlHost host_;
};

constexpr char kWarning[] = "WARNING Call to ADL_Display_DisplayMapConfig_Get() has problem, rv = ";
constexpr char kAgain[] = ". Refresh internal memory and try again.\n";

TEST_F(ADLImplMap, FirstAdapterThatTellsIsEnough) {
  EXPECT_EQ(host_.Calls([&] { EXPECT_EQ(Read(), "1 1"); }),
            "ADL_Display_DisplayMapConfig_Get(adapter=0 option=1)=0\n");
  EXPECT_EQ(host_.Held(), "ADL session\n");
}

TEST_F(ADLImplMap, FailureIsMadeAgainAfterAReload) {
  for (const int32_t result : {-1, 2}) {
    host_.Forget();
    host_.machine.Fail(kMapGet, 1, AdlResultCode(result));
    const std::string told = std::to_string(result);
    EXPECT_EQ(host_.Calls([&] { EXPECT_EQ(Read(), "1 1"); }),
              "ADL_Display_DisplayMapConfig_Get(adapter=0 option=1)=" + told + "\n" +
                  AdlReloadText() + "ADL_Display_DisplayMapConfig_Get(adapter=0 option=1)=0\n");
    EXPECT_EQ(host_.TakeLogWithSeverity(), kWarning + told + kAgain + kAdlActiveLine);
  }
}

TEST_F(ADLImplMap, AdapterThatFailsTwiceIsFollowedByTheNext) {
  host_.machine.Fail(kMapGet, 1, AdlResultCode(-1));
  host_.machine.Fail(kMapGet, 2, AdlResultCode(-2));
  EXPECT_EQ(host_.Calls([&] { EXPECT_EQ(Read(), "1 1"); }),
            "ADL_Display_DisplayMapConfig_Get(adapter=0 option=1)=-1\n" + AdlReloadText() +
                "ADL_Display_DisplayMapConfig_Get(adapter=0 option=1)=-2\n"
                "ADL_Display_DisplayMapConfig_Get(adapter=1 option=1)=0\n");
  EXPECT_EQ(host_.TakeLogWithSeverity(),
            std::string(kWarning) + "-1" + kAgain + kAdlActiveLine +
                "ERROR Call to ADL_Display_DisplayMapConfig_Get() failed, rv = -2\n");
}

TEST_F(ADLImplMap, FailsWhenNoAdapterIsLeft) {
  host_.machine.Fail(kMapGet, 1, AdlResultCode(-1), sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(Read(), "failed");
  const std::string one = std::string(kWarning) + "-1" + kAgain + kAdlActiveLine +
                          "ERROR Call to ADL_Display_DisplayMapConfig_Get() failed, rv = -1\n";
  EXPECT_EQ(host_.TakeLogWithSeverity(), one + one);
}

TEST_F(ADLImplMap, EachMissingOutputIsChecked) {
  ADLDisplayMap* maps = nullptr;
  ADLDisplayTarget* targets = nullptr;
  int count = 0;
  const auto read = [&](ADLDisplayMap** a, int* b, ADLDisplayTarget** c, int* d) {
    host_.Forget();
    EXPECT_FALSE(host_.box().GetDisplayMap(&host_.bare(), a, b, c, d));
    return host_.TakeLogWithSeverity();
  };
  const std::string check = "ERROR_REPORT Check failed: ";
  EXPECT_EQ(read(nullptr, &count, &targets, &count), check + "ppmaps != NULL. \n");
  EXPECT_EQ(read(&maps, nullptr, &targets, &count), check + "pnum_map != NULL. \n");
  EXPECT_EQ(read(&maps, &count, nullptr, &count), check + "pptargets != NULL. \n");
  EXPECT_EQ(read(&maps, &count, &targets, nullptr), check + "pnum_target != NULL. \n");
}

TEST(ADLImplMapUnready, AdaptersAreChecked) {
  AdlHost host(kAdlTwo, kAdlChecked);
  host.bare();
  host.ForgetLog();
  EXPECT_FALSE(host.bare().SetNewDisplayMode(1, 1));
  EXPECT_EQ(host.TakeLog(), "Check failed: m_numAdapters > 0. \n");
  EXPECT_FALSE(host.extension().HasSLSGrid());
  EXPECT_EQ(host.TakeLog(),
            "Check failed: m_infoAdapters != NULL. \nCheck failed: m_numAdapters > 0. \n");
}

// --- Displays by connector.

TEST(ADLImplDisplayIndex, ListIsChecked) {
  AdlHost host(kAdlTwo, kAdlChecked);
  host.ostrel();
  host.ForgetLog();
  EXPECT_EQ(host.box().DisplayIndexFromConnector(nullptr, 0, 1), 0);
  EXPECT_EQ(host.TakeLog(),
            "Check failed: all_display_infos != NULL. \nCheck failed: num_display > 0. \n");
  ADLDisplayInfo info = {};
  info.iDisplayConnector = 1;
  info.displayID.iDisplayLogicalIndex = 5;
  EXPECT_EQ(host.box().DisplayIndexFromConnector(&info, 1, 1), 5);
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.box().DisplayIndexFromConnector(&info, 0, 1), 0);
  EXPECT_EQ(host.TakeLog(), "Check failed: num_display > 0. \n");
}

// --- The rest.

TEST(ADLImplCapability, IsTrueForZeroAlone) {
  AdlHost host(kAdlTwo);
  host.Forget();
  EXPECT_EQ(host.Calls([&] { EXPECT_EQ(host.adl().HasDisplaySwitchingCapability(), 1); }),
            "ADL_Display_SwitchingCapability_Get(adapter=0)=0\n");
  host.driver().switching_capability = 1;
  EXPECT_EQ(host.adl().HasDisplaySwitchingCapability(), 0);
}

TEST(ADLImplCapability, FailedCallPermits) {
  AdlHost host(kAdlTwo);
  host.Forget();
  host.driver().switching_capability = 1;
  host.machine.Fail("ADL_Display_SwitchingCapability_Get", 1);
  EXPECT_EQ(host.adl().HasDisplaySwitchingCapability(), 1);
}

struct SettingsReader {
  bool Read(AdlHost* host, uint32_t display) {
    dm = {};
    dm.dmSize = 156;
    dm.dmFields = 0x5C0080;
    return host->adl().GetDisplaySettings(display, &dm);
  }
  DEVMODEA dm = {};
};

TEST(ADLImplSettings, AreThoseOfTheOperatingSystem) {
  AdlHost host(kAdlExtended);
  SettingsReader reader;
  EXPECT_TRUE(reader.Read(&host, IMMonitor::MD_CRT));
  EXPECT_EQ(reader.dm.dmPelsWidth, 1280u);
  EXPECT_TRUE(reader.Read(&host, IMMonitor::MD_NB));
  EXPECT_EQ(reader.dm.dmPelsWidth, 1366u);
}

TEST(ADLImplSettings, UnknownOnesAreASuccessAllTheSame) {
  AdlHost host(kAdlTwo);
  SettingsReader reader;
  for (const uint32_t display : {IMMonitor::MD_CRT, IMMonitor::MD_HDMI, IMMonitor::MD_DP}) {
    EXPECT_TRUE(reader.Read(&host, display)) << display;
    EXPECT_EQ(reader.dm.dmPelsWidth, 0u);
  }
}

TEST(ADLImplSettings, DviIsReadAsHdmiWhenThereIsNone) {
  const struct {
    const char* machine;
    bool known;
    uint32_t width;
  } rows[] = {
      {"win7 amd: internal 1366x768 active, hdmi 1920x1080 active", true, 1920},
      {"win7 amd: internal 1366x768 active, dvi 1280x1024 active", true, 1280},
      {kAdlTwo, false, 0},
  };
  for (const auto& row : rows) {
    AdlHost host(row.machine);
    SettingsReader reader;
    EXPECT_EQ(reader.Read(&host, IMMonitor::MD_DVI), row.known);
    EXPECT_EQ(reader.dm.dmPelsWidth, row.width);
  }
}

}  // namespace
