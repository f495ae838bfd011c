// Questions that AMD's legacy library answers in several calls. An entry that the library lacks, or
// a null library, gives the question's failure.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/Amd/AtiRecords.h"
#include "Common/MultiMonitor/Amd/VAtiLib.h"

/// The number of the first display device that is the library's: what every call wants. Asked of
/// Windows and the library anew each time.
/// @return 0 when none is found
uint32_t GetAtiAdapterIndex(VAtiLib* lib);

/// Whether the library has what telling displays apart takes.
bool CanClassifyAtiDisplays(const VAtiLib* lib);

/// The type of one display, by EnumDisplays.
/// @return false when there is none
bool ReadAtiType(VAtiLib* lib, uint32_t index, uint32_t* type);

/// The kind of device at one display, which may be none that has a flag; 0 when it is not told.
uint32_t ReadAtiDeviceKind(VAtiLib* lib, uint32_t index);

/// Reads what shows a desktop. The library must have the entry.
/// @return the library's result
int32_t ReadAtiActive(VAtiLib* lib, AtiConfigRecord* record);

/// How many vector words of a record that was read are there.
uint32_t CountAtiVectors(const AtiConfigRecord& record);

/// Finds the active display of one MD_* flag.
/// @param display_index   out
/// @param display_vector  out; the vector word that has it
/// @return false when it is not active, or nothing can be asked
bool FindAtiDisplay(VAtiLib* lib, uint32_t imm_display, uint32_t* display_index,
                    uint32_t* display_vector);

/// The type that the second display of an extended desktop is asked for by.
/// @return 0 when the library does not tell what is connected, or nothing is
uint32_t ReadAtiTargetType(VAtiLib* lib);
