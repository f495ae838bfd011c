// Keeps the list of displays that the DisplayLink software drives, on a thread of its own.
#pragma once

#include <atomic>
#include <boost/enable_shared_from_this.hpp>
#include <boost/noncopyable.hpp>
#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <mutex>
#include <vector>

#include "Common/MultiMonitor/DisplayLink/AddOnApi.h"
#include "Common/Win.h"

namespace displaylink {

/// One DisplayLink display.
struct NivoDisplay {
  uint64_t handle;  // a value of the add-on library's own
  NivoId id;
};

/// The one host of the process. Its thread runs from the first Connect to the last Disconnect,
/// binds the add-on library and keeps the list; while it runs it holds the host and this library's
/// module. A host serves one such run: it does not start again after its end, so that a client gets
/// a new one from GetInstance for the next.
class DisplayLinkAddOnHost : public boost::enable_shared_from_this<DisplayLinkAddOnHost>,
                             private boost::noncopyable {
 public:
  /// The host that lives, otherwise a new one; never null. It dies with the last reference. Any
  /// thread.
  static boost::shared_ptr<DisplayLinkAddOnHost> GetInstance();
  ~DisplayLinkAddOnHost();

  /// One client more; the first starts the thread. Any thread.
  void Connect();
  /// One client less; the last ends the thread and waits for it, five seconds at most. Throws
  /// nothing. Any thread but the host's.
  void Disconnect();

  /// The displays known now, in the order in which they came; those of an ended run stay. Any
  /// thread.
  std::vector<NivoDisplay> NivoDisplays() const;

 private:
  // The tests' white box.
  friend struct DisplayLinkAccess;

  struct ThreadArguments;

  DisplayLinkAddOnHost();

  // --- On a client's thread.
  void CreateHostThread();
  void EndHostThread();

  // --- On the host's thread.
  static DWORD WINAPI HostThreadProc(void* arguments);
  static HMODULE RunWith(void* arguments);
  static void ThreadBody(DisplayLinkAddOnHost* host);
  void TakeTurn();
  void PumpMessages(int32_t old_state);
  void SubscribeFrom(int32_t old_state);
  void Subscribe();
  static void NivoNotificationCallback(void* context, uint32_t event, uint64_t handle,
                                       uint64_t unused);
  void InternalNivoNotificationCallback(uint64_t handle, uint32_t event);
  void OnDisplayAdded(uint64_t handle);
  void OnDisplayChanged(uint64_t handle);
  void AddDisplay(uint64_t handle);
  void RemoveDisplay(uint64_t handle);
  bool IsListed(uint64_t handle) const;

  // --- On either.
  void Unsubscribe();

  HANDLE thread_ = nullptr;
  DWORD thread_id_ = 0;
  std::atomic<bool> stop_{false};
  std::atomic<int32_t> client_connections_{0};
  std::atomic<int32_t> load_state_seen_{ApiLoadPending};
  std::vector<uint32_t> subscribed_pids_;
  std::vector<NivoDisplay> nivo_displays_;
  CRITICAL_SECTION connection_lock_ = {};  // guards Connect and Disconnect

  std::atomic<bool> registered_{false};  // the library has the callback
  std::atomic<bool> left_alone_{false};  // nobody waits any more for the thread's end
  mutable std::mutex lists_lock_;        // guards changes and copies of the two arrays
};

}  // namespace displaylink
