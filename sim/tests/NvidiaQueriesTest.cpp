// What the simulated NVIDIA driver says of monitors and of notebooks with two adapters, and how a
// machine file tells it.
#include "sim/MachineFile.h"
#include "sim/Topology.h"
#include "sim/faces/NvidiaDriver.h"
#include "sim/tests/NvidiaDriverCalls.h"

#include <algorithm>

namespace sim {
namespace {

constexpr char kAlone[] = "win7 nvidia: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080";
constexpr char kTwo[] =
    "win7 intel, nvidia: internal 1366x768 active, crt 1280x1024, hdmi@2 1920x1080, dp@2";

// --- What monitors say.

TEST(NvidiaDriver, EdidComesInPages) {
  Machine machine(kAlone);
  Model& model = machine.model();
  std::vector<uint8_t>& edid = model.connectors[*FindConnector(model, "hdmi")].monitor->edid;
  edid.resize(384);
  for (size_t i = 0; i < edid.size(); ++i) edid[i] = static_cast<uint8_t>(i * 7 + i / 256);
  const NvClient driver;
  Record first(272, 0x30110);
  EXPECT_EQ(driver.Ask(kEdidId, driver.Gpu(), 0x20000U, first.data()), 0);
  EXPECT_EQ(first.At(260), 384u);
  for (size_t i = 0; i < 256; ++i) ASSERT_EQ(first.bytes[4 + i], edid[i]) << i;
  Record second(272, 0x30110);
  second.Set(268, 256);
  EXPECT_EQ(driver.Ask(kEdidId, driver.Gpu(), 0x20000U, second.data()), 0);
  for (size_t i = 0; i < 256; ++i) {
    ASSERT_EQ(second.bytes[4 + i], i < 128 ? edid[256 + i] : 0) << i;
  }
  for (const uint32_t offset : {128U, 512U}) {
    EXPECT_EQ(driver.Ask(kEdidId, driver.Gpu(), 0x20000U, second.Set(268, offset).data()), -5);
  }
}

TEST(NvidiaDriver, EdidNeedsOneOutputWithAMonitorThatSendsIt) {
  Machine machine(kAlone);
  const NvClient driver;
  Record record(272, 0x30110);
  for (const uint32_t output : {0U, 0x30000U, 0x80000U}) {
    EXPECT_EQ(driver.Ask(kEdidId, driver.Gpu(), output, record.data()), -5);
  }
  Model& model = machine.model();
  model.connectors[*FindConnector(model, "hdmi")].monitor->edid.clear();
  EXPECT_EQ(driver.Ask(kEdidId, driver.Gpu(), 0x20000U, record.data()), -1);
  machine.Unplug("crt");
  EXPECT_EQ(driver.Ask(kEdidId, driver.Gpu(), 0x1U, record.data()), -1);
  EXPECT_EQ(record.At(4), 0u);
}

/// What the driver says of HDMI: bit 0 of the GPU, bit 7 of the monitor; or the failure.
int64_t HdmiSupport(const NvClient& driver, void* handle, uint32_t id) {
  Record record(12, 0x1000C);
  const int32_t result = driver.Ask(kHdmiId, handle, id, record.data());
  return result != 0 ? result : int64_t{record.At(4)};
}

TEST(NvidiaDriver, HdmiSupportIsAskedByHandleOrById) {
  Machine machine("win7 nvidia: internal 1366x768 active, dvi 1280x1024, hdmi 1920x1080, dp");
  const Model& model = machine.model();
  const NvClient driver;
  EXPECT_EQ(HdmiSupport(driver, driver.Display(), NvOutputOf(model, "hdmi")), 0x81);
  EXPECT_EQ(HdmiSupport(driver, driver.Display(), 0), 0x01);  // its own output, the panel
  EXPECT_EQ(HdmiSupport(driver, nullptr, NvDisplayIdOf(model, "hdmi")), 0x81);
  EXPECT_EQ(HdmiSupport(driver, nullptr, NvOutputOf(model, "hdmi")), 0x81);
  EXPECT_EQ(HdmiSupport(driver, nullptr, NvOutputOf(model, "dp")), 0x01);
  EXPECT_EQ(HdmiSupport(driver, nullptr, 0), -5);
  EXPECT_EQ(HdmiSupport(driver, driver.Display(), NvDisplayIdOf(model, "hdmi")), -5);
  EXPECT_EQ(HdmiSupport(driver, driver.Gpu(), NvOutputOf(model, "hdmi")), -8);
  Record newer(12, 0x2000C);
  EXPECT_EQ(driver.Ask(kHdmiId, nullptr, NvOutputOf(model, "hdmi"), newer.data()), 0);
  EXPECT_EQ(newer.At(4), 0x81u);
  const Machine without("win7 nvidia: internal 1366x768 active");
  const NvClient other;
  EXPECT_EQ(HdmiSupport(other, other.Display(), 0), 0x00);
}

TEST(NvidiaDriver, HdmiSupportNeedsAWorkingAdapter) {
  Machine machine(kAlone);
  const NvClient driver;
  machine.model().adapters[0].disabled = true;
  for (const uint32_t id : {0U, 0x20000U, 0x80061003U}) {
    EXPECT_EQ(HdmiSupport(driver, nullptr, id), -6) << id;
  }
}

// A CTA extension with HDMI's vendor block makes an HDMI monitor on any plug, an HDMI plug on any
// monitor.
TEST(NvidiaDriver, HdmiMonitorIsToldByItsEdidOrByThePlug) {
  Machine machine("win7 nvidia: internal 1366x768 active, dvi 1280x1024, hdmi 1920x1080");
  Model& model = machine.model();
  const NvClient driver;
  const uint32_t dvi = NvOutputOf(model, "dvi");
  EXPECT_EQ(HdmiSupport(driver, nullptr, dvi), 0x01);
  std::vector<uint8_t>& edid = model.connectors[*FindConnector(model, "dvi")].monitor->edid;
  edid.resize(256, 0);
  const uint8_t cta[] = {2, 3, 16, 0, 0x42, 0x10, 0x1F, 0x65, 0x03, 0x0C, 0x00, 0x10, 0x00};
  std::copy(std::begin(cta), std::end(cta), edid.begin() + 128);
  EXPECT_EQ(HdmiSupport(driver, nullptr, dvi), 0x81);
  edid[128 + 9] = 0x0D;  // another vendor's
  EXPECT_EQ(HdmiSupport(driver, nullptr, dvi), 0x01);
  edid[128 + 9] = 0x0C;
  edid[128 + 7] = 0x45;  // another kind of block
  EXPECT_EQ(HdmiSupport(driver, nullptr, dvi), 0x01);
  edid[128 + 7] = 0x65;
  edid[128] = 3;  // another kind of extension
  EXPECT_EQ(HdmiSupport(driver, nullptr, dvi), 0x01);
  machine.Unplug("hdmi");
  EXPECT_EQ(HdmiSupport(driver, nullptr, NvOutputOf(model, "hdmi")), 0x01);
}

TEST(NvidiaDriver, DisplaySettingsTellEveryOutputOfADisplay) {
  Machine machine("win7 nvidia: clone internal 1366x768 active, crt 1024x768 active");
  machine.model().sources[0].orientation = 1;
  const NvClient driver;
  uint32_t count = kUnwritten;
  EXPECT_EQ(driver.Ask(kSettingsId, driver.Display(), nullptr, &count), 0);
  EXPECT_EQ(count, 2u);
  Record records(208 * 2, 0x400D0);
  records.Set(208, 0x400D0);
  const auto text = [&records](size_t at) {
    std::string words;
    for (const size_t field : {8, 20, 24, 28, 32, 96}) {
      words += std::to_string(records.At(at + field)) + " ";
    }
    return words;
  };
  count = 1;
  EXPECT_EQ(driver.Ask(kSettingsId, driver.Display(), records.data(), &count), -5);
  EXPECT_EQ(text(0), "0 0 0 0 0 0 ");
  count = 2;
  records.Set(208, 0x300D0);
  EXPECT_EQ(driver.Ask(kSettingsId, driver.Display(), records.data(), &count), -9);
  records.Set(208, 0x400D0);
  EXPECT_EQ(driver.Ask(kSettingsId, driver.Display(), records.data(), &count), 0);
  EXPECT_EQ(text(0), "64 1024 768 32 1 60 ");
  EXPECT_EQ(text(208), "0 1024 768 32 1 60 ");
  HideNvConnectorTypes(machine);
  EXPECT_EQ(driver.Ask(kSettingsId, driver.Display(), records.data(), &count), 0);
  EXPECT_EQ(text(208), "4294967295 1024 768 32 1 60 ");
}

// --- Notebooks with two adapters.

TEST(NvidiaDriver, SaysWhichAdapterLeadsWhereItDoes) {
  Machine machine(kTwo);
  const NvClient driver;
  uint32_t mode = 3;
  EXPECT_EQ(driver.Ask(kHybridId, &mode), -3);
  EXPECT_EQ(mode, 3u);
  machine.model().adapters[1].nvidia_hybrid_mode = 1;
  machine.model().adapters[1].nvidia_coproc_status = 2;
  EXPECT_EQ(driver.Ask(kHybridId, &mode), 0);
  EXPECT_EQ(mode, 1u);
  mode = 7;
  LeaveNvHybridMode(machine);
  EXPECT_EQ(driver.Ask(kHybridId, &mode), 0);
  EXPECT_EQ(mode, 7u);
  uint32_t status = kUnwritten;
  uint32_t state = kUnwritten;
  EXPECT_EQ(driver.Ask(kCoprocId, &status, &state), 0);
  EXPECT_EQ(status, 2u);
  EXPECT_EQ(state, 0u);
}

// --- In machine files.

constexpr char kFile[] = R"(
windows = {version = "win7"}
[[adapter]]
kind = "nvidia"
coproc_status = 1
hybrid_mode = 3
[[connector]]
id = "internal"
nvidia_output = 0x40000
[connector.monitor]
name = "Panel"
native = "1366x768"
[[connector]]
id = "hdmi"
nvidia_output = %s
nvidia_connector = 99
[topology]
kind = "single"
connectors = ["internal"]
)";

Model FromFile(const std::string& output) {
  std::string text = kFile;
  return ParseMachineText(text.replace(text.find("%s"), 2, output), "test.toml");
}

TEST(NvidiaDriver, MachineFileTellsOutputsPlugsAndModes) {
  const Model model = FromFile("0x20000");
  EXPECT_EQ(model.adapters[0].nvidia_coproc_status, 1u);
  EXPECT_EQ(model.adapters[0].nvidia_hybrid_mode, 3u);
  EXPECT_EQ(NvOutputOf(model, "internal"), 0x40000u);
  EXPECT_EQ(NvOutputOf(model, "hdmi"), 0x20000u);
  EXPECT_EQ(model.connectors[1].nvidia_connector_type, 99u);
  EXPECT_FALSE(model.connectors[0].nvidia_connector_type.has_value());
}

TEST(NvidiaDriver, MachineFileGivesEachOutputOneBitOfItsOwn) {
  const auto complaint = [](const std::string& output) -> std::string {
    try {
      FromFile(output);
    } catch (const MachineFileError& error) {
      return error.what();
    }
    return "";
  };
  const std::string where = "test.toml, line 15, field \"connector.nvidia_output\": ";
  EXPECT_EQ(complaint("0x30000"), where + "one bit is needed");
  EXPECT_EQ(complaint("0"), where + "one bit is needed");
  EXPECT_EQ(complaint("0x40000"), where + "another connector of the adapter has it");
}

}  // namespace
}  // namespace sim
