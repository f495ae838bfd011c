// The controller that needs no vendor's library: the display configuration functions of Windows 7.
#pragma once

#include "Common/MultiMonitor/DisplayModeValidator.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"
#include "Common/MultiMonitor/MultiMonitor.h"
#include "Common/MultiMonitor/Win7CCDApi.h"

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <map>
#include <vector>

/// Needs Initial before any operation but GetNativeResolution and GetTargetPreferredMode, which
/// load the API themselves. While the API is not bound every operation gives its failure result.
class Win7CCD : public MultiMonitor, public IPhysicalMonitor {
 public:
  using PathList = std::vector<DISPLAYCONFIG_PATH_INFO>;

  /// Makes the object's validator, and with it the newest one of the library.
  /// @param ccd  not loaded yet
  explicit Win7CCD(boost::shared_ptr<Win7CCDApi> ccd);
  ~Win7CCD() override;

  // IMMonitor
  /// @throws std::runtime_error below Windows 7
  BOOL Initial() override;
  /// Adds to the outputs; displays with the same output technology count once, and one that has no
  /// flag counts, too.
  BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) override;
  /// As GetConnectedDisplays.
  BOOL GetActiveDisplays(uint32_t* displays, uint32_t* display_count) override;
  BOOL GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) override;
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override;
  /// The secondary display is whatever Windows has in its database.
  BOOL EnableExtendMode(BOOL enable) override;
  uint32_t GetVgaVendor() override { return kVendorWin7CCD; }
  /// Fills size, depth and frequency, the latter always with 60.
  bool GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) override;

  /// Reads the preferred mode of a display.
  /// @param monitor_id  exactly one MD_* bit
  /// @param record      out
  /// @return 0 when it is not known
  /// @throws std::runtime_error below Windows 7
  virtual BOOL GetTargetPreferredMode(uint32_t monitor_id,
                                      DISPLAYCONFIG_TARGET_PREFERRED_MODE* record);

  // IPhysicalMonitor; the count starts at 0
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;
  /// @throws std::runtime_error below Windows 7
  bool GetNativeResolution(uint32_t monitor_id, uint32_t* width, uint32_t* height) override;

  /// Appends the paths whose target is available without being forced, in Windows' order.
  /// @param flags     QDC_*
  /// @param topology  out, with QDC_DATABASE_CURRENT only; otherwise null
  /// @return 0 when Windows cannot be asked
  BOOL QueryPaths(UINT32 flags, PathList* paths, DISPLAYCONFIG_TOPOLOGY_ID* topology);

  /// The output technology that a display is looked up by.
  uint32_t TechnologyFromDisplay(uint32_t display) const;

  /// Finds the path of a display, or one of technology "other" in its place.
  BOOL SelectPath(uint32_t display, const PathList& paths, DISPLAYCONFIG_PATH_INFO* path_out) const;

  /// The target id of the first path, the panel's where there is one; 0 when there is none.
  /// @param display  not used
  uint32_t GetActiveTargetId(uint32_t display);

  /// @return 1 when the paths start at more than one adapter
  BOOL HasMultipleDisplayAdapter();

 private:
  BOOL QuerySortedPaths(UINT32 flags, PathList* paths);
  BOOL ApplyPaths(uint32_t mode, uint32_t displays, const PathList& paths);
  BOOL FillPaths(uint32_t mode, uint32_t displays, const PathList& paths,
                 DISPLAYCONFIG_PATH_INFO* new_paths, UINT32 num_of_paths) const;
  bool ForceTopology(uint32_t topology, uint32_t mode, uint32_t displays);
  void LoadOnDemand();
  bool ReadPreferredMode(uint32_t monitor_id, DISPLAYCONFIG_TARGET_PREFERRED_MODE* preferred);
  LONG SetDisplayConfig(UINT32 count, DISPLAYCONFIG_PATH_INFO* paths, UINT32 flags);

  const boost::shared_ptr<Win7CCDApi> m_ccd;
  std::map<uint32_t, uint32_t> m_technologyByMask;
  const boost::shared_ptr<DisplayModeValidator> m_validator;
  bool m_apiLoaded = false;
  LONG m_references = 0;
};
