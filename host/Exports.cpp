#include "host/Exports.h"

namespace {

template <typename Function>
void BindOne(HMODULE library, const std::string& path, const char* name, Function* slot) {
  FARPROC entry = GetProcAddress(library, name);
  if (entry == nullptr) throw UnusableFile(path + " has no export " + name);
  *slot = reinterpret_cast<Function>(reinterpret_cast<void*>(entry));
}

}  // namespace

Exports Exports::Bind(HMODULE library, const std::string& path) {
  Exports exports = {};
#define OSTREL_BIND(name) BindOne(library, path, "Ostrel_" #name, &exports.name)
  OSTREL_BIND(Init);
  OSTREL_BIND(DeInit);
  OSTREL_BIND(Run);
  OSTREL_BIND(RunEx);
  OSTREL_BIND(Stop);
  OSTREL_BIND(Cancel);
  OSTREL_BIND(RegisterNotification);
  OSTREL_BIND(FlushRememberedSettings);
  OSTREL_BIND(InitExtendMode);
  OSTREL_BIND(DeInitExtendMode);
  OSTREL_BIND(HasDualOutputCapability);
  OSTREL_BIND(HasExternalMonitorConnected);
  OSTREL_BIND(PermitToChangeMode);
  OSTREL_BIND(DetectDisplayConnectedFeatureIsValid);
  OSTREL_BIND(EnableExtendMode);
  OSTREL_BIND(IsExtendModeEnabled);
  OSTREL_BIND(ChangeToNBOnlySingleDisplayMode);
  OSTREL_BIND(GetVgaVendor);
  OSTREL_BIND(GetConnectedDisplays);
  OSTREL_BIND(GetActiveDisplays);
  OSTREL_BIND(GetCurrentDisplayMode);
  OSTREL_BIND(SetNewDisplayMode);
#undef OSTREL_BIND
  return exports;
}
