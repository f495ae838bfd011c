// The workarounds around a switch, from inside: makers of their objects, the free functions, and
// the fields of the window that the library never creates. Objects end by delete.
#pragma once

#include <cstdint>
#include <string>

#include "Common/Win.h"
#include "Workaround/IMonitorTestWorkaround.h"
#include "Workaround/IntelRRWorkaroundWindow.h"
#include "Workaround/MonitorTestV3Workaround.h"
#include "Workaround/RefreshRateWorkaround.h"

class IMMonitor;

/// The window's fields at one moment.
struct RRWindowState {
  IMMonitor* m = nullptr;
  bool timer_armed = false;
  uint32_t known_displays = 0;
  HANDLE worker_thread = nullptr;
  DWORD worker_thread_id = 0;
};

struct WorkaroundBox {
  // --- The remedy for the tool MonitorTest.
  boost::shared_ptr<IMonitorTestWorkaround> (*CreateMonitorTestWorkaround)();
  MonitorTestV3Workaround* (*NewMonitorTestV3Workaround)();
  IMonitorTestWorkaround* (*NewNoMonitorTestV3Workaround)();
  /// "MonitorTestV3Workaround", "NoMonitorTestV3Workaround" or "".
  std::string (*NameOfMonitorTestWorkaround)(IMonitorTestWorkaround* workaround);

  // --- The refresh rate of an HDMI monitor.
  RefreshRateWorkaround* (*CreateRefreshRateWorkaround)(IMMonitor* m);
  /// "IntelRRWorkaround", "NullIntelRRWorkaround" or "".
  std::string (*NameOfRefreshRateWorkaround)(RefreshRateWorkaround* workaround);
  /// The window of an IntelRRWorkaround, owned by it.
  IntelRRWorkaroundWindow* (*WindowOf)(RefreshRateWorkaround* workaround);
  bool (*IsIntelDisplayPresent)();
  bool (*HdmiRefreshRateIsLow)(IMMonitor* m);
  void (*AdjustHdmiRefreshRate)(IMMonitor* m);
  /// Over an API that is loaded from `file_name` for the call; null: not loaded.
  bool (*ApplyPreferredTiming)(const char* file_name,
                               const DISPLAYCONFIG_TARGET_PREFERRED_MODE& record);
  bool (*ApplyPreferredTimingWithoutApi)();

  // --- The window.
  IntelRRWorkaroundWindow* (*NewWindow)(IMMonitor* m);
  RRWindowState (*StateOf)(const IntelRRWorkaroundWindow* window);
  void (*CheckDisplays)(IntelRRWorkaroundWindow* window);  // on the calling thread
  void (*ApplyWorkaround)(IntelRRWorkaroundWindow* window, uint32_t displays, uint32_t count);
};

const WorkaroundBox* GetWorkaroundBox();
