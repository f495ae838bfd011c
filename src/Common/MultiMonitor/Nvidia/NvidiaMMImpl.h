// NVIDIA graphics with an old driver: NVAPI reads, and the control panel's own command switches.
#pragma once

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/MultiMonitor.h"
#include "Common/MultiMonitor/Nvidia/NVApiWrapper.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV2.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMonikers.h"
#include "Common/MultiMonitor/Nvidia/VNvidiaLib.h"

#include <cstdint>
#include <memory>
#include <string>

/// Host thread only, but for AddRef and Release. An object whose Initial failed is only good to be
/// ended.
class NvidiaMMImpl : public MultiMonitor, public IDisplayExtension {
 public:
  NvidiaMMImpl();
  ~NvidiaMMImpl() override;

  // --- IMMonitor.
  /// @return 0 also for a second try after a failed one that had loaded the library
  BOOL Initial() override;
  BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) override;
  BOOL GetActiveDisplays(uint32_t* displays, uint32_t* display_count) override;
  BOOL GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) override;
  /// Starts a program that switches, and does not wait for it. @return 0 when there is no command
  /// for it; 1 says nothing about the switch
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override;
  void DetectDisplays() override;
  BOOL EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) override;
  BOOL EnableExtendMode(BOOL enable) override;
  uint32_t GetVgaVendor() override { return kVendorNvidia; }
  bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) override;

  // --- IDisplayExtension.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  bool InitialExtension() override;
  uint32_t GetExtensionVendor() override { return kVendorNvidia; }
  bool GetEDID(uint32_t display, EdidBlob* edid) override;
  void FreeEDID(EdidBlob* edid) override;
  bool SupportsTripleDisplay() override { return false; }

 private:
  /// NVAPI's question for one GPU's outputs.
  using OutputQuery = NvApiFunction<NvPhysicalGpuHandle, uint32_t*>;

  // --- Reading (NvidiaMMImpl.cpp).
  /// The displays on the outputs of all GPUs, as far as these answer.
  BOOL ReadOutputs(const OutputQuery& query, uint32_t* displays, uint32_t* display_count);

  // --- Views (NvidiaMMImpl_views.cpp).
  /// Asks the library for the display behind each moniker detected last.
  MonikerMap BuildMonikerMap(uint32_t connected);
  bool ReadDisplayOfMoniker(const std::string& moniker, uint32_t* display);
  /// @param displays           the displays that may be used
  /// @param secondary_display  0 for none
  bool SetView(uint32_t displays, uint32_t primary_display, uint32_t secondary_display,
               int32_t state, const MonikerMap& moniker_map);
  /// The first of the order that a view shows alone, out of `displays`.
  bool ShowFirstAlone(uint32_t displays, const MonikerMap& moniker_map);
  /// The panel and the first of the order that a view shows beside it, out of `displays`.
  bool ShowFirstBesidePanel(uint32_t displays, int32_t state, const MonikerMap& moniker_map);
  /// @param displays  null for all that are connected
  BOOL SwitchExtendMode(BOOL enable, const uint32_t* displays);

  // Ended in the opposite order.
  std::unique_ptr<VNvidiaLib> m_library;
  std::unique_ptr<NVApiWrapper> m_nvapi;  // marks that NVAPI is in use
  std::unique_ptr<NvidiaMMImplV2> m_inner;
  std::string raw_moniker;  // as detected last
  bool m_extensionReady = false;
  LONG m_references = 1;  // the owner's
};
