// Takes a display mode back that was forced upon Windows and does not hold.
#pragma once

#include "Common/MultiMonitor/Win7CCDApi.h"
#include "Common/Win.h"

#include <boost/noncopyable.hpp>
#include <boost/shared_ptr.hpp>
#include <cstdint>

class Win7CCD;

/// Host thread only, and that thread must pump messages: the check runs in a thread timer.
class DisplayModeValidator : private boost::noncopyable {
 public:
  /// Becomes the newest record of the library, the one that timers act on.
  DisplayModeValidator();
  /// Kills the timer; from then on the library has no newest record.
  ~DisplayModeValidator();

  /// Arms the check of an arrangement that has just been forced, in three seconds.
  /// @param monitor   not owned; outlives this record
  /// @param displays  mask of the displays that must be connected still
  void Start(Win7CCD* monitor, const boost::shared_ptr<Win7CCDApi>& ccd, uint32_t mode,
             uint32_t displays);

 private:
  static void CALLBACK OnTimer(HWND wnd, UINT message, UINT_PTR id, DWORD time);

  static void Validate(UINT_PTR id);

  Win7CCD* m_monitor = nullptr;
  boost::shared_ptr<Win7CCDApi> m_ccd;
  UINT_PTR m_timer = 0;
  uint32_t m_mode = 0;
  uint32_t m_displays = 0;
};
