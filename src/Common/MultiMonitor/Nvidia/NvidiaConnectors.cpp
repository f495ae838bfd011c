#include "Common/MultiMonitor/Nvidia/NvidiaConnectors.h"

namespace {

struct ConnectorDisplay {
  uint32_t connector_type;
  uint32_t display;
};

// Types without a row have no display flag.
constexpr ConnectorDisplay kConnectorDisplays[] = {
    {0, DisplayNumbers::MD_CRT},
    {16, DisplayNumbers::MD_TV},
    {17, DisplayNumbers::MD_TV},
    {19, DisplayNumbers::MD_TV},
    {20, DisplayNumbers::MD_TV},
    {22, DisplayNumbers::MD_TV},
    // Deliberate: a television type that counts as HDMI when it is met, and is never looked for.
    {23, DisplayNumbers::MD_HDMI},
    {97, DisplayNumbers::MD_HDMI},
    {99, DisplayNumbers::MD_HDMI},
    {32, DisplayNumbers::MD_DVI},
    {33, DisplayNumbers::MD_DVI},
    {48, DisplayNumbers::MD_DVI},
    {49, DisplayNumbers::MD_DVI},
    {50, DisplayNumbers::MD_DVI},
    {56, DisplayNumbers::MD_DVI},
    {57, DisplayNumbers::MD_DVI},
    {64, DisplayNumbers::MD_NB},
    {71, DisplayNumbers::MD_NB},
    {70, DisplayNumbers::MD_DP},
    {72, DisplayNumbers::MD_DP},
    {100, DisplayNumbers::MD_DP},
    {101, DisplayNumbers::MD_DP},
};

// The way back, which knows one type for each display.
struct DisplayConnector {
  uint32_t display;
  uint32_t connector_type;
  uint32_t with_embedded_display_port;
};

constexpr DisplayConnector kDisplayConnectors[] = {
    {DisplayNumbers::MD_NB, 64, 71},
    {DisplayNumbers::MD_CRT, 0, 0},
    {DisplayNumbers::MD_DVI, 49, 49},
    // Deliberate: of the types that read as HDMI this one only.
    {DisplayNumbers::MD_HDMI, 97, 97},
    {DisplayNumbers::MD_DP, 70, 70},
};

}  // namespace

uint32_t ConnectorToDisplay(uint32_t connector_type) {
  for (const ConnectorDisplay& row : kConnectorDisplays) {
    if (row.connector_type == connector_type) return row.display;
  }
  return 0;
}

uint32_t ConnectorOfDisplay(uint32_t imm_display, bool embedded_display_port) {
  for (const DisplayConnector& row : kDisplayConnectors) {
    if (row.display != imm_display) continue;
    return embedded_display_port ? row.with_embedded_display_port : row.connector_type;
  }
  return kUnknownConnector;
}
