// The two sides of the library: what each start and end sets up, shares and takes down.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <stdexcept>
#include <vector>

#include "tests/support/FakeHost.h"

namespace {

constexpr char kNotebook[] = "win7 intel: internal 1366x768 active, crt 1024x768";
constexpr wchar_t kWithChecks[] = L"host.exe --enable-dcheck";
constexpr UINT kMessage = WM_APP + 1;

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

size_t CountOf(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

/// A window that can receive notifications.
class Receiver {
 public:
  Receiver()
      : window_(CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr,
                                nullptr)) {}
  ~Receiver() { Close(); }
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

  HWND window() const { return window_; }
  void Close() {
    if (window_ != nullptr) DestroyWindow(window_);
    window_ = nullptr;
  }

 private:
  HWND window_;
};

/// A notebook on which the operating system's own interface is preferred, so that the real library
/// has an object there.
struct PlainHost {
  explicit PlainHost(const std::wstring& command_line = L"host.exe") : machine(kNotebook) {
    machine.SetCommandLine(command_line);
    machine.UsePictures(BuiltPictures());
    machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
    ostrel = std::make_unique<sim::Library>(machine);
    at_rest = machine.Outstanding();
  }
  ~PlainHost() {
    ostrel->DeInit();
    ostrel->DeInitExtendMode();
  }
  PlainHost(const PlainHost&) = delete;
  PlainHost& operator=(const PlainHost&) = delete;

  std::string Codes() const {
    std::string codes;
    for (const sim::Notification& notification : machine.Notifications()) {
      codes += std::to_string(notification.wparam) + " ";
    }
    return codes;
  }
  /// What is outstanding, without the device lists that the set-up leaves behind on this machine.
  std::string Held() const {
    return std::regex_replace(machine.Outstanding(), std::regex("wide device list [^\n]*\n"), "");
  }
  sim::Machine machine;
  std::unique_ptr<sim::Library> ostrel;
  std::string at_rest;  // what is outstanding while no side is up: the open log
};

// --- Loading.

TEST(OstrelLoad, DoesNothingToTheDisplays) {
  sim::Machine machine(kNotebook);
  sim::Library ostrel(machine);
  EXPECT_EQ(machine.TakeJournal(), "");
  EXPECT_EQ(machine.Calls("SetupDiGetClassDevsA"), 0u);
  ostrel.Unload();
  EXPECT_EQ(machine.Outstanding(), "");
}

TEST(OstrelLoad, FailsWhereTheLogFolderCannotBeFound) {
  sim::Machine machine(kNotebook);
  machine.Fail("SHGetFolderPathW", 1);
  machine.Fail("ExpandEnvironmentStringsW", 1);
  EXPECT_THROW(sim::Library ostrel(machine), std::runtime_error);
}

// --- The switch side.

TEST(OstrelInit, StartsGdiPlusObjectAndSession) {
  PlainHost host;
  EXPECT_EQ(host.ostrel->Init(), 1);
  EXPECT_EQ(host.machine.Calls("GdiplusStartup"), 1u);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  host.ostrel->DeInit();
  EXPECT_EQ(host.machine.Calls("GdiplusShutdown"), 1u);
  EXPECT_EQ(host.Held(), host.at_rest);
}

TEST(OstrelInit, SecondCallReturnsOneAndDoesNothing) {
  FakeHost host;
  ASSERT_EQ(host.ostrel->Init(), 1);
  host.script->TakeCalls();
  EXPECT_EQ(host.ostrel->Init(), 1);
  EXPECT_EQ(host.script->TakeCalls(), "");
  EXPECT_EQ(host.machine.Calls("GdiplusStartup"), 1u);
}

TEST(OstrelInit, FailsWithoutGdiPlus) {
  FakeHost host;
  host.machine.Fail("GdiplusStartup", 1);
  EXPECT_EQ(host.ostrel->Init(), 0);
  EXPECT_EQ(host.script->TakeCalls(), "");
  EXPECT_EQ(host.machine.Calls("GdiplusShutdown"), 0u);
  EXPECT_EQ(host.ostrel->Init(), 1);
}

TEST(OstrelInit, LeavesGdiPlusStoppedWhenTheObjectCannotBeInitialised) {
  FakeHost host;
  host.script->initial = 0;
  EXPECT_EQ(host.ostrel->Init(), 0);
  EXPECT_EQ(host.script->TakeCalls(), "Initial\n");
  EXPECT_TRUE(host.script->deleted);
  EXPECT_EQ(host.factory().ActiveMonitor(), nullptr);
  EXPECT_EQ(host.machine.Calls("GdiplusStartup"), 1u);
  EXPECT_EQ(host.machine.Calls("GdiplusShutdown"), 1u);
  EXPECT_TRUE(
      Contains(host.machine.Log(), "InitialMultiMonitorObject()- initial display library failed"));
  EXPECT_EQ(host.machine.Calls("CoUninitialize"), 0u);
  EXPECT_EQ(host.ostrel->Run(), 0);
}

TEST(OstrelInit, LeavesGdiPlusStoppedWhenInitialThrows) {
  FakeHost host;
  host.script->on_call = [](const std::string&) { throw std::runtime_error("no driver"); };
  EXPECT_EQ(host.ostrel->Init(), 0);
  EXPECT_EQ(host.machine.Calls("GdiplusShutdown"), 1u);
}

TEST(OstrelInit, WorksAgainAfterAFailure) {
  PlainHost host;
  host.machine.Fail("GdiplusStartup", 1);
  EXPECT_EQ(host.ostrel->Init(), 0);
  EXPECT_EQ(host.ostrel->Init(), 1);
  host.ostrel->DeInit();
  EXPECT_EQ(host.Held(), host.at_rest);
}

TEST(OstrelInit, WorksAgainAfterDeInit) {
  PlainHost host;
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(host.ostrel->Init(), 1);
    EXPECT_EQ(host.ostrel->Run(), 1);
    host.ostrel->DeInit();
    EXPECT_EQ(host.ostrel->Run(), 0);
    EXPECT_EQ(host.Held(), host.at_rest);
  }
}

TEST(OstrelInit, KeepsCachedConfigurationOverDeInit) {
  PlainHost host;
  host.machine.model().adapters[0].vendor_library = false;
  ASSERT_EQ(host.ostrel->Init(), 1);
  host.ostrel->DeInit();
  host.machine.Config("Settings", "Prefer Windows 7 CCD API", 0);
  // With the changed key read the driver's interface would be asked for, which is not there.
  EXPECT_EQ(host.ostrel->Init(), 1);
}

TEST(OstrelDeInit, WithThePopUpOpenPostsTwoAndAppliesNothing) {
  PlainHost host;
  const Receiver receiver;
  ASSERT_EQ(host.ostrel->Init(), 1);
  ASSERT_EQ(host.ostrel->RegisterNotification(receiver.window(), kMessage), 1);
  ASSERT_EQ(host.ostrel->Run(), 1);
  ASSERT_EQ(host.ostrel->Run(), 1);  // the highlight has moved
  host.machine.TakeJournal();
  host.ostrel->DeInit();
  EXPECT_EQ(host.Codes(), "1 2 ");
  EXPECT_EQ(host.machine.Popup(), nullptr);
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "\n"), 1u);  // the notification alone
  host.machine.Advance(10000);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.Held(), host.at_rest);
}

TEST(OstrelDeInit, DoesNothingWithoutInit) {
  PlainHost host;
  host.ostrel->DeInit();
  host.ostrel->DeInitExtendMode();
  EXPECT_EQ(host.machine.Calls("GdiplusShutdown"), 0u);
  EXPECT_EQ(host.machine.Calls("CoUninitialize"), 0u);
}

// --- The extend-mode side.

TEST(OstrelInitExtendMode, NeedsNoGdiPlus) {
  PlainHost host;
  EXPECT_EQ(host.ostrel->InitExtendMode(), 1);
  EXPECT_EQ(host.ostrel->InitExtendMode(), 1);
  EXPECT_EQ(host.machine.Calls("GdiplusStartup"), 0u);
  host.ostrel->DeInitExtendMode();
  EXPECT_EQ(host.Held(), host.at_rest);
}

TEST(OstrelInitExtendMode, FailureEndsComWhenNoSideIsUp) {
  FakeHost host(kWithChecks);
  host.script->initial = 0;
  EXPECT_EQ(host.ostrel->InitExtendMode(), 0);
  EXPECT_EQ(host.machine.Calls("CoUninitialize"), 1u);
  EXPECT_TRUE(host.script->deleted);
  EXPECT_TRUE(Contains(host.machine.Log(),
                       "Check failed: FALSE && \"InitialMultiMonitorObject() FAILED!\". "));
}

TEST(OstrelInitExtendMode, FailureIsNotLoggedByTheCheckWithoutChecks) {
  FakeHost host;
  host.script->initial = 0;
  EXPECT_EQ(host.ostrel->InitExtendMode(), 0);
  EXPECT_FALSE(Contains(host.machine.Log(), "Check failed"));
}

// --- Both sides.

TEST(OstrelSides, ShareOneObjectThatIsInitialisedOnce) {
  FakeHost host;
  ASSERT_EQ(host.ostrel->Init(), 1);
  const std::string calls = host.script->TakeCalls();
  EXPECT_EQ(CountOf(calls, "Initial\n"), 1u);
  EXPECT_EQ(host.ostrel->InitExtendMode(), 1);
  EXPECT_EQ(host.script->TakeCalls(), "");
}

TEST(OstrelSides, ObjectGoesWithTheSwitchSideWhenThatEndsLastAndComStays) {
  FakeHost host;
  ASSERT_EQ(host.ostrel->Init(), 1);
  ASSERT_EQ(host.ostrel->InitExtendMode(), 1);
  host.ostrel->DeInitExtendMode();
  EXPECT_FALSE(host.script->deleted);
  EXPECT_EQ(host.ostrel->IsExtendModeEnabled(), 0);
  host.ostrel->DeInit();
  EXPECT_TRUE(host.script->deleted);
  EXPECT_EQ(host.machine.Calls("CoUninitialize"), 0u);
}

TEST(OstrelSides, ObjectAndComGoWithTheExtendModeSideWhenThatEndsLast) {
  FakeHost host;
  ASSERT_EQ(host.ostrel->InitExtendMode(), 1);
  ASSERT_EQ(host.ostrel->Init(), 1);
  host.ostrel->DeInit();
  EXPECT_FALSE(host.script->deleted);
  EXPECT_EQ(host.machine.Calls("GdiplusShutdown"), 1u);
  EXPECT_EQ(host.machine.Calls("CoUninitialize"), 0u);
  host.script->extend_enabled = 1;
  EXPECT_EQ(host.ostrel->IsExtendModeEnabled(), 1);
  host.ostrel->DeInitExtendMode();
  EXPECT_TRUE(host.script->deleted);
  EXPECT_EQ(host.machine.Calls("CoUninitialize"), 1u);
}

TEST(OstrelSides, ObjectIsGoneBeforeComIs) {
  FakeHost host;
  ASSERT_EQ(host.ostrel->InitExtendMode(), 1);
  host.machine.JournalReads(true);
  host.script->on_delete = [&host] { EXPECT_EQ(host.machine.Calls("CoUninitialize"), 0u); };
  host.ostrel->DeInitExtendMode();
  EXPECT_TRUE(host.script->deleted);
}

TEST(OstrelSides, SwitchSideAloneAnswersNoQuery) {
  FakeHost host;
  ASSERT_EQ(host.ostrel->Init(), 1);
  host.script->TakeCalls();
  uint32_t out = 0;
  EXPECT_EQ(host.ostrel->HasDualOutputCapability(), 0);
  EXPECT_EQ(host.ostrel->GetConnectedDisplays(&out, nullptr), 0);
  EXPECT_EQ(host.ostrel->GetCurrentDisplayMode(&out, nullptr), 0);
  EXPECT_EQ(host.ostrel->SetNewDisplayMode(1, 1), 0);
  EXPECT_EQ(host.script->TakeCalls(), "");
}

TEST(OstrelSides, ExtendModeSideAloneOpensNoPopUp) {
  PlainHost host;
  ASSERT_EQ(host.ostrel->InitExtendMode(), 1);
  EXPECT_EQ(host.ostrel->Run(), 0);
  EXPECT_EQ(host.ostrel->RunEx(), nullptr);
  EXPECT_EQ(host.ostrel->Stop(), 0);
  EXPECT_EQ(host.ostrel->Cancel(), 0);
  EXPECT_EQ(host.ostrel->SaveCurrentMode(), 0);
}

// --- The pop-up's exports.

class OstrelPopup : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(host.ostrel->Init(), 1);
    ASSERT_EQ(host.ostrel->RegisterNotification(receiver.window(), kMessage), 1);
  }

  PlainHost host;
  Receiver receiver;
};

TEST_F(OstrelPopup, RunOpensAndThenMovesTheHighlight) {
  EXPECT_EQ(host.ostrel->Run(), 1);
  EXPECT_NE(host.machine.Popup(), nullptr);
  const uint32_t drawn = host.machine.Calls("UpdateLayeredWindow");
  EXPECT_EQ(host.ostrel->Run(), 1);
  EXPECT_EQ(host.machine.Calls("UpdateLayeredWindow"), drawn + 1);
  EXPECT_EQ(host.Codes(), "1 ");
}

TEST_F(OstrelPopup, RunExGivesThePopUpsWindow) {
  const HWND window = host.ostrel->RunEx();
  EXPECT_NE(window, nullptr);
  EXPECT_EQ(window, host.machine.Popup());
  EXPECT_EQ(host.ostrel->RunEx(), window);
}

TEST_F(OstrelPopup, RunExGivesNullWhenItCannotOpen) {
  host.machine.Fail("QueryDisplayConfig", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(host.ostrel->RunEx(), nullptr);
  host.machine.Fail("QueryDisplayConfig", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(host.ostrel->Run(), 0);
}

TEST_F(OstrelPopup, StopWithoutOneReturnsOneAndChangesNothing) {
  EXPECT_EQ(host.ostrel->Stop(), 1);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.Codes(), "");
}

TEST_F(OstrelPopup, StopPostsTwoAndThenApplies) {
  ASSERT_EQ(host.ostrel->Run(), 1);
  ASSERT_EQ(host.ostrel->Run(), 1);
  host.machine.TakeJournal();
  EXPECT_EQ(host.ostrel->Stop(), 1);
  const std::string journal = host.machine.TakeJournal();
  const size_t posted = journal.find("wparam=2");
  const size_t set = journal.find("SetDisplayConfig");
  ASSERT_NE(posted, std::string::npos) << journal;
  ASSERT_NE(set, std::string::npos) << journal;
  EXPECT_LT(posted, set) << journal;
  EXPECT_EQ(host.Codes(), "1 2 ");  // and nothing when the change is done
  EXPECT_NE(host.machine.Topology(), "single internal");
}

TEST_F(OstrelPopup, StopReturnsOneWhenTheSwitchFails) {
  ASSERT_EQ(host.ostrel->Run(), 1);
  ASSERT_EQ(host.ostrel->Run(), 1);
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.ostrel->Stop(), 1);
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST_F(OstrelPopup, CancelPostsTwoAndAppliesNothing) {
  ASSERT_EQ(host.ostrel->Run(), 1);
  ASSERT_EQ(host.ostrel->Run(), 1);
  EXPECT_EQ(host.ostrel->Cancel(), 1);
  EXPECT_EQ(host.Codes(), "1 2 ");
  EXPECT_EQ(host.machine.Popup(), nullptr);
  EXPECT_EQ(host.ostrel->Stop(), 1);  // the highlight is back: nothing to apply
  EXPECT_EQ(host.machine.Topology(), "single internal");
  EXPECT_FALSE(Contains(host.machine.TakeJournal(), "SetDisplayConfig"));
}

TEST_F(OstrelPopup, CancelWithoutOneReturnsOneAndPostsNothing) {
  EXPECT_EQ(host.ostrel->Cancel(), 1);
  EXPECT_EQ(host.Codes(), "");
}

TEST_F(OstrelPopup, SaveCurrentModeReturnsOneWithNothingToWrite) {
  EXPECT_EQ(host.ostrel->SaveCurrentMode(), 1);
  EXPECT_FALSE(std::filesystem::exists(host.machine.TempFolder() + L"\\Ostrel.ini"));
}

TEST_F(OstrelPopup, SaveCurrentModeWritesWhileItIsOpen) {
  ASSERT_EQ(host.ostrel->Run(), 1);
  EXPECT_EQ(host.ostrel->SaveCurrentMode(), 1);
  EXPECT_TRUE(std::filesystem::exists(host.machine.TempFolder() + L"\\Ostrel.ini"));
}

TEST_F(OstrelPopup, NotificationsCarryTheIdAndAZeroLparam) {
  ASSERT_EQ(host.ostrel->Run(), 1);
  ASSERT_EQ(host.ostrel->Cancel(), 1);
  ASSERT_EQ(host.machine.Notifications().size(), 2u);
  for (const sim::Notification& notification : host.machine.Notifications()) {
    EXPECT_EQ(notification.receiver, receiver.window());
    EXPECT_EQ(notification.message, kMessage);
    EXPECT_EQ(notification.lparam, 0);
  }
}

TEST_F(OstrelPopup, MessageIdBelow1024IsNeverPosted) {
  host.ostrel->RegisterNotification(receiver.window(), 1023);
  ASSERT_EQ(host.ostrel->Run(), 1);
  EXPECT_EQ(host.Codes(), "");
  EXPECT_TRUE(Contains(host.machine.Log(), "Invalid notify message id!"));
  host.ostrel->Cancel();
  host.ostrel->RegisterNotification(receiver.window(), 1024);
  ASSERT_EQ(host.ostrel->Run(), 1);
  EXPECT_EQ(host.Codes(), "1 ");
}

TEST_F(OstrelPopup, NothingIsPostedWithoutAReceiver) {
  host.ostrel->RegisterNotification(nullptr, kMessage);
  ASSERT_EQ(host.ostrel->Run(), 1);
  EXPECT_EQ(host.Codes(), "");
  EXPECT_TRUE(Contains(host.machine.Log(), "Notify receiver did not assigned!"));
}

TEST(OstrelRegisterNotification, SecondCallRaisesTwoChecksAndOverwrites) {
  PlainHost host(kWithChecks);
  const Receiver first, second;
  ASSERT_EQ(host.ostrel->Init(), 1);
  EXPECT_EQ(host.ostrel->RegisterNotification(first.window(), kMessage), 1);
  EXPECT_FALSE(Contains(host.machine.Log(), "Check failed: notify_"));
  EXPECT_EQ(host.ostrel->RegisterNotification(second.window(), kMessage + 1), 1);
  EXPECT_EQ(CountOf(host.machine.Log(), "Check failed: notify_receiver_ == NULL. "), 1u);
  EXPECT_EQ(CountOf(host.machine.Log(), "Check failed: notify_message_id_ == 0. "), 1u);
  ASSERT_EQ(host.ostrel->Run(), 1);
  ASSERT_EQ(host.machine.Notifications().size(), 1u);
  EXPECT_EQ(host.machine.Notifications()[0].receiver, second.window());
  EXPECT_EQ(host.machine.Notifications()[0].message, kMessage + 1);
}

// --- The run-time library's thread-local slot, of which a process has 1088.

size_t FreeThreadSlots() {
  std::vector<DWORD> slots;
  for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc()) {
    slots.push_back(slot);
  }
  for (const DWORD slot : slots) TlsFree(slot);
  return slots.size();
}

TEST(Unload, GivesTheThreadLocalSlotBack) {
  sim::Machine machine(kNotebook);
  const auto load = [&machine] { sim::Library ostrel(machine); };
  load();  // what the system's own libraries take, they keep
  const size_t before = FreeThreadSlots();
  for (int i = 0; i < 4; ++i) load();
  EXPECT_EQ(FreeThreadSlots(), before);
}

// --- Ostrel.ini.

TEST(OstrelFlushRememberedSettings, WorksBeforeAnyInitialisation) {
  sim::Machine machine(kNotebook);
  sim::Library ostrel(machine);
  EXPECT_EQ(ostrel.FlushRememberedSettings(), 0);
  const std::filesystem::path file = machine.TempFolder() + L"\\Ostrel.ini";
  std::ofstream(file) << "[Active Display Mode]\n";
  EXPECT_NE(ostrel.FlushRememberedSettings(), 0);
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_EQ(ostrel.FlushRememberedSettings(), 0);
}

TEST(OstrelFlushRememberedSettings, IsZeroForWhatCannotBeDeleted) {
  sim::Machine machine(kNotebook);
  sim::Library ostrel(machine);
  std::filesystem::create_directory(machine.TempFolder() + L"\\Ostrel.ini");
  EXPECT_EQ(ostrel.FlushRememberedSettings(), 0);
}

}  // namespace
