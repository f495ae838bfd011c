// A simulated notebook, ready to have the built DLL put on top of it. One Machine is current at a
// time; constructing it makes it so.
//
//   sim::Machine machine("win7 intel: internal 1366x768 active, crt 1024x768");
//   machine.Config("Settings", "Prefer Windows 7 CCD API", 1);
//   sim::Library ostrel(machine);          // loads Ostrel.dll, its imports patched before DllMain
//   ASSERT_TRUE(ostrel.Init());
//   ostrel.Run();                          // the pop-up is open
//   machine.Advance(3000);                 // virtual time: its timer fires
//   EXPECT_EQ(machine.TakeJournal(), "");  // only calls that change or validate the machine stand
//   here
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Common/Win.h"
#include "sim/Model.h"

namespace sim {

/// What UpdateLayeredWindow was last given: 32-bit pixels 0xAARRGGBB (premultiplied), row by row
/// from the top.
struct Picture {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint32_t> pixels;
};

/// One picture file drawn into the pop-up, in drawing order: what a person would see, told by file.
struct Drawn {
  std::string file;  // below the pictures' folder, "NB.png"; "" for an image that could not be read
  int32_t x = 0;
  int32_t y = 0;
  int32_t width = 0;
  int32_t height = 0;
};

/// A message that the library posted to its host.
struct Notification {
  HWND receiver;
  uint32_t message;
  WPARAM wparam;
  LPARAM lparam;
};

/// Raised for a machine file or short text that cannot be used; what() names file, line and field.
class MachineFileError : public std::exception {
 public:
  explicit MachineFileError(std::string text) : text_(std::move(text)) {}
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::string text_;
};

class Machine {
 public:
  /// From the short form: "<windows> <adapter>[, <adapter>...]: <connector> <W>x<H> [active] [,
  /// ...]". windows: win10 win8 win7 win7starter vista 2008 2008r2 2003 xp; adapter: intel nvidia
  /// amd sis via none; connector: internal crt tv dvi hdmi dp edp other wireless, with a digit
  /// behind it for a second one, "@n" for the n-th adapter. All `active` ones together: one is
  /// single, several are extended, "clone" before the list of connectors makes them a clone.
  explicit Machine(const std::string& text);
  static std::unique_ptr<Machine> FromFile(const std::string& path);  // a machines/*.toml
  ~Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  Model& model();
  static Machine& Current();

  // --- What the host process around the DLL looks like. The folder is new and empty for every
  // machine.
  std::wstring HostFolder() const;     // GetModuleFileNameW(NULL) answers HostFolder()\host.exe
  std::wstring TempFolder() const;     // GetTempPathA
  std::wstring AppDataFolder() const;  // SHGetFolderPathW(CSIDL_APPDATA)
  void Config(const std::string& section, const std::string& key, const std::string& value);
  void Config(const std::string& section, const std::string& key, int64_t value);
  void SetEnvironment(const std::string& name, const std::string& value);
  void SetCommandLine(const std::wstring& command_line);  // with program name
  std::string Log() const;  // the whole Ostrel.log, "" when there is none

  // --- Faults: the n-th call (1 = the next) of a function answers with its documented failure.
  enum class Repeat { kOnce, kFromThenOn };
  void Fail(const std::string& function, uint32_t nth, uint32_t code = 0,
            Repeat repeat = Repeat::kOnce);
  /// A declared fault whose call never came fails the running test, here and when the machine goes:
  /// the test would show nothing.
  void ClearFaults();
  void ForgiveUnusedFaults();  // for sweeps, which declare a call beyond the last one there is
  uint32_t FaultsGiven()
      const;  // calls made to fail so far; a fault sweep ends when a run had none

  // --- Journal: calls that change or validate the machine, one line each,
  // "SetDisplayConfig(paths=0 flags=0x42)=31". A notification is a line too, so that its place
  // relative to the change shows: "PostMessageA(id=1025 wparam=1 lparam=0)". Reads on request;
  // Sleep, SetTimer, KillTimer and the loader's calls count as reads.
  std::string TakeJournal();  // and empties it
  const std::string& Journal() const;
  void JournalReads(bool on);
  uint32_t Calls(
      const std::string& function) const;  // how often a simulated function was called so far

  // --- Ledger: what was handed to the DLL and not given back, one line each; "" when balanced.
  // What the DLL holds from its load to its unload (the log file) counts only after the unload.
  std::string Outstanding() const;

  // --- Time. Virtual unless UseRealTime() was called before the library was loaded.
  void UseRealTime();
  void Advance(uint32_t milliseconds);  // moves the clock and fires due timers in order
  uint64_t Now() const;                 // milliseconds since the machine was made
  /// Plans an event for a moment of the machine's time. It happens on the test's thread, in an
  /// Advance or in a wait of the library with a time-out; late, when the moment has passed by then.
  void At(uint64_t moment, std::function<void()> event);
  /// The calling thread works that long. A thread of the library's own is busy for the while, as in
  /// a slow driver; on the test's thread the clock moves and fires nothing.
  void Work(uint32_t milliseconds);
  /// Ends the threads of the library that still run: their message loops get WM_QUIT. What is left
  /// at an unload fails the test.
  size_t EndThreads();  // how many there were
  void SetCalendar(const SYSTEMTIME& utc_now,
                   int32_t bias_minutes);  // local time is UTC plus the bias
  struct Timer {
    HWND window;
    UINT_PTR id;
    uint32_t period;
    uint64_t due;
    TIMERPROC procedure;
    DWORD thread = 0;  // that armed it
  };
  std::vector<Timer> ArmedTimers() const;

  // --- The pop-up and its host.
  HWND Popup() const;                   // the dialog last created and not destroyed; null when none
  const Picture& PopupPicture() const;  // last UpdateLayeredWindow
  const std::vector<Drawn>& PopupDrawing() const;  // what went into that picture, file by file
  void UsePictures(
      const std::wstring& folder);  // a folder with NB.png ...: copied to HostFolder()\\OstrelRes
  void PressKey(uint32_t virtual_key);  // WM_KEYDOWN to the pop-up
  void MoveMouse(int x, int y);         // WM_MOUSEMOVE to the pop-up, client coordinates
  void Click(int x, int y);             // WM_LBUTTONDOWN
  void SetCursor(int x, int y);         // what GetCursorPos answers
  const std::vector<Notification>& Notifications() const;

  // --- Events on the machine.
  void Plug(const std::string& connector, const Monitor& monitor);
  void Unplug(const std::string& connector);
  /// WM_DISPLAYCHANGE goes to every window of the library, as Windows sends it around a change.
  void BroadcastDisplayChange();
  std::string Topology() const;  // DescribeTopology(model())
  std::string Describe() const;  // the whole machine as text, for failing tests

  struct State;
  State& state();  // for the faces only
  const State& state() const;

 private:
  explicit Machine(std::unique_ptr<State> state);
  void ReportUnusedFaults() const;
  void SendToPopup(UINT message, WPARAM wparam, LPARAM lparam);

  std::unique_ptr<State> state_;
  Machine* previous_;  // current again when this one is gone
};

/// Machine, journal, what is outstanding, and log: what a failing test prints.
std::string ReportOf(const Machine& machine);
/// The report of the machine that was destroyed last, once; "" when there was none since.
std::string TakeLastReport();
Machine* CurrentOrNull();

}  // namespace sim
