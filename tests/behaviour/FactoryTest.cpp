// Which display object answers for which machine, and when it is made anew.
#include <gtest/gtest.h>

#include "tests/behaviour/FactoryHost.h"

namespace {

using Vendors = std::vector<uint16_t>;

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

constexpr char kIntel[] = "win7 intel: internal 1366x768 active, crt 1024x768";
constexpr char kIntelNvidia[] = "win7 intel, nvidia: internal 1366x768 active, crt 1024x768";
constexpr char kIntelAmd[] = "win7 intel, amd: internal 1366x768 active, crt 1024x768";
constexpr char kNone[] = "win7 none: internal 1366x768 active, crt 1024x768";

// --- Enumeration.

TEST(EnumerateDisplayAdapterVendors, ListsInDeviceOrderUnfiltered) {
  FactoryHost host("win7 nvidia, intel, sis, intel: internal 1366x768 active");
  EXPECT_EQ(host.Listed(true), Vendors({0x10DE, 0x8086, 0x1039, 0x8086}));
  host.ostrel.reset();
  EXPECT_EQ(host.machine.Outstanding(), "");
}

TEST(EnumerateDisplayAdapterVendors, DropsDisabledDevicesOnly) {
  FactoryHost host(kIntelNvidia);
  host.Adapter(1).disabled = true;
  EXPECT_EQ(host.Listed(true), Vendors({0x8086}));
  host.Adapter(1).disabled = false;
  host.Adapter(1).problem = 43;
  EXPECT_EQ(host.Listed(true), Vendors({0x8086, 0x10DE}));
}

TEST(EnumerateDisplayAdapterVendors, KeepsADeviceOfUnknownStatus) {
  FactoryHost host(kIntelNvidia);
  host.Adapter(0).disabled = true;
  host.Adapter(0).status_readable = false;
  EXPECT_EQ(host.Listed(true), Vendors({0x8086, 0x10DE}));
  EXPECT_EQ(host.Listed(false), Vendors({0x8086, 0x10DE}));
}

TEST(EnumerateDisplayAdapterVendors, RootEnumeratedDevicesCountWhenAskedFor) {
  FactoryHost host(kIntelNvidia);
  host.Adapter(1).root_enumerated = true;
  EXPECT_EQ(host.Listed(true), Vendors({0x8086, 0x10DE}));
  EXPECT_EQ(host.Listed(false), Vendors({0x8086}));
}

TEST(EnumerateDisplayAdapterVendors, SkipsADeviceWithoutAReadableHardwareId) {
  FactoryHost host(kIntelNvidia);
  host.Adapter(0).hardware_id_readable = false;
  EXPECT_EQ(host.Listed(true), Vendors({0x10DE}));
}

TEST(EnumerateDisplayAdapterVendors, SkipsADeviceWhoseHardwareIdTakesMoreThan256Bytes) {
  FactoryHost host(kIntelNvidia);
  // Two ends stand behind it: that of the text and that of the list.
  const std::string id = "PCI\\VEN_1002&DEV_6841";
  host.Adapter(0).hardware_id = id + std::string(254 - id.size(), 'x');
  EXPECT_EQ(host.Listed(true), Vendors({0x1002, 0x10DE}));
  host.Adapter(0).hardware_id += 'x';
  EXPECT_EQ(host.Listed(true), Vendors({0x10DE}));
}

TEST(EnumerateDisplayAdapterVendors, HardwareIdWithoutUnderscoreIsVendorZero) {
  FactoryHost host(kIntelNvidia);
  host.Adapter(0).hardware_id = "ROOT\\BASICDISPLAY";
  EXPECT_EQ(host.Listed(true), Vendors({0, 0x10DE}));
}

TEST(EnumerateDisplayAdapterVendors, AsksForThePresentDisplayDevices) {
  FactoryHost host(kIntelNvidia);
  host->ActiveMonitor();  // the library is there
  host.machine.JournalReads(true);
  host.Listed(true);
  EXPECT_EQ(host.machine.TakeJournal(),
            "SetupDiGetClassDevsA(flags=0x2)=0\n"
            "SetupDiEnumDeviceInfo(0)=1\n"
            "SetupDiGetDeviceRegistryPropertyA(0x1000 property=1)=1\n"
            "CM_Get_DevNode_Status(0x1000)=0\n"
            "SetupDiEnumDeviceInfo(1)=1\n"
            "SetupDiGetDeviceRegistryPropertyA(0x1001 property=1)=1\n"
            "CM_Get_DevNode_Status(0x1001)=0\n");
  host.Adapter(0).enumerated = false;  // installed, but not there
  EXPECT_EQ(host.Listed(true), Vendors({0x10DE}));
}

TEST(EnumerateDisplayAdapterVendors, IsFalseWithoutADeviceList) {
  FactoryHost host(kIntel);
  host.machine.Fail("SetupDiGetClassDevsA", 1);
  Vendors vendors;
  EXPECT_FALSE(host->EnumerateDisplayAdapterVendors(true, &vendors));
  EXPECT_EQ(vendors, Vendors());
}

TEST(HasSeveralGraphicsVendors, CountsAfterTheFilters) {
  EXPECT_FALSE(FactoryHost(kIntel)->HasSeveralGraphicsVendors());
  EXPECT_FALSE(FactoryHost(kNone)->HasSeveralGraphicsVendors());
  EXPECT_TRUE(FactoryHost(kIntelAmd)->HasSeveralGraphicsVendors());
  EXPECT_FALSE(
      FactoryHost("win7 intel, intel: internal 1366x768 active")->HasSeveralGraphicsVendors());
  EXPECT_FALSE(
      FactoryHost("win7 intel, sis: internal 1366x768 active")->HasSeveralGraphicsVendors());
  // Two entries of one vendor with another between them were no neighbours.
  EXPECT_TRUE(
      FactoryHost("win7 intel, sis, intel: internal 1366x768 active")->HasSeveralGraphicsVendors());
}

// --- Which object answers.

TEST(GetMultiMonitorObject, PreferredWin7CCDAnswersForEveryList) {
  for (const char* text :
       {kIntel, kIntelNvidia, kIntelAmd, kNone, "win7 sis: internal 1366x768 active"}) {
    FactoryHost host(text);
    host.machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
    EXPECT_EQ(host->ActiveMonitor(), nullptr) << text;
    const std::string at_rest = host.machine.Outstanding();  // the open log
    IMMonitor* const object = host->GetMultiMonitorObject();
    ASSERT_NE(object, nullptr) << text;
    EXPECT_EQ(object->GetVgaVendor(), 0x045Eu) << text;
    EXPECT_NE(object->Initial(), 0) << text;
    EXPECT_NE(host.machine.Outstanding(), at_rest) << text;
    EXPECT_EQ(host->GetMultiMonitorObject(), object) << text;
    EXPECT_EQ(host->ActiveVendor(), 0x045E) << text;
    EXPECT_EQ(host.machine.Calls("SetupDiGetClassDevsA"), 0u) << text;
    host->DeleteMultiMonitorObject();
    EXPECT_EQ(host.machine.Outstanding(), at_rest) << text;
  }
}

TEST(GetMultiMonitorObject, PreferenceCountsFromWindows7OnOnly) {
  for (const char* text :
       {"vista intel: internal 1366x768 active", "xp intel: internal 1366x768 active",
        "2008r2 intel: internal 1366x768 active"}) {
    FactoryHost host(text);
    host.machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
    IMMonitor* const object = host->GetMultiMonitorObject();
    EXPECT_TRUE(object == nullptr || object->GetVgaVendor() != 0x045E) << text;
    EXPECT_NE(host->ActiveVendor(), 0x045E) << text;
  }
}

TEST(GetMultiMonitorObject, PreferenceOverwritesAnObjectWithoutDeletingIt) {
  FactoryHost host(kIntel);
  host.machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
  host.Install(kVendorIntel);
  IMMonitor* const object = host->GetMultiMonitorObject();
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->GetVgaVendor(), 0x045Eu);
  EXPECT_FALSE(host.script->deleted);
  host->DeleteMultiMonitorObject();
  EXPECT_TRUE(host.script->deleted);
}

TEST(GetMultiMonitorObject, PreferenceStopsVendorChecksForGood) {
  FactoryHost host(kIntel);
  host.machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
  IMMonitor* const object = host->GetMultiMonitorObject();
  host.Adapter(0).hardware_id = "PCI\\VEN_1002&DEV_6841";
  host->OnActiveDisplayAdapterVendorChanged();
  EXPECT_EQ(host.machine.Calls("SetupDiGetClassDevsA"), 0u);
  EXPECT_EQ(host->GetMultiMonitorObject(), object);
}

TEST(GetMultiMonitorObject, EmptyListGivesAnUnsavedWin7CCDEachTime) {
  FactoryHost host(kNone, kWithChecks);
  IMMonitor* const first = host->GetMultiMonitorObject();
  IMMonitor* const second = host->GetMultiMonitorObject();
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(first->GetVgaVendor(), 0x045Eu);
  EXPECT_EQ(host->ActiveMonitor(), nullptr);
  EXPECT_TRUE(Contains(host.machine.Log(), "No VGA vendor found, use CCD to manage display"));
  EXPECT_TRUE(Contains(host.machine.Log(),
                       "Check failed: false. No VGA vendor found, this should never happened"));
  host->DeleteMultiMonitorObject();
}

TEST(GetMultiMonitorObject, EmptyListBelowWindows7GivesAnUnsavedNullController) {
  for (const char* text :
       {"vista none: internal 1366x768 active", "xp none: internal 1366x768 active",
        "2008r2 none: internal 1366x768 active"}) {
    FactoryHost host(text);
    IMMonitor* const first = host->GetMultiMonitorObject();
    ASSERT_NE(first, nullptr) << text;
    EXPECT_NE(host->GetMultiMonitorObject(), first) << text;
    EXPECT_EQ(first->GetVgaVendor(), 0u) << text;
    EXPECT_EQ(first->Initial(), 0) << text;
    EXPECT_EQ(host->ActiveMonitor(), nullptr) << text;
    host->DeleteMultiMonitorObject();
  }
}

TEST(GetMultiMonitorObject, SisOrViaAloneCountsAsNoAdapter) {
  for (const char* text :
       {"win7 sis: internal 1366x768 active", "win7 via: internal 1366x768 active"}) {
    FactoryHost host(text);
    IMMonitor* const object = host->GetMultiMonitorObject();
    ASSERT_NE(object, nullptr) << text;
    EXPECT_EQ(object->GetVgaVendor(), 0x045Eu) << text;
    EXPECT_EQ(host->ActiveMonitor(), nullptr) << text;
  }
}

TEST(GetMultiMonitorObject, UnknownVendorBetweenTwoIntelGivesAnUnsavedNullController) {
  FactoryHost host("win7 intel, sis, intel: internal 1366x768 active");
  IMMonitor* const object = host->GetMultiMonitorObject();
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->GetVgaVendor(), 0u);
  EXPECT_EQ(host->ActiveMonitor(), nullptr);
  EXPECT_FALSE(host.ostrel->InitExtendMode());
}

TEST(GetMultiMonitorObject, EnumeratesAtEveryCall) {
  FactoryHost host(kIntel);
  host.Install(kVendorIntel);
  const uint32_t before = host.machine.Calls("SetupDiGetClassDevsA");
  for (int call = 0; call < 3; ++call) host->GetMultiMonitorObject();
  EXPECT_EQ(host.machine.Calls("SetupDiGetClassDevsA") - before, 3u);
}

TEST(GetMultiMonitorObject, KeepsTheObjectOfTheOneListedVendor) {
  FactoryHost host(kIntel);
  host.Install(kVendorIntel);
  IMMonitor* const object = host->ActiveMonitor();
  EXPECT_EQ(host->GetMultiMonitorObject(), object);
  EXPECT_EQ(host->GetMultiMonitorObject(), object);
  EXPECT_FALSE(host.script->deleted);
  EXPECT_EQ(host.script->TakeCalls(), "");  // never initialised here
}

TEST(GetMultiMonitorObject, RebuildsWhenTheOneListedVendorIsAnother) {
  FactoryHost host(kIntel);
  host.Install(kVendorIntel);
  host.Adapter(0).hardware_id = "PCI\\VEN_1002&DEV_6841";
  host->GetMultiMonitorObject();
  EXPECT_TRUE(host.script->deleted);
  EXPECT_EQ(host->ActiveVendor(), 0x1002);
}

TEST(GetMultiMonitorObject, ADisabledAdapterTurnsTwoIntoOne) {
  StandInHost host(kIntelNvidia);
  ASSERT_EQ(host.Answer(), "IntelMMImpl");  // the probe names Intel
  IMMonitor* const object = host->ActiveMonitor();
  EXPECT_EQ(host->GetMultiMonitorObject(), object);
  host.Disable(0);
  EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_EQ(host.backends.Living(), "NvidiaMMImplV3 ");
  EXPECT_EQ(host->ActiveVendor(), 0x10DE);
}

TEST(GetMultiMonitorObject, IntelNvidiaIntelIsAMachineWithTwoAdapters) {
  StandInHost host("win7 intel, nvidia, intel: internal 1366x768 active");
  host.backends.script.adapter_mode = 1;
  EXPECT_EQ(host.Answer(), "NvidiaMMImplV3");
  EXPECT_EQ(host->ActiveVendor(), 0x10DE);
}

TEST(GetMultiMonitorObject, AmdThatCannotBeInitialisedLeavesIntel) {
  StandInHost host(kIntelAmd);
  host.backends.script.adl = Start::kFails;
  ASSERT_EQ(host.Answer(), "IntelMMImpl");
  IMMonitor* const object = host->ActiveMonitor();
  EXPECT_EQ(host->GetMultiMonitorObject(), object);
  EXPECT_EQ(host->ActiveVendor(), 0x8086);
}

// --- Vendor changes.

TEST(OnActiveDisplayAdapterVendorChanged, DoesNothingWhileTheVendorIsTheSame) {
  FactoryHost host(kIntel, kWithChecks);
  host.Install(kVendorIntel);
  host->OnActiveDisplayAdapterVendorChanged();
  EXPECT_FALSE(host.script->deleted);
  EXPECT_TRUE(Contains(host.machine.Log(),
                       "OnActiveDisplayAdapterVendorChanged()\n\t Original vendor id: 8086"
                       "\t New vendor id     : 8086\n"));
  EXPECT_FALSE(Contains(host.machine.Log(), "Adapter vendor id changed to"));
}

TEST(OnActiveDisplayAdapterVendorChanged, ReplacesTheObjectAndSaysSo) {
  FactoryHost host(kIntel, kWithChecks);
  host.Install(kVendorIntel);
  host.Adapter(0).hardware_id = "PCI\\VEN_10DE&DEV_0DF4";
  host->OnActiveDisplayAdapterVendorChanged();
  EXPECT_TRUE(host.script->deleted);
  EXPECT_EQ(host->ActiveVendor(), 0x10DE);
  EXPECT_TRUE(Contains(host.machine.Log(),
                       "OnActiveDisplayAdapterVendorChanged()\n\t Original vendor id: 8086"
                       "\t New vendor id     : 10de\n"));
  EXPECT_TRUE(Contains(host.machine.Log(), "Adapter vendor id changed to : 4318\n"));
}

TEST(OnActiveDisplayAdapterVendorChanged, RaisesTheCheckWhenThereIsNoObjectForTheVendor) {
  FactoryHost host(kIntel, kWithChecks);
  host.Install(kVendorIntel);
  host.Adapter(0).disabled = true;
  host->OnActiveDisplayAdapterVendorChanged();
  EXPECT_TRUE(host.script->deleted);
  EXPECT_EQ(host->ActiveMonitor(), nullptr);
  EXPECT_EQ(host->ActiveVendor(), 0);
  EXPECT_TRUE(Contains(host.machine.Log(), "Check failed: false. Non-supported vendor\n"));
  EXPECT_TRUE(Contains(host.machine.Log(), "Check failed: m_instance != NULL. "));
}

TEST(OnActiveDisplayAdapterVendorChanged, DoesNotLookForTheTwoAdapterController) {
  FactoryHost host(kIntel);
  host.Install(kVendorHybrid);
  const uint32_t before = host.machine.Calls("SetupDiGetClassDevsA");
  host.Adapter(0).hardware_id = "PCI\\VEN_1002&DEV_6841";
  host->OnActiveDisplayAdapterVendorChanged();
  EXPECT_EQ(host.machine.Calls("SetupDiGetClassDevsA"), before);
  EXPECT_FALSE(host.script->deleted);
}

TEST(OnActiveDisplayAdapterVendorChanged, KeepsTheOldObjectAliveUntilTheOutermostCallReturns) {
  StandInHost host(kIntel);
  host.Install(kVendorIntel);
  host.Adapter(0).hardware_id = "PCI\\VEN_1002&DEV_6841";
  host->RunInCallScope(
      [](void* context) {
        StandInHost& inner = *static_cast<StandInHost*>(context);
        inner->OnActiveDisplayAdapterVendorChanged();
        EXPECT_EQ(NameOf(inner->ActiveMonitor()), "ADLImpl");
        EXPECT_FALSE(inner.script->deleted);
        inner->RunInCallScope([](void*) {}, nullptr);
        EXPECT_FALSE(inner.script->deleted);  // an inner scope ends nothing
      },
      &host);
  EXPECT_TRUE(host.script->deleted);
}

TEST(RetireMonitor, DeletesAtOnceWithNoCallOpen) {
  FactoryHost host(kIntel);
  host->RetireMonitor(new FakeMonitor(host.script));
  EXPECT_TRUE(host.script->deleted);
  host->RetireMonitor(nullptr);
}

TEST(DeleteMultiMonitorObject, WaitsInsideANestedCall) {
  FactoryHost host(kIntel);
  host.Install(kVendorIntel);
  host->RunInCallScope(
      [](void* outer) {
        FactoryHost& middle = *static_cast<FactoryHost*>(outer);
        middle->RunInCallScope(
            [](void* context) {
              FactoryHost& inner = *static_cast<FactoryHost*>(context);
              inner->DeleteMultiMonitorObject();
              EXPECT_EQ(inner->ActiveMonitor(), nullptr);
              EXPECT_FALSE(inner.script->deleted);
            },
            outer);
        EXPECT_FALSE(middle.script->deleted);
      },
      &host);
  EXPECT_TRUE(host.script->deleted);
}

// --- The active vendor.

TEST(GetActiveVendorId, IsZeroAndSaysSoWithoutAnAdapter) {
  FactoryHost host(kNone);
  EXPECT_EQ(host->GetActiveVendorId(), 0u);
  EXPECT_TRUE(Contains(host.machine.Log(), "No valid VGA vendor id found"));
}

TEST(GetActiveVendorId, IsTheOneEntry) {
  EXPECT_EQ(FactoryHost(kIntel)->GetActiveVendorId(), 0x8086u);
  EXPECT_EQ(FactoryHost("win7 nvidia: internal 1366x768 active")->GetActiveVendorId(), 0x10DEu);
  EXPECT_EQ(FactoryHost("win7 amd, sis: internal 1366x768 active")->GetActiveVendorId(), 0x1002u);
}

TEST(GetActiveVendorId, IsIntelWhereTheOtherVendorsLibraryCannotBeAsked) {
  for (const char* text : {kIntelNvidia, kIntelAmd}) {
    StandInHost host(text);
    host.backends.script.nvidia = Start::kFails;
    host.backends.script.adl = Start::kFails;
    EXPECT_EQ(host->GetActiveVendorId(), 0x8086u) << text;
    host.backends.script.nvidia = Start::kThrows;
    host.backends.script.adl = Start::kThrows;
    EXPECT_THROW(host->GetActiveVendorId(), std::runtime_error) << text;
  }
}

TEST(GetActiveVendorId, IsAmdWhereItsLibraryStarts) {
  StandInHost host(kIntelAmd);
  EXPECT_EQ(host->GetActiveVendorId(), 0x1002u);
  EXPECT_EQ(host.backends.TakeTrace(), "ADLImpl.Made\nADLImpl.Initial\nADLImpl.Ended\n");
}

TEST(GetActiveVendorId, IsZeroWhenAllEntriesAreIntel) {
  FactoryHost host("win7 intel, sis, intel: internal 1366x768 active");
  EXPECT_EQ(host->GetActiveVendorId(), 0u);
}

TEST(GetActiveVendorId, DoesNotSeeRootEnumeratedDevices) {
  FactoryHost host(kIntelNvidia);
  host.Adapter(0).root_enumerated = true;
  EXPECT_EQ(host->GetActiveVendorId(), 0x10DEu);
}

// --- The other makers.

TEST(CreateIMMonitorByVendor, UnknownVendorLeavesTheActiveObjectAlone) {
  FactoryHost host(kIntel, kWithChecks);
  host.Install(kVendorIntel);
  IMMonitor* const object = host->ActiveMonitor();
  for (const uint32_t vendor : {0u, 0x045Eu, 0xFFFFu, 0x1234u, 0x18086u}) {
    EXPECT_EQ(host->CreateIMMonitorByVendor(vendor), nullptr) << vendor;
  }
  EXPECT_EQ(host->ActiveMonitor(), object);
  EXPECT_FALSE(host.script->deleted);
  EXPECT_TRUE(Contains(host.machine.Log(), "Check failed: false. Non-supported vendor\n"));
}

TEST(CreateIMMonitorForActiveVendor, IsNullWithACheckWithoutAVendor) {
  FactoryHost host(kNone, kWithChecks);
  EXPECT_EQ(host->CreateIMMonitorForActiveVendor(), nullptr);
  EXPECT_TRUE(Contains(host.machine.Log(), "Check failed: false. Non-supported vendor id\n"));
}

TEST(CreateIMMonitorForActiveVendor, StoresNothing) {
  FactoryHost host(kIntel);
  IMMonitor* const made = host->CreateIMMonitorForActiveVendor();
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->GetVgaVendor(), kVendorIntel);
  delete made;
  EXPECT_EQ(host->ActiveMonitor(), nullptr);
  EXPECT_EQ(host->ActiveVendor(), 0);
}

TEST(CreateDisplayExtensionByVendor, IsNullForOtherVendors) {
  FactoryHost host(kIntel);
  for (const uint32_t vendor : {0u, 0x1039u, 0x1106u, 0x045Eu, 0xFFFFu}) {
    EXPECT_EQ(host->CreateDisplayExtensionByVendor(vendor), nullptr) << vendor;
  }
}

TEST(GetDisplayExtension, IsTheActiveObjectsOwnAndNotAddRefed) {
  FactoryHost host(kIntel);
  auto* const fake = new FakeExtensionMonitor(host.script);
  host->InstallMonitor(fake, static_cast<uint16_t>(kVendorIntel));
  IDisplayExtension* const extension = host->GetDisplayExtension();
  EXPECT_EQ(extension, static_cast<IDisplayExtension*>(fake));
  EXPECT_EQ(extension->AddRef(), 2u);  // 1 is the owner's
  EXPECT_EQ(extension->Release(), 1u);
}

TEST(GetDisplayExtension, IsANewDoNothingObjectWhereTheActiveOneHasNone) {
  FactoryHost host(kIntel);
  host.Install(kVendorIntel);
  IDisplayExtension* const first = host->GetDisplayExtension();
  IDisplayExtension* const second = host->GetDisplayExtension();
  ASSERT_NE(first, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(first->AddRef(), 1u);  // the count starts at 0
  EXPECT_TRUE(first->InitialExtension());
  EXPECT_EQ(first->GetExtensionVendor(), 0u);
  EdidBlob blob;
  EXPECT_FALSE(first->GetEDID(IMMonitor::MD_NB, &blob));
  EXPECT_FALSE(first->SupportsTripleDisplay());
  EXPECT_EQ(first->Release(), 0u);
  second->AddRef();
  second->Release();
}

TEST(CreatePhysicalMonitor, AsksTheOperatingSystemFromReportedVersion61On) {
  struct {
    const char* windows;
    bool ccd;
  } const rows[] = {{"win7", true},   {"win8", true},  {"2008r2", true},
                    {"vista", false}, {"2008", false}, {"2003", false},
                    {"xp", false},    {"win10", false}};  // 10.0 has no minor part
  for (const auto& row : rows) {
    FactoryHost host(std::string(row.windows) + " intel: internal 1366x768 active");
    host.Install(kVendorIntel);
    IPhysicalMonitor* const physical = host->CreatePhysicalMonitor();
    ASSERT_NE(physical, nullptr) << row.windows;
    // Elsewhere the EDID is read.
    EXPECT_EQ(dynamic_cast<IMMonitor*>(physical) != nullptr, row.ccd) << row.windows;
    EXPECT_EQ(physical->AddRef(), 1u) << row.windows;
    EXPECT_EQ(physical->Release(), 0u) << row.windows;
  }
}

TEST(ShouldUseDisplayLinkWorkaround, IsFalseWithoutTheService) {
  FactoryHost host(kIntel);
  for (const uint32_t vendor : {0x8086u, 0xFFFFu, 0x10000u, 0x10DEu}) {
    EXPECT_FALSE(host->ShouldUseDisplayLinkWorkaround(vendor)) << vendor;
  }
  EXPECT_FALSE(host->IsDisplayLinkWorkaroundActive());
}

/// What SupportNvidiaCrossAdapter says, and which objects it made on the way.
std::string CrossAdapter(FactoryHost* host) {
  IMMonitor* intel = nullptr;
  IMMonitor* nv = nullptr;
  std::string said = (*host)->SupportNvidiaCrossAdapter(&intel, &nv) ? "yes" : "no";
  if (intel != nullptr) said += ", intel";
  if (nv != nullptr) said += ", nvidia";
  delete intel;
  delete nv;
  return said;
}

TEST(SupportNvidiaCrossAdapter, BelowWindows7NothingIsMade) {
  FactoryHost host("vista intel, nvidia: internal 1366x768 active");
  EXPECT_EQ(CrossAdapter(&host), "no");
}

TEST(SupportNvidiaCrossAdapter, IsFalseWithoutAnIntelObject) {
  FactoryHost host(kIntelNvidia);
  host.Adapter(0).vendor_library = false;
  EXPECT_EQ(CrossAdapter(&host), "no");
}

TEST(SupportNvidiaCrossAdapter, IsFalseWhereIntelOwnsTheHdmiConnector) {
  FactoryHost host("win7 intel, nvidia: internal 1366x768 active, hdmi");
  EXPECT_EQ(CrossAdapter(&host), "no, intel");
}

TEST(SupportNvidiaCrossAdapter, IsFalseWithoutAnNvidiaObject) {
  FactoryHost host(kIntelNvidia);
  host.Adapter(1).vendor_library = false;
  EXPECT_EQ(CrossAdapter(&host), "no, intel");
}

// --- On a machine without a supported adapter.

TEST(OstrelWithoutAdapter, InitialisesButAnswersNothing) {
  sim::Machine machine(kNone);
  sim::Library ostrel(machine);
  const std::string at_rest = machine.Outstanding();
  ASSERT_TRUE(ostrel.InitExtendMode());
  ASSERT_TRUE(ostrel.Init());
  // Every call meets a new object, which nobody has initialised.
  uint32_t displays = 7, count = 7;
  EXPECT_EQ(ostrel.GetConnectedDisplays(&displays, &count), 0);
  EXPECT_EQ(ostrel.GetActiveDisplays(&displays, &count), 0);
  EXPECT_EQ(ostrel.GetCurrentDisplayMode(&displays, &count), 0);
  EXPECT_EQ(displays, 7u);
  EXPECT_EQ(ostrel.EnableExtendMode(1), 0);
  EXPECT_EQ(ostrel.Run(), 0);
  EXPECT_EQ(ostrel.GetVgaVendor(), 0u);
  EXPECT_EQ(machine.TakeJournal(), "");
  ostrel.DeInit();
  ostrel.DeInitExtendMode();
  EXPECT_EQ(machine.Outstanding(), at_rest);
}

TEST(OstrelWithoutAdapter, BelowWindows7CannotBeInitialised) {
  sim::Machine machine("vista none: internal 1366x768 active");
  sim::Library ostrel(machine);
  const std::string at_rest = machine.Outstanding();
  EXPECT_EQ(ostrel.InitExtendMode(), 0);
  EXPECT_EQ(ostrel.Init(), 0);
  EXPECT_EQ(machine.Outstanding(), at_rest);
}

}  // namespace
