// What this process tells the debugger and what it throws, in order, for as long as the watch
// lives: "debugger: text" and "throw", one line each.
#pragma once

#include <string>

#include "Common/Win.h"

class RaiseWatch {
 public:
  RaiseWatch() {
    Lines().clear();
    handler_ = AddVectoredExceptionHandler(1, Note);
  }
  ~RaiseWatch() { RemoveVectoredExceptionHandler(handler_); }
  RaiseWatch(const RaiseWatch&) = delete;
  RaiseWatch& operator=(const RaiseWatch&) = delete;

  std::string Take() {
    std::string taken;
    taken.swap(Lines());
    return taken;
  }

 private:
  static constexpr DWORD kDebuggerText = 0x40010006;  // DBG_PRINTEXCEPTION_C
  static constexpr DWORD kThrow = 0x20474343;         // a C++ exception of this compiler

  static std::string& Lines() {
    static std::string lines;
    return lines;
  }

  static LONG CALLBACK Note(EXCEPTION_POINTERS* pointers) {
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode == kDebuggerText) {
      const auto* const text = reinterpret_cast<const char*>(record.ExceptionInformation[1]);
      Lines() += std::string("debugger: ") + text;
    }
    if (record.ExceptionCode == kThrow) Lines() += "throw\n";
    return EXCEPTION_CONTINUE_SEARCH;
  }

  void* handler_;
};
