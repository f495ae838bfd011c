// Paths and clone groups of the simulated NVIDIA driver, over its own displays and those of other
// adapters.
#include "sim/Topology.h"
#include "sim/faces/NvidiaDriver.h"
#include "sim/tests/NvidiaDriverCalls.h"

namespace sim {
namespace {

constexpr char kAlone[] = "win7 nvidia: internal 1366x768 active, dvi 1280x1024, hdmi 1920x1080";
constexpr char kTwo[] =
    "win7 intel, nvidia: internal 1366x768 active, crt 1280x1024, hdmi@2 1920x1080, dp@2";
constexpr uint32_t kPanelTarget = 0x100;  // Windows' ids on the first adapter
constexpr uint32_t kCrtTarget = 0x200;
constexpr PathRecords::Size kMode = {1024, 768, 0, true};

std::string Sizes(const Machine& machine) { return DescribeSizes(machine.state().model); }
uint32_t Id(Machine& machine, const char* id) { return NvDisplayIdOf(machine.model(), id); }
PathRecords::Target Own(Machine& machine, const char* id) { return {Id(machine, id), 0}; }
PathRecords::Target Foreign(uint32_t target_id) { return {0, target_id}; }

// --- Paths.

TEST(NvidiaPaths, OnePathShowsOneDisplayAlone) {
  Machine machine(kTwo);
  const NvClient driver;
  EXPECT_EQ(PathRecords().Add({Own(machine, "hdmi")}, kMode).Set(driver, 2), 0);
  EXPECT_EQ(machine.Topology(), "single hdmi");
  EXPECT_EQ(Sizes(machine), "1024x768");
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_DISP_SetDisplayConfig(flags=2 paths=[[[display=0x80062001 hdmi] 1024x768x32 "
            "format=21 gdi]])=0\n");
}

TEST(NvidiaPaths, TwoTargetsOfAPathAreAClone) {
  Machine machine(kAlone);
  const NvClient driver;
  PathRecords paths;
  paths.Add({Own(machine, "internal"), Own(machine, "dvi")}, kMode);
  EXPECT_EQ(paths.Set(driver, 2), 0);
  EXPECT_EQ(machine.Topology(), "clone internal+dvi");
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_DISP_SetDisplayConfig(flags=2 paths=[[[display=0x80061001 internal] "
            "[display=0x80061002 dvi] 1024x768x32 format=21 gdi]])=0\n");
}

TEST(NvidiaPaths, ForeignDisplayIsNamedByItsTargetOnItsAdapter) {
  Machine machine(kTwo);
  const NvClient driver;
  PathRecords paths;
  paths.Add({Foreign(kPanelTarget)}, {1366, 768, 0, true}, true);
  paths.Adapter(machine.model().adapters[0].luid_low);
  paths.Add({Own(machine, "hdmi")}, {1920, 1080, 1366});
  EXPECT_EQ(paths.Set(driver, 10), 0);
  EXPECT_EQ(machine.Topology(), "extend internal+hdmi");
  EXPECT_EQ(Sizes(machine), "1366x768+1920x1080");
  EXPECT_EQ(machine.model().primary_source, 0u);
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_DISP_SetDisplayConfig(flags=10 paths=[[foreign adapter=0x9111 [target=0x100 "
            "internal] 1366x768x32 format=21 gdi] [[display=0x80062001 hdmi] 1920x1080x32 "
            "format=21 at 1366,0]])=0\n");
}

TEST(NvidiaPaths, ForeignDisplayWithoutAnAdapterMustBeTheOnlyOneOfThatTarget) {
  Machine machine(kTwo);
  const NvClient driver;
  const auto show = [&driver](uint32_t target) {
    return PathRecords().Add({Foreign(target)}, kMode, true).Set(driver, 2);
  };
  EXPECT_EQ(show(kCrtTarget), 0);
  EXPECT_EQ(machine.Topology(), "single crt");
  EXPECT_EQ(show(0x300), -5);
  EXPECT_EQ(show(Id(machine, "hdmi")), -5);
  Machine three("win7 intel, nvidia, amd: internal 1366x768 active, hdmi@2 800x600, dp@3 800x600");
  EXPECT_EQ(PathRecords().Add({Foreign(kPanelTarget)}, kMode, true).Set(NvClient(), 2), -5);
}

TEST(NvidiaPaths, AreThereFromWindows7On) {
  for (const char* windows : {"xp", "2003", "vista"}) {
    Machine machine(windows + std::string(" nvidia: internal 1366x768 active, dvi 1280x1024"));
    const NvClient driver;
    EXPECT_EQ(PathRecords().Add({Own(machine, "dvi")}, kMode).Set(driver, 2), -3) << windows;
    EXPECT_EQ(machine.Topology(), "single internal") << windows;
  }
  Machine machine("win7 nvidia: internal 1366x768 active, dvi 1280x1024");
  EXPECT_EQ(PathRecords().Add({Own(machine, "dvi")}, kMode).Set(NvClient(), 2), 0);
}

// A target of the driver's own adapter, and an adapter that is not the one of that target.
TEST(NvidiaPaths, ForeignIsWhatAnotherAdapterShows) {
  Machine machine(kTwo);
  const NvClient driver;
  for (const uint32_t luid : {machine.model().adapters[1].luid_low, 0x77U}) {
    PathRecords paths;
    paths.Add({Foreign(kPanelTarget)}, kMode, true).Adapter(luid);
    EXPECT_EQ(paths.Set(driver, 2), -5);
  }
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_DISP_SetDisplayConfig(flags=2 paths=[[foreign adapter=0x9222 [target=0x100 "
            "unknown] 1024x768x32 format=21 gdi]])=-5\n"
            "NvAPI_DISP_SetDisplayConfig(flags=2 paths=[[foreign adapter=0x77 (unknown) "
            "[target=0x100 unknown] 1024x768x32 format=21 gdi]])=-5\n");
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(NvidiaPaths, OnePathIsOfOneAdapter) {
  Machine machine(kTwo);
  const NvClient driver;
  PathRecords paths;
  paths.Add({Foreign(kPanelTarget), Own(machine, "hdmi")}, kMode, true);
  EXPECT_EQ(paths.Set(driver, 2), -5);
  EXPECT_EQ(PathRecords().Add({Foreign(0x200), Foreign(0x200)}, kMode, true).Set(driver, 2), -5);
}

TEST(NvidiaPaths, WithoutASizeTheDisplayComesAsItWas) {
  Machine machine(kAlone);
  const NvClient driver;
  EXPECT_EQ(PathRecords().Add({Own(machine, "dvi")}, {}).Set(driver, 2), 0);
  EXPECT_EQ(Sizes(machine), "1280x1024");  // its best
  EXPECT_EQ(PathRecords().Add({Own(machine, "dvi")}, {800, 600}).Set(driver, 2), 0);
  EXPECT_EQ(PathRecords().Add({Own(machine, "internal")}, {}).Set(driver, 2), 0);
  EXPECT_EQ(PathRecords().Add({Own(machine, "dvi")}, {}).Set(driver, 2), 0);
  EXPECT_EQ(Sizes(machine), "800x600");
}

TEST(NvidiaPaths, ValidateChangesNothingAndSaveRemembers) {
  Machine machine(kAlone);
  const NvClient driver;
  void* const display = driver.Display();
  const Model before = machine.model();
  EXPECT_EQ(PathRecords().Add({Own(machine, "dvi")}, kMode).Set(driver, 1), 0);
  EXPECT_EQ(PathRecords().Add({Own(machine, "dvi")}, {1366, 768}).Set(driver, 1), -1);
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(driver.Display(), display);
  EXPECT_EQ(PathRecords().Add({Own(machine, "dvi")}, kMode).Set(driver, 0), 0);
  EXPECT_EQ(machine.Topology(), "single dvi");
  EXPECT_NE(driver.Display(), display);
  const auto saved = [&machine] {
    return machine.model().database[ConnectedSet(machine.model())].topology;
  };
  EXPECT_EQ(saved(), kTopologyInternal);
  EXPECT_EQ(PathRecords().Add({Own(machine, "dvi")}, kMode).Set(driver, 2), 0);
  EXPECT_EQ(saved(), kTopologyExternal);
}

TEST(NvidiaPaths, RefusesWhatCannotBe) {
  Machine machine(
      "win7 nvidia: internal 1366x768 active, dvi 1280x1024, hdmi 1920x1080, dp 800x600, crt");
  const NvClient driver;
  const auto one = [&driver](PathRecords::Target target, PathRecords::Size size) {
    return PathRecords().Add({target}, size).Set(driver, 2);
  };
  EXPECT_EQ(one({0, 0}, kMode), -5);
  EXPECT_EQ(one({0x10000, 0}, kMode), -5);         // an output is no display id
  EXPECT_EQ(one(Own(machine, "crt"), kMode), -1);  // nothing on it
  EXPECT_EQ(one(Own(machine, "dvi"), {1366, 768}), -1);
  EXPECT_EQ(PathRecords().Set(driver, 2), -5);  // no path
  EXPECT_EQ(PathRecords().Add({}, kMode).Set(driver, 2), -5);
  EXPECT_EQ(PathRecords().Add({Own(machine, "dvi")}, kMode).Set(driver, 32), -5);
  PathRecords twice;
  twice.Add({Own(machine, "dvi")}, kMode).Add({Own(machine, "dvi")}, {1024, 768});
  EXPECT_EQ(twice.Set(driver, 2), -5);
  PathRecords primaries;
  primaries.Add({Own(machine, "dvi")}, kMode).Add({Own(machine, "internal")}, kMode);
  EXPECT_EQ(primaries.Set(driver, 2), -5);
  PathRecords three;
  three.Add({Own(machine, "dvi")}, kMode).Add({Own(machine, "internal")}, {1024, 768});
  three.Add({Own(machine, "hdmi")}, {1024, 768});
  EXPECT_EQ(three.Set(driver, 2), -1);  // more than it drives
  PathRecords reserved;
  reserved.Add({Own(machine, "dvi")}, kMode);
  reserved.last().Set(32, 2);
  EXPECT_EQ(reserved.Set(driver, 2), -5);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(NvidiaPaths, SourceIdIsTakenWhereItIsGiven) {
  Machine machine(kAlone);
  const NvClient driver;
  PathRecords paths;
  paths.Add({Own(machine, "dvi")}, kMode);
  paths.last().Set(4, 1);
  EXPECT_EQ(paths.Set(driver, 2), 0);
  EXPECT_EQ(SourceOfConnector(machine.model(), *FindConnector(machine.model(), "dvi")), 1u);
  paths.last().Set(4, 2);
  EXPECT_EQ(paths.Set(driver, 2), -1);
  const std::string journal = machine.TakeJournal();
  EXPECT_NE(journal.find("paths=[[source=1 [display=0x80061002 dvi]"), std::string::npos);
}

TEST(NvidiaPaths, JournalTellsEveryFieldThatIsSet) {
  Machine machine(kTwo);
  const NvClient driver;
  uint32_t dummy[2] = {0x9111, 1};
  Record target(24, Id(machine, "hdmi"));
  target.Set(16, 0x300).Point(8, &dummy[0]);
  Record mode(32, 640);
  mode.Set(4, 480).Set(8, 16).Set(12, 23).Set(16, 0xFFFFFD80).Set(20, 5).Set(24, 1).Set(28, 7);
  Record path(48, 0x20030);
  path.Set(4, 3).Set(8, 1).Set(32, 4).Point(16, target.data()).Point(24, mode.data());
  path.Point(40, &dummy[0]);
  EXPECT_EQ(driver.Ask(kSetPathsId, 1U, path.data(), 2U), -5);
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_DISP_SetDisplayConfig(flags=2 paths=[[source=3 flags=0x4 adapter=0x1:0x9111 "
            "(unknown) [display=0x80062001 target=0x300 hdmi details] 640x480x16 format=23 gdi "
            "focus at -640,5 spanning=1 mode-flags=0x7]])=-5\n");
  Record empty(48, 0x20030);
  EXPECT_EQ(driver.Ask(kSetPathsId, 1U, empty.data(), 2U), -5);
  EXPECT_EQ(driver.Ask(kSetPathsId, 0U, empty.data(), 2U), -5);
  EXPECT_EQ(driver.Ask(kSetPathsId, 1U, empty.Set(0, 0x10028).data(), 2U), -9);
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_DISP_SetDisplayConfig(flags=2 paths=[[targets=0 (null) no mode]])=-5\n"
            "NvAPI_DISP_SetDisplayConfig(flags=2 count=0)=-5\n"
            "NvAPI_DISP_SetDisplayConfig(flags=2 paths=[[version=0x10028]])=-9\n");
}

// --- Clone groups.

struct Item {
  uint32_t flags;
  uint32_t id;
};

/// A whole with its groups and their items.
class Groups {
 public:
  explicit Groups(const std::vector<std::vector<Item>>& groups)
      : top_(24, 0x10018), array_(24 * groups.size() + 8, 0) {
    for (size_t i = 0; i < groups.size(); ++i) {
      items_.push_back(std::make_unique<Record>(44 * groups[i].size() + 4, 0));
      for (size_t k = 0; k < groups[i].size(); ++k) {
        Record item(44, 0x1002C);
        items_[i]->Put(44 * k, item.Set(4, groups[i][k].flags).Set(12, groups[i][k].id));
      }
      Record group(24, 0x10018);
      group.Set(4, static_cast<uint32_t>(groups[i].size())).Point(8, items_[i]->data());
      array_.Put(24 * i, group);
    }
    top_.Set(4, static_cast<uint32_t>(groups.size())).Point(8, array_.data());
  }
  int32_t Write(const NvClient& driver) { return driver.Ask(kWriteGroupsId, top_.data()); }
  Record& top() { return top_; }
  Record& array() { return array_; }
  Record& items(size_t group) { return *items_[group]; }

 private:
  Record top_;
  Record array_;
  std::vector<std::unique_ptr<Record>> items_;
};

std::vector<Item> PanelAnd(uint32_t display_id) { return {{3, kPanelTarget}, {0, display_id}}; }

TEST(NvidiaGroups, GroupShowsThePanelsPictureOnTheDriversDisplay) {
  Machine machine(kTwo);
  const NvClient driver;
  EXPECT_EQ(driver.Outputs(kActiveOutputsId, driver.Gpu()), 0u);
  EXPECT_EQ(Groups({PanelAnd(Id(machine, "hdmi"))}).Write(driver), 0);
  EXPECT_EQ(machine.Topology(), "single internal; group internal+hdmi");
  EXPECT_EQ(driver.Outputs(kActiveOutputsId, driver.Gpu()), 0x20000u);
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_DISP_SetHCloneTopology(groups=[[[flags=3 target=0x100 internal] [flags=0 "
            "display=0x80062001 hdmi]]])=0\n");
  machine.Unplug("hdmi");
  EXPECT_EQ(driver.Outputs(kActiveOutputsId, driver.Gpu()), 0u);
  EXPECT_EQ(machine.Topology(), "single internal; group internal+hdmi");
}

TEST(NvidiaGroups, WriteReplacesAndCountZeroRemovesThem) {
  Machine machine(kTwo);
  const NvClient driver;
  machine.model().nvidia_clone_groups = {{{3, kPanelTarget}, {0, 0x80062001}}, {{1, 0x200}}};
  EXPECT_EQ(machine.Topology(), "single internal; group internal+hdmi; group crt");
  EXPECT_EQ(Groups({{{1, kCrtTarget}, {0, Id(machine, "hdmi")}}}).Write(driver), 0);
  EXPECT_EQ(machine.Topology(), "single internal; group crt+hdmi");
  machine.TakeJournal();
  Groups none({PanelAnd(Id(machine, "hdmi"))});
  none.top().Set(4, 0);
  EXPECT_EQ(none.Write(driver), 0);
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(machine.TakeJournal(), "NvAPI_DISP_SetHCloneTopology(groups=none)=0\n");
}

// How many groups; how many items in each; the items. Of the groups the first alone needs a version
// word.
TEST(NvidiaGroups, AreReadInThreeStages) {
  Machine machine(kTwo);
  const NvClient driver;
  Record top(24, 0x10018);
  EXPECT_EQ(driver.Ask(kReadGroupsId, top.Set(4, 9).data()), 0);
  EXPECT_EQ(top.At(4), 0u);
  machine.model().nvidia_clone_groups = {{{3, 0x100}, {0, 0x80062001}},
                                         {{1, 0x200}, {0, 0x80062002}, {0, 7}}};
  EXPECT_EQ(driver.Ask(kReadGroupsId, top.data()), 0);
  EXPECT_EQ(top.At(4), 2u);

  Record groups(48, 0x10018);
  EXPECT_EQ(driver.Ask(kReadGroupsId, top.Point(8, groups.data()).data()), 0);
  EXPECT_EQ(groups.At(4), 2u);
  EXPECT_EQ(groups.At(24 + 4), 3u);

  Record first(88, 0x1002C);
  Record second(132, 0x1002C);
  first.Set(44, 0x1002C);
  second.Set(44, 0x1002C);
  groups.Point(8, first.data()).Point(24 + 8, second.data());
  EXPECT_EQ(driver.Ask(kReadGroupsId, top.data()), -9);  // the last item's version is missing
  second.Set(88, 0x1002C);
  EXPECT_EQ(driver.Ask(kReadGroupsId, top.data()), 0);
  EXPECT_EQ(first.At(4), 3u);
  EXPECT_EQ(first.At(12), 0x100u);
  EXPECT_EQ(first.At(44 + 4), 0u);
  EXPECT_EQ(first.At(44 + 12), 0x80062001u);
  EXPECT_EQ(second.At(12), 0x200u);
  EXPECT_EQ(second.At(88 + 12), 7u);

  groups.Set(4, 1);  // room for one of two
  EXPECT_EQ(driver.Ask(kReadGroupsId, top.data()), -5);
  groups.Set(4, 2).Set(0, 0);
  EXPECT_EQ(driver.Ask(kReadGroupsId, top.data()), -9);
  EXPECT_EQ(driver.Ask(kReadGroupsId, top.Set(4, 1).data()), -5);
}

TEST(NvidiaGroups, RefusesWhatCannotBe) {
  Machine machine(kTwo);
  const NvClient driver;
  const uint32_t hdmi = Id(machine, "hdmi");
  EXPECT_EQ(Groups({PanelAnd(0)}).Write(driver), -5);
  EXPECT_EQ(Groups({PanelAnd(kPanelTarget)}).Write(driver), -5);
  EXPECT_EQ(Groups({PanelAnd(Id(machine, "dp"))}).Write(driver), -1);  // nothing on it
  EXPECT_EQ(Groups({{{3, 0x300}, {0, hdmi}}}).Write(driver), -5);
  EXPECT_EQ(Groups({{{2, kPanelTarget}, {0, hdmi}}}).Write(driver), -5);
  EXPECT_EQ(Groups({{{3, kCrtTarget}, {0, hdmi}}}).Write(driver), -5);  // that is no panel
  EXPECT_EQ(Groups({{{0, hdmi}}}).Write(driver), -5);                   // one alone is no clone
  Groups group({PanelAnd(hdmi)});
  EXPECT_EQ((group.array().Set(0, 0x10019), group.Write(driver)), -9);
  group.array().Set(0, 0x10018);
  EXPECT_EQ((group.items(0).Set(44, 0), group.Write(driver)), -9);
  group.items(0).Set(44, 0x1002C);
  EXPECT_EQ((group.items(0).Set(8, 1), group.Write(driver)), -5);
  group.items(0).Set(8, 0);
  EXPECT_EQ((group.items(0).Set(44 + 40, 1), group.Write(driver)), -5);
  group.items(0).Set(44 + 40, 0);
  EXPECT_EQ((group.array().Set(20, 1), group.Write(driver)), -5);
  group.array().Set(20, 0);
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(group.Write(driver), 0);
  EXPECT_EQ((group.top().Point(8, nullptr), group.Write(driver)), -5);
}

}  // namespace
}  // namespace sim
