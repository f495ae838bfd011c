// An ADLImpl on a simulated notebook, and what it asked the display library in short lines.
#pragma once

#include "sim/faces/AmdDriver.h"
#include "sim/faces/AmdDriverRules.h"
#include "tests/behaviour/CoreHost.h"

#include <sstream>

constexpr char kAdlTwo[] = "win7 amd: internal 1366x768 active, crt 1280x1024";
constexpr char kAdlClone[] = "win7 amd: clone internal 1366x768 active, crt 1280x1024 active";
constexpr char kAdlExtended[] = "win7 amd: internal 1366x768 active, crt 1280x1024 active";
constexpr char kAdlThree[] = "win7 amd*3: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080";
constexpr wchar_t kAdlChecked[] = L"--enable-dcheck";

/// A result of the library, as Machine::Fail takes it.
constexpr uint32_t AdlResultCode(int32_t result) { return static_cast<uint32_t>(result); }

/// A map as the journal has it; what a test does not name is as the library gave it.
struct AdlMapText {
  int index = 0;
  std::string mode = "1024x768x32@60";
  int x = 0;
  int y = 0;
  int first = 0;
  int count = 1;
  int adapter = 0;               // the display's iDisplayLogicalAdapterIndex
  std::string display = "1/32";  // logical and physical index
  int physical_adapter = 16;
  int mode_adapter = 0;  // ADLMode::iAdapterIndex
  std::string kind = "0x4";

  std::string Text() const {
    std::ostringstream text;
    text << "[" << index << ": " << mode << " at " << x << "," << y
         << " turn=0 adapter=" << mode_adapter << " id=" << display << "/" << adapter << "/"
         << physical_adapter << " flag=0 mode=0x2/0x0 targets=" << first << "+" << count
         << " map=0x6e/" << kind << "]";
    return text.str();
  }
};

/// A target: "0/32/0/16" is logical and physical display, logical and physical adapter.
inline std::string AdlTargetText(const std::string& id, int map = 0, int mask = 1, int value = 1) {
  std::ostringstream text;
  text << "[" << id << " map=" << map << " mask=0x" << mask << " value=0x" << value << "]";
  return text.str();
}

inline std::string AdlSetText(const std::string& maps, const std::string& targets, int result = 0,
                              int adapter = 0) {
  std::ostringstream text;
  text << "ADL_Display_DisplayMapConfig_Set(adapter=" << adapter << " maps=" << maps
       << " targets=" << targets << ")=" << result << "\n";
  return text.str();
}

/// Tearing the library down and bringing it up again, on a notebook whose first adapter is active.
inline std::string AdlReloadText(int size = 3144) {
  return "ADL_Main_Control_Destroy()=0\nADL_Main_Control_Create(0)=0\n"
         "ADL_Adapter_NumberOfAdapters_Get()=0\nADL_Adapter_AdapterInfo_Get(size=" +
         std::to_string(size) + ")=0\nADL_Adapter_Active_Get(adapter=0)=0\n";
}
constexpr char kAdlActiveLine[] = "INFO Active adapter index for AMD display: 0\n";

/// Puts a function of the test's own in the place of one of the library's.
inline void ReplaceAdlEntry(sim::Machine* machine, const std::string& name, void* function) {
  sim::InventedModule& module = machine->state().invented[sim::kAdlLibrary];
  if (module.entries.empty()) {
    module = {sim::kAdlLibrary, sim::AdlEntries(), 0, nullptr, sim::StopAdl};
  }
  for (sim::Entry& entry : module.entries) {
    if (name == entry.name) entry.function = function;
  }
}

struct AdlHost : CoreHost {
  explicit AdlHost(const std::string& text, const std::wstring& switches = L"")
      : CoreHost(text, switches) {}
  ~AdlHost() { End(); }
  AdlHost(const AdlHost&) = delete;
  AdlHost& operator=(const AdlHost&) = delete;

  const AmdBox& box() { return *ostrel().white_box().amd; }

  /// The object, made at the first call.
  IMMonitor& bare() {
    if (object_ == nullptr) object_.reset(box().NewADLImpl());
    return *object_;
  }
  /// The same, initialised.
  IMMonitor& adl() {
    bare();
    if (!initialised_) {
      initialised_ = true;
      EXPECT_TRUE(object_->Initial());
    }
    return *object_;
  }
  IDisplayExtensionAMD& extension() { return *box().ExtensionOf(&bare()); }
  void End() { object_.reset(); }

  /// Makes the object ready and its list of displays fresh; what happened so far is forgotten.
  void Ready() {
    Connected();
    Forget();
  }
  void Forget() {
    adl();
    machine.TakeJournal();
    ForgetLog();
  }

  /// What `body` asked the library, one line each, reads and changes.
  template <typename Body>
  std::string Calls(Body body) {
    bare();
    machine.TakeJournal();
    machine.JournalReads(true);
    body();
    machine.JournalReads(false);
    return OfTheLibrary(machine.TakeJournal());
  }

  /// SetNewDisplayMode on fresh lists: what changed, and the result.
  std::string Switch(uint32_t mode, uint32_t displays) {
    Ready();
    const BOOL result = adl().SetNewDisplayMode(mode, displays);
    return machine.TakeJournal() + std::to_string(result);
  }
  std::string ExtendOn(BOOL enable, uint32_t displays) {
    Ready();
    const BOOL result = adl().EnableExtendModeOnDisplays(enable, displays);
    return machine.TakeJournal() + std::to_string(result);
  }
  std::string Extend(BOOL enable) {
    Ready();
    const BOOL result = adl().EnableExtendMode(enable);
    return machine.TakeJournal() + std::to_string(result);
  }

  /// "0x11 (2)", or "failed".
  std::string Connected() {
    uint32_t displays = 0xAAAA;
    uint32_t count = 0xBBBB;
    const BOOL known = adl().GetConnectedDisplays(&displays, &count);
    return known ? Told(displays, count) : "failed";
  }
  std::string Active() {
    uint32_t displays = 0xAAAA;
    uint32_t count = 0xBBBB;
    const BOOL known = adl().GetActiveDisplays(&displays, &count);
    return known ? Told(displays, count) : "failed";
  }
  /// "2 0x11", or "failed".
  std::string Mode() {
    uint32_t mode = 0;
    uint32_t displays = 0;
    if (!adl().GetCurrentDisplayMode(&mode, &displays)) return "failed";
    std::ostringstream text;
    text << mode << " 0x" << std::hex << displays;
    return text.str();
  }

  sim::Model& model() { return machine.model(); }
  sim::AmdDriver& driver(size_t adapter = 0) { return model().adapters.at(adapter).amd; }
  sim::AmdOutput& output(size_t connector) { return model().connectors.at(connector).amd; }
  /// What the library handed out and did not get back, and its session.
  std::string Held() const {
    std::istringstream lines(machine.Outstanding());
    std::string held;
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind("ADL", 0) == 0) held += line.substr(0, line.find(" 0x")) + "\n";
    }
    return held;
  }

 private:
  static std::string Told(uint32_t displays, uint32_t count) {
    std::ostringstream text;
    text << "0x" << std::hex << displays << std::dec << " (" << count << ")";
    return text.str();
  }
  static std::string OfTheLibrary(const std::string& journal) {
    std::istringstream lines(journal);
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind("ADL_", 0) == 0) kept += line + "\n";
    }
    return kept;
  }

  std::unique_ptr<IMMonitor> object_;
  bool initialised_ = false;
};
