// Calls of the simulated library of USB displays, as a client without any declaration of it makes
// them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/faces/DisplayLink.h"
#include "sim/tests/FaceCalls.h"

namespace sim {

constexpr char kUsbNotebook[] =
    "win7 intel, displaylink*2: internal 1366x768 active, crt 1280x1024, usb@2 1680x1050, usb2@2";
constexpr char kAddOnFile[] = "C:\\Program Files\\DisplayLink Core Software\\AddOnApi64.dll";
constexpr uint32_t kAllPids[] = {0x1004307, 0x1000290, 0x10002E9};
constexpr uint32_t kNivoQuestion = 0x10000;

class AddOnClient {
 public:
  explicit AddOnClient(const char* file = kAddOnFile) : module_(FAKE(LoadLibraryA)(file)) {}
  ~AddOnClient() { Free(); }
  AddOnClient(const AddOnClient&) = delete;
  AddOnClient& operator=(const AddOnClient&) = delete;

  void Free() {
    if (module_ != nullptr) FAKE(FreeLibrary)(module_);
    module_ = nullptr;
  }
  bool loaded() const { return module_ != nullptr; }
  bool Has(const char* name) const { return FAKE(GetProcAddress)(module_, name) != nullptr; }

  template <typename... Arguments>
  int32_t Ask(const char* name, Arguments... arguments) const {
    using Function = int32_t (*)(Arguments...);
    return reinterpret_cast<Function>(reinterpret_cast<void*>(FAKE(GetProcAddress)(module_, name)))(
        arguments...);
  }

  int32_t Subscribe(const uint32_t* pids = kAllPids, int32_t count = 3) const {
    return Ask("dlSubscribePids", pids, count, uint64_t{0});
  }
  int32_t UnSubscribe() const {
    return Ask("dlUnSubscribePids", static_cast<const uint32_t*>(nullptr), int32_t{-1},
               uint64_t{0});
  }
  int32_t Register(void* context) const {
    return Ask("dlRegisterNivoDisplayNotification", &AddOnClient::OnEvent, context, uint64_t{0});
  }
  int32_t UnRegister(void* context) const {
    return Ask("dlUnRegisterNivoDisplayNotification", &AddOnClient::OnEvent, context, uint64_t{0});
  }
  int32_t Pump(uint32_t milliseconds = 100) const {
    return Ask("dlPumpMessages", milliseconds, uint64_t{0});
  }
  /// 0xFFFFFFFF for a refusal.
  uint32_t StateOf(uint64_t handle) const {
    uint32_t state = 0xFFFFFFFF;
    Ask("dlGetExecutionState", handle, kNivoQuestion, &state);
    return state;
  }

  /// What the callback was told: "2 0xd15b..." by event and handle, with the moment in front.
  static std::vector<std::string>& Heard() {
    static std::vector<std::string> heard;
    return heard;
  }
  static void OnEvent(void* context, uint32_t event, uint64_t handle, uint64_t) {
    char text[80];
    std::snprintf(text, sizeof text, "%llu: %u 0x%llx on %d",
                  static_cast<unsigned long long>(Machine::Current().Now()), event,
                  static_cast<unsigned long long>(handle), static_cast<int>(ContextId(context)));
    Heard().emplace_back(text);
  }
  static uintptr_t ContextId(void* context) { return reinterpret_cast<uintptr_t>(context); }
  static void* Context(uintptr_t id) { return reinterpret_cast<void*>(id); }

 private:
  HMODULE module_;
};

using Heard = std::vector<std::string>;

}  // namespace sim
