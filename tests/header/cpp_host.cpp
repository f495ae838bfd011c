// A C++ host that binds at run time: the header is sound C++ beside windows.h, and with C linkage.
#include <windows.h>

#include "ostrel/ostrel.h"

#include <cstdio>
#include <type_traits>

#include "tests/header/exports.h"

#define CHECK_NUMBER(name, value) static_assert((name) == (value), #name);
FOR_EVERY_NUMBER(CHECK_NUMBER)

static_assert(std::is_same_v<OstrelBool, BOOL>, "a truth value is Windows' own");
static_assert(std::is_same_v<OstrelWindow, HWND>, "a window needs no cast");
#define CHECK_TYPE(name) static_assert(std::is_same_v<decltype(&name), name##Proc>, #name);
FOR_EVERY_EXPORT(CHECK_TYPE)

int main() {
  const HMODULE library = LoadLibraryA("Ostrel.dll");
  if (library == nullptr) return 1;
  int failures = 0;
#define BIND(name)                                                                           \
  const auto name##_ =                                                                       \
      reinterpret_cast<name##Proc>(reinterpret_cast<void*>(GetProcAddress(library, #name))); \
  if (name##_ == nullptr) ++failures;
  FOR_EVERY_EXPORT(BIND)
  if (failures == 0 && Ostrel_PermitToChangeMode_() != 1) ++failures;
  std::printf("cpp_host: %d wrong answers\n", failures);
  return failures;
}
