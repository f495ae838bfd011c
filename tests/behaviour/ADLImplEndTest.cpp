// The end of an ADLImpl, of another one beside it, and of one whose library lacks what ends it.
#include "tests/behaviour/ADLImplHost.h"

namespace {

TEST(ADLImplEnd, StopsTheLibraryAndLetsItGo) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  const size_t modules = host.Modules();
  host.Ready();
  EXPECT_EQ(host.Modules(), modules + 1);
  EXPECT_EQ(host.Held(), "ADL buffer\nADL session\n");  // the displays listed last
  EXPECT_EQ(host.machine.Calls("ADL_Main_Control_Destroy"), 0u);
  host.End();
  EXPECT_EQ(host.machine.Calls("ADL_Main_Control_Destroy"), 1u);
  EXPECT_EQ(host.Modules(), modules);
  EXPECT_EQ(host.Held(), "");
}

TEST(ADLImplEnd, ObjectThatWasNeverReadyCallsNothing) {
  AdlHost host(kAdlTwo);
  EXPECT_EQ(host.Calls([&] { host.End(); }), "");
}

// Both share the library's one session.
TEST(ADLImplEnd, EndOfAnotherObjectIsRecoveredFrom) {
  AdlHost host(kAdlTwo);
  host.Ready();
  const size_t modules = host.Modules();
  IMMonitor* const other = host.box().NewADLImpl();
  EXPECT_TRUE(other->Initial());
  EXPECT_EQ(host.box().ExtensionOf(other)->Release(), 0u);
  EXPECT_FALSE(sim::AdlIsRunning(host.machine));
  EXPECT_EQ(host.Modules(), modules);

  host.Forget();
  const std::string reload = AdlReloadText();
  EXPECT_EQ(host.Calls([&] { EXPECT_EQ(host.Connected(), "0x3 (2)"); }),
            "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=-2\n"
            "ADL_Main_Control_Destroy()=-2\n" +
                reload.substr(reload.find('\n') + 1) +
                "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n");
  EXPECT_TRUE(sim::AdlIsRunning(host.machine));
  host.End();
  EXPECT_FALSE(sim::AdlIsRunning(host.machine));
  EXPECT_EQ(host.Held(), "");
}

// --- A library without its start, its end, or both.

class ADLImplBroken : public testing::Test {
 protected:
  void Without(const std::vector<const char*>& names) {
    for (const char* name : names) sim::RemoveAmdEntry(host_.machine, name);
    host_.ostrel();
    modules_ = host_.Modules();
    EXPECT_FALSE(host_.bare().Initial());
    EXPECT_EQ(host_.Modules(), modules_ + 1);
  }
  /// What a question that cannot be answered, with the reload in it, asks the library.
  std::string AskedInVain() {
    uint32_t displays = 0;
    uint32_t count = 0;
    return host_.Calls([&] { EXPECT_FALSE(host_.bare().GetConnectedDisplays(&displays, &count)); });
  }
  std::string AskedAtTheEnd() {
    const std::string calls = host_.Calls([&] { host_.End(); });
    EXPECT_EQ(host_.Modules(), modules_);
    EXPECT_EQ(host_.Held(), "");
    return calls;
  }

  AdlHost host_{kAdlTwo};
  size_t modules_ = 0;
};

TEST_F(ADLImplBroken, WithoutItsStartItIsEndedAllTheSame) {
  Without({"ADL_Main_Control_Create"});
  EXPECT_EQ(AskedInVain(),
            "ADL_Main_Control_Destroy()=-2\nADL_Adapter_NumberOfAdapters_Get()=-2\n");
  EXPECT_EQ(AskedAtTheEnd(), "ADL_Main_Control_Destroy()=-2\n");
}

TEST_F(ADLImplBroken, WithoutItsEndNothingEndsIt) {
  Without({"ADL_Main_Control_Destroy"});
  EXPECT_EQ(AskedAtTheEnd(), "");
}

TEST_F(ADLImplBroken, WithoutBothOnlyTheAdaptersAreAskedFor) {
  Without({"ADL_Main_Control_Create", "ADL_Main_Control_Destroy"});
  EXPECT_EQ(AskedInVain(), "ADL_Adapter_NumberOfAdapters_Get()=-2\n");
  EXPECT_EQ(AskedAtTheEnd(), "");
}

}  // namespace
