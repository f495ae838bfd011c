// Owners for the handles that Windows hands out: each gives its handle back when it goes out of
// scope. The invalid value belongs to the type.
#pragma once

#include <utility>

#include "Common/Win.h"

template <typename Traits>
class UniqueResource {
 public:
  using Handle = typename Traits::Handle;

  UniqueResource() = default;
  explicit UniqueResource(Handle handle) : handle_(handle) {}
  UniqueResource(UniqueResource&& other) noexcept : handle_(other.Release()) {}
  UniqueResource& operator=(UniqueResource&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  UniqueResource(const UniqueResource&) = delete;
  UniqueResource& operator=(const UniqueResource&) = delete;
  ~UniqueResource() { Reset(); }

  Handle get() const { return handle_; }
  bool IsValid() const { return handle_ != Traits::Invalid(); }

  void Reset(Handle handle = Traits::Invalid()) {
    const Handle old = std::exchange(handle_, handle);
    if (old != Traits::Invalid()) Traits::Close(old);
  }
  Handle Release() { return std::exchange(handle_, Traits::Invalid()); }

 private:
  Handle handle_ = Traits::Invalid();
};

/// A handle of CreateFile and CreateToolhelp32Snapshot, for which INVALID_HANDLE_VALUE means none.
struct FileHandleTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle handle) { CloseHandle(handle); }
};
using UniqueFile = UniqueResource<FileHandleTraits>;

/// A reference on a loaded module.
struct ModuleTraits {
  using Handle = HMODULE;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle module) { FreeLibrary(module); }
};
using UniqueModule = UniqueResource<ModuleTraits>;

/// A handle of a thread, process, mutex or event, for which null means none.
struct ObjectHandleTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle handle) { CloseHandle(handle); }
};
using UniqueHandle = UniqueResource<ObjectHandleTraits>;

/// A device context of CreateDC.
struct ContextTraits {
  using Handle = HDC;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle dc) { DeleteDC(dc); }
};
using UniqueContext = UniqueResource<ContextTraits>;

struct KeyTraits {
  using Handle = HKEY;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle key) { RegCloseKey(key); }
};
using UniqueKey = UniqueResource<KeyTraits>;
