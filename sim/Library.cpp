#include "sim/Library.h"

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "sim/Failure.h"
#include "sim/ImportRules.h"
#include "sim/MachineState.h"
#include "sim/Patcher.h"

namespace sim {
namespace {

std::wstring FolderOfThisProgram() {
  wchar_t path[1024] = {};
  GetModuleFileNameW(nullptr, path, 1024);
  const std::wstring text(path);
  return text.substr(0, text.find_last_of(L"\\/") + 1);
}

std::wstring PathOf(Library::Build build) {
  const bool shipped = build == Library::Build::kShipped;
  const wchar_t* given = _wgetenv(shipped ? L"OSTREL_DLL" : L"OSTREL_WHITEBOX_DLL");
  if (given != nullptr && *given != L'\0') return given;
  return FolderOfThisProgram() + (shipped ? L"Ostrel.dll" : L"OstrelWhiteBox.dll");
}

// What the library leaves behind on purpose at every set-up on Windows 7 with Intel graphics. A
// test of its own holds it; the rest need not forgive it one by one.
constexpr char kLeftOnPurpose[] = "wide device list";

struct Range {
  const void* begin;
  const void* end;
};

Range RangeOf(HMODULE module) {
  auto* base = reinterpret_cast<unsigned char*>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
  return {base, base + headers->OptionalHeader.SizeOfImage};
}

// A thread that outlives the DLL would run on into nowhere.
void EndLeftThreads(Machine::State& state, bool forgiven) {
  const size_t left = state.threads.EndAll();
  if (left == 0 || forgiven) return;
  ReportFailure("threads left running by the unload of the DLL: " + std::to_string(left));
}

// A window that outlives the DLL would call into nowhere. It stays in the ledger, as the leak that
// it is.
void DestroyLeftWindows(Machine::State& state) {
  const std::vector<HWND> alive = state.windows.alive;
  for (const HWND window : alive) {
    if (IsWindow(window)) DestroyWindow(window);
  }
  state.windows.alive.clear();
  state.windows.dialogs.clear();
}

void UnregisterClasses(Machine::State& state) {
  for (const WindowClass& window_class : state.windows.classes) {
    UnregisterClassW(window_class.name.c_str(), window_class.instance);
  }
  state.windows.classes.clear();
}

// Its next tick would call into nowhere. A window that is gone took its timers along.
void ReportLeftTimers(const std::vector<Machine::Timer>& timers) {
  for (const Machine::Timer& timer : timers) {
    if (timer.window != nullptr && !IsWindow(timer.window)) continue;
    ReportFailure("left armed by the unload of the DLL: timer " + std::to_string(timer.id) +
                  ", period " + std::to_string(timer.period));
  }
}

}  // namespace

struct Library::Implementation {
  Machine* machine = nullptr;
  HMODULE module = nullptr;
  const WhiteBox* white_box = nullptr;
  bool forgiven = false;

  template <typename Function>
  void Bind(Function*& slot, const char* name) {
    slot = reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    if (slot == nullptr) throw std::runtime_error(std::string("the DLL has no export ") + name);
  }

  void BindAll();
  void Unload();

  BOOL (*init)() = nullptr;
  void (*de_init)() = nullptr;
  BOOL (*run)() = nullptr;
  HWND (*run_ex)() = nullptr;
  BOOL (*stop)() = nullptr;
  BOOL (*cancel)() = nullptr;
  BOOL (*save_current_mode)() = nullptr;
  BOOL (*flush_remembered_settings)() = nullptr;
  BOOL (*init_extend_mode)() = nullptr;
  void (*de_init_extend_mode)() = nullptr;
  BOOL (*has_dual_output_capability)() = nullptr;
  BOOL (*permit_to_change_mode)() = nullptr;
  BOOL (*detect_display_connected_feature_is_valid)() = nullptr;
  BOOL (*has_external_monitor_connected)() = nullptr;
  BOOL (*enable_extend_mode)(uint32_t) = nullptr;
  BOOL (*is_extend_mode_enabled)() = nullptr;
  BOOL (*change_to_nb_only_single_display_mode)() = nullptr;
  uint32_t (*get_vga_vendor)() = nullptr;
  BOOL (*get_connected_displays)(uint32_t*, uint32_t*) = nullptr;
  BOOL (*get_active_displays)(uint32_t*, uint32_t*) = nullptr;
  BOOL (*get_current_display_mode)(uint32_t*, uint32_t*) = nullptr;
  BOOL (*set_new_display_mode)(uint32_t, uint32_t) = nullptr;
  void (*set_lasso_box_status)(uint32_t) = nullptr;
  BOOL (*register_notification)(HWND, uint32_t) = nullptr;
};

void Library::Implementation::BindAll() {
  Bind(init, "Ostrel_Init");
  Bind(de_init, "Ostrel_DeInit");
  Bind(run, "Ostrel_Run");
  Bind(run_ex, "Ostrel_RunEx");
  Bind(stop, "Ostrel_Stop");
  Bind(cancel, "Ostrel_Cancel");
  Bind(save_current_mode, "Ostrel_SaveCurrentMode");
  Bind(flush_remembered_settings, "Ostrel_FlushRememberedSettings");
  Bind(init_extend_mode, "Ostrel_InitExtendMode");
  Bind(de_init_extend_mode, "Ostrel_DeInitExtendMode");
  Bind(has_dual_output_capability, "Ostrel_HasDualOutputCapability");
  Bind(permit_to_change_mode, "Ostrel_PermitToChangeMode");
  Bind(detect_display_connected_feature_is_valid, "Ostrel_DetectDisplayConnectedFeatureIsValid");
  Bind(has_external_monitor_connected, "Ostrel_HasExternalMonitorConnected");
  Bind(enable_extend_mode, "Ostrel_EnableExtendMode");
  Bind(is_extend_mode_enabled, "Ostrel_IsExtendModeEnabled");
  Bind(change_to_nb_only_single_display_mode, "Ostrel_ChangeToNBOnlySingleDisplayMode");
  Bind(get_vga_vendor, "Ostrel_GetVgaVendor");
  Bind(get_connected_displays, "Ostrel_GetConnectedDisplays");
  Bind(get_active_displays, "Ostrel_GetActiveDisplays");
  Bind(get_current_display_mode, "Ostrel_GetCurrentDisplayMode");
  Bind(set_new_display_mode, "Ostrel_SetNewDisplayMode");
  Bind(set_lasso_box_status, "Ostrel_SetLassoBoxStatus");
  Bind(register_notification, "Ostrel_RegisterNotification");
}

void Library::Implementation::Unload() {
  if (module == nullptr) return;
  Machine::State& state = machine->state();
  const Range range = RangeOf(module);
  EndLeftThreads(state, forgiven);
  DestroyLeftWindows(state);
  wchar_t path[1024] = {};
  GetModuleFileNameW(module, path, 1024);
  FreeLibrary(module);
  module = nullptr;
  if (GetModuleHandleW(path) != nullptr) ReportFailure("the DLL is still loaded after its unload");
  UnregisterClasses(state);
  const std::vector<Machine::Timer> timers = state.clock.ForgetProceduresIn(range.begin, range.end);
  if (!forgiven) ReportLeftTimers(timers);
  state.ledger.Settle();
  state.ledger.WriteOff(kLeftOnPurpose);
  state.ledger.WriteOff(kKeptThread);
  const std::string outstanding = state.ledger.Outstanding();
  if (!outstanding.empty() && !forgiven) {
    ReportFailure("not given back by the unload of the DLL:\n" + outstanding);
  }
  state.ledger.Clear();
}

Library::Library(Machine& machine, Build build) : implementation_(nullptr) {
  if (&Machine::Current() != &machine)
    throw std::runtime_error("this machine is not the current one");
  auto implementation = std::make_unique<Implementation>();
  implementation->machine = &machine;
  implementation->module = LoadPatched(PathOf(build), ResolveImport);
  try {
    implementation->BindAll();
    if (build == Build::kWhiteBox) {
      WhiteBoxExport get_box = nullptr;
      implementation->Bind(get_box, "Ostrel_WhiteBox");
      implementation->white_box = get_box();
    }
  } catch (...) {
    implementation->forgiven = true;
    implementation->Unload();
    throw;
  }
  machine.state().ledger.MarkResident();
  implementation_ = implementation.release();
}

Library::~Library() {
  implementation_->Unload();
  delete implementation_;
}

void Library::Unload() { implementation_->Unload(); }
HMODULE Library::module() const { return implementation_->module; }
void Library::ForgiveLeaks() { implementation_->forgiven = true; }

const WhiteBox& Library::white_box() const {
  if (implementation_->white_box == nullptr) {
    throw std::runtime_error("this build of the DLL has no white box");
  }
  return *implementation_->white_box;
}

BOOL Library::Init() { return implementation_->init(); }
void Library::DeInit() { implementation_->de_init(); }
BOOL Library::Run() { return implementation_->run(); }
HWND Library::RunEx() { return implementation_->run_ex(); }
BOOL Library::Stop() { return implementation_->stop(); }
BOOL Library::Cancel() { return implementation_->cancel(); }
BOOL Library::SaveCurrentMode() { return implementation_->save_current_mode(); }
BOOL Library::FlushRememberedSettings() { return implementation_->flush_remembered_settings(); }
BOOL Library::InitExtendMode() { return implementation_->init_extend_mode(); }
void Library::DeInitExtendMode() { implementation_->de_init_extend_mode(); }
BOOL Library::HasDualOutputCapability() { return implementation_->has_dual_output_capability(); }
BOOL Library::PermitToChangeMode() { return implementation_->permit_to_change_mode(); }

BOOL Library::DetectDisplayConnectedFeatureIsValid() {
  return implementation_->detect_display_connected_feature_is_valid();
}

BOOL Library::HasExternalMonitorConnected() {
  return implementation_->has_external_monitor_connected();
}

BOOL Library::EnableExtendMode(uint32_t enable) {
  return implementation_->enable_extend_mode(enable);
}

BOOL Library::IsExtendModeEnabled() { return implementation_->is_extend_mode_enabled(); }

BOOL Library::ChangeToNBOnlySingleDisplayMode() {
  return implementation_->change_to_nb_only_single_display_mode();
}

uint32_t Library::GetVgaVendor() { return implementation_->get_vga_vendor(); }

BOOL Library::GetConnectedDisplays(uint32_t* displays, uint32_t* count) {
  return implementation_->get_connected_displays(displays, count);
}

BOOL Library::GetActiveDisplays(uint32_t* displays, uint32_t* count) {
  return implementation_->get_active_displays(displays, count);
}

BOOL Library::GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) {
  return implementation_->get_current_display_mode(mode, displays);
}

BOOL Library::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  return implementation_->set_new_display_mode(mode, displays);
}

void Library::SetLassoBoxStatus(uint32_t status) { implementation_->set_lasso_box_status(status); }

BOOL Library::RegisterNotification(HWND receiver, uint32_t message_id) {
  return implementation_->register_notification(receiver, message_id);
}

}  // namespace sim
