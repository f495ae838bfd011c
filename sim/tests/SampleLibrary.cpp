#include "sim/tests/SampleLibrary.h"

#include <stdexcept>

#include "sim/ImportRules.h"
#include "sim/Patcher.h"

namespace sim {
namespace {

template <typename Function>
Function Export(HMODULE module, const char* name) {
  const FARPROC found = GetProcAddress(module, name);
  if (found == nullptr) throw std::runtime_error(std::string("SimSample.dll has no ") + name);
  return reinterpret_cast<Function>(reinterpret_cast<void*>(found));
}

}  // namespace

std::wstring SampleLibrary::Path() {
  wchar_t path[1024] = {};
  GetModuleFileNameW(nullptr, path, 1024);
  const std::wstring text(path);
  return text.substr(0, text.find_last_of(L"\\/") + 1) + L"SimSample.dll";
}

SampleLibrary::SampleLibrary() : module_(LoadPatched(Path(), ResolveImport)) {}
SampleLibrary::~SampleLibrary() { FreeLibrary(module_); }

ULONGLONG SampleLibrary::TicksAtLoad() const {
  return Export<ULONGLONG (*)()>(module_, "Sample_TicksAtLoad")();
}

uint32_t SampleLibrary::Count() const { return Export<uint32_t (*)()>(module_, "Sample_Count")(); }

void SampleLibrary::Sleep(DWORD milliseconds) const {
  Export<void (*)(DWORD)>(module_, "Sample_Sleep")(milliseconds);
}

BOOL SampleLibrary::CallUnlisted() const {
  return Export<BOOL (*)()>(module_, "Sample_CallUnlisted")();
}

HMODULE SampleLibrary::LoadDll(const char* name) const {
  return Export<HMODULE (*)(const char*)>(module_, "Sample_LoadLibrary")(name);
}

BOOL SampleLibrary::FreeDll(HMODULE module) const {
  return Export<BOOL (*)(HMODULE)>(module_, "Sample_FreeLibrary")(module);
}

void* SampleLibrary::Find(HMODULE module, const char* name) const {
  return Export<void* (*)(HMODULE, const char*)>(module_, "Sample_GetProcAddress")(module, name);
}

UINT_PTR SampleLibrary::Timer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) const {
  return Export<UINT_PTR (*)(HWND, UINT_PTR, UINT, TIMERPROC)>(module_, "Sample_SetTimer")(
      window, id, period, procedure);
}

uint32_t SampleLibrary::UseRunTime() const {
  return Export<uint32_t (*)()>(module_, "Sample_UseRunTime")();
}

}  // namespace sim
