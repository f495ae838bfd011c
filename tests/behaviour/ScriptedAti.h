// A legacy AMD library that answers as a test says, for answers that a sound one does not give, and
// for records that are looked at whole.
//
//   ScriptedAti ati;
//   ati.types = {{0, 1}, {1, 2}};             // EnumDisplays by display index
//   ati.Install(&host.machine);               // before the library is loaded
//   ...
//   ati.given["ATIDL_GetActiveDisplays"][0]   // the words of the first record, as they came
#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "sim/MachineState.h"

class ScriptedAti {
 public:
  using Words = std::vector<uint32_t>;
  /// A copy of the caller's record, given back to it afterwards.
  using Operation = std::function<int32_t(Words* record)>;

  ScriptedAti() { Current() = this; }
  ~ScriptedAti() { Current() = nullptr; }
  ScriptedAti(const ScriptedAti&) = delete;
  ScriptedAti& operator=(const ScriptedAti&) = delete;

  void Install(sim::Machine* machine) {
    constexpr char kFile[] = "atipdl64.dll";
    machine->state().invented[kFile] = {kFile, Entries(), 0, nullptr, nullptr};
  }

  /// A record of `size` words that begins like this.
  static Words Record(size_t size, Words words) {
    words.resize(size);
    return words;
  }
  /// Writes such a record for the caller, with this result.
  static Operation Answer(const Words& words, int32_t result = 0) {
    return [words, result](Words* record) {
      std::copy(words.begin(), words.end(), record->begin());
      return result;
    };
  }

  std::vector<std::pair<int32_t, uint32_t>> ids = {{0, 0x1002}};  // GetAdapterID by device
  int32_t capability_result = 0;
  uint32_t capability_first = 2;
  int32_t connected_result = 0;
  uint32_t connected = 3;
  std::map<uint32_t, uint32_t> types;  // by display index; one without an entry is a failure
  std::map<uint32_t, uint32_t> kinds;  // the same; nothing is written without an entry
  int32_t kind_result = 0;
  int32_t switching_result = 0;
  uint32_t switching_value = 0;
  // 0 and nothing written without one.
  Operation get_active, set_configuration, get_adapter, set_adapter, get_edid;

  std::string calls;  // "EnumDisplays(0,1)\n": the arguments in front of the output
  std::map<std::string, std::vector<Words>> given;

  std::string TakeCalls() { return std::exchange(calls, ""); }

 private:
  static ScriptedAti*& Current() {
    static ScriptedAti* current = nullptr;
    return current;
  }
  static void Note(const std::string& name, uint32_t first, const std::string& more = "") {
    Current()->calls += name + "(" + std::to_string(first) + more + ")\n";
  }
  static int32_t Run(const std::string& name, const Operation& operation, void* record,
                     size_t size) {
    Words words(size / 4);
    std::memcpy(words.data(), record, size);
    Current()->given[name].push_back(words);
    const int32_t result = operation ? operation(&words) : 0;
    std::memcpy(record, words.data(), size);
    return result;
  }

  static int32_t WINAPI GetCapabilities(uint32_t adapter, uint32_t* first, uint32_t* second) {
    Note("GetCapabilities", adapter);
    *first = Current()->capability_first;
    *second = 0;
    return Current()->capability_result;
  }
  static int32_t WINAPI Unused() { return -1; }
  static int32_t WINAPI EnumDisplays(uint32_t adapter, uint32_t index, uint32_t* type) {
    Note("EnumDisplays", adapter, "," + std::to_string(index));
    const auto found = Current()->types.find(index);
    if (found == Current()->types.end()) return 0;
    *type = found->second;
    return 0x100;  // any number but 0
  }
  static int32_t WINAPI GetConnectedDisplays(uint32_t adapter, uint32_t* vector) {
    Note("GetConnectedDisplays", adapter);
    *vector = Current()->connected;
    return Current()->connected_result;
  }
  static int32_t WINAPI EnableExtendedDesktop(uint32_t adapter, uint32_t enable) {
    Note("EnableExtendedDesktop", adapter, "," + std::to_string(enable));
    return 0;
  }
  static int32_t WINAPI GetSwitching(uint32_t adapter, uint32_t* value) {
    Note("ATIDL_GetDisplaySwitchingCapability", adapter, "," + std::to_string(*value));
    *value = Current()->switching_value;
    return Current()->switching_result;
  }
  static int32_t WINAPI GetActive(uint32_t adapter, void* record) {
    constexpr char kName[] = "ATIDL_GetActiveDisplays";
    Note(kName, adapter);
    return Run(kName, Current()->get_active, record, 64);
  }
  static int32_t WINAPI SetConfiguration(uint32_t adapter, void* record) {
    constexpr char kName[] = "ATIDL_SetConfigurationEx";
    Note(kName, adapter);
    return Run(kName, Current()->set_configuration, record, 64);
  }
  // Not noted: it stands in front of every other call.
  static int32_t WINAPI GetAdapterId(uint32_t device, uint32_t* id) {
    const auto& ids = Current()->ids;
    if (device >= ids.size()) return -1;
    *id = ids[device].second;
    return ids[device].first;
  }
  static uint32_t WINAPI GetVector(uint32_t adapter, uint32_t kind) {
    Note("ATIDL_GetDisplayVector", adapter, "," + std::to_string(kind));
    return 1;
  }
  static int32_t WINAPI GetAdapter(void* record) {
    constexpr char kName[] = "ATIDL_GetAdapterConfig";
    Current()->calls += std::string(kName) + "\n";
    return Run(kName, Current()->get_adapter, record, 156);
  }
  static int32_t WINAPI SetAdapter(void* record) {
    constexpr char kName[] = "ATIDL_SetAdapterConfig";
    Current()->calls += std::string(kName) + "\n";
    return Run(kName, Current()->set_adapter, record, 156);
  }
  static int32_t WINAPI GetEdid(uint32_t adapter, uint32_t index, void* record) {
    constexpr char kName[] = "ATIDL_DisplayGetEdidData";
    Note(kName, adapter, "," + std::to_string(index));
    return Run(kName, Current()->get_edid, record, 288);
  }
  static int32_t WINAPI GetDevice(uint32_t adapter, uint32_t index, void* record) {
    constexpr char kName[] = "ATIDL_DisplayGetDeviceConfig";
    Note(kName, adapter, "," + std::to_string(index));
    const auto answer = [index](Words* words) {
      const auto found = Current()->kinds.find(index);
      if (found != Current()->kinds.end()) words->at(1) = found->second;
      return Current()->kind_result;
    };
    return Run(kName, answer, record, 20);
  }

  static std::vector<sim::Entry> Entries() {
    return {
        {"", "GetCapabilities", sim::Erase(GetCapabilities)},
        {"", "GetConfiguration", sim::Erase(Unused)},
        {"", "SetConfiguration", sim::Erase(Unused)},
        {"", "EnumDisplays", sim::Erase(EnumDisplays)},
        {"", "GetConnectedDisplays", sim::Erase(GetConnectedDisplays)},
        {"", "EnableExtendedDesktop", sim::Erase(EnableExtendedDesktop)},
        {"", "ATIDL_GetDisplaySwitchingCapability", sim::Erase(GetSwitching)},
        {"", "ATIDL_GetActiveDisplays", sim::Erase(GetActive)},
        {"", "ATIDL_SetActiveDisplays", sim::Erase(Unused)},
        {"", "ATIDL_SetConfigurationEx", sim::Erase(SetConfiguration)},
        {"", "ATIDL_GetAdapterID", sim::Erase(GetAdapterId)},
        {"", "ATIDL_GetDisplayVector", sim::Erase(GetVector)},
        {"", "ATIDL_GetAdapterConfig", sim::Erase(GetAdapter)},
        {"", "ATIDL_SetAdapterConfig", sim::Erase(SetAdapter)},
        {"", "ATIDL_DisplayGetEdidData", sim::Erase(GetEdid)},
        {"", "ATIDL_DisplayGetDeviceConfig", sim::Erase(GetDevice)},
        {"", "ATIDL_GetDisplaySettings", sim::Erase(Unused)},
    };
  }
};
