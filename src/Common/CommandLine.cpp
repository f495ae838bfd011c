#include "Common/CommandLine.h"

#include "Common/Text.h"

namespace {

// Tried in this order.
constexpr std::wstring_view kPrefixes[] = {L"--", L"-", L"/"};

// The length of the prefix that makes `argument` a switch; 0 when it is none. A prefix alone names
// no switch.
size_t SwitchPrefixLength(std::wstring_view argument) {
  for (const std::wstring_view prefix : kPrefixes) {
    const bool starts = argument.substr(0, prefix.size()) == prefix;
    if (starts && argument.size() > prefix.size()) return prefix.size();
  }
  return 0;
}

}  // namespace

CommandLine::CommandLine(const std::vector<std::wstring>& arguments) {
  bool switches_ended = false;
  for (size_t i = 1; i < arguments.size(); ++i) {
    const std::wstring& argument = arguments[i];
    if (!switches_ended && argument == L"--") {
      switches_ended = true;
      continue;
    }
    const size_t prefix = switches_ended ? 0 : SwitchPrefixLength(argument);
    if (prefix == 0) {
      args_.push_back(argument);
      continue;
    }
    const size_t equals = argument.find(L'=', prefix);
    const std::wstring name = ToLowerAscii(std::wstring_view(argument).substr(
        prefix, equals == std::wstring::npos ? equals : equals - prefix));
    switches_[name] = equals == std::wstring::npos ? L"" : argument.substr(equals + 1);
  }
}

bool CommandLine::HasSwitch(std::string_view name) const { return GetSwitchValue(name) != nullptr; }

const std::wstring* CommandLine::GetSwitchValue(std::string_view name) const {
  const auto found = switches_.find(WideFromNarrow(name));
  return found != switches_.end() ? &found->second : nullptr;
}
