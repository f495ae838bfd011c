// The simulated Intel driver: its class, its table, its devices and its switches.
#include "sim/faces/IntelDriver.h"

#include <gtest/gtest.h>

#include "sim/EdidMaker.h"
#include "sim/Topology.h"
#include "sim/faces/BasicStrings.h"
#include "sim/faces/IntelDriverRules.h"
#include "sim/tests/Fakes.h"
#include "sim/tests/IntelDriverCalls.h"

namespace sim {
namespace {

constexpr char kTwo[] = "win7 intel: internal 1366x768 active, crt 1280x1024";
constexpr char kThree[] = "win7 intel*3: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080";
constexpr uint32_t kPanel = 0x1000;
constexpr uint32_t kCrt = 0x1;
constexpr uint32_t kHdmi = 0x10000;
constexpr DriverSaid kFine = {S_OK, 0};

// --- The class.

TEST(IntelDriver, ClassIsFoundByNameInAnyCase) {
  const Machine machine(kTwo);
  CLSID id = {};
  EXPECT_EQ(FAKE(CLSIDFromProgID)(L"iGFXext.cuiEXTERNAL", &id), S_OK);
  EXPECT_TRUE(IsEqualCLSID(id, kDriverClass));
}

TEST(IntelDriver, MachineWithoutItsAdapterOrWithoutItHasNoClass) {
  for (const bool intel : {false, true}) {
    Machine machine(intel ? kTwo : "win7 nvidia: internal 1366x768 active");
    machine.model().adapters[0].vendor_library = !intel;
    CLSID id = kDriverClass;
    EXPECT_EQ(FAKE(CLSIDFromProgID)(L"IgfxExt.CUIExternal", &id), CO_E_CLASSSTRING);
    void* object = &id;
    EXPECT_EQ(FAKE(CoCreateInstance)(kDriverClass, nullptr, CLSCTX_LOCAL_SERVER, kDriverInterface,
                                     &object),
              REGDB_E_CLASSNOTREG);
    EXPECT_EQ(object, nullptr);
  }
}

TEST(IntelDriver, ClassIsALocalServersAndHasThisInterface) {
  const Machine machine(kTwo);
  void* object = nullptr;
  EXPECT_EQ(FAKE(CoCreateInstance)(kDriverClass, nullptr, CLSCTX_INPROC_SERVER, kDriverInterface,
                                   &object),
            REGDB_E_CLASSNOTREG);
  EXPECT_EQ(FAKE(CoCreateInstance)(kDriverClass, nullptr, CLSCTX_ALL, IID_IDispatch, &object),
            E_NOINTERFACE);
  EXPECT_EQ(
      FAKE(CoCreateInstance)(kDriverClass, nullptr, CLSCTX_LOCAL_SERVER, kDriverInterface, &object),
      S_OK);
  EXPECT_NE(object, nullptr);
}

// The class object is registered with COM itself, for as long as the machine is there.
TEST(IntelDriver, ObjectIsMadeByComItself) {
  void* object = nullptr;
  {
    const Machine machine(kTwo);
    const DriverClient driver;
    EXPECT_EQ(
        CoCreateInstance(kDriverClass, nullptr, CLSCTX_INPROC_SERVER, kDriverInterface, &object),
        S_OK);
    EXPECT_EQ(object, driver.object());
    EXPECT_EQ(IntelDriverReferences(machine), 2u);
  }
  ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
  EXPECT_EQ(
      CoCreateInstance(kDriverClass, nullptr, CLSCTX_INPROC_SERVER, kDriverInterface, &object),
      REGDB_E_CLASSNOTREG);
  CoUninitialize();
}

TEST(IntelDriver, ClassObjectMakesNoPartOfAnotherObject) {
  const Machine machine(kTwo);
  const DriverClient driver;
  IClassFactory* factory = nullptr;
  ASSERT_EQ(CoGetClassObject(kDriverClass, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                             reinterpret_cast<void**>(&factory)),
            S_OK);
  void* object = &factory;
  EXPECT_EQ(factory->CreateInstance(factory, IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(factory->QueryInterface(IID_IDispatch, &object), E_NOINTERFACE);
  factory->Release();
}

TEST(IntelDriver, ReferenceOfTheMakerIsItsToKeepAndNoOther) {
  Machine machine(kTwo);
  const DriverClient driver;
  EXPECT_EQ(IntelDriverReferences(machine), 1u);
  EXPECT_EQ(machine.Outstanding(), "");
  EXPECT_EQ(driver.Slot(1), 2);
  EXPECT_NE(machine.Outstanding(), "");
  EXPECT_EQ(driver.Slot(2), 1);
  EXPECT_EQ(machine.Outstanding(), "");
  const CaughtFailures failures;
  EXPECT_EQ(driver.Slot(2), 0);
  EXPECT_EQ(failures.list().size(), 1u);
}

TEST(IntelDriver, SlotThatNobodyNeedsFailsTheTestByName) {
  const Machine machine(kTwo);
  const DriverClient driver;
  const CaughtFailures failures;
  EXPECT_EQ(driver.Slot(3, 1, 2, 3), E_NOTIMPL);
  EXPECT_EQ(driver.Slot(25), E_NOTIMPL);
  EXPECT_EQ(driver.Slot(42), E_NOTIMPL);
  EXPECT_EQ(failures.list(),
            (std::vector<std::string>{
                "ICUIExternal8::EnumActiveDevices was called, which is not simulated",
                "ICUIExternal8::GetGammaRamp was called, which is not simulated",
                "ICUIExternal8::down-scaling operation 4 was called, which is not simulated"}));
}

// --- Devices.

TEST(IntelDriver, DevicesOfTheAdapterBehindADisplayDevice) {
  const Machine machine(
      "win7 intel, nvidia: internal 1366x768 active, crt 1280x1024, dvi, tv, dp, other, "
      "wireless, hdmi, hdmi2 1920x1080, crt2@2 1024x768");
  const DriverClient driver;
  const std::string all =
      "0x1000 type 2 status 0x12\n0x1 type 1 status 0x2\n0x100 type 3 status 0x0\n"
      "0x10 type 4 status 0x0\n0x100000 type 7 status 0x0\n0x1000000 type 6 status 0x0\n"
      "0x10000000 type 9 status 0x0\n0x10000 type 5 status 0x0\n0x10001 type 5 status 0x2\nend 1";
  EXPECT_EQ(driver.Walk(L"\\\\.\\DISPLAY1"), all);
  EXPECT_EQ(driver.Walk(L"\\\\.\\display2"), all);
  const std::string refused = "end " + std::to_string(E_INVALIDARG);
  EXPECT_EQ(driver.Walk(L"\\\\.\\DISPLAY3"), refused);  // the other vendor's
  EXPECT_EQ(driver.Walk(L"\\\\.\\DISPLAY9"), refused);
}

TEST(IntelDriver, TypeOnEntrySelectsTheKind) {
  const Machine machine(kThree);
  const DriverClient driver;
  EXPECT_EQ(driver.Walk(L"\\\\.\\DISPLAY1", 5), "0x10000 type 5 status 0x2\nend 1");
  EXPECT_EQ(driver.Walk(L"\\\\.\\DISPLAY1", 2), "0x1000 type 2 status 0x12\nend 1");
}

TEST(IntelDriver, AdaptersOfOneKindShareTheNumbering) {
  const Machine machine(
      "win7 intel, intel: internal 1366x768 active, crt 1280x1024, crt2@2 1024x768");
  const DriverClient driver;
  EXPECT_EQ(driver.Walk(L"\\\\.\\DISPLAY3"), "0x2 type 1 status 0x2\nend 1");
}

TEST(IntelDriver, DeviceNameIsABasicStringAndStaysTheDrivers) {
  Machine machine(kTwo);
  const DriverClient driver;
  const BSTR name = FAKE(SysAllocString)(L"\\\\.\\DISPLAY1");
  EXPECT_NE(machine.Outstanding(), "");
  uint32_t out[3] = {0, 0xFFFFFFFF, 0};
  EXPECT_EQ(driver.Slot(12, name, 0U, &out[0], &out[1], &out[2]), S_OK);
  EXPECT_EQ(driver.Slot(12, name, 9U, &out[0], &out[1], &out[2]), S_FALSE);
  EXPECT_EQ(machine.Outstanding(), "");
  EXPECT_EQ(KeptBasicStrings(machine), 1u);

  const CaughtFailures failures;
  FAKE(SysFreeString)(name);
  wchar_t plain[] = L"\\\\.\\DISPLAY1";
  driver.Slot(12, static_cast<BSTR>(plain), 0U, &out[0], &out[1], &out[2]);
  ASSERT_EQ(failures.list().size(), 2u);
  EXPECT_NE(failures.list()[0].find("gave back what it does not hold: BSTR"), std::string::npos);
  EXPECT_EQ(failures.list()[1], "ICUIExternal8::EnumDevices was given a text that is no BSTR");
}

// --- ChangeActiveDevices.

TEST(IntelDriver, OneRecordMakesASingleDisplayThatWindowsSees) {
  Machine machine(kTwo);
  const DriverClient driver;
  EXPECT_EQ(driver.Change(Record(kFirst, kCrt)), kFine);
  EXPECT_EQ(machine.Topology(), "single crt");
  EXPECT_EQ(Now(kFirst), "1280x1024x32@60 at 0,0");
  EXPECT_EQ(Query(QDC_DATABASE_CURRENT).topology, DISPLAYCONFIG_TOPOLOGY_EXTERNAL);
  EXPECT_EQ(machine.TakeJournal(),
            "ICUIExternal8::ChangeActiveDevices(\\\\.\\DISPLAY1 mode=1 primary=0x0 count=1 "
            "first=0x1 second=0x0 err=0)=0\n");
}

TEST(IntelDriver, OneRecordWithTwoDevicesMakesAClone) {
  Machine machine(kTwo);
  const DriverClient driver;
  EXPECT_EQ(driver.Change(Record(kFirst, kPanel, kCrt)), kFine);
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
  EXPECT_EQ(Now(kFirst), "1280x720x32@60 at 0,0");
  EXPECT_EQ(machine.TakeJournal(),
            "ICUIExternal8::ChangeActiveDevices(\\\\.\\DISPLAY1 mode=3 primary=0x1000 count=2 "
            "first=0x1000 second=0x1 err=0)=0\n");
}

TEST(IntelDriver, EitherDeviceOfACloneMayBeThePrimary) {
  Machine machine(kTwo);
  const DriverClient driver;
  EXPECT_EQ(driver.Change(Record(kFirst, kPanel, kCrt).Set(88, kCrt)), kFine);
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
}

TEST(IntelDriver, TwoRecordsMakeAnExtendedDesktop) {
  Machine machine(kTwo);
  const DriverClient driver;
  EXPECT_EQ(driver.Change(Both(Record(kFirst, kPanel), Record(kSecond, kCrt))), kFine);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
  EXPECT_EQ(Now(kFirst), "1366x768x32@60 at 0,0");
  EXPECT_EQ(Now(kSecond), "1280x1024x32@60 at 1366,0");
  EXPECT_EQ(machine.TakeJournal(),
            "ICUIExternal8::ChangeActiveDevices(\\\\.\\DISPLAY1 mode=1 primary=0x0 count=1 "
            "first=0x1000 second=0x0, \\\\.\\DISPLAY2 mode=1 primary=0x0 count=1 first=0x1 "
            "second=0x0 err=0)=0\n");
  EXPECT_EQ(driver.Change(Record(kFirst, kPanel)), kFine);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(IntelDriver, ArrangementComesBackAsItWasUsedLast) {
  Machine machine(kTwo);
  const DriverClient driver;
  const Words extended = Both(Record(kFirst, kPanel), Record(kSecond, kCrt));
  EXPECT_EQ(driver.Change(extended), kFine);
  EXPECT_EQ(Change(kSecond, Sized(1024, 768), CDS_UPDATEREGISTRY), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(driver.Change(Record(kFirst, kPanel)), kFine);
  EXPECT_EQ(driver.Change(extended), kFine);
  EXPECT_EQ(Now(kSecond), "1024x768x32@60 at 1366,0");
}

TEST(IntelDriver, OtherAdaptersKeepWhatTheyShow) {
  Machine machine(
      "win7 intel, nvidia: internal 1366x768 active, crt 1280x1024, hdmi@2 1920x1080 active");
  ASSERT_EQ(machine.Topology(), "extend internal+hdmi");
  const DriverClient driver;
  EXPECT_EQ(driver.Change(Record(kFirst, kCrt)), kFine);
  EXPECT_EQ(machine.Topology(), "extend crt+hdmi");
}

struct Refusal {
  const char* what;
  Words records;
  DriverSaid said;
};

TEST(IntelDriver, RecordsThatItRefuses) {
  const DriverSaid argument = {E_INVALIDARG, kIntelBadArgument};
  const DriverSaid unknown = {E_FAIL, kIntelUnknownDevice};
  const Refusal refusals[] = {
      {"too short", Words(119), argument},
      {"three records", Words(360), argument},
      {"size field", Record(kFirst, kPanel).Set(0, 84), argument},
      {"mode 5", Record(kFirst, kPanel).Set(84, 5), argument},
      {"two of a single", Record(kFirst, kPanel).Set(92, 2), argument},
      {"one of a clone", Record(kFirst, kPanel, kCrt).Set(92, 1), argument},
      {"primary of a single", Record(kFirst, kPanel).Set(88, kPanel), argument},
      {"clone's primary", Record(kFirst, kPanel, kCrt).Set(88, kHdmi), argument},
      {"clone without a primary", Record(kFirst, kPanel, kCrt).Set(88, 0), argument},
      {"one display twice", Record(kFirst, kPanel, kPanel), argument},
      {"field beyond the uids", Record(kFirst, kPanel).Set(104, 1), argument},
      {"one device twice", Both(Record(kFirst, kPanel), Record(kFirst, kCrt)), argument},
      {"two clones", Both(Record(kFirst, kPanel, kCrt), Record(kSecond, kHdmi)), argument},
      {"device name", Record("\\\\.\\DISPLAY7", kPanel), unknown},
      {"uid", Record(kFirst, 0x1001), unknown},
      {"no second uid", Record(kFirst, kPanel, kCrt).Set(100, 0), unknown},
      {"nothing attached", Record(kFirst, kHdmi), {E_FAIL, kIntelNotAttached}},
  };
  Machine machine("win7 intel: internal 1366x768 active, crt 1280x1024, hdmi");
  const DriverClient driver;
  for (const Refusal& refusal : refusals) {
    EXPECT_EQ(driver.Change(refusal.records), refusal.said) << refusal.what;
  }
  EXPECT_EQ(driver.Change(Record(kFirst, kPanel), kNView),
            (DriverSaid{E_INVALIDARG, kIntelUnknownBlock}));
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(IntelDriver, MoreDisplaysThanTheAdapterDrivesAreRefused) {
  Machine machine("win7 intel: internal 1366x768 active, crt 1280x1024");
  machine.model().adapters[0].heads = 1;
  const DriverClient driver;
  const DriverSaid refused = {E_FAIL, kIntelTooManyDisplays};
  EXPECT_EQ(driver.Change(Record(kFirst, kPanel, kCrt)), refused);
  EXPECT_EQ(driver.Change(Both(Record(kFirst, kPanel), Record(kSecond, kCrt))), refused);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(IntelDriver, FaultIsAFailingResultOrAnErrorUnderASuccess) {
  Machine machine(kTwo);
  const DriverClient driver;
  machine.Fail("ICUIExternal8::ChangeActiveDevices", 1);
  machine.Fail("ICUIExternal8::ChangeActiveDevices", 2, static_cast<uint32_t>(E_ACCESSDENIED));
  machine.Fail("ICUIExternal8::ChangeActiveDevices", 3, 77);
  EXPECT_EQ(driver.Change(Record(kFirst, kCrt)), (DriverSaid{E_FAIL, kIntelFault}));
  EXPECT_EQ(driver.Change(Record(kFirst, kCrt)), (DriverSaid{E_ACCESSDENIED, kIntelFault}));
  EXPECT_EQ(driver.Change(Record(kFirst, kCrt)), (DriverSaid{S_OK, 77}));
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(driver.Change(Record(kFirst, kCrt)), kFine);
  EXPECT_EQ(machine.Topology(), "single crt");
  EXPECT_EQ(machine.Calls("ICUIExternal8::ChangeActiveDevices"), 4u);
}

}  // namespace
}  // namespace sim
