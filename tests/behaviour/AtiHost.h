// An AtiMMImpl on a simulated notebook, and what it did told in short lines.
#pragma once

#include "sim/faces/AmdDriver.h"
#include "tests/behaviour/CoreHost.h"

#include <sstream>

constexpr char kPanelCrt[] = "win7 amd: internal 1366x768 active, crt 1280x1024";
constexpr char kPanelCrtExtended[] = "win7 amd: internal 1366x768 active, crt 1280x1024 active";
/// Four display devices, of which the first two are AMD's.
constexpr char kManyDevices[] = "win7 amd, intel: internal 1366x768 active, crt 1280x1024";
constexpr char kManyDevicesExtended[] =
    "win7 amd, intel: internal 1366x768 active, crt 1280x1024 active";

inline std::string AtiHex(uint32_t value) {
  std::ostringstream text;
  text << "0x" << std::hex << value;
  return text.str();
}

/// A configuration that was sent, as the journal has it: every word of the record.
inline std::string AtiConfig(uint32_t arrangement, uint32_t first, uint32_t second = 0,
                             uint32_t result = 0, uint32_t adapter = 0) {
  std::ostringstream text;
  text << "ATIDL_SetConfigurationEx(adapter=" << adapter << " size=64 arrangement=" << arrangement
       << " count=" << (arrangement == 3 ? 1 : 2) << std::hex << " vectors=" << first << ','
       << second << ",0,0,0,0,0 rest=0,0,0,0,0,0)=" << result << "\n";
  return text.str();
}

/// A change of the adapter's configuration, as the journal has it: every word of the record.
inline std::string AtiAdapterConfigs(const std::string& second_mode, const std::string& last,
                                     uint32_t result = 0, const std::string& type = "2") {
  return "ATIDL_SetAdapterConfig(size=156 set=1"
         " [size=72 adapter=0 slots=1 1,0,0,51070000,0,0,0,51070001 1366x768x32@60 at 0,0"
         " own=e2700000]"
         " [size=72 adapter=1 slots=1 " +
         type + ",0,0,51070000,0,0,0,51070001 " + second_mode +
         " at 1366,0 own=e2700001] last=" + last + ")=" + std::to_string(result) + "\n";
}

inline std::string AtiExtend(uint32_t device, uint32_t enable, uint32_t result = 0) {
  return "EnableExtendedDesktop(adapter=" + std::to_string(device) +
         " enable=" + std::to_string(enable) + ")=" + std::to_string(result) + "\n";
}

/// What the base class does through Windows, in one word.
constexpr char kByWindows[] = "Windows\n";

/// A journal as the rungs of the ladder: calls of the library whole, runs of Windows' calls by one
/// word.
inline std::string Rungs(const std::string& journal) {
  std::istringstream lines(journal);
  std::string rungs;
  bool in_windows = false;
  for (std::string line; std::getline(lines, line);) {
    const bool windows =
        line.rfind("ChangeDisplaySettings", 0) == 0 || line.rfind("SetCursorPos", 0) == 0;
    if (!windows) rungs += line + "\n";
    if (windows && !in_windows) rungs += kByWindows;
    in_windows = windows;
  }
  return rungs;
}

struct AtiHost : CoreHost {
  explicit AtiHost(const std::string& text, const std::wstring& switches = L"")
      : CoreHost(text, switches) {}
  ~AtiHost() { End(); }
  AtiHost(const AtiHost&) = delete;
  AtiHost& operator=(const AtiHost&) = delete;

  /// The object, made at the first call and initialised.
  IMMonitor& ati() {
    if (bare() != nullptr && !initialised_) {
      initialised_ = true;
      EXPECT_TRUE(object_->Initial());
    }
    return *object_;
  }
  /// The same without Initial.
  IMMonitor* bare() {
    if (object_ == nullptr) object_.reset(box().NewAtiMMImpl());
    return object_.get();
  }
  /// Initialised, and its map filled.
  IMMonitor& mapped() {
    if (!mapped_) {
      mapped_ = true;
      EXPECT_NE(Connected(), "failed");
    }
    return ati();
  }
  IDisplayExtension& extension() { return *box().ExtensionOf(&ati()); }
  void End() { object_.reset(); }

  const AtiBox& box() { return *ostrel().white_box().ati; }

  void Remove(const std::string& entry) { sim::RemoveAmdEntry(machine, entry); }

  /// "0x11 (2)", or "failed"; the mask is `before` before the call.
  std::string Connected(uint32_t before = 0xAAAA) {
    uint32_t displays = before;
    uint32_t count = 0xBBBB;
    const BOOL known = ati().GetConnectedDisplays(&displays, &count);
    return known ? AtiHex(displays) + " (" + std::to_string(count) + ")" : "failed";
  }
  std::string Active(uint32_t before = 0) {
    uint32_t displays = before;
    uint32_t count = 0xBBBB;
    const BOOL known = ati().GetActiveDisplays(&displays, &count);
    return known ? AtiHex(displays) + " (" + std::to_string(count) + ")" : "failed";
  }
  /// "2 0x11", with "failed " in front; both numbers are 0xee before the call.
  std::string Mode() {
    uint32_t mode = 0xEE;
    uint32_t displays = 0xEE;
    const BOOL known = ati().GetCurrentDisplayMode(&mode, &displays);
    return (known ? "" : "failed ") + std::to_string(mode) + " " + AtiHex(displays);
  }
  void Forget() {
    machine.TakeJournal();
    ForgetLog();
  }
  /// SetNewDisplayMode with its map filled: what it sent, and its result.
  std::string Switch(uint32_t mode, uint32_t displays) {
    mapped();
    Forget();
    const BOOL result = ati().SetNewDisplayMode(mode, displays);
    return machine.TakeJournal() + std::to_string(result);
  }
  /// The same of EnableExtendMode: its rungs, and its result.
  std::string Extend(BOOL enable) {
    ati();
    Forget();
    const BOOL result = ati().EnableExtendMode(enable);
    return Rungs(machine.TakeJournal()) + std::to_string(result);
  }
  /// The same of EnableExtendModeOnDisplays.
  std::string ExtendOn(BOOL enable, uint32_t displays) {
    ati();
    Forget();
    const BOOL result = ati().EnableExtendModeOnDisplays(enable, displays);
    return Rungs(machine.TakeJournal()) + std::to_string(result);
  }

  sim::Model& model() { return machine.model(); }

 private:
  std::unique_ptr<IMMonitor> object_;
  bool initialised_ = false;
  bool mapped_ = false;
};
