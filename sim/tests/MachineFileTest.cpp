#include "sim/MachineFile.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "sim/EdidMaker.h"
#include "sim/Machine.h"
#include "sim/Topology.h"

namespace sim {
namespace {

constexpr char kSmall[] = R"(name = "Small"
[windows]
version = "win7"
[[adapter]]
kind = "intel"
[[connector]]
id = "internal"
[connector.monitor]
name = "Panel"
native = "1366x768"
[topology]
kind = "single"
connectors = ["internal"]
)";

std::string With(const std::string& from, const std::string& to) {
  std::string text = kSmall;
  const size_t at = text.find(from);
  if (at == std::string::npos) throw std::runtime_error("no \"" + from + "\" in the sample");
  return text.replace(at, from.size(), to);
}

std::string ComplaintOf(const std::string& text) {
  try {
    ParseMachineText(text, "small.toml");
  } catch (const MachineFileError& error) {
    return error.what();
  }
  return "none";
}

TEST(MachineFile, SmallestFileIsAMachine) {
  const Model model = ParseMachineText(kSmall, "small.toml");
  EXPECT_EQ(DescribeTopology(model), "single internal");
  EXPECT_EQ(model.sources[0].mode, (DisplayMode{1366, 768, 32, 60}));
  EXPECT_EQ(model.connectors[0].monitor->edid.size(), 128u);
  EXPECT_EQ(model.windows.minor, 1u);
}

TEST(MachineFile, EveryFieldArrives) {
  const Model model = ParseMachineText(R"(
[windows]
major = 6
minor = 3
build = 9600
product_type = 3
product = 7
service_pack = "Service Pack 9"
[[adapter]]
name = "Card"
hardware_id = 'PCI\VEN_1234'
hardware_id_readable = false
enumerated = false
disabled = true
problem = 43
root_enumerated = true
status_readable = false
mirroring = true
sources = 1
heads = 4
[[adapter]]
kind = "nvidia"
[[connector]]
id = "special"
adapter = 1
technology = 12
target_id = 77
[connector.monitor]
name = "Odd"
native = "1000x500@50"
modes = ["800x600", "1024x768x16@75"]
edid = false
[topology]
kind = "single"
connectors = ["special"]
[[process]]
id = 5
executable = "a.exe"
[registry.'HKLM\A\B']
Text = "t"
Number = 12
[sound]
wave_out_devices = 3
[config.Settings]
Key = 1
Word = "w"
)",
                                       "all.toml");
  EXPECT_EQ(model.windows.build, 9600u);
  EXPECT_EQ(model.windows.product_type, 3);
  EXPECT_EQ(model.windows.product, 7u);
  EXPECT_EQ(model.windows.service_pack, "Service Pack 9");
  const Adapter& adapter = model.adapters[0];
  EXPECT_EQ(adapter.hardware_id, "PCI\\VEN_1234");
  EXPECT_FALSE(adapter.hardware_id_readable);
  EXPECT_FALSE(adapter.enumerated);
  EXPECT_TRUE(adapter.disabled);
  EXPECT_EQ(adapter.problem, 43u);
  EXPECT_TRUE(adapter.root_enumerated);
  EXPECT_FALSE(adapter.status_readable);
  EXPECT_TRUE(adapter.mirroring);
  EXPECT_EQ(adapter.heads, 4u);
  EXPECT_EQ(model.sources[0].device_name, "\\\\.\\DISPLAYV1");
  EXPECT_EQ(model.sources[1].device_name, "\\\\.\\DISPLAY1");
  const Connector& connector = model.connectors[0];
  EXPECT_EQ(connector.technology, 12u);
  EXPECT_EQ(connector.target_id, 77u);
  const std::vector<DisplayMode> modes = {
      {800, 600, 16, 60}, {800, 600, 32, 60}, {1024, 768, 16, 75}, {1000, 500, 32, 50}};
  EXPECT_EQ(connector.monitor->modes, modes);
  EXPECT_TRUE(connector.monitor->edid.empty());
  ASSERT_EQ(model.processes.size(), 1u);
  EXPECT_EQ(model.processes[0].executable, "a.exe");
  EXPECT_EQ(model.registry.at("HKLM\\A\\B").at("Text"), "t");
  EXPECT_EQ(model.registry.at("HKLM\\A\\B").at("Number"), "dword:12");
  EXPECT_EQ(model.wave_out_devices, 3u);
  EXPECT_EQ(model.config.at("Settings").at("Key"), "1");
  EXPECT_EQ(model.config.at("Settings").at("Word"), "w");
}

TEST(MachineFile, VersionByNumbersHasNoProductUnlessGiven) {
  const Model model =
      ParseMachineText(With("version = \"win7\"", "major = 5\nminor = 1\nbuild = 2600"), "xp.toml");
  EXPECT_FALSE(model.windows.product.has_value());
}

// The EDID of the small file's panel when `lines` stand behind its native size.
std::vector<uint8_t> EdidWith(const std::string& lines) {
  const Model model =
      ParseMachineText(With("native = \"1366x768\"", "native = \"1366x768\"\n" + lines), "e.toml");
  return model.connectors[0].monitor->edid;
}

TEST(MachineFile, EdidDigitsAreTakenAsTheyAre) {
  const std::string digits(256, 'a');
  EXPECT_EQ(EdidWith("edid = \"" + digits + "\""), std::vector<uint8_t>(128, 0xAA));
  EXPECT_EQ(EdidWith("edid = \"00ff\""), (std::vector<uint8_t>{0x00, 0xFF}));
  EXPECT_EQ(EdidWith("edid = \"\"\"\n00 FF\n0a 1\nB\n\"\"\""),
            (std::vector<uint8_t>{0x00, 0xFF, 0x0A, 0x1B}));
}

TEST(MachineFile, MonitorWithoutAnEdidSendsNone) {
  EXPECT_TRUE(EdidWith("edid = \"none\"").empty());
  EXPECT_TRUE(EdidWith("edid = false").empty());
  EXPECT_EQ(EdidWith("edid = true"), MakeEdid("Panel", {1366, 768, 32, 60}));
}

TEST(MachineFile, EdidNameIsTheMonitorsOwnWord) {
  EXPECT_EQ(EdidWith("edid_name = \"Veld k2210\""), MakeEdid("Veld k2210", {1366, 768, 32, 60}));
  EXPECT_EQ(EdidWith("edid_name = \"\""), MakeEdid("", {1366, 768, 32, 60}));
  EXPECT_EQ(EdidWith("edid_name = \"thirteen char\""),
            MakeEdid("thirteen char", {1366, 768, 32, 60}));
}

TEST(MachineFile, AdapterMayComeWithoutItsVendorsLibrary) {
  const std::string without = With("kind = \"intel\"", "kind = \"intel\"\nvendor_library = false");
  EXPECT_TRUE(ParseMachineText(kSmall, "v.toml").adapters[0].vendor_library);
  EXPECT_FALSE(ParseMachineText(without, "v.toml").adapters[0].vendor_library);
}

TEST(MachineFile, WindowsAndServicesArrive) {
  const Model model = ParseMachineText(std::string(kSmall) + R"([[window]]
class = "WMPlayerApp"
title = "Windows Media Player"
children = ["Static", "EVRVideoHandler"]
[[window]]
class = "Bare"
[[service]]
name = "Dock"
running = true
[[service]]
name = "Spooler"
)",
                                       "w.toml");
  ASSERT_EQ(model.other_windows.size(), 2u);
  EXPECT_EQ(model.other_windows[0].class_name, "WMPlayerApp");
  EXPECT_EQ(model.other_windows[0].title, "Windows Media Player");
  EXPECT_EQ(model.other_windows[0].child_classes,
            (std::vector<std::string>{"Static", "EVRVideoHandler"}));
  EXPECT_EQ(model.other_windows[1].title, "");
  EXPECT_TRUE(model.other_windows[1].child_classes.empty());
  ASSERT_EQ(model.services.size(), 2u);
  EXPECT_EQ(model.services[0].name, "Dock");
  EXPECT_TRUE(model.services[0].running);
  EXPECT_FALSE(model.services[1].running);
}

TEST(MachineFile, ComplaintNamesFileLineAndField) {
  EXPECT_EQ(ComplaintOf(With("version = \"win7\"", "version = 7")),
            "small.toml, line 3, field \"windows.version\": a text is needed");
  EXPECT_EQ(ComplaintOf(With("version = \"win7\"", "")),
            "small.toml, line 2, field \"windows.major\": is missing");
  EXPECT_EQ(ComplaintOf(With("kind = \"intel\"", "kind = \"intel\"\ncolour = 1")),
            "small.toml, line 6, field \"adapter.colour\": there is no such field");
  EXPECT_EQ(ComplaintOf(With("native = \"1366x768\"", "native = \"big\"")),
            "small.toml, line 10, field \"connector.monitor.native\": a size is \"<W>x<H>\" or "
            "\"<W>x<H>@<Hz>\"");
}

TEST(MachineFile, EveryMissingFieldIsNamed) {
  const struct {
    const char* line;
    const char* field;
  } rows[] = {
      {"id = \"internal\"\n", "\"connector.id\": is missing"},
      {"name = \"Panel\"\n", "\"connector.monitor.name\": is missing"},
      {"native = \"1366x768\"\n", "\"connector.monitor.native\": is missing"},
      {"kind = \"single\"\n", "\"topology.kind\": is missing"},
      {"connectors = [\"internal\"]\n", "\"topology.connectors\": is missing"},
      {"kind = \"intel\"\n", "\"adapter.name\": is missing"},
      {"[windows]\nversion = \"win7\"\n", "\"windows\": is missing"},
      {"[[adapter]]\nkind = \"intel\"\n", "\"adapter\": is missing"},
      {"[topology]\nkind = \"single\"\nconnectors = [\"internal\"]\n", "\"topology\": is missing"},
  };
  for (const auto& row : rows) {
    EXPECT_NE(ComplaintOf(With(row.line, "")).find(row.field), std::string::npos)
        << row.field << " -> " << ComplaintOf(With(row.line, ""));
  }
}

TEST(MachineFile, EveryIllTypedOrImpossibleFieldIsNamed) {
  const struct {
    const char* from;
    const char* to;
    const char* field;
  } rows[] = {
      {"name = \"Small\"", "name = 1", "\"name\": a text is needed"},
      {"name = \"Small\"", "nome = \"Small\"", "\"nome\": there is no such field"},
      {"[windows]\nversion = \"win7\"", "windows = 7", "\"windows\": a table is needed"},
      {"[[adapter]]", "[adapter]", "\"adapter\": a list of tables"},
      {"version = \"win7\"", "version = \"win7\"\nproduct_type = 4", "\"windows.product_type\""},
      {"version = \"win7\"", "version = \"win9\"", "no such Windows"},
      {"kind = \"intel\"", "kind = \"matrox\"", "no such adapter"},
      {"kind = \"intel\"", "kind = \"intel\"\nheads = 1.5", "\"adapter.heads\": a whole number"},
      {"kind = \"intel\"", "kind = \"intel\"\nsources = -1",
       "\"adapter.sources\": a number from 0"},
      {"kind = \"intel\"", "kind = \"intel\"\ndisabled = 1", "\"adapter.disabled\": true or false"},
      {"id = \"internal\"", "id = \"internal\"\nadapter = 1", "\"connector.adapter\""},
      {"id = \"internal\"", "id = \"special\"", "\"connector.technology\": is missing"},
      {"native = \"1366x768\"", "native = \"1366x768\"\nmodes = \"800x600\"",
       "\"connector.monitor.modes\": a list"},
      {"native = \"1366x768\"", "native = \"1366x768\"\nmodes = [\"800\"]", "\"800\" is no"},
      {"native = \"1366x768\"", "native = \"1366x768\"\nmodes = [800]", "a text is needed"},
      {"native = \"1366x768\"", "native = \"1366x768\"\nedid = \"00f\"",
       "\"connector.monitor.edid\""},
      {"native = \"1366x768\"", "native = \"1366x768\"\nedid = 1", "\"connector.monitor.edid\""},
      {"native = \"1366x768\"", "native = \"1366x768\"\nedid = \"zz\"",
       "\"connector.monitor.edid\": \"none\" or pairs"},
      {"native = \"1366x768\"", "native = \"1366x768\"\nedid = \"\"", "\"none\" or pairs"},
      {"native = \"1366x768\"", "native = \"1366x768\"\nedid_name = \"fourteen chars\"",
       "\"connector.monitor.edid_name\": 13 characters at most"},
      {"native = \"1366x768\"", "native = \"1366x768\"\nedid = \"none\"\nedid_name = \"A\"",
       "\"connector.monitor.edid_name\": the EDID is told already"},
      {"native = \"1366x768\"", "native = \"1366x768\"\nedid = \"00\"\nedid_name = \"A\"",
       "\"connector.monitor.edid_name\": the EDID is told already"},
      {"[topology]", "[[window]]\ntitle = \"x\"\n[topology]", "\"window.class\": is missing"},
      {"[topology]", "[[window]]\nclass = \"x\"\nchildren = \"y\"\n[topology]",
       "\"window.children\": a list of texts"},
      {"[topology]", "[[window]]\nclass = \"x\"\nparent = \"y\"\n[topology]",
       "\"window.parent\": there is no such field"},
      {"[topology]", "[[service]]\nrunning = true\n[topology]", "\"service.name\": is missing"},
      {"[topology]", "[[service]]\nname = \"x\"\nrunning = 1\n[topology]",
       "\"service.running\": true or false"},
      {"[topology]", "[[service]]\nname = \"x\"\nstate = 1\n[topology]",
       "\"service.state\": there is no such field"},
      {"[topology]", "[service]\nname = \"x\"\n[topology]", "\"service\": a list of tables"},
      {"native = \"1366x768\"", "native = \"9999x768\"", "\"connector.monitor.native\""},
      {"kind = \"single\"", "kind = \"span\"", "\"topology.kind\""},
      {"kind = \"single\"", "kind = \"clone\"", "\"topology.connectors\""},
      {"connectors = [\"internal\"]", "connectors = [\"crt\"]", "there is no connector \"crt\""},
      {"connectors = [\"internal\"]", "connectors = [\"internal\"]\nsizes = [\"800x600\", \"1x1\"]",
       "\"topology.sizes\": one for each desktop"},
      {"connectors = [\"internal\"]", "connectors = [\"internal\"]\nsizes = []",
       "\"topology.sizes\": one for each desktop"},
      {"connectors = [\"internal\"]", "connectors = [\"internal\"]\nsizes = [\"small\"]",
       "\"topology.sizes\": \"small\" is no"},
      {"connectors = [\"internal\"]", "connectors = [\"internal\"]\nsizes = [\"1400x900\"]",
       "\"topology.sizes\": \"1400x900\" is not in the list of modes"},
      {"[topology]", "[sound]\nwave_out_devices = \"two\"\n[topology]",
       "\"sound.wave_out_devices\""},
      {"[topology]", "[registry.A]\nx = true\n[topology]", "\"registry.A.x\""},
      {"[topology]", "[config]\nx = 1\n[topology]", "\"config.x\": a table is needed"},
      {"[topology]", "[topology", "line "},
  };
  for (const auto& row : rows) {
    const std::string complaint = ComplaintOf(With(row.from, row.to));
    EXPECT_NE(complaint.find(row.field), std::string::npos) << row.field << " -> " << complaint;
    EXPECT_EQ(complaint.find("small.toml, line "), 0u) << complaint;
  }
}

// The checkout that this test was built from.
std::string Checkout() {
  const std::string file = __FILE__;
  return file.substr(0, file.rfind("sim/tests/"));
}

TEST(MachineFile, EveryNotebookOfTheFolderStartsWithItsPanelAlone) {
  for (const char* name : {"intel-panel-crt",
                           "intel-panel-hdmi",
                           "intel-panel-crt-hdmi",
                           "nvidia-panel-crt",
                           "intel-nvidia",
                           "amd-panel-hdmi",
                           "displaylink-intel",
                           "intel-displaylink",
                           "xp-nvidia",
                           "vista-nvidia",
                           "server2008",
                           "win7-starter",
                           "intel-panel-projector",
                           "intel-portrait-crt",
                           "intel-1024x600-crt",
                           "intel-twin-monitors",
                           "intel-nvidia-four",
                           "server2003-nvidia",
                           "intel-nvidia-discrete",
                           "intel-nvidia-integrated",
                           "xp-nvidia-hdmi"}) {
    const Model model = LoadMachineFile(Checkout() + "machines/" + name + ".toml");
    EXPECT_EQ(DescribeTopology(model), "single internal") << name;
    EXPECT_GE(ConnectedIds(model).size(), 2u) << name;
  }
}

std::vector<DisplayMode> ModesOf(const Model& model, const char* connector) {
  return ModesOfConnector(model, *FindConnector(model, connector));
}

Model Notebook(const char* name) {
  return LoadMachineFile(Checkout() + "machines/" + name + ".toml");
}

TEST(MachineFile, ProjectorIsOneOfTheProblemKindAndReaches1024By768) {
  const Model model = Notebook("intel-panel-projector");
  const Monitor& projector = *model.connectors[1].monitor;
  EXPECT_EQ(projector.edid, MakeEdid("Veld k2210", {1024, 768, 32, 60}));
  for (const DisplayMode& mode : projector.modes) {
    EXPECT_LE(mode.width, 1024u);
    EXPECT_LE(mode.height, 768u);
  }
  EXPECT_EQ(model.config.at("PM:1024x768").at("Check Problem Projector"), "1");
}

TEST(MachineFile, PortraitPanelStandsUprightAndSharesUprightSizes) {
  const Model model = Notebook("intel-portrait-crt");
  EXPECT_EQ(model.sources[0].mode, (DisplayMode{800, 1280, 32, 60}));
  const DisplayMode upright{800, 1280, 32, 60};
  const std::vector<DisplayMode> both = CommonModes(model, {0, 1});
  EXPECT_NE(std::find(both.begin(), both.end(), upright), both.end());
}

TEST(MachineFile, NetbooksPanelListsNothingHigherThan600) {
  const Model model = Notebook("intel-1024x600-crt");
  for (const DisplayMode& mode : ModesOf(model, "internal")) EXPECT_LE(mode.height, 600u);
  EXPECT_EQ(model.sources[0].mode, (DisplayMode{1024, 600, 32, 60}));
}

TEST(MachineFile, TwinMonitorsSendTheSameEdid) {
  const Model model = Notebook("intel-twin-monitors");
  EXPECT_EQ(model.connectors[1].monitor->edid, MakeEdid("Harbor 24", {1920, 1200, 32, 60}));
  EXPECT_EQ(model.connectors[1].monitor->edid, model.connectors[2].monitor->edid);
  EXPECT_NE(model.connectors[1].monitor->name, model.connectors[2].monitor->name);
}

TEST(MachineFile, YesterdaysNotebookIsTheSameInAClone) {
  const Model model = Notebook("intel-clone-800x600");
  const Model today = Notebook("intel-panel-crt");
  EXPECT_EQ(DescribeTopology(model), "clone internal+crt");
  EXPECT_EQ(DescribeSizes(model), "800x600");
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(model.connectors[i].monitor->edid, today.connectors[i].monitor->edid);
    EXPECT_EQ(model.connectors[i].monitor->modes, today.connectors[i].monitor->modes);
  }
}

TEST(MachineFile, SizesAreThoseOfTheDesktopsFromLeftToRight) {
  const std::string one = "connectors = [\"internal\"]";
  EXPECT_EQ(DescribeSizes(ParseMachineText(With(one, one + "\nsizes = [\"800x600\"]"), "s.toml")),
            "800x600");
  const std::string two = With("[topology]\nkind = \"single\"\nconnectors = [\"internal\"]",
                               "[[connector]]\nid = \"crt\"\n[connector.monitor]\nname = \"C\"\n"
                               "native = \"1024x768\"\n[topology]\nkind = \"extend\"\n"
                               "connectors = [\"crt\", \"internal\"]\n"
                               "sizes = [\"800x600\", \"1024x768\"]");
  const Model extended = ParseMachineText(two, "s.toml");
  EXPECT_EQ(DescribeTopology(extended), "extend internal+crt");
  EXPECT_EQ(DescribeSizes(extended), "800x600+1024x768");
  EXPECT_EQ(extended.sources[1].x, 800);
}

TEST(MachineFile, FileThatIsNotThereIsNamed) {
  try {
    LoadMachineFile("no-such-machine.toml");
    FAIL();
  } catch (const MachineFileError& error) {
    EXPECT_EQ(std::string(error.what()), "no-such-machine.toml: the file cannot be read");
  }
}

}  // namespace
}  // namespace sim
