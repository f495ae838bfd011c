// What a machine file, and the short form, can say of USB displays.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "sim/MachineFile.h"
#include "sim/ShortForm.h"
#include "sim/Topology.h"
#include "sim/tests/DisplayLinkCalls.h"

namespace sim {
namespace {

constexpr char kCore[] = "HKLM\\SOFTWARE\\DisplayLink\\Core";

// A notebook with these lines at its second adapter, at the connector there, and behind.
std::string With(const std::string& adapter, const std::string& connector = "",
                 const std::string& tables = "") {
  return R"([windows]
version = "win7"
[[adapter]]
kind = "intel"
[[adapter]]
)" + adapter +
         R"(
[[connector]]
id = "internal"
[connector.monitor]
name = "Panel"
native = "1366x768"
[[connector]]
id = "usb"
adapter = 1
)" + connector +
         R"(
[connector.monitor]
name = "Docked"
native = "1680x1050"
[topology]
kind = "single"
connectors = ["internal"]
)" + tables;
}

Model Parsed(const std::string& text) { return ParseMachineText(text, "a.toml"); }

std::string ComplaintAbout(const std::string& text) {
  try {
    Parsed(text);
  } catch (const MachineFileError& error) {
    return error.what();
  }
  return "none";
}

constexpr char kKind[] = "kind = \"displaylink\"";

TEST(DisplayLinkMachineFile, AdapterForUsbIsToldByItsKind) {
  const Model model = Parsed(With(kKind));
  EXPECT_FALSE(model.adapters[0].usb);
  EXPECT_TRUE(model.adapters[1].usb);
  EXPECT_TRUE(model.adapters[1].root_enumerated);
  EXPECT_EQ(model.adapters[1].luid_high, 1);
  EXPECT_EQ(model.adapters[0].luid_high, 0);
  EXPECT_EQ(model.connectors[0].target_id, 0x100u);
  EXPECT_EQ(model.connectors[1].target_id, 0x1100u);
  EXPECT_EQ(model.connectors[1].technology, 0xFFFFFFFFu);
  EXPECT_EQ(model.connectors[1].nivo.handle, 0u);
  EXPECT_EQ(model.connectors[1].nivo.execution_state, 1u);
  EXPECT_EQ(model.connectors[1].nivo.product, 0x1000290u);
}

TEST(DisplayLinkMachineFile, AdapterOfAnotherNameMayBeForUsb) {
  const std::string own = "name = \"Dock\"\nhardware_id = 'USB\\VID_17E9'\n";
  EXPECT_FALSE(Parsed(With(own)).adapters[1].usb);
  EXPECT_TRUE(Parsed(With(own + "usb = true")).adapters[1].usb);
}

TEST(DisplayLinkMachineFile, SoftwareIsThereWhenToldAndNeitherServiceNorRegistryWithIt) {
  EXPECT_FALSE(Parsed(With(kKind)).displaylink.library);
  const Model model = Parsed(With(kKind, "", "[displaylink]\n"));
  EXPECT_TRUE(model.displaylink.library);
  EXPECT_TRUE(model.displaylink.working);
  EXPECT_EQ(model.displaylink.file, kAddOnFile);
  EXPECT_TRUE(model.services.empty());
  EXPECT_EQ(model.registry.count(kCore), 0u);
}

TEST(DisplayLinkMachineFile, EveryFieldArrives) {
  const Model model =
      Parsed(With(kKind, "usb_handle = 77\nusb_state = 6\nusb_product = 0x10002E9",
                  "[displaylink]\nlibrary = false\nworking = false\nfile = 'D:\\a.dll'\n"));
  EXPECT_EQ(model.connectors[1].nivo.handle, 77u);
  EXPECT_EQ(model.connectors[1].nivo.execution_state, 6u);
  EXPECT_EQ(model.connectors[1].nivo.product, 0x10002E9u);
  EXPECT_FALSE(model.displaylink.library);
  EXPECT_FALSE(model.displaylink.working);
  EXPECT_EQ(model.displaylink.file, "D:\\a.dll");
}

TEST(DisplayLinkMachineFile, WhatCannotBeUsedIsTold) {
  EXPECT_NE(ComplaintAbout(With(kKind, "", "[displaylink]\nfile = ''\n"))
                .find("\"displaylink.file\": a path is needed"),
            std::string::npos);
  EXPECT_NE(ComplaintAbout(With(kKind, "", "[displaylink]\ncolour = 1\n")).find("colour"),
            std::string::npos);
  EXPECT_NE(ComplaintAbout(With(kKind, "usb_handle = -1")).find("usb_handle"), std::string::npos);
  EXPECT_EQ(ComplaintAbout(With(kKind)), "none");
}

TEST(DisplayLinkMachineFile, ShortFormBringsTheSoftwareWithTheAdapter) {
  const Model model = ParseShortForm(kUsbNotebook);
  EXPECT_TRUE(model.displaylink.library);
  EXPECT_EQ(model.registry.at(kCore).at("AddOnApi64FileLocation"), kAddOnFile);
  ASSERT_EQ(model.services.size(), 1u);
  EXPECT_TRUE(model.services[0].running);
  EXPECT_TRUE(model.adapters[1].usb);
  EXPECT_EQ(model.adapters[1].sources, 2u);
  const Model other = ParseShortForm("win7 intel: internal 1366x768 active");
  EXPECT_FALSE(other.displaylink.library);
  EXPECT_TRUE(other.services.empty());
}

// --- The notebooks that come along.

std::unique_ptr<Machine> Notebook(const std::string& name) {
  std::string file = __FILE__;
  std::replace(file.begin(), file.end(), '\\', '/');
  return Machine::FromFile(file.substr(0, file.rfind("sim/tests/")) + "machines/" + name + ".toml");
}

TEST(DisplayLinkMachineFile, NotebooksAreWhatTheirNamesPromise) {
  const struct {
    const char* name;
    bool library;
    const char* topology;
  } rows[] = {
      {"intel-displaylink", true, "single internal"},
      {"intel-displaylink-extend", true, "extend internal+usb"},
      {"intel-displaylink-half", false, "single internal"},
  };
  for (const auto& row : rows) {
    const std::unique_ptr<Machine> machine = Notebook(row.name);
    const Model& model = machine->model();
    const std::string file = model.registry.at(kCore).at("AddOnApi64FileLocation");
    EXPECT_EQ(AddOnClient(file.c_str()).loaded(), row.library) << row.name;
    EXPECT_EQ(machine->Topology(), row.topology) << row.name;
    ASSERT_EQ(model.services.size(), 1u) << row.name;
    EXPECT_EQ(model.services[0].name, "DisplayLinkService") << row.name;
    EXPECT_EQ(IsConnected(model, *FindConnector(model, "usb")), row.library) << row.name;
  }
}

}  // namespace
}  // namespace sim
