// What the X server below Wine itself says: the second opinion on every change of the displays.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The root window, 0xRRGGBB row by row from the top; empty when there was no answer.
struct Screenshot {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint32_t> pixels;

  uint32_t At(uint32_t x, uint32_t y) const { return pixels[y * width + x]; }
};

/// The outputs that are on, one line each: "DUMMY0 1366x768+0+0\n".
/// @throws std::runtime_error when the server gives no answer
std::string OutputsThatAreOn();

/// @throws std::runtime_error as OutputsThatAreOn
Screenshot TakeScreenshot();
