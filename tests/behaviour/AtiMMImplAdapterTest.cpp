// The legacy AMD back-end: which adapter it asks for.
#include <gtest/gtest.h>

#include "tests/behaviour/AtiHost.h"
#include "tests/behaviour/ScriptedAti.h"

namespace {

// Devices 0 and 1 are Intel's: the panel hangs there.
constexpr char kSecondVendor[] =
    "win7 intel, amd: internal 1366x768 active, crt@2 1280x1024 active";

TEST(AtiMMImpl, AdapterIsTheFirstAttachedDeviceWithAnId) {
  AtiHost host(kSecondVendor);
  ScriptedAti ati;
  ati.Install(&host.machine);
  const struct {
    std::vector<std::pair<int32_t, uint32_t>> ids;
    uint32_t adapter;
  } rows[] = {
      {{{0, 5}, {0, 5}, {0, 5}}, 0},
      {{{0, 0}, {0, 5}, {0, 5}}, 2},   // device 1 is not attached
      {{{-1, 5}, {0, 5}, {0, 5}}, 2},  // device 0 cannot be asked
      {{{1, 5}, {0, 5}, {0, 5}}, 2},
      {{{0, 0}, {0, 0}, {0, 0xFFFFFFFE}}, 2},
      {{{0, 0}, {0, 0}, {0, 0xFFFFFFFF}}, 0},  // an id that says there is none
      {{{0, 0xFFFFFFFF}, {0, 5}, {0, 5}}, 0},  // and ends the walk
      {{{0, 0}, {0, 5}, {0, 0}, {0, 5}}, 0},   // the walk ends
      {{}, 0},
  };
  host.ati();
  for (const auto& row : rows) {
    ati.ids = row.ids;
    ati.TakeCalls();
    host.ati().HasDisplaySwitchingCapability();
    EXPECT_EQ(ati.TakeCalls(),
              "ATIDL_GetDisplaySwitchingCapability(" + std::to_string(row.adapter) + ",0)\n")
        << &row - rows;
  }
}

// Other than where devices are counted, a mirroring driver's device is one.
TEST(AtiMMImpl, AttachedMirroringDeviceIsAskedForItsId) {
  AtiHost host(kSecondVendor);
  host.model().adapters[0].mirroring = true;
  ScriptedAti ati;
  ati.Install(&host.machine);
  host.ati();
  for (const uint32_t id : {5u, 0u}) {
    ati.ids = {{0, id}, {0, id}, {0, 5}};
    ati.TakeCalls();
    host.ati().HasDisplaySwitchingCapability();
    EXPECT_EQ(ati.TakeCalls(), std::string("ATIDL_GetDisplaySwitchingCapability(") +
                                   (id != 0 ? "0" : "2") + ",0)\n");
  }
}

TEST(AtiMMImpl, EveryCallNamesTheAdapterThatWasFound) {
  AtiHost host(kSecondVendor);
  ScriptedAti ati;
  ati.ids = {{0, 0}, {0, 0}, {0, 7}};
  ati.types = {{0, 1}, {1, 2}};
  ati.Install(&host.machine);
  host.ati();
  EXPECT_EQ(ati.TakeCalls(), "GetCapabilities(2)\nATIDL_GetDisplayVector(2,4)\n");

  EdidBlob edid;
  EXPECT_TRUE(host.extension().GetEDID(IMMonitor::MD_NB, &edid));
  host.extension().FreeEDID(&edid);
  EXPECT_TRUE(host.box().GetMonitorEDID(&host.ati(), IMMonitor::MD_NB, &edid));
  EXPECT_EQ(ati.TakeCalls(), "ATIDL_DisplayGetEdidData(2,0)\nATIDL_DisplayGetEdidData(2,1)\n");

  EXPECT_TRUE(host.ati().EnableExtendMode(0));
  EXPECT_EQ(ati.TakeCalls(), "ATIDL_GetDisplayVector(2,1)\nATIDL_SetConfigurationEx(2)\n");

  EXPECT_EQ(host.Connected(), "0x3 (2)");
  EXPECT_EQ(host.Active(), "0x0 (0)");
  EXPECT_EQ(ati.TakeCalls(),
            "GetConnectedDisplays(2)\nEnumDisplays(2,0)\nATIDL_DisplayGetDeviceConfig(2,0)\n"
            "EnumDisplays(2,1)\nATIDL_DisplayGetDeviceConfig(2,1)\nATIDL_GetActiveDisplays(2)\n");
}

TEST(AtiMMImpl, ChecksTheLibraryOfItsQuestions) {
  AtiHost host(kPanelCrt, L"--enable-dcheck");
  host.ati();
  host.Forget();
  EXPECT_EQ(host.box().AdapterIndexWithoutLibrary(), 0u);
  EXPECT_EQ(host.TakeLog(), "Check failed: lib != NULL. \n");
  EXPECT_EQ(host.box().TargetTypeWithoutLibrary(), 0u);
  EXPECT_EQ(host.TakeLog(), "Check failed: lib != NULL. \n");
}

TEST(AtiMMImpl, DeviceThatCannotBeDrawnOnIsPassedOver) {
  AtiHost host("win7 amd: internal 1366x768 active, crt 1280x1024 active");
  host.ati();
  host.machine.JournalReads(true);
  host.Forget();
  host.machine.Fail("CreateDCA", 1);
  host.ati().HasDisplaySwitchingCapability();
  const std::string journal = host.machine.TakeJournal();
  EXPECT_EQ(CountOf(journal, "ATIDL_GetAdapterID("), 1u) << journal;
  EXPECT_EQ(CountOf(journal, "ATIDL_GetAdapterID(device=1)=0"), 1u) << journal;
  EXPECT_EQ(CountOf(journal, "ATIDL_GetDisplaySwitchingCapability(adapter=1)"), 1u) << journal;
}

TEST(AtiMMImpl, AdapterIsWorkedOutForEveryCall) {
  AtiHost host(kSecondVendor);
  host.ati();
  const uint32_t contexts = host.machine.Calls("CreateDCA");
  host.machine.JournalReads(true);
  host.Forget();
  host.ati().HasDisplaySwitchingCapability();
  host.ati().HasDisplaySwitchingCapability();
  // Each time the panel's device, which has no id, and the CRT's.
  EXPECT_EQ(host.machine.Calls("CreateDCA"), contexts + 4);
  const std::string journal = host.machine.TakeJournal();
  for (const char* const device : {"\\\\.\\DISPLAY1", "\\\\.\\DISPLAY3"}) {
    const std::string line =
        std::string("CreateDCA(driver=null device=") + device + " port=null)=1";
    EXPECT_EQ(CountOf(journal, line), 2u) << journal;
  }
  host.machine.JournalReads(false);
  EXPECT_EQ(host.machine.Calls("DeleteDC"), host.machine.Calls("CreateDCA"));
  EXPECT_EQ(host.Connected(), "0x2 (1)");
}

TEST(AtiMMImpl, AdapterIsTheFirstDeviceWithoutThatEntry) {
  AtiHost host(kPanelCrt);
  host.Remove("ATIDL_GetAdapterID");
  EXPECT_EQ(host.Connected(), "0x3 (2)");
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, 3), AtiConfig(2, 1, 2) + "1");
  EXPECT_EQ(host.machine.Calls("CreateDCA"), 0u);
}

}  // namespace
