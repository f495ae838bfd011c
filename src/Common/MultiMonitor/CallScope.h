// Keeps replaced display objects alive until no code of the library can still be running on them.
//
// The factory may replace the active IMMonitor object in the middle of an operation that holds a
// pointer to the old one. Every export, dialog procedure and timer callback opens a CallScope; an
// object handed to RetireMonitor while any scope is open is deleted when the outermost one closes,
// and at once when none is open.
#pragma once

class IMMonitor;

class CallScope {
 public:
  CallScope();
  ~CallScope();
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;
};

/// Takes ownership of `monitor` (null is allowed) and deletes it as soon as no CallScope is open.
void RetireMonitor(IMMonitor* monitor) noexcept;

/// For the end of a side, whose own scope holds no object any longer: deletes what was retired now
/// unless a further scope is open, so that the objects are gone before what they were built on
/// (COM, GDI+) is shut down.
void DeleteRetiredMonitors();
