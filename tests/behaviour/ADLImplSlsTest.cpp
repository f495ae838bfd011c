// One picture across several displays: how ADLImpl finds it, and the grids for it.
#include "tests/behaviour/ADLImplHost.h"

namespace {

constexpr char kMapGet[] = "ADL_Display_DisplayMapConfig_Get";
constexpr char kIndexGet[] = "ADL_Display_SLSMapIndex_Get";
constexpr char kConfigGet[] = "ADL_Display_SLSMapConfig_Get";
constexpr char kModesGet[] = "ADL_Display_Modes_Get";

constexpr sim::DisplayMode kWide = {2732, 768, 32, 60};
constexpr sim::DisplayMode kCloned = {1280, 720, 32, 60};  // what the clone shows
constexpr sim::DisplayMode kOther = {640, 480, 32, 60};

sim::AmdSlsMap SideBySide(const std::vector<sim::DisplayMode>& native,
                          const std::vector<sim::DisplayMode>& bezel = {},
                          const std::vector<sim::DisplayMode>& transient = {}) {
  return {1, 2, {"internal", "crt"}, native, bezel, transient};
}

// --- What is asked.

TEST(ADLImplSls, OnePictureIsASuccessWithoutModeAndDisplays) {
  AdlHost host(kAdlTwo);
  host.driver().sls_maps = {SideBySide({kWide})};
  host.Forget();
  sim::ShowAmdSls(host.machine, 0, 0);
  uint32_t mode = 0xEE;
  uint32_t displays = 0xEE;
  EXPECT_EQ(host.Calls([&] { EXPECT_TRUE(host.adl().GetCurrentDisplayMode(&mode, &displays)); }),
            "ADL_Display_DisplayMapConfig_Get(adapter=0 option=0)=0\n"
            "ADL_Display_SLSMapIndex_Get(adapter=0 targets=2)=0\n"
            "ADL_Display_SLSMapConfig_Get(adapter=0 map=3 option=2)=0\n"
            "ADL_Display_Modes_Get(adapter=0 display=1)=0\n"
            "ADL_Display_Modes_Get(adapter=0 display=0)=0\n");
  EXPECT_EQ(mode, 0u);
  EXPECT_EQ(displays, 0u);
  EXPECT_EQ(host.Held(), "ADL session\n");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(ADLImplSls, FewerThanTwoTargetsAreNone) {
  AdlHost host(kAdlTwo);
  host.Forget();
  EXPECT_EQ(host.Mode(), "1 0x1");
  EXPECT_EQ(host.machine.Calls(kIndexGet), 0u);
  EXPECT_EQ(host.Held(), "ADL session\n");
}

TEST(ADLImplSls, MapIsReadByPositionAndTheRestByIndex) {
  AdlHost host(kAdlExtended);
  host.driver().adl_indices = {2, 0};
  host.driver().sls_maps = {SideBySide({kOther})};
  host.Forget();
  const std::string calls = host.Calls([&] { EXPECT_EQ(host.Mode(), "4 0x3"); });
  EXPECT_EQ(calls,
            "ADL_Display_DisplayMapConfig_Get(adapter=0 option=0)=0\n"
            "ADL_Display_SLSMapIndex_Get(adapter=2 targets=2)=0\n"
            "ADL_Display_SLSMapConfig_Get(adapter=2 map=3 option=2)=0\n"
            "ADL_Display_Modes_Get(adapter=2 display=1)=0\n"
            "ADL_Display_Modes_Get(adapter=2 display=0)=0\n"
            // The mode behind it goes by index alone.
            "ADL_Display_DisplayInfo_Get(adapter=2 force=1)=0\n"
            "ADL_Display_DisplayInfo_Get(adapter=0 force=1)=0\n"
            "ADL_Display_DisplayMapConfig_Get(adapter=2 option=1)=0\n");
}

TEST(ADLImplSls, NextPositionIsAskedWhenOneDoesNotTell) {
  AdlHost host(kAdlTwo);
  host.driver().sls_maps = {SideBySide({kWide})};
  host.Forget();
  sim::ShowAmdSls(host.machine, 0, 0);
  host.machine.Fail(kMapGet, 1);
  const std::string calls = host.Calls([&] { EXPECT_EQ(host.Mode(), "0 0x0"); });
  const std::string start =
      "ADL_Display_DisplayMapConfig_Get(adapter=0 option=0)=-1\n"
      "ADL_Display_DisplayMapConfig_Get(adapter=1 option=0)=0\n"
      "ADL_Display_SLSMapIndex_Get(adapter=1 targets=2)=0\n";
  EXPECT_EQ(calls.substr(0, start.size()), start);
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(ADLImplSls, WithoutAPositionThatTellsThereIsNone) {
  AdlHost host(kAdlClone);
  host.driver().sls_maps = {SideBySide({kCloned})};
  host.Forget();
  host.machine.Fail(kMapGet, 1);
  host.machine.Fail(kMapGet, 2);
  EXPECT_EQ(host.Mode(), "2 0x3");
  EXPECT_EQ(host.machine.Calls(kIndexGet), 0u);
}

// --- What makes a picture of it: one size in any of three lists.

struct SlsSizes {
  const char* name;
  std::vector<sim::DisplayMode> native;
  std::vector<sim::DisplayMode> bezel;
  std::vector<sim::DisplayMode> transient;
  const char* mode;
};

TEST(ADLImplSls, SizeMayStandInAnyOfTheThreeLists) {
  const sim::DisplayMode same_width = {1280, 480, 32, 60};
  const sim::DisplayMode same_height = {640, 720, 32, 60};
  const SlsSizes rows[] = {
      {"native", {kCloned}, {}, {}, "0 0x0"},
      {"second native", {kOther, kCloned}, {}, {}, "0 0x0"},
      {"bezel", {kOther}, {kOther, kCloned}, {}, "0 0x0"},
      {"transient", {kOther}, {kOther}, {kOther, kCloned}, "0 0x0"},
      {"none", {kOther}, {kOther}, {kOther}, "2 0x3"},
      {"empty", {}, {}, {}, "2 0x3"},
      {"width or height", {same_width}, {same_height}, {same_width, same_height}, "2 0x3"},
  };
  for (const SlsSizes& row : rows) {
    AdlHost host(kAdlClone);
    host.driver().sls_maps = {SideBySide(row.native, row.bezel, row.transient)};
    host.Forget();
    EXPECT_EQ(host.Mode(), row.mode) << row.name;
    EXPECT_EQ(host.Held(), "ADL session\n");
    EXPECT_EQ(host.TakeLog(), "") << row.name;
  }
}

TEST(ADLImplSls, OneDisplayOfSeveralIsEnough) {
  AdlHost host(kAdlExtended);
  host.driver().sls_maps = {SideBySide({{1280, 1024, 32, 60}})};  // the second display's
  EXPECT_EQ(host.Mode(), "0 0x0");
}

int NoModes(int, int, int* count, void** modes) {
  *count = 0;
  *modes = nullptr;
  return 0;
}

TEST(ADLImplSls, DisplayWithoutAModeMarksNothing) {
  AdlHost host(kAdlClone);
  host.driver().sls_maps = {SideBySide({kCloned, {0, 0, 0, 0}})};
  ReplaceAdlEntry(&host.machine, kModesGet, sim::Erase(NoModes));
  EXPECT_EQ(host.Mode(), "2 0x3");
}

// --- Failed calls.

class ADLImplSlsFaults : public testing::Test {
 protected:
  ADLImplSlsFaults() : host_(kAdlClone) {
    host_.driver().sls_maps = {SideBySide({kCloned})};
    host_.Forget();
  }
  /// The mode, and the log.
  std::string Read() {
    const std::string mode = host_.Mode();
    return mode + "\n" + host_.TakeLogWithSeverity();
  }
  AdlHost host_;
};

TEST_F(ADLImplSlsFaults, TargetsWithoutAMap) {
  host_.driver().sls_maps.clear();
  EXPECT_EQ(Read(), "2 0x3\nERROR Calling ADL_Display_SLSMapIndex_Get() failed, rv = -1\n");
  EXPECT_EQ(host_.machine.Calls(kConfigGet), 0u);
}

TEST_F(ADLImplSlsFaults, PositiveResultsAreFailuresToo) {
  host_.machine.Fail(kIndexGet, 1, AdlResultCode(1));
  EXPECT_EQ(Read(), "2 0x3\nERROR Calling ADL_Display_SLSMapIndex_Get() failed, rv = 1\n");
}

TEST_F(ADLImplSlsFaults, MapThatCannotBeRead) {
  host_.machine.Fail(kConfigGet, 1, AdlResultCode(-3));
  EXPECT_EQ(Read(), "2 0x3\nERROR Calling ADL_Display_SLSMapConfig_Get() failed, rv = -3\n");
  EXPECT_EQ(host_.machine.Calls(kModesGet), 0u);
}

TEST_F(ADLImplSlsFaults, GridOfAnotherSizeThanTheTargets) {
  for (const uint32_t rows : {2u, 0u}) {
    host_.driver().sls_maps[0].rows = rows;
    EXPECT_EQ(Read(), "2 0x3\nERROR Calling ADL_Display_SLSMapConfig_Get() failed, rv = 0\n");
    EXPECT_EQ(host_.machine.Calls(kModesGet), 0u);
    EXPECT_EQ(host_.Held(), "ADL session\n");
  }
  host_.driver().sls_maps[0].rows = 2;
  host_.driver().sls_maps[0].columns = 1;
  EXPECT_EQ(Read(), "0 0x0\n");
}

TEST_F(ADLImplSlsFaults, ModesThatCannotBeReadStopTheLoop) {
  host_.machine.Fail(kModesGet, 1, AdlResultCode(-7));
  EXPECT_EQ(Read(), "2 0x3\nERROR Calling ADL_Display_Modes_Get() failed, rv = -7\n");
  EXPECT_EQ(host_.machine.Calls(kModesGet), 1u);
}

TEST_F(ADLImplSlsFaults, TargetMarkedBeforeThatStillCounts) {
  host_.machine.Fail(kModesGet, 2, AdlResultCode(-7));
  EXPECT_EQ(Read(), "0 0x0\nERROR Calling ADL_Display_Modes_Get() failed, rv = -7\n");
  EXPECT_EQ(host_.Held(), "ADL session\n");
}

// --- Grids.

constexpr char kGridLine[] = "INFO Calling ADL_Display_SLSGrid_Caps(), number of SLS grid: ";

TEST(ADLImplGrid, FirstAdapterWithAGridIsEnough) {
  AdlHost host(kAdlTwo);
  host.driver().sls_grids = {{1, 2}, {2, 1}};
  host.driver().adl_indices = {1, 0};
  host.Forget();
  EXPECT_EQ(host.Calls([&] { EXPECT_TRUE(host.extension().HasSLSGrid()); }),
            "ADL_Display_SLSGrid_Caps(adapter=1 option=0)=0\n");
  EXPECT_EQ(host.TakeLogWithSeverity(), std::string(kGridLine) + "2\n");
  EXPECT_EQ(host.Held(), "ADL session\n");
}

TEST(ADLImplGrid, WithoutOneEveryAdapterIsAsked) {
  AdlHost host(kAdlTwo);
  host.Forget();
  EXPECT_EQ(host.Calls([&] { EXPECT_FALSE(host.extension().HasSLSGrid()); }),
            "ADL_Display_SLSGrid_Caps(adapter=0 option=0)=0\n"
            "ADL_Display_SLSGrid_Caps(adapter=1 option=0)=0\n");
  const std::string line = std::string(kGridLine) + "0\n";
  EXPECT_EQ(host.TakeLogWithSeverity(), line + line);
}

TEST(ADLImplGrid, FailureNamesThePosition) {
  AdlHost host(kAdlTwo);
  host.driver().adl_indices = {1, 0};
  host.driver().sls_grids = {{1, 2}};
  host.Forget();
  host.machine.Fail("ADL_Display_SLSGrid_Caps", 1, AdlResultCode(-8));
  EXPECT_TRUE(host.extension().HasSLSGrid());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Calling ADL_Display_SLSGrid_Caps() failed, adapter index = 0, rv = -8\n" +
                std::string(kGridLine) + "0\n" + kGridLine + "1\n");
  host.machine.Fail("ADL_Display_SLSGrid_Caps", 2, AdlResultCode(1));
  host.machine.Fail("ADL_Display_SLSGrid_Caps", 1, AdlResultCode(-8));
  EXPECT_FALSE(host.extension().HasSLSGrid());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Calling ADL_Display_SLSGrid_Caps() failed, adapter index = 0, rv = -8\n" +
                std::string(kGridLine) +
                "0\nERROR Calling ADL_Display_SLSGrid_Caps() failed, adapter index = 1, rv = 1\n" +
                kGridLine + "0\n");
}

int OneGridAndAFailure(int, int* count, void** grids, int) {
  *count = 1;
  *grids = nullptr;
  return -1;
}

TEST(ADLImplGrid, CountDecidesOfAFailedCallToo) {
  AdlHost host(kAdlTwo);
  ReplaceAdlEntry(&host.machine, "ADL_Display_SLSGrid_Caps", sim::Erase(OneGridAndAFailure));
  host.Forget();
  EXPECT_TRUE(host.extension().HasSLSGrid());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Calling ADL_Display_SLSGrid_Caps() failed, adapter index = 0, rv = -1\n" +
                std::string(kGridLine) + "1\n");
}

TEST(ADLImplGrid, CountDecides) {
  AdlHost host(kAdlTwo);
  host.driver().sls_grids = {{1, 2}};
  host.Forget();
  sim::SetAmdAnswer(host.machine, "ADL_Display_SLSGrid_Caps", AdlResultCode(-1));
  EXPECT_FALSE(host.extension().HasSLSGrid());
  sim::SetAmdAnswer(host.machine, "ADL_Display_SLSGrid_Caps", 0);
  EXPECT_FALSE(host.extension().HasSLSGrid());
  EXPECT_EQ(host.Held(), "ADL session\n");
}

}  // namespace
