// An NVIDIA back-end on a simulated notebook, and what it did told in short lines.
#pragma once

#include "sim/faces/NvidiaDriver.h"
#include "tests/behaviour/CoreHost.h"

#include <algorithm>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

inline std::string Hex(uint32_t value) {
  std::ostringstream text;
  text << "0x" << std::hex << value;
  return text.str();
}

/// One path of a view as the journal has it; `more` is " primary gdi", " at 1366,0".
inline std::string ViewPath(uint32_t mask, const std::string& size, const std::string& more = "") {
  return "[mask=" + Hex(mask) + " " + size + " source=0" + more + "]";
}
inline std::string SetView(uint32_t view, const std::string& paths, int32_t result = 0,
                           const std::string& handle = "1") {
  return "NvAPI_SetViewEx(handle=" + handle + " view=" + std::to_string(view) + " paths=" + paths +
         ")=" + std::to_string(result) + "\n";
}

struct NvidiaHost : CoreHost {
  explicit NvidiaHost(const std::string& text, const std::wstring& switches = L"")
      : CoreHost(text, switches) {}
  ~NvidiaHost() { End(); }
  NvidiaHost(const NvidiaHost&) = delete;
  NvidiaHost& operator=(const NvidiaHost&) = delete;

  /// The object, an NvidiaMMImplV2 unless another one was adopted, initialised at the first call.
  NvidiaMMImplV2& nv() {
    if (bare() != nullptr && !initialised_) {
      initialised_ = true;
      EXPECT_TRUE(object_->Initial());
    }
    return *object_;
  }
  /// The same without Initial.
  NvidiaMMImplV2* bare() {
    if (object_ == nullptr) object_.reset(box().NewV2());
    return object_.get();
  }
  void Adopt(NvidiaMMImplV2* object) {
    End();
    object_.reset(object);
  }
  /// A later nv() makes and initialises another one.
  void End() {
    object_.reset();
    initialised_ = false;
  }

  const NvidiaBox& box() { return *ostrel().white_box().nvidia; }
  sim::Model& model() { return machine.model(); }
  sim::Connector& connector(const std::string& id) {
    auto& all = model().connectors;
    const auto found =
        std::find_if(all.begin(), all.end(), [&id](const sim::Connector& c) { return c.id == id; });
    if (found == all.end()) throw std::runtime_error("this machine has no connector " + id);
    return *found;
  }
  uint32_t output(const std::string& id) { return sim::NvOutputOf(model(), id); }

  /// Initial has run; journal and log so far are forgotten.
  void Forget() {
    nv();
    machine.TakeJournal();
    ForgetLog();
  }

  /// "0x11 (2)", or "failed"; both numbers are 0xee before the call.
  std::string Connected() {
    uint32_t displays = 0xEE;
    uint32_t count = 0xEE;
    const BOOL known = nv().GetConnectedDisplays(&displays, &count);
    return Report(known, displays, count);
  }
  std::string Active() {
    uint32_t displays = 0xEE;
    uint32_t count = 0xEE;
    const BOOL known = nv().GetActiveDisplays(&displays, &count);
    return Report(known, displays, count);
  }
  /// "2 0x11", or "failed 0xee 0xee"; both numbers are 0xee before the call.
  std::string Mode() {
    uint32_t mode = 0xEE;
    uint32_t displays = 0xEE;
    const BOOL known = nv().GetCurrentDisplayMode(&mode, &displays);
    return (known != 0 ? "" : "failed ") + Hex(mode) + " " + Hex(displays);
  }
  /// "1366x768x32@60 turned 0", or "failed".
  std::string Settings(uint32_t display) {
    DEVMODEA dm = {};
    if (!nv().GetDisplaySettings(display, &dm)) return "failed";
    return std::to_string(dm.dmPelsWidth) + "x" + std::to_string(dm.dmPelsHeight) + "x" +
           std::to_string(dm.dmBitsPerPel) + "@" + std::to_string(dm.dmDisplayFrequency) +
           " turned " + std::to_string(dm.dmDisplayOrientation);
  }
  /// SetNewDisplayMode of an object that saw its displays: the journal and the result.
  std::string Switch(uint32_t mode, uint32_t displays) {
    Connected();
    Forget();
    const BOOL result = nv().SetNewDisplayMode(mode, displays);
    return machine.TakeJournal() + std::to_string(result);
  }
  std::string ExtendOn(uint32_t display) {
    Forget();
    const BOOL result = nv().EnableExtendModeOnDisplays(TRUE, display);
    return machine.TakeJournal() + std::to_string(result);
  }
  std::string Extend(BOOL enable) {
    Forget();
    const BOOL result = nv().EnableExtendMode(enable);
    return machine.TakeJournal() + std::to_string(result);
  }

 private:
  static std::string Report(BOOL known, uint32_t displays, uint32_t count) {
    return known != 0 ? Hex(displays) + " (" + std::to_string(count) + ")" : "failed";
  }

  std::unique_ptr<NvidiaMMImplV2> object_;
  bool initialised_ = false;
};
