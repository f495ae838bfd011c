// A machine, the white-box build on top of it, and the factory's functions.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/support/StandInBackends.h"

struct FactoryHost {
  explicit FactoryHost(const std::string& text, const std::wstring& command_line = L"host.exe")
      : machine(text), script(std::make_shared<FakeScript>()) {
    machine.SetCommandLine(command_line);
  }

  ~FactoryHost() {
    if (ostrel != nullptr) (*this)->DeleteMultiMonitorObject();
  }
  FactoryHost(const FactoryHost&) = delete;
  FactoryHost& operator=(const FactoryHost&) = delete;

  const FactoryBox* operator->() { return Library().white_box().factory; }

  sim::Library& Library() {
    if (ostrel == nullptr) {
      ostrel = std::make_unique<sim::Library>(machine, sim::Library::Build::kWhiteBox);
    }
    return *ostrel;
  }

  sim::Adapter& Adapter(size_t index) { return machine.model().adapters[index]; }

  void Install(uint32_t vendor) {
    (*this)->InstallMonitor(new FakeMonitor(script), static_cast<uint16_t>(vendor));
    script->TakeCalls();
  }

  std::vector<uint16_t> Listed(bool include_root_enumerated) {
    std::vector<uint16_t> vendors;
    const bool listed = (*this)->EnumerateDisplayAdapterVendors(include_root_enumerated, &vendors);
    EXPECT_EQ(listed, !vendors.empty());
    return vendors;
  }

  bool LogHas(const std::string& part) const {
    return machine.Log().find(part) != std::string::npos;
  }

  sim::Machine machine;
  std::shared_ptr<FakeScript> script;
  std::unique_ptr<sim::Library> ostrel;
};

constexpr wchar_t kWithChecks[] = L"host.exe --enable-dcheck --v=1";

/// The same with stand-ins for every back-end.
struct StandInHost : FactoryHost {
  explicit StandInHost(const std::string& text, const std::wstring& command_line = kWithChecks)
      : FactoryHost(text, command_line), backends(Library().white_box().factory) {}

  /// The class of the object that answers now.
  std::string Answer() { return NameOf((*this)->GetMultiMonitorObject()); }
  /// The same after a look at the active vendor, as the exports do it.
  std::string RecheckedAnswer() {
    (*this)->OnActiveDisplayAdapterVendorChanged();
    return Answer();
  }
  void Disable(size_t adapter, bool disabled = true) { Adapter(adapter).disabled = disabled; }

  StandInBackends backends;
};

// Panel and CRT hang on the first adapter, so that Windows has displays on that one alone.
constexpr char kIntelAndNvidia[] = "win7 intel, nvidia: internal 1366x768 active, crt 1024x768";
constexpr char kVistaIntelAndNvidia[] =
    "vista intel, nvidia: internal 1366x768 active, crt 1024x768";
constexpr char kIntelAndAmd[] = "win7 intel, amd: internal 1366x768 active, crt 1024x768";
// Windows has displays on both.
constexpr char kDisplaysOnBoth[] = "win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080";

/// NVIDIA's driver finds the outputs on its adapter alone, and that they are enough.
inline void MakeNvidiaDiscrete(BackendScript* script, bool could_manage = true) {
  script->discrete_only = true;
  script->could_manage = could_manage;
}

/// ... and that it can place displays across the other adapter.
inline void MakeNvidiaCross(BackendScript* script) {
  MakeNvidiaDiscrete(script);
  script->cross_adapter_capable = true;
}
