// NVIDIA graphics, driven through NVAPI's views.
#pragma once

#include <cstdint>
#include <map>

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/MultiMonitor.h"
#include "Common/MultiMonitor/Nvidia/NVApiWrapper.h"
#include "Common/MultiMonitor/Nvidia/NvidiaConnectors.h"

/// Size, depth and rate to set a mode in: pixels, bits per pixel, Hz.
struct NvidiaModeSettings {
  uint16_t width;
  uint16_t height;
  uint16_t depth;
  uint16_t refresh_rate;
};

/// Host thread only, but for AddRef and Release. Until Initial succeeded every operation gives its
/// failure. The order of the virtual operations is fixed.
class NvidiaMMImplV2 : public MultiMonitor, public IDisplayExtensionNvidia {
 public:
  NvidiaMMImplV2() = default;
  ~NvidiaMMImplV2() override;

  // --- IMMonitor.
  BOOL Initial() override;
  BOOL GetConnectedDisplays(uint32_t* imm_displays, uint32_t* display_count) override;
  BOOL GetActiveDisplays(uint32_t* imm_displays, uint32_t* display_count) override;
  BOOL GetCurrentDisplayMode(uint32_t* imm_mode, uint32_t* imm_displays) override;
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override;
  void DetectDisplays() override;
  BOOL EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) override;
  BOOL EnableExtendMode(BOOL enable) override;
  uint32_t GetVgaVendor() override { return kVendorNvidia; }
  bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) override;

  // --- MultiMonitor.
  bool GetMonitorEDID(uint32_t display, EdidBlob* edid) override;
  void FreeMonitorEDID(EdidBlob* edid) override;

  // --- A display mode, as each generation of the driver takes it.
  /// Sets one display or a clone.
  /// @param settings  null for a size that every display takes
  virtual BOOL ApplyDisplayMode(uint32_t mode, uint32_t displays,
                                const NvidiaModeSettings* settings);
  /// Extended desktop on the notebook's panel and the named display.
  virtual BOOL ApplyExtendModeOnDisplay(uint32_t external_display);
  /// Extended desktop on a display that the driver's output list decides.
  virtual BOOL ApplyExtendMode();
  /// @return a new wrapper, which DestroyNvProxy ends
  virtual NVApiWrapper* CreateNvProxy();
  virtual void DestroyNvProxy(NVApiWrapper* proxy);

  // --- IDisplayExtension.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  bool InitialExtension() override;
  uint32_t GetExtensionVendor() override { return kVendorNvidia; }
  bool GetEDID(uint32_t display, EdidBlob* edid) override;
  void FreeEDID(EdidBlob* edid) override;
  bool SupportsTripleDisplay() override { return false; }

  // --- IDisplayExtensionNvidia.
  bool IsDiscreteOnly() override;
  bool IsCrossAdapterCapable() override;

  /// Whether this GPU can drive an external display beside the panel on its own.
  bool CouldManageMultipleDisplay();

  /// Lists the driver's GPUs anew; a list that cannot be read leaves the one that stands.
  /// @return true for a list of at least one GPU
  bool RefreshGpus();

 protected:
  /// The output mask behind the first connector of the display's type; 0 when there is none.
  /// @param display  exactly one bit
  uint32_t NvOutputOfDisplay(uint32_t display) const;
  /// The same for a connector type.
  uint32_t NvOutputOfConnectorType(uint32_t connector_type) const;
  /// The connector type that a display is looked up by; kUnknownConnector when there is none.
  /// @param imm_display  exactly one bit
  uint32_t DisplayToConnector(uint32_t imm_display) const;
  /// Remembers each output under its display flag. A zero mask leaves the outputs as they are.
  void NvMaskToDisplays(uint32_t nv_mask, uint32_t* imm_displays, uint32_t* display_count);
  /// Learns the connector types of the current GPU, listing the GPUs first where none is known.
  void RecognizeConnectors();
  /// The GPU that reported connected outputs last; null when there is none.
  NvPhysicalGpuHandle CurrentGpu() const { return m_gpus[m_currentGpu]; }

  NVApiWrapper* m_nvProxy = nullptr;  // owned; there while NVAPI is up

 private:
  /// A GPU of the list; null behind its end.
  NvPhysicalGpuHandle GpuAt(uint32_t index) const {
    return index < m_gpuCount ? m_gpus[index] : nullptr;
  }
  void DropNvProxy();
  /// The first output of a connected GPU that an extended desktop goes to.
  uint32_t DefaultExtendOutput() const;
  /// The output mask that a display was met with; 0 when it was not.
  /// @param display  exactly one bit
  uint32_t CachedMaskOfDisplay(uint32_t display) const;
  uint32_t CachedMaskOfDisplays(uint32_t displays) const;
  /// @param refresh_outputs  read the connected displays before the display's output is looked up
  bool ReadEdid(uint32_t display, bool refresh_outputs, EdidBlob* edid);

  uint32_t m_gpuCount = 0;
  NvPhysicalGpuHandle m_gpus[NVAPI_MAX_PHYSICAL_GPUS] = {};  // null ends the list
  uint32_t m_currentGpu = 0;
  std::map<uint32_t, uint32_t> m_idCached;        // display flag to output mask
  std::map<uint32_t, uint32_t> m_connectorTypes;  // output mask to connector type
  bool m_hasEmbeddedDisplayPort = false;          // the panel hangs on an internal DisplayPort
  LONG m_references = 1;                          // the owner's
};

/// Gives the first display handle, 0 when there is none. Handles are good until a mode is set.
bool FirstDisplayHandle(NvDisplayHandle* pnvHandle);
