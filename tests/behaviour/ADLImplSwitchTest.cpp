// ADLImpl switches to one display and to a pair with the same picture: the exact lists.
#include "sim/faces/AmdAdl.h"
#include "tests/behaviour/ADLImplHost.h"

namespace {

constexpr char kMapSet[] = "ADL_Display_DisplayMapConfig_Set";
constexpr char kPanelTarget[] = "1/32/0/16";
constexpr char kCrtTarget[] = "0/32/0/16";

constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kSingle = IMMonitor::DM_SINGLE;
constexpr uint32_t kClone = IMMonitor::DM_CLONE;

std::string SingleMap() { return AdlMapText().Text(); }
std::string CloneMap() {
  AdlMapText map;
  map.count = 2;
  return map.Text();
}
std::string SetCrt(int result = 0) {
  return AdlSetText(SingleMap(), AdlTargetText(kCrtTarget), result);
}

// --- The lists.

TEST(ADLImplSwitch, SingleIsOneTargetOfOneMap) {
  AdlHost host(kAdlTwo);
  EXPECT_EQ(host.Switch(kSingle, kCrt), SetCrt() + "1");
  EXPECT_EQ(host.machine.Topology(), "single crt");
  EXPECT_EQ(host.Held(), "ADL buffer\nADL session\n");  // the displays listed last
}

TEST(ADLImplSwitch, SingleReadsTheMapAndSetsIt) {
  AdlHost host(kAdlTwo);
  host.Ready();
  EXPECT_EQ(host.Calls([&] { host.adl().SetNewDisplayMode(kSingle, kCrt); }),
            "ADL_Display_DisplayMapConfig_Get(adapter=0 option=1)=0\n" + SetCrt());
}

TEST(ADLImplSwitch, SingleComesBackToThePanel) {
  AdlHost host(kAdlClone);
  AdlMapText map;
  map.kind = "0x8";  // as the library gave it
  EXPECT_EQ(host.Switch(kSingle, kNb), AdlSetText(map.Text(), AdlTargetText(kPanelTarget)) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(ADLImplSwitch, CloneIsThePanelAndTheOther) {
  for (const uint32_t displays : {kNb | kCrt, kCrt}) {
    AdlHost host(kAdlTwo);
    EXPECT_EQ(
        host.Switch(kClone, displays),
        AdlSetText(CloneMap(), AdlTargetText(kPanelTarget) + AdlTargetText(kCrtTarget)) + "1");
    EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
  }
}

TEST(ADLImplSwitch, PanelAloneIsTheDefaultsWay) {
  AdlHost host(kAdlClone);
  host.Ready();
  EXPECT_TRUE(host.adl().ChangeToNBOnlySingleDisplayMode());
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

// Everything of the first map's that is not asked for stays, and so does the target's.
constexpr char kCrtLeads[] = "0/33/1/16";
std::string MapOfTheLeadingCrt(int count) {
  AdlMapText map;
  map.index = 1;
  map.count = count;
  map.adapter = 1;
  map.display = "0/33";
  map.mode_adapter = 1;
  return map.Text();
}

struct LeadingCrt : AdlHost {
  explicit LeadingCrt(const std::string& adapters = "amd")
      : AdlHost("win7 " + adapters + ": internal 1366x768 active, crt 1280x1024 active") {
    model().primary_source = 1;
  }
};

TEST(ADLImplSwitch, TemplateIsOfMapZeroOnAMachineWithOneAdapter) {
  LeadingCrt host;
  EXPECT_EQ(host.Switch(kSingle, kNb),
            AdlSetText(MapOfTheLeadingCrt(1), AdlTargetText("1/33/1/16", 0, 1, 1)) + "1");
}

TEST(ADLImplSwitch, TemplateKeepsTheMapAndClearsTheRestOnAHybridMachine) {
  LeadingCrt host("amd, intel");
  EXPECT_EQ(host.Switch(kSingle, kNb),
            AdlSetText(MapOfTheLeadingCrt(1), AdlTargetText("1/33/1/16", 1, 0, 0)) + "1");
}

TEST(ADLImplSwitch, TemplateKeepsTheMapAndClearsTheRestWithPowerXpress) {
  LeadingCrt host;
  host.driver().powerxpress = 4;
  EXPECT_EQ(host.Switch(kClone, kNb | kCrt),
            AdlSetText(MapOfTheLeadingCrt(2),
                       AdlTargetText("1/33/1/16", 1, 0, 0) + AdlTargetText(kCrtLeads, 1, 0, 0)) +
                "1");
}

TEST(ADLImplSwitch, CopiesAreAsManyAsTheMapHasTargets) {
  AdlHost host(kAdlClone);  // two targets come back, one is sent
  const std::string set = host.Switch(kSingle, kCrt);
  EXPECT_EQ(CountOf(set, "mask=0x1"), 1u) << set;
}

TEST(ADLImplSwitch, AnotherModeKeepsTwoPlainCopies) {
  for (const uint32_t mode : {uint32_t{IMMonitor::DM_EXTEND}, 8u, 0u, 128u}) {
    AdlHost host(kAdlTwo);
    const std::string set =
        AdlSetText(CloneMap(), AdlTargetText(kPanelTarget) + AdlTargetText(kPanelTarget), -3);
    EXPECT_EQ(host.Switch(mode, kNb | kCrt), set + set + "0") << mode;
    EXPECT_EQ(host.machine.Topology(), "single internal");
  }
}

TEST(ADLImplSwitch, GoesToTheIndexOfTheRecordAtTheActivePosition) {
  AdlHost host(kAdlTwo);
  host.driver().adl_indices = {1, 0};
  AdlMapText map;
  map.adapter = 1;
  map.mode_adapter = 1;
  EXPECT_EQ(host.Switch(kSingle, kCrt), AdlSetText(map.Text(), AdlTargetText("0/32/1/16")) + "1");
}

// --- Displays that cannot be told.

TEST(ADLImplSwitch, MaskWithoutAKnownBitIsChecked) {
  AdlHost host(kAdlTwo, kAdlChecked);
  EXPECT_EQ(host.Switch(kSingle, 0x40), SetCrt() + "1");  // display 0, which is the CRT here
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: 0 && \"ConnectorTypeFromIMMonitorDisplayType() unknown "
            "connector type\". \n");
}

TEST(ADLImplSwitch, HdmiThatIsNotConnectedIsChecked) {
  AdlHost host("win7 amd: internal 1366x768 active, crt 1280x1024, hdmi", kAdlChecked);
  EXPECT_EQ(host.Switch(kSingle, IMMonitor::MD_HDMI), SetCrt() + "1");
  EXPECT_NE(host.TakeLog().find("unknown connector type"), std::string::npos);
}

TEST(ADLImplSwitch, ConnectorWithoutAnEntryIsDisplayZeroUndetected) {
  AdlHost host(kAdlTwo, kAdlChecked);
  EXPECT_EQ(host.Switch(kSingle, IMMonitor::MD_DP), SetCrt() + "1");
  EXPECT_EQ(host.TakeLog(), "");
}

// The panel is sought on the maker's own plug, which one on embedded DisplayPort does not have.
TEST(ADLImplSwitch, PanelOnEmbeddedDisplayPortIsDisplayZero) {
  AdlHost host("win7 amd: edp 1366x768 active, crt 1280x1024", kAdlChecked);
  EXPECT_EQ(host.Connected(), "0x3 (2)");
  EXPECT_EQ(host.Switch(kSingle, kNb), SetCrt() + "1");
  EXPECT_EQ(host.machine.Topology(), "single crt");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(ADLImplSwitch, WithoutAListEveryDisplayIsDisplayZero) {
  AdlHost host(kAdlTwo, kAdlChecked);
  host.Forget();
  EXPECT_TRUE(host.adl().SetNewDisplayMode(kSingle, kNb));
  EXPECT_EQ(host.machine.TakeJournal(), SetCrt());
  EXPECT_EQ(host.TakeLog(),
            "Check failed: all_display_infos != NULL. \nCheck failed: num_display > 0. \n");
}

TEST(ADLImplSwitch, HdmiIsTheConnectedOneOfTwoKinds) {
  AdlHost host("win7 amd: internal 1366x768 active, hdmi, hdmi2 1920x1080");
  host.output(2).connector = 11;
  EXPECT_EQ(host.Switch(kSingle, IMMonitor::MD_HDMI),
            AdlSetText(SingleMap(), AdlTargetText("2/32/0/16")) + "1");
}

// --- No map, no target.

TEST(ADLImplSwitch, WithoutADesktopNothingIsSet) {
  AdlHost host("win7 intel, amd: internal 1366x768 active, crt@2 1280x1024 active, dp@2");
  host.Ready();
  host.model().active.pop_back();
  for (const uint32_t mode : {kSingle, kClone, uint32_t{IMMonitor::DM_TRIPLE_CLONE},
                              uint32_t{IMMonitor::DM_TRIPLE_EXTEND}}) {
    EXPECT_FALSE(host.adl().SetNewDisplayMode(mode, kNb | kCrt)) << mode;
  }
  EXPECT_FALSE(host.adl().EnableExtendMode(TRUE));
  EXPECT_FALSE(host.adl().EnableExtendModeOnDisplays(FALSE, 0));
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.machine.Calls(kMapSet), 0u);
}

ADLDisplayMap* g_map_alone = nullptr;
int MapWithoutTargets(int, int* map_count, ADLDisplayMap** maps, int* target_count,
                      ADLDisplayTarget** targets, int) {
  *map_count = 1;
  *target_count = 0;
  *maps = static_cast<ADLDisplayMap*>(sim::NewAdlArray(1, sizeof(ADLDisplayMap)));
  *targets = nullptr;
  g_map_alone = *maps;
  return 0;
}

TEST(ADLImplSwitch, MapWithoutATargetIsGivenBack) {
  AdlHost host(kAdlTwo);
  ReplaceAdlEntry(&host.machine, "ADL_Display_DisplayMapConfig_Get", sim::Erase(MapWithoutTargets));
  EXPECT_EQ(host.Switch(kSingle, kNb), "0");
  EXPECT_NE(g_map_alone, nullptr);
  EXPECT_EQ(host.Held(), "ADL buffer\nADL session\n");
}

TEST(ADLImplSwitch, MapThatCannotBeReadFails) {
  AdlHost host(kAdlTwo);
  host.Ready();
  host.machine.Fail("ADL_Display_DisplayMapConfig_Get", 1, 0, sim::Machine::Repeat::kFromThenOn);
  for (const uint32_t mode : {kSingle, kClone, uint32_t{IMMonitor::DM_TRIPLE_CLONE},
                              uint32_t{IMMonitor::DM_TRIPLE_EXTEND}}) {
    EXPECT_FALSE(host.adl().SetNewDisplayMode(mode, kNb | kCrt)) << mode;
  }
  EXPECT_FALSE(host.adl().EnableExtendMode(TRUE));
  EXPECT_FALSE(host.adl().EnableExtendModeOnDisplays(TRUE, kCrt));
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST(ADLImplSwitch, MapThatIsReadAtTheSecondAttemptSwitches) {
  AdlHost host(kAdlTwo);
  host.Ready();
  host.machine.Fail("ADL_Display_DisplayMapConfig_Get", 1);
  EXPECT_TRUE(host.adl().SetNewDisplayMode(kSingle, kCrt));
  EXPECT_EQ(host.machine.TakeJournal(), SetCrt());
  EXPECT_EQ(CountOf(host.TakeLogWithSeverity(), "WARNING"), 1u);
}

// --- Failed calls. Clone and triple clone are one way, too.

std::string Attempt(AdlHost* host) {
  const BOOL result = host->adl().SetNewDisplayMode(kSingle, kCrt);
  return host->machine.TakeJournal() + std::to_string(result);
}

TEST(ADLImplSwitch, NegativeResultIsTriedAgainAfterAReload) {
  AdlHost host(kAdlTwo);
  host.Ready();
  host.machine.Fail(kMapSet, 1, AdlResultCode(-1));
  EXPECT_EQ(host.Calls([&] { EXPECT_TRUE(host.adl().SetNewDisplayMode(kSingle, kCrt)); }),
            "ADL_Display_DisplayMapConfig_Get(adapter=0 option=1)=0\n" + SetCrt(-1) +
                AdlReloadText() + SetCrt());
  EXPECT_EQ(host.TakeLogWithSeverity(), kAdlActiveLine);
}

TEST(ADLImplSwitch, SecondFailureIsLoggedWhateverItsSign) {
  for (const int32_t second : {-2, 1}) {
    AdlHost host(kAdlTwo);
    host.Ready();
    host.machine.Fail(kMapSet, 1, AdlResultCode(-1));
    host.machine.Fail(kMapSet, 2, AdlResultCode(second));
    EXPECT_EQ(Attempt(&host), SetCrt(-1) + SetCrt(second) + "0");
    EXPECT_EQ(
        host.TakeLogWithSeverity(),
        kAdlActiveLine +
            ("ERROR Call to ADL_Display_DisplayMapConfig_Set() rv = " + std::to_string(second)) +
            "\n");
  }
}

TEST(ADLImplSwitch, PositiveResultIsAFailureWithoutARetryAndWithoutALine) {
  for (const uint32_t mode : {kSingle, kClone, uint32_t{IMMonitor::DM_TRIPLE_CLONE}}) {
    AdlHost host(kAdlTwo);
    host.Ready();
    host.machine.Fail(kMapSet, 1, AdlResultCode(1));
    EXPECT_FALSE(host.adl().SetNewDisplayMode(mode, kCrt));
    EXPECT_EQ(host.machine.Calls(kMapSet), 1u);
    EXPECT_EQ(host.machine.Calls("ADL_Main_Control_Destroy"), 0u);
    EXPECT_EQ(host.TakeLog(), "");
  }
}

TEST(ADLImplSwitch, ReloadThatFindsNoAdaptersEndsIt) {
  AdlHost host(kAdlTwo);
  host.Ready();
  host.machine.Fail(kMapSet, 1, AdlResultCode(-1));
  host.machine.Fail("ADL_Adapter_AdapterInfo_Get", 1);
  EXPECT_EQ(Attempt(&host), SetCrt(-1) + "0");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Call to ADL_Adapter_AdapterInfo_Get() failed, rv = -1\n"
            "ERROR Call to ADL_Display_DisplayMapConfig_Set() rv = -5\n");
}

TEST(ADLImplSwitch, ReloadThatCannotCountKeepsTheAdaptersAsTheyWere) {
  AdlHost host(kAdlTwo);
  host.Ready();
  host.machine.Fail(kMapSet, 1, AdlResultCode(-1));
  host.machine.Fail("ADL_Adapter_NumberOfAdapters_Get", 1);
  EXPECT_EQ(Attempt(&host), SetCrt(-1) + SetCrt() + "1");
}

TEST(ADLImplSwitch, ReloadIgnoresWhatItsCallsSay) {
  AdlHost host(kAdlTwo);
  host.Ready();
  host.machine.Fail(kMapSet, 1, AdlResultCode(-1));
  host.machine.Fail("ADL_Main_Control_Destroy", 1);
  host.machine.Fail("ADL_Main_Control_Create", 1);
  EXPECT_EQ(Attempt(&host), SetCrt(-1) + SetCrt() + "1");
}

}  // namespace
