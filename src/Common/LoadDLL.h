// Base of every library that is bound at run time.
#pragma once

#include <cstddef>

#include "Common/Win.h"

class LoadDLL {
 public:
  LoadDLL() = default;
  LoadDLL(const LoadDLL&) = delete;
  LoadDLL& operator=(const LoadDLL&) = delete;
  /// Gives the module back.
  virtual ~LoadDLL();

  /// Binds the library, freeing one that is held. @param file_name  narrow path or name; null: no
  /// module
  /// @return 0 when there is no module or a required name is missing; the names that exist are
  /// bound all the same
  virtual BOOL Load(const char* file_name) = 0;

  /// A module is held, whether or not all its names were found. The owner tests this and refuses to
  /// load twice.
  bool IsLoaded() const { return module_ != nullptr; }

 protected:
  /// A name of the library and the function pointer that takes its address.
  struct Entry {
    const char* name;
    void* slot;            // made by Slot
    bool required = true;  // a missing one fails the binding
  };

  /// The place of a typed function pointer, for an Entry.
  template <typename Function>
  static void* Slot(Function*& pointer) {
    static_assert(sizeof(pointer) == sizeof(FARPROC),
                  "a function pointer holds what GetProcAddress gives");
    return &pointer;
  }

  /// The body of every Load: frees a held module, loads `file_name`, resolves the entries in order,
  /// null where a name is missing.
  template <size_t kCount>
  BOOL Bind(const char* file_name, const Entry (&entries)[kCount]) {
    return Bind(file_name, entries, kCount);
  }
  BOOL Bind(const char* file_name, const Entry* entries, size_t count);

  HMODULE module_ = nullptr;
};
