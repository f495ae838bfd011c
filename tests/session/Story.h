// A user's days on whole notebooks: the machine, the host's process that comes and goes, the
// hotkey, and what came of it. The library is the one that ships, over the operating system's own
// display configuration. A process of the host ends and another begins where the library is
// unloaded and loaded again; what is remembered goes through Ostrel.ini.
//
//   class Meeting : public Story { void SetUp() override { OnFile("intel-panel-projector"); } };
//   StartProcess();
//   Choose("NB-CRT.png");
//   EXPECT_EQ(Desktops(), "internal+crt 1024x768x32@60 at 0,0");
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sim/Library.h"
#include "sim/Machine.h"

using Pictures = std::vector<std::string>;

class Story : public testing::Test {
 protected:
  void TearDown() override;

  // --- The notebook.

  void On(const std::string& text);          // the short form
  void OnFile(const std::string& notebook);  // a file of machines/, without its ending
  /// Windows' own display configuration, which a story prefers otherwise, is left to the factory.
  void ThroughTheVendor();
  void Plug(const char* connector, const char* name, uint32_t width, uint32_t height);
  /// Windows knows nothing any more of what it showed on which monitors, as after a new driver:
  /// whatever comes back then comes back from the library's memory.
  void WindowsForgets();
  /// The user sets a size in Windows' own settings.
  void UserSets(const char* connector, uint32_t width, uint32_t height);

  // --- The host's process.

  void StartProcess();
  void EndProcess();
  /// Opens the pop-up and leaves it to its timer. @return what it offers
  Pictures Look();
  /// Presses the hotkey until the picture is highlighted, and waits.
  void Choose(const std::string& picture);
  /// The pictures of the items, in order.
  Pictures Offered() const;
  /// The picture in the frame; "" when there is no frame.
  std::string Highlighted() const;
  /// What was posted to the host since the last call: "12" for a pop-up that came and went.
  std::string TakeNotifications();

  // --- What came of it.

  /// The journal's lines since the last look at it: those that begin like one of these, or those
  /// that do not.
  std::string TakeLines(const std::vector<std::string>& beginnings);
  std::string TakeLinesBut(const std::string& beginning);
  /// The desktops from left to right: "internal 1366x768x32@60 at 0,0; crt ...".
  std::string Desktops() const;
  /// The whole Ostrel.ini, without the blank lines that Windows puts between sections; "" when
  /// there is none.
  std::string Remembered() const;

  std::unique_ptr<sim::Machine> machine;
  std::optional<sim::Library> ostrel;

 private:
  void Take(std::unique_ptr<sim::Machine> taken);
  std::string TakeLinesThat(const std::function<bool(const std::string&)>& wanted);

  size_t notifications_seen_ = 0;
};
