// The Intel back-end: its object, its devices, and what it says of the machine.
#include <gtest/gtest.h>

#include "sim/faces/BasicStrings.h"
#include "sim/faces/IntelDriverRules.h"
#include "tests/behaviour/IntelHost.h"
#include "tests/support/EdidBlock.h"
#include "tests/support/RaiseWatch.h"
#include "tests/support/ScriptedCui.h"

namespace {

constexpr char kPanelHdmi[] = "win7 intel: internal 1366x768 active, hdmi 1920x1080";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";

void RemoveDriver(IntelHost* host) {
  for (sim::Adapter& adapter : host->model().adapters) adapter.vendor_library = false;
}

// --- Initial.

TEST(IntelMMImpl, InitialMakesTheDriversObjectOnce) {
  IntelHost host(kPanelHdmi);
  IMMonitor* const object = host.bare();
  EXPECT_EQ(host.machine.Calls("CoCreateInstance"), 0u);
  EXPECT_TRUE(object->Initial());
  EXPECT_TRUE(object->Initial());
  EXPECT_TRUE(host.box().ExtensionOf(object)->InitialExtension());
  EXPECT_EQ(host.machine.Calls("CLSIDFromProgID"), 1u);
  EXPECT_EQ(host.machine.Calls("CoCreateInstance"), 1u);
}

TEST(IntelMMImpl, InitialFailsWhereTheObjectIsNotRegistered) {
  IntelHost host(kPanelHdmi);
  RemoveDriver(&host);
  host.bare();
  host.ForgetLog();
  EXPECT_FALSE(host.bare()->Initial());
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR Can't initial Intel display library\n");
  EXPECT_EQ(host.machine.Calls("CoCreateInstance"), 0u);
  EXPECT_FALSE(host.bare()->Initial());  // and is tried again
  EXPECT_EQ(host.machine.Calls("CLSIDFromProgID"), 2u);
}

TEST(IntelMMImpl, InitialTellsWhyTheObjectCannotBeMade) {
  IntelHost host(kPanelHdmi);
  host.bare();
  host.ForgetLog();
  host.machine.Fail("CoCreateInstance", 1, 0x80040154);
  EXPECT_FALSE(host.bare()->Initial());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Call to CoCreateInstance to create Intel COM object failed, hr = 0x80040154\n"
            "ERROR Can't initial Intel display library\n");
  EXPECT_TRUE(host.bare()->Initial());
}

// The name leads to another class here, and the object is made of the fixed one all the same.
TEST(IntelMMImpl, RegisteredNameIsOnlyATest) {
  IntelHost host(kPanelHdmi);
  constexpr CLSID kOther = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  const auto refuse = [](REFIID, void**) -> HRESULT { return E_FAIL; };
  auto& classes = host.machine.state().com_classes;
  classes["without.a.name"] = *sim::FindIntelDriver(host.model());
  classes[sim::kIntelDriverProgramId] = {kOther, refuse};
  EXPECT_TRUE(host.bare()->Initial());
}

TEST(IntelMMImpl, ObjectIsSoughtInAProcessOfItsOwnOnly) {
  IntelHost host(kPanelHdmi);
  host.bare();
  host.machine.JournalReads(true);
  EXPECT_TRUE(host.bare()->Initial());
  const std::string journal = host.machine.TakeJournal();
  EXPECT_NE(journal.find("CLSIDFromProgID(IgfxExt.CUIExternal)=0\n"), std::string::npos) << journal;
  EXPECT_NE(journal.find("CoCreateInstance(context=4)=0\n"), std::string::npos) << journal;
}

TEST(IntelMMImpl, ReferenceToTheObjectIsKeptForGood) {
  IntelHost host(kPanelHdmi);
  host.intel();
  host.End();
  EXPECT_EQ(sim::IntelDriverReferences(host.machine), 1u);
}

TEST(IntelMMImpl, NamesGivenToTheDriverAreNotFreed) {
  IntelHost host(kPanelHdmi);
  host.intel();
  EXPECT_EQ(host.Connected(), "0x11 (2)");
  EXPECT_EQ(sim::KeptBasicStrings(host.machine), 2u);  // one for each display device
  EXPECT_EQ(host.Active(), "0x1 (1)");
  EXPECT_EQ(sim::KeptBasicStrings(host.machine), 4u);
  EXPECT_EQ(host.machine.Calls("SysFreeString"), 0u);
}

TEST(IntelMMImpl, IsIntels) {
  IntelHost host(kPanelHdmi);
  EXPECT_EQ(host.intel().GetVgaVendor(), 0x8086u);
  EXPECT_EQ(host.extension().GetExtensionVendor(), 0x8086u);
}

// --- IUnknown and IDisplayExtension.

TEST(IntelMMImpl, CountStartsAtTheOwnersReference) {
  IntelHost host(kPanelHdmi);
  EXPECT_EQ(host.extension().AddRef(), 2u);
  EXPECT_EQ(host.extension().Release(), 1u);
  EXPECT_EQ(host.Connected(), "0x11 (2)");  // still there
}

TEST(IntelMMImpl, LastReleaseDeletesTheWholeObject) {
  IntelHost host(kPanelHdmi);
  IMMonitor* const object = host.box().NewIntelMMImpl();
  EXPECT_EQ(host.box().ExtensionOf(object)->Release(), 0u);
}

TEST(IntelMMImpl, QueryInterfaceIsNotToBeCalled) {
  IntelHost host(kPanelHdmi, kChecked);
  host.Forget();
  void* object = nullptr;
  EXPECT_EQ(host.extension().QueryInterface(IID_IUnknown, &object), E_FAIL);
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: 0 && \"Should never call this function\". \n");
}

TEST(IntelMMImpl, InitialExtensionInitialisesTheObject) {
  IntelHost host(kPanelHdmi);
  EXPECT_TRUE(host.box().ExtensionOf(host.bare())->InitialExtension());
  EXPECT_EQ(host.Active(), "0x1 (1)");
  EXPECT_EQ(host.machine.Calls("CoCreateInstance"), 1u);
}

TEST(IntelMMImpl, InitialExtensionTellsOfItsFailure) {
  IntelHost host(kPanelHdmi, kChecked);
  RemoveDriver(&host);
  host.bare();
  host.ForgetLog();
  EXPECT_FALSE(host.box().ExtensionOf(host.bare())->InitialExtension());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Can't initial Intel display library\n"
            "ERROR_REPORT Check failed: 0 && \"Initial Intel library failed\". \n");
}

TEST(IntelMMImpl, ThreeDisplaysAreABitOfTheSupportedConnectors) {
  IntelHost three("win7 intel*3: internal 1366x768 active, hdmi 1920x1080, dp 1920x1080", kChecked);
  three.Forget();
  EXPECT_TRUE(three.extension().SupportsTripleDisplay());
  EXPECT_EQ(three.TakeLog(),
            "dwConnectorSupported = 0x238, dwConnectorDispAttached = 0x38, "
            "dwConnectorDispActive = 0x10\n");
  three.machine.Fail("ICUIExternal8::GetDeviceData", 1);
  EXPECT_FALSE(three.extension().SupportsTripleDisplay());
  EXPECT_EQ(three.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: SUCCEEDED(hr). \n"
            "INFO dwConnectorSupported = 0, dwConnectorDispAttached = 0, "
            "dwConnectorDispActive = 0\n");
}

TEST(IntelMMImpl, TwoDisplaysAreNotThree) {
  IntelHost host(kPanelHdmi);
  EXPECT_FALSE(host.extension().SupportsTripleDisplay());
}

TEST(IntelMMImpl, HdmiConnectorIsToldByTheDriver) {
  IntelHost hdmi(kPanelHdmi, kChecked);
  hdmi.Forget();
  EXPECT_TRUE(hdmi.box().CanControlHDMIMonitor(&hdmi.intel()));
  EXPECT_EQ(hdmi.TakeLog(),
            "CanControlHDMIMonitor() dwConnectorSupported = 0x18, dwConnectorDispAttached = 0x18, "
            "dwConnectorDispActive = 0x10\n");
  hdmi.machine.Fail("ICUIExternal8::GetDeviceData", 1);
  EXPECT_FALSE(hdmi.box().CanControlHDMIMonitor(&hdmi.intel()));
}

TEST(IntelMMImpl, AnotherConnectorIsNoHdmiConnector) {
  IntelHost host("win7 intel*3: internal 1366x768 active, dvi 1920x1080, crt 1024x768");
  EXPECT_FALSE(host.box().CanControlHDMIMonitor(&host.intel()));
}

// A driver whose adapter supports the connectors of a mask.
class IntelConnectors : public testing::Test {
 protected:
  IntelConnectors() : host_(kPanelHdmi) {
    cui_.get = [this](const GUID&, ScriptedCui::Bytes* block, uint32_t* err) {
      *err = 0;
      ScriptedCui::Put(block, 0, supported_);
      return S_OK;
    };
    cui_.Install(&host_.machine);
  }
  bool ControlsHdmi(uint32_t supported) {
    supported_ = supported;
    return host_.box().CanControlHDMIMonitor(&host_.intel());
  }
  bool DrivesThree(uint32_t supported) {
    supported_ = supported;
    return host_.extension().SupportsTripleDisplay();
  }

  uint32_t supported_ = 0;
  IntelHost host_;
  ScriptedCui cui_;
};

TEST_F(IntelConnectors, HdmiIsEitherOfTwoBits) {
  EXPECT_TRUE(ControlsHdmi(0x008));
  EXPECT_TRUE(ControlsHdmi(0x100));
  EXPECT_TRUE(ControlsHdmi(0x108));
  EXPECT_FALSE(ControlsHdmi(0));
  EXPECT_FALSE(ControlsHdmi(~uint32_t{0x108}));
}

TEST_F(IntelConnectors, ThreeDisplaysAreOneBit) {
  EXPECT_TRUE(DrivesThree(0x200));
  EXPECT_FALSE(DrivesThree(~uint32_t{0x200}));
  EXPECT_FALSE(DrivesThree(0));
}

TEST(IntelMMImpl, NoObjectOrAnotherOneControlsNoHdmi) {
  IntelHost host(kPanelHdmi);
  EXPECT_FALSE(host.box().CanControlHDMIMonitor(nullptr));
  const std::unique_ptr<IMMonitor> other(host.core().NewNullMonitorController());
  EXPECT_FALSE(host.box().CanControlHDMIMonitor(other.get()));
}

// --- Without Initial every operation gives its failure.

TEST(IntelMMImpl, WithoutInitialEverythingFails) {
  IntelHost host(kPanelHdmi, kChecked);
  IMMonitor& object = *host.bare();
  IDisplayExtension& extension = *host.box().ExtensionOf(&object);
  uint32_t first = 0xEE;
  uint32_t second = 0xEE;
  DEVMODEA dm = {};
  DEVMODEW wide = {};
  EdidBlob edid;
  std::string name = "unchanged";
  host.ForgetLog();
  host.machine.TakeJournal();
  EXPECT_FALSE(object.GetConnectedDisplays(&first, &second));
  EXPECT_FALSE(object.GetActiveDisplays(&first, &second));
  EXPECT_FALSE(object.GetCurrentDisplayMode(&first, &second));
  EXPECT_FALSE(object.SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB));
  EXPECT_FALSE(object.EnableExtendModeOnDisplays(TRUE, IMMonitor::MD_HDMI));
  EXPECT_FALSE(object.EnableExtendModeOnDisplays(FALSE, 0));
  EXPECT_FALSE(object.GetDisplaySettings(IMMonitor::MD_NB, &dm));
  EXPECT_FALSE(extension.GetEDID(IMMonitor::MD_NB, &edid));
  EXPECT_FALSE(host.box().GetMonitorEDID(&object, IMMonitor::MD_NB, &edid));
  EXPECT_FALSE(host.box().GetMonitorName(&object, IMMonitor::MD_NB, &name));
  EXPECT_FALSE(host.box().ExOf(&object)->SetDisplayModeWithSettings(2, 0x11, &wide));
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_FALSE(extension.SupportsTripleDisplay());
  EXPECT_FALSE(host.box().CanControlHDMIMonitor(&object));
  EXPECT_EQ(host.TakeLog(),
            "Check failed: m_pCUIExt != NULL. \nCheck failed: m_pCUIExt != NULL. \n");
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(Hex(first) + Hex(second) + name, "0xee0xeeunchanged");
}

TEST(IntelMMImpl, NullOutputsFail) {
  IntelHost host(kPanelHdmi, kChecked);
  host.Forget();
  uint32_t out = 0;
  EXPECT_FALSE(host.intel().GetConnectedDisplays(nullptr, &out));
  EXPECT_FALSE(host.intel().GetConnectedDisplays(&out, nullptr));
  EXPECT_FALSE(host.intel().GetCurrentDisplayMode(nullptr, &out));
  EXPECT_FALSE(host.intel().GetCurrentDisplayMode(&out, nullptr));
  EXPECT_FALSE(host.intel().GetDisplaySettings(IMMonitor::MD_NB, nullptr));
  EXPECT_EQ(host.TakeLog(),
            "Check failed: imm_displays != NULL. \n"
            "Check failed: display_count != NULL. \n"
            "Check failed: imm_mode != NULL. \n"
            "Check failed: imm_displays != NULL. \n"
            "Check failed: dm != NULL. \n");
  EXPECT_FALSE(host.intel().GetActiveDisplays(nullptr, &out));
  EXPECT_FALSE(host.intel().GetActiveDisplays(&out, nullptr));
  EXPECT_FALSE(host.extension().GetEDID(IMMonitor::MD_NB, nullptr));
  EXPECT_FALSE(host.box().ExOf(&host.intel())->SetDisplayModeWithSettings(2, 0x11, nullptr));
  EXPECT_EQ(host.TakeLog(), "");
}

// --- Connected and active displays.

TEST(IntelMMImplDisplays, ConnectedAreThoseAttachedOrActive) {
  IntelHost host("win7 intel: internal 1366x768 active, crt, hdmi 1920x1080, dp");
  EXPECT_EQ(host.Connected(), "0x11 (2)");
  EXPECT_EQ(host.Active(), "0x1 (1)");
}

TEST(IntelMMImplDisplays, EveryTypeHasItsBit) {
  IntelHost host(
      "win7 intel: internal 1366x768 active, crt 1024x768, tv 1024x768, dvi 1920x1080, "
      "hdmi 1920x1080, dp 1920x1080, other 1280x720");
  EXPECT_EQ(host.Connected(), "0x7f (7)");
}

TEST(IntelMMImplDisplays, TwoDevicesOfOneTypeCountOnce) {
  IntelHost host("win7 intel: internal 1366x768 active, hdmi 1920x1080, hdmi2 1280x720");
  EXPECT_EQ(host.Connected(), "0x11 (2)");
}

// An output that the driver has a number for and the library has not.
TEST(IntelMMImplDisplays, DeviceOfUnknownTypeCountsWithoutABitBehindAKnownOne) {
  IntelHost host("win7 intel*1: internal 1366x768 active, wireless 1280x720");
  EXPECT_EQ(host.Connected(), "0x1 (2)");
}

TEST(IntelMMImplDisplays, DeviceOfUnknownTypeInFrontIsSkipped) {
  IntelHost host("win7 intel*1: wireless 1280x720, internal 1366x768 active");
  EXPECT_EQ(host.Connected(), "0x1 (1)");
}

// Two display devices list the same outputs: the unknown one is counted each time.
TEST(IntelMMImplDisplays, DeviceOfUnknownTypeCountsOnEveryAdapter) {
  IntelHost host("win7 intel*2: wireless 1280x720, internal 1366x768 active");
  EXPECT_EQ(host.Connected(), "0x1 (2)");
}

TEST(IntelMMImplDisplays, WithoutAnIntelDeviceTheRegistryIsReadAgainOnce) {
  IntelHost host("win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080");
  host.Forget();
  host.machine.Fail("EnumDisplayDevicesW", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.Connected(), "failed");
  EXPECT_EQ(host.machine.TakeJournal(), "ChangeDisplaySettingsExA(null null flags=0x0)=0\n");
  EXPECT_EQ(host.Active(), "failed");
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST(IntelMMImplDisplays, SecondWalkMayFindThem) {
  IntelHost host(kPanelHdmi);
  host.Forget();
  host.machine.Fail("EnumDisplayDevicesW", 1);
  EXPECT_EQ(host.Connected(), "0x11 (2)");
  EXPECT_EQ(host.machine.TakeJournal(), "ChangeDisplaySettingsExA(null null flags=0x0)=0\n");
}

TEST(IntelMMImplDisplays, FoundNothingIsASuccess) {
  IntelHost host(kPanelHdmi);
  host.Forget();
  host.machine.Fail("ICUIExternal8::EnumDevices", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.Connected(), "0x0 (0)");
  EXPECT_EQ(host.Active(), "0x0 (0)");
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

// A driver with these devices on its one display device.
std::string ConnectedOf(const std::vector<ScriptedCui::Device>& devices) {
  IntelHost host("win7 intel*1: internal 1366x768 active");
  ScriptedCui cui;
  cui.devices = devices;
  cui.Install(&host.machine);
  return host.Connected();
}

TEST(IntelMMImplDisplays, EitherBitOfTheStatusConnects) {
  EXPECT_EQ(ConnectedOf({{1, 2, 0x02}, {2, 5, 0x10}, {3, 1, 0x12}}), "0x13 (3)");
  EXPECT_EQ(ConnectedOf({{1, 2, 0x02}, {2, 5, 0xFFFFFFED}, {3, 1, 0}}), "0x1 (1)");
}

TEST(IntelMMImplDisplays, NoDeviceIsSkippedBehindADisplayToo) {
  EXPECT_EQ(ConnectedOf({{1, 2, 0x12}, {2, 0, 0x12}}), "0x1 (1)");
  EXPECT_EQ(ConnectedOf({{2, 0, 0x12}, {1, 2, 0x12}}), "0x1 (1)");
}

constexpr char kThreeAdapters[] =
    "win7 intel*1, intel*1, intel*1: internal 1366x768 active, crt@2 1024x768, hdmi@3 1920x1080";

TEST(IntelMMImplDisplays, OfThreeAdaptersTheFirstTwoAreWalked) {
  IntelHost host(kThreeAdapters);
  EXPECT_EQ(host.Connected(), "0x3 (2)");
}

TEST(IntelMMImplDisplays, OfThreeAdaptersAllAreListed) {
  IntelHost host(kThreeAdapters);
  host.Switch(IMMonitor::DM_CLONE, IMMonitor::MD_CRT | IMMonitor::MD_HDMI);
  EXPECT_NE(host.machine.TakeJournal().find(CloneRecord(kCrtUid, kHdmiUid)), std::string::npos);
}

// --- Types.

TEST(IntelMMImplTypes, OneBitHasAType) {
  IntelHost host(kPanelHdmi, kChecked);
  host.bare();
  host.ForgetLog();
  EXPECT_EQ(host.box().TypeFromBit(0), 0u);
  EXPECT_EQ(host.box().TypeFromBit(0x01), 2u);
  EXPECT_EQ(host.box().TypeFromBit(0x10), 5u);
  EXPECT_EQ(host.box().TypeFromBit(0x40), 6u);
  EXPECT_EQ(host.box().TypeFromBit(0x80), 0u);
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(IntelMMImplTypes, SeveralBitsHaveNone) {
  IntelHost host(kPanelHdmi, kChecked);
  host.bare();
  host.ForgetLog();
  EXPECT_EQ(host.box().TypeFromBit(0x11), 0u);
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: (CountBits(imm_display) == 1) && "
            "\"IntelMMImpl::TypeFromBit() more than 2 bit enabled is not good\". \n");
}

}  // namespace
