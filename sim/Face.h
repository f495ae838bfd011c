// How a simulated function is written and found. A face is a table of such functions; the patcher
// and the simulated GetProcAddress both answer from the same tables.
//
//   LONG WINAPI FakeSetDisplayConfig(...) {
//     Call call("SetDisplayConfig");                 // counts, and looks for a declared fault
//     if (call.Fails()) return call.Changed(call.FaultCode(), "paths=%u flags=0x%x", count, flags);
//     ...
//     return call.Changed(ERROR_SUCCESS, "paths=%u flags=0x%x", count, flags);  // journals
//     "SetDisplayConfig(...)=0"
//   }
//
// As rude as the documentation allows: a success may leave a dirty last error; sizes and counts are
// validated; an output buffer is written only as far as the documented contract says.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "sim/Machine.h"

namespace sim {

/// One simulated function. `available` says whether this Windows has it at all (null: always).
struct Entry {
  const char* module;  // lower case, "user32.dll"
  const char* name;
  void* function;
  bool (*available)(const Model&) = nullptr;
};

template <typename Function>
void* Erase(Function* function) {
  return reinterpret_cast<void*>(function);
}

/// The same for a function that might throw: an exception of the simulator must not run through
/// frames of the DLL, so it fails the running test and the function answers 0.  Guard<FakeSleep>()
/// instead of Erase(FakeSleep).
void ReportException(const char* text) noexcept;

template <auto kFunction>
struct Guarded;

template <typename Result, typename... Arguments, Result (*kFunction)(Arguments...)>
struct Guarded<kFunction> {
  static Result Run(Arguments... arguments) noexcept {
    try {
      return kFunction(arguments...);
    } catch (const std::exception& error) {
      ReportException(error.what());
    } catch (...) {
      ReportException("an exception of unknown type");
    }
    return Result();
  }
};

template <auto kFunction>
void* Guard() {
  return Erase(&Guarded<kFunction>::Run);
}

class Call {
 public:
  explicit Call(const char* function);
  bool Fails() const { return fails_; }
  uint32_t FaultCode() const { return code_; }
  /// Writes "<function>(<text>)=<result>" to the journal and gives the result back.
  int64_t Changed(int64_t result, const char* format, ...) __attribute__((format(printf, 3, 4)));
  /// The same, only while reads are journalled.
  int64_t Read(int64_t result, const char* format, ...) __attribute__((format(printf, 3, 4)));

 private:
  const char* function_;
  bool fails_ = false;
  uint32_t code_ = 0;
};

/// How many simulated calls the calling thread has made.
uint64_t CallsOfThisThread();

/// A line for the journal as it stands: "PostMessageA(id=1025 wparam=1 lparam=0)".
void JournalLine(const std::string& line);

/// The kinds of a thread's handle in the ledger: one that is to be closed, and that of a thread
/// that holds a module until it ends. Nobody may be there any more to close the latter, and nobody
/// does: closing one fails the test.
constexpr char kThread[] = "thread";
constexpr char kKeptThread[] = "kept thread";

/// The ledger: `kind` is a word such as "device list", `what` the handle's number.
void LedgerTake(const char* kind, const void* what);
void LedgerGive(const char* kind, const void* what);  // an unknown handle fails the running test

// The faces, one file each in sim/faces/.
const std::vector<Entry>&
DisplayDevicesFace();  // EnumDisplayDevices*, EnumDisplaySettings*, ChangeDisplaySettings*
const std::vector<Entry>& DisplayConfigFace();  // QueryDisplayConfig and its fellows
const std::vector<Entry>& SetupApiFace();       // SetupDi*, CM_Get_DevNode_Status
const std::vector<Entry>& RegistryFace();       // Reg*, SHGetValueA
const std::vector<Entry>&
SystemFace();  // versions, environment, command line, folders, processes, wave out
const std::vector<Entry>&
LoaderFace();  // LoadLibrary*, GetModuleHandle*, GetProcAddress, FreeLibrary
const std::vector<Entry>& TimeFace();     // Sleep, timers, tick counts, local and system time
const std::vector<Entry>& ThreadFace();   // threads, events, waits, messages of a thread
const std::vector<Entry>& WindowFace();   // dialogs, layered windows, window classes, posts, cursor
const std::vector<Entry>& PlayersFace();  // the windows of other programs
const std::vector<Entry>& KeyboardFace();  // simulated key presses, the window in front
const std::vector<Entry>& GdiFace();  // GDI and GDI+: real work, counted and kept in the ledger
const std::vector<Entry>&
HandleFace();  // CloseHandle and what makes kernel handles: real, in the ledger
const std::vector<Entry>& ProcessFace();      // CreateProcessA: programs that the library starts
const std::vector<Entry>& ServicesFace();     // OpenSCManagerW and its fellows
const std::vector<Entry>& ProfileFace();      // writes to profile files: real, told in their order
const std::vector<Entry>& ComFace();          // COM classes that only the model has
const std::vector<Entry>& BasicStringFace();  // SysAllocString and its fellows
const std::vector<Entry>& RunTimeFace();      // what the C run-time tells about the process
const std::vector<Entry>& FilesFace();        // the system folder and the versions of its files
const std::vector<Entry>& ClientHeapFace();   // free(): how vendors' buffers come back
const std::vector<Entry>& StandardOutputFace();  // what is written to the process's standard output
const std::vector<Entry>& EscapeFace();  // ExtEscape: what a display driver does on the side

}  // namespace sim
