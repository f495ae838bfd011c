#include <gtest/gtest.h>

#include <vector>

#include "Common/MultiMonitor/MMObjectFactoryVendors.h"

namespace {

using Vendors = std::vector<uint16_t>;

Vendors Filtered(Vendors vendors) {
  FilterAdapterVendors(&vendors);
  return vendors;
}

TEST(VendorFromHardwareId, TakesFourCharactersBehindTheFirstUnderscore) {
  EXPECT_EQ(VendorFromHardwareId("PCI\\VEN_8086&DEV_0166"), 0x8086);
  EXPECT_EQ(VendorFromHardwareId("PCI\\VEN_10de&DEV_0df4"), 0x10DE);
  EXPECT_EQ(VendorFromHardwareId("_1002_8086"), 0x1002);
}

TEST(VendorFromHardwareId, IsZeroWithoutAnUnderscore) {
  EXPECT_EQ(VendorFromHardwareId("ROOT\\BASICDISPLAY"), 0);
  EXPECT_EQ(VendorFromHardwareId(""), 0);
}

TEST(VendorFromHardwareId, ReadsWhatIsThereOfAShortOne) {
  EXPECT_EQ(VendorFromHardwareId("VEN_"), 0);
  EXPECT_EQ(VendorFromHardwareId("VEN_8"), 0x8);
  EXPECT_EQ(VendorFromHardwareId("VEN_808"), 0x808);
}

TEST(VendorFromHardwareId, SkipsWhatIsNoDigit) {
  EXPECT_EQ(VendorFromHardwareId("VEN_8-8G"), 0x88);
  EXPECT_EQ(VendorFromHardwareId("VEN_ZZZZ"), 0);
}

TEST(FilterAdapterVendors, DropsNeighbouringDuplicatesOnly) {
  EXPECT_EQ(Filtered({0x8086, 0x8086, 0x10DE, 0x10DE}), Vendors({0x8086, 0x10DE}));
  EXPECT_EQ(Filtered({0x8086, 0x10DE, 0x8086}), Vendors({0x8086, 0x10DE, 0x8086}));
}

TEST(FilterAdapterVendors, DropsEveryVendorButThree) {
  EXPECT_EQ(Filtered({0x1039, 0x1106, 0, 0x045E, 0xFFFF}), Vendors());
  EXPECT_EQ(Filtered({0x1002, 0x10DE, 0x8086}), Vendors({0x1002, 0x10DE, 0x8086}));
}

TEST(FilterAdapterVendors, DropsDuplicatesBeforeUnknownVendors) {
  EXPECT_EQ(Filtered({0x8086, 0x1039, 0x8086}), Vendors({0x8086, 0x8086}));
}

TEST(FilterAdapterVendors, LeavesAnEmptyListEmpty) { EXPECT_EQ(Filtered({}), Vendors()); }

DeviceStatus Known(uint32_t status, uint32_t problem) {
  DeviceStatus device;
  device.known = true;
  device.status = status;
  device.problem = problem;
  return device;
}

TEST(IsListedAdapter, DisabledIsTheOnlyProblemThatDropsADevice) {
  EXPECT_FALSE(IsListedAdapter(Known(0, 22), true));
  EXPECT_FALSE(IsListedAdapter(Known(0, 22), false));
  for (const uint32_t problem : {0u, 1u, 10u, 21u, 23u, 28u, 43u}) {
    EXPECT_TRUE(IsListedAdapter(Known(0, problem), true)) << problem;
    EXPECT_TRUE(IsListedAdapter(Known(0, problem), false)) << problem;
  }
}

TEST(IsListedAdapter, RootEnumeratedDevicesCountWhenAskedFor) {
  EXPECT_TRUE(IsListedAdapter(Known(1, 0), true));
  EXPECT_FALSE(IsListedAdapter(Known(1, 0), false));
  EXPECT_FALSE(IsListedAdapter(Known(0x180201, 0), false));
  EXPECT_TRUE(IsListedAdapter(Known(0x180200, 0), false));
}

TEST(IsListedAdapter, ADeviceOfUnknownStatusIsKept) {
  EXPECT_TRUE(IsListedAdapter(DeviceStatus(), true));
  EXPECT_TRUE(IsListedAdapter(DeviceStatus(), false));
}

}  // namespace
