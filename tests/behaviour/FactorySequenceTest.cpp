// The factory over several calls, while adapters come and go and libraries change their minds: the
// decision's steps on plain values, and the factory beside them.
#include <gtest/gtest.h>

#include <map>

#include "tests/behaviour/FactoryHost.h"
#include "tests/behaviour/FactoryReference.h"

namespace {

constexpr uint16_t kIntel = 0x8086;
constexpr uint16_t kNvidia = 0x10DE;
constexpr uint16_t kAmd = 0x1002;

/// What the factory should hold. Objects are told apart by a number, 0 for none.
class Expected {
 public:
  /// GetMultiMonitorObject. @return the class that answers, or "throws"
  std::string Get(const FactoryCase& c) {
    const std::vector<uint16_t> list = c.List(true);
    if (list.empty()) return AnswerOf(c).object;  // not the active object
    if (c.Across()) {
      if (number == 0) {
        Put("HybridController");
        active = 0xFFFF;
      }
      return object;
    }
    if (list.size() == 1) return Only(c, list[0]);
    if (c.Nvidia()) return Probe(c);
    if (!c.Amd()) return "NullMonitorController";
    if (c.script.adl == Start::kThrows) return "throws";
    return c.script.adl == Start::kWorks ? Choose(kAmd, "ADLImpl") : Intel(c);
  }

  /// OnActiveDisplayAdapterVendorChanged. @return true when it throws
  bool Change(const FactoryCase& c) {
    if (active == 0xFFFF) return false;
    bool thrown = false;
    const uint16_t vendor = ActiveVendorOf(c, &thrown);
    if (thrown || vendor == active) return thrown;
    active = vendor;
    Put(ObjectByVendor(c, vendor));
    return false;
  }

  std::string object = "none";
  uint32_t number = 0;
  uint16_t active = 0;
  uint16_t factory = 0;
  bool use_nvidia = false;
  bool probe = true;

 private:
  void Put(const std::string& name) {
    object = name;
    number = name == "none" ? 0 : ++made_;
  }

  std::string Choose(uint16_t vendor, const std::string& name) {
    if (number == 0 || factory != vendor) Put(name);
    factory = active = vendor;
    return object;
  }

  std::string Only(const FactoryCase& c, uint16_t vendor) {
    return Choose(vendor, ObjectByVendor(c, vendor));
  }

  std::string Intel(const FactoryCase& c) { return Only(c, kIntel); }

  std::string Probe(const FactoryCase& c) {
    const bool at_hand = c.AsksNvidiaAcross() && c.script.nvidia != Start::kFails;
    const bool same =
        probe && !at_hand && number != 0 && factory == kNvidia && object == "NvidiaMMImplV3";
    if (probe) {
      if (c.script.nvidia == Start::kThrows) return "throws";
      if (c.script.nvidia == Start::kFails && same) Put("none");
      if (c.script.nvidia == Start::kWorks && c.NvidiaWanted()) use_nvidia = true;
      if (c.script.nvidia == Start::kWorks && c.script.discrete_only) probe = false;
    }
    if (use_nvidia) return Choose(kNvidia, "NvidiaMMImplV3");
    if (same) Put("none");
    return Intel(c);
  }

  uint32_t made_ = 0;
};

struct Situation {
  const char* name;
  Cards cards;
  BackendScript script;
};

Situation Of(const char* name, Cards cards, void (*change)(BackendScript& s)) {
  Situation situation = {name, std::move(cards), BackendScript()};
  change(situation.script);
  return situation;
}

std::vector<Situation> Situations() {
  const Cards both = {Card::kIntel, Card::kNvidia};
  const Cards amd = {Card::kIntel, Card::kAmd};
  return {
      Of("nothing", {Card::kSis}, [](BackendScript&) {}),
      Of("Intel", {Card::kIntel, Card::kDisabledNvidia}, [](BackendScript&) {}),
      Of("NVIDIA", {Card::kNvidia}, [](BackendScript&) {}),
      Of("AMD", {Card::kAmd}, [](BackendScript&) {}),
      Of("across", both, [](BackendScript& s) { MakeNvidiaCross(&s); }),
      Of("Intel has HDMI", both,
         [](BackendScript& s) {
           MakeNvidiaDiscrete(&s);
           s.intel_has_hdmi = true;
         }),
      Of("NVIDIA leads, Intel has HDMI", both,
         [](BackendScript& s) {
           s.adapter_mode = 1;
           s.intel_has_hdmi = true;
         }),
      Of("NVIDIA leads", both, [](BackendScript& s) { s.adapter_mode = 3; }),
      Of("Intel leads, has HDMI", both,
         [](BackendScript& s) {
           s.adapter_mode = 2;
           s.intel_has_hdmi = true;
         }),
      Of("Intel leads", both, [](BackendScript& s) { s.adapter_mode = 2; }),
      Of("NVIDIA alone can", both, [](BackendScript& s) { MakeNvidiaDiscrete(&s); }),
      Of("NVIDIA fails", both, [](BackendScript& s) { s.nvidia = Start::kFails; }),
      Of("NVIDIA throws", both, [](BackendScript& s) { s.nvidia = Start::kThrows; }),
      Of("Intel fails", both,
         [](BackendScript& s) {
           s.intel = Start::kFails;
           s.adapter_mode = 1;
         }),
      Of("Intel and AMD", amd, [](BackendScript&) {}),
      Of("Intel, AMD fails", amd, [](BackendScript& s) { s.adl = Start::kFails; }),
      Of("NVIDIA and AMD", {Card::kNvidia, Card::kAmd}, [](BackendScript&) {}),
  };
}

/// One machine through all courses of three situations.
class Courses {
 public:
  Courses(const WindowsRow& windows, bool display_link_service)
      : host_(std::string(windows.word) + " intel*1, intel*1, intel*1: internal@3 1366x768 active",
              L"host.exe"),
        situations_(Situations()) {
    host_.Adapter(2).enumerated = false;  // the one that drives the displays
    host_.backends.traces = false;
    case_.windows = &windows;
    for (Situation& situation : situations_) {
      situation.script.display_link_service = display_link_service;
    }
  }

  uint32_t RunAll() {
    uint32_t count = 0;
    for (const bool rechecked : {false, true}) {
      for (const Situation& first : situations_) {
        for (const Situation& second : situations_) {
          for (const Situation& third : situations_) {
            Run({&first, &second, &third}, rechecked);
            ++count;
          }
        }
      }
    }
    return count;
  }

 private:
  void Run(const std::vector<const Situation*>& course, bool rechecked) {
    host_->Reset();
    expected_ = Expected();
    objects_.clear();
    last_number_ = 0;
    last_object_ = nullptr;
    std::string wrong;
    std::string text = std::string(case_.windows->word) + (rechecked ? ", rechecked" : "");
    for (const Situation* situation : course) {
      text += std::string("; ") + situation->name;
      Enter(*situation);
      if (rechecked) wrong += CompareChange();
      wrong += CompareAnswer();
      if (!wrong.empty()) break;
    }
    host_->Reset();
    host_.backends.Forget();
    if (!host_.backends.Living().empty()) wrong += "not ended: " + host_.backends.Living() + "\n";
    wrong += host_.backends.complaints();
    if (!wrong.empty() && ++wrong_ <= 5) ADD_FAILURE() << text << "\n" << wrong;
  }

  void Enter(const Situation& situation) {
    case_.cards = situation.cards;
    case_.script = situation.script;
    host_.backends.script = situation.script;
    for (size_t i = 0; i < 2; ++i) {
      sim::Adapter& adapter = host_.Adapter(i);
      adapter.enumerated = i < situation.cards.size();
      if (!adapter.enumerated) continue;
      const CardRow& row = kCards[static_cast<size_t>(situation.cards[i])];
      adapter.hardware_id = row.hardware_id;
      adapter.disabled = row.disabled;
    }
  }

  std::string CompareChange() {
    bool thrown = false;
    try {
      host_->OnActiveDisplayAdapterVendorChanged();
    } catch (...) {
      thrown = true;
    }
    const bool should_throw = expected_.Change(case_);
    return (thrown != should_throw ? "vendor change throws or not\n" : "") + CompareState();
  }

  std::string CompareAnswer() {
    std::string answer;
    try {
      answer = NameOf(host_->GetMultiMonitorObject());
    } catch (...) {
      answer = "throws";
    }
    const std::string should = expected_.Get(case_);
    return (answer != should ? "answer " + answer + " instead of " + should + "\n" : "") +
           CompareState();
  }

  std::string CompareState() {
    const FactoryState state = host_->State();
    std::string wrong;
    const auto expect = [&wrong](const char* what, uint32_t is, uint32_t should) {
      if (is == should) return;
      wrong += std::string(what) + " " + std::to_string(is) + " instead of " +
               std::to_string(should) + "\n";
    };
    if (NameOf(state.instance) != expected_.object) {
      wrong += "object " + NameOf(state.instance) + " instead of " + expected_.object + "\n";
    }
    expect("active vendor", state.active_vendor, expected_.active);
    expect("factory vendor", state.factory_vendor, expected_.factory);
    expect("use NVIDIA", state.use_nvidia_on_hybrid, expected_.use_nvidia ? 1 : 0);
    expect("probe", state.probe_nvidia, expected_.probe ? 1 : 0);
    if (expected_.number == last_number_ && state.instance != last_object_) {
      wrong += "another object of the class\n";
    }
    last_number_ = expected_.number;
    last_object_ = state.instance;
    return wrong + CompareWithEarlierObjects();
  }

  // The memory of an ended stand-in is not used again within a course; that of the others may be.
  std::string CompareWithEarlierObjects() {
    const bool stand_in = expected_.object != "none" && expected_.object != "HybridController" &&
                          expected_.object != NameOf(Backend::kDisplayLinkWorkaroundImpl);
    if (!stand_in) return "";
    objects_.emplace(expected_.number, last_object_);
    for (const auto& [number, object] : objects_) {
      if (number != expected_.number && object == last_object_) return "the object stayed\n";
    }
    return "";
  }

  StandInHost host_;
  std::vector<Situation> situations_;
  FactoryCase case_;
  Expected expected_;
  std::map<uint32_t, IMMonitor*> objects_;
  uint32_t last_number_ = 0;
  IMMonitor* last_object_ = nullptr;
  uint32_t wrong_ = 0;
};

TEST(FactorySequence, HoldsWhatTheStepsSayOverThreeCalls) {
  for (const WindowsRow& windows : kWindowsRows) {
    const std::string word = windows.word;
    if (word != "vista" && word != "2008" && word != "win7") continue;
    Courses courses(windows, false);
    EXPECT_GT(courses.RunAll(), 9000u);
  }
}

TEST(FactorySequence, HoldsWhatTheStepsSayWithDisplayLink) {
  for (const WindowsRow& windows : kWindowsRows) {
    if (windows.order != kWin7) continue;
    Courses courses(windows, true);
    EXPECT_GT(courses.RunAll(), 9000u);
  }
}

}  // namespace
