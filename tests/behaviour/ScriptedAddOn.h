// A DisplayLink add-on library that answers as a test says and writes down what it was asked.
//
//   ScriptedAddOn add_on;
//   add_on.Install(&host.machine);             // before the library asks for it
//   add_on.states[5] = 6;                      // what dlGetExecutionState tells of display 5
//   add_on.Tell(DL_NC_NIVODISPLAY_ADDED, 5);   // delivered inside the next dlPumpMessages
//   ...
//   EXPECT_EQ(add_on.TakeCalls(), "...");      // all but the pumps
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Common/MultiMonitor/DisplayLink/AddOnApi.h"
#include "sim/Lock.h"
#include "sim/MachineState.h"

class ScriptedAddOn {
 public:
  static constexpr char kKey[] = "HKLM\\SOFTWARE\\DisplayLink\\Core";
  static constexpr char kValue[] = "AddOnApi64FileLocation";
  static constexpr char kPath[] = "D:\\usb\\AddOnApi64.dll";
  static constexpr char kModule[] = "d:\\usb\\addonapi64.dll";

  /// Somebody who asked to be notified.
  using Listener = std::pair<displaylink::NivoNotification, void*>;

  ScriptedAddOn() { Current() = this; }
  ~ScriptedAddOn() { Current() = nullptr; }
  ScriptedAddOn(const ScriptedAddOn&) = delete;
  ScriptedAddOn& operator=(const ScriptedAddOn&) = delete;

  /// The file and the registry's word of where it is.
  void Install(sim::Machine* machine) {
    machine->model().registry[kKey][kValue] = kPath;
    std::vector<sim::Entry> entries;
    for (const sim::Entry& entry : AllEntries()) {
      if (missing.count(entry.name) == 0) entries.push_back(entry);
    }
    machine->state().invented[kModule] = {kModule, entries, 0, OnLoad, nullptr};
  }
  /// What holds the file keeps it.
  static void Remove(sim::Machine* machine) { machine->model().registry[kKey].erase(kValue); }

  void Tell(uint32_t event, uint64_t handle) {
    const sim::Lock lock(mutex_);
    events_.emplace_back(event, handle);
  }
  std::string TakeCalls() {
    const sim::Lock lock(mutex_);
    return std::exchange(calls_, "");
  }
  std::vector<Listener> Listeners() {
    const sim::Lock lock(mutex_);
    return listeners_;
  }
  uint32_t Pumps() const { return pumps_; }

  /// The calling thread has to wait, as in a slow library.
  static void Wait(uint32_t milliseconds) {
    sim::Machine::State& state = sim::Machine::Current().state();
    if (state.clock.real()) return Sleep(milliseconds);
    if (!state.threads.Idle(milliseconds)) state.clock.Pass(milliseconds);
  }

  std::set<std::string> missing;           // what the file lacks; before Install
  std::map<std::string, int32_t> results;  // by function, of all its calls; 0 without one
  std::map<uint64_t, uint32_t> states;     // by display; nothing is written without one
  std::function<void()> on_load;           // while the file is being loaded
  std::function<void()> on_register;       // before the callback is known
  std::function<void()> on_pump;           // on the pumping thread, behind its wait
  uint32_t pump_period = 0;                // milliseconds; 0: as long as it is asked to
  std::atomic<DWORD> pump_thread{0};       // that pumped last
  std::atomic<DWORD> calling_thread{0};    // that called anything else last

 private:
  static ScriptedAddOn*& Current() {
    static ScriptedAddOn* current = nullptr;
    return current;
  }

  static int32_t Note(const std::string& function, const std::string& arguments) {
    ScriptedAddOn& self = *Current();
    const sim::Lock lock(self.mutex_);
    self.calls_ += function + "(" + arguments + ")\n";
    self.calling_thread = GetCurrentThreadId();
    return self.ResultOf(function);
  }
  int32_t ResultOf(const std::string& function) const {
    const auto result = results.find(function);
    return result == results.end() ? 0 : result->second;
  }
  static std::string Hex(uint64_t number) {
    char text[24];
    std::snprintf(text, sizeof(text), "%llx", static_cast<unsigned long long>(number));
    return text;
  }
  static std::string Pids(const uint32_t* pids, int32_t count) {
    std::string text;
    for (int32_t i = 0; pids != nullptr && i < count; ++i) text += Hex(pids[i]) + " ";
    return text + "count " + std::to_string(count);
  }

  // --- The functions.
  static int32_t SubscribePids(const uint32_t* pids, int32_t count, uint64_t reserved) {
    return Note("dlSubscribePids", Pids(pids, count) + ", " + Hex(reserved));
  }
  static int32_t UnSubscribePids(const uint32_t* pids, int32_t count, uint64_t reserved) {
    return Note("dlUnSubscribePids",
                (pids == nullptr ? "null " : "") + Pids(pids, count) + ", " + Hex(reserved));
  }
  static int32_t Register(displaylink::NivoNotification callback, void* context,
                          uint64_t reserved) {
    if (Current()->on_register) Current()->on_register();
    {
      const sim::Lock lock(Current()->mutex_);
      Current()->listeners_.emplace_back(callback, context);
    }
    return Note("dlRegisterNivoDisplayNotification", Hex(reserved));
  }
  static int32_t UnRegister(displaylink::NivoNotification callback, void* context,
                            uint64_t reserved) {
    const sim::Lock lock(Current()->mutex_);
    std::vector<Listener>& all = Current()->listeners_;
    const auto at = std::find(all.begin(), all.end(), Listener(callback, context));
    const bool known = at != all.end();
    if (known) all.erase(at);
    return Note("dlUnRegisterNivoDisplayNotification",
                std::string(known ? "" : "unknown, ") + Hex(reserved));
  }
  static int32_t PumpMessages(uint32_t milliseconds, uint64_t reserved) {
    ScriptedAddOn& self = *Current();
    ++self.pumps_;
    self.pump_thread = GetCurrentThreadId();
    if (milliseconds != 100 || reserved != 0) Note("dlPumpMessages", Hex(milliseconds));
    Wait(self.pump_period != 0 ? self.pump_period : milliseconds);
    const std::function<void()> on_pump = self.on_pump;  // which may put another in its place
    if (on_pump) on_pump();
    self.Deliver();
    const sim::Lock lock(self.mutex_);
    return self.ResultOf("dlPumpMessages");
  }
  static int32_t GetExecutionState(uint64_t handle, uint32_t kind, uint32_t* state) {
    const ScriptedAddOn& self = *Current();
    const int32_t result =
        Note("dlGetExecutionState", Hex(handle) + ", " + Hex(kind) + ", " + Hex(*state));
    const auto known = self.states.find(handle);
    if (known == self.states.end()) return result < 0 ? result : -1;
    *state = known->second;
    return result;
  }
  static int32_t GetNivoID(uint64_t handle, displaylink::NivoId* id) {
    bool zero = true;
    for (const uint8_t byte : id->contents) zero = zero && byte == 0;
    const int32_t result = Note(
        "dlGetNivoID", Hex(handle) + ", " + std::to_string(id->size) + (zero ? "" : ", dirty"));
    if (result < 0) return result;
    id->contents[0] = static_cast<uint8_t>(handle);
    id->contents[67] = 0x67;
    return result;
  }
  static int32_t GetVidPnTargetID(uint64_t handle, uint32_t kind,
                                  displaylink::VidPnTarget* record) {
    record->adapter_id = 0x1122334455667788;
    record->target_id = static_cast<uint32_t>(handle) + 1;
    return Note("dlGetVidPnTargetID", Hex(handle) + ", " + Hex(kind));
  }

  static const std::vector<sim::Entry>& AllEntries() {
    static const std::vector<sim::Entry> entries = {
        {"", "dlSubscribePids", sim::Erase(SubscribePids)},
        {"", "dlUnSubscribePids", sim::Erase(UnSubscribePids)},
        {"", "dlRegisterNivoDisplayNotification", sim::Erase(Register)},
        {"", "dlUnRegisterNivoDisplayNotification", sim::Erase(UnRegister)},
        {"", "dlPumpMessages", sim::Erase(PumpMessages)},
        {"", "dlGetExecutionState", sim::Erase(GetExecutionState)},
        {"", "dlGetNivoID", sim::Erase(GetNivoID)},
        {"", "dlGetVidPnTargetID", sim::Erase(GetVidPnTargetID)},
    };
    return entries;
  }

  static void OnLoad() {
    if (Current()->on_load) Current()->on_load();
  }

  void Deliver() {
    for (;;) {
      std::pair<uint32_t, uint64_t> event;
      std::vector<Listener> listeners;
      {
        const sim::Lock lock(mutex_);
        if (events_.empty()) return;
        event = events_.front();
        events_.erase(events_.begin());
        listeners = listeners_;
      }
      for (const Listener& listener : listeners) {
        listener.first(listener.second, event.first, event.second, 0x5EC0);
      }
    }
  }

  sim::Mutex mutex_;
  std::string calls_;
  std::vector<std::pair<uint32_t, uint64_t>> events_;
  std::vector<Listener> listeners_;
  std::atomic<uint32_t> pumps_{0};
};
