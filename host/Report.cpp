#include "host/Report.h"

#include <cstdio>

void Report::Fact(const std::string& title, const std::string& text, const std::string& key,
                  const nlohmann::json& value) {
  document_[key] = value;
  if (!as_json_) Line(title, text);
}

void Report::Event(const std::string& title, const std::string& text, nlohmann::json event) {
  document_["events"].push_back(std::move(event));
  if (!as_json_) Line(title, text);
}

void Report::Detail(const std::string& text) {
  if (!as_json_) Line("", text);
}

void Report::Finish() {
  if (as_json_) std::printf("%s\n", document_.dump(2).c_str());
}

void Report::Line(const std::string& title, const std::string& text) {
  std::printf("%-14s%s\n", title.c_str(), text.c_str());
  std::fflush(stdout);  // the reader may be another program that acts while the pop-up is open
}
