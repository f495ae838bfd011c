#include "sim/Failure.h"

#include <cstdio>
#include <utility>

namespace sim {
namespace {

void PrintFailure(const std::string& text) {
  std::fprintf(stderr, "simulator: %s\n", text.c_str());
  std::fflush(stderr);
}

FailureSink g_sink = &PrintFailure;

}  // namespace

FailureSink SetFailureSink(FailureSink sink) {
  return std::exchange(g_sink, sink != nullptr ? sink : &PrintFailure);
}

void ReportFailure(const std::string& text) noexcept {
  try {
    g_sink(text);
  } catch (...) {
    std::fprintf(stderr, "simulator: a failure could not be reported: %s\n", text.c_str());
  }
}

}  // namespace sim
