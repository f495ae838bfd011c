// A display-control object of the tests' own: answers what its script says and writes every call
// down. The script is shared, so that a test can read it after the library has deleted the object.
//
//   auto script = std::make_shared<FakeScript>();
//   script->connected = IMMonitor::MD_NB | IMMonitor::MD_CRT;
//   script->connected_count = 2;
//   ostrel.white_box().factory->InstallMonitor(new FakeMonitor(script), 0x8086);
//   ASSERT_TRUE(ostrel.InitExtendMode());
//   EXPECT_EQ(script->TakeCalls(), "Initial\n");
//
// On a machine with one adapter an installed object stays the active one as long as the script's
// `vendor` plays no part in the choice: install it under the vendor of the machine's adapter and
// let the script answer another one.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IMMonitorEx.h"
#include "Common/Win.h"

struct FakeScript {
  // --- What the operations answer.
  BOOL initial = 1;
  BOOL connected_result = 1;
  uint32_t connected = IMMonitor::MD_NB;
  uint32_t connected_count = 1;
  BOOL active_result = 1;
  uint32_t active = IMMonitor::MD_NB;  // GetCurrentDisplayMode's mask, too
  uint32_t active_count = 1;
  BOOL mode_result = 1;
  uint32_t mode = IMMonitor::DM_SINGLE;
  BOOL set_result = 1;
  BOOL extend_enabled = 0;
  BOOL extend_result = 1;  // EnableExtendMode and EnableExtendModeOnDisplays
  BOOL panel_only_result = 1;
  BOOL dual_output = 1;
  BOOL switching_capability = 1;
  BOOL should_reset = 1;
  uint32_t vendor = kVendorIntel;
  bool settings_result = false;
  DEVMODEA settings = {};

  /// A successful switch or extend call changes mode, active and extend_enabled above, as a driver
  /// would.
  bool follows = false;

  /// Asked first by every operation, with the call as text; throws, changes the script, or sends
  /// messages.
  std::function<void(const std::string& call)> on_call;
  std::function<void()> on_delete;

  // --- The side interfaces (FakeExtensionMonitor and its derivatives).
  bool initial_extension = true;
  bool triple_display = false;
  bool discrete_only = false;
  bool cross_adapter_capable = false;
  bool sls_grid = false;
  std::vector<uint8_t> edid;  // empty: GetEDID fails
  BOOL set_with_settings_result = 1;
  DEVMODEW last_settings = {};  // what SetDisplayModeWithSettings was last given

  // --- What happened: one line a call, in order, outputs left out: "SetNewDisplayMode(2, 0x3)".
  std::string calls;
  bool deleted = false;

  std::string TakeCalls() {
    std::string taken;
    taken.swap(calls);
    return taken;
  }

  void Note(const std::string& call) {
    calls += call + "\n";
    if (on_call) on_call(call);
  }

  void Note(const char* operation, uint32_t number, uint32_t mask) {
    char text[96];
    std::snprintf(text, sizeof(text), "%s(%lu, 0x%lx)", operation,
                  static_cast<unsigned long>(number), static_cast<unsigned long>(mask));
    Note(std::string(text));
  }
};

class FakeMonitor : public IMMonitor {
 public:
  explicit FakeMonitor(std::shared_ptr<FakeScript> script) : script_(std::move(script)) {}
  ~FakeMonitor() override {
    script_->deleted = true;
    if (script_->on_delete) script_->on_delete();
  }

  BOOL Initial() override {
    script_->Note("Initial");
    return script_->initial;
  }
  BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) override {
    script_->Note("GetConnectedDisplays");
    *displays = script_->connected;
    *display_count = script_->connected_count;
    return script_->connected_result;
  }
  BOOL GetActiveDisplays(uint32_t* displays, uint32_t* display_count) override {
    script_->Note("GetActiveDisplays");
    *displays = script_->active;
    *display_count = script_->active_count;
    return script_->active_result;
  }
  BOOL GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) override {
    script_->Note("GetCurrentDisplayMode");
    *mode = script_->mode;
    *displays = script_->active;
    return script_->mode_result;
  }
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override {
    script_->Note("SetNewDisplayMode", mode, displays);
    if (script_->follows && script_->set_result != 0) Become(mode, displays);
    return script_->set_result;
  }
  void DetectDisplays() override { script_->Note("DetectDisplays"); }
  void PreloadDisplayModes() override { script_->Note("PreloadDisplayModes"); }
  BOOL IsExtendModeEnabled() override {
    script_->Note("IsExtendModeEnabled");
    return script_->extend_enabled;
  }
  BOOL EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) override {
    script_->Note("EnableExtendModeOnDisplays", static_cast<uint32_t>(enable), displays);
    if (script_->follows && script_->extend_result != 0) Extend(enable, MD_NB | displays);
    return script_->extend_result;
  }
  BOOL EnableExtendMode(BOOL enable) override {
    script_->Note("EnableExtendMode(" + std::to_string(enable) + ")");
    if (script_->follows && script_->extend_result != 0) Extend(enable, script_->connected);
    return script_->extend_result;
  }
  BOOL ChangeToNBOnlySingleDisplayMode() override {
    script_->Note("ChangeToNBOnlySingleDisplayMode");
    if (script_->follows && script_->panel_only_result != 0) Become(DM_SINGLE, MD_NB);
    return script_->panel_only_result;
  }
  BOOL HasDualOutputCapability() override {
    script_->Note("HasDualOutputCapability");
    return script_->dual_output;
  }
  BOOL HasDisplaySwitchingCapability() override {
    script_->Note("HasDisplaySwitchingCapability");
    return script_->switching_capability;
  }
  BOOL ShouldResetDisplaySettingAfterSwtich() override {
    script_->Note("ShouldResetDisplaySettingAfterSwtich");
    return script_->should_reset;
  }
  uint32_t GetVgaVendor() override {
    script_->Note("GetVgaVendor");
    return script_->vendor;
  }
  bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) override {
    script_->Note("GetDisplaySettings", 0, imm_display);
    if (!script_->settings_result) return false;
    *dm = script_->settings;
    return true;
  }

 protected:
  std::shared_ptr<FakeScript> script_;

 private:
  void Become(uint32_t mode, uint32_t displays) {
    script_->mode = mode;
    script_->active = displays;
    script_->active_count = CountBits(displays);
    script_->extend_enabled = mode == DM_EXTEND ? 1 : 0;
  }
  void Extend(BOOL enable, uint32_t displays) {
    if (enable != 0) {
      Become(DM_EXTEND, displays);
    } else {
      Become(DM_SINGLE, MD_NB);
    }
  }
};

/// The same with one of the vendor side interfaces: IDisplayExtension, IDisplayExtensionNvidia or
/// IDisplayExtensionAMD. The count starts at 1, the reference of the object's owner.
template <typename Extension>
class FakeMonitorWith : public FakeMonitor, public Extension {
 public:
  using FakeMonitor::FakeMonitor;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override {
    return static_cast<HRESULT>(0x80004005);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  bool InitialExtension() override {
    script_->Note("InitialExtension");
    return script_->initial_extension;
  }
  uint32_t GetExtensionVendor() override { return script_->vendor; }
  bool GetEDID(uint32_t display, EdidBlob* edid) override {
    script_->Note("GetEDID", 0, display);
    if (script_->edid.empty()) return false;
    edid->cb = static_cast<uint32_t>(script_->edid.size());
    edid->pv = std::malloc(script_->edid.size());
    std::memcpy(edid->pv, script_->edid.data(), script_->edid.size());
    return true;
  }
  void FreeEDID(EdidBlob* edid) override {
    script_->Note("FreeEDID");
    std::free(edid->pv);
  }
  bool SupportsTripleDisplay() override {
    script_->Note("SupportsTripleDisplay");
    return script_->triple_display;
  }

 private:
  ULONG references_ = 1;
};

using FakeExtensionMonitor = FakeMonitorWith<IDisplayExtension>;

class FakeNvidiaMonitor : public FakeMonitorWith<IDisplayExtensionNvidia> {
 public:
  using FakeMonitorWith::FakeMonitorWith;
  bool IsDiscreteOnly() override {
    script_->Note("IsDiscreteOnly");
    return script_->discrete_only;
  }
  bool IsCrossAdapterCapable() override {
    script_->Note("IsCrossAdapterCapable");
    return script_->cross_adapter_capable;
  }
};

class FakeAmdMonitor : public FakeMonitorWith<IDisplayExtensionAMD> {
 public:
  using FakeMonitorWith::FakeMonitorWith;
  bool HasSLSGrid() override {
    script_->Note("HasSLSGrid");
    return script_->sls_grid;
  }
};

/// With mode and resolution in one call, as the Intel back-end has it.
class FakeMonitorWithSettings : public FakeExtensionMonitor, public IMMonitorEx {
 public:
  using FakeExtensionMonitor::FakeExtensionMonitor;
  BOOL SetDisplayModeWithSettings(uint32_t mode, uint32_t displays, DEVMODEW* dm) override {
    script_->Note("SetDisplayModeWithSettings", mode, displays);
    script_->last_settings = *dm;
    return script_->set_with_settings_result;
  }
};
