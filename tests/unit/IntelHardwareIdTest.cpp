// The device id in a PCI hardware id.
#include "Common/MultiMonitor/Intel/IntelHardwareId.h"

#include <gtest/gtest.h>

namespace {

TEST(IntelHardwareId, DeviceStandsBehindTheSecondUnderscore) {
  EXPECT_EQ(DeviceFromHardwareId("PCI\\VEN_8086&DEV_2A42&SUBSYS_02AA1028&REV_07"), 0x2A42);
  EXPECT_EQ(DeviceFromHardwareId("PCI\\VEN_8086&DEV_0166"), 0x0166);
  EXPECT_EQ(DeviceFromHardwareId("pci\\ven_8086&dev_a2c4"), 0xA2C4);
}

TEST(IntelHardwareId, SecondUnderscoreIsLookedForFourPlacesBehindTheFirst) {
  EXPECT_EQ(DeviceFromHardwareId("A_12_456_7890"), 0x7890);  // the one at three places is passed
  EXPECT_EQ(DeviceFromHardwareId("A_123_4567"), 0x4567);     // the one at four counts
}

TEST(IntelHardwareId, WithoutItThereIsNone) {
  EXPECT_EQ(DeviceFromHardwareId(""), 0);
  EXPECT_EQ(DeviceFromHardwareId("PCI"), 0);
  EXPECT_EQ(DeviceFromHardwareId("PCI\\VEN_8086"), 0);
  EXPECT_EQ(DeviceFromHardwareId("PCI\\VEN_8"), 0);
  EXPECT_EQ(DeviceFromHardwareId("_"), 0);
}

TEST(IntelHardwareId, ShortIdsAreReadAsTheyAre) {
  EXPECT_EQ(DeviceFromHardwareId("PCI\\VEN_8086&DEV_2A"), 0x2A);
  EXPECT_EQ(DeviceFromHardwareId("PCI\\VEN_8086&DEV_"), 0);
}

}  // namespace
