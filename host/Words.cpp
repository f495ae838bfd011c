#include "host/Words.h"

#include "ostrel/ostrel.h"

namespace {

struct Word {
  uint32_t number;
  const char* text;
};

constexpr Word kModes[] = {
    {OSTREL_MODE_SINGLE, "single"}, {OSTREL_MODE_CLONE, "clone"}, {OSTREL_MODE_EXTEND, "extend"},
    {OSTREL_MODE_HSPAN, "hspan"},   {OSTREL_MODE_VSPAN, "vspan"},
};

constexpr Word kDisplays[] = {
    {OSTREL_DISPLAY_PANEL, "panel"},
    {OSTREL_DISPLAY_CRT, "crt"},
    {OSTREL_DISPLAY_TV, "tv"},
    {OSTREL_DISPLAY_DVI, "dvi"},
};

constexpr Word kVendors[] = {
    {OSTREL_VENDOR_INTEL, "Intel"}, {OSTREL_VENDOR_AMD, "AMD"}, {OSTREL_VENDOR_NVIDIA, "NVIDIA"},
    {OSTREL_VENDOR_VIA, "VIA"},     {OSTREL_VENDOR_SIS, "SiS"},
};

template <size_t kCount>
std::string WordOf(const Word (&words)[kCount], uint32_t number) {
  for (const Word& word : words) {
    if (word.number == number) return word.text;
  }
  return "unknown";
}

template <size_t kCount>
std::optional<uint32_t> NumberOf(const Word (&words)[kCount], const std::string& text) {
  for (const Word& word : words) {
    if (text == word.text) return word.number;
  }
  try {
    size_t used = 0;
    const unsigned long number = std::stoul(text, &used, 0);
    if (used == text.size() && text[0] != '-') return static_cast<uint32_t>(number);
  } catch (const std::exception&) {
    // Neither a word nor a number.
  }
  return std::nullopt;
}

}  // namespace

std::string ModeWord(uint32_t exported_mode) { return WordOf(kModes, exported_mode); }

std::optional<uint32_t> ParseMode(const std::string& text) { return NumberOf(kModes, text); }

std::vector<std::string> DisplayWords(uint32_t exported_mask) {
  std::vector<std::string> words;
  for (const Word& word : kDisplays) {
    if ((exported_mask & word.number) != 0) words.emplace_back(word.text);
  }
  return words;
}

std::string DisplayText(uint32_t exported_mask) {
  std::string text;
  for (const std::string& word : DisplayWords(exported_mask)) {
    text += (text.empty() ? "" : ", ") + word;
  }
  return text.empty() ? "none" : text;
}

std::optional<uint32_t> ParseDisplays(const std::string& text) { return NumberOf(kDisplays, text); }

std::string VendorWord(uint32_t exported_vendor) { return WordOf(kVendors, exported_vendor); }
