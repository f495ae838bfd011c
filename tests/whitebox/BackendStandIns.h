// The graphics vendors' back-ends replaced by objects of the tests' own: within the white-box build
// the calls of the functions listed here come through this file, but for those from within
// Common/MultiMonitor/VendorBackends.cpp itself.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/Win7CCD.h"

/// What answers in place of the functions of the same names; a null entry leaves the real one.
struct BackendStandIns {
  IMMonitor* (*NewIntelMMImpl)() = nullptr;
  IMMonitor* (*NewADLImpl)() = nullptr;
  IMMonitor* (*NewAtiMMImpl)() = nullptr;
  IMMonitor* (*NewSisMMImpl)() = nullptr;
  IMMonitor* (*NewViaMMImpl)() = nullptr;
  IMMonitor* (*NewNvidiaMMImpl)() = nullptr;
  IMMonitor* (*NewNvidiaMMImplV2)() = nullptr;
  IMMonitor* (*NewNvidiaMMImplV3)() = nullptr;
  IMMonitor* (*NewNvidiaMMImplV3CrossAdapter)() = nullptr;
  Win7CCD* (*NewWin7CCD)() = nullptr;
  Win7CCD* (*NewDisplayLinkWorkaroundImpl)() = nullptr;
  IMMonitor* (*AsNvidiaMMImplV3)(IMMonitor* monitor) = nullptr;
  bool (*CanControlHDMIMonitor)(IMMonitor* intel) = nullptr;
  bool (*CouldManageMultipleDisplay)(IMMonitor* nv) = nullptr;
  bool (*QueryNvidiaAdapterMode)(IMMonitor* nv, uint32_t* value) = nullptr;
  bool (*AdlLibraryQualifies)() = nullptr;
  bool (*IsDisplayLinkServicePresent)() = nullptr;
};

/// Lets `stand_ins` answer from now on; it must outlive that. Null: everything is real again.
void UseBackendStandIns(const BackendStandIns* stand_ins);

/// Told by a Win7CCD of NewWatchedWin7CCD.
struct CcdWatch {
  BOOL (*initial)(Win7CCD* ccd);  // 0, or what it throws, is Initial's answer; otherwise Win7CCD's
  void (*ended)(Win7CCD* ccd);    // from the destructor
};

/// A class derived from Win7CCD, as the DisplayLink one is. It must live in the library, which has
/// Win7CCD's code.
/// @param watch  must outlive the object
Win7CCD* NewWatchedWin7CCD(const CcdWatch* watch);
