#include "sim/Patcher.h"

#include <cstdint>
#include <cstring>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include "sim/FaceTable.h"
#include "sim/Failure.h"

namespace sim {
namespace {

// --- The loader's notification, which no SDK header declares.
// ----------------------------------------------------

struct LoaderString {  // UNICODE_STRING
  USHORT length;
  USHORT maximum_length;
  const wchar_t* buffer;
};

struct LoaderNotificationData {
  ULONG flags;
  const LoaderString* full_name;
  const LoaderString* base_name;
  void* base;
  ULONG size_of_image;
};

using LoaderCallback = void(CALLBACK*)(ULONG reason, const LoaderNotificationData* data,
                                       void* context);
using RegisterFunction = LONG(NTAPI*)(ULONG flags, LoaderCallback callback, void* context,
                                      void** cookie);
using UnregisterFunction = LONG(NTAPI*)(void* cookie);

constexpr ULONG kReasonLoaded = 1;

template <typename Function>
Function FromNtdll(const char* name) {
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  const FARPROC found = GetProcAddress(ntdll, name);
  if (found == nullptr) {
    throw std::runtime_error(std::string("this Windows has no ") + name +
                             "; imports cannot be patched before DllMain");
  }
  return reinterpret_cast<Function>(reinterpret_cast<void*>(found));
}

// --- The import table.
// --------------------------------------------------------------------------------------------

template <typename Type>
Type* At(void* base, uint64_t offset) {
  return reinterpret_cast<Type*>(static_cast<unsigned char*>(base) + offset);
}

const IMAGE_DATA_DIRECTORY& ImportDirectory(void* base) {
  const auto* dos = At<IMAGE_DOS_HEADER>(base, 0);
  const auto* headers = At<IMAGE_NT_HEADERS64>(base, static_cast<uint64_t>(dos->e_lfanew));
  return headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
}

std::string NameOf(void* base, const IMAGE_THUNK_DATA64& lookup) {
  if (IMAGE_SNAP_BY_ORDINAL64(lookup.u1.Ordinal)) {
    return "#" + std::to_string(IMAGE_ORDINAL64(lookup.u1.Ordinal));
  }
  return At<IMAGE_IMPORT_BY_NAME>(base, lookup.u1.AddressOfData)->Name;
}

// Calls visit(import, slot) for each import; the slot is the place in the address table.
template <typename Visitor>
void ForEachImport(void* base, Visitor visit) {
  const IMAGE_DATA_DIRECTORY& directory = ImportDirectory(base);
  if (directory.VirtualAddress == 0) return;
  auto* descriptor = At<IMAGE_IMPORT_DESCRIPTOR>(base, directory.VirtualAddress);
  for (; descriptor->Name != 0; ++descriptor) {
    const std::string module = LowerCase(At<char>(base, descriptor->Name));
    // Without a table of names of its own the address table is overwritten by now: nothing to read
    // any more.
    if (descriptor->OriginalFirstThunk == 0) {
      throw std::runtime_error("imports from " + module + " have no name table");
    }
    auto* lookup = At<IMAGE_THUNK_DATA64>(base, descriptor->OriginalFirstThunk);
    auto* slot = At<IMAGE_THUNK_DATA64>(base, descriptor->FirstThunk);
    for (; lookup->u1.AddressOfData != 0; ++lookup, ++slot) {
      visit(Import{module, NameOf(base, *lookup)}, slot);
    }
  }
}

void Store(IMAGE_THUNK_DATA64* slot, void* function) {
  DWORD protection = 0;
  VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection);
  slot->u1.Function = reinterpret_cast<ULONGLONG>(function);
  VirtualProtect(slot, sizeof(*slot), protection, &protection);
}

// --- A load that must come to nothing.
// ----------------------------------------------------------------------------

void Overwrite(void* place, const void* bytes, size_t size) {
  DWORD protection = 0;
  VirtualProtect(place, size, PAGE_EXECUTE_READWRITE, &protection);
  std::memcpy(place, bytes, size);
  VirtualProtect(place, size, protection, &protection);
  FlushInstructionCache(GetCurrentProcess(), place, size);
}

// Its imports are still the real ones: no code of the DLL may run. The thread-local callbacks come
// before DllMain, which then answers FALSE.
void RefuseLoad(void* base) {
  const auto* dos = At<IMAGE_DOS_HEADER>(base, 0);
  const auto* headers = At<IMAGE_NT_HEADERS64>(base, static_cast<uint64_t>(dos->e_lfanew));
  const IMAGE_OPTIONAL_HEADER64& facts = headers->OptionalHeader;
  const IMAGE_DATA_DIRECTORY& tls = facts.DataDirectory[IMAGE_DIRECTORY_ENTRY_TLS];
  if (tls.VirtualAddress != 0) {
    const auto* directory = At<IMAGE_TLS_DIRECTORY64>(base, tls.VirtualAddress);
    auto* callbacks = reinterpret_cast<ULONGLONG*>(directory->AddressOfCallBacks);
    const ULONGLONG end = 0;
    if (callbacks != nullptr) Overwrite(callbacks, &end, sizeof(end));
  }
  const unsigned char answer_false[] = {0x31, 0xC0, 0xC3};  // xor eax, eax; ret
  if (facts.AddressOfEntryPoint == 0) return;
  Overwrite(At<unsigned char>(base, facts.AddressOfEntryPoint), answer_false, sizeof(answer_false));
}

// --- One load.
// ----------------------------------------------------------------------------------------------------

struct Load {
  std::wstring path;
  ImportResolver resolve = nullptr;
  bool patched = false;
  std::string error;
};

bool SamePath(const LoaderString& a, const std::wstring& b) {
  return CompareStringOrdinal(a.buffer, static_cast<int>(a.length / sizeof(wchar_t)), b.c_str(),
                              static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

void CALLBACK OnLoaded(ULONG reason, const LoaderNotificationData* data, void* context) {
  auto* load = static_cast<Load*>(context);
  if (reason != kReasonLoaded || !SamePath(*data->full_name, load->path)) return;
  std::vector<std::pair<IMAGE_THUNK_DATA64*, void*>> changes;
  try {
    ForEachImport(data->base, [&](const Import& import, IMAGE_THUNK_DATA64* slot) {
      void* real = reinterpret_cast<void*>(slot->u1.Function);
      void* chosen = load->resolve(import, real);
      if (chosen != real) changes.emplace_back(slot, chosen);
    });
  } catch (const std::exception& error) {
    load->error = error.what();
    RefuseLoad(data->base);
    return;
  }
  for (const auto& [slot, function] : changes) Store(slot, function);
  load->patched = true;
}

std::wstring FullPath(const std::wstring& path) {
  wchar_t full[1024] = {};
  const DWORD length = GetFullPathNameW(path.c_str(), 1024, full, nullptr);
  return length == 0 || length >= 1024 ? path : std::wstring(full, length);
}

std::string Printable(const std::wstring& text) {
  std::string result;
  for (const wchar_t letter : text) result += letter < 128 ? static_cast<char>(letter) : '?';
  return result;
}

// --- Traps.
// -------------------------------------------------------------------------------------------------------

uint64_t TrapCalled(const std::string* what) noexcept {
  ReportFailure(*what);
  return 0;
}

// mov rcx, <text>; mov rax, TrapCalled; jmp rax
struct TrapCode {
  static constexpr size_t kSize = 22;
  static void Write(unsigned char* place, const std::string* what) {
    const uint64_t text = reinterpret_cast<uint64_t>(what);
    const uint64_t target = reinterpret_cast<uint64_t>(&TrapCalled);
    const unsigned char load_text[] = {0x48, 0xB9};
    const unsigned char load_target[] = {0x48, 0xB8};
    const unsigned char jump[] = {0xFF, 0xE0};
    std::memcpy(place, load_text, 2);
    std::memcpy(place + 2, &text, 8);
    std::memcpy(place + 10, load_target, 2);
    std::memcpy(place + 12, &target, 8);
    std::memcpy(place + 20, jump, 2);
  }
};

constexpr size_t kTrapSlot = 32;
constexpr size_t kTrapPage = 65536;

unsigned char* NextTrapPlace() {
  static unsigned char* page = nullptr;
  static size_t used = kTrapPage;
  if (used + kTrapSlot > kTrapPage) {
    page = static_cast<unsigned char*>(
        VirtualAlloc(nullptr, kTrapPage, MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE));
    if (page == nullptr) throw std::runtime_error("no memory for import traps");
    used = 0;
  }
  unsigned char* place = page + used;
  used += kTrapSlot;
  return place;
}

}  // namespace

HMODULE LoadPatched(const std::wstring& path, ImportResolver resolve) {
  const auto register_callback = FromNtdll<RegisterFunction>("LdrRegisterDllNotification");
  const auto unregister_callback = FromNtdll<UnregisterFunction>("LdrUnregisterDllNotification");
  Load load;
  load.path = FullPath(path);
  load.resolve = resolve;
  const std::string name = Printable(load.path);
  if (GetModuleHandleW(load.path.c_str()) != nullptr) {
    throw std::runtime_error(name + " is in the process already");
  }
  void* cookie = nullptr;
  if (register_callback(0, OnLoaded, &load, &cookie) < 0) {
    throw std::runtime_error("LdrRegisterDllNotification refused");
  }
  const HMODULE module = LoadLibraryW(load.path.c_str());
  const DWORD error = GetLastError();
  unregister_callback(cookie);
  if (!load.error.empty()) {
    if (module != nullptr) FreeLibrary(module);
    throw std::runtime_error(name + " cannot be patched: " + load.error);
  }
  if (module == nullptr) {
    throw std::runtime_error(name + " does not load, error " + std::to_string(error));
  }
  if (!load.patched) {
    FreeLibrary(module);
    throw std::runtime_error(name + " was loaded without being patched: no notification came");
  }
  return module;
}

std::vector<Import> ListImports(HMODULE module) {
  std::vector<Import> imports;
  ForEachImport(module,
                [&](const Import& import, IMAGE_THUNK_DATA64*) { imports.push_back(import); });
  return imports;
}

void* MakeTrap(const std::string& what) {
  static std::map<std::string, void*> traps;
  auto [trap, is_new] = traps.emplace(what, nullptr);
  if (is_new) {
    unsigned char* place = NextTrapPlace();
    TrapCode::Write(place, &trap->first);
    FlushInstructionCache(GetCurrentProcess(), place, TrapCode::kSize);
    trap->second = place;
  }
  return trap->second;
}

}  // namespace sim
