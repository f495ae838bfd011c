// A notebook whose panel and analogue output hang on the Intel adapter, and HDMI and DisplayPort on
// the NVIDIA one. Neither vendor's library sees the whole; this controller asks both and Windows.
#pragma once

#include <cstdint>
#include <memory>

#include "Common/MultiMonitor/Hybrid/DisplayPlacing.h"
#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/MultiMonitor.h"
#include "Common/MultiMonitor/NullMonitorController.h"

/// Questions go to both adapters and the answers are merged; ordinary modes are set through
/// Windows' display configuration; a clone on HDMI or DisplayPort is NVIDIA's; the arrangements
/// over both adapters are made here, device by device. An object that is missing answers as one
/// that refuses.
///
/// Host thread only, but for AddRef and Release.
class HybridController : public MultiMonitor, public IDisplayExtension {
 public:
  /// Takes both objects, also when it throws.
  /// @param intel   the object of the Intel adapter
  /// @param nvidia  the cross-adapter object of the NVIDIA adapter
  HybridController(IMMonitor* intel, IMMonitor* nvidia);
  ~HybridController() override;

  // --- IMMonitor.
  /// @return 0 when either vendor's object fails
  BOOL Initial() override;
  /// Always 1: what cannot be asked is not connected. The count is that of the bits.
  BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) override;
  /// Both vendors' answers added up, counts included; 0 when either fails.
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
  void FreeEDID(EdidBlob* blob) override;
  bool SupportsTripleDisplay() override { return false; }

 private:
  friend struct HybridAccess;

  IMMonitor& Intel() { return m_intel != nullptr ? *m_intel : m_none; }
  IMMonitor& Nvidia() { return m_nvidia != nullptr ? *m_nvidia : m_none; }
  IMMonitor& Ccd() { return m_ccd != nullptr ? *m_ccd : m_none; }
  /// The object that a display belongs to; null for a mask that is not one known display.
  IMMonitor* OwnerOf(uint32_t display);

  /// The NVIDIA object's operation; 0, and nothing done, on an object that does not have it.
  BOOL ApplyCrossAdapterClone(uint32_t displays);
  BOOL SetOrdinaryMode(uint32_t mode, uint32_t displays);
  void LeaveClone(uint32_t mode, uint32_t displays);

  // The advanced arrangements. @return 0 when Windows lists no device or refuses the commit
  BOOL ApplyExtendAcrossAdapters(uint32_t connected, uint32_t wanted);
  BOOL ApplyExtendAcrossAdaptersWithSize(uint32_t connected, uint32_t wanted);
  BOOL ApplyCloneAcrossAdapters(uint32_t connected, uint32_t wanted);
  BOOL PlaceSideBySide(uint32_t connected, uint32_t wanted, PlaceFunction place);
  BOOL PlaceBesideClone(uint32_t connected, uint32_t wanted);
  bool CloneOnIntel();
  /// Places a display at the right edge of the device that `dm` speaks of, which it then replaces
  /// there.
  void PlaceNext(uint32_t display, const char* device, PlaceFunction place, DEVMODEA* dm);

  // Declared in the order in which they are made; ended in the opposite one. Each may be null.
  std::unique_ptr<IMMonitor> m_intel;
  std::unique_ptr<IMMonitor> m_nvidia;
  std::unique_ptr<IMMonitor> m_ccd;
  NullMonitorController m_none;
  bool m_ready = false;
  LONG m_references = 1;  // the owner's
};
