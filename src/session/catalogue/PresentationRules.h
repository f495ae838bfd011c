// Presentation modes as far as they need nothing but numbers and texts: which resolutions there
// are, on which connector they are offered, and how a list of projectors is written.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Common/MultiMonitor/DisplayNumbers.h"
#include "session/catalogue/ItemTables.h"

namespace catalogue {

/// One presentation resolution: the number it has as an item's `presentation_type`, its section of
/// Ostrel.cfg, its size in pixels while the section does not say otherwise, and its row of
/// kIconFiles.
struct PresentationType {
  uint32_t type;
  const wchar_t* section;
  uint32_t width;
  uint32_t height;
  uint32_t icon;
};
constexpr PresentationType kSmallPresentation = {32, L"PM:800x600", 800, 600, 10};
constexpr PresentationType kLargePresentation = {64, L"PM:1024x768", 1024, 768, 11};

/// What stands in front of the small presentation of a connector.
enum class SmallItemRule {
  kGate,           // the same gate as the large one
  kPanel,          // the panel is connected, too
  kPanelAndClone,  // and the discrete adapter, where it has all the outputs, can clone
};

/// One connector on which presentations are offered, beside the panel.
struct PresentationConnector {
  uint32_t display;
  uint32_t mask;
  SmallItemRule small_item;
};
// Deliberate: the 800 by 600 item of CRT and DVI bypasses the gate.
constexpr PresentationConnector kPresentationConnectors[] = {
    {DisplayNumbers::MD_CRT, 0x03, SmallItemRule::kPanel},
    {DisplayNumbers::MD_DVI, 0x09, SmallItemRule::kPanelAndClone},
    {DisplayNumbers::MD_HDMI, 0x11, SmallItemRule::kGate},
    {DisplayNumbers::MD_TV, 0x05, SmallItemRule::kGate},
    {DisplayNumbers::MD_DP, 0x21, SmallItemRule::kGate},
    {kWirelessDisplay, 0x41, SmallItemRule::kGate},
};

/// Projectors that must not be offered 1024 by 768, where the configuration names none.
constexpr const char* kProblemProjectors[] = {
    "Veld k2210",
    "Veld k2310",
    "Veld R2215",
    "Veld R2215E",
};

/// @return null for a number that is no presentation's
const PresentationType* FindPresentationType(uint32_t type);

/// The one connector whose presentations are offered. @return null when none of them is connected
const PresentationConnector* FindPresentationConnector(uint32_t connected);

/// Splits a comma-separated list of names and takes the blanks off both ends of each. An empty text
/// has no names; an empty part of any other is an empty name.
std::vector<std::string> SplitProjectorNames(std::string_view text);

/// True when `name` is one of `names`, byte by byte.
bool IsNameListed(const std::vector<std::string>& names, const std::string& name);

}  // namespace catalogue
