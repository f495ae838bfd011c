#include "sim/Machine.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "sim/FaceTable.h"
#include "sim/Failure.h"
#include "sim/MachineFile.h"
#include "sim/MachineState.h"
#include "sim/ShortForm.h"
#include "sim/Topology.h"
#include "sim/VirtualTime.h"
#include "sim/faces/AmdDriver.h"
#include "sim/faces/DisplayLink.h"
#include "sim/faces/IntelDriver.h"
#include "sim/faces/NvCplDriver.h"
#include "sim/faces/NvidiaDriver.h"
#include "sim/faces/SisDriver.h"

namespace sim {
namespace {

Machine* g_current = nullptr;
std::string g_last_report;

std::wstring RealTempFolder() {
  wchar_t folder[MAX_PATH + 1] = {};
  GetTempPathW(MAX_PATH, folder);
  return folder;
}

// A name that no machine of this or another process has.
std::wstring NewRoot() {
  static uint32_t number = 0;
  return RealTempFolder() + L"ostrel-sim-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
         std::to_wstring(++number);
}

void MakeFolder(const std::wstring& folder) {
  if (CreateDirectoryW(folder.c_str(), nullptr)) return;
  if (GetLastError() == ERROR_ALREADY_EXISTS) return;
  throw std::runtime_error("cannot make the folder " + Narrow(folder));
}

template <typename Visitor>
void ForEachFile(const std::wstring& folder, Visitor visit) {
  WIN32_FIND_DATAW found = {};
  const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return;
  do {
    const std::wstring name = found.cFileName;
    if (name != L"." && name != L"..") visit(name, found.dwFileAttributes);
  } while (FindNextFileW(search, &found));
  FindClose(search);
}

void DeleteFolder(const std::wstring& folder) {
  ForEachFile(folder, [&](const std::wstring& name, DWORD attributes) {
    const std::wstring path = folder + L"\\" + name;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return DeleteFolder(path);
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(path.c_str());
  });
  RemoveDirectoryW(folder.c_str());
}

std::string ReadWholeFile(const std::wstring& path) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return "";
  std::string text;
  char buffer[4096];
  DWORD size = 0;
  while (ReadFile(file, buffer, sizeof(buffer), &size, nullptr) && size > 0) {
    text.append(buffer, size);
  }
  CloseHandle(file);
  return text;
}

// Windows keeps profile files in a cache; three nulls write it out and drop it.
void FlushProfile(const std::wstring& path) {
  WritePrivateProfileStringW(nullptr, nullptr, nullptr, path.c_str());
}

bool IsSimulated(const Machine::State& state, const std::string& function) {
  if (FindEntryByName(function) != nullptr || IsIntelDriverOperation(function)) return true;
  if (IsNvidiaFunction(function)) return true;
  if (IsAmdOperation(function)) return true;
  for (const auto& [name, module] : state.invented) {
    const auto& entries = module.entries;
    const auto same = [&](const Entry& entry) { return function == entry.name; };
    if (std::any_of(entries.begin(), entries.end(), same)) return true;
  }
  return false;
}

size_t ConnectorNamed(const Model& model, const std::string& id) {
  const std::optional<size_t> connector = FindConnector(model, id);
  if (!connector) throw std::runtime_error("this machine has no connector " + id);
  return *connector;
}

std::unique_ptr<Machine::State> NewState(Model model) {
  auto state = std::make_unique<Machine::State>();
  state->model = std::move(model);
  state->invented.emplace(kNvidiaLibrary, NvidiaLibrary());
  state->invented.emplace(kNvCplLibrary, NvCplLibrary());
  state->invented.emplace(kSisLibrary, SisLibrary());
  const std::string add_on = LowerCase(state->model.displaylink.file);
  state->invented.emplace(add_on, DisplayLinkLibrary(state->model));
  state->root = NewRoot();
  state->host.folder = state->root + L"\\host";
  state->host.temp_folder = state->root + L"\\temp";
  state->host.appdata_folder = state->root + L"\\appdata";
  DeleteFolder(state->root);  // what a crashed run with the same process number left
  MakeFolder(state->root);
  MakeFolder(state->host.folder);
  MakeFolder(state->host.temp_folder);
  MakeFolder(state->host.appdata_folder);
  return state;
}

}  // namespace

std::wstring Widen(const std::string& text) {
  if (text.empty()) return L"";
  const int size = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
  std::wstring result(static_cast<size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(), length);
  return result;
}

std::string Narrow(const std::wstring& text) {
  if (text.empty()) return "";
  const int size = static_cast<int>(text.size());
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), length, nullptr, nullptr);
  return result;
}

std::string ReportOf(const Machine& machine) {
  const std::string outstanding = machine.Outstanding();
  std::string text = "--- machine\n" + machine.Describe();
  text += "--- journal\n" + machine.state().journal.history();
  if (!outstanding.empty()) text += "--- handed out and not given back\n" + outstanding;
  return text + "--- log\n" + machine.Log() + "---\n";
}

std::string TakeLastReport() { return std::exchange(g_last_report, std::string()); }
Machine* CurrentOrNull() { return g_current; }

Machine::Machine(const std::string& text) : Machine(NewState(ParseShortForm(text))) {}

Machine::Machine(std::unique_ptr<State> state)
    : state_(std::move(state)), previous_(std::exchange(g_current, this)) {
  for (const auto& [section, keys] : state_->model.config) {
    for (const auto& [key, value] : keys) Config(section, key, value);
  }
}

std::unique_ptr<Machine> Machine::FromFile(const std::string& path) {
  return std::unique_ptr<Machine>(new Machine(NewState(LoadMachineFile(path))));
}

Machine::~Machine() {
  state_->threads.EndAll();
  ReportUnusedFaults();
  try {
    g_last_report = ReportOf(*this);
  } catch (const std::exception& error) {
    g_last_report = error.what();
  }
  DeleteFolder(state_->root);
  g_current = previous_;
}

Model& Machine::model() { return state_->model; }
Machine::State& Machine::state() { return *state_; }
const Machine::State& Machine::state() const { return *state_; }

Machine& Machine::Current() {
  if (g_current != nullptr) return *g_current;
  std::fprintf(stderr, "simulator: a simulated function was called while there is no machine\n");
  std::abort();
}

// --- The host process.

std::wstring Machine::HostFolder() const { return state_->host.folder; }
std::wstring Machine::TempFolder() const { return state_->host.temp_folder; }
std::wstring Machine::AppDataFolder() const { return state_->host.appdata_folder; }

void Machine::Config(const std::string& section, const std::string& key, const std::string& value) {
  const std::wstring path = HostFolder() + L"\\Ostrel.cfg";
  WritePrivateProfileStringW(Widen(section).c_str(), Widen(key).c_str(), Widen(value).c_str(),
                             path.c_str());
  FlushProfile(path);
}

void Machine::Config(const std::string& section, const std::string& key, int64_t value) {
  Config(section, key, std::to_string(value));
}

void Machine::SetEnvironment(const std::string& name, const std::string& value) {
  state_->host.environment[name] = value;
}

void Machine::SetCommandLine(const std::wstring& command_line) {
  state_->host.command_line = command_line;
}

std::string Machine::Log() const { return ReadWholeFile(AppDataFolder() + L"\\hd\\Ostrel.log"); }

void Machine::UsePictures(const std::wstring& folder) {
  const std::wstring target = HostFolder() + L"\\OstrelRes";
  MakeFolder(target);
  uint32_t copied = 0;
  ForEachFile(folder, [&](const std::wstring& name, DWORD attributes) {
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return;
    if (CopyFileW((folder + L"\\" + name).c_str(), (target + L"\\" + name).c_str(), FALSE)) {
      ++copied;
    }
  });
  if (copied == 0) throw std::runtime_error("no pictures in " + Narrow(folder));
}

// --- Faults, journal, ledger.

void Machine::Fail(const std::string& function, uint32_t nth, uint32_t code, Repeat repeat) {
  if (!IsSimulated(*state_, function)) {
    ReportFailure("a fault was declared for " + function + ", which is not simulated");
    return;
  }
  if (!CanFail(function)) {
    ReportFailure("a fault was declared for " + function + ", which cannot fail");
    return;
  }
  state_->faults.Declare(function, nth, code, repeat == Repeat::kFromThenOn);
}

void Machine::ReportUnusedFaults() const {
  if (state_->unused_faults_forgiven) return;
  for (const std::string& fault : state_->faults.Unused()) {
    ReportFailure("a declared fault was never asked for: " + fault);
  }
}

void Machine::ClearFaults() {
  ReportUnusedFaults();
  state_->faults.Clear();
}

void Machine::ForgiveUnusedFaults() { state_->unused_faults_forgiven = true; }
uint32_t Machine::FaultsGiven() const { return state_->faults.Given(); }
std::string Machine::TakeJournal() { return state_->journal.Take(); }
const std::string& Machine::Journal() const { return state_->journal.text(); }
void Machine::JournalReads(bool on) { state_->journal.set_reads(on); }

uint32_t Machine::Calls(const std::string& function) const {
  if (!IsSimulated(*state_, function)) {
    ReportFailure("calls of " + function + " are asked for, which is not simulated");
  }
  return state_->faults.Calls(function);
}

std::string Machine::Outstanding() const { return state_->ledger.Outstanding(); }

// --- Time.

void Machine::UseRealTime() { state_->clock.UseRealTime(); }
uint64_t Machine::Now() const { return state_->clock.now(); }
std::vector<Machine::Timer> Machine::ArmedTimers() const { return state_->clock.timers(); }

void Machine::SetCalendar(const SYSTEMTIME& utc_now, int32_t bias_minutes) {
  state_->clock.SetCalendar(utc_now, bias_minutes);
}

void Machine::Advance(uint32_t milliseconds) {
  PassTime(Now() + milliseconds, Driver::kPumping, [] { return false; });
}

void Machine::At(uint64_t moment, std::function<void()> event) {
  state_->plan.Add(moment, std::move(event));
}

void Machine::Work(uint32_t milliseconds) {
  if (!state_->threads.Sleep(milliseconds)) state_->clock.Pass(milliseconds);
}

size_t Machine::EndThreads() { return state_->threads.EndAll(); }

// --- The pop-up and its host.

HWND Machine::Popup() const {
  const std::vector<HWND>& dialogs = state_->windows.dialogs;
  return dialogs.empty() ? nullptr : dialogs.back();
}

const Picture& Machine::PopupPicture() const { return state_->windows.picture; }
const std::vector<Drawn>& Machine::PopupDrawing() const { return state_->windows.drawing; }

void Machine::SendToPopup(UINT message, WPARAM wparam, LPARAM lparam) {
  if (Popup() == nullptr) {
    ReportFailure("a message was sent to the pop-up while there is none");
    return;
  }
  SendMessageA(Popup(), message, wparam, lparam);
}

void Machine::PressKey(uint32_t virtual_key) { SendToPopup(WM_KEYDOWN, virtual_key, 1); }
void Machine::MoveMouse(int x, int y) { SendToPopup(WM_MOUSEMOVE, 0, MAKELPARAM(x, y)); }
void Machine::Click(int x, int y) { SendToPopup(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y)); }
void Machine::SetCursor(int x, int y) { state_->windows.cursor = {x, y}; }

const std::vector<Notification>& Machine::Notifications() const { return state_->notifications; }

// --- Events on the machine.

void Machine::Plug(const std::string& connector, const Monitor& monitor) {
  const size_t index = ConnectorNamed(state_->model, connector);
  PlugMonitor(state_->model, index, monitor);
  TellOfUsbDisplay(*this, index, kNivoDisplayAdded);
}

void Machine::Unplug(const std::string& connector) {
  const size_t index = ConnectorNamed(state_->model, connector);
  UnplugMonitor(state_->model, index);
  TellOfUsbDisplay(*this, index, kNivoDisplayChanged);
}

void Machine::BroadcastDisplayChange() {
  const std::vector<HWND> windows = state_->windows.alive;
  const auto& sources = state_->model.sources;
  const DisplayMode mode = sources.empty() ? DisplayMode() : sources[0].mode;
  const LPARAM size = MAKELPARAM(mode.width, mode.height);
  for (const HWND window : windows) {
    const DWORD thread = GetWindowThreadProcessId(window, nullptr);
    // Returns at once where the window is another thread's.
    SendNotifyMessageA(window, WM_DISPLAYCHANGE, mode.bits, size);
    if (thread != GetCurrentThreadId()) state_->threads.Notify(thread);
  }
}

std::string Machine::Topology() const { return DescribeTopology(state_->model); }

}  // namespace sim
