#include "Common/MultiMonitor/DisplayLink/displaylink_addon_host.h"

#include <algorithm>
#include <boost/weak_ptr.hpp>
#include <iterator>
#include <memory>

#include "Common/Logging.h"
#include "Common/Owners.h"

namespace displaylink {
namespace {

// Which products the add-on library is to tell of.
constexpr uint32_t kPids[] = {0x1004307, 0x1000290, 0x10002E9};
constexpr DWORD kSpinCount = 2000;
constexpr uint32_t kPumpPeriod = 100;  // milliseconds
constexpr DWORD kLongestWait = 5000;   // milliseconds, for the thread's end
constexpr int32_t kAllPids = -1;       // as the number of products to withdraw

// The one host, while it lives.
boost::weak_ptr<DisplayLinkAddOnHost> g_instance;
std::mutex g_instanceLock;

// A reference on this library's own module.
UniqueModule HoldThisModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     reinterpret_cast<const wchar_t*>(&g_instance), &module);
  return UniqueModule(module);
}

// In the order of their values.
constexpr const char* kEventNames[] = {
    "DL_NC_UNDEFINED",           "DL_NC_CONNECTED", "DL_NC_NIVODISPLAY_ADDED",
    "DL_NC_NIVODISPLAY_CHANGED", "DL_NC_SHUTDOWN",  "DL_NC_UNLOADAPI",
};

// Whether the display takes part in the desktop.
// Deliberate: one that cannot be asked does.
bool IsInUse(uint64_t handle) {
  uint32_t state = 0;
  dlGetExecutionState(handle, kNivoQuery, &state);
  return state != kNivoStateIdle;
}

// A failure of the library's subscription functions, which stops nothing; neither does a record
// that cannot be written.
void RecordFailure(const char* text, int32_t rv) {
  try {
    LOG(ERROR) << text << rv;
  } catch (...) {
    // No memory for the record.
  }
}

class SectionLock {
 public:
  explicit SectionLock(CRITICAL_SECTION& section) : section_(section) {
    EnterCriticalSection(&section_);
  }
  ~SectionLock() { LeaveCriticalSection(&section_); }
  SectionLock(const SectionLock&) = delete;
  SectionLock& operator=(const SectionLock&) = delete;

 private:
  CRITICAL_SECTION& section_;
};

}  // namespace

// What the thread holds while it runs: the host may lose its clients, and the library's module its
// user, before the thread has seen that it is to end.
struct DisplayLinkAddOnHost::ThreadArguments {
  boost::shared_ptr<DisplayLinkAddOnHost> host;
  UniqueModule module;
};

boost::shared_ptr<DisplayLinkAddOnHost> DisplayLinkAddOnHost::GetInstance() {
  const std::lock_guard<std::mutex> lock(g_instanceLock);
  boost::shared_ptr<DisplayLinkAddOnHost> host = g_instance.lock();
  if (host == nullptr) {
    host.reset(new DisplayLinkAddOnHost());
    g_instance = host;
  }
  return host;
}

DisplayLinkAddOnHost::DisplayLinkAddOnHost()
    : subscribed_pids_(std::begin(kPids), std::end(kPids)) {
  InitializeCriticalSectionAndSpinCount(&connection_lock_, kSpinCount);
}

DisplayLinkAddOnHost::~DisplayLinkAddOnHost() { DeleteCriticalSection(&connection_lock_); }

// --- Clients.

void DisplayLinkAddOnHost::Connect() {
  const SectionLock lock(connection_lock_);
  VLOG(1) << "DisplayLinkAddOnHost::Connect() client_connections_ = " << client_connections_;
  if (++client_connections_ < 2) CreateHostThread();
}

// Deliberate: also on a host that has been stopped; the thread then ends at once.
void DisplayLinkAddOnHost::CreateHostThread() {
  auto arguments = std::make_unique<ThreadArguments>();
  arguments->host = shared_from_this();
  arguments->module = HoldThisModule();
  thread_ = CreateThread(nullptr, 0, HostThreadProc, arguments.get(), 0, &thread_id_);
  // Deliberate: without a thread the client counts all the same, and the record tells of id 0.
  if (thread_ != nullptr) static_cast<void>(arguments.release());
  DCHECK(thread_ != NULL);
  LOG(INFO) << "DisplayLink AddOn host thread created, id = " << thread_id_;
}

void DisplayLinkAddOnHost::Disconnect() {
  const SectionLock lock(connection_lock_);
  try {
    VLOG(1) << "DisplayLinkAddOnHost::Disconnect() client_connections_ = " << client_connections_;
  } catch (...) {
    // A record that cannot be written. Clients leave in their destructors: nothing may come out.
  }
  // Deliberate: counted down also where nobody had connected.
  if (--client_connections_ > 0) return;
  EndHostThread();
  if (load_state_seen_ == ApiLoaded) Unsubscribe();
}

void DisplayLinkAddOnHost::EndHostThread() {
  stop_ = true;  // Deliberate: for good. This host never runs again.
  // Deliberate: how the wait ended is not reported.
  if (WaitForSingleObject(thread_, kLongestWait) != WAIT_OBJECT_0) left_alone_ = true;
  // Deliberate: the handle is not closed.
  thread_ = nullptr;
  thread_id_ = 0;
}

std::vector<NivoDisplay> DisplayLinkAddOnHost::NivoDisplays() const {
  const std::lock_guard<std::mutex> lock(lists_lock_);
  return nivo_displays_;
}

// --- The thread.

DWORD WINAPI DisplayLinkAddOnHost::HostThreadProc(void* arguments) {
  const HMODULE module = RunWith(arguments);
  if (module == nullptr) return 0;
  FreeLibraryAndExitThread(module, 0);  // nothing on this stack is left to be destroyed
}

// @return the reference on the module, which must be given back as the last thing
HMODULE DisplayLinkAddOnHost::RunWith(void* arguments) {
  const std::unique_ptr<ThreadArguments> held(static_cast<ThreadArguments*>(arguments));
  try {
    ThreadBody(held->host.get());
  } catch (...) {
    // A record that cannot be written; nothing may leave the thread.
  }
  return held->module.Release();
}

void DisplayLinkAddOnHost::ThreadBody(DisplayLinkAddOnHost* host) {
  DCHECK(host);
  if (host == nullptr || host->stop_) return;
  do {
    try {
      host->TakeTurn();
    } catch (...) {
      // No memory for this turn; the next may find some.
    }
  } while (!host->stop_);
  // Whoever stopped the thread withdraws the callback once it has ended. Where it came too late for
  // that, the library would be left with the address of a host that is about to go.
  if (host->left_alone_ && host->registered_) host->Unsubscribe();
}

void DisplayLinkAddOnHost::TakeTurn() {
  const int32_t old_state = load_state_seen_;
  switch (ApiDllLoadState) {
    case ApiLoadPending:
      BindAll();
      break;
    case UnLoadPending:
      if (g_loadObserver != nullptr) g_loadObserver->OnUnloading();
      Unbind();
      BindAll();
      break;
    case DummyApiLoaded:
      RetryRealLibrary();
      break;
    default:
      break;
  }
  load_state_seen_ = ApiDllLoadState.load();
  // Deliberate: otherwise there is no wait in the turn. In DummyApiLoaded the thread polls.
  if (load_state_seen_ == ApiLoaded) PumpMessages(old_state);
}

void DisplayLinkAddOnHost::PumpMessages(int32_t old_state) {
  if (old_state != ApiLoaded) SubscribeFrom(old_state);
  if (dlPumpMessages(kPumpPeriod, 0) < 0) {
    LOG(WARNING) << "dlPumpMessage() failed";
  } else if (ApiDllLoadState != ApiLoaded) {
    Unsubscribe();
    load_state_seen_ = ApiDllLoadState.load();
  }
}

void DisplayLinkAddOnHost::SubscribeFrom(int32_t old_state) {
  try {
    Subscribe();
  } catch (...) {
    load_state_seen_ = old_state;  // the next turn subscribes
    throw;
  }
}

void DisplayLinkAddOnHost::Subscribe() {
  std::vector<uint32_t> pids;
  {
    const std::lock_guard<std::mutex> lock(lists_lock_);
    pids = subscribed_pids_;
  }
  int32_t rv = dlSubscribePids(pids.data(), static_cast<int32_t>(pids.size()), 0);
  if (rv < 0) RecordFailure("Cannot subscribe PIDs, rv = ", rv);
  rv = dlRegisterNivoDisplayNotification(NivoNotificationCallback, this, 0);
  // Behind the call: while it lasts a client may withdraw what is not registered yet.
  registered_ = true;
  if (rv < 0) RecordFailure("Register Nivo display notification failed, rv = ", rv);
}

// Deliberate: the products are forgotten, so that a later Subscribe asks for none, and the displays
// are not.
void DisplayLinkAddOnHost::Unsubscribe() {
  registered_ = false;
  dlUnRegisterNivoDisplayNotification(NivoNotificationCallback, this, 0);
  dlUnSubscribePids(nullptr, kAllPids, 0);
  const std::lock_guard<std::mutex> lock(lists_lock_);
  subscribed_pids_.clear();
}

// --- What the add-on library tells of, inside dlPumpMessages.

void DisplayLinkAddOnHost::NivoNotificationCallback(void* context, uint32_t event, uint64_t handle,
                                                    uint64_t /*unused*/) {
  if (context == nullptr) return;
  try {
    static_cast<DisplayLinkAddOnHost*>(context)->InternalNivoNotificationCallback(handle, event);
  } catch (...) {
    // No memory: the display stays unknown. Nothing may pass into the library.
  }
}

void DisplayLinkAddOnHost::InternalNivoNotificationCallback(uint64_t handle, uint32_t event) {
  if (event >= std::size(kEventNames)) return;
  VLOG(1) << "InternalNivoNotificationCallback() " << kEventNames[event];
  if (event == DL_NC_NIVODISPLAY_ADDED) OnDisplayAdded(handle);
  if (event == DL_NC_NIVODISPLAY_CHANGED) OnDisplayChanged(handle);
}

void DisplayLinkAddOnHost::OnDisplayAdded(uint64_t handle) {
  if (!IsListed(handle) && IsInUse(handle)) AddDisplay(handle);
}

void DisplayLinkAddOnHost::OnDisplayChanged(uint64_t handle) {
  const bool in_use = IsInUse(handle);
  const bool listed = IsListed(handle);
  if (listed && !in_use) RemoveDisplay(handle);
  if (!listed && in_use) AddDisplay(handle);
}

// Only this thread changes the list, so that it may be looked at without the lock here.
bool DisplayLinkAddOnHost::IsListed(uint64_t handle) const {
  return std::any_of(nivo_displays_.begin(), nivo_displays_.end(),
                     [&](const NivoDisplay& display) { return display.handle == handle; });
}

void DisplayLinkAddOnHost::AddDisplay(uint64_t handle) {
  NivoDisplay display = {};
  display.handle = handle;
  display.id.size = sizeof(display.id);
  dlGetNivoID(handle, &display.id);
  const std::lock_guard<std::mutex> lock(lists_lock_);
  nivo_displays_.push_back(display);
}

void DisplayLinkAddOnHost::RemoveDisplay(uint64_t handle) {
  const std::lock_guard<std::mutex> lock(lists_lock_);
  nivo_displays_.erase(
      std::remove_if(nivo_displays_.begin(), nivo_displays_.end(),
                     [&](const NivoDisplay& display) { return display.handle == handle; }),
      nivo_displays_.end());
}

}  // namespace displaylink
