// The DisplayLink add-on library, AddOnApi64.dll: its eight functions and the process-wide binding
// behind them. The library is not linked. It is looked for at run time, may be missing, and may
// come later; until then every function answers with a failure of its own.
//
// The host's thread (displaylink_addon_host.h) binds and unbinds. The functions may be called on
// any thread, but not while the real library is being let go of.
#pragma once

#include <atomic>
#include <cstdint>

namespace displaylink {

// --- What the library and its users exchange. Everything is C with the platform's one calling
// convention; results are 32-bit signed, and negative means failure.

/// What a callback of dlRegisterNivoDisplayNotification is told.
enum NotificationEvent : uint32_t {
  DL_NC_UNDEFINED = 0,
  DL_NC_CONNECTED = 1,
  DL_NC_NIVODISPLAY_ADDED = 2,
  DL_NC_NIVODISPLAY_CHANGED = 3,
  DL_NC_SHUTDOWN = 4,
  DL_NC_UNLOADAPI = 5,
};

/// Called inside dlPumpMessages, on the thread that pumps.
/// @param context  what was registered with the callback
/// @param event    a NotificationEvent; values beyond it are possible
/// @param handle   the display, a value of the library's own
/// @param unused   means nothing to us
using NivoNotification = void (*)(void* context, uint32_t event, uint64_t handle, uint64_t unused);

/// What the library knows a display by. Its size is set by the caller.
struct NivoId {
  uint32_t size;
  uint8_t contents[68];
};
static_assert(sizeof(NivoId) == 72);

/// Where a display stands in the display configuration of Windows.
struct VidPnTarget {
  uint64_t unused;
  uint64_t adapter_id;  // a LUID: the low half first
  uint32_t target_id;
  uint32_t padding;
};
static_assert(sizeof(VidPnTarget) == 24);

/// The second argument of dlGetExecutionState and dlGetVidPnTargetID.
constexpr uint32_t kNivoQuery = 0x10000;
/// The state of a display that takes no part in the desktop.
constexpr uint32_t kNivoStateIdle = 6;
/// What every function answers while the library is not there.
constexpr int32_t kNotBound = static_cast<int32_t>(0xFFFFFFF8);

/// Asks for notifications about these products. @param reserved  0
int32_t dlSubscribePids(const uint32_t* pids, int32_t count, uint64_t reserved);
/// Drops subscriptions; null, -1, 0 drops all.
int32_t dlUnSubscribePids(const uint32_t* pids, int32_t count, uint64_t reserved);
int32_t dlRegisterNivoDisplayNotification(NivoNotification callback, void* context,
                                          uint64_t reserved);
int32_t dlUnRegisterNivoDisplayNotification(NivoNotification callback, void* context,
                                            uint64_t reserved);
/// Waits up to `milliseconds` and delivers what has happened to the callbacks, on this thread.
int32_t dlPumpMessages(uint32_t milliseconds, uint64_t reserved);
/// @param kind  kNivoQuery
int32_t dlGetExecutionState(uint64_t handle, uint32_t kind, uint32_t* state);
/// @param id  in and out; its size is set, the rest is filled
int32_t dlGetNivoID(uint64_t handle, NivoId* id);
/// @param kind  kNivoQuery
int32_t dlGetVidPnTargetID(uint64_t handle, uint32_t kind, VidPnTarget* record);

// --- The binding, and how it changes. On the host's thread only; the state may be read anywhere.

enum ApiLoadState : int32_t {
  ApiLoadPending = 0,  // nothing is bound; the next bind tries the real library
  ApiLoaded = 1,       // the real library is bound
  UnLoadPending = 2,   // the real library is to be let go of and bound again
  DummyApiLoaded = 3,  // stand-ins are bound
};

/// One of ApiLoadState. It outlives the hosts, as the bindings do.
extern std::atomic<int32_t> ApiDllLoadState;

/// Told of the real library's coming and going.
class ILoadObserver {
 public:
  virtual void OnLoaded() = 0;
  virtual void OnUnloading() = 0;  // before it is let go of in UnLoadPending

 protected:
  ~ILoadObserver() = default;
};

/// Null; nobody in this library sets it.
extern ILoadObserver* g_loadObserver;

/// Binds all functions: to the real library where it can be loaded, otherwise to stand-ins.
void BindAll();

/// Forgets the bindings and lets go of the real library. Nothing when there are none.
void Unbind();

/// Writes the transition to standard output and does what belongs to the new state. Nothing when it
/// is the old one.
void EnterLoadState(int32_t state);

/// In DummyApiLoaded: binds anew once the stand-ins have been there for ten seconds.
void RetryRealLibrary();

}  // namespace displaylink
