#include "sim/Threads.h"

#include <algorithm>
#include <string>
#include <utility>

#include "sim/Failure.h"
#include "sim/MachineState.h"

namespace sim {
namespace {

// Real time, for the case that something is wrong: no thread of the DLL works that long.
constexpr uint32_t kPatience = 20000;
// A thread looks up now and then, should a message have come without a sign.
constexpr DWORD kLook = 1000;

constexpr char kWindow[] = "window";

enum class Rest { kRunning, kWaiting, kSleeping, kEnded };

// What Windows takes from a thread that ends: its timers and its windows.
void TakeBelongings(DWORD thread) {
  Machine::State& state = Machine::Current().state();
  state.clock.ForgetThread(thread);
  std::vector<HWND>& alive = state.windows.alive;
  const auto stays = [&](HWND window) {
    return GetWindowThreadProcessId(window, nullptr) != thread;
  };
  const auto gone = std::stable_partition(alive.begin(), alive.end(), stays);
  for (auto window = gone; window != alive.end(); ++window) {
    state.ledger.Give(kWindow, reinterpret_cast<uint64_t>(*window));
    state.clock.ForgetWindow(*window);
  }
  alive.erase(gone, alive.end());
}

MSG MessageOf(const Machine::Timer& timer) {
  MSG message = {};
  message.hwnd = timer.window;
  message.message = WM_TIMER;
  message.wParam = timer.id;
  message.lParam = reinterpret_cast<LPARAM>(timer.procedure);
  message.time = static_cast<DWORD>(Machine::Current().state().clock.tick_count());
  return message;
}

bool IsArmed(const Machine::Timer& timer) {
  const std::vector<Machine::Timer> armed = Machine::Current().state().clock.timers();
  return std::any_of(armed.begin(), armed.end(), [&](const Machine::Timer& other) {
    return other.window == timer.window && other.id == timer.id;
  });
}

}  // namespace

struct Threads::Record {
  DWORD id = 0;
  HANDLE thread = nullptr;  // our own handle; the DLL closes its
  HANDLE work = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  Rest rest = Rest::kRunning;
  bool rests = false;    // it has waited or slept
  uint32_t signals = 0;  // grows with each message that the driver knows of
  uint64_t wake_at = 0;
  std::deque<Machine::Timer> due;

  Record() = default;
  ~Record() {
    CloseHandle(work);
    if (thread != nullptr) CloseHandle(thread);
  }
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;
};

struct Threads::Start {
  Threads* threads;
  Record* record;
  LPTHREAD_START_ROUTINE procedure;
  void* parameter;
};

Threads::Threads() : changed_(CreateEventW(nullptr, FALSE, FALSE, nullptr)), patience_(kPatience) {}

Threads::~Threads() {
  if (!given_up_) EndAll();
  CloseHandle(changed_);
}

DWORD WINAPI Threads::Run(void* start) {
  const std::unique_ptr<Start> given(static_cast<Start*>(start));
  const DWORD result = given->procedure(given->parameter);
  TakeBelongings(GetCurrentThreadId());
  const Lock lock(given->threads->mutex_);
  given->record->rest = Rest::kEnded;
  SetEvent(given->threads->changed_);
  return result;
}

HANDLE Threads::Create(LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                       void* parameter, DWORD flags, DWORD* id) {
  auto record = std::make_unique<Record>();
  auto given = std::make_unique<Start>(Start{this, record.get(), start, parameter});
  const HANDLE thread =
      CreateThread(security, stack, Run, given.get(), flags | CREATE_SUSPENDED, &record->id);
  if (thread == nullptr) return nullptr;
  static_cast<void>(given.release());  // the thread's, from now on
  if (id != nullptr) *id = record->id;
  DuplicateHandle(GetCurrentProcess(), thread, GetCurrentProcess(), &record->thread, 0, FALSE,
                  DUPLICATE_SAME_ACCESS);
  {
    const Lock lock(mutex_);
    records_.push_back(std::move(record));
  }
  if ((flags & CREATE_SUSPENDED) == 0) ResumeThread(thread);
  return thread;
}

Threads::Record* Threads::Find(DWORD thread) const {
  const auto same = [&](const std::unique_ptr<Record>& record) {
    return record->id == thread && record->rest != Rest::kEnded;
  };
  const auto found = std::find_if(records_.begin(), records_.end(), same);
  return found == records_.end() ? nullptr : found->get();
}

bool Threads::IsMember(DWORD thread) const {
  const Lock lock(mutex_);
  return Find(thread) != nullptr;
}

bool Threads::Empty() const {
  const Lock lock(mutex_);
  return records_.empty();
}

// --- The thread that drives the clock.

bool Threads::IsAtRest(Scope scope) const {
  const Lock lock(mutex_);
  return std::all_of(records_.begin(), records_.end(), [&](const std::unique_ptr<Record>& record) {
    return record->rest != Rest::kRunning || (scope == Scope::kResting && !record->rests);
  });
}

// Lets go of the threads that have ended, once they really have.
void Threads::Bury() {
  std::vector<std::unique_ptr<Record>> ended;
  {
    const Lock lock(mutex_);
    const auto stays = [](const std::unique_ptr<Record>& record) {
      return record->rest != Rest::kEnded;
    };
    const auto gone = std::stable_partition(records_.begin(), records_.end(), stays);
    std::move(gone, records_.end(), std::back_inserter(ended));
    records_.erase(gone, records_.end());
  }
  for (const std::unique_ptr<Record>& record : ended) {
    if (WaitForSingleObject(record->thread, patience_) == WAIT_OBJECT_0) continue;
    ReportFailure("a thread of the DLL does not end");
  }
}

bool Threads::Settle(Scope scope) {
  const ULONGLONG begin = GetTickCount64();
  while (!IsAtRest(scope)) {
    if (GetTickCount64() - begin > patience_) {
      ReportFailure("a thread of the DLL neither waits nor ends");
      return false;
    }
    WaitForSingleObject(changed_, kLook);
  }
  Bury();
  return true;
}

void Threads::Deliver(DWORD thread, const Machine::Timer& timer) {
  const Lock lock(mutex_);
  Record* const record = Find(thread);
  if (record == nullptr) return;
  // A timer that came due several times while nobody looked gives one message.
  const bool known =
      std::any_of(record->due.begin(), record->due.end(), [&](const Machine::Timer& other) {
        return other.window == timer.window && other.id == timer.id;
      });
  if (!known) record->due.push_back(timer);
  if (record->rest == Rest::kWaiting) record->rest = Rest::kRunning;
  SetEvent(record->work);
}

void Threads::Notify(DWORD thread) {
  const Lock lock(mutex_);
  Record* const record = Find(thread);
  if (record == nullptr) return;
  ++record->signals;
  if (record->rest == Rest::kWaiting) record->rest = Rest::kRunning;
  SetEvent(record->work);
}

std::optional<uint64_t> Threads::NextWake() const {
  const Lock lock(mutex_);
  std::optional<uint64_t> first;
  for (const std::unique_ptr<Record>& record : records_) {
    if (record->rest != Rest::kSleeping) continue;
    if (!first || record->wake_at < *first) first = record->wake_at;
  }
  return first;
}

void Threads::WakeSleepers(uint64_t moment) {
  const Lock lock(mutex_);
  for (const std::unique_ptr<Record>& record : records_) {
    if (record->rest != Rest::kSleeping || record->wake_at > moment) continue;
    record->rest = Rest::kRunning;
    SetEvent(record->work);
  }
}

size_t Threads::EndAll() {
  Bury();
  size_t left = 0;
  {
    const Lock lock(mutex_);
    left = records_.size();
  }
  const ULONGLONG begin = GetTickCount64();
  while (!Empty() && GetTickCount64() - begin < patience_) {
    AskToEnd();
    WaitForSingleObject(changed_, 1);
    Bury();
  }
  given_up_ = !Empty();
  if (given_up_) ReportFailure("a thread of the DLL goes on, whatever it is told");
  return left;
}

// A thread that has not looked for messages yet would not get any.
void Threads::AskToEnd() {
  const Lock lock(mutex_);
  for (const std::unique_ptr<Record>& record : records_) {
    const bool waits = record->rest == Rest::kWaiting;
    if (waits) PostThreadMessageA(record->id, WM_QUIT, 0, 0);
    if (!waits && record->rest != Rest::kSleeping) continue;
    ++record->signals;
    record->rest = Rest::kRunning;
    SetEvent(record->work);
  }
}

// --- The DLL's own threads.

// A timer that is due, unless it was killed in the meantime.
bool Threads::TakeMessage(Record* self, MSG* message) {
  while (!self->due.empty()) {
    const Machine::Timer timer = self->due.front();
    self->due.pop_front();
    if (!IsArmed(timer)) continue;
    *message = MessageOf(timer);
    return true;
  }
  return false;
}

BOOL Threads::Get(MSG* message, HWND window, UINT first, UINT last) {
  Record* self = nullptr;
  {
    const Lock lock(mutex_);
    self = Find(GetCurrentThreadId());
  }
  for (;;) {
    uint32_t seen = 0;
    {
      const Lock lock(mutex_);
      seen = self->signals;
    }
    // Sent messages reach their windows in here.
    if (PeekMessageA(message, window, first, last, PM_REMOVE)) {
      const Lock lock(mutex_);
      self->rest = Rest::kRunning;
      return message->message != WM_QUIT;
    }
    {
      const Lock lock(mutex_);
      if (TakeMessage(self, message)) return TRUE;
      // Somebody may have posted after the look.
      if (self->signals == seen) self->rest = Rest::kWaiting;
      self->rests = true;
      SetEvent(changed_);
    }
    MsgWaitForMultipleObjectsEx(1, &self->work, kLook, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
  }
}

bool Threads::Sleep(uint32_t milliseconds) {
  Record* self = nullptr;
  {
    const Lock lock(mutex_);
    self = Find(GetCurrentThreadId());
    if (self == nullptr) return false;
    self->rest = Rest::kSleeping;
    self->rests = true;
    self->wake_at = Machine::Current().state().clock.now() + milliseconds;
    SetEvent(changed_);
  }
  for (;;) {
    WaitForSingleObject(self->work, kLook);
    const Lock lock(mutex_);
    if (self->rest != Rest::kSleeping) return true;
  }
}

}  // namespace sim
