#include "Common/Verbosity.h"

#include <algorithm>

#include "Common/ParseInt.h"
#include "Common/Wildcard.h"

namespace {

// A pattern and a level with "=" between them, neither empty.
bool IsPair(const std::string& piece) {
  const size_t equals = piece.find('=');
  return equals != std::string::npos && equals > 0 && equals + 1 < piece.size();
}

std::vector<std::string> SplitAtCommas(const std::string& text) {
  std::vector<std::string> pieces;
  for (size_t start = 0; start <= text.size();) {
    const size_t end = std::min(text.find(',', start), text.size());
    if (end > start) pieces.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return pieces;
}

}  // namespace

std::string_view VerbosityModuleName(std::string_view file) {
  constexpr std::string_view kInline = "-inl";
  const size_t separator = file.find_last_of("\\/");
  if (separator != std::string_view::npos) file.remove_prefix(separator + 1);
  file = file.substr(0, file.find('.'));
  const bool is_inline =
      file.size() >= kInline.size() && file.substr(file.size() - kInline.size()) == kInline;
  if (is_inline) file.remove_suffix(kInline.size());
  return file;
}

VerbosityTable::VerbosityTable(const std::string* v, const std::string& vmodule,
                               std::vector<std::string>* complaints) {
  if (v != nullptr) {
    default_level_ = ParseLenientInt(*v);
    int32_t whole = 0;
    if (!ParseWholeInt(*v, &whole)) {
      complaints->push_back("Parsed v switch \"" + *v + "\" as " + std::to_string(default_level_));
    }
  }
  const std::vector<std::string> pieces = SplitAtCommas(vmodule);
  if (!std::all_of(pieces.begin(), pieces.end(), IsPair)) {
    complaints->push_back("Could not fully parse vmodule switch \"" + vmodule + "\"");
  }
  for (const std::string& piece : pieces) {
    if (IsPair(piece)) AddPattern(piece, complaints);
  }
}

void VerbosityTable::AddPattern(const std::string& pair, std::vector<std::string>* complaints) {
  const size_t equals = pair.find('=');
  const std::string value = pair.substr(equals + 1);
  const Pattern pattern = {pair.substr(0, equals), ParseLenientInt(value)};
  int32_t whole = 0;
  if (!ParseWholeInt(value, &whole)) {
    complaints->push_back("Parsed vlog level for \"" + pattern.text + "=" + value + "\" as " +
                          std::to_string(pattern.level));
  }
  patterns_.push_back(pattern);
}

int32_t VerbosityTable::LevelFor(const char* file) const {
  const std::string_view module_name = VerbosityModuleName(file);
  for (const Pattern& pattern : patterns_) {
    if (MatchPattern(module_name, pattern.text)) return pattern.level;
  }
  return default_level_;
}

int32_t VerbosityTable::Ceiling() const {
  int32_t ceiling = default_level_;
  for (const Pattern& pattern : patterns_) ceiling = std::max(ceiling, pattern.level);
  return ceiling;
}
