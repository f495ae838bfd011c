#include "Common/MultiMonitor/Nvidia/NvidiaMonikers.h"

#include <utility>

namespace {

struct TypeRow {
  uint32_t display_type;
  uint32_t display;
};
constexpr TypeRow kTypes[] = {
    {0x1000, DisplayNumbers::MD_CRT}, {0x2000, DisplayNumbers::MD_DVI},
    {0x2001, DisplayNumbers::MD_NB},  {0x2002, DisplayNumbers::MD_HDMI},
    {0x3000, DisplayNumbers::MD_TV},
};

struct StateRow {
  int32_t state;
  uint32_t mode;
  const char* word;  // null: there is no command for it
  bool takes_second;
};
constexpr StateRow kStates[] = {
    {kNvCplSingle, DisplayNumbers::DM_SINGLE, "standard", false},
    {kNvCplDualView, DisplayNumbers::DM_EXTEND, "dualview", true},
    {kNvCplClone, DisplayNumbers::DM_CLONE, "clone", true},
    {kNvCplHorizontalSpan, DisplayNumbers::DM_HSPAN, nullptr, false},
    {kNvCplVerticalSpan, DisplayNumbers::DM_VSPAN, nullptr, false},
};

const StateRow* FindState(int32_t state) {
  for (const StateRow& row : kStates) {
    if (row.state == state) return &row;
  }
  return nullptr;
}

void AppendWord(const std::string& word, std::string* line) {
  if (!word.empty()) *line += " " + word;
}

}  // namespace

MonikerTokenizer::MonikerTokenizer(std::string text)
    : text_(std::move(text)),
      tokenizer_(text_, boost::char_separator<char>(",")),
      next_(tokenizer_.begin()) {}

bool MonikerTokenizer::GetNext() {
  if (next_ == tokenizer_.end()) return false;
  token_ = *next_;
  ++next_;
  return true;
}

uint32_t DisplayOfNvCplType(uint32_t display_type) {
  for (const TypeRow& row : kTypes) {
    if (row.display_type == display_type) return row.display;
  }
  return 0;
}

std::string NvCplDisplayName(const std::string& moniker) {
  constexpr size_t kNameLength = 2;
  return moniker.empty() ? std::string() : moniker.substr(1, kNameLength);
}

uint32_t ModeOfNvCplState(int32_t state) {
  const StateRow* const row = FindState(state);
  return row != nullptr ? row->mode : 0;
}

std::string DtcfgLine(const std::string& gpu, int32_t state, const std::string& first,
                      const std::string& second) {
  const StateRow* const row = FindState(state);
  if (gpu.empty() || row == nullptr || row->word == nullptr) return "";
  std::string line = "NvCpl.DLL,dtcfg setview";
  AppendWord(gpu, &line);
  AppendWord(row->word, &line);
  AppendWord(first, &line);
  if (row->takes_second) AppendWord(second, &line);
  return line;
}
