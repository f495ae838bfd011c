// The display hotkey, pressed: the whole story of one session, told as it happens.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/Report.h"
#include "host/Stage.h"

struct PressPlan {
  uint32_t times = 1;             // presses of the hotkey
  std::vector<std::string> keys;  // then these: left right up down enter esc
  uint32_t interval = 1000;       // milliseconds between two presses or keys
  std::string expected;           // how the machine is to end, "" for no wish
};

/// The virtual key of a word of PressPlan::keys; 0 when there is none.
uint32_t KeyFromWord(const std::string& word);

/// Presses, waits for the pop-up to go, and tells mode before and after, notifications and changes.
/// @return an exit code of the host
int Press(Stage& stage, Report& report, const PressPlan& plan);

/// Waits for the hotkey (like "win+p") and presses at each, until Ctrl+C or a closed window.
int Listen(Stage& stage, Report& report, const std::string& hotkey);
