// A notebook whose panel and analogue output hang on the Intel adapter, and HDMI and DisplayPort on
// the NVIDIA one. Neither vendor's library sees the whole; this controller asks both and Windows.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/MultiMonitor.h"

class Win7CCD;

/// Host thread only, but for AddRef and Release.
class HybridController : public MultiMonitor, public IDisplayExtension {
 public:
  /// Takes both objects, also when it throws.
  /// @param intel   the object of the Intel adapter
  /// @param nvidia  the cross-adapter object of the NVIDIA adapter
  HybridController(IMMonitor* intel, IMMonitor* nvidia);
  ~HybridController() override;

  // --- IMMonitor.
  BOOL Initial() override;
  BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) override;
  BOOL GetActiveDisplays(uint32_t* displays, uint32_t* display_count) override;
  BOOL GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) override;
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override;
  void DetectDisplays() override;
  BOOL EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) override;
  BOOL EnableExtendMode(BOOL enable) override;
  BOOL ChangeToNBOnlySingleDisplayMode() override;
  BOOL HasDualOutputCapability() override { return TRUE; }
  BOOL HasDisplaySwitchingCapability() override { return TRUE; }
  BOOL ShouldResetDisplaySettingAfterSwtich() override;
  uint32_t GetVgaVendor() override { return kVendorHybrid; }
  bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) override;

  // --- IDisplayExtension.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  bool InitialExtension() override;
  uint32_t GetExtensionVendor() override { return kVendorHybrid; }
  bool GetEDID(uint32_t display, EdidBlob* edid) override;
  void FreeEDID(EdidBlob* edid) override;
  bool SupportsTripleDisplay() override { return false; }

 private:
  // Declared in the order in which they are made; ended in the opposite one.
  std::unique_ptr<IMMonitor> m_intel;
  std::unique_ptr<IMMonitor> m_nvidia;
  std::unique_ptr<Win7CCD> m_ccd;
  bool m_ready = false;
  LONG m_references = 1;  // the owner's
};
