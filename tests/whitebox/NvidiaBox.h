// The Nvidia objects from inside. Objects end by delete through IMMonitor.
#pragma once

struct NvidiaBox {
  void (*Present)();
};

const NvidiaBox* GetNvidiaBox();
