#include "Common/MultiMonitor/Edid.h"

#include <gtest/gtest.h>

#include <utility>

#include "tests/support/EdidBlock.h"

namespace {

// "loaded", "no block", or the text of what was raised.
std::string Load(const std::vector<uint8_t>& bytes, EDID* edid) {
  const ExactBytes exact(bytes);
  try {
    return edid->Load(exact.data(), exact.size()) != 0 ? "loaded" : "no block";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

std::string Load(const std::vector<uint8_t>& bytes) {
  EDID edid;
  return Load(bytes, &edid);
}

EDID Loaded(const EdidBlock& block) {
  EDID edid;
  EXPECT_EQ(Load(block.bytes(), &edid), "loaded");
  return edid;
}

constexpr char kBadHeader[] = "EDID::ValidateEDIDHeader() function failed";
constexpr char kBadChecksum[] = "EDID::ValidateEDIDChecksum() function failed";

TEST(Edid, TakesAGoodBlock) {
  const EdidBlock block = EdidBlock().PanelTiming().Text(72, 0xFC, "Veld A1\n").Sum();
  const EDID edid = Loaded(block);
  EXPECT_EQ(edid.m_valid, 1);
  EXPECT_EQ(std::vector<uint8_t>(edid.m_raw, edid.m_raw + 128), block.bytes());
}

TEST(Edid, NothingAndTooLittleAreNoBlockAndRaiseNothing) {
  EDID edid;
  edid.m_raw[5] = 0x55;
  EXPECT_EQ(edid.Load(nullptr, 128), 0);
  EXPECT_EQ(edid.Load(edid.m_raw, 0), 0);
  for (const size_t size : {size_t{0}, size_t{1}, size_t{127}}) {
    // Damaged as well: the size is asked first.
    EXPECT_EQ(Load(std::vector<uint8_t>(size, 0xAA), &edid), "no block") << size;
  }
  EXPECT_EQ(edid.m_valid, 0);
  EXPECT_EQ(edid.m_raw[5], 0x55);
}

TEST(Edid, WhatFollowsTheBlockIsLeftOut) {
  for (const size_t size : {size_t{129}, size_t{256}, size_t{4096}}) {
    const EdidBlock block;
    std::vector<uint8_t> longer = block.bytes();
    longer.resize(size, 0x77);
    EDID edid;
    EXPECT_EQ(Load(longer, &edid), "loaded") << size;
    EXPECT_EQ(std::vector<uint8_t>(edid.m_raw, edid.m_raw + 128), block.bytes()) << size;
  }
}

TEST(Edid, EachByteOfTheHeaderCounts) {
  for (size_t i = 0; i < 8; ++i) {
    std::vector<uint8_t> bytes = EdidBlock().bytes();
    bytes[i] ^= 0x01;
    EXPECT_EQ(Load(bytes), kBadHeader) << i;
    // With a checksum that is right again.
    EXPECT_EQ(Load(EdidBlock().Put(i, {bytes[i]}).Sum().bytes()), kBadHeader) << i;
  }
}

TEST(Edid, AnotherVersionIsABadHeader) {
  for (const uint8_t version : {uint8_t{0}, uint8_t{2}, uint8_t{255}}) {
    EXPECT_EQ(Load(EdidBlock().Put(18, {version}).Sum().bytes()), kBadHeader) << int{version};
  }
}

TEST(Edid, TheRevisionDoesNotMatter) {
  EXPECT_EQ(Load(EdidBlock().Put(19, {0xFF}).Sum().bytes()), "loaded");
}

TEST(Edid, EachByteCountsForTheChecksum) {
  for (size_t i = 8; i < 128; ++i) {
    if (i == 18) continue;
    std::vector<uint8_t> bytes = EdidBlock().bytes();
    ++bytes[i];
    EXPECT_EQ(Load(bytes), kBadChecksum) << i;
  }
}

TEST(Edid, AChecksumOfSeveralTimes256IsRight) {
  // All data bytes at their highest: the sum goes past 256 a hundred times.
  EdidBlock block;
  block.Put(20, std::vector<uint8_t>(107, 0xFF)).Sum();
  EXPECT_EQ(Load(block.bytes()), "loaded");
}

TEST(Edid, BadHeaderAndBadChecksumReportTheHeader) {
  EXPECT_EQ(Load(EdidBlock().Put(0, {0x01}).bytes()), kBadHeader);
  EXPECT_EQ(Load(EdidBlock().Put(18, {2}).bytes()), kBadHeader);
}

TEST(Edid, AllZerosAndAllOnesAreBadHeaders) {
  EXPECT_EQ(Load(std::vector<uint8_t>(128, 0x00)), kBadHeader);  // its checksum would be right
  EXPECT_EQ(Load(std::vector<uint8_t>(128, 0xFF)), kBadHeader);
}

TEST(Edid, ADamagedBlockLeavesTheRecord) {
  EDID edid;
  EXPECT_EQ(Load(EdidBlock().Put(20, {1, 2, 3}).bytes(), &edid), kBadChecksum);
  EXPECT_EQ(edid.m_valid, 0);
  EXPECT_EQ(std::vector<uint8_t>(edid.m_raw, edid.m_raw + 128), std::vector<uint8_t>(128, 0));
}

TEST(Edid, TheTwoFailuresAreTwoTypes) {
  EDID edid;
  EXPECT_THROW(edid.Load(EdidBlock().Put(0, {1}).bytes().data(), 128), invalid_edid_header);
  EXPECT_THROW(edid.Load(EdidBlock().Spoil().bytes().data(), 128), invalid_edid_checksum);
}

// --- The timing.

// Width, height, refresh; "none" without a timing.
std::string TimingOf(const EdidBlock& block) {
  EdidTiming timing;
  timing.width = 7;
  timing.height = 8;
  timing.refresh = 9;
  if (Loaded(block).GetDetailedTiming(&timing) == 0) {
    EXPECT_EQ(timing.width, 7);
    EXPECT_EQ(timing.height, 8);
    EXPECT_EQ(timing.refresh, 9);
    return "none";
  }
  return std::to_string(timing.width) + "x" + std::to_string(timing.height) + "@" +
         std::to_string(timing.refresh);
}

std::string TimingOf(const std::vector<uint8_t>& descriptor) {
  return TimingOf(EdidBlock().Put(54, descriptor).Sum());
}

TEST(EdidTiming, IsReadFromTheFirstDescriptor) {
  EXPECT_EQ(TimingOf(EdidBlock().PanelTiming().Sum()), "1366x768@59");
  // 1920x1080 at 148.50 MHz over 2200 by 1125.
  EXPECT_EQ(TimingOf({0x02, 0x3A, 0x80, 0x18, 0x71, 0x38, 0x2D, 0x40}), "1920x1080@60");
}

TEST(EdidTiming, TwelveBitsOfEachNumberAreUsed) {
  // Totals of 4095 + 4095 both ways.
  EXPECT_EQ(TimingOf({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), "4095x4095@9");
  // The upper halves alone: 0xF00 and blanks of 0x000.
  EXPECT_EQ(TimingOf({0xFF, 0xFF, 0x00, 0x00, 0xF0, 0x00, 0x00, 0xF0}), "3840x3840@44");
  // The blanks' upper halves do not reach the size: totals of 0xF01 by 0xF01.
  EXPECT_EQ(TimingOf({0xFF, 0xFF, 0x01, 0x00, 0x0F, 0x01, 0x00, 0x0F}), "1x1@44");
}

TEST(EdidTiming, ALowByteOfZeroIsNoTiming) {
  EXPECT_EQ(TimingOf({0x00, 0x3A, 0x80, 0x18, 0x71, 0x38, 0x2D, 0x40}), "none");
  EXPECT_EQ(TimingOf({0x00, 0x00, 0x00, 0xFC}), "none");
}

TEST(EdidTiming, TheRefreshRateIsTruncated) {
  // 100 by 100 pixels: one unit of the clock is 1 Hz, over 101 a little less.
  EXPECT_EQ(TimingOf({60, 0, 100, 0, 0, 100, 0, 0}), "100x100@60");
  EXPECT_EQ(TimingOf({60, 0, 100, 1, 0, 100, 0, 0}), "100x100@59");
}

TEST(EdidTiming, TheRefreshRateKeepsItsLowEightBits) {
  EXPECT_EQ(TimingOf({255, 0, 100, 0, 0, 100, 0, 0}), "100x100@255");
  EXPECT_EQ(TimingOf({0x01, 0x01, 100, 0, 0, 100, 0, 0}), "100x100@1");
  EXPECT_EQ(TimingOf({0x2C, 0x01, 100, 0, 0, 100, 0, 0}), "100x100@44");
  // The most there can be: 655.35 MHz over one pixel are 655350000 = 0x270FD8F0 Hz.
  EXPECT_EQ(TimingOf({0xFF, 0xFF, 1, 0, 0, 1, 0, 0}), "1x1@240");
}

TEST(EdidTiming, NoPixelsAtAllAreZeroHertz) {
  EXPECT_EQ(TimingOf({0xFF, 0xFF, 0, 0, 0, 0, 0, 0}), "0x0@0");
  EXPECT_EQ(TimingOf({0xFF, 0xFF, 100, 0, 0, 0, 0, 0}), "100x0@0");
  EXPECT_EQ(TimingOf({0xFF, 0xFF, 0, 0, 0, 100, 0, 0}), "0x100@0");
}

TEST(EdidTiming, TheBitThatCallsItPreferredIsReadApart) {
  EXPECT_TRUE(Loaded(EdidBlock().PanelTiming(true).Sum()).HasPreferredTiming());
  const EdidBlock unflagged = EdidBlock().PanelTiming(false).Sum();
  EXPECT_FALSE(Loaded(unflagged).HasPreferredTiming());
  EXPECT_EQ(TimingOf(unflagged), "1366x768@59");
  EXPECT_FALSE(Loaded(EdidBlock().Put(24, {0xFD}).Sum()).HasPreferredTiming());
}

TEST(EdidTiming, AnEmptyRecordHasNone) {
  EdidTiming timing;
  EXPECT_EQ(EDID().GetDetailedTiming(&timing), 0);
  EXPECT_EQ(EDID().GetDetailedTiming(nullptr), 0);
  EXPECT_FALSE(EDID().HasPreferredTiming());
}

// --- Texts.

struct TextAnswer {
  int32_t result = 0;
  std::string text;  // every byte that was written
  uint32_t length = 0;
};

// With the field in a block of its own, and room for `capacity` bytes.
TextAnswer TextOf(const std::string& field, uint32_t capacity) {
  std::vector<uint8_t> descriptor(18, 0);
  descriptor[3] = 0xFC;
  std::memcpy(&descriptor[5], field.data(), field.size());
  const ExactBytes exact(descriptor);
  const std::unique_ptr<char[]> room(new char[capacity + 1]);
  std::memset(room.get(), '#', capacity);
  TextAnswer answer;
  answer.length = capacity;
  answer.result = EDID::GetDescriptorText(exact.data(), room.get(), &answer.length);
  answer.text.assign(room.get(), room.get() + capacity);
  return answer;
}

TEST(EdidText, EndsAtItsLineFeed) {
  const TextAnswer answer = TextOf("Veld A1\nrest", 13);
  EXPECT_EQ(answer.result, 1);
  EXPECT_EQ(answer.length, 8u);
  EXPECT_EQ(answer.text, std::string("Veld A1\0#####", 13));
}

TEST(EdidText, TwelveCharactersAreTheMost) {
  const TextAnswer answer = TextOf("123456789012\n", 13);
  EXPECT_EQ(answer.result, 1);
  EXPECT_EQ(answer.length, 13u);
  EXPECT_EQ(answer.text, std::string("123456789012\0", 13));
}

TEST(EdidText, ThirteenCharactersAreNotRead) {
  const TextAnswer answer = TextOf("1234567890123", 13);
  EXPECT_EQ(answer.result, 0);
  EXPECT_EQ(answer.length, 13u);
  EXPECT_EQ(answer.text, std::string(13, '#'));
}

TEST(EdidText, WithoutALineFeedThereIsNone) {
  EXPECT_EQ(TextOf("short", 13).result, 0);  // ended by a zero alone
  EXPECT_EQ(TextOf("", 13).result, 0);
}

TEST(EdidText, BlanksInFrontOfTheLineFeedStay) {
  EXPECT_EQ(TextOf("A1  \n       ", 13).text.substr(0, 5), std::string("A1  \0", 5));
}

TEST(EdidText, MayBeEmpty) {
  const TextAnswer answer = TextOf("\nVeld", 13);
  EXPECT_EQ(answer.result, 1);
  EXPECT_EQ(answer.length, 1u);
  EXPECT_EQ(answer.text.substr(0, 2), std::string("\0#", 2));
}

TEST(EdidText, NeedsRoomForItsZero) {
  const TextAnswer fits = TextOf("Veld\n", 5);
  EXPECT_EQ(fits.result, 1);
  EXPECT_EQ(fits.length, 5u);
  EXPECT_EQ(fits.text, std::string("Veld\0", 5));
  const TextAnswer tight = TextOf("Veld\n", 4);
  EXPECT_EQ(tight.result, 0);
  EXPECT_EQ(tight.length, 4u);
  EXPECT_EQ(tight.text, "####");
  EXPECT_EQ(TextOf("\n", 0).result, 0);
}

TEST(EdidText, ControlCharactersAreHandedOn) {
  EXPECT_EQ(TextOf("a\tb\r\x01\xFF,\n", 13).text.substr(0, 8), std::string("a\tb\r\x01\xFF,\0", 8));
}

TEST(EdidText, MissingPointersGiveNothing) {
  uint32_t length = 13;
  char text[13];
  const uint8_t descriptor[18] = {};
  EXPECT_EQ(EDID::GetDescriptorText(nullptr, text, &length), 0);
  EXPECT_EQ(EDID::GetDescriptorText(descriptor, nullptr, &length), 0);
  EXPECT_EQ(EDID::GetDescriptorText(descriptor, text, nullptr), 0);
}

// --- The name.

std::string NameOf(EdidBlock block) {
  std::string name = "none";
  const bool found = Loaded(block.Sum()).FindName(&name);
  EXPECT_EQ(found, name != "none");
  return name;
}

TEST(EdidName, IsFoundInEachOfTheFourDescriptors) {
  for (const size_t at : {size_t{54}, size_t{72}, size_t{90}, size_t{108}}) {
    EXPECT_EQ(NameOf(EdidBlock().Text(at, 0xFC, "Veld A1\n")), "Veld A1") << at;
    EXPECT_EQ(NameOf(EdidBlock().Text(at, 0xFE, "Veld A2\n")), "Veld A2") << at;
  }
}

TEST(EdidName, TheFirstOneWins) {
  EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFC, "first\n").Text(90, 0xFC, "second\n")), "first");
}

TEST(EdidName, AFreeTextAheadOfTheNameWins) {
  EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFE, "text\n").Text(90, 0xFC, "name\n")), "text");
  EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFC, "name\n").Text(90, 0xFE, "text\n")), "name");
}

TEST(EdidName, OneThatCannotBeReadIsPassedOver) {
  EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFC, "1234567890123").Text(90, 0xFC, "name\n")), "name");
  EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFC, "1234567890123").Text(108, 0xFE, "text\n")), "text");
  EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFC, "1234567890123")), "none");
}

TEST(EdidName, OtherTagsAreNoNames) {
  for (const int tag : {0x00, 0x10, 0xFA, 0xFB, 0xFD, 0xFF}) {
    EXPECT_EQ(NameOf(EdidBlock().Text(72, static_cast<uint8_t>(tag), "text\n")), "none") << tag;
  }
}

TEST(EdidName, EachOfTheThreeBytesInFrontMustBeZero) {
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFC, "name\n").Put(72 + i, {1})), "none") << i;
  }
}

TEST(EdidName, TheByteBehindTheTagDoesNotMatter) {
  EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFC, "name\n").Put(76, {0xFF})), "name");
}

TEST(EdidName, KeepsBlanksCommasAndControlCharacters) {
  EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFC, " a,b \n")), " a,b ");
  EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFC, "a\tb\r\x01\xFF\n")), "a\tb\r\x01\xFF");
}

TEST(EdidName, EndsAtAZero) {
  EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFC, std::string("ab\0cd\n", 6))), "ab");
}

TEST(EdidName, AnEmptyOneIsFoundAndEmpty) {
  EXPECT_EQ(NameOf(EdidBlock().Text(72, 0xFC, "\n").Text(90, 0xFC, "second\n")), "");
}

TEST(EdidName, TheLastDescriptorEndsBeforeTheChecksum) {
  // 13 characters up to byte 125; byte 126 is a line feed and belongs to no descriptor.
  EXPECT_EQ(NameOf(EdidBlock().Text(108, 0xFC, "1234567890123").Put(126, {10})), "none");
}

TEST(EdidName, AnEmptyRecordHasNone) {
  std::string name = "unchanged";
  EXPECT_FALSE(EDID().FindName(&name));
  EXPECT_EQ(name, "unchanged");
}

}  // namespace
