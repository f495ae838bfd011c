// The sub-commands that ask or tell the library one thing each.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/Report.h"
#include "host/Stage.h"

/// Exit codes of the host.
constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;  // the library or the machine said no
constexpr int kExitUsage = 2;   // wrong arguments, or a file that cannot be used

/// The current mode as the library tells it. In extended mode the export gives a valid mode with
/// the result 0.
struct CurrentMode {
  bool known = false;
  uint32_t mode = 0;  // exported number
  uint32_t displays =
      0;  // exported mask; in extended mode the active displays, asked for separately
};
CurrentMode ReadCurrentMode(const Exports& exports);
std::string ModeText(const CurrentMode& current);

int ShowConnected(Stage& stage, Report& report);
int ShowActive(Stage& stage, Report& report);
int ShowMode(Stage& stage, Report& report);
int ShowVendor(Stage& stage, Report& report);
int ShowCapability(Stage& stage, Report& report);
int SetMode(Stage& stage, Report& report, uint32_t mode, uint32_t displays);
int SetExtended(Stage& stage, Report& report, bool on);
int SetPanelOnly(Stage& stage, Report& report);
int FlushSettings(Stage& stage, Report& report);

/// On a simulated notebook: the calls that changed it since the last time, one line each.
void TellChanges(Stage& stage, Report& report);
