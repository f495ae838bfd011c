// The service control manager over the services of the model: opened, asked, closed. Nothing of the
// real one shows through, and nothing starts or stops a service here.
#include <map>

#include "sim/faces/FaceHelp.h"

// After windows.h.
#include <winsvc.h>

namespace sim {
namespace {

constexpr char kManagerKind[] = "service manager";
constexpr char kServiceKind[] = "service";
constexpr DWORD kServiceGenericRead = STANDARD_RIGHTS_READ | SERVICE_QUERY_CONFIG |
                                      SERVICE_QUERY_STATUS | SERVICE_INTERROGATE |
                                      SERVICE_ENUMERATE_DEPENDENTS;

// An open handle: the manager's, or that of a service by name.
struct OpenHandle {
  const char* kind;
  std::string service;
  DWORD access;
};

// Handles are never used twice, so that one that outlives its machine cannot be taken for
// another's.
std::map<SC_HANDLE, OpenHandle>& OpenHandles() {
  static std::map<SC_HANDLE, OpenHandle> handles;
  return handles;
}

SC_HANDLE NewHandle(const char* kind, const std::string& service, DWORD access) {
  static uintptr_t next = 0x81000;
  const SC_HANDLE handle = reinterpret_cast<SC_HANDLE>(next += 4);
  OpenHandles()[handle] = {kind, service, access};
  LedgerTake(kind, handle);
  LeaveDirtyLastError();
  return handle;
}

const OpenHandle* FindHandle(SC_HANDLE handle, const char* kind) {
  const auto open = OpenHandles().find(handle);
  return open != OpenHandles().end() && open->second.kind == kind ? &open->second : nullptr;
}

const Service* FindService(const std::string& name) {
  for (const Service& service : CurrentModel().services) {
    if (Lower(service.name) == Lower(name)) return &service;
  }
  return nullptr;
}

SC_HANDLE Refuse(DWORD error) {
  SetLastError(error);
  return nullptr;
}

// No other machine answers, and the only database is the active one.
DWORD ManagerError(LPCWSTR machine, LPCWSTR database) {
  if (machine != nullptr && machine[0] != L'\0') return RPC_S_SERVER_UNAVAILABLE;
  if (database == nullptr || database[0] == L'\0') return ERROR_SUCCESS;
  const std::string name = Lower(Narrow(database));
  if (name == "servicesactive") return ERROR_SUCCESS;
  return name == "servicesfailed" ? ERROR_DATABASE_DOES_NOT_EXIST : ERROR_INVALID_NAME;
}

SC_HANDLE WINAPI FakeOpenSCManagerW(LPCWSTR machine, LPCWSTR database, DWORD access) {
  Call call("OpenSCManagerW");
  const DWORD error =
      call.Fails() ? FaultOr(call, ERROR_ACCESS_DENIED) : ManagerError(machine, database);
  call.Read(error, "0x%lx", access);
  return error != ERROR_SUCCESS ? Refuse(error) : NewHandle(kManagerKind, "", access);
}

DWORD ServiceError(SC_HANDLE manager, LPCWSTR name) {
  if (FindHandle(manager, kManagerKind) == nullptr) return ERROR_INVALID_HANDLE;
  if (name == nullptr) return ERROR_INVALID_ADDRESS;
  const std::string narrow = Narrow(name);
  if (narrow.empty() || narrow.find_first_of("/\\") != std::string::npos) return ERROR_INVALID_NAME;
  return FindService(narrow) != nullptr ? ERROR_SUCCESS : ERROR_SERVICE_DOES_NOT_EXIST;
}

SC_HANDLE WINAPI FakeOpenServiceW(SC_HANDLE manager, LPCWSTR name, DWORD access) {
  Call call("OpenServiceW");
  const std::string shown = name != nullptr ? Narrow(name) : std::string("null");
  const DWORD error =
      call.Fails() ? FaultOr(call, ERROR_ACCESS_DENIED) : ServiceError(manager, name);
  call.Read(error, "%s 0x%lx", shown.c_str(), access);
  return error != ERROR_SUCCESS ? Refuse(error) : NewHandle(kServiceKind, shown, access);
}

bool MayQueryStatus(DWORD access) {
  if ((access & GENERIC_READ) != 0) access |= kServiceGenericRead;
  if ((access & (GENERIC_ALL | MAXIMUM_ALLOWED)) != 0) return true;
  return (access & SERVICE_QUERY_STATUS) != 0;
}

DWORD QueryStatus(SC_HANDLE handle, LPSERVICE_STATUS status) {
  const OpenHandle* open = FindHandle(handle, kServiceKind);
  if (open == nullptr) return ERROR_INVALID_HANDLE;
  if (!MayQueryStatus(open->access)) return ERROR_ACCESS_DENIED;
  if (status == nullptr) return ERROR_INVALID_ADDRESS;
  const Service* service = FindService(open->service);
  if (service == nullptr) return ERROR_INVALID_HANDLE;
  *status = {};
  status->dwServiceType = SERVICE_WIN32_OWN_PROCESS;
  status->dwCurrentState = service->running ? SERVICE_RUNNING : SERVICE_STOPPED;
  status->dwControlsAccepted = service->running ? SERVICE_ACCEPT_STOP : 0;
  return ERROR_SUCCESS;
}

BOOL WINAPI FakeQueryServiceStatus(SC_HANDLE service, LPSERVICE_STATUS status) {
  Call call("QueryServiceStatus");
  const DWORD error =
      call.Fails() ? FaultOr(call, ERROR_ACCESS_DENIED) : QueryStatus(service, status);
  call.Read(error, "%s", "");
  SetLastError(error != ERROR_SUCCESS ? error : ERROR_ARENA_TRASHED);
  return error == ERROR_SUCCESS ? TRUE : FALSE;
}

BOOL WINAPI FakeCloseServiceHandle(SC_HANDLE handle) {
  Call call("CloseServiceHandle");
  const auto open = OpenHandles().find(handle);
  if (call.Fails()) {
    SetLastError(FaultOr(call, ERROR_INVALID_HANDLE));
    return FALSE;
  }
  LedgerGive(open != OpenHandles().end() ? open->second.kind : kServiceKind, handle);
  if (open == OpenHandles().end()) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  OpenHandles().erase(open);
  LeaveDirtyLastError();
  return TRUE;
}

}  // namespace

const std::vector<Entry>& ServicesFace() {
  static const std::vector<Entry> kEntries = {
      {"advapi32.dll", "OpenSCManagerW", Guard<FakeOpenSCManagerW>()},
      {"advapi32.dll", "OpenServiceW", Guard<FakeOpenServiceW>()},
      {"advapi32.dll", "QueryServiceStatus", Guard<FakeQueryServiceStatus>()},
      {"advapi32.dll", "CloseServiceHandle", Guard<FakeCloseServiceHandle>()},
  };
  return kEntries;
}

}  // namespace sim
