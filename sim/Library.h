// The DLL under test on the current machine: loaded with its import table patched before DllMain,
// and with every export as a typed member. Unloading and loading again gives fresh process-wide
// state.
#pragma once

#include <cstdint>
#include <string>

#include "Common/Win.h"
#include "sim/Machine.h"
#include "tests/whitebox/WhiteBox.h"

namespace sim {

class Library {
 public:
  enum class Build { kShipped, kWhiteBox };
  /// Loads build's DLL (Ostrel.dll or OstrelWhiteBox.dll beside the test executable, or the path in
  /// the environment variable OSTREL_DLL). A failed load throws std::runtime_error.
  explicit Library(Machine& machine, Build build = Build::kShipped);
  ~Library();  // unloads; outstanding handles and armed timers then fail the running test, unless
               // forgiven
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  void Unload();
  HMODULE module() const;  // the loaded DLL, for a host that binds the exports itself
  void ForgiveLeaks();
  const WhiteBox& white_box() const;  // Build::kWhiteBox only

  BOOL Init();
  void DeInit();
  BOOL Run();
  HWND RunEx();
  BOOL Stop();
  BOOL Cancel();
  BOOL SaveCurrentMode();
  BOOL FlushRememberedSettings();
  BOOL InitExtendMode();
  void DeInitExtendMode();
  BOOL HasDualOutputCapability();
  BOOL PermitToChangeMode();
  BOOL DetectDisplayConnectedFeatureIsValid();
  BOOL HasExternalMonitorConnected();
  BOOL EnableExtendMode(uint32_t enable);
  BOOL IsExtendModeEnabled();
  BOOL ChangeToNBOnlySingleDisplayMode();
  uint32_t GetVgaVendor();
  BOOL GetConnectedDisplays(uint32_t* displays, uint32_t* count);
  BOOL GetActiveDisplays(uint32_t* displays, uint32_t* count);
  BOOL GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays);
  BOOL SetNewDisplayMode(uint32_t mode, uint32_t displays);
  void SetLassoBoxStatus(uint32_t status);
  BOOL RegisterNotification(HWND receiver, uint32_t message_id);

 private:
  struct Implementation;
  Implementation* implementation_;
};

}  // namespace sim
