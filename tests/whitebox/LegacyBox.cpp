#include "tests/whitebox/LegacyBox.h"

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/Legacy/SisMMImpl.h"
#include "Common/MultiMonitor/Legacy/SisMemoFile.h"
#include "Common/MultiMonitor/Legacy/VSisLib.h"
#include "Common/MultiMonitor/VendorBackends.h"

namespace {

class DarkSisMMImpl : public SisMMImpl {
 public:
  BOOL GetActiveDisplays(uint32_t* displays, uint32_t* display_count) override {
    *displays = 0;
    *display_count = 0;
    return TRUE;
  }
};

IMMonitor* NewSisMMImplInTheDark() { return new DarkSisMMImpl(); }

IMMonitor* NewVia(std::string* raised) {
  try {
    return NewViaMMImpl();
  } catch (const char* const& text) {
    *raised = text;
  } catch (...) {
    *raised = "something else";
  }
  return nullptr;
}

bool HasExtension(IMMonitor* monitor) {
  return dynamic_cast<IDisplayExtension*>(monitor) != nullptr;
}

std::string BindEntries(const char* file_name, BOOL* loaded) {
  VSisLib lib;
  *loaded = lib.Load(file_name);
  const bool bound[] = {
      lib.SwitchMode != nullptr,   lib.GetCurDeviceState != nullptr,
      lib.ChangeTVMode != nullptr, lib.GetDriverModeData != nullptr,
      lib.NoDeviceTest != nullptr,
  };
  std::string text;
  for (const bool entry : bound) text += entry ? 'x' : '-';
  return text;
}

const SisMemoKeys& KeysOf(bool crt) { return crt ? kSisCrtKeys : kSisLcdKeys; }

void ReadMemo(const std::string& path, const std::string& section, bool crt, SisDisplayMemo* memo) {
  ReadSisMemo(path, section, KeysOf(crt), memo);
}

void WriteMemo(const std::string& path, const std::string& section, bool crt,
               const SisDisplayMemo& memo) {
  WriteSisMemo(path, section, KeysOf(crt), memo);
}

const LegacyBox kBox = {
    NewSisMMImpl, NewSisMMImplInTheDark, NewVia,   HasExtension,
    BindEntries,  FindSisMemoFile,       ReadMemo, WriteMemo,
};

}  // namespace

const LegacyBox* GetLegacyBox() { return &kBox; }
