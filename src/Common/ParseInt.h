// Reading numbers from switches, variables and version texts.
#pragma once

#include <cstdint>
#include <string>

/// Takes what a text begins with as a decimal number, as the run-time library's string-to-long
/// does: "2abc" is 2, "abc" is 0. What does not fit ends at the nearest 32-bit number.
int32_t ParseLenientInt(const std::string& text);

/// Reads a text that is wholly a decimal number, with no white space around it.
/// @param value  out; untouched on failure
/// @return false for anything else, a number beyond 32 bits included
bool ParseWholeInt(const std::string& text, int32_t* value);
