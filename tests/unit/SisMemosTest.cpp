// What the SiS back-end takes for a display that it knows nothing of.
#include "Common/MultiMonitor/Legacy/SisMemos.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

SisDisplayMemo Memo(uint32_t device, uint32_t width, bool dirty = true) {
  SisDisplayMemo memo;
  memo.dirty = dirty;
  memo.record = {device, width, width + 1, width + 2, width + 3};
  return memo;
}

std::vector<uint32_t> WordsOf(const SisSwitchRecord& record) {
  std::vector<uint32_t> words(5);
  std::memcpy(words.data(), &record, sizeof(record));
  return words;
}

TEST(SisMemos, RecordIsDeviceSizeDepthAndFrequency) {
  EXPECT_EQ(WordsOf({1, 2, 3, 4, 5}), (std::vector<uint32_t>{1, 2, 3, 4, 5}));
  EXPECT_EQ(WordsOf({}), (std::vector<uint32_t>{0, 0, 0, 0, 0}));
  EXPECT_FALSE(SisDisplayMemo().dirty);
}

TEST(SisMemos, KnownMemoStays) {
  SisDisplayMemo memo = Memo(2, 100);
  const SisDisplayMemo other = Memo(8, 200);
  FillSisMemo(&memo, {&other});
  EXPECT_TRUE(memo.dirty);
  EXPECT_EQ(WordsOf(memo.record), (std::vector<uint32_t>{2, 100, 101, 102, 103}));
}

TEST(SisMemos, FirstKnownOneIsTakenButForItsDevice) {
  for (const uint32_t known : {0u, 1u, 2u}) {
    SisDisplayMemo memo = Memo(2, 1, false);
    const SisDisplayMemo others[] = {Memo(8, 100, known == 0), Memo(4, 200, known <= 1),
                                     Memo(1, 300)};
    FillSisMemo(&memo, {&others[0], &others[1], &others[2]});
    const uint32_t width = 100 * (known + 1);
    EXPECT_TRUE(memo.dirty);
    EXPECT_EQ(WordsOf(memo.record),
              (std::vector<uint32_t>{2, width, width + 1, width + 2, width + 3}));
  }
}

TEST(SisMemos, WithoutAKnownOneAUsualSizeIsTaken) {
  SisDisplayMemo memo = Memo(8, 1, false);
  const SisDisplayMemo other = Memo(2, 100, false);
  FillSisMemo(&memo, {&other, &other, &other});
  EXPECT_TRUE(memo.dirty);
  EXPECT_EQ(WordsOf(memo.record), (std::vector<uint32_t>{8, 1280, 800, 16, 60}));
}

}  // namespace
