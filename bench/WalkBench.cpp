#include "bench/WalkBench.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

#include "Common/Win.h"
#include "session/catalogue/BestModes.h"

namespace {

constexpr uint32_t kFew = 10000;
constexpr uint32_t kMany = 100000;
constexpr uint32_t kListed = 256;  // the walk goes over these again and again
constexpr int kRounds = 200;
constexpr double kMostTimes = 12;

double Seconds() {
  LARGE_INTEGER now, frequency;
  QueryPerformanceCounter(&now);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

DEVMODEA ListedMode(std::mt19937* random) {
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  dm.dmPelsWidth = 640 + (*random)() % 3200;
  dm.dmPelsHeight = 480 + (*random)() % 1700;
  dm.dmBitsPerPel = 32;
  dm.dmDisplayFrequency = 24 + (*random)() % 120;
  return dm;
}

/// Microseconds for one walk: the best of some rounds. Few modes are walked over again and again:
/// a long list of them would be measured by the caches it leaves.
double BestTime(const std::vector<DEVMODEA>& listed, uint32_t count) {
  double best = 1e9;
  for (int round = 0; round < kRounds; ++round) {
    catalogue::BestModes<DEVMODEA> modes({true, true});
    const double begin = Seconds();
    for (uint32_t i = 0; i < count; ++i) modes.Add(listed[i % kListed]);
    best = std::min(best, (Seconds() - begin) * 1e6);
    if (modes.list().size() != 2) std::printf("the walk lost its modes\n");
  }
  return best;
}

}  // namespace

bool MeasureWalk() {
  std::mt19937 random(1);
  std::vector<DEVMODEA> listed;
  for (uint32_t i = 0; i < kListed; ++i) listed.push_back(ListedMode(&random));
  const double few = BestTime(listed, kFew);
  const double many = BestTime(listed, kMany);
  const bool linear = many <= few * kMostTimes;
  std::printf("The walk over a display's modes:\n");
  std::printf("  %u modes %.0f us, %u modes %.0f us: %.1f times, %s\n", kFew, few, kMany, many,
              many / few, linear ? "at most 12" : "MORE THAN 12");
  return linear;
}
