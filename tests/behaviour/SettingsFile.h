// Ostrel.ini as a file: what tests of the memory read, write and compare whole.
#pragma once

#include <string>

#include "Common/Win.h"
#include "sim/Machine.h"
#include "tests/behaviour/LogText.h"

namespace settings_file {

inline std::wstring PathOf(const sim::Machine& machine) {
  return machine.TempFolder() + L"\\Ostrel.ini";
}

/// Makes Windows forget what it holds of the file, so that bytes written past it are seen.
inline void Forget(const sim::Machine& machine) {
  WritePrivateProfileStringW(nullptr, nullptr, nullptr, PathOf(machine).c_str());
}

/// The file's bytes; "" when there is none.
inline std::string Bytes(const sim::Machine& machine) {
  Forget(machine);
  return ReadFileText(PathOf(machine));
}

inline void Put(const sim::Machine& machine, const std::string& bytes, uint32_t size = 0) {
  WriteFileText(PathOf(machine), bytes, size);
  Forget(machine);
}

/// One section as the file holds it.
inline std::string Section(const std::string& name, const std::string& lines) {
  return "[" + name + "]\r\n" + lines;
}

/// The five keys of one display, with what stands behind them.
inline std::string Five(const std::string& suffix, uint32_t width, uint32_t height, uint32_t bits,
                        uint32_t frequency, uint32_t orientation) {
  return "Width" + suffix + "=" + std::to_string(width) + "\r\n" +        //
         "Height" + suffix + "=" + std::to_string(height) + "\r\n" +      //
         "Color Depth" + suffix + "=" + std::to_string(bits) + "\r\n" +   //
         "Frequency" + suffix + "=" + std::to_string(frequency) + "\r\n"  //
         + "Orientation" + suffix + "=" + std::to_string(orientation) + "\r\n";
}

}  // namespace settings_file
