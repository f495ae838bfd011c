// Conversions between narrow and wide text. Narrow means UTF-8 here; what cannot be converted
// becomes U+FFFD.
#pragma once

#include <string>
#include <string_view>

std::string NarrowFromWide(std::wstring_view text);
std::wstring WideFromNarrow(std::string_view text);

/// Lower-cases 'A' to 'Z' and nothing else, whatever the locale.
std::string ToLowerAscii(std::string_view text);
std::wstring ToLowerAscii(std::wstring_view text);

bool IsAscii(std::wstring_view text);
