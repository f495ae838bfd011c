// The contract that every back-end shares, and the objects that stand for nothing.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/behaviour/CoreHost.h"
#include "tests/support/FakeMonitor.h"

namespace {

constexpr char kOneAdapter[] = "win7 intel: internal 1366x768 active, crt 1024x768";
constexpr uint32_t kUntouched = 0xABCDABCD;

TEST(NullMonitorController, RefusesEverythingAndWritesNothing) {
  CoreHost host(kOneAdapter);
  const std::unique_ptr<IMMonitor> null(host.core().NewNullMonitorController());
  uint32_t displays = kUntouched, count = kUntouched, mode = kUntouched;
  DEVMODEA dm;
  std::memset(&dm, 0x5A, sizeof(dm));
  const DEVMODEA before = dm;

  EXPECT_EQ(null->Initial(), 0);
  EXPECT_EQ(null->GetConnectedDisplays(&displays, &count), 0);
  EXPECT_EQ(null->GetActiveDisplays(&displays, &count), 0);
  EXPECT_EQ(null->GetCurrentDisplayMode(&mode, &displays), 0);
  EXPECT_EQ(null->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB), 0);
  null->DetectDisplays();
  null->PreloadDisplayModes();
  EXPECT_EQ(null->IsExtendModeEnabled(), 0);
  EXPECT_EQ(null->EnableExtendModeOnDisplays(1, IMMonitor::MD_CRT), 0);
  EXPECT_EQ(null->EnableExtendMode(1), 0);
  EXPECT_EQ(null->ChangeToNBOnlySingleDisplayMode(), 0);
  EXPECT_EQ(null->HasDualOutputCapability(), 0);
  EXPECT_EQ(null->HasDisplaySwitchingCapability(), 0);
  EXPECT_EQ(null->ShouldResetDisplaySettingAfterSwtich(), 0);
  EXPECT_EQ(null->GetVgaVendor(), 0u);
  EXPECT_FALSE(null->GetDisplaySettings(IMMonitor::MD_NB, &dm));

  EXPECT_EQ(displays, kUntouched);
  EXPECT_EQ(count, kUntouched);
  EXPECT_EQ(mode, kUntouched);
  EXPECT_EQ(std::memcmp(&dm, &before, sizeof(dm)), 0);
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST(NullMonitorController, WalksNoModes) {
  CoreHost host(kOneAdapter);
  const std::unique_ptr<IMMonitor> null(host.core().NewNullMonitorController());
  null->PreloadDisplayModes();
  EXPECT_EQ(host.machine.Calls("EnumDisplaySettingsA"), 0u);
}

TEST(NullDisplayExtension, HasNoAnswers) {
  CoreHost host(kOneAdapter);
  IDisplayExtension* const ext = host.core().NewNullDisplayExtension();
  ext->AddRef();
  EdidBlob edid = {17, &edid};
  EXPECT_TRUE(ext->InitialExtension());
  EXPECT_EQ(ext->GetExtensionVendor(), 0u);
  EXPECT_FALSE(ext->GetEDID(IMMonitor::MD_NB, &edid));
  ext->FreeEDID(&edid);
  EXPECT_EQ(edid.cb, 17u);
  EXPECT_EQ(edid.pv, &edid);
  EXPECT_FALSE(ext->SupportsTripleDisplay());
  ext->Release();
}

TEST(NullDisplayExtension, CountsFromZero) {
  CoreHost host(kOneAdapter);
  IDisplayExtension* const ext = host.core().NewNullDisplayExtension();
  EXPECT_EQ(ext->AddRef(), 1u);
  EXPECT_EQ(ext->AddRef(), 2u);
  EXPECT_EQ(ext->Release(), 1u);
  EXPECT_EQ(ext->AddRef(), 2u);
  EXPECT_EQ(ext->Release(), 1u);
  EXPECT_EQ(ext->Release(), 0u);  // ends the object
}

TEST(NullDisplayExtension, QueryInterfaceFailsWithoutACheck) {
  CoreHost host(kOneAdapter, L"--enable-dcheck");
  IDisplayExtension* const ext = host.core().NewNullDisplayExtension();
  ext->AddRef();
  host.ForgetLog();
  void* object = nullptr;
  EXPECT_EQ(static_cast<uint32_t>(ext->QueryInterface(GUID(), &object)), 0x80004005u);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(host.TakeLog(), "");
  ext->Release();
}

// --- The order of the virtual operations is part of the contract. An object begins with the
// address of its table; the destructor takes two places in it, both behind Initial.

using Operation = uint64_t (*)(void* object, void* a, void* b, void* c);

uint64_t CallSlot(void* object, size_t slot, void* a = nullptr, void* b = nullptr,
                  void* c = nullptr) {
  return (*static_cast<Operation**>(object))[slot](object, a, b, c);
}

TEST(IMMonitor, OperationsStandInTheirOrder) {
  const auto script = std::make_shared<FakeScript>();
  FakeMonitor monitor(script);
  const struct {
    size_t slot;
    const char* call;
  } rows[] = {
      {0, "Initial\n"},
      {3, "GetConnectedDisplays\n"},
      {4, "GetActiveDisplays\n"},
      {5, "GetCurrentDisplayMode\n"},
      {6, "SetNewDisplayMode(0, 0x0)\n"},
      {7, "DetectDisplays\n"},
      {8, "PreloadDisplayModes\n"},
      {9, "IsExtendModeEnabled\n"},
      {10, "EnableExtendModeOnDisplays(0, 0x0)\n"},
      {11, "EnableExtendMode(0)\n"},
      {12, "ChangeToNBOnlySingleDisplayMode\n"},
      {13, "HasDualOutputCapability\n"},
      {14, "HasDisplaySwitchingCapability\n"},
      {15, "ShouldResetDisplaySettingAfterSwtich\n"},
      {16, "GetVgaVendor\n"},
      {17, "GetDisplaySettings(0, 0x0)\n"},
  };
  uint32_t first = 0, second = 0;
  for (const auto& row : rows) {
    const bool reports = row.slot >= 3 && row.slot <= 5;
    CallSlot(static_cast<IMMonitor*>(&monitor), row.slot, reports ? &first : nullptr,
             reports ? &second : nullptr);
    EXPECT_EQ(script->TakeCalls(), row.call) << "slot " << row.slot;
  }
}

TEST(MultiMonitor, FourMoreOperationsStandBehindThose) {
  CoreHost host(kOneAdapter);
  const std::unique_ptr<MultiMonitor> bare(host.core().NewBareMultiMonitor());
  host.core().SetBareEdid(bare.get(), true);
  EdidBlob edid;
  std::string name;
  void* const object = static_cast<IMMonitor*>(bare.get());
  const auto one = reinterpret_cast<void*>(uintptr_t{1});

  CallSlot(object, 18, one, &edid);
  EXPECT_EQ(host.core().TakeBareCalls(bare.get()), "GetMonitorEDID(1)\n");
  CallSlot(object, 19, &edid);
  EXPECT_EQ(host.core().TakeBareCalls(bare.get()), "FreeMonitorEDID\n");
  CallSlot(object, 20, one, &name);
  EXPECT_EQ(host.core().TakeBareCalls(bare.get()), "GetMonitorEDID(1)\nFreeMonitorEDID\n");
  const uint32_t listed = host.machine.Calls("EnumDisplayDevicesA");
  CallSlot(object, 21);
  EXPECT_EQ(host.machine.Calls("EnumDisplayDevicesA"), listed + 3);  // two devices and the end
}

TEST(Win7CCD, GetTargetPreferredModeStandsBehindThose) {
  CoreHost host(kOneAdapter);
  const CcdPointer ccd = host.NewCcd();
  DISPLAYCONFIG_TARGET_PREFERRED_MODE record = {};
  const auto panel = reinterpret_cast<void*>(uintptr_t{IMMonitor::MD_NB});
  EXPECT_EQ(static_cast<BOOL>(CallSlot(static_cast<IMMonitor*>(ccd.get()), 22, panel, &record)), 1);
  EXPECT_EQ(record.width, 1366u);
  EXPECT_EQ(record.height, 768u);
}

TEST(IDisplayExtension, OperationsStandInTheirOrder) {
  const auto script = std::make_shared<FakeScript>();
  FakeExtensionMonitor monitor(script);
  auto* const object = static_cast<IDisplayExtension*>(&monitor);
  EdidBlob edid;
  EXPECT_EQ(CallSlot(object, 1), 2u);  // AddRef
  EXPECT_EQ(CallSlot(object, 2), 1u);  // Release
  EXPECT_EQ(static_cast<uint32_t>(CallSlot(object, 0, nullptr, nullptr)), 0x80004005u);
  EXPECT_EQ(script->TakeCalls(), "");
  CallSlot(object, 3);
  EXPECT_EQ(script->TakeCalls(), "InitialExtension\n");
  EXPECT_EQ(CallSlot(object, 4), kVendorIntel);  // GetExtensionVendor
  CallSlot(object, 5, nullptr, &edid);
  EXPECT_EQ(script->TakeCalls(), "GetEDID(0, 0x0)\n");
  CallSlot(object, 6, &edid);
  EXPECT_EQ(script->TakeCalls(), "FreeEDID\n");
  CallSlot(object, 7);
  EXPECT_EQ(script->TakeCalls(), "SupportsTripleDisplay\n");
}

TEST(IPhysicalMonitor, GetNativeResolutionStandsBehindTheCount) {
  CoreHost host(kOneAdapter);
  const CcdPointer ccd = host.NewCcd();
  auto* const object = static_cast<IPhysicalMonitor*>(ccd.get());
  EXPECT_EQ(CallSlot(object, 1), 2u);
  EXPECT_EQ(CallSlot(object, 2), 1u);
  uint32_t width = 0, height = 0;
  const auto panel = reinterpret_cast<void*>(uintptr_t{IMMonitor::MD_NB});
  EXPECT_NE(CallSlot(object, 3, panel, &width, &height) & 0xFF, 0u);
  EXPECT_EQ(width, 1366u);
  EXPECT_EQ(height, 768u);
}

}  // namespace
