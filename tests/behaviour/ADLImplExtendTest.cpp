// Extended desktop through ADLImpl: the exact lists, on and off.
#include "tests/behaviour/ADLImplHost.h"
#include "tests/support/EdidBlock.h"

namespace {

constexpr char kMapSet[] = "ADL_Display_DisplayMapConfig_Set";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;

AdlMapText First() {
  AdlMapText map;
  map.mode = "1366x768x32@60";
  return map;
}
AdlMapText Second(const std::string& size = "1280x1024") {
  AdlMapText map;
  map.index = 1;
  map.mode = size + "x32@60";
  map.x = 1366;
  map.first = 1;
  return map;
}
std::string Targets() { return AdlTargetText("1/32/0/16") + AdlTargetText("0/32/1/17", 1); }
std::string SetBoth(int result = 0, const std::string& size = "1280x1024") {
  return AdlSetText(First().Text() + Second(size).Text(), Targets(), result);
}

TEST(ADLImplExtend, IsTwoMapsAndTwoTargets) {
  for (const bool named : {true, false}) {
    AdlHost host(kAdlTwo);
    EXPECT_EQ(named ? host.ExtendOn(TRUE, kCrt) : host.Extend(TRUE), SetBoth() + "1");
    EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
    EXPECT_EQ(host.Held(), "ADL buffer\nADL session\n");
  }
}

TEST(ADLImplExtend, AnyTruthValueTurnsItOn) {
  AdlHost host(kAdlTwo);
  EXPECT_EQ(host.ExtendOn(2, kCrt), SetBoth() + "1");
}

TEST(ADLImplExtend, OffLeavesThePanelAloneInThePrimarysMode) {
  const std::string set = AdlSetText(First().Text(), AdlTargetText("1/32/0/16"));
  for (const bool named : {true, false}) {
    AdlHost host(kAdlExtended);
    EXPECT_EQ(named ? host.ExtendOn(FALSE, kCrt) : host.Extend(FALSE), set + "1");
    EXPECT_EQ(host.machine.Topology(), "single internal");
  }
}

// The library's first map has two targets then; each map that is sent has one.
AdlMapText FirstOfClone() {
  AdlMapText first;
  first.mode = "1280x720x32@60";  // what the clone shows
  first.kind = "0x8";
  return first;
}

TEST(ADLImplExtend, GoesOnFromAClone) {
  AdlMapText second = Second();
  second.x = 1280;
  second.kind = "0x8";
  AdlHost host(kAdlClone);
  EXPECT_EQ(host.ExtendOn(TRUE, kCrt),
            AdlSetText(FirstOfClone().Text() + second.Text(), Targets()) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
}

TEST(ADLImplExtend, GoesOffFromAClone) {
  AdlHost host(kAdlClone);
  EXPECT_EQ(host.Extend(FALSE),
            AdlSetText(FirstOfClone().Text(), AdlTargetText("1/32/0/16")) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(ADLImplExtend, OffDoesNotListTheDisplays) {
  AdlHost host(kAdlExtended);
  host.Ready();
  EXPECT_EQ(CountOf(host.Calls([&] { host.adl().EnableExtendMode(FALSE); }), "DisplayInfo_Get"),
            0u);
}

TEST(ADLImplExtend, PrimarysModeIsReadWhole) {
  AdlHost host(kAdlTwo);
  host.model().sources[0].mode = {800, 600, 16, 75};
  AdlMapText first = First();
  first.mode = "800x600x16@75";
  AdlMapText second = Second();
  second.x = 800;
  const std::string set = host.ExtendOn(TRUE, kCrt);
  EXPECT_EQ(set.substr(0, set.rfind(")=")),
            "ADL_Display_DisplayMapConfig_Set(adapter=0 maps=" + first.Text() + second.Text() +
                " targets=" + Targets());
}

TEST(ADLImplExtend, UnreadablePrimarysModeStaysAsTheLibrarySaid) {
  AdlHost host(kAdlTwo);
  host.Ready();
  host.machine.Fail("EnumDisplaySettingsW", 1);
  EXPECT_TRUE(host.adl().EnableExtendModeOnDisplays(TRUE, kCrt));
  EXPECT_EQ(host.machine.TakeJournal(), SetBoth());
}

// The first map's index counts on, the primary's size is that of Windows, and the first map stays
// where the library had it.
struct LeadingCrt : AdlHost {
  explicit LeadingCrt(const std::string& adapters = "amd")
      : AdlHost("win7 " + adapters + ": internal 1366x768 active, crt 1280x1024 active") {
    model().primary_source = 1;
  }
  static std::string Maps() {
    AdlMapText first;
    first.index = 1;
    first.mode = "1280x1024x32@60";
    first.x = 1366;
    first.adapter = 1;
    first.mode_adapter = 1;
    first.display = "0/33";
    AdlMapText second = first;
    second.index = 2;
    second.x = 1280;
    second.first = 1;
    return first.Text() + second.Text();
  }
};

TEST(ADLImplExtend, TargetsOnAMachineWithOneAdapter) {
  LeadingCrt host;
  EXPECT_EQ(host.ExtendOn(TRUE, kCrt),
            AdlSetText(LeadingCrt::Maps(),
                       AdlTargetText("1/33/1/16", 0) + AdlTargetText("0/33/2/17", 2)) +
                "1");
}

TEST(ADLImplExtend, TargetsOnAHybridMachineAndWithPowerXpress) {
  const std::string set = AdlSetText(LeadingCrt::Maps(), AdlTargetText("1/33/1/16", 1, 0, 0) +
                                                             AdlTargetText("0/33/2/17", 2, 0, 0));
  EXPECT_EQ(LeadingCrt("amd, intel").ExtendOn(TRUE, kCrt), set + "1");
  LeadingCrt powerxpress;
  powerxpress.driver().powerxpress = 4;
  EXPECT_EQ(powerxpress.ExtendOn(TRUE, kCrt), set + "1");
}

// --- The second display.

TEST(ADLImplExtend, ChosenDisplayIsTheConnectedOneBesideThePanel) {
  AdlHost host("win7 amd: internal 1366x768 active, hdmi 1920x1080");
  EXPECT_EQ(host.Extend(TRUE), SetBoth(0, "1920x1080") + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi");
}

TEST(ADLImplExtend, NamedDisplaysAreTakenAsTheyStand) {
  AdlHost host(kAdlTwo);
  const std::string set = AdlSetText(First().Text() + Second("1366x768").Text(),
                                     AdlTargetText("1/32/0/16") + AdlTargetText("1/32/1/17", 1),
                                     -3);  // the panel twice
  EXPECT_EQ(host.ExtendOn(TRUE, kNb | kCrt), set + set + "0");
}

TEST(ADLImplExtend, ChosenDisplayIsLookedUpInAFreshListThePanelInTheOldOne) {
  AdlHost host(kAdlTwo, kAdlChecked);
  host.Forget();  // nobody has listed the displays yet
  host.adl().EnableExtendMode(TRUE);
  const std::string set =
      AdlSetText(First().Text() + Second().Text(),
                 AdlTargetText("0/32/0/16") + AdlTargetText("0/32/1/17", 1), -3);
  EXPECT_EQ(host.machine.TakeJournal(), set + set);
  EXPECT_EQ(CountOf(host.TakeLog(), "Check failed: all_display_infos != NULL. "), 1u);
}

TEST(ADLImplExtend, WithoutAConnectedDisplayNothingIsSet) {
  AdlHost host(kAdlTwo);
  host.Ready();
  for (sim::Connector& connector : host.model().connectors) connector.monitor.reset();
  EXPECT_FALSE(host.adl().EnableExtendMode(TRUE));
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.Held(), "ADL buffer\nADL session\n");
}

TEST(ADLImplExtend, DisplaysThatCannotBeListedAreNone) {
  AdlHost host(kAdlTwo);
  host.Ready();
  host.machine.Fail("ADL_Display_DisplayInfo_Get", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_FALSE(host.adl().EnableExtendMode(TRUE));
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST(ADLImplExtend, UnreadableEdidGivesTheUsualSize) {
  for (const bool damaged : {false, true}) {
    AdlHost host(kAdlTwo);
    host.Ready();
    std::vector<uint8_t>& edid = host.model().connectors[1].monitor->edid;
    if (damaged) {
      edid = EdidBlock().Spoil().bytes();
    } else {
      edid.clear();
    }
    EXPECT_TRUE(host.adl().EnableExtendModeOnDisplays(TRUE, kCrt));
    EXPECT_EQ(host.machine.TakeJournal(), SetBoth(0, "1024x768"));
    EXPECT_EQ(host.Held(), "ADL buffer\nADL session\n");
  }
}

// --- Failed calls.

TEST(ADLImplExtend, AnyFailureIsTriedAgainAfterAReload) {
  for (const int32_t first : {-1, 1}) {
    AdlHost host(kAdlTwo);
    host.Ready();
    host.machine.Fail(kMapSet, 1, AdlResultCode(first));
    const std::string calls =
        host.Calls([&] { EXPECT_TRUE(host.adl().EnableExtendModeOnDisplays(TRUE, kCrt)); });
    const std::string end = SetBoth(first) + AdlReloadText() + SetBoth();
    ASSERT_GT(calls.size(), end.size());
    EXPECT_EQ(calls.substr(calls.size() - end.size()), end);
    EXPECT_EQ(host.TakeLogWithSeverity(), kAdlActiveLine);
  }
}

TEST(ADLImplExtend, SecondFailureIsLogged) {
  for (const int32_t second : {-2, 1}) {
    AdlHost host(kAdlTwo);
    host.Ready();
    host.machine.Fail(kMapSet, 1, AdlResultCode(-1));
    host.machine.Fail(kMapSet, 2, AdlResultCode(second));
    EXPECT_FALSE(host.adl().EnableExtendMode(TRUE));
    EXPECT_EQ(host.machine.TakeJournal(), SetBoth(-1) + SetBoth(second));
    EXPECT_EQ(host.TakeLogWithSeverity(),
              kAdlActiveLine +
                  ("ERROR Call to ADL_Display_DisplayMapConfig_Set() failed, rv = " +
                   std::to_string(second)) +
                  "\n");
  }
}

}  // namespace
