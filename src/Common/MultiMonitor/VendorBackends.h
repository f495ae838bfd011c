// Where the graphics vendors' back-ends join the factory: one narrow function for each thing that
// the factory asks of them.
//
// New objects belong to the caller and are not initialised. They are null when there is no memory
// for the object itself; what its constructor throws passes through.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"

class Win7CCD;

IMMonitor* NewIntelMMImpl();
IMMonitor* NewADLImpl();
IMMonitor* NewAtiMMImpl();
IMMonitor* NewSisMMImpl();
IMMonitor* NewViaMMImpl();
IMMonitor* NewNvidiaMMImpl();
IMMonitor* NewNvidiaMMImplV2();
IMMonitor* NewNvidiaMMImplV3();              // over a new Win7CCDApi
IMMonitor* NewNvidiaMMImplV3CrossAdapter();  // over a new Win7CCDApi, its cross-adapter mark set
Win7CCD* NewWin7CCD();                       // over a new Win7CCDApi; throws without memory
Win7CCD* NewDisplayLinkWorkaroundImpl();

/// Reads the native size from the EDID that the graphics vendor's library gives.
IPhysicalMonitor* NewPhysicalMonitorByDisplayLibrary();

/// Arbitrates two adapters. Takes ownership of both objects, also when it gives null or throws.
IMMonitor* NewHybridController(IMMonitor* first, IMMonitor* cross_adapter);

/// `monitor` itself when it is an NvidiaMMImplV3, otherwise null.
IMMonitor* AsNvidiaMMImplV3(IMMonitor* monitor);

/// Whether the Intel object's adapter owns the HDMI connector. A null object owns none.
bool CanControlHDMIMonitor(IMMonitor* intel);

/// Whether the NVIDIA object's adapter can drive an external display beside the panel on its own.
bool CouldManageMultipleDisplay(IMMonitor* nv);

/// Asks the NVIDIA driver which adapter leads on a machine with two.
/// @param value  in and out; 1 and 3 mean NVIDIA
/// @return false when the driver cannot be asked; `value` is then as it was
bool QueryNvidiaAdapterMode(IMMonitor* nv, uint32_t* value);

/// Whether the AMD Display Library is there and new enough.
bool AdlLibraryQualifies();

/// Whether the DisplayLink service exists; its running state is not asked.
bool IsDisplayLinkServicePresent();

/// Connects the library to the DisplayLink add-on host, letting go of an earlier connection.
void ConnectDisplayLinkHost();

/// Ends that connection; nothing without one.
void DisconnectDisplayLinkHost();
