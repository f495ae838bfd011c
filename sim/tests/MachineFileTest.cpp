#include "sim/MachineFile.h"

#include <gtest/gtest.h>

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

TEST(MachineFile, EdidDigitsAreTakenAsTheyAre) {
  const std::string digits(256, 'a');
  const Model model = ParseMachineText(
      With("native = \"1366x768\"", "native = \"1366x768\"\nedid = \"" + digits + "\""), "e.toml");
  EXPECT_EQ(model.connectors[0].monitor->edid, std::vector<uint8_t>(128, 0xAA));
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
      {"native = \"1366x768\"", "native = \"1366x768\"\nedid = \"00ff\"",
       "\"connector.monitor.edid\""},
      {"native = \"1366x768\"", "native = \"1366x768\"\nedid = 1", "\"connector.monitor.edid\""},
      {"native = \"1366x768\"", "native = \"9999x768\"", "\"connector.monitor.native\""},
      {"kind = \"single\"", "kind = \"span\"", "\"topology.kind\""},
      {"kind = \"single\"", "kind = \"clone\"", "\"topology.connectors\""},
      {"connectors = [\"internal\"]", "connectors = [\"crt\"]", "there is no connector \"crt\""},
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
  for (const char* name :
       {"intel-panel-crt", "intel-panel-hdmi", "intel-panel-crt-hdmi", "nvidia-panel-crt",
        "intel-nvidia", "amd-panel-hdmi", "displaylink-intel", "xp-nvidia", "vista-nvidia",
        "server2008", "win7-starter"}) {
    const Model model = LoadMachineFile(Checkout() + "machines/" + name + ".toml");
    EXPECT_EQ(DescribeTopology(model), "single internal") << name;
    EXPECT_GE(ConnectedIds(model).size(), 2u) << name;
  }
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
