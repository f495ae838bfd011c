// The controller of two adapters from inside. Objects end by delete through IMMonitor.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"

struct HybridBox {
  /// Takes both objects, null or not; over the Win7CCD that it makes itself.
  IMMonitor* (*NewHybridController)(IMMonitor* intel, IMMonitor* nvidia);
  /// The same, or the text of what the constructor threw.
  std::string (*NewHybridControllerOrThrown)(IMMonitor* intel, IMMonitor* nvidia, IMMonitor** made);
  /// The same with `ccd` in the place of that Win7CCD; takes it, null or not.
  IMMonitor* (*NewHybridControllerOver)(IMMonitor* intel, IMMonitor* nvidia, IMMonitor* ccd);
  /// A cross-adapter object of NVIDIA's of which every operation goes on to `monitor`, which it
  /// takes, and to `clone`.
  IMMonitor* (*NewCrossAdapterOver)(IMMonitor* monitor,
                                    std::function<BOOL(uint32_t displays)> clone);
  IDisplayExtension* (*ExtensionOf)(IMMonitor* hybrid);

  // --- The advanced arrangements, each by itself.
  BOOL (*ApplyExtendAcrossAdapters)(IMMonitor* hybrid, uint32_t connected, uint32_t wanted);
  BOOL (*ApplyExtendAcrossAdaptersWithSize)(IMMonitor* hybrid, uint32_t connected, uint32_t wanted);
  BOOL (*ApplyCloneAcrossAdapters)(IMMonitor* hybrid, uint32_t connected, uint32_t wanted);

  void (*PlaceDisplay)(uint32_t width, uint32_t height, DEVMODEA* dm, const char* device,
                       bool primary);
  void (*PlaceDisplayWithSize)(uint32_t width, uint32_t height, DEVMODEA* dm, const char* device,
                               bool primary);
};

const HybridBox* GetHybridBox();
