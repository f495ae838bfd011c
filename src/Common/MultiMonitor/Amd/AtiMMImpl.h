// AMD graphics of notebooks on which the display library does not qualify, driven through the
// legacy control library. That one thinks in display vectors: every report is translated from a
// vector to MD_* flags, and every switch back, through a map that the connected-display report
// fills.
#pragma once

#include "Common/MultiMonitor/Amd/AtiRecords.h"
#include "Common/MultiMonitor/Amd/VAtiLib.h"
#include "Common/MultiMonitor/MultiMonitor.h"

#include <cstdint>
#include <map>
#include <memory>

/// Host thread only, but for AddRef and Release. Where the library lacks what an operation needs,
/// the operation gives its failure, and before Initial the library lacks everything. Two go on
/// without it: Windows extends the desktop, and switching is said to be possible. An Initial that
/// failed for one missing entry leaves the others bound, and what they are enough for works. No
/// exceptions leave it, the constructor's apart.
class AtiMMImpl : public MultiMonitor, public IDisplayExtension {
 public:
  AtiMMImpl();
  ~AtiMMImpl() override;

  // --- IMMonitor.
  /// A second attempt behind a failed one fails at once when the module was found.
  BOOL Initial() override;
  /// Fills the map that switches go by. Fails once when the capabilities could not be read at the
  /// start and cannot be now.
  BOOL GetConnectedDisplays(uint32_t* pdwDispFlag, uint32_t* pnumDisplays) override;
  /// @param pdwDispFlag  in and out; flags are added to it
  BOOL GetActiveDisplays(uint32_t* pdwDispFlag, uint32_t* pnumDisplays) override;
  /// @return 0 when neither one nor two displays are active and the desktop is not extended; the
  /// mask is then written, the mode is not
  BOOL GetCurrentDisplayMode(uint32_t* pdwModeFlag, uint32_t* pdwDispFlag) override;
  /// DM_SINGLE and DM_CLONE. A display that no connected-display report had is sent as no display.
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override;
  /// @return whether the desktop is extended now, also when that was to end
  BOOL EnableExtendModeOnDisplays(BOOL enable, uint32_t dwExternalDisplay) override;
  BOOL EnableExtendMode(BOOL enable) override;
  BOOL HasDisplaySwitchingCapability() override;
  uint32_t GetVgaVendor() override { return kVendorAmd; }
  /// Size, depth and frequency of an active display.
  bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) override;

  // --- MultiMonitor.
  /// @param display  not looked at
  /// @param edid     left as it is
  bool GetMonitorEDID(uint32_t display, EdidBlob* edid) override;

  /// The file name of the control library.
  virtual const char* GetLibraryName();
  /// Reads what the adapter is capable of.
  /// @return 0 when it is not told, or out of range
  virtual BOOL ReadCapabilities();

  // --- IDisplayExtension.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  bool InitialExtension() override;
  uint32_t GetExtensionVendor() override { return kVendorAmd; }
  /// A display that no connected-display report had is read as the first one.
  bool GetEDID(uint32_t display, EdidBlob* edid) override;
  void FreeEDID(EdidBlob* edid) override;
  bool SupportsTripleDisplay() override { return false; }

 private:
  // --- Reports.
  /// Adds the flags of a vector's displays to a mask, up to the first one that has no type.
  void AddDisplaysOfVector(uint32_t display_vector, uint32_t* displays);
  /// As AddDisplaysOfVector, and notes the displays in the map.
  void MapDisplaysOfVector(uint32_t display_vector, uint32_t* displays);
  /// The vector of a display by the map; 0 for one that is not in it.
  uint32_t VectorOfDisplay(uint32_t display) const;

  // --- Switching.
  /// Sends a copy. @return the library accepted it; false without that entry
  bool SetConfiguration(AtiConfigRecord record);
  BOOL EnterExtendMode();
  BOOL LeaveExtendMode();
  BOOL ExtendOn(uint32_t dwExternalDisplay);
  /// The library's own arrangement of two display devices.
  bool ExtendByAdapterConfig();
  void ExtendByLibrary(BOOL enable);

  bool m_capabilitiesPending = false;  // to be read by the next connected-display report
  std::unique_ptr<VAtiLib> m_pLib;
  uint32_t m_capabilityFirst = 0;
  uint32_t m_capabilitySecond = 0;
  uint32_t m_tvVector = 0;
  bool m_haveDisplayMap = false;
  std::map<uint32_t, uint32_t> m_displayMap;  // MD_* flag to vector of one bit; never pruned
  bool m_extensionReady = false;
  LONG m_references = 1;  // the owner's
};
