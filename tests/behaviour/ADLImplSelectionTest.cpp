// When the display library is the one to use, and what is made when it is not.
#include "tests/behaviour/ADLImplHost.h"

namespace {

constexpr char kLibraryPath[] = "C:\\Windows\\system32\\atiadlxx.dll";

bool Qualifies(AdlHost* host) { return host->box().AdlLibraryQualifies(); }

// --- The version of the file.

TEST(AdlQualifies, FromBuild1050On) {
  const struct {
    const char* version;
    bool answer;
  } rows[] = {
      {"8.14.10.1050", true},
      {"8.14.10.1049", false},
      {"8.14.10.1051", true},
      {"8.14.10.65535", true},
      {"8.14.10.0", false},
      // The numbers in front are not looked at.
      {"0.0.0.1050", true},
      {"99.99.99.1049", false},
      {"7.0.0.1120", true},
  };
  for (const auto& row : rows) {
    AdlHost host(kAdlTwo);
    host.driver().adl_version = row.version;
    EXPECT_EQ(Qualifies(&host), row.answer) << row.version;
  }
}

TEST(AdlQualifies, NotWithoutAVersion) {
  AdlHost host(kAdlTwo);
  host.driver().adl_version = "";
  EXPECT_FALSE(Qualifies(&host));
}

TEST(AdlQualifies, NotWhenTheVersionCannotBeRead) {
  for (const char* function : {"GetFileVersionInfoSizeW", "GetFileVersionInfoW"}) {
    AdlHost failing(kAdlTwo);
    failing.machine.Fail(function, 1);
    EXPECT_FALSE(Qualifies(&failing)) << function;
  }
}

// --- The file.

TEST(AdlQualifies, IsLookedForInTheSystemFolder) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  host.machine.JournalReads(true);
  EXPECT_TRUE(Qualifies(&host));
  host.machine.JournalReads(false);
  const std::string journal = host.machine.TakeJournal();
  EXPECT_EQ(CountOf(journal, "SHGetSpecialFolderPathA(37 window=none create=0)=1\n"), 1u)
      << journal;
  EXPECT_EQ(CountOf(journal, std::string("PathFileExistsA(") + kLibraryPath + ")=1\n"), 1u)
      << journal;
  EXPECT_EQ(CountOf(journal, std::string("GetFileVersionInfoSizeW(") + kLibraryPath), 1u)
      << journal;
  EXPECT_EQ(CountOf(journal, "LoadLibrary"), 0u);
}

TEST(AdlQualifies, WithoutASystemFolderTheUsualOneIsTaken) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  host.machine.Fail("SHGetSpecialFolderPathA", 1);
  host.machine.JournalReads(true);
  EXPECT_TRUE(Qualifies(&host));
  host.machine.JournalReads(false);
  EXPECT_EQ(CountOf(host.machine.TakeJournal(),
                    "PathFileExistsA(C:\\Windows\\System32\\atiadlxx.dll)=1\n"),
            1u);
}

TEST(AdlQualifies, NotWithoutTheFile) {
  AdlHost host(kAdlTwo);
  host.driver().adl_library = false;
  EXPECT_FALSE(Qualifies(&host));
  EXPECT_EQ(host.machine.Calls("GetFileVersionInfoSizeW"), 0u);
}

// --- The Windows.

TEST(AdlQualifies, OnEveryWindowsButXpAndServer2003) {
  const struct {
    uint32_t major;
    uint32_t minor;
    bool answer;
  } rows[] = {{5, 0, true}, {5, 1, false}, {5, 2, false}, {6, 0, true},
              {6, 1, true}, {6, 3, true},  {10, 0, true}, {4, 10, true}};
  for (const auto& row : rows) {
    AdlHost host(kAdlTwo);
    host.model().windows.major = row.major;
    host.model().windows.minor = row.minor;
    EXPECT_EQ(Qualifies(&host), row.answer) << row.major << "." << row.minor;
    EXPECT_EQ(host.machine.Calls("SHGetSpecialFolderPathA"), row.answer ? 1u : 0u);
  }
}

// --- What is made.

struct Made {
  explicit Made(AdlHost* host) : object(host->box().CreateAMDObject()) {
    is_adl = host->box().ExtensionOf(object.get()) != nullptr;
  }
  std::unique_ptr<IMMonitor> object;
  bool is_adl = false;
};

TEST(CreateAMDObject, MakesAReadyADLImpl) {
  AdlHost host(kAdlTwo);
  const Made made(&host);
  ASSERT_TRUE(made.is_adl);
  EXPECT_EQ(host.Calls([&] { EXPECT_TRUE(made.object->Initial()); }), "");
}

TEST(CreateAMDObject, OlderLibraryIsNotTried) {
  AdlHost host(kAdlTwo);
  host.driver().adl_version = "8.14.10.1049";
  const Made made(&host);
  EXPECT_FALSE(made.is_adl);
  ASSERT_NE(made.object, nullptr);
  EXPECT_EQ(made.object->GetVgaVendor(), 0x1002u);
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), 0u);
}

TEST(CreateAMDObject, XpIsNotTried) {
  for (const char* windows : {"xp", "2003"}) {
    AdlHost host(std::string(windows) + " amd: internal 1366x768 active, crt 1280x1024");
    const Made made(&host);
    EXPECT_FALSE(made.is_adl) << windows;
    EXPECT_EQ(host.machine.Calls("ADL_Main_Control_Create"), 0u);
  }
}

TEST(CreateAMDObject, Windows2000IsTried) {
  AdlHost host(kAdlTwo);
  host.model().windows.major = 5;
  host.model().windows.minor = 0;
  EXPECT_TRUE(Made(&host).is_adl);
}

TEST(CreateAMDObject, LibraryThatDoesNotStartIsLetGo) {
  AdlHost host(kAdlTwo);
  host.ostrel();
  const size_t modules = host.Modules();
  sim::SetAmdAnswer(host.machine, "ADL_Display_NumberOfDisplays_Get", 1);
  const Made made(&host);
  EXPECT_FALSE(made.is_adl);
  ASSERT_NE(made.object, nullptr);
  EXPECT_EQ(made.object->GetVgaVendor(), 0x1002u);
  EXPECT_EQ(host.machine.Calls("ADL_Main_Control_Destroy"), 1u);
  EXPECT_EQ(host.Modules(), modules);
  EXPECT_EQ(host.Held(), "");
}

}  // namespace
