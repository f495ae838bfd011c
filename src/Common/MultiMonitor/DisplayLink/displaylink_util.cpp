#include "Common/MultiMonitor/DisplayLink/displaylink_util.h"

#include "Common/Logging.h"
#include "Common/Owners.h"
#include "Common/Win.h"

// The service functions need what Common/Win.h brings.
#include <winsvc.h>

namespace displaylink {
namespace {

constexpr wchar_t kService[] = L"DisplayLinkService";
constexpr DWORD kServiceAccess = 0x80000101;

struct ServiceTraits {
  using Handle = SC_HANDLE;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { CloseServiceHandle(handle); }
};
using UniqueService = UniqueResource<ServiceTraits>;

}  // namespace

// Deliberate: a service that is stopped counts as present.
bool IsDisplayLinkServicePresent() {
  const UniqueService manager(OpenSCManagerW(nullptr, nullptr, GENERIC_READ));
  if (!manager.IsValid()) {
    const DWORD error = GetLastError();
    LOG(ERROR) << "Cannot open Service Control Manager, last error = " << error;
    return false;
  }
  const UniqueService service(OpenServiceW(manager.get(), kService, kServiceAccess));
  if (!service.IsValid()) {
    const DWORD error = GetLastError();
    // Deliberate: the record says "DislayLink".
    LOG(INFO) << "Cannot open DislayLink service, name = " << kService
              << ", last error = " << error;
    return false;
  }
  return true;
}

}  // namespace displaylink
