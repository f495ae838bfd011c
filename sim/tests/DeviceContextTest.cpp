// CreateDCA of the model's display devices.
#include <gtest/gtest.h>

#include "sim/tests/Fakes.h"

namespace sim {
namespace {

HDC ContextOf(const char* device) { return SIM_FAKE(CreateDCA)(nullptr, device, nullptr, nullptr); }

TEST(DeviceContext, DeviceThatShowsADesktopHasOne) {
  Machine machine("win7 amd, intel: internal 1366x768, crt@2 1280x1024 active");
  EXPECT_EQ(ContextOf("\\\\.\\DISPLAY1"), nullptr);  // there, and dark
  EXPECT_EQ(ContextOf("\\\\.\\DISPLAY9"), nullptr);
  const HDC dc = ContextOf("\\\\.\\DISPLAY3");
  ASSERT_NE(dc, nullptr);
  EXPECT_NE(machine.Outstanding(), "");
  EXPECT_TRUE(SIM_FAKE(DeleteDC)(dc));
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(DeviceContext, ArgumentsStandInTheJournal) {
  Machine machine("win7 amd: internal 1366x768 active, crt 1280x1024");
  machine.JournalReads(true);
  DEVMODEA mode = {};
  mode.dmSize = sizeof mode;
  SIM_FAKE(DeleteDC)(ContextOf("\\\\.\\DISPLAY1"));
  SIM_FAKE(DeleteDC)(SIM_FAKE(CreateDCA)("DISPLAY", "\\\\.\\DISPLAY1", "LPT1:", &mode));
  ContextOf("\\\\.\\DISPLAY2");
  SIM_FAKE(DeleteDC)(SIM_FAKE(CreateDCA)("DISPLAY", nullptr, nullptr, nullptr));
  EXPECT_EQ(machine.TakeJournal(),
            "CreateDCA(driver=null device=\\\\.\\DISPLAY1 port=null)=1\n"
            "CreateDCA(driver=DISPLAY device=\\\\.\\DISPLAY1 port=LPT1: mode)=1\n"
            "CreateDCA(driver=null device=\\\\.\\DISPLAY2 port=null)=0\n"
            "CreateDCA(driver=DISPLAY device=null port=null)=1\n");
}

TEST(DeviceContext, FaultIsNoContext) {
  Machine machine("win7 amd: internal 1366x768 active");
  machine.Fail("CreateDCA", 1);
  EXPECT_EQ(ContextOf("\\\\.\\DISPLAY1"), nullptr);
}

}  // namespace
}  // namespace sim
