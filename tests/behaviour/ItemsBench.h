// A session whose display object is scripted, for the items that it offers.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/SessionBench.h"

class ItemsBench : public testing::Test {
 protected:
  ItemsBench() = default;
  explicit ItemsBench(const std::string& text) : bench(text) {}

  template <typename Object = FakeMonitor>
  void Start() {
    ASSERT_TRUE(bench.Start<Object>());
  }
  /// The list for a mask; "refused" when it cannot be made.
  std::string For(uint32_t connected, uint32_t count) {
    if (bench.box().PrepareDMItems(connected, count) == 0) return "refused";
    return bench.Items();
  }
  /// The pop-up over these displays in that mode.
  void StartAt(uint32_t connected, uint32_t count, uint32_t mode, uint32_t active) {
    bench.script->connected = connected;
    bench.script->connected_count = count;
    bench.script->mode = mode;
    bench.script->active = active;
    Start();
    ASSERT_TRUE(bench.ostrel().Run());
  }

  SessionBench bench;
};
