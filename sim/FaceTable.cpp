#include "sim/FaceTable.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "sim/Failure.h"
#include "sim/MachineState.h"

namespace sim {
namespace {

using FaceFunction = const std::vector<Entry>& (*)();

constexpr FaceFunction kFaces[] = {
    DisplayDevicesFace, DisplayConfigFace, SetupApiFace,
    RegistryFace,       SystemFace,        LoaderFace,
    TimeFace,           WindowFace,        GdiFace,
    HandleFace,         ComFace,           RunTimeFace,
    ServicesFace,       PlayersFace,       ProfileFace,
    KeyboardFace,       BasicStringFace,   ThreadFace,
    ProcessFace,        FilesFace,         ClientHeapFace,
    StandardOutputFace, EscapeFace,
};

constexpr const char* kNeverFailing[] = {
    "CoUninitialize",
    "FreeLibraryAndExitThread",
    "GetDesktopWindow",
    "GdiplusShutdown",
    "GetCommandLineA",
    "GetCommandLineW",
    "GetLocalTime",
    "GetSystemTime",
    "GetSystemTimeAsFileTime",
    "GetSystemTimePreciseAsFileTime",
    "GetTickCount",
    "GetTickCount64",
    "InitCommonControls",
    "OutputDebugStringW",
    "PostQuitMessage",
    "Sleep",
    "SysFreeString",
    "SysStringLen",
    "clock",
    "fflush",
    "fprintf",
    "fputc",
    "fputs",
    "free",
    "fwrite",
    "getenv",
    "keybd_event",
    "printf",
    "putchar",
    "puts",
    "vfprintf",
};

std::vector<const Entry*> Collect() {
  std::vector<const Entry*> entries;
  std::map<std::string, int> seen;
  for (const FaceFunction face : kFaces) {
    for (const Entry& entry : face()) {
      const std::string name = std::string(entry.module) + "!" + entry.name;
      if (++seen[name] == 2) ReportFailure("two faces simulate " + name);
      entries.push_back(&entry);
    }
  }
  return entries;
}

}  // namespace

const std::vector<const Entry*>& AllEntries() {
  static const std::vector<const Entry*> entries = Collect();
  return entries;
}

const Entry* FindEntry(const std::string& module, const std::string& name) {
  for (const Entry* entry : AllEntries()) {
    if (name == entry->name && module == entry->module) return entry;
  }
  return nullptr;
}

const Entry* FindEntryByName(const std::string& name) {
  for (const Entry* entry : AllEntries()) {
    if (name == entry->name) return entry;
  }
  return nullptr;
}

bool CanFail(const std::string& name) {
  return std::none_of(std::begin(kNeverFailing), std::end(kNeverFailing),
                      [&](const char* never) { return name == never; });
}

bool IsAvailable(const Entry& entry) {
  return entry.available == nullptr || entry.available(Machine::Current().state().model);
}

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a')
                                          : static_cast<char>(letter);
  });
  return text;
}

}  // namespace sim
