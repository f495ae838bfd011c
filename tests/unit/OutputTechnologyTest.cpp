// The tables between Windows' numbers for outputs and the library's, row by row.
#include "Common/MultiMonitor/OutputTechnology.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using N = DisplayNumbers;

struct NumberPair {
  uint32_t from;
  uint32_t to;
};

TEST(OutputTechnology, EveryTechnologyHasItsFlag) {
  const NumberPair rows[] = {
      {0x80000000, 0x01},  // internal
      {0xFFFFFFFF, 0x10},  // other
      {0, 0x02},           // HD15
      {1, 0x04},           // S-Video
      {2, 0x04},           // composite
      {3, 0x04},           // component
      {4, 0x08},           // DVI
      {5, 0x10},           // HDMI
      {10, 0x20},          // DisplayPort, external
      {11, 0x20},          // DisplayPort, embedded
  };
  for (const NumberPair& row : rows) {
    EXPECT_EQ(FlagOfTechnology(row.from), row.to) << std::hex << row.from;
  }
}

TEST(OutputTechnology, AnythingElseHasNoFlag) {
  // Between, beside and beyond the known ones; with the top bit only internal and other are known.
  const uint32_t unknown[] = {6,  7,  8,          9,          12,         13,        14,
                              15, 16, 0x7FFFFFFF, 0x80000001, 0x80000005, 0xFFFFFFFE};
  for (const uint32_t technology : unknown) {
    EXPECT_EQ(FlagOfTechnology(technology), 0u) << std::hex << technology;
  }
}

TEST(OutputTechnology, EveryDisplayHasItsTechnology) {
  const NumberPair rows[] = {{N::MD_NB, 0x80000000}, {N::MD_CRT, 0},  {N::MD_TV, 1},
                             {N::MD_DVI, 4},         {N::MD_HDMI, 5}, {N::MD_DP, 10}};
  for (const NumberPair& row : rows) {
    EXPECT_EQ(TechnologyOfDisplay(row.from), row.to) << std::hex << row.from;
  }
}

TEST(OutputTechnology, AnyOtherMaskIsLookedUpAsOther) {
  for (const uint32_t mask : {0u, 3u, 0x11u, 0x40u, 0x80u, 0xFFFFFFFFu}) {
    EXPECT_EQ(TechnologyOfDisplay(mask), 0xFFFFFFFFu) << std::hex << mask;
  }
}

struct NativeRow {
  uint32_t display;
  std::vector<uint32_t> technologies;
};

TEST(OutputTechnology, NativeSizeIsLookedForByTheseTechnologies) {
  const NativeRow rows[] = {
      {N::MD_NB, {0x80000000}}, {N::MD_CRT, {0}},  // one each
      {N::MD_DVI, {4, 5}},      {N::MD_HDMI, {4, 5}}, {N::MD_DP, {10, 11}},
      {N::MD_TV, {0x80000000}},  // television is taken for the panel
      {0, {0x80000000}},        {0x40, {0x80000000}}, {3, {0x80000000}},
  };
  const uint32_t all[] = {0x80000000, 0xFFFFFFFF, 0, 1, 2, 3, 4, 5, 6, 10, 11, 12};
  for (const NativeRow& row : rows) {
    for (const uint32_t technology : all) {
      const bool expected = std::find(row.technologies.begin(), row.technologies.end(),
                                      technology) != row.technologies.end();
      EXPECT_EQ(IsNativeTechnology(row.display, technology), expected)
          << std::hex << row.display << " " << technology;
    }
  }
}

TEST(Topology, HasItsMode) {
  EXPECT_EQ(ModeOfTopology(1), 1u);
  EXPECT_EQ(ModeOfTopology(2), 2u);
  EXPECT_EQ(ModeOfTopology(4), 4u);
  EXPECT_EQ(ModeOfTopology(8), 1u);
}

TEST(Topology, WithoutANameGivesModeZero) {
  for (const uint32_t topology : {0u, 3u, 5u, 6u, 16u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ModeOfTopology(topology), 0u) << topology;
  }
}

TEST(Topology, IsChosenByModeAndPanel) {
  EXPECT_EQ(TopologyOfMode(N::DM_CLONE, 3), 2u);
  EXPECT_EQ(TopologyOfMode(N::DM_CLONE, 2), 2u);
  EXPECT_EQ(TopologyOfMode(N::DM_EXTEND, 3), 4u);
  EXPECT_EQ(TopologyOfMode(N::DM_SINGLE, N::MD_NB), 1u);
  EXPECT_EQ(TopologyOfMode(N::DM_SINGLE, N::MD_NB | N::MD_CRT), 1u);
  EXPECT_EQ(TopologyOfMode(N::DM_SINGLE, N::MD_CRT), 8u);
  EXPECT_EQ(TopologyOfMode(N::DM_SINGLE, 0), 8u);
}

TEST(Topology, OfAnyOtherModeIsInternal) {
  for (const uint32_t mode : {0u, 8u, 16u, 32u, 64u, 128u, 256u, 512u, 1024u}) {
    EXPECT_EQ(TopologyOfMode(mode, N::MD_CRT), 1u) << mode;
  }
}

TEST(PixelFormat, IsChosenByBitsPerPixel) {
  const NumberPair rows[] = {{0, 1},  {8, 1},  {15, 1}, {16, 2}, {23, 2},
                             {24, 3}, {31, 3}, {32, 4}, {64, 4}};
  for (const NumberPair& row : rows) EXPECT_EQ(PixelFormatFromBits(row.from), row.to) << row.from;
}

TEST(PixelFormat, GivesBitsPerPixel) {
  const NumberPair rows[] = {{1, 8}, {2, 16}, {3, 24}, {4, 32}, {5, 32}, {0, 32}, {99, 32}};
  for (const NumberPair& row : rows) EXPECT_EQ(BitsFromPixelFormat(row.from), row.to) << row.from;
}

struct FakePath {
  uint32_t technology;
  char name;
};

std::string Normalised(std::vector<FakePath> paths) {
  NormalisePaths(&paths, [](const FakePath& path) { return path.technology; });
  std::string names;
  for (const FakePath& path : paths) names += path.name;
  return names;
}

TEST(NormalisePaths, SortsBySignedTechnology) {
  // internal is the smallest number there is, other is -1
  EXPECT_EQ(Normalised({{10, 'd'}, {0, 'c'}, {0xFFFFFFFF, 'o'}, {0x80000000, 'i'}, {5, 'h'}}),
            "iochd");
}

TEST(NormalisePaths, KeepsTheFirstOfEqualOnes) {
  EXPECT_EQ(Normalised({{5, 'a'}, {0, 'c'}, {5, 'b'}, {0, 'd'}}), "ca");
}

TEST(NormalisePaths, KeepsDifferentTechnologiesOfOneFlag) {
  EXPECT_EQ(Normalised({{11, 'e'}, {10, 'd'}, {5, 'h'}, {0xFFFFFFFF, 'o'}}), "ohde");
}

TEST(NormalisePaths, TakesAnEmptyList) { EXPECT_EQ(Normalised({}), ""); }

TEST(CountBits, CountsSetBits) {
  EXPECT_EQ(CountBits(0), 0u);
  EXPECT_EQ(CountBits(N::MD_HDMI), 1u);
  EXPECT_EQ(CountBits(N::MD_NB | N::MD_DP), 2u);
  EXPECT_EQ(CountBits(0xFFFFFFFF), 32u);
}

}  // namespace
