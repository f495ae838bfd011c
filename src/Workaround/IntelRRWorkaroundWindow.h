#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "Common/windowing/base_window.h"

class IMMonitor;

/// Looks at the displays some seconds after a device has come or gone and raises the refresh rate
/// of an HDMI monitor that is new. The looking is done on a thread of its own, one at a time. The
/// object must outlive a check that runs, and so must the display controller.
class IntelRRWorkaroundWindow : public windowing::BaseWindow {
 public:
  /// @param monitor  the active display controller; not owned, null does nothing
  explicit IntelRRWorkaroundWindow(IMMonitor* monitor) : m(monitor) {}
  ~IntelRRWorkaroundWindow() override;

  /// As BaseWindow's; the displays connected now count as known.
  bool Create(const std::wstring& title, DWORD style, DWORD ex_style, int x, int y, int width,
              int height, HWND parent) override;
  LRESULT HandleMessage(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) override;
  const wchar_t* GetWindowClassName() override;

  /// A device has come or gone: the check is due in three seconds.
  virtual LRESULT OnDeviceChange();
  /// A display change holds a check back that is due; alone it does nothing.
  virtual LRESULT OnDisplayChange();
  /// Starts the check, unless one still runs.
  virtual LRESULT OnTimer(UINT_PTR id);

  /// Raises the HDMI monitor's refresh rate when it is one of several displays.
  void ApplyWorkaround(uint32_t displays, uint32_t count);

  void set_monitor(IMMonitor* monitor) { m = monitor; }

 private:
  // The tests' white box.
  friend struct WorkaroundAccess;

  static DWORD WINAPI WorkerProc(void* window);
  void StartWorker();
  void CheckDisplays();
  void EndWorker();

  IMMonitor* m;
  bool timer_armed_ = false;
  uint32_t known_displays_ = 0;
  std::atomic<HANDLE> worker_thread_{nullptr};
  DWORD worker_thread_id_ = 0;
};
