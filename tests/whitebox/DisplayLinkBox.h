// The DisplayLink add-on host and the binding of its library, from inside. A host reference that a
// test holds ends before the library is unloaded.
#pragma once

#include <cstdint>
#include <vector>

#include "Common/MultiMonitor/DisplayLink/displaylink_addon_host.h"
#include "Common/Win.h"

/// A host's fields at one moment.
struct AddOnHostState {
  HANDLE thread = nullptr;
  DWORD thread_id = 0;
  bool stop = false;
  int32_t client_connections = 0;
  int32_t load_state_seen = 0;
  std::vector<uint32_t> subscribed_pids;
};

struct DisplayLinkBox {
  using Host = displaylink::DisplayLinkAddOnHost;

  // --- The host.
  boost::shared_ptr<Host> (*GetInstance)();
  void (*Connect)(Host* host);
  void (*Disconnect)(Host* host);
  std::vector<displaylink::NivoDisplay> (*NivoDisplays)(const Host* host);
  AddOnHostState (*StateOf)(const Host* host);
  void (*ThreadBody)(Host* host);  // on the calling thread
  void (*TakeTurn)(Host* host);    // on the calling thread
  /// What the library is given to call, called.
  void (*Notify)(void* context, uint32_t event, uint64_t handle);

  // --- The library's own connection.
  void (*ConnectDisplayLinkHost)();
  void (*DisconnectDisplayLinkHost)();
  Host* (*ConnectedHost)();  // null while there is none

  // --- The binding.
  int32_t (*LoadState)();
  void (*SetLoadState)(int32_t state);  // as it stands: nothing that belongs to it happens
  void (*EnterLoadState)(int32_t state);
  void (*SetLoadObserver)(displaylink::ILoadObserver* observer);
  void (*BindAll)();
  void (*Unbind)();
  HMODULE (*ModuleFor)(const char* library);
  void* (*FunctionFor)(HMODULE module, const char* name);

  // --- The functions of the library, through the binding.
  decltype(&displaylink::dlSubscribePids) dlSubscribePids;
  decltype(&displaylink::dlUnSubscribePids) dlUnSubscribePids;
  decltype(&displaylink::dlRegisterNivoDisplayNotification) dlRegisterNivoDisplayNotification;
  decltype(&displaylink::dlUnRegisterNivoDisplayNotification) dlUnRegisterNivoDisplayNotification;
  decltype(&displaylink::dlPumpMessages) dlPumpMessages;
  decltype(&displaylink::dlGetExecutionState) dlGetExecutionState;
  decltype(&displaylink::dlGetNivoID) dlGetNivoID;
  decltype(&displaylink::dlGetVidPnTargetID) dlGetVidPnTargetID;

  bool (*IsDisplayLinkServicePresent)();
};

const DisplayLinkBox* GetDisplayLinkBox();
