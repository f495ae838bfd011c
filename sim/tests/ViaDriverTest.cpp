// The simulated escape of VIA's display driver.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "sim/faces/ViaDriver.h"
#include "sim/tests/FaceCalls.h"
#include "sim/tests/Fakes.h"

namespace sim {
namespace {

constexpr int kEscape = 0x3000;
constexpr char kThree[] = "xp via: internal 1280x800 active, crt 1280x1024, dvi 1280x1024";

// A context of the screen, and calls on it.
class Context {
 public:
  Context() : dc_(FAKE(CreateDCA)("DISPLAY", nullptr, nullptr, nullptr)) {}
  ~Context() { FAKE(DeleteDC)(dc_); }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  int Call(int code, const std::vector<uint32_t>& input, std::vector<uint32_t>* output = nullptr) {
    return FAKE(ExtEscape)(dc_, code, static_cast<int>(4 * input.size()),
                           reinterpret_cast<const char*>(input.data()),
                           output != nullptr ? static_cast<int>(4 * output->size()) : 0,
                           output != nullptr ? reinterpret_cast<char*>(output->data()) : nullptr);
  }
  uint32_t Connected() {
    std::vector<uint32_t> output = {0xEE};
    EXPECT_EQ(Call(kEscape, {7}, &output), 1);
    return output[0];
  }
  uint32_t Active() {
    std::vector<uint32_t> output = {0xEE, 0xEE};
    EXPECT_EQ(Call(kEscape, {1}, &output), 1);
    EXPECT_EQ(output[1], kViaOwnWord);
    return output[0];
  }
  HDC dc() const { return dc_; }

 private:
  HDC dc_;
};

TEST(ViaDriver, EscapeIsKnownWhileThePrimaryDisplayIsAWorkingVias) {
  Machine machine("xp via, intel: internal 1280x800 active, crt@2 1280x1024 active");
  Context context;
  Adapter& via = machine.model().adapters[0];
  const auto known = [&context] { return context.Call(QUERYESCSUPPORT, {kEscape}); };
  EXPECT_EQ(known(), 1);
  via.vendor_library = false;
  EXPECT_EQ(known(), 0);
  std::vector<uint32_t> output = {0xEE};
  EXPECT_EQ(context.Call(kEscape, {7}, &output), 0);
  EXPECT_EQ(output[0], 0xEEu);
  via.vendor_library = true;
  via.problem = 10;
  EXPECT_EQ(known(), 0);
  via.problem = 0;
  machine.model().primary_source = 2;
  EXPECT_EQ(known(), 0);
  machine.model().primary_source = 99;
  EXPECT_EQ(known(), 0);
  machine.model().primary_source = 0;
  EXPECT_EQ(known(), 1);
}

TEST(ViaDriver, NoOtherEscapeIsKnown) {
  const Machine machine(kThree);
  Context context;
  EXPECT_EQ(context.Call(QUERYESCSUPPORT, {0x3001}), 0);
  EXPECT_EQ(context.Call(QUERYESCSUPPORT, {}), 0);
  EXPECT_EQ(context.Call(0x3001, {7}), 0);
}

TEST(ViaDriver, DevicesByKindOfOutput) {
  const struct {
    const char* machine;
    uint32_t connected, active;
  } rows[] = {
      {"xp via: internal 1280x800 active", 0x02, 0x02},
      {"xp via: internal 1280x800, crt 1280x1024 active, tv", 0x03, 0x01},
      {"xp via: internal 1280x800 active, tv 800x600 active", 0x06, 0x06},
      {"xp via: clone internal 1280x800 active, dvi 1280x1024 active", 0x12, 0x12},
      {"xp via: internal 1280x800 active, hdmi 1920x1080 active, dp 1920x1080", 0x02, 0x02},
      {"xp via*4: internal 1280x800 active, crt 800x600, tv 800x600, dvi 800x600 active", 0x17,
       0x12},
      {"xp via, intel: internal 1280x800 active, crt@2 1280x1024 active", 0x02, 0x02},
  };
  for (const auto& row : rows) {
    const Machine machine(row.machine);
    Context context;
    EXPECT_EQ(context.Connected(), row.connected) << row.machine;
    EXPECT_EQ(context.Active(), row.active) << row.machine;
  }
}

TEST(ViaDriver, DevicesMayBeToldByATest) {
  Machine machine(kThree);
  SetViaDevices(machine, 0xFFFFFFFF, 0);
  Context context;
  EXPECT_EQ(context.Connected(), 0xFFFFFFFFu);
  EXPECT_EQ(context.Active(), 0u);
}

TEST(ViaDriver, SwitchShowsWhatIsNamedAndIsSeenByWindows) {
  Machine machine(kThree);
  Context context;
  EXPECT_EQ(context.Call(kEscape, {2, 0x03, 0}), 1);
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
  EXPECT_EQ(context.Active(), 0x03u);
  EXPECT_EQ(context.Call(kEscape, {2, 0x10, 0}), 1);
  EXPECT_EQ(machine.Topology(), "single dvi");
  EXPECT_EQ(Now(kFirst), "1280x1024x32@60 at 0,0");
  EXPECT_EQ(machine.TakeJournal(),
            "ExtEscape(0x3000 in=2,3,0 (12 bytes) out=0 bytes)=1\n"
            "ExtEscape(0x3000 in=2,10,0 (12 bytes) out=0 bytes)=1\n");
}

TEST(ViaDriver, SwitchThatCannotBeIsRefused) {
  Machine machine("xp via: internal 1280x800 active, crt 1280x1024, dvi 1280x1024, tv");
  Context context;
  for (const uint32_t devices : {0x00u, 0x04u, 0x06u, 0x08u, 0x13u, 0x22u}) {
    EXPECT_EQ(context.Call(kEscape, {2, devices, 0}), -1) << devices;
  }
  EXPECT_EQ(context.Call(kEscape, {2, 0x01, 1}), -1);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(ViaDriver, OtherSizesFailTheTest) {
  const Machine machine(kThree);
  Context context;
  const CaughtFailures failures;
  std::vector<uint32_t> one = {0xEE};
  std::vector<uint32_t> two = {0xEE, 0xEE};
  EXPECT_EQ(context.Call(kEscape, {7}, &two), -1);
  EXPECT_EQ(context.Call(kEscape, {7}), -1);
  EXPECT_EQ(context.Call(kEscape, {7, 0}, &one), -1);
  EXPECT_EQ(context.Call(kEscape, {1}, &one), -1);
  EXPECT_EQ(context.Call(kEscape, {2, 0x01}), -1);
  EXPECT_EQ(context.Call(kEscape, {2, 0x01, 0}, &one), -1);
  EXPECT_EQ(context.Call(kEscape, {3}), -1);
  EXPECT_EQ(context.Call(kEscape, {}), -1);
  EXPECT_EQ(failures.list().size(), 8u);
  EXPECT_EQ(one[0], 0xEEu);
  EXPECT_EQ(two[0], 0xEEu);
}

TEST(ViaDriver, WhatIsNoContextFailsTheTest) {
  const Machine machine(kThree);
  const CaughtFailures failures;
  const uint32_t input = kEscape;
  HDC dc = nullptr;
  {
    const Context context;
    dc = context.dc();
  }
  for (const HDC none : {static_cast<HDC>(nullptr), dc}) {
    EXPECT_EQ(FAKE(ExtEscape)(none, QUERYESCSUPPORT, 4, reinterpret_cast<const char*>(&input), 0,
                              nullptr),
              -1);
  }
  EXPECT_EQ(failures.list().size(), 2u);
}

TEST(ViaDriver, FaultIsTheResultAndChangesNothing) {
  Machine machine(kThree);
  Context context;
  machine.Fail("ExtEscape", 1);
  machine.Fail("ExtEscape", 2, 2);
  std::vector<uint32_t> output = {0xEE};
  EXPECT_EQ(context.Call(kEscape, {7}, &output), -1);
  EXPECT_EQ(context.Call(kEscape, {2, 0x01, 0}), 2);
  EXPECT_EQ(output[0], 0xEEu);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(ViaDriver, QuestionsStandInTheJournalAsReads) {
  Machine machine(kThree);
  Context context;
  context.Connected();
  EXPECT_EQ(machine.TakeJournal(), "");
  machine.JournalReads(true);
  context.Call(QUERYESCSUPPORT, {kEscape});
  context.Connected();
  context.Active();
  EXPECT_EQ(machine.TakeJournal(),
            "ExtEscape(0x8 in=3000 (4 bytes) out=0 bytes)=1\n"
            "ExtEscape(0x3000 in=7 (4 bytes) out=4 bytes)=1\n"
            "ExtEscape(0x3000 in=1 (4 bytes) out=8 bytes)=1\n");
}

TEST(ViaDriver, NotebookHasTheEscape) {
  std::string file = __FILE__;
  std::replace(file.begin(), file.end(), '\\', '/');
  file = file.substr(0, file.rfind("sim/tests/")) + "machines/xp-via.toml";
  const std::unique_ptr<Machine> machine = Machine::FromFile(file);
  Context context;
  EXPECT_EQ(context.Connected(), 0x13u);
  EXPECT_EQ(context.Active(), 0x02u);
}

// --- Numbers of profile files.

TEST(ProfileFace, NumbersAreReallyReadAndCanBeMadeToFail) {
  Machine machine(kThree);
  const std::string file = Narrow(machine.HostFolder()) + "\\some.ini";
  EXPECT_TRUE(FAKE(WritePrivateProfileStringA)("S", "K", "17", file.c_str()));
  machine.Fail("GetPrivateProfileIntA", 2);
  EXPECT_EQ(FAKE(GetPrivateProfileIntA)("S", "K", 3, file.c_str()), 17u);
  EXPECT_EQ(FAKE(GetPrivateProfileIntA)("S", "K", 3, file.c_str()), 0u);
  EXPECT_EQ(FAKE(GetPrivateProfileIntA)("S", "L", 3, file.c_str()), 3u);
  EXPECT_EQ(machine.Calls("GetPrivateProfileIntA"), 3u);
}

}  // namespace
}  // namespace sim
