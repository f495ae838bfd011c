#include "host/Press.h"

#include "host/Commands.h"
#include "host/HostWindow.h"
#include "host/Words.h"
#include "sim/Topology.h"

namespace {

struct KeyWord {
  const char* word;
  uint32_t key;
};

constexpr KeyWord kKeys[] = {{"left", VK_LEFT}, {"right", VK_RIGHT},  {"up", VK_UP},
                             {"down", VK_DOWN}, {"enter", VK_RETURN}, {"esc", VK_ESCAPE}};

constexpr int32_t kPictureSize = 80;

/// A mode in the words of a simulated notebook's own description: "clone internal+crt".
std::string ArrangementText(const CurrentMode& current) {
  std::string text = ModeWord(current.mode);
  const char* separator = " ";
  for (const std::string& word : DisplayWords(current.displays)) {
    text += separator + (word == "panel" ? std::string("internal") : word);
    separator = "+";
  }
  return text;
}

/// One picture of the strip, as the simulated notebook saw it drawn.
struct Item {
  std::string file;
  int32_t x = 0;
  bool highlighted = false;
};

/// The items a person sees: every file drawn at picture size, the one with the frame at its place
/// highlighted.
std::vector<Item> ItemsOnScreen(const sim::Machine& notebook) {
  std::vector<Item> items;
  for (const sim::Drawn& drawn : notebook.PopupDrawing()) {
    if (drawn.file == "selected.png") {
      for (Item& item : items) item.highlighted = item.x == drawn.x;
      continue;
    }
    const bool is_item = drawn.width == kPictureSize && drawn.height == kPictureSize;
    const bool seen = !items.empty() && drawn.x <= items.back().x;
    if (is_item && !seen) items.push_back({drawn.file, drawn.x, false});
  }
  return items;
}

/// One run of the pop-up: what was done, and what has been told already.
class PressStory {
 public:
  PressStory(Stage& stage, Report& report, const PressPlan& plan)
      : stage_(stage), report_(report), plan_(plan) {}

  int Tell() {
    TellStart();
    window_.on_notification = [this](uint32_t code) { OnNotification(code); };
    window_.on_timer = [this] { Step(); };
    stage_.exports().RegisterNotification(window_.handle(), HostWindow::kNotification);
    Step();
    const bool ended = window_.Pump();
    if (refused_) return kExitFailed;
    if (!ended) return kExitFailed;  // closed from outside, before the pop-up had gone
    return TellEnd();
  }

 private:
  void TellStart() {
    uint32_t displays = 0;
    uint32_t count = 0;
    stage_.exports().GetConnectedDisplays(&displays, &count);
    report_.Fact("Displays", DisplayText(displays) + " (" + std::to_string(count) + " connected)",
                 "connected", {{"names", DisplayWords(displays)}, {"count", count}});
    report_.Fact("Mode before", ModeNow(), "before", ModeNow());
    if (stage_.notebook() != nullptr) stage_.notebook()->TakeJournal();
  }

  int TellEnd() {
    const std::string after = ModeNow();
    report_.Fact("Mode after", after, "after", after);
    if (plan_.expected.empty()) return kExitDone;
    const std::string ended = stage_.notebook() != nullptr
                                  ? NotebookNow()
                                  : ArrangementText(ReadCurrentMode(stage_.exports()));
    // Without a size the wish is about the arrangement alone.
    const bool as_wished =
        ended == plan_.expected ||
        (stage_.notebook() != nullptr && stage_.notebook()->Topology() == plan_.expected);
    report_.Fact("Expected", plan_.expected + (as_wished ? ": yes" : ": no, it is " + ended),
                 "as_expected", as_wished);
    return as_wished ? kExitDone : kExitFailed;
  }

  std::string ModeNow() const {
    std::string told = ModeText(ReadCurrentMode(stage_.exports()));
    if (stage_.notebook() == nullptr) return told;
    return told + "   (the notebook itself: " + NotebookNow() + ")";
  }

  /// "clone internal+crt 1024x768"
  std::string NotebookNow() const {
    return stage_.notebook()->Topology() + " " + sim::DescribeSizes(stage_.notebook()->model());
  }

  /// The next press or key; after the last one the pop-up is left to its timer.
  void Step() {
    if (presses_ < plan_.times) {
      PressHotkey();
    } else if (keys_ < plan_.keys.size() && popup_ != nullptr) {
      PressKey(plan_.keys[keys_++]);
    }
    const bool more = presses_ < plan_.times || keys_ < plan_.keys.size();
    if (more && popup_ != nullptr) window_.After(plan_.interval);
  }

  void PressHotkey() {
    ++presses_;
    const HWND shown = stage_.exports().RunEx();
    if (shown == nullptr) {
      report_.Event("Press " + std::to_string(presses_), "the library refused",
                    {{"event", "refused"}});
      refused_ = true;
      window_.Quit();
      return;
    }
    popup_ = shown;
    TellPopup("Press " + std::to_string(presses_), opened_ ? "the highlight moved" : "pop-up open");
    opened_ = true;
  }

  void PressKey(const std::string& word) {
    PostMessageW(popup_, WM_KEYDOWN, KeyFromWord(word), 0);
    // Let the pop-up act on the key before its new picture is looked at.
    MSG message;
    while (PeekMessageW(&message, popup_, WM_KEYDOWN, WM_KEYDOWN, PM_REMOVE) != 0) {
      DispatchMessageW(&message);
    }
    if (IsWindow(popup_) == 0) {
      report_.Event("Key " + word, "the pop-up has gone", {{"event", "key"}, {"key", word}});
      return;
    }
    TellPopup("Key " + word, "the highlight moved");
  }

  void TellPopup(const std::string& title, const std::string& what) {
    nlohmann::json event = {{"event", title}, {"what", what}};
    std::vector<Item> items;
    if (stage_.notebook() != nullptr) items = ItemsOnScreen(*stage_.notebook());
    for (const Item& item : items) {
      event["items"].push_back({{"picture", item.file}, {"highlighted", item.highlighted}});
    }
    report_.Event(
        title, items.empty() ? what : what + ", " + std::to_string(items.size()) + " items", event);
    for (const Item& item : items) {
      report_.Detail((item.highlighted ? "  > " : "    ") + item.file);
    }
    TellChanges(stage_, report_);
  }

  void OnNotification(uint32_t code) {
    if (code == 2) {
      report_.Event("Closed",
                    "the pop-up has gone; from then on, in this order:", {{"event", "closed"}});
    }
    TellChanges(stage_, report_);
    report_.Event("Received",
                  code == 1 ? "notification 1: the pop-up is about to run"
                            : "notification 2: the pop-up has gone (any change has been made)",
                  {{"event", "notification"}, {"code", code}});
    if (code == 2) window_.Quit();
  }

  Stage& stage_;
  Report& report_;
  const PressPlan& plan_;
  HostWindow window_;
  HWND popup_ = nullptr;
  bool opened_ = false;
  bool refused_ = false;
  uint32_t presses_ = 0;
  size_t keys_ = 0;
};

}  // namespace

uint32_t KeyFromWord(const std::string& word) {
  for (const KeyWord& key : kKeys) {
    if (word == key.word) return key.key;
  }
  return 0;
}

int Press(Stage& stage, Report& report, const PressPlan& plan) {
  LibrarySides sides(stage.exports(), LibrarySides::Wanted::kPopUpAndQueries);
  if (!sides.ready()) {
    report.Fact("Library", "could not start; its log tells why", "error", "initialisation failed");
    return kExitFailed;
  }
  return PressStory(stage, report, plan).Tell();
}

int Listen(Stage& stage, Report& report, const std::string& hotkey) {
  LibrarySides sides(stage.exports(), LibrarySides::Wanted::kPopUpAndQueries);
  if (!sides.ready()) {
    report.Fact("Library", "could not start; its log tells why", "error", "initialisation failed");
    return kExitFailed;
  }
  HostWindow window;
  if (!window.RegisterHotkey(hotkey)) {
    report.Fact("Hotkey", hotkey + " cannot be had", "error", "hotkey");
    return kExitUsage;
  }
  stage.exports().RegisterNotification(window.handle(), HostWindow::kNotification);
  window.on_hotkey = [&stage, &report] {
    const bool shown = stage.exports().Run() != 0;
    report.Event("Hotkey", shown ? "pressed" : "pressed; the library refused",
                 {{"event", "hotkey"}, {"shown", shown}});
  };
  window.on_notification = [&stage, &report](uint32_t code) {
    TellChanges(stage, report);
    report.Event("Received", "notification " + std::to_string(code),
                 {{"event", "notification"}, {"code", code}});
    if (code == 2) report.Detail(ModeText(ReadCurrentMode(stage.exports())));
  };
  report.Event("Listening", "for " + hotkey + "; Ctrl+C ends it",
               {{"event", "listening"}, {"hotkey", hotkey}});
  window.Pump();
  report.Event("Ended", "", {{"event", "ended"}});
  return kExitDone;
}
