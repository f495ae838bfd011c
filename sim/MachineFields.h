// One table of a machine file, read field by field. What cannot be used is told with file, line and
// field; a field that nobody asked for is an error, too.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <toml++/toml.h>

namespace sim {

/// Raises MachineFileError for one file.
class Complaint {
 public:
  explicit Complaint(std::string path) : path_(std::move(path)) {}
  [[noreturn]] void Raise(uint32_t line, const std::string& field, const std::string& what) const;

 private:
  std::string path_;
};

/// It remembers which fields were asked for. Every reader raises MachineFileError for a field of
/// another type; those without "Or" do so for a field that is missing, too.
class Fields {
 public:
  static constexpr int64_t kLargest = 0xFFFFFFFF;

  Fields(const Complaint& complaint, const toml::table& table, std::string name, uint32_t line)
      : complaint_(complaint), table_(table), name_(std::move(name)), line_(line) {}

  /// Null when the field is missing; either way it has been asked for.
  const toml::node* Find(const std::string& field);

  std::string Text(const std::string& field);
  std::string TextOr(const std::string& field, const std::string& usual);
  uint32_t Number(const std::string& field, int64_t most = kLargest);
  uint32_t NumberOr(const std::string& field, uint32_t usual, int64_t most = kLargest);
  bool TruthOr(const std::string& field, bool usual);
  std::vector<std::string> Texts(const std::string& field);
  /// Empty when the field is missing.
  std::vector<std::string> TextsOrNone(const std::string& field);
  /// Empty when the field is missing.
  std::vector<uint32_t> NumbersOrNone(const std::string& field, int64_t most = kLargest);
  /// A table in this one.
  Fields Table(const std::string& field, const toml::node& node) const;
  /// [[field]]; empty when there is none.
  std::vector<Fields> Tables(const std::string& field);

  const toml::table& table() const { return table_; }

  void RefuseTheRest() const;
  [[noreturn]] void Raise(const std::string& field, const std::string& what) const;

 private:
  [[noreturn]] void Raise(const std::string& field, const toml::node& node,
                          const std::string& what) const;
  std::string Full(const std::string& field) const;
  const toml::node& Need(const std::string& field);
  std::string Text(const std::string& field, const toml::node& node) const;
  uint32_t Number(const std::string& field, const toml::node& node, int64_t most) const;
  std::vector<std::string> Texts(const std::string& field, const toml::node& node) const;

  const Complaint& complaint_;
  const toml::table& table_;
  std::string name_;
  uint32_t line_;
  std::set<std::string> asked_;
};

}  // namespace sim
