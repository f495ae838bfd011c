// SimSample.dll under the simulator: loaded with the same rules as the library under test.
#pragma once

#include <cstdint>
#include <string>

#include "Common/Win.h"

namespace sim {

constexpr char kSampleMachine[] = "win7 intel: internal 1366x768 active, crt 1024x768";

class SampleLibrary {
 public:
  SampleLibrary();
  ~SampleLibrary();
  SampleLibrary(const SampleLibrary&) = delete;
  SampleLibrary& operator=(const SampleLibrary&) = delete;

  static std::wstring Path();
  HMODULE module() const { return module_; }

  ULONGLONG TicksAtLoad() const;
  uint32_t Count() const;
  void Sleep(DWORD milliseconds) const;
  BOOL CallUnlisted() const;
  HMODULE LoadDll(const char* name) const;
  BOOL FreeDll(HMODULE module) const;
  void* Find(HMODULE module, const char* name) const;
  UINT_PTR Timer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) const;
  uint32_t UseRunTime() const;

 private:
  HMODULE module_;
};

}  // namespace sim
