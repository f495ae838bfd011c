// The exports of AddOnApi64.dll.
#include <algorithm>
#include <cstring>

#include "sim/FaceTable.h"
#include "sim/Failure.h"
#include "sim/faces/DisplayLink.h"
#include "sim/faces/DisplayLinkRules.h"
#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

constexpr char kListener[] = "DisplayLink listener";
constexpr uint32_t kQuery = 0x10000;  // what the questions about one display begin with
constexpr uint32_t kIdSize = 72;

Machine::State& State() { return Machine::Current().state(); }

int32_t Refuse(const char* function, const char* why, int32_t result) {
  ReportFailure(std::string(function) + ": " + why);
  return result;
}

// A declared fault, or a service that does not work: the call fails whatever it asks for.
int32_t OutsideFailure(const Call& call) {
  if (call.Fails()) return static_cast<int32_t>(FaultOr(call, static_cast<uint32_t>(kDlFault)));
  return State().model.displaylink.working ? 0 : kDlNotWorking;
}

// --- Subscriptions. Both ends count as asked for whatever comes of them, so that a client may end
// what did not begin well.

std::string Told(const uint32_t* pids, int32_t count) {
  std::string text;
  for (int32_t i = 0; pids != nullptr && i < count; ++i) {
    char number[16];
    std::snprintf(number, sizeof number, "0x%x ", pids[i]);
    text += number;
  }
  return text;
}

int32_t SubscribePids(const Call& call, const uint32_t* pids, int32_t count, uint64_t reserved) {
  constexpr char kName[] = "dlSubscribePids";
  DisplayLinkBook& book = State().displaylink;
  const Lock lock(book.mutex);
  ++book.pids_asked_for;
  if (reserved != 0) return Refuse(kName, "the last argument is not 0", kDlBadArgument);
  if (count < 0) return Refuse(kName, "a count below 0", kDlBadArgument);
  if (count > 0 && pids == nullptr) return Refuse(kName, "no products", kDlBadArgument);
  if (const int32_t failure = OutsideFailure(call)) return failure;
  book.pids.insert(book.pids.end(), pids, pids + count);
  return count;
}

int32_t FakeDlSubscribePids(const uint32_t* pids, int32_t count, uint64_t reserved) {
  Call call("dlSubscribePids");
  const std::string told = Told(pids, count);
  const int32_t result = SubscribePids(call, pids, count, reserved);
  return static_cast<int32_t>(call.Read(result, "%scount=%d", told.c_str(), count));
}

int32_t UnSubscribePids(const Call& call, const uint32_t* pids, int32_t count, uint64_t reserved) {
  constexpr char kName[] = "dlUnSubscribePids";
  DisplayLinkBook& book = State().displaylink;
  const Lock lock(book.mutex);
  if (reserved != 0) return Refuse(kName, "the last argument is not 0", kDlBadArgument);
  // Single ones could be named, too; how is not known.
  if (pids != nullptr || count != -1) return Refuse(kName, "not all of them", kDlBadArgument);
  if (book.pids_asked_for == 0) return Refuse(kName, "nobody has subscribed", kDlNotSubscribed);
  --book.pids_asked_for;
  if (const int32_t failure = OutsideFailure(call)) return failure;
  book.pids.clear();
  return 0;
}

int32_t FakeDlUnSubscribePids(const uint32_t* pids, int32_t count, uint64_t reserved) {
  Call call("dlUnSubscribePids");
  const int32_t result = UnSubscribePids(call, pids, count, reserved);
  return static_cast<int32_t>(call.Read(result, "count=%d", count));
}

// --- Listeners.

auto FindListener(DisplayLinkBook& book, NivoCallback callback, void* context) {
  return std::find_if(book.listeners.begin(), book.listeners.end(), [=](const NivoListener& one) {
    return one.callback == callback && one.context == context;
  });
}

int32_t Register(const Call& call, NivoCallback callback, void* context, uint64_t reserved) {
  constexpr char kName[] = "dlRegisterNivoDisplayNotification";
  Machine::State& state = State();
  DisplayLinkBook& book = state.displaylink;
  const Lock lock(book.mutex);
  if (reserved != 0) return Refuse(kName, "the last argument is not 0", kDlBadArgument);
  if (callback == nullptr) return Refuse(kName, "no callback", kDlBadArgument);
  if (FindListener(book, callback, context) != book.listeners.end()) {
    return Refuse(kName, "this one listens already", kDlBadArgument);
  }
  book.asked_for.insert({callback, context});
  if (const int32_t failure = OutsideFailure(call)) return failure;
  book.listeners.push_back({callback, context, FirstNivoEvents(state.model, book.pids)});
  LedgerTake(kListener, context);
  SetEvent(book.arrived);
  return 0;
}

int32_t FakeDlRegisterNivoDisplayNotification(NivoCallback callback, void* context,
                                              uint64_t reserved) {
  Call call("dlRegisterNivoDisplayNotification");
  const int32_t result = Register(call, callback, context, reserved);
  return static_cast<int32_t>(call.Read(result, "context=%d", context != nullptr));
}

int32_t UnRegister(const Call& call, NivoCallback callback, void* context, uint64_t reserved) {
  constexpr char kName[] = "dlUnRegisterNivoDisplayNotification";
  DisplayLinkBook& book = State().displaylink;
  const Lock lock(book.mutex);
  if (reserved != 0) return Refuse(kName, "the last argument is not 0", kDlBadArgument);
  if (book.asked_for.erase({callback, context}) == 0) {
    return Refuse(kName, "nobody listens in that way", kDlNotSubscribed);
  }
  const auto listener = FindListener(book, callback, context);
  const int32_t failure = OutsideFailure(call);
  if (listener == book.listeners.end()) return failure != 0 ? failure : kDlNotSubscribed;
  // A listener whose withdrawal failed may still be called, and the client knows.
  if (call.Fails()) return failure;
  book.listeners.erase(listener);
  LedgerGive(kListener, context);
  return failure;
}

int32_t FakeDlUnRegisterNivoDisplayNotification(NivoCallback callback, void* context,
                                                uint64_t reserved) {
  Call call("dlUnRegisterNivoDisplayNotification");
  const int32_t result = UnRegister(call, callback, context, reserved);
  return static_cast<int32_t>(call.Read(result, "context=%d", context != nullptr));
}

// --- Messages.

bool SomethingIsPending(DisplayLinkBook& book) {
  const Lock lock(book.mutex);
  return std::any_of(book.listeners.begin(), book.listeners.end(),
                     [](const NivoListener& listener) { return !listener.pending.empty(); });
}

// Takes the time, or as much of it as it needs until something is there.
void AwaitMessages(DisplayLinkBook& book, uint32_t milliseconds) {
  Machine::State& state = State();
  if (state.clock.real()) {
    WaitForSingleObject(book.arrived, milliseconds);
    state.threads.EndIfTold();
  } else if (!state.threads.Idle(milliseconds)) {
    PassTime(state.clock.now() + milliseconds, Driver::kWaiting,
             [&book] { return SomethingIsPending(book); });
  }
}

void TakeAllTheTime(uint32_t milliseconds) {
  Machine::State& state = State();
  if (state.clock.real()) {
    Sleep(milliseconds);
    state.threads.EndIfTold();
    return;
  }
  const uint64_t end = state.clock.now() + milliseconds;
  while (state.clock.now() < end) {
    const auto left = static_cast<uint32_t>(end - state.clock.now());
    if (!state.threads.Idle(left)) state.clock.PassTo(end);
  }
}

// The callback may end its own subscription, or begin another.
int32_t Deliver(DisplayLinkBook& book) {
  int32_t delivered = 0;
  for (;;) {
    NivoListener next = {};
    NivoEvent event = {};
    {
      const Lock lock(book.mutex);
      const auto listener =
          std::find_if(book.listeners.begin(), book.listeners.end(),
                       [](const NivoListener& one) { return !one.pending.empty(); });
      if (listener == book.listeners.end()) return delivered;
      event = listener->pending.front();
      listener->pending.pop_front();
      next = {listener->callback, listener->context, {}};
    }
    next.callback(next.context, event.event, event.handle, uint64_t{0xFEEDFACE});
    ++delivered;
  }
}

int32_t PumpMessages(const Call& call, uint32_t milliseconds, uint64_t reserved) {
  if (reserved != 0) {
    return Refuse("dlPumpMessages", "the last argument is not 0", kDlBadArgument);
  }
  DisplayLinkBook& book = State().displaylink;
  // A shutdown is told once more by those who have it from the service.
  if (call.Fails() || (OutsideFailure(call) != 0 && !SomethingIsPending(book))) {
    TakeAllTheTime(milliseconds);
    return OutsideFailure(call);
  }
  if (!SomethingIsPending(book)) AwaitMessages(book, milliseconds);
  return Deliver(book);
}

// Comes ten times in a second: the journal has it only where there is something to tell.
int32_t FakeDlPumpMessages(uint32_t milliseconds, uint64_t reserved) {
  Call call("dlPumpMessages");
  const int32_t result = PumpMessages(call, milliseconds, reserved);
  if (result != 0) call.Read(result, "%u", milliseconds);
  return result;
}

// --- Questions about one display.

int32_t CheckDisplay(const char* function, uint64_t handle, const void* output) {
  if (output == nullptr) return Refuse(function, "no output", kDlBadArgument);
  if (!NivoHandleIsKnown(State(), handle)) {
    return Refuse(function, "no such display", kDlUnknownHandle);
  }
  return 0;
}

int32_t CheckQuery(const char* function, uint64_t handle, uint32_t kind, const void* output) {
  if (kind != kQuery) return Refuse(function, "another kind of question", kDlBadArgument);
  return CheckDisplay(function, handle, output);
}

int32_t FakeDlGetExecutionState(uint64_t handle, uint32_t kind, uint32_t* state) {
  Call call("dlGetExecutionState");
  DisplayLinkBook& book = State().displaylink;
  const Lock lock(book.mutex);
  int32_t result = CheckQuery("dlGetExecutionState", handle, kind, state);
  if (result == 0) result = OutsideFailure(call);
  if (result >= 0) *state = NivoState(State(), handle);
  return static_cast<int32_t>(
      call.Read(result, "handle=0x%llx", static_cast<unsigned long long>(handle)));
}

// The size comes first; behind it the handle and the connector's name.
void WriteId(uint64_t handle, uint8_t* record) {
  const std::optional<size_t> connector = NivoConnector(State().model, handle);
  const std::string name = connector ? State().model.connectors[*connector].id : std::string();
  std::memset(record + sizeof(uint32_t), 0, kIdSize - sizeof(uint32_t));
  std::memcpy(record + 8, &handle, sizeof handle);
  std::copy_n(name.begin(), std::min(name.size(), size_t{kIdSize - 17}), record + 16);
}

int32_t FakeDlGetNivoID(uint64_t handle, void* record) {
  Call call("dlGetNivoID");
  DisplayLinkBook& book = State().displaylink;
  const Lock lock(book.mutex);
  int32_t result = CheckDisplay("dlGetNivoID", handle, record);
  uint32_t size = kIdSize;
  if (result == 0) std::memcpy(&size, record, sizeof size);
  if (size != kIdSize) {
    result = Refuse("dlGetNivoID", "a record of another size", kDlBadArgument);
  }
  if (result == 0) result = OutsideFailure(call);
  if (result >= 0) WriteId(handle, static_cast<uint8_t*>(record));
  return static_cast<int32_t>(
      call.Read(result, "handle=0x%llx", static_cast<unsigned long long>(handle)));
}

// Eight bytes that tell us nothing, the adapter's LUID, the target's number.
int32_t WriteTarget(uint64_t handle, uint8_t* record) {
  const Model& model = State().model;
  const std::optional<size_t> connector = NivoConnector(model, handle);
  if (!connector) return kDlNoTarget;
  const Adapter& adapter = model.adapters[model.connectors[*connector].adapter];
  std::memset(record, 0xA5, 8);
  std::memcpy(record + 8, &adapter.luid_low, 4);
  std::memcpy(record + 12, &adapter.luid_high, 4);
  std::memcpy(record + 16, &model.connectors[*connector].target_id, 4);
  return 0;
}

int32_t FakeDlGetVidPnTargetID(uint64_t handle, uint32_t kind, void* record) {
  Call call("dlGetVidPnTargetID");
  DisplayLinkBook& book = State().displaylink;
  const Lock lock(book.mutex);
  int32_t result = CheckQuery("dlGetVidPnTargetID", handle, kind, record);
  if (result == 0) result = OutsideFailure(call);
  if (result >= 0) result = WriteTarget(handle, static_cast<uint8_t*>(record));
  return static_cast<int32_t>(
      call.Read(result, "handle=0x%llx", static_cast<unsigned long long>(handle)));
}

// Whoever still listened is heard of no more. That the callbacks were left there is the client's
// way to end when it lets the library go first.
void OnUnload() {
  DisplayLinkBook& book = State().displaylink;
  const Lock lock(book.mutex);
  for (const NivoListener& listener : book.listeners) {
    State().ledger.Give(kListener, reinterpret_cast<uint64_t>(listener.context));
  }
  book.listeners.clear();
  book.asked_for.clear();
  book.pids.clear();
  book.pids_asked_for = 0;
}

bool LibraryIsThere(const Model& model) { return model.displaylink.library; }

}  // namespace

InventedModule DisplayLinkLibrary(const Model& model) {
  constexpr char kFile[] = "addonapi64.dll";
  InventedModule library;
  library.name = LowerCase(model.displaylink.file);
  library.available = LibraryIsThere;
  library.on_unload = OnUnload;
  library.entries = {
      {kFile, "dlSubscribePids", Guard<FakeDlSubscribePids>()},
      {kFile, "dlUnSubscribePids", Guard<FakeDlUnSubscribePids>()},
      {kFile, "dlRegisterNivoDisplayNotification", Guard<FakeDlRegisterNivoDisplayNotification>()},
      {kFile, "dlUnRegisterNivoDisplayNotification",
       Guard<FakeDlUnRegisterNivoDisplayNotification>()},
      {kFile, "dlPumpMessages", Guard<FakeDlPumpMessages>()},
      {kFile, "dlGetExecutionState", Guard<FakeDlGetExecutionState>()},
      {kFile, "dlGetNivoID", Guard<FakeDlGetNivoID>()},
      {kFile, "dlGetVidPnTargetID", Guard<FakeDlGetVidPnTargetID>()},
  };
  return library;
}

}  // namespace sim
