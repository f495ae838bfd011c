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

// How fine the clock is for a thread that polls it.
constexpr uint64_t kPollStep = 10;

constexpr char kWindow[] = "window";
constexpr char kModule[] = "module";

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
  HANDLE thread = nullptr;      // our own handle; the DLL closes its
  HANDLE handed_out = nullptr;  // the DLL's
  HANDLE work = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  Rest rest = Rest::kRunning;
  bool rests = false;    // it has waited or slept
  uint32_t signals = 0;  // grows with each message that the driver knows of
  uint64_t wake_at = 0;
  LPTHREAD_START_ROUTINE procedure = nullptr;
  std::optional<uint64_t> asked_at;  // the moment at which it asked for the time last
  uint64_t asked_behind = 0;         // how many calls it had made by then
  uint64_t next_look = 0;            // at the clock, while it polls
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
  const Start given = *static_cast<Start*>(start);
  delete static_cast<Start*>(start);  // the procedure may end the thread without a return
  bool begins = false;
  {
    const Lock lock(given.threads->mutex_);
    begins = given.record->rest == Rest::kBeginning;
  }
  if (begins) given.threads->RestUntil(given.record, Rest::kBeginning, given.record->wake_at);
  const DWORD result = given.procedure(given.parameter);
  given.threads->Leave();
  return result;
}

void Threads::LeaveWithModule() {
  Ledger& ledger = Machine::Current().state().ledger;
  if (const Record* const self = Self()) {
    const auto handle = reinterpret_cast<uint64_t>(self->handed_out);
    if (ledger.Give(kThread, handle)) ledger.Take(kKeptThread, handle);
  }
  Leave();
}

void Threads::Leave() {
  const DWORD self = GetCurrentThreadId();
  if (!IsMember(self)) return;
  TakeBelongings(self);
  const Lock lock(mutex_);
  Find(self)->rest = Rest::kEnded;
  SetEvent(changed_);
}

HANDLE Threads::Create(LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                       void* parameter, DWORD flags, DWORD* id) {
  auto record = std::make_unique<Record>();
  auto given = std::make_unique<Start>(Start{this, record.get(), start, parameter});
  record->procedure = start;
  const Clock& clock = Machine::Current().state().clock;
  if (!start_at_once_ && !clock.real()) {
    record->rest = Rest::kBeginning;
    record->rests = true;
    record->wake_at = clock.now();
  }
  const HANDLE thread =
      CreateThread(security, stack, Run, given.get(), flags | CREATE_SUSPENDED, &record->id);
  if (thread == nullptr) return nullptr;
  static_cast<void>(given.release());  // the thread's, from now on
  if (id != nullptr) *id = record->id;
  DuplicateHandle(GetCurrentProcess(), thread, GetCurrentProcess(), &record->thread, 0, FALSE,
                  DUPLICATE_SAME_ACCESS);
  record->handed_out = thread;
  {
    const Lock lock(mutex_);
    records_.push_back(std::move(record));
  }
  // Before the thread runs: in real time it may have ended by the time this returns.
  LedgerTake(kThread, thread);
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
  do {
    while (!IsAtRest(scope)) {
      if (GetTickCount64() - begin > patience_) {
        ReportFailure("a thread of the DLL neither waits nor ends");
        return false;
      }
      WaitForSingleObject(changed_, kLook);
    }
  } while (BeginNext());
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

bool Threads::Sleeps(Rest rest) {
  return rest == Rest::kSleeping || rest == Rest::kPolling || rest == Rest::kIdle;
}

std::optional<uint64_t> Threads::NextWake() const {
  const Lock lock(mutex_);
  std::optional<uint64_t> first;
  for (const std::unique_ptr<Record>& record : records_) {
    if (!Sleeps(record->rest)) continue;
    if (!first || record->wake_at < *first) first = record->wake_at;
  }
  return first;
}

void Threads::WakeSleeper(uint64_t moment) {
  const Lock lock(mutex_);
  Record* next = nullptr;
  for (const std::unique_ptr<Record>& record : records_) {
    if (!Sleeps(record->rest) || record->wake_at > moment) continue;
    if (next == nullptr || record->wake_at < next->wake_at) next = record.get();
  }
  if (next == nullptr) return;
  next->rest = Rest::kRunning;
  SetEvent(next->work);
}

void Threads::WakeEarly(Rest rest) {
  const uint64_t now = Machine::Current().state().clock.now();
  const Lock lock(mutex_);
  for (const std::unique_ptr<Record>& record : records_) {
    if (record->rest == rest) record->wake_at = std::min(record->wake_at, now);
  }
}

bool Threads::BeginNext() {
  const Lock lock(mutex_);
  for (const std::unique_ptr<Record>& record : records_) {
    if (record->rest != Rest::kBeginning) continue;
    record->rest = Rest::kRunning;
    SetEvent(record->work);
    return true;
  }
  return false;
}

void Threads::BeginAll() {
  while (BeginNext()) {
  }
}

size_t Threads::EndAll() {
  Bury();
  size_t left = 0;
  {
    const Lock lock(mutex_);
    left = records_.size();
  }
  ending_ = true;
  const ULONGLONG begin = GetTickCount64();
  while (!Empty() && GetTickCount64() - begin < patience_) {
    AskToEnd();
    WaitForSingleObject(changed_, 1);
    Bury();
  }
  ending_ = false;
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
    const bool begins = record->rest == Rest::kBeginning;
    if (!waits && !begins && !Sleeps(record->rest)) continue;
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

Threads::Record* Threads::Self() const {
  const Lock lock(mutex_);
  return Find(GetCurrentThreadId());
}

// Returns once somebody has set the thread running again.
bool Threads::RestUntil(Record* self, Rest rest, uint64_t wake_at) {
  if (self == nullptr) return false;
  {
    const Lock lock(mutex_);
    // A thread that begins has rested since it was made, and may have been let go of already.
    if (rest != Rest::kBeginning) self->rest = rest;
    self->rests = true;
    self->wake_at = wake_at;
    SetEvent(changed_);
  }
  for (;;) {
    {
      const Lock lock(mutex_);
      if (self->rest != rest) return true;
    }
    WaitForSingleObject(self->work, kLook);
  }
}

bool Threads::Sleep(uint32_t milliseconds) {
  const uint64_t now = Machine::Current().state().clock.now();
  return RestUntil(Self(), Rest::kSleeping, now + milliseconds);
}

bool Threads::Idle(uint32_t milliseconds) {
  const uint64_t now = Machine::Current().state().clock.now();
  const bool rested = RestUntil(Self(), Rest::kIdle, now + milliseconds);
  EndIfTold();
  return rested;
}

void Threads::AskClock() {
  const Clock& clock = Machine::Current().state().clock;
  Record* const self = Self();
  if (clock.real()) EndIfTold();
  if (clock.real() || self == nullptr) return;
  const uint64_t now = clock.now();
  const uint64_t calls = CallsOfThisThread();
  if (self->asked_behind != calls) self->next_look = 0;
  if (self->asked_at == now && self->asked_behind == calls) {
    if (self->next_look <= now) self->next_look = now + kPollStep;
    RestUntil(self, Rest::kPolling, self->next_look);
    EndIfTold();
  }
  self->asked_at = clock.now();
  self->asked_behind = calls;
}

// It leaves as its own procedure would, and gives back the module that it holds.
void Threads::EndIfTold() {
  if (!ending_ || !IsMember(GetCurrentThreadId())) return;
  Machine::State& state = Machine::Current().state();
  const wchar_t* procedure = nullptr;
  {
    const Lock lock(mutex_);
    procedure = reinterpret_cast<const wchar_t*>(Find(GetCurrentThreadId())->procedure);
  }
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      procedure, &module);
  const bool holds = module != GetModuleHandleW(nullptr) &&
                     state.ledger.Give(kModule, reinterpret_cast<uint64_t>(module));
  if (!holds) {
    Leave();
    ExitThread(0);
  }
  LeaveWithModule();
  FreeLibraryAndExitThread(module, 0);
}

}  // namespace sim
