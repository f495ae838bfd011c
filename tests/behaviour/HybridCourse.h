// One pass of an arrangement over both adapters as the journal has it.
#pragma once

#include <string>

#include "tests/behaviour/HybridHost.h"

constexpr char kClear[] = "nvidia ApplyCrossAdapterClone(0x0)\n";
constexpr char kPanelClone[] = "nvidia ApplyCrossAdapterClone(0x21)\n";
constexpr char kPanelAlone[] = "ccd SetNewDisplayMode(1, 0x1)\n";
constexpr char kCommit[] = "ChangeDisplaySettingsExA(null null flags=0x0)=0\n";
constexpr char kDevices[] = "EnumDisplayDevicesW\n";
constexpr char kCurrent[] = "EnumDisplaySettingsA(null -1)=1\n";
constexpr char kCurrentWide[] = "EnumDisplaySettingsW(null -1)=1\n";

/// Windows' devices of kFour: two of Intel's, two of NVIDIA's.
inline std::string Device(int number) { return "\\\\.\\DISPLAY" + std::to_string(number); }

/// The sizes that the displays have of themselves.
inline void UseNativeSizes(HybridHost* host) {
  *host->sizes = {{kCrt, {1280, 1024}}, {kDp, {1600, 900}}, {kHdmi, {1920, 1080}}};
}

/// The calls that place displays, line by line, with the right edge carried along.
class Course {
 public:
  std::string text;

  void Primary(int device, bool with_size = false) {
    text += Stored(device, 1366, 768, 0, with_size, true);
  }
  /// A display whose device has nothing stored.
  void Next(int device, uint32_t display, uint32_t width, uint32_t height, bool with_size = false) {
    text += "EnumDisplaySettingsA(" + Device(device) + " -2)=0\n";
    text += "ccd GetNativeResolution(" + Hex(display) + ")\n";
    text += Stored(device, width, height, right_, with_size, false);
  }

 private:
  std::string Stored(int device, uint32_t width, uint32_t height, uint32_t x, bool with_size,
                     bool primary) {
    const std::string record = "ChangeDisplaySettingsExA(" + Device(device) + " " +
                               std::to_string(width) + "x" + std::to_string(height) + "x32@60 at " +
                               std::to_string(x) +
                               ",0 fields=" + (with_size ? "0x180020" : "0x20") + " flags=";
    right_ = x + width;
    return record + (primary ? "0x10000013" : "0x10000003") + ")=0\n" + record +
           (primary ? "0x10000011" : "0x10000001") + ")=0\n";
  }

  uint32_t right_ = 0;
};
