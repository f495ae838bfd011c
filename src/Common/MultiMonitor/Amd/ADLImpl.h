// AMD graphics, driven through the AMD Display Library. Every switch is one idea: read the driver's
// map of desktops and displays, rewrite it, hand it back. A call that fails is made once more after
// the library has been torn down and brought up again.
#pragma once

#include "Common/MultiMonitor/Amd/AdlArray.h"
#include "Common/MultiMonitor/Amd/AdlDisplays.h"
#include "Common/MultiMonitor/Amd/VADLLib.h"
#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/MultiMonitor.h"

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <memory>
#include <vector>

/// Host thread only, but for AddRef and Release. Switching and extended desktop look displays up
/// among those that GetConnectedDisplays listed last: call that first.
class ADLImpl : public MultiMonitor, public IDisplayExtensionAMD {
 public:
  ADLImpl();
  ~ADLImpl() override;

  // --- IMMonitor.
  /// Needs two displays, connected or not. A second attempt after a failure behind the loading of
  /// the library fails at once.
  BOOL Initial() override;
  BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) override;
  BOOL GetActiveDisplays(uint32_t* displays, uint32_t* display_count) override;
  BOOL GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) override;
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override;
  BOOL EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) override;
  BOOL EnableExtendMode(BOOL enable) override;
  BOOL HasDisplaySwitchingCapability() override;
  BOOL ShouldResetDisplaySettingAfterSwtich() override;
  uint32_t GetVgaVendor() override { return kVendorAmd; }
  bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) override;

  // --- IDisplayExtensionAMD.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  bool InitialExtension() override;
  uint32_t GetExtensionVendor() override { return kVendorAmd; }
  bool GetEDID(uint32_t display, EdidBlob* edid) override;
  void FreeEDID(EdidBlob* edid) override;
  bool SupportsTripleDisplay() override { return false; }
  bool HasSLSGrid() override;

  /// Reads the driver's desktops and the displays that show them. All pointers are outputs, never
  /// null; the arrays are given back with FreeAdlBuffer.
  /// @return false when no adapter tells; the outputs are then as they were
  bool GetDisplayMap(ADLDisplayMap** ppmaps, int* pnum_map, ADLDisplayTarget** pptargets,
                     int* pnum_target);

  /// iDisplayLogicalIndex of the first of `num_display` entries on this connector; 0 without one.
  static int32_t DisplayIndexFromConnector(const ADLDisplayInfo* all_display_infos, int num_display,
                                           int32_t connector);

 private:
  using DisplayInfos = AdlArray<ADLDisplayInfo>;
  struct DisplayMap {
    AdlArray<ADLDisplayMap> maps;
    AdlArray<ADLDisplayTarget> targets;
  };

  // --- The library and its adapters.
  bool StartLibrary();
  void ReloadAdl();
  bool RefreshAdapters();
  bool FindActiveAdapter();
  void ReadPowerXpress();
  bool DrivesSeveralDisplays();
  /// How many records there are, whatever the library says since.
  int ListedAdapters() const;
  /// iAdapterIndex of the record at a position of the list. @return false without such a record
  bool AdapterAt(int position, int32_t* adapter) const;
  /// An entry that takes the index of the adapter in charge first. @return the library's result
  template <typename... Parameters, typename... Arguments>
  int CallActive(int (*entry)(int, Parameters...), Arguments... arguments) const {
    int32_t adapter = 0;
    if (!AdapterAt(m_activeAdapter, &adapter)) return ADL_ERR_INVALID_ADL_IDX;
    return VADLLib::Call(entry, adapter, arguments...);
  }

  // --- Reports.
  int AskDisplays(int position, DisplayInfos* infos) const;
  int AskMap(int position, DisplayMap* map) const;
  /// Leaves `mode` alone when there is no desktop. @return false when no adapter tells
  bool ReadMode(uint32_t* mode);
  /// One picture lies across several displays.
  bool IsSlsActive();
  bool ShowsSlsPicture(int32_t adapter, const DisplayMap& map);
  int32_t ConnectorTypeFromIMMonitorDisplayType(uint32_t displays) const;
  int32_t DisplayIndexOf(uint32_t displays) const;

  // --- Switching.
  /// A map with at least one desktop and one display. @return false without them
  bool ReadMapToChange(DisplayMap* map);
  /// The first target made ready to be copied.
  ADLDisplayTarget TemplateTarget(const DisplayMap& map) const;
  BOOL ApplySingleOrClone(uint32_t mode, uint32_t displays);
  BOOL ApplyTripleClone(uint32_t displays);
  BOOL ApplyTripleExtend(uint32_t displays);
  int SetMaps(int map_count, ADLDisplayMap* maps, std::vector<ADLDisplayTarget>* targets) const;
  BOOL SetOneMap(ADLDisplayMap* map, std::vector<ADLDisplayTarget>* targets);
  BOOL SetSeveralMaps(std::vector<ADLDisplayMap>* maps, std::vector<ADLDisplayTarget>* targets);
  /// What the display's EDID asks for, or what any display should take, as the size of `mode`.
  void SetNativeResolution(uint32_t display, ADLMode* mode);

  // --- Extended desktop.
  struct ExtendLists;
  bool StartExtendLists(BOOL enable, ExtendLists* lists);
  void AddSecondary(uint32_t displays, ExtendLists* lists);

  // --- The library's extension.
  void ReadDisplaysForEdid(DisplayInfos* infos);
  bool ReadEdid(int32_t display, ADLDisplayEDIDData* data);

  boost::shared_ptr<VADLLib> m_adl;
  int32_t m_numAdapters = 0;
  int32_t m_activeAdapter = 0;  // a position in m_infoAdapters
  std::unique_ptr<ADLAdapterInfo[]> m_infoAdapters;
  DisplayInfos m_displayInfos;  // of the adapter in charge, as listed last
  // Deliberate: found out at the start, and read by nothing.
  uint32_t m_activeGpu = 0;  // 1 integrated, 2 discrete
  bool m_isHybrid = false;
  bool m_hasPowerXpress = false;
  uint32_t m_resetAfterSwitch = 1;
  bool m_extensionReady = false;
  LONG m_references = 1;             // the owner's
  int32_t m_infoAdaptersLength = 0;  // records that m_infoAdapters has room for
};
