// The tables from which the list of modes is built. Rows and their order are what the user sees.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Common/MultiMonitor/DisplayNumbers.h"

namespace catalogue {

/// The wireless display's bit, beside the MD_* bits.
constexpr uint32_t kWirelessDisplay = 0x40;

/// Picture files below the folder of the host's executable; the row number is an item's `icon`.
constexpr const wchar_t* kIconFiles[] = {
    L"OstrelRes\\NB.png",                 // 0
    L"OstrelRes\\CRT.png",                // 1
    L"OstrelRes\\TV.png",                 // 2
    L"OstrelRes\\DVI.png",                // 3
    L"OstrelRes\\LCD.png",                // 4, in no candidate table
    L"OstrelRes\\NB-CRT.png",             // 5
    L"OstrelRes\\NB-TV.png",              // 6
    L"OstrelRes\\NB-DVI.png",             // 7
    L"OstrelRes\\HDMI.png",               // 8
    L"OstrelRes\\NB-HDMI.png",            // 9
    L"OstrelRes\\p800x600.png",           // 10
    L"OstrelRes\\p1024x768.png",          // 11
    L"OstrelRes\\DP.png",                 // 12
    L"OstrelRes\\NB-DP.png",              // 13
    L"OstrelRes\\WiDi.png",               // 14
    L"OstrelRes\\NB-WiDi.png",            // 15
    L"OstrelRes\\AdvancedP1.png",         // 16
    L"OstrelRes\\AdvancedP2.png",         // 17
    L"OstrelRes\\Extend.png",             // 18
    L"OstrelRes\\Extend2CRT.png",         // 19
    L"OstrelRes\\Extend2DP.png",          // 20
    L"OstrelRes\\Extend2HDMI.png",        // 21
    L"OstrelRes\\Extend2WiDi.png",        // 22
    L"OstrelRes\\3Clone_DSub_HDMI.png",   // 23
    L"OstrelRes\\3Clone_DSub_DP.png",     // 24
    L"OstrelRes\\3Clone_HDMI_DP.png",     // 25
    L"OstrelRes\\3Extend_DSub_HDMI.png",  // 26
    L"OstrelRes\\3Extend_DSub_DP.png",    // 27
    L"OstrelRes\\3Extend_HDMI_DP.png",    // 28
};
constexpr size_t kIconCount = sizeof(kIconFiles) / sizeof(kIconFiles[0]);
static_assert(kIconCount == 29, "the icon table has 29 rows");

/// The general picture of extended desktop.
constexpr uint32_t kExtendIcon = 18;

/// One mode that may be offered. Masks are sums of display bits.
struct Candidate {
  uint32_t mode;
  uint32_t mask;
  uint32_t icon;
};

/// The ordinary list. Its DM_EXTEND rows add no item: they are there so that their
/// settings keys are registered.
constexpr Candidate kOrdinaryCandidates[] = {
    {DisplayNumbers::DM_SINGLE, 0x01, 0},   // panel alone
    {DisplayNumbers::DM_CLONE, 0x03, 5},    // panel and CRT
    {DisplayNumbers::DM_SINGLE, 0x02, 1},   // CRT alone
    {DisplayNumbers::DM_CLONE, 0x05, 6},    // panel and TV
    {DisplayNumbers::DM_SINGLE, 0x04, 2},   // TV alone
    {DisplayNumbers::DM_CLONE, 0x09, 7},    // panel and DVI
    {DisplayNumbers::DM_SINGLE, 0x08, 3},   // DVI alone
    {DisplayNumbers::DM_CLONE, 0x11, 9},    // panel and HDMI
    {DisplayNumbers::DM_SINGLE, 0x10, 8},   // HDMI alone
    {DisplayNumbers::DM_CLONE, 0x21, 13},   // panel and DisplayPort
    {DisplayNumbers::DM_SINGLE, 0x20, 12},  // DisplayPort alone
    {DisplayNumbers::DM_CLONE, 0x41, 15},   // panel and wireless display
    {DisplayNumbers::DM_SINGLE, 0x40, 14},  // wireless display alone
    {DisplayNumbers::DM_EXTEND, 0x03, 18},  // key only
    {DisplayNumbers::DM_EXTEND, 0x03, 19},  // key only
    {DisplayNumbers::DM_EXTEND, 0x11, 21},  // key only
    {DisplayNumbers::DM_EXTEND, 0x21, 20},  // key only
    {DisplayNumbers::DM_EXTEND, 0x41, 22},  // key only
};

/// Machines whose displays hang on two adapters.
constexpr Candidate kHybridCandidates[] = {
    {DisplayNumbers::DM_SINGLE, 0x01, 0},        // panel alone
    {DisplayNumbers::DM_ADVANCED_P1, 0x33, 16},  // both adapters side by side
    {DisplayNumbers::DM_ADVANCED_P2, 0x33, 17},  // a cloned pair, the rest to its right
    {DisplayNumbers::DM_SINGLE, 0x02, 1},        // CRT alone
    {DisplayNumbers::DM_SINGLE, 0x08, 3},        // DVI alone
    {DisplayNumbers::DM_SINGLE, 0x10, 8},        // HDMI alone
    {DisplayNumbers::DM_SINGLE, 0x20, 12},       // DisplayPort alone
};

/// Machines that can drive three displays together.
constexpr Candidate kTripleCandidates[] = {
    {DisplayNumbers::DM_SINGLE, 0x01, 0},          // panel alone
    {DisplayNumbers::DM_TRIPLE_EXTEND, 0x13, 26},  // panel, CRT, HDMI extended
    {DisplayNumbers::DM_TRIPLE_EXTEND, 0x23, 27},  // panel, CRT, DisplayPort extended
    {DisplayNumbers::DM_TRIPLE_EXTEND, 0x31, 28},  // panel, HDMI, DisplayPort extended
    {DisplayNumbers::DM_TRIPLE_EXTEND, 0x29, 28},  // panel, DVI, DisplayPort extended
    {DisplayNumbers::DM_TRIPLE_EXTEND, 0x0B, 26},  // panel, CRT, DVI extended
    {DisplayNumbers::DM_TRIPLE_CLONE, 0x13, 23},   // panel, CRT, HDMI cloned
    {DisplayNumbers::DM_TRIPLE_CLONE, 0x23, 24},   // panel, CRT, DisplayPort cloned
    {DisplayNumbers::DM_TRIPLE_CLONE, 0x31, 25},   // panel, HDMI, DisplayPort cloned
    {DisplayNumbers::DM_TRIPLE_CLONE, 0x29, 25},   // panel, DVI, DisplayPort cloned
    {DisplayNumbers::DM_TRIPLE_CLONE, 0x0B, 23},   // panel, CRT, DVI cloned
    {DisplayNumbers::DM_SINGLE, 0x02, 1},          // CRT alone
    {DisplayNumbers::DM_SINGLE, 0x08, 3},          // DVI alone
    {DisplayNumbers::DM_SINGLE, 0x10, 8},          // HDMI alone
    {DisplayNumbers::DM_SINGLE, 0x20, 12},         // DisplayPort alone
};

/// Extended desktop onto one of several external displays, each with mode DM_EXTEND.
struct ExtendCandidate {
  uint32_t mask;
  uint32_t icon;
};
constexpr ExtendCandidate kExtendCandidates[] = {
    {0x03, 19},  // CRT
    {0x11, 21},  // HDMI
    {0x09, 21},  // Deliberate: DVI shares the HDMI picture.
    {0x21, 20},  // DisplayPort
    {0x41, 22},  // wireless display
};

/// Pictures of the advanced modes by which of CRT, HDMI and DisplayPort are connected; any other
/// combination takes the picture of the candidate's row.
struct AdvancedPicture {
  uint32_t connected;
  const wchar_t* first;   // DM_ADVANCED_P1
  const wchar_t* second;  // DM_ADVANCED_P2
};
constexpr uint32_t kAdvancedPictureMask =
    DisplayNumbers::MD_CRT | DisplayNumbers::MD_HDMI | DisplayNumbers::MD_DP;
constexpr AdvancedPicture kAdvancedPictures[] = {
    {0x32, L"OstrelRes\\AdvancedP1DSUBDPHDMI.png", L"OstrelRes\\AdvancedP2DSUBDPHDMI.png"},
    {0x30, L"OstrelRes\\AdvancedP1DPHDMI.png", L"OstrelRes\\AdvancedP2DPHDMI.png"},
    {0x22, L"OstrelRes\\AdvancedP1DP.png", L"OstrelRes\\AdvancedP2DP.png"},
};

/// Which row's picture stands in where HDMI and DVI are drawn as television.
struct PictureSwap {
  uint32_t given;
  uint32_t picture;
};
constexpr PictureSwap kTelevisionPictures[] = {
    {3, 2},  // DVI, TV
    {7, 6},  // NB-DVI, NB-TV
    {8, 2},  // HDMI, TV
    {9, 6},  // NB-HDMI, NB-TV
};

}  // namespace catalogue
