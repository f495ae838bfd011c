#include "sim/faces/BasicStrings.h"

#include <string>

#include "sim/Failure.h"
#include "sim/MachineState.h"

namespace sim {
namespace {

constexpr char kText[] = "BSTR";
constexpr char kKept[] = "BSTR that was handed over";

Machine::State& State() { return Machine::Current().state(); }

BSTR Taken(BSTR text) {
  if (text != nullptr) LedgerTake(kText, text);
  return text;
}

BSTR WINAPI FakeSysAllocString(const OLECHAR* text) {
  const Call call("SysAllocString");
  return call.Fails() ? nullptr : Taken(SysAllocString(text));
}

BSTR WINAPI FakeSysAllocStringLen(const OLECHAR* text, UINT length) {
  const Call call("SysAllocStringLen");
  return call.Fails() ? nullptr : Taken(SysAllocStringLen(text, length));
}

void WINAPI FakeSysFreeString(BSTR text) {
  const Call call("SysFreeString");
  if (text == nullptr) return;
  LedgerGive(kText, text);
  SysFreeString(text);
}

UINT WINAPI FakeSysStringLen(BSTR text) {
  const Call call("SysStringLen");
  return SysStringLen(text);
}

std::string KeyOf(BSTR text) {
  return std::string(kKept) + " " + std::to_string(reinterpret_cast<uint64_t>(text));
}

}  // namespace

void KeepBasicString(const char* function, BSTR text) {
  Machine::State& state = State();
  if (state.ledger.Give(kText, reinterpret_cast<uint64_t>(text))) {
    state.counters[KeyOf(text)] = 1;
    ++state.counters[kKept];
  } else if (state.counters.count(KeyOf(text)) == 0) {
    ReportFailure(std::string(function) + " was given a text that is no BSTR");
  }
}

uint64_t KeptBasicStrings(const Machine& machine) {
  const auto& counters = machine.state().counters;
  const auto found = counters.find(kKept);
  return found == counters.end() ? 0 : found->second;
}

const std::vector<Entry>& BasicStringFace() {
  static const std::vector<Entry> entries = {
      {"oleaut32.dll", "SysAllocString", Guard<FakeSysAllocString>()},
      {"oleaut32.dll", "SysAllocStringLen", Guard<FakeSysAllocStringLen>()},
      {"oleaut32.dll", "SysFreeString", Guard<FakeSysFreeString>()},
      {"oleaut32.dll", "SysStringLen", Guard<FakeSysStringLen>()},
  };
  return entries;
}

}  // namespace sim
