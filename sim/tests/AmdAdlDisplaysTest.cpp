// The simulated display library of AMD's driver: displays, their EDID and their modes.
#include <gtest/gtest.h>

#include <algorithm>

#include "sim/faces/AmdDriver.h"
#include "sim/tests/AmdCalls.h"

namespace sim {
namespace {

constexpr char kTwo[] = "win7 amd: internal 1366x768 active, crt 1280x1024";
constexpr char kAll[] =
    "win7 amd*3: crt 1280x1024, tv, internal 1366x768 active, dvi, hdmi 1920x1080, dp, edp, other, "
    "wireless";

// "index type connector value", one display a line.
std::string Told(const AdlList& list) {
  std::string text;
  for (int i = 0; i < list.count; ++i) {
    const AmdBytes info = list.Record(static_cast<size_t>(i), 552);
    char line[96];
    std::snprintf(line, sizeof line, "%d type %d connector %d value 0x%x\n",
                  static_cast<int>(info.At(0)), static_cast<int>(info.At(532)),
                  static_cast<int>(info.At(540)), info.At(548));
    text += line;
  }
  return text;
}

TEST(AmdAdl, DisplaysAreAllOutputsOfTheGpuByKind) {
  Machine machine(kAll);
  const AdlClient adl;
  const std::string all =
      "0 type 0 connector 1 value 0x9\n2 type 1 connector 12 value 0x8\n"
      "1 type 2 connector 8 value 0x103\n3 type 3 connector 2 value 0x0\n"
      "4 type 3 connector 10 value 0x1\n5 type 3 connector 15 value 0x0\n"
      "6 type 2 connector 16 value 0x0\n7 type 3 connector 0 value 0x0\n"
      "8 type 3 connector 17 value 0x0\n";
  EXPECT_EQ(Told(adl.Displays(0)), all);
  EXPECT_EQ(Told(adl.Displays(2)), all);  // the same GPU
  EXPECT_EQ(adl.Displays(3).result, -5);
}

TEST(AmdAdl, OutputMayBeToldOtherwise) {
  Machine machine("win7 amd: internal 1366x768 active, hdmi 1920x1080");
  AmdOutput& hdmi = machine.model().connectors[1].amd;
  hdmi.display_type = 3;
  hdmi.connector = 11;
  hdmi.display_index = 9;
  const AdlClient adl;
  EXPECT_EQ(Told(adl.Displays(0)),
            "1 type 2 connector 8 value 0x103\n9 type 3 connector 11 value 0x1\n");
}

TEST(AmdAdl, MannerOfEachDisplayFollowsTheTopology) {
  Machine cloned("win7 amd: clone internal 1366x768 active, crt 1280x1024 active");
  {
    const AdlClient adl;
    EXPECT_EQ(Told(adl.Displays(0)),
              "1 type 2 connector 8 value 0x203\n0 type 0 connector 1 value 0x20b\n");
  }
  Machine extended("win7 amd: internal 1366x768 active, crt 1280x1024 active");
  const AdlClient adl;
  EXPECT_EQ(Told(adl.Displays(0)),
            "1 type 2 connector 8 value 0x1003\n0 type 0 connector 1 value 0x100b\n");
}

TEST(AmdAdl, DisplayIdTellsTheAdapterItIsMappedTo) {
  Machine machine(
      "win7 intel, amd: internal@2 1366x768 active, crt@2 1280x1024 active, hdmi@2 1920x1080");
  machine.model().adapters[1].amd.adl_indices = {6, 2};
  const AdlClient adl;
  const AdlList list = adl.Displays(2);
  ASSERT_EQ(list.count, 3);
  const uint32_t mapped_to[] = {6, 2, 0xFFFFFFFF};
  for (size_t i = 0; i < 3; ++i) {
    const AmdBytes info = list.Record(i, 552);
    EXPECT_EQ(info.At(4), 32 + i);
    EXPECT_EQ(info.At(8), mapped_to[i]);
    EXPECT_EQ(info.At(12), 16u);
    EXPECT_EQ(info.At(16), i < 2 ? i : 0xFFFFFFFF);
  }
  EXPECT_EQ(list.Record(0, 552).TextAt(20), "Panel");
  EXPECT_EQ(list.Record(0, 552).TextAt(276), "OST");
  EXPECT_EQ(list.Record(2, 552).TextAt(20), "HDMI Monitor");
}

TEST(AmdAdl, EdidComesInBlocksOfItsRecord) {
  Machine machine(kTwo);
  std::vector<uint8_t>& edid = machine.model().connectors[0].monitor->edid;
  ASSERT_EQ(edid.size(), 128u);
  edid.resize(384, 0x5A);
  const AdlClient adl;
  AmdBytes data = AmdBytes(288).Set(0, 288);
  EXPECT_EQ(adl.Call("ADL_Display_EdidData_Get", 0, 1, data.data()), 0);
  EXPECT_EQ(data.At(8), 256u);
  EXPECT_TRUE(std::equal(edid.begin(), edid.begin() + 256, data.bytes.begin() + 16));
  data = AmdBytes(288, 0xEE).Set(0, 288).Set(12, 1);
  EXPECT_EQ(adl.Call("ADL_Display_EdidData_Get", 0, 1, data.data()), 0);
  EXPECT_EQ(data.At(8), 128u);
  EXPECT_EQ(data.bytes[16 + 127], 0x5A);
  EXPECT_EQ(data.bytes[16 + 128], 0xEE);  // nothing behind it is written
  SetAmdAnswer(machine, "ADL_Display_EdidData_Get", 512);
  data.Set(12, 0);
  EXPECT_EQ(adl.Call("ADL_Display_EdidData_Get", 0, 1, data.data()), 0);
  EXPECT_EQ(data.At(8), 512u);
}

TEST(AmdAdl, EdidThatItRefuses) {
  Machine machine("win7 amd: internal 1366x768 active, crt, hdmi 1920x1080");
  machine.model().connectors[2].monitor->edid.clear();
  const AdlClient adl;
  const auto ask = [&adl](int display, uint32_t size, uint32_t block) {
    AmdBytes data = AmdBytes(288).Set(0, size).Set(12, block);
    return adl.Call("ADL_Display_EdidData_Get", 0, display, data.data());
  };
  EXPECT_EQ(ask(1, 288, 0), 0);
  EXPECT_EQ(ask(1, 287, 0), -4);
  EXPECT_EQ(ask(1, 288, 3), -3);
  EXPECT_EQ(ask(1, 288, 1), -1);  // it has one block
  EXPECT_EQ(ask(7, 288, 0), -7);
  EXPECT_EQ(ask(0, 288, 0), -1);  // nothing is plugged in
  EXPECT_EQ(ask(2, 288, 0), -1);  // it sends none
}

TEST(AmdAdl, ModesAreWhatTheDisplayShowsNow) {
  Machine machine("win7 amd: internal 1366x768 active, crt 1280x1024 active, hdmi 1920x1080");
  const AdlClient adl;
  const AdlList crt = adl.Modes(0, 0);
  ASSERT_EQ(crt.count, 1);
  EXPECT_EQ(crt.bytes.At(0), 1u);
  EXPECT_EQ(crt.bytes.At(4), 0u);
  EXPECT_EQ(crt.bytes.At(20), 1366u);
  EXPECT_EQ(crt.bytes.At(28), 1280u);
  EXPECT_EQ(crt.bytes.At(32), 1024u);
  EXPECT_EQ(crt.bytes.At(36), 32u);
  EXPECT_EQ(crt.bytes.FloatAt(40), 60.0F);
  const AdlList dark = adl.Modes(0, 2);
  EXPECT_EQ(dark.result, 0);
  EXPECT_EQ(dark.count, 0);
  EXPECT_EQ(adl.Modes(0, -1).count, 2);
  EXPECT_EQ(adl.Modes(0, 8).result, -7);
}

}  // namespace
}  // namespace sim
