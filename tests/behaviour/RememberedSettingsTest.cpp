// What Ostrel.ini holds, byte for byte, and what is read out of it.
#include <map>
#include <string>
#include <vector>

#include "sim/EdidMaker.h"
#include "tests/behaviour/PolicyTest.h"

namespace {

using settings_file::Bytes;
using settings_file::Five;
using settings_file::Put;
using settings_file::Section;

DEVMODEA Settings(uint32_t width, uint32_t height, uint32_t bits, uint32_t frequency,
                  uint32_t orientation) {
  DEVMODEA dm = {};
  dm.dmPelsWidth = width;
  dm.dmPelsHeight = height;
  dm.dmBitsPerPel = bits;
  dm.dmDisplayFrequency = frequency;
  dm.dmDisplayOrientation = orientation;
  return dm;
}

/// An object that knows some displays' settings, and keeps what it was asked with.
std::map<uint32_t, DEVMODEA> g_known;
std::vector<DEVMODEA> g_asked;

class SettingsMonitor : public FakeMonitor {
 public:
  using FakeMonitor::FakeMonitor;
  bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) override {
    script_->Note("GetDisplaySettings", 0, imm_display);
    g_asked.push_back(*dm);
    if (g_known.count(imm_display) == 0) return false;
    *dm = g_known[imm_display];
    return true;
  }
};

class Remembered : public policy_test::PolicyTest {
 protected:
  explicit Remembered(
      const std::string& text = "win7 intel: internal 1366x768 active, crt 1024x768")
      : PolicyTest(text) {
    g_known.clear();
    g_asked.clear();
  }
  void SetUp() override { Begin<SettingsMonitor>(); }

  std::string SavedDesktop(uint32_t width, uint32_t height, uint32_t bits) {
    model().sources[0].mode = {width, height, bits, 60};
    bench.ostrel().FlushRememberedSettings();
    policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
    return Bytes(bench.machine);
  }
  RememberedDisplay Read(const std::string& section, uint32_t display) {
    RememberedDisplay out;
    result = policy().ReadRememberedDisplay(section, display, &out);
    return out;
  }

  bool result = false;
};

std::string Text(const RememberedDisplay& one) {
  return std::to_string(one.width) + "x" + std::to_string(one.height) + "x" +
         std::to_string(one.bits) + "@" + std::to_string(one.frequency) + " turned " +
         std::to_string(one.orientation);
}

// --- An extended desktop.

TEST_F(Remembered, AnExtendedDesktopHasThePanelPlainAndEveryExternalDisplayByItsBit) {
  g_known[0x01] = Settings(1366, 768, 32, 60, 0);
  g_known[0x02] = Settings(1024, 768, 16, 75, 1);
  g_known[0x08] = Settings(1280, 1024, 24, 70, 2);
  g_known[0x10] = Settings(1920, 1080, 32, 50, 3);
  g_known[0x20] = Settings(2560, 1600, 32, 59, 0);
  policy().SaveDisplaySettings(IMMonitor::DM_EXTEND, 0x3B);
  EXPECT_EQ(bench.Calls(),
            "GetDisplaySettings(0, 0x1)\nGetDisplaySettings(0, 0x2)\nGetDisplaySettings(0, 0x8)\n"
            "GetDisplaySettings(0, 0x10)\nGetDisplaySettings(0, 0x20)\n");
  EXPECT_EQ(Bytes(bench.machine),
            Section(SectionOf(4, 59),
                    Five("", 1366, 768, 32, 60, 0) + Five("2", 1024, 768, 16, 75, 1) +
                        Five("8", 1280, 1024, 24, 70, 2) + Five("16", 1920, 1080, 32, 50, 3) +
                        Five("32", 2560, 1600, 32, 59, 0)));
}

TEST_F(Remembered, TheObjectIsAskedWithSizeAndFieldsOfTheRecord) {
  policy().SaveDisplaySettings(IMMonitor::DM_EXTEND, 0x03);
  ASSERT_EQ(g_asked.size(), 2u);
  for (const DEVMODEA& dm : g_asked) {
    EXPECT_EQ(dm.dmSize, 156);
    EXPECT_EQ(dm.dmFields, 0x5C0080u);
    EXPECT_EQ(dm.dmPelsWidth, 0u);
  }
}

TEST_F(Remembered, DisplaysThatAreNotOfTheModeAreNotAskedFor) {
  g_known[0x01] = g_known[0x02] = g_known[0x10] = Settings(1024, 768, 32, 60, 0);
  policy().SaveDisplaySettings(IMMonitor::DM_EXTEND, 0x12);
  EXPECT_EQ(bench.Calls(), "GetDisplaySettings(0, 0x2)\nGetDisplaySettings(0, 0x10)\n");
  EXPECT_EQ(Bytes(bench.machine), Section(SectionOf(4, 18), Five("2", 1024, 768, 32, 60, 0) +
                                                                Five("16", 1024, 768, 32, 60, 0)));
}

TEST_F(Remembered, TelevisionAndWirelessDisplayHaveNoKeys) {
  g_known[0x01] = g_known[0x04] = g_known[0x40] = Settings(1024, 768, 32, 60, 0);
  policy().SaveDisplaySettings(IMMonitor::DM_EXTEND, 0x45);
  EXPECT_EQ(bench.Calls(), "GetDisplaySettings(0, 0x1)\n");
  EXPECT_EQ(Bytes(bench.machine), Section(SectionOf(4, 69), Five("", 1024, 768, 32, 60, 0)));
}

TEST_F(Remembered, AnExternalDisplayThatIsNotKnownIsWarnedAboutAndTheRestGoesOn) {
  g_known[0x01] = g_known[0x10] = Settings(1024, 768, 32, 60, 0);
  policy().SaveDisplaySettings(IMMonitor::DM_EXTEND, 0x13);
  EXPECT_EQ(Bytes(bench.machine), Section(SectionOf(4, 19), Five("", 1024, 768, 32, 60, 0) +
                                                                Five("16", 1024, 768, 32, 60, 0)));
  EXPECT_EQ(TakeLog(), "WARNING Can't retrieve display settings by display library\n");
}

TEST_F(Remembered, APanelThatIsNotKnownIsPassedOverInSilence) {
  g_known[0x02] = Settings(1024, 768, 32, 60, 0);
  policy().SaveDisplaySettings(IMMonitor::DM_EXTEND, 0x03);
  EXPECT_EQ(Bytes(bench.machine), Section(SectionOf(4, 3), Five("2", 1024, 768, 32, 60, 0)));
  EXPECT_EQ(TakeLog(), "");
}

TEST_F(Remembered, WithoutAnObjectNoDisplayIsKnown) {
  bench.ostrel().white_box().factory->InstallMonitor(nullptr, static_cast<uint16_t>(kVendorIntel));
  model().adapters.clear();
  policy().SaveDisplaySettings(IMMonitor::DM_EXTEND, 0x03);
  EXPECT_EQ(Bytes(bench.machine), "");
}

// --- Every other mode.

TEST_F(Remembered, EveryOtherModeHasThePrimaryDesktop) {
  model().sources[0].mode = {1280, 720, 16, 50};
  policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
  policy().SaveDisplaySettings(IMMonitor::DM_SINGLE, 0x01);
  policy().SaveDisplaySettings(IMMonitor::DM_TRIPLE_CLONE, 0x13);
  EXPECT_EQ(bench.Calls(), "");
  const std::string five = Five("", 1280, 720, 16, 50, 0);
  EXPECT_EQ(Bytes(bench.machine), Section(SectionOf(2, 3), five) + Section(SectionOf(1, 1), five) +
                                      Section(SectionOf(1024, 19), five));
}

TEST_F(Remembered, ThePrimaryDesktopIsRememberedWithItsOrientation) {
  model().sources[0].mode = {768, 1366, 32, 60};
  model().sources[0].orientation = 3;
  policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
  EXPECT_EQ(Bytes(bench.machine), Section(SectionOf(2, 3), Five("", 768, 1366, 32, 60, 3)));
}

TEST_F(Remembered, OneSideThatIsLargeEnoughWillDo) {
  const struct {
    uint32_t width, height, bits;
    bool stored;
  } rows[] = {
      {800, 600, 16, true}, {640, 600, 16, true},   {800, 480, 16, true},  {799, 599, 32, false},
      {640, 480, 8, false}, {1366, 768, 15, false}, {1366, 768, 8, false},
  };
  for (const auto& row : rows) {
    const std::string expected =
        row.stored ? Section(SectionOf(2, 3), Five("", row.width, row.height, row.bits, 60, 0))
                   : "";
    EXPECT_EQ(SavedDesktop(row.width, row.height, row.bits), expected)
        << row.width << "x" << row.height << "x" << row.bits;
  }
}

TEST_F(Remembered, ADesktopThatCannotBeReadIsNotRemembered) {
  bench.machine.Fail("EnumDisplaySettingsA", 1);
  policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
  EXPECT_EQ(Bytes(bench.machine), "");
}

// --- Keys and sections.

TEST_F(Remembered, SavingMakesSureOfTheKeyOnce) {
  policy().SaveDisplaySettings(IMMonitor::DM_HSPAN, 0x03);
  policy().SaveDisplaySettings(IMMonitor::DM_HSPAN, 0x03);
  const std::vector<SettingsKey> keys = bench.State().settings_keys;
  ASSERT_EQ(keys.size(), 1u);
  EXPECT_EQ(keys[0].mode, 8u);
  EXPECT_EQ(keys[0].displays, 3u);
  EXPECT_EQ(keys[0].signature, policy().GetMonitorSignature());
  EXPECT_EQ(keys[0].section, SectionOf(8, 3));
}

TEST_F(Remembered, AKeyIsLookedUpByAllThreeFields) {
  policy().RegisterSettingsKey(2, 3, "A");
  policy().RegisterSettingsKey(2, 3, "B");
  policy().RegisterSettingsKey(2, 17, "A");
  policy().RegisterSettingsKey(1, 3, "A");
  policy().RegisterSettingsKey(2, 3, "A");
  EXPECT_EQ(bench.State().settings_keys.size(), 4u);
}

TEST_F(Remembered, ASectionIsNamedByModeDisplaysAndSignature) {
  EXPECT_EQ(policy().MakeSettingsSection(4, 3, "ACME P1,Beam 2"), "4,3 | ACME P1,Beam 2");
  EXPECT_EQ(policy().MakeSettingsSection(4, 3, ""), "4,3 | ");
  EXPECT_EQ(policy().MakeSettingsSection(0xFFFFFFFF, 0x80000000, ""), "-1,-2147483648 | ");
}

TEST_F(Remembered, ASecondSaveReplacesTheFirst) {
  g_known[0x02] = Settings(1024, 768, 32, 60, 0);
  policy().SaveDisplaySettings(IMMonitor::DM_EXTEND, 0x02);
  g_known[0x02] = Settings(800, 600, 16, 75, 1);
  policy().SaveDisplaySettings(IMMonitor::DM_EXTEND, 0x02);
  EXPECT_EQ(Bytes(bench.machine), Section(SectionOf(4, 2), Five("2", 800, 600, 16, 75, 1)));
}

TEST_F(Remembered, FlushDeletesTheFileAndKeepsTheKeys) {
  policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
  policy().WriteActiveDisplayMode(2, 3, 0);
  EXPECT_NE(Bytes(bench.machine), "");
  EXPECT_TRUE(bench.ostrel().FlushRememberedSettings());
  EXPECT_EQ(SizeOf(settings_file::PathOf(bench.machine)), -1);
  EXPECT_EQ(bench.State().settings_keys.size(), 1u);
  EXPECT_FALSE(bench.ostrel().FlushRememberedSettings());
}

// --- "Active Display Mode".

TEST_F(Remembered, TheActiveModeHasThreeKeysInOrder) {
  policy().EnsureSettingsPath();
  policy().WriteActiveDisplayMode(2, 17, 64);
  EXPECT_EQ(Bytes(bench.machine),
            "[Active Display Mode]\r\nDisplay Mode=2\r\nActive Displays=17\r\n"
            "Presentation Mode=64\r\n");
  EXPECT_EQ(policy().ReadActivePresentationType(), 64u);
}

TEST_F(Remembered, NumbersAreWrittenAsSignedDecimals) {
  policy().EnsureSettingsPath();
  policy().WriteActiveDisplayMode(0x7FFFFFFF, 0x80000000, 0xFFFFFFFF);
  EXPECT_EQ(Bytes(bench.machine),
            "[Active Display Mode]\r\nDisplay Mode=2147483647\r\n"
            "Active Displays=-2147483648\r\nPresentation Mode=-1\r\n");
  EXPECT_EQ(policy().ReadActivePresentationType(), 0xFFFFFFFFu);
}

TEST_F(Remembered, ModeAndDisplaysAreWrittenAndNeverRead) {
  policy().EnsureSettingsPath();
  policy().WriteActiveDisplayMode(4, 3, 0);
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.Flags(), "1000");  // the panel alone, as the object says
  EXPECT_EQ(bench.State().last_mode, 1u);
  EXPECT_EQ(bench.State().last_displays, 1u);
}

// --- Reading.

TEST_F(Remembered, NothingThereReadsAsTheDefaults) {
  policy().EnsureSettingsPath();
  EXPECT_EQ(Text(Read("2,3 | ", 0x01)), "0x0x32@60 turned 0");
  EXPECT_FALSE(result);
}

TEST_F(Remembered, EachDisplayReadsTheKeysWithItsBit) {
  policy().EnsureSettingsPath();
  Put(bench.machine,
      Section("s", Five("", 1, 2, 3, 4, 5) + Five("2", 6, 7, 8, 9, 10) +
                       Five("4", 99, 99, 99, 99, 99) + Five("8", 11, 12, 13, 14, 15) +
                       Five("16", 16, 17, 18, 19, 20) + Five("32", 21, 22, 23, 24, 25) +
                       Five("64", 99, 99, 99, 99, 99)));
  const struct {
    uint32_t display;
    const char* text;
  } rows[] = {
      {0x01, "1x2x3@4 turned 5"},      {0x02, "6x7x8@9 turned 10"},
      {0x08, "11x12x13@14 turned 15"}, {0x10, "16x17x18@19 turned 20"},
      {0x20, "21x22x23@24 turned 25"}, {0x04, "1x2x3@4 turned 5"},
      {0x40, "1x2x3@4 turned 5"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Text(Read("s", row.display)), row.text) << row.display;
    EXPECT_TRUE(result);
  }
}

TEST_F(Remembered, NothingIsRememberedWithoutWidthOrHeight) {
  policy().EnsureSettingsPath();
  Put(bench.machine, "[w]\r\nWidth=1024\r\n[h]\r\nHeight=768\r\n[both]\r\nWidth=1\r\nHeight=1\r\n");
  Read("w", 0x01);
  EXPECT_FALSE(result);
  Read("h", 0x01);
  EXPECT_FALSE(result);
  EXPECT_EQ(Text(Read("both", 0x01)), "1x1x32@60 turned 0");
  EXPECT_TRUE(result);
}

TEST_F(Remembered, TheSizeIsWrittenOnlyWithAPlaceForTheHeight) {
  policy().EnsureSettingsPath();
  Put(bench.machine, "[s]\r\nWidth=5\r\nHeight=6\r\nWidth16=7\r\nHeight16=8\r\n");
  SettingsKey key;
  key.section = "s";
  uint32_t width = 77;
  uint32_t height = 88;
  policy().ReadDisplayResolution(key, &width, nullptr, 0x01);
  EXPECT_EQ(width, 77u);
  policy().ReadDisplayResolution(key, &width, &height, 0x10);
  EXPECT_EQ(width, 7u);
  EXPECT_EQ(height, 8u);
  policy().ReadDisplayResolution(key, &width, &height, 0x02);
  EXPECT_EQ(width, 0u);
  EXPECT_EQ(height, 0u);
}

// --- The monitors' signature.

class Signature : public Remembered {
 protected:
  Signature()
      : Remembered("win7 intel*3: internal 1366x768 active, crt 1024x768, hdmi 1920x1080") {}
  void Name(size_t connector, const std::string& name) {
    sim::Monitor& monitor = *model().connectors[connector].monitor;
    monitor.edid = sim::MakeEdid(name, monitor.preferred);
  }
};

TEST_F(Signature, JoinsTheNamesInAscendingOrder) {
  Name(0, "Panel");
  Name(1, "beamer");
  Name(2, "Acme P1");
  EXPECT_EQ(policy().GetMonitorSignature(), "Acme P1,Panel,beamer");
}

TEST_F(Signature, TwoMonitorsOfOneNameCountOnce) {
  Name(0, "Panel");
  Name(1, "Acme P1");
  Name(2, "Acme P1");
  EXPECT_EQ(policy().GetMonitorSignature(), "Acme P1,Panel");
}

TEST_F(Signature, MonitorsWithoutEdidGiveAnEmptyOne) {
  for (sim::Connector& connector : model().connectors) {
    connector.monitor->edid.clear();
  }
  bench.ostrel().ForgiveLeaks();  // the listing keeps the keys of monitors without an EDID open
  EXPECT_EQ(policy().GetMonitorSignature(), "");
  model().sources[0].mode = {800, 600, 32, 60};
  policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
  EXPECT_EQ(bench.State().settings_keys.at(0).section, "2,3 | ");
  // Windows takes the blank at the name's end away, for the writer and for the reader.
  EXPECT_EQ(Bytes(bench.machine), Section("2,3 |", Five("", 800, 600, 32, 60, 0)));
  EXPECT_EQ(Text(Read("2,3 | ", 0x01)), "800x600x32@60 turned 0");
}

TEST_F(Signature, AnEmptyNameHasItsComma) {
  Name(0, "Panel");
  Name(1, "");
  sim::Monitor& nameless = *model().connectors[1].monitor;
  // A name descriptor whose text ends at once.
  const std::vector<uint8_t> descriptor = {0, 0, 0, 0xFC, 0, 10};
  std::copy(descriptor.begin(), descriptor.end(), nameless.edid.begin() + 108);
  sim::FixEdidChecksum(&nameless.edid);
  Name(2, "Acme P1");
  EXPECT_EQ(policy().GetMonitorSignature(), ",Acme P1,Panel");
}

TEST_F(Signature, NamesOfAnyBytesNameASectionThatIsFoundAgain) {
  model().sources[0].mode = {800, 600, 32, 60};
  for (const char* name : {"a,b | c", "[x] ;y", "tab\tend", "k=v", "\x01\x7f\xff"}) {
    Name(0, name);
    policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
    const SettingsKey key = bench.State().settings_keys.back();
    EXPECT_NE(key.section.find(name), std::string::npos);
    EXPECT_EQ(Text(Read(key.section, 0x01)), "800x600x32@60 turned 0") << name;
    bench.ostrel().FlushRememberedSettings();
  }
}

TEST_F(Signature, DoesNotSayWhichMonitorHangsWhere) {
  Name(0, "Panel");
  Name(1, "Acme P1");
  Name(2, "Beamer");
  const std::string before = policy().GetMonitorSignature();
  Name(1, "Beamer");
  Name(2, "Acme P1");
  EXPECT_EQ(policy().GetMonitorSignature(), before);
  EXPECT_EQ(before, "Acme P1,Beamer,Panel");
}

TEST_F(Signature, AnotherMonitorStartsFresh) {
  Name(1, "Acme P1");
  policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
  Name(1, "Beamer");
  policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
  const std::vector<SettingsKey> keys = bench.State().settings_keys;
  ASSERT_EQ(keys.size(), 2u);
  EXPECT_NE(keys[0].section, keys[1].section);
}

}  // namespace
