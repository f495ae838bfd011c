// EDIDs through ADLImpl.
#include "sim/faces/AmdAdl.h"
#include "tests/behaviour/ADLImplHost.h"

#include <cstring>

namespace {

constexpr char kInfoGet[] = "ADL_Display_DisplayInfo_Get";
constexpr char kEdidGet[] = "ADL_Display_EdidData_Get";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;

class ADLImplEdid : public testing::Test {
 protected:
  void On(const char* text) {
    host_.reset();
    host_ = std::make_unique<AdlHost>(text);
    host_->Forget();
  }
  std::vector<uint8_t> Read(uint32_t display) {
    EdidBlob edid;
    if (!host_->extension().GetEDID(display, &edid)) return {};
    const auto* const bytes = static_cast<const uint8_t*>(edid.pv);
    std::vector<uint8_t> block(bytes, bytes + edid.cb);
    host_->extension().FreeEDID(&edid);
    return block;
  }
  /// What the display is asked for, as the library sees it.
  std::string Asked(uint32_t display) {
    const std::string calls = host_->Calls([&] { Read(display); });
    return calls.substr(calls.find(kEdidGet));
  }
  const std::vector<uint8_t>& EdidOf(size_t connector) {
    return host_->model().connectors[connector].monitor->edid;
  }

  std::unique_ptr<AdlHost> host_;
};

TEST_F(ADLImplEdid, IsThatOfTheDisplay) {
  On(kAdlTwo);
  EXPECT_EQ(Read(kNb), EdidOf(0));
  EXPECT_EQ(Read(kCrt), EdidOf(1));
  EXPECT_NE(EdidOf(0), EdidOf(1));
  EXPECT_EQ(host_->Calls([&] { Read(kNb); }),
            "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n"
            "ADL_Display_EdidData_Get(adapter=0 display=1)=0\n");
  EXPECT_EQ(host_->Held(), "ADL session\n");
}

TEST_F(ADLImplEdid, ListForItIsItsOwn) {
  On(kAdlTwo);
  host_->Ready();
  Read(kCrt);
  EXPECT_EQ(host_->Held(), "ADL buffer\nADL session\n");  // that of the connected displays stays
}

TEST_F(ADLImplEdid, LastEntryOfTheTypeIsTaken) {
  On("win7 amd: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080, crt2 800x600, dp "
     "1024x768");
  EXPECT_EQ(Read(kCrt), EdidOf(3));
  for (const uint32_t display : {IMMonitor::MD_DVI, IMMonitor::MD_HDMI, IMMonitor::MD_DP}) {
    EXPECT_EQ(Read(display), EdidOf(4)) << display;
  }
}

TEST_F(ADLImplEdid, BitsAreTestedInOrder) {
  On("win7 amd: crt 1280x1024, hdmi 1920x1080, internal 1366x768 active");
  EXPECT_EQ(Read(kNb | kCrt | IMMonitor::MD_HDMI), EdidOf(2));
  EXPECT_EQ(Read(kCrt | IMMonitor::MD_HDMI), EdidOf(0));
  EXPECT_EQ(Read(IMMonitor::MD_TV | IMMonitor::MD_DP), EdidOf(1));
}

TEST_F(ADLImplEdid, WhatIsNotThereIsDisplayZero) {
  On("win7 amd: internal 1366x768 active, tv 800x600, dp");
  for (const uint32_t display : {uint32_t{IMMonitor::MD_TV}, kCrt, 0u, 0x40u}) {
    EXPECT_EQ(Asked(display), "ADL_Display_EdidData_Get(adapter=0 display=0)=0\n") << display;
  }
}

TEST_F(ADLImplEdid, ListIsReadAgainAfterAReload) {
  On(kAdlTwo);
  host_->machine.Fail(kInfoGet, 1, AdlResultCode(1));
  EXPECT_EQ(host_->Calls([&] { EXPECT_EQ(Read(kNb), EdidOf(0)); }),
            "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=1\n" + AdlReloadText() +
                "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n"
                "ADL_Display_EdidData_Get(adapter=0 display=1)=0\n");
  EXPECT_EQ(host_->TakeLogWithSeverity(), kAdlActiveLine);
}

TEST_F(ADLImplEdid, WithoutAListItIsDisplayZerosAndLogged) {
  On(kAdlTwo);
  host_->machine.Fail(kInfoGet, 1, AdlResultCode(-1));
  host_->machine.Fail(kInfoGet, 2, AdlResultCode(-2));
  EXPECT_EQ(Read(kNb), EdidOf(1));  // display 0 is the CRT
  EXPECT_EQ(host_->TakeLogWithSeverity(),
            std::string(kAdlActiveLine) +
                "ERROR Call to ADL_Display_DisplayInfo_Get() failed, rv = -2\n");
}

TEST_F(ADLImplEdid, FailedReadIsTriedAgainAfterAReload) {
  for (const int32_t first : {-1, 2}) {
    On(kAdlTwo);
    host_->machine.Fail(kEdidGet, 1, AdlResultCode(first));
    EXPECT_EQ(host_->Calls([&] { EXPECT_EQ(Read(kNb), EdidOf(0)); }),
              "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n"
              "ADL_Display_EdidData_Get(adapter=0 display=1)=" +
                  std::to_string(first) + "\n" + AdlReloadText() +
                  "ADL_Display_EdidData_Get(adapter=0 display=1)=0\n");
    EXPECT_EQ(host_->TakeLogWithSeverity(), kAdlActiveLine);
  }
}

TEST_F(ADLImplEdid, SecondFailureFailsAndIsLogged) {
  On(kAdlTwo);
  host_->machine.Fail(kEdidGet, 1, AdlResultCode(-1));
  host_->machine.Fail(kEdidGet, 2, AdlResultCode(3));
  EdidBlob edid;
  EXPECT_FALSE(host_->extension().GetEDID(kNb, &edid));
  EXPECT_EQ(edid.pv, nullptr);
  EXPECT_EQ(edid.cb, 0u);
  EXPECT_EQ(
      host_->TakeLogWithSeverity(),
      std::string(kAdlActiveLine) + "ERROR Call to ADL_Display_EdidData_Get() failed, rv = 3\n");
  EXPECT_EQ(host_->Held(), "ADL session\n");
}

// --- The record.

std::vector<std::vector<uint8_t>> g_records;
int FailOnceWithRubbish(int, int, uint8_t* data) {
  g_records.emplace_back(data, data + 288);
  std::memset(data, 0xCD, 288);
  return g_records.size() == 1 ? -1 : 1;
}

TEST_F(ADLImplEdid, RecordIsZeroButForItsSizeAtBothAttempts) {
  g_records.clear();
  host_ = std::make_unique<AdlHost>(kAdlTwo);
  ReplaceAdlEntry(&host_->machine, kEdidGet, sim::Erase(FailOnceWithRubbish));
  host_->Forget();
  EXPECT_TRUE(Read(kNb).empty());
  std::vector<uint8_t> record(288, 0);
  record[0] = 0x20;
  record[1] = 0x01;
  EXPECT_EQ(g_records, (std::vector<std::vector<uint8_t>>{record, record}));
}

TEST_F(ADLImplEdid, LongBlocksComeWhole) {
  On(kAdlTwo);
  std::vector<uint8_t>& edid = host_->model().connectors[0].monitor->edid;
  edid.resize(256, 0x5A);
  EXPECT_EQ(Read(kNb), EdidOf(0));
}

TEST_F(ADLImplEdid, SizeBeyondTheRecordIsZeroesBehindIt) {
  On(kAdlTwo);
  sim::SetAmdAnswer(host_->machine, kEdidGet, 300);
  std::vector<uint8_t>& edid = host_->model().connectors[0].monitor->edid;
  edid.resize(256, 0x5A);
  std::vector<uint8_t> expected = edid;
  expected.resize(300, 0);
  EXPECT_EQ(Read(kNb), expected);
}

TEST_F(ADLImplEdid, SizeOfNothingIsAnEmptyBlock) {
  On(kAdlTwo);
  sim::SetAmdAnswer(host_->machine, kEdidGet, 0);
  EdidBlob edid;
  EXPECT_TRUE(host_->extension().GetEDID(kNb, &edid));
  EXPECT_EQ(edid.cb, 0u);
  EXPECT_NE(edid.pv, nullptr);
  host_->extension().FreeEDID(&edid);
}

TEST_F(ADLImplEdid, NegativeSizeFails) {
  On(kAdlTwo);
  sim::SetAmdAnswer(host_->machine, kEdidGet, AdlResultCode(-1));
  EdidBlob edid;
  EXPECT_FALSE(host_->extension().GetEDID(kNb, &edid));
  EXPECT_EQ(edid.pv, nullptr);
}

// A block that the ledger knows stands in for one of the back-end's own.
TEST_F(ADLImplEdid, FreeingGivesTheBlockBackAndNothingElse) {
  On(kAdlTwo);
  EdidBlob edid;
  edid.pv = sim::NewAdlArray(1, 128);
  edid.cb = 128;
  EdidBlob nothing;
  host_->extension().FreeEDID(&nothing);
  host_->extension().FreeEDID(nullptr);
  EXPECT_EQ(host_->Held(), "ADL buffer\nADL session\n");
  host_->extension().FreeEDID(&edid);
  EXPECT_EQ(host_->Held(), "ADL session\n");
}

}  // namespace
