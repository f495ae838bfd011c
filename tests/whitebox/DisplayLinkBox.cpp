#include "tests/whitebox/DisplayLinkBox.h"

#include "Common/MultiMonitor/DisplayLink/AddOnApiHooks.h"
#include "Common/MultiMonitor/DisplayLink/displaylink_util.h"
#include "Common/MultiMonitor/VendorBackends.h"

extern boost::shared_ptr<displaylink::DisplayLinkAddOnHost> g_displayLinkHost;

namespace displaylink {

/// Reaches the fields for the box.
struct DisplayLinkAccess {
  using Host = DisplayLinkAddOnHost;

  static AddOnHostState StateOf(const Host* host) {
    AddOnHostState state;
    state.thread = host->thread_;
    state.thread_id = host->thread_id_;
    state.stop = host->stop_;
    state.client_connections = host->client_connections_;
    state.load_state_seen = host->load_state_seen_;
    const std::lock_guard<std::mutex> lock(host->lists_lock_);
    state.subscribed_pids = host->subscribed_pids_;
    return state;
  }

  static void ThreadBody(Host* host) { Host::ThreadBody(host); }
  static void TakeTurn(Host* host) { host->TakeTurn(); }
  static void Notify(void* context, uint32_t event, uint64_t handle) {
    Host::NivoNotificationCallback(context, event, handle, 0);
  }
};

}  // namespace displaylink

namespace {

using displaylink::DisplayLinkAccess;
using Host = DisplayLinkBox::Host;

void Connect(Host* host) { host->Connect(); }
void Disconnect(Host* host) { host->Disconnect(); }
std::vector<displaylink::NivoDisplay> NivoDisplays(const Host* host) {
  return host->NivoDisplays();
}

Host* ConnectedHost() { return g_displayLinkHost.get(); }

int32_t LoadState() { return displaylink::ApiDllLoadState; }
void SetLoadState(int32_t state) { displaylink::ApiDllLoadState = state; }
void SetLoadObserver(displaylink::ILoadObserver* observer) {
  displaylink::g_loadObserver = observer;
}

constexpr DisplayLinkBox kBox = {
    Host::GetInstance,
    Connect,
    Disconnect,
    NivoDisplays,
    DisplayLinkAccess::StateOf,
    DisplayLinkAccess::ThreadBody,
    DisplayLinkAccess::TakeTurn,
    DisplayLinkAccess::Notify,
    ConnectDisplayLinkHost,
    DisconnectDisplayLinkHost,
    ConnectedHost,
    LoadState,
    SetLoadState,
    displaylink::EnterLoadState,
    SetLoadObserver,
    displaylink::BindAll,
    displaylink::Unbind,
    displaylink::ModuleFor,
    displaylink::FunctionFor,
    displaylink::dlSubscribePids,
    displaylink::dlUnSubscribePids,
    displaylink::dlRegisterNivoDisplayNotification,
    displaylink::dlUnRegisterNivoDisplayNotification,
    displaylink::dlPumpMessages,
    displaylink::dlGetExecutionState,
    displaylink::dlGetNivoID,
    displaylink::dlGetVidPnTargetID,
    displaylink::IsDisplayLinkServicePresent,
};

}  // namespace

const DisplayLinkBox* GetDisplayLinkBox() { return &kBox; }
