#pragma once

#include <string_view>

/// Whether the whole of `text` fits `pattern`, case-sensitively: "*" any run, "?" at most one
/// character, "\" takes the next character of the pattern as it is. A match that needs more than 16
/// wildcards inside each other is given up.
bool MatchPattern(std::string_view text, std::string_view pattern);
