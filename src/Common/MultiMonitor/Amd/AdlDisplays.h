// How ADL's displays, connectors and display maps read in the display model: tables over plain
// records, without Windows.
#pragma once

#include <cstdint>
#include <optional>

#include "Common/MultiMonitor/Amd/AdlRecords.h"

/// A list of displays as the library gave it. Null or no entries: nobody has asked for one yet.
struct AdlDisplayList {
  const ADLDisplayInfo* entries = nullptr;
  int32_t count = 0;
};

/// The display flag of an entry; 0 for a type without one, which is a display all the same.
uint32_t DisplayOfAdlInfo(const ADLDisplayInfo& info);

/// The connector that a mask stands for. Only the low eight bits are seen, and the first known bit
/// counts.
/// @return nothing for a mask without a known bit, and for DVI or HDMI when displays are listed
///         but none of them is connected there
std::optional<int32_t> AdlConnectorOfDisplays(uint32_t displays, const AdlDisplayList& list);

/// iDisplayLogicalIndex of the first entry on the connector, connected or not; 0 without one.
int32_t AdlIndexOfConnector(int32_t connector, const AdlDisplayList& list);

/// iDisplayLogicalIndex of the entry whose EDID is that of a display; 0 without one.
int32_t AdlIndexForEdid(uint32_t display, const AdlDisplayList& list);

/// The mode that a display map of so many desktops and displays stands for; nothing without a
/// desktop.
std::optional<uint32_t> ModeOfAdlMap(int32_t num_map, int32_t num_target);
