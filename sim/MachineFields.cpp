#include "sim/MachineFields.h"

#include "sim/Machine.h"

namespace sim {
namespace {

uint32_t LineOf(const toml::node& node) { return node.source().begin.line; }

}  // namespace

void Complaint::Raise(uint32_t line, const std::string& field, const std::string& what) const {
  throw MachineFileError(path_ + ", line " + std::to_string(line) + ", field \"" + field +
                         "\": " + what);
}

const toml::node* Fields::Find(const std::string& field) {
  asked_.insert(field);
  return table_.get(field);
}

std::string Fields::Text(const std::string& field) { return Text(field, Need(field)); }

std::string Fields::TextOr(const std::string& field, const std::string& usual) {
  const toml::node* node = Find(field);
  return node != nullptr ? Text(field, *node) : usual;
}

uint32_t Fields::Number(const std::string& field, int64_t most) {
  return Number(field, Need(field), most);
}

uint32_t Fields::NumberOr(const std::string& field, uint32_t usual, int64_t most) {
  const toml::node* node = Find(field);
  return node != nullptr ? Number(field, *node, most) : usual;
}

bool Fields::TruthOr(const std::string& field, bool usual) {
  const toml::node* node = Find(field);
  if (node == nullptr) return usual;
  if (!node->is_boolean()) Raise(field, *node, "true or false is needed");
  return node->as_boolean()->get();
}

std::vector<std::string> Fields::Texts(const std::string& field) {
  return Texts(field, Need(field));
}

std::vector<std::string> Fields::TextsOrNone(const std::string& field) {
  const toml::node* node = Find(field);
  return node != nullptr ? Texts(field, *node) : std::vector<std::string>();
}

std::vector<uint32_t> Fields::NumbersOrNone(const std::string& field, int64_t most) {
  const toml::node* node = Find(field);
  std::vector<uint32_t> numbers;
  if (node == nullptr) return numbers;
  if (!node->is_array()) Raise(field, *node, "a list of whole numbers is needed");
  for (const toml::node& element : *node->as_array()) {
    numbers.push_back(Number(field, element, most));
  }
  return numbers;
}

Fields Fields::Table(const std::string& field, const toml::node& node) const {
  if (!node.is_table()) Raise(field, node, "a table is needed");
  return {complaint_, *node.as_table(), Full(field), LineOf(node)};
}

std::vector<Fields> Fields::Tables(const std::string& field) {
  const toml::node* node = Find(field);
  std::vector<Fields> tables;
  if (node == nullptr) return tables;
  if (!node->is_array()) {
    Raise(field, *node, "a list of tables, [[" + Full(field) + "]], is needed");
  }
  for (const toml::node& element : *node->as_array()) tables.push_back(Table(field, element));
  return tables;
}

void Fields::RefuseTheRest() const {
  for (const auto& [key, node] : table_) {
    const std::string field(key.str());
    if (asked_.count(field) == 0) {
      complaint_.Raise(key.source().begin.line, Full(field), "there is no such field");
    }
  }
}

void Fields::Raise(const std::string& field, const std::string& what) const {
  const toml::node* node = table_.get(field);
  complaint_.Raise(node != nullptr ? LineOf(*node) : line_, Full(field), what);
}

void Fields::Raise(const std::string& field, const toml::node& node,
                   const std::string& what) const {
  complaint_.Raise(LineOf(node), Full(field), what);
}

std::string Fields::Full(const std::string& field) const {
  return name_.empty() ? field : name_ + "." + field;
}

const toml::node& Fields::Need(const std::string& field) {
  const toml::node* node = Find(field);
  if (node == nullptr) complaint_.Raise(line_, Full(field), "is missing");
  return *node;
}

std::string Fields::Text(const std::string& field, const toml::node& node) const {
  if (!node.is_string()) Raise(field, node, "a text is needed");
  return node.as_string()->get();
}

uint32_t Fields::Number(const std::string& field, const toml::node& node, int64_t most) const {
  if (!node.is_integer()) Raise(field, node, "a whole number is needed");
  const int64_t value = node.as_integer()->get();
  if (value < 0 || value > most) {
    Raise(field, node, "a number from 0 to " + std::to_string(most) + " is needed");
  }
  return static_cast<uint32_t>(value);
}

std::vector<std::string> Fields::Texts(const std::string& field, const toml::node& node) const {
  if (!node.is_array()) Raise(field, node, "a list of texts is needed");
  std::vector<std::string> texts;
  for (const toml::node& element : *node.as_array()) texts.push_back(Text(field, element));
  return texts;
}

}  // namespace sim
