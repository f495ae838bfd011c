// Where the object that leaves DisplayLink's displays out comes from, and what becomes of the
// add-on host's clients when objects are made and ended on the way.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <typeinfo>

#include "tests/behaviour/DisplayLinkWorkaroundHost.h"
#include "tests/support/FakeMonitor.h"

using namespace ccd_test;

namespace {

constexpr char kDisplaysOnBoth[] = "win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080";
constexpr char kDisplaysOnOne[] = "win7 intel, nvidia: internal 1366x768 active, crt 1024x768";
constexpr char kNoVendor[] = "win7 sis: internal 1366x768 active";

class DisplayLinkFactory : public testing::Test {
 protected:
  void On(const char* text) { host_.emplace(text); }
  DisplayLinkHost& host() {
    if (!host_) On(kPanelAndCrt);
    return *host_;
  }
  sim::Library& ostrel() { return host().ostrel(); }
  const FactoryBox& factory() { return *ostrel().white_box().factory; }
  bool HoldsAddOnHost() { return ostrel().white_box().display_link->ConnectedHost() != nullptr; }

  static bool IsOfClass(IMMonitor* object, const char* name) {
    return object != nullptr && std::string(typeid(*object).name()).find(name) != std::string::npos;
  }
  bool IsActive(const char* name) { return IsOfClass(factory().ActiveMonitor(), name); }

  /// Takes back clients that nobody else does: an object that ends without having joined is one.
  void TakeBack(int clients) {
    for (int i = 0; i < clients; ++i) host().NewBareCcd();
    EXPECT_EQ(host().TakeConnections().find("Disconnect 1\n") != std::string::npos, clients != 0);
  }

 private:
  std::optional<DisplayLinkHost> host_;
};

constexpr char kClass[] = "DisplayLinkWorkaroundImpl";

// --- One adapter, Intel's.

TEST_F(DisplayLinkFactory, IntelsObjectIsOneClientAndTheLibraryAnother) {
  ASSERT_TRUE(ostrel().InitExtendMode());
  EXPECT_TRUE(IsActive(kClass));
  EXPECT_TRUE(HoldsAddOnHost());
  EXPECT_EQ(host().TakeConnections(), "Connect 0\nConnect 1\n");
  EXPECT_EQ(factory().ActiveVendor(), 0x8086);
  ostrel().DeInitExtendMode();
  EXPECT_EQ(host().TakeConnections(), "Disconnect 2\nDisconnect 1\n");
  EXPECT_FALSE(HoldsAddOnHost());
  EXPECT_EQ(host().Modules(), 0u);
}

TEST_F(DisplayLinkFactory, EachRunOfTheLibraryIsANewRunOfTheAddOnHost) {
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(ostrel().InitExtendMode()) << round;
    EXPECT_EQ(host().TakeConnections(), "Connect 0\nConnect 1\n") << round;
    ostrel().DeInitExtendMode();
    EXPECT_EQ(host().TakeConnections(), "Disconnect 2\nDisconnect 1\n") << round;
  }
}

TEST_F(DisplayLinkFactory, TheServiceIsAskedWhenTheObjectIsMade) {
  ASSERT_TRUE(ostrel().InitExtendMode());
  IMMonitor* const object = factory().ActiveMonitor();
  host().machine.model().services.clear();
  EXPECT_EQ(factory().GetMultiMonitorObject(), object);
  ostrel().DeInitExtendMode();
  ASSERT_TRUE(ostrel().InitExtendMode());
  EXPECT_TRUE(IsActive("IntelMMImpl"));
  EXPECT_FALSE(HoldsAddOnHost());
  host().machine.model().services.push_back({"DisplayLinkService", true});
  factory().GetMultiMonitorObject();
  EXPECT_TRUE(IsActive("IntelMMImpl"));
}

TEST_F(DisplayLinkFactory, TheSwitchSideTellsNoVendor) {
  ASSERT_TRUE(ostrel().Init());
  EXPECT_TRUE(IsActive(kClass));
  EXPECT_EQ(factory().ActiveMonitor()->GetVgaVendor(), 0x045Eu);
  EXPECT_EQ(ostrel().GetVgaVendor(), 0u);
  ostrel().DeInit();
}

TEST_F(DisplayLinkFactory, TheEndOfOneSideLeavesTheAddOnHostForTheOtherToo) {
  ASSERT_TRUE(ostrel().InitExtendMode());
  ASSERT_TRUE(ostrel().Init());
  IMMonitor* const object = factory().ActiveMonitor();
  host().TakeConnections();
  ostrel().DeInit();
  EXPECT_EQ(host().TakeConnections(), "Disconnect 2\n");
  EXPECT_FALSE(HoldsAddOnHost());
  EXPECT_EQ(factory().ActiveMonitor(), object);
  ostrel().DeInitExtendMode();
  EXPECT_EQ(host().TakeConnections(), "Disconnect 1\n");
}

TEST_F(DisplayLinkFactory, AnObjectThatDoesNotStartTakesTheLibrarysClientAlongAndTheHostIsKept) {
  ostrel();
  host().machine.Fail("LoadLibraryA", 1);
  EXPECT_FALSE(ostrel().InitExtendMode());
  EXPECT_EQ(host().TakeConnections(), "Connect 0\nDisconnect 1\n");
  EXPECT_TRUE(HoldsAddOnHost());
  // The host that is kept has been stopped for good; the object works without it.
  ASSERT_TRUE(ostrel().InitExtendMode());
  EXPECT_EQ(host().TakeConnections(), "Connect 0\nConnect 1\n");
  uint32_t displays = 0, count = 0;
  EXPECT_TRUE(ostrel().GetConnectedDisplays(&displays, &count));
  EXPECT_EQ(displays, 3u);
  EXPECT_EQ(count, 2u);
  ostrel().DeInitExtendMode();
  EXPECT_EQ(host().TakeConnections(), "Disconnect 2\nDisconnect 1\n");
}

TEST_F(DisplayLinkFactory, AFailedInitLeavesTheAddOnHostConnected) {
  const auto script = std::make_shared<FakeScript>();
  script->initial = 0;
  factory().InstallMonitor(new FakeMonitor(script), static_cast<uint16_t>(kVendorIntel));
  EXPECT_FALSE(ostrel().Init());
  EXPECT_TRUE(script->deleted);
  EXPECT_EQ(host().TakeConnections(), "Connect 0\n");
  EXPECT_TRUE(HoldsAddOnHost());
  TakeBack(1);
}

// --- Where no vendor is asked.

TEST_F(DisplayLinkFactory, ThePreferredObjectIsTheOnlyClientBesideAnotherVendor) {
  On("win7 amd: internal 1366x768 active, crt 1024x768");
  host().machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
  ASSERT_TRUE(ostrel().InitExtendMode());
  EXPECT_TRUE(IsActive(kClass));
  EXPECT_FALSE(HoldsAddOnHost());
  EXPECT_EQ(host().TakeConnections(), "Connect 0\n");
  ostrel().DeInitExtendMode();
  EXPECT_EQ(host().TakeConnections(), "Disconnect 1\n");
}

TEST_F(DisplayLinkFactory, ObjectsThatNobodyStartsCountDownAllTheSameAndAtOnce) {
  On(kNoVendor);
  ASSERT_TRUE(ostrel().InitExtendMode());
  EXPECT_EQ(host().TakeConnections(), "Connect 0\n");
  for (int call = 0; call < 3; ++call) factory().GetMultiMonitorObject();
  const uint64_t before = host().machine.Now();
  ostrel().DeInitExtendMode();
  EXPECT_EQ(host().TakeConnections(), "Disconnect 1\nDisconnect 0\nDisconnect -1\nDisconnect -2\n");
  EXPECT_EQ(host().machine.Now(), before);
}

// --- Objects for a moment.

TEST_F(DisplayLinkFactory, AnObjectByVendorIsNoClientUntilItIsStarted) {
  EXPECT_TRUE(IsOfClass(factory().CreateIMMonitorByVendor(kVendorIntel), kClass));
  EXPECT_EQ(host().TakeConnections(), "");
  factory().DeleteMultiMonitorObject();
  EXPECT_EQ(host().TakeConnections(), "Disconnect 0\n");
}

TEST_F(DisplayLinkFactory, AnObjectThatAVendorChangeBroughtIsNoClient) {
  const auto script = std::make_shared<FakeScript>();
  factory().InstallMonitor(new FakeMonitor(script), static_cast<uint16_t>(kVendorAmd));
  factory().OnActiveDisplayAdapterVendorChanged();
  EXPECT_TRUE(script->deleted);
  EXPECT_TRUE(IsActive(kClass));
  uint32_t displays = 0, count = 0;
  EXPECT_EQ(factory().GetMultiMonitorObject()->GetConnectedDisplays(&displays, &count), 0);
  EXPECT_EQ(host().TakeConnections(), "");
  factory().DeleteMultiMonitorObject();
  EXPECT_EQ(host().TakeConnections(), "Disconnect 0\n");
}

TEST_F(DisplayLinkFactory, AnObjectForTheActiveVendorIsNoClientUntilItIsStarted) {
  std::unique_ptr<IMMonitor> object(factory().CreateIMMonitorForActiveVendor());
  ASSERT_TRUE(IsOfClass(object.get(), kClass));
  EXPECT_EQ(object->Initial(), 1);
  object.reset();
  EXPECT_EQ(host().TakeConnections(), "Connect 0\nDisconnect 1\n");
}

TEST_F(DisplayLinkFactory, AskingForTheNativeSizeJoinsForAMoment) {
  const CcdPointer client = host().NewCcd();
  IPhysicalMonitor* const physical = factory().CreatePhysicalMonitor();
  ASSERT_TRUE(IsOfClass(dynamic_cast<IMMonitor*>(physical), kClass));
  physical->AddRef();
  uint32_t width = 0, height = 0;
  EXPECT_TRUE(physical->GetNativeResolution(IMMonitor::MD_NB, &width, &height));
  EXPECT_EQ(width, 1366u);
  EXPECT_EQ(physical->Release(), 0u);
  EXPECT_EQ(host().TakeConnections(), "Connect 0\nConnect 1\nDisconnect 2\n");
}

TEST_F(DisplayLinkFactory, AMonitorThatIsAskedNothingTakesAClientAway) {
  const CcdPointer client = host().NewCcd();
  IPhysicalMonitor* const physical = factory().CreatePhysicalMonitor();
  physical->AddRef();
  EXPECT_EQ(physical->Release(), 0u);
  EXPECT_EQ(host().TakeConnections(), "Connect 0\nDisconnect 1\n");
}

TEST_F(DisplayLinkFactory, SettingsOfABackEndWithoutItsOwnJoinForAMoment) {
  const std::unique_ptr<MultiMonitor> bare(host().core().NewBareMultiMonitor());
  DEVMODEA dm = {};
  EXPECT_TRUE(bare->GetDisplaySettings(IMMonitor::MD_NB, &dm));
  EXPECT_EQ(dm.dmPelsWidth, 1366u);
  EXPECT_EQ(host().TakeConnections(), "Connect 0\nDisconnect 1\n");
}

TEST_F(DisplayLinkFactory, SettingsThatCannotBeHadDoNotJoin) {
  On("2008r2 intel: internal 1366x768 active");
  const std::unique_ptr<MultiMonitor> bare(host().core().NewBareMultiMonitor());
  DEVMODEA dm = {};
  EXPECT_FALSE(bare->GetDisplaySettings(IMMonitor::MD_NB, &dm));
  EXPECT_EQ(host().TakeConnections(), "Disconnect 0\n");
}

// --- Two adapters.

TEST_F(DisplayLinkFactory, TheControllersIntelSideIsStartedTwiceAndStaysAClient) {
  On(kDisplaysOnBoth);
  ASSERT_TRUE(ostrel().InitExtendMode());
  EXPECT_TRUE(IsActive("HybridController"));
  EXPECT_EQ(host().TakeConnections(),
            "Connect 0\n"                // the library
            "Connect 1\nDisconnect 2\n"  // displays on two adapters?
            "Connect 1\n"                // the Intel side, by the factory
            "Connect 2\n"                // again, by the controller
            "Connect 3\n");              // the controller's third object
  ostrel().DeInitExtendMode();
  EXPECT_EQ(host().TakeConnections(), "Disconnect 4\nDisconnect 3\nDisconnect 2\n");
  TakeBack(1);
}

TEST_F(DisplayLinkFactory, IntelsObjectOfTwoAdaptersIsStartedTwiceAndStaysAClient) {
  On(kDisplaysOnOne);
  ASSERT_TRUE(ostrel().InitExtendMode());
  EXPECT_TRUE(IsActive(kClass));
  EXPECT_EQ(host().TakeConnections(),
            "Connect 0\n"                // the library
            "Connect 1\nDisconnect 2\n"  // displays on two adapters?
            "Connect 1\nConnect 2\n");
  ostrel().DeInitExtendMode();
  EXPECT_EQ(host().TakeConnections(), "Disconnect 3\nDisconnect 2\n");
  TakeBack(1);
}

// --- Two objects at a time.

TEST_F(DisplayLinkFactory, TwoObjectsHaveApisOfTheirOwn) {
  const CcdPointer first = host().NewCcd();
  const size_t modules = host().Modules();
  CcdPointer second = host().NewCcd();
  EXPECT_EQ(CountOf(host().machine.Outstanding(), "(2 times)"), 1u) << host().machine.Outstanding();
  EXPECT_EQ(second->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 1);
  second.reset();
  EXPECT_EQ(host().Modules(), modules);
  EXPECT_EQ(Active(first), (Report{1, 0x03, 2}));
}

}  // namespace
