// Whole switches over an Ostrel.ini that cannot be used: the defaults hold, nothing is written
// elsewhere.
#include <sstream>

#include "tests/behaviour/PolicyTest.h"

namespace {

using policy_test::Changed;
using policy_test::DesktopOf;
using settings_file::Bytes;
using settings_file::Five;
using settings_file::PathOf;
using settings_file::Put;
using settings_file::Section;

class BadSettings : public policy_test::PolicyTest {
 protected:
  BadSettings() : PolicyTest("vista intel: internal 1366x768 active, crt 1024x768") {}
  void SetUp() override {
    bench.script->follows = true;
    bench.machine.Config("Clone", "Setting Type", 1);
  }

  /// One press further than the panel alone, at which the list begins: to the clone.
  void SwitchToClone() {
    ASSERT_TRUE(bench.Start());
    ASSERT_TRUE(bench.ostrel().Run());
    ASSERT_TRUE(bench.ostrel().Run());
    bench.Calls();
    Journal();
    EXPECT_TRUE(bench.ostrel().Stop());
    EXPECT_EQ(bench.Changes(), "SetNewDisplayMode(2, 0x3)\n");
  }
  /// The changes of the desktop among the journal's lines.
  std::string DesktopChanges() {
    std::string kept;
    std::istringstream lines(Journal());
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind("ChangeDisplay", 0) == 0) kept += line + "\n";
    }
    return kept;
  }
  void ExpectTheDefault() {
    EXPECT_EQ(DesktopChanges(), Changed("1024x768x32@60", "0x5c0000"));
    EXPECT_EQ(DesktopOf(model().sources[0]), "1024x768x32@60");
  }

  /// Every place where Windows might put a profile file that it was given no folder for.
  static std::vector<std::wstring> OtherPlaces() {
    wchar_t folder[MAX_PATH] = {};
    std::vector<std::wstring> places = {L"Ostrel.ini"};
    GetWindowsDirectoryW(folder, MAX_PATH);
    places.push_back(std::wstring(folder) + L"\\Ostrel.ini");
    GetSystemDirectoryW(folder, MAX_PATH);
    places.push_back(std::wstring(folder) + L"\\Ostrel.ini");
    return places;
  }
  void ExpectNothingElsewhere() {
    std::vector<std::wstring> places = OtherPlaces();
    places.push_back(bench.machine.HostFolder() + L"\\Ostrel.ini");
    places.push_back(bench.machine.AppDataFolder() + L"\\Ostrel.ini");
    for (const std::wstring& place : places) {
      EXPECT_EQ(GetFileAttributesW(place.c_str()), INVALID_FILE_ATTRIBUTES)
          << std::string(place.begin(), place.end());
    }
  }
};

TEST_F(BadSettings, ReadOnlyIsReadAndStopsNothing) {
  ASSERT_TRUE(bench.Start());
  const std::string text = Section(SectionOf(2, 3), Five("", 800, 600, 32, 60, 0));
  Put(bench.machine, text);
  ASSERT_TRUE(SetFileAttributesW(PathOf(bench.machine).c_str(), FILE_ATTRIBUTE_READONLY));
  bench.ostrel().DeInit();
  SwitchToClone();
  EXPECT_EQ(DesktopChanges(), Changed("800x600x32@60", "0x180000"));
  // Whoever may write everything (root, under Wine) writes behind what is there.
  EXPECT_EQ(Bytes(bench.machine).substr(0, text.size()), text);
  ExpectNothingElsewhere();
  SetFileAttributesW(PathOf(bench.machine).c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(BadSettings, AFileThatCannotBeWrittenIsReadAndStaysAsItIs) {
  ASSERT_TRUE(bench.Start());
  const std::string text = Section(SectionOf(2, 3), Five("", 800, 600, 32, 60, 0));
  Put(bench.machine, text);
  const HANDLE held = CreateFileW(PathOf(bench.machine).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  bench.ostrel().DeInit();
  SwitchToClone();
  EXPECT_EQ(DesktopChanges(), Changed("800x600x32@60", "0x180000"));
  EXPECT_EQ(ReadFileText(PathOf(bench.machine)), text);
  ExpectNothingElsewhere();
  CloseHandle(held);
}

TEST_F(BadSettings, AFolderInItsPlaceCountsAsNothing) {
  ASSERT_TRUE(CreateDirectoryW(PathOf(bench.machine).c_str(), nullptr));
  SwitchToClone();
  ExpectTheDefault();
  EXPECT_NE(GetFileAttributesW(PathOf(bench.machine).c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0u);
  ExpectNothingElsewhere();
  EXPECT_FALSE(bench.ostrel().FlushRememberedSettings());
}

TEST_F(BadSettings, AFileThatBreaksOffIsReadAsFarAsItGoes) {
  ASSERT_TRUE(bench.Start());
  const std::string whole = Section(SectionOf(2, 3), Five("", 800, 600, 16, 60, 0));
  bench.ostrel().DeInit();
  // Behind the height: depth and frequency take their defaults.
  Put(bench.machine, whole.substr(0, whole.find("Color")));
  SwitchToClone();
  EXPECT_EQ(DesktopChanges(), Changed("800x600x32@60", "0x180000"));
}

TEST_F(BadSettings, AFileThatBreaksOffInTheHeightCountsAsNothing) {
  ASSERT_TRUE(bench.Start());
  const std::string whole = Section(SectionOf(2, 3), Five("", 800, 600, 16, 60, 0));
  bench.ostrel().DeInit();
  Put(bench.machine, whole.substr(0, whole.find("Height") + 3));
  SwitchToClone();
  ExpectTheDefault();
}

TEST_F(BadSettings, EveryLengthOfATruncatedFileGivesWhatIsLeft) {
  ASSERT_TRUE(bench.Start());
  policy().EnsureSettingsPath();
  const std::string name = SectionOf(2, 3);
  const std::string whole = Section(name, Five("", 800, 600, 16, 60, 0));
  for (size_t length = 0; length <= whole.size(); ++length) {
    Put(bench.machine, whole.substr(0, length));
    RememberedDisplay out;
    const bool known = policy().ReadRememberedDisplay(name, 0x01, &out);
    // Known from the first digit of the height on.
    EXPECT_EQ(known, length > whole.find("Height=") + 7) << length;
    EXPECT_TRUE(out.width == 0 || out.width == 8 || out.width == 80 || out.width == 800) << length;
    EXPECT_TRUE(out.height == 0 || out.height == 6 || out.height == 60 || out.height == 600)
        << length;
  }
}

TEST_F(BadSettings, TenMegabytesAreRead) {
  ASSERT_TRUE(bench.Start());
  std::string text = "[filling]\r\n";
  while (text.size() < 10 * 1024 * 1024) text += "Key=0123456789012345678901234567890123456789\r\n";
  text += Section(SectionOf(2, 3), Five("", 800, 600, 32, 60, 0));
  bench.ostrel().DeInit();
  Put(bench.machine, text);
  SwitchToClone();
  EXPECT_EQ(DesktopChanges(), Changed("800x600x32@60", "0x180000"));
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Display Mode"), "2");
}

TEST_F(BadSettings, TenMegabytesOfOneLineOrOfNothingCountAsNothing) {
  Put(bench.machine, "[2,3", 10 * 1024 * 1024);
  SwitchToClone();
  ExpectTheDefault();
}

TEST_F(BadSettings, ATemporaryFolderThatDoesNotExistIsNotMade) {
  ASSERT_TRUE(RemoveDirectoryW(bench.machine.TempFolder().c_str()));
  SwitchToClone();
  ExpectTheDefault();
  EXPECT_EQ(GetFileAttributesW(bench.machine.TempFolder().c_str()), INVALID_FILE_ATTRIBUTES);
  ExpectNothingElsewhere();
  EXPECT_FALSE(bench.ostrel().FlushRememberedSettings());
  CreateDirectoryW(bench.machine.TempFolder().c_str(), nullptr);
}

TEST_F(BadSettings, WithoutATemporaryFolderNothingIsWrittenAnywhere) {
  bench.Load();
  bench.machine.Fail("GetTempPathA", 1, ERROR_PATH_NOT_FOUND, sim::Machine::Repeat::kFromThenOn);
  ASSERT_TRUE(bench.Ready(new FakeMonitor(bench.script), static_cast<uint16_t>(kVendorIntel)));
  ASSERT_TRUE(bench.ostrel().Run());
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_TRUE(bench.ostrel().Stop());
  ExpectTheDefault();
  EXPECT_EQ(policy().SettingsPath(), "");
  EXPECT_EQ(Bytes(bench.machine), "");
  EXPECT_FALSE(bench.ostrel().FlushRememberedSettings());
  ExpectNothingElsewhere();
}

TEST_F(BadSettings, TheFolderIsAskedForAgainAfterAFailure) {
  ASSERT_TRUE(bench.Start());
  bench.machine.Fail("GetTempPathA", 1, ERROR_PATH_NOT_FOUND);
  policy().EnsureSettingsPath();
  EXPECT_EQ(policy().SettingsPath(), "");
  EXPECT_EQ(policy().ReadActivePresentationType(), 0u);
  policy().EnsureSettingsPath();
  EXPECT_NE(policy().SettingsPath(), "");
}

// --- Values.

TEST_F(BadSettings, ValuesReadAsWindowsReadsThem) {
  ASSERT_TRUE(bench.Start());
  policy().EnsureSettingsPath();
  const struct {
    const char* text;
    uint32_t value;
  } rows[] = {
      {"1024", 1024},
      {"-1", 0xFFFFFFFF},
      {"-1024", 0xFFFFFC00},
      {"4294967295", 0xFFFFFFFF},
      {"2147483648", 0x80000000},
      {"abc", 0},
      {"12abc", 12},
      {"  7", 7},
      {"", 0},
  };
  for (const auto& row : rows) {
    Put(bench.machine, std::string("[s]\r\nWidth=") + row.text + "\r\nHeight=1\r\n");
    RememberedDisplay out;
    policy().ReadRememberedDisplay("s", 0x01, &out);
    EXPECT_EQ(out.width, row.value) << row.text;
  }
}

TEST_F(BadSettings, ValuesBeyondAnyNumberReadAsWindowsReadsThem) {
  ASSERT_TRUE(bench.Start());
  policy().EnsureSettingsPath();
  const std::wstring wide = PathOf(bench.machine);
  const std::string path(wide.begin(), wide.end());
  for (const char* text : {"99999999999999999999", "-99999999999999999999", "1e9", "0x400", "+5",
                           "1,024", "\"800\"", "8 00"}) {
    Put(bench.machine, std::string("[s]\r\nWidth=") + text + "\r\nHeight=1\r\n");
    RememberedDisplay out;
    policy().ReadRememberedDisplay("s", 0x01, &out);
    EXPECT_EQ(out.width, GetPrivateProfileIntA("s", "Width", 0, path.c_str())) << text;
  }
}

TEST_F(BadSettings, SizesThatNoDisplayHasGiveWayToTheFallbackSizes) {
  ASSERT_TRUE(bench.Start());
  const std::string section = SectionOf(2, 3);
  for (const char* size : {"-1", "4294967295", "2147483647", "99999999999999999999", "1"}) {
    model().sources[0].mode = {1366, 768, 32, 60};
    Remember(section, std::string("Width=") + size + "\r\nHeight=" + size + "\r\n");
    policy().RestoreDisplaySettings(IMMonitor::DM_CLONE, 0x03);
    EXPECT_EQ(DesktopOf(model().sources[0]), "1024x768x32@60") << size;
  }
}

TEST_F(BadSettings, SizesThatAreNoNumbersCountAsNothing) {
  ASSERT_TRUE(bench.Start());
  Remember(SectionOf(2, 3), "Width=wide\r\nHeight=high\r\n");
  Journal();
  policy().RestoreDisplaySettings(IMMonitor::DM_CLONE, 0x03);
  ExpectTheDefault();
}

TEST_F(BadSettings, AValueThatIsNoPresentationTypeIsLeftAsItIs) {
  ASSERT_TRUE(bench.Start());
  policy().EnsureSettingsPath();
  for (const char* type : {"-5", "99999999999", "seven", "33"}) {
    Remember("Active Display Mode", std::string("Presentation Mode=") + type + "\r\n");
    ASSERT_TRUE(bench.ostrel().Run());
    EXPECT_EQ(bench.Flags(), "1000") << type;
    EXPECT_EQ(bench.Remembered("Active Display Mode", "Presentation Mode"), type);
    bench.ostrel().Cancel();
  }
}

}  // namespace
