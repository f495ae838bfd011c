// The public header against the library: its numbers are those that the exports give, and a host
// that binds at run time through its pointer types gets every export.
#include <gtest/gtest.h>

#define OSTREL_NO_PROTOTYPES
#include "ostrel/ostrel.h"
#include "tests/support/FakeHost.h"

namespace {

template <typename Function>
Function Bind(const sim::Library& library, const char* name) {
  return reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(library.module(), name)));
}

constexpr const char* kNames[] = {"Ostrel_Init",
                                  "Ostrel_DeInit",
                                  "Ostrel_Run",
                                  "Ostrel_RunEx",
                                  "Ostrel_Stop",
                                  "Ostrel_Cancel",
                                  "Ostrel_SaveCurrentMode",
                                  "Ostrel_RegisterNotification",
                                  "Ostrel_SetLassoBoxStatus",
                                  "Ostrel_FlushRememberedSettings",
                                  "Ostrel_InitExtendMode",
                                  "Ostrel_DeInitExtendMode",
                                  "Ostrel_GetConnectedDisplays",
                                  "Ostrel_GetActiveDisplays",
                                  "Ostrel_GetCurrentDisplayMode",
                                  "Ostrel_SetNewDisplayMode",
                                  "Ostrel_EnableExtendMode",
                                  "Ostrel_IsExtendModeEnabled",
                                  "Ostrel_ChangeToNBOnlySingleDisplayMode",
                                  "Ostrel_HasDualOutputCapability",
                                  "Ostrel_HasExternalMonitorConnected",
                                  "Ostrel_GetVgaVendor",
                                  "Ostrel_PermitToChangeMode",
                                  "Ostrel_DetectDisplayConnectedFeatureIsValid"};

TEST(OstrelHeader, EveryExportIsThereUnderItsUndecoratedName) {
  sim::Machine machine("win7 intel: internal 1366x768 active");
  sim::Library ostrel(machine);
  EXPECT_EQ(std::size(kNames), 24u);
  for (const char* name : kNames) {
    EXPECT_NE(GetProcAddress(ostrel.module(), name), nullptr) << name;
  }
}

TEST(OstrelHeader, ModeAndDisplayNumbersAreWhatTheExportsWrite) {
  FakeHost host;
  ASSERT_TRUE(Bind<Ostrel_InitExtendModeProc>(*host.ostrel, "Ostrel_InitExtendMode")());
  const auto get_mode =
      Bind<Ostrel_GetCurrentDisplayModeProc>(*host.ostrel, "Ostrel_GetCurrentDisplayMode");
  struct {
    uint32_t internal, exported;
  } const modes[] = {
      {IMMonitor::DM_SINGLE, OSTREL_MODE_SINGLE}, {IMMonitor::DM_CLONE, OSTREL_MODE_CLONE},
      {IMMonitor::DM_EXTEND, OSTREL_MODE_EXTEND}, {IMMonitor::DM_HSPAN, OSTREL_MODE_HSPAN},
      {IMMonitor::DM_VSPAN, OSTREL_MODE_VSPAN},   {IMMonitor::DM_TRIPLE_CLONE, OSTREL_MODE_OTHER}};
  for (const auto& row : modes) {
    host.script->mode = row.internal;
    uint32_t mode = 99;
    EXPECT_EQ(get_mode(&mode, nullptr), 1);
    EXPECT_EQ(mode, row.exported);
  }
  struct {
    uint32_t internal, exported;
  } const displays[] = {{IMMonitor::MD_NB, OSTREL_DISPLAY_PANEL},
                        {IMMonitor::MD_CRT, OSTREL_DISPLAY_CRT},
                        {IMMonitor::MD_TV, OSTREL_DISPLAY_TV},
                        {IMMonitor::MD_DVI, OSTREL_DISPLAY_DVI}};
  for (const auto& row : displays) {
    host.script->active = row.internal;
    uint32_t mode = 0, mask = 0;
    EXPECT_EQ(get_mode(&mode, &mask), 1);
    EXPECT_EQ(mask, row.exported);
  }
}

TEST(OstrelHeader, VendorNumbersAreWhatTheExportReturns) {
  sim::Machine machine("win7 intel: internal 1366x768 active");
  sim::Library ostrel(machine);
  const auto get_vendor = Bind<Ostrel_GetVgaVendorProc>(ostrel, "Ostrel_GetVgaVendor");
  struct {
    const char* hardware_id;
    uint32_t code;
  } const rows[] = {
      {"PCI\\VEN_8086", OSTREL_VENDOR_INTEL},  {"PCI\\VEN_1002", OSTREL_VENDOR_AMD},
      {"PCI\\VEN_10DE", OSTREL_VENDOR_NVIDIA}, {"PCI\\VEN_1106", OSTREL_VENDOR_VIA},
      {"PCI\\VEN_1039", OSTREL_VENDOR_SIS},    {"PCI\\VEN_1AF4", OSTREL_VENDOR_UNKNOWN}};
  for (const auto& row : rows) {
    machine.model().adapters[0].hardware_id = row.hardware_id;
    EXPECT_EQ(get_vendor(), row.code) << row.hardware_id;
  }
}

TEST(OstrelHeader, NotificationCodesAreWhatIsPosted) {
  FakeHost host;
  host.script->connected = IMMonitor::MD_NB | IMMonitor::MD_CRT;
  host.script->connected_count = 2;
  ASSERT_TRUE(Bind<Ostrel_InitProc>(*host.ostrel, "Ostrel_Init")());
  const HWND receiver =
      CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  Bind<Ostrel_RegisterNotificationProc>(*host.ostrel, "Ostrel_RegisterNotification")(
      receiver, OSTREL_FIRST_MESSAGE_ID);
  EXPECT_NE(Bind<Ostrel_RunExProc>(*host.ostrel, "Ostrel_RunEx")(), nullptr);
  EXPECT_EQ(Bind<Ostrel_CancelProc>(*host.ostrel, "Ostrel_Cancel")(), 1);
  const auto& posted = host.machine.Notifications();
  ASSERT_EQ(posted.size(), 2u);
  EXPECT_EQ(posted[0].wparam, OSTREL_NOTIFICATION_OPENED);
  EXPECT_EQ(posted[1].wparam, OSTREL_NOTIFICATION_CLOSED);
  EXPECT_EQ(posted[0].message, OSTREL_FIRST_MESSAGE_ID);
  DestroyWindow(receiver);
}

}  // namespace
