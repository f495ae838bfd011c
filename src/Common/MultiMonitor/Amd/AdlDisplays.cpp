#include "Common/MultiMonitor/Amd/AdlDisplays.h"

#include "Common/MultiMonitor/DisplayNumbers.h"

#include <limits>

namespace {

constexpr int32_t kAny = -1;
constexpr int32_t kNone = -1;

// iDisplayType.
constexpr int32_t kMonitor = 0;
constexpr int32_t kTelevision = 1;
constexpr int32_t kPanel = 2;
constexpr int32_t kDigitalFlatPanel = 3;

// iDisplayConnector.
constexpr int32_t kVga = 1;
constexpr int32_t kDviD = 2;
constexpr int32_t kDviI = 3;
constexpr int32_t kProprietary = 8;
constexpr int32_t kHdmiTypeA = 10;
constexpr int32_t kHdmiTypeB = 11;
constexpr int32_t kSVideo = 12;
constexpr int32_t kDisplayPort = 15;

// The first row that fits.
struct DisplayRow {
  int32_t type;
  int32_t connector;
  uint32_t display;
};
constexpr DisplayRow kDisplays[] = {
    {kMonitor, kAny, DisplayNumbers::MD_CRT},
    {kTelevision, kAny, DisplayNumbers::MD_TV},
    {kPanel, kAny, DisplayNumbers::MD_NB},
    {kDigitalFlatPanel, kHdmiTypeA, DisplayNumbers::MD_HDMI},
    {kDigitalFlatPanel, kHdmiTypeB, DisplayNumbers::MD_HDMI},
    {kDigitalFlatPanel, kDisplayPort, DisplayNumbers::MD_DP},
    {kDigitalFlatPanel, kAny, DisplayNumbers::MD_DVI},
};

// In the order in which the bits of a mask are tried. Where a display has connectors of two kinds,
// the one in use is looked up in the list of displays.
struct ConnectorRow {
  uint32_t display;
  int32_t usual;
  int32_t other;
};
constexpr ConnectorRow kConnectors[] = {
    {DisplayNumbers::MD_NB, kProprietary, kNone},      {DisplayNumbers::MD_CRT, kVga, kNone},
    {DisplayNumbers::MD_TV, kSVideo, kNone},           {DisplayNumbers::MD_DVI, kDviD, kDviI},
    {DisplayNumbers::MD_HDMI, kHdmiTypeA, kHdmiTypeB}, {DisplayNumbers::MD_DP, kDisplayPort, kNone},
};
constexpr uint32_t kSeenBits = 0xFF;

// In the order in which the bits of a mask are tried.
struct EdidRow {
  uint32_t displays;
  int32_t type;
};
constexpr EdidRow kEdidTypes[] = {
    {DisplayNumbers::MD_NB, kPanel},
    {DisplayNumbers::MD_CRT, kMonitor},
    {DisplayNumbers::MD_DVI | DisplayNumbers::MD_HDMI | DisplayNumbers::MD_DP, kDigitalFlatPanel},
};

// The first row that fits.
struct ModeRow {
  int32_t most_maps;
  int32_t most_targets;
  uint32_t mode;
};
constexpr int32_t kNoLimit = std::numeric_limits<int32_t>::max();
constexpr ModeRow kModes[] = {
    {1, 1, DisplayNumbers::DM_SINGLE},
    {1, 2, DisplayNumbers::DM_CLONE},
    {1, kNoLimit, DisplayNumbers::DM_TRIPLE_CLONE},
    {kNoLimit, 2, DisplayNumbers::DM_EXTEND},
    {kNoLimit, kNoLimit, DisplayNumbers::DM_TRIPLE_EXTEND},
};

int32_t LengthOf(const AdlDisplayList& list) { return list.entries != nullptr ? list.count : 0; }

std::optional<int32_t> ConnectedOneOf(const ConnectorRow& row, const AdlDisplayList& list) {
  for (int32_t i = 0; i < LengthOf(list); ++i) {
    const ADLDisplayInfo& info = list.entries[i];
    if ((info.iDisplayInfoValue & kAdlDisplayConnected) == 0) continue;
    if (info.iDisplayConnector == row.usual || info.iDisplayConnector == row.other) {
      return info.iDisplayConnector;
    }
  }
  return std::nullopt;
}

}  // namespace

uint32_t DisplayOfAdlInfo(const ADLDisplayInfo& info) {
  for (const DisplayRow& row : kDisplays) {
    if (row.type != info.iDisplayType) continue;
    if (row.connector == kAny || row.connector == info.iDisplayConnector) return row.display;
  }
  return 0;
}

std::optional<int32_t> AdlConnectorOfDisplays(uint32_t displays, const AdlDisplayList& list) {
  for (const ConnectorRow& row : kConnectors) {
    if ((displays & kSeenBits & row.display) == 0) continue;
    if (row.other == kNone || LengthOf(list) <= 0) return row.usual;
    return ConnectedOneOf(row, list);
  }
  return std::nullopt;
}

int32_t AdlIndexOfConnector(int32_t connector, const AdlDisplayList& list) {
  for (int32_t i = 0; i < LengthOf(list); ++i) {
    if (list.entries[i].iDisplayConnector == connector) {
      return list.entries[i].displayID.iDisplayLogicalIndex;
    }
  }
  // Deliberate: a connector without an entry is not told apart from that of display 0, as after a
  // list that is out of date.
  return 0;
}

int32_t AdlIndexForEdid(uint32_t display, const AdlDisplayList& list) {
  for (const EdidRow& row : kEdidTypes) {
    if ((display & row.displays) == 0) continue;
    int32_t index = 0;
    for (int32_t i = 0; i < LengthOf(list); ++i) {
      // Deliberate: the last entry of the type, whatever its connector and connected or not.
      if (list.entries[i].iDisplayType == row.type) {
        index = list.entries[i].displayID.iDisplayLogicalIndex;
      }
    }
    return index;
  }
  return 0;
}

std::optional<uint32_t> ModeOfAdlMap(int32_t num_map, int32_t num_target) {
  if (num_map <= 0) return std::nullopt;
  for (const ModeRow& row : kModes) {
    if (num_map <= row.most_maps && num_target <= row.most_targets) return row.mode;
  }
  return std::nullopt;
}
