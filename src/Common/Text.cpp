#include "Common/Text.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr uint32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// Takes one code point off the front of wide text, which is UTF-16 on Windows and UTF-32 elsewhere.
uint32_t NextCodePoint(std::wstring_view text, size_t* at) {
  const uint32_t unit = static_cast<uint32_t>(text[(*at)++]);
  if (IsHighSurrogate(unit) && *at < text.size() &&
      IsLowSurrogate(static_cast<uint32_t>(text[*at]))) {
    const uint32_t low = static_cast<uint32_t>(text[(*at)++]);
    return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
  }
  const bool lone_surrogate = IsHighSurrogate(unit) || IsLowSurrogate(unit);
  return lone_surrogate || unit > 0x10FFFF ? kReplacement : unit;
}

void AppendUtf8(uint32_t code_point, std::string* out) {
  const auto continuation = [](uint32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
  if (code_point < 0x80) {
    *out += static_cast<char>(code_point);
  } else if (code_point < 0x800) {
    *out += static_cast<char>(0xC0 | (code_point >> 6));
    *out += continuation(code_point);
  } else if (code_point < 0x10000) {
    *out += static_cast<char>(0xE0 | (code_point >> 12));
    *out += continuation(code_point >> 6);
    *out += continuation(code_point);
  } else {
    *out += static_cast<char>(0xF0 | (code_point >> 18));
    *out += continuation(code_point >> 12);
    *out += continuation(code_point >> 6);
    *out += continuation(code_point);
  }
}

// What the first byte of a UTF-8 sequence says: how many more bytes follow, its own bits, and the
// lowest code point that may be written so long.
struct Lead {
  uint8_t mask;
  uint8_t value;
  uint8_t followers;
  uint32_t lowest;
};
constexpr Lead kLeads[] = {
    {0x80, 0x00, 0, 0},
    {0xE0, 0xC0, 1, 0x80},
    {0xF0, 0xE0, 2, 0x800},
    {0xF8, 0xF0, 3, 0x10000},
};

// Takes one code point off the front of UTF-8 text. A byte that begins nothing valid is replaced
// alone, so that what follows it is still read.
uint32_t NextCodePoint(std::string_view text, size_t* at) {
  const uint8_t first = static_cast<uint8_t>(text[(*at)++]);
  const auto lead = std::find_if(std::begin(kLeads), std::end(kLeads), [first](const Lead& row) {
    return (first & row.mask) == row.value;
  });
  if (lead == std::end(kLeads) || text.size() - *at < lead->followers) return kReplacement;
  uint32_t code_point = first & static_cast<uint8_t>(~lead->mask);
  for (size_t i = 0; i < lead->followers; ++i) {
    const uint8_t byte = static_cast<uint8_t>(text[*at + i]);
    if ((byte & 0xC0) != 0x80) return kReplacement;
    code_point = (code_point << 6) | (byte & 0x3F);
  }
  const bool surrogate = IsHighSurrogate(code_point) || IsLowSurrogate(code_point);
  if (code_point < lead->lowest || code_point > 0x10FFFF || surrogate) return kReplacement;
  *at += lead->followers;
  return code_point;
}

void AppendWide(uint32_t code_point, std::wstring* out) {
  if constexpr (sizeof(wchar_t) == 2) {
    if (code_point >= 0x10000) {
      *out += static_cast<wchar_t>(0xD800 + ((code_point - 0x10000) >> 10));
      *out += static_cast<wchar_t>(0xDC00 + ((code_point - 0x10000) & 0x3FF));
      return;
    }
  }
  *out += static_cast<wchar_t>(code_point);
}

template <typename Character>
std::basic_string<Character> LowerAscii(std::basic_string_view<Character> text) {
  std::basic_string<Character> lower(text);
  for (Character& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<Character>(c - 'A' + 'a');
  }
  return lower;
}

}  // namespace

std::string NarrowFromWide(std::wstring_view text) {
  std::string narrow;
  narrow.reserve(text.size());
  for (size_t at = 0; at < text.size();) AppendUtf8(NextCodePoint(text, &at), &narrow);
  return narrow;
}

std::wstring WideFromNarrow(std::string_view text) {
  std::wstring wide;
  wide.reserve(text.size());
  for (size_t at = 0; at < text.size();) AppendWide(NextCodePoint(text, &at), &wide);
  return wide;
}

std::string ToLowerAscii(std::string_view text) { return LowerAscii(text); }
std::wstring ToLowerAscii(std::wstring_view text) { return LowerAscii(text); }

bool IsAscii(std::wstring_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](wchar_t c) { return static_cast<uint32_t>(c) < 0x80; });
}
