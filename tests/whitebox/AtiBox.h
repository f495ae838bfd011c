// The legacy AMD back-end from inside. Objects end by delete through IMMonitor.
#pragma once

#include <cstdint>
#include <string>

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"

struct AtiBox {
  IMMonitor* (*NewAtiMMImpl)();  // not initialised
  IDisplayExtension* (*ExtensionOf)(IMMonitor* ati);

  bool (*GetMonitorEDID)(IMMonitor* ati, uint32_t display, EdidBlob* edid);
  void (*FreeMonitorEDID)(IMMonitor* ati, EdidBlob* edid);
  BOOL (*GetMonitorName)(IMMonitor* ati, uint32_t display, std::string* name);
  const char* (*GetLibraryName)(IMMonitor* ati);
  BOOL (*ReadCapabilities)(IMMonitor* ati);

  /// A binding of its own: which entries are bound, in their order, as "x" or "-".
  /// @param loaded  out; the binding's result
  std::string (*BindEntries)(const char* file_name, BOOL* loaded);

  // --- Questions that take several calls, with nothing where an argument belongs.
  uint32_t (*AdapterIndexWithoutLibrary)();
  uint32_t (*TargetTypeWithoutLibrary)();
  /// Asks for the panel, a library that is loaded for the question; null for what is not given.
  bool (*FindPanel)(bool with_library, bool with_index, bool with_vector);
};

const AtiBox* GetAtiBox();
