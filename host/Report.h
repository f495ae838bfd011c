// What the host says: lines for a person as things happen, or one JSON document at the end for a
// program.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

class Report {
 public:
  explicit Report(bool as_json) : as_json_(as_json) {}

  /// One fact: printed as "<title padded>  <text>", or kept under `key` in the document.
  void Fact(const std::string& title, const std::string& text, const std::string& key,
            const nlohmann::json& value);

  /// One event in time: printed like a fact, or appended to the document's "events".
  void Event(const std::string& title, const std::string& text, nlohmann::json event);

  /// A further line under the last event, for people only.
  void Detail(const std::string& text);

  /// Prints the document, when there is to be one.
  void Finish();

 private:
  void Line(const std::string& title, const std::string& text);

  bool as_json_;
  nlohmann::json document_ = nlohmann::json::object();
};
