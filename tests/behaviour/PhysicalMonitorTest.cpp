// The native size of a monitor through a graphics vendor's library.
#include "Common/MultiMonitor/PhysicalMonitorByDisplayLibrary.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/behaviour/CoreHost.h"
#include "tests/support/EdidBlock.h"
#include "tests/support/FakeMonitor.h"

namespace {

struct PhysicalHost : CoreHost {
  explicit PhysicalHost(const std::wstring& switches = L"")
      : CoreHost("vista intel: internal 1366x768 active, crt 1024x768", switches),
        script(std::make_shared<FakeScript>()) {
    script->edid = EdidBlock().PanelTiming().Sum().bytes();
  }
  ~PhysicalHost() { ostrel().white_box().factory->DeleteMultiMonitorObject(); }
  PhysicalHost(const PhysicalHost&) = delete;
  PhysicalHost& operator=(const PhysicalHost&) = delete;

  const IdentityBox& identity() { return *ostrel().white_box().identity; }
  const FactoryBox& factory() { return *ostrel().white_box().factory; }

  /// Puts an object with an extension in the active place; the factory owns it.
  FakeExtensionMonitor* Install() {
    auto* const monitor = new FakeExtensionMonitor(script);
    factory().InstallMonitor(monitor, static_cast<uint16_t>(kVendorIntel));
    script->TakeCalls();
    return monitor;
  }

  /// "yes 1366x768", "no 7x7": the answer and the outputs.
  std::string AskFor(IMMonitor* monitor, uint32_t display = IMMonitor::MD_NB) {
    IPhysicalMonitor* const physical = identity().NewPhysicalMonitorOf(monitor);
    physical->AddRef();
    const std::string answer = Answer(physical, display);
    physical->Release();
    return answer;
  }
  static std::string Answer(IPhysicalMonitor* physical, uint32_t display) {
    uint32_t width = 7;
    uint32_t height = 7;
    const bool known = physical->GetNativeResolution(display, &width, &height);
    return std::string(known ? "yes " : "no ") + std::to_string(width) + "x" +
           std::to_string(height);
  }
  std::string AskForEdid(const std::vector<uint8_t>& edid) {
    script->edid = edid;
    FakeExtensionMonitor monitor(script);
    return AskFor(&monitor);
  }

  std::shared_ptr<FakeScript> script;
};

ULONG CountOn(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

constexpr char kReadAndFreed[] = "GetEDID(0, 0x1)\nFreeEDID\n";

TEST(PhysicalMonitorByDisplayLibrary, ReadsThePreferredTimingOfTheDisplay) {
  PhysicalHost host;
  FakeExtensionMonitor monitor(host.script);
  EXPECT_EQ(host.AskFor(&monitor), "yes 1366x768");
  EXPECT_EQ(host.script->TakeCalls(), kReadAndFreed);
  EXPECT_EQ(host.AskFor(&monitor, IMMonitor::MD_HDMI), "yes 1366x768");
  EXPECT_EQ(host.script->TakeCalls(), "GetEDID(0, 0x10)\nFreeEDID\n");
}

TEST(PhysicalMonitorByDisplayLibrary, WithoutAPreferredTimingAnswersYesWithNoSize) {
  PhysicalHost host;
  EXPECT_EQ(host.AskForEdid(EdidBlock().PanelTiming(false).Sum().bytes()), "yes 0x0");
  EXPECT_EQ(host.script->TakeCalls(), kReadAndFreed);
  // Flagged, but no timing.
  EXPECT_EQ(host.AskForEdid(EdidBlock().Put(24, {2}).Sum().bytes()), "yes 0x0");
}

TEST(PhysicalMonitorByDisplayLibrary, ABlockThatIsTooShortHasNoPreferredTiming) {
  PhysicalHost host;
  for (const size_t size : {size_t{1}, size_t{127}}) {
    EXPECT_EQ(host.AskForEdid(std::vector<uint8_t>(size, 0xFF)), "yes 0x0") << size;
    EXPECT_EQ(host.script->TakeCalls(), kReadAndFreed) << size;
  }
}

TEST(PhysicalMonitorByDisplayLibrary, ADamagedEdidIsAFailureAndIsGivenBack) {
  PhysicalHost host;
  const std::vector<uint8_t> damaged[] = {
      EdidBlock().PanelTiming().Sum().Spoil().bytes(),
      EdidBlock().PanelTiming().Put(0, {1}).Sum().bytes(),
      EdidBlock().PanelTiming().Put(18, {2}).Sum().bytes(),
      std::vector<uint8_t>(129, 0xFF),
  };
  for (const std::vector<uint8_t>& edid : damaged) {
    EXPECT_EQ(host.AskForEdid(edid), "no 7x7");
    EXPECT_EQ(host.script->TakeCalls(), kReadAndFreed);
  }
}

TEST(PhysicalMonitorByDisplayLibrary, AnEdidThatCannotBeReadIsNotGivenBack) {
  PhysicalHost host;
  EXPECT_EQ(host.AskForEdid({}), "no 7x7");
  EXPECT_EQ(host.script->TakeCalls(), "GetEDID(0, 0x1)\n");
}

TEST(PhysicalMonitorByDisplayLibrary, AMissingOutputIsToldAndRefused) {
  PhysicalHost host(L"--enable-dcheck");
  FakeExtensionMonitor monitor(host.script);
  IPhysicalMonitor* const physical = host.identity().NewPhysicalMonitorOf(&monitor);
  physical->AddRef();
  uint32_t size = 7;
  for (const bool no_width : {true, false}) {
    host.ForgetLog();
    EXPECT_FALSE(physical->GetNativeResolution(IMMonitor::MD_NB, no_width ? nullptr : &size,
                                               no_width ? &size : nullptr));
    EXPECT_EQ(host.TakeLog(), "Check failed: width != NULL && height != NULL. \n");
  }
  EXPECT_EQ(size, 7u);
  EXPECT_EQ(host.script->TakeCalls(), "");
  physical->Release();
}

TEST(PhysicalMonitorByDisplayLibrary, QueryInterfaceIsToldAndRefused) {
  PhysicalHost host(L"--enable-dcheck");
  FakeExtensionMonitor monitor(host.script);
  IPhysicalMonitor* const physical = host.identity().NewPhysicalMonitorOf(&monitor);
  physical->AddRef();
  host.ForgetLog();
  EXPECT_EQ(physical->QueryInterface(IID_IUnknown, nullptr), static_cast<HRESULT>(0x80004005));
  EXPECT_EQ(host.TakeLog(), "Check failed: 0 && \"Should never call this function\". \n");
  physical->Release();
}

TEST(PhysicalMonitorByDisplayLibrary, OverAnObjectWithoutExtensionNothingIsKnown) {
  PhysicalHost host;
  FakeMonitor monitor(host.script);
  EXPECT_EQ(host.AskFor(&monitor), "no 7x7");
  EXPECT_EQ(host.AskFor(nullptr), "no 7x7");
  EXPECT_EQ(host.script->TakeCalls(), "");
}

TEST(PhysicalMonitorByDisplayLibrary, HoldsOneReferenceForAsLongAsItLives) {
  PhysicalHost host;
  FakeExtensionMonitor monitor(host.script);
  IPhysicalMonitor* const physical = host.identity().NewPhysicalMonitorOf(&monitor);
  EXPECT_EQ(CountOn(static_cast<IDisplayExtension*>(&monitor)), 2u);
  EXPECT_EQ(host.script->TakeCalls(), "");  // not made ready here
  EXPECT_EQ(physical->AddRef(), 1u);        // the count started at 0
  EXPECT_EQ(physical->AddRef(), 2u);
  EXPECT_EQ(physical->Release(), 1u);
  EXPECT_EQ(CountOn(static_cast<IDisplayExtension*>(&monitor)), 2u);
  EXPECT_EQ(physical->Release(), 0u);
  EXPECT_EQ(CountOn(static_cast<IDisplayExtension*>(&monitor)), 1u);
}

// --- Over the active object.

TEST(PhysicalMonitorByDisplayLibrary, MakesTheActiveObjectsExtensionReady) {
  PhysicalHost host;
  FakeExtensionMonitor* const monitor = host.Install();
  std::string error;
  IPhysicalMonitor* const physical = host.identity().NewPhysicalMonitor(&error);
  ASSERT_NE(physical, nullptr) << error;
  EXPECT_EQ(CountOf(host.script->TakeCalls(), "InitialExtension\n"), 1u);
  EXPECT_EQ(CountOn(static_cast<IDisplayExtension*>(monitor)), 2u);
  physical->AddRef();
  EXPECT_EQ(PhysicalHost::Answer(physical, IMMonitor::MD_NB), "yes 1366x768");
  physical->Release();
  EXPECT_EQ(CountOn(static_cast<IDisplayExtension*>(monitor)), 1u);
  EXPECT_FALSE(host.script->deleted);
}

TEST(PhysicalMonitorByDisplayLibrary, ThrowsWhenTheExtensionIsNotReady) {
  PhysicalHost host;
  FakeExtensionMonitor* const monitor = host.Install();
  host.script->initial_extension = false;
  std::string error;
  EXPECT_EQ(host.identity().NewPhysicalMonitor(&error), nullptr);
  EXPECT_EQ(error, "call IDisplayExtension::InitialExtension failed");
  EXPECT_EQ(CountOn(static_cast<IDisplayExtension*>(monitor)), 1u);
}

TEST(PhysicalMonitorByDisplayLibrary, GivesItsReferenceBackWhenTheExtensionThrows) {
  PhysicalHost host;
  FakeExtensionMonitor* const monitor = host.Install();
  host.script->on_call = [](const std::string& call) {
    if (call == "InitialExtension") throw std::runtime_error("the driver's own text");
  };
  std::string error;
  EXPECT_EQ(host.identity().NewPhysicalMonitor(&error), nullptr);
  EXPECT_EQ(error, "the driver's own text");
  host.script->on_call = nullptr;
  EXPECT_EQ(CountOn(static_cast<IDisplayExtension*>(monitor)), 1u);
}

TEST(PhysicalMonitorByDisplayLibrary, OverAnActiveObjectWithoutExtensionNothingIsKnown) {
  PhysicalHost host;
  host.factory().InstallMonitor(new FakeMonitor(host.script), static_cast<uint16_t>(kVendorIntel));
  std::string error;
  IPhysicalMonitor* const physical = host.identity().NewPhysicalMonitor(&error);
  ASSERT_NE(physical, nullptr) << error;
  physical->AddRef();
  EXPECT_EQ(PhysicalHost::Answer(physical, IMMonitor::MD_NB), "no 7x7");
  EXPECT_EQ(physical->Release(), 0u);
}

TEST(CreatePhysicalMonitor, ReadsTheEdidBelowWindows7) {
  PhysicalHost host;
  host.Install();
  IPhysicalMonitor* const physical = host.factory().CreatePhysicalMonitor();
  ASSERT_NE(physical, nullptr);
  EXPECT_EQ(physical->AddRef(), 1u);
  EXPECT_EQ(PhysicalHost::Answer(physical, IMMonitor::MD_NB), "yes 1366x768");
  EXPECT_EQ(physical->Release(), 0u);
}

}  // namespace
