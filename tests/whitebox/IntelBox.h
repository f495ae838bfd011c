// The Intel back-end from inside. Objects end by delete through IMMonitor.
#pragma once

#include <cstdint>
#include <string>

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IMMonitorEx.h"

struct IntelBox {
  IMMonitor* (*NewIntelMMImpl)();  // not initialised
  IDisplayExtension* (*ExtensionOf)(IMMonitor* intel);
  IMMonitorEx* (*ExOf)(IMMonitor* intel);

  bool (*CanControlHDMIMonitor)(IMMonitor* intel);
  bool (*GetMonitorEDID)(IMMonitor* intel, uint32_t display, EdidBlob* edid);
  BOOL (*GetMonitorName)(IMMonitor* intel, uint32_t display, std::string* name);
  uint32_t (*TypeFromBit)(uint32_t imm_display);

  /// SetNewDisplayMode: its result, or the text of what it threw.
  std::string (*SetNewDisplayMode)(IMMonitor* intel, uint32_t mode, uint32_t displays);
};

const IntelBox* GetIntelBox();
