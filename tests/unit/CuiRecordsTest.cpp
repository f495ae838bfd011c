// The records of the driver by their bytes, and the N-view block that trusts no number of it.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>

#include "Common/MultiMonitor/Intel/CuiNViewBlock.h"
#include "Common/MultiMonitor/Intel/CuiRecords.h"

namespace {

using Words = std::map<uint32_t, uint32_t>;

// The words that are not zero, by offset.
template <typename Record>
Words WordsOf(const Record& record) {
  uint8_t bytes[sizeof(Record)];
  std::memcpy(bytes, &record, sizeof(bytes));
  Words words;
  for (uint32_t at = 0; at < sizeof(bytes); at += 4) {
    uint32_t word = 0;
    for (uint32_t i = 4; i-- > 0;) word = word << 8 | bytes[at + i];
    if (word != 0) words[at] = word;
  }
  return words;
}

TEST(CuiRecords, SingleRecordByBytes) {
  const CuiActiveDevices record = CuiSingleRecord("AB", 0x1234);
  EXPECT_EQ(WordsOf(record),
            (Words{{0, 120}, {4, 'A' | 'B' << 8}, {84, 1}, {92, 1}, {96, 0x1234}}));
}

TEST(CuiRecords, CloneRecordByBytes) {
  const CuiActiveDevices record = CuiCloneRecord("AB", 7, 9);
  EXPECT_EQ(WordsOf(record),
            (Words{{0, 120}, {4, 'A' | 'B' << 8}, {84, 3}, {88, 7}, {92, 2}, {96, 7}, {100, 9}}));
}

TEST(CuiRecords, DeviceNameIsCutAndEndsWithZero) {
  const CuiActiveDevices record = CuiSingleRecord(std::string(200, 'x'), 1);
  EXPECT_EQ(std::string(record.device_name), std::string(79, 'x'));
  EXPECT_EQ(record.operating_mode, 1u);
}

TEST(CuiRecords, NViewEntryByBytes) {
  CuiNViewEntry entry = {};
  entry.uid = 1;
  entry.width = 2;
  entry.height = 3;
  entry.refresh_rate = 4;
  entry.bits_per_pixel = 5;
  entry.left = 6;
  entry.right = 7;
  entry.top = 8;
  entry.bottom = 9;
  entry.orientation = 10;
  entry.scaling = 11;
  EXPECT_EQ(WordsOf(entry), (Words{{0, 1},
                                   {4, 2},
                                   {8, 3},
                                   {12, 4},
                                   {16, 5},
                                   {32, 6},
                                   {36, 7},
                                   {40, 8},
                                   {44, 9},
                                   {56, 10},
                                   {60, 11}}));
}

TEST(CuiNViewBlock, BeginsZeroedWithItsSizeInTheHead) {
  CuiNViewBlock block(16 + 68 * 3);
  ASSERT_TRUE(block.IsValid());
  EXPECT_EQ(block.size(), 220u);
  for (uint32_t i = 0; i < block.size(); ++i) {
    EXPECT_EQ(block.data()[i], i == 8 ? 220 : 0) << i;
  }
}

TEST(CuiNViewBlock, HeadByBytes) {
  CuiNViewBlock block(84);
  block.SetHead({1, 2, 3, 4});
  for (uint32_t i = 0; i < 4; ++i) EXPECT_EQ(block.data()[i * 4], i + 1) << i;
}

TEST(CuiNViewBlock, IsNeverSmallerThanAHeadAndOneEntry) {
  for (const uint32_t size : {0u, 1u, 16u, 83u, 84u}) {
    EXPECT_EQ(CuiNViewBlock(size).size(), 84u) << size;
  }
  EXPECT_EQ(CuiNViewBlock(85).size(), 85u);
}

TEST(CuiNViewBlock, EntriesStandBehindTheHead68BytesApart) {
  CuiNViewBlock block(16 + 68 * 2);
  CuiNViewEntry entry = {};
  entry.uid = 0x11;
  block.SetEntry(0, entry);
  entry.uid = 0x22;
  block.SetEntry(1, entry);
  EXPECT_EQ(block.data()[16], 0x11);
  EXPECT_EQ(block.data()[84], 0x22);
  EXPECT_EQ(block.Entry(1).uid, 0x22u);
}

TEST(CuiNViewBlock, NoEntryIsReadOrWrittenOutside) {
  CuiNViewBlock block(16 + 68 * 2 + 67);
  CuiNViewEntry entry = {};
  entry.uid = 0x33;
  block.SetEntry(2, entry);
  block.SetEntry(0xFFFFFFFF, entry);
  EXPECT_EQ(block.Entry(2).uid, 0u);
  EXPECT_EQ(block.Entry(0xFFFFFFFF).uid, 0u);
  for (uint32_t i = 16; i < block.size(); ++i) EXPECT_EQ(block.data()[i], 0) << i;
}

TEST(CuiNViewBlock, CountsNoMoreEntriesThanFit) {
  CuiNViewBlock block(16 + 68 * 2);
  for (const uint32_t told : {0u, 1u, 2u, 3u, 0xFFFFFFFFu}) {
    block.SetHead({0, 0, block.size(), told});
    EXPECT_EQ(block.EntryCount(), told < 2 ? told : 2) << told;
  }
}

}  // namespace
