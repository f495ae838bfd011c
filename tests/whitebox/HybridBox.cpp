#include "tests/whitebox/HybridBox.h"

#include <exception>
#include <memory>
#include <utility>

#include "Common/MultiMonitor/Hybrid/DisplayPlacing.h"
#include "Common/MultiMonitor/Hybrid/HybridController.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV3CrossAdapter.h"
#include "Common/MultiMonitor/VendorBackends.h"

/// Reaches the private side for the box.
struct HybridAccess {
  static HybridController& Of(IMMonitor* hybrid) {
    return dynamic_cast<HybridController&>(*hybrid);
  }

  static IMMonitor* NewOver(IMMonitor* intel, IMMonitor* nvidia, IMMonitor* ccd) {
    auto* const hybrid = new HybridController(intel, nvidia);
    hybrid->m_ccd.reset(ccd);
    return hybrid;
  }
  static BOOL Extend(IMMonitor* hybrid, uint32_t connected, uint32_t wanted) {
    return Of(hybrid).ApplyExtendAcrossAdapters(connected, wanted);
  }
  static BOOL ExtendWithSize(IMMonitor* hybrid, uint32_t connected, uint32_t wanted) {
    return Of(hybrid).ApplyExtendAcrossAdaptersWithSize(connected, wanted);
  }
  static BOOL Clone(IMMonitor* hybrid, uint32_t connected, uint32_t wanted) {
    return Of(hybrid).ApplyCloneAcrossAdapters(connected, wanted);
  }
};

namespace {

using CloneFunction = std::function<BOOL(uint32_t displays)>;

/// What the controller sees of NVIDIA, answered by the test.
class ScriptedCrossAdapter : public NvidiaMMImplV3CrossAdapter {
 public:
  ScriptedCrossAdapter(IMMonitor* monitor, CloneFunction clone)
      : NvidiaMMImplV3CrossAdapter(std::make_unique<Win7CCDApi>()),
        monitor_(monitor),
        clone_(std::move(clone)) {}

  BOOL Initial() override { return monitor_->Initial(); }
  BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) override {
    return monitor_->GetConnectedDisplays(displays, display_count);
  }
  BOOL GetActiveDisplays(uint32_t* displays, uint32_t* display_count) override {
    return monitor_->GetActiveDisplays(displays, display_count);
  }
  BOOL GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) override {
    return monitor_->GetCurrentDisplayMode(mode, displays);
  }
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override {
    return monitor_->SetNewDisplayMode(mode, displays);
  }
  void DetectDisplays() override { monitor_->DetectDisplays(); }
  BOOL EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) override {
    return monitor_->EnableExtendModeOnDisplays(enable, displays);
  }
  BOOL EnableExtendMode(BOOL enable) override { return monitor_->EnableExtendMode(enable); }
  BOOL ShouldResetDisplaySettingAfterSwtich() override {
    return monitor_->ShouldResetDisplaySettingAfterSwtich();
  }
  uint32_t GetVgaVendor() override { return monitor_->GetVgaVendor(); }
  bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) override {
    return monitor_->GetDisplaySettings(imm_display, dm);
  }
  bool GetEDID(uint32_t display, EdidBlob* edid) override {
    return Extension().GetEDID(display, edid);
  }
  void FreeEDID(EdidBlob* edid) override { Extension().FreeEDID(edid); }
  BOOL ApplyCrossAdapterClone(uint32_t displays) override { return clone_(displays); }

 private:
  IDisplayExtension& Extension() { return dynamic_cast<IDisplayExtension&>(*monitor_); }

  const std::unique_ptr<IMMonitor> monitor_;
  const CloneFunction clone_;
};

IMMonitor* NewCrossAdapterOver(IMMonitor* monitor, CloneFunction clone) {
  return new ScriptedCrossAdapter(monitor, std::move(clone));
}

std::string NewOrThrown(IMMonitor* intel, IMMonitor* nvidia, IMMonitor** made) {
  try {
    *made = NewHybridController(intel, nvidia);
    return "";
  } catch (const std::exception& error) {
    return error.what();
  }
}

IDisplayExtension* ExtensionOf(IMMonitor* hybrid) {
  return dynamic_cast<IDisplayExtension*>(hybrid);
}

constexpr HybridBox kBox = {
    NewHybridController, NewOrThrown,          HybridAccess::NewOver,        NewCrossAdapterOver,
    ExtensionOf,         HybridAccess::Extend, HybridAccess::ExtendWithSize, HybridAccess::Clone,
    PlaceDisplay,        PlaceDisplayWithSize,
};

}  // namespace

const HybridBox* GetHybridBox() { return &kBox; }
