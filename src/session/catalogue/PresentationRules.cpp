#include "session/catalogue/PresentationRules.h"

#include <algorithm>

namespace catalogue {
namespace {

std::string_view WithoutBlanks(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

const PresentationType* FindPresentationType(uint32_t type) {
  for (const PresentationType* row : {&kSmallPresentation, &kLargePresentation}) {
    if (row->type == type) return row;
  }
  return nullptr;
}

// Deliberate: one connector only, the first of the table, however many are connected.
const PresentationConnector* FindPresentationConnector(uint32_t connected) {
  for (const PresentationConnector& row : kPresentationConnectors) {
    if ((connected & row.display) != 0) return &row;
  }
  return nullptr;
}

std::vector<std::string> SplitProjectorNames(std::string_view text) {
  std::vector<std::string> names;
  if (text.empty()) return names;
  for (size_t start = 0;;) {
    const size_t comma = text.find(',', start);
    names.emplace_back(WithoutBlanks(text.substr(start, comma - start)));
    if (comma == std::string_view::npos) return names;
    start = comma + 1;
  }
}

// Deliberate: neither case nor blanks are forgiven.
bool IsNameListed(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace catalogue
