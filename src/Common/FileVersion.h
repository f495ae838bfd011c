// Versions of files, such as a vendor library's.
#pragma once

#include <cstdint>
#include <string>

/// Reads the fixed version of a file as "8.1.2.1050".
/// @param path  never null; null fails
/// @param text  out; untouched on failure
/// @return false for a file without a version resource, with nothing logged
bool GetFileVersion(const wchar_t* path, std::string* text);

/// Splits a version text at its full stops. The first four numbers are stored, each cut to 16 bits.
/// @return false, with the outputs unchanged, for an empty text or fewer than four numbers
/// @throws boost::bad_lexical_cast for a part that is not a number, wherever it stands
bool ParseVersion(const std::string& text, uint16_t* first, uint16_t* second, uint16_t* third,
                  uint16_t* fourth);
