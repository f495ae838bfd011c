// How ADLImpl finds its library ready, its adapter, and when it is of no use.
#include "tests/behaviour/ADLImplHost.h"

namespace {

constexpr const char* kEntries[] = {
    "ADL_Main_Control_Create",
    "ADL_Main_Control_Destroy",
    "ADL_Main_Control_Refresh",
    "ADL_Adapter_NumberOfAdapters_Get",
    "ADL_Adapter_AdapterInfo_Get",
    "ADL_Adapter_Active_Get",
    "ADL_Display_DisplayInfo_Get",
    "ADL_Display_NumberOfDisplays_Get",
    "ADL_Display_SwitchingCapability_Get",
    "ADL_Display_DisplayMapConfig_Get",
    "ADL_Display_DisplayMapConfig_Set",
    "ADL_Display_EdidData_Get",
    "ADL_Display_PowerXpressVersion_Get",
    "ADL_Display_PowerXpressActiveGPU_Get",
    "ADL_Display_Capabilities_Get",
    "ADL_Display_SLSMapIndex_Get",
    "ADL_Display_SLSMapConfig_Get",
    "ADL_Display_SLSGrid_Caps",
    "ADL_Display_Modes_Get",
};

constexpr char kNoPowerXpress[] =
    "ERROR Call to ADL_Display_PowerXpressVersion_Get() failed, returns: -8\n";

// --- The binding.

TEST(VADLLib, BindsNineteenEntriesInOrder) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  host.machine.JournalReads(true);
  EXPECT_TRUE(host.box().LoadVADLLib("atiadlxx.dll"));
  host.machine.JournalReads(false);
  std::string expected;
  for (const char* name : kEntries) expected += "GetProcAddress(" + std::string(name) + ")=0\n";
  const std::string journal = host.machine.TakeJournal();
  const size_t start = journal.find("GetProcAddress");
  ASSERT_NE(start, std::string::npos) << journal;
  EXPECT_EQ(journal.substr(start, expected.size()), expected);
  EXPECT_EQ(CountOf(journal, "GetProcAddress("), 19u);
}

TEST(VADLLib, EveryEntryIsRequired) {
  for (const char* name : kEntries) {
    AdlHost host(kAdlTwo);
    sim::RemoveAmdEntry(host.machine, name);
    EXPECT_FALSE(host.box().LoadVADLLib("atiadlxx.dll")) << name;
  }
}

TEST(VADLLib, WithoutALibraryThereIsNoModule) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  const size_t modules = host.Modules();
  EXPECT_FALSE(host.box().LoadVADLLib(nullptr));
  EXPECT_FALSE(host.box().LoadVADLLib("nowhere.dll"));
  EXPECT_TRUE(host.box().LoadVADLLib("atiadlxx.dll"));
  EXPECT_EQ(host.Modules(), modules);
}

TEST(AdlBuffer, NullPlaceIsChecked) {
  AdlHost host(kAdlTwo, kAdlChecked);
  host.ostrel();
  host.ForgetLog();
  host.box().FreeAdlBuffer(nullptr);
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR_REPORT Check failed: lpBuffer != NULL. \n");
  void* nothing = nullptr;
  host.box().FreeAdlBuffer(&nothing);
  EXPECT_EQ(host.TakeLog(), "");
}

// --- The order of a start.

TEST(ADLImplInitial, AsksInThisOrder) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  host.ForgetLog();
  EXPECT_EQ(host.Calls([&] { EXPECT_TRUE(host.bare().Initial()); }),
            "ADL_Main_Control_Create(0)=0\n"
            "ADL_Adapter_NumberOfAdapters_Get()=0\n"
            "ADL_Adapter_AdapterInfo_Get(size=3144)=0\n"
            "ADL_Adapter_Active_Get(adapter=0)=0\n"
            "ADL_Display_PowerXpressVersion_Get(adapter=0)=-8\n"
            "ADL_Display_Capabilities_Get(adapter=0)=0\n"
            "ADL_Display_NumberOfDisplays_Get(adapter=0)=0\n");
  EXPECT_EQ(host.TakeLogWithSeverity(), std::string(kAdlActiveLine) + kNoPowerXpress);
  EXPECT_EQ(host.bare().GetVgaVendor(), 0x1002u);
  EXPECT_EQ(host.extension().GetExtensionVendor(), 0x1002u);
  EXPECT_FALSE(host.extension().SupportsTripleDisplay());
}

TEST(ADLImplInitial, PowerXpressIsAskedForTheGpuInCharge) {
  AdlHost host(kAdlTwo);
  host.driver().powerxpress = 4;
  host.ostrel();
  host.ForgetLog();
  const std::string calls = host.Calls([&] { EXPECT_TRUE(host.bare().Initial()); });
  EXPECT_NE(calls.find("ADL_Display_PowerXpressVersion_Get(adapter=0)=0\n"
                       "ADL_Display_PowerXpressActiveGPU_Get(adapter=0)=0\n"
                       "ADL_Display_Capabilities_Get(adapter=0)=0\n"),
            std::string::npos)
      << calls;
  EXPECT_EQ(host.TakeLogWithSeverity(), kAdlActiveLine);
}

TEST(ADLImplInitial, PowerXpressThatDoesNotTellTheGpuIsLogged) {
  AdlHost host(kAdlTwo);
  host.driver().powerxpress = 4;
  host.ostrel();
  host.ForgetLog();
  host.machine.Fail("ADL_Display_PowerXpressActiveGPU_Get", 1, AdlResultCode(-3));
  EXPECT_TRUE(host.bare().Initial());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            std::string(kAdlActiveLine) +
                "ERROR Call to ADL_Display_PowerXpressActiveGPU_Get() failed, returns: -3\n");
}

TEST(ADLImplInitial, IsDoneOnce) {
  AdlHost host(kAdlTwo);
  EXPECT_TRUE(host.bare().Initial());
  EXPECT_EQ(host.Calls([&] { EXPECT_TRUE(host.bare().Initial()); }), "");
  EXPECT_EQ(host.Calls([&] { EXPECT_TRUE(host.extension().InitialExtension()); }), "");
}

TEST(ADLImplInitial, ExtensionMakesItReadyToo) {
  AdlHost host(kAdlTwo, kAdlChecked);
  EXPECT_NE(host.Calls([&] { EXPECT_TRUE(host.extension().InitialExtension()); }), "");
  EXPECT_EQ(host.Calls([&] {
    EXPECT_TRUE(host.extension().InitialExtension());
    EXPECT_TRUE(host.bare().Initial());
  }),
            "");
  EXPECT_EQ(host.TakeLog().find("Check failed"), std::string::npos);
}

TEST(ADLImplInitial, ExtensionThatCannotBeReadyIsChecked) {
  AdlHost host("win7 intel: internal 1366x768 active", kAdlChecked);
  host.ostrel();
  host.ForgetLog();
  EXPECT_FALSE(host.extension().InitialExtension());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: 0 && \"Initial AMD Display Library failed\". \n");
  EXPECT_FALSE(host.extension().InitialExtension());
}

// --- Which adapter is in charge.

TEST(ADLImplInitial, ActiveAdapterIsSoughtByPosition) {
  AdlHost host(kAdlTwo);
  host.driver().adl_indices = {1, 0};  // the panel's desktop is index 1, at position 0
  host.ostrel();
  host.ForgetLog();
  const std::string calls = host.Calls([&] { EXPECT_TRUE(host.bare().Initial()); });
  // Position 1 is asked for, which is the index of position 0; position 1 is index 0.
  EXPECT_NE(calls.find("ADL_Adapter_Active_Get(adapter=0)=0\n"
                       "ADL_Adapter_Active_Get(adapter=1)=0\n"
                       "ADL_Display_PowerXpressVersion_Get(adapter=0)=-8\n"),
            std::string::npos)
      << calls;
  EXPECT_EQ(host.TakeLogWithSeverity(),
            std::string("INFO Active adapter index for AMD display: 1\n") + kNoPowerXpress);
}

TEST(ADLImplInitial, PositionThatIsNoIndexIsPassedOverWithAWarning) {
  AdlHost host("win7 amd*3: internal 1366x768 active, crt 1280x1024");
  host.driver().adl_indices = {2, 1, 5};  // position 0 is nobody's index
  host.ostrel();
  host.ForgetLog();
  EXPECT_TRUE(host.bare().Initial());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            std::string("WARNING Call to ADL_Adapter_Active_Get() failed, rv = -5\n"
                        "INFO Active adapter index for AMD display: 2\n") +
                kNoPowerXpress);
}

TEST(ADLImplInitial, WithoutAnActiveAdapterItFails) {
  AdlHost host("win7 intel, amd: internal 1366x768 active, crt@2 1280x1024");
  host.ostrel();
  host.ForgetLog();
  EXPECT_FALSE(host.bare().Initial());
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR Can't recognize active adapter index\n");
}

// --- Failures, each of which is final.

struct StartFault {
  const char* function;
  const char* log;
};
constexpr StartFault kStartFaults[] = {
    {"ADL_Main_Control_Create", ""},
    {"ADL_Adapter_NumberOfAdapters_Get", ""},
    {"ADL_Adapter_AdapterInfo_Get",
     "ERROR Call to ADL_Adapter_AdapterInfo_Get() failed, rv = -4\n"},
    {"ADL_Adapter_Active_Get",
     "WARNING Call to ADL_Adapter_Active_Get() failed, rv = -4\n"
     "ERROR Can't recognize active adapter index\n"},
    {"ADL_Display_Capabilities_Get",
     "INFO Active adapter index for AMD display: 0\n"
     "ERROR Call to ADL_Display_PowerXpressVersion_Get() failed, returns: -8\n"
     "WARNING Call to ADL_Display_Capabilities_Get failed, returns: -4\n"},
    {"ADL_Display_NumberOfDisplays_Get",
     "INFO Active adapter index for AMD display: 0\n"
     "ERROR Call to ADL_Display_PowerXpressVersion_Get() failed, returns: -8\n"
     "WARNING AMD adapter don't handle multiple displays management, call to "
     "ADL_Display_NumberOfDisplays_Get() returns: -4\n"},
};

class ADLImplStartFaults : public testing::TestWithParam<StartFault> {};

TEST_P(ADLImplStartFaults, IsLoggedAndFinal) {
  AdlHost host("win7 amd*1: internal 1366x768 active, crt 1280x1024");
  host.ostrel();
  host.ForgetLog();
  const size_t modules = host.Modules();
  host.machine.Fail(GetParam().function, 1, AdlResultCode(-4));
  EXPECT_FALSE(host.bare().Initial());
  EXPECT_EQ(host.TakeLogWithSeverity(), GetParam().log);
  // The module is still held: the second attempt does not ask the library.
  EXPECT_EQ(host.Modules(), modules + 1);
  EXPECT_EQ(host.Calls([&] { EXPECT_FALSE(host.bare().Initial()); }), "");
  host.End();
  EXPECT_EQ(host.Modules(), modules);
  EXPECT_EQ(host.Held(), "");
}

INSTANTIATE_TEST_SUITE_P(Functions, ADLImplStartFaults, testing::ValuesIn(kStartFaults),
                         [](const auto& info) { return std::string(info.param.function); });

TEST(ADLImplInitial, NoControllersOrNoDisplaysFailSilently) {
  for (const char* what :
       {"ADL_Display_Capabilities_Get controllers", "ADL_Display_Capabilities_Get displays"}) {
    AdlHost host(kAdlTwo);
    host.ostrel();
    host.ForgetLog();
    sim::SetAmdAnswer(host.machine, what, 0);
    EXPECT_FALSE(host.bare().Initial()) << what;
    EXPECT_EQ(host.TakeLogWithSeverity(), std::string(kAdlActiveLine) + kNoPowerXpress);
    EXPECT_EQ(host.machine.Calls("ADL_Display_NumberOfDisplays_Get"), 0u);
  }
}

TEST(ADLImplInitial, OneDisplayFailsSilentlyAndForGood) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  host.ForgetLog();
  sim::SetAmdAnswer(host.machine, "ADL_Display_NumberOfDisplays_Get", 1);
  EXPECT_FALSE(host.bare().Initial());
  EXPECT_EQ(host.TakeLogWithSeverity(), std::string(kAdlActiveLine) + kNoPowerXpress);
  sim::SetAmdAnswer(host.machine, "ADL_Display_NumberOfDisplays_Get", 2);
  EXPECT_EQ(host.Calls([&] { EXPECT_FALSE(host.bare().Initial()); }), "");
}

TEST(ADLImplInitial, LessThanNoDisplayFailsSilently) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  host.ForgetLog();
  sim::SetAmdAnswer(host.machine, "ADL_Display_NumberOfDisplays_Get", AdlResultCode(-1));
  EXPECT_FALSE(host.bare().Initial());
  EXPECT_EQ(host.TakeLogWithSeverity(), std::string(kAdlActiveLine) + kNoPowerXpress);
}

TEST(ADLImplInitial, NoDisplayIsLogged) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  host.ForgetLog();
  sim::SetAmdAnswer(host.machine, "ADL_Display_NumberOfDisplays_Get", 0);
  EXPECT_FALSE(host.bare().Initial());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            std::string(kAdlActiveLine) + kNoPowerXpress +
                "WARNING AMD adapter don't handle multiple displays management, call to "
                "ADL_Display_NumberOfDisplays_Get() returns: 0\n");
}

TEST(ADLImplInitial, LibraryThatDoesNotLoadIsTriedAgain) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  host.machine.Fail("LoadLibraryA", 1);
  EXPECT_FALSE(host.bare().Initial());
  EXPECT_TRUE(host.bare().Initial());
}

TEST(ADLImplInitial, MissingEntryIsFinalAndNothingIsCalled) {
  AdlHost host(kAdlTwo);
  sim::RemoveAmdEntry(host.machine, "ADL_Display_Modes_Get");
  EXPECT_EQ(host.Calls([&] {
    EXPECT_FALSE(host.bare().Initial());
    EXPECT_FALSE(host.bare().Initial());
  }),
            "");
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), 1u);
}

int NoAdapters(int* count) {
  *count = 0;
  return 0;
}
int MinusOneAdapter(int* count) {
  *count = -1;
  return 0;
}
int EndlessAdapters(int* count) {
  *count = 0x7FFFFFFF;
  return 0;
}

TEST(ADLImplInitial, AdapterCountOfNothingFails) {
  for (int (*function)(int*) : {NoAdapters, MinusOneAdapter}) {
    AdlHost host(kAdlTwo);
    ReplaceAdlEntry(&host.machine, "ADL_Adapter_NumberOfAdapters_Get", sim::Erase(function));
    EXPECT_FALSE(host.bare().Initial());
    EXPECT_EQ(host.machine.Calls("ADL_Adapter_AdapterInfo_Get"), 0u);
  }
}

TEST(ADLImplInitial, MoreAdaptersThanMemoryIsChecked) {
  AdlHost host(kAdlTwo, kAdlChecked);
  host.ostrel();
  host.ForgetLog();
  ReplaceAdlEntry(&host.machine, "ADL_Adapter_NumberOfAdapters_Get", sim::Erase(EndlessAdapters));
  EXPECT_FALSE(host.bare().Initial());
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR_REPORT Check failed: m_infoAdapters != NULL. \n");
  EXPECT_EQ(host.machine.Calls("ADL_Adapter_AdapterInfo_Get"), 0u);
}

// --- The extension as a counted object.

TEST(ADLImplExtension, CountsFromTheOwnersReference) {
  AdlHost host(kAdlTwo, kAdlChecked);
  IDisplayExtensionAMD& extension = host.extension();
  EXPECT_EQ(extension.AddRef(), 2u);
  EXPECT_EQ(extension.Release(), 1u);
  host.ForgetLog();
  void* object = nullptr;
  EXPECT_EQ(extension.QueryInterface(IID_IUnknown, &object), static_cast<HRESULT>(0x80004005));
  EXPECT_EQ(host.TakeLog(), "Check failed: 0 && \"Should never call this function\". \n");
}

TEST(ADLImplExtension, LastReleaseEndsTheObject) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  const size_t modules = host.Modules();
  IMMonitor* const object = host.box().NewADLImpl();
  EXPECT_TRUE(object->Initial());
  EXPECT_EQ(host.box().ExtensionOf(object)->Release(), 0u);
  EXPECT_EQ(host.Modules(), modules);
  EXPECT_EQ(host.Held(), "");
}

// --- An object that nobody has made ready.

TEST(ADLImplUnready, EveryOperationFails) {
  AdlHost host(kAdlTwo);
  IMMonitor& adl = host.bare();
  uint32_t first = 7;
  uint32_t second = 7;
  EdidBlob edid;
  EXPECT_EQ(host.Calls([&] {
    EXPECT_FALSE(adl.GetConnectedDisplays(&first, &second));
    EXPECT_FALSE(adl.GetCurrentDisplayMode(&first, &second));
    for (const uint32_t mode : {1u, 2u, 4u, 512u, 1024u}) {
      EXPECT_FALSE(adl.SetNewDisplayMode(mode, 3));
    }
    EXPECT_FALSE(adl.EnableExtendMode(TRUE));
    EXPECT_FALSE(adl.EnableExtendMode(FALSE));
    EXPECT_FALSE(adl.EnableExtendModeOnDisplays(TRUE, 2));
    EXPECT_FALSE(adl.HasDisplaySwitchingCapability());
    EXPECT_FALSE(host.extension().GetEDID(1, &edid));
    EXPECT_FALSE(host.extension().HasSLSGrid());
  }),
            "");
  // Without an adapter there are no active displays, and that is no failure.
  EXPECT_TRUE(adl.GetActiveDisplays(&first, &second));
  EXPECT_EQ(first, 0u);
  EXPECT_EQ(second, 0u);
}

TEST(ADLImplUnready, NullOutputsFail) {
  AdlHost host(kAdlTwo);
  IMMonitor& adl = host.adl();
  uint32_t out = 0;
  EXPECT_FALSE(adl.GetConnectedDisplays(nullptr, &out));
  EXPECT_FALSE(adl.GetConnectedDisplays(&out, nullptr));
  EXPECT_FALSE(adl.GetActiveDisplays(nullptr, &out));
  EXPECT_FALSE(adl.GetActiveDisplays(&out, nullptr));
  EXPECT_FALSE(adl.GetCurrentDisplayMode(nullptr, &out));
  EXPECT_FALSE(adl.GetCurrentDisplayMode(&out, nullptr));
  EXPECT_FALSE(host.extension().GetEDID(1, nullptr));
}

}  // namespace
