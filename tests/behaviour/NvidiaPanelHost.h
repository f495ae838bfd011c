// A NvidiaMMImpl on a simulated notebook, and what it did told in short lines.
#pragma once

#include "sim/FaceTable.h"
#include "sim/MachineState.h"
#include "sim/Topology.h"
#include "sim/faces/NvCplDriver.h"
#include "tests/behaviour/CoreHost.h"

#include <sstream>
#include <stdexcept>

/// A journal line of the program that a switch starts.
inline std::string Started(const std::string& view, int result = 1) {
  return "CreateProcessA(rundll32.exe NvCpl.DLL,dtcfg setview 0 " + view +
         ")=" + std::to_string(result) + "\n";
}
/// The same, and what the program then did.
inline std::string Shown(const std::string& view) {
  return Started(view) + "dtcfg(setview 0 " + view + ")=1\n";
}
/// The program runs and finds no display of that name.
inline std::string Missed(const std::string& view) {
  return Started(view) + "dtcfg(setview 0 " + view + ")=0\n";
}

struct NvidiaPanelHost : CoreHost {
  explicit NvidiaPanelHost(const std::string& text, const std::wstring& switches = L"")
      : CoreHost(text, switches) {}
  ~NvidiaPanelHost() { End(); }
  NvidiaPanelHost(const NvidiaPanelHost&) = delete;
  NvidiaPanelHost& operator=(const NvidiaPanelHost&) = delete;

  /// The object, made at the first call and initialised.
  IMMonitor& nvidia() {
    if (bare() != nullptr && !initialised_) {
      initialised_ = true;
      EXPECT_TRUE(object_->Initial());
    }
    return *object_;
  }
  /// The same without Initial.
  IMMonitor* bare() {
    if (object_ == nullptr) object_.reset(box().NewNvidiaMMImpl());
    return object_.get();
  }
  IDisplayExtension& extension() { return *box().ExtensionOf(bare()); }
  void End() { object_.reset(); }

  const NvidiaPanelBox& box() { return *ostrel().white_box().nvidia_panel; }

  sim::Model& model() { return machine.model(); }
  sim::Connector& connector(const std::string& id) {
    return model().connectors[*sim::FindConnector(model(), id)];
  }
  /// Puts a function of the test in the place of an entry of NvCpl.dll.
  template <typename Function>
  void Replace(const std::string& name, Function* function) {
    for (sim::Entry& entry : machine.state().invented.at(sim::kNvCplLibrary).entries) {
      if (name == entry.name) entry.function = sim::Erase(function);
    }
  }

  void Forget() {
    machine.TakeJournal();
    ForgetLog();
  }

  /// What a switch journals, and its result: "CreateProcessA(...)=1\n...1".
  std::string Switch(uint32_t mode, uint32_t displays) {
    nvidia();
    Forget();
    const BOOL result = nvidia().SetNewDisplayMode(mode, displays);
    return machine.TakeJournal() + std::to_string(result);
  }
  std::string Extend(BOOL enable, uint32_t displays) {
    nvidia();
    Forget();
    const BOOL result = nvidia().EnableExtendModeOnDisplays(enable, displays);
    return machine.TakeJournal() + std::to_string(result);
  }
  std::string ExtendWherever(BOOL enable) {
    nvidia();
    Forget();
    const BOOL result = nvidia().EnableExtendMode(enable);
    return machine.TakeJournal() + std::to_string(result);
  }

  /// "3 (2)", or "failed"; both numbers hold something else before the call.
  std::string Connected() {
    uint32_t displays = 0xAAAA;
    uint32_t count = 0xBBBB;
    const BOOL known = nvidia().GetConnectedDisplays(&displays, &count);
    return Told(known, displays, count);
  }
  std::string Active() {
    uint32_t displays = 0xAAAA;
    uint32_t count = 0xBBBB;
    const BOOL known = nvidia().GetActiveDisplays(&displays, &count);
    return Told(known, displays, count);
  }
  /// "2 of 3" for a clone of the first two displays, or "failed".
  std::string Mode() {
    uint32_t mode = 0xEE;
    uint32_t displays = 0xEE;
    if (!nvidia().GetCurrentDisplayMode(&mode, &displays)) return "failed";
    return std::to_string(mode) + " of " + std::to_string(displays);
  }

 private:
  static std::string Told(BOOL known, uint32_t displays, uint32_t count) {
    return known ? std::to_string(displays) + " (" + std::to_string(count) + ")" : "failed";
  }

  std::unique_ptr<IMMonitor> object_;
  bool initialised_ = false;
};
