#include "sim/ImportRules.h"

#include <stdexcept>

#include "sim/FaceTable.h"
#include "sim/RealImports.h"

namespace sim {
namespace {

constexpr char kUnlistedImport[] = "an import that nobody listed was called: ";

}  // namespace

void* ResolveImport(const Import& import, void* real) {
  const std::string full_name = import.module + "!" + import.name;
  const Entry* entry = FindEntry(import.module, import.name);
  if (entry == nullptr && IsRealImport(import.module, import.name)) return real;
  // The same function may be imported from a library that only forwards it.
  if (entry == nullptr) entry = FindEntryByName(import.name);
  if (entry == nullptr) return MakeTrap(kUnlistedImport + full_name);
  if (!IsAvailable(*entry)) {
    throw std::runtime_error("this Windows has no " + full_name + ": the DLL would not load");
  }
  return entry->function;
}

}  // namespace sim
