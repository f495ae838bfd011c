// The late binding of the DisplayLink add-on library: what is loaded, what each function is bound
// to, and which transitions stand on standard output.
#include <cstring>
#include <functional>

#include "tests/behaviour/AddOnBench.h"

namespace {

using displaylink::ApiLoaded;
using displaylink::ApiLoadPending;
using displaylink::DummyApiLoaded;
using displaylink::kNotBound;
using displaylink::UnLoadPending;

constexpr char kResolved[] =
    "GetProcAddress(dlSubscribePids)=0\n"
    "GetProcAddress(dlUnSubscribePids)=0\n"
    "GetProcAddress(dlRegisterNivoDisplayNotification)=0\n"
    "GetProcAddress(dlUnRegisterNivoDisplayNotification)=0\n"
    "GetProcAddress(dlPumpMessages)=0\n"
    "GetProcAddress(dlGetExecutionState)=0\n"
    "GetProcAddress(dlGetNivoID)=0\n"
    "GetProcAddress(dlGetVidPnTargetID)=0\n";

class AddOnApi : public AddOnBench {
 protected:
  std::string JournalOf(const std::function<void()>& act) {
    core.ostrel();
    core.machine.JournalReads(true);
    core.machine.TakeJournal();
    act();
    core.machine.JournalReads(false);
    return core.machine.TakeJournal();
  }
  void BindAll() { box().BindAll(); }

  /// What the eight functions answer, called with nothing in particular.
  std::vector<int32_t> Answers() {
    uint32_t state = 77;
    displaylink::NivoId id = {72, {}};
    displaylink::VidPnTarget record = {};
    return {box().dlSubscribePids(nullptr, 0, 0),
            box().dlUnSubscribePids(nullptr, -1, 0),
            box().dlRegisterNivoDisplayNotification(nullptr, nullptr, 0),
            box().dlUnRegisterNivoDisplayNotification(nullptr, nullptr, 0),
            box().dlPumpMessages(100, 0),
            box().dlGetExecutionState(1, 0x10000, &state),
            box().dlGetNivoID(1, &id),
            box().dlGetVidPnTargetID(1, 0x10000, &record)};
  }
  const std::vector<int32_t> refused = std::vector<int32_t>(8, kNotBound);
};

TEST_F(AddOnApi, StartsPendingWithNothingBound) {
  EXPECT_EQ(box().LoadState(), ApiLoadPending);
  EXPECT_EQ(Answers(), refused);
  EXPECT_EQ(static_cast<uint32_t>(kNotBound), 0xFFFFFFF8u);
  EXPECT_EQ(TakeOutput(), "");
  EXPECT_EQ(core.machine.Calls("LoadLibraryA"), 0u);
}

TEST_F(AddOnApi, BindsTheEightFunctionsInOrderToTheLibraryThatTheRegistryNames) {
  Install();
  EXPECT_EQ(JournalOf([&] { BindAll(); }),
            "SHGetValueA(SOFTWARE\\DisplayLink\\Core AddOnApi64FileLocation)=0\n"
            "LoadLibraryA(D:\\usb\\AddOnApi64.dll)=0\n" +
                std::string(kResolved));
  EXPECT_EQ(box().LoadState(), ApiLoaded);
  EXPECT_EQ(TakeOutput(), kLoaded);
  EXPECT_EQ(core.Modules(), 1u);
}

TEST_F(AddOnApi, PassesArgumentsAndResultsThrough) {
  add_on.results = {{"dlSubscribePids", 11},
                    {"dlUnSubscribePids", 12},
                    {"dlPumpMessages", 13},
                    {"dlGetExecutionState", 14},
                    {"dlGetNivoID", 15},
                    {"dlGetVidPnTargetID", 16},
                    {"dlRegisterNivoDisplayNotification", 17},
                    {"dlUnRegisterNivoDisplayNotification", -18}};
  add_on.states[0x8000000500000006] = 4;
  Install();
  BindAll();
  const uint32_t pids[] = {0xA, 0xB};
  int context = 0;
  const auto callback = [](void*, uint32_t, uint64_t, uint64_t) {};
  uint32_t state = 3;
  displaylink::NivoId id = {72, {}};
  displaylink::VidPnTarget record = {};
  EXPECT_EQ(box().dlSubscribePids(pids, 2, 0x100000000), 11);
  EXPECT_EQ(box().dlUnSubscribePids(nullptr, -1, 1), 12);
  EXPECT_EQ(box().dlRegisterNivoDisplayNotification(callback, &context, 2), 17);
  ASSERT_EQ(add_on.Listeners().size(), 1u);
  EXPECT_EQ(add_on.Listeners()[0], ScriptedAddOn::Listener(callback, &context));
  EXPECT_EQ(box().dlUnRegisterNivoDisplayNotification(callback, &context, 3), -18);
  EXPECT_EQ(add_on.Listeners().size(), 0u);
  EXPECT_EQ(box().dlPumpMessages(55, 0), 13);
  EXPECT_EQ(box().dlGetExecutionState(0x8000000500000006, 0x10000, &state), 14);
  EXPECT_EQ(state, 4u);
  EXPECT_EQ(box().dlGetNivoID(0x8000000500000006, &id), 15);
  EXPECT_EQ(id.contents[67], 0x67);
  EXPECT_EQ(box().dlGetVidPnTargetID(0x8000000500000006, 0x10000, &record), 16);
  uint64_t adapter = 0;
  uint32_t target = 0;
  std::memcpy(&adapter, reinterpret_cast<const uint8_t*>(&record) + 8, 8);
  std::memcpy(&target, reinterpret_cast<const uint8_t*>(&record) + 16, 4);
  EXPECT_EQ(adapter, 0x1122334455667788u);
  EXPECT_EQ(target, 7u);
  EXPECT_EQ(add_on.TakeCalls(),
            "dlSubscribePids(a b count 2, 100000000)\n"
            "dlUnSubscribePids(null count -1, 1)\n"
            "dlRegisterNivoDisplayNotification(2)\n"
            "dlUnRegisterNivoDisplayNotification(3)\n"
            "dlPumpMessages(37)\n"
            "dlGetExecutionState(8000000500000006, 10000, 3)\n"
            "dlGetNivoID(8000000500000006, 72)\n"
            "dlGetVidPnTargetID(8000000500000006, 10000)\n");
}

// --- No library.

TEST_F(AddOnApi, WithoutTheRegistryValueAnEmptyPathIsTriedAndStandInsAreBound) {
  EXPECT_EQ(JournalOf([&] { BindAll(); }),
            "SHGetValueA(SOFTWARE\\DisplayLink\\Core AddOnApi64FileLocation)=2\n"
            "LoadLibraryA()=0\n");
  EXPECT_EQ(box().LoadState(), DummyApiLoaded);
  EXPECT_EQ(TakeOutput(), kDummy);
  EXPECT_EQ(Answers(), refused);
  EXPECT_EQ(core.Modules(), 0u);
}

TEST_F(AddOnApi, ALibraryThatCannotBeLoadedIsNoMatterForTheLog) {
  Install();
  core.machine.Fail("LoadLibraryA", 1, ERROR_BAD_EXE_FORMAT);
  core.ostrel();
  core.ForgetLog();
  BindAll();
  EXPECT_EQ(box().LoadState(), DummyApiLoaded);
  EXPECT_EQ(core.TakeLog(), "");
  EXPECT_EQ(TakeOutput(), kDummy);
}

TEST_F(AddOnApi, AStandInForThePumpWaitsAndTheOthersDoNot) {
  BindAll();
  const uint64_t before = core.machine.Now();
  EXPECT_EQ(JournalOf([&] { EXPECT_EQ(box().dlPumpMessages(70, 0), kNotBound); }), "Sleep(70)=0\n");
  EXPECT_EQ(core.machine.Now(), before + 70);
  uint32_t state = 3;
  EXPECT_EQ(JournalOf([&] { EXPECT_EQ(box().dlGetExecutionState(1, 0x10000, &state), kNotBound); }),
            "");
  EXPECT_EQ(state, 3u);
}

using Plain = int32_t (*)();
using Pump = int32_t (*)(uint32_t, uint64_t);

TEST_F(AddOnApi, AStandInIsChosenByName) {
  BindAll();
  const HMODULE dummy = GetModuleHandleA(nullptr);
  const auto answer = [&](const char* name) {
    return reinterpret_cast<Plain>(box().FunctionFor(dummy, name))();
  };
  EXPECT_EQ(answer("dlGetNivoDisplay"), 0);
  EXPECT_EQ(answer("dlGetNivoDisplays"), kNotBound);
  EXPECT_EQ(answer("dlgetnivodisplay"), kNotBound);
  EXPECT_EQ(answer("dlSubscribePids"), kNotBound);
  EXPECT_EQ(answer("anything"), kNotBound);
  const uint64_t before = core.machine.Now();
  EXPECT_EQ(reinterpret_cast<Pump>(box().FunctionFor(dummy, "dlPumpMessages"))(30, 0), kNotBound);
  EXPECT_EQ(core.machine.Now(), before + 30);
}

TEST_F(AddOnApi, AFunctionThatTheLibraryLacksIsRefusedAndTheOthersWork) {
  add_on.missing = {"dlGetNivoID", "dlPumpMessages"};
  Install();
  BindAll();
  EXPECT_EQ(box().LoadState(), ApiLoaded);
  displaylink::NivoId id = {72, {}};
  EXPECT_EQ(box().dlGetNivoID(1, &id), kNotBound);
  const uint64_t before = core.machine.Now();
  EXPECT_EQ(box().dlPumpMessages(100, 0), kNotBound);
  EXPECT_EQ(core.machine.Now(), before + 100);  // or the thread would never wait
  EXPECT_EQ(box().dlSubscribePids(nullptr, 0, 0), 0);
}

// --- Which module.

TEST_F(AddOnApi, NoOtherLibraryIsDecidedAbout) {
  Install();
  for (const char* name : {"addonapi64.dll", "AddOnApi64.DLL", "AddOnApi64", "AddOnApi.dll", ""}) {
    EXPECT_EQ(JournalOf([&] { EXPECT_EQ(box().ModuleFor(name), nullptr) << name; }), "");
    EXPECT_EQ(box().LoadState(), ApiLoadPending);
  }
  EXPECT_EQ(box().FunctionFor(nullptr, "dlSubscribePids"), nullptr);
  EXPECT_EQ(TakeOutput(), "");
  EXPECT_NE(box().ModuleFor("AddOnApi64.dll"), nullptr);
  core.ostrel().ForgiveLeaks();  // the reference is the caller's
}

TEST_F(AddOnApi, ALibraryThatIsBoundAgainIsHeldOnce) {
  Install();
  BindAll();
  TakeOutput();
  EXPECT_EQ(JournalOf([&] { BindAll(); }),
            "SHGetValueA(SOFTWARE\\DisplayLink\\Core AddOnApi64FileLocation)=0\n"
            "LoadLibraryA(D:\\usb\\AddOnApi64.dll)=0\n" +
                std::string(kResolved));
  EXPECT_EQ(box().LoadState(), ApiLoaded);
  EXPECT_EQ(TakeOutput(), "");
  EXPECT_EQ(CountOf(core.machine.Outstanding(), "module "), 1u);
  EXPECT_EQ(CountOf(core.machine.Outstanding(), "times"), 0u);
  EXPECT_EQ(box().dlSubscribePids(nullptr, 0, 0), 0);
}

TEST_F(AddOnApi, ALibraryThatHasGoneGivesWayToStandIns) {
  Install();
  BindAll();
  TakeOutput();
  ScriptedAddOn::Remove(&core.machine);
  BindAll();
  EXPECT_EQ(box().LoadState(), DummyApiLoaded);
  EXPECT_EQ(TakeOutput(), "\nApiDllLoadState: ApiLoaded -> DummyApiLoaded\n");
  EXPECT_EQ(Answers(), refused);
  EXPECT_EQ(core.Modules(), 0u);
}

TEST_F(AddOnApi, WithAnUnloadPendingTheRealLibraryIsNotTried) {
  Install();
  core.ostrel();
  box().SetLoadState(UnLoadPending);
  EXPECT_EQ(JournalOf([&] { BindAll(); }), "");
  EXPECT_EQ(box().LoadState(), DummyApiLoaded);
  EXPECT_EQ(TakeOutput(), "\nApiDllLoadState: UnLoadPending -> DummyApiLoaded\n");
}

TEST_F(AddOnApi, WithStandInsTheRealLibraryIsNotTriedEither) {
  BindAll();
  Install();
  TakeOutput();
  EXPECT_EQ(JournalOf([&] { BindAll(); }), "");
  EXPECT_EQ(box().LoadState(), DummyApiLoaded);
  EXPECT_EQ(TakeOutput(), "");
}

TEST_F(AddOnApi, APathOf259CharactersIsTakenWhole) {
  core.ostrel();
  auto& value = core.machine.model().registry[ScriptedAddOn::kKey][ScriptedAddOn::kValue];
  value = "D:\\" + std::string(256, 'x');
  EXPECT_EQ(CountOf(JournalOf([&] { BindAll(); }), "LoadLibraryA(" + value + ")"), 1u);
}

// --- Unbinding.

TEST_F(AddOnApi, UnbindForgetsAllFunctionsAndGivesTheModuleBack) {
  Install();
  BindAll();
  TakeOutput();
  EXPECT_EQ(JournalOf([&] { box().Unbind(); }), "");
  EXPECT_EQ(core.Modules(), 0u);
  EXPECT_EQ(core.machine.Calls("FreeLibrary"), 1u);
  EXPECT_EQ(Answers(), refused);
  EXPECT_EQ(add_on.TakeCalls(), "");
  EXPECT_EQ(box().LoadState(), ApiLoaded);  // the state is not its business
  EXPECT_EQ(TakeOutput(), "");
  box().Unbind();
  EXPECT_EQ(core.machine.Calls("FreeLibrary"), 1u);
}

TEST_F(AddOnApi, UnbindOfNothingDoesNothing) {
  core.ostrel();
  const uint32_t before = core.machine.Calls("FreeLibrary");
  box().Unbind();
  BindAll();  // stand-ins: no module is held
  box().Unbind();
  EXPECT_EQ(core.machine.Calls("FreeLibrary"), before);
}

TEST_F(AddOnApi, TheLibraryIsGivenBackWhenThisOneIsUnloaded) {
  Install();
  BindAll();
  EXPECT_EQ(core.Modules(), 1u);
  core.ostrel().Unload();  // fails the test for what is not given back
  EXPECT_EQ(core.machine.state().invented[ScriptedAddOn::kModule].references, 0u);
}

// --- Entering a state.

TEST_F(AddOnApi, EnteringWritesTheTransitionOnce) {
  core.ostrel();
  box().EnterLoadState(ApiLoadPending);
  EXPECT_EQ(TakeOutput(), "");
  box().EnterLoadState(ApiLoaded);
  box().EnterLoadState(ApiLoaded);
  box().EnterLoadState(UnLoadPending);
  EXPECT_EQ(TakeOutput(),
            "\nApiDllLoadState: ApiLoadPending -> ApiLoaded\n"
            "\nApiDllLoadState: ApiLoaded -> UnLoadPending\n");
  EXPECT_EQ(box().LoadState(), UnLoadPending);
}

TEST_F(AddOnApi, ATransitionIsSeenAtOnce) {
  core.ostrel();
  box().EnterLoadState(ApiLoaded);
  EXPECT_EQ(sim::UnflushedStandardOutput(core.machine), "");
  EXPECT_EQ(TakeOutput(), kLoaded);
}

TEST_F(AddOnApi, AStateWithoutANameIsWrittenAsANumber) {
  core.ostrel();
  box().EnterLoadState(4);
  box().EnterLoadState(DummyApiLoaded);
  box().EnterLoadState(-1);
  EXPECT_EQ(TakeOutput(),
            "\nApiDllLoadState: ApiLoadPending -> 4\n"
            "\nApiDllLoadState: 4 -> DummyApiLoaded\n"
            "\nApiDllLoadState: DummyApiLoaded -> -1\n");
}

TEST_F(AddOnApi, TransitionsAreNoMatterForTheLog) {
  Install();
  core.ostrel();
  core.ForgetLog();
  BindAll();
  EXPECT_EQ(core.TakeLog(), "");
}

/// Writes down what it is told, and what was so at that moment.
class Observer : public displaylink::ILoadObserver {
 public:
  explicit Observer(std::function<std::string()> look) : look_(std::move(look)) {}
  void OnLoaded() override { told += "loaded" + look_(); }
  void OnUnloading() override { told += "unloading" + look_(); }
  std::string told;

 private:
  const std::function<std::string()> look_;
};

TEST_F(AddOnApi, TheObserverIsToldOnceTheStateIsLoadedAndBeforeFunctionsAreBound) {
  Install();
  const uint32_t before =
      core.ostrel().white_box().display_link != nullptr ? core.machine.Calls("GetProcAddress") : 0;
  Observer observer([&] {
    return " state=" + std::to_string(box().LoadState()) +
           " bound=" + std::to_string(core.machine.Calls("GetProcAddress") - before) + "\n";
  });
  box().SetLoadObserver(&observer);
  BindAll();
  EXPECT_EQ(observer.told, "loaded state=1 bound=0\n");
  BindAll();
  box().EnterLoadState(UnLoadPending);
  box().EnterLoadState(DummyApiLoaded);
  box().EnterLoadState(ApiLoadPending);
  EXPECT_EQ(observer.told, "loaded state=1 bound=0\n");
  box().EnterLoadState(ApiLoaded);
  EXPECT_EQ(CountOf(observer.told, "loaded"), 2u);
}

}  // namespace
