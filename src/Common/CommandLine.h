// A command line split into switches and plain arguments. The library has none of its own: it reads
// its host's.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

class CommandLine {
 public:
  /// @param arguments  the program name first, which is skipped; then switches ("--name=value",
  /// "-name", "/name") and
  ///                   plain arguments. A lone "--" makes everything behind it plain.
  explicit CommandLine(const std::vector<std::wstring>& arguments);

  /// The command line of this process, split by the shell's rules.
  static CommandLine ForCurrentProcess();

  /// @param name  in lower case; switches compare in lower case
  bool HasSwitch(std::string_view name) const;
  /// The wide value of a switch, null when the switch is absent. The last of several switches of a
  /// name counts.
  const std::wstring* GetSwitchValue(std::string_view name) const;
  /// The value of a switch as narrow text; "" when it is absent, and, with a warning in the log,
  /// when it is not ASCII.
  std::string GetSwitchValueASCII(std::string_view name) const;
  /// The plain arguments, without the program name.
  const std::vector<std::wstring>& GetArgs() const { return args_; }

 private:
  std::map<std::wstring, std::wstring> switches_;
  std::vector<std::wstring> args_;
};
