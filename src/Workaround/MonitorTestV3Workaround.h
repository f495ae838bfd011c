#pragma once

#include <string>

#include "Workaround/IMonitorTestWorkaround.h"

/// For machines with the tool. The tool is a 32-bit program, found by its file or by its uninstall
/// key.
class MonitorTestV3Workaround : public IMonitorTestWorkaround {
 public:
  MonitorTestV3Workaround();
  bool IsToolInstalled() override;
  /// To 1024 by 768 from a width of 800, otherwise to 800 by 600.
  BOOL ChangeResolutionBeforeSwitch(IMMonitor* monitor) override;

  /// The tool's program file, whether or not there is one.
  virtual std::string GetExecutablePath();
  virtual BOOL HasUninstallKey();
  /// The tool's folder below the folder of 32-bit programs; empty when that cannot be told.
  virtual std::string GetInstallFolder();
  /// Below HKEY_LOCAL_MACHINE.
  virtual std::string GetUninstallKey();
};
