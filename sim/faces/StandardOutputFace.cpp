// The functions of the C run-time that write to a stream. What goes to the standard output is kept
// in the machine; all other streams are real. The library and this program share one run-time, and
// so its streams.
#include <cstdarg>
#include <cstdio>
#include <utility>
#include <vector>

#include "sim/MachineState.h"

namespace sim {
namespace {

bool IsKept(FILE* stream) { return stream == stdout && CurrentOrNull() != nullptr; }

void Keep(const char* text, size_t size) {
  Machine::Current().state().standard_output.Write(text, size);
}

size_t FakeFwrite(const void* data, size_t size, size_t count, FILE* stream) {
  if (!IsKept(stream)) return std::fwrite(data, size, count, stream);
  Keep(static_cast<const char*>(data), size * count);
  return count;
}

int FakeFputc(int letter, FILE* stream) {
  if (!IsKept(stream)) return std::fputc(letter, stream);
  const char text = static_cast<char>(letter);
  Keep(&text, 1);
  return static_cast<unsigned char>(text);
}

int FakePutchar(int letter) { return FakeFputc(letter, stdout); }

int FakeFputs(const char* text, FILE* stream) {
  if (!IsKept(stream)) return std::fputs(text, stream);
  Keep(text, std::string(text).size());
  return 0;
}

int FakePuts(const char* text) {
  if (FakeFputs(text, stdout) < 0) return -1;
  return FakeFputc('\n', stdout) == '\n' ? 0 : -1;
}

int FakeVfprintf(FILE* stream, const char* format, va_list arguments) {
  if (!IsKept(stream)) return std::vfprintf(stream, format, arguments);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length < 0) return length;
  std::vector<char> text(static_cast<size_t>(length) + 1);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  Keep(text.data(), static_cast<size_t>(length));
  return length;
}

int FakeFprintf(FILE* stream, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int result = FakeVfprintf(stream, format, arguments);
  va_end(arguments);
  return result;
}

int FakePrintf(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int result = FakeVfprintf(stdout, format, arguments);
  va_end(arguments);
  return result;
}

// Without a stream all are flushed.
int FakeFflush(FILE* stream) {
  if (IsKept(stream) || (stream == nullptr && CurrentOrNull() != nullptr)) {
    Machine::Current().state().standard_output.Flush();
  }
  return std::fflush(stream);
}

}  // namespace

void StandardOutput::Write(const char* text, size_t size) {
  const Lock lock(mutex_);
  text_.append(text, size);
  unflushed_.append(text, size);
}

void StandardOutput::Flush() {
  const Lock lock(mutex_);
  unflushed_.clear();
}

std::string StandardOutput::Take() {
  const Lock lock(mutex_);
  return std::exchange(text_, std::string());
}

std::string StandardOutput::Unflushed() const {
  const Lock lock(mutex_);
  return unflushed_;
}

std::string TakeStandardOutput(Machine& machine) { return machine.state().standard_output.Take(); }

std::string UnflushedStandardOutput(const Machine& machine) {
  return machine.state().standard_output.Unflushed();
}

const std::vector<Entry>& StandardOutputFace() {
  static const std::vector<Entry> entries = {
      {"msvcrt.dll", "fwrite", Guard<FakeFwrite>()},
      {"msvcrt.dll", "fputc", Guard<FakeFputc>()},
      {"msvcrt.dll", "fputs", Guard<FakeFputs>()},
      {"msvcrt.dll", "fflush", Guard<FakeFflush>()},
      {"msvcrt.dll", "fprintf", Erase(FakeFprintf)},
      {"msvcrt.dll", "vfprintf", Guard<FakeVfprintf>()},
      {"msvcrt.dll", "printf", Erase(FakePrintf)},
      {"msvcrt.dll", "putchar", Guard<FakePutchar>()},
      {"msvcrt.dll", "puts", Guard<FakePuts>()},
  };
  return entries;
}

}  // namespace sim
