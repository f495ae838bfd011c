// EDIDs in files, as people have them: the bytes themselves, or their hexadecimal text.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// What() tells in a few words why a file gives no EDID, good or bad.
class UnreadableEdid : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The bytes that a file's content stands for. A content of hexadecimal digits in white space and
/// commas, with or without "0x", is text; any other content is the bytes themselves.
/// @throws UnreadableEdid for a text that is no hexadecimal one
std::vector<uint8_t> EdidFromContent(std::string_view content);

/// @param path  UTF-8; "-" is standard input
/// @throws UnreadableEdid when it cannot be read, too
std::vector<uint8_t> ReadEdidFile(const std::string& path);
