// Intel graphics, driven through the COM object of Intel's driver.
#pragma once

#include "Common/MultiMonitor/Edid.h"
#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitorEx.h"
#include "Common/MultiMonitor/Intel/CuiNViewBlock.h"
#include "Common/MultiMonitor/Intel/CuiRecords.h"
#include "Common/MultiMonitor/MultiMonitor.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

class ICUIExternal8;

/// Host thread only, but for AddRef and Release. COM is initialised by the host. Until Initial
/// succeeded every operation gives its failure.
class IntelMMImpl : public MultiMonitor, public IDisplayExtension, public IMMonitorEx {
 public:
  IntelMMImpl() = default;
  ~IntelMMImpl() override;

  // --- IMMonitor.
  BOOL Initial() override;
  BOOL GetConnectedDisplays(uint32_t* imm_displays, uint32_t* display_count) override;
  BOOL GetActiveDisplays(uint32_t* imm_displays, uint32_t* display_count) override;
  BOOL GetCurrentDisplayMode(uint32_t* imm_mode, uint32_t* imm_displays) override;
  /// Blocks for a second or two while the desktop is taken to a size that the driver accepts.
  /// @throws invalid_edid_header, invalid_edid_checksum for three displays, one of them damaged
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override;
  BOOL EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) override;
  BOOL EnableExtendMode(BOOL enable) override;
  BOOL ShouldResetDisplaySettingAfterSwtich() override;
  uint32_t GetVgaVendor() override { return kVendorIntel; }
  bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) override;

  // --- MultiMonitor.
  /// @param display  not looked at
  /// @param edid     left as it is
  bool GetMonitorEDID(uint32_t display, EdidBlob* edid) override;

  // --- IDisplayExtension.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  bool InitialExtension() override;
  uint32_t GetExtensionVendor() override { return kVendorIntel; }
  bool GetEDID(uint32_t display, EdidBlob* edid) override;
  void FreeEDID(EdidBlob* edid) override;
  bool SupportsTripleDisplay() override;

  // --- IMMonitorEx.
  BOOL SetDisplayModeWithSettings(uint32_t mode, uint32_t displays, DEVMODEW* dm) override;

  /// Whether the adapter owns an HDMI connector.
  bool CanControlHDMIMonitor();

  /// The driver's type of one display.
  /// @param imm_display  exactly one bit
  /// @return 0 for no display, several, or an unknown one
  static uint32_t TypeFromBit(uint32_t imm_display);

 private:
  struct Device {
    uint32_t type;
    uint32_t uid;
  };
  class AspectScalingGuard;

  // --- The driver's object and its devices.
  bool CreateCuiObject();
  /// Lists the devices of all adapters anew.
  void RefreshDeviceList();
  /// @return 0 for a type that no listed device has
  uint32_t UidOfType(uint32_t type) const;
  /// @return 0 for an unlisted device, or one of unknown type
  uint32_t DisplayOfUid(uint32_t uid) const;
  bool WalkDevices(uint32_t status_test, uint32_t* displays, uint32_t* display_count);
  bool ReadConnectors(CuiConnectors* connectors);
  bool ReadEdidBlock(uint32_t uid, CuiEdidBlock* block);
  HRESULT QueryNView(CuiNViewBlock* block, DWORD* err);

  // --- Switching.
  BOOL ApplySingle(uint32_t displays);
  BOOL ApplyClone(uint32_t displays);
  BOOL ApplySingleOrClone(uint32_t mode, uint32_t displays);
  bool ChangeActiveDevicesWithRetry(CuiActiveDevices* record);
  /// Without retry; what fails is logged.
  bool ChangeActiveDevices(CuiActiveDevices* records, uint32_t record_count);
  BOOL DowngradeResolution(uint32_t mode, uint32_t displays);

  // --- Extended desktop.
  BOOL AttachDevices(uint32_t mask);
  BOOL DetachToNotebook();

  // --- Whole arrangements in one call.
  BOOL ApplyTriple(uint32_t operating_mode, uint32_t displays);
  BOOL ApplyCloneWithResolution(uint32_t displays, const DEVMODEW& dm);
  /// Makes an arrangement's block in the size that the driver asks for, entries still zero.
  /// @return false when the driver refuses to tell
  bool MakeNView(uint32_t operating_mode, uint32_t display_count, CuiNViewBlock* block);
  HRESULT WriteNView(CuiNViewBlock* block, DWORD* driver_error);
  /// What a display's EDID asks for, or what any monitor should take.
  /// @throws invalid_edid_header, invalid_edid_checksum
  EdidTiming PreferredTiming(uint32_t display);
  CuiNViewEntry PreferredEntry(uint32_t display);

  // --- Aspect scaling.
  void SaveAspectScaling();
  void RestoreAspectScaling(uint32_t displays);

  ICUIExternal8* m_pCUIExt = nullptr;
  std::vector<Device> m_devices;                    // as enumerated last
  std::map<uint32_t, uint32_t> m_aspectByDisplays;  // never pruned
  LONG m_references = 1;                            // the owner's
  BOOL m_extensionReady = FALSE;
  BOOL should_reset_display_settings_after_switch_ = TRUE;
};
