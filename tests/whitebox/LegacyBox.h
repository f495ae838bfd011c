// The SiS and VIA back-ends from inside. Objects end by delete through IMMonitor.
#pragma once

#include <string>

#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/Legacy/SisMemos.h"

struct LegacyBox {
  IMMonitor* (*NewSisMMImpl)();
  /// An object that finds no active display and says so with success.
  IMMonitor* (*NewSisMMImplInTheDark)();
  /// Makes an object; where that raises, null and what was raised: a bare narrow text as it stands,
  /// anything else as "something else".
  IMMonitor* (*NewViaMMImpl)(std::string* raised);
  bool (*HasExtension)(IMMonitor* monitor);

  /// A binding of its own: which entries are bound, in their order, as "x" or "-".
  /// @param file_name  null: no library
  /// @param loaded     out; the binding's result
  std::string (*BindEntries)(const char* file_name, BOOL* loaded);

  std::string (*FindMemoFile)();
  void (*ReadMemo)(const std::string& path, const std::string& section, bool crt,
                   SisDisplayMemo* memo);
  void (*WriteMemo)(const std::string& path, const std::string& section, bool crt,
                    const SisDisplayMemo& memo);
};

const LegacyBox* GetLegacyBox();
