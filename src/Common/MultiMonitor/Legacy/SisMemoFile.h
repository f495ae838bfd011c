// The file in which the SiS back-end keeps what it knows of its displays.
#pragma once

#include "Common/MultiMonitor/Legacy/SisMemos.h"

#include <string>

/// The keys of one display; the two sections have the same.
struct SisMemoKeys {
  struct Value {
    const char* key;
    uint32_t SisSwitchRecord::*field;
  };
  const char* dirty;
  Value values[4];
};

extern const SisMemoKeys kSisLcdKeys;
extern const SisMemoKeys kSisCrtKeys;

/// SisDispInfo.ini in the folder of the host's executable, as a narrow path; empty when Windows
/// does not tell that folder, or it is longer than profile files take.
std::string FindSisMemoFile();

/// Leaves the memo as it is when the section does not know the display. An empty path or section
/// knows none.
void ReadSisMemo(const std::string& path, const std::string& section, const SisMemoKeys& keys,
                 SisDisplayMemo* memo);

/// Writes a memo that is known; failures are not told. Nothing for an empty path or section.
void WriteSisMemo(const std::string& path, const std::string& section, const SisMemoKeys& keys,
                  const SisDisplayMemo& memo);
