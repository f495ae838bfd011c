// The two lists of projectors, and the switch that one of them gets.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "sim/EdidMaker.h"
#include "tests/behaviour/CoreHost.h"
#include "tests/support/FakeMonitor.h"
#include "tests/support/SessionBench.h"

namespace {

using Names = std::vector<std::string>;

constexpr char kNotebook[] = "win7 intel: internal 1366x768 active, crt 1024x768";

class Projectors : public testing::Test {
 protected:
  const ProjectorBox& box() { return *host.ostrel().white_box().projectors; }
  void Config(const std::string& section, const std::string& key, const std::string& value) {
    host.machine.Config(section, key, value);
  }
  /// The monitor on the CRT connector gets another name.
  void Attach(const std::string& name) {
    sim::Monitor& monitor = *host.machine.model().connectors[1].monitor;
    monitor.edid = sim::MakeEdid(name, monitor.preferred);
  }
  CoreHost host{kNotebook, L"--enable-dcheck"};
};

// --- Those that must not be offered 1024 by 768.

class ProblemProjectors : public Projectors {
 protected:
  void Name(int number, const std::string& value) {
    Config("PM:1024x768", "Problem Projector " + std::to_string(number), value);
  }
};

TEST_F(ProblemProjectors, AreFourBuiltInOnes) {
  EXPECT_EQ(box().GetProblemProjectors(),
            (Names{"Veld k2210", "Veld k2310", "Veld R2215", "Veld R2215E"}));
}

TEST_F(ProblemProjectors, ThatAreConfiguredReplaceTheBuiltInOnes) {
  Name(0, "Any text");
  EXPECT_EQ(box().GetProblemProjectors(), (Names{"Any text"}));
}

TEST_F(ProblemProjectors, EndAtTheFirstEmptyValue) {
  Name(0, "A");
  Name(1, "B");
  Name(3, "D");
  EXPECT_EQ(box().GetProblemProjectors(), (Names{"A", "B"}));
}

TEST_F(ProblemProjectors, AreCountedFromZero) {
  Name(1, "B");
  EXPECT_EQ(box().GetProblemProjectors().size(), 4u);
}

TEST_F(ProblemProjectors, HaveNoUpperLimit) {
  for (int i = 0; i != 120; ++i) Name(i, "P" + std::to_string(i));
  const Names names = box().GetProblemProjectors();
  ASSERT_EQ(names.size(), 120u);
  EXPECT_EQ(names[119], "P119");
}

TEST_F(ProblemProjectors, AreCutBehind255Bytes) {
  Name(0, std::string(300, 'n'));
  EXPECT_EQ(box().GetProblemProjectors(), (Names{std::string(255, 'n')}));
}

TEST_F(ProblemProjectors, StayForTheLifeOfTheProcess) {
  Name(0, "A");
  EXPECT_EQ(box().GetProblemProjectors(), (Names{"A"}));
  Name(0, "B");
  EXPECT_EQ(box().GetProblemProjectors(), (Names{"A"}));
}

TEST_F(ProblemProjectors, AreFoundAmongTheMonitorsByTheirExactName) {
  struct {
    const char* name;
    bool found;
  } const rows[] = {{"Veld k2210", true},   {"Veld R2215E", true}, {"veld K2210", false},
                    {"Veld k2210 ", false}, {"Veld k221", false},  {"CRT Monitor", false}};
  for (const auto& row : rows) {
    Attach(row.name);
    EXPECT_EQ(box().IsProblemProjectorConnected(), row.found) << row.name;
  }
}

TEST_F(ProblemProjectors, AreNotFoundWithoutAnyName) {
  host.machine.model().connectors[0].monitor->edid = sim::MakeEdid("", {1366, 768, 32, 60});
  Attach("");
  EXPECT_FALSE(box().IsProblemProjectorConnected());
}

TEST_F(ProblemProjectors, MayBeThePanelToo) {
  Name(0, "Panel");
  EXPECT_TRUE(box().IsProblemProjectorConnected());
}

// --- Those that need one driver call.

class StupidProjectors : public Projectors {
 protected:
  void Name(const std::string& value) { Config("Settings", "Stupid Projectors", value); }
  std::string OnCrt(const Names& names) { return box().IsStupidProjectorOnCrt(names, &object); }

  std::shared_ptr<FakeScript> script = std::make_shared<FakeScript>();
  FakeExtensionMonitor object{script};
};

TEST_F(StupidProjectors, AreNoneByDefault) {
  EXPECT_EQ(box().GetStupidProjectors(), Names());
  Name("");
  EXPECT_EQ(box().GetStupidProjectors(), Names());
}

TEST_F(StupidProjectors, AreSplitAndStrippedAndReadAtEachUse) {
  Name("Veld S1,  Veld S2 ,Veld S3");
  EXPECT_EQ(box().GetStupidProjectors(), (Names{"Veld S1", "Veld S2", "Veld S3"}));
  Name("Veld S4");
  EXPECT_EQ(box().GetStupidProjectors(), (Names{"Veld S4"}));
}

TEST_F(StupidProjectors, AreCutBehind1023Bytes) {
  Name(std::string(1020, 'n') + ",12345");
  EXPECT_EQ(box().GetStupidProjectors(), (Names{std::string(1020, 'n'), "12"}));
}

TEST_F(StupidProjectors, AreNoneWhereTheHostsFolderIsNotTold) {
  Name("Veld S1");
  box();
  host.machine.Fail("GetModuleFileNameW", 1);
  EXPECT_EQ(box().GetStupidProjectors(), Names());
}

TEST_F(StupidProjectors, AreRecognisedByTheExactNameInTheEdid) {
  script->edid = sim::MakeEdid("Veld S1", {1024, 768, 32, 60});
  EXPECT_EQ(OnCrt({"Veld S0", "Veld S1"}), "1");
  EXPECT_EQ(script->TakeCalls(), "GetEDID(0, 0x2)\nFreeEDID\n");
  for (const char* other : {"veld s1", "Veld S", "Veld S11", ""}) {
    EXPECT_EQ(OnCrt({other}), "0") << other;
  }
  EXPECT_EQ(OnCrt({}), "0");
}

TEST_F(StupidProjectors, AreNotThereWithoutAnEdid) {
  EXPECT_EQ(OnCrt({"Veld S1", ""}), "0");
  EXPECT_EQ(script->TakeCalls(), "GetEDID(0, 0x2)\n");
}

TEST_F(StupidProjectors, WithoutANameAreTheEmptyPartOfTheList) {
  script->edid = sim::MakeEdid("", {1024, 768, 32, 60});
  EXPECT_EQ(OnCrt({"Veld S1"}), "0");
  EXPECT_EQ(OnCrt({"Veld S1", ""}), "1");
  script->edid.resize(127);  // a short block is no record, and has no name either
  EXPECT_EQ(OnCrt({"Veld S1", ""}), "1");
  EXPECT_EQ(script->TakeCalls(),
            "GetEDID(0, 0x2)\nFreeEDID\nGetEDID(0, 0x2)\nFreeEDID\nGetEDID(0, 0x2)\nFreeEDID\n");
}

TEST_F(StupidProjectors, WithADamagedEdidThrowAndGiveItBack) {
  script->edid = sim::MakeEdid("Veld S1", {1024, 768, 32, 60});
  script->edid[127] ^= 1;
  EXPECT_EQ(OnCrt({"Veld S1"}), "EDID::ValidateEDIDChecksum() function failed");
  script->edid[0] = 1;
  EXPECT_EQ(OnCrt({"Veld S1"}), "EDID::ValidateEDIDHeader() function failed");
  EXPECT_EQ(script->TakeCalls(), "GetEDID(0, 0x2)\nFreeEDID\nGetEDID(0, 0x2)\nFreeEDID\n");
}

TEST_F(StupidProjectors, NeedAnExtension) {
  box();
  host.ForgetLog();
  EXPECT_EQ(box().IsStupidProjectorOnCrt({"Veld S1"}, nullptr), "0");
  EXPECT_EQ(host.TakeLog(), "Check failed: ext. \n");
}

// --- Mode and resolution in one driver call.

constexpr char kSection[] = "2,3 | CRT Monitor,Panel";

class ProblemProjectorMode : public Projectors {
 protected:
  ProblemProjectorMode() {
    Config("Settings", "Stupid Projectors", "Veld S1");
    script->on_call = [this](const std::string& call) { AnswerEdid(call); };
  }

  /// The driver's own EDIDs; what the registry has of the monitors plays no part in them.
  void AnswerEdid(const std::string& call) {
    if (call == "GetEDID(0, 0x2)") script->edid = crt;
    if (call == "GetEDID(0, 0x1)") script->edid = panel;
  }
  BOOL Apply(uint32_t mode = IMMonitor::DM_CLONE, uint32_t displays = 0x03, uint32_t type = 0) {
    return box().ApplyProblemProjectorMode(&object, mode, displays, type);
  }
  /// "1024x768x32@60 fields 0x0 size 220" of what the driver was given last.
  std::string Given() const {
    const DEVMODEW& dm = script->last_settings;
    char text[96];
    std::snprintf(text, sizeof(text), "%lux%lux%lu@%lu fields 0x%lx size %u", dm.dmPelsWidth,
                  dm.dmPelsHeight, dm.dmBitsPerPel, dm.dmDisplayFrequency, dm.dmFields, dm.dmSize);
    return text;
  }
  void Remember(const char* key, const char* value) {
    const std::wstring folder = host.machine.TempFolder();
    const std::string path = std::string(folder.begin(), folder.end()) + "\\Ostrel.ini";
    WritePrivateProfileStringA(kSection, key, value, path.c_str());
  }
  bool DriverWasAsked() { return CountOf(script->TakeCalls(), "SetDisplayMode") != 0; }

  std::vector<uint8_t> crt = sim::MakeEdid("Veld S1", {800, 600, 32, 75});
  std::vector<uint8_t> panel = sim::MakeEdid("Panel", {1366, 768, 32, 60});
  std::shared_ptr<FakeScript> script = std::make_shared<FakeScript>();
  FakeMonitorWithSettings object{script};
};

TEST_F(ProblemProjectorMode, TakesTheCurrentSettingsForAPresentation) {
  EXPECT_TRUE(Apply(IMMonitor::DM_CLONE, 0x03, 64));
  EXPECT_EQ(script->TakeCalls(),
            "GetVgaVendor\nGetEDID(0, 0x2)\nFreeEDID\nSetDisplayModeWithSettings(2, 0x3)\n");
  const DEVMODEW& dm = script->last_settings;
  EXPECT_EQ(dm.dmPelsWidth, 1024u);
  EXPECT_EQ(dm.dmPelsHeight, 768u);
  EXPECT_EQ(dm.dmBitsPerPel, 32u);
  EXPECT_EQ(dm.dmDisplayFrequency, 60u);
  EXPECT_EQ(dm.dmFields & 0x5C0000u, 0x5C0000u);
  EXPECT_EQ(dm.dmSize, 220u);  // Windows' own answer says less
}

TEST_F(ProblemProjectorMode, TakesThePresentationsSizeFromTheConfigurationEachTime) {
  EXPECT_TRUE(Apply(IMMonitor::DM_CLONE, 0x03, 32));
  EXPECT_EQ(script->last_settings.dmPelsWidth, 800u);
  EXPECT_EQ(script->last_settings.dmPelsHeight, 600u);
  Config("PM:800x600", "Width", "832");
  Config("PM:800x600", "Height", "624");
  EXPECT_TRUE(Apply(IMMonitor::DM_CLONE, 0x03, 32));
  EXPECT_EQ(script->last_settings.dmPelsWidth, 832u);
  EXPECT_EQ(script->last_settings.dmPelsHeight, 624u);
}

TEST_F(ProblemProjectorMode, SendsAPresentationAlsoWhenTheCurrentSettingsCannotBeRead) {
  box();
  host.machine.Fail("EnumDisplaySettingsW", 1);
  EXPECT_TRUE(Apply(IMMonitor::DM_CLONE, 0x03, 64));
  EXPECT_EQ(Given(), "1024x768x0@0 fields 0x5c0000 size 220");
}

TEST_F(ProblemProjectorMode, TakesWhatIsRememberedForAPlainClone) {
  Remember("Width", "1152");
  Remember("Height", "864");
  Remember("Color Depth", "16");
  Remember("Frequency", "75");
  EXPECT_TRUE(Apply());
  EXPECT_EQ(Given(), "1152x864x16@75 fields 0x0 size 220");
  EXPECT_EQ(script->TakeCalls(),
            "GetVgaVendor\nGetEDID(0, 0x2)\nFreeEDID\nSetDisplayModeWithSettings(2, 0x3)\n");
  EXPECT_EQ(host.machine.Calls("EnumDisplaySettingsW"), 0u);
}

TEST_F(ProblemProjectorMode, TakesDefaultDepthAndFrequencyWhereTheSizeAloneIsRemembered) {
  Remember("Width", "1152");
  Remember("Height", "864");
  EXPECT_TRUE(Apply());
  EXPECT_EQ(Given(), "1152x864x32@60 fields 0x0 size 220");
}

TEST_F(ProblemProjectorMode, LeavesOutARememberedDepthAndFrequencyOfZero) {
  Remember("Width", "1152");
  Remember("Height", "864");
  Remember("Color Depth", "0");
  Remember("Frequency", "0");
  EXPECT_TRUE(Apply());
  EXPECT_EQ(Given(), "1152x864x0@0 fields 0x0 size 220");
}

TEST_F(ProblemProjectorMode, TakesThePanelsTimingWhereNothingIsRemembered) {
  EXPECT_TRUE(Apply());
  EXPECT_EQ(script->TakeCalls(),
            "GetVgaVendor\nGetEDID(0, 0x2)\nFreeEDID\nGetEDID(0, 0x1)\nFreeEDID\n"
            "SetDisplayModeWithSettings(2, 0x3)\n");
  EXPECT_EQ(script->last_settings.dmPelsWidth, 1366u);
  EXPECT_EQ(script->last_settings.dmPelsHeight, 768u);
  EXPECT_EQ(script->last_settings.dmBitsPerPel, 32u);
  EXPECT_NEAR(static_cast<double>(script->last_settings.dmDisplayFrequency), 60.0, 1.0);
  EXPECT_EQ(script->last_settings.dmFields, 0u);
}

TEST_F(ProblemProjectorMode, TakesThePanelsTimingWhereHalfASizeIsRemembered) {
  Remember("Width", "1152");
  Remember("Color Depth", "16");
  EXPECT_TRUE(Apply());
  EXPECT_EQ(script->last_settings.dmPelsWidth, 1366u);
  EXPECT_EQ(script->last_settings.dmBitsPerPel, 32u);
}

TEST_F(ProblemProjectorMode, SendsNoSizeWhereThePanelPrefersNoTiming) {
  sim::EdidText text;
  text.name = "Panel";
  text.preferred = {1366, 768, 32, 60};
  text.preferred_bit = false;
  panel = sim::MakeEdid(text);
  EXPECT_TRUE(Apply());
  EXPECT_EQ(Given(), "0x0x32@0 fields 0x0 size 220");
}

TEST_F(ProblemProjectorMode, SendsNoSizeWhereThePanelsEdidIsNotThereOrShort) {
  panel.clear();
  EXPECT_TRUE(Apply());
  EXPECT_EQ(Given(), "0x0x32@0 fields 0x0 size 220");
  EXPECT_EQ(CountOf(script->TakeCalls(), "FreeEDID"), 1u);  // the projector's
  panel.assign(127, 0);
  EXPECT_TRUE(Apply());
  EXPECT_EQ(Given(), "0x0x32@0 fields 0x0 size 220");
  EXPECT_EQ(CountOf(script->TakeCalls(), "FreeEDID"), 2u);
}

TEST_F(ProblemProjectorMode, GivesUpOnADamagedEdidAndGivesItBack) {
  panel[127] ^= 1;
  EXPECT_FALSE(Apply());
  EXPECT_EQ(script->TakeCalls(),
            "GetVgaVendor\nGetEDID(0, 0x2)\nFreeEDID\nGetEDID(0, 0x1)\nFreeEDID\n");
  crt[0] = 1;
  EXPECT_FALSE(Apply());
  EXPECT_EQ(script->TakeCalls(), "GetVgaVendor\nGetEDID(0, 0x2)\nFreeEDID\n");
}

TEST_F(ProblemProjectorMode, IsForIntelOnly) {
  for (const uint32_t vendor : {kVendorNvidia, kVendorAmd, kVendorWin7CCD, kVendorHybrid, 0u}) {
    script->vendor = vendor;
    EXPECT_FALSE(Apply()) << vendor;
    EXPECT_EQ(script->TakeCalls(), "GetVgaVendor\n") << vendor;
  }
}

TEST_F(ProblemProjectorMode, IsForAClonedCrtOnly) {
  struct {
    uint32_t mode;
    uint32_t displays;
    uint32_t type;
  } const rows[] = {{IMMonitor::DM_CLONE, 0x11, 0},         {IMMonitor::DM_CLONE, 0x09, 64},
                    {IMMonitor::DM_SINGLE, 0x02, 0},        {IMMonitor::DM_TRIPLE_CLONE, 0x13, 0},
                    {IMMonitor::DM_TRIPLE_EXTEND, 0x13, 0}, {IMMonitor::DM_CLONE, 0x05, 32}};
  for (const auto& row : rows) {
    EXPECT_FALSE(Apply(row.mode, row.displays, row.type)) << row.mode << " " << row.displays;
    EXPECT_EQ(script->TakeCalls(), "GetVgaVendor\n") << row.mode << " " << row.displays;
  }
}

TEST_F(ProblemProjectorMode, AsksNoMonitorWithoutAList) {
  Config("Settings", "Stupid Projectors", "");
  EXPECT_FALSE(Apply());
  EXPECT_EQ(script->TakeCalls(), "GetVgaVendor\n");
}

TEST_F(ProblemProjectorMode, LeavesEveryOtherProjectorAlone) {
  crt = sim::MakeEdid("veld s1", {1024, 768, 32, 60});
  EXPECT_FALSE(Apply());
  EXPECT_FALSE(DriverWasAsked());
}

TEST_F(ProblemProjectorMode, ReportsTheDriversRefusal) {
  script->set_with_settings_result = 0;
  EXPECT_FALSE(Apply());
  EXPECT_TRUE(DriverWasAsked());
}

TEST_F(ProblemProjectorMode, SwallowsWhatIsThrown) {
  for (const char* thrower : {"GetVgaVendor", "GetEDID(0, 0x2)", "GetEDID(0, 0x1)",
                              "SetDisplayModeWithSettings(2, 0x3)"}) {
    script->on_call = [this, thrower](const std::string& call) {
      AnswerEdid(call);
      if (call == thrower) throw std::runtime_error("no");
    };
    EXPECT_FALSE(Apply()) << thrower;
  }
}

TEST_F(ProblemProjectorMode, NeedsAnObjectWithBothSideInterfaces) {
  box();
  host.ForgetLog();
  EXPECT_FALSE(box().ApplyProblemProjectorMode(nullptr, IMMonitor::DM_CLONE, 0x03, 0));
  EXPECT_EQ(host.TakeLog(), "Check failed: imm. \n");
  FakeMonitor bare(script);
  EXPECT_FALSE(box().ApplyProblemProjectorMode(&bare, IMMonitor::DM_CLONE, 0x03, 0));
  EXPECT_EQ(host.TakeLog(), "Check failed: ext. \n");
  FakeExtensionMonitor without_settings(script);
  EXPECT_FALSE(box().ApplyProblemProjectorMode(&without_settings, IMMonitor::DM_CLONE, 0x03, 0));
  EXPECT_FALSE(DriverWasAsked());
}

// --- In a switch.

class SwitchToProblemProjector : public testing::Test {
 protected:
  SwitchToProblemProjector() {
    bench.machine.Config("Settings", "Stupid Projectors", "Veld S1");
    bench.script->edid = sim::MakeEdid("Veld S1", {1024, 768, 32, 60});
    bench.script->follows = true;
  }
  void SwitchToClone() {
    ASSERT_TRUE(bench.Start<FakeMonitorWithSettings>());
    ASSERT_TRUE(bench.ostrel().Run());
    ASSERT_TRUE(bench.ostrel().Run());
    bench.machine.Advance(1500);
  }
  SessionBench bench;
};

TEST_F(SwitchToProblemProjector, IsOneDriverCall) {
  SwitchToClone();
  EXPECT_EQ(bench.Changes(), "SetDisplayModeWithSettings(2, 0x3)\n");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Display Mode"), "2");
}

TEST_F(SwitchToProblemProjector, FallsBackToThePlainSwitchWhenTheDriverRefuses) {
  bench.script->set_with_settings_result = 0;
  SwitchToClone();
  EXPECT_EQ(bench.Changes(), "SetDisplayModeWithSettings(2, 0x3)\nSetNewDisplayMode(2, 0x3)\n");
}

TEST_F(SwitchToProblemProjector, FallsBackToThePlainSwitchWhenTheEdidIsDamaged) {
  bench.script->edid[127] ^= 1;
  SwitchToClone();
  EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
}

}  // namespace
