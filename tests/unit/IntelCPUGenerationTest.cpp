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
  // Stepping, type, and the upper four bits of the extended family, which are not looked at.
  EXPECT_EQ(IntelCPUGenerationFromSignature(0x000306A0), 1);
  EXPECT_EQ(IntelCPUGenerationFromSignature(0x000336A9),
            255);  // extended model 3 in bits 16-19 only
  EXPECT_EQ(IntelCPUGenerationFromSignature(0xFF0306A9 & 0xFF0F0FFF), 1);
  EXPECT_EQ(IntelCPUGenerationFromSignature(0x000306A9 | 0xF000), 1);
}

}  // namespace
