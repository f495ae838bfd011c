// Takes a display mode back that was forced upon Windows and does not hold.
#pragma once

#include "Common/MultiMonitor/Win7CCDApi.h"
#include "Common/Win.h"

#include <boost/noncopyable.hpp>
#include <boost/shared_ptr.hpp>
#include <cstdint>

class IMMonitor;
class Win7CCD;

/// Host thread only, and that thread must pump messages: the check runs in a thread timer.
class DisplayModeValidator : private boost::noncopyable {
 public:
  /// Makes an object that the caller owns, not initialised; null when there is none.
  using MonitorMaker = IMMonitor* (*)();

  /// Becomes the newest record of the library, the one that timers act on.
  DisplayModeValidator();
  /// Kills the timer; from then on the library has no newest record.
  ~DisplayModeValidator();

  /// Arms the check of an arrangement that has just been forced, in three seconds.
  /// @param monitor   not owned; outlives this record
  /// @param displays  mask of the displays that must be connected still
  void Start(Win7CCD* monitor, const boost::shared_ptr<Win7CCDApi>& ccd, uint32_t mode,
             uint32_t displays);

  /// What the timer does: looks at the newest record's arrangement and takes it back when it does
  /// not hold. Nothing when there is no record, or when it was never armed.
  /// @param make  makes the object that is asked what is connected
  static void ValidateNewest(MonitorMaker make);

 private:
  static void CALLBACK OnTimer(HWND wnd, UINT message, UINT_PTR id, DWORD time);

  Win7CCD* m_monitor = nullptr;
  boost::shared_ptr<Win7CCDApi> m_ccd;
  UINT_PTR m_timer = 0;
  uint32_t m_mode = 0;
  uint32_t m_displays = 0;
};
