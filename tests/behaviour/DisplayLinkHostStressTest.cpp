// Two clients that come and go a thousand times while displays do: in virtual time, where every
// step is known, and in real time, where nothing is but that nothing breaks and nothing is left.
#include <algorithm>
#include <array>
#include <functional>
#include <random>

#include "tests/behaviour/AddOnBench.h"

namespace {

using displaylink::DL_NC_NIVODISPLAY_ADDED;
using displaylink::DL_NC_NIVODISPLAY_CHANGED;

constexpr int kRounds = 1000;
constexpr uint64_t kDisplays = 5;

using HostPointer = boost::shared_ptr<displaylink::DisplayLinkAddOnHost>;

/// The two clients and what is to come of what they do. Their host is a new one whenever nobody
/// else has it.
class Rounds {
 public:
  Rounds(const DisplayLinkBox& box, ScriptedAddOn* add_on, sim::Machine* machine, uint32_t seed)
      : box_(box), add_on_(*add_on), machine_(*machine), random_(seed) {}
  ~Rounds() {
    for (HostPointer& client : clients_) {
      if (client != nullptr) Leave(&client);
    }
  }
  Rounds(const Rounds&) = delete;
  Rounds& operator=(const Rounds&) = delete;

  void Next() {
    HostPointer& client = clients_[Below(2)];
    client == nullptr ? Join(&client) : Leave(&client);
    if (Below(4) != 0) Pass(Below(300));
    for (uint32_t count = Below(4); running_ && count > 0; --count) DisplayChanges();
    Check();
    if (running_ && Below(4) == 0) TellAndEnd();
  }
  uint32_t ends() const { return ends_; }

 private:
  uint32_t Below(uint32_t limit) { return random_() % limit; }
  const HostPointer& AnyClient() const {
    return clients_[0] != nullptr ? clients_[0] : clients_[1];
  }

  void Join(HostPointer* client) {
    *client = box_.GetInstance();
    box_.Connect(client->get());
  }
  void Leave(HostPointer* client) {
    box_.Disconnect(client->get());
    client->reset();
    if (AnyClient() != nullptr) return;
    running_ = false;
    expected_.clear();
    ++ends_;
  }
  // The thread begins when time passes.
  void Pass(uint32_t milliseconds) {
    machine_.Advance(milliseconds);
    running_ = AnyClient() != nullptr;
  }
  void Tell(uint64_t display) {
    const bool idle = Below(2) == 0;
    const bool added = Below(2) == 0;
    add_on_.states[display] = idle ? 6 : Below(6);
    add_on_.Tell(added ? DL_NC_NIVODISPLAY_ADDED : DL_NC_NIVODISPLAY_CHANGED, display);
    const auto at = std::find(expected_.begin(), expected_.end(), display);
    if (at == expected_.end()) {
      if (!idle) expected_.push_back(display);
    } else if (!added && idle) {
      expected_.erase(at);
    }
  }
  void DisplayChanges() {
    Tell(1 + Below(kDisplays));
    Pass(100 + Below(50));
  }
  // What has been told arrives while the thread is being waited for.
  void TellAndEnd() {
    Tell(1 + Below(kDisplays));
    for (HostPointer& client : clients_) {
      if (client != nullptr) Leave(&client);
    }
    EXPECT_TRUE(add_on_.Listeners().empty());
  }

  void Check() {
    EXPECT_EQ(add_on_.Listeners().size(), running_ ? 1u : 0u);
    const HostPointer& host = AnyClient();
    if (host == nullptr) return;
    const AddOnHostState state = box_.StateOf(host.get());
    EXPECT_EQ(state.client_connections, (clients_[0] != nullptr) + (clients_[1] != nullptr));
    EXPECT_FALSE(state.stop);
    std::vector<uint64_t> handles;
    for (const auto& display : box_.NivoDisplays(host.get())) handles.push_back(display.handle);
    EXPECT_EQ(handles, expected_);
  }

  const DisplayLinkBox& box_;
  ScriptedAddOn& add_on_;
  sim::Machine& machine_;
  std::mt19937 random_;
  std::array<HostPointer, 2> clients_;
  bool running_ = false;  // the thread has begun
  std::vector<uint64_t> expected_;
  uint32_t ends_ = 0;
};

class DisplayLinkHostStress : public AddOnBench {
 protected:
  // Without records: they would be most of what a round does.
  DisplayLinkHostStress() { core.machine.SetEnvironment("OSTREL_LOG_LEVEL", "4"); }
};

std::string CallsOfThousandRounds(uint32_t seed) {
  ScriptedAddOn add_on;
  CoreHost core("win7 intel: internal 1366x768 active, crt 1024x768");
  core.machine.SetEnvironment("OSTREL_LOG_LEVEL", "4");
  add_on.Install(&core.machine);
  std::string calls;
  {
    Rounds rounds(*core.ostrel().white_box().display_link, &add_on, &core.machine, seed);
    for (int i = 0; i < kRounds; ++i) {
      rounds.Next();
      calls += add_on.TakeCalls() + std::to_string(core.machine.Now()) + "\n";
      if (testing::Test::HasFailure()) break;
    }
    EXPECT_GT(rounds.ends(), 100u);
  }
  EXPECT_EQ(core.Modules(), 1u);
  return calls;
}

TEST(DisplayLinkHostRounds, AThousandOfTwoClientsGiveTheSameEachTime) {
  const std::string first = CallsOfThousandRounds(1);
  const std::string second = CallsOfThousandRounds(1);
  EXPECT_TRUE(first == second);
  EXPECT_GT(CountOf(first, "dlSubscribePids"), 100u);
  EXPECT_EQ(CountOf(first, "dlSubscribePids"), CountOf(first, "dlUnSubscribePids"));
  EXPECT_EQ(CountOf(first, "unknown"), 0u);
}

// --- Real time.

/// Somebody beside the test, for as long as this stands.
class Other {
 public:
  explicit Other(std::function<void()> act)
      : act_(std::move(act)), thread_(CreateThread(nullptr, 0, Act, this, 0, nullptr)) {}
  ~Other() {
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
  }
  Other(const Other&) = delete;
  Other& operator=(const Other&) = delete;
  bool IsOver() const { return over_; }

 private:
  static DWORD WINAPI Act(void* self) {
    static_cast<Other*>(self)->act_();
    static_cast<Other*>(self)->over_ = true;
    return 0;
  }
  const std::function<void()> act_;
  std::atomic<bool> over_{false};
  const HANDLE thread_;
};

class DisplayLinkHostInRealTime : public DisplayLinkHostStress {
 protected:
  DisplayLinkHostInRealTime() { core.machine.UseRealTime(); }

  /// Half of the rounds. Between them nobody may have the host, and then the next one is new.
  void JoinAndLeave(uint32_t seed) {
    std::mt19937 random(seed);
    for (int i = 0; i < kRounds / 2; ++i) {
      RunOnce(random() % 4);
      Sleep(random() % 4);
    }
  }
  void RunOnce(uint32_t stays) {
    const HostPointer host = box().GetInstance();
    box().Connect(host.get());
    if (stays != 0) Sleep(stays);
    for (const auto& display : box().NivoDisplays(host.get())) {
      if (display.id.size != 72 || display.handle - 1 >= kDisplays) ++torn_;
      ++seen_;
    }
    box().Disconnect(host.get());
  }
  std::atomic<uint32_t> seen_{0};
  std::atomic<uint32_t> torn_{0};
};

TEST_F(DisplayLinkHostInRealTime, AThousandRoundsOfTwoClientsLeaveNothingBehind) {
  add_on.pump_period = 1;
  for (uint64_t display = 1; display <= kDisplays; ++display) add_on.states[display] = display % 2;
  Install();
  box();
  uint64_t told = 0;
  {
    const Other first([this] { JoinAndLeave(1); });
    const Other second([this] { JoinAndLeave(2); });
    while (!first.IsOver() || !second.IsOver()) {
      add_on.Tell(DL_NC_NIVODISPLAY_ADDED, 1 + told % kDisplays);
      add_on.Tell(DL_NC_NIVODISPLAY_CHANGED, 1 + told++ % kDisplays);
      Sleep(1);
    }
  }
  EXPECT_GT(told, 10u);
  EXPECT_GT(seen_, 10u);
  EXPECT_EQ(torn_, 0u);
  EXPECT_TRUE(add_on.Listeners().empty());
  const std::string calls = add_on.TakeCalls();
  EXPECT_GT(CountOf(calls, "dlSubscribePids"), 10u);
  EXPECT_GT(CountOf(calls, "dlGetNivoID"), 10u);
  EXPECT_EQ(state().client_connections, 0);  // of a new one: nobody holds one of theirs
  EXPECT_FALSE(state().stop);
  EXPECT_EQ(core.Modules(), 1u);  // the add-on library
}

TEST_F(DisplayLinkHostInRealTime, AClientThatComesWaitsForOneThatGoes) {
  add_on.pump_period = 3000;  // long enough for a busy machine
  Install();
  Connect();
  while (add_on.Pumps() == 0) Sleep(1);
  {
    const Other last([this] { Disconnect(); });
    while (!state().stop) Sleep(1);
    Connect();
    EXPECT_TRUE(add_on.Listeners().empty());  // the other has got through to its end
    EXPECT_EQ(add_on.Pumps(), 1u);
  }
  Disconnect();
}

TEST_F(DisplayLinkHostInRealTime, APollingThreadEndsWithItsLastClient) {
  Connect();
  while (box().LoadState() != displaylink::DummyApiLoaded) Sleep(1);
  const ULONGLONG begin = GetTickCount64();
  Disconnect();
  EXPECT_LT(GetTickCount64() - begin, 4000u);
  EXPECT_EQ(state().thread, nullptr);
  EXPECT_EQ(TakeOutput(), kDummy);
}

}  // namespace
