// Presentation items: where they are offered, what they set, and how a session goes through them.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "sim/EdidMaker.h"
#include "tests/behaviour/CoreHost.h"
#include "tests/support/SessionBench.h"

namespace {

using Pictures = std::vector<std::string>;

constexpr char kPresentationOfCrt[] = "2 0x3 icon 11 type 64\n";

/// Only the presentation items of a list.
std::string Presentations(const std::string& items) {
  std::string kept;
  for (size_t start = 0; start < items.size();) {
    const size_t end = items.find('\n', start) + 1;
    const std::string line = items.substr(start, end - start);
    if (line.find(" type ") != std::string::npos) kept += line;
    start = end;
  }
  return kept;
}

/// A bench that offers presentations as the configuration's defaults have it.
class Presentation : public testing::Test {
 protected:
  Presentation() { bench.machine.Config("PM:1024x768", "Support This Mode", 1); }
  void OfferBoth() { bench.machine.Config("PM:800x600", "Support This Mode", 1); }
  /// The presentation items for a mask.
  std::string For(uint32_t connected, uint32_t count) {
    if (bench.box().PrepareDMItems(connected, count) == 0) return "refused";
    return Presentations(bench.Items());
  }
  const ProjectorBox& projectors() { return *bench.ostrel().white_box().projectors; }
  void AttachToCrt(const std::string& name) {
    sim::Monitor& monitor = *bench.machine.model().connectors[1].monitor;
    monitor.edid = sim::MakeEdid(name, monitor.preferred);
  }

  SessionBench bench;
};

// --- The list.

TEST_F(Presentation, OfPanelAndCrtIsOneItemByDefault) {
  ASSERT_TRUE(bench.Start());
  ASSERT_TRUE(bench.box().PrepareDMItems(0x03, 2));
  EXPECT_EQ(bench.Items(),
            "1 0x1 icon 0\n"
            "2 0x3 icon 5\n"
            "1 0x2 icon 1\n"
            "2 0x3 icon 11 type 64\n"
            "4 0x3 icon 18\n");
  const ItemState item = bench.State().items[3];
  EXPECT_EQ(item.is_presentation, 1u);
  EXPECT_EQ(item.index, 3u);
  EXPECT_TRUE(item.has_image);
}

TEST_F(Presentation, HasTheSmallerResolutionFirst) {
  OfferBoth();
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(For(0x03, 2), "2 0x3 icon 10 type 32\n2 0x3 icon 11 type 64\n");
}

TEST_F(Presentation, IsOfferedWhereItsKeySaysSo) {
  bench.machine.Config("PM:1024x768", "Support This Mode", int64_t{0});
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(For(0x03, 2), "");
}

TEST_F(Presentation, IsOfferedOnEveryConnectorBesideThePanel) {
  OfferBoth();
  ASSERT_TRUE(bench.Start());
  struct {
    uint32_t connected;
    const char* items;
  } const rows[] = {
      {0x03, "2 0x3 icon 10 type 32\n2 0x3 icon 11 type 64\n"},
      {0x05, "2 0x5 icon 10 type 32\n2 0x5 icon 11 type 64\n"},
      {0x09, "2 0x9 icon 10 type 32\n2 0x9 icon 11 type 64\n"},
      {0x11, "2 0x11 icon 10 type 32\n2 0x11 icon 11 type 64\n"},
      {0x21, "2 0x21 icon 10 type 32\n2 0x21 icon 11 type 64\n"},
      {0x41, "2 0x41 icon 10 type 32\n2 0x41 icon 11 type 64\n"},
  };
  for (const auto& row : rows) EXPECT_EQ(For(row.connected, 2), row.items) << row.connected;
}

TEST_F(Presentation, IsOnOneConnectorOnly) {
  OfferBoth();
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(For(0x13, 3), "2 0x3 icon 10 type 32\n2 0x3 icon 11 type 64\n");
  EXPECT_EQ(For(0x19, 3), "2 0x9 icon 10 type 32\n2 0x9 icon 11 type 64\n");
  EXPECT_EQ(For(0x15, 3), "2 0x11 icon 10 type 32\n2 0x11 icon 11 type 64\n");
  EXPECT_EQ(For(0x25, 3), "2 0x5 icon 10 type 32\n2 0x5 icon 11 type 64\n");
  EXPECT_EQ(For(0x61, 3), "2 0x21 icon 10 type 32\n2 0x21 icon 11 type 64\n");
}

TEST_F(Presentation, NeedsThePanelToo) {
  OfferBoth();
  ASSERT_TRUE(bench.Start());
  for (const uint32_t connected : {0x02u, 0x04u, 0x08u, 0x10u, 0x20u, 0x40u, 0x12u, 0x01u, 0x80u}) {
    EXPECT_EQ(For(connected, 1), "") << connected;
  }
}

TEST_F(Presentation, IsNotOfferedForFourDisplaysOrMore) {
  OfferBoth();
  ASSERT_TRUE(bench.Start());
  EXPECT_NE(For(0x33, 3), "");
  EXPECT_EQ(For(0x33, 4), "");
}

TEST_F(Presentation, IsNotOfferedUnderALasso) {
  OfferBoth();
  ASSERT_TRUE(bench.Start());
  bench.ostrel().SetLassoBoxStatus(1);
  ASSERT_TRUE(bench.box().PrepareDMItems(0x03, 2));
  EXPECT_EQ(bench.Items(), "1 0x1 icon 0\n2 0x3 icon 5\n1 0x2 icon 1\n4 0x3 icon 18\n");
  bench.ostrel().SetLassoBoxStatus(0);
  EXPECT_NE(For(0x03, 2), "");
}

TEST_F(Presentation, IsNotOfferedInListsOfThreeDisplaysTogether) {
  OfferBoth();
  bench.script->vendor = kVendorAmd;
  bench.script->sls_grid = true;
  ASSERT_TRUE(bench.Start<FakeAmdMonitor>());
  EXPECT_EQ(For(0x13, 3), "");
  EXPECT_NE(For(0x03, 2), "");
}

TEST_F(Presentation, IsNotOfferedInListsOfTwoAdapters) {
  OfferBoth();
  bench.script->vendor = kVendorHybrid;
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(For(0x13, 3), "");
  EXPECT_NE(For(0x03, 2), "");
}

TEST_F(Presentation, IsOfferedOnStarterToo) {
  SessionBench starter("win7starter intel: internal 1366x768 active, crt 1024x768");
  starter.machine.Config("PM:1024x768", "Support This Mode", 1);
  ASSERT_TRUE(starter.Start());
  ASSERT_TRUE(starter.box().PrepareDMItems(0x03, 2));
  EXPECT_EQ(starter.Items(), "1 0x1 icon 0\n2 0x3 icon 5\n1 0x2 icon 1\n2 0x3 icon 11 type 64\n");
}

// --- Memory that runs out.

class PresentationShortOfMemory : public Presentation {
 protected:
  void SetUp() override {
    OfferBoth();
    ASSERT_TRUE(bench.Start());
    ASSERT_TRUE(bench.box().PrepareDMItems(0x03, 2));  // what is asked for once is known then
    whole = bench.Items();
  }
  /// What an operation gives while the `nth` piece of memory is refused: its result, "thrown", or
  /// "enough" when it takes fewer pieces than that.
  template <typename Operation>
  std::string Refusing(uint32_t nth, Operation operation) {
    projectors().RefuseMemory(nth);
    std::string result;
    try {
      result = std::to_string(operation());
    } catch (...) {
      result = "thrown";
    }
    return projectors().RefuseMemory(0) ? "enough" : result;
  }
  std::string whole;
};

TEST_F(PresentationShortOfMemory, FailsAndClearsTheList) {
  size_t failures = 0;
  for (uint32_t nth = 1;; ++nth) {
    ASSERT_TRUE(bench.box().PrepareDMItems(0x01, 1));
    const std::string result =
        Refusing(nth, [this] { return projectors().AddPresentationItems(0x03); });
    if (result == "enough") break;
    if (result != "0") continue;  // the configuration was to be read
    ++failures;
    EXPECT_EQ(bench.Items(), "") << nth;
  }
  EXPECT_GE(failures, 2u);  // either item
}

TEST_F(PresentationShortOfMemory, LeavesAListOfTheExtendedItemAlone) {
  // The listing of monitors that is broken off keeps its key open.
  bench.ostrel().ForgiveLeaks();
  size_t alone = 0;
  for (uint32_t nth = 1;; ++nth) {
    const std::string result =
        Refusing(nth, [this] { return bench.box().PrepareDMItems(0x03, 2); });
    if (result == "enough") break;
    const std::string items = bench.Items();
    if (result == "0") {
      EXPECT_EQ(items, "") << nth;
    }
    if (result != "1" || items == whole) continue;
    ++alone;
    EXPECT_EQ(items, "4 0x3 icon 18\n") << nth;
    EXPECT_EQ(bench.State().items.at(0).index, 0u) << nth;
  }
  EXPECT_GE(alone, 2u);
}

// --- The discrete adapter that cannot clone.

IMMonitor* NoMonitor() { return nullptr; }

class PresentationOnDiscrete : public Presentation {
 protected:
  static std::shared_ptr<FakeScript>& Probe() {
    static std::shared_ptr<FakeScript> script;
    return script;
  }
  static IMMonitor* NewProbe() { return new FakeMonitor(Probe()); }

  /// `can_clone` is what the first question to the adapter finds.
  void StartDiscrete(bool can_clone) {
    OfferBoth();
    bench.script->vendor = kVendorNvidia;
    bench.script->discrete_only = true;
    ASSERT_TRUE(bench.Start<FakeNvidiaMonitor>());
    Probe() = std::make_shared<FakeScript>();
    ASSERT_EQ(bench.box().CanCloneOnDiscreteOutputsOf(can_clone ? NoMonitor : NewProbe), can_clone);
  }
};

TEST_F(PresentationOnDiscrete, IsNotOfferedOnHdmiAndDvi) {
  StartDiscrete(false);
  EXPECT_EQ(For(0x09, 2), "");
  EXPECT_EQ(For(0x11, 2), "");
}

TEST_F(PresentationOnDiscrete, IsOfferedOnEveryOtherConnector) {
  StartDiscrete(false);
  EXPECT_EQ(For(0x03, 2), "2 0x3 icon 10 type 32\n2 0x3 icon 11 type 64\n");
  EXPECT_EQ(For(0x05, 2), "2 0x5 icon 10 type 32\n2 0x5 icon 11 type 64\n");
  EXPECT_EQ(For(0x21, 2), "2 0x21 icon 10 type 32\n2 0x21 icon 11 type 64\n");
}

TEST_F(PresentationOnDiscrete, IsOfferedWhereItCanClone) {
  StartDiscrete(true);
  EXPECT_EQ(For(0x09, 2), "2 0x9 icon 10 type 32\n2 0x9 icon 11 type 64\n");
  EXPECT_EQ(For(0x11, 2), "2 0x11 icon 10 type 32\n2 0x11 icon 11 type 64\n");
}

TEST_F(PresentationOnDiscrete, OnDviStaysOnDviAlsoWhereThatOffersNothing) {
  StartDiscrete(false);
  EXPECT_EQ(For(0x29, 3), "");
}

TEST_F(PresentationOnDiscrete, MayPassTheGateWithACrtAmongTheDisplays) {
  StartDiscrete(false);
  ASSERT_TRUE(bench.box().PrepareDMItems(0x01, 1));
  EXPECT_TRUE(projectors().AddPresentationItemIfAllowed(0x13, 0x13, 11, 64));
  EXPECT_EQ(Presentations(bench.Items()), "2 0x13 icon 11 type 64\n");
  EXPECT_TRUE(projectors().AddPresentationItemIfAllowed(0x11, 0x11, 11, 64));
  EXPECT_EQ(Presentations(bench.Items()), "2 0x13 icon 11 type 64\n");
}

TEST_F(Presentation, AsksAboutTheDiscreteAdapterOnceItsDisplaysAreThere) {
  bench.script->vendor = kVendorNvidia;
  ASSERT_TRUE(bench.Start<FakeNvidiaMonitor>());
  ASSERT_TRUE(bench.box().PrepareDMItems(0x01, 1));
  bench.Calls();
  EXPECT_TRUE(projectors().AddPresentationItemIfAllowed(0x01, 0x05, 11, 64));
  EXPECT_EQ(CountOf(bench.Calls(), "IsDiscreteOnly\n"), 0u);
  EXPECT_TRUE(projectors().AddPresentationItemIfAllowed(0x05, 0x05, 11, 64));
  EXPECT_EQ(CountOf(bench.Calls(), "IsDiscreteOnly\n"), 1u);
}

TEST_F(Presentation, PassesTheGateOnlyWithEveryDisplayConnected) {
  ASSERT_TRUE(bench.Start());
  ASSERT_TRUE(bench.box().PrepareDMItems(0x01, 1));
  EXPECT_TRUE(projectors().AddPresentationItemIfAllowed(0x10, 0x11, 11, 64));
  EXPECT_EQ(bench.Items(), "1 0x1 icon 0\n");
  EXPECT_TRUE(projectors().AddPresentationItemIfAllowed(0x33, 0x11, 11, 64));
  EXPECT_EQ(bench.Items(), "1 0x1 icon 0\n2 0x11 icon 11 type 64\n");
}

// --- Problem projectors.

TEST_F(Presentation, LosesTheLargeItemForAProblemProjectorWhereTheKeySaysSo) {
  bench.machine.Config("PM:1024x768", "Check Problem Projector", 1);
  OfferBoth();
  AttachToCrt("Veld k2210");
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(For(0x03, 2), "2 0x3 icon 10 type 32\n");
  AttachToCrt("Veld k2211");
  EXPECT_EQ(For(0x03, 2), "2 0x3 icon 10 type 32\n2 0x3 icon 11 type 64\n");
}

TEST_F(Presentation, KeepsTheLargeItemForAProblemProjectorByDefault) {
  AttachToCrt("Veld k2210");
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(For(0x03, 2), kPresentationOfCrt);
}

TEST_F(Presentation, ReadsNoListWhereTheKeyIsOff) {
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(For(0x03, 2), kPresentationOfCrt);
  // Had the list been read before, it would be the built-in one.
  bench.machine.Config("PM:1024x768", "Problem Projector 0", "late");
  EXPECT_EQ(projectors().GetProblemProjectors(), std::vector<std::string>{"late"});
}

TEST_F(Presentation, LosesTheLargeItemForAConfiguredProjectorAndNotForABuiltInOneThen) {
  bench.machine.Config("PM:1024x768", "Check Problem Projector", 1);
  bench.machine.Config("PM:1024x768", "Problem Projector 0", "Veld S1");
  AttachToCrt("Veld k2210");
  ASSERT_TRUE(bench.Start());
  EXPECT_EQ(For(0x03, 2), kPresentationOfCrt);
  AttachToCrt("Veld S1");
  EXPECT_EQ(For(0x03, 2), "");
}

// --- The panel.

TEST(PresentationOnASmallPanel, HasNoLargeItemOnAnyConnector) {
  SessionBench bench("win7 intel: internal 1024x600 active, crt 1024x768");
  bench.machine.Config("PM:1024x768", "Support This Mode", 1);
  bench.machine.Config("PM:800x600", "Support This Mode", 1);
  ASSERT_TRUE(bench.Start());
  for (const uint32_t connected : {0x03u, 0x05u, 0x09u, 0x11u, 0x21u, 0x41u}) {
    ASSERT_TRUE(bench.box().PrepareDMItems(connected, 2));
    const std::string items = bench.Items();
    EXPECT_EQ(CountOf(items, "type 64"), 0u) << connected;
    EXPECT_EQ(CountOf(items, "type 32"), 1u) << connected;
  }
}

class Panel : public testing::Test {
 protected:
  static const ProjectorBox& Box(CoreHost* host) { return *host->ostrel().white_box().projectors; }
};

TEST_F(Panel, ReachesOnlyWithBothSides) {
  struct {
    const char* size;
    bool reaches;
  } const rows[] = {{"1024x768", true},  {"1366x768", true},  {"1280x1024", true},
                    {"1024x600", false}, {"1366x767", false}, {"1023x768", false},
                    {"800x600", false}};
  for (const auto& row : rows) {
    CoreHost host(std::string("win7 intel: internal ") + row.size + " active");
    EXPECT_EQ(Box(&host).PanelReaches1024x768(), row.reaches) << row.size;
  }
}

TEST_F(Panel, IsAskedOnce) {
  CoreHost host("win7 intel: internal 1024x600 active");
  EXPECT_FALSE(Box(&host).PanelReaches1024x768());
  host.machine.model().connectors[0].monitor->preferred = {1366, 768, 32, 60};
  EXPECT_FALSE(Box(&host).PanelReaches1024x768());
}

TEST_F(Panel, ReachesWhenItsSizeCannotBeRead) {
  CoreHost host("win7 intel: internal 1024x600 active");
  Box(&host);
  host.machine.Fail("QueryDisplayConfig", 1);
  EXPECT_TRUE(Box(&host).PanelReaches1024x768());
  EXPECT_TRUE(Box(&host).PanelReaches1024x768());
}

TEST_F(Panel, IsReadFromTheDriversEdidOnOldWindows) {
  struct {
    uint32_t height;
    bool preferred;
    bool initial;
    bool reaches;
  } const rows[] = {{768, true, true, true},
                    {600, true, true, false},
                    {768, false, true, false},  // no preferred timing: 0 by 0 was read
                    {600, true, false, true}};  // an extension that refuses: an exception
  for (const auto& row : rows) {
    SessionBench bench("xp intel: internal 1366x768 active, crt 1024x768");
    sim::EdidText text;
    text.preferred = {1024, row.height, 32, 60};
    text.preferred_bit = row.preferred;
    bench.script->edid = sim::MakeEdid(text);
    ASSERT_TRUE(bench.Start<FakeExtensionMonitor>());
    bench.script->initial_extension = row.initial;
    const ProjectorBox& box = *bench.ostrel().white_box().projectors;
    EXPECT_EQ(box.PanelReaches1024x768(), row.reaches) << row.height << row.preferred;
    EXPECT_EQ(box.PanelReaches1024x768(), row.reaches) << row.height << row.preferred;
  }
}

IPhysicalMonitor* NoReader() { return nullptr; }
IPhysicalMonitor* ThrowingReader() { throw std::runtime_error("no"); }

TEST_F(Panel, DoesNotReachOnceWithoutAReaderAndReachesFromThenOn) {
  CoreHost host("win7 intel: internal 1024x600 active", L"--enable-dcheck");
  Box(&host);
  host.ForgetLog();
  EXPECT_FALSE(Box(&host).PanelReaches1024x768Of(NoReader));
  EXPECT_EQ(host.TakeLog(), "Check failed: ext.get() != NULL. \n");
  EXPECT_TRUE(Box(&host).PanelReaches1024x768Of(NoReader));
  EXPECT_TRUE(Box(&host).PanelReaches1024x768());
  EXPECT_EQ(host.TakeLog(), "");
}

TEST_F(Panel, ReachesWhenTheReaderCannotBeMade) {
  CoreHost host("win7 intel: internal 1024x600 active");
  EXPECT_TRUE(Box(&host).PanelReaches1024x768Of(ThrowingReader));
  EXPECT_TRUE(Box(&host).PanelReaches1024x768());
}

// --- The resolution.

constexpr char kPanelAlone[] = "win7 intel: internal 1366x768 active";
constexpr char kCcdChange[] =
    "SetDisplayConfig(paths=1 flags=0x60)=0\nSetDisplayConfig(paths=1 flags=0x2a0)=0\n";

class PresentationResolution : public Panel {
 protected:
  static std::string SizeOf(CoreHost* host) {
    const sim::DisplayMode& mode = host->machine.model().sources[0].mode;
    return std::to_string(mode.width) + "x" + std::to_string(mode.height);
  }
};

TEST_F(PresentationResolution, IsThatOfItsType) {
  CoreHost host(kPanelAlone);
  EXPECT_TRUE(Box(&host).ApplyPresentationResolution(64));
  EXPECT_EQ(SizeOf(&host), "1024x768");
  EXPECT_EQ(host.machine.TakeJournal(), kCcdChange);
  EXPECT_TRUE(Box(&host).ApplyPresentationResolution(32));
  EXPECT_EQ(SizeOf(&host), "800x600");
}

TEST_F(PresentationResolution, IsNoneForEveryOtherType) {
  CoreHost host(kPanelAlone);
  for (const uint32_t type : {0u, 1u, 33u, 96u, 0xFFFFFFFFu}) {
    EXPECT_FALSE(Box(&host).ApplyPresentationResolution(type)) << type;
  }
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.machine.Calls("EnumDisplaySettingsExA"), 0u);
}

TEST_F(PresentationResolution, ThatIsThereAlreadyIsNotSet) {
  CoreHost host("win7 intel: internal 1024x768 active");
  EXPECT_TRUE(Box(&host).ApplyPresentationResolution(64));
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST_F(PresentationResolution, IsReadFromTheConfigurationAtEachUse) {
  CoreHost host(kPanelAlone);
  host.machine.Config("PM:1024x768", "Width", 1280);
  host.machine.Config("PM:1024x768", "Height", 720);
  EXPECT_TRUE(Box(&host).ApplyPresentationResolution(64));
  EXPECT_EQ(SizeOf(&host), "1280x720");
  host.machine.Config("PM:1024x768", "Width", 1366);
  host.machine.Config("PM:1024x768", "Height", 768);
  EXPECT_TRUE(Box(&host).ApplyPresentationResolution(64));
  EXPECT_EQ(SizeOf(&host), "1366x768");
}

TEST_F(PresentationResolution, WithOneSideTheSameIsSet) {
  CoreHost host("win7 intel: internal 1024x600 active");
  host.machine.Config("PM:800x600", "Width", 1024);
  host.machine.Config("PM:800x600", "Height", 576);
  Box(&host).ApplyPresentationResolution(32);
  EXPECT_NE(host.machine.TakeJournal(), "");
}

TEST_F(PresentationResolution, NeedsTheCurrentSettings) {
  CoreHost host(kPanelAlone);
  Box(&host);
  host.machine.Fail("EnumDisplaySettingsExA", 1);
  EXPECT_FALSE(Box(&host).ApplyPresentationResolution(64));
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST_F(PresentationResolution, FailsWithTheChange) {
  CoreHost host("win7 intel: internal 1024x768 active");
  Box(&host);
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE, sim::Machine::Repeat::kFromThenOn);
  host.machine.Config("PM:1024x768", "Height", 700);
  EXPECT_FALSE(Box(&host).ApplyPresentationResolution(64));
}

TEST(PresentationResolutionOnVista, ChangesWidthAndHeightOnly) {
  SessionBench bench("vista intel: internal 1366x768 active, crt 1024x768");
  ASSERT_TRUE(bench.Start());
  EXPECT_TRUE(bench.ostrel().white_box().projectors->ApplyPresentationResolution(64));
  const std::string journal = bench.machine.TakeJournal();
  EXPECT_EQ(CountOf(journal, "1024x768x32@60 at 0,0 fields=0x180000"), 2u) << journal;
  EXPECT_EQ(bench.Calls(), "PreloadDisplayModes\n");
}

// --- Sessions.

class PresentationSession : public Presentation {
 protected:
  PresentationSession() {
    OfferBoth();
    bench.script->follows = true;
  }
  /// Presses until the highlight has moved `steps` times, and lets the pop-up close.
  void Choose(int steps) {
    for (int press = 0; press <= steps; ++press) ASSERT_TRUE(bench.ostrel().Run());
    bench.machine.Advance(1500);
  }
  std::string Size() {
    const sim::DisplayMode& mode = bench.machine.model().sources[0].mode;
    return std::to_string(mode.width) + "x" + std::to_string(mode.height);
  }
  std::string RememberedType() {
    return bench.Remembered("Active Display Mode", "Presentation Mode");
  }
};

TEST_F(PresentationSession, ShowsThePicturesOfBothResolutions) {
  ASSERT_TRUE(bench.Start());
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.ItemPictures(), (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "p800x600.png",
                                            "p1024x768.png", "Extend.png"}));
  EXPECT_EQ(bench.Flags(), "100000");
}

TEST_F(PresentationSession, SetsModeAndResolutionAndIsHighlightedAfterwards) {
  ASSERT_TRUE(bench.Start());
  Choose(4);
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
  EXPECT_EQ(Size(), "1024x768");
  EXPECT_EQ(RememberedType(), "64");
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.Flags(), "000010");
  EXPECT_EQ(bench.Highlight().substr(0, 12), "selected.png");
  EXPECT_NE(bench.Highlight().find("p1024x768.png"), std::string::npos) << bench.Highlight();
  EXPECT_EQ(RememberedType(), "64");
}

TEST_F(PresentationSession, FromOneToTheOtherChangesTheResolutionOnly) {
  ASSERT_TRUE(bench.Start());
  Choose(3);
  EXPECT_EQ(Size(), "800x600");
  bench.Calls();
  Choose(1);
  EXPECT_EQ(bench.Changes(), "");
  EXPECT_EQ(Size(), "1024x768");
  EXPECT_EQ(RememberedType(), "64");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Display Mode"), "2");
}

TEST_F(PresentationSession, FromOneToTheOtherAsksNothingOfAStupidProjector) {
  bench.machine.Config("Settings", "Stupid Projectors", "Veld S1");
  bench.script->edid = sim::MakeEdid("Veld S1", {1024, 768, 32, 60});
  ASSERT_TRUE(bench.Start<FakeMonitorWithSettings>());
  Choose(4);
  EXPECT_EQ(bench.Changes(), "SetDisplayModeWithSettings(2, 0x3)\n");
  // The driver call has no resolution of the simulated machine: the item's own follows all the
  // same.
  EXPECT_EQ(Size(), "1024x768");
  bench.script->mode = IMMonitor::DM_CLONE;
  bench.script->active = 0x03;
  bench.Calls();
  for (int press = 0; press != 6; ++press) ASSERT_TRUE(bench.ostrel().Run());  // round to 800x600
  bench.machine.Advance(1500);
  EXPECT_EQ(bench.Changes(), "");
  EXPECT_EQ(Size(), "800x600");
  EXPECT_EQ(RememberedType(), "32");
}

TEST_F(PresentationSession, IsForgottenWhenItIsNoLongerOffered) {
  bench.Remember("Active Display Mode", "Presentation Mode", "64");
  AttachToCrt("Veld k2210");
  bench.machine.Config("PM:1024x768", "Check Problem Projector", 1);
  bench.script->mode = IMMonitor::DM_CLONE;
  bench.script->active = 0x03;
  ASSERT_TRUE(bench.Start());
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.Flags(), "01000");  // panel, clone, CRT, 800 by 600, extended
  EXPECT_EQ(RememberedType(), "0");
}

TEST_F(PresentationSession, LeavesNothingRememberedOfItsOwnSettings) {
  ASSERT_TRUE(bench.Start());
  Choose(3);
  Choose(4);  // 1024 by 768, extended, the panel, and the plain clone of the same displays
  EXPECT_EQ(RememberedType(), "0");
  EXPECT_EQ(bench.Remembered("2,3 | CRT Monitor,Panel", "Width"), "-");
  EXPECT_EQ(bench.Remembered("1,1 | CRT Monitor,Panel", "Width"), "1366");
}

}  // namespace
