// The control panel's names for displays, its numbers, and the words of its view command.
#pragma once

#include "Common/MultiMonitor/DisplayNumbers.h"

#include <boost/tokenizer.hpp>

#include <cstdint>
#include <map>
#include <string>

/// The moniker of each display flag: "#" and two characters. What the driver names beyond the
/// display flags stands under 0.
using MonikerMap = std::map<uint32_t, std::string>;

/// The displays in the order in which a view tries them.
constexpr uint32_t kViewOrder[] = {
    DisplayNumbers::MD_NB,  DisplayNumbers::MD_CRT,  DisplayNumbers::MD_TV,
    DisplayNumbers::MD_DVI, DisplayNumbers::MD_HDMI, DisplayNumbers::MD_DP,
};

/// Walks the monikers of a text in which commas stand between them:
///   for (MonikerTokenizer t(text); t.GetNext();) Use(t.token());
/// Nothing between two commas is no token.
class MonikerTokenizer {
 public:
  explicit MonikerTokenizer(std::string text);
  MonikerTokenizer(const MonikerTokenizer&) = delete;
  MonikerTokenizer& operator=(const MonikerTokenizer&) = delete;

  /// Goes on to the next token, which is the first one at first. @return false when there is none
  bool GetNext();
  /// The token that GetNext went to.
  const std::string& token() const { return token_; }

 private:
  using Tokenizer = boost::tokenizer<boost::char_separator<char>>;

  const std::string text_;
  const Tokenizer tokenizer_;
  Tokenizer::iterator next_;
  std::string token_;
};

/// The display flag of a display type of NvGetDisplayInfo; 0 for any other type.
uint32_t DisplayOfNvCplType(uint32_t display_type);

/// The name under which the control panel's command line knows a display: the two characters behind
/// the "#", or as many of them as there are.
std::string NvCplDisplayName(const std::string& moniker);

// What NvGetWindowsDisplayState tells.
constexpr int32_t kNvCplSingle = 4;
constexpr int32_t kNvCplDualView = 5;
constexpr int32_t kNvCplClone = 6;
constexpr int32_t kNvCplHorizontalSpan = 7;
constexpr int32_t kNvCplVerticalSpan = 8;

/// The DM_* value of a display state; 0 for a state without one.
uint32_t ModeOfNvCplState(int32_t state);

/// The line behind "rundll32.exe " that sets a view.
/// @param gpu     the GPU's or display's number, "0" for the one that is meant when none is chosen
/// @param state   kNvCplSingle, which shows `first` alone, kNvCplDualView or kNvCplClone
/// @param first   a name of NvCplDisplayName; an empty one is left out
/// @param second  the same
/// @return "" without a GPU, and for a state that has no view command
std::string DtcfgLine(const std::string& gpu, int32_t state, const std::string& first,
                      const std::string& second);
