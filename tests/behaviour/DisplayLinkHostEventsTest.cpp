// What the add-on library tells the host of, and the list of displays that comes of it.
#include <algorithm>
#include <cstring>

#include "tests/behaviour/AddOnBench.h"

namespace {

using namespace displaylink;  // the events

constexpr char kLine[] = "InternalNivoNotificationCallback() ";
constexpr uint64_t kDisplay = 0x8000000500000007;

class DisplayLinkHostEvents : public AddOnBench {
 protected:
  /// The thread runs and has subscribed.
  void Start() {
    Install();
    Connect();
    Advance(0);
    add_on.TakeCalls();
    core.ForgetLog();
  }
  void TellWithState(uint32_t event, uint64_t handle, uint32_t execution_state) {
    add_on.states[handle] = execution_state;
    Tell(event, handle);
  }
  static std::string Asked(uint64_t handle) {
    return "dlGetExecutionState(" + Hex(handle) + ", 10000, 0)\n";
  }
  static std::string Identified(uint64_t handle) {
    return "dlGetNivoID(" + Hex(handle) + ", 72)\n";
  }
  static std::string Hex(uint64_t number) {
    char text[24];
    std::snprintf(text, sizeof(text), "%llx", static_cast<unsigned long long>(number));
    return text;
  }
  using Displays = std::vector<uint64_t>;
};

// --- Each event by its name.

TEST_F(DisplayLinkHostEvents, EachIsToldByItsName) {
  Start();
  const char* const names[] = {"DL_NC_UNDEFINED",         "DL_NC_CONNECTED",
                               "DL_NC_NIVODISPLAY_ADDED", "DL_NC_NIVODISPLAY_CHANGED",
                               "DL_NC_SHUTDOWN",          "DL_NC_UNLOADAPI"};
  for (uint32_t event = 0; event < 6; ++event) {
    Tell(event, kDisplay);
    EXPECT_EQ(core.TakeLogWithSeverity(), std::string("INFO ") + kLine + names[event] + "\n");
  }
}

TEST_F(DisplayLinkHostEvents, OneThatIsNoneIsNotEvenTold) {
  Start();
  for (const uint32_t event : {6u, 7u, 0x7FFFFFFFu, 0xFFFFFFFFu}) Tell(event, kDisplay);
  EXPECT_EQ(core.TakeLog(), "");
  EXPECT_EQ(add_on.TakeCalls(), "");
  EXPECT_TRUE(Handles().empty());
}

TEST_F(DisplayLinkHostEvents, IsToldInTheFileOfTheHost) {
  Start();
  const size_t from = core.machine.Log().size();
  Tell(DL_NC_CONNECTED, 0);
  EXPECT_EQ(CountOf(core.machine.Log().substr(from), ":INFO:displaylink_addon_host.cpp("), 1u);
}

TEST_F(DisplayLinkHostEvents, MostLeaveTheListAloneAndAskNothing) {
  Start();
  TellWithState(DL_NC_NIVODISPLAY_ADDED, kDisplay, 1);
  add_on.TakeCalls();
  add_on.states[kDisplay] = kNivoStateIdle;
  for (const uint32_t event : {DL_NC_UNDEFINED, DL_NC_CONNECTED, DL_NC_SHUTDOWN, DL_NC_UNLOADAPI}) {
    Tell(event, kDisplay);
    Tell(event, 9);
  }
  EXPECT_EQ(Handles(), Displays{kDisplay});
  EXPECT_EQ(add_on.TakeCalls(), "");
}

// --- A display comes.

TEST_F(DisplayLinkHostEvents, AnAddedDisplayIsListedWithItsId) {
  Start();
  TellWithState(DL_NC_NIVODISPLAY_ADDED, kDisplay, 2);
  EXPECT_EQ(add_on.TakeCalls(), Asked(kDisplay) + Identified(kDisplay));
  EXPECT_EQ(add_on.calling_thread, state().thread_id);
  const std::vector<NivoDisplay> displays = box().NivoDisplays(host());
  ASSERT_EQ(displays.size(), 1u);
  EXPECT_EQ(displays[0].handle, kDisplay);
  NivoId id = {72, {}};
  id.contents[0] = 7;
  id.contents[67] = 0x67;
  EXPECT_EQ(std::memcmp(&displays[0].id, &id, sizeof(id)), 0);
}

TEST_F(DisplayLinkHostEvents, AListedDisplayIsNotAddedAgainNorAskedFor) {
  Start();
  TellWithState(DL_NC_NIVODISPLAY_ADDED, kDisplay, 1);
  add_on.TakeCalls();
  TellWithState(DL_NC_NIVODISPLAY_ADDED, kDisplay, kNivoStateIdle);
  EXPECT_EQ(add_on.TakeCalls(), "");
  EXPECT_EQ(Handles(), Displays{kDisplay});
}

TEST_F(DisplayLinkHostEvents, AnAddedDisplayInState6WaitsForAChangeToAnother) {
  Start();
  TellWithState(DL_NC_NIVODISPLAY_ADDED, kDisplay, 6);
  EXPECT_TRUE(Handles().empty());
  EXPECT_EQ(add_on.TakeCalls(), Asked(kDisplay));
  TellWithState(DL_NC_NIVODISPLAY_CHANGED, kDisplay, 6);
  EXPECT_TRUE(Handles().empty());
  EXPECT_EQ(add_on.TakeCalls(), Asked(kDisplay));
  TellWithState(DL_NC_NIVODISPLAY_CHANGED, kDisplay, 5);
  EXPECT_EQ(Handles(), Displays{kDisplay});
  EXPECT_EQ(add_on.TakeCalls(), Asked(kDisplay) + Identified(kDisplay));
}

TEST_F(DisplayLinkHostEvents, EveryStateBut6IsInUse) {
  Start();
  Displays listed;
  for (const uint32_t execution_state : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 0x80000006u, 0xFFFFFFFFu}) {
    listed.push_back(0x10 + listed.size());
    TellWithState(DL_NC_NIVODISPLAY_ADDED, listed.back(), execution_state);
  }
  EXPECT_EQ(Handles(), listed);
}

// --- A display changes.

TEST_F(DisplayLinkHostEvents, AListedDisplayInState6IsTakenOutOnce) {
  Start();
  for (const uint64_t handle : {1, 2, 3}) TellWithState(DL_NC_NIVODISPLAY_ADDED, handle, 1);
  add_on.TakeCalls();
  TellWithState(DL_NC_NIVODISPLAY_CHANGED, 2, 6);
  EXPECT_EQ(Handles(), (Displays{1, 3}));
  EXPECT_EQ(add_on.TakeCalls(), Asked(2));
  Tell(DL_NC_NIVODISPLAY_CHANGED, 2);
  EXPECT_EQ(Handles(), (Displays{1, 3}));
  EXPECT_EQ(add_on.TakeCalls(), Asked(2));
  TellWithState(DL_NC_NIVODISPLAY_ADDED, 2, 1);
  EXPECT_EQ(Handles(), (Displays{1, 3, 2}));
}

TEST_F(DisplayLinkHostEvents, AListedDisplayInAnotherStateStays) {
  Start();
  TellWithState(DL_NC_NIVODISPLAY_ADDED, kDisplay, 1);
  add_on.TakeCalls();
  TellWithState(DL_NC_NIVODISPLAY_CHANGED, kDisplay, 3);
  EXPECT_EQ(Handles(), Displays{kDisplay});
  EXPECT_EQ(add_on.TakeCalls(), Asked(kDisplay));
}

// --- Failures.

TEST_F(DisplayLinkHostEvents, ADisplayThatCannotBeAskedCountsAsInUse) {
  Start();
  Tell(DL_NC_NIVODISPLAY_ADDED, 1);
  Tell(DL_NC_NIVODISPLAY_CHANGED, 2);
  Tell(DL_NC_NIVODISPLAY_CHANGED, 1);
  EXPECT_EQ(Handles(), (Displays{1, 2}));
}

TEST_F(DisplayLinkHostEvents, TheResultOfTheQuestionIsNotLookedAt) {
  add_on.results["dlGetExecutionState"] = -2;
  Start();
  TellWithState(DL_NC_NIVODISPLAY_ADDED, 1, 6);
  EXPECT_TRUE(Handles().empty());
}

TEST_F(DisplayLinkHostEvents, ADisplayWithoutAnIdIsListedAllTheSame) {
  add_on.results["dlGetNivoID"] = -1;
  Start();
  TellWithState(DL_NC_NIVODISPLAY_ADDED, kDisplay, 1);
  const std::vector<NivoDisplay> displays = box().NivoDisplays(host());
  ASSERT_EQ(displays.size(), 1u);
  const NivoId id = {72, {}};
  EXPECT_EQ(std::memcmp(&displays[0].id, &id, sizeof(id)), 0);
}

TEST_F(DisplayLinkHostEvents, OneForNobodyGoesNowhere) {
  core.ostrel();
  core.ForgetLog();
  box().Notify(nullptr, DL_NC_NIVODISPLAY_ADDED, kDisplay);
  EXPECT_EQ(core.TakeLog(), "");
}

// --- The list.

TEST_F(DisplayLinkHostEvents, TheListOutlivesTheSubscription) {
  Start();
  TellWithState(DL_NC_NIVODISPLAY_ADDED, kDisplay, 1);
  Disconnect();
  EXPECT_EQ(Handles(), Displays{kDisplay});
  Drop();
  EXPECT_TRUE(Handles().empty());
}

TEST_F(DisplayLinkHostEvents, SeveralInOnePumpComeInTheirOrder) {
  Start();
  for (const uint64_t handle : {3, 1, 2}) {
    add_on.states[handle] = 1;
    add_on.Tell(DL_NC_NIVODISPLAY_ADDED, handle);
  }
  Advance(100);
  EXPECT_EQ(Handles(), (Displays{3, 1, 2}));
}

// --- All orders: what the two events make of the list, once more and without the library.

struct Step {
  uint32_t event;
  uint64_t handle;
  uint32_t execution_state;
};

void Apply(const Step& step, std::vector<uint64_t>* list) {
  const auto at = std::find(list->begin(), list->end(), step.handle);
  const bool idle = step.execution_state == 6;
  if (at == list->end()) {
    if (!idle) list->push_back(step.handle);
  } else if (step.event == DL_NC_NIVODISPLAY_CHANGED && idle) {
    list->erase(at);
  }
}

TEST_F(DisplayLinkHostEvents, InEveryOrderOfFourTheListIsWhatTheyMakeOfIt) {
  std::vector<Step> steps;
  for (const uint32_t event : {DL_NC_NIVODISPLAY_ADDED, DL_NC_NIVODISPLAY_CHANGED}) {
    for (const uint64_t handle : {1, 2}) {
      for (const uint32_t execution_state : {1, 6})
        steps.push_back({event, handle, execution_state});
    }
  }
  core.machine.SetEnvironment("OSTREL_LOG_LEVEL", "4");
  Install();
  host();
  box().BindAll();
  size_t with_two = 0;
  for (uint32_t order = 0; order < 8 * 8 * 8 * 8; ++order) {
    Displays expected;
    for (const uint64_t handle : {1, 2}) {
      add_on.states[handle] = 6;
      box().Notify(host(), DL_NC_NIVODISPLAY_CHANGED, handle);
    }
    for (uint32_t place = 0; place < 4; ++place) {
      const Step& step = steps[order >> (3 * place) & 7];
      add_on.states[step.handle] = step.execution_state;
      box().Notify(host(), step.event, step.handle);
      Apply(step, &expected);
    }
    ASSERT_EQ(Handles(), expected) << "order " << order;
    if (expected.size() == 2) ++with_two;
  }
  EXPECT_GT(with_two, 100u);  // or the orders would show little
}

}  // namespace
