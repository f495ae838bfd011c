// Ostrel.cfg: its place, every key with its section and default, and how values are cached.
#include <gtest/gtest.h>

#include <string>

#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/behaviour/LogText.h"

namespace {

using sim::Library;
using sim::Machine;

constexpr char kNotebook[] = "win7 intel: internal 1366x768 active";

struct KeyRow {
  const char* accessor;
  const char* section;
  const char* key;
  uint32_t default_value;
};

constexpr KeyRow kRows[] = {
    {"AdjustCorrectResolutionAtStartOnXP", "Settings", "Adjust Correct Resolution At Start On XP",
     0},
    {"DisableWhenVideoPlayback", "Settings", "Disable When Video Playback", 0},
    {"DisableInExtendMode", "Settings", "Disable In Extend Mode", 0},
    {"AssurePrimaryDisplayIsNotebook", "Settings", "Assure Primary Display is Notebook", 1},
    {"SupportVeldTV4810Workaround", "Settings", "Support Veld TV4810 Workaround", 0},
    {"SupportMonitorTestWorkaround", "Settings", "Support Monitor Test Workaround", 0},
    {"RetryWhenOperationFailed", "Settings", "Retry When Operation Failed", 0},
    {"RestoreDisplaySettingsAfterSwitch", "Settings", "Restore Display Settings After Switch", 1},
    {"DelayTimeToRestoreDisplaySettings", "Settings", "Delay Time To Restore Display Settings", 0},
    {"Frequency60HzIsBetter", "Settings", "Frequency 60Hz Is Better", 0},
    {"EliminateFrequencyLessThen60Hz", "Settings", "Eliminate Frequency Less Then 60Hz", 0},
    {"PreferWindows7CCDAPI", "Settings", "Prefer Windows 7 CCD API", 0},
    {"AlwaysUseWindowsAPIToControlExtendMode", "Settings",
     "Always Use Windows API To Control Extend Mode", 0},
    {"HDMIIconUseTVIcon", "Settings:Intel", "HDMI Icon Use TV Icon", 0},
    {"DowngradeResolutionBeforeSwitch", "Settings:Intel", "Downgrade Resolution Before Switch", 1},
    {"SupportAspectRatioWorkaround", "Settings:Intel", "Support Aspect Ratio Workaround", 0},
    {"SupportPM800x600", "PM:800x600", "Support This Mode", 0},
    {"SupportPM800x600Mode", "PM:800x600", "Support This Mode", 0},
    {"SupportPM1024x768", "PM:1024x768", "Support This Mode", 1},
    {"CheckProblemProjector", "PM:1024x768", "Check Problem Projector", 0},
    {"IntelHDMIWorkaround", "Single External", "Intel HDMI Workaround", 0},
    {"AlwaysAssumeDeviceHasProblem", "Single External", "Always Assume Device Has Problem", 0},
    {"AlwaysAssumeMonitorHasProblem", "Single External", "Always Assume Monitor Has Problem", 0},
};

class Host {
 public:
  explicit Host(Machine& machine) : library_(machine, Library::Build::kWhiteBox) {}
  const FoundationBox& box() const { return *library_.white_box().foundation; }
  Library& library() { return library_; }

  uint32_t Read(const std::string& accessor) const {
    for (size_t i = 0; i < box().config_accessor_count; ++i) {
      if (accessor == box().config_accessors[i].name) return box().config_accessors[i].read();
    }
    ADD_FAILURE() << "no accessor " << accessor;
    return 0;
  }

 private:
  Library library_;
};

std::wstring ConfigPath(const Machine& machine) { return machine.HostFolder() + L"\\Ostrel.cfg"; }

TEST(Config, EveryAccessorHasItsRow) {
  Machine machine(kNotebook);
  Host host(machine);
  EXPECT_EQ(host.box().config_accessor_count, std::size(kRows));
}

TEST(Config, WithoutAFileEveryKeyHasItsDefault) {
  Machine machine(kNotebook);
  Host host(machine);
  for (const KeyRow& row : kRows)
    EXPECT_EQ(host.Read(row.accessor), row.default_value) << row.accessor;
  EXPECT_EQ(host.box().RetryDelayTime(), 3000u);
  EXPECT_EQ(host.box().ReadConfigInt(L"Settings", L"Setting Type", 2), 2u);
}

TEST(Config, EveryKeyIsReadFromItsOwnSection) {
  uint32_t value = 100;
  for (const KeyRow& row : kRows) {
    Machine machine(kNotebook);
    machine.Config(row.section, row.key, ++value);
    Host host(machine);
    for (const KeyRow& other : kRows) {
      const bool same =
          std::string(row.section) == other.section && std::string(row.key) == other.key;
      EXPECT_EQ(host.Read(other.accessor), same ? value : other.default_value)
          << other.accessor << " with " << row.key;
    }
  }
}

TEST(Config, ZeroIsOffAlsoWhereTheDefaultIsOn) {
  Machine machine(kNotebook);
  for (const KeyRow& row : kRows) machine.Config(row.section, row.key, int64_t{0});
  Host host(machine);
  for (const KeyRow& row : kRows) EXPECT_EQ(host.Read(row.accessor), 0u) << row.accessor;
}

TEST(Config, CachedKeysKeepTheirFirstValueInTheProcess) {
  Machine machine(kNotebook);
  for (const KeyRow& row : kRows) machine.Config(row.section, row.key, 7);
  Host host(machine);
  for (const KeyRow& row : kRows) EXPECT_EQ(host.Read(row.accessor), 7u) << row.accessor;
  for (const KeyRow& row : kRows) machine.Config(row.section, row.key, 8);
  for (const KeyRow& row : kRows) EXPECT_EQ(host.Read(row.accessor), 7u) << row.accessor;
  // The default of a missing key is cached as well.
  DeleteFileW(ConfigPath(machine).c_str());
  for (const KeyRow& row : kRows) EXPECT_EQ(host.Read(row.accessor), 7u) << row.accessor;
}

TEST(Config, NewProcessReadsTheFileAnew) {
  Machine machine(kNotebook);
  machine.Config("Settings", "Disable In Extend Mode", 1);
  {
    Host host(machine);
    EXPECT_EQ(host.Read("DisableInExtendMode"), 1u);
  }
  machine.Config("Settings", "Disable In Extend Mode", int64_t{0});
  Host host(machine);
  EXPECT_EQ(host.Read("DisableInExtendMode"), 0u);
}

TEST(Config, DeInitAndInitDoNotRefreshCachedKeys) {
  Machine machine(kNotebook);
  machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
  machine.Config("Settings", "Restore Display Settings After Switch", 5);
  Host host(machine);
  EXPECT_EQ(host.Read("RestoreDisplaySettingsAfterSwitch"), 5u);
  machine.Config("Settings", "Restore Display Settings After Switch", 6);
  ASSERT_TRUE(host.library().Init());
  host.library().DeInit();
  EXPECT_EQ(host.Read("RestoreDisplaySettingsAfterSwitch"), 5u);
}

TEST(Config, MinusOneIsReadAgainAtEachUse) {
  for (const KeyRow& row : kRows) {
    Machine machine(kNotebook);
    machine.Config(row.section, row.key, -1);
    Host host(machine);
    EXPECT_EQ(host.Read(row.accessor), 0xFFFFFFFFu) << row.accessor;
    machine.Config(row.section, row.key, 5);
    EXPECT_EQ(host.Read(row.accessor), 5u) << row.accessor;
    machine.Config(row.section, row.key, 6);
    EXPECT_EQ(host.Read(row.accessor), 5u) << row.accessor;
  }
}

TEST(Config, BothAccessorsOf800x600ShareOneVariable) {
  Machine machine(kNotebook);
  machine.Config("PM:800x600", "Support This Mode", 3);
  Host host(machine);
  EXPECT_EQ(host.Read("SupportPM800x600"), 3u);
  machine.Config("PM:800x600", "Support This Mode", 4);
  EXPECT_EQ(host.Read("SupportPM800x600Mode"), 3u);
}

TEST(Config, RetryDelayTimeIsReadAtEachUse) {
  Machine machine(kNotebook);
  Host host(machine);
  EXPECT_EQ(host.box().RetryDelayTime(), 3000u);
  machine.Config("Settings", "Retry Delay Time", 10);
  EXPECT_EQ(host.box().RetryDelayTime(), 10u);
  machine.Config("Settings", "Retry Delay Time", 20);
  EXPECT_EQ(host.box().RetryDelayTime(), 20u);
}

// Section, key and default of the numbers that are read at each use.
TEST(Config, UncachedNumbersAreReadAtEachUse) {
  struct Row {
    const char* section;
    const char* key;
    uint32_t default_value;
  };
  constexpr Row kUncached[] = {
      {"PM:800x600", "Width", 800},
      {"PM:800x600", "Height", 600},
      {"PM:1024x768", "Width", 1024},
      {"PM:1024x768", "Height", 768},
      {"Single Internal", "Setting Type", 2},
      {"Single External", "Adjust Policy", 0},
      {"Clone", "Width", 1024},
      {"Extend", "Height", 768},
      {"Clone", "Max Width", 0},
      {"Clone", "Max Height", 0},
      {"ExtendMode:2nd", "Width", 1024},
      {"ExtendMode:2nd", "Height", 768},
  };
  Machine machine(kNotebook);
  Host host(machine);
  for (const Row& row : kUncached) {
    const std::string section = row.section;
    const std::string key = row.key;
    const std::wstring wide_section(section.begin(), section.end());
    const std::wstring wide_key(key.begin(), key.end());
    const auto read = [&] {
      return host.box().ReadConfigInt(wide_section.c_str(), wide_key.c_str(), row.default_value);
    };
    EXPECT_EQ(read(), row.default_value) << section << " " << key;
    machine.Config(section, key, 11);
    EXPECT_EQ(read(), 11u) << section << " " << key;
    machine.Config(section, key, 12);
    EXPECT_EQ(read(), 12u) << section << " " << key;
  }
}

TEST(Config, NamesAreMatchedWithoutRegardToCase) {
  Machine machine(kNotebook);
  machine.Config("settings:INTEL", "hdmi icon USE tv icon", 9);
  Host host(machine);
  EXPECT_EQ(host.Read("HDMIIconUseTVIcon"), 9u);
}

TEST(Config, FileLiesBesideTheHostAndTheNarrowPathIsTheSame) {
  Machine machine(kNotebook);
  Host host(machine);
  EXPECT_EQ(host.box().GetConfigPath(), ConfigPath(machine));
  const std::wstring wide = ConfigPath(machine);
  EXPECT_EQ(host.box().GetConfigPathNarrow(), std::string(wide.begin(), wide.end()));
  EXPECT_EQ(&host.box().GetConfigPath(), &host.box().GetConfigPath());  // built once
  std::wstring folder;
  EXPECT_TRUE(host.box().GetHostFolder(&folder));
  EXPECT_EQ(folder, machine.HostFolder());
}

TEST(Config, SectionOfAModeIsChosenByModeAndDisplays) {
  Machine machine(kNotebook);
  Host host(machine);
  std::wstring section;
  EXPECT_TRUE(host.box().GetModeSection(1, 0x40, &section));
  EXPECT_EQ(section, L"Single Internal");
  EXPECT_TRUE(host.box().GetModeSection(1024, 0x03, &section));
  EXPECT_EQ(section, L"Settings");
}

// --- Files that are none.

void ExpectDefaults(Machine& machine) {
  Host host(machine);
  for (const KeyRow& row : kRows)
    EXPECT_EQ(host.Read(row.accessor), row.default_value) << row.accessor;
  EXPECT_EQ(host.box().RetryDelayTime(), 3000u);
}

TEST(Config, DirectoryInsteadOfTheFileGivesDefaults) {
  Machine machine(kNotebook);
  CreateDirectoryW(ConfigPath(machine).c_str(), nullptr);
  ExpectDefaults(machine);
}

TEST(Config, EmptyFileGivesDefaults) {
  Machine machine(kNotebook);
  WriteFileText(ConfigPath(machine), "");
  ExpectDefaults(machine);
}

TEST(Config, BinaryFileGivesDefaults) {
  Machine machine(kNotebook);
  std::string bytes;
  uint32_t state = 12345;
  for (int i = 0; i < 100000; ++i) {
    state = state * 1664525 + 1013904223;
    bytes += static_cast<char>(state >> 24);
  }
  WriteFileText(ConfigPath(machine), bytes);
  ExpectDefaults(machine);
}

TEST(Config, TenMegabytesAreRead) {
  Machine machine(kNotebook);
  std::string text = "[Other]\n";
  const std::string line = "; " + std::string(1000, 'x') + "\n";
  while (text.size() < size_t{10} * 1024 * 1024) text += line;
  text += "[Settings]\nDisable In Extend Mode=7\n";
  WriteFileText(ConfigPath(machine), text);
  Host host(machine);
  EXPECT_EQ(host.Read("DisableInExtendMode"), 7u);
  EXPECT_EQ(host.Read("AssurePrimaryDisplayIsNotebook"), 1u);
}

TEST(Config, ValueThatIsNoNumberIsOff) {
  Machine machine(kNotebook);
  machine.Config("Settings", "Disable In Extend Mode", std::string("yes"));
  Host host(machine);
  EXPECT_EQ(host.Read("DisableInExtendMode"), 0u);
}

}  // namespace
