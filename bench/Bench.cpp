// What diagnostics cost where they are off, beside an empty loop, and what a load of the library
// costs. Prints these figures and judges none of them: a number depends on the machine and on what
// else runs there. The one thing that is judged is a proportion, that of the walk over a display's
// modes.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "Common/Logging.h"
#include "Common/Win.h"
#include "bench/WalkBench.h"

namespace {

constexpr int kRounds = 5;
constexpr int kIterations = 50000000;
constexpr int kLoads = 200;

double Seconds() {
  LARGE_INTEGER now, frequency;
  QueryPerformanceCounter(&now);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

// Makes the compiler believe that all memory, the log's switches among it, may have changed.
inline void ForgetMemory() { asm volatile("" ::: "memory"); }

/// Nanoseconds for one call of `statement` in a loop: the best of some rounds.
template <typename Statement>
double BestTime(Statement statement) {
  double best = 1e9;
  for (int round = 0; round < kRounds; ++round) {
    const double begin = Seconds();
    for (int i = 0; i < kIterations; ++i) {
      statement(i);
      ForgetMemory();
    }
    best = std::min(best, (Seconds() - begin) / kIterations * 1e9);
  }
  return best;
}

void PrintTime(const char* what, double nanoseconds, double empty) {
  std::printf("  %-44s %7.2f ns  (%+.2f ns)\n", what, nanoseconds, nanoseconds - empty);
}

// Evaluated by a DCHECK only while checks are on; it would be seen in the figures.
bool ExpensiveCondition(int i) {
  volatile int value = i;
  for (int k = 0; k < 100; ++k) value = value + k;
  return value != 0;
}

void MeasureStatements() {
  SetMinLogLevel(5);  // silences every severity
  const double empty = BestTime([](int) {});
  std::printf("One statement that is switched off:\n");
  PrintTime("empty loop", empty, empty);
  PrintTime("LOG(INFO) << text << number",
            BestTime([](int i) { LOG(INFO) << "value " << i << " of " << kIterations; }), empty);
  PrintTime("LOG(ERROR) << text << number",
            BestTime([](int i) { LOG(ERROR) << "value " << i << " of " << kIterations; }), empty);
  SetMinLogLevel(0);
  PrintTime("VLOG(1) << text << number",
            BestTime([](int i) { VLOG(1) << "value " << i << " of " << kIterations; }), empty);
  PrintTime("DCHECK(cheap condition)", BestTime([](int i) { DCHECK(i < 0) << "value " << i; }),
            empty);
  PrintTime("DCHECK(expensive condition)",
            BestTime([](int i) { DCHECK(ExpensiveCondition(i)) << "value " << i; }), empty);
}

void MeasureLoad(const char* path) {
  std::vector<double> times;
  for (int i = 0; i < kLoads; ++i) {
    const double begin = Seconds();
    const HMODULE library = LoadLibraryA(path);
    const double end = Seconds();
    if (library == nullptr) {
      std::printf("%s cannot be loaded: error %lu\n", path, GetLastError());
      return;
    }
    FreeLibrary(library);
    times.push_back((end - begin) * 1000);
  }
  const double first = times.front();
  std::sort(times.begin(), times.end());
  std::printf("Loading %s, %d times:\n", path, kLoads);
  std::printf("  first %.2f ms, median %.2f ms, slowest %.2f ms\n", first, times[times.size() / 2],
              times.back());
}

}  // namespace

int main() {
  // The load first: no library that this program brings along is warm then.
  MeasureLoad("Ostrel.dll");
  MeasureStatements();
  return MeasureWalk() ? 0 : 1;
}
