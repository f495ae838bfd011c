// The names under which the control panel's command finds a display.
#include "tests/behaviour/NvidiaPanelHost.h"

#include <cstring>

namespace {

constexpr char kPair[] = "xp nvidia: internal 1280x800 active, crt 1280x1024";

constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kTv = IMMonitor::MD_TV;
constexpr uint32_t kDvi = IMMonitor::MD_DVI;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;
constexpr uint32_t kDp = IMMonitor::MD_DP;

constexpr char kNoMoniker[] =
    "Check failed: it != moniker_map.end(). Cannot find display moniker from connected displays\n";
constexpr char kNoDfp[] = "Check failed: CountBits(dfp_display) > 0. \n";
constexpr char kNoDfpMoniker[] =
    "Check failed: it != moniker_map.end(). Should always contains HDMI moniker.\n";
constexpr char kUnknownType[] = "Check failed: false. Unknown NvCpl display type.\n";
constexpr char kNoMark[] =
    "Check failed: t.token().find_first_of('#') == 0. A valid raw moniker must lead with '#' "
    "character\n";

class NvidiaMonikers : public testing::Test {
 protected:
  void On(const std::string& text) {
    host.reset();  // one machine at a time
    host = std::make_unique<NvidiaPanelHost>(text, kChecks);
  }
  std::string Single(uint32_t display) { return host->Switch(IMMonitor::DM_SINGLE, display); }
  std::string Clone(uint32_t other) { return host->Switch(IMMonitor::DM_CLONE, kNb | other); }
  void Name(const std::string& connector, const std::string& moniker) {
    host->connector(connector).nvidia_moniker = moniker;
  }
  void SetType(const std::string& connector, uint32_t display_type) {
    host->connector(connector).nvidia_display_type = display_type;
  }

  static constexpr wchar_t kChecks[] = L"--enable-dcheck";
  std::unique_ptr<NvidiaPanelHost> host;
};

// --- Which display is whose.

TEST_F(NvidiaMonikers, TypesOfTheLibraryDecide) {
  On(kPair);
  const struct {
    uint32_t type;
    uint32_t display;
  } rows[] = {{0x1000, kCrt}, {0x2000, kDvi}, {0x2001, kNb}, {0x2002, kHdmi}, {0x3000, kTv}};
  SetType("internal", 0x3001);  // of no kind, so that each row stands alone
  for (const auto& row : rows) {
    SetType("crt", row.type);
    EXPECT_EQ(Single(row.display), Shown("standard AA") + "1") << row.type;
    EXPECT_EQ(Single(0x3F & ~row.display), "0") << row.type;
  }
}

TEST_F(NvidiaMonikers, OtherTypesAreNoDisplayAndACheck) {
  for (const uint32_t type : {0u, 0x1001u, 0x2003u, 0x3001u, 0xFFFFFFFFu}) {
    On(kPair);
    SetType("crt", type);
    EXPECT_EQ(Single(kCrt), "0") << type;
    EXPECT_EQ(host->TakeLog(), std::string(kUnknownType) + kNoMoniker) << type;
    EXPECT_EQ(Single(kNb), Shown("standard DA") + "1") << type;
  }
}

TEST_F(NvidiaMonikers, OfTwoWithOneTypeTheLaterOneHasTheDisplay) {
  On("xp nvidia: internal 1280x800 active, dvi 800x600, dvi2 1024x768");
  EXPECT_EQ(Single(kDvi), Shown("standard DC") + "1");
  EXPECT_EQ(host->machine.Topology(), "single dvi2");
}

TEST_F(NvidiaMonikers, HdmiPlugReadAsDviIsNamedAsHdmi) {
  On("xp nvidia: internal 1280x800 active, hdmi 1920x1080");
  host->connector("hdmi").nvidia_connector_type = 23;
  EXPECT_EQ(host->Connected(), "9 (2)");
  EXPECT_EQ(Clone(kDvi), "0");
  EXPECT_EQ(host->TakeLog(), kNoMoniker);
  EXPECT_EQ(Clone(kHdmi), Shown("clone DA DB") + "1");
}

TEST_F(NvidiaMonikers, ThatFailToBeReadAreTold) {
  On(kPair);
  host->nvidia();
  host->machine.Fail("NvGetDisplayInfo", 1);
  EXPECT_EQ(Clone(kCrt), "0");
  EXPECT_EQ(host->TakeLogWithSeverity(),
            "ERROR Calling NvGetDisplayInfo() failed\nERROR_REPORT " + std::string(kNoMoniker));
}

TEST_F(NvidiaMonikers, FailureOfOneLeavesTheOthers) {
  On(kPair);
  host->nvidia();
  host->machine.Fail("NvGetDisplayInfo", 1);
  EXPECT_EQ(Single(kCrt), Shown("standard AA") + "1");
  EXPECT_EQ(host->TakeLog(), "Calling NvGetDisplayInfo() failed\n");
  host->machine.Fail("NvGetDisplayInfo", 2);
  EXPECT_EQ(Single(kNb), Shown("standard DA") + "1");
}

// --- The record.

uint8_t g_record[2048];
std::string g_moniker;
BOOL WINAPI DisplayInfoThatNotes(const char* moniker, void* record) {
  g_moniker = moniker;
  std::memcpy(g_record, record, sizeof g_record);
  const uint32_t panel = 0x2001;
  std::memcpy(static_cast<uint8_t*>(record) + 1644, &panel, sizeof panel);
  return 2;  // any truth
}

TEST_F(NvidiaMonikers, RecordAsksByItsOffsets) {
  On(kPair);
  host->machine.Unplug("crt");
  host->Replace("NvGetDisplayInfo", DisplayInfoThatNotes);
  EXPECT_EQ(Single(kNb), Shown("standard DA") + "1");
  EXPECT_EQ(g_moniker, "#DA");
  uint8_t expected[2048] = {};
  const uint32_t words[][2] = {{0, 2048}, {4, 4096}, {12, 12}};
  for (const auto& word : words) std::memcpy(&expected[word[0]], &word[1], 4);
  EXPECT_EQ(std::memcmp(g_record, expected, sizeof expected), 0);
}

// --- The text.

TEST_F(NvidiaMonikers, EmptyTextIsACheck) {
  On(kPair);
  host->nvidia();
  host->machine.Fail("NvCplGetRealConnectedDevicesString", 1);
  EXPECT_EQ(Single(kNb), "0");
  EXPECT_EQ(host->TakeLog(), "Check failed: raw_moniker.size() > 0. \n" + std::string(kNoMoniker));
}

TEST_F(NvidiaMonikers, TextIsThatOfTheLastDetection) {
  On(kPair);
  EXPECT_EQ(Single(kCrt), Shown("standard AA") + "1");
  host->machine.Fail("NvCplGetRealConnectedDevicesString", 1);
  EXPECT_EQ(Single(kNb), "0");  // nothing is left of the one before
}

TEST_F(NvidiaMonikers, DetectionIsAskedForAnew) {
  On("xp nvidia: internal 1280x800 active, crt");
  host->nvidia().DetectDisplays();
  sim::Monitor monitor = *host->connector("internal").monitor;
  host->machine.Plug("crt", monitor);
  EXPECT_EQ(Clone(kCrt), Shown("clone DA AA") + "1");
}

TEST_F(NvidiaMonikers, FifthDisplayIsBeyondTheBuffer) {
  On("xp nvidia: internal 1280x800 active, crt 800x600, tv 800x600, dvi 800x600, hdmi 800x600");
  EXPECT_EQ(Clone(kDvi), Shown("clone DA DB") + "1");
  EXPECT_EQ(Clone(kHdmi), "0");
}

BOOL WINAPI TextWithoutEnd(char* text, DWORD size, BOOL) {
  const char full[] = "#DA,#AA,#DB,#DCX";
  std::memcpy(text, full, size);
  return TRUE;
}

std::string g_asked;
BOOL WINAPI DisplayInfoThatCollects(const char* moniker, void*) {
  g_asked += std::string(moniker) + " ";
  return FALSE;
}

TEST_F(NvidiaMonikers, FifteenCharactersAreRead) {
  On(kPair);
  host->Replace("NvCplGetRealConnectedDevicesString", TextWithoutEnd);
  host->Replace("NvGetDisplayInfo", DisplayInfoThatCollects);
  g_asked.clear();
  EXPECT_EQ(Single(kNb), "0");
  EXPECT_EQ(g_asked, "#DA #AA #DB #DC ");
}

TEST_F(NvidiaMonikers, WithoutTheMarkItIsACheckAndAskedAllTheSame) {
  On(kPair);
  Name("internal", "XDA");
  EXPECT_EQ(Single(kNb), Missed("standard DA") + "1");
  EXPECT_EQ(host->TakeLog(), kNoMark);
  Name("internal", "D#A");  // the mark stands elsewhere
  EXPECT_EQ(Single(kNb), Missed("standard #A") + "1");
  EXPECT_EQ(host->TakeLog(), kNoMark);
}

TEST_F(NvidiaMonikers, ShortOnesGiveWhatIsThere) {
  On(kPair);
  Name("internal", "#D");
  EXPECT_EQ(Clone(kCrt), Shown("clone D AA") + "1");
  Name("internal", "#");
  EXPECT_EQ(Clone(kCrt), Missed("clone AA") + "1");
  EXPECT_EQ(Single(kNb), Missed("standard") + "1");
  EXPECT_EQ(host->TakeLog(), "");
}

TEST_F(NvidiaMonikers, LongOnesAreCut) {
  On(kPair);
  Name("internal", "#DAX");
  EXPECT_EQ(Single(kNb), Missed("standard DA") + "1");
}

BOOL WINAPI TextOfCommas(char* text, DWORD, BOOL) {
  std::strcpy(text, ",,#AA,");
  return TRUE;
}

TEST_F(NvidiaMonikers, NothingBetweenCommasIsNoToken) {
  On(kPair);
  host->Replace("NvCplGetRealConnectedDevicesString", TextOfCommas);
  EXPECT_EQ(Single(kCrt), Shown("standard AA") + "1");
  EXPECT_EQ(host->TakeLog(), "");
}

// --- DisplayPort, which the library knows under the names of the digital displays.

TEST_F(NvidiaMonikers, DisplayPortAloneHasTheNameOfDvi) {
  On("xp nvidia: internal 1280x800 active, dp 1920x1080");
  EXPECT_EQ(host->Connected(), "33 (2)");
  EXPECT_EQ(Clone(kDp), Shown("clone DA DB") + "1");
  EXPECT_EQ(host->machine.Topology(), "clone internal+dp");
  EXPECT_EQ(host->TakeLog(), "");
}

TEST_F(NvidiaMonikers, DisplayPortAloneHasTheNameOfHdmiWithoutDvi) {
  On("xp nvidia: internal 1280x800 active, dp 1920x1080");
  SetType("dp", 0x2002);
  EXPECT_EQ(Single(kDp), Shown("standard DB") + "1");
}

TEST_F(NvidiaMonikers, DisplayPortPrefersDviToHdmi) {
  On("xp nvidia: internal 1280x800 active, hdmi 1920x1080, dp 1920x1080");
  EXPECT_EQ(host->Connected(), "49 (3)");  // DVI is no connected display here, so nothing is shared
  Name("hdmi", "#DX");
  EXPECT_EQ(Single(kDp), Shown("standard DC") + "1");
  EXPECT_EQ(Single(kHdmi), Shown("standard DX") + "1");
}

TEST_F(NvidiaMonikers, PortSharedWithDviForcesBothNames) {
  On("xp nvidia: internal 1280x800 active, dvi 1280x1024, dp 1920x1080");
  Name("dvi", "#DX");
  Name("dp", "#DY");
  EXPECT_EQ(Single(kDvi), Missed("standard DB") + "1");
  EXPECT_EQ(Single(kDp), Missed("standard DC") + "1");
  EXPECT_EQ(Clone(kDp), Missed("clone DA DC") + "1");
  EXPECT_EQ(host->TakeLog(), "");
}

TEST_F(NvidiaMonikers, PortSharedWithHdmiForcesBothNames) {
  On("xp nvidia: internal 1280x800 active, hdmi 1280x1024, dp 1920x1080");
  SetType("dp", 0x2002);
  Name("hdmi", "#DX");
  Name("dp", "#DY");
  EXPECT_EQ(Single(kHdmi), Missed("standard DB") + "1");
  EXPECT_EQ(Single(kDp), Missed("standard DC") + "1");
}

TEST_F(NvidiaMonikers, WithoutDigitalOnesTheLastTokenStandsIn) {
  On("xp nvidia: internal 1280x800 active, tv 800x600, dp 1920x1080");
  SetType("dp", 0x1000);  // the last token is a CRT's, and no CRT is connected
  Name("dp", "#DY");
  EXPECT_EQ(Single(kDp), Shown("standard DY") + "1");
  EXPECT_EQ(host->TakeLog(), "");
}

TEST_F(NvidiaMonikers, ConnectedLastTokenMakesTheSharedPort) {
  On("xp nvidia: internal 1280x800 active, dp 1920x1080, crt 800x600");
  SetType("dp", 0x3000);
  Name("crt", "#AX");
  EXPECT_EQ(Single(kCrt), Shown("standard DB") + "1");
  EXPECT_EQ(host->machine.Topology(), "single dp");  // which the name happens to be
  EXPECT_EQ(Single(kDp), Missed("standard DC") + "1");
}

TEST_F(NvidiaMonikers, LastTokenThatFailedDoesNotStandIn) {
  On("xp nvidia: internal 1280x800 active, tv 800x600, dp 1920x1080");
  Name("dp", "#DY");
  host->nvidia();
  host->machine.Fail("NvGetDisplayInfo", 3);
  EXPECT_EQ(Single(kTv), Missed("standard DB") + "1");  // the television, read last, is connected
}

TEST_F(NvidiaMonikers, DisplayPortWithoutAnyTokenIsThreeChecks) {
  On("xp nvidia: internal 1280x800 active, dp 1920x1080");
  host->nvidia();
  host->machine.Fail("NvCplGetRealConnectedDevicesString", 1);
  EXPECT_EQ(Single(kDp), "0");
  EXPECT_EQ(host->TakeLog(), "Check failed: raw_moniker.size() > 0. \n" + std::string(kNoDfp) +
                                 kNoDfpMoniker + kNoMoniker);
}

TEST_F(NvidiaMonikers, UnknownLastTokenLendsItsNameBehindACheck) {
  On("xp nvidia: internal 1280x800 active, dp 1920x1080");
  SetType("dp", 0x3001);
  EXPECT_EQ(Single(kDp), Shown("standard DB") + "1");
  EXPECT_EQ(host->TakeLog(), std::string(kUnknownType) + kNoDfp);
}

TEST_F(NvidiaMonikers, WithoutDisplayPortNothingIsForced) {
  On("xp nvidia: internal 1280x800 active, dvi 1280x1024, dp");
  Name("dvi", "#DX");
  EXPECT_EQ(Single(kDvi), Shown("standard DX") + "1");
  EXPECT_EQ(Single(kDp), "0");
}

}  // namespace
