// Which VLOG levels are written, by source file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The part of a source path that the patterns are compared with: no folders, cut at the first full
/// stop, without a trailing "-inl".
std::string_view VerbosityModuleName(std::string_view file);

class VerbosityTable {
 public:
  /// @param v           the default level's text, null when the switch is absent
  /// @param vmodule     "pattern=level,pattern=level"; "" when the switch is absent
  /// @param complaints  out; the warnings to be logged, in order
  VerbosityTable(const std::string* v, const std::string& vmodule,
                 std::vector<std::string>* complaints);

  /// The level of the first pattern that the file's module name fits, else the default level.
  int32_t LevelFor(const char* file) const;
  /// The highest level that any file can have.
  int32_t Ceiling() const;

 private:
  struct Pattern {
    std::string text;
    int32_t level;
  };

  void AddPattern(const std::string& pair, std::vector<std::string>* complaints);

  int32_t default_level_ = 0;
  std::vector<Pattern> patterns_;
};
