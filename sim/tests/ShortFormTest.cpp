#include "sim/ShortForm.h"

#include <gtest/gtest.h>

#include "sim/Machine.h"
#include "sim/Topology.h"

namespace sim {
namespace {

std::string ComplaintOf(const std::string& text) {
  try {
    ParseShortForm(text);
  } catch (const MachineFileError& error) {
    return error.what();
  }
  return "none";
}

TEST(ShortForm, WindowsWordsHaveTheirVersionNumbers) {
  const struct {
    const char* word;
    uint32_t major, minor;
    int type, product;
  } rows[] = {{"win10", 10, 0, 1, 48},      {"win8", 6, 2, 1, 48}, {"win7", 6, 1, 1, 48},
              {"win7starter", 6, 1, 1, 11}, {"vista", 6, 0, 1, 6}, {"2008", 6, 0, 3, 7},
              {"2008r2", 6, 1, 3, 7},       {"2003", 5, 2, 3, -1}, {"xp", 5, 1, 1, -1}};
  for (const auto& row : rows) {
    const Model model = ParseShortForm(std::string(row.word) + " intel: internal 800x600 active");
    EXPECT_EQ(model.windows.major, row.major) << row.word;
    EXPECT_EQ(model.windows.minor, row.minor) << row.word;
    EXPECT_EQ(model.windows.product_type, row.type) << row.word;
    EXPECT_EQ(model.windows.product ? static_cast<int>(*model.windows.product) : -1, row.product)
        << row.word;
  }
}

TEST(ShortForm, AdapterWordsHaveTheirVendorDigits) {
  const struct {
    const char* word;
    const char* digits;
  } rows[] = {
      {"intel", "8086"}, {"nvidia", "10DE"}, {"amd", "1002"}, {"sis", "1039"}, {"via", "1106"}};
  for (const auto& row : rows) {
    const Model model =
        ParseShortForm(std::string("win7 ") + row.word + ": internal 800x600 active");
    const std::string& id = model.adapters[0].hardware_id;
    EXPECT_EQ(id.substr(id.find('_') + 1, 4), row.digits);
  }
  EXPECT_FALSE(ParseShortForm("win7 none: internal 800x600 active").adapters[0].enumerated);
}

TEST(ShortForm, ConnectorWordsHaveTheirTechnology) {
  const Model model = ParseShortForm(
      "win7 intel: internal 800x600 active, crt, tv, dvi, hdmi, hdmi2, dp, edp, other, wireless");
  std::vector<uint32_t> technologies;
  for (const Connector& connector : model.connectors) technologies.push_back(connector.technology);
  EXPECT_EQ(technologies,
            (std::vector<uint32_t>{0x80000000, 0, 1, 4, 5, 5, 10, 11, 0xFFFFFFFF, 15}));
  EXPECT_EQ(model.connectors[5].id, "hdmi2");
}

TEST(ShortForm, ConnectorWithoutASizeHasNothingPluggedIn) {
  const Model model = ParseShortForm("win7 intel: internal 1366x768 active, crt");
  EXPECT_FALSE(model.connectors[1].monitor.has_value());
}

TEST(ShortForm, ExtendedDesktopsStandFromLeftToRightAsWritten) {
  const Model model = ParseShortForm(
      "win7 intel*3: crt 1024x768 active, internal 1366x768 active, hdmi 800x600 active");
  EXPECT_EQ(model.sources[0].x, 0);
  EXPECT_EQ(model.sources[1].x, 1024);
  EXPECT_EQ(model.sources[2].x, 1024 + 1366);
  EXPECT_EQ(model.primary_source, 0u);
}

TEST(ShortForm, ExtensionOverTwoAdaptersTakesASourceOfEach) {
  const Model model =
      ParseShortForm("win7 intel, nvidia: internal 1366x768 active, hdmi@2 800x600 active");
  ASSERT_EQ(model.active.size(), 2u);
  EXPECT_EQ(model.sources[model.active[1].source].adapter, 1u);
  EXPECT_EQ(model.sources[model.active[1].source].source_id, 0u);
}

TEST(ShortForm, CloneTakesTheLargestCommonMode) {
  const Model model =
      ParseShortForm("win7 intel: clone internal 1366x768 active, crt 1024x768 active");
  EXPECT_EQ(model.active.size(), 2u);
  EXPECT_EQ(model.sources[0].mode, (DisplayMode{1024, 768, 32, 60}));
}

TEST(ShortForm, StartIsInTheDatabaseAndInTheRegistrySettings) {
  const Model model = ParseShortForm("win7 intel: internal 1366x768 active, crt 1024x768");
  const auto entry = model.database.find({"crt", "internal"});
  ASSERT_NE(entry, model.database.end());
  EXPECT_EQ(entry->second.topology, kTopologyInternal);
  ASSERT_TRUE(model.sources[0].registry.has_value());
  EXPECT_EQ(model.sources[0].registry->width, 1366u);
  EXPECT_FALSE(model.sources[1].registry.has_value());
}

TEST(ShortForm, ComplaintNamesTheWord) {
  const struct {
    const char* text;
    const char* field;
  } rows[] = {
      {"win9 intel: internal 800x600", "\"win9\""},
      {"win7 matrox: internal 800x600", "\"matrox\""},
      {"win7 intel internal 800x600", "no \":\""},
      {"win7: internal 800x600", "a Windows and an adapter"},
      {"win7 intel: vga 800x600", "\"vga\""},
      {"win7 intel: internal 800", "\"800\""},
      {"win7 intel: internal 0x600", "\"0x600\""},
      {"win7 intel: internal 800x600x32", "\"800x600x32\""},
      {"win7 intel: internal 99999999999x600", "99999999999x600"},
      {"win7 intel: internal@2 800x600", "\"internal@2\""},
      {"win7 intel*0: internal 800x600", "\"intel*0\""},
      {"win7 intel: crt 800x600, crt 800x600", "stands there already"},
      {"win7 intel: internal 800x600,", "an empty connector"},
      {"win7 intel: internal active", "cannot be shown"},
      {"win7 intel, nvidia: clone internal 800x600 active, hdmi@2 800x600 active",
       "cannot be shown"},
      {"", "no \":\""},
  };
  for (const auto& row : rows) {
    EXPECT_NE(ComplaintOf(row.text).find(row.field), std::string::npos)
        << row.text << " -> " << ComplaintOf(row.text);
  }
}

}  // namespace
}  // namespace sim
