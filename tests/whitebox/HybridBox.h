// The Hybrid objects from inside. Objects end by delete through IMMonitor.
#pragma once

struct HybridBox {
  void (*Present)();
};

const HybridBox* GetHybridBox();
