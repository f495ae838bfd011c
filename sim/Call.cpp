#include <cstdarg>
#include <cstdio>

#include "sim/Face.h"
#include "sim/Failure.h"
#include "sim/MachineState.h"

namespace sim {
namespace {

thread_local uint64_t t_calls = 0;

std::string Line(const char* function, int64_t result, const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(length > 0 ? static_cast<size_t>(length) + 1 : 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, again);
  va_end(again);
  text.pop_back();
  return std::string(function) + "(" + text + ")=" + std::to_string(result);
}

}  // namespace

Call::Call(const char* function) : function_(function) {
  ++t_calls;
  const std::optional<uint32_t> fault = Machine::Current().state().faults.OnCall(function);
  fails_ = fault.has_value();
  code_ = fault.value_or(0);
}

int64_t Call::Changed(int64_t result, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Machine::Current().state().journal.Write(Line(function_, result, format, arguments));
  va_end(arguments);
  return result;
}

int64_t Call::Read(int64_t result, const char* format, ...) {
  Journal& journal = Machine::Current().state().journal;
  if (!journal.reads()) return result;
  va_list arguments;
  va_start(arguments, format);
  journal.Write(Line(function_, result, format, arguments));
  va_end(arguments);
  return result;
}

uint64_t CallsOfThisThread() { return t_calls; }

void JournalLine(const std::string& line) { Machine::Current().state().journal.Write(line); }

void ReportException(const char* text) noexcept {
  ReportFailure(std::string("a simulated function threw: ") + text);
}

void LedgerTake(const char* kind, const void* what) {
  Machine::Current().state().ledger.Take(kind, reinterpret_cast<uint64_t>(what));
}

void LedgerGive(const char* kind, const void* what) {
  const uint64_t number = reinterpret_cast<uint64_t>(what);
  if (Machine::Current().state().ledger.Give(kind, number)) return;
  char text[32];
  std::snprintf(text, sizeof(text), " 0x%llx", static_cast<unsigned long long>(number));
  ReportFailure(std::string("gave back what it does not hold: ") + kind + text);
}

}  // namespace sim
