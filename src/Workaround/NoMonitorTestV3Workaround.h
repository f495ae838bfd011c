#pragma once

#include "Workaround/IMonitorTestWorkaround.h"

/// For machines without the tool: changes nothing.
class NoMonitorTestV3Workaround : public IMonitorTestWorkaround {
 public:
  NoMonitorTestV3Workaround();
  bool IsToolInstalled() override { return false; }
  BOOL ChangeResolutionBeforeSwitch(IMMonitor* monitor) override;
};
