// The classes behind a vendor id, made on demand.
#include <gtest/gtest.h>

#include "tests/behaviour/FactoryHost.h"
#include "tests/behaviour/FactoryReference.h"

namespace {

struct MakerRow {
  uint32_t vendor;
  const char* windows;
  bool display_link_service;
  const char* object;
};
constexpr MakerRow kMakers[] = {
    {0x1002, "win7", false, "ADLImpl"},
    {0x1002, "xp", false, "ADLImpl"},
    {0x1039, "win7", false, "SisMMImpl"},
    {0x1106, "win7", false, "ViaMMImpl"},
    {0x10DE, "win10", false, "NvidiaMMImplV3"},
    {0x10DE, "win7", true, "NvidiaMMImplV3"},
    {0x10DE, "2008", false, "NvidiaMMImplV3"},
    {0x10DE, "vista", false, "NvidiaMMImplV2"},
    {0x10DE, "2003", false, "NvidiaMMImplV2"},
    {0x10DE, "xp", false, "NvidiaMMImpl"},
    {0x8086, "win7", false, "IntelMMImpl"},
    {0x8086, "win7", true, "DisplayLinkWorkaroundImpl"},
    {0x8086, "win10", true, "DisplayLinkWorkaroundImpl"},
    {0x8086, "2008r2", true, "IntelMMImpl"},
    {0x8086, "vista", true, "IntelMMImpl"},
};

std::string SisMachine(const char* windows) {
  return std::string(windows) + " sis: internal 1366x768 active";
}

TEST(CreateIMMonitorByVendor, MakesAndStoresTheVendorsObjectWithoutStartingIt) {
  for (const MakerRow& row : kMakers) {
    StandInHost host(SisMachine(row.windows));
    host.backends.script.display_link_service = row.display_link_service;
    IMMonitor* const object = host->CreateIMMonitorByVendor(row.vendor);
    EXPECT_EQ(NameOf(object), row.object) << row.windows;
    EXPECT_EQ(host->ActiveMonitor(), object) << row.object;
    EXPECT_EQ(host.backends.TakeStarts(), row.vendor == 0x1002 ? "ADLImpl " : "") << row.object;
    EXPECT_EQ(host->State().active_vendor, 0) << row.object;
    EXPECT_EQ(host->State().factory_vendor, 0) << row.object;
  }
}

TEST(CreateIMMonitorByVendor, LeavesTheActiveObjectAloneWhenConstructionThrows) {
  StandInHost host(SisMachine("win7"));
  IMMonitor* const object = host->CreateIMMonitorByVendor(0x1039);
  host.backends.maker_throws = Backend::kViaMMImpl;
  EXPECT_EQ(host->CreateIMMonitorByVendor(0x1106), nullptr);
  EXPECT_EQ(host->ActiveMonitor(), object);
  EXPECT_TRUE(host.LogHas("Exception occurred while creating IMMonitor object\n"));
  EXPECT_EQ(host.backends.Living(), "SisMMImpl ");
}

TEST(CreateIMMonitorByVendor, StoresNullWithoutMemoryForTheObject) {
  for (const uint32_t vendor : {0x8086u, 0x10DEu}) {
    FactoryHost host(SisMachine("win7"), kWithChecks);
    // Or the record of the DisplayLink service that is not there would be the one without memory.
    host.machine.SetEnvironment("OSTREL_LOG_LEVEL", "2");
    host.Install(kVendorSis);
    const ProjectorBox& memory = *host.Library().white_box().projectors;
    memory.RefuseMemory(1);
    EXPECT_EQ(host->CreateIMMonitorByVendor(vendor), nullptr) << vendor;
    EXPECT_FALSE(memory.RefuseMemory(0)) << vendor;
    EXPECT_EQ(host->ActiveMonitor(), nullptr) << vendor;
    EXPECT_TRUE(host.script->deleted) << vendor;
    EXPECT_FALSE(host.LogHas("Exception occurred")) << vendor;
  }
}

TEST(CreateIMMonitorByVendor, TheObjectThatWasThereEnds) {
  StandInHost host(SisMachine("win7"));
  host->CreateIMMonitorByVendor(0x1039);
  host->CreateIMMonitorByVendor(0x1106);
  EXPECT_EQ(host.backends.TakeTrace(), "SisMMImpl.Made\nViaMMImpl.Made\nSisMMImpl.Ended\n");
}

TEST(CreateAMDObject, IsTheOldLibrarysWhereTheNewOneDoesNotQualifyOrStart) {
  StandInHost host(SisMachine("win7"));
  const auto made = [&host] {
    return NameOf(std::unique_ptr<IMMonitor>(host->CreateAMDObject()).get());
  };
  EXPECT_EQ(made(), "ADLImpl");
  EXPECT_EQ(host.backends.TakeTrace(), "ADLImpl.Made\nADLImpl.Initial\nADLImpl.Ended\n");
  host.backends.script.adl = Start::kFails;
  EXPECT_EQ(made(), "AtiMMImpl");
  EXPECT_EQ(host.backends.TakeTrace(),
            "ADLImpl.Made\nADLImpl.Initial\nADLImpl.Ended\nAtiMMImpl.Made\nAtiMMImpl.Ended\n");
  host.backends.script.adl_qualifies = false;
  EXPECT_EQ(made(), "AtiMMImpl");
  EXPECT_EQ(host.backends.TakeTrace(), "AtiMMImpl.Made\nAtiMMImpl.Ended\n");
}

TEST(CreateIMMonitorForActiveVendor, MakesTheSameClassesAndStoresNone) {
  struct {
    const char* machine;
    const char* object;
  } const rows[] = {
      {"win7 intel: internal 1366x768 active", "IntelMMImpl"},
      {"win7 nvidia: internal 1366x768 active", "NvidiaMMImplV3"},
      {"vista nvidia: internal 1366x768 active", "NvidiaMMImplV2"},
      {"xp nvidia: internal 1366x768 active", "NvidiaMMImpl"},
      {"win7 amd: internal 1366x768 active", "ADLImpl"},
  };
  for (const auto& row : rows) {
    StandInHost host(row.machine);
    const std::unique_ptr<IMMonitor> object(host->CreateIMMonitorForActiveVendor());
    EXPECT_EQ(NameOf(object.get()), row.object) << row.machine;
    EXPECT_EQ(host->ActiveMonitor(), nullptr) << row.machine;
  }
}

TEST(CreateIMMonitorForActiveVendor, IsNullWhenConstructionThrows) {
  StandInHost host("win7 intel: internal 1366x768 active");
  host.backends.maker_throws = Backend::kIntelMMImpl;
  EXPECT_EQ(host->CreateIMMonitorForActiveVendor(), nullptr);
  EXPECT_TRUE(host.LogHas("Exception occurred while creating IMMonitor object\n"));
}

TEST(CreateDisplayExtensionByVendor, MakesOneClassPerVendorAndAddsAReference) {
  struct {
    uint32_t vendor;
    const char* object;
  } const rows[] = {{0x10DE, "NvidiaMMImplV2"}, {0x8086, "IntelMMImpl"}, {0x1002, "ADLImpl"}};
  for (const auto& row : rows) {
    StandInHost host("win10 sis: internal 1366x768 active");
    host.backends.script.display_link_service = true;
    IDisplayExtension* const extension = host->CreateDisplayExtensionByVendor(row.vendor);
    ASSERT_NE(extension, nullptr) << row.object;
    EXPECT_EQ(NameOf(dynamic_cast<IMMonitor*>(extension)), row.object);
    EXPECT_EQ(host.backends.TakeStarts(), "") << row.object;
    EXPECT_EQ(host->ActiveMonitor(), nullptr) << row.object;
    EXPECT_EQ(extension->Release(), 1u) << row.object;
    EXPECT_EQ(extension->Release(), 0u) << row.object;
  }
}

TEST(CreateDisplayExtensionByVendor, IsNullWhenConstructionThrows) {
  StandInHost host(SisMachine("win7"));
  host.backends.maker_throws = Backend::kNvidiaMMImplV2;
  EXPECT_EQ(host->CreateDisplayExtensionByVendor(0x10DE), nullptr);
  host.backends.maker_throws.reset();
  host.backends.maker_gives_null = Backend::kNvidiaMMImplV2;
  EXPECT_EQ(host->CreateDisplayExtensionByVendor(0x10DE), nullptr);
}

TEST(GetDisplayExtension, ABadCastIsLoggedAndTheActiveVendorsOwnTaken) {
  StandInHost host(kIntelAndAmd);
  host.backends.script.adl = Start::kThrowsBadCast;
  host.backends.on_start = [&host](Backend) { host.backends.script.adl = Start::kWorks; };
  IDisplayExtension* const extension = host->GetDisplayExtension();
  EXPECT_EQ(NameOf(dynamic_cast<IMMonitor*>(extension)), "ADLImpl");
  EXPECT_TRUE(host.LogHas("Can't create IDisplayExtension object: std::bad_cast\n"));
  EXPECT_EQ(extension->AddRef(), 3u);  // the owner's and the maker's are there
  EXPECT_EQ(extension->Release(), 2u);
  EXPECT_EQ(host.backends.Living(), "ADLImpl ");
  host->DeleteMultiMonitorObject();
  EXPECT_EQ(host.backends.Living(), "");
}

TEST(GetDisplayExtension, ABadCastWithoutAnActiveVendorGivesTheDoNothingObject) {
  StandInHost host(kIntelAndAmd);
  host.Adapter(0).root_enumerated = true;
  host.Adapter(1).root_enumerated = true;
  host.backends.script.adl = Start::kThrowsBadCast;
  IDisplayExtension* const extension = host->GetDisplayExtension();
  ASSERT_NE(extension, nullptr);
  EXPECT_EQ(extension->GetExtensionVendor(), 0u);
  EXPECT_EQ(extension->AddRef(), 1u);
  EXPECT_EQ(extension->Release(), 0u);
}

TEST(GetDisplayExtension, AnotherExceptionPasses) {
  StandInHost host(kIntelAndAmd);
  host.backends.script.adl = Start::kThrows;
  EXPECT_THROW(host->GetDisplayExtension(), std::runtime_error);
  EXPECT_FALSE(host.LogHas("Can't create IDisplayExtension object"));
}

TEST(ShouldUseDisplayLinkWorkaround, NeedsWindows7TheServiceAndIntelOrNoVendor) {
  for (const WindowsRow& windows : kWindowsRows) {
    StandInHost host(std::string(windows.word) + " intel: internal 1366x768 active");
    for (const bool service : {false, true}) {
      host.backends.script.display_link_service = service;
      const bool wanted = service && windows.order >= kWin7;
      for (const uint32_t vendor : {0x8086u, 0xFFFFu, 0x10000u, 0x18086u}) {
        EXPECT_EQ(host->ShouldUseDisplayLinkWorkaround(vendor), wanted)
            << windows.word << " " << vendor;
      }
      for (const uint32_t vendor : {0u, 0x1002u, 0x10DEu, 0x045Eu, 0x8085u, 0xFFFEu}) {
        EXPECT_FALSE(host->ShouldUseDisplayLinkWorkaround(vendor)) << windows.word;
      }
    }
  }
}

TEST(IsDisplayLinkWorkaroundActive, LooksAtTheListedAdaptersRootEnumeratedOnesIncluded) {
  StandInHost host("win7 nvidia, intel: internal 1366x768 active");
  host.backends.script.display_link_service = true;
  EXPECT_TRUE(host->IsDisplayLinkWorkaroundActive());
  host.Adapter(1).root_enumerated = true;
  EXPECT_TRUE(host->IsDisplayLinkWorkaroundActive());
  host.Disable(1);
  EXPECT_FALSE(host->IsDisplayLinkWorkaroundActive());
}

TEST(CreatePhysicalMonitor, IsTheDisplayLinkObjectWhileTheServiceIsThere) {
  StandInHost host("win7 intel: internal 1366x768 active");
  host.backends.script.display_link_service = true;
  IPhysicalMonitor* const physical = host->CreatePhysicalMonitor();
  EXPECT_EQ(NameOf(dynamic_cast<IMMonitor*>(physical)), "DisplayLinkWorkaroundImpl");
  EXPECT_EQ(physical->AddRef(), 1u);
  EXPECT_EQ(physical->Release(), 0u);
}

}  // namespace
