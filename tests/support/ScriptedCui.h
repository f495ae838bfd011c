// An Intel driver that answers as a test says, for answers that a sound driver does not give. A COM
// object by its binary interface: the first word points to 45 slots.
//
//   ScriptedCui cui;
//   cui.devices = {{0x11, 2, 0x12}};
//   cui.get = [](const GUID&, Bytes* block, uint32_t* err) { Put(block, 0, 3); return S_OK; };
//   cui.Install(&machine);                  // before the library asks for it
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "sim/Failure.h"
#include "sim/Machine.h"
#include "sim/MachineState.h"
#include "sim/faces/BasicStrings.h"
#include "sim/faces/IntelDriver.h"

class ScriptedCui {
 public:
  using Bytes = std::vector<uint8_t>;
  /// A copy of the caller's block, given back to it afterwards.
  using Operation = std::function<HRESULT(const GUID& id, Bytes* block, uint32_t* err)>;
  struct Device {
    uint32_t uid;
    uint32_t type;
    uint32_t status;
  };

  ScriptedCui() { Current() = this; }
  ~ScriptedCui() { Current() = nullptr; }
  ScriptedCui(const ScriptedCui&) = delete;
  ScriptedCui& operator=(const ScriptedCui&) = delete;

  void Install(sim::Machine* machine) {
    constexpr CLSID kClass = {
        0x7160A13D, 0x73DA, 0x4CEA, {0x95, 0xB9, 0x37, 0x35, 0x64, 0x78, 0x58, 0x8A}};
    machine->state().com_classes[sim::kIntelDriverProgramId] = {kClass, Create};
  }

  static uint32_t Get(const Bytes& block, size_t at) {
    uint32_t word = 0;
    for (size_t i = 4; i-- > 0;) word = word << 8 | block.at(at + i);
    return word;
  }
  static void Put(Bytes* block, size_t at, uint32_t word) {
    for (size_t i = 0; i < 4; ++i) block->at(at + i) = static_cast<uint8_t>(word >> 8 * i);
  }

  std::vector<Device> devices;  // of every adapter
  Operation get;                // GetDeviceData; S_OK and nothing written without one
  Operation set;                // SetDeviceData
  Operation change;             // ChangeActiveDevices
  std::vector<Bytes> given;     // every block that an operation was given, in order
  std::vector<uint32_t> types_asked;

 private:
  struct Object {
    void* const* table;
  };

  static ScriptedCui*& Current() {
    static ScriptedCui* current = nullptr;
    return current;
  }

  static HRESULT Run(const Operation& operation, const GUID* id, uint32_t size, uint8_t* data,
                     uint32_t* err) {
    Bytes block(data, data + size);
    Current()->given.push_back(block);
    const HRESULT result = operation ? operation(*id, &block, err) : S_OK;
    std::memcpy(data, block.data(), size);
    return result;
  }

  static HRESULT WINAPI Change(Object*, const GUID* id, uint32_t size, uint8_t* data,
                               uint32_t* err) {
    return Run(Current()->change, id, size, data, err);
  }
  static HRESULT WINAPI GetData(Object*, const GUID* id, uint32_t size, uint8_t* data,
                                uint32_t* err) {
    return Run(Current()->get, id, size, data, err);
  }
  static HRESULT WINAPI SetData(Object*, const GUID* id, uint32_t size, uint8_t* data,
                                uint32_t* err) {
    return Run(Current()->set, id, size, data, err);
  }
  static HRESULT WINAPI Enumerate(Object*, BSTR name, uint32_t index, uint32_t* uid, uint32_t* type,
                                  uint32_t* status) {
    sim::KeepBasicString("EnumDevices", name);
    Current()->types_asked.push_back(*type);
    if (index >= Current()->devices.size()) return S_FALSE;
    const Device& device = Current()->devices[index];
    *uid = device.uid;
    *type = device.type;
    *status = device.status;
    return S_OK;
  }
  static HRESULT WINAPI Unknown(Object*) {
    sim::ReportFailure("a slot of the Intel driver was called that has no script");
    return E_NOTIMPL;
  }

  static HRESULT Create(REFIID, void** object) {
    static const std::array<void*, 45> table = [] {
      std::array<void*, 45> slots;
      slots.fill(sim::Erase(Unknown));
      slots[11] = sim::Erase(Change);
      slots[12] = sim::Erase(Enumerate);
      slots[43] = sim::Erase(GetData);
      slots[44] = sim::Erase(SetData);
      return slots;
    }();
    static Object driver = {table.data()};
    *object = &driver;
    return S_OK;
  }
};
