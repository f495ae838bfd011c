// What stands behind a Machine. Only the faces and the simulator itself look in here.
//
// A face reads and writes the model through Machine::Current().state().model, counts and journals
// through Call (sim/Face.h), and keeps the ledger through LedgerTake and LedgerGive.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "Common/Win.h"
#include "sim/Clock.h"
#include "sim/ComClasses.h"
#include "sim/Face.h"
#include "sim/Faults.h"
#include "sim/Journal.h"
#include "sim/Ledger.h"
#include "sim/Machine.h"
#include "sim/Model.h"
#include "sim/Threads.h"
#include "sim/VirtualTime.h"
#include "sim/faces/DisplayLinkBook.h"
#include "sim/faces/StandardOutput.h"

namespace sim {

/// The process that loaded the DLL, as the DLL is made to see it.
struct HostProcess {
  std::wstring folder;          // no trailing backslash; the executable is folder\host.exe
  std::wstring temp_folder;     // no trailing backslash
  std::wstring appdata_folder;  // no trailing backslash
  std::map<std::string, std::string>
      environment;            // the whole environment; nothing of the real one shows through
  std::wstring command_line;  // with program name; "" stands for the quoted path of the executable
};

/// A library that exists only in the simulation (a vendor's). Its handle is this record's address.
struct InventedModule {
  std::string name;            // lower case, "nvapi64.dll"
  std::vector<Entry> entries;  // what GetProcAddress answers; Entry::module is not looked at
  uint32_t references = 0;
  void (*on_load)() = nullptr;
  void (*on_unload)() = nullptr;
  bool (*available)(const Model&) = nullptr;  // whether this machine has it; null: always
};

/// A window class that the DLL registered and that must not outlive it.
struct WindowClass {
  std::wstring name;
  HINSTANCE instance;
};

/// Windows as the DLL made them.
struct WindowBook {
  std::vector<HWND> alive;    // created by the DLL and not destroyed
  std::vector<HWND> dialogs;  // of these, the dialogs, oldest first
  std::vector<WindowClass> classes;
  Picture picture;             // last UpdateLayeredWindow
  std::vector<Drawn> drawing;  // what went into it
  POINT cursor = {0, 0};
  HWND foreground = reinterpret_cast<HWND>(uintptr_t{0x4F0001});  // the host's, before any other
};

/// Which picture files went into a GDI+ bitmap or, behind it, a GDI bitmap.
struct DrawingBook {
  std::map<const void*, std::string> images;              // GDI+ image: the file it came from
  std::map<const void*, std::vector<Drawn>> bitmaps;      // GDI+ bitmap: what was drawn on it
  std::map<const void*, const void*> graphics;            // GDI+ graphics: its bitmap
  std::map<const void*, std::vector<Drawn>> gdi_bitmaps;  // HBITMAP: the same, after the conversion
};

struct Machine::State {
  Model model;
  sim::Journal journal;
  Ledger ledger;
  Faults faults;
  bool unused_faults_forgiven = false;
  Clock clock;
  Plan plan;
  HostProcess host;
  std::wstring root;  // the folder that holds the host's, deleted with the machine
  WindowBook windows;
  DrawingBook drawings;
  std::vector<Notification> notifications;
  std::map<std::string, InventedModule> invented;  // by lower-case file name
  std::map<std::string, ComClass> com_classes;     // by lower-case program id
  ComRegistrations com_registrations;              // revoked with the machine
  DisplayLinkBook displaylink;
  StandardOutput standard_output;
  /// Handles without a kernel object behind them (a process snapshot, ...), with their kind in the
  /// ledger. CloseHandle lives in HandleFace and gives these back to the ledger instead of asking
  /// Windows.
  std::map<HANDLE, std::string> simulated_handles;
  /// Free place for the state of single faces, by the face's own key: device lists, open keys, ...
  std::map<std::string, uint64_t> counters;
  Threads threads;  // last: what they use is still there when they end
};

/// UTF-8 to UTF-16 and back, for folders and texts of the model.
std::wstring Widen(const std::string& text);
std::string Narrow(const std::wstring& text);

}  // namespace sim
