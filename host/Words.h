// Exported numbers as words for people and programs, and back.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// "single", "clone", "extend", "hspan", "vspan"; "unknown" for anything else.
std::string ModeWord(uint32_t exported_mode);

/// A mode word or a decimal number; absent when it is neither.
std::optional<uint32_t> ParseMode(const std::string& text);

/// The displays of an exported mask as words: "panel", "crt", "tv", "dvi".
std::vector<std::string> DisplayWords(uint32_t exported_mask);

/// "panel, crt"; "none" for an empty mask.
std::string DisplayText(uint32_t exported_mask);

/// A display word, or a number (0x for hexadecimal) that may hold several displays; absent when it
/// is neither.
std::optional<uint32_t> ParseDisplays(const std::string& text);

/// "Intel", "AMD", "NVIDIA", "VIA", "SiS" for an exported vendor code, "unknown" for anything else.
std::string VendorWord(uint32_t exported_vendor);
