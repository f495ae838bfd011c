// The back-end over NVIDIA's control-panel library from inside. Objects end by delete through
// IMMonitor.
#pragma once

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"

struct NvidiaPanelBox {
  IMMonitor* (*NewNvidiaMMImpl)();  // not initialised
  IDisplayExtension* (*ExtensionOf)(IMMonitor* nvidia);
};

const NvidiaPanelBox* GetNvidiaPanelBox();
