// The display-control core seen from inside: its free functions, makers of its objects, and the
// operations of Win7CCD that are not virtual. Objects end by delete, or by Release where they have
// it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Common/MultiMonitor/DisplayModeValidator.h"
#include "Common/MultiMonitor/HelperFunctions.h"
#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/MultiMonitor.h"
#include "Common/MultiMonitor/Win7CCD.h"

struct CoreBox {
  // --- Display devices and settings.
  void (*GetAttachedDevices)(std::vector<std::string>* attached_devices);
  void (*GetDisplayDeviceNames)(std::vector<std::wstring>* device_names);
  void (*GetIntelAttachedDevices)(std::vector<std::wstring>* attached_devices);
  void (*GetDeviceNamesByVendor)(const char* vendor_id_string,
                                 std::vector<std::wstring>* device_names);
  uint32_t (*GetDisplayDeviceCount)();
  bool (*ChangeDisplaySettingsTestAndApply)(const char* device, DEVMODEA* dm, bool reset,
                                            bool set_primary, int32_t* status);
  BOOL (*ReadDisplaySettings)(DWORD mode_number, const char* device, DEVMODEA* dm);
  bool (*ChangeDisplayResolution)(IMMonitor* p, const DEVMODEA& dm);
  /// CreateDisplaySettingsHelper, told by name: "Win32ChangeDisplaySettings",
  /// "Win7CCDDisplaySettings", "null", or the text of what it threw.
  std::string (*NameOfDisplaySettingsHelper)(IMMonitor* p);

  // --- Makers.
  IMMonitor* (*NewNullMonitorController)();
  IDisplayExtension* (*NewNullDisplayExtension)();  // count 0
  /// A MultiMonitor that answers nothing of its own and writes down what reaches the operations
  /// that a back-end replaces.
  MultiMonitor* (*NewBareMultiMonitor)();
  std::string (*TakeBareCalls)(MultiMonitor* bare);
  /// What its GetMonitorEDID answers from now on.
  void (*SetBareEdid)(MultiMonitor* bare, bool readable);
  Win7CCD* (*NewWin7CCD)();  // count 0, not initialised
  Win7CCD* (*NewWin7CCDWithoutApi)();

  // --- Win7CCD.
  /// Initial, or the text of what it threw: "1", "0" or the text.
  std::string (*InitialOf)(IMMonitor* monitor);
  BOOL(*QueryPaths)
  (Win7CCD* ccd, UINT32 flags, std::vector<DISPLAYCONFIG_PATH_INFO>* paths,
   DISPLAYCONFIG_TOPOLOGY_ID* topology);
  uint32_t (*TechnologyFromDisplay)(Win7CCD* ccd, uint32_t display);
  BOOL(*SelectPath)
  (Win7CCD* ccd, uint32_t display, const std::vector<DISPLAYCONFIG_PATH_INFO>& paths,
   DISPLAYCONFIG_PATH_INFO* path_out);
  uint32_t (*GetActiveTargetId)(Win7CCD* ccd, uint32_t display);
  BOOL (*HasMultipleDisplayAdapter)(Win7CCD* ccd);

  // --- win7_ccd_helper, over an API that is loaded from `file_name` for the call; null: not
  // loaded.
  uint32_t (*OutputTechnologyFromDisplay)(uint32_t imm_display);
  bool (*GetDisplayConfigBuffers)(const char* file_name, UINT32 flags,
                                  std::vector<DISPLAYCONFIG_PATH_INFO>* paths,
                                  std::vector<DISPLAYCONFIG_MODE_INFO>* modes);
  bool (*GetDisplayConfigBuffersOfNothing)();  // every pointer null
  bool (*GetSourceDeviceName)(const char* file_name, LUID adapter_id, UINT32 source_id,
                              DISPLAYCONFIG_SOURCE_DEVICE_NAME* source_name);
  bool (*GetSourceDeviceNameOfNothing)();  // every pointer null

  // --- DisplayModeValidator: what its timer does, asking the object of `make`.
  void (*ValidateNewest)(DisplayModeValidator::MonitorMaker make);

  // --- Win7CCDApi.
  BOOL (*LoadWin7CCDApi)(const char* file_name);  // load, then let go
};

const CoreBox* GetCoreBox();
