// Two paths of NVIDIA's driver with room for two targets each, and what stands in them told in
// short lines.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>

#include "Common/MultiMonitor/Nvidia/NvRecords.h"

struct PathRecords {
  static constexpr uint32_t kUntouched = 0xEEEEEEEE;

  PathRecords() {
    for (int i = 0; i < 2; ++i) {
      paths[i].targetInfo = targets[i];
      paths[i].sourceModeInfo = &modes[i];
      for (auto& target : targets[i]) target.displayId = target.targetId = kUntouched;
    }
  }
  PathRecords(const PathRecords&) = delete;
  PathRecords& operator=(const PathRecords&) = delete;

  /// "own [display 0x1] [untouched]", "foreign 0:0x9111 [target 0x1] [untouched]".
  std::string TextOf(int path) const {
    std::ostringstream text;
    text << std::hex << std::showbase;
    text << (paths[path].IsNonNVIDIAAdapter != 0 ? "foreign" : "own");
    if (const auto* const luid = static_cast<const uint32_t*>(paths[path].pOSAdapterID)) {
      text << " " << luid[1] << ":" << luid[0];
    }
    for (const auto& target : targets[path]) {
      text << " [";
      if (target.displayId != kUntouched) text << "display " << target.displayId;
      if (target.targetId != kUntouched) text << "target " << target.targetId;
      if (target.displayId == kUntouched && target.targetId == kUntouched) text << "untouched";
      text << "]";
    }
    return text.str();
  }
  /// "1366x768x32 format 21 gdi at 0,0".
  std::string ModeOf(int path) const {
    const NV_DISPLAYCONFIG_SOURCE_MODE_INFO& mode = modes[path];
    std::ostringstream text;
    text << mode.resolution.width << "x" << mode.resolution.height << "x"
         << mode.resolution.colorDepth << " format " << mode.colorFormat
         << (mode.bGDIPrimary != 0 ? " gdi" : "") << " at " << mode.position.x << ","
         << mode.position.y;
    return text.str();
  }

  NV_DISPLAYCONFIG_PATH_INFO paths[2] = {};
  NV_DISPLAYCONFIG_PATH_TARGET_INFO targets[2][2] = {};
  NV_DISPLAYCONFIG_SOURCE_MODE_INFO modes[2] = {};
};
