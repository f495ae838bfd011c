// The library's exports, bound at run time as a hotkey suite would bind them.
#pragma once

#include <stdexcept>
#include <string>

#include "Common/Win.h"
#include "ostrel/ostrel.h"

/// A file that the host was told to use and cannot; what() is one line for the person.
class UnusableFile : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Exports {
  decltype(&Ostrel_Init) Init;
  decltype(&Ostrel_DeInit) DeInit;
  decltype(&Ostrel_Run) Run;
  decltype(&Ostrel_RunEx) RunEx;
  decltype(&Ostrel_Stop) Stop;
  decltype(&Ostrel_Cancel) Cancel;
  decltype(&Ostrel_RegisterNotification) RegisterNotification;
  decltype(&Ostrel_FlushRememberedSettings) FlushRememberedSettings;
  decltype(&Ostrel_InitExtendMode) InitExtendMode;
  decltype(&Ostrel_DeInitExtendMode) DeInitExtendMode;
  decltype(&Ostrel_HasDualOutputCapability) HasDualOutputCapability;
  decltype(&Ostrel_HasExternalMonitorConnected) HasExternalMonitorConnected;
  decltype(&Ostrel_PermitToChangeMode) PermitToChangeMode;
  decltype(&Ostrel_DetectDisplayConnectedFeatureIsValid) DetectDisplayConnectedFeatureIsValid;
  decltype(&Ostrel_EnableExtendMode) EnableExtendMode;
  decltype(&Ostrel_IsExtendModeEnabled) IsExtendModeEnabled;
  decltype(&Ostrel_ChangeToNBOnlySingleDisplayMode) ChangeToNBOnlySingleDisplayMode;
  decltype(&Ostrel_GetVgaVendor) GetVgaVendor;
  decltype(&Ostrel_GetConnectedDisplays) GetConnectedDisplays;
  decltype(&Ostrel_GetActiveDisplays) GetActiveDisplays;
  decltype(&Ostrel_GetCurrentDisplayMode) GetCurrentDisplayMode;
  decltype(&Ostrel_SetNewDisplayMode) SetNewDisplayMode;

  /// Binds every entry from a loaded library.
  /// @throws UnusableFile naming the first export that is missing
  static Exports Bind(HMODULE library, const std::string& path);
};
