// On an adapter whose number is not its place in the list, and whose place is another's number.
#include "sim/faces/AmdAdl.h"
#include "tests/behaviour/ADLImplHost.h"

namespace {

constexpr char kMapGet[] = "ADL_Display_DisplayMapConfig_Get";

struct ADLImplAdapter : testing::Test {
  ADLImplAdapter() : host(kAdlExtended) {
    host.driver().adl_indices = {2, 0};  // the one at place 0 is in charge, and has number 2
    host.driver().powerxpress = 4;
  }
  AdlHost host;
};

TEST_F(ADLImplAdapter, IsAskedByItsNumberAtTheStart) {
  EXPECT_EQ(host.Calls([&] { EXPECT_TRUE(host.bare().Initial()); }),
            "ADL_Main_Control_Create(0)=0\n"
            "ADL_Adapter_NumberOfAdapters_Get()=0\n"
            "ADL_Adapter_AdapterInfo_Get(size=3144)=0\n"
            "ADL_Adapter_Active_Get(adapter=0)=0\n"
            "ADL_Display_PowerXpressVersion_Get(adapter=2)=0\n"
            "ADL_Display_PowerXpressActiveGPU_Get(adapter=2)=0\n"
            "ADL_Display_Capabilities_Get(adapter=2)=0\n"
            "ADL_Display_NumberOfDisplays_Get(adapter=2)=0\n");
}

TEST_F(ADLImplAdapter, IsAskedByItsNumberForDisplaysAndCapability) {
  host.Forget();
  EXPECT_EQ(host.Calls([&] {
    EXPECT_EQ(host.Connected(), "0x3 (2)");
    EXPECT_TRUE(host.adl().HasDisplaySwitchingCapability());
  }),
            "ADL_Display_DisplayInfo_Get(adapter=2 force=1)=0\n"
            "ADL_Display_SwitchingCapability_Get(adapter=2)=0\n");
}

TEST_F(ADLImplAdapter, IsAskedByItsNumberForAnEdid) {
  host.Forget();
  EdidBlob edid;
  EXPECT_EQ(host.Calls([&] { EXPECT_TRUE(host.extension().GetEDID(IMMonitor::MD_NB, &edid)); }),
            "ADL_Display_DisplayInfo_Get(adapter=2 force=1)=0\n"
            "ADL_Display_EdidData_Get(adapter=2 display=1)=0\n");
  host.extension().FreeEDID(&edid);
}

TEST_F(ADLImplAdapter, MapsAreAskedForByTheNumbersInTheOrderOfTheList) {
  host.Forget();
  host.machine.Fail(kMapGet, 1);
  host.machine.Fail(kMapGet, 2);
  ADLDisplayMap* maps = nullptr;
  ADLDisplayTarget* targets = nullptr;
  int counts[2] = {};
  EXPECT_EQ(host.Calls([&] {
    EXPECT_TRUE(host.box().GetDisplayMap(&host.bare(), &maps, &counts[0], &targets, &counts[1]));
  }),
            "ADL_Display_DisplayMapConfig_Get(adapter=2 option=1)=-1\n" + AdlReloadText() +
                "ADL_Display_DisplayMapConfig_Get(adapter=2 option=1)=-1\n"
                "ADL_Display_DisplayMapConfig_Get(adapter=0 option=1)=0\n");
  host.box().FreeAdlBuffer(reinterpret_cast<void**>(&maps));
  host.box().FreeAdlBuffer(reinterpret_cast<void**>(&targets));
}

TEST_F(ADLImplAdapter, SwitchGoesToItsNumber) {
  host.Ready();
  const std::string calls =
      host.Calls([&] { EXPECT_TRUE(host.adl().SetNewDisplayMode(IMMonitor::DM_SINGLE, 1)); });
  const std::string start =
      "ADL_Display_DisplayMapConfig_Get(adapter=2 option=1)=0\n"
      "ADL_Display_DisplayMapConfig_Set(adapter=2 maps=";
  EXPECT_EQ(calls.substr(0, start.size()), start);
}

// --- Each condition of an active display alone.

struct Told {
  int32_t type;
  int32_t value;
  int32_t adapter;
};
constexpr Told kTold[] = {
    {2, 0x3, 0},  // connected, mapped, the adapter's own
    {0, 0x1, 0},  // not mapped
    {1, 0x2, 0},  // not connected
    {3, 0x3, 9},  // another adapter's
};
constexpr int kToldCount = 4;

int ToldDisplays(int, int* count, ADLDisplayInfo** infos, int) {
  *count = kToldCount;
  *infos = static_cast<ADLDisplayInfo*>(sim::NewAdlArray(kToldCount, sizeof(ADLDisplayInfo)));
  for (int i = 0; i < kToldCount; ++i) {
    (*infos)[i].iDisplayType = kTold[i].type;
    (*infos)[i].iDisplayInfoValue = kTold[i].value;
    (*infos)[i].displayID.iDisplayLogicalAdapterIndex = kTold[i].adapter;
  }
  return 0;
}

TEST(ADLImplActiveDisplay, IsConnectedAndMappedAndTheAdaptersOwn) {
  AdlHost host(kAdlTwo);
  ReplaceAdlEntry(&host.machine, "ADL_Display_DisplayInfo_Get", sim::Erase(ToldDisplays));
  EXPECT_EQ(host.Active(), "0x1 (1)");
  EXPECT_EQ(host.Held(), "ADL session\n");
}

}  // namespace
