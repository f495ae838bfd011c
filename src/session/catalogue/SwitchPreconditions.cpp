#include "session/catalogue/SwitchPreconditions.h"

#include <cstdint>
#include <set>
#include <string>

#include "Common/MultiMonitor/MonitorIdentity.h"
#include "Common/Win.h"
#include "Common/win_util.h"
#include "session/catalogue/PruningMode.h"

namespace {

using GetProductInfoFunction = BOOL(WINAPI*)(DWORD, DWORD, DWORD, DWORD, DWORD*);

constexpr uint32_t kNotAsked = 0;
constexpr uint32_t kNoProductInfo = 0xFFFFFFFF;
constexpr uint32_t kStarter = 11;

uint32_t g_productType = kNotAsked;

uint32_t AskProductType() {
  const HMODULE kernel = GetModuleHandleA("Kernel32.dll");
  if (kernel == nullptr) return kNoProductInfo;
  // By way of void*, since FARPROC and the real type differ in their arguments.
  const auto get_product_info = reinterpret_cast<GetProductInfoFunction>(
      reinterpret_cast<void*>(GetProcAddress(kernel, "GetProductInfo")));
  if (get_product_info == nullptr) return kNoProductInfo;
  OSVERSIONINFOEXA version = {};
  version.dwOSVersionInfoSize = sizeof(version);
  GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&version));
  DWORD type = kNotAsked;
  get_product_info(version.dwMajorVersion, version.dwMinorVersion, version.wServicePackMajor,
                   version.wServicePackMinor, &type);
  return type;
}

}  // namespace

bool IsStarterEdition() {
  if (g_productType == kNotAsked) g_productType = AskProductType();
  return g_productType == kStarter;
}

void ApplyTV4810Workaround() {
  if (!win_util::IsXPOrServer2003()) return;
  std::set<std::string> names;
  ListMonitorNamesFromRegistry(&names);
  if (CountMonitorsNamed(names) >= 1) ClearPruningMode();
}
