// The legacy AMD library's records and tables.
#include "Common/MultiMonitor/Amd/AtiRecords.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

std::vector<uint32_t> WordsOf(const void* record, size_t size) {
  std::vector<uint32_t> words(size / 4);
  std::memcpy(words.data(), record, size);
  return words;
}

TEST(AtiRecords, FreshRecordsHaveTheirSizesAndZeros) {
  const AtiConfigRecord config = MakeAtiConfigRecord();
  std::vector<uint32_t> expected(16);
  expected[0] = 64;
  EXPECT_EQ(WordsOf(&config, sizeof(config)), expected);

  const AtiEdidRecord edid = MakeAtiEdidRecord(256);
  expected.assign(72, 0);
  expected[0] = 288;
  expected[2] = 256;
  EXPECT_EQ(WordsOf(&edid, sizeof(edid)), expected);

  const AtiAdapterConfig adapter = MakeAtiAdapterConfig();
  expected.assign(39, 0);
  expected[0] = 156;
  expected[2] = 72;
  expected[20] = 72;
  EXPECT_EQ(WordsOf(&adapter, sizeof(adapter)), expected);
}

TEST(AtiRecords, KindsHaveTheirFlags) {
  constexpr uint32_t kFlags[] = {0, 0, 0, 0, 0, 0x02, 0x08, 0x08, 0x10, 0x10, 0x20, 0, 0};
  for (uint32_t kind = 0; kind < std::size(kFlags); ++kind) {
    EXPECT_EQ(DisplayOfAtiKind(kind), kFlags[kind]) << kind;
    EXPECT_EQ(DisplayOfAtiDevice(kind, 0), kFlags[kind]) << kind;
  }
  EXPECT_EQ(DisplayOfAtiKind(0xFFFFFFFF), 0u);
}

TEST(AtiRecords, TypesHaveTheirFlags) {
  constexpr uint32_t kFlags[] = {0, 0x01, 0x02, 0, 0x08, 0x02, 0x10, 0, 0x10, 0, 0};
  for (uint32_t type = 0; type < std::size(kFlags); ++type) {
    for (const uint32_t kind : {0u, 4u, 11u, 0xFFFFFFFFu}) {
      EXPECT_EQ(DisplayOfAtiDevice(kind, type), kFlags[type]) << type;
    }
  }
  EXPECT_EQ(DisplayOfAtiDevice(0, 0xFFFFFFFF), 0u);
}

TEST(AtiRecords, KindGoesBeforeType) {
  EXPECT_EQ(DisplayOfAtiDevice(5, 1), 0x02u);
  EXPECT_EQ(DisplayOfAtiDevice(10, 6), 0x20u);
}

TEST(AtiRecords, TargetIsTheFirstTypeThatIsNoPanel) {
  const struct {
    std::vector<uint32_t> types;
    uint32_t target;
  } rows[] = {{{}, 2},
              {{0}, 2},
              {{1}, 2},
              {{0, 1, 0}, 2},
              {{2}, 2},
              {{5}, 2},
              {{4}, 4},
              {{1, 6, 4}, 6},
              {{0, 5, 6}, 2},
              {{8, 5}, 8},
              {{1, 3}, 3},
              {{1, 7, 2}, 7},
              {{0xFFFFFFFF}, 0xFFFFFFFF}};
  for (const auto& row : rows) {
    EXPECT_EQ(AtiTargetType(row.types.data(), row.types.size()), row.target) << &row - rows;
  }
}

TEST(AtiRecords, EntryIsFoundByEitherSlotWhateverTheirNumber) {
  AtiAdapterConfig config = MakeAtiAdapterConfig();
  for (const uint32_t vector : {1u, 2u, 4u}) EXPECT_EQ(FindAtiEntry(config, vector), nullptr);
  config.entries[0].slots[0].display = 1;
  config.entries[0].slots[1].display = 2;
  config.entries[1].slots[0].display = 4;
  config.entries[1].slots[1].display = 1;
  for (const uint32_t count : {0u, 1u, 2u, 3u, 0xFFFFFFFFu}) {
    for (AtiAdapterEntry& entry : config.entries) entry.slot_count = count;
    EXPECT_EQ(FindAtiEntry(config, 1), &config.entries[0]);
    EXPECT_EQ(FindAtiEntry(config, 2), &config.entries[0]);
    EXPECT_EQ(FindAtiEntry(config, 4), &config.entries[1]);
    EXPECT_EQ(FindAtiEntry(config, 8), nullptr);
  }
}

TEST(AtiRecords, IndexIsThePlaceOfTheBit) {
  EXPECT_EQ(AtiIndexOfVector(0), 0u);
  for (uint32_t i = 0; i < 32; ++i) EXPECT_EQ(AtiIndexOfVector(1U << i), i);
  EXPECT_EQ(AtiIndexOfVector(0x60), 5u);
}

}  // namespace
