#include <gtest/gtest.h>

#include "Common/cpu_id.h"

namespace {

TEST(IntelCPUGenerationFromSignature, KnownModelsGiveTheirRow) {
  EXPECT_EQ(IntelCPUGenerationFromSignature(0x000206A7), 0);  // family 6, model 0x2A, stepping 7
  EXPECT_EQ(IntelCPUGenerationFromSignature(0x000306A9), 1);  // family 6, model 0x3A
}

TEST(IntelCPUGenerationFromSignature, AnyOtherIs255WhichIsAboveBoth) {
  EXPECT_EQ(IntelCPUGenerationFromSignature(0x000306C3), 255);             // model 0x3C
  EXPECT_EQ(IntelCPUGenerationFromSignature(0x000306A9 | 0x100), 255);     // family 7
  EXPECT_EQ(IntelCPUGenerationFromSignature(0x000306A9 | 0x100000), 255);  // extended family 1
  EXPECT_EQ(IntelCPUGenerationFromSignature(0), 255);
}

TEST(IntelCPUGenerationFromSignature, OtherBitsDoNotCount) {
  EXPECT_EQ(IntelCPUGenerationFromSignature(0x000306A0), 1);  // stepping
  EXPECT_EQ(IntelCPUGenerationFromSignature(0x0003F6A9), 1);  // type and reserved bits
  EXPECT_EQ(IntelCPUGenerationFromSignature(0xFF0306A9), 1);  // upper half of the extended family
}

}  // namespace
