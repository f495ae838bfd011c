// Threads that poll the clock, pump the library of USB displays, or end together with their module.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

#include "sim/ShortForm.h"
#include "sim/tests/DisplayLinkCalls.h"
#include "sim/tests/Fakes.h"

namespace sim {
namespace {

// Threads take turns, so that nothing here is locked.
std::vector<std::string> g_story;
bool g_stop = false;
AddOnClient* g_client = nullptr;

uint64_t Moment() { return static_cast<uint64_t>(SIM_FAKE(clock)()); }
void Tell(const std::string& what) {
  g_story.push_back(std::to_string(Machine::Current().Now()) + " " + what);
}

// Asks for the time without a pause and does something every ten seconds.
DWORD WINAPI PollTenSeconds(void*) {
  uint64_t since = Moment();
  while (!g_stop) {
    if (Moment() - since < 10000) continue;
    SIM_FAKE(SetEvent)(nullptr);  // any simulated call
    Tell("again");
    since = Moment();
  }
  Tell("end");
  return 0;
}

DWORD WINAPI PumpUntilStopped(void*) {
  while (!g_stop) {
    const int32_t result = g_client->Pump();
    if (result != 0) Tell("pumped " + std::to_string(result));
  }
  Tell("end");
  return 0;
}

class TurnTaking : public testing::Test {
 protected:
  TurnTaking() {
    g_story.clear();
    AddOnClient::Heard().clear();
    g_stop = false;
    g_client = &client;
  }
  ~TurnTaking() override {
    machine.EndThreads();
    for (const HANDLE thread : threads) SIM_FAKE(CloseHandle)(thread);
  }
  HANDLE Start(LPTHREAD_START_ROUTINE procedure, void* parameter = nullptr) {
    threads.push_back(SIM_FAKE(CreateThread)(nullptr, 0, procedure, parameter, 0, nullptr));
    return threads.back();
  }
  DWORD Join(HANDLE thread, DWORD milliseconds = 5000) {
    return SIM_FAKE(WaitForSingleObject)(thread, milliseconds);
  }

  using Story = std::vector<std::string>;
  Machine machine{kUsbNotebook};
  AddOnClient client;
  std::vector<HANDLE> threads;
};

// --- Polling.

TEST_F(TurnTaking, PollerSeesTenSecondsToTheMillisecond) {
  machine.Advance(3);
  Start(PollTenSeconds);
  machine.Advance(9999);
  EXPECT_EQ(g_story, Story());
  machine.Advance(1);
  EXPECT_EQ(g_story, Story({"10003 again"}));
  machine.Advance(20000);
  EXPECT_EQ(g_story, Story({"10003 again", "20003 again", "30003 again"}));
}

TEST_F(TurnTaking, PollerSeesAtOnceThatItIsToEnd) {
  const HANDLE thread = Start(PollTenSeconds);
  machine.Advance(5004);
  g_stop = true;
  EXPECT_EQ(Join(thread), WAIT_OBJECT_0);
  EXPECT_EQ(g_story, Story({"5004 end"}));
}

TEST_F(TurnTaking, PollsAreCountedAndNotTold) {
  machine.JournalReads(true);
  Start(PollTenSeconds);
  machine.Advance(5000);
  EXPECT_EQ(machine.TakeJournal().find("clock"), std::string::npos);
  // Each step of ten milliseconds, and hardly more.
  EXPECT_GE(machine.Calls("clock"), 500u);
  EXPECT_LE(machine.Calls("clock"), 520u);
}

TEST_F(TurnTaking, TestsOwnThreadAsksAndGoesOn) {
  EXPECT_EQ(Moment(), 0u);
  EXPECT_EQ(Moment(), 0u);
  machine.Advance(7);
  EXPECT_EQ(Moment(), 7u);
}

TEST_F(TurnTaking, TwoPollersAndASleeperTakeTurns) {
  Start(PollTenSeconds);
  Start([](void*) -> DWORD {
    SIM_FAKE(Sleep)(10000);
    Tell("slept");
    return 0;
  });
  Start(PollTenSeconds);
  machine.Advance(10000);
  ASSERT_EQ(g_story.size(), 3u);
  for (const char* line : {"10000 again", "10000 slept"}) {
    EXPECT_NE(std::find(g_story.begin(), g_story.end(), line), g_story.end()) << line;
  }
}

TEST_F(TurnTaking, PollerThatIsLeftIsEnded) {
  Start(PollTenSeconds);
  machine.Advance(50);
  EXPECT_EQ(machine.EndThreads(), 1u);
  EXPECT_EQ(g_story, Story());  // in the middle of its work
  EXPECT_EQ(machine.EndThreads(), 0u);
}

// --- The beginning of a thread.

TEST_F(TurnTaking, NewThreadBeginsWhenTimePasses) {
  g_stop = true;
  Start(PollTenSeconds);
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(threads[0], 0), WAIT_OBJECT_0);
  EXPECT_EQ(g_story, Story({"0 end"}));
}

TEST_F(TurnTaking, NothingOfANewThreadIsSeenBefore) {
  for (int round = 0; round < 50; ++round) {
    g_stop = false;
    const HANDLE thread = Start(PollTenSeconds);
    ::Sleep(0);
    g_stop = true;
    EXPECT_EQ(Join(thread), WAIT_OBJECT_0);
  }
  // Every one has found its end before it began: nobody has polled.
  EXPECT_EQ(machine.Calls("clock"), 50u);
}

TEST_F(TurnTaking, WaitForGoodLetsItBegin) {
  g_stop = true;
  const HANDLE thread = Start(PollTenSeconds);
  EXPECT_EQ(Join(thread, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(g_story, Story({"0 end"}));
}

TEST_F(TurnTaking, ThreadMayRunAtOnce) {
  static HANDLE told = nullptr;
  told = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  machine.state().threads.StartAtOnce();
  Start([](void*) -> DWORD {
    SetEvent(told);
    return 0;
  });
  EXPECT_EQ(WaitForSingleObject(told, 20000), WAIT_OBJECT_0);
  CloseHandle(told);
}

// --- Pumping.

TEST_F(TurnTaking, EventsReachThePumpingThreadAtTheirMoment) {
  client.Subscribe();
  client.Register(AddOnClient::Context(1));
  const HANDLE thread = Start(PumpUntilStopped);
  machine.At(250, [this] { machine.Unplug("usb"); });
  machine.At(251, [this] { machine.Plug("usb", MakeMonitor("Back", 1280, 1024)); });
  machine.Advance(300);
  EXPECT_EQ(g_story, Story({"0 pumped 2", "250 pumped 1", "251 pumped 1"}));
  EXPECT_EQ(AddOnClient::Heard(),
            Heard({"0: 1 0x0 on 1", "0: 2 0xd15b000000000012 on 1",
                   "250: 3 0xd15b000000000012 on 1", "251: 2 0xd15b000000000012 on 1"}));
  g_stop = true;
  EXPECT_EQ(Join(thread), WAIT_OBJECT_0);
  EXPECT_EQ(g_story.back(), "351 end");  // when its pump is over
}

TEST_F(TurnTaking, EventBetweenTwoPassesOfTimeWaitsForTheNext) {
  client.Subscribe();
  client.Register(AddOnClient::Context(1));
  Start(PumpUntilStopped);
  machine.Advance(30);
  AddOnClient::Heard().clear();
  machine.Unplug("usb");
  EXPECT_EQ(AddOnClient::Heard(), Heard());
  machine.Advance(0);
  EXPECT_EQ(AddOnClient::Heard(), Heard({"30: 3 0xd15b000000000012 on 1"}));
}

TEST_F(TurnTaking, FailingPumpTakesItsTimeAndDoesNotSpin) {
  machine.Fail("dlPumpMessages", 1, 0, Machine::Repeat::kFromThenOn);
  Start(PumpUntilStopped);
  machine.Advance(1000);
  EXPECT_EQ(g_story.size(), 10u);
  EXPECT_EQ(g_story[0], "100 pumped -1");
  EXPECT_EQ(g_story[9], "1000 pumped -1");
}

TEST_F(TurnTaking, PumpingThreadThatIsLeftIsEnded) {
  Start(PumpUntilStopped);
  machine.Advance(50);
  EXPECT_EQ(machine.EndThreads(), 1u);
}

TEST(TurnTakingInRealTime, EventEndsThePump) {
  Machine machine(kUsbNotebook);
  machine.UseRealTime();
  AddOnClient client;
  AddOnClient::Heard().clear();
  client.Subscribe();
  client.Register(nullptr);
  g_client = &client;
  g_stop = false;
  g_story.clear();
  const HANDLE thread = SIM_FAKE(CreateThread)(
      nullptr, 0,
      [](void*) -> DWORD {
        for (int events = 0; events < 3;) events += g_client->Pump(10000);
        return 0;
      },
      nullptr, 0, nullptr);
  PostNivoEvent(machine, kNivoUndefined, 0);
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(thread, 20000), WAIT_OBJECT_0);
  EXPECT_EQ(AddOnClient::Heard().size(), 3u);
  SIM_FAKE(CloseHandle)(thread);
}

// --- A thread that holds a module.

TEST_F(TurnTaking, ThreadThatEndsWithItsModuleCountsAsEndedAndItsHandleAsKept) {
  const HANDLE thread = Start([](void*) -> DWORD {
    HMODULE module = nullptr;
    EXPECT_TRUE(SIM_FAKE(GetModuleHandleExA)(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                             reinterpret_cast<const char*>(&PumpUntilStopped),
                                             &module));
    EXPECT_NE(Machine::Current().Outstanding().find("module 0x"), std::string::npos);
    SIM_FAKE(FreeLibraryAndExitThread)(module, 11);
    return 12;
  });
  threads.clear();
  client.Free();
  EXPECT_EQ(Join(thread), WAIT_OBJECT_0);
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, 11u);
  EXPECT_EQ(machine.Outstanding().rfind("kept thread 0x", 0), 0u);
  EXPECT_EQ(machine.EndThreads(), 0u);
  const CaughtFailures caught;
  SIM_FAKE(CloseHandle)(thread);
  EXPECT_EQ(CaughtFailures::list(),
            std::vector<std::string>{"closed the handle of a thread that ends with its module"});
}

TEST_F(TurnTaking, ModuleByAddressMayBeAskedForWithoutAReference) {
  HMODULE module = nullptr;
  const DWORD flags =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  client.Free();
  EXPECT_TRUE(SIM_FAKE(GetModuleHandleExA)(flags, reinterpret_cast<const char*>(&PumpUntilStopped),
                                           &module));
  EXPECT_EQ(module, GetModuleHandleW(nullptr));
  EXPECT_EQ(machine.Outstanding(), "");
  machine.Fail("GetModuleHandleExA", 1);
  EXPECT_FALSE(SIM_FAKE(GetModuleHandleExA)(flags, reinterpret_cast<const char*>(&PumpUntilStopped),
                                            &module));
  EXPECT_EQ(module, nullptr);
  EXPECT_FALSE(SIM_FAKE(GetModuleHandleExA)(0, "AddOnApi64.dll", &module));
}

}  // namespace
}  // namespace sim
