// What a machine file can say of AMD's driver.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "sim/Machine.h"
#include "sim/MachineFile.h"
#include "sim/Topology.h"
#include "sim/faces/AmdDriverRules.h"
#include "sim/tests/FaceCalls.h"

namespace sim {
namespace {

// A notebook with these lines at its adapter and at its HDMI connector.
std::string With(const std::string& adapter, const std::string& connector = "") {
  return R"([windows]
version = "win7"
[[adapter]]
kind = "amd"
sources = 3
)" + adapter +
         R"(
[[connector]]
id = "internal"
[connector.monitor]
name = "Panel"
native = "1366x768"
[[connector]]
id = "hdmi"
)" + connector +
         R"(
[topology]
kind = "single"
connectors = ["internal"]
)";
}

AmdDriver DriverOf(const std::string& lines) {
  return ParseMachineText(With(lines), "a.toml").adapters[0].amd;
}

std::string ComplaintAbout(const std::string& adapter, const std::string& connector = "") {
  try {
    ParseMachineText(With(adapter, connector), "a.toml");
  } catch (const MachineFileError& error) {
    return error.what();
  }
  return "none";
}

TEST(AmdMachineFile, DriverIsARecentOneUnlessTold) {
  const AmdDriver amd = DriverOf("");
  EXPECT_TRUE(amd.adl_library);
  EXPECT_EQ(amd.adl_version, "8.14.10.1120");
  EXPECT_TRUE(amd.legacy_library);
  EXPECT_TRUE(amd.adl_indices.empty());
  EXPECT_EQ(amd.powerxpress, 0u);
  EXPECT_EQ(amd.active_gpu, 2u);
  EXPECT_EQ(amd.switching_capability, 0u);
  EXPECT_TRUE(amd.sls_grids.empty());
}

TEST(AmdMachineFile, EveryFieldOfTheDriverArrives) {
  const AmdDriver amd = DriverOf(R"(adl_library = false
adl_version = "7.14.10.1049"
legacy_library = false
adl_indices = [4, 0, 7]
powerxpress = 4
active_gpu = 1
switching_capability = 1
sls_grids = ["1x2", "3x1"])");
  EXPECT_FALSE(amd.adl_library);
  EXPECT_EQ(amd.adl_version, "7.14.10.1049");
  EXPECT_FALSE(amd.legacy_library);
  EXPECT_EQ(amd.adl_indices, (std::vector<uint32_t>{4, 0, 7}));
  EXPECT_EQ(amd.powerxpress, 4u);
  EXPECT_EQ(amd.active_gpu, 1u);
  EXPECT_EQ(amd.switching_capability, 1u);
  EXPECT_EQ(amd.sls_grids, (std::vector<std::pair<uint32_t, uint32_t>>{{1, 2}, {3, 1}}));
  EXPECT_EQ(DriverOf("adl_version = \"\"").adl_version, "");
}

TEST(AmdMachineFile, OutputMayBeToldOtherwise) {
  const Model model = ParseMachineText(With("",
                                            "adl_type = 2\nadl_connector = 11\nadl_display = 9\n"
                                            "legacy_type = 8\nlegacy_kind = 7"),
                                       "a.toml");
  EXPECT_FALSE(model.connectors[0].amd.connector.has_value());
  const AmdOutput& hdmi = model.connectors[1].amd;
  EXPECT_EQ(hdmi.display_type, 2u);
  EXPECT_EQ(hdmi.connector, 11u);
  EXPECT_EQ(hdmi.display_index, 9u);
  EXPECT_EQ(hdmi.legacy_type, 8u);
  EXPECT_EQ(hdmi.legacy_kind, 7u);
}

TEST(AmdMachineFile, WhatCannotBeUsedIsToldByField) {
  for (const char* version : {"7.14.10", "7.14.10.x", "7.14.10.1049.2", "7.14.10.65536"}) {
    EXPECT_NE(ComplaintAbout("adl_version = \"" + std::string(version) + "\"")
                  .find("field \"adapter.adl_version\": four numbers"),
              std::string::npos)
        << version;
  }
  for (const char* grid : {"1", "1x", "0x2", "1x0", "1x2x3", "axb"}) {
    EXPECT_NE(ComplaintAbout("sls_grids = [\"" + std::string(grid) + "\"]")
                  .find("is no <rows>x<columns>"),
              std::string::npos)
        << grid;
  }
  EXPECT_NE(ComplaintAbout("adl_indices = [1, 1]").find("each index stands for one adapter"),
            std::string::npos);
  EXPECT_NE(ComplaintAbout("adl_indices = 1").find("a list of whole numbers is needed"),
            std::string::npos);
  EXPECT_NE(ComplaintAbout("adl_indices = [256]").find("a number from 0 to 255"),
            std::string::npos);
  EXPECT_NE(ComplaintAbout("active_gpu = 3").find("adapter.active_gpu"), std::string::npos);
  EXPECT_NE(ComplaintAbout("switching_capability = 2").find("adapter.switching_capability"),
            std::string::npos);
  EXPECT_NE(ComplaintAbout("", "adl_connector = 256").find("connector.adl_connector"),
            std::string::npos);
  EXPECT_EQ(ComplaintAbout(""), "none");
}

// --- The notebooks that come along.

std::string PathOf(const std::string& name) {
  std::string file = __FILE__;
  std::replace(file.begin(), file.end(), '\\', '/');
  return file.substr(0, file.rfind("sim/tests/")) + "machines/" + name + ".toml";
}

bool Loads(const char* file) {
  const HMODULE module = FAKE(LoadLibraryA)(file);
  if (module != nullptr) FAKE(FreeLibrary)(module);
  return module != nullptr;
}

struct Notebook {
  const char* name;
  bool adl;
  bool legacy;
  int active_adapters;
};

TEST(AmdMachineFile, NotebooksHaveTheLibrariesThatTheirNamesPromise) {
  const Notebook notebooks[] = {
      {"amd-panel-hdmi", true, true, 1},
      {"amd-three-displays", true, true, 1},
      {"amd-legacy-panel-crt", true, true, 1},
      {"xp-amd", false, true, 1},
      {"intel-amd", true, true, 1},
      {"intel-amd-integrated", true, true, 0},
      {"intel-nvidia", false, false, 0},
  };
  for (const Notebook& notebook : notebooks) {
    const std::unique_ptr<Machine> machine = Machine::FromFile(PathOf(notebook.name));
    EXPECT_EQ(Loads("atiadlxx.dll"), notebook.adl) << notebook.name;
    EXPECT_EQ(Loads("AtiPdl64.dll"), notebook.legacy) << notebook.name;
    int active = 0;
    for (const AdlAdapter& adapter : AdlAdapters(machine->model())) {
      active += IsAttached(machine->model(), adapter.source) ? 1 : 0;
    }
    EXPECT_EQ(active, notebook.active_adapters) << notebook.name;
  }
}

TEST(AmdMachineFile, NumbersOfTheNotebookWithThreeDisplaysAreOutOfOrder) {
  const std::unique_ptr<Machine> machine = Machine::FromFile(PathOf("amd-three-displays"));
  const std::vector<AdlAdapter> adapters = AdlAdapters(machine->model());
  ASSERT_EQ(adapters.size(), 3u);
  for (size_t i = 0; i < 3; ++i) EXPECT_NE(adapters[i].index, static_cast<int32_t>(i));
}

}  // namespace
}  // namespace sim
