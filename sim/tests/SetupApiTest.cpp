#include <gtest/gtest.h>

#include "sim/EdidMaker.h"
#include "sim/tests/FaceCalls.h"
#include "sim/tests/Fakes.h"

// After windows.h.
#include <guiddef.h>

#include <cfgmgr32.h>
#include <setupapi.h>

namespace sim {
namespace {

constexpr GUID kDisplayClass = {
    0x4D36E968, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};
constexpr GUID kMonitorClass = {
    0x4D36E96E, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};
constexpr GUID kOtherClass = {};

class DeviceList {
 public:
  explicit DeviceList(const GUID& wanted)
      : list_(FAKE(SetupDiGetClassDevsA)(&wanted, nullptr, nullptr, DIGCF_PRESENT)) {}
  ~DeviceList() {
    if (list_ != INVALID_HANDLE_VALUE) FAKE(SetupDiDestroyDeviceInfoList)(list_);
  }
  HDEVINFO get() const { return list_; }
  bool Device(DWORD index, SP_DEVINFO_DATA* data) const {
    *data = {};
    data->cbSize = sizeof *data;
    return FAKE(SetupDiEnumDeviceInfo)(list_, index, data) != FALSE;
  }
  size_t Count() const {
    SP_DEVINFO_DATA data;
    size_t count = 0;
    while (Device(static_cast<DWORD>(count), &data)) ++count;
    return count;
  }
  std::string HardwareId(DWORD index) const {
    SP_DEVINFO_DATA data;
    if (!Device(index, &data)) return "no device";
    BYTE buffer[256] = {};
    if (!FAKE(SetupDiGetDeviceRegistryPropertyA)(list_, &data, SPDRP_HARDWAREID, nullptr, buffer,
                                                 sizeof buffer, nullptr)) {
      return "error " + std::to_string(GetLastError());
    }
    return reinterpret_cast<char*>(buffer);
  }

 private:
  HDEVINFO list_;
};

TEST(SetupApi, DisplayClassListsTheAdaptersInOrder) {
  Machine machine("win7 intel, nvidia: internal 1366x768 active");
  const DeviceList list(kDisplayClass);
  EXPECT_EQ(list.Count(), 2u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_MORE_ITEMS));
  EXPECT_EQ(list.HardwareId(0), "PCI\\VEN_8086&DEV_0166&SUBSYS_397717AA&REV_09");
  EXPECT_EQ(list.HardwareId(1), "PCI\\VEN_10DE&DEV_0DF4&SUBSYS_397717AA&REV_A1");
}

TEST(SetupApi, MonitorClassListsWhatIsPluggedIn) {
  Machine machine("win7 intel: internal 1366x768 active, crt 1024x768, hdmi");
  EXPECT_EQ(DeviceList(kMonitorClass).Count(), 2u);
  EXPECT_EQ(DeviceList(kOtherClass).Count(), 0u);
}

TEST(SetupApi, AdapterOutsideTheListOfDevicesIsNotThere) {
  Machine machine("win7 none: internal 1366x768 active");
  EXPECT_EQ(DeviceList(kDisplayClass).Count(), 0u);
}

TEST(SetupApi, HardwareIdThatCannotBeReadIsInvalidData) {
  Machine machine("win7 intel: internal 1366x768 active");
  machine.model().adapters[0].hardware_id_readable = false;
  EXPECT_EQ(DeviceList(kDisplayClass).HardwareId(0), "error " + std::to_string(ERROR_INVALID_DATA));
}

TEST(SetupApi, PropertyIsAListOfTextsAndTellsTheRoomItNeeds) {
  Machine machine("win7 intel: internal 1366x768 active");
  machine.model().adapters[0].hardware_id = "PCI\\VEN_8086";
  const DeviceList list(kDisplayClass);
  SP_DEVINFO_DATA data;
  ASSERT_TRUE(list.Device(0, &data));
  BYTE buffer[64] = {};
  DWORD type = 0;
  DWORD required = 0;
  EXPECT_FALSE(FAKE(SetupDiGetDeviceRegistryPropertyA)(list.get(), &data, SPDRP_HARDWAREID, &type,
                                                       buffer, 5, &required));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
  EXPECT_EQ(required, 14u);
  EXPECT_EQ(buffer[0], 0);
  ASSERT_TRUE(FAKE(SetupDiGetDeviceRegistryPropertyA)(list.get(), &data, SPDRP_HARDWAREID, &type,
                                                      buffer, required, &required));
  EXPECT_EQ(type, static_cast<DWORD>(REG_MULTI_SZ));
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 14), std::string("PCI\\VEN_8086\0\0", 14));
  ASSERT_TRUE(FAKE(SetupDiGetDeviceRegistryPropertyW)(list.get(), &data, SPDRP_HARDWAREID, &type,
                                                      buffer, sizeof buffer, &required));
  EXPECT_EQ(required, 28u);
  EXPECT_STREQ(reinterpret_cast<wchar_t*>(buffer), L"PCI\\VEN_8086");
}

TEST(SetupApi, RecordWithoutItsSizeIsRefused) {
  Machine machine("win7 intel: internal 1366x768 active");
  const DeviceList list(kDisplayClass);
  SP_DEVINFO_DATA data = {};
  EXPECT_FALSE(FAKE(SetupDiEnumDeviceInfo)(list.get(), 0, &data));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_USER_BUFFER));
}

TEST(SetupApi, ListWithoutClassOrAllClassesIsRefused) {
  Machine machine("win7 intel: internal 1366x768 active");
  EXPECT_EQ(FAKE(SetupDiGetClassDevsA)(nullptr, nullptr, nullptr, DIGCF_PRESENT),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(SetupApi, ListIsInTheLedgerUntilItIsDestroyed) {
  Machine machine("win7 intel: internal 1366x768 active");
  {
    const DeviceList list(kDisplayClass);
    EXPECT_NE(machine.Outstanding().find("device list"), std::string::npos);
  }
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(SetupApi, ListDestroyedTwiceFailsTheTest) {
  Machine machine("win7 intel: internal 1366x768 active");
  const HDEVINFO list = FAKE(SetupDiGetClassDevsA)(&kDisplayClass, nullptr, nullptr, DIGCF_PRESENT);
  EXPECT_TRUE(FAKE(SetupDiDestroyDeviceInfoList)(list));
  CaughtFailures failures;
  EXPECT_FALSE(FAKE(SetupDiDestroyDeviceInfoList)(list));
  EXPECT_EQ(failures.list().size(), 1u);
}

TEST(SetupApi, ListStaysWhenDestroyingItFails) {
  Machine machine("win7 intel: internal 1366x768 active");
  const HDEVINFO list = FAKE(SetupDiGetClassDevsA)(&kDisplayClass, nullptr, nullptr, DIGCF_PRESENT);
  machine.Fail("SetupDiDestroyDeviceInfoList", 1, ERROR_ACCESS_DENIED);
  EXPECT_FALSE(FAKE(SetupDiDestroyDeviceInfoList)(list));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  EXPECT_NE(machine.Outstanding(), "");
  EXPECT_TRUE(FAKE(SetupDiDestroyDeviceInfoList)(list));
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(SetupApi, NodeStatusTellsProblemsAndTheRoot) {
  Machine machine("win7 intel, nvidia, amd: internal 1366x768 active");
  machine.model().adapters[1].disabled = true;
  machine.model().adapters[2].root_enumerated = true;
  const DeviceList list(kDisplayClass);
  const struct {
    DWORD index;
    ULONG status, problem;
  } rows[] = {{0, DN_DRIVER_LOADED | DN_STARTED, 0},
              {1, DN_HAS_PROBLEM, 22},
              {2, DN_DRIVER_LOADED | DN_STARTED | DN_ROOT_ENUMERATED, 0}};
  for (const auto& row : rows) {
    SP_DEVINFO_DATA data;
    ASSERT_TRUE(list.Device(row.index, &data));
    ULONG status = 0;
    ULONG problem = 99;
    EXPECT_EQ(FAKE(CM_Get_DevNode_Status)(&status, &problem, data.DevInst, 0),
              static_cast<CONFIGRET>(CR_SUCCESS));
    EXPECT_EQ(status, row.status) << row.index;
    EXPECT_EQ(problem, row.problem) << row.index;
  }
}

TEST(SetupApi, NodeStatusFailsWhereTheMachineSaysSo) {
  Machine machine("win7 intel: internal 1366x768 active");
  machine.model().adapters[0].status_readable = false;
  SP_DEVINFO_DATA data;
  ASSERT_TRUE(DeviceList(kDisplayClass).Device(0, &data));
  ULONG status = 0;
  ULONG problem = 0;
  EXPECT_EQ(FAKE(CM_Get_DevNode_Status)(&status, &problem, data.DevInst, 0),
            static_cast<CONFIGRET>(CR_FAILURE));
  EXPECT_EQ(FAKE(CM_Get_DevNode_Status)(&status, &problem, 0x7777, 0),
            static_cast<CONFIGRET>(CR_NO_SUCH_DEVNODE));
}

TEST(SetupApi, MonitorsKeyHoldsItsEdid) {
  Machine machine("win7 intel: internal 1366x768 active");
  const DeviceList list(kMonitorClass);
  SP_DEVINFO_DATA data;
  ASSERT_TRUE(list.Device(0, &data));
  const HKEY key =
      FAKE(SetupDiOpenDevRegKey)(list.get(), &data, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
  ASSERT_NE(key, static_cast<HKEY>(INVALID_HANDLE_VALUE));
  BYTE edid[128] = {};
  DWORD size = sizeof edid;
  DWORD type = 0;
  EXPECT_EQ(FAKE(RegQueryValueExA)(key, "EDID", nullptr, &type, edid, &size), ERROR_SUCCESS);
  EXPECT_EQ(type, static_cast<DWORD>(REG_BINARY));
  EXPECT_EQ(std::vector<uint8_t>(edid, edid + size), MakeEdid("Panel", {1366, 768, 32, 60}));
  EXPECT_EQ(FAKE(RegCloseKey)(key), ERROR_SUCCESS);
}

// The EDID of every monitor that is present, in the list's order; empty for one without.
std::vector<std::vector<uint8_t>> PresentEdids() {
  std::vector<std::vector<uint8_t>> edids;
  const DeviceList list(kMonitorClass);
  SP_DEVINFO_DATA data;
  for (DWORD index = 0; list.Device(index, &data); ++index) {
    const HKEY key =
        FAKE(SetupDiOpenDevRegKey)(list.get(), &data, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
    DWORD size = 0;
    FAKE(RegQueryValueExA)(key, "EDID", nullptr, nullptr, nullptr, &size);
    std::vector<uint8_t> edid(size);
    if (size != 0) FAKE(RegQueryValueExA)(key, "EDID", nullptr, nullptr, edid.data(), &size);
    edids.push_back(edid);
    FAKE(RegCloseKey)(key);
  }
  return edids;
}

TEST(SetupApi, IdenticalMonitorsHaveAKeyEach) {
  Machine machine("win7 intel: internal 1366x768 active, crt 1920x1080, hdmi 1920x1080");
  const std::vector<uint8_t> twin = MakeEdid("Twin", {1920, 1080, 32, 60});
  machine.model().connectors[1].monitor->edid = twin;
  machine.model().connectors[2].monitor->edid = twin;
  EXPECT_EQ(PresentEdids(), (std::vector<std::vector<uint8_t>>{
                                MakeEdid("Panel", {1366, 768, 32, 60}), twin, twin}));
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(SetupApi, DamagedEdidsAreGivenAsTheyAre) {
  Machine machine("win7 intel: internal 1366x768 active, crt 1920x1080, hdmi 1920x1080");
  const std::vector<uint8_t> cut(127, 0x5A);
  const std::vector<uint8_t> long_one(129, 0xA5);
  machine.model().connectors[0].monitor->edid = cut;
  machine.model().connectors[1].monitor->edid.clear();
  machine.model().connectors[2].monitor->edid = long_one;
  EXPECT_EQ(PresentEdids(), (std::vector<std::vector<uint8_t>>{cut, {}, long_one}));
}

TEST(SetupApi, MonitorWithoutEdidHasAKeyWithoutValue) {
  Machine machine("win7 intel: internal 1366x768 active");
  machine.model().connectors[0].monitor->edid.clear();
  const DeviceList list(kMonitorClass);
  SP_DEVINFO_DATA data;
  ASSERT_TRUE(list.Device(0, &data));
  const HKEY key =
      FAKE(SetupDiOpenDevRegKey)(list.get(), &data, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
  DWORD size = 0;
  EXPECT_EQ(FAKE(RegQueryValueExA)(key, "EDID", nullptr, nullptr, nullptr, &size),
            ERROR_FILE_NOT_FOUND);
  FAKE(RegCloseKey)(key);
}

}  // namespace
}  // namespace sim
