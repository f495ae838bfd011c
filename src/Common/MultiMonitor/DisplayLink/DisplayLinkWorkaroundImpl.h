// The notebook's displays without those of a DisplayLink dock, which Windows lists beside them.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>

#include "Common/MultiMonitor/DisplayLink/displaylink_addon_host.h"
#include "Common/MultiMonitor/Win7CCD.h"

namespace displaylink {

/// A Win7CCD over an API of its own that leaves DisplayLink's targets out of its reports, and a
/// client of the add-on host for as long as it lives. Used on the thread of its caller, as any
/// IMMonitor; the host has its own.
class DisplayLinkWorkaroundImpl : public Win7CCD {
 public:
  /// @param host  not null; not connected by this
  explicit DisplayLinkWorkaroundImpl(boost::shared_ptr<DisplayLinkAddOnHost> host);
  ~DisplayLinkWorkaroundImpl() override;
  DisplayLinkWorkaroundImpl(const DisplayLinkWorkaroundImpl&) = delete;
  DisplayLinkWorkaroundImpl& operator=(const DisplayLinkWorkaroundImpl&) = delete;

  /// Connects to the add-on host whenever Win7CCD's own succeeds, a repeated one included.
  /// @throws std::runtime_error below Windows 7; std::bad_alloc without memory for the join
  BOOL Initial() override;
  /// Adds to the outputs. A target counts once, whatever its technology and flag; DisplayLink's do
  /// not.
  /// @param displays       in and out; mask of MD_* bits
  /// @param display_count  in and out; may exceed the bits in `displays`
  /// @return 0 when Windows cannot be asked; the outputs are then as they were
  BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) override;
  /// As GetConnectedDisplays, of the displays that show something.
  BOOL GetActiveDisplays(uint32_t* displays, uint32_t* display_count) override;
  /// Leaves extended desktop for a clone by way of the panel alone.
  /// @param mode  DM_*, or a presentation type (32, 64)
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays) override;

 private:
  BOOL ReportDisplays(UINT32 flags, uint32_t* displays, uint32_t* display_count);
  bool LeavesExtendedDesktopForClone(uint32_t mode);

  boost::shared_ptr<DisplayLinkAddOnHost> host_;
};

/// A new object over the shared add-on host, not initialised; null without memory for it.
Win7CCD* CreateDisplayLinkWorkaround();

}  // namespace displaylink
