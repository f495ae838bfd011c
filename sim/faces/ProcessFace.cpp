// Programs that the library starts. One is known, rundll32.exe, which calls an entry of a library;
// what it does is done before CreateProcess returns, unless a test lets it take its time. Handles
// of the process and its thread stand in the ledger.
#include "sim/faces/Programs.h"

#include <string>

#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

constexpr char kProgram[] = "rundll32.exe";
constexpr char kWorkTime[] = "programs: work time";

// "a b c" to "a", and "b c" behind it.
std::string TakeWord(std::string* text) {
  const size_t end = text->find(' ');
  std::string word = text->substr(0, end);
  const size_t next = end == std::string::npos ? end : text->find_first_not_of(' ', end);
  *text = next == std::string::npos ? "" : text->substr(next);
  return word;
}

// "library,entry command": a library or an entry that is not there is the program's own grief.
void RunDll(std::string command) {
  const std::string target = TakeWord(&command);
  const size_t comma = target.find(',');
  if (comma == std::string::npos) return;
  const auto& invented = Machine::Current().state().invented;
  const auto library = invented.find(Lower(target.substr(0, comma)));
  if (library == invented.end()) return;
  const InventedModule& module = library->second;
  if (module.available != nullptr && !module.available(CurrentModel())) return;
  for (const Entry& entry : module.entries) {
    if (target.substr(comma + 1) != entry.name) continue;
    using RunDllEntry = void(WINAPI*)(HWND, HINSTANCE, const char*, int);
    reinterpret_cast<RunDllEntry>(entry.function)(nullptr, nullptr, command.c_str(), SW_SHOWNORMAL);
  }
}

void RunInItsTime(const std::string& command) {
  Machine& machine = Machine::Current();
  const uint64_t milliseconds = machine.state().counters[kWorkTime];
  if (milliseconds == 0) return RunDll(command);
  machine.At(machine.Now() + milliseconds, [command] { RunDll(command); });
}

HANDLE NewHandle(const char* kind) {
  static uintptr_t next = 0x72000;
  const HANDLE handle = reinterpret_cast<HANDLE>(next += 4);
  Machine::Current().state().simulated_handles[handle] = kind;
  LedgerTake(kind, handle);
  return handle;
}

// The line, and what is unusual about the rest of the arguments.
std::string Describe(LPCSTR application, const std::string& line, BOOL inherit, DWORD flags,
                     bool has_surroundings) {
  std::string text = line;
  if (application != nullptr) text += std::string(" application=") + application;
  if (inherit) text += " inherit";
  if (flags != 0) text += " flags=" + std::to_string(flags);
  if (has_surroundings) text += " environment or folder";
  return text;
}

BOOL WINAPI FakeCreateProcessA(LPCSTR application, LPSTR line, LPSECURITY_ATTRIBUTES,
                               LPSECURITY_ATTRIBUTES, BOOL inherit, DWORD flags, LPVOID environment,
                               LPCSTR folder, LPSTARTUPINFOA startup,
                               LPPROCESS_INFORMATION started) {
  Call call("CreateProcessA");
  std::string rest = line != nullptr ? line : "";
  const std::string shown =
      Describe(application, rest, inherit, flags, environment != nullptr || folder != nullptr);
  const std::string program = Lower(TakeWord(&rest));
  const bool sound = line != nullptr && started != nullptr && startup != nullptr &&
                     startup->cb == sizeof(STARTUPINFOA);
  DWORD error = ERROR_SUCCESS;
  if (call.Fails()) {
    error = FaultOr(call, ERROR_ACCESS_DENIED);
  } else if (!sound) {
    error = ERROR_INVALID_PARAMETER;
  } else if (program != kProgram) {
    error = ERROR_FILE_NOT_FOUND;
  }
  call.Changed(error == ERROR_SUCCESS, "%s", shown.c_str());
  if (error != ERROR_SUCCESS) {
    SetLastError(error);
    return FALSE;
  }
  const char separator = line[program.size()];
  line[program.size()] = '\0';  // as Windows does while it looks for the program
  RunInItsTime(rest);
  line[program.size()] = separator;
  static DWORD next_id = 7200;
  started->hProcess = NewHandle("process");
  started->hThread = NewHandle("thread");
  started->dwProcessId = next_id += 4;
  started->dwThreadId = next_id += 4;
  LeaveDirtyLastError();
  return TRUE;
}

}  // namespace

void LetProgramsTake(Machine& machine, uint32_t milliseconds) {
  machine.state().counters[kWorkTime] = milliseconds;
}

const std::vector<Entry>& ProcessFace() {
  static const std::vector<Entry> kEntries = {
      {"kernel32.dll", "CreateProcessA", Guard<FakeCreateProcessA>()},
  };
  return kEntries;
}

}  // namespace sim
