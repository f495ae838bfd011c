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

  if (numbers.size() < 4) return false;
  *first = static_cast<uint16_t>(numbers[0]);
  *second = static_cast<uint16_t>(numbers[1]);
  *third = static_cast<uint16_t>(numbers[2]);
  *fourth = static_cast<uint16_t>(numbers[3]);
  return true;
}
