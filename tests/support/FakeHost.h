// A host on a notebook whose display object is the test's own: the machine, the library's white-box
// build on top of it, and the script of the fake.
#pragma once

#include <memory>
#include <string>

#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/support/FakeMonitor.h"

/// The pictures that the build renders beside the test programs.
inline std::wstring BuiltPictures() {
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const std::wstring text = path;
  return text.substr(0, text.find_last_of(L"\\/") + 1) + L"OstrelRes";
}

struct FakeHost {
  /// The fake stands in for the object of the machine's one Intel adapter; what it says of itself
  /// is the script's business. `command_line` is the host's, with program name.
  explicit FakeHost(const std::wstring& command_line = L"host.exe")
      : machine("win7 intel: internal 1366x768 active, crt 1024x768"),
        script(std::make_shared<FakeScript>()) {
    machine.SetCommandLine(command_line);
    machine.UsePictures(BuiltPictures());
    Load();
  }

  ~FakeHost() { End(); }
  FakeHost(const FakeHost&) = delete;
  FakeHost& operator=(const FakeHost&) = delete;

  const FactoryBox& factory() const { return *ostrel->white_box().factory; }

  /// Loads the library (anew) with the fake in place; to be called again after a change to the
  /// machine that is read once per process.
  void Load() {
    End();
    ostrel.reset();
    script->deleted = false;
    ostrel = std::make_unique<sim::Library>(machine, sim::Library::Build::kWhiteBox);
    factory().InstallMonitor(new FakeMonitor(script), static_cast<uint16_t>(kVendorIntel));
    script->TakeCalls();
  }

  /// Ends both sides, as a host must before it unloads the library.
  void End() {
    if (ostrel == nullptr) return;
    ostrel->DeInit();
    ostrel->DeInitExtendMode();
    factory().DeleteMultiMonitorObject();
  }

  /// Brings the extend-mode side up and forgets the calls that this took.
  bool InitExtendMode() {
    const bool up = ostrel->InitExtendMode() != 0;
    script->TakeCalls();
    return up;
  }

  sim::Machine machine;
  std::shared_ptr<FakeScript> script;
  std::unique_ptr<sim::Library> ostrel;
};
