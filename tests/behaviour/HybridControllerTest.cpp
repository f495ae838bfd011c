// The controller of two adapters: its life, and the questions that belong to one adapter each.
#include <gtest/gtest.h>

#include "tests/behaviour/HybridHost.h"

namespace {

// --- Life.

TEST(HybridController, InitialisesIntelThenNvidiaThenWindows) {
  HybridHost host;
  IMMonitor& hybrid = host.hybrid();
  EXPECT_EQ(hybrid.Initial(), 1);
  EXPECT_EQ(host.Told(), "intel Initial\nnvidia Initial\nccd Initial\n");
}

TEST(HybridController, WindowsFailureIsNoFailure) {
  HybridHost host;
  host.ccd->initial = 0;
  EXPECT_EQ(host.hybrid().Initial(), 1);
  EXPECT_TRUE(host.extension().InitialExtension());
  EXPECT_EQ(host.Told(), "intel Initial\nnvidia Initial\nccd Initial\n");  // ready all the same
}

TEST(HybridController, VendorsFailureEndsInitial) {
  HybridHost host;
  host.intel->initial = 0;
  EXPECT_EQ(host.hybrid().Initial(), 0);
  EXPECT_EQ(host.Told(), "intel Initial\n");
  host.intel->initial = 1;
  host.nvidia->initial = 0;
  EXPECT_EQ(host.hybrid().Initial(), 0);
  EXPECT_EQ(host.Told(), "intel Initial\nnvidia Initial\n");
}

TEST(HybridController, InitialMayBeCalledAgain) {
  HybridHost host;
  host.hybrid().Initial();
  host.Told();
  EXPECT_EQ(host.hybrid().Initial(), 1);
  EXPECT_EQ(host.Told(), "intel Initial\nnvidia Initial\nccd Initial\n");
}

TEST(HybridController, ExtensionInitialisesNvidiaThenIntelOnce) {
  HybridHost host(kFour, kChecked);
  IDisplayExtension& extension = host.extension();
  EXPECT_TRUE(extension.InitialExtension());
  EXPECT_EQ(host.Told(), "nvidia Initial\nintel Initial\n");
  EXPECT_TRUE(extension.InitialExtension());
  EXPECT_EQ(host.Told(), "");
}

TEST(HybridController, ReadyControllerHasAReadyExtension) {
  HybridHost host;
  host.hybrid().Initial();
  host.Told();
  EXPECT_TRUE(host.extension().InitialExtension());
  EXPECT_EQ(host.Told(), "");
}

TEST(HybridController, VendorsFailureEndsTheExtensionWithoutACheck) {
  HybridHost host(kFour, kChecked);
  host.hybrid();
  host.Forget();
  host.nvidia->initial = 0;
  EXPECT_FALSE(host.extension().InitialExtension());
  EXPECT_EQ(host.Told(), "nvidia Initial\n");
  host.nvidia->initial = 1;
  host.intel->initial = 0;
  EXPECT_FALSE(host.extension().InitialExtension());
  EXPECT_FALSE(host.extension().InitialExtension());  // not remembered as success
  EXPECT_EQ(host.Told(), "nvidia Initial\nintel Initial\nnvidia Initial\nintel Initial\n");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(HybridController, FailedInitialLeavesItUnready) {
  HybridHost host;
  host.intel->initial = 0;
  host.hybrid().Initial();
  host.intel->initial = 1;
  host.Told();
  EXPECT_TRUE(host.extension().InitialExtension());
  EXPECT_EQ(host.Told(), "nvidia Initial\nintel Initial\n");
}

TEST(HybridController, EndsWindowsThenNvidiaThenIntel) {
  HybridHost host;
  host.hybrid();
  std::string ended;
  host.intel->on_delete = [&ended] { ended += "intel "; };
  host.nvidia->on_delete = [&ended] { ended += "nvidia "; };
  host.ccd->on_delete = [&ended] { ended += "ccd "; };
  host.End();
  EXPECT_EQ(ended, "ccd nvidia intel ");
}

TEST(HybridController, MakesItsOwnWindowsObjectAndLeavesNothing) {
  HybridHost host;
  const std::string before = (host.ostrel(), host.machine.Outstanding());
  IMMonitor& hybrid = host.HybridOverWindows();
  EXPECT_EQ(hybrid.EnableExtendMode(0), 1);
  EXPECT_EQ(host.Told(), "SetDisplayConfig(paths=0 flags=0x81)=0\n");
  host.End();
  EXPECT_EQ(host.machine.Outstanding(), before);
  EXPECT_TRUE(host.intel->deleted);
  EXPECT_TRUE(host.nvidia->deleted);
}

// The first piece of memory is the controller itself, which its maker asks for.
TEST(HybridController, TakesBothObjectsAlsoWhenItThrows) {
  uint32_t thrown = 0;
  for (uint32_t nth = 2;; ++nth) {
    HybridHost host;
    // A record that has no memory is left out, and nothing thrown.
    host.machine.SetEnvironment("OSTREL_LOG_LEVEL", "2");
    auto* const first = new FakeExtensionMonitor(host.intel);
    IMMonitor* const second = host.NewNvidia();
    IMMonitor* made = nullptr;
    const ProjectorBox& memory = *host.ostrel().white_box().projectors;
    memory.RefuseMemory(nth);
    const std::string error = host.box().NewHybridControllerOrThrown(first, second, &made);
    const bool enough = memory.RefuseMemory(0);
    const std::unique_ptr<IMMonitor> owner(made);
    if (enough) break;
    ++thrown;
    EXPECT_NE(error, "") << nth;
    EXPECT_EQ(made, nullptr) << nth;
    EXPECT_TRUE(host.intel->deleted) << nth;
    EXPECT_TRUE(host.nvidia->deleted) << nth;
  }
  EXPECT_GE(thrown, 1u);
}

TEST(HybridController, CountsReferencesFromTheOwners) {
  HybridHost host;
  IDisplayExtension& extension = host.extension();
  EXPECT_EQ(extension.AddRef(), 2u);
  EXPECT_EQ(extension.AddRef(), 3u);
  EXPECT_EQ(extension.Release(), 2u);
  EXPECT_EQ(extension.Release(), 1u);
  EXPECT_FALSE(host.intel->deleted);
}

TEST(HybridController, LastReleaseEndsTheWholeObject) {
  HybridHost host;
  IMMonitor* const hybrid = host.box().NewHybridControllerOver(
      new FakeExtensionMonitor(host.intel), host.NewNvidia(), new FakeCcd(host.ccd, host.sizes));
  EXPECT_EQ(host.box().ExtensionOf(hybrid)->Release(), 0u);
  EXPECT_TRUE(host.intel->deleted && host.nvidia->deleted && host.ccd->deleted);
}

TEST(HybridController, QueryInterfaceIsNeverToBeCalled) {
  HybridHost host(kFour, kChecked);
  IDisplayExtension& extension = host.extension();
  host.Forget();
  void* object = nullptr;
  EXPECT_EQ(static_cast<uint32_t>(extension.QueryInterface(IID_IUnknown, &object)), 0x80004005u);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: 0 && \"Should never call this function\". \n");
}

TEST(HybridController, SaysWhatItIs) {
  HybridHost host("win7 intel*1: internal 1366x768 active");  // one display device
  EXPECT_EQ(host.hybrid().GetVgaVendor(), 0xFFFFu);
  EXPECT_EQ(host.extension().GetExtensionVendor(), 0xFFFFu);
  EXPECT_EQ(host.hybrid().HasDualOutputCapability(), 1);
  EXPECT_EQ(host.hybrid().HasDisplaySwitchingCapability(), 1);
  EXPECT_FALSE(host.extension().SupportsTripleDisplay());
  EXPECT_EQ(host.Told(), "");
}

TEST(HybridController, TripleDisplayIsNotEvenAskedOfIntel) {
  HybridHost host;
  host.intel->triple_display = true;
  EXPECT_FALSE(host.extension().SupportsTripleDisplay());
}

TEST(HybridController, DetectsOnIntelThenOnNvidia) {
  HybridHost host;
  host.hybrid().DetectDisplays();
  EXPECT_EQ(host.Told(), "intel DetectDisplays\nnvidia DetectDisplays\n");
}

TEST(HybridController, ResetsSettingsWhenBothSaySo) {
  const struct {
    BOOL intel;
    BOOL nvidia;
    BOOL result;
    const char* asked;
  } rows[] = {
      {0, 0, 0, "intel"}, {0, 1, 0, "intel"},        {1, 0, 0, "intel nvidia"},
      {1, 1, 1, "both"},  {1, 7, 1, "intel nvidia"},
  };
  for (const auto& row : rows) {
    HybridHost host;
    host.intel->should_reset = row.intel;
    host.nvidia->should_reset = row.nvidia;
    EXPECT_EQ(host.hybrid().ShouldResetDisplaySettingAfterSwtich(), row.result) << row.asked;
    const std::string told = host.Told();
    EXPECT_EQ(CountOf(told, "intel "), 1u);
    EXPECT_EQ(CountOf(told, "nvidia "), row.intel != 0 ? 1u : 0u);
  }
}

// --- The settings of one display.

constexpr uint32_t kAllMasks = 0x80;

std::string OwnerOf(uint32_t mask) {
  if (mask == kNb || mask == kCrt) return "intel";
  if (mask == kDvi || mask == kHdmi || mask == kDp) return "nvidia";
  return "";
}

TEST(HybridDisplaySettings, ComeFromTheAdapterOfTheDisplay) {
  HybridHost host;
  host.intel->settings_result = true;
  host.nvidia->settings_result = true;
  host.intel->settings.dmPelsWidth = 1366;
  host.nvidia->settings.dmPelsWidth = 1920;
  for (uint32_t mask = 0; mask < kAllMasks; ++mask) {
    DEVMODEA dm = {};
    const std::string owner = OwnerOf(mask);
    EXPECT_EQ(host.hybrid().GetDisplaySettings(mask, &dm), !owner.empty()) << mask;
    EXPECT_EQ(host.Told(),
              owner.empty() ? "" : owner + " GetDisplaySettings(0, " + Hex(mask) + ")\n");
    EXPECT_EQ(dm.dmPelsWidth, owner.empty() ? 0u : owner == "intel" ? 1366u : 1920u) << mask;
  }
}

TEST(HybridDisplaySettings, AdaptersRefusalIsTheAnswer) {
  HybridHost host;
  DEVMODEA dm = {};
  EXPECT_FALSE(host.hybrid().GetDisplaySettings(kNb, &dm));
  EXPECT_FALSE(host.hybrid().GetDisplaySettings(kHdmi, &dm));
}

TEST(HybridDisplaySettings, ChecksItsArguments) {
  HybridHost host(kFour, kChecked);
  IMMonitor& hybrid = host.hybrid();
  host.Forget();
  DEVMODEA dm = {};
  EXPECT_FALSE(hybrid.GetDisplaySettings(0, &dm));
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: CountBits(imm_display) == 1. \n");
  EXPECT_FALSE(hybrid.GetDisplaySettings(kNb | kCrt, &dm));
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: CountBits(imm_display) == 1. \n");
  EXPECT_FALSE(hybrid.GetDisplaySettings(kNb, nullptr));
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR_REPORT Check failed: dm != NULL. \n");
  EXPECT_FALSE(hybrid.GetDisplaySettings(kTv, &dm));
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.Told(), "");
}

// --- EDID.

TEST(HybridEdid, IsReadThroughTheAdapterOfTheDisplayAndCopied) {
  HybridHost host;
  host.intel->edid = {1, 2, 3};
  host.nvidia->edid = std::vector<uint8_t>(256, 9);
  for (uint32_t mask = 0; mask < kAllMasks; ++mask) {
    EdidBlob edid;
    const std::string owner = OwnerOf(mask);
    ASSERT_EQ(host.extension().GetEDID(mask, &edid), !owner.empty()) << mask;
    if (owner.empty()) {
      EXPECT_EQ(host.Told(), "") << mask;
      EXPECT_EQ(edid.pv, nullptr) << mask;
      continue;
    }
    EXPECT_EQ(host.Told(), owner + " GetEDID(0, " + Hex(mask) + ")\n" + owner + " FreeEDID\n");
    const std::vector<uint8_t>& bytes = owner == "intel" ? host.intel->edid : host.nvidia->edid;
    const auto* const copy = static_cast<const uint8_t*>(edid.pv);
    EXPECT_EQ(std::vector<uint8_t>(copy, copy + edid.cb), bytes) << mask;
    host.extension().FreeEDID(&edid);
    EXPECT_EQ(host.Told(), "");  // the copy is the controller's own
  }
}

TEST(HybridEdid, UnreadableEdidGivesNothingBack) {
  HybridHost host;
  EdidBlob edid;
  EXPECT_FALSE(host.extension().GetEDID(kNb, &edid));
  EXPECT_FALSE(host.extension().GetEDID(kDp, &edid));
  EXPECT_EQ(host.Told(), "intel GetEDID(0, 0x1)\nnvidia GetEDID(0, 0x20)\n");
  EXPECT_EQ(edid.pv, nullptr);
  EXPECT_EQ(edid.cb, 0u);
}

/// Says that it has read bytes, and hands out none.
class MonitorWithoutBytes : public FakeExtensionMonitor {
 public:
  using FakeExtensionMonitor::FakeExtensionMonitor;
  bool GetEDID(uint32_t /*display*/, EdidBlob* edid) override {
    edid->cb = 128;
    edid->pv = nullptr;
    return true;
  }
};

TEST(HybridEdid, SuccessWithoutBytesIsAFailure) {
  HybridHost host;
  host.HybridOver(new MonitorWithoutBytes(host.intel), host.NewNvidia(), nullptr);
  EdidBlob edid;
  EXPECT_FALSE(host.extension().GetEDID(kCrt, &edid));
  EXPECT_EQ(edid.pv, nullptr);
  EXPECT_EQ(edid.cb, 0u);
}

TEST(HybridEdid, ObjectWithoutTheInterfaceHasNone) {
  HybridHost host;
  host.nvidia->edid = {1};
  host.HybridOver(new FakeMonitor(host.intel), new FakeMonitor(host.nvidia), nullptr);
  EdidBlob edid;
  EXPECT_FALSE(host.extension().GetEDID(kNb, &edid));
  EXPECT_FALSE(host.extension().GetEDID(kHdmi, &edid));
  EXPECT_EQ(host.Told(), "");
}

TEST(HybridEdid, NullOutputIsRefused) {
  HybridHost host;
  host.intel->edid = {1};
  EXPECT_FALSE(host.extension().GetEDID(kNb, nullptr));
}

TEST(HybridEdid, FreeChecksItsArgument) {
  HybridHost host(kFour, kChecked);
  IDisplayExtension& extension = host.extension();
  host.Forget();
  EdidBlob edid;
  extension.FreeEDID(&edid);
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR_REPORT Check failed: edid.pv != NULL. \n");
  extension.FreeEDID(nullptr);
}

TEST(HybridEdid, TemporaryGoesBackWhenMemoryRunsOut) {
  HybridHost host;
  host.intel->edid = std::vector<uint8_t>(128, 1);
  IDisplayExtension& extension = host.extension();
  const ProjectorBox& memory = *host.ostrel().white_box().projectors;
  memory.RefuseMemory(1);
  EdidBlob edid;
  EXPECT_THROW(extension.GetEDID(kNb, &edid), std::bad_alloc);
  EXPECT_FALSE(memory.RefuseMemory(0));
  EXPECT_EQ(host.Told(), "intel GetEDID(0, 0x1)\nintel FreeEDID\n");
  EXPECT_EQ(edid.pv, nullptr);
}

// --- Missing objects.

TEST(HybridController, MissingObjectsRefuse) {
  HybridHost host;
  IMMonitor& hybrid = host.HybridOver(nullptr, nullptr, nullptr);
  uint32_t first = 7;
  uint32_t second = 7;
  DEVMODEA dm = {};
  EdidBlob edid;
  EXPECT_EQ(hybrid.Initial(), 0);
  EXPECT_FALSE(host.extension().InitialExtension());
  EXPECT_EQ(hybrid.GetConnectedDisplays(&first, &second), 1);
  EXPECT_EQ(first, 0u);
  EXPECT_EQ(second, 0u);
  EXPECT_EQ(hybrid.GetActiveDisplays(&first, &second), 0);
  EXPECT_EQ(hybrid.GetCurrentDisplayMode(&first, &second), 0);
  EXPECT_EQ(hybrid.SetNewDisplayMode(IMMonitor::DM_CLONE, kNb | kHdmi), 0);
  EXPECT_EQ(hybrid.SetNewDisplayMode(IMMonitor::DM_SINGLE, kNb), 0);
  EXPECT_EQ(hybrid.EnableExtendModeOnDisplays(1, kHdmi), 0);
  EXPECT_EQ(hybrid.EnableExtendMode(1), 0);
  EXPECT_EQ(hybrid.ChangeToNBOnlySingleDisplayMode(), 0);
  EXPECT_EQ(hybrid.ShouldResetDisplaySettingAfterSwtich(), 0);
  EXPECT_FALSE(hybrid.GetDisplaySettings(kNb, &dm));
  EXPECT_FALSE(hybrid.GetDisplaySettings(kHdmi, &dm));
  EXPECT_FALSE(host.extension().GetEDID(kNb, &edid));
  hybrid.DetectDisplays();
  EXPECT_EQ(host.Told(), "");
}

// The arrangements are Windows' for the most part, which is asked all the same.
TEST(HybridController, MissingObjectsInTheArrangements) {
  HybridHost host;
  IMMonitor& hybrid = host.HybridOver(nullptr, nullptr, nullptr);
  EXPECT_EQ(hybrid.SetNewDisplayMode(IMMonitor::DM_ADVANCED_P1, kNb | kCrt | kHdmi), 1);
  host.Forget();
  // Nobody says what to clone CRT with.
  EXPECT_EQ(host.box().ApplyCloneAcrossAdapters(&hybrid, kNb | kCrt, kNb | kCrt), 0);
  EXPECT_EQ(host.Told(), "");
}

}  // namespace
