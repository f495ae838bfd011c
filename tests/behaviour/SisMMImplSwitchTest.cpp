// The SiS back-end's switches, and the file of what it knows of its displays.
#include <gtest/gtest.h>

#include "tests/behaviour/LegacyHost.h"

namespace {

constexpr uint32_t kSingle = IMMonitor::DM_SINGLE;
constexpr uint32_t kClone = IMMonitor::DM_CLONE;
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kTv = IMMonitor::MD_TV;
constexpr uint32_t kOthers = IMMonitor::MD_DVI | IMMonitor::MD_HDMI | IMMonitor::MD_DP;

constexpr char kNothing[] = "[0 0x0x0@0]";

// What SwitchMode was given, as the journal has it.
std::string Sent(uint32_t kind, const std::string& first, const std::string& second,
                 int32_t result = sim::kSisSwitched) {
  return "SwitchMode(kind=" + std::to_string(kind) + " " + first + " " + second +
         ")=" + std::to_string(result) + "\n";
}

// --- Which display is sent, and how.

TEST(SisSwitch, FirstSwitchToThePanelAsksForAUsualSizeAndRemembersIt) {
  SisHost host("xp sis: internal 1280x800, crt 1280x1024 active");
  EXPECT_EQ(host.Switch(kSingle, kNb), Sent(2, "[2 1280x800x16@60]", kNothing) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
  host.End();
  EXPECT_EQ(host.Bytes(), "[Single Mode]\r\n" + SisKeys("LCD", 1280, 800, 16, 60));
}

TEST(SisSwitch, SingleTakesThePanelBeforeAnyOther) {
  SisHost host;
  for (const uint32_t more : {kCrt, kTv, kCrt | kTv, kOthers, kCrt | kTv | kOthers}) {
    EXPECT_EQ(host.Switch(kSingle, kNb | more), Sent(2, "[2 1280x800x16@60]", kNothing) + "1");
  }
}

TEST(SisSwitch, SingleSendsATelevisionAsCrt) {
  SisHost host("xp sis: internal 1280x800 active, crt 1280x1024, tv 1280x1024");
  for (const uint32_t displays : {kCrt, kTv, kCrt | kTv, kTv | kOthers}) {
    EXPECT_EQ(host.Switch(kSingle, displays), Sent(2, "[8 1280x800x16@60]", kNothing) + "1");
    EXPECT_EQ(host.machine.Topology(), "single crt");
  }
}

TEST(SisSwitch, CloneSendsThePanelAndCrtBeforeTelevision) {
  SisHost host("xp sis: internal 1280x800 active, crt 1280x1024, tv 1280x1024");
  const std::string panel = "[2 1280x800x16@60]";
  for (const uint32_t displays : {kCrt, kNb | kCrt, kCrt | kTv, kNb | kCrt | kTv | kOthers}) {
    EXPECT_EQ(host.Switch(kClone, displays), Sent(1, panel, "[8 1280x800x16@60]") + "1");
    EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
  }
  for (const uint32_t displays : {kTv, kNb | kTv, kTv | kOthers}) {
    EXPECT_EQ(host.Switch(kClone, displays), Sent(1, panel, "[1 1280x800x16@60]") + "1");
    EXPECT_EQ(host.machine.Topology(), "clone internal+tv");
  }
}

TEST(SisSwitch, CloneWithoutASecondDisplayFails) {
  SisHost host;
  for (const uint32_t displays : {kNb, kNb | kOthers, kOthers, 0x80000000u}) {
    EXPECT_EQ(host.Switch(kClone, displays), "0") << displays;
  }
}

// The panel's size is settled before the second display is looked for.
TEST(SisSwitch, CloneThatComesToNothingLeavesThePanelKnown) {
  SisHost host;
  EXPECT_EQ(host.Switch(kClone, kNb), "0");
  EXPECT_EQ(host.Kept(), "[Clone Mode]\r\n" + SisKeys("LCD", 1280, 800, 16, 60));
}

TEST(SisSwitch, WhatCannotBeSwitchedSendsNothingAndLearnsNothing) {
  SisHost host;
  EXPECT_EQ(host.Switch(0, kNb), "0");
  EXPECT_EQ(host.Switch(kSingle, 0), "0");
  EXPECT_EQ(host.Switch(kClone, 0), "0");
  EXPECT_EQ(host.Switch(0, 0), "0");
  EXPECT_EQ(host.Switch(kSingle, kOthers), "0");
  for (const uint32_t mode : {3u, 4u, 8u, 16u, 32u, 64u, 128u, 256u, 512u, 1024u, 0xFFFFFFFFu}) {
    EXPECT_EQ(host.Switch(mode, kNb | kCrt), "0") << mode;
  }
  EXPECT_EQ(host.Kept(), "");
}

TEST(SisSwitch, ResultIsWhetherTheLibraryAnsweredAnythingButZero) {
  for (const uint32_t mode : {kSingle, kClone}) {
    SisHost host;
    host.sis();
    host.machine.Fail("SwitchMode", 1);
    host.machine.Fail("SwitchMode", 2, 0xFFFFFFFF);
    host.machine.Fail("SwitchMode", 3, 1);
    EXPECT_EQ(host.sis().SetNewDisplayMode(mode, kCrt), 0) << mode;
    EXPECT_EQ(host.sis().SetNewDisplayMode(mode, kCrt), 1) << mode;
    EXPECT_EQ(host.sis().SetNewDisplayMode(mode, kCrt), 1) << mode;
  }
  SisHost panel;
  panel.sis();
  panel.machine.Fail("SwitchMode", 1);
  EXPECT_EQ(panel.sis().SetNewDisplayMode(kSingle, kNb), 0);
}

TEST(SisSwitch, LibraryThatWritesIntoItsRecordsChangesNoMemo) {
  SisHost host;
  // It gets the address of what the library under test has, and scribbles there.
  using Records = int32_t(WINAPI*)(uint32_t, uint32_t*, uint32_t*);
  const Records scribble = [](uint32_t, uint32_t* first, uint32_t* second) -> int32_t {
    for (size_t i = 0; i < 5; ++i) first[i] = second[i] = 77;
    return 1;
  };
  for (sim::Entry& entry : host.machine.state().invented.at(sim::kSisLibrary).entries) {
    if (std::string(entry.name) == "SwitchMode") entry.function = sim::Erase(scribble);
  }
  for (const uint32_t displays : {kNb, kCrt}) {
    EXPECT_EQ(host.sis().SetNewDisplayMode(kSingle, displays), 1);
    EXPECT_EQ(host.sis().SetNewDisplayMode(kClone, displays | kCrt), 1);
  }
  EXPECT_EQ(host.Kept(), "[Single Mode]\r\n" + SisKeys("LCD", 1280, 800, 16, 60) +
                             SisKeys("CRT", 1280, 800, 16, 60) + "[Clone Mode]\r\n" +
                             SisKeys("LCD", 1280, 800, 16, 60));
}

// --- The rules by which an unknown display gets a size: the first known one of these.

struct FillRule {
  const char* name;
  uint32_t mode;
  uint32_t displays;
  uint32_t own;        // the memo
  uint32_t others[3];  // in their order
};
constexpr FillRule kFillRules[] = {
    {"single panel", kSingle, kNb, kSingleLcd, {kSingleCrt, kCloneLcd, kCloneCrt}},
    {"single CRT", kSingle, kCrt, kSingleCrt, {kSingleLcd, kCloneCrt, kCloneLcd}},
    {"single television", kSingle, kTv, kSingleCrt, {kSingleLcd, kCloneCrt, kCloneLcd}},
    {"cloned panel", kClone, kCrt, kCloneLcd, {kCloneCrt, kSingleLcd, kSingleCrt}},
};

std::string RecordFor(const FillRule& rule, uint32_t known, uint32_t device) {
  if ((known & rule.own) != 0) return NumberedSisRecord(device, rule.own);
  for (const uint32_t other : rule.others) {
    if ((known & other) != 0) return NumberedSisRecord(device, other);
  }
  return "[" + std::to_string(device) + " 1280x800x16@60]";
}

TEST(SisSwitch, UnknownDisplayTakesTheFirstKnownSize) {
  for (const FillRule& rule : kFillRules) {
    for (uint32_t known = 0; known <= kAllSisMemos; ++known) {
      SisHost host;
      host.Put(SisFile(known));
      const bool clone = rule.mode == kClone;
      const bool panel = clone || rule.displays == kNb;
      const std::string first = RecordFor(rule, known, panel ? 2 : 8);
      const std::string second = clone ? RecordFor(rule, known, 8) : kNothing;
      const std::string sent = host.Switch(rule.mode, rule.displays);
      // Most of these sizes are none of the displays'; what was sent is all that counts here.
      EXPECT_EQ(sent.substr(0, sent.rfind(")=")),
                "SwitchMode(kind=" + std::to_string(clone ? 1 : 2) + " " + first + " " + second)
          << rule.name << " " << known;
    }
  }
}

TEST(SisSwitch, TakenSizeIsTheDisplaysOwnFromThenOn) {
  for (const FillRule& rule : kFillRules) {
    for (uint32_t known = 0; known <= kAllSisMemos; ++known) {
      if ((known & rule.own) != 0) continue;
      SisHost host;
      host.Put(SisFile(known));
      host.Switch(rule.mode, rule.displays);
      const std::string kept = host.Kept();
      // The same as a file that knew it, but for the numbers of the one memo.
      const bool lcd = rule.own == kSingleLcd || rule.own == kCloneLcd;
      const std::string display = lcd ? "LCD" : "CRT";
      std::string expected = SisFile(known | rule.own);
      const std::string own = NumberedSisKeys(display, rule.own);
      const uint32_t source = (known & rule.others[0]) != 0   ? rule.others[0]
                              : (known & rule.others[1]) != 0 ? rule.others[1]
                                                              : rule.others[2];
      expected.replace(
          expected.find(own), own.size(),
          known == 0 ? SisKeys(display, 1280, 800, 16, 60) : NumberedSisKeys(display, source));
      EXPECT_EQ(kept, expected) << rule.name << " " << known;
    }
  }
}

TEST(SisSwitch, KnownSizesAreSentAndShown) {
  SisHost host;
  host.Put("[Clone Mode]\r\n" + SisKeys("LCD", 1024, 768, 32, 60));
  EXPECT_EQ(host.Switch(kSingle, kNb), Sent(2, "[2 1024x768x32@60]", kNothing) + "1");
  EXPECT_EQ(host.Switch(kClone, kCrt), Sent(1, "[2 1024x768x32@60]", "[8 1024x768x32@60]") + "1");
  EXPECT_EQ(host.model().sources[0].mode, (sim::DisplayMode{1024, 768, 32, 60}));
}

TEST(SisSwitch, RefusedSizeIsKeptAllTheSame) {
  SisHost host("xp sis: internal 1024x600 active");
  EXPECT_EQ(host.Switch(kSingle, kNb), Sent(2, "[2 1280x800x16@60]", kNothing, 0) + "0");
  EXPECT_EQ(host.Kept(), "[Single Mode]\r\n" + SisKeys("LCD", 1280, 800, 16, 60));
}

// --- Reading.

TEST(SisMemoFile, LiesBesideTheHostsExecutable) {
  SisHost host;
  EXPECT_EQ(host.box().FindMemoFile(), host.NarrowPath());
}

TEST(SisMemoFile, UnknownFolderIsNoFile) {
  SisHost host;
  host.Put(SisFile(kAllSisMemos));
  host.box();
  host.machine.Fail("GetModuleFileNameA", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.box().FindMemoFile(), "");
  const uint32_t reads = host.machine.Calls("GetPrivateProfileIntA");
  EXPECT_EQ(host.Switch(kSingle, kNb), Sent(2, "[2 1280x800x16@60]", kNothing) + "1");
  EXPECT_EQ(host.machine.Calls("GetPrivateProfileIntA"), reads);
  const uint32_t writes = host.machine.Calls("WritePrivateProfileStringA");
  host.End();
  EXPECT_EQ(host.machine.Calls("WritePrivateProfileStringA"), writes);
  EXPECT_EQ(host.Bytes(), SisFile(kAllSisMemos));
}

TEST(SisMemoFile, FolderThatIsTooLongIsNoFile) {
  SisHost host;
  host.box();
  sim::HostProcess& process = host.machine.state().host;
  const std::wstring folder = process.folder;
  process.folder = L"C:\\" + std::wstring(300, L'a');
  EXPECT_EQ(host.box().FindMemoFile(), "");
  process.folder = folder;
  EXPECT_EQ(host.box().FindMemoFile(), host.NarrowPath());
}

TEST(SisMemoFile, OnlyKnownDisplaysAreReadWhole) {
  const struct {
    uint32_t known;
    uint32_t reads;
  } rows[] = {{0, 4}, {kSingleLcd, 8}, {kCloneLcd | kCloneCrt, 12}, {kAllSisMemos, 20}};
  for (const auto& row : rows) {
    SisHost host;
    host.Put(SisFile(row.known));
    host.box();
    const uint32_t before = host.machine.Calls("GetPrivateProfileIntA");
    host.bare();
    EXPECT_EQ(host.machine.Calls("GetPrivateProfileIntA") - before, row.reads) << row.known;
  }
}

TEST(SisMemoFile, MissingValuesAreZeroAndAnyDirtyNumberButZeroWillDo) {
  SisHost host;
  host.Put(
      "[Single Mode]\r\nLCD Dirty=-7\r\nLCD Height=768\r\nCRT Dirty=0\r\nCRT Width=640\r\n"
      "[Clone Mode]\r\nCRT Dirty=2\r\nCRT Frequency=75\r\n");
  EXPECT_EQ(host.Kept(), "[Single Mode]\r\n" + SisKeys("LCD", 0, 768, 0, 0) + "[Clone Mode]\r\n" +
                             SisKeys("CRT", 0, 0, 0, 75));
}

// One read after the other is made to give 0: what is missing then tells what was read.
TEST(SisMemoFile, ReadsTheDirtyKeyAndThenTheValuesOfEachMemoInOrder) {
  constexpr uint32_t kOrder[] = {kSingleLcd, kSingleCrt, kCloneLcd, kCloneCrt};
  constexpr const char* kValues[] = {" Width=", " Height=", " Color Depth=", " Frequency="};
  for (uint32_t read = 0; read < 20; ++read) {
    SisHost host;
    host.Put(SisFile(kAllSisMemos));
    host.box();
    host.machine.Fail("GetPrivateProfileIntA", read + 1);
    const uint32_t memo = kOrder[read / 5];
    std::string expected = SisFile(kAllSisMemos & ~(read % 5 == 0 ? memo : 0));
    if (read % 5 != 0) {
      const bool lcd = memo == kSingleLcd || memo == kCloneLcd;
      const std::string key = (lcd ? "LCD" : "CRT") + std::string(kValues[read % 5 - 1]);
      const std::string value = key + std::to_string(100 * memo + read % 5);
      expected.replace(expected.find(value), value.size(), key + "0");
    }
    EXPECT_EQ(host.Kept(), expected) << read;
  }
}

TEST(SisMemoFile, FileThatIsNoneIsNoMemo) {
  SisHost host;
  host.Put("\xFF\xFE\x01 no profile file at all \r\n[[[");
  EXPECT_EQ(host.Switch(kSingle, kCrt), Sent(2, "[8 1280x800x16@60]", kNothing) + "1");
}

// --- Writing.

TEST(SisMemoFile, KnownMemosAreWrittenInTheOrderOfReading) {
  SisHost host;
  host.Put(SisFile(kAllSisMemos));
  host.sis();
  host.machine.state().invented.at(sim::kSisLibrary).on_unload = [] { sim::JournalLine("gone"); };
  host.machine.JournalReads(true);
  host.Forget();
  host.End();
  std::string expected;
  for (const uint32_t memo : {kSingleLcd, kSingleCrt, kCloneLcd, kCloneCrt}) {
    const std::string section = memo <= kSingleCrt ? "Single Mode" : "Clone Mode";
    const std::string display = memo == kSingleLcd || memo == kCloneLcd ? "LCD" : "CRT";
    const auto line = [&](const char* key, uint32_t value) {
      expected += "WritePrivateProfileStringA([" + section + "] " + display + " " + key + "=" +
                  std::to_string(value) + ")=1\n";
    };
    line("Width", 100 * memo + 1);
    line("Height", 100 * memo + 2);
    line("Color Depth", 100 * memo + 3);
    line("Frequency", 100 * memo + 4);
    line("Dirty", 1);
  }
  EXPECT_EQ(host.machine.TakeJournal(), expected + "gone\n");
  EXPECT_EQ(host.Bytes(), SisFile(kAllSisMemos));
}

TEST(SisMemoFile, WhatWasAssumedIsReadAsKnownByTheNextObject) {
  SisHost host("xp sis: internal 1280x800 active, crt 1280x1024, tv 1280x1024");
  EXPECT_EQ(host.Switch(kSingle, kTv), Sent(2, "[8 1280x800x16@60]", kNothing) + "1");
  host.End();
  EXPECT_EQ(host.Bytes(), "[Single Mode]\r\n" + SisKeys("CRT", 1280, 800, 16, 60));
  // Somebody puts numbers of their own there.
  host.Put("[Single Mode]\r\n" + SisKeys("CRT", 800, 600, 32, 60));
  EXPECT_EQ(host.Switch(kSingle, kNb), Sent(2, "[2 800x600x32@60]", kNothing) + "1");
  host.End();
  EXPECT_EQ(host.Bytes(), "[Single Mode]\r\n" + SisKeys("CRT", 800, 600, 32, 60) +
                              SisKeys("LCD", 800, 600, 32, 60));
}

// The mode that Windows shows is never learnt.
TEST(SisMemoFile, SizeOfTheDisplaysIsNotLookedAt) {
  SisHost host("xp sis: internal 1024x768 active, crt 1280x1024");
  EXPECT_EQ(host.Switch(kSingle, kCrt), Sent(2, "[8 1280x800x16@60]", kNothing) + "1");
  host.model().sources[0].mode = {640, 480, 32, 60};
  EXPECT_EQ(host.Kept(), "[Single Mode]\r\n" + SisKeys("CRT", 1280, 800, 16, 60));
}

TEST(SisMemoFile, ObjectThatNeverWasReadyWritesNothing) {
  SisHost host;
  sim::RemoveSisEntry(host.machine, "NoDeviceTest");
  host.Put(SisFile(kSingleLcd));
  EXPECT_EQ(host.bare().Initial(), 0);
  EXPECT_EQ(host.bare().SetNewDisplayMode(kSingle, kCrt), 0);  // 101x102 is no size of the CRT's
  const uint32_t writes = host.machine.Calls("WritePrivateProfileStringA");
  host.End();
  EXPECT_EQ(host.machine.Calls("WritePrivateProfileStringA"), writes);
  EXPECT_EQ(host.Bytes(), SisFile(kSingleLcd));
}

TEST(SisMemoFile, NothingKnownMakesNoFile) {
  SisHost host;
  EXPECT_EQ(host.Connected(), "0x3 (2)");
  host.End();
  EXPECT_EQ(SizeOf(host.Path()), -1);
}

TEST(SisMemoFile, OtherLinesOfTheFileStay) {
  SisHost host;
  host.Put("[Other]\r\nKey=1\r\n[Single Mode]\r\nColour=blue\r\nCRT Width=5\r\n");
  host.Switch(kSingle, kNb);
  host.End();
  EXPECT_EQ(host.Bytes(), "[Other]\r\nKey=1\r\n[Single Mode]\r\nColour=blue\r\nCRT Width=5\r\n" +
                              SisKeys("LCD", 1280, 800, 16, 60));
}

TEST(SisMemoFile, RefusedWritesAreIgnored) {
  SisHost host;
  host.Switch(kSingle, kNb);
  const uint32_t writes = host.machine.Calls("WritePrivateProfileStringA");
  host.machine.Fail("WritePrivateProfileStringA", 1, 0, sim::Machine::Repeat::kFromThenOn);
  host.End();
  EXPECT_EQ(host.machine.Calls("WritePrivateProfileStringA"), writes + 5);
  EXPECT_EQ(host.Bytes(), "");
  EXPECT_EQ(host.Modules(), 0u);
}

TEST(SisMemoFile, NumbersAreUnsignedAndDecimal) {
  SisHost host;
  const std::string bytes = "[Clone Mode]\r\n" + SisKeys("LCD", 0xFFFFFFFF, 0x80000000, 0, 1);
  host.Put(bytes);
  EXPECT_EQ(host.Kept(), bytes);
}

TEST(SisMemoFile, WithoutAPathOrASectionThereIsNothing) {
  SisHost host;
  const LegacyBox& box = host.box();
  const std::string path = host.NarrowPath();
  host.Put(SisFile(kSingleLcd));
  const uint32_t reads = host.machine.Calls("GetPrivateProfileIntA");
  const uint32_t writes = host.machine.Calls("WritePrivateProfileStringA");
  SisDisplayMemo memo;
  memo.record.device = 2;
  box.ReadMemo("", "Single Mode", false, &memo);
  box.ReadMemo(path, "", false, &memo);
  EXPECT_EQ(host.machine.Calls("GetPrivateProfileIntA"), reads);
  EXPECT_FALSE(memo.dirty);
  box.ReadMemo(path, "Single Mode", false, &memo);
  EXPECT_TRUE(memo.dirty);
  EXPECT_EQ(memo.record.device, 2u);
  EXPECT_EQ(memo.record.frequency, 104u);
  box.WriteMemo("", "Single Mode", true, memo);
  box.WriteMemo(path, "", true, memo);
  EXPECT_EQ(host.machine.Calls("WritePrivateProfileStringA"), writes);
  box.WriteMemo(path, "Single Mode", true, memo);
  EXPECT_EQ(host.Bytes(), SisFile(kSingleLcd) + SisKeys("CRT", 101, 102, 103, 104));
}

}  // namespace
