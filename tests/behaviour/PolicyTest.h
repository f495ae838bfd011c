// What the tests of the resolution policy share: a session on a machine of their own, what is
// remembered as lines of Ostrel.ini, and the journal's lines.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/behaviour/SettingsFile.h"
#include "tests/support/SessionBench.h"

namespace policy_test {

/// The journal's line for one device, as the texts of a test give it: "1024x768x32@60 at 0,0".
inline std::string Line(const std::string& function, const std::string& device,
                        const std::string& what, const char* fields, const char* flags,
                        int result) {
  return function + "(" + device + " " + what + " fields=" + fields + " flags=" + flags +
         ")=" + std::to_string(result) + "\n";
}

/// A change of the primary display below Windows 7: one test and one change, made twice when it is
/// refused.
inline std::string Changed(const std::string& mode, const char* fields, int result = 0) {
  const std::string what = mode + " at 0,0";
  const std::string change =
      Line("ChangeDisplaySettingsExA", "null", what, fields, "0x40000009", result);
  return Line("ChangeDisplaySettingsA", "null", what, fields, "0x2", result) + change +
         (result != 0 ? change : "");
}

/// A change through the display configuration.
inline std::string Configured(uint32_t paths) {
  const std::string call = "SetDisplayConfig(paths=" + std::to_string(paths) + " flags=";
  return call + "0x60)=0\n" + call + "0x2a0)=0\n";
}

class PolicyTest : public testing::Test {
 protected:
  explicit PolicyTest(const std::string& text) : bench(text) {}

  /// Loads the library over an object of type Object and forgets what it logged.
  template <typename Object = FakeMonitor>
  void Begin(uint32_t vendor = kVendorIntel) {
    ASSERT_TRUE(bench.Start<Object>(static_cast<uint16_t>(vendor)));
    TakeLog();
  }

  const PolicyBox& policy() { return *bench.ostrel().white_box().policy; }
  sim::Model& model() { return bench.machine.model(); }

  /// Writes one section of Ostrel.ini and gives the key to it.
  SettingsKey Remember(const std::string& section, const std::string& lines) {
    policy().EnsureSettingsPath();
    settings_file::Put(bench.machine, settings_file::Section(section, lines));
    SettingsKey key;
    key.section = section;
    return key;
  }

  /// The section that stands for a mode with the monitors present.
  std::string SectionOf(uint32_t mode, uint32_t displays) {
    return policy().MakeSettingsSection(mode, displays, policy().GetMonitorSignature());
  }

  /// The modes that a connector's monitor lists, in this order.
  void SetModes(size_t connector, const std::vector<sim::DisplayMode>& modes) {
    model().connectors[connector].monitor->modes = modes;
  }

  std::string Journal() { return bench.machine.TakeJournal(); }
  std::string TakeLog() {
    const std::string all = bench.machine.Log();
    const std::string news = all.substr(log_taken_);
    log_taken_ = all.size();
    return MessagesWithSeverity(news);
  }

  SessionBench bench;

 private:
  size_t log_taken_ = 0;
};

/// The desktop that a source shows: "1024x768x32@60".
inline std::string DesktopOf(const sim::Source& source) {
  const sim::DisplayMode& mode = source.mode;
  return std::to_string(mode.width) + "x" + std::to_string(mode.height) + "x" +
         std::to_string(mode.bits) + "@" + std::to_string(mode.frequency);
}

}  // namespace policy_test
