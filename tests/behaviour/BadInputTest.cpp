// What hosts should not do, and machines that should not be: each export gives its failure result.
#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/FakeHost.h"

namespace {

constexpr uint32_t kUntouched = 0xABCDABCD;
constexpr char kNotebook[] = "win7 intel: internal 1366x768 active, crt 1024x768";

/// Calls every export that needs a side, and expects its failure result and no effect.
void ExpectNothingAnswers(sim::Machine& machine, sim::Library& ostrel) {
  machine.TakeJournal();
  uint32_t first = kUntouched, second = kUntouched;
  EXPECT_EQ(ostrel.Run(), 0);
  EXPECT_EQ(ostrel.RunEx(), nullptr);
  EXPECT_EQ(ostrel.Stop(), 0);
  EXPECT_EQ(ostrel.Cancel(), 0);
  EXPECT_EQ(ostrel.SaveCurrentMode(), 0);
  EXPECT_EQ(ostrel.HasDualOutputCapability(), 0);
  EXPECT_EQ(ostrel.HasExternalMonitorConnected(), 0);
  EXPECT_EQ(ostrel.EnableExtendMode(0), 0);
  EXPECT_EQ(ostrel.EnableExtendMode(1), 0);
  EXPECT_EQ(ostrel.IsExtendModeEnabled(), 0);
  EXPECT_EQ(ostrel.ChangeToNBOnlySingleDisplayMode(), 0);
  EXPECT_EQ(ostrel.GetConnectedDisplays(&first, &second), 0);
  EXPECT_EQ(ostrel.GetActiveDisplays(&first, &second), 0);
  EXPECT_EQ(ostrel.GetCurrentDisplayMode(&first, &second), 0);
  EXPECT_EQ(ostrel.SetNewDisplayMode(1, 1), 0);
  EXPECT_EQ(ostrel.SetNewDisplayMode(3, 0), 0);
  ostrel.DeInit();
  ostrel.DeInitExtendMode();
  EXPECT_EQ(first, kUntouched);
  EXPECT_EQ(second, kUntouched);
  EXPECT_EQ(machine.TakeJournal(), "");
  EXPECT_EQ(machine.Popup(), nullptr);
}

/// Calls every export that asks the display object, whatever they answer.
void CallEverything(sim::Library& ostrel) {
  uint32_t first = 0, second = 0;
  ostrel.Run();
  ostrel.RunEx();
  ostrel.Stop();
  ostrel.Cancel();
  ostrel.SaveCurrentMode();
  ostrel.HasDualOutputCapability();
  ostrel.HasExternalMonitorConnected();
  ostrel.EnableExtendMode(1);
  ostrel.IsExtendModeEnabled();
  ostrel.ChangeToNBOnlySingleDisplayMode();
  ostrel.GetConnectedDisplays(&first, &second);
  ostrel.GetActiveDisplays(&first, &second);
  ostrel.GetCurrentDisplayMode(&first, &second);
  ostrel.SetNewDisplayMode(1, 1);
  ostrel.SetNewDisplayMode(3, 0);
  ostrel.GetVgaVendor();
}

TEST(BadInput, ExportsBeforeInitDoNothing) {
  sim::Machine machine(kNotebook);
  machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
  sim::Library ostrel(machine);
  ExpectNothingAnswers(machine, ostrel);
}

TEST(BadInput, ExportsAfterDeInitDoNothing) {
  sim::Machine machine(kNotebook);
  machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
  machine.UsePictures(BuiltPictures());
  sim::Library ostrel(machine);
  ASSERT_TRUE(ostrel.Init());
  ASSERT_TRUE(ostrel.InitExtendMode());
  ASSERT_TRUE(ostrel.Run());
  ostrel.DeInit();
  ostrel.DeInitExtendMode();
  ExpectNothingAnswers(machine, ostrel);
}

TEST(BadInput, ExportsAfterAFailedInitDoNothing) {
  FakeHost host;
  host.script->initial = 0;
  ASSERT_FALSE(host.ostrel->Init());
  ExpectNothingAnswers(host.machine, *host.ostrel);
}

TEST(BadInput, NullOutputsGiveZeroAndAskNothing) {
  FakeHost host;
  ASSERT_TRUE(host.InitExtendMode());
  uint32_t out = kUntouched;
  EXPECT_EQ(host.ostrel->GetConnectedDisplays(nullptr, &out), 0);
  EXPECT_EQ(host.ostrel->GetConnectedDisplays(nullptr, nullptr), 0);
  EXPECT_EQ(host.ostrel->GetActiveDisplays(nullptr, &out), 0);
  EXPECT_EQ(host.ostrel->GetActiveDisplays(nullptr, nullptr), 0);
  EXPECT_EQ(host.ostrel->GetCurrentDisplayMode(nullptr, &out), 0);
  EXPECT_EQ(host.ostrel->GetCurrentDisplayMode(nullptr, nullptr), 0);
  EXPECT_EQ(out, kUntouched);
  EXPECT_EQ(host.script->TakeCalls(), "");
}

TEST(BadInput, OptionalOutputsMayBeNull) {
  FakeHost host;
  ASSERT_TRUE(host.InitExtendMode());
  uint32_t out = kUntouched;
  EXPECT_EQ(host.ostrel->GetActiveDisplays(&out, nullptr), 1);
  EXPECT_EQ(host.ostrel->GetCurrentDisplayMode(&out, nullptr), 1);
  host.script->extend_enabled = 1;
  EXPECT_EQ(host.ostrel->GetCurrentDisplayMode(&out, nullptr), 0);
  EXPECT_EQ(out, 3u);
}

TEST(BadInput, ModesAndMasksOutOfRangeGiveZero) {
  sim::Machine machine(kNotebook);
  machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
  sim::Library ostrel(machine);
  ASSERT_TRUE(ostrel.InitExtendMode());
  for (const uint32_t mode : {0u, 6u, 7u, 255u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    for (const uint32_t displays : {0u, 0x10u, 0x40u, 0xFFu, 0x80000000u, 0xFFFFFFFFu}) {
      EXPECT_EQ(ostrel.SetNewDisplayMode(mode, displays), 0) << mode << " " << displays;
    }
  }
  for (const uint32_t mode : {1u, 2u}) {
    for (const uint32_t displays : {0x10u, 0x40u, 0x80000000u}) {
      EXPECT_EQ(ostrel.SetNewDisplayMode(mode, displays), 0) << mode << " " << displays;
    }
  }
  ostrel.DeInitExtendMode();
}

TEST(BadInput, EnableExtendModeTakesAnyNumber) {
  FakeHost host;
  ASSERT_TRUE(host.InitExtendMode());
  host.script->follows = true;
  for (const uint32_t enable : {2u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(host.ostrel->EnableExtendMode(enable), 1) << enable;
  }
}

TEST(BadInput, ReceiverWindowThatIsGoneStopsNothing) {
  sim::Machine machine(kNotebook);
  machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
  machine.UsePictures(BuiltPictures());
  sim::Library ostrel(machine);
  ASSERT_TRUE(ostrel.Init());
  const HWND receiver =
      CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  ASSERT_NE(receiver, nullptr);
  ASSERT_EQ(ostrel.RegisterNotification(receiver, WM_APP), 1);
  DestroyWindow(receiver);
  EXPECT_EQ(ostrel.Run(), 1);
  EXPECT_EQ(ostrel.Run(), 1);
  EXPECT_EQ(ostrel.Stop(), 1);
  EXPECT_NE(machine.Topology(), "single internal");
  EXPECT_EQ(ostrel.Run(), 1);
  ostrel.DeInit();
}

TEST(BadInput, HardwareIdWithoutUnderscoreIsNoVendor) {
  sim::Machine machine(kNotebook);
  machine.model().adapters[0].hardware_id = "ROOT\\BASICDISPLAY";
  sim::Library ostrel(machine);
  EXPECT_EQ(ostrel.GetVgaVendor(), 0u);
  EXPECT_EQ(ostrel.InitExtendMode(), 1);  // as a machine without an adapter that is known
  ostrel.DeInitExtendMode();
}

TEST(BadInput, HardwareIdOfTheGreatestLengthIsRead) {
  sim::Machine machine(kNotebook);
  std::string& id = machine.model().adapters[0].hardware_id;
  id = "PCI\\VEN_8086&" + std::string(200, 'X');
  sim::Library ostrel(machine);
  EXPECT_EQ(ostrel.GetVgaVendor(), 1u);
  id = "PCI\\VEN_8086&" + std::string(2000, 'X');  // more than the buffer holds: not readable
  EXPECT_EQ(ostrel.GetVgaVendor(), 0u);
}

TEST(BadInput, SecondInitOfBothSidesIsHarmless) {
  FakeHost host;
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(host.ostrel->Init(), 1);
    EXPECT_EQ(host.ostrel->InitExtendMode(), 1);
  }
  host.ostrel->DeInit();
  host.ostrel->DeInitExtendMode();
  EXPECT_TRUE(host.script->deleted);
  host.ostrel->DeInit();
  host.ostrel->DeInitExtendMode();
  EXPECT_EQ(host.machine.Calls("GdiplusShutdown"), 1u);
  EXPECT_EQ(host.machine.Calls("CoUninitialize"), 1u);
}

TEST(BadInput, NoExceptionPassesAnExport) {
  FakeHost host;
  ASSERT_TRUE(host.ostrel->Init());
  ASSERT_TRUE(host.InitExtendMode());
  host.script->on_call = [](const std::string&) { throw std::runtime_error("driver"); };
  uint32_t first = kUntouched, second = kUntouched;
  EXPECT_EQ(host.ostrel->Run(), 0);
  EXPECT_EQ(host.ostrel->RunEx(), nullptr);
  EXPECT_EQ(host.ostrel->HasDualOutputCapability(), 0);
  EXPECT_EQ(host.ostrel->HasExternalMonitorConnected(), 0);
  EXPECT_EQ(host.ostrel->EnableExtendMode(1), 0);
  EXPECT_EQ(host.ostrel->IsExtendModeEnabled(), 0);
  EXPECT_EQ(host.ostrel->ChangeToNBOnlySingleDisplayMode(), 0);
  EXPECT_EQ(host.ostrel->GetConnectedDisplays(&first, &second), 0);
  EXPECT_EQ(host.ostrel->GetActiveDisplays(&first, &second), 0);
  EXPECT_EQ(host.ostrel->GetCurrentDisplayMode(&first, &second), 0);
  EXPECT_EQ(host.ostrel->SetNewDisplayMode(1, 1), 0);
  EXPECT_EQ(host.ostrel->SetNewDisplayMode(3, 0), 0);
  EXPECT_EQ(host.ostrel->GetVgaVendor(), 0u);
  EXPECT_EQ(first, kUntouched);
  EXPECT_EQ(second, kUntouched);
}

TEST(BadInput, EverythingThrownIsCaughtNotOnlyExceptions) {
  FakeHost host;
  ASSERT_TRUE(host.InitExtendMode());
  host.script->on_call = [](const std::string&) { throw 42; };
  EXPECT_EQ(host.ostrel->IsExtendModeEnabled(), 0);
  host.script->on_call = [](const std::string&) { throw "narrow string"; };
  EXPECT_EQ(host.ostrel->IsExtendModeEnabled(), 0);
}

TEST(BadInput, AMachineWhoseObjectVanishesAnswersNothing) {
  FakeHost host;
  ASSERT_TRUE(host.ostrel->Init());
  ASSERT_TRUE(host.InitExtendMode());
  host.machine.model().adapters[0].disabled = true;
  host.machine.model().adapters[0].hardware_id = "PCI\\VEN_1039&DEV_6351";
  CallEverything(*host.ostrel);
  EXPECT_TRUE(host.script->deleted);
  uint32_t out = kUntouched;
  EXPECT_EQ(host.ostrel->GetConnectedDisplays(&out, nullptr), 0);
  EXPECT_EQ(out, kUntouched);
  host.ostrel->DeInit();
  host.ostrel->DeInitExtendMode();
}

}  // namespace
