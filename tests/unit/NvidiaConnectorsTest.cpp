// NVIDIA's connector types and the display flags they stand for, read in both directions.
#include "Common/MultiMonitor/Nvidia/NvidiaConnectors.h"

#include <gtest/gtest.h>

#include <iterator>
#include <map>

namespace {

constexpr uint32_t kNotebook = 0x01;
constexpr uint32_t kCrt = 0x02;
constexpr uint32_t kTv = 0x04;
constexpr uint32_t kDvi = 0x08;
constexpr uint32_t kHdmi = 0x10;
constexpr uint32_t kDp = 0x20;

const std::map<uint32_t, uint32_t> kDisplayOfType = {
    {0, kCrt},   {16, kTv},   {17, kTv},   {19, kTv},  {20, kTv},       {22, kTv},
    {23, kHdmi}, {97, kHdmi}, {99, kHdmi}, {32, kDvi}, {33, kDvi},      {48, kDvi},
    {49, kDvi},  {50, kDvi},  {56, kDvi},  {57, kDvi}, {64, kNotebook}, {71, kNotebook},
    {70, kDp},   {72, kDp},   {100, kDp},  {101, kDp}};

TEST(NvidiaConnectors, EveryTypeUpToTwoHundredHasItsDisplayOrNone) {
  for (uint32_t type = 0; type < 200; ++type) {
    const auto row = kDisplayOfType.find(type);
    EXPECT_EQ(ConnectorToDisplay(type), row != kDisplayOfType.end() ? row->second : 0) << type;
  }
}

TEST(NvidiaConnectors, TypeThatTheDriverDoesNotKnowHasNoDisplay) {
  EXPECT_EQ(ConnectorToDisplay(0xFFFFFFFF), 0u);
  EXPECT_EQ(ConnectorToDisplay(0x80000000), 0u);
}

TEST(NvidiaConnectors, EveryDisplayIsLookedUpByOneType) {
  const struct {
    uint32_t display;
    uint32_t type;
    uint32_t with_embedded_display_port;
  } rows[] = {{kNotebook, 64, 71},
              {kCrt, 0, 0},
              {kTv, kUnknownConnector, kUnknownConnector},
              {kDvi, 49, 49},
              {kHdmi, 97, 97},
              {kDp, 70, 70},
              {0x40, kUnknownConnector, kUnknownConnector},
              {0x80000000, kUnknownConnector, kUnknownConnector}};
  for (const auto& row : rows) {
    EXPECT_EQ(ConnectorOfDisplay(row.display, false), row.type) << row.display;
    EXPECT_EQ(ConnectorOfDisplay(row.display, true), row.with_embedded_display_port) << row.display;
  }
}

TEST(NvidiaConnectors, NoDisplayAndSeveralAreLookedUpByNone) {
  for (const uint32_t displays : {0x00u, 0x03u, 0x11u, 0x30u, 0x3Fu, 0xFFFFFFFFu}) {
    EXPECT_EQ(ConnectorOfDisplay(displays, false), 0xFFFFFFFF) << displays;
    EXPECT_EQ(ConnectorOfDisplay(displays, true), 0xFFFFFFFF) << displays;
  }
}

TEST(NvidiaConnectors, ScartTelevisionReadsAsHdmiButIsNotFoundByIt) {
  EXPECT_EQ(ConnectorToDisplay(23), kHdmi);
  EXPECT_EQ(ConnectorOfDisplay(kHdmi, false), 97u);
  EXPECT_EQ(ConnectorOfDisplay(kHdmi, true), 97u);
}

TEST(NvidiaConnectors, TwelveOutputsAreWalkedInOneOrder) {
  const uint32_t expected[] = {0x1,   0x2,   0x4,     0x8,     0x100,   0x200,
                               0x400, 0x800, 0x10000, 0x20000, 0x40000, 0x80000};
  ASSERT_EQ(std::size(kNvidiaOutputs), 12u);
  for (size_t i = 0; i < std::size(expected); ++i) EXPECT_EQ(kNvidiaOutputs[i], expected[i]) << i;
}

}  // namespace
