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

TEST(DeviceContext, FaultIsNoContext) {
  Machine machine("win7 amd: internal 1366x768 active");
  machine.Fail("CreateDCA", 1);
  EXPECT_EQ(ContextOf("\\\\.\\DISPLAY1"), nullptr);
}

}  // namespace
}  // namespace sim
