#pragma once

#include "Workaround/RefreshRateWorkaround.h"

/// For machines whose refresh rate needs no remedy.
class NullIntelRRWorkaround : public RefreshRateWorkaround {
 public:
  void BeginMonitoring() override {}
  void EndMonitoring() override {}
  void AdjustRefreshRate() override {}
};
