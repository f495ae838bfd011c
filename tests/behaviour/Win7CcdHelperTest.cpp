// Display configuration for callers outside Win7CCD.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/behaviour/CcdReports.h"

using namespace ccd_test;

namespace {

// --- win7_ccd_helper

TEST(Win7CcdHelper, TechnologyOfADisplay) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const TechnologyRow rows[] = {{kInternal, IMMonitor::MD_NB},
                                {0, IMMonitor::MD_CRT},
                                {4, IMMonitor::MD_DVI},
                                {5, IMMonitor::MD_HDMI},
                                {10, IMMonitor::MD_DP},
                                {1, IMMonitor::MD_TV},
                                {kOther, 0x40}};
  host.core();
  host.ForgetLog();
  for (const TechnologyRow& row : rows) {
    EXPECT_EQ(host.core().OutputTechnologyFromDisplay(row.flag), row.technology) << row.flag;
  }
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.core().OutputTechnologyFromDisplay(0), kOther);
  EXPECT_EQ(host.core().OutputTechnologyFromDisplay(3), kOther);
  const std::string check = "Check failed: CountBits(imm_display) == 1. \n";
  EXPECT_EQ(host.TakeLog(), check + check);
}

TEST(Win7CcdHelper, ReadsPathsAndModes) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1024x768 active");
  PathList paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  EXPECT_TRUE(
      host.core().GetDisplayConfigBuffers("User32.dll", QDC_ONLY_ACTIVE_PATHS, &paths, &modes));
  EXPECT_EQ(paths.size(), 2u);
  EXPECT_EQ(modes.size(), 4u);  // a source and a target each
}

TEST(Win7CcdHelper, FailedSizesAreCheckedAndLogged) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  host.machine.Fail("GetDisplayConfigBufferSizes", 1, ERROR_GEN_FAILURE);
  PathList paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  EXPECT_FALSE(host.core().GetDisplayConfigBuffers("User32.dll", QDC_ALL_PATHS, &paths, &modes));
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: CCD_SUCCEEDED(r). \n"
            "ERROR Call to GetDisplayConfigBufferSizes() failed: r = 31\n");
}

TEST(Win7CcdHelper, FailedQueryIsSilent) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  host.machine.Fail("QueryDisplayConfig", 1, ERROR_GEN_FAILURE);
  PathList paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  EXPECT_FALSE(host.core().GetDisplayConfigBuffers("User32.dll", QDC_ALL_PATHS, &paths, &modes));
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(Win7CcdHelper, BuffersWithoutAnApiFail) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  PathList paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  EXPECT_FALSE(host.core().GetDisplayConfigBuffers(nullptr, QDC_ALL_PATHS, &paths, &modes));
  EXPECT_EQ(host.TakeLog(), "");  // the function has not failed: it was not there
}

TEST(Win7CcdHelper, BuffersCheckTheirPointers) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  EXPECT_FALSE(host.core().GetDisplayConfigBuffersOfNothing());
  EXPECT_EQ(host.TakeLog(),
            "Check failed: ccd != NULL. \n"
            "Check failed: path_count != NULL. \n"
            "Check failed: paths != NULL. \n"
            "Check failed: mode_count != NULL. \n"
            "Check failed: modes != NULL. \n");
}

LUID AdapterOf(CoreHost* host) {
  LUID luid;
  luid.LowPart = host->machine.model().adapters[0].luid_low;
  luid.HighPart = host->machine.model().adapters[0].luid_high;
  return luid;
}

TEST(Win7CcdHelper, ReadsTheNameOfASource) {
  CoreHost host(kPanelAndCrt);
  DISPLAYCONFIG_SOURCE_DEVICE_NAME name = {};
  EXPECT_TRUE(host.core().GetSourceDeviceName("User32.dll", AdapterOf(&host), 1, &name));
  EXPECT_EQ(std::wstring(name.viewGdiDeviceName), L"\\\\.\\DISPLAY2");
  EXPECT_EQ(static_cast<int>(name.header.type), 1);
  EXPECT_EQ(name.header.size, 84u);
}

TEST(Win7CcdHelper, UnknownSourceIsLogged) {
  CoreHost host(kPanelAndCrt);
  host.core();
  host.ForgetLog();
  DISPLAYCONFIG_SOURCE_DEVICE_NAME name = {};
  EXPECT_FALSE(host.core().GetSourceDeviceName("User32.dll", AdapterOf(&host), 17, &name));
  EXPECT_EQ(host.TakeLog(), "Call to DisplayConfigGetDeviceInfo(Source Name) failed\n");
}

TEST(Win7CcdHelper, SourceNameWithoutAnApiFails) {
  CoreHost host(kPanelAndCrt);
  DISPLAYCONFIG_SOURCE_DEVICE_NAME name = {};
  EXPECT_FALSE(host.core().GetSourceDeviceName(nullptr, AdapterOf(&host), 0, &name));
}

TEST(Win7CcdHelper, SourceNameChecksItsPointers) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  EXPECT_FALSE(host.core().GetSourceDeviceNameOfNothing());
  EXPECT_EQ(host.TakeLog(), "Check failed: ccd != NULL. \nCheck failed: source_name != NULL. \n");
}

}  // namespace
