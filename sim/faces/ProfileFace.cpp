// Profile files: really read and written, in the folders of the host; writes are told in their
// order among the calls around them.
#include "sim/faces/Counted.h"
#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

const char* OrNull(const char* text) { return text != nullptr ? text : "null"; }

BOOL WINAPI FakeWritePrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR value, LPCSTR file) {
  Call call("WritePrivateProfileStringA");
  if (call.Fails()) {
    SetLastError(FaultOr(call, ERROR_ACCESS_DENIED));
    return static_cast<BOOL>(call.Read(FALSE, "[%s] %s", OrNull(section), OrNull(key)));
  }
  const BOOL result = WritePrivateProfileStringA(section, key, value, file);
  return static_cast<BOOL>(
      call.Read(result, "[%s] %s=%s", OrNull(section), OrNull(key), OrNull(value)));
}

}  // namespace

const std::vector<Entry>& ProfileFace() {
  static const std::vector<Entry> kEntries = {
      {"kernel32.dll", "WritePrivateProfileStringA", Guard<FakeWritePrivateProfileStringA>()},
      CountedEntry<GetPrivateProfileIntA>("kernel32.dll", "GetPrivateProfileIntA"),
  };
  return kEntries;
}

}  // namespace sim
