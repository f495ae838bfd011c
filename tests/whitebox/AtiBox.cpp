#include "tests/whitebox/AtiBox.h"

#include "Common/MultiMonitor/Amd/AtiMMImpl.h"
#include "Common/MultiMonitor/Amd/AtiMMImplDisplays.h"
#include "Common/MultiMonitor/Amd/VAtiLib.h"
#include "Common/MultiMonitor/VendorBackends.h"

namespace {

AtiMMImpl* Of(IMMonitor* ati) { return dynamic_cast<AtiMMImpl*>(ati); }

IDisplayExtension* ExtensionOf(IMMonitor* ati) { return Of(ati); }

bool GetMonitorEDID(IMMonitor* ati, uint32_t display, EdidBlob* edid) {
  return Of(ati)->GetMonitorEDID(display, edid);
}

void FreeMonitorEDID(IMMonitor* ati, EdidBlob* edid) { Of(ati)->FreeMonitorEDID(edid); }

BOOL GetMonitorName(IMMonitor* ati, uint32_t display, std::string* name) {
  return Of(ati)->GetMonitorName(display, name);
}

const char* GetLibraryName(IMMonitor* ati) { return Of(ati)->GetLibraryName(); }

BOOL ReadCapabilities(IMMonitor* ati) { return Of(ati)->ReadCapabilities(); }

std::string BindEntries(const char* file_name, BOOL* loaded) {
  VAtiLib lib;
  *loaded = lib.Load(file_name);
  const bool bound[] = {
      lib.GetCapabilities != nullptr,
      lib.GetConfiguration != nullptr,
      lib.SetConfiguration != nullptr,
      lib.EnumDisplays != nullptr,
      lib.GetConnectedDisplays != nullptr,
      lib.EnableExtendedDesktop != nullptr,
      lib.GetDisplaySwitchingCapability != nullptr,
      lib.GetActiveDisplays != nullptr,
      lib.SetActiveDisplays != nullptr,
      lib.SetConfigurationEx != nullptr,
      lib.GetAdapterID != nullptr,
      lib.GetDisplayVector != nullptr,
      lib.GetAdapterConfig != nullptr,
      lib.SetAdapterConfig != nullptr,
      lib.DisplayGetEdidData != nullptr,
      lib.DisplayGetDeviceConfig != nullptr,
      lib.GetDisplaySettings != nullptr,
  };
  std::string text;
  for (const bool entry : bound) text += entry ? 'x' : '-';
  return text;
}

uint32_t AdapterIndexWithoutLibrary() { return GetAtiAdapterIndex(nullptr); }

uint32_t TargetTypeWithoutLibrary() { return ReadAtiTargetType(nullptr); }

bool FindPanel(bool with_library, bool with_index, bool with_vector) {
  VAtiLib lib;
  lib.Load("AtiPdl64.dll");
  uint32_t index = 0;
  uint32_t vector = 0;
  return FindAtiDisplay(with_library ? &lib : nullptr, IMMonitor::MD_NB,
                        with_index ? &index : nullptr, with_vector ? &vector : nullptr);
}

constexpr AtiBox kBox = {
    NewAtiMMImpl,
    ExtensionOf,
    GetMonitorEDID,
    FreeMonitorEDID,
    GetMonitorName,
    GetLibraryName,
    ReadCapabilities,
    BindEntries,
    AdapterIndexWithoutLibrary,
    TargetTypeWithoutLibrary,
    FindPanel,
};

}  // namespace

const AtiBox* GetAtiBox() { return &kBox; }
