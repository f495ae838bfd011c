// `ostrel-host edid`: what the library makes of a monitor. Needs neither the library nor a machine.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What the library makes of a block of bytes. Texts are empty where nothing is known.
struct EdidFacts {
  std::string load;  // "loaded", "too short", "bad header" or "bad checksum"
  std::string name;  // control characters, bytes above 126 and backslashes as \xNN
  std::string width;
  std::string height;
  std::string refresh;
  std::string preferred;  // "1" or "0"
};
EdidFacts DescribeEdid(const std::vector<uint8_t>& bytes);

/// One line on standard output for each file that can be read, one on standard error for the
/// others.
/// @param files  UTF-8; none, or "-", is standard input
/// @return the host's exit code
int ShowEdids(const std::vector<std::string>& files);

extern const char kEdidHelp[];
