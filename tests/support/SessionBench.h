// A notebook whose display object is the test's own, with the white-box build of the library on top
// and the real pictures beside the host: what a test of the switch session starts from.
//
// SessionBench bench; // panel and CRT, the panel alone active bench.machine.Config("Settings",
// "Retry When Operation Failed", 1); ASSERT_TRUE(bench.Start()); // loads the library, installs the
// object, Ostrel_Init, registers the host bench.ostrel().Run(); EXPECT_EQ(bench.Items(), "1 0x1
// icon 0\n2 0x3 icon 5\n...");
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/Win.h"
#include "sim/Library.h"
#include "sim/Machine.h"
#include "tests/support/FakeMonitor.h"
#include "tests/whitebox/SessionBox.h"

/// The pictures that the build has rendered, beside this program.
std::wstring BuiltPictureFolder();

/// Writes a picture of one opaque colour (0xRRGGBB), in a form that GDI+ reads whatever the file's
/// name.
void WriteSolidPicture(const std::wstring& path, int32_t width, int32_t height, uint32_t colour);

class SessionBench {
 public:
  static constexpr uint32_t kMessage = 0x0401;
  static HWND Receiver() { return reinterpret_cast<HWND>(static_cast<uintptr_t>(0x4242)); }

  explicit SessionBench(
      const std::string& text = "win7 intel: internal 1366x768 active, crt 1024x768");
  /// Ends the switch side, so that whatever the library still holds after that is a leak.
  ~SessionBench();
  SessionBench(const SessionBench&) = delete;
  SessionBench& operator=(const SessionBench&) = delete;

  /// Loads the library over an object of type Object and readies the switch side. @return what
  /// Ostrel_Init gave
  template <typename Object = FakeMonitor>
  BOOL Start(uint16_t vendor = static_cast<uint16_t>(kVendorIntel)) {
    Load();
    return Ready(new Object(script), vendor);
  }

  /// The two halves of Start.
  void Load();
  BOOL Ready(IMMonitor* object, uint16_t vendor);
  /// From here on there is no display object, and none can be made. For machines with one adapter,
  /// Intel's.
  void LoseObject();

  sim::Library& ostrel() { return *ostrel_; }
  const SessionBox& box() { return *ostrel_->white_box().session; }
  SessionState State() { return box().State(); }

  /// The list, one item a line: "<mode> 0x<displays> icon <row>", with " type <n>" behind a
  /// presentation item.
  std::string Items();
  /// One character an item: '1' flagged, '0' not.
  std::string Flags();
  /// The files of the items' pictures in drawing order, as the pop-up's fixed part shows them;
  /// without backgrounds.
  std::vector<std::string> ItemPictures();
  /// The files behind the fixed part: what a highlight has drawn, with positions; "" when nothing
  /// is highlighted.
  std::string Highlight();
  /// What was posted to the host since the last call: "1", "12", ...
  std::string TakeNotifications();
  /// The period of the pop-up's timer; 0 when it is not armed.
  uint32_t PopupPeriod();
  /// Ostrel.ini's value, "-" when there is none.
  std::string Remembered(const std::string& section, const std::string& key);
  void Remember(const std::string& section, const std::string& key, const std::string& value);

  /// What the object was asked since the last call, one line each; GetVgaVendor left out, which is
  /// asked all over.
  std::string Calls();
  /// The same lines, the changing ones only: Set..., Enable...
  std::string Changes();
  bool LogHas(const std::string& text) const;
  /// Puts the host's mouse at a point of the pop-up, in its client coordinates. The pop-up must be
  /// open.
  void SetCursorInPopup(int x, int y);

  sim::Machine machine;
  std::shared_ptr<FakeScript> script;
  std::string init_calls;  // what the object was asked by Ostrel_Init

 private:
  std::optional<sim::Library> ostrel_;
  size_t notifications_seen_ = 0;
};
