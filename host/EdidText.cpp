// What the content of an EDID file stands for.
#include <algorithm>
#include <optional>

#include "host/EdidInput.h"

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBetween = " \t\r\n\v\f,";

bool IsText(unsigned char c) {
  return (c >= 0x20 && c < 0x7F) || kBetween.find(static_cast<char>(c)) != std::string_view::npos;
}

std::optional<uint8_t> DigitOf(char c) {
  if (c >= '0' && c <= '9') return static_cast<uint8_t>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<uint8_t>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<uint8_t>(c - 'A' + 10);
  return std::nullopt;
}

// One digit is a byte; more of them are two a byte.
void AppendWord(std::string_view word, std::vector<uint8_t>* bytes) {
  if (word.size() > 2 && (word.substr(0, 2) == "0x" || word.substr(0, 2) == "0X")) {
    word.remove_prefix(2);
  }
  std::vector<uint8_t> digits;
  for (const char c : word) {
    const std::optional<uint8_t> digit = DigitOf(c);
    if (!digit) throw UnreadableEdid("neither an EDID nor hexadecimal text");
    digits.push_back(*digit);
  }
  if (digits.size() == 1) digits.insert(digits.begin(), 0);
  if (digits.size() % 2 != 0) throw UnreadableEdid("half a byte in its hexadecimal text");
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes->push_back(static_cast<uint8_t>(digits[i] << 4 | digits[i + 1]));
  }
}

}  // namespace

std::vector<uint8_t> EdidFromContent(std::string_view content) {
  std::string_view text = content;
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    text.remove_prefix(kByteOrderMark.size());
  }
  if (!std::all_of(text.begin(), text.end(), IsText)) return {content.begin(), content.end()};

  std::vector<uint8_t> bytes;
  size_t begin = text.find_first_not_of(kBetween);
  while (begin != std::string_view::npos) {
    const size_t end = std::min(text.find_first_of(kBetween, begin), text.size());
    AppendWord(text.substr(begin, end - begin), &bytes);
    begin = text.find_first_not_of(kBetween, end);
  }
  return bytes;
}
