#include <array>
#include <boost/lexical_cast.hpp>
#include <boost/tokenizer.hpp>
#include <vector>

#include "Common/FileVersion.h"

bool ParseVersion(const std::string& text, uint16_t* first, uint16_t* second, uint16_t* third,
                  uint16_t* fourth) {
  if (text.empty()) return false;
  const boost::char_separator<char> full_stop(".");
  const boost::tokenizer<boost::char_separator<char>> tokens(text, full_stop);
  std::vector<uint32_t> numbers;
  for (const std::string& token : tokens) numbers.push_back(boost::lexical_cast<uint32_t>(token));

  const std::array<uint16_t*, 4> outputs = {first, second, third, fourth};
  if (numbers.size() < outputs.size()) return false;
  for (size_t i = 0; i < outputs.size(); ++i) *outputs[i] = static_cast<uint16_t>(numbers[i]);
  return true;
}
