// An IntelMMImpl on a simulated notebook, and what it did told in short lines.
#pragma once

#include "sim/faces/IntelDriver.h"
#include "tests/behaviour/CoreHost.h"

#include <cstring>
#include <sstream>

constexpr char kFirstDevice[] = "\\\\.\\DISPLAY1";
constexpr char kSecondDevice[] = "\\\\.\\DISPLAY2";

// The driver's numbers for its devices.
constexpr uint32_t kCrtUid = 0x1;
constexpr uint32_t kTvUid = 0x10;
constexpr uint32_t kDviUid = 0x100;
constexpr uint32_t kPanelUid = 0x1000;
constexpr uint32_t kHdmiUid = 0x10000;
constexpr uint32_t kDpUid = 0x100000;

inline std::string Hex(uint32_t value) {
  std::ostringstream text;
  text << "0x" << std::hex << value;
  return text.str();
}

/// One active-devices record as the journal has it.
inline std::string Record(const std::string& device, uint32_t mode, uint32_t primary,
                          uint32_t count, uint32_t first, uint32_t second) {
  return device + " mode=" + std::to_string(mode) + " primary=" + Hex(primary) +
         " count=" + std::to_string(count) + " first=" + Hex(first) + " second=" + Hex(second);
}
inline std::string SingleRecord(uint32_t uid, const std::string& device = kFirstDevice) {
  return Record(device, 1, 0, 1, uid, 0);
}
inline std::string CloneRecord(uint32_t first, uint32_t second) {
  return Record(kFirstDevice, 3, first, 2, first, second);
}
inline std::string ChangeActiveDevices(const std::string& records, int64_t result = 0,
                                       uint32_t err = 0) {
  return "ICUIExternal8::ChangeActiveDevices(" + records + " err=" + std::to_string(err) +
         ")=" + std::to_string(result) + "\n";
}
inline std::string SetAspectScaling(uint32_t setting) {
  return "ICUIExternal8::SetAspectScaling(uid=0x1000 setting=" + std::to_string(setting) +
         " err=0)=0\n";
}

/// The desktop taken to 1024x768: tested, then set.
inline std::string DowngradeTo(const std::string& what, const std::string& device = kFirstDevice) {
  const std::string line =
      "ChangeDisplaySettingsExA(" + device + " 1024x768" + what + " at 0,0 fields=0x5c0000 flags=";
  return line + "0x2)=0\n" + line + "0x40000009)=0\n";
}
inline std::string Downgrade() { return DowngradeTo("x32@60"); }

constexpr char kPreload[] = "PreloadDisplayModes\n";
constexpr char kEnumDevices[] = "EnumDevices\n";
constexpr char kSleepSecond[] = "Sleep(1000)=0\n";
constexpr char kGetAspectScaling[] = "ICUIExternal8::GetAspectScaling(uid=0x1000 mode=1 err=0)=0\n";

/// A journal with reads as the course of a switch: changes and waits whole, the walks over devices
/// and over mode lists by one word each, other reads left out.
inline std::string ProtocolOf(const std::string& journal) {
  const struct {
    const char* function;
    const char* word;  // "": the whole line
  } told[] = {
      {"ICUIExternal8::EnumDevices", kEnumDevices},
      {"ICUIExternal8::", ""},
      {"EnumDisplaySettingsA", kPreload},
      {"ChangeDisplaySettings", ""},
      {"Sleep", ""},
      {"keybd_event", ""},
      {"SetForegroundWindow", ""},
  };
  std::istringstream lines(journal);
  std::string protocol;
  std::string last;
  for (std::string line; std::getline(lines, line);) {
    for (const auto& row : told) {
      if (line.rfind(row.function, 0) != 0) continue;
      const std::string word = *row.word != '\0' ? row.word : line + "\n";
      if (*row.word == '\0' || word != last) protocol += word;
      last = word;
      break;
    }
  }
  return protocol;
}

struct IntelHost : CoreHost {
  explicit IntelHost(const std::string& text, const std::wstring& switches = L"")
      : CoreHost(text, switches) {}
  ~IntelHost() { End(); }
  IntelHost(const IntelHost&) = delete;
  IntelHost& operator=(const IntelHost&) = delete;

  /// The object, made at the first call and initialised.
  IMMonitor& intel() {
    if (bare() != nullptr && !initialised_) {
      initialised_ = true;
      EXPECT_TRUE(object_->Initial());
    }
    return *object_;
  }
  /// The same without Initial.
  IMMonitor* bare() {
    if (object_ == nullptr) object_.reset(box().NewIntelMMImpl());
    return object_.get();
  }
  IDisplayExtension& extension() { return *box().ExtensionOf(&intel()); }
  void End() { object_.reset(); }

  const IntelBox& box() { return *ostrel().white_box().intel; }

  /// SetNewDisplayMode from an object that is ready, journal and log so far forgotten.
  std::string Switch(uint32_t mode, uint32_t displays) {
    Forget();
    return box().SetNewDisplayMode(&intel(), mode, displays);
  }
  /// As Switch: its result, and what happened.
  std::string SwitchProtocol(uint32_t mode, uint32_t displays) {
    machine.JournalReads(true);
    const std::string result = Switch(mode, displays);
    machine.JournalReads(false);
    return ProtocolOf(machine.TakeJournal()) + result;
  }
  void Forget() {
    intel();
    machine.TakeJournal();
    ForgetLog();
  }

  /// "0x11 (2)", or "failed".
  std::string Connected() {
    uint32_t displays = 0xAAAA;
    uint32_t count = 0xBBBB;
    const BOOL known = intel().GetConnectedDisplays(&displays, &count);
    return known ? Hex(displays) + " (" + std::to_string(count) + ")" : "failed";
  }
  std::string Active() {
    uint32_t displays = 0xAAAA;
    uint32_t count = 0xBBBB;
    const BOOL known = intel().GetActiveDisplays(&displays, &count);
    return known ? Hex(displays) + " (" + std::to_string(count) + ")" : "failed";
  }
  /// "2 0x11", or "failed"; both numbers are 0xee before the call.
  std::string Mode() {
    uint32_t mode = 0xEE;
    uint32_t displays = 0xEE;
    const BOOL known = intel().GetCurrentDisplayMode(&mode, &displays);
    return known ? std::to_string(mode) + " " + Hex(displays) : "failed";
  }

  sim::Model& model() { return machine.model(); }

 private:
  std::unique_ptr<IMMonitor> object_;
  bool initialised_ = false;
};
